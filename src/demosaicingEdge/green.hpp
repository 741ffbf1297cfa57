// Green at red and blue sites, kept as the difference S - G of the site's sample and its green.
#pragma once

#include "row/pixels.hpp"

namespace kro {
namespace {

// What surrounds a red or blue site: its four greens and the four nearest samples of its own colour in line with it.
template <class L>
struct GreenTaps {
    typename L::Lanes sample;
    typename L::Lanes west, east, north, south;
    typename L::Lanes farWest, farEast, farNorth, farSouth;
};

// Along the direction of the smaller gradient sum (vertical on ties), corrected by a quarter of the second
// difference; both quotients are floored before they are added. Not clamped.
template <class L>
KRO_INLINE typename L::Lanes interpolatedGreen(const GreenTaps<L>& t) {
    using Lanes = typename L::Lanes;
    const Lanes twice = L::add(t.sample, t.sample);
    const Lanes bendAcross = L::sub(L::sub(twice, t.farWest), t.farEast);
    const Lanes bendDown = L::sub(L::sub(twice, t.farNorth), t.farSouth);
    const Lanes gradientAcross = L::add(L::absolute(L::sub(t.west, t.east)), L::absolute(bendAcross));
    const Lanes gradientDown = L::add(L::absolute(L::sub(t.north, t.south)), L::absolute(bendDown));

    const auto across = L::greater(gradientDown, gradientAcross);
    const Lanes greens = L::select(across, L::add(t.west, t.east), L::add(t.north, t.south));
    const Lanes bend = L::select(across, bendAcross, bendDown);
    return L::add(L::template shiftRight<1>(greens), L::template shiftRight<2>(bend));
}

// ---- bytes: one row, a lane for each of its sites (columns x + 2 k, or x + 2 k + 1 where colourOdd) ----
//
// Nothing on the way exceeds 1020: 16-bit lanes are exact. Bound by arithmetic, spread over all vector pipes; loads
// and stores are a quarter of it.
template <bool colourOdd, class B>
KRO_INLINE auto greenDifference(B block, const uint8_t* above2, const uint8_t* above, const uint8_t* here,
                                const uint8_t* below, const uint8_t* below2) {
    using V = typename B::Vector;
    const auto beside = [&](auto distance, const uint8_t* row) KRO_INLINE_LAMBDA {
        return samplesAt<0, colourOdd, decltype(distance)::value>(block, row);
    };
    GreenTaps<V> taps;
    taps.sample = beside(Distance<0>{}, here);
    taps.west = beside(Distance<-1>{}, here);
    taps.east = beside(Distance<1>{}, here);
    taps.north = beside(Distance<0>{}, above);
    taps.south = beside(Distance<0>{}, below);
    taps.farWest = beside(Distance<-2>{}, here);
    taps.farEast = beside(Distance<2>{}, here);
    taps.farNorth = beside(Distance<0>{}, above2);
    taps.farSouth = beside(Distance<0>{}, below2);
    return V::sub(taps.sample, V::clampByte(interpolatedGreen(taps)));
}

// ---- words: two rows, folded so that every lane has a use ----
//
//     upper row   R G R G R G        colours   R B R B R B
//     lower row   G B G B G B        greens    G G G G G G     (from the lower, the upper, the lower row ...)
//
// "Upper" columns are those whose colour stands in the upper row. Differences are folded as colours.
struct FoldedRows {
    const uint16_t *colours, *greens;  // of the two rows, with two columns to spare on both sides
    const uint16_t *above, *below;     // the rows above the upper and below the lower one
    const uint16_t* far[4];  // two above the upper, two above the lower, two below the upper, two below the lower
};

// Of two rows' samples, those of the row where the column's colour stands: the upper, or the other way round.
template <bool colourOdd, class V>
KRO_INLINE typename V::Vector folded(typename V::Vector atUpper, typename V::Vector atLower) {
    return colourOdd ? V::combine(atLower, atUpper) : V::combine(atUpper, atLower);
}

// Greens end at `top`. In lanes of 16 bits samples of at most 12 bits keep every step exact: second differences are
// at most 8190, gradient sums 12285, greens 6142, differences within -6142..4095 and sums of four of them within
// -24568..16380.
template <class L, bool colourOdd, class B>
KRO_INLINE auto foldedDifference(B block, const FoldedRows& rows, typename L::Lanes top) {
    using V = typename B::Vector;
    const auto fold = [&](auto atUpper, auto atLower)
                          KRO_INLINE_LAMBDA { return L::widened(folded<colourOdd, V>(atUpper, atLower)); };
    const auto tap = [&](const uint16_t* row) KRO_INLINE_LAMBDA { return block.template tap<0>(row); };
    const uint16_t *const colours = rows.colours + block.x, *const greens = rows.greens + block.x;
    const auto beside = V::load(greens);
    GreenTaps<L> taps;
    taps.sample = L::widened(V::load(colours));
    taps.west = L::widened(V::load(greens - 1));
    taps.east = L::widened(V::load(greens + 1));
    taps.north = fold(tap(rows.above), beside);
    taps.south = fold(beside, tap(rows.below));
    taps.farWest = L::widened(V::load(colours - 2));
    taps.farEast = L::widened(V::load(colours + 2));
    taps.farNorth = fold(tap(rows.far[0]), tap(rows.far[1]));
    taps.farSouth = fold(tap(rows.far[2]), tap(rows.far[3]));
    return L::sub(taps.sample, L::clamp(interpolatedGreen(taps), top));
}

}  // namespace
}  // namespace kro
