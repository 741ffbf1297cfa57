#include "commands/formats.hpp"

#include <cstdio>

#include "frames/format_names.hpp"
#include "pictures/picture_file.hpp"

namespace cli {

namespace {

const char* layoutText(const InputFormat& format) {
    switch (format.packing) {
        case Packing::byte:
            return "one byte a sample";
        case Packing::word:
            return "16-bit words, little-endian";
        case Packing::packed:
            return "GigE: two in three bytes";
        case Packing::lsb:
            return "PFNC: lowest bit first";
        case Packing::csi2:
            return format.bits == 10   ? "CSI-2: four in five bytes"
                   : format.bits == 12 ? "CSI-2: two in three bytes"
                                       : "CSI-2: four in seven bytes";
    }
    return "";
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

template <typename... Values>
void addLine(std::string& text, const char* pattern, Values... values) {
    char line[160];
    std::snprintf(line, sizeof line, pattern, values...);
    text += line;
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
}

std::string memoryText(const OutputFormat& format) {
    const std::string unit = format.bits == 8 ? "byte" : "word";
    switch (format.order) {
        case Order::grey:
            return "one " + unit + " a pixel";
        case Order::rgb:
        case Order::bgr:
            return format.planar ? "three planes of " + unit + "s, one after another" : "three " + unit + "s a pixel";
        case Order::rgba:
        case Order::bgra:
        case Order::argb:
        case Order::abgr:
            return "four " + unit + "s a pixel, the one that is no colour 0 (opaque in files but raw ones)";
    }
    return "";
}

}  // namespace

std::string formatTables() {
    std::string text =
        "What goes in (-f; case, '_' and '-' do not matter, but for the last P of CSI-2 names and four letters):\n";
    addLine(text, "  %-16s %-11s %-12s %-5s %-28s %s", "name", "code", "short", "sites", "layout", "elsewhere");
    for (const InputFormat& format : inputFormats()) {
        addLine(text, "  %-16s 0x%08X  %-12s %-5s %-28s %s", format.name, format.code, shortAlias(format).c_str(),
                format.isBayer() ? firstSites(format.phase) : "grey", layoutText(format),
                joined(otherNames(format)).c_str());
    }
    text += "Short names of words end in be instead of le where the high byte comes first, as --big-endian says.\n";
    text += "\nWhat comes out (-O):\n";
    for (const OutputFormat& format : outputFormats()) {
        addLine(text, "  %-16s 0x%08X  %s", format.name, format.code, memoryText(format).c_str());
    }
    text += "\nInto which files (-o, --to):\n";
    for (const FileType& type : fileTypes()) {
        addLine(text, "  %-16s %s", type.name, type.holds);
    }
    return text;
}

}  // namespace cli
