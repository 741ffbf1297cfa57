// Edge-directed: green along the direction of the smaller gradient, red and blue from colour differences.
#pragma once

#include "demosaicingEdge/formulas.hpp"
#include "frame/rows.hpp"

namespace kro {
namespace {

// Colour differences S - G of four rows of a strip of columns, a lane for each red or blue site. Small enough for the
// first-level cache; wider frames are walked in several strips.
constexpr int32_t stripColumns = 8192;

class DifferenceRows {
public:
    DifferenceRows() {}  // user-provided: the rows are not cleared

    // Lane of column x (and x + 1): differences of row y at the columns where that row has its colour.
    KRO_INLINE int16_t* at(int32_t y, int32_t x) { return rows_[y & 3] + margin + ((x - origin_) >> 1); }
    KRO_INLINE const int16_t* at(int32_t y, int32_t x) const { return rows_[y & 3] + margin + ((x - origin_) >> 1); }
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

// The two passes over one row of a strip. Greens do not depend on the output.
template <class V>
struct EdgeGreen {
    static void row(bool colourOdd, const uint8_t* const (&rows)[5], Columns columns, int32_t width, int16_t* out) {
        (colourOdd ? make<true> : make<false>)(rows[0], rows[1], rows[2], rows[3], rows[4], columns, width, out);
    }

private:
    template <bool colourOdd>
    static KRO_OUTLINE void make(const uint8_t* above2, const uint8_t* above, const uint8_t* here,
                                 const uint8_t* below, const uint8_t* below2, Columns columns, int32_t width,
                                 int16_t* out) {
        eachBlock<V, 2>(columns, width, [=](auto block) KRO_INLINE_LAMBDA {
            using W = typename decltype(block)::Vector;
            W::storeLanes(out + block.x / 2, greenDifference<colourOdd>(block, above2, above, here, below, below2));
        });
    }
};

template <class V, Output kind>
struct EdgeColour {
    static constexpr bool ordered = kind == Output::bgr || kind == Output::bgra;

    static void row(const Target& target, Phase phase, int32_t y, int32_t width, Columns columns, bool zeroAlpha,
                    const uint8_t* here, const int16_t* above, const int16_t* same, const int16_t* below) {
        const bool ownFirst = ordered && ownComesFirst(target, phase);
        const auto make = phase.greenFirst ? (ownFirst ? put<true, ordered> : put<true, false>)
                                           : (ownFirst ? put<false, ordered> : put<false, false>);
        make(target, phase, y, width, columns, zeroAlpha, here, above, same, below);
    }

private:
    template <bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void put(const Target& target, Phase phase, int32_t y, int32_t width, Columns columns,
                                bool zeroAlpha, const uint8_t* here, const int16_t* above, const int16_t* same,
                                const int16_t* below) {
        RowTarget out = rowTarget<kind>(target, phase, y, width);
        out.zeroAlpha = zeroAlpha ? alphaColumns(width) : Columns{0, 0};
        eachBlock<V, 1>(columns, width, [=](auto block) KRO_INLINE_LAMBDA {
            kro::put<kind, ownFirst>(out, block, edgePixels<colourOdd>(block, here, above, same, below));
        });
    }
};

// One strip of a frame (or of a band of rows): greens run ahead of colours. `Source` gives row pointers, mirrored at the
// top and bottom.
template <class V, Output kind, class Source>
struct EdgeStrip {
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
    void green(int32_t y) {
        const bool colourOdd = phaseOfRow(phase, y).greenFirst;
        EdgeGreen<V>::row(colourOdd, {source[y - 2], source[y - 1], source[y], source[y + 1], source[y + 2]},
                          greenColumns(), width, differences.at(y, 0));
        differences.mirrorSides(y, greenColumns(), colourOdd, width);
    }
    void colour(int32_t y) {
        EdgeColour<V, kind>::row(target, phaseOfRow(phase, y), y, width, columns,
                                 y >= zeroAlphaRows.begin && y < zeroAlphaRows.end, source[y],
                                 differences.at(mirrored(y - 1, height), 0), differences.at(y, 0),
                                 differences.at(mirrored(y + 1, height), 0));
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

// Rows handed over one by one: a band whose last row is the mosaic's last where the band has 4 or 5 rows.
struct Band {
    const uint8_t* const* rows;
    int32_t height;

    KRO_INLINE const uint8_t* operator[](int32_t y) const { return rows[mirrored(y, height)]; }
};
constexpr int32_t stepBand = 6;

// The row-pair step (band of 6 rows, completes rows 1 and 2) and the bottom kernels (bands of 4 and 5, complete all rows
// from 1 on). `greenRow` holds the greens of row 0 at even columns and of row 1 at odd columns; the step leaves those of
// rows 2 and 3 in it. `target` addresses row 2 of the band.
template <class V, Output kind>
struct EdgeBand {
    using Strip = EdgeStrip<V, kind, Band>;
    static constexpr bool hasGreenBytes = kind == Output::bgr || kind == Output::bgra;

    static int32_t run(const uint8_t* const* rows, int32_t height, int32_t width, Target target, uint8_t* greenRow) {
        const bool step = height == stepBand;
        const Band source{rows, height};
        uint8_t* const row3 = target.plane[0] + static_cast<ptrdiff_t>(width) * pixelBytes(kind);
        for (uint8_t*& plane : target.plane) {
            plane -= plane == nullptr ? 0 : 2 * static_cast<ptrdiff_t>(width) * pixelBytes(kind);
        }
        uint8_t carried[2] = {0, 0};  // greens left of the strip, overwritten by the strip before
        for (int32_t x = 0; x < width;) {
            const int32_t end = Edge<V, kind>::stripEnd(x, width);
            Strip strip{source, height, width, phaseRG, target, {x, end}, {1, step ? 3 : 0}, {}};
            strip.differences.startAt(x);
            fromGreenRow(strip, greenRow, carried);
            const uint8_t last[2] = {greenRow[end - 2], greenRow[end - 1]};
            strip.green(2);
            strip.green(3);
            strip.colour(1);
            strip.colour(2);
            carried[0] = last[0];
            carried[1] = last[1];
            if (step) {
                toGreenRow(strip, greenRow);
            } else {
                bottomRows(strip);
            }
            x = end;
        }
        if (step && hasGreenBytes) {
            putGreenBytes(rows[3], greenRow, width, row3);
        }
        return 0;
    }

private:
    static void bottomRows(Strip& strip) {
        if (strip.height == 5) {
            strip.green(4);
        }
        for (int32_t y = 3; y < strip.height; ++y) {
            strip.colour(y);
        }
    }
    static void fromGreenRow(Strip& strip, const uint8_t* greenRow, const uint8_t (&carried)[2]) {
        const Columns made = strip.greenColumns();
        for (int32_t x = made.begin; x < made.end; ++x) {
            const int32_t y = x & 1;
            const int32_t green = x < strip.columns.begin ? carried[y] : greenRow[x];
            *strip.differences.at(y, x) = static_cast<int16_t>(strip.source[y][x] - green);
        }
        strip.differences.mirrorSides(0, made, false, strip.width);
        strip.differences.mirrorSides(1, made, true, strip.width);
    }
    static void toGreenRow(const Strip& strip, uint8_t* greenRow) {
        for (int32_t x = strip.columns.begin; x < strip.columns.end; ++x) {
            const int32_t y = 2 + (x & 1);
            greenRow[x] = static_cast<uint8_t>(strip.source[y][x] - *strip.differences.at(y, x));
        }
    }
    // Greens of row 3 stand in the output already where the step does not work in blocks of 16: in columns 0 and 1 and
    // from the first column after the blocks.
    static void putGreenBytes(const uint8_t* samples, const uint8_t* greenRow, int32_t width, uint8_t* row) {
        const int32_t afterBlocks = width < 20 ? 2 : 18 + ((width - 20) & ~15);
        for (int32_t x = 0; x < width; x = x == 1 ? afterBlocks : x + 1) {
            row[static_cast<ptrdiff_t>(x) * pixelBytes(kind) + 1] = x % 2 != 0 ? greenRow[x] : samples[x];
        }
    }
};

// Exported routines.
template <class V>
struct EdgeKernels {
    template <Output kind>
    static int32_t frame(const uint8_t* source, int32_t height, int32_t width, Phase phase, const Target& target) {
        Edge<V, kind>::frame({plainSource(source), height, width, phase, target});
        return 0;
    }
    static Target ordered(uint8_t* destination, uint32_t swap) { return interleavedTarget(destination, swap != 0); }

#define KRO_FRAMES(first, phase)                                                                                  \
    static int32_t first##ToBgr8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination, \
                                      uint32_t swap) {                                                            \
        return frame<Output::bgr>(source, height, width, phase, ordered(destination, swap));                      \
    }                                                                                                             \
    static int32_t first##ToBgra8_edge(const uint8_t* source, int32_t height, int32_t width,                      \
                                       uint8_t* destination, uint32_t swap) {                                     \
        return frame<Output::bgra>(source, height, width, phase, ordered(destination, swap));                     \
    }                                                                                                             \
    static int32_t first##ToBgr8P_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* red,        \
                                       uint8_t* green, uint8_t* blue, uint8_t*) {                                 \
        return frame<Output::planar>(source, height, width, phase, planarTarget(red, green, blue));               \
    }                                                                                                             \
    static int32_t first##ToMono8_edge(const uint8_t* source, int32_t height, int32_t width,                      \
                                       uint8_t* destination, uint32_t swap, uint8_t*) {                           \
        return frame<Output::mono>(source, height, width, phase, lumaTarget(destination, swap != 0));             \
    }
    KRO_FRAMES(rg8, phaseRG)
    KRO_FRAMES(gb8, phaseGB)
#undef KRO_FRAMES

#define KRO_BANDS(name, height)                                                                                   \
    static int32_t rg8ToBgr8_edge_##name(const uint8_t* const* band, int32_t width, uint8_t* output,              \
                                         uint8_t* greenRow, uint32_t swap) {                                      \
        return EdgeBand<V, Output::bgr>::run(band, height, width, ordered(output, swap), greenRow);               \
    }                                                                                                             \
    static int32_t rg8ToBgra8_edge_##name(const uint8_t* const* band, int32_t width, uint8_t* output,             \
                                          uint8_t* greenRow, uint32_t swap) {                                     \
        return EdgeBand<V, Output::bgra>::run(band, height, width, ordered(output, swap), greenRow);              \
    }                                                                                                             \
    static int32_t rg8ToBgr8P_edge_##name(const uint8_t* const* band, int32_t width, uint8_t* red,                \
                                          uint8_t* green, uint8_t* blue, uint8_t* greenRow) {                     \
        return EdgeBand<V, Output::planar>::run(band, height, width, planarTarget(red, green, blue), greenRow);   \
    }                                                                                                             \
    static int32_t rg8ToMono8_edge_##name(const uint8_t* const* band, int32_t width, uint8_t* output,             \
                                          uint8_t* greenRow, uint32_t swap) {                                     \
        return EdgeBand<V, Output::mono>::run(band, height, width, lumaTarget(output, swap != 0), greenRow);      \
    }
    KRO_BANDS(body, stepBand)
    KRO_BANDS(last2Rows, 4)
    KRO_BANDS(last3Rows, 5)
#undef KRO_BANDS
};

}  // namespace
}  // namespace kro
