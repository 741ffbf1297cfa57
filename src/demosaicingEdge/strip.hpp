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

    // Lanes from a row of differences to the next. Close together those of up to 900 columns lie in 4 KiB, and loads
    // do not wait for stores whose addresses end in the same 12 bits (Zen 5, 640 columns: 2 to 4 %).
    static constexpr int32_t pitchOf(int32_t columns) { return ((columns / 2 + 2 + 31) & ~31) + margin; }

    // `differences`: `inView` rows of these.
    ByteRows(const EdgeFrame& frame, Source& source, const Strip& strip, int16_t* differences)
        : frame_(frame),
          source_(source),
          greens_(Stretches::of<V>({strip.first, greenColumnsOf(strip), strip.frame}, innerColumns<2>(strip.frame))),
          colours_(Stretches::of<V>(strip, innerColumns<1>(strip.frame))),
          made_(greenColumnsOf(strip)),
          differences_(differences + margin),
          pitch_(pitchOf(made_.end)) {}

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

    static Columns greenColumnsOf(const Strip& strip) {
        return {strip.frame.begin < strip.made.begin ? strip.made.begin - 2 : strip.frame.begin,
                strip.made.end < strip.frame.end ? strip.made.end + 2 : strip.frame.end};
    }
    bool colourIsOdd(int32_t y) const { return phaseOfRow(frame_.phase, y).greenFirst; }

    // Samples around the row that greens are made of, and differences around the row of colours, two above it; its
    // samples are `above2`.
    struct Window {
        const uint8_t *above2, *above, *here, *below, *below2;
        int16_t *differencesAbove, *differencesHere, *differencesBelow, *fresh;  // `fresh`: what greens leave
    };

    // `ownFirst` speaks of rows that start with green.
    template <bool ownFirst>
    KRO_OUTLINE void walk(RowSpan rows, int32_t next, int32_t last) {
        constexpr bool otherFirst = ordered && !ownFirst;
        const bool greenPairs = greens_.havePairs(), colourPairs = colours_.havePairs();
        const auto differencesOf = [&](int32_t y)
                                       KRO_INLINE_LAMBDA { return differences(mirrored(y, frame_.height)); };
        source_.prepare(next + 2);
        Window in{source_[next - 2],
                  source_[next - 1],
                  source_[next],
                  source_[next + 1],
                  nullptr,
                  differencesOf(next - 3),
                  differencesOf(next - 2),
                  differencesOf(next - 1),
                  nullptr};
        bool odd = phaseOfRow(frame_.phase, next).greenFirst;
        for (int32_t y = next - 2; y < rows.end; ++y) {
            in.fresh = differencesOf(y + 2);
            const bool greens = y + 2 <= last, colours = y >= rows.begin;
            if (greens) {
                source_.prepare(y + 4);
                in.below2 = source_[y + 4];
            }
            if (odd) {
                step<true, ownFirst>(y, in, greens, colours, greenPairs, colourPairs);
            } else {
                step<false, otherFirst>(y, in, greens, colours, greenPairs, colourPairs);
            }
            odd = !odd;
            in = {in.above, in.here, in.below, in.below2, nullptr, in.differencesHere, in.differencesBelow,
                  in.fresh, nullptr};
        }
    }
    // Greens of row y + 2, colours of row y.
    template <bool colourOdd, bool ownFirst>
    KRO_INLINE void step(int32_t y, const Window& in, bool greens, bool colours, bool greenPairs, bool colourPairs) {
        if (greens && greens_.haveBlocks()) {
            greensOf<InBlocks, colourOdd>(in, greens_.blocks);
        }
        if (greens && greenPairs) {
            greensInPairs<colourOdd>(y + 2, in.above2, in.above, in.here, in.below, in.below2);
        }
        if (colours && colours_.haveBlocks()) {
            coloursOf<InBlocks, colourOdd, ownFirst>(y, in, colours_.blocks);
        }
        if (colours && colourPairs) {
            coloursInPairs<colourOdd, ownFirst>(y, in.above2, in.differencesAbove, in.differencesHere,
                                                in.differencesBelow);
        }
    }

    // Rows one by one: a record of them would be put into memory and read at once in wider pieces, for which stores
    // are waited for.
    template <bool colourOdd>
    KRO_RARE void greensInPairs(int32_t y, const uint8_t* above2, const uint8_t* above, const uint8_t* here,
                                const uint8_t* below, const uint8_t* below2) {
        const Window in{above2, above, here, below, below2, nullptr, nullptr, nullptr, differences(y)};
        greens_.eachSide([&](const Strip& side) KRO_INLINE_LAMBDA { greensOf<InPairs, colourOdd>(in, side); });
        mirrorSides(y);
    }
    template <class Walk, bool colourOdd>
    KRO_INLINE void greensOf(const Window& rows, const Strip& strip) {
        const uint8_t *const above2 = rows.above2, *const above = rows.above, *const here = rows.here,
                             *const below = rows.below, *const below2 = rows.below2;
        int16_t* const row = rows.fresh;
        Walk::template each<V, 2>(
            strip.made, strip.frame, innerColumns<2>(strip.frame), [&](auto block) KRO_INLINE_LAMBDA {
                expectBelow<typename decltype(block)::Vector>(block.x, below, below2);
                storeDifferences(block, row, greenDifference<colourOdd>(block, above2, above, here, below, below2));
            });
    }

    template <bool colourOdd, bool ownFirst>
    KRO_RARE void coloursInPairs(int32_t y, const uint8_t* here, int16_t* above, int16_t* same, int16_t* below) {
        const Window in{here, nullptr, nullptr, nullptr, nullptr, above, same, below, nullptr};
        colours_.eachSide([&](const Strip& side)
                              KRO_INLINE_LAMBDA { coloursOf<InPairs, colourOdd, ownFirst>(y, in, side); });
    }
    template <class Walk, bool colourOdd, bool ownFirst>
    KRO_INLINE void coloursOf(int32_t y, const Window& rows, const Strip& strip) {
        auto out = rowTarget<kind, uint8_t>(frame_.target, phaseOfRow(frame_.phase, y), y, strip.first);
        out.alphaColumns = alphaColumnsOf(y, strip.first);
        const uint8_t* const here = rows.above2;
        const int16_t *const above = rows.differencesAbove, *const same = rows.differencesHere,
                             *const below = rows.differencesBelow;
        Walk::template each<V, 1>(
            strip.made, strip.frame, innerColumns<1>(strip.frame),
            [&](auto block) KRO_INLINE_LAMBDA {
                const auto from = [&](const int16_t* row) KRO_INLINE_LAMBDA { return differenceAt(row, block.x); };
                put<kind, ownFirst>(out, block,
                                    edgePixels<colourOdd, typename decltype(block)::Vector>(
                                        block.template tap<0>(here), from(above), from(same), from(below)));
            },
            RowsAhead<kind, V>(out, frame_.target.ahead, 1));
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

public:
    ByteStrip(const EdgeFrame& frame, Source& source, const Strip& strip) : Base(frame, source, strip, memory_) {}

private:
    alignas(64) int16_t memory_[Base::inView * Base::pitchOf(mostColumns + 2)];
};

}  // namespace
}  // namespace kro
