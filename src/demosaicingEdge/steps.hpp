// The exported row-pair step and bottom kernels of 8 bits, on rows handed over one by one.
#pragma once

#include "demosaicingEdge/edge.hpp"

namespace kro {
namespace {

// A band whose last row is the mosaic's last where it has 4 or 5 rows.
struct Band {
    const uint8_t* const* rows;
    int32_t height;
    int32_t first;  // column of the strip in hand

    KRO_INLINE const uint8_t* operator[](int32_t y) const { return rows[mirrored(y, height)] + first; }
    KRO_INLINE void prepare(int32_t) const {}
};
constexpr int32_t stepBand = 6;

// The row-pair step (band of 6 rows, completes rows 1 and 2) and the bottom kernels (bands of 4 and 5, complete all
// rows from 1 on). `greenRow` holds the greens of row 0 at even columns and of row 1 at odd columns; the step leaves
// those of rows 2 and 3 in it. `target` addresses row 2 of the band.
template <class S, Output kind>
class EdgeBand {
    static constexpr int32_t most = stripColumns<uint8_t, int16_t>;
    using BandStrip = ByteStrip<S, kind, const Band, most>;

public:
    static int32_t run(const uint8_t* const* rows, int32_t height, int32_t width, Target target, uint8_t* greenRow) {
        const bool step = height == stepBand;
        target.firstRow = 2;
        const EdgeFrame frame{height, width, phaseRG, target, 0, 0, {1, step ? 3 : 0}};
        uint8_t carried[2] = {0, 0};  // greens left of the strip, overwritten by the strip before
        for (int32_t x = 0; x < width; x = stripEnd(x, width, most)) {
            const Columns columns{x, stripEnd(x, width, most)};
            const uint8_t last[2] = {greenRow[columns.end - 2], greenRow[columns.end - 1]};
            strip(frame, {rows, height, x}, columns, greenRow, carried);
            carried[0] = last[0];
            carried[1] = last[1];
        }
        if (step && kind != Output::mono) {
            putGreenSamples(rows[3], greenRow, width, rowTarget<kind, uint8_t>(target, phaseOfRow(phaseRG, 3), 3, 0));
        }
        return 0;
    }

private:
    static KRO_OUTLINE void strip(const EdgeFrame& frame, const Band& source, Columns columns, uint8_t* greenRow,
                                  const uint8_t (&carried)[2]) {
        BandStrip strip(frame, source, Strip::of(columns, frame.width));
        fromGreenRow(strip, source, columns, greenRow, carried);
        const bool step = frame.height == stepBand;
        strip.make({1, step ? 3 : frame.height}, 2, step ? 3 : frame.height - 1);
        if (step) {
            toGreenRow(strip, source, columns, greenRow);
        }
    }
    static void fromGreenRow(BandStrip& strip, const Band& source, Columns columns, const uint8_t* greenRow,
                             const uint8_t (&carried)[2]) {
        const Columns made = strip.greenColumns();
        for (int32_t x = made.begin; x < made.end; ++x) {
            const int32_t y = x & 1;
            const int32_t green = x < 0 ? carried[y] : greenRow[columns.begin + x];
            strip.differences(y)[x >> 1] = static_cast<int16_t>(source[y][x] - green);
        }
        strip.mirrorSides(0);
        strip.mirrorSides(1);
    }
    static void toGreenRow(BandStrip& strip, const Band& source, Columns columns, uint8_t* greenRow) {
        for (int32_t x = 0; x < columns.end - columns.begin; ++x) {
            const int32_t y = 2 + (x & 1);
            greenRow[columns.begin + x] = static_cast<uint8_t>(source[y][x] - strip.differences(y)[x >> 1]);
        }
    }
    // Greens of row 3 stand in the output already where the step does not work in blocks of 16: in columns 0 and 1
    // and from the first column after the blocks. Grey output has no place for them.
    static void putGreenSamples(const uint8_t* samples, const uint8_t* greenRow, int32_t width,
                                const RowTarget<uint8_t>& row) {
        uint8_t* const greens = kind == Output::planar ? row.green : row.own + 1;
        const int32_t afterBlocks = width < 20 ? 2 : 18 + ((width - 20) & ~15);
        for (int32_t x = 0; x < width; x = x == 1 ? afterBlocks : x + 1) {
            greens[static_cast<ptrdiff_t>(x) * channelsIn(kind)] = x % 2 != 0 ? greenRow[x] : samples[x];
        }
    }
};

}  // namespace
}  // namespace kro
