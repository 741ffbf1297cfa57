// Bilinear on 16-bit samples of an RG mosaic, 16-bit blue, green, red out.
//
// In the rows of the body, blocks of eight columns from column 1 on form their sums in 16-bit lanes that wrap; all
// else is the exact truncated mean, borders included (a border is the same formula on the mirrored mosaic).
//
// What bounds it, for 32 columns of AVX-512: 9 loads that mostly cross cache lines, 6 sums, 4 shifts, 3 blends, 3
// word permutes and 6 blends to interleave, 3 stores, so about 11 cycles against the 3 that the stores alone would
// take in the first cache; beyond the second cache the six bytes a pixel written are the bound. AVX2 is bound the
// same way, SSSE3 by its 9 shuffles and 6 ors for each 8 columns. Measured on 1280 columns: .95, .88 and .58 of a
// plain stream from memory, .72, .68 and .28 of one within the second cache.
#pragma once

#include "block/wordtaps.hpp"
#include "frame/rectangle.hpp"

namespace kro {
namespace {

// Sums of 16 bits, wrapping, and their arithmetic shifts.
template <class W>
struct WrappingMeans {
    using Lanes = typename W::Lanes;
    static KRO_INLINE Lanes pair(Lanes a, Lanes b) { return W::add(a, b); }
    static KRO_INLINE Lanes two(Lanes pair) { return W::template shiftRight<1>(pair); }
    static KRO_INLINE Lanes four(Lanes p, Lanes q) { return W::template shiftRight<2>(W::add(p, q)); }
};

// Truncated means that need no wider lanes. The mean of two truncated means is the truncated mean of four samples but
// where both pairs lost a half: together they are worth one more, which shows if the sum of the means is odd.
template <class W>
struct ExactMeans {
    using Lanes = typename W::Lanes;
    struct Pair {
        Lanes mean;
        Lanes lost;  // lowest bit: the sum was odd
    };
    static KRO_INLINE Lanes less(Lanes roundedUp, Lanes odd) { return W::sub(roundedUp, W::bitAnd(odd, W::all(1))); }
    static KRO_INLINE Pair pair(Lanes a, Lanes b) {
        const Lanes odd = W::bitXor(a, b);
        return {less(W::average(a, b), odd), odd};
    }
    static KRO_INLINE Lanes two(const Pair& pair) { return pair.mean; }
    static KRO_INLINE Lanes four(const Pair& p, const Pair& q) {
        const Lanes odd = W::bitAndNot(W::bitXor(p.mean, q.mean), W::bitAnd(p.lost, q.lost));
        return less(W::average(p.mean, q.mean), odd);
    }
};

// The colour of the row's own sites, green, and the other colour, of a block's columns.
template <class W>
struct Pixels16 {
    typename W::Lanes own, green, other;
};

// Red sites stand at the even columns of red rows, blue ones at the odd columns of blue rows.
template <template <class> class Means, bool blueRow, class B>
KRO_INLINE auto bilinearPixels16(B block, const uint16_t* above, const uint16_t* here, const uint16_t* below) {
    using W = typename B::Back;
    using M = Means<W>;
    const auto atSites = [](auto colour, auto green) KRO_INLINE_LAMBDA {
        return blueRow ? W::alternate(green, colour) : W::alternate(colour, green);
    };
    const auto own = block.template tap<0>(here);
    const auto across = M::pair(block.template tap<-1>(here), block.template tap<1>(here));
    const auto down = M::pair(block.template tap<0>(above), block.template tap<0>(below));
    const auto left = M::pair(block.template tap<-1>(above), block.template tap<-1>(below));
    const auto right = M::pair(block.template tap<1>(above), block.template tap<1>(below));
    return Pixels16<W>{atSites(own, M::two(across)), atSites(M::four(across, down), own),
                       atSites(M::four(left, right), M::two(down))};
}

// Samples of at most 13 bits: four of them stay below 32768, so sums that wrap are exact too.
constexpr int32_t wrappingBits = 0xE000;

template <class B>
KRO_INLINE bool mayWrap(B block, const uint16_t* above, const uint16_t* here, const uint16_t* below) {
    using W = typename B::Back;
    const auto bits = [&](const uint16_t* row) KRO_INLINE_LAMBDA {
        return W::bitOr(W::bitOr(block.template tap<-1>(row), block.template tap<0>(row)),
                        block.template tap<1>(row));
    };
    return W::anyBits(W::bitOr(W::bitOr(bits(above), bits(here)), bits(below)), wrappingBits);
}

// Inner blocks lie within the columns that wrap; of end blocks some columns may, which makes them four times as dear
// where it can be seen.
template <bool blueRow, class W>
KRO_INLINE Pixels16<W> bodyPixels16(InnerWords<W> block, Columns, const uint16_t* above, const uint16_t* here,
                                    const uint16_t* below) {
    return bilinearPixels16<WrappingMeans, blueRow>(block, above, here, below);
}
template <bool blueRow, class W>
KRO_INLINE Pixels16<W> bodyPixels16(EndWords<W> block, Columns wraps, const uint16_t* above, const uint16_t* here,
                                    const uint16_t* below) {
    const auto lane = [&](int32_t column) {
        const int32_t place = column - block.x;
        return W::all(place < -1 ? -1 : place > W::columns ? W::columns : place);
    };
    const auto wrapping = bilinearPixels16<WrappingMeans, blueRow>(block, above, here, below);
    if (!mayWrap(block, above, here, below)) {
        return wrapping;
    }
    const auto exact = bilinearPixels16<ExactMeans, blueRow>(block, above, here, below);
    const auto begun = W::greater(W::iota(), lane(wraps.begin - 1)), open = W::greater(lane(wraps.end), W::iota());
    const auto pick = [&](auto inside, auto outside)
                          KRO_INLINE_LAMBDA { return W::select(begun, W::select(open, inside, outside), outside); };
    return {pick(wrapping.own, exact.own), pick(wrapping.green, exact.green), pick(wrapping.other, exact.other)};
}

// Where 16-bit pixels go. Interleaved output uses plane[0]; planar output has the blue, green and red plane.
struct Target16 {
    uint16_t* plane[3];
    bool redFirst;  // interleaved: words R, G, B instead of B, G, R
};

// One output row: the first word of each channel.
struct Row16 {
    uint16_t *own, *green, *other;
};
template <bool planar>
KRO_INLINE Row16 row16(const Target16& target, bool blueRow, ptrdiff_t y, int32_t width) {
    const bool ownFirst = blueRow != target.redFirst;
    if constexpr (planar) {
        const ptrdiff_t offset = y * width;
        return {target.plane[ownFirst ? 0 : 2] + offset, target.plane[1] + offset,
                target.plane[ownFirst ? 2 : 0] + offset};
    }
    uint16_t* const row = target.plane[0] + 3 * y * width;
    return {row + (ownFirst ? 0 : 2), row + 1, row + (ownFirst ? 2 : 0)};
}

template <bool planar, bool ownFirst, class B, class W>
KRO_INLINE void put16(const Row16& row, const B& block, const Pixels16<W>& pixels) {
    const ptrdiff_t x = block.x;
    if constexpr (planar) {
        W::store(row.own + x, pixels.own);
        W::store(row.green + x, pixels.green);
        W::store(row.other + x, pixels.other);
    } else {
        W::store3(row.green - 1 + 3 * x, ownFirst ? pixels.own : pixels.other, pixels.green,
                  ownFirst ? pixels.other : pixels.own);
    }
}
template <bool planar, bool ownFirst>
KRO_INLINE void put16(const Row16& row, const EndWords<CellWords>& block, const Pixels16<CellWords>& pixels) {
    constexpr ptrdiff_t stride = planar ? 1 : 3;
    const auto putColumn = [&](ptrdiff_t x, int32_t own, int32_t green, int32_t other) {
        row.own[x * stride] = static_cast<uint16_t>(own);
        row.green[x * stride] = static_cast<uint16_t>(green);
        row.other[x * stride] = static_cast<uint16_t>(other);
    };
    if (block.wantEven) {
        putColumn(block.x, pixels.own.even, pixels.green.even, pixels.other.even);
    }
    if (block.wantOdd) {
        putColumn(block.x + 1, pixels.own.odd, pixels.green.odd, pixels.other.odd);
    }
}

struct Frame16 {
    const uint16_t* source;
    int32_t height, width;
    Target16 target;

    KRO_INLINE const uint16_t* row(int32_t y) const {
        return source + static_cast<ptrdiff_t>(mirrored(y, height)) * width;
    }
};

// Columns whose sums wrap in the rows of the body: blocks of eight that leave more than a border column.
constexpr Columns wrappingColumns(int32_t width) { return {1, width < 10 ? 1 : 9 + ((width - 10) & ~7)}; }

template <class V, bool planar>
struct Bilinear16 {
    using W = typename WordsOf<V>::Words;

    static void run(const Frame16& frame, RowSpan rows, Columns columns, Columns wraps) {
        for (int32_t y = rows.begin; y < rows.end;) {
            const bool blueRow = y % 2 != 0;
            if (rowsInPairs && blueRow && y + 1 < rows.end) {
                (frame.target.redFirst ? pair<false> : pair<true>)(frame, y, columns, wraps);
                y += 2;
                continue;
            }
            const bool ownFirst = blueRow != frame.target.redFirst;
            if (blueRow) {
                (ownFirst ? single<true, true> : single<true, false>)(frame, y, columns, wraps);
            } else {
                (ownFirst ? single<false, true> : single<false, false>)(frame, y, columns, wraps);
            }
            ++y;
        }
    }
    static int32_t frame(const Frame16& frame) {
        const Columns all{0, frame.width};
        const int32_t border = firstBorder(frame.height);
        run(frame, {0, 1}, all, {});
        run(frame, {1, border}, all, wrappingColumns(frame.width));
        run(frame, {border, frame.height}, all, {});
        return 0;
    }
    // Blocks that wrap put blue first whatever the order.
    static KroCoverage body(Frame16 frame) {
        const KroCoverage border{firstBorder(frame.width), firstBorder(frame.height)};
        const RowSpan rows{1, border.second};
        const Columns wraps = wrappingColumns(frame.width);
        if (frame.target.redFirst) {
            run(frame, rows, {wraps.end, border.first}, {});
            frame.target.redFirst = false;
            run(frame, rows, wraps, wraps);
        } else {
            run(frame, rows, {1, border.first}, wraps);
        }
        return border;
    }
    static void firstRows(const Frame16& frame) { run(frame, {0, 1}, {0, frame.width}, {}); }
    static void firstCols(const Frame16& frame) { run(frame, {1, frame.height}, {0, 1}, {}); }
    static void lastRows(const Frame16& frame, int32_t start) {
        run(frame, {start, frame.height}, {1, 1 + 2 * borderPairs(frame.width)}, {});
    }
    static void lastCols(const Frame16& frame, int32_t start) {
        run(frame, {1, frame.height}, {start, frame.width}, {});
    }

private:
    template <bool blueRow, bool ownFirst>
    static KRO_OUTLINE void single(const Frame16& frame, int32_t y, Columns columns, Columns wraps) {
        const Row16 out = row16<planar>(frame.target, blueRow, y, frame.width);
        const uint16_t *const above = frame.row(y - 1), *const here = frame.row(y), *const below = frame.row(y + 1);
        eachWordBlock<W>(columns, wraps, frame.width, [=](auto block) KRO_INLINE_LAMBDA {
            put16<planar, ownFirst>(out, block, bodyPixels16<blueRow>(block, wraps, above, here, below));
        });
    }
    // A blue row and the red row below it: all loads of a step before its first store.
    template <bool ownFirst>
    static KRO_OUTLINE void pair(const Frame16& frame, int32_t y, Columns columns, Columns wraps) {
        const Row16 upper = row16<planar>(frame.target, true, y, frame.width);
        const Row16 lower = row16<planar>(frame.target, false, y + 1, frame.width);
        const uint16_t *const above = frame.row(y - 1), *const here = frame.row(y), *const next = frame.row(y + 1),
                              *const below = frame.row(y + 2);
        eachWordBlock<W>(columns, wraps, frame.width, [=](auto block) KRO_INLINE_LAMBDA {
            const auto one = bodyPixels16<true>(block, wraps, above, here, next);
            const auto two = bodyPixels16<false>(block, wraps, here, next, below);
            put16<planar, ownFirst>(upper, block, one);
            put16<planar, !ownFirst>(lower, block, two);
        });
    }
};

// Exported routines.
template <class V>
struct Bilinear16Kernels {
    using Interleaved = Bilinear16<V, false>;
    using Planar = Bilinear16<V, true>;
    static constexpr int32_t anyHeight = 4;  // the first row ends where no bottom border is in sight

    // Only the value 1 puts red first.
    static Frame16 interleaved(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                               uint32_t order) {
        return {source, height, width, {{destination, nullptr, nullptr}, order == 1}};
    }
    static Frame16 planes(const uint16_t* source, uint16_t* blue, uint16_t* green, uint16_t* red, int32_t height,
                          int32_t width) {
        return {source, height, width, {{blue, green, red}, false}};
    }

    static int32_t demosaicingBilinearRGGBU16(const uint16_t* source, int32_t height, int32_t width,
                                              uint16_t* destination) {
        return Interleaved::frame(interleaved(source, destination, height, width, 0));
    }
    static void bilinearFirstRowsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t width,
                                         uint32_t order) {
        Interleaved::firstRows(interleaved(source, destination, anyHeight, width, order));
    }
    static void bilinearFirstColsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                         uint32_t order) {
        Interleaved::firstCols(interleaved(source, destination, height, width, order));
    }
    static KroCoverage bilinearBodyRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height,
                                           int32_t width, uint32_t order) {
        return Interleaved::body(interleaved(source, destination, height, width, order));
    }
    static void bilinearLastRowsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                        int32_t firstBorderRow, uint32_t order) {
        Interleaved::lastRows(interleaved(source, destination, height, width, order), firstBorderRow);
    }
    static void bilinearLastColsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                        int32_t firstBorderCol, uint32_t order) {
        Interleaved::lastCols(interleaved(source, destination, height, width, order), firstBorderCol);
    }

    static int32_t demosaicingBilinearRGGBU16P(const uint16_t* source, int32_t height, int32_t width, uint16_t* blue,
                                               uint16_t* green, uint16_t* red) {
        return Planar::frame(planes(source, blue, green, red, height, width));
    }
    static void bilinearFirstRowsRGGBU16P(const uint16_t* source, uint16_t* blue, uint16_t* green, uint16_t* red,
                                          int32_t width) {
        Planar::firstRows(planes(source, blue, green, red, anyHeight, width));
    }
    static void bilinearFirstColsRGGBU16P(const uint16_t* source, uint16_t* blue, uint16_t* green, uint16_t* red,
                                          int32_t height, int32_t width) {
        Planar::firstCols(planes(source, blue, green, red, height, width));
    }
    static KroCoverage bilinearBodyRGGBU16P(const uint16_t* source, uint16_t* blue, uint16_t* green, uint16_t* red,
                                            int32_t height, int32_t width) {
        return Planar::body(planes(source, blue, green, red, height, width));
    }
    static void bilinearLastRowsRGGBU16P(const uint16_t* source, uint16_t* blue, uint16_t* green, uint16_t* red,
                                         int32_t height, int32_t width, int32_t firstBorderRow) {
        Planar::lastRows(planes(source, blue, green, red, height, width), firstBorderRow);
    }
    static void bilinearLastColsRGGBU16P(const uint16_t* source, uint16_t* blue, uint16_t* green, uint16_t* red,
                                         int32_t height, int32_t width, int32_t firstBorderCol) {
        Planar::lastCols(planes(source, blue, green, red, height, width), firstBorderCol);
    }
};

}  // namespace
}  // namespace kro
