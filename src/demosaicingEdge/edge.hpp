// Edge-directed frames: green along the direction of the smaller gradient, red and blue from colour differences.
#pragma once

#include "demosaicingEdge/strip.hpp"

namespace kro {
namespace {

// Rows that row-pair steps complete in a mosaic of this height whose first row is an R row: all but row 0 and the last
// three (four of an odd height).
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
    static void frame(const FrameJob& job) {
        const int32_t first = job.phase.greenFirst ? 1 : 0;  // a view that starts with an R row, of one row less
        const EdgeFrame frame{job.height,
                              job.width,
                              job.phase,
                              job.target,
                              job.top,
                              job.rows.begin,
                              {first + 1, first + 1 + steppedRows(job.height - first)}};
        if (readInPlace<Sample>(job.source) || job.source.ring != nullptr) {
            for (int32_t x = 0; x < job.width; x = stripEnd(x, job.width, stripColumns<Sample>)) {
                inPlace(job, frame, {x, stripEnd(x, job.width, stripColumns<Sample>)});
            }
        } else {
            for (int32_t x = 0; x < job.width; x = stripEnd(x, job.width, ringColumns<Sample>)) {
                ringed(job, frame, {x, stripEnd(x, job.width, ringColumns<Sample>)});
            }
        }
    }

private:
    static KRO_OUTLINE void inPlace(const FrameJob& job, const EdgeFrame& frame, Columns columns) {
        Source source(job, columns, job.source.ring, job.source.ringStride);
        EdgeStrip<S, Sample, kind, Source, stripColumns<Sample>> strip(frame, source, Strip::of(columns, job.width));
        run(job, source, strip, Strip::of(columns, job.width));
    }
    static KRO_OUTLINE void ringed(const FrameJob& job, const EdgeFrame& frame, Columns columns) {
        Ring<Sample> ring;
        Source source(job, columns, ring.rows, sizeof ring.rows[0]);
        EdgeStrip<S, Sample, kind, Source, ringColumns<Sample>> strip(frame, source, Strip::of(columns, job.width));
        run(job, source, strip, Strip::of(columns, job.width));
    }

    // Greens one unit ahead of colours.
    template <class EdgeStrip>
    static void run(const FrameJob& job, Source& source, EdgeStrip& strip, const Strip& place) {
        constexpr int32_t folded = rowsFolded<Sample>;
        const int32_t first = job.rows.begin, last = job.height - 1;
        const Columns greens = strip.greenColumns();
        const Columns seen{greens.begin - 2 < place.frame.begin ? place.frame.begin : greens.begin - 2,
                           greens.end + 2 > place.frame.end ? place.frame.end : greens.end + 2};
        int32_t looked = first < 4 ? 0 : first - 4;
        const int32_t firstUnit = first > 0 ? -1 : 0;
        int32_t unit = firstUnit;
        for (int32_t y = first; y < job.rows.end; ++y) {
            for (const int32_t ahead = strip.unitOf(y < last ? y + 1 : last); unit <= ahead; ++unit) {
                const int32_t reach = first + folded * (unit + 1) + 1;
                source.prepare(reach);
                lookAt(source, strip, firstUnit, unit, looked, reach < last ? reach : last, seen);
                strip.green(unit);
            }
            strip.colour(y);
        }
    }
    // Lanes are narrow until a row with a deep sample comes into view.
    template <class EdgeStrip>
    static KRO_INLINE void lookAt(const Source& source, EdgeStrip& strip, int32_t firstUnit, int32_t unit,
                                  int32_t& looked, int32_t y, Columns columns) {
        if constexpr (sizeof(Sample) == 2) {
            for (; looked <= y && !strip.deep(); ++looked) {
                if (anyDeep<typename S::Words>(source.at(looked), columns)) {
                    strip.deepenFrom(unit, firstUnit);
                }
            }
        }
    }
};

}  // namespace
}  // namespace kro
