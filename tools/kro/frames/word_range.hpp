#pragma once

#include <cstdint>
#include <string>

#include "frames/frame_reader.hpp"

namespace cli {

// What the words of a frame reach; of other formats nothing, as their samples cannot exceed them.
struct WordRange {
    uint32_t most = 0;
    // With the bytes of each word exchanged.
    uint32_t mostSwapped = 0;
    // Every bit that is set in any of them.
    uint32_t used = 0;

    void add(const Bytes& frame, const FrameLayout& layout);
};

// Why words may go beyond so many significant bits, and which option helps.
std::string likelyCause(const WordRange& range, const FrameLayout& layout, int bits);

}  // namespace cli
