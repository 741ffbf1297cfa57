#pragma once

#include <cstdint>

#include "guess/likeness.hpp"
#include "guess/material.hpp"

namespace cli::guess {

// The longest header that is looked for before frames of a usual size.
constexpr uint64_t largestHeader = 65536;

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

// Where rows begin, how much of them are samples, how many make a frame and how many frames there are.
FrameShape shapeOf(const Material& material, const Geometry& rows);

}  // namespace cli::guess
