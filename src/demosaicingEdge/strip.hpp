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
    static KRO_INLINE void row(const ColourRow& to, const uint8_t* here, const int16_t* above, const int16_t* same,
                               const int16_t* below) {
        const bool ownFirst = ordered && ownComesFirst(to.target, to.phase);
        const auto make = to.phase.greenFirst ? (ownFirst ? one<true, ordered> : one<true, false>)
                                              : (ownFirst ? one<false, ordered> : one<false, false>);
        make(to, here, above, same, below);
    }

private:
    static constexpr bool ordered = isInterleaved(kind);

    template <bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void one(const ColourRow& to, const uint8_t* here, const int16_t* above, const int16_t* same,
                                const int16_t* below) {
        auto out = rowTarget<kind, uint8_t>(to.target, to.phase, to.y, to.strip.first);
        out.alphaColumns = to.alphaColumns;
        const Columns frame = to.strip.frame;
        eachBlock<typename S::Bytes, 1>(
            to.strip.made, frame, innerColumns<1>(frame), [=](auto block) KRO_INLINE_LAMBDA {
                const int32_t lane = block.x / 2;
                put<kind, ownFirst>(out, block,
                                    edgePixels(ByteNeighbours<colourOdd, decltype(block)>{
                                        block.template tap<0>(here), above + lane, same + lane, below + lane}));
            });
    }
};

template <class S>
struct ByteGreens {
    // Differences of a row; `rows`: from two above to two below.
    static void make(bool colourOdd, const uint8_t* const (&rows)[5], Columns made, Columns frame,
                     int16_t* differences) {
        (colourOdd ? row<true> : row<false>)(rows[0], rows[1], rows[2], rows[3], rows[4], made, frame, differences);
    }

private:
    template <bool colourOdd>
    static KRO_OUTLINE void row(const uint8_t* above2, const uint8_t* above, const uint8_t* here,
                                const uint8_t* below, const uint8_t* below2, Columns made, Columns frame,
                                int16_t* differences) {
        eachBlock<typename S::Bytes, 2>(made, frame, innerColumns<2>(frame), [=](auto block) KRO_INLINE_LAMBDA {
            using V = typename decltype(block)::Vector;
            expectBelow<V>(block.x, below, below2);
            V::storeLanes(differences + block.x / 2,
                          greenDifference<colourOdd>(block, above2, above, here, below, below2));
        });
    }
};

// `Source` gives rows mirrored at the top and bottom, after they were prepared.
template <class S, Output kind, class Source, int32_t mostColumns>
class ByteStrip {
public:
    static constexpr int32_t rowsAtOnce = 1;

    ByteStrip(const EdgeFrame& frame, Source& source, const Strip& strip, int32_t = 0)
        : frame_(frame),
          source_(source),
          strip_(strip),
          greens_{strip.frame.begin < strip.made.begin ? strip.made.begin - 2 : strip.frame.begin,
                  strip.made.end < strip.frame.end ? strip.made.end + 2 : strip.frame.end} {}

    // The row is the unit.
    int32_t unitOf(int32_t y) const { return y; }
    Columns greenColumns() const { return greens_; }

    // Differences of row y. All samples fit the lanes.
    KRO_INLINE bool green(int32_t y) {
        source_.prepare(y + 2);
        ByteGreens<S>::make(colourIsOdd(y),
                            {source_[y - 2], source_[y - 1], source_[y], source_[y + 1], source_[y + 2]}, greens_,
                            strip_.frame, differences(y));
        mirrorSides(y);
        return true;
    }
    KRO_INLINE void colour(int32_t y, int32_t = rowsAtOnce) {
        Columns alpha{INT32_MIN, INT32_MAX};
        if (kind == Output::bgra && !frame_.target.alphaEverywhere) {
            const Columns written = alphaColumns(frame_.width);
            const bool here = y >= frame_.alphaRows.begin && y < frame_.alphaRows.end;
            alpha = here ? Columns{written.begin - strip_.first, written.end - strip_.first} : Columns{0, 0};
        }
        ByteColours<S, kind>::row({frame_.target, phaseOfRow(frame_.phase, y), y, strip_, alpha}, source_[y],
                                  differences(mirrored(y - 1, frame_.height)), differences(y),
                                  differences(mirrored(y + 1, frame_.height)));
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
    static constexpr uint32_t inView = 4;  // three would do; the place of a row is a mask
    static constexpr int32_t margin = 32;

    const EdgeFrame& frame_;
    Source& source_;
    const Strip strip_;
    const Columns greens_;  // colours need differences one column beyond the strip
    alignas(64) int16_t rows_[inView][mostColumns / 2 + 2 * margin];

    bool colourIsOdd(int32_t y) const { return phaseOfRow(frame_.phase, y).greenFirst; }
};

}  // namespace
}  // namespace kro
