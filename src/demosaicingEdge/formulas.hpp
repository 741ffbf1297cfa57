// The formulas of the edge-directed family.
#pragma once

#include "block/rowstore.hpp"
#include "demosaicingEdge/interpolation.hpp"

namespace kro {
namespace {

// S - G at the colour sites of a row (columns x + 2 k, or x + 2 k + 1 where colourOdd). Nothing on the way exceeds 1020:
// 16-bit lanes are exact.
//
// What bounds it: 33 vector instructions for 64 columns of a row on AVX-512 (9 shifts, 4 absolute values), 42 for 32 on
// AVX2, 53 for 16 on SSSE3: arithmetic, spread over all vector pipes; loads and stores are a quarter of it.
template <bool colourOdd, class B>
KRO_INLINE auto greenDifference(B block, const uint8_t* above2, const uint8_t* above, const uint8_t* here,
                                const uint8_t* below, const uint8_t* below2) {
    using V = typename B::Vector;
    const auto site = [](auto bytes) KRO_INLINE_LAMBDA { return colourOdd ? V::high(bytes) : V::low(bytes); };
    const auto left = block.template tap<-2>(here), middle = block.template tap<0>(here),
               right = block.template tap<2>(here);
    GreenTaps<V> taps;
    taps.sample = site(middle);
    taps.west = colourOdd ? V::low(middle) : V::high(left);
    taps.east = colourOdd ? V::low(right) : V::high(middle);
    taps.north = site(block.template tap<0>(above));
    taps.south = site(block.template tap<0>(below));
    taps.farWest = site(left);
    taps.farEast = site(right);
    taps.farNorth = site(block.template tap<0>(above2));
    taps.farSouth = site(block.template tap<0>(below2));
    return V::sub(taps.sample, V::clampByte(interpolatedGreen(taps)));
}

// Signed lanes that saturate to bytes where they are stored.
template <class V>
struct Saturated {
    typename V::Lanes value;
};
template <class V>
KRO_INLINE typename V::Lanes evenLanes(Saturated<V> s) {
    return V::clampByte(s.value);
}
template <class V>
KRO_INLINE typename V::Lanes oddLanes(Saturated<V> s) {
    return V::clampByte(s.value);
}

// Pixels whose own and other colour are signed lanes at all sites.
template <class V, class Green>
struct EdgePixels {
    Sites<Saturated<V>, Saturated<V>> own;
    Green green;
    Sites<Saturated<V>, Saturated<V>> other;
};
template <class V, class Green>
KRO_INLINE Channels<V> channelBytes(const EdgePixels<V, Green>& pixels) {
    Channels<V> channels;
    V::packPair(pixels.own.even.value, pixels.own.odd.value, pixels.other.even.value, pixels.other.odd.value,
                channels.own, channels.other);
    channels.green = bytesOf<V>(pixels.green);
    return channels;
}

// Colours are green plus the mean difference of the sites of that colour around; `above`, `same` and `below` are the
// difference rows, lane x / 2 belonging to the first site of the block. Differences are within -255..255: sums of four
// are exact.
//
// What bounds it, colour output: 34 vector instructions for 64 pixels on VBMI (10 loads, 7 shuffles, 3 stores), 42 on BW
// (13 shuffles), 38 for 32 on AVX2, 57 for 16 on SSSE3. Together with the green pass arithmetic bounds the family: about
// 25 cycles for 64 pixels with two 512-bit pipes, which is twice what the stores take.
template <bool colourOdd, class B>
KRO_INLINE auto edgePixels(B block, const uint8_t* here, const int16_t* above, const int16_t* same,
                           const int16_t* below) {
    using V = typename B::Vector;
    const int32_t lane = block.x / 2;
    const auto vertical = [=](int32_t k) KRO_INLINE_LAMBDA { return V::add(V::loadLanes(above + k), V::loadLanes(below + k)); };
    const auto bytes = block.template tap<0>(here);
    const auto sample = colourOdd ? V::high(bytes) : V::low(bytes);  // at colour sites
    const auto own = colourOdd ? V::low(bytes) : V::high(bytes);     // at green sites
    const auto difference = V::loadLanes(same + lane);
    const auto green = V::sub(sample, difference);

    const auto column = vertical(lane);  // the column of the green sites
    const auto diagonal = V::add(column, vertical(colourOdd ? lane + 1 : lane - 1));
    const auto row = V::add(difference, V::loadLanes(same + (colourOdd ? lane - 1 : lane + 1)));

    const auto otherAtColour = V::add(green, V::template shiftRight<2>(diagonal));
    const auto ownAtGreen = V::add(own, V::template shiftRight<1>(row));
    const auto otherAtGreen = V::add(own, V::template shiftRight<1>(column));
    const auto greens = sites<colourOdd>(Mean<V, 0>{green}, Own<V>{bytes});
    return EdgePixels<V, decltype(greens)>{
        sites<colourOdd>(Saturated<V>{sample}, Saturated<V>{ownAtGreen}), greens,
        sites<colourOdd>(Saturated<V>{otherAtColour}, Saturated<V>{otherAtGreen})};
}

// Columns of a row-pair step whose four-byte pixels are written whole: its blocks of 16 columns from column 1 on.
constexpr Columns alphaColumns(int32_t width) { return {1, width < 20 ? 1 : 1 + 16 + ((width - 20) & ~15)}; }

}  // namespace
}  // namespace kro
