// Red and blue: green plus the mean difference of the sites of that colour around.
#pragma once

#include "demosaicingEdge/green.hpp"
#include "row/store.hpp"

namespace kro {
namespace {

// ---- bytes: lanes hold every other column, differences have a lane for each site ----

// Of a row's samples and the differences S - G of the rows above, of its own and below; lane 0 belongs to the block's
// first site. Differences are within -255..255: sums of four are exact. What bounds it is said beside the greens.
template <bool colourOdd, class V>
KRO_INLINE auto edgePixels(typename V::Vector here, const int16_t* above, const int16_t* same, const int16_t* below) {
    using Lanes = typename V::Lanes;
    constexpr int k = colourOdd ? 1 : -1;  // the lane beside, to the right of odd columns, to the left of even ones
    const Lanes colour = lanes<colourOdd>(Own<V>{here}), atGreen = lanes<!colourOdd>(Own<V>{here});
    const Lanes difference = V::loadLanes(same), green = V::sub(colour, difference);
    const Lanes vertical = V::add(V::loadLanes(above), V::loadLanes(below));
    const Lanes diagonal = V::add(vertical, V::add(V::loadLanes(above + k), V::loadLanes(below + k)));
    const Lanes across = V::add(difference, V::loadLanes(same - k));

    const Lanes otherAtColour = V::add(green, V::template shiftRight<2>(diagonal));
    const Lanes ownAtGreen = V::add(atGreen, V::template shiftRight<1>(across));
    const Lanes otherAtGreen = V::add(atGreen, V::template shiftRight<1>(vertical));
    const auto greens = sites<colourOdd>(Mean<V, 0>{green}, Own<V>{here});
    return SaturatedPixels<V, decltype(greens)>{
        sites<colourOdd>(Saturated<V>{colour}, Saturated<V>{ownAtGreen}), greens,
        sites<colourOdd>(Saturated<V>{otherAtColour}, Saturated<V>{otherAtGreen})};
}

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
