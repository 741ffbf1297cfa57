#include "commands/formats.hpp"

#include <cstdio>

#include "frames/formats.hpp"
#include "pictures/picture_file.hpp"

namespace cli {

namespace {

const char* layoutText(Packing packing) {
    switch (packing) {
        case Packing::byte:
            return "one byte a sample";
        case Packing::word:
            return "16-bit little-endian words";
        case Packing::packed:
            return "two samples in three bytes";
    }
    return "";
}

const char* deepPath(const InputFormat& format) {
    if (!format.isBayer()) {
        return "";
    }
    return format.phase == Phase::rg ? "edge, bilinear" : "edge";
}

template <typename... Values>
void addLine(std::string& text, const char* pattern, Values... values) {
    char line[160];
    std::snprintf(line, sizeof line, pattern, values...);
    text += line;
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
}

const char* memoryText(const OutputFormat& format) {
    switch (format.order) {
        case Order::grey:
            return "one byte a pixel";
        case Order::rgb:
        case Order::bgr:
            return format.planar ? "three planes of bytes, one after another" : "three bytes a pixel";
        case Order::rgba:
        case Order::bgra:
            return "four bytes a pixel, the fourth 0 (255 in files but raw ones)";
    }
    return "";
}

}  // namespace

std::string formatTables() {
    std::string text = "What goes in (-f; case, '_' and '-' do not matter):\n";
    addLine(text, "  %-16s %-11s %-10s %-5s %-28s %s", "name", "code", "short", "sites", "layout", "--depth 16");
    for (const InputFormat& format : inputFormats()) {
        addLine(text, "  %-16s 0x%08X  %-10s %-5s %-28s %s", format.name, format.code, shortAlias(format).c_str(),
                format.isBayer() ? firstSites(format.phase) : "grey", layoutText(format.packing), deepPath(format));
    }
    text += "\nWhat comes out (-O):\n";
    for (const OutputFormat& format : outputFormats()) {
        addLine(text, "  %-16s 0x%08X  %s", format.name, format.code, memoryText(format));
    }
    text += "\nInto which files (-o, --to):\n";
    for (const FileType& type : fileTypes()) {
        addLine(text, "  %-16s %s", type.name, type.holds);
    }
    return text;
}

}  // namespace cli
