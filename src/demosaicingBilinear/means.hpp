// Means of two and four samples, in three ways.
#pragma once

#include "row/pixels.hpp"

namespace kro {
namespace {

// Sums in the lanes as they are: exact of bytes (four are at most 1020). Of words they wrap, and quotients are those
// of signed numbers: exact of samples of up to 13 bits.
template <class V>
struct LaneMeans {
    using Lanes = typename V::Lanes;
    static KRO_INLINE Lanes pair(Lanes a, Lanes b) { return V::add(a, b); }
    static KRO_INLINE Mean<V, 1> two(Lanes pair) { return {pair}; }
    static KRO_INLINE Mean<V, 2> four(Lanes p, Lanes q) { return {V::add(p, q)}; }
};

// Sums of words of up to 14 bits, which are exact as unsigned numbers.
template <class W>
struct UnsignedMeans {
    using Lanes = typename W::Lanes;
    static KRO_INLINE Lanes pair(Lanes a, Lanes b) { return W::add(a, b); }
    static KRO_INLINE Ready<W> two(Lanes pair) { return {W::template shiftRightLogical<1>(pair)}; }
    static KRO_INLINE Ready<W> four(Lanes p, Lanes q) { return {W::template shiftRightLogical<2>(W::add(p, q))}; }
};

// Truncated means of words that need no wider lanes. The mean of two truncated means is the truncated mean of four
// samples but where both pairs lost a half: together they are worth one more, which shows if the sum of the means is
// odd.
template <class W>
struct ExactMeans {
    using Lanes = typename W::Lanes;
    struct Pair {
        Lanes mean;
        Lanes lost;  // lowest bit: the sum was odd
    };
    static KRO_INLINE Lanes less(Lanes roundedUp, Lanes odd) { return W::sub(roundedUp, W::bitAnd(odd, W::all(1))); }
    static KRO_INLINE Pair pair(Lanes a, Lanes b) {
        const Lanes odd = W::bitXor(a, b);
        return {less(W::average(a, b), odd), odd};
    }
    static KRO_INLINE Ready<W> two(const Pair& pair) { return {pair.mean}; }
    static KRO_INLINE Ready<W> four(const Pair& p, const Pair& q) {
        const Lanes odd = W::bitAndNot(W::bitXor(p.mean, q.mean), W::bitAnd(p.lost, q.lost));
        return {less(W::average(p.mean, q.mean), odd)};
    }
};

}  // namespace
}  // namespace kro
