// The exported regions of the 16-bit edge family, which work on what their neighbours left in the destination.
#pragma once

#include "demosaicingEdge/edge.hpp"

namespace kro {
namespace {

// Channels of a pixel.
enum Channel { blue, green, red };

// Where greens of a region's surroundings come from: some stand in the destination, others are made from the samples.
struct RegionFrame {
    const uint16_t* source;
    uint16_t* destination;
    int32_t height;  // where the bottom border is; or far below
    int32_t width;
    Phase phase;
    int32_t top;
    int32_t finishedRows, finishedColumns;  // whose greens stand in the destination
    int32_t madeRows;                       // rows from here on have no greens
    int32_t sourceRows;                     // rows from here on are not read

    KRO_INLINE const uint16_t* row(int32_t y) const { return source + static_cast<ptrdiff_t>(y) * width; }
    KRO_INLINE uint16_t* pixel(int32_t y, int32_t x) const {
        return destination + 3 * (static_cast<ptrdiff_t>(y) * width + x);
    }
    KRO_INLINE bool isSite(int32_t y, int32_t x) const { return (x % 2 != 0) == phaseOfRow(phase, y).greenFirst; }
};

// Rows that vector formulas ask for beyond those that may be read serve lanes that nobody looks at: any row will do.
struct RegionRows {
    const RegionFrame& frame;
    int32_t first;  // column of the strip in hand

    KRO_INLINE const uint16_t* operator[](int32_t y) const { return at(mirrored(y, frame.height)); }
    KRO_INLINE const uint16_t* at(int32_t y) const {
        return frame.row(y < 0 ? 0 : y < frame.sourceRows ? y : frame.sourceRows - 1) + first;
    }
    KRO_INLINE void prepare(int32_t) const {}
};

template <class S>
class EdgeRegion16 {
    static constexpr int32_t most = 256;  // columns
    // Greens in the destination may be anything: lanes are wide.
    using RegionStrip = WordStrip<S, int32_t, Output::bgr, const RegionRows, most + 32>;

public:
    // Channels `from` to `to` of a rectangle.
    static void put(const RegionFrame& frame, RowSpan rows, Columns columns, Channel from, Channel to) {
        for (int32_t x = columns.begin & ~1; x < columns.end; x += most) {
            const int32_t end = x + most < columns.end ? x + most : columns.end;
            strip(frame, rows, {x < columns.begin ? columns.begin : x, end}, from, to);
        }
    }

private:
    static KRO_OUTLINE void strip(const RegionFrame& frame, RowSpan rows, Columns columns, Channel from, Channel to) {
        const int32_t first = columns.begin & ~1, above = rows.begin < 1 ? 0 : rows.begin - 1;
        // Units count from where the finished rows end, so that none is half finished.
        uint16_t pixels[2][3 * most];
        const EdgeFrame edge{frame.height, frame.width,
                             frame.phase,  interleavedTarget(pixels, sizeof pixels[0], false),
                             frame.top,    frame.finishedRows > 0 ? frame.finishedRows : above,
                             {0, 0}};
        const RegionRows source{frame, first};
        const int32_t firstUnit = (above - edge.firstRow) >> 1;
        RegionStrip strip(edge, source, {0, {0, columns.end - first}, {-first, frame.width - first}}, firstUnit);
        const int32_t last = (frame.madeRows < frame.height ? frame.madeRows : frame.height) - 1;
        int32_t made = firstUnit;
        for (int32_t unit = strip.unitOf(rows.begin); unit <= strip.unitOf(rows.end - 1); ++unit) {
            const int32_t y = edge.firstRow + 2 * unit;
            for (; made <= strip.unitOf(y + 2 < last ? y + 2 : last); ++made) {
                makeDifferences(strip, frame, edge.firstRow + 2 * made, first);
            }
            const int32_t before = y < 1 ? y + 1 : y - 1, after = mirrored(y + 2, frame.height);
            strip.colour(y, true, before < above ? y : before, y + 2 < frame.madeRows ? after : y, 0);
            for (int32_t row = y; row < y + 2; ++row) {
                if (row >= rows.begin && row < rows.end) {
                    copy(pixels[row - y] + 3 * (columns.begin - first), frame.pixel(row, columns.begin),
                         columns.end - columns.begin, from, to);
                }
            }
        }
    }
    // Differences of the unit of rows y and y + 1.
    static void makeDifferences(RegionStrip& strip, const RegionFrame& frame, int32_t y, int32_t first) {
        const int32_t unit = strip.unitOf(y);
        Columns finished{0, frame.finishedColumns};
        if (y < frame.finishedRows) {
            strip.foldUpTo(unit);
            finished.end = frame.width;
        } else {
            strip.green(unit);
        }
        const Columns greens{strip.greenColumns().begin + first, strip.greenColumns().end + first};
        int32_t* const differences = strip.differences(y);
        for (int32_t x = greens.begin; x < greens.end && x < finished.end; ++x) {
            const int32_t row = frame.isSite(y, x) ? y : y + 1;
            differences[x - first] = frame.pixel(row, x)[green] - frame.row(row)[x];
        }
        strip.finishDifferences(unit);
    }
    static void copy(const uint16_t* pixels, uint16_t* out, int32_t count, Channel from, Channel to) {
        for (int32_t x = 0; x < count; ++x) {
            for (int channel = from; channel <= to; ++channel) {
                out[3 * x + channel] = pixels[3 * x + channel];
            }
        }
    }
};

}  // namespace
}  // namespace kro
