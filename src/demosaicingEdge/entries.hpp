// The exported routines of the edge-directed family.
#pragma once

#include "demosaicingEdge/regions16.hpp"
#include "demosaicingEdge/steps.hpp"
#include "kro/kro.h"
#include "row/entries.hpp"

namespace kro {
namespace {

// ---- 8 bits; working memory that callers provide is not needed ----

template <class S, Output kind>
struct EdgeEntries {
    template <Mosaic mosaic>
    static int32_t frame(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination, uint32_t swap) {
        Edge<S, uint8_t, kind>::frame(
            frameJob(source, height, width, phaseOf(mosaic), rowsTarget<kind>(destination, width, swap != 0)));
        return 0;
    }
    template <int32_t rows>
    static int32_t band(const uint8_t* const* band, int32_t width, uint8_t* output, uint8_t* greenRow,
                        uint32_t swap) {
        return EdgeBand<S, kind>::run(band, rows, width, rowsTarget<kind>(output, width, swap != 0), greenRow);
    }
};

template <class S>
struct EdgePlanarEntries {
    template <Mosaic mosaic>
    static int32_t frame(const uint8_t* source, int32_t height, int32_t width, uint8_t* red, uint8_t* green,
                         uint8_t* blue, uint8_t*) {
        Edge<S, uint8_t, Output::planar>::frame(
            frameJob(source, height, width, phaseOf(mosaic), planarTarget(red, green, blue, width)));
        return 0;
    }
    template <int32_t rows>
    static int32_t band(const uint8_t* const* band, int32_t width, uint8_t* red, uint8_t* green, uint8_t* blue,
                        uint8_t* greenRow) {
        return EdgeBand<S, Output::planar>::run(band, rows, width, planarTarget(red, green, blue, width), greenRow);
    }
};

template <class S>
struct EdgeGreyEntries {
    template <Mosaic mosaic>
    static int32_t frame(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination, uint32_t swap,
                         uint8_t*) {
        Edge<S, uint8_t, Output::mono>::frame(
            frameJob(source, height, width, phaseOf(mosaic), lumaTarget(destination, width, swap != 0)));
        return 0;
    }
    template <int32_t rows>
    static int32_t band(const uint8_t* const* band, int32_t width, uint8_t* output, uint8_t* greenRow,
                        uint32_t swap) {
        return EdgeBand<S, Output::mono>::run(band, rows, width, lumaTarget(output, width, swap != 0), greenRow);
    }
};

// ---- 16 bits ----
//
// Regions speak of a view whose row 0 is a red row; `start` is the column of a red site in it.
//
//     first rows      rows 0 and 1 but for the red of row 1; in the form for GB and BG also the blue row above them
//     first columns   columns before `start` of the rows from 2 on, and their red of row 1
//     interior        from row 2 and column `start`; red one row and one column behind
//     last rows       rows from the first that the interior left, columns from `start`; red of the row above them
//     last columns    columns from the first that the interior left, rows from 2; red of row 1 and the column before
//
// Some overlap, with equal values. Frames of 4 rows (5 where the first is a blue row) and 4 columns are complete
// after all five: first rows, which know no height, take the four rows from row 0 on to exist.
template <class S>
struct Edge16Entries {
    static constexpr int32_t noBottom = 1 << 30;  // far below any row that is asked for
    static constexpr Phase viewPhase(int32_t start) { return start % 2 != 0 ? phaseGR : phaseRG; }
    using Region = EdgeRegion16<S>;

    template <Mosaic mosaic, int32_t top>
    static int32_t frame(const uint16_t* source, int32_t height, int32_t width, uint16_t* destination) {
        FrameJob job =
            frameJob(source, height, width, phaseOf(mosaic), rowsTarget<Output::bgr>(destination, width, false));
        job.top = top;
        Edge<S, uint16_t, Output::bgr>::frame(job);
        return 0;
    }
    static KroCoverage interior(const uint16_t* source, uint16_t* destination, int32_t rows, int32_t width,
                                int32_t start, int32_t clampMax) {
        if (rows <= 1) {
            return {start, 0};
        }
        const int32_t covered = 2 * ((rows - 2) / 2 + 1);
        const int32_t after = start < width - 3 ? start + ((width - 4 - start) & ~1) + 2 : start;
        const ptrdiff_t above = 2 * static_cast<ptrdiff_t>(width);  // the two rows above are in view
        const RegionFrame view{source - above,
                               destination - 3 * above,
                               noBottom,
                               width,
                               viewPhase(start),
                               clampMax,
                               2,
                               start,
                               2 + covered,
                               4 + covered};
        Region::put(view, {1, 1 + covered}, {start - 1, after - 1}, red, red);
        Region::put(view, {2, 2 + covered}, {start, after}, blue, green);
        return {after, covered};
    }
    static void firstRows(const uint16_t* source, uint16_t* destination, int32_t width, int32_t start,
                          int32_t clampMax) {
        firstRowsOf(source, destination, width, viewPhase(start), clampMax, 0);
    }
    static void firstRowsBelowBlue(const uint16_t* source, uint16_t* destination, int32_t width, int32_t start,
                                   int32_t clampMax) {
        firstRowsOf(source, destination, width, phaseOfRow(viewPhase(start), 1), clampMax, 1);
    }
    template <int32_t start>
    static void firstCols(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                          int32_t clampMax) {
        columns(borders(source, destination, height, width, start, clampMax), {0, start});
    }
    static void lastRows(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                         int32_t firstRow, int32_t start, int32_t clampMax) {
        RegionFrame frame = borders(source, destination, height, width, start, clampMax);
        frame.phase = phaseOfRow(frame.phase, firstRow);
        frame.finishedRows = 0;
        Region::put(frame, {firstRow - 1, firstRow}, {start, width}, red, red);
        Region::put(frame, {firstRow, height}, {start, width}, blue, red);
    }
    static void lastCols(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                         int32_t firstColumn, int32_t clampMax) {
        const RegionFrame view = borders(source, destination, height, width, firstColumn, clampMax);
        Region::put(view, {1, height}, {firstColumn - 1, firstColumn}, red, red);
        columns(view, {firstColumn, width});
    }

private:
    static RegionFrame borders(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                               int32_t start, int32_t clampMax) {
        return {source, destination, height, width, viewPhase(start), clampMax, 2, 0, height, height};
    }
    static void firstRowsOf(const uint16_t* source, uint16_t* destination, int32_t width, Phase phase,
                            int32_t clampMax, int32_t redRow) {
        const RegionFrame frame{source, destination, noBottom, width, phase, clampMax, 0, 0, redRow + 2, redRow + 4};
        Region::put(frame, {0, redRow + 1}, {0, width}, blue, red);
        Region::put(frame, {redRow + 1, redRow + 2}, {0, width}, blue, green);
    }
    static void columns(const RegionFrame& view, Columns made) {
        Region::put(view, {1, 2}, made, red, red);
        Region::put(view, {2, view.height}, made, blue, red);
    }
};

}  // namespace
}  // namespace kro
