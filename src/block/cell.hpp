// The scalar back end: one cell of two columns, and with it the definition of what every other back end computes.
#pragma once

#include <cstdint>

#include "block/inline.hpp"
#include "frame/geometry.hpp"

namespace kro {
namespace {

struct Cell {
    static constexpr int columns = 2;
    struct Bytes {
        uint8_t even, odd;
    };
    using Lanes = int32_t;  // one lane: the even or the odd column of the cell
    using Mask = bool;

    static KRO_INLINE Bytes load(const uint8_t* p) { return {p[0], p[1]}; }
    static KRO_INLINE Lanes low(Bytes b) { return b.even; }
    static KRO_INLINE Lanes high(Bytes b) { return b.odd; }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return a + b; }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return a - b; }
    static KRO_INLINE Lanes absolute(Lanes a) { return a < 0 ? -a : a; }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return a > b; }
    // Without a branch, which noise in a picture would mislead every second time.
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return no ^ ((no ^ yes) & -static_cast<Lanes>(m)); }
    static KRO_INLINE Lanes clampByte(Lanes a) { return a < 0 ? 0 : a > 255 ? 255 : a; }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return a >> n;  // arithmetic: floors
    }
    template <bool odd>
    static KRO_INLINE Bytes parityPick(Bytes here, Bytes left) {
        return odd ? Bytes{left.even, here.odd} : Bytes{here.even, left.odd};
    }
    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return *p; }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { *p = static_cast<int16_t>(a); }
};

}  // namespace
}  // namespace kro
