// The output kinds: one store each, for bytes and words. Channel order, planes and weights are state of the row being
// written.
#pragma once

#include <type_traits>

#include "records/job.hpp"
#include "row/blocks.hpp"
#include "row/pixels.hpp"
#include "vector/shuffles.hpp"

namespace kro {
namespace {

// One output row, from the first of the columns that a kernel counts on. `own` and `other` are resolved: what the
// row's colour sites hold, and the colour of its neighbours.
template <class Sample>
struct RowTarget {
    Sample* own;  // interleaved and grey: the row
    Sample* green;
    Sample* other;
    uint32_t ownWeight, greenWeight, otherWeight;
    uint32_t alpha;
    Columns alphaColumns;  // columns whose fourth channel is written; elsewhere it stays the caller's
    int32_t spreadBits;    // words: samples of so many bits are spread over all 16; 0: they are not
};

constexpr int32_t channelsIn(Output kind) {
    return kind == Output::bgr ? 3 : kind == Output::bgra || kind == Output::abgr ? 4 : 1;
}
constexpr bool isInterleaved(Output kind) { return channelsIn(kind) > 1; }

// Of an interleaved pixel the row's own colour comes first: blue in a blue row, unless red comes first.
KRO_INLINE bool ownComesFirst(const Target& target, Phase row) { return row.blueRow != target.redFirst; }

// What the compiler knows to be so, or not. (The standard library's would have external linkage.)
template <bool yes>
struct Known {
    constexpr operator bool() const { return yes; }
};

// Of four functions the one that a row wants: does it start with green, does its own colour come first? `functions`
// names them, given both as constants.
template <Output kind, class Functions>
KRO_INLINE auto functionFor(const Target& target, Phase row, const Functions& functions) {
    constexpr Known<isInterleaved(kind)> first{};
    constexpr Known<true> green{};
    constexpr Known<false> no{};
    const bool ownFirst = first && ownComesFirst(target, row);
    return row.greenFirst ? (ownFirst ? functions(green, first) : functions(green, no))
                          : (ownFirst ? functions(no, first) : functions(no, no));
}

// Row y of a target from column x on.
template <Output kind, class Sample>
KRO_INLINE RowTarget<Sample> rowTarget(const Target& target, Phase row, int32_t y, int32_t x) {
    const int own = row.blueRow ? 2 : 0, other = 2 - own;
    const auto at = [&](int plane) KRO_INLINE_LAMBDA {
        return advanced(static_cast<Sample*>(target.plane[plane]), (y - target.firstRow) * target.stride[plane]) +
               static_cast<ptrdiff_t>(x) * channelsIn(kind);
    };
    RowTarget<Sample> result{};
    if constexpr (kind == Output::planar) {
        result.own = at(own);
        result.green = at(1);
        result.other = at(other);
    } else {
        result.own = at(0);
    }
    result.ownWeight = target.weight[own];
    result.greenWeight = target.weight[1];
    result.otherWeight = target.weight[other];
    result.alpha = target.alpha;
    result.spreadBits = target.spreadBits;
    result.alphaColumns = {INT32_MIN, INT32_MAX};
    return result;
}

// Pieces of a row, or of two that are made together. Ahead of each piece the places are asked for that it has in the
// rows of the next step, `ahead` bytes from row to row; not at all if that is 0. Of a large picture they are in no
// cache, stores would wait for them, and the processor's own prefetching ends with each page, of which a row has
// several. Zen 5, 12 Mpixel to BGR8: bilinear 1.6 times as fast with AVX2 and 1.2 with AVX-512, edge-directed 1.3 to
// 1.4, nearest 1.2 to 1.6, 16 bits 1.2 to 1.5. All of a row at once, or a few lines ahead in the row, gained next to
// nothing. Grey ones gain nothing.
template <Output kind, class V>
class RowsAhead {
    static constexpr bool asks = V::columns > 2 && kind != Output::mono;
    static constexpr int32_t columns = 128 / sizeof(typename V::Sample);  // of a piece
    using Sample = typename V::Sample;

public:
    KRO_INLINE RowsAhead(const RowTarget<Sample>& row, ptrdiff_t ahead, int rows)
        : row_(row), ahead_(asks ? ahead : 0), rows_(rows) {}

    KRO_INLINE int32_t begin(int32_t x, int32_t last) const {
        if (__builtin_expect(ahead_ == 0, 1)) {
            return last;
        }
        expect(x);
        return last - x < columns ? last : x + columns - V::columns;
    }

private:
    const RowTarget<Sample>& row_;
    const ptrdiff_t ahead_;
    const int rows_;

    // (In line: with a call in a row's loop edge-directed frames of 640x480 are made at .74 to .89 of the rate, of 12
    // Mpixel at .57 to .68.)
    KRO_INLINE void expect(int32_t x) const {
        const ptrdiff_t first = static_cast<ptrdiff_t>(x) * channelsIn(kind);
        expectPlane(row_.own + first);
        if constexpr (kind == Output::planar) {
            expectPlane(row_.green + first);
            expectPlane(row_.other + first);
        }
    }
    KRO_INLINE void expectPlane(const Sample* piece) const {
        constexpr ptrdiff_t line = 64, bytes = columns * channelsIn(kind) * sizeof(Sample);
        for (int row = rows_; row < 2 * rows_; ++row) {
            for (ptrdiff_t byte = 0; byte < bytes; byte += line) {
                expectAt<true>(piece, row * ahead_ + byte);
            }
        }
    }
};

// ---- spreading: 0 stays 0, the largest sample becomes 65535 ----

template <class Sample>
KRO_INLINE Sample spread(int32_t bits, Sample sample) {
    return static_cast<Sample>(sample << (16 - bits) | sample >> (2 * bits - 16));
}
template <class V>
KRO_OUTLINE void spreadSamples(typename V::Sample* samples, ptrdiff_t count, int32_t bits) {
    ptrdiff_t i = 0;
    if constexpr (V::columns > 2) {
        for (; i + V::columns <= count; i += V::columns) {
            const auto v = V::load(samples + i);
            V::store(samples + i, V::bitOr(V::shiftLeftBy(v, 16 - bits), V::shiftRightBy(v, 2 * bits - 16)));
        }
    }
    for (; i < count; ++i) {
        samples[i] = spread(bits, samples[i]);
    }
}
// A finished row, alpha left out. A pass of its own: a test in every block would cost the words that are not spread
// more than this costs those that are.
template <Output kind, class V>
KRO_OUTLINE void spreadRow(RowTarget<uint16_t> row, int32_t first, int32_t count) {
    constexpr int channels = channelsIn(kind), alpha = kind == Output::abgr ? 0 : kind == Output::bgra ? 3 : -1;
    uint16_t* const planes[3] = {row.own, row.green, row.other};
    for (int plane = 0; plane < (kind == Output::planar ? 3 : 1); ++plane) {
        uint16_t* const samples = planes[plane] + static_cast<ptrdiff_t>(first) * channels;
        const ptrdiff_t end = static_cast<ptrdiff_t>(count) * channels;
        spreadSamples<V>(samples, end, row.spreadBits);
        for (ptrdiff_t i = alpha; alpha >= 0 && i < end; i += channels) {
            samples[i] = static_cast<uint16_t>(row.alpha);
        }
    }
}
template <Output kind, class V>
KRO_INLINE void finishRow(const RowTarget<typename V::Sample>& row, Columns made) {
    if constexpr (!ofBytes<V>) {
        if (row.spreadBits != 0) {
            spreadRow<kind, V>(row, made.begin, made.end - made.begin);
        }
    }
}

// ---- pairs of columns ----

// (wR R + wG G + wB B + 128) >> 8.
KRO_INLINE uint32_t luma(uint32_t weighted) { return (weighted + 128) >> 8; }

template <Output kind, bool ownFirst, class Sample>
KRO_INLINE void putPixel(const RowTarget<Sample>& row, int32_t x, int32_t own, int32_t green, int32_t other) {
    if constexpr (kind == Output::planar) {
        row.own[x] = static_cast<Sample>(own);
        row.green[x] = static_cast<Sample>(green);
        row.other[x] = static_cast<Sample>(other);
    } else if constexpr (kind == Output::mono) {
        row.own[x] = static_cast<Sample>(luma(row.ownWeight * static_cast<uint32_t>(own) +
                                              row.greenWeight * static_cast<uint32_t>(green) +
                                              row.otherWeight * static_cast<uint32_t>(other)));
    } else {
        constexpr int colours = kind == Output::abgr ? 1 : 0, alpha = colours == 1 ? 0 : 3;
        Sample* const pixel = row.own + static_cast<ptrdiff_t>(x) * channelsIn(kind);
        pixel[colours] = static_cast<Sample>(ownFirst ? own : other);
        pixel[colours + 1] = static_cast<Sample>(green);
        pixel[colours + 2] = static_cast<Sample>(ownFirst ? other : own);
        if constexpr (kind != Output::bgr) {
            if (x >= row.alphaColumns.begin && x < row.alphaColumns.end) {
                pixel[alpha] = static_cast<Sample>(row.alpha);
            }
        }
    }
}

template <Output kind, bool ownFirst, class T, class V, class P>
KRO_INLINE void put(const T& row, PairBlock<V> block, const P& pixels) {
    if (block.wantEven) {
        putPixel<kind, ownFirst>(row, block.x, V::evenColumn(lanes<false>(valuesAt<false>(pixels.own))),
                                 V::evenColumn(lanes<false>(valuesAt<false>(pixels.green))),
                                 V::evenColumn(lanes<false>(valuesAt<false>(pixels.other))));
    }
    if (block.wantOdd) {
        putPixel<kind, ownFirst>(row, block.x + 1, V::oddColumn(lanes<true>(valuesAt<true>(pixels.own))),
                                 V::oddColumn(lanes<true>(valuesAt<true>(pixels.green))),
                                 V::oddColumn(lanes<true>(valuesAt<true>(pixels.other))));
    }
}
template <Output kind, bool ownFirst, class T, class P>
KRO_INLINE void put(const T& row, InnerBlock<PairBytes> block, const P& pixels) {
#if defined(__SSE2__)
    // Nothing, but nothing that compilers make vectors of: without SSSE3's shuffles those of interleaved pixels are
    // slower (g++ 12, Zen 5, 640x480: nearest BGR8 .87, BGRa8 .79).
    if constexpr (isInterleaved(kind)) {
        __asm__ volatile("");
    }
#endif
    put<kind, ownFirst>(row, PairBlock<PairBytes>{block.x, {}, true, true}, pixels);
}
template <Output kind, bool ownFirst, class T, class P>
KRO_INLINE void put(const T& row, InnerBlock<PairWords> block, const P& pixels) {
    put<kind, ownFirst>(row, PairBlock<PairWords>{block.x, {}, true, true}, pixels);
}

// ---- wide blocks ----

// Weights of sum 256 give at most 255 * 256 + 128 = 65408, so 16-bit lanes are exact (other weights wrap there, and
// the byte taken is the same as of the wider sum). With green's product 128 is added.
template <class V>
KRO_INLINE typename V::Lanes times(typename V::Lanes samples, uint32_t weight) {
    return V::mul(samples, V::all(static_cast<int32_t>(weight)));
}
template <class V>
KRO_INLINE typename V::Lanes rounded(typename V::Lanes product) {
    return V::add(product, V::all(128));
}
template <class V, class T>
KRO_INLINE typename V::Lanes weighed(const T& row, typename V::Lanes own, typename V::Lanes green,
                                     typename V::Lanes other) {
    return V::add(V::add(times<V>(own, row.ownWeight), times<V>(other, row.otherWeight)),
                  rounded<V>(times<V>(green, row.greenWeight)));
}

template <bool odd, class V, class Value>
KRO_INLINE typename V::Lanes product(Value value, uint32_t weight) {
    return times<V>(lanes<odd>(value), weight);
}
template <bool odd, class V, class Value>
KRO_INLINE typename V::Lanes greenProduct(Value value, uint32_t weight) {
    return rounded<V>(times<V>(lanes<odd>(value), weight));
}
// V::weighBytes takes signed bytes for weights, 128 at most of both. Luma's own are such, and nearest and
// edge-directed grey, whose bytes are weighed so, has no others; bilinear, whose weights callers choose, asks
// (weighsInHighHalves).
constexpr bool coloursAreWeighedAsBytes(const uint32_t (&weight)[3]) { return weight[0] < 128 && weight[2] < 128; }
static_assert(coloursAreWeighedAsBytes(lumaWeight) && lumaWeight[0] + lumaWeight[2] <= 128,
              "nearest and edge-directed grey weigh bytes where they are");
// Finished bytes in their places: the neighbour meets a weight of 0, as fractions do. Not with AVX-512: the compiler
// takes lanes from what a masked blend is made of, and spares the blend (Zen 5: 5 %).
template <bool odd, class V>
KRO_INLINE typename V::Lanes product(Ready<V> ready, uint32_t weight) {
    if constexpr (V::weighsBytes && V::columns < 64) {
        const auto w = static_cast<int32_t>(weight);
        return V::weighBytes(ready.samples, odd ? 0 : w, odd ? w : 0);
    } else {
        return times<V>(lanes<odd>(ready), weight);
    }
}
template <bool odd, class V, int fraction>
KRO_INLINE typename V::Lanes product(HighByte<V, fraction> high, uint32_t weight) {
    return V::weighBytes(high.value, 0, static_cast<int32_t>(weight));
}
// (256 g + r) w / 256, of which r, that covers the fraction, contributes 128 and less than one.
template <bool odd, class V, int fraction>
KRO_INLINE typename V::Lanes greenProduct(HighByte<V, fraction> high, uint32_t weight) {
    const auto w = V::all(static_cast<int32_t>(weight << 8));
    if constexpr (fraction == 0) {
        return rounded<V>(V::mulHigh(high.value, w));
    } else {
        return V::mulHigh(V::bitOr(high.value, V::all(static_cast<int32_t>((0x8000 + weight - 1) / weight))), w);
    }
}
// r is a byte then whose upper two bits, where fractions are, are set.
constexpr bool weighsInHighHalves(const Target& target) {
    return coloursAreWeighedAsBytes(target.weight) && target.weight[1] > 128 && target.weight[1] < 172;
}
template <bool odd, class V, class T, class P>
KRO_INLINE typename V::Lanes weighedAt(const T& row, const P& pixels) {
    return V::add(V::add(product<odd, V>(valuesAt<odd>(pixels.own), row.ownWeight),
                         product<odd, V>(valuesAt<odd>(pixels.other), row.otherWeight)),
                  greenProduct<odd, V>(valuesAt<odd>(pixels.green), row.greenWeight));
}
// Pixels in the form that is weighed: packs saturate both colours of a site and leave them side by side.
template <class V, class Green>
struct PairedColours {
    PackedPair<V> colours;  // at even and at odd columns
    Green green;
};
template <class V, class P>
KRO_INLINE const P& weighableOf(const P& pixels) {
    return pixels;
}
template <class V, class Green>
KRO_INLINE auto weighableOf(const SaturatedPixels<V, Green>& pixels) {
    if constexpr (V::weighsBytes) {
        using Two = Sites<Saturated<V>, Saturated<V>>;
        return PairedColours<V, Green>{
            packedPair<V>(Two{pixels.own.even, pixels.other.even}, Two{pixels.own.odd, pixels.other.odd}),
            pixels.green};
    } else {
        return pixels;
    }
}
template <bool odd, class V, class T, class Green>
KRO_INLINE typename V::Lanes weighedAt(const T& row, const PairedColours<V, Green>& pixels) {
    const auto colours = odd ? pixels.colours.second : pixels.colours.first;
    return V::add(V::weighBytes(colours, static_cast<int32_t>(row.ownWeight), static_cast<int32_t>(row.otherWeight)),
                  greenProduct<odd, V>(valuesAt<odd>(pixels.green), row.greenWeight));
}
// Of bytes the luma is a lane's high byte, which for odd columns is where it belongs already. Of words the high bytes
// are weighed apart from the low ones: 256 h + l weighed and divided by 256 is h weighed, plus l weighed over 256.
template <class V>
KRO_INLINE typename V::Vector highBytes(typename V::Lanes even, typename V::Lanes odd) {
    return V::combine(V::high(even), odd);
}
template <class V, class T, class P>
KRO_INLINE typename V::Vector lumaOf(const T& row, const P& pixels) {
    if constexpr (ofBytes<V>) {
        const auto weighable = weighableOf<V>(pixels);
        return highBytes<V>(weighedAt<false, V>(row, weighable), weighedAt<true, V>(row, weighable));
    } else {
        const auto [own, green, other] = channelsOf<V>(pixels);
        const auto low = weighed<V>(row, V::low(own), V::low(green), V::low(other));
        const auto high = weighed<V>(row, V::high(own), V::high(green), V::high(other));
        return V::add(V::sub(high, V::all(128)), V::high(low));
    }
}

// The fourth channel's bytes of so many pixels, then of none, then of as many again: what leaves the caller's in its
// first or last columns loads its mask from in between.
template <int columns>
struct alignas(64) AlphaKept {
    uint32_t pixel[3 * columns];
};
template <int columns>
constexpr AlphaKept<columns> alphaKept() {
    AlphaKept<columns> kept{};
    for (int i = 0; i < columns; ++i) {
        kept.pixel[i] = kept.pixel[2 * columns + i] = 0xFF000000u;
    }
    return kept;
}
// A quarter of a block. Columns that are written are none, or 16 and more that begin with column 0 or 1, so they do
// not both begin and end in it. What is written whole loads nothing: masks lie across lines of the cache.
template <class V>
KRO_INLINE void storeQuarter(uint8_t* out, int32_t x, Columns written, typename V::Vector pixels) {
    constexpr int32_t columns = V::columns / 4;
    static constexpr AlphaKept<columns> kept = alphaKept<columns>();
    if (x >= written.begin && x + columns <= written.end) {
        V::store(out, pixels);
    } else {
        const int32_t first = written.begin - x, last = written.end > x ? written.end - x : 0;
        const uint32_t* const mask = kept.pixel + (first > 0 ? columns - first : 2 * columns - last);
        V::store(out, V::keepBits(pixels, V::load(out), V::load(mask)));
    }
}
// In line: a call would take as long as 30 columns (Zen 5).
template <class V>
KRO_INLINE void storeKeepingAlpha(uint8_t* out, int32_t x, Columns written, const typename V::Quads& quads) {
    constexpr int32_t columns = V::columns / 4;
    storeQuarter<V>(out, x, written, quads.part[0]);
    storeQuarter<V>(out + V::columns, x + columns, written, quads.part[1]);
    storeQuarter<V>(out + 2 * V::columns, x + 2 * columns, written, quads.part[2]);
    storeQuarter<V>(out + 3 * V::columns, x + 3 * columns, written, quads.part[3]);
}

// One by one: where the compiler keeps a loop, parts lie in memory for it.
template <class V>
KRO_INLINE void storeQuads(typename V::Sample* out, const typename V::Quads& quads) {
    V::store(out, quads.part[0]);
    V::store(out + V::columns, quads.part[1]);
    V::store(out + 2 * V::columns, quads.part[2]);
    V::store(out + 3 * V::columns, quads.part[3]);
}
template <Output kind, class V, class T>
KRO_INLINE void putQuads(const T& row, int32_t x, typename V::Vector first, typename V::Vector green,
                         typename V::Vector third) {
    const auto a = V::transposed(first), b = V::transposed(green), c = V::transposed(third);
    const auto alpha = V::filled(row.alpha);
    const auto quads = kind == Output::abgr ? V::quads(alpha, a, b, c) : V::quads(a, b, c, alpha);
    auto* const out = row.own + static_cast<ptrdiff_t>(x) * 4;
    if constexpr (ofBytes<V> && kind == Output::bgra) {
        if (__builtin_expect(x < row.alphaColumns.begin || x + V::columns > row.alphaColumns.end, 0)) {
            storeKeepingAlpha<V>(out, x, row.alphaColumns, quads);
            return;
        }
    }
    storeQuads<V>(out, quads);
}

// Three interleaved channels, in the form that the back end wants.
template <class V, class Sample, class C0, class C1, class C2>
KRO_INLINE void putTriples(Sample* out, const C0& c0, const C1& c1, const C2& c2) {
    V::store3(out, samplesOf<V>(c0), samplesOf<V>(c1), samplesOf<V>(c2));
}
template <class V, class E0, class O0, class E1, class O1, class E2, class O2>
KRO_INLINE void putTriples(uint8_t* out, const Sites<E0, O0>& c0, const Sites<E1, O1>& c1, const Sites<E2, O2>& c2) {
    constexpr bool saturated = std::is_same_v<O0, Saturated<V>>;
    if constexpr (V::interleaving == Interleaving::pairs) {
        V::store3Lanes(out, lanesToPack<V>(c0), lanesToPack<V>(c1), lanesToPack<V>(c2));
    } else if constexpr (saturated && V::interleaving == Interleaving::packs) {
        V::store3Lanes(out, lanesToPack<V>(c0), samplesOf<V>(c1), lanesToPack<V>(c2));
    } else if constexpr (saturated) {
        const auto [first, third] = packedPair<V>(c0, c2);
        V::store3(out, first, samplesOf<V>(c1), third);
    } else {
        V::store3(out, samplesOf<V>(c0), samplesOf<V>(c1), samplesOf<V>(c2));
    }
}

template <Output kind, bool ownFirst, class T, class B, class P>
KRO_INLINE void put(const T& row, B block, const P& pixels) {
    using V = typename B::Vector;
    const int32_t x = block.x;
    if constexpr (kind == Output::mono) {
        V::store(row.own + x, lumaOf<V>(row, pixels));
    } else if constexpr (kind == Output::bgr) {
        auto* const out = row.own + static_cast<ptrdiff_t>(x) * 3;
        if constexpr (ownFirst) {
            putTriples<V>(out, pixels.own, pixels.green, pixels.other);
        } else {
            putTriples<V>(out, pixels.other, pixels.green, pixels.own);
        }
    } else {
        const auto [own, green, other] = channelsOf<V>(pixels);
        if constexpr (kind == Output::planar) {
            V::store(row.own + x, own);
            V::store(row.green + x, green);
            V::store(row.other + x, other);
        } else {
            putQuads<kind, V>(row, x, ownFirst ? own : other, green, ownFirst ? other : own);
        }
    }
}

}  // namespace
}  // namespace kro
