#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

enum class Phase { mono, rg, gr, gb, bg };

// How samples lie in memory: one byte each; one 16-bit word each; two in three bytes as GigE Vision packs them; bit
// after bit from the least significant on, as PFNC's names that end in p have them; MIPI CSI-2's high bytes first.
enum class Packing { byte, word, packed, lsb, csi2 };

struct InputFormat {
    const char* name;
    uint32_t code;
    Phase phase;
    int bits;
    Packing packing;

    bool isBayer() const { return phase != Phase::mono; }
    uint32_t maximum() const { return (1u << bits) - 1; }
    // Of samples without a gap, whole groups of packed ones.
    std::size_t bytes(std::size_t samples) const;
};

enum class Order { grey, rgb, bgr, rgba, bgra, argb, abgr };

struct OutputFormat {
    const char* name;
    uint32_t code;
    Order order;
    bool planar;
    int bits;
};

const std::vector<InputFormat>& inputFormats();
const std::array<OutputFormat, 22>& outputFormats();

// Null where there is none.
const InputFormat* findInputFormat(Phase phase, int bits, Packing packing);
const InputFormat* findInputFormat(uint32_t code);
const OutputFormat* findOutputFormat(std::string_view name);
const OutputFormat& outputFormat(uint32_t code);

// A usage failure that names the nearest known name.
const OutputFormat& requireOutputFormat(const std::string& name);

const char* firstSites(Phase phase);

// The first row of a mosaic that holds red sites, and the first column.
struct RedSite {
    int row;
    int column;
};
RedSite redSite(Phase phase);

// The nearest of the candidates by edit distance, or empty where none is near; the same as a question.
std::string nearestName(std::string_view text, const std::vector<std::string>& candidates);
std::string suggestion(std::string_view text, const std::vector<std::string>& candidates);

// In lower case, without what separates words.
std::string foldName(std::string_view text);

template <typename Table>
std::vector<std::string> namesOf(const Table& table) {
    std::vector<std::string> names;
    for (const auto& entry : table) {
        names.emplace_back(entry.name);
    }
    return names;
}

}  // namespace cli
