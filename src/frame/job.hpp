// What one whole-frame kernel is asked to do. Plain records: they cross from the entries to the instruction-set units.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kro {

enum class Algorithm : int32_t { nearest, bilinear, edge };
enum class Output : int32_t { bgr, bgra, planar, mono };

// Row 0 decides: does it start with green, does it hold blue? Both change from row to row.
struct Phase {
    bool greenFirst;
    bool blueRow;
};
constexpr Phase phaseRG{false, false};
constexpr Phase phaseGR{true, false};
constexpr Phase phaseGB{true, true};
constexpr Phase phaseBG{false, true};

constexpr Phase phaseOfRow(Phase frame, int32_t y) {
    const bool odd = (y & 1) != 0;
    return {frame.greenFirst != odd, frame.blueRow != odd};
}

// Where pixels go. Interleaved and grey output use plane[0]; planar output has the red, green and blue plane.
struct Target {
    uint8_t* plane[3];
    bool redFirst;       // interleaved: bytes R, G, B instead of B, G, R
    uint32_t weight[3];  // grey: of red, green and blue
};

constexpr uint32_t lumaWeight[3] = {77, 150, 29};

constexpr Target interleavedTarget(uint8_t* destination, bool redFirst) {
    return {{destination, nullptr, nullptr}, redFirst, {}};
}
constexpr Target planarTarget(uint8_t* red, uint8_t* green, uint8_t* blue) { return {{red, green, blue}, false, {}}; }
constexpr Target greyTarget(uint8_t* destination, const uint32_t (&weight)[3]) {
    return {{destination, nullptr, nullptr}, false, {weight[0], weight[1], weight[2]}};
}
// Luma of red, green, blue; `exchanged` where what the kernel reads as red is blue.
constexpr Target lumaTarget(uint8_t* destination, bool exchanged) {
    const uint32_t weight[3] = {lumaWeight[exchanged ? 2 : 0], lumaWeight[1], lumaWeight[exchanged ? 0 : 2]};
    return greyTarget(destination, weight);
}

// Deeper and packed samples become bytes just ahead of the rows that need them.
constexpr int32_t reductionNone = 0;
constexpr int32_t reductionUnpack = -1;  // any other value: shift right by so many bits

struct Source {
    const void* samples;
    int32_t reduction;
    uint8_t* ring;          // reduced rows; unused without reduction
    ptrdiff_t ringStride;   // bytes from one ring row to the next
};

constexpr int32_t ringRows = 8;  // a power of two not below the seven rows that the edge family keeps in view

// A frame of bytes, read in place.
constexpr Source plainSource(const void* samples) { return {samples, reductionNone, nullptr, 0}; }

struct FrameJob {
    Source source;
    int32_t height;
    int32_t width;
    Phase phase;
    Target target;
};

}  // namespace kro
