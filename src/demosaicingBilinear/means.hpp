// Means of two and four samples, in four ways.
#pragma once

#include "row/pixels.hpp"

namespace kro {
namespace {

// Samples in the low halves of lanes, own ones in their places.
struct LowSamples {
    template <bool odd, int k, class B, class Sample>
    static KRO_INLINE auto at(B block, const Sample* row) {
        return samplesAt<1, odd, k>(block, row);
    }
    template <bool, class B, class Sample>
    static KRO_INLINE auto own(B block, const Sample* row) {
        return Own<typename B::Vector>{block.template tap<0>(row)};
    }
};

// Sums in the lanes as they are: exact of bytes (four are at most 1020). Of words they wrap, and quotients are those
// of signed numbers: exact of samples of up to 13 bits.
template <class V>
struct LaneMeans : LowSamples {
    using Lanes = typename V::Lanes;
    static KRO_INLINE Lanes pair(Lanes a, Lanes b) { return V::add(a, b); }
    static KRO_INLINE Mean<V, 1> two(Lanes pair) { return {pair}; }
    static KRO_INLINE Mean<V, 2> four(Lanes p, Lanes q) { return {V::add(p, q)}; }
};

// Of bytes that are to be weighed: in the high halves of lanes means need no shift. Averages are exact there, since
// fractions stay below: halves of a sum in bit 7, quarters in bits 6 and 7.
template <class V>
struct HighMeans {
    using Lanes = typename V::Lanes;
    template <bool odd, int k, class B>
    static KRO_INLINE Lanes at(B block, const uint8_t* row) {
        return highSamplesAt<odd, k>(block, row);
    }
    template <bool odd, class B>
    static KRO_INLINE HighByte<V, 0> own(B block, const uint8_t* row) {
        return {at<odd, 0>(block, row)};
    }
    static KRO_INLINE Lanes pair(Lanes a, Lanes b) { return V::average(a, b); }
    static KRO_INLINE HighByte<V, 1> two(Lanes pair) { return {pair}; }
    static KRO_INLINE HighByte<V, 2> four(Lanes p, Lanes q) { return {V::average(p, q)}; }
};
template <>
struct HighMeans<PairBytes> : LaneMeans<PairBytes> {};

// Sums of words of up to 14 bits, which are exact as unsigned numbers.
template <class W>
struct UnsignedMeans : LowSamples {
    using Lanes = typename W::Lanes;
    static KRO_INLINE Lanes pair(Lanes a, Lanes b) { return W::add(a, b); }
    static KRO_INLINE Ready<W> two(Lanes pair) { return {W::template shiftRightLogical<1>(pair)}; }
    static KRO_INLINE Ready<W> four(Lanes p, Lanes q) { return {W::template shiftRightLogical<2>(W::add(p, q))}; }
};

// Truncated means of words of 16 bits in lanes of 16. Sums lose their upper bits, and means of means that round up
// are at most one above the truncated mean: whether they are, the lowest bit of what is left of the sum tells.
template <class W>
struct ExactMeans : LowSamples {
    using Lanes = typename W::Lanes;
    struct Pair {
        Lanes sum;      // modulo 2^16
        Lanes roundUp;  // the mean
    };
    static KRO_INLINE Pair pair(Lanes a, Lanes b) { return {W::add(a, b), W::average(a, b)}; }
    static KRO_INLINE Ready<W> two(const Pair& pair) { return {lowered(pair.roundUp, pair.sum)}; }
    static KRO_INLINE Ready<W> four(const Pair& p, const Pair& q) {
        const Lanes roundUp = W::average(p.roundUp, q.roundUp);
        const Lanes truncated = W::template shiftRightLogical<2>(W::add(p.sum, q.sum));  // modulo 2^14
        return {lowered(roundUp, W::sub(roundUp, truncated))};
    }

private:
    static KRO_INLINE Lanes lowered(Lanes mean, Lanes odd) { return W::sub(mean, W::bitAnd(odd, W::all(1))); }
};

}  // namespace
}  // namespace kro
