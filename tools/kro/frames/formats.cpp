#include "frames/formats.hpp"

#include <algorithm>
#include <cctype>
#include <kro/kro.hpp>
#include <numeric>

#include "frames/format_names.hpp"
#include "support/failure.hpp"

namespace cli {

namespace {

// The library's own list, read as any other name is.
std::vector<InputFormat> makeInputTable() {
    std::vector<InputFormat> table;
    for (const kro::NamedFormat& named : kro::pixelFormats) {
        FormatHint hint;
        if (readFormatHint(named.name, hint)) {
            const Packing plain = hint.bits == 8 ? Packing::byte : Packing::word;
            table.push_back({named.name.data(), static_cast<uint32_t>(named.format), hint.phase, hint.bits,
                             hint.packing.value_or(plain)});
        }
    }
    return table;
}

constexpr std::array<OutputFormat, 22> outputTable{{
    {"BGR8", KRO_BGR8, Order::bgr, false, 8},
    {"RGB8", KRO_RGB8, Order::rgb, false, 8},
    {"BGRa8", KRO_BGRA8, Order::bgra, false, 8},
    {"RGBa8", KRO_RGBA8, Order::rgba, false, 8},
    {"aBGR8", KRO_ABGR8, Order::abgr, false, 8},
    {"aRGB8", KRO_ARGB8, Order::argb, false, 8},
    {"BGRx8", KRO_BGRX8, Order::bgra, false, 8},
    {"RGBx8", KRO_RGBX8, Order::rgba, false, 8},
    {"xBGR8", KRO_XBGR8, Order::abgr, false, 8},
    {"xRGB8", KRO_XRGB8, Order::argb, false, 8},
    {"RGB8Planar", KRO_RGB8_PLANAR, Order::rgb, true, 8},
    {"BGR8Planar", KRO_BGR8_PLANAR, Order::bgr, true, 8},
    {"Mono8", KRO_MONO8, Order::grey, false, 8},
    {"BGR16", KRO_BGR16, Order::bgr, false, 16},
    {"RGB16", KRO_RGB16, Order::rgb, false, 16},
    {"BGRa16", KRO_BGRA16, Order::bgra, false, 16},
    {"RGBa16", KRO_RGBA16, Order::rgba, false, 16},
    {"aBGR16", KRO_ABGR16, Order::abgr, false, 16},
    {"aRGB16", KRO_ARGB16, Order::argb, false, 16},
    {"RGB16Planar", KRO_RGB16_PLANAR, Order::rgb, true, 16},
    {"BGR16Planar", KRO_BGR16_PLANAR, Order::bgr, true, 16},
    {"Mono16", KRO_MONO16, Order::grey, false, 16},
}};

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

}  // namespace

std::size_t InputFormat::bytes(std::size_t samples) const {
    return static_cast<std::size_t>(kroRowBytes(code, static_cast<int32_t>(samples)));
}

const std::vector<InputFormat>& inputFormats() {
    static const std::vector<InputFormat> table = makeInputTable();
    return table;
}

const std::array<OutputFormat, 22>& outputFormats() { return outputTable; }

std::string foldName(std::string_view text) {
    std::string folded;
    for (const char c : text) {
        if (c != '_' && c != '-' && c != ' ') {
            folded += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return folded;
}

const InputFormat* findInputFormat(Phase phase, int bits, Packing packing) {
    const std::vector<InputFormat>& table = inputFormats();
    const auto found = std::find_if(table.begin(), table.end(), [&](const InputFormat& format) {
        return format.phase == phase && format.bits == bits && format.packing == packing;
    });
    return found == table.end() ? nullptr : &*found;
}

const InputFormat* findInputFormat(uint32_t code) {
    const std::vector<InputFormat>& table = inputFormats();
    const auto found =
        std::find_if(table.begin(), table.end(), [code](const InputFormat& format) { return format.code == code; });
    return found == table.end() ? nullptr : &*found;
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

std::string suggestion(std::string_view text, const std::vector<std::string>& candidates) {
    const std::string nearest = nearestName(text, candidates);
    return nearest.empty() ? "" : ", did you mean " + nearest + "?";
}

}  // namespace cli
