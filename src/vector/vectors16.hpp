// Vectors of 16 bytes: what takes only loads, stores, shuffles by tables and bitwise operations, whatever the set.
#pragma once

#include "records/inline.hpp"
#include "vector/shuffles.hpp"

namespace kro {
namespace {

// Lanes of `L` as samples. What a set has better means for stands again in its own struct.
template <class L, class S>
struct Vectors16 : L {
    static constexpr int columns = 16 / sizeof(S);
    using Sample = S;
    using Vector = typename L::Vector;

    // Columns of which the first (last) `outside` lie beyond the row.
    template <int outside>
    static KRO_INLINE Vector loadLeft(const S* first) {
        static constexpr Shuffle<16> order = leftOf<16, sizeof(S)>(outside);
        return L::shuffled(L::load(first), order);
    }
    template <int outside>
    static KRO_INLINE Vector loadRight(const S* p) {
        static constexpr Shuffle<16> order = rightOf<16, sizeof(S)>(outside);
        return L::shuffled(L::load(p), order);
    }
    // Each 16-byte lane of a vector from a place of its own; here there is one.
    static KRO_INLINE Vector lanesAt(const uint8_t* in, const int32_t (&offset)[4], int32_t) {
        return L::load(in + offset[0]);
    }

    // Even columns to the one place, odd ones to the other.
    static KRO_INLINE void storeSites(S* even, S* odd, Vector v) {
        static constexpr Shuffle<16> order = sitesApart<16, sizeof(S)>();
        L::storeHalves(even, odd, L::shuffled(v, order));
    }

    // Three channels to pixels. Bound by its nine shuffles: masks and rotations, which wider sets use, cost five
    // logic operations a store here.
    //     store 0  a0 b0 c0 a1 b1 c1 .. a5       store 1  b5 c5 a6 .. b10       store 2  c10 a11 b11 .. c15
    static KRO_INLINE void store3(S* out, Vector c0, Vector c1, Vector c2) {
        constexpr int wide = sizeof(S);
        static constexpr Shuffle<16> spread[3][3] = {
            {spread3<16, wide>(0, 0), spread3<16, wide>(0, 1), spread3<16, wide>(0, 2)},
            {spread3<16, wide>(1, 0), spread3<16, wide>(1, 1), spread3<16, wide>(1, 2)},
            {spread3<16, wide>(2, 0), spread3<16, wide>(2, 1), spread3<16, wide>(2, 2)}};
        for (int j = 0; j < 3; ++j) {
            const Vector two = L::bitOr(L::shuffled(c0, spread[0][j]), L::shuffled(c1, spread[1][j]));
            L::store(out + j * columns, L::bitOr(two, L::shuffled(c2, spread[2][j])));
        }
    }
    static KRO_INLINE void storeTriple(uint8_t* out, Vector grey) {
        static constexpr Shuffle<16> order[3] = {triple<16>(0), triple<16>(1), triple<16>(2)};
        for (int j = 0; j < 3; ++j) {
            L::store(out + 16 * j, L::shuffled(grey, order[j]));
        }
    }
    // 12 bytes to 16, four times; reads 48 bytes.
    static KRO_INLINE void widen48(const uint8_t* in, uint8_t* out) {
        static constexpr Shuffle<16> fromStart = widen3to4(0), fromEnd = widen3to4(4);
        L::store(out, L::shuffled(L::load(in), fromStart));
        L::store(out + 16, L::shuffled(L::load(in + 12), fromStart));
        L::store(out + 32, L::shuffled(L::load(in + 24), fromStart));
        L::store(out + 48, L::shuffled(L::load(in + 32), fromEnd));
    }

    // Pixels of four channels. Wider sets bring channels into another order before they are interleaved.
    struct Quads {
        Vector part[4];
    };
    static KRO_INLINE Vector transposed(Vector v) { return v; }
    // Bits of `old` where `keep` has them, of `fresh` elsewhere.
    static KRO_INLINE Vector keepBits(Vector fresh, Vector old, Vector keep) { return L::select(keep, old, fresh); }
};

}  // namespace
}  // namespace kro
