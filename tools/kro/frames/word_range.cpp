#include "frames/word_range.hpp"

#include <algorithm>
#include <cstring>

namespace cli {

namespace {

uint16_t swapped(uint16_t word) { return static_cast<uint16_t>(word << 8 | word >> 8); }

// A row's own copy, since rows may lie anywhere; simple enough for the compiler to take many words at a time.
void addRow(WordRange& range, const std::vector<uint16_t>& row) {
    uint16_t most = 0;
    uint16_t mostSwapped = 0;
    uint16_t used = 0;
    for (const uint16_t word : row) {
        most = std::max(most, word);
        mostSwapped = std::max(mostSwapped, swapped(word));
        used |= word;
    }
    range.most = std::max<uint32_t>(range.most, most);
    range.mostSwapped = std::max<uint32_t>(range.mostSwapped, mostSwapped);
    range.used |= used;
}

int bitsNeeded(uint32_t value) {
    int bits = 0;
    for (; value != 0; value >>= 1) {
        bits++;
    }
    return bits;
}

}  // namespace

void WordRange::add(const Bytes& frame, const FrameLayout& layout) {
    if (layout.format->packing != Packing::word) {
        return;
    }
    WordRange found;
    std::vector<uint16_t> row(static_cast<std::size_t>(layout.size.width));
    const std::size_t stride = layout.stride != 0 ? layout.stride : layout.rowBytes();
    for (std::size_t y = 0; y < static_cast<std::size_t>(layout.size.height); y++) {
        std::memcpy(row.data(), &frame[y * stride], layout.rowBytes());
        addRow(found, row);
    }
    if (layout.bigEndian) {
        std::swap(found.most, found.mostSwapped);
        found.used = swapped(static_cast<uint16_t>(found.used));
    }
    most = std::max(most, found.most);
    mostSwapped = std::max(mostSwapped, found.mostSwapped);
    used |= found.used;
}

std::string likelyCause(const WordRange& range, const FrameLayout& layout, int bits) {
    if (range.mostSwapped < 1u << bits) {
        return layout.bigEndian ? "little-endian words? then without --big-endian" : "big-endian words? --big-endian";
    }
    const std::string wide = std::string("-f ") + findInputFormat(layout.format->phase, 16, Packing::word)->name;
    if ((range.used & ((1u << (16 - bits)) - 1)) == 0) {
        return "left-aligned samples? " + wide;
    }
    const int needed = bitsNeeded(range.most);
    return "more significant bits? " + wide + (needed == 16 ? "" : " --bits " + std::to_string(needed)) +
           "; or another packing or size";
}

}  // namespace cli
