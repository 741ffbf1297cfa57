#pragma once

#include <cstdint>
#include <vector>

#include "guess/likeness.hpp"
#include "guess/material.hpp"
#include "guess/packing_search.hpp"

namespace cli::guess {

// Frames of one geometry that fill a file, but for a header and what is left at the end.
struct FrameShape {
    Geometry geometry;
    std::size_t height = 0;
    uint64_t frames = 1;
    bool usualSize = false;

    std::size_t padding() const { return geometry.stride - geometry.layout->rowBytes(geometry.width); }
    uint64_t leftOver(uint64_t length) const {
        return length - geometry.start - frames * height * static_cast<uint64_t>(geometry.stride);
    }
};

// How well rows of a stride tell each other, which where rows begin does not change much.
struct RatedRows {
    Geometry geometry;
    Likeness likeness;
    // Bits a byte, a little less where the length of the file speaks for it too.
    double score = 0;
};

// Row lengths that suit the layout, best first.
std::vector<RatedRows> rateRows(const Material& material, const std::vector<Chunk>& chunks, const RatedLayout& rated);

// Where rows begin, how much of them are samples, how many make a frame and how many frames there are.
FrameShape shapeOf(const Material& material, const Geometry& rows);

}  // namespace cli::guess
