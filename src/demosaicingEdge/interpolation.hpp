// Green between samples, for any back end with lanes.
#pragma once

#include "block/inline.hpp"

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

}  // namespace
}  // namespace kro
