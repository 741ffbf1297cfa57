// Bilinear on 16-bit samples: what differs from 8 bits.
//
// kro.h's routines serve RG mosaics, and in the rows of their body blocks of eight columns from column 1 on form sums
// that wrap; all else is the exact truncated mean. Pictures of views are exact everywhere.
#pragma once

#include "demosaicingBilinear/bilinear.hpp"

namespace kro {
namespace {

// Columns whose sums wrap in the rows of the body: blocks of eight that leave more than a border column.
constexpr Columns wrappingColumns(int32_t width) { return {1, width < 10 ? 1 : 9 + ((width - 10) & ~7)}; }

// Samples of at most 13 bits: four of them stay below 32768, so sums that wrap are exact too.
constexpr int32_t wrappingBits = 0xE000;

// Sums wrap in the columns `wraps`.
struct WrappingFamily {
    static constexpr bool pairs = true;
    using Wrapping = BilinearFamily<LaneMeans>;
    using Exact = BilinearFamily<ExactMeans>;

    Columns wraps;

    // Inner blocks lie within the columns that wrap.
    KRO_INLINE Columns inner(Columns frame) const {
        return {frame.begin + 1, wraps.end < frame.end - 1 ? wraps.end : frame.end - 1};
    }
    template <bool colourOdd, class V>
    KRO_INLINE auto row(InnerBlock<V> block, const uint16_t* above, const uint16_t* here,
                        const uint16_t* below) const {
        return Wrapping{}.template row<colourOdd>(block, above, here, below);
    }
    template <bool colourOdd, class B>
    KRO_INLINE auto row(B block, const uint16_t* above, const uint16_t* here, const uint16_t* below) const {
        using V = typename B::Vector;
        const Channels<V> c = mixed<colourOdd, B, V>(block, above, here, below);
        return makePixels(Ready<V>{c.own}, Ready<V>{c.green}, Ready<V>{c.other});
    }

    template <Output, bool, bool>
    static KRO_INLINE void mend(const RowTarget<uint16_t>&, const RowInput<uint16_t>&) {}

private:
    // Of a block at the end of a row only some columns wrap, which makes it four times as dear where it can be seen.
    template <bool colourOdd, class B, class V>
    KRO_OUTLINE Channels<V> mixed(B block, const uint16_t* above, const uint16_t* here, const uint16_t* below) const {
        const auto wrapping = channelsOf<V>(Wrapping{}.template row<colourOdd>(block, above, here, below));
        if (!mayWrap(block, above, here, below)) {
            return wrapping;
        }
        const auto exact = channelsOf<V>(Exact{}.template row<colourOdd>(block, above, here, below));
        const auto lane = [&](int32_t column) {
            const int32_t place = column - block.x;
            return V::all(place < -1 ? -1 : place > V::columns ? V::columns : place);
        };
        const auto begun = V::greater(V::iota(), lane(wraps.begin - 1)),
                   open = V::greater(lane(wraps.end), V::iota());
        const auto pick = [&](auto inside, auto outside) KRO_INLINE_LAMBDA {
            return V::select(begun, V::select(open, inside, outside), outside);
        };
        return {pick(wrapping.own, exact.own), pick(wrapping.green, exact.green), pick(wrapping.other, exact.other)};
    }
    template <class B>
    static KRO_INLINE bool mayWrap(B block, const uint16_t* above, const uint16_t* here, const uint16_t* below) {
        using V = typename B::Vector;
        const auto bits = [&](const uint16_t* row) KRO_INLINE_LAMBDA {
            return V::bitOr(V::bitOr(block.template tap<-1>(row), block.template tap<0>(row)),
                            block.template tap<1>(row));
        };
        return V::anyBits(V::bitOr(V::bitOr(bits(above), bits(here)), bits(below)), wrappingBits);
    }
};

template <class S, Output kind>
struct BilinearWrapping : Rectangle<S, uint16_t, kind, WrappingFamily> {
    using Rect = Rectangle<S, uint16_t, kind, WrappingFamily>;

    static void frame(const FrameJob& job) {
        const int32_t border = firstBorder(job.height);
        exactly(job, {0, 1}, {0, job.width});
        Rect::run(job, {1, border}, {0, job.width}, {wrappingColumns(job.width)});
        exactly(job, {border, job.height}, {0, job.width});
    }
    static void exactly(const FrameJob& job, RowSpan rows, Columns columns) { Rect::run(job, rows, columns, {{}}); }

    // Blocks that wrap put blue first whatever the order.
    static KroCoverage body(FrameJob job) {
        const KroCoverage border{firstBorder(job.width), firstBorder(job.height)};
        const RowSpan rows{1, border.second};
        const Columns wraps = wrappingColumns(job.width);
        if (job.target.redFirst) {
            exactly(job, rows, {wraps.end, border.first});
            job.target.redFirst = false;
            Rect::run(job, rows, wraps, {wraps});
        } else {
            Rect::run(job, rows, {1, border.first}, {wraps});
        }
        return border;
    }
};

template <class S, Output kind>
struct BilinearWords {
    static void frame(const FrameJob& job) {
        if (madeByNarrowerSet<S, uint16_t>(KRO_BILINEAR, kind, job)) {
            return;
        }
        if constexpr (kind == Output::bgr || kind == Output::planar) {
            if (job.wraps) {
                BilinearWrapping<S, kind>::frame(job);
                return;
            }
        }
        job.source.bits <= 14 ? Rectangle<S, uint16_t, kind, BilinearFamily<UnsignedMeans>>::frame(job, {})
                              : Rectangle<S, uint16_t, kind, BilinearFamily<ExactMeans>>::frame(job, {});
    }
};

}  // namespace
}  // namespace kro
