// A strip of columns of a frame, greens ahead of colours: what strips of bytes and of words (folded.hpp) share, and
// those of bytes, whose rows go one by one.
//
// A strip's memory lies on the stack: in 20 KiB together with all else, so frames that are wider are walked in
// strips.
#pragma once

#include "demosaicingEdge/colour.hpp"
#include "demosaicingEdge/green.hpp"
#include "row/rectangle.hpp"

namespace kro {
namespace {

// What a strip works on besides its rows.
struct EdgeFrame {
    int32_t height, width;
    Phase phase;
    Target target;
    int32_t top;        // words: interpolated samples end here
    int32_t firstRow;   // units count from here
    RowSpan alphaRows;  // rows whose alpha is written, in alphaColumns, where it is not written everywhere
    int32_t unfit = 0;  // words: bits that no sample may have
};

// A row of the output.
struct ColourRow {
    const Target& target;
    Phase phase;
    int32_t y;
    const Strip& strip;
    Columns alphaColumns;
};

// The difference of column x, which is even: two bytes for two columns.
template <class Number>
KRO_INLINE Number* differenceAt(Number* row, int32_t x) {
    return advanced(row, x);
}

// Differences mirror at the frame's sides as samples do. Blocks there are stored one lane beside their place, too,
// before they are stored in it; ByteRows::mirrorSides mirrors what pairs store.
template <class B>
KRO_INLINE void storeDifferences(B block, int16_t* row, typename B::Vector::Lanes lanes) {
    B::Vector::storeLanes(differenceAt(row, block.x), lanes);
}
template <class V, bool first, bool last>
KRO_INLINE void storeDifferences(EndBlock<V, first, last> block, int16_t* row, typename V::Lanes lanes) {
    int16_t* const place = differenceAt(row, block.x);
    if constexpr (first) {
        V::storeLanes(place - 1, lanes);
    }
    if (last && block.room == 0) {
        V::storeLanes(place + 1, lanes);
    }
    V::storeLanes(place, lanes);
}

// Rows of a strip of bytes, one by one. `Source` gives rows mirrored at the top and bottom, after they were prepared.
template <class S, Output kind, class Source>
class ByteRows {
    using V = typename S::Bytes;
    static constexpr bool ordered = isInterleaved(kind);

protected:
    static constexpr uint32_t inView = 4;
    static constexpr int32_t margin = 32;

    // `differences`: `inView` rows of `pitch` lanes.
    ByteRows(const EdgeFrame& frame, Source& source, const Strip& strip, int16_t* differences, int32_t pitch)
        : frame_(frame),
          source_(source),
          greens_(Stretches::of<V>({strip.first, greenColumnsOf(strip), strip.frame}, innerColumns<2>(strip.frame))),
          colours_(Stretches::of<V>(strip, innerColumns<1>(strip.frame))),
          made_(greenColumnsOf(strip)),
          differences_(differences + margin),
          pitch_(pitch) {}

public:
    Columns greenColumns() const { return made_; }
    // Differences of a row. Lane 0 is the strip's column 0; a lane belongs to each two columns.
    KRO_INLINE int16_t* differences(int32_t y) {
        return differences_ + static_cast<ptrdiff_t>(static_cast<uint32_t>(y) % inView) * pitch_;
    }
    // Differences that blocks did not store, at the frame's sides.
    KRO_INLINE void mirrorSides(int32_t y) {
        int16_t* const row = differences(y);
        const Columns frame = greens_.blocks.frame;
        if (made_.begin == frame.begin) {
            row[(made_.begin >> 1) - 1] = row[made_.begin >> 1];
        }
        if (made_.end == frame.end) {
            int16_t* const end = row + ((made_.end + (colourIsOdd(y) ? 0 : 1)) >> 1);
            *end = end[-1];
        }
    }
    // Colours of rows, and before them differences of the rows from `next` to `last`, two rows ahead: where a load
    // lies across what was stored just before, it waits for the cache.
    void make(RowSpan rows, int32_t next, int32_t last) {
        const Phase greenFirst = phaseOfRow(frame_.phase, frame_.phase.greenFirst ? 0 : 1);
        const bool ownFirst = ordered && ownComesFirst(frame_.target, greenFirst);
        const auto walked = ownFirst ? &ByteRows::template walk<ordered> : &ByteRows::template walk<false>;
        (this->*walked)(rows, next, last);
    }

private:
    const EdgeFrame& frame_;
    Source& source_;
    const Stretches greens_, colours_;
    const Columns made_;  // colours need differences one column beyond the strip
    int16_t* const differences_;
    const int32_t pitch_;
    const uint8_t* window_[5];  // rows around the one whose differences were made last: from two above to two below
    int32_t following_ = INT32_MIN;

    static Columns greenColumnsOf(const Strip& strip) {
        return {strip.frame.begin < strip.made.begin ? strip.made.begin - 2 : strip.frame.begin,
                strip.made.end < strip.frame.end ? strip.made.end + 2 : strip.frame.end};
    }
    bool colourIsOdd(int32_t y) const { return phaseOfRow(frame_.phase, y).greenFirst; }

    // What a row of colours is made of: its samples, the differences of the rows above, of its own and below.
    struct ColourInput {
        const uint8_t* here;
        const int16_t *above, *same, *below;
    };

    // `ownFirst` speaks of rows that start with green.
    template <bool ownFirst>
    KRO_OUTLINE void walk(RowSpan rows, int32_t next, int32_t last) {
        constexpr bool otherFirst = ordered && !ownFirst;
        const bool greenPairs = greens_.havePairs(), colourPairs = colours_.havePairs();
        const int16_t *above = differences(mirrored(rows.begin - 1, frame_.height)), *same = differences(rows.begin);
        for (int32_t y = rows.begin; y < rows.end; ++y) {
            for (const int32_t ahead = y + 2 < last ? y + 2 : last; next <= ahead; ++next) {
                moveWindow(next);
                colourIsOdd(next) ? green<true>(next, greenPairs) : green<false>(next, greenPairs);
            }
            const ColourInput in{window_[y + 3 - following_], above, same,
                                 differences(mirrored(y + 1, frame_.height))};
            if (colourIsOdd(y)) {
                colour<true, ownFirst>(y, in, colourPairs);
            } else {
                colour<false, otherFirst>(y, in, colourPairs);
            }
            above = same;
            same = in.below;
        }
    }
    KRO_INLINE void moveWindow(int32_t y) {
        source_.prepare(y + 2);
        for (int32_t k = 0; k < 4; ++k) {
            window_[k] = y == following_ ? window_[k + 1] : source_[y + k - 2];
        }
        window_[4] = source_[y + 2];
        following_ = y + 1;
    }

    template <bool colourOdd>
    KRO_INLINE void green(int32_t y, bool pairs) {
        if (greens_.haveBlocks()) {
            greensOf<InBlocks, colourOdd>(y, greens_.blocks);
        }
        if (pairs) {
            greensInPairs<colourOdd>(y);
        }
    }
    template <bool colourOdd>
    KRO_RARE void greensInPairs(int32_t y) {
        greens_.eachSide([&](const Strip& side) KRO_INLINE_LAMBDA { greensOf<InPairs, colourOdd>(y, side); });
        mirrorSides(y);
    }
    template <class Walk, bool colourOdd>
    KRO_INLINE void greensOf(int32_t y, const Strip& strip) {
        int16_t* const row = differences(y);
        const uint8_t *const above2 = window_[0], *const above = window_[1], *const here = window_[2],
                             *const below = window_[3], *const below2 = window_[4];
        Walk::template each<V, 2>(
            strip.made, strip.frame, innerColumns<2>(strip.frame), [&](auto block) KRO_INLINE_LAMBDA {
                expectBelow<typename decltype(block)::Vector>(block.x, below, below2);
                storeDifferences(block, row, greenDifference<colourOdd>(block, above2, above, here, below, below2));
            });
    }

    template <bool colourOdd, bool ownFirst>
    KRO_INLINE void colour(int32_t y, const ColourInput& in, bool pairs) {
        if (colours_.haveBlocks()) {
            coloursOf<InBlocks, colourOdd, ownFirst>(y, in, colours_.blocks);
        }
        if (pairs) {
            coloursInPairs<colourOdd, ownFirst>(y, in);
        }
    }
    template <bool colourOdd, bool ownFirst>
    KRO_RARE void coloursInPairs(int32_t y, ColourInput in) {
        colours_.eachSide([&](const Strip& side)
                              KRO_INLINE_LAMBDA { coloursOf<InPairs, colourOdd, ownFirst>(y, in, side); });
    }
    template <class Walk, bool colourOdd, bool ownFirst>
    KRO_INLINE void coloursOf(int32_t y, const ColourInput& in, const Strip& strip) {
        auto out = rowTarget<kind, uint8_t>(frame_.target, phaseOfRow(frame_.phase, y), y, strip.first);
        out.alphaColumns = alphaColumnsOf(y, strip.first);
        Walk::template each<V, 1>(
            strip.made, strip.frame, innerColumns<1>(strip.frame), [&](auto block) KRO_INLINE_LAMBDA {
                const auto from = [&](const int16_t* row) KRO_INLINE_LAMBDA { return differenceAt(row, block.x); };
                put<kind, ownFirst>(
                    out, block,
                    edgePixels<colourOdd, typename decltype(block)::Vector>(
                        block.template tap<0>(in.here), from(in.above), from(in.same), from(in.below)));
            });
    }
    // Columns whose alpha is written.
    KRO_INLINE Columns alphaColumnsOf(int32_t y, int32_t first) const {
        if (kind == Output::bgra && !frame_.target.alphaEverywhere) {
            const Columns written = alphaColumns(frame_.width);
            const bool here = y >= frame_.alphaRows.begin && y < frame_.alphaRows.end;
            return here ? Columns{written.begin - first, written.end - first} : Columns{0, 0};
        }
        return {INT32_MIN, INT32_MAX};
    }
};

// With its memory.
template <class S, Output kind, class Source, int32_t mostColumns>
class ByteStrip : public ByteRows<S, kind, Source> {
    using Base = ByteRows<S, kind, Source>;
    static constexpr int32_t pitch = mostColumns / 2 + 2 * Base::margin;

public:
    ByteStrip(const EdgeFrame& frame, Source& source, const Strip& strip)
        : Base(frame, source, strip, memory_[0], pitch) {}

private:
    alignas(64) int16_t memory_[Base::inView][pitch];
};

}  // namespace
}  // namespace kro
