// The exported routines of the bilinear family. The region routines speak of the RG view; red and blue are exchanged
// by the order of the output.
#pragma once

#include "demosaicingBilinear/bilinear16.hpp"
#include "row/entries.hpp"

namespace kro {
namespace {

// ---- 8 bits ----

// Regions of a frame of bytes, whatever the output is made of.
template <class S, Output kind>
struct BilinearRegions {
    using Family = Bilinear<S, kind>;

    static KroCoverage body(const FrameJob& job) {
        const KroCoverage border{firstBorder(job.height), firstBorder(job.width)};
        if (job.height >= 4) {
            Family::run(job, {1, border.first}, {1, border.second});
            return border;
        }
        return {border.first, 0};
    }
    static void firstCols(const FrameJob& job) { Family::run(job, {1, job.height}, {0, 1}); }
    // The start row is a B row, wherever it lies: frames that start with green pass their full height.
    static void lastRows(FrameJob job, int32_t start) {
        if (job.height - start == 1 || job.height - start == 2) {
            job.phase = start % 2 != 0 ? phaseRG : phaseGB;
            Family::run(job, {start, job.height}, {1, 1 + 2 * borderPairs(job.width)});
        }
    }
    static void lastCols(const FrameJob& job, int32_t start) {
        if (job.width - start == 1 || job.width - start == 2) {
            Family::run(job, {1, job.height}, {start, job.width});
        }
    }
};

// Three and four bytes a pixel. Only the value 1 of swapRB exchanges; 0 and all others mean blue, green, red.
template <class S, Output kind>
struct BilinearEntries {
    using Regions = BilinearRegions<S, kind>;

    template <Mosaic mosaic>
    static int32_t frame(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination) {
        Bilinear<S, kind>::frame(
            frameJob(source, height, width, phaseOf(mosaic), rowsTarget<kind>(destination, width, false)));
        return 0;
    }
    static KroCoverage body(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                            uint32_t swapRB) {
        return Regions::body(job(source, destination, height, width, swapRB));
    }
    static void firstRow(const uint8_t* source, uint8_t* destination, int32_t width, uint32_t swapRB) {
        Bilinear<S, kind>::run(job(source, destination, anyHeight, width, swapRB), {0, 1}, {0, width});
    }
    // Rows 0 and 1 of a mosaic that starts with green.
    static void firstTwoRows(const uint8_t* source, uint8_t* destination, int32_t width, uint32_t swapRB) {
        FrameJob rows = job(source, destination, anyHeight, width, swapRB);
        rows.phase = phaseGB;
        rows.rows = {0, 2};
        Bilinear<S, kind>::frame(rows);
    }
    static void firstCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                          uint32_t swapRB) {
        Regions::firstCols(job(source, destination, height, width, swapRB));
    }
    static void lastRows(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width, int32_t start,
                         uint32_t swapRB) {
        Regions::lastRows(job(source, destination, height, width, swapRB), start);
    }
    static void lastCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width, int32_t start,
                         uint32_t swapRB) {
        Regions::lastCols(job(source, destination, height, width, swapRB), start);
    }

private:
    static FrameJob job(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width, uint32_t swapRB) {
        return frameJob(source, height, width, phaseRG, rowsTarget<kind>(destination, width, swapRB == 1));
    }
};

template <class S>
struct BilinearPlanarEntries {
    using Regions = BilinearRegions<S, Output::planar>;

    // For a GR mosaic the first plane receives the colour that row 0 holds.
    template <Mosaic mosaic>
    static int32_t frame(const uint8_t* source, int32_t height, int32_t width, uint8_t* first, uint8_t* second,
                         uint8_t* third) {
        Bilinear<S, Output::planar>::frame(
            frameJob(source, height, width, phaseOf(mosaic), planarTarget(first, second, third, width)));
        return 0;
    }
    static KroCoverage body(const uint8_t* source, uint8_t* red, uint8_t* green, uint8_t* blue, int32_t height,
                            int32_t width) {
        return Regions::body(job(source, red, green, blue, height, width));
    }
    static void firstCols(const uint8_t* source, uint8_t* red, uint8_t* green, uint8_t* blue, int32_t height,
                          int32_t width) {
        Regions::firstCols(job(source, red, green, blue, height, width));
    }
    static void lastRows(const uint8_t* source, uint8_t* red, uint8_t* green, uint8_t* blue, int32_t height,
                         int32_t width, int32_t start) {
        Regions::lastRows(job(source, red, green, blue, height, width), start);
    }
    static void lastCols(const uint8_t* source, uint8_t* red, uint8_t* green, uint8_t* blue, int32_t height,
                         int32_t width, int32_t start) {
        Regions::lastCols(job(source, red, green, blue, height, width), start);
    }

private:
    static FrameJob job(const uint8_t* source, uint8_t* red, uint8_t* green, uint8_t* blue, int32_t height,
                        int32_t width) {
        return frameJob(source, height, width, phaseRG, planarTarget(red, green, blue, width));
    }
};

template <class S>
struct BilinearGreyEntries {
    using Regions = BilinearRegions<S, Output::mono>;

    template <Mosaic mosaic>
    static int32_t frame(const uint8_t* source, int32_t height, int32_t width, const uint32_t* weights,
                         uint8_t* destination) {
        FrameJob whole = job(source, destination, height, width, weights);
        whole.phase = phaseOf(mosaic);
        Bilinear<S, Output::mono>::frame(whole);
        return 0;
    }
    static KroCoverage body(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                            const uint32_t* weights) {
        return Regions::body(job(source, destination, height, width, weights));
    }
    static void firstCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                          const uint32_t* weights) {
        Regions::firstCols(job(source, destination, height, width, weights));
    }
    static void lastRows(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width, int32_t start,
                         const uint32_t* weights) {
        Regions::lastRows(job(source, destination, height, width, weights), start);
    }
    static void lastCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width, int32_t start,
                         const uint32_t* weights) {
        Regions::lastCols(job(source, destination, height, width, weights), start);
    }

private:
    static FrameJob job(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                        const uint32_t* weights) {
        return frameJob(source, height, width, phaseRG,
                        greyTarget(destination, width, weights[0], weights[1], weights[2]));
    }
};

// ---- 16 bits ----

template <class S, Output kind>
KRO_INLINE int32_t wrappingFrame(FrameJob job) {
    job.wraps = true;
    BilinearWords<S, kind>::frame(job);
    return 0;
}

// What the five exported regions do, for both forms of output: arguments to jobs.
template <class S>
struct Bilinear16Entries {
    using Family = BilinearWrapping<S, Output::bgr>;

    static int32_t frame(const uint16_t* source, int32_t height, int32_t width, uint16_t* destination) {
        return wrappingFrame<S, Output::bgr>(job(source, destination, height, width, 0));
    }
    static void firstRows(const uint16_t* source, uint16_t* destination, int32_t width, uint32_t order) {
        Family::exactly(job(source, destination, anyHeight, width, order), {0, 1}, {0, width});
    }
    static void firstCols(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                          uint32_t order) {
        Family::exactly(job(source, destination, height, width, order), {1, height}, {0, 1});
    }
    static KroCoverage body(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                            uint32_t order) {
        return Family::body(job(source, destination, height, width, order));
    }
    static void lastRows(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                         int32_t firstBorderRow, uint32_t order) {
        Family::exactly(job(source, destination, height, width, order), {firstBorderRow, height},
                        {1, 1 + 2 * borderPairs(width)});
    }
    static void lastCols(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                         int32_t firstBorderCol, uint32_t order) {
        Family::exactly(job(source, destination, height, width, order), {1, height}, {firstBorderCol, width});
    }

private:
    // Only the value 1 puts red first.
    static FrameJob job(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                        uint32_t order) {
        return frameJob(source, height, width, phaseRG, rowsTarget<Output::bgr>(destination, width, order == 1));
    }
};

template <class S>
struct Bilinear16PlanarEntries {
    using Family = BilinearWrapping<S, Output::planar>;

    static int32_t frame(const uint16_t* source, int32_t height, int32_t width, uint16_t* blue, uint16_t* green,
                         uint16_t* red) {
        return wrappingFrame<S, Output::planar>(job(source, blue, green, red, height, width));
    }
    static void firstRows(const uint16_t* source, uint16_t* blue, uint16_t* green, uint16_t* red, int32_t width) {
        Family::exactly(job(source, blue, green, red, anyHeight, width), {0, 1}, {0, width});
    }
    static void firstCols(const uint16_t* source, uint16_t* blue, uint16_t* green, uint16_t* red, int32_t height,
                          int32_t width) {
        Family::exactly(job(source, blue, green, red, height, width), {1, height}, {0, 1});
    }
    static KroCoverage body(const uint16_t* source, uint16_t* blue, uint16_t* green, uint16_t* red, int32_t height,
                            int32_t width) {
        return Family::body(job(source, blue, green, red, height, width));
    }
    static void lastRows(const uint16_t* source, uint16_t* blue, uint16_t* green, uint16_t* red, int32_t height,
                         int32_t width, int32_t firstBorderRow) {
        Family::exactly(job(source, blue, green, red, height, width), {firstBorderRow, height},
                        {1, 1 + 2 * borderPairs(width)});
    }
    static void lastCols(const uint16_t* source, uint16_t* blue, uint16_t* green, uint16_t* red, int32_t height,
                         int32_t width, int32_t firstBorderCol) {
        Family::exactly(job(source, blue, green, red, height, width), {1, height}, {firstBorderCol, width});
    }

private:
    static FrameJob job(const uint16_t* source, uint16_t* blue, uint16_t* green, uint16_t* red, int32_t height,
                        int32_t width) {
        return frameJob(source, height, width, phaseRG,
                        planarTarget(red, green, blue, static_cast<ptrdiff_t>(width) * 2));
    }
};

}  // namespace
}  // namespace kro
