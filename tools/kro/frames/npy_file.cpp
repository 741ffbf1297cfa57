#include "frames/npy_file.hpp"

#include <algorithm>
#include <limits>
#include <string_view>

#include "support/failure.hpp"
#include "support/scan.hpp"

namespace cli {

namespace {

using namespace std::literals;

struct NpyHeader : PictureHeader {
    bool bigEndian = false;
    uint64_t dataAt = 0;

    std::size_t sampleBytes() const { return maximum > 255 ? 2 : 1; }
    std::size_t frameBytes() const { return size.samples() * sampleBytes(); }
};

constexpr std::string_view magic = "\x93NUMPY"sv;
constexpr std::size_t mostHeader = 65536;

[[noreturn]] void unread(const InputFile& file, const std::string& what) {
    throw Failure(file.shownName() + ": " + what +
                  ", expected an array of uint8 or uint16 with rows and columns, or frames, rows and columns");
}

// The text after `'key': ` in the header, which is the literal of a dictionary.
std::string_view valueOf(const InputFile& file, std::string_view text, const std::string& key) {
    const std::size_t at = text.find("'" + key + "'");
    if (at == std::string_view::npos) {
        unread(file, "its header names no " + key);
    }
    text.remove_prefix(at + key.size() + 2);
    while (takeAnyOf(text, ": ")) {
    }
    return text;
}

std::string readText(const InputFile& file, NpyHeader& header) {
    Bytes start(mostHeader);
    start.resize(file.readAt(0, start.data(), start.size()));
    const bool isNpy =
        start.size() >= 12 && std::equal(magic.begin(), magic.end(), start.begin(),
                                         [](char a, uint8_t b) { return static_cast<uint8_t>(a) == b; });
    if (!isNpy) {
        unread(file, "is no NPY file");
    }
    const std::size_t lengthBytes = start[6] == 1 ? 2 : 4;
    std::size_t length = 0;
    for (std::size_t i = 0; i < lengthBytes; i++) {
        length |= static_cast<std::size_t>(start[8 + i]) << (8 * i);
    }
    header.dataAt = 8 + lengthBytes + length;
    if (header.dataAt > start.size()) {
        unread(file, "its header is cut off");
    }
    return {start.begin() + static_cast<std::ptrdiff_t>(8 + lengthBytes),
            start.begin() + static_cast<std::ptrdiff_t>(header.dataAt)};
}

void readType(const InputFile& file, std::string_view text, NpyHeader& header) {
    std::string_view type = valueOf(file, text, "descr");
    takeAnyOf(type, "'");
    const std::string name(type.substr(0, type.find('\'')));
    std::string_view rest = name;
    header.bigEndian = takeWord(rest, ">");
    takeAnyOf(rest, "<|=");
    if (rest != "u1" && rest != "u2") {
        unread(file, "holds samples of type " + name);
    }
    header.maximum = rest == "u1" ? 255 : 65535;
}

std::vector<int64_t> readShape(const InputFile& file, std::string_view text) {
    std::string_view rest = valueOf(file, text, "shape");
    std::vector<int64_t> sides;
    int64_t side = 0;
    takeAnyOf(rest, "(");
    while (takeNumber(rest, side)) {
        sides.push_back(side);
        while (takeAnyOf(rest, ", ")) {
        }
    }
    return sides;
}

NpyHeader readWholeHeader(const InputFile& file) {
    NpyHeader header;
    header.channels = 1;
    const std::string text = readText(file, header);
    readType(file, text, header);
    if (valueOf(file, text, "fortran_order").substr(0, 5) != "False") {
        unread(file, "lies in Fortran's order (numpy.ascontiguousarray turns it)");
    }
    std::vector<int64_t> sides = readShape(file, text);
    if (sides.size() == 3) {
        header.pages = static_cast<uint64_t>(sides[0]);
        sides.erase(sides.begin());
    }
    constexpr int64_t most = std::numeric_limits<int32_t>::max();
    if (sides.size() != 2 || sides[0] < 1 || sides[1] < 1 || sides[1] > most / sides[0] || header.pages < 1) {
        unread(file, "has another shape");
    }
    header.size = {static_cast<int32_t>(sides[1]), static_cast<int32_t>(sides[0])};
    if (*file.length() < header.dataAt || (*file.length() - header.dataAt) / header.frameBytes() < header.pages) {
        unread(file, "is shorter than its header says");
    }
    return header;
}

}  // namespace

PictureHeader readNpyHeader(const InputFile& file) { return readWholeHeader(file); }

DecodedPicture decodeNpy(const InputFile& file, uint64_t number) {
    const NpyHeader header = readWholeHeader(file);
    Bytes bytes(header.frameBytes());
    const std::size_t got = file.readAt(header.dataAt + (number - 1) * bytes.size(), bytes.data(), bytes.size());
    if (number > header.pages || got != bytes.size()) {
        unread(file, "has no frame " + std::to_string(number));
    }
    DecodedPicture picture;
    static_cast<PictureHeader&>(picture) = header;
    if (header.maximum == 255) {
        picture.samples.assign(bytes.begin(), bytes.end());
        return picture;
    }
    const std::size_t high = header.bigEndian ? 0 : 1;
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        picture.samples.push_back(static_cast<uint16_t>(bytes[i + high] << 8 | bytes[i + 1 - high]));
    }
    return picture;
}

}  // namespace cli
