// Red and blue: green plus the mean difference of the sites of that colour around.
#pragma once

#include "demosaicingEdge/green.hpp"
#include "row/store.hpp"

namespace kro {
namespace {

// `near` is the neighbourhood of a block of one row: its samples, and the differences of the rows above, of its own
// and below. Its `pixels` adds the means to the greens of their sites.
template <class N>
KRO_INLINE auto edgePixels(const N& near) {
    using L = typename N::L;
    const auto green = L::sub(near.colourSample(), near.difference());
    const auto otherAtColour = L::template shiftRight<2>(near.diagonal());
    const auto ownAtGreen = L::template shiftRight<1>(near.across());
    const auto otherAtGreen = L::template shiftRight<1>(near.vertical());
    return near.pixels(green, otherAtColour, ownAtGreen, otherAtGreen);
}

// ---- bytes: lanes hold every other column, differences have a lane for each site ----

// Differences are within -255..255: sums of four are exact. What bounds it is said beside the greens.
template <bool colourOdd, class B>
struct ByteNeighbours {
    using L = typename B::Vector;
    using Lanes = typename L::Lanes;
    typename L::Vector here;
    const int16_t *above, *same, *below;  // lane 0 belongs to the block's first site

    KRO_INLINE Lanes colourSample() const { return colourOdd ? L::high(here) : L::low(here); }
    KRO_INLINE Lanes greenSample() const { return colourOdd ? L::low(here) : L::high(here); }
    KRO_INLINE Lanes difference() const { return L::loadLanes(same); }
    KRO_INLINE Lanes across() const { return L::add(difference(), L::loadLanes(same + (colourOdd ? -1 : 1))); }
    KRO_INLINE Lanes vertical() const { return L::add(L::loadLanes(above), L::loadLanes(below)); }
    KRO_INLINE Lanes diagonal() const {
        constexpr int k = colourOdd ? 1 : -1;
        return L::add(vertical(), L::add(L::loadLanes(above + k), L::loadLanes(below + k)));
    }
    KRO_INLINE auto pixels(Lanes green, Lanes otherAtColour, Lanes ownAtGreen, Lanes otherAtGreen) const {
        const auto greens = sites<colourOdd>(Mean<L, 0>{green}, Own<L>{here});
        return SaturatedPixels<L, decltype(greens)>{
            sites<colourOdd>(Saturated<L>{colourSample()}, Saturated<L>{L::add(greenSample(), ownAtGreen)}), greens,
            sites<colourOdd>(Saturated<L>{L::add(green, otherAtColour)},
                             Saturated<L>{L::add(greenSample(), otherAtGreen)})};
    }
};

// ---- words: a lane for each column of two folded rows (folded.hpp) ----

// A unit's samples, and differences: its own, the upper row's neighbours' above it, the lower row's below it.
template <class Number>
struct FoldedColours {
    const uint16_t *colours, *greens;
    const Number *above, *same, *below;
};

// Pixels of both rows.
template <class V>
struct UnitPixels {
    Pixels<Ready<V>, Ready<V>, Ready<V>> upper, lower;
};

// Means of kept differences, rounded up. In 16-bit lanes the average of two averages is one too high where both were
// rounded and it is rounded as well.
template <class L, class Lanes>
KRO_INLINE Lanes meanOfTwo(Lanes a, Lanes b) {
    if constexpr (sizeof(typename L::Number) == 2) {
        return L::average(a, b);
    } else {
        return L::template shiftRight<1>(L::add(L::add(a, b), L::all(1)));
    }
}
template <class L, class Lanes>
KRO_INLINE Lanes meanOfFour(Lanes a, Lanes b, Lanes c, Lanes d) {
    if constexpr (sizeof(typename L::Number) == 2) {
        const Lanes p = L::average(a, b), q = L::average(c, d);
        const Lanes rounded = L::bitAnd(L::bitAnd(L::sub(a, b), L::sub(c, d)), L::sub(p, q));
        return L::sub(L::average(p, q), L::bitAnd(rounded, L::all(1)));
    } else {
        return L::template shiftRight<2>(L::add(L::add(L::add(a, b), L::add(c, d)), L::all(3)));
    }
}
// Interpolated samples: green less a mean, both from the origin of differences, within 0 and `top`.
template <class L, class Lanes>
KRO_INLINE Lanes lessMean(Lanes green, Lanes mean, Lanes top) {
    if constexpr (sizeof(typename L::Number) == 2) {
        return L::atMost(L::less(green, mean), top);
    } else {
        return L::clamp(L::sub(green, mean), top);
    }
}

// Interpolated samples end at `top`; a pixel's own sample is never clamped. Colours are made while they are folded:
// 30 operations for two rows, where a row by itself takes 17.
template <class Number, class B, bool colourOdd>
struct FoldedNeighbours {
    using V = typename B::Vector;
    using L = Number;
    using Lanes = typename L::Lanes;

    KRO_INLINE FoldedNeighbours(const FoldedColours<typename L::Number>& unit, int32_t x, Lanes most)
        : colours(V::load(unit.colours + x)),
          greens(V::load(unit.greens + x)),
          above(unit.above + x),
          same(unit.same + x),
          below(unit.below + x),
          top(most) {}

    typename V::Vector colours, greens;
    const typename L::Number *above, *same, *below;  // lane 0 belongs to the block's first column
    Lanes top;

    // At a green site of the lower row the colour of the upper one stands above, in this unit, and below, in the
    // next.
    KRO_INLINE UnitPixels<V> pixels() const {
        const Lanes origin = L::all(differenceOrigin<L>), here = L::loadLanes(same);
        const Lanes west = L::loadLanes(same - 1), east = L::loadLanes(same + 1);
        const Lanes atColours = L::add(L::widened(colours), here), atGreens = L::add(L::widened(greens), origin);
        const auto greenMade = L::packed(L::sub(atColours, origin));
        const auto own = made(atGreens, meanOfTwo<L>(west, east));
        const auto atGreen = made(atGreens, meanOfTwo<L>(here, beyond<0>(below, above)));
        const auto atColour =
            made(atColours, meanOfFour<L>(west, east, beyond<-1>(above, below), beyond<1>(above, below)));
        return {makePixels(channel(colours, own), channel(greenMade, greens), channel(atColour, atGreen)),
                makePixels(channel(own, colours), channel(greens, greenMade), channel(atGreen, atColour))};
    }

private:
    template <int k>
    static KRO_INLINE Lanes beyond(const typename L::Number* ofUpper, const typename L::Number* ofLower) {
        return folded<L, colourOdd>(L::loadLanes(ofUpper + k), L::loadLanes(ofLower + k));
    }
    KRO_INLINE typename V::Vector made(Lanes green, Lanes mean) const {
        return L::packed(lessMean<L>(green, mean, top));
    }
    // Unfolds a row's channel.
    static KRO_INLINE Ready<V> channel(typename V::Vector inUpperColumns, typename V::Vector inLowerColumns) {
        return {folded<V, colourOdd>(inUpperColumns, inLowerColumns)};
    }
};

// Columns of a row-pair step whose four-byte pixels are written whole: its blocks of 16 columns from column 1 on.
constexpr Columns alphaColumns(int32_t width) {
    return width < 20 ? Columns{0, 0} : Columns{1, 1 + 16 + ((width - 20) & ~15)};
}

}  // namespace
}  // namespace kro
