// 16-bit samples, a lane each, in column order. The scalar back end of two columns defines what the others compute.
#pragma once

#include "block/cell.hpp"
#include "block/tables.hpp"

namespace kro {
namespace {

// The back ends that go with a back end of bytes: `Words` has 16-bit lanes, `Wide` as many lanes of 32 bits.
template <class V>
struct WordsOf;

template <class Int>
struct CellLanes {
    static constexpr int columns = 2;
    using Word = Int;
    struct Lanes {
        Int even, odd;
    };
    struct Mask {
        bool even, odd;
    };

    static KRO_INLINE Int narrowed(int32_t value) { return static_cast<Int>(value); }
    static KRO_INLINE int32_t unsignedWord(Int value) { return static_cast<uint16_t>(value); }
    template <class Function>
    static KRO_INLINE Lanes each(Lanes a, Lanes b, Function f) {
        return {narrowed(f(a.even, b.even)), narrowed(f(a.odd, b.odd))};
    }

    static KRO_INLINE Lanes load(const uint16_t* p) { return {narrowed(p[0]), narrowed(p[1])}; }
    static KRO_INLINE Lanes loadLanes(const Int* p) { return {p[0], p[1]}; }
    static KRO_INLINE void storeLanes(Int* p, Lanes a) {
        p[0] = a.even;
        p[1] = a.odd;
    }
    static KRO_INLINE Lanes all(int32_t value) { return {narrowed(value), narrowed(value)}; }
    static KRO_INLINE Lanes iota() { return {0, 1}; }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) {
        return each(a, b, [](int32_t x, int32_t y) { return x + y; });
    }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) {
        return each(a, b, [](int32_t x, int32_t y) { return x - y; });
    }
    // Of unsigned words, rounded up.
    static KRO_INLINE Lanes average(Lanes a, Lanes b) {
        return each(a, b, [](int32_t x, int32_t y) { return ((x & 0xFFFF) + (y & 0xFFFF) + 1) >> 1; });
    }
    static KRO_INLINE Lanes bitXor(Lanes a, Lanes b) {
        return each(a, b, [](int32_t x, int32_t y) { return x ^ y; });
    }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) {
        return each(a, b, [](int32_t x, int32_t y) { return x & y; });
    }
    static KRO_INLINE Lanes bitOr(Lanes a, Lanes b) {
        return each(a, b, [](int32_t x, int32_t y) { return x | y; });
    }
    static KRO_INLINE Lanes bitAndNot(Lanes a, Lanes b) {
        return each(a, b, [](int32_t x, int32_t y) { return x & ~y; });
    }
    static KRO_INLINE Lanes absolute(Lanes a) {
        return each(a, a, [](int32_t x, int32_t) { return x < 0 ? -x : x; });
    }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return each(a, a, [](int32_t x, int32_t) { return x >> n; });  // arithmetic: floors
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return {a.even > b.even, a.odd > b.odd}; }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) {
        return {m.even ? yes.even : no.even, m.odd ? yes.odd : no.odd};
    }
    static KRO_INLINE Lanes alternate(Lanes even, Lanes odd) { return {even.even, odd.odd}; }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return each(a, top, [](int32_t x, int32_t most) { return x < 0 ? 0 : x > most ? most : x; });
    }
    static KRO_INLINE bool anyBits(Lanes a, int32_t bits) { return ((a.even | a.odd) & bits) != 0; }

    using Packed = Lanes;
    static KRO_INLINE Packed packed(Lanes a) { return a; }
    static KRO_INLINE void store(uint16_t* p, Packed a) {
        p[0] = static_cast<uint16_t>(a.even);
        p[1] = static_cast<uint16_t>(a.odd);
    }
    static KRO_INLINE void store3(uint16_t* out, Packed c0, Packed c1, Packed c2) {
        const Packed channel[3] = {c0, c1, c2};
        for (int c = 0; c < 3; ++c) {
            out[c] = static_cast<uint16_t>(channel[c].even);
            out[3 + c] = static_cast<uint16_t>(channel[c].odd);
        }
    }
};
using CellWords = CellLanes<int16_t>;

// Two registers of 32-bit lanes in place of one of 16-bit lanes: the same columns, the same names.
template <class Half, class Narrow>
struct Doubled {
    static constexpr int columns = Narrow::columns;
    static constexpr int half = columns / 2;
    using Word = int32_t;
    struct Lanes {
        typename Half::Lanes first, second;
    };
    struct Mask {
        typename Half::Mask first, second;
    };

    static KRO_INLINE Lanes load(const uint16_t* p) { return {Half::load(p), Half::load(p + half)}; }
    static KRO_INLINE Lanes loadLanes(const int32_t* p) { return {Half::loadLanes(p), Half::loadLanes(p + half)}; }
    static KRO_INLINE void storeLanes(int32_t* p, Lanes a) {
        Half::storeLanes(p, a.first);
        Half::storeLanes(p + half, a.second);
    }
    static KRO_INLINE Lanes all(int32_t value) { return {Half::all(value), Half::all(value)}; }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) {
        return {Half::add(a.first, b.first), Half::add(a.second, b.second)};
    }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) {
        return {Half::sub(a.first, b.first), Half::sub(a.second, b.second)};
    }
    static KRO_INLINE Lanes absolute(Lanes a) { return {Half::absolute(a.first), Half::absolute(a.second)}; }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return {Half::template shiftRight<n>(a.first), Half::template shiftRight<n>(a.second)};
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) {
        return {Half::greater(a.first, b.first), Half::greater(a.second, b.second)};
    }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) {
        return {Half::select(m.first, yes.first, no.first), Half::select(m.second, yes.second, no.second)};
    }
    static KRO_INLINE Lanes alternate(Lanes even, Lanes odd) {
        return {Half::alternate(even.first, odd.first), Half::alternate(even.second, odd.second)};
    }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return {Half::clamp(a.first, top.first), Half::clamp(a.second, top.second)};
    }

    using Packed = typename Narrow::Lanes;
    static KRO_INLINE Packed packed(Lanes a) { return Half::packed(a.first, a.second); }
    static KRO_INLINE void store3(uint16_t* out, Packed c0, Packed c1, Packed c2) { Narrow::store3(out, c0, c1, c2); }
};

template <>
struct WordsOf<Cell> {
    using Words = CellWords;
    using Wide = CellLanes<int32_t>;
};

}  // namespace
}  // namespace kro
