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

// Differences are within -255..255: sums of four are exact. Together with the green pass arithmetic bounds the
// family: with two 512-bit pipes about twice what the stores take.
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

// Interpolated samples end at `top`; a pixel's own sample is never clamped. Colours are made while they are folded:
// 25 operations for two rows, where a row by itself takes 17.
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

    KRO_INLINE Lanes colourSample() const { return L::widened(colours); }
    KRO_INLINE Lanes difference() const { return L::loadLanes(same); }
    KRO_INLINE Lanes across() const { return beside(same); }
    // At a green site of the lower row the colour of the upper one stands above, in this unit, and below, in the
    // next.
    KRO_INLINE Lanes vertical() const {
        return L::add(difference(), folded<L, colourOdd>(L::loadLanes(below), L::loadLanes(above)));
    }
    KRO_INLINE Lanes diagonal() const {
        return L::add(beside(same), folded<L, colourOdd>(beside(above), beside(below)));
    }
    KRO_INLINE UnitPixels<V> pixels(Lanes green, Lanes otherAtColour, Lanes ownAtGreen, Lanes otherAtGreen) const {
        const Lanes greenSamples = L::widened(greens);
        const auto own = made(greenSamples, ownAtGreen), greenMade = L::packed(green);
        const auto atColour = made(green, otherAtColour), atGreen = made(greenSamples, otherAtGreen);
        return {makePixels(channel(colours, own), channel(greenMade, greens), channel(atColour, atGreen)),
                makePixels(channel(own, colours), channel(greens, greenMade), channel(atGreen, atColour))};
    }

private:
    static KRO_INLINE Lanes beside(const typename L::Number* row) {
        return L::add(L::loadLanes(row - 1), L::loadLanes(row + 1));
    }
    KRO_INLINE typename V::Vector made(Lanes green, Lanes difference) const {
        return L::packed(L::clamp(L::add(green, difference), top));
    }
    // Unfolds a row's channel.
    static KRO_INLINE Ready<V> channel(typename V::Vector inUpperColumns, typename V::Vector inLowerColumns) {
        return {folded<V, colourOdd>(inUpperColumns, inLowerColumns)};
    }
};

// Columns of a row-pair step whose four-byte pixels are written whole: its blocks of 16 columns from column 1 on.
constexpr Columns alphaColumns(int32_t width) { return {1, width < 20 ? 1 : 1 + 16 + ((width - 20) & ~15)}; }

}  // namespace
}  // namespace kro
