#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

enum class Phase { mono, rg, gr, gb, bg };

// How samples lie in memory: one byte each, one little-endian 16-bit word each, or two in three bytes.
enum class Packing { byte, word, packed };

struct InputFormat {
    const char* name;
    uint32_t code;
    Phase phase;
    int bits;
    Packing packing;

    bool isBayer() const { return phase != Phase::mono; }
    uint32_t maximum() const { return (1u << bits) - 1; }
    std::size_t frameBytes(std::size_t samples) const;
};

enum class Order { grey, rgb, bgr, rgba, bgra };

struct OutputFormat {
    const char* name;
    uint32_t code;
    Order order;
    bool planar;
};

const std::array<InputFormat, 31>& inputFormats();
const std::array<OutputFormat, 7>& outputFormats();

// What a piece of a name says about a format; bits 0 where it says nothing of depth.
struct FormatHint {
    Phase phase = Phase::mono;
    int bits = 0;
    bool packed = false;
    bool words = false;
    bool longName = false;
    bool fourSites = false;
};

// Null where no format has the name or code.
const InputFormat* findInputFormat(std::string_view name);
const InputFormat* findInputFormat(Phase phase, int bits, Packing packing);
const InputFormat* findInputFormat(const FormatHint& hint);
const OutputFormat* findOutputFormat(std::string_view name);

// Usage failures that name the nearest known names.
const InputFormat& requireInputFormat(const std::string& name);
const OutputFormat& requireOutputFormat(const std::string& name);
const OutputFormat& outputFormat(uint32_t code);

const char* firstSites(Phase phase);
std::string shortAlias(const InputFormat& format);

bool readFormatHint(std::string_view text, FormatHint& hint);

// The first row of a mosaic that holds red sites, and the first column.
struct RedSite {
    int row;
    int column;
};
RedSite redSite(Phase phase);

// The nearest of the candidates by edit distance, or empty where none is near.
std::string nearestName(std::string_view text, const std::vector<std::string>& candidates);
std::string foldName(std::string_view text);

}  // namespace cli
