// Edge-directed frames: green along the direction of the smaller gradient, red and blue from colour differences.
#pragma once

#include "demosaicingEdge/folded.hpp"
#include "row/narrow.hpp"

namespace kro {
namespace {

// Rows that row-pair steps complete in a mosaic of this height whose first row is an R row: all but row 0 and the
// last three (four of an odd height).
constexpr int32_t steppedRows(int32_t height) { return height < 6 ? 0 : (height - 4) / 2 * 2; }

// Most columns of a strip, by the bytes that each takes on the stack: of bytes 4 (differences), of words 18, or 24
// where lanes are wide; and where a ring of rows lies there too, 10, 26 and 32.
// With general registers as few as in 32 bits more of everything lies there, as it does of what clang compiles.
// Where the stack has no such limit, frames of 1,280 columns of 12-bit words in one strip are 8 % faster (AVX-512).
#ifdef __clang__
constexpr bool spillsMore = true;
#else
constexpr bool spillsMore = sizeof(void*) == 4;
#endif
template <class Sample, class Number>
constexpr int32_t stripColumns = sizeof(Sample) == 1   ? 4096
                                 : sizeof(Number) == 2 ? 928
                                                       : 672;
template <class Sample, class Number>
constexpr int32_t ringedStripColumns = sizeof(Sample) == 1   ? 1600
                                       : sizeof(Number) == 2 ? (spillsMore ? 608 : 640)
                                                             : 480;

template <class S, class Sample, class Number, Output kind, class Source, int32_t most>
using EdgeStrip = std::conditional_t<sizeof(Sample) == 1, ByteStrip<S, kind, Source, most>,
                                     WordStrip<S, Number, kind, Source, most>>;

template <class S, class Sample, Output kind>
class Edge {
    // Of words, samples are read once, when they are folded: with what lies opposite them four rows are in view.
    static constexpr int32_t rowsInView = sizeof(Sample) == 1 ? ringRows : 4;
    using Source = Rows<S, Sample, rowsInView>;

public:
    static void frame(const FrameJob& job) {
        if (madeByNarrowerSet<S, Sample>(KRO_EDGE, kind, job)) {
            return;
        }
        const bool ringed = !readableInPlace<Sample>(job.source) && job.source.ring == nullptr;
        walk<int16_t>(job, {0, job.width}, job.rows, ringed);
    }

private:
    // Rows of a range of columns, strip by strip, with a ring on the stack or without.
    template <class Number>
    static void walk(const FrameJob& job, Columns columns, RowSpan rows, bool ringed) {
        const int32_t whole = ringed ? ringedStripColumns<Sample, Number> : stripColumns<Sample, Number>;
        const int32_t most = columns.begin == 0 && columns.end <= whole ? whole : (whole - 32) & ~63;
        for (int32_t x = columns.begin; x < columns.end;) {
            const Columns strip{x, stripEnd(x, columns.end, most)};
            const int32_t done = ringed ? inRing<Number>(job, strip, rows) : inPlace<Number>(job, strip, rows);
            if constexpr (sizeof(Sample) == 2) {
                if (done < rows.end) {
                    walkFitting<Number>(job, strip, {done, rows.end}, ringed);
                }
            }
            x = strip.end;
        }
    }
    // Words from the row on where one did not fit: too large for its format, so that it is limited in a ring, or for
    // the lanes, which are wide from there on.
    template <class Number>
    static void walkFitting(const FrameJob& job, Columns strip, RowSpan rows, bool ringed) {
        const int32_t unlimited = unlimitedBits(job.source);
        if (!ringed && (unlimited | deepBits<Number>) == unlimited) {
            walk<Number>(job, strip, rows, true);
        } else {
            walk<int32_t>(job, strip, rows, ringed);
        }
    }
    template <class Number>
    static KRO_OUTLINE int32_t inPlace(const FrameJob& job, Columns columns, RowSpan rows) {
        Source source(job, columns, rows.begin, job.source.ring, job.source.ringStride);
        return run<Number, stripColumns<Sample, Number>>(job, source, columns, rows, unlimitedBits(job.source));
    }
    template <class Number>
    static KRO_OUTLINE int32_t inRing(const FrameJob& job, Columns columns, RowSpan rows) {
        Ring<Sample, ringedStripColumns<Sample, Number>, rowsInView> ring;
        Source source(job, columns, rows.begin, ring.rows, sizeof ring.rows[0]);
        return run<Number, ringedStripColumns<Sample, Number>>(job, source, columns, rows, 0);
    }

    // Greens ahead of colours. Returns the first row that was not made.
    template <class Number, int32_t most>
    static KRO_INLINE int32_t run(const FrameJob& job, Source& source, Columns columns, RowSpan rows, int32_t unfit) {
        using Units = EdgeStrip<S, Sample, Number, kind, Source, most>;
        const int32_t first = job.phase.greenFirst ? 1 : 0;  // a view that starts with an R row, of one row less
        const RowSpan alphaRows{first + 1, first + 1 + steppedRows(job.height - first)};
        const EdgeFrame frame{job.height, job.width,  job.phase, job.target,
                              job.top,    rows.begin, alphaRows, unfit | deepBits<Number>};
        const int32_t before = rows.begin > 0 ? 1 : 0, last = job.height - 1;
        const Strip strip = Strip::of(columns, job.width);
        if constexpr (sizeof(Sample) == 1) {
            Units(frame, source, strip).make(rows, rows.begin - before, rows.end < last ? rows.end : last);
            return rows.end;
        } else {
            Units units(frame, source, strip, -before);
            return runUnits(units, rows, units.unitOf(rows.begin) - before, last);
        }
    }
    template <class Units>
    static KRO_INLINE int32_t runUnits(Units& strip, RowSpan rows, int32_t unit, int32_t last) {
        for (int32_t y = rows.begin, made; y < rows.end; y += made) {
            made = rows.end - y < Units::rowsAtOnce ? rows.end - y : Units::rowsAtOnce;
            for (const int32_t ahead = strip.unitOf(y + made < last ? y + made : last); unit <= ahead; ++unit) {
                if (!strip.green(unit)) {
                    return y;
                }
            }
            strip.colour(y, made);
        }
        return rows.end;
    }
};

}  // namespace
}  // namespace kro
