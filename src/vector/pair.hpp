// The scalar back end: a pair of columns, and with it the definition of what every other back end computes.
//
// A back end of bytes works on `Vector`s (bytes in column order) and `Lanes` (16-bit numbers: the even or the odd
// columns of a block). A back end of words has one lane a column, in column order; `Wide` are as many lanes of 32
// bits.
#pragma once

#include "records/geometry.hpp"

namespace kro {
namespace {

// Without a branch, which noise in a picture would mislead every second time.
template <class Int>
KRO_INLINE Int chosen(bool condition, Int yes, Int no) {
    return static_cast<Int>(no ^ ((no ^ yes) & -static_cast<Int>(condition)));
}

// One lane: a number that belongs to the even or to the odd column of a pair.
struct PairNumbers {
    using Lanes = int32_t;
    using Mask = bool;

    static KRO_INLINE Lanes all(int32_t value) { return value; }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return a + b; }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return a - b; }
    // Lanes of 16 bits end at 32767, others need not.
    static KRO_INLINE Lanes addSaturated(Lanes a, Lanes b) { return a + b; }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return a * b; }
    static KRO_INLINE Lanes absolute(Lanes a) { return a < 0 ? -a : a; }
    static KRO_INLINE Lanes least(Lanes a, Lanes b) { return a < b ? a : b; }
    static KRO_INLINE Lanes most(Lanes a, Lanes b) { return a < b ? b : a; }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return a > b; }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return chosen(m, yes, no); }
    // One more, one less, where the mask says so.
    static KRO_INLINE Lanes raised(Mask m, Lanes a) { return a + static_cast<int32_t>(m); }
    static KRO_INLINE Lanes lowered(Mask m, Lanes a) { return a - static_cast<int32_t>(m); }
    // Negative where the second is greater than the first; `a` is 0 where they are equal.
    static KRO_INLINE Lanes turned(Lanes a, Lanes first, Lanes second) { return chosen(second > first, -a, a); }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return a & b; }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) { return least(a < 0 ? 0 : a, top); }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return a >> n;  // arithmetic: floors
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightRounded(Lanes a) {
        return (a + (1 << (n - 1))) >> n;
    }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return a * (1 << n);
    }
};

struct PairBytes : PairNumbers {
    static constexpr int columns = 2;
    static constexpr bool weighsBytes = false;
    using Sample = uint8_t;
    using Number = int16_t;
    struct Vector {
        uint8_t even, odd;
    };

    static KRO_INLINE Vector load(const uint8_t* p) { return {p[0], p[1]}; }
    static KRO_INLINE void storeSites(uint8_t* even, uint8_t* odd, Vector v) {
        *even = v.even;
        *odd = v.odd;
    }
    static KRO_INLINE Vector pairOf(int32_t even, int32_t odd) {
        return {static_cast<uint8_t>(even), static_cast<uint8_t>(odd)};
    }
    static KRO_INLINE Lanes low(Vector b) { return b.even; }
    static KRO_INLINE Lanes high(Vector b) { return b.odd; }
    static KRO_INLINE Vector combine(Vector even, Vector odd) { return {even.even, odd.odd}; }
    static KRO_INLINE Vector evenOnly(Vector v) { return v; }
    static KRO_INLINE int32_t evenColumn(Lanes a) { return a; }
    static KRO_INLINE int32_t oddColumn(Lanes a) { return a; }
    static KRO_INLINE Lanes clampByte(Lanes a) { return clamp(a, 255); }
    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return *p; }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { *p = static_cast<int16_t>(a); }
    static KRO_INLINE Lanes loadLanes(const uint8_t* p) { return *p; }
};

// Two lanes of Int (int16_t or int32_t).
template <class Int>
struct PairLanes {
    static constexpr int columns = 2;
    using Sample = uint16_t;
    using Number = Int;
    struct Lanes {
        Int even, odd;
    };
    using Vector = Lanes;
    struct Mask {
        bool even, odd;
    };

    static KRO_INLINE Int narrowed(int32_t value) { return static_cast<Int>(value); }
    template <class Function>
    static KRO_INLINE Lanes each(Lanes a, Lanes b, Function f) {
        return {narrowed(f(a.even, b.even)), narrowed(f(a.odd, b.odd))};
    }

    static KRO_INLINE Lanes load(const uint16_t* p) { return {narrowed(p[0]), narrowed(p[1])}; }
    template <class Words>
    static KRO_INLINE Lanes widened(Words words) {
        return {narrowed(static_cast<uint16_t>(words.even)), narrowed(static_cast<uint16_t>(words.odd))};
    }
    static KRO_INLINE Vector pairOf(int32_t even, int32_t odd) { return {narrowed(even), narrowed(odd)}; }
    static KRO_INLINE int32_t evenColumn(Lanes a) { return static_cast<uint16_t>(a.even); }
    static KRO_INLINE int32_t oddColumn(Lanes a) { return static_cast<uint16_t>(a.odd); }
    static KRO_INLINE void store(uint16_t* p, Vector v) {
        p[0] = static_cast<uint16_t>(v.even);
        p[1] = static_cast<uint16_t>(v.odd);
    }
    static KRO_INLINE void storeSites(uint16_t* even, uint16_t* odd, Vector v) {
        *even = static_cast<uint16_t>(v.even);
        *odd = static_cast<uint16_t>(v.odd);
    }
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
    // Of unsigned words, 0 where there is nothing left.
    static KRO_INLINE Lanes less(Lanes a, Lanes b) {
        return each(a, b, [](int32_t x, int32_t y) {
            const int32_t left = (x & 0xFFFF) - (y & 0xFFFF);
            return left < 0 ? 0 : left;
        });
    }
    static KRO_INLINE Lanes atMost(Lanes a, Lanes top) {
        return each(a, top, [](int32_t x, int32_t most) { return (x & 0xFFFF) < (most & 0xFFFF) ? x : most; });
    }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) {
        return each(a, b, [](int32_t x, int32_t y) { return x & y; });
    }
    static KRO_INLINE Lanes bitOr(Lanes a, Lanes b) {
        return each(a, b, [](int32_t x, int32_t y) { return x | y; });
    }
    static KRO_INLINE Lanes absolute(Lanes a) {
        return each(a, a, [](int32_t x, int32_t) { return x < 0 ? -x : x; });
    }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return each(a, a, [](int32_t x, int32_t) { return x >> n; });  // arithmetic: floors
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightLogical(Lanes a) {
        return each(a, a, [](int32_t x, int32_t) { return (x & 0xFFFF) >> n; });  // of words
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return {a.even > b.even, a.odd > b.odd}; }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) {
        return {chosen(m.even, yes.even, no.even), chosen(m.odd, yes.odd, no.odd)};
    }
    static KRO_INLINE Lanes combine(Lanes even, Lanes odd) { return {even.even, odd.odd}; }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return each(a, top, [](int32_t x, int32_t most) { return x < 0 ? 0 : x > most ? most : x; });
    }
    static KRO_INLINE bool anyBits(Lanes a, int32_t bits) { return ((a.even | a.odd) & bits) != 0; }
    static KRO_INLINE Vector packed(Lanes a) { return a; }
};
using PairWords = PairLanes<int16_t>;

// Of a pair of words, a lane for each, as bytes have.
struct PairDwords : PairNumbers {
    using Number = int32_t;

    static KRO_INLINE PairWords::Vector joined(Lanes even, Lanes odd) { return PairWords::pairOf(even, odd); }
    static KRO_INLINE Lanes loadLanes(const int32_t* p) { return *p; }
    static KRO_INLINE void storeLanes(int32_t* p, Lanes a) { *p = a; }
    static KRO_INLINE Lanes loadLanes(const uint16_t* p) { return *p; }
};

struct PairWide : PairLanes<int32_t> {
    static KRO_INLINE PairWords::Vector packed(Lanes a) { return PairWords::pairOf(a.even, a.odd); }
};

// What 32-bit lanes of the set L make of additions. A mask is a lane of 0 or -1; sets that have others, or an
// instruction for it, say so.
template <class L>
struct Lanes32 {
    using Number = int32_t;

    template <class Lanes>
    static KRO_INLINE Lanes addSaturated(Lanes a, Lanes b) {
        return L::add(a, b);
    }
    template <class Lanes>
    static KRO_INLINE Lanes raised(Lanes mask, Lanes a) {
        return L::sub(a, mask);
    }
    template <class Lanes>
    static KRO_INLINE Lanes lowered(Lanes mask, Lanes a) {
        return L::add(a, mask);
    }
    template <int n, class Lanes>
    static KRO_INLINE Lanes shiftRightRounded(Lanes a) {
        return L::template shiftRight<n>(L::add(a, L::all(1 << (n - 1))));
    }
};

// Two registers of 32-bit lanes in place of one of 16-bit lanes: the same columns, the same names.
template <class Half, class Narrow>
struct Doubled {
    static constexpr int columns = Narrow::columns;
    static constexpr int half = columns / 2;
    using Sample = uint16_t;
    using Number = int32_t;
    struct Lanes {
        typename Half::Lanes first, second;
    };
    struct Mask {
        typename Half::Mask first, second;
    };

    // The 32-bit lanes of words that a narrow load brought.
    static KRO_INLINE Lanes widened(typename Narrow::Vector words) {
        return {Half::firstHalf(words), Half::secondHalf(words)};
    }
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
    static KRO_INLINE Lanes combine(Lanes even, Lanes odd) {
        return {Half::combine(even.first, odd.first), Half::combine(even.second, odd.second)};
    }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return {Half::clamp(a.first, top.first), Half::clamp(a.second, top.second)};
    }
    static KRO_INLINE typename Narrow::Vector packed(Lanes a) { return Half::packed(a.first, a.second); }
};

// What an instruction set brings: its three kinds of lanes, and half of the third, which of words holds the even or
// the odd columns of a block.
struct PairOfColumns {
    using Bytes = PairBytes;
    using Words = PairWords;
    using Wide = PairWide;
    using Dwords = PairDwords;
};

}  // namespace
}  // namespace kro
