// Edge-directed frames: green along the direction of the smaller gradient, red and blue from colour differences.
#pragma once

#include "demosaicingEdge/strip.hpp"

namespace kro {
namespace {

// Rows that row-pair steps complete in a mosaic of this height whose first row is an R row: all but row 0 and the
// last three (four of an odd height).
constexpr int32_t steppedRows(int32_t height) { return height < 6 ? 0 : (height - 4) / 2 * 2; }

// Samples above 12 bits, for which 16-bit lanes are too narrow.
constexpr int32_t deepBits = 0xF000;

template <class W>
KRO_OUTLINE bool anyDeep(const uint16_t* row, Columns columns) {
    int32_t x = columns.begin;
    auto bits = W::all(0);
    for (; x <= columns.end - W::columns; x += W::columns) {
        bits = W::bitOr(bits, W::load(row + x));
    }
    int32_t rest = 0;
    for (; x < columns.end; ++x) {
        rest |= row[x];
    }
    return W::anyBits(bits, deepBits) || (rest & deepBits) != 0;
}

template <class S, class Sample, Output kind>
class Edge {
    using Source = Rows<S, Sample>;

public:
    static void frame(const FrameJob& job) { walk<int16_t>(job, {0, job.width}, job.rows); }

private:
    // Rows of a range of columns, strip by strip. Lanes of words are narrow until a row with a deep sample comes into
    // view; from there on the strip is walked again in wide ones, and in narrower strips.
    template <class Number>
    static void walk(const FrameJob& job, Columns columns, RowSpan rows) {
        const bool ownRing = !readInPlace<Sample>(job.source) && job.source.ring == nullptr;
        const int32_t most = ownRing ? ringedStripColumns<Sample, Number> : stripColumns<Sample, Number>;
        for (int32_t x = columns.begin; x < columns.end;) {
            const Columns strip{x, stripEnd(x, columns.end, most)};
            const int32_t done = ownRing ? ringed<Number>(job, strip, rows) : inPlace<Number>(job, strip, rows);
            if constexpr (sizeof(Sample) == 2 && sizeof(Number) == 2) {
                if (done < rows.end) {
                    walk<int32_t>(job, strip, {done, rows.end});
                }
            }
            x = strip.end;
        }
    }
    template <class Number>
    static KRO_OUTLINE int32_t inPlace(const FrameJob& job, Columns columns, RowSpan rows) {
        Source source(job, columns, rows.begin, job.source.ring, job.source.ringStride);
        return run<Number, stripColumns<Sample, Number>>(job, source, columns, rows);
    }
    template <class Number>
    static KRO_OUTLINE int32_t ringed(const FrameJob& job, Columns columns, RowSpan rows) {
        Ring<Sample, ringedStripColumns<Sample, Number>> ring;
        Source source(job, columns, rows.begin, ring.rows, sizeof ring.rows[0]);
        return run<Number, ringedStripColumns<Sample, Number>>(job, source, columns, rows);
    }

    // Greens one unit ahead of colours. Returns the first row that was not made.
    template <class Number, int32_t most>
    static KRO_INLINE int32_t run(const FrameJob& job, Source& source, Columns columns, RowSpan rows) {
        constexpr int32_t folded = rowsFolded<Sample>;
        const int32_t first = job.phase.greenFirst ? 1 : 0;  // a view that starts with an R row, of one row less
        const RowSpan alphaRows{first + 1, first + 1 + steppedRows(job.height - first)};
        const EdgeFrame frame{job.height, job.width, job.phase, job.target, job.top, rows.begin, alphaRows};
        EdgeStrip<S, Sample, Number, kind, Source, most> strip(frame, source, Strip::of(columns, job.width));
        const int32_t last = job.height - 1;
        int32_t looked = rows.begin < 4 ? 0 : rows.begin - 4, unit = rows.begin > 0 ? -1 : 0;
        for (int32_t y = rows.begin; y < rows.end;) {
            const int32_t made = rows.end - y < folded ? rows.end - y : folded;  // rows at a time
            for (const int32_t ahead = strip.unitOf(y + made < last ? y + made : last); unit <= ahead; ++unit) {
                const int32_t reach = rows.begin + folded * (unit + 1) + 1;
                source.prepare(reach);
                if constexpr (sizeof(Sample) == 2 && sizeof(Number) == 2) {
                    for (; looked <= reach && looked <= last; ++looked) {
                        if (anyDeep<typename S::Words>(source.at(looked), strip.sampleColumns())) {
                            return y;
                        }
                    }
                }
                strip.green(unit);
            }
            if constexpr (folded == 2) {
                made == 2 ? strip.colourUnit(y) : strip.colour(y);
            } else {
                strip.colour(y);
            }
            y += made;
        }
        return rows.end;
    }
};

}  // namespace
}  // namespace kro
