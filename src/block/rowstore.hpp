// The four output kinds: one store each. Channel order, planes and weights are state of the row being written.
#pragma once

#include "block/taps.hpp"
#include "block/values.hpp"
#include "frame/job.hpp"

namespace kro {
namespace {

// One output row. `own` and `other` are resolved: what the row's colour sites hold, and the colour of its neighbours.
struct RowTarget {
    uint8_t* own;  // interleaved and grey: the row
    uint8_t* green;
    uint8_t* other;
    uint32_t ownWeight, greenWeight, otherWeight;
    Columns zeroAlpha;  // columns whose fourth byte is written; elsewhere it stays the caller's
};

constexpr int32_t pixelBytes(Output kind) { return kind == Output::bgr ? 3 : kind == Output::bgra ? 4 : 1; }

// Byte 0 of an interleaved pixel is the row's own colour: blue in a blue row, unless red comes first.
KRO_INLINE bool ownComesFirst(const Target& target, Phase row) { return row.blueRow != target.redFirst; }

template <Output kind>
KRO_INLINE RowTarget rowTarget(const Target& target, Phase row, ptrdiff_t y, int32_t width) {
    const int own = row.blueRow ? 2 : 0, other = 2 - own;
    RowTarget result{};
    if constexpr (kind == Output::planar) {
        const ptrdiff_t offset = y * width;
        result.own = target.plane[own] + offset;
        result.green = target.plane[1] + offset;
        result.other = target.plane[other] + offset;
    } else {
        result.own = target.plane[0] + y * width * pixelBytes(kind);
    }
    result.ownWeight = target.weight[own];
    result.greenWeight = target.weight[1];
    result.otherWeight = target.weight[other];
    result.zeroAlpha = {0, width};
    return result;
}

// ---- cells ----

KRO_INLINE uint8_t byteOf(int32_t lane) { return static_cast<uint8_t>(lane); }

template <Output kind, bool ownFirst>
KRO_INLINE void putPixel(const RowTarget& row, int32_t x, int32_t own, int32_t green, int32_t other) {
    if constexpr (kind == Output::planar) {
        row.own[x] = byteOf(own);
        row.green[x] = byteOf(green);
        row.other[x] = byteOf(other);
    } else if constexpr (kind == Output::mono) {
        const uint32_t sum = row.ownWeight * static_cast<uint32_t>(own) + row.greenWeight * static_cast<uint32_t>(green) +
                             row.otherWeight * static_cast<uint32_t>(other) + 128;
        row.own[x] = static_cast<uint8_t>(sum >> 8);
    } else {
        uint8_t* const pixel = row.own + static_cast<ptrdiff_t>(x) * pixelBytes(kind);
        pixel[0] = byteOf(ownFirst ? own : other);
        pixel[1] = byteOf(green);
        pixel[2] = byteOf(ownFirst ? other : own);
        if constexpr (kind == Output::bgra) {
            if (x >= row.zeroAlpha.begin && x < row.zeroAlpha.end) {
                pixel[3] = 0;
            }
        }
    }
}

template <Output kind, bool ownFirst, class P>
KRO_INLINE void put(const RowTarget& row, CellBlock block, const P& pixels) {
    if (block.wantEven) {
        putPixel<kind, ownFirst>(row, block.x, evenLanesOf<Cell>(pixels.own), evenLanesOf<Cell>(pixels.green),
                                 evenLanesOf<Cell>(pixels.other));
    }
    if (block.wantOdd) {
        putPixel<kind, ownFirst>(row, block.x + 1, oddLanesOf<Cell>(pixels.own), oddLanesOf<Cell>(pixels.green),
                                 oddLanesOf<Cell>(pixels.other));
    }
}

template <Output kind, bool ownFirst, class P>
KRO_INLINE void put(const RowTarget& row, InnerBlock<Cell> block, const P& pixels) {
    put<kind, ownFirst>(row, CellBlock{block.x, 0, true, true}, pixels);
}

// ---- wide blocks ----

// Weights of sum 256 give at most 255 * 256 + 128 = 65408, so 16-bit lanes are exact (other weights wrap there, and the
// byte taken is the same as of the wider sum). The luma is a lane's high byte, which
// for odd columns is where it belongs already.
template <class V, class P>
KRO_INLINE typename V::Bytes lumaOf(const RowTarget& row, const P& pixels) {
    const auto wOwn = V::all(row.ownWeight), wGreen = V::all(row.greenWeight), wOther = V::all(row.otherWeight);
    const auto half = V::all(128);
    const auto weigh = [&](auto own, auto green, auto other) KRO_INLINE_LAMBDA {
        return V::add(V::add(V::mul(own, wOwn), V::mul(green, wGreen)), V::add(V::mul(other, wOther), half));
    };
    const auto even = weigh(evenLanesOf<V>(pixels.own), evenLanesOf<V>(pixels.green), evenLanesOf<V>(pixels.other));
    const auto odd = weigh(oddLanesOf<V>(pixels.own), oddLanesOf<V>(pixels.green), oddLanesOf<V>(pixels.other));
    return V::combine(V::high(even), odd);
}

// Alpha stays the caller's in some columns: those bytes are read back and kept.
template <class V>
KRO_OUTLINE void storeKeepingAlpha(uint8_t* out, int32_t x, Columns zeroAlpha, typename V::Quads quads) {
    uint32_t keep[V::columns];
    for (int32_t i = 0; i < V::columns; ++i) {
        keep[i] = x + i >= zeroAlpha.begin && x + i < zeroAlpha.end ? 0 : 0xFF000000u;
    }
    for (int part = 0; part < 4; ++part) {
        uint8_t* const at = out + part * V::columns;
        V::store(at, V::keepBits(quads.part[part], V::load(at), V::load(keep + part * V::columns / 4)));
    }
}

template <Output kind, bool ownFirst, class B, class P>
KRO_INLINE void put(const RowTarget& row, B block, const P& pixels) {
    using V = typename B::Vector;
    const int32_t x = block.x;
    if constexpr (kind == Output::mono) {
        V::store(row.own + x, lumaOf<V>(row, pixels));
    } else {
        const auto [own, green, other] = channelBytes<V>(pixels);
        if constexpr (kind == Output::planar) {
            V::store(row.own + x, own);
            V::store(row.green + x, green);
            V::store(row.other + x, other);
        } else if constexpr (kind == Output::bgr) {
            V::store3(row.own + static_cast<ptrdiff_t>(x) * 3, ownFirst ? own : other, green, ownFirst ? other : own);
        } else {
            const auto quads = V::quads(ownFirst ? own : other, green, ownFirst ? other : own);
            uint8_t* const out = row.own + static_cast<ptrdiff_t>(x) * 4;
            if (__builtin_expect(x < row.zeroAlpha.begin || x + V::columns > row.zeroAlpha.end, 0)) {
                storeKeepingAlpha<V>(out, x, row.zeroAlpha, quads);
                return;
            }
            for (int part = 0; part < 4; ++part) {
                V::store(out + part * V::columns, quads.part[part]);
            }
        }
    }
}

}  // namespace
}  // namespace kro
