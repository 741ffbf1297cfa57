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

template <class S, Output kind>
struct ByteColours {
    using V = typename S::Bytes;
    static KRO_INLINE Columns inner(const Strip& strip) { return innerColumns<1>(strip.frame); }

    // A row of the output in the strip's columns, which `Walk` takes.
    template <class Walk>
    static KRO_INLINE void row(const ColourRow& to, const uint8_t* here, const int16_t* above, const int16_t* same,
                               const int16_t* below) {
        const bool ownFirst = ordered && ownComesFirst(to.target, to.phase);
        const auto make = to.phase.greenFirst ? (ownFirst ? one<Walk, true, ordered> : one<Walk, true, false>)
                                              : (ownFirst ? one<Walk, false, ordered> : one<Walk, false, false>);
        make(to.target, to.phase.blueRow, to.y, to.strip, here, above, same, below, to.alphaColumns);
    }

private:
    static constexpr bool ordered = isInterleaved(kind);

    template <class Walk, bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void one(const Target& target, bool blueRow, int32_t y, const Strip& strip,
                                const uint8_t* here, const int16_t* above, const int16_t* same, const int16_t* below,
                                Columns alphaColumns) {
        auto out = rowTarget<kind, uint8_t>(target, {colourOdd, blueRow}, y, strip.first);
        out.alphaColumns = alphaColumns;
        Walk::template each<V, 1>(strip.made, strip.frame, inner(strip), [&](auto block) KRO_INLINE_LAMBDA {
            const int32_t lane = block.x / 2;
            put<kind, ownFirst>(out, block,
                                edgePixels(ByteNeighbours<colourOdd, decltype(block)>{
                                    block.template tap<0>(here), above + lane, same + lane, below + lane}));
        });
    }
};

// Differences mirror at the frame's sides as samples do. Blocks there are stored one lane beside their place, too,
// before they are stored in it; ByteStrip::mirrorSides mirrors what pairs store.
template <class B>
KRO_INLINE void storeDifferences(B block, int16_t* row, typename B::Vector::Lanes lanes) {
    B::Vector::storeLanes(row + block.x / 2, lanes);
}
template <class V, bool first, bool last>
KRO_INLINE void storeDifferences(EndBlock<V, first, last> block, int16_t* row, typename V::Lanes lanes) {
    if constexpr (first) {
        V::storeLanes(row + block.x / 2 - 1, lanes);
    }
    if (last && block.room == 0) {
        V::storeLanes(row + block.x / 2 + 1, lanes);
    }
    V::storeLanes(row + block.x / 2, lanes);
}

template <class S>
struct ByteGreens {
    using V = typename S::Bytes;
    static KRO_INLINE Columns inner(const Strip& strip) { return innerColumns<2>(strip.frame); }

    // Differences of a row; `rows`: from two above to two below.
    template <class Walk>
    static KRO_INLINE void make(bool colourOdd, const uint8_t* const (&rows)[5], const Strip& strip,
                                int16_t* differences) {
        (colourOdd ? row<Walk, true> : row<Walk, false>)(rows[0], rows[1], rows[2], rows[3], rows[4], strip,
                                                         differences);
    }

private:
    template <class Walk, bool colourOdd>
    static KRO_OUTLINE void row(const uint8_t* above2, const uint8_t* above, const uint8_t* here,
                                const uint8_t* below, const uint8_t* below2, const Strip& strip,
                                int16_t* differences) {
        Walk::template each<V, 2>(strip.made, strip.frame, inner(strip), [&](auto block) KRO_INLINE_LAMBDA {
            storeDifferences(block, differences,
                             greenDifference<colourOdd>(block, above2, above, here, below, below2));
        });
    }
};

// `Source` gives rows mirrored at the top and bottom, after they were prepared.
template <class S, Output kind, class Source, int32_t mostColumns>
class ByteStrip {
    using V = typename S::Bytes;

public:
    static constexpr int32_t rowsAtOnce = 1, rowsBetween = 1;

    ByteStrip(const EdgeFrame& frame, Source& source, const Strip& strip, int32_t = 0)
        : frame_(frame),
          source_(source),
          strip_(strip),
          greens_{strip.frame.begin < strip.made.begin ? strip.made.begin - 2 : strip.frame.begin,
                  strip.made.end < strip.frame.end ? strip.made.end + 2 : strip.frame.end},
          colourParts_(Stretches::of<V>(strip, ByteColours<S, kind>::inner(strip))),
          greenParts_(Stretches::of<V>({strip.first, greens_, strip.frame}, ByteGreens<S>::inner(strip))) {}

    // The row is the unit.
    int32_t unitOf(int32_t y) const { return y; }
    Columns greenColumns() const { return greens_; }

    // Differences of row y. All samples fit the lanes.
    KRO_INLINE bool green(int32_t y) {
        moveWindow(y);
        const auto make = [&](auto walk, const Strip& part) KRO_INLINE_LAMBDA {
            ByteGreens<S>::template make<decltype(walk)>(colourIsOdd(y), window_, part, differences(y));
        };
        greenParts_.each(make, make);
        if (greenParts_.havePairs()) {
            mirrorSides(y);
        }
        return true;
    }
    KRO_INLINE void colour(int32_t y, int32_t = rowsAtOnce) {
        Columns alpha{INT32_MIN, INT32_MAX};
        if (kind == Output::bgra && !frame_.target.alphaEverywhere) {
            const Columns written = alphaColumns(frame_.width);
            const bool here = y >= frame_.alphaRows.begin && y < frame_.alphaRows.end;
            alpha = here ? Columns{written.begin - strip_.first, written.end - strip_.first} : Columns{0, 0};
        }
        const auto make = [&](auto walk, const Strip& part) KRO_INLINE_LAMBDA {
            ByteColours<S, kind>::template row<decltype(walk)>(
                {frame_.target, phaseOfRow(frame_.phase, y), y, part, alpha}, source_[y],
                differences(mirrored(y - 1, frame_.height)), differences(y),
                differences(mirrored(y + 1, frame_.height)));
        };
        colourParts_.each(make, make);
    }
    // Lane 0 is the strip's column 0; a lane belongs to each two columns.
    KRO_INLINE int16_t* differences(int32_t y) { return rows_[static_cast<uint32_t>(y) % inView] + margin; }
    // Differences mirror at the frame's sides as samples do.
    KRO_INLINE void mirrorSides(int32_t y) {
        int16_t* const row = differences(y);
        if (greens_.begin == strip_.frame.begin) {
            row[(greens_.begin >> 1) - 1] = row[greens_.begin >> 1];
        }
        if (greens_.end == strip_.frame.end) {
            int16_t* const end = row + ((greens_.end + (colourIsOdd(y) ? 0 : 1)) >> 1);
            *end = end[-1];
        }
    }

private:
    static constexpr uint32_t inView = 4;
    static constexpr int32_t margin = 32;

    const EdgeFrame& frame_;
    Source& source_;
    const Strip strip_;
    const Columns greens_;  // colours need differences one column beyond the strip
    const Stretches colourParts_, greenParts_;
    const uint8_t* window_[5];  // rows around the one whose differences were made last: from two above to two below
    int32_t following_ = INT32_MIN;
    alignas(64) int16_t rows_[inView][mostColumns / 2 + 2 * margin];

    KRO_INLINE void moveWindow(int32_t y) {
        source_.prepare(y + 2);
        for (int32_t k = 0; k < 4; ++k) {
            window_[k] = y == following_ ? window_[k + 1] : source_[y + k - 2];
        }
        window_[4] = source_[y + 2];
        following_ = y + 1;
    }
    bool colourIsOdd(int32_t y) const { return phaseOfRow(frame_.phase, y).greenFirst; }
};

}  // namespace
}  // namespace kro
