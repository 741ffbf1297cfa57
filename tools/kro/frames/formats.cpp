#include "frames/formats.hpp"

#include <kro/kro.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <numeric>

#include "support/failure.hpp"
#include "support/scan.hpp"

namespace cli {

namespace {

constexpr std::array<InputFormat, 31> inputTable{{
    {"Mono8", KRO_MONO8, Phase::mono, 8, Packing::byte},
    {"Mono10", KRO_MONO10, Phase::mono, 10, Packing::word},
    {"Mono10Packed", KRO_MONO10_PACKED, Phase::mono, 10, Packing::packed},
    {"Mono12", KRO_MONO12, Phase::mono, 12, Packing::word},
    {"Mono12Packed", KRO_MONO12_PACKED, Phase::mono, 12, Packing::packed},
    {"Mono14", KRO_MONO14, Phase::mono, 14, Packing::word},
    {"Mono16", KRO_MONO16, Phase::mono, 16, Packing::word},
    {"BayerRG8", KRO_BAYER_RG8, Phase::rg, 8, Packing::byte},
    {"BayerRG10", KRO_BAYER_RG10, Phase::rg, 10, Packing::word},
    {"BayerRG10Packed", KRO_BAYER_RG10_PACKED, Phase::rg, 10, Packing::packed},
    {"BayerRG12", KRO_BAYER_RG12, Phase::rg, 12, Packing::word},
    {"BayerRG12Packed", KRO_BAYER_RG12_PACKED, Phase::rg, 12, Packing::packed},
    {"BayerRG16", KRO_BAYER_RG16, Phase::rg, 16, Packing::word},
    {"BayerGR8", KRO_BAYER_GR8, Phase::gr, 8, Packing::byte},
    {"BayerGR10", KRO_BAYER_GR10, Phase::gr, 10, Packing::word},
    {"BayerGR10Packed", KRO_BAYER_GR10_PACKED, Phase::gr, 10, Packing::packed},
    {"BayerGR12", KRO_BAYER_GR12, Phase::gr, 12, Packing::word},
    {"BayerGR12Packed", KRO_BAYER_GR12_PACKED, Phase::gr, 12, Packing::packed},
    {"BayerGR16", KRO_BAYER_GR16, Phase::gr, 16, Packing::word},
    {"BayerGB8", KRO_BAYER_GB8, Phase::gb, 8, Packing::byte},
    {"BayerGB10", KRO_BAYER_GB10, Phase::gb, 10, Packing::word},
    {"BayerGB10Packed", KRO_BAYER_GB10_PACKED, Phase::gb, 10, Packing::packed},
    {"BayerGB12", KRO_BAYER_GB12, Phase::gb, 12, Packing::word},
    {"BayerGB12Packed", KRO_BAYER_GB12_PACKED, Phase::gb, 12, Packing::packed},
    {"BayerGB16", KRO_BAYER_GB16, Phase::gb, 16, Packing::word},
    {"BayerBG8", KRO_BAYER_BG8, Phase::bg, 8, Packing::byte},
    {"BayerBG10", KRO_BAYER_BG10, Phase::bg, 10, Packing::word},
    {"BayerBG10Packed", KRO_BAYER_BG10_PACKED, Phase::bg, 10, Packing::packed},
    {"BayerBG12", KRO_BAYER_BG12, Phase::bg, 12, Packing::word},
    {"BayerBG12Packed", KRO_BAYER_BG12_PACKED, Phase::bg, 12, Packing::packed},
    {"BayerBG16", KRO_BAYER_BG16, Phase::bg, 16, Packing::word},
}};

constexpr std::array<OutputFormat, 7> outputTable{{
    {"BGR8", KRO_BGR8, Order::bgr, false},
    {"RGB8", KRO_RGB8, Order::rgb, false},
    {"BGRa8", KRO_BGRA8, Order::bgra, false},
    {"RGBa8", KRO_RGBA8, Order::rgba, false},
    {"RGB8Planar", KRO_RGB8_PLANAR, Order::rgb, true},
    {"BGR8Planar", KRO_BGR8_PLANAR, Order::bgr, true},
    {"Mono8", KRO_MONO8, Order::grey, false},
}};

struct PhaseWord {
    std::string_view word;
    Phase phase;
};

// Four sites of a cell, row by row, and the two of the first row; longer words come first.
constexpr std::array<PhaseWord, 8> phaseWords{{{"rggb", Phase::rg},
                                               {"grbg", Phase::gr},
                                               {"gbrg", Phase::gb},
                                               {"bggr", Phase::bg},
                                               {"rg", Phase::rg},
                                               {"gr", Phase::gr},
                                               {"gb", Phase::gb},
                                               {"bg", Phase::bg}}};
constexpr std::array<std::string_view, 3> monoWords{"mono", "gray", "grey"};

struct OutputAlias {
    std::string_view alias;
    uint32_t code;
};

constexpr std::array<OutputAlias, 12> outputAliases{{{"bgr", KRO_BGR8},
                                                     {"bgr24", KRO_BGR8},
                                                     {"rgb", KRO_RGB8},
                                                     {"rgb24", KRO_RGB8},
                                                     {"bgra", KRO_BGRA8},
                                                     {"rgba", KRO_RGBA8},
                                                     {"rgbplanar", KRO_RGB8_PLANAR},
                                                     {"bgrplanar", KRO_BGR8_PLANAR},
                                                     {"mono", KRO_MONO8},
                                                     {"gray", KRO_MONO8},
                                                     {"grey", KRO_MONO8},
                                                     {"gray8", KRO_MONO8}}};

bool takePhase(std::string_view& text, FormatHint& hint) {
    for (const std::string_view word : monoWords) {
        if (takeWord(text, word)) {
            hint.phase = Phase::mono;
            hint.longName = word == "mono";
            return true;
        }
    }
    hint.longName = takeWord(text, "bayer");
    if (!hint.longName) {
        takeWord(text, "s");
    }
    for (const PhaseWord& entry : phaseWords) {
        if (takeWord(text, entry.word)) {
            hint.phase = entry.phase;
            hint.fourSites = entry.word.size() == 4;
            return true;
        }
    }
    return false;
}

bool takeBits(std::string_view& text, FormatHint& hint) {
    for (const int bits : {8, 10, 12, 14, 16}) {
        if (takeWord(text, std::to_string(bits))) {
            hint.bits = bits;
            return true;
        }
    }
    return text.empty() || std::isdigit(static_cast<unsigned char>(text.front())) == 0;
}

bool takeLayout(std::string_view& text, FormatHint& hint) {
    // BayerRG12p and Mono12p are layouts of their own, with the samples run together from the low bits up.
    const bool otherPacking = hint.longName && !hint.fourSites;
    hint.packed = takeWord(text, "packed") || (!otherPacking && takeWord(text, "p"));
    hint.words = !hint.packed && takeWord(text, "le");
    return text.empty();
}

Packing packingOf(const FormatHint& hint) {
    if (hint.packed) {
        return Packing::packed;
    }
    return hint.bits == 8 ? Packing::byte : Packing::word;
}

std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); i++) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); j++) {
            const std::size_t substituted = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, substituted});
        }
    }
    return row[b.size()];
}

const InputFormat* findByCode(std::string_view name) {
    const std::string text(name);
    char* end = nullptr;
    const unsigned long code = std::strtoul(text.c_str(), &end, 16);
    if (*end != '\0') {
        return nullptr;
    }
    const auto found = std::find_if(inputTable.begin(), inputTable.end(),
                                    [code](const InputFormat& format) { return format.code == code; });
    return found == inputTable.end() ? nullptr : &*found;
}

// Why a name that looks like a format is none of ours, where that can be told.
std::string explainUnknown(std::string_view name) {
    const std::string folded = foldName(name);
    FormatHint hint;
    std::string_view rest = folded;
    if (!takePhase(rest, hint) || !takeBits(rest, hint)) {
        return "";
    }
    if (rest == "p") {
        return " (the lsb-first packing is not read; the one with two samples in three bytes ends in \"Packed\")";
    }
    if (rest == "be") {
        return " (16-bit words are little-endian)";
    }
    if (rest.empty() && hint.bits == 14 && hint.phase != Phase::mono) {
        return std::string(" (read 14-bit mosaics as ") + findInputFormat(hint.phase, 16, Packing::word)->name +
               ", with --bits 14)";
    }
    return "";
}

template <typename Table>
std::vector<std::string> namesOf(const Table& table) {
    std::vector<std::string> names;
    for (const auto& entry : table) {
        names.emplace_back(entry.name);
    }
    return names;
}

std::string suggestion(std::string_view name, const std::vector<std::string>& candidates) {
    const std::string nearest = nearestName(name, candidates);
    return nearest.empty() ? "" : ", did you mean " + nearest + "?";
}

}  // namespace

std::size_t InputFormat::frameBytes(std::size_t samples) const {
    switch (packing) {
        case Packing::byte:
            return samples;
        case Packing::word:
            return samples * 2;
        case Packing::packed:
            return (samples + 1) / 2 * 3;
    }
    return 0;
}

const std::array<InputFormat, 31>& inputFormats() { return inputTable; }

const std::array<OutputFormat, 7>& outputFormats() { return outputTable; }

std::string foldName(std::string_view text) {
    std::string folded;
    for (const char c : text) {
        if (c != '_' && c != '-' && c != ' ') {
            folded += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return folded;
}

bool readFormatHint(std::string_view text, FormatHint& hint) {
    const std::string folded = foldName(text);
    std::string_view rest = folded;
    return takePhase(rest, hint) && takeBits(rest, hint) && takeLayout(rest, hint);
}

const InputFormat* findInputFormat(Phase phase, int bits, Packing packing) {
    const auto found = std::find_if(inputTable.begin(), inputTable.end(), [&](const InputFormat& format) {
        return format.phase == phase && format.bits == bits && format.packing == packing;
    });
    return found == inputTable.end() ? nullptr : &*found;
}

const InputFormat* findInputFormat(const FormatHint& hint) {
    return findInputFormat(hint.phase, hint.bits, packingOf(hint));
}

const InputFormat* findInputFormat(std::string_view name) {
    if (name.substr(0, 2) == "0x" || name.substr(0, 2) == "0X") {
        return findByCode(name);
    }
    FormatHint hint;
    if (!readFormatHint(name, hint)) {
        return nullptr;
    }
    if (hint.bits == 0) {
        // A bare "rggb" or "gray" is the 8-bit layout in the tools that use such names.
        hint.bits = !hint.packed && !hint.words && (hint.fourSites || hint.phase == Phase::mono) ? 8 : 0;
    }
    return findInputFormat(hint);
}

const OutputFormat* findOutputFormat(std::string_view name) {
    const std::string folded = foldName(name);
    for (const OutputFormat& format : outputTable) {
        if (foldName(format.name) == folded) {
            return &format;
        }
    }
    for (const OutputAlias& entry : outputAliases) {
        if (entry.alias == folded) {
            return &outputFormat(entry.code);
        }
    }
    return nullptr;
}

const OutputFormat& outputFormat(uint32_t code) {
    return *std::find_if(outputTable.begin(), outputTable.end(),
                         [code](const OutputFormat& format) { return format.code == code; });
}

const InputFormat& requireInputFormat(const std::string& name) {
    if (const InputFormat* format = findInputFormat(name)) {
        return *format;
    }
    const std::string why = explainUnknown(name);
    throw UsageFailure("unknown pixel format '" + name + "'" +
                       (why.empty() ? suggestion(name, namesOf(inputTable)) + " (kro formats lists all)" : why));
}

const OutputFormat& requireOutputFormat(const std::string& name) {
    if (const OutputFormat* format = findOutputFormat(name)) {
        return *format;
    }
    throw UsageFailure("unknown output format '" + name + "'" + suggestion(name, namesOf(outputTable)) +
                       " (kro formats lists all)");
}

const char* firstSites(Phase phase) {
    constexpr std::array<const char*, 5> sites{"grey", "RGGB", "GRBG", "GBRG", "BGGR"};
    return sites[static_cast<std::size_t>(phase)];
}

std::string shortAlias(const InputFormat& format) {
    const std::string base = foldName(format.isBayer() ? firstSites(format.phase) : "gray");
    const char* layout = format.packing == Packing::word ? "le" : format.packing == Packing::packed ? "p" : "";
    return base + std::to_string(format.bits) + layout;
}

RedSite redSite(Phase phase) {
    return {phase == Phase::gb || phase == Phase::bg ? 1 : 0, phase == Phase::gr || phase == Phase::bg ? 1 : 0};
}

std::string nearestName(std::string_view text, const std::vector<std::string>& candidates) {
    const std::string folded = foldName(text);
    std::string nearest;
    std::size_t best = std::max<std::size_t>(2, folded.size() / 3) + 1;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = editDistance(folded, foldName(candidate));
        if (distance < best) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

}  // namespace cli
