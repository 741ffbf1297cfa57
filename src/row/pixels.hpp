// What a row's formula hands to a store: for each channel one value at the even and one at the odd columns of a
// block.
//
// Bytes hold the even columns of a block in the low and the odd ones in the high halves of 16-bit lanes, so formulas
// work on half the columns at a time; words have a lane for every column, and of each value the columns that matter
// are picked.
#pragma once

#include "vector/pair.hpp"

namespace kro {
namespace {

template <class V>
constexpr bool ofBytes = sizeof(typename V::Sample) == 1;

// A number of columns as an argument of lambdas.
template <int k>
struct Distance {
    static constexpr int value = k;
};

// Samples k columns beside those of one parity. `anchor` says at which parity loads stand: of bytes, one load has all
// that two neighbouring parities need.
template <int anchor, bool odd, int k, class B>
KRO_INLINE auto samplesAt(B block, const typename B::Vector::Sample* row) {
    using V = typename B::Vector;
    if constexpr (!ofBytes<V>) {
        return block.template tap<k>(row);
    } else {
        constexpr int offset = k + (odd ? 1 : 0);
        if constexpr ((offset - anchor) % 2 == 0) {
            return V::low(block.template tap<offset>(row));
        } else {
            return V::high(block.template tap<offset - 1>(row));
        }
    }
}

// The same in the high halves of lanes, above zeros, for k from -1 to 1. No load stands farther off than one column.
template <bool odd, int k, class B>
KRO_INLINE auto highSamplesAt(B block, const typename B::Vector::Sample* row) {
    using V = typename B::Vector;
    constexpr int offset = k - (odd ? 0 : 1);
    if constexpr (offset < -1) {
        return V::template shiftLeft<8>(block.template tap<-1>(row));
    } else {
        return V::highOnly(block.template tap<offset>(row));
    }
}

// The sample itself, in its place.
template <class V>
struct Own {
    typename V::Vector samples;
};
// sum >> shift, where the quotient fits a sample: the store decides in which half of a lane it needs it.
template <class V, int shift>
struct Mean {
    typename V::Lanes sum;
};
// A channel that is finished already.
template <class V>
struct Ready {
    typename V::Vector samples;
};
// A byte in the high half of its lane, above a fraction of so many bits and zeros.
template <class V, int fraction>
struct HighByte {
    typename V::Lanes value;
};

// As numbers, a lane each.
template <class V>
KRO_INLINE typename V::Lanes evenLanes(Own<V> own) {
    if constexpr (ofBytes<V>) {
        return V::low(own.samples);
    } else {
        return own.samples;
    }
}
template <class V>
KRO_INLINE typename V::Lanes oddLanes(Own<V> own) {
    if constexpr (ofBytes<V>) {
        return V::high(own.samples);
    } else {
        return own.samples;
    }
}
template <class V, int shift>
KRO_INLINE typename V::Lanes evenLanes(Mean<V, shift> mean) {
    return V::template shiftRight<shift>(mean.sum);
}
template <class V, int shift>
KRO_INLINE typename V::Lanes oddLanes(Mean<V, shift> mean) {
    return V::template shiftRight<shift>(mean.sum);
}
template <class V>
KRO_INLINE typename V::Lanes evenLanes(Ready<V> ready) {
    return evenLanes(Own<V>{ready.samples});
}
template <class V>
KRO_INLINE typename V::Lanes oddLanes(Ready<V> ready) {
    return oddLanes(Own<V>{ready.samples});
}

// As samples for V::combine: of bytes, even ones must be clean where the back end needs it, odd ones need only their
// half.
template <class V>
KRO_INLINE typename V::Vector evenSamples(Own<V> own) {
    if constexpr (ofBytes<V>) {
        return V::evenOnly(own.samples);
    } else {
        return own.samples;
    }
}
template <class V>
KRO_INLINE typename V::Vector oddSamples(Own<V> own) {
    return own.samples;
}
template <class V, int shift>
KRO_INLINE typename V::Vector evenSamples(Mean<V, shift> mean) {
    return V::template shiftRight<shift>(mean.sum);
}
template <class V, int shift>
KRO_INLINE typename V::Vector oddSamples(Mean<V, shift> mean) {
    if constexpr (ofBytes<V>) {
        return V::template shiftLeft<8 - shift>(mean.sum);  // the quotient's 8 bits land in the high half
    } else {
        return V::template shiftRight<shift>(mean.sum);
    }
}
template <class V>
KRO_INLINE typename V::Vector evenSamples(Ready<V> ready) {
    return evenSamples(Own<V>{ready.samples});
}
template <class V>
KRO_INLINE typename V::Vector oddSamples(Ready<V> ready) {
    return ready.samples;
}

// Samples of one vector at the columns of one parity, of the other vector at those of the other.
template <class V, bool odd>
KRO_INLINE typename V::Vector picked(typename V::Vector atColumns, typename V::Vector elsewhere) {
    const auto even = odd ? elsewhere : atColumns;
    return V::combine(evenSamples(Own<V>{even}), odd ? atColumns : elsewhere);
}

// One channel of a block: values of two kinds.
template <class Even, class Odd>
struct Sites {
    Even even;
    Odd odd;
};
template <class V, class Even, class Odd>
KRO_INLINE typename V::Vector samplesOf(Sites<Even, Odd> sites) {
    return V::combine(evenSamples(sites.even), oddSamples(sites.odd));
}
template <class V>
KRO_INLINE typename V::Vector samplesOf(Ready<V> ready) {
    return ready.samples;
}

// A channel's values at the even or the odd columns.
template <bool odd, class Even, class Odd>
KRO_INLINE auto valuesAt(Sites<Even, Odd> sites) {
    if constexpr (odd) {
        return sites.odd;
    } else {
        return sites.even;
    }
}
template <bool odd, class V>
KRO_INLINE Ready<V> valuesAt(Ready<V> ready) {
    return ready;
}
template <bool odd, class Value>
KRO_INLINE auto lanes(Value value) {
    if constexpr (odd) {
        return oddLanes(value);
    } else {
        return evenLanes(value);
    }
}

// Orders the values at colour sites and at green sites by column parity.
template <bool colourOdd, class Colour, class Green>
KRO_INLINE auto sites(Colour atColour, Green atGreen) {
    if constexpr (colourOdd) {
        return Sites<Green, Colour>{atGreen, atColour};
    } else {
        return Sites<Colour, Green>{atColour, atGreen};
    }
}

// The three channels of a block: the colour that this row's own sites hold, green, and the other colour.
template <class OwnColour, class Green, class OtherColour>
struct Pixels {
    OwnColour own;
    Green green;
    OtherColour other;
};
template <class OwnColour, class Green, class OtherColour>
KRO_INLINE Pixels<OwnColour, Green, OtherColour> makePixels(OwnColour own, Green green, OtherColour other) {
    return {own, green, other};
}

// The three channels as samples in column order.
template <class V>
struct Channels {
    typename V::Vector own, green, other;
};
template <class V, class A, class B, class C>
KRO_INLINE Channels<V> channelsOf(const Pixels<A, B, C>& pixels) {
    return {samplesOf<V>(pixels.own), samplesOf<V>(pixels.green), samplesOf<V>(pixels.other)};
}

// ---- bytes from signed lanes ----

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

// A channel as lanes that a saturating pack makes samples of.
template <class Lanes>
struct LanesToPack {
    Lanes even, odd;
};
template <class V, class Even, class Odd>
KRO_INLINE LanesToPack<typename V::Lanes> lanesToPack(const Sites<Even, Odd>& sites) {
    return {evenLanes(sites.even), oddLanes(sites.odd)};
}
template <class V>
KRO_INLINE LanesToPack<typename V::Lanes> lanesToPack(const Sites<Saturated<V>, Saturated<V>>& sites) {
    return {sites.even.value, sites.odd.value};
}

// Pixels whose own and other colour are signed lanes at all sites.
template <class V, class Green>
struct SaturatedPixels {
    Sites<Saturated<V>, Saturated<V>> own;
    Green green;
    Sites<Saturated<V>, Saturated<V>> other;
};
// Two channels of them in column order.
template <class V>
struct PackedPair {
    typename V::Vector first, second;
};
template <class V, class Channel>
KRO_INLINE PackedPair<V> packedPair(const Channel& a, const Channel& b) {
    PackedPair<V> packed;
    V::packPair(a.even.value, a.odd.value, b.even.value, b.odd.value, packed.first, packed.second);
    return packed;
}
template <class V, class Green>
KRO_INLINE Channels<V> channelsOf(const SaturatedPixels<V, Green>& pixels) {
    const auto [own, other] = packedPair<V>(pixels.own, pixels.other);
    return {own, samplesOf<V>(pixels.green), other};
}

}  // namespace
}  // namespace kro
