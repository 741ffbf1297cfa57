#pragma once

#include <kro/view.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "frames/formats.hpp"

namespace cli {

// What a picture is made of and how: sizes, and what kroConvertView is asked for besides.
struct Shape {
    int32_t width;
    int32_t height;
    int32_t gap;     // bytes from the end of a row to the next; with 0, unless flipped, rows follow without gaps
    bool flipped;    // row 0 is the last in memory
    int32_t bands;   // calls that share the picture
    uint32_t flags;  // KRO_VIEW_...; those for words where there are words
};

// Rows in memory of a frame or a plane, the gaps included.
class Rows {
public:
    Rows(uint32_t format, const Shape& shape);

    uint8_t* rowZero() { return memory_.data() + rowZero_; }
    const uint8_t* rowZero() const { return memory_.data() + rowZero_; }
    ptrdiff_t stride() const { return stride_; }
    std::size_t rowDistance() const { return rowDistance_; }
    std::vector<uint8_t>& memory() { return memory_; }
    const std::vector<uint8_t>& memory() const { return memory_; }

private:
    ptrdiff_t stride_;
    std::size_t rowDistance_;
    std::size_t rowZero_ = 0;
    std::vector<uint8_t> memory_;
};

// A frame as the generator makes it. Unit i of its memory, a byte or a word, stands in column x = i mod n and row
// y = i div n, n being the units from a row to the next. With all numbers and products modulo 2^32, let
//
//     mix(k):  k = k * 0x9E3779B1;  k = k ^ k >> 15;  k = k * 0x85EBCA77;  k = k ^ k >> 13;  k = k * 0xC2B2AE3D;
//              k ^ k >> 16
//     tile     mix(x div 8 + 65536 (y div 4)): tiles of 8 columns and 4 rows
//     noise    mix(x + 65536 y + 0x5BD1E995)
//
// Then a unit's value, of 16 bits, is by the two low bits of its tile
//
//     0  noise          1  (tile >> 8) + 911 x + 1777 y          2  0 or 65535, as noise is even or odd
//     3  (tile >> 16) + (noise >> 24)
//
// modulo 65536. A byte has the high eight bits of it; packed samples lie in such bytes. A word has its high bits, as
// many as the format, at its lower end; all sixteen where samples are left-aligned and, so that words exceed their
// format, where 31 divides i.
Rows generateFrame(const InputFormat& format, const Shape& shape);

}  // namespace cli
