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

    // What one direction exceeds the other by in either part: numbers half as large as sums of both parts.
    const Lanes steeperDown = L::sub(L::absolute(L::sub(t.north, t.south)), L::absolute(L::sub(t.west, t.east)));
    const auto across = L::greater(steeperDown, L::sub(L::absolute(bendAcross), L::absolute(bendDown)));
    const Lanes greens = L::select(across, L::add(t.west, t.east), L::add(t.north, t.south));
    const Lanes bend = L::select(across, bendAcross, bendDown);
    return L::add(L::template shiftRight<1>(greens), L::template shiftRight<2>(bend));
}

// ---- bytes: one row, a lane for each of its sites (columns x + 2 k, or x + 2 k + 1 where colourOdd) ----
//
// Nothing on the way exceeds 1020: 16-bit lanes are exact. Bound by arithmetic, spread over all vector pipes: a block
// of AVX2 takes 37 vector instructions, or 41 where colours are at odd columns, one of AVX-512 33. Together with 35
// and 36 for its colours (BGR8) Zen 5 makes 32 columns in 20 cycles and 64 in 25, where its four pipes could in 18
// and 17; with AVX-512 every other load lies across two lines of the cache.
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
    // No other tap wants this load, so it may stand where a mask does for a shift, which Intel's processors have but
    // one pipe for at 512 bits (llvm-mca, Ice Lake: 15.1 cycles a block at odd columns for 16.6). North, south and
    // far ones loaded so would lie across two lines of the cache (Zen 5: 4 to 13 % slower).
    constexpr int anchor = colourOdd ? 1 : 0;
    taps.farWest = samplesAt<anchor, colourOdd, -2>(block, here);
    taps.farEast = beside(Distance<2>{}, here);
    taps.farNorth = beside(Distance<0>{}, above2);
    taps.farSouth = beside(Distance<0>{}, below2);
    return V::sub(taps.sample, V::clampByte(interpolatedGreen(taps)));
}

// ---- words: two rows, folded (folded.hpp) ----

// Colours and greens of the unit in hand and of those above and below it, two columns more on both sides.
struct FoldedUnits {
    const uint16_t *coloursAbove, *colours, *coloursBelow;
    const uint16_t *greensAbove, *greens, *greensBelow;
};

// Of what belongs to the upper and to the lower row, in upper columns the one and in lower columns the other.
template <class L, bool colourOdd, class Lanes>
KRO_INLINE Lanes folded(Lanes upper, Lanes lower) {
    return colourOdd ? L::combine(lower, upper) : L::combine(upper, lower);
}

// Differences are kept as G - S, and in 16-bit lanes from this number on, so that they are unsigned: their means are
// averages that round up, which makes those of S - G round down.
template <class L>
constexpr int32_t differenceOrigin = sizeof(typename L::Number) == 2 ? 1 << 14 : 0;

// Greens end at `top`. In lanes of 16 bits samples of at most 14 bits keep every step exact: second differences are
// at most 32766, what gradients differ by 16383 in one part and 32766 in the other, greens 24574 before they are
// clamped, differences within -16383..24574. (Second differences of 15 bits take 17.) Bound by arithmetic: 27
// operations for two rows.
template <class L, class V, bool colourOdd>
KRO_INLINE auto foldedDifference(const FoldedUnits& units, int32_t x, typename L::Lanes top) {
    const auto at = [x](const uint16_t* row, int k) KRO_INLINE_LAMBDA { return V::load(row + x + k); };
    const auto beside = at(units.greens, 0);
    GreenTaps<L> taps;
    taps.sample = L::widened(at(units.colours, 0));
    taps.west = L::widened(at(units.greens, -1));
    taps.east = L::widened(at(units.greens, 1));
    taps.north = L::widened(folded<V, colourOdd>(at(units.greensAbove, 0), beside));
    taps.south = L::widened(folded<V, colourOdd>(beside, at(units.greensBelow, 0)));
    taps.farWest = L::widened(at(units.colours, -2));
    taps.farEast = L::widened(at(units.colours, 2));
    taps.farNorth = L::widened(at(units.coloursAbove, 0));
    taps.farSouth = L::widened(at(units.coloursBelow, 0));
    return L::add(L::sub(L::clamp(interpolatedGreen(taps), top), taps.sample), L::all(differenceOrigin<L>));
}

}  // namespace
}  // namespace kro
