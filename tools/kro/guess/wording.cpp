#include "guess/wording.hpp"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

#include "output/output_names.hpp"

namespace cli::guess {

namespace {

std::string oneDecimal(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
}

std::string count(uint64_t number, const char* thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

std::string ofSamples(const Answer& answer) {
    const SampleLayout& layout = *answer.shape.geometry.layout;
    std::string text = layout.description;
    if (layout.isWords()) {
        text += answer.leftAligned ? ", of which the high " + std::to_string(answer.bits) + " bits vary"
                                   : ", values of " + std::to_string(answer.bits) + " bits";
    }
    return text + "; told by their neighbours, samples take " + oneDecimal(answer.bitsPerSample) + " bits";
}

std::string ofRows(const Answer& answer) {
    const FrameShape& shape = answer.shape;
    const std::string padding =
        shape.padding() == 0 ? "" : ", of which the last " + std::to_string(shape.padding()) + " are padding";
    return "rows are most alike " + count(shape.geometry.stride, "byte") + " apart" + padding;
}

std::string ofLength(const Answer& answer, uint64_t length) {
    const FrameShape& shape = answer.shape;
    std::string text = shape.geometry.start == 0
                           ? ""
                           : count(shape.geometry.start, "byte") + " that are no such rows come first, then ";
    text += shape.frames == 1 ? count(shape.height, "row")
                              : count(shape.frames, "frame") + " of " + count(shape.height, "row");
    const uint64_t left = shape.leftOver(length);
    text += left == 0 ? " up to the end" : ", then " + count(left, "byte") + " more";
    return shape.usualSize ? text + "; a usual size" : text;
}

std::string ofSites(const Answer& answer) {
    const double ratio = std::max(answer.unlikeDiagonals, 1 / answer.unlikeDiagonals);
    if (answer.greens == Greens::none) {
        return "grey: the two diagonals of sites are equally even (" + oneDecimal(ratio) + " to 1)";
    }
    const bool suits = (answer.unlikeDiagonals > 1) == (answer.greens == Greens::odd);
    return std::string("mosaic: the diagonal taken for greens is ") + oneDecimal(ratio) + " times as " +
           (suits ? "even" : "uneven") + " as the other";
}

// As a shell takes it for one word.
std::string quoted(const std::string& word) {
    const auto plain = [](unsigned char c) {
        return std::isalnum(c) != 0 || c >= 128 || std::strchr("_-./+,:=@%", c) != nullptr;
    };
    if (!word.empty() && std::all_of(word.begin(), word.end(), plain)) {
        return word;
    }
    std::string text = "'";
    for (const char c : word) {
        text += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return text + "'";
}

}  // namespace

const char* wordFor(Certainty certainty) {
    switch (certainty) {
        case Certainty::sure:
            return "sure";
        case Certainty::likely:
            return "likely";
        case Certainty::guess:
            break;
    }
    return "a guess";
}

std::string meaning(const Answer& answer) {
    const std::string text = answer.size() + " " + answer.formatName(answer.phase());
    return answer.greens == Greens::none ? text : text + " or " + answer.formatName(answer.exchangedPhase());
}

std::vector<std::string> reasonsFor(const Answer& answer, uint64_t length) {
    return {ofSamples(answer), ofRows(answer), ofLength(answer, length), ofSites(answer)};
}

std::string convertLine(const std::string& input, const Answer& answer, uint64_t length) {
    const Geometry& rows = answer.shape.geometry;
    std::string line =
        "kro convert " + quoted(input) + " -f " + answer.formatName(answer.phase()) + " -s " + answer.size();
    if (answer.shape.padding() != 0) {
        line += " --stride " + std::to_string(rows.stride);
    }
    if (rows.layout->bigEndian) {
        line += " --big-endian";
    }
    if (rows.start != 0) {
        line += " --skip " + std::to_string(rows.start);
    }
    if (answer.shape.leftOver(length) != 0) {
        line += " --frames 1-";
    }
    const std::string stem = input == standardStream ? "frame" : stemOf(input);
    return line + " -o " + quoted(stem + ".png");
}

}  // namespace cli::guess
