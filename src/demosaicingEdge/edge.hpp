// Edge-directed: green along the direction of the smaller gradient, red and blue from colour differences.
#pragma once

#include "demosaicingEdge/formulas.hpp"
#include "frame/rows.hpp"

namespace kro {
namespace {

// Colour differences S - G of four rows of a strip of columns, a lane for each red or blue site. Small enough for the
// first-level cache; wider frames are walked in several strips.
constexpr int32_t stripColumns = 2048;

class DifferenceRows {
public:
    // Lane of column x (and x + 1): differences of row y at the columns where that row has its colour.
    KRO_INLINE int16_t* at(int32_t y, int32_t x) { return rows_[y & 3] + margin + (x - origin_) / 2; }
    KRO_INLINE const int16_t* at(int32_t y, int32_t x) const { return rows_[y & 3] + margin + (x - origin_) / 2; }
    void startAt(int32_t origin) { origin_ = origin; }

    // Differences mirror at the frame's sides as samples do; a row has `sites` of them.
    KRO_INLINE void mirrorSides(int32_t y, Columns made, bool colourOdd, int32_t width) {
        if (made.begin == 0) {
            at(y, 0)[-1] = *at(y, 0);
        }
        if (made.end == width) {
            const int32_t sites = (width + (colourOdd ? 0 : 1)) / 2;
            int16_t* const end = at(y, 2 * sites);
            *end = end[-1];
        }
    }

private:
    static constexpr int32_t margin = 32;
    static constexpr int32_t lanes = stripColumns / 2 + 2 * margin;
    int32_t origin_ = 0;
    alignas(64) int16_t rows_[4][lanes];
};

// One strip of a frame (or of a band of rows): rows come in pairs, greens ahead of colours. `Source` gives row pointers,
// mirrored at the top and bottom.
template <class V, Output kind, class Source>
struct EdgeStrip {
    static constexpr bool ordered = kind == Output::bgr || kind == Output::bgra;

    const Source& source;
    int32_t height, width;
    Phase phase;
    const Target& target;
    Columns columns;
    RowSpan zeroAlphaRows;
    DifferenceRows differences;

    // Colours need differences one lane beyond the strip.
    Columns greenColumns() const {
        return {columns.begin > 0 ? columns.begin - 2 : 0, columns.end < width ? columns.end + 2 : width};
    }

    KRO_OUTLINE void green(int32_t y) {
        const bool colourOdd = phaseOfRow(phase, y).greenFirst;
        (this->*(colourOdd ? &EdgeStrip::greenRow<true> : &EdgeStrip::greenRow<false>))(y);
        differences.mirrorSides(y, greenColumns(), colourOdd, width);
    }
    void colour(int32_t y) {
        const Phase row = phaseOfRow(phase, y);
        RowTarget out = rowTarget<kind>(target, row, y, width);
        out.zeroAlpha = y >= zeroAlphaRows.begin && y < zeroAlphaRows.end ? alphaColumns(width) : Columns{0, 0};
        const bool ownFirst = ordered && ownComesFirst(target, row);
        if (row.greenFirst) {
            (ownFirst ? colourRow<true, ordered> : colourRow<true, false>)(*this, y, out);
        } else {
            (ownFirst ? colourRow<false, ordered> : colourRow<false, false>)(*this, y, out);
        }
    }

private:
    template <bool colourOdd>
    KRO_OUTLINE void greenRow(int32_t y) {
        const uint8_t* const rows[5] = {source[y - 2], source[y - 1], source[y], source[y + 1], source[y + 2]};
        int16_t* const out = differences.at(y, 0);
        eachBlock<V, 2>(greenColumns(), width, [=](auto block) KRO_INLINE_LAMBDA {
            using W = typename decltype(block)::Vector;
            W::storeLanes(out + block.x / 2, greenDifference<colourOdd>(block, rows[0], rows[1], rows[2], rows[3],
                                                                        rows[4]));
        });
    }
    template <bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void colourRow(const EdgeStrip& strip, int32_t y, const RowTarget& target) {
        const DifferenceRows& d = strip.differences;
        const uint8_t* const here = strip.source[y];
        const int16_t *const above = d.at(mirrored(y - 1, strip.height), 0), *const same = d.at(y, 0),
                      *const below = d.at(mirrored(y + 1, strip.height), 0);
        eachBlock<V, 1>(strip.columns, strip.width, [=, out = target](auto block) KRO_INLINE_LAMBDA {
            put<kind, ownFirst>(out, block, edgePixels<colourOdd>(block, here, above, same, below));
        });
    }
};

// Rows that row-pair steps complete in a mosaic of this height whose first row is an R row: all but row 0 and the last
// three (four of an odd height).
constexpr int32_t steppedRows(int32_t height) { return height < 6 ? 0 : (height - 4) / 2 * 2; }

template <class V, Output kind>
struct Edge {
    using Strip = EdgeStrip<V, kind, Rows<V>>;

    static void frame(const FrameJob& job) {
        Rows<V> source(job);
        const int32_t first = job.phase.greenFirst ? 1 : 0;  // a view that starts with an R row, of one row less
        const RowSpan alphaRows{first + 1, first + 1 + steppedRows(job.height - first)};
        for (int32_t x = 0; x < job.width;) {
            const int32_t end = stripEnd(x, job.width);
            Strip strip{source, job.height, job.width, job.phase, job.target, {x, end}, alphaRows, {}};
            strip.differences.startAt(x);
            source.rewind();
            run(source, strip, job.height);
            x = end;
        }
    }
    // Strips of about equal width, the last of at least a block.
    static int32_t stripEnd(int32_t begin, int32_t width) {
        const int32_t left = width - begin, strips = (left + stripColumns - 1) / stripColumns;
        return strips == 1 ? width : begin + ((left / strips + 63) & ~63);
    }

private:
    static void run(Rows<V>& source, Strip& strip, int32_t height) {
        source.need(3);
        strip.green(0);
        strip.green(1);
        strip.colour(0);
        for (int32_t y = 1; y < height; ++y) {
            if (y + 1 < height) {
                source.need(y + 3);
                strip.green(y + 1);
            }
            strip.colour(y);
        }
    }
};

}  // namespace
}  // namespace kro
