// Bilinear on 16-bit samples of an RG mosaic, 16-bit blue, green, red out.
//
// In the rows of the body, blocks of eight columns from column 1 on form their sums in 16-bit lanes that wrap; all else
// is the exact truncated mean, borders included (a border is the same formula on the mirrored mosaic).
//
// Bounds, in operations a pixel: the wide sets are bound by their stores (six bytes a pixel against some 19 lane
// operations for 32 columns), SSSE3 by its shuffles (nine for eight columns).
#pragma once

#include "block/wordtaps.hpp"
#include "frame/rectangle.hpp"

namespace kro {
namespace {

// Sums of 16 bits, wrapping, and their arithmetic shifts.
template <class W>
struct WrappingMeans {
    using Lanes = typename W::Lanes;
    static KRO_INLINE Lanes pair(Lanes a, Lanes b) { return W::add(a, b); }
    static KRO_INLINE Lanes two(Lanes pair) { return W::template shiftRight<1>(pair); }
    static KRO_INLINE Lanes four(Lanes p, Lanes q) { return W::template shiftRight<2>(W::add(p, q)); }
};

// Truncated means that need no wider lanes. The mean of two truncated means is the truncated mean of four samples but
// where both pairs lost a half: together they are worth one more, which shows if the sum of the means is odd.
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
    static KRO_INLINE Lanes two(const Pair& pair) { return pair.mean; }
    static KRO_INLINE Lanes four(const Pair& p, const Pair& q) {
        const Lanes odd = W::bitAndNot(W::bitXor(p.mean, q.mean), W::bitAnd(p.lost, q.lost));
        return less(W::average(p.mean, q.mean), odd);
    }
};

// The colour of the row's own sites, green, and the other colour, of a block's columns.
template <class W>
struct Pixels16 {
    typename W::Lanes own, green, other;
};

// Red sites stand at the even columns of red rows, blue ones at the odd columns of blue rows.
template <template <class> class Means, bool blueRow, class B>
KRO_INLINE auto bilinearPixels16(B block, const uint16_t* above, const uint16_t* here, const uint16_t* below) {
    using W = typename B::Back;
    using M = Means<W>;
    const auto atSites = [](auto colour, auto green)
        KRO_INLINE_LAMBDA { return blueRow ? W::alternate(green, colour) : W::alternate(colour, green); };
    const auto own = block.template tap<0>(here);
    const auto across = M::pair(block.template tap<-1>(here), block.template tap<1>(here));
    const auto down = M::pair(block.template tap<0>(above), block.template tap<0>(below));
    const auto left = M::pair(block.template tap<-1>(above), block.template tap<-1>(below));
    const auto right = M::pair(block.template tap<1>(above), block.template tap<1>(below));
    return Pixels16<W>{atSites(own, M::two(across)), atSites(M::four(across, down), own),
                       atSites(M::four(left, right), M::two(down))};
}

// Inner blocks wrap whole, end blocks where their columns do.
template <bool blueRow, class W>
KRO_INLINE Pixels16<W> wrappingPixels16(InnerWords<W> block, Columns, const uint16_t* above, const uint16_t* here,
                                        const uint16_t* below) {
    return bilinearPixels16<WrappingMeans, blueRow>(block, above, here, below);
}
template <bool blueRow, class W>
KRO_INLINE Pixels16<W> wrappingPixels16(EndWords<W> block, Columns wraps, const uint16_t* above, const uint16_t* here,
                                        const uint16_t* below) {
    const auto lane = [&](int32_t column) {
        const int32_t place = column - block.x;
        return W::all(place < -1 ? -1 : place > W::columns ? W::columns : place);
    };
    const auto wrapping = bilinearPixels16<WrappingMeans, blueRow>(block, above, here, below);
    const auto exact = bilinearPixels16<ExactMeans, blueRow>(block, above, here, below);
    const auto begun = W::greater(W::iota(), lane(wraps.begin - 1)), left = W::greater(lane(wraps.end), W::iota());
    const auto pick = [&](auto inside, auto outside)
        KRO_INLINE_LAMBDA { return W::select(begun, W::select(left, inside, outside), outside); };
    return {pick(wrapping.own, exact.own), pick(wrapping.green, exact.green), pick(wrapping.other, exact.other)};
}

// Where 16-bit pixels go. Interleaved output uses plane[0]; planar output has the blue, green and red plane.
struct Target16 {
    uint16_t* plane[3];
    bool redFirst;  // interleaved: words R, G, B instead of B, G, R
};

// One output row of either kind.
template <bool planar>
struct Row16 {
    uint16_t* channel[3];  // blue, green, red; interleaved: the row only
    bool ownFirst;

    KRO_INLINE Row16(const Target16& target, bool blueRow, ptrdiff_t y, int32_t width)
        : ownFirst(blueRow != target.redFirst) {
        for (int c = 0; c < 3; ++c) {
            channel[c] = target.plane[c] == nullptr ? nullptr : target.plane[c] + y * width * (planar ? 1 : 3);
        }
    }
};

template <class W>
KRO_INLINE void storeRun(uint16_t* out, typename W::Lanes lanes) {
    W::store(out, W::packed(lanes));
}
template <bool planar, bool blueRow, bool ownFirst, template <class> class Block, class W>
KRO_INLINE void put16(const Row16<planar>& row, const Block<W>& block, const Pixels16<W>& pixels) {
    const ptrdiff_t x = block.x;
    if constexpr (planar) {
        W::store(row.channel[blueRow ? 0 : 2] + x, pixels.own);
        W::store(row.channel[1] + x, pixels.green);
        W::store(row.channel[blueRow ? 2 : 0] + x, pixels.other);
    } else {
        W::store3(row.channel[0] + 3 * x, ownFirst ? pixels.own : pixels.other, pixels.green,
                  ownFirst ? pixels.other : pixels.own);
    }
}
