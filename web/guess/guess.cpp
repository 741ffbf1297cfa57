// What a raw file can be, by the command's own rules: its name first, then its bytes. A call answers in JSON.
#include <algorithm>

#include "frames/inference.hpp"
#include "guess/guess.hpp"
#include "guess/wording.hpp"

#define KRO_WEB(name) extern "C" __attribute__((export_name(#name)))

namespace {

using namespace cli;

constexpr std::size_t mostShown = 6;

std::string name;
guess::Material material;
std::string answer;

std::string quoted(const std::string& text) {
    std::string json = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            json += '\\';
        }
        json += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    }
    return json + '"';
}

template <class Value>
std::string member(const char* key, const Value& value) {
    return quoted(key) + ":" + value;
}

struct Reading {
    std::string format;
    uint64_t width;
    uint64_t height;
    uint64_t skip;
    uint64_t stride;  // 0 where rows have no gaps
    bool bigEndian;
};

std::string json(const Reading& reading) {
    return member("format", quoted(reading.format)) + "," + member("width", std::to_string(reading.width)) + "," +
           member("height", std::to_string(reading.height)) + "," + member("skip", std::to_string(reading.skip)) +
           "," + member("stride", std::to_string(reading.stride)) + "," +
           member("bigEndian", reading.bigEndian ? "true" : "false");
}

Reading readingOf(const guess::Answer& meant, Phase phase) {
    const guess::Geometry& rows = meant.shape.geometry;
    return {meant.formatName(phase),
            rows.width,
            meant.shape.height,
            rows.start,
            meant.shape.padding() == 0 ? 0 : rows.stride,
            rows.layout->bigEndian};
}

std::string json(const guess::Answer& meant, Phase phase) {
    std::string reasons;
    for (const std::string& reason : guess::reasonsFor(meant, material.length)) {
        reasons += (reasons.empty() ? "" : ",") + quoted(reason);
    }
    return "{" + json(readingOf(meant, phase)) + "," +
           member("bits",
                  std::to_string(meant.leftAligned || !meant.shape.geometry.layout->isWords() ? 0 : meant.bits)) +
           "," + member("certainty", quoted(guess::wordFor(meant.certainty))) + "," +
           member("reasons", "[" + reasons + "]") + "}";
}

}  // namespace

// Where JavaScript puts the file's name, and its first bytes.
KRO_WEB(nameAt)
char* nameAt(int32_t length) {
    name.resize(static_cast<size_t>(length));
    return name.data();
}
KRO_WEB(bytesAt)
uint8_t* bytesAt(int32_t length) {
    material.bytes.resize(static_cast<size_t>(length));
    return material.bytes.data();
}

// Each gives the address of a text that ends with 0. A name that says too little ends the call (thrown.cpp).
KRO_WEB(byName)
const char* byName(double length) {
    const FrameLayout layout = inferLayout(name, {}, static_cast<uint64_t>(length));
    const Reading reading{layout.format->name,
                          static_cast<uint64_t>(layout.size.width),
                          static_cast<uint64_t>(layout.size.height),
                          layout.skip,
                          layout.stride,
                          layout.bigEndian};
    answer = "{" + json(reading) + "," + member("certainty", quoted("its name")) + "," + member("bits", "0") + "," +
             member("reasons", "[" + quoted(layout.note) + "]") + "}";
    return answer.c_str();
}

KRO_WEB(byBytes)
const char* byBytes(double length) {
    material.length = static_cast<uint64_t>(length);
    answer.clear();
    std::vector<guess::Answer> answers = guess::answersFor(material);
    answers.resize(std::min(answers.size(), mostShown));
    for (const guess::Answer& meant : answers) {
        answer += (answer.empty() ? "[" : ",") + json(meant, meant.phase());
        if (meant.exchangedPhase() != meant.phase()) {
            answer += "," + json(meant, meant.exchangedPhase());
        }
    }
    answer += answer.empty() ? "[]" : "]";
    return answer.c_str();
}
