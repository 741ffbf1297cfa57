// What a row text hands to a store: for each channel one value at the even and one at the odd columns of a block.
#pragma once

#include "block/cell.hpp"

namespace kro {
namespace {

// The sample itself, in its place in the loaded bytes.
template <class V>
struct Own {
    typename V::Bytes bytes;
};
// sum >> shift, where the sum is at most 255 << shift: the store decides in which half of a lane it needs the quotient.
template <class V, int shift>
struct Mean {
    typename V::Lanes sum;
};

// Even columns: a lane's low byte.
template <class V>
KRO_INLINE typename V::Lanes evenLanes(Own<V> own) {
    return V::low(own.bytes);
}
template <class V, int shift>
KRO_INLINE typename V::Lanes evenLanes(Mean<V, shift> mean) {
    return V::template shiftRight<shift>(mean.sum);
}
template <class V>
KRO_INLINE typename V::Lanes oddLanes(Own<V> own) {
    return V::high(own.bytes);
}
template <class V, int shift>
KRO_INLINE typename V::Lanes oddLanes(Mean<V, shift> mean) {
    return V::template shiftRight<shift>(mean.sum);
}

// Bytes for V::combine: even ones must be clean where the back end needs it, odd ones need only their own half.
template <class V>
KRO_INLINE typename V::Bytes evenBytes(Own<V> own) {
    return V::evenOnly(own.bytes);
}
template <class V, int shift>
KRO_INLINE typename V::Bytes evenBytes(Mean<V, shift> mean) {
    return V::template shiftRight<shift>(mean.sum);
}
template <class V>
KRO_INLINE typename V::Bytes oddBytes(Own<V> own) {
    return own.bytes;
}
template <class V, int shift>
KRO_INLINE typename V::Bytes oddBytes(Mean<V, shift> mean) {
    return V::template shiftLeft<8 - shift>(mean.sum);  // the quotient's 8 bits land in the high half
}

// One channel of a block: values of two kinds.
template <class Even, class Odd>
struct Sites {
    Even even;
    Odd odd;
};
template <class V, class Even, class Odd>
KRO_INLINE typename V::Bytes bytesOf(Sites<Even, Odd> sites) {
    return V::combine(evenBytes(sites.even), oddBytes(sites.odd));
}
template <class V, class Even, class Odd>
KRO_INLINE typename V::Lanes evenLanesOf(Sites<Even, Odd> sites) {
    return evenLanes(sites.even);
}
template <class V, class Even, class Odd>
KRO_INLINE typename V::Lanes oddLanesOf(Sites<Even, Odd> sites) {
    return oddLanes(sites.odd);
}

// A channel that is finished bytes already.
template <class V>
struct Ready {
    typename V::Bytes bytes;
};
template <class V>
KRO_INLINE typename V::Bytes bytesOf(Ready<V> ready) {
    return ready.bytes;
}
template <class V>
KRO_INLINE typename V::Lanes evenLanesOf(Ready<V> ready) {
    return V::low(ready.bytes);
}
template <class V>
KRO_INLINE typename V::Lanes oddLanesOf(Ready<V> ready) {
    return V::high(ready.bytes);
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

// The three channels as bytes in column order.
template <class V>
struct Channels {
    typename V::Bytes own, green, other;
};
template <class V, class A, class B, class C>
KRO_INLINE Channels<V> channelBytes(const Pixels<A, B, C>& pixels) {
    return {bytesOf<V>(pixels.own), bytesOf<V>(pixels.green), bytesOf<V>(pixels.other)};
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

}  // namespace
}  // namespace kro
