#pragma once

#include <vector>

#include "developing/tone.hpp"
#include "pictures/picture.hpp"

namespace cli {

// How a straight picture becomes one that a person can judge.
struct Look {
    Tone tone;
    // White is where nearly all samples end, instead of where the format does.
    bool expose = true;
};

// The largest size of the same shape within the box; never larger than the picture itself.
FrameSize fitted(const FrameSize& picture, const FrameSize& box);

// An RGB picture of bytes, made smaller by means over areas, then exposed, balanced and curved.
Picture lookedAt(const Picture& picture, const FrameSize& size, const Look& look);

// Pictures side by side, each at the left upper corner of a cell of this size; what they leave is black.
Picture sheetOf(const std::vector<const Picture*>& pictures, const FrameSize& cell, std::size_t perRow);

}  // namespace cli
