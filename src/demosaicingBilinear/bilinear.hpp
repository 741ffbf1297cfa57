// Bilinear: every missing colour is the truncated mean of the two or four nearest samples of that colour.
#pragma once

#include "frame/rectangle.hpp"

namespace kro {
namespace {

// What bounds it, colour output, one step of two rows (vector instructions of the compiled loop, 64 bits):
//   VBMI      70 for 2 x 64 pixels: 15 loads, 15 shifts, 6 permutes, 6 stores; the two 512-bit pipes are full (24 cycles),
//             the memory's write rate just below them from the second-level cache on
//   AVX-512BW 86: 18 shuffles, since bytes do not cross lanes; the one shuffle port
//   AVX2      97 for 2 x 32 pixels: 15 shifts and 22 shuffles and blends against three pipes
//   SSSE3    133 for 2 x 16 pixels: 18 byte shuffles of the interleave, 29 register moves of two-operand code
// Grey output: 73 (AVX-512), of which 12 multiplications and 19 shifts go to one port.
struct BilinearFamily {
    static constexpr bool pairs = true;

    // Sums of four bytes are at most 1020, so 16-bit lanes are exact.
    template <bool colourOdd, class B>
    static KRO_INLINE auto row(B block, const uint8_t* above, const uint8_t* here, const uint8_t* below) {
        using V = typename B::Vector;
        // Columns c - 1 and c + 1 of a site at column c, c being x + 2 k + offset in lane k.
        const auto cross = V::add(vertical<colourOdd>(block, above, below), horizontal<colourOdd>(block, here));
        const auto diagonal = V::add(vertical<colourOdd ? 0 : -1>(block, above, below),
                                     vertical<colourOdd ? 2 : 1>(block, above, below));
        constexpr int greenSite = colourOdd ? 0 : 1;
        const Own<V> own{block.template tap<0>(here)};
        return makePixels(
            sites<colourOdd>(own, Mean<V, 1>{horizontal<greenSite>(block, here)}),
            sites<colourOdd>(Mean<V, 2>{cross}, own),
            sites<colourOdd>(Mean<V, 2>{diagonal}, Mean<V, 1>{vertical<greenSite>(block, above, below)}));
    }

    template <Output, bool, bool>
    static KRO_INLINE void exception(const RowTarget&, const RowInput&) {}

private:
    // Samples of columns x + offset, x + offset + 2, ...: two loads, at x - 1 and x + 1, hold all four of them.
    template <int offset, class B>
    static KRO_INLINE auto column(B block, const uint8_t* row) {
        using V = typename B::Vector;
        if constexpr (offset % 2 == 0) {
            return V::high(block.template tap<offset - 1>(row));
        } else {
            return V::low(block.template tap<offset>(row));
        }
    }
    template <int offset, class B>
    static KRO_INLINE auto vertical(B block, const uint8_t* above, const uint8_t* below) {
        return B::Vector::add(column<offset>(block, above), column<offset>(block, below));
    }
    template <int offset, class B>
    static KRO_INLINE auto horizontal(B block, const uint8_t* row) {
        return B::Vector::add(column<offset - 1>(block, row), column<offset + 1>(block, row));
    }
};

template <class V, Output kind>
struct Bilinear : Rectangle<V, kind, BilinearFamily> {
    using Rect = Rectangle<V, kind, BilinearFamily>;

    static void frame(const FrameJob& job) {
        Rect::frame(job);
        if (job.phase.greenFirst && job.width % 2 != 0) {
            markedValues(job);
        }
    }
    // Rows 0 and 1 of a mosaic that starts with green.
    static void firstTwoRows(const FrameJob& job) {
        Rect::run(job, {0, 2}, {0, job.width});
        if (job.width % 2 != 0) {
            markedValues(job);
        }
    }

    // The exception: where a frame of odd width starts with green, three values at the right end of rows 0 and 1 are
    // taken from samples at the left: green of (0, W-2) from (0, 0) instead of (0, W-3), and the colour that row 0 holds
    // at (1, W-2) and (1, W-1) from (2, 1) instead of (2, W-2). The five columns at the right end are computed again
    // from copies with these samples put in; no other value of the three pixels depends on them.
    static void markedValues(const FrameJob& job) {
        constexpr int32_t n = 5;
        Rows<V> source(job);
        source.need(2);
        uint8_t copy[3][n];
        for (int32_t y = 0; y < 3; ++y) {
            for (int32_t x = 0; x < n; ++x) {
                copy[y][x] = source[y][job.width - n + x];
            }
        }
        copy[0][n - 3] = source[0][0];
        putMarked(job, 0, {n - 2, n - 1}, copy);
        copy[0][n - 3] = source[0][job.width - 3];
        copy[2][n - 2] = source[2][1];
        putMarked(job, 1, {n - 2, n}, copy);
    }

private:
    static void putMarked(const FrameJob& job, int32_t y, Columns columns, const uint8_t (&copy)[3][5]) {
        Target target = job.target;
        const ptrdiff_t skipped = (static_cast<ptrdiff_t>(y) * job.width + job.width - 5) * pixelBytes(kind);
        for (uint8_t*& plane : target.plane) {
            plane = plane == nullptr ? nullptr : plane + skipped;
        }
        const int32_t above = y == 0 ? 1 : 0;
        Rectangle<V, kind, BilinearFamily>::row(target, phaseOfRow(job.phase, y), 0, 5, columns,
                                                {copy[above], copy[y], copy[y + 1], y == 0});
    }
};

// Exported routines. The region routines speak of the RG view; red and blue are exchanged by the order of the output.
template <class V>
struct BilinearKernels {
    static FrameJob job(const uint8_t* source, int32_t height, int32_t width, Phase phase, const Target& target) {
        return {plainSource(source), height, width, phase, target};
    }
    template <Output kind>
    static int32_t frame(const uint8_t* source, int32_t height, int32_t width, Phase phase, const Target& target) {
        Bilinear<V, kind>::frame(job(source, height, width, phase, target));
        return 0;
    }
    template <Output kind>
    static KroCoverage body(const uint8_t* source, int32_t height, int32_t width, const Target& target) {
        const KroCoverage border{firstBorder(height), firstBorder(width)};
        if (height >= 4) {
            Bilinear<V, kind>::run(job(source, height, width, phaseRG, target), {1, border.first},
                                   {1, border.second});
            return border;
        }
        return {border.first, 0};
    }
    template <Output kind>
    static void firstCols(const uint8_t* source, int32_t height, int32_t width, const Target& target) {
        Bilinear<V, kind>::run(job(source, height, width, phaseRG, target), {1, height}, {0, 1});
    }
    // The start row is a B row, wherever it lies: frames that start with green pass their full height.
    template <Output kind>
    static void lastRows(const uint8_t* source, int32_t height, int32_t width, int32_t start, const Target& target) {
        if (height - start == 1 || height - start == 2) {
            const Phase phase = start % 2 != 0 ? phaseRG : phaseGB;
            Bilinear<V, kind>::run(job(source, height, width, phase, target), {start, height},
                                   {1, 1 + 2 * borderPairs(width)});
        }
    }
    template <Output kind>
    static void lastCols(const uint8_t* source, int32_t height, int32_t width, int32_t start, const Target& target) {
        if (width - start == 1 || width - start == 2) {
            Bilinear<V, kind>::run(job(source, height, width, phaseRG, target), {1, height}, {start, width});
        }
    }
    static constexpr int32_t anyHeight = 4;  // the first rows end where no bottom border is in sight
    template <Output kind>
    static void firstRow(const uint8_t* source, int32_t width, const Target& target) {
        Bilinear<V, kind>::run(job(source, anyHeight, width, phaseRG, target), {0, 1}, {0, width});
    }
    template <Output kind>
    static void firstTwoRows(const uint8_t* source, int32_t width, const Target& target) {
        Bilinear<V, kind>::firstTwoRows(job(source, anyHeight, width, phaseGB, target));
    }
    // Only the value 1 exchanges; 0 and all others mean blue, green, red.
    static Target ordered(uint8_t* destination, uint32_t swapRB) {
        return interleavedTarget(destination, swapRB == 1);
    }
    static Target grey(uint8_t* destination, const uint32_t* w) {
        return greyTarget(destination, {w[0], w[1], w[2]});
    }

#define KRO_ENTRY(name, kind, phase)                                                                              \
    static int32_t name(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination) {             \
        return frame<Output::kind>(source, height, width, phase, interleavedTarget(destination, false));          \
    }
    KRO_ENTRY(rg8ToBgr8_bilinear, bgr, phaseRG)
    KRO_ENTRY(gr8ToBgr8_bilinear, bgr, phaseGR)
    KRO_ENTRY(gb8ToBgr8_bilinear, bgr, phaseGB)
    KRO_ENTRY(bg8ToBgr8_bilinear, bgr, phaseBG)
    KRO_ENTRY(rg8ToBgra8_bilinear, bgra, phaseRG)
    KRO_ENTRY(gr8ToBgra8_bilinear, bgra, phaseGR)
    KRO_ENTRY(gb8ToBgra8_bilinear, bgra, phaseGB)
    KRO_ENTRY(bg8ToBgra8_bilinear, bgra, phaseBG)
#undef KRO_ENTRY
    static int32_t rg8ToBgr8P_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* first,
                                       uint8_t* second, uint8_t* third) {
        return frame<Output::planar>(source, height, width, phaseRG, planarTarget(first, second, third));
    }
    // The first plane receives the colour that row 0 holds: the planes are ordered for a GR mosaic.
    static int32_t gr8ToBgr8P_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* first,
                                       uint8_t* second, uint8_t* third) {
        return frame<Output::planar>(source, height, width, phaseGR, planarTarget(first, second, third));
    }
    static int32_t rg8ToMono8_bilinear(const uint8_t* source, int32_t height, int32_t width, const uint32_t* weights,
                                       uint8_t* destination) {
        return frame<Output::mono>(source, height, width, phaseRG, grey(destination, weights));
    }
    static int32_t gr8ToMono8_bilinear(const uint8_t* source, int32_t height, int32_t width, const uint32_t* weights,
                                       uint8_t* destination) {
        return frame<Output::mono>(source, height, width, phaseGR, grey(destination, weights));
    }

    static KroCoverage rg8ToBgr8_bilinear_body(const uint8_t* source, uint8_t* destination, int32_t height,
                                               int32_t width, uint32_t swapRB) {
        return body<Output::bgr>(source, height, width, ordered(destination, swapRB));
    }
    static KroCoverage rg8ToBgra8_bilinear_body(const uint8_t* source, uint8_t* destination, int32_t height,
                                                int32_t width, uint32_t swapRB) {
        return body<Output::bgra>(source, height, width, ordered(destination, swapRB));
    }
    static KroCoverage rg8ToBgr8P_bilinear_body(const uint8_t* source, uint8_t* red, uint8_t* green, uint8_t* blue,
                                                int32_t height, int32_t width) {
        return body<Output::planar>(source, height, width, planarTarget(red, green, blue));
    }
    static KroCoverage rg8ToMono8_bilinear_body(const uint8_t* source, uint8_t* destination, int32_t height,
                                                int32_t width, const uint32_t* weights) {
        return body<Output::mono>(source, height, width, grey(destination, weights));
    }

    static void rg8ToBgr8_bilinear_firstRows(const uint8_t* source, uint8_t* destination, int32_t width,
                                             uint32_t swapRB) {
        firstRow<Output::bgr>(source, width, ordered(destination, swapRB));
    }
    static void rg8ToBgra8_bilinear_firstRows(const uint8_t* source, uint8_t* destination, int32_t width,
                                              uint32_t swapRB) {
        firstRow<Output::bgra>(source, width, ordered(destination, swapRB));
    }
    static void gr8ToBgr8_bilinear_firstRows(const uint8_t* source, uint8_t* destination, int32_t width,
                                             uint32_t swapRB) {
        firstTwoRows<Output::bgr>(source, width, ordered(destination, swapRB));
    }
    static void gr8ToBgra8_bilinear_firstRows(const uint8_t* source, uint8_t* destination, int32_t width,
                                              uint32_t swapRB) {
        firstTwoRows<Output::bgra>(source, width, ordered(destination, swapRB));
    }

    static void rg8ToBgr8_bilinear_firstCols(const uint8_t* source, uint8_t* destination, int32_t height,
                                             int32_t width, uint32_t swapRB) {
        firstCols<Output::bgr>(source, height, width, ordered(destination, swapRB));
    }
    static void rg8ToBgra8_bilinear_firstCols(const uint8_t* source, uint8_t* destination, int32_t height,
                                              int32_t width, uint32_t swapRB) {
        firstCols<Output::bgra>(source, height, width, ordered(destination, swapRB));
    }
    static void rg8ToBgr8P_bilinear_firstCols(const uint8_t* source, uint8_t* red, uint8_t* green, uint8_t* blue,
                                              int32_t height, int32_t width) {
        firstCols<Output::planar>(source, height, width, planarTarget(red, green, blue));
    }
    static void rg8ToMono8_bilinear_firstCols(const uint8_t* source, uint8_t* destination, int32_t height,
                                              int32_t width, const uint32_t* weights) {
        firstCols<Output::mono>(source, height, width, grey(destination, weights));
    }

#define KRO_LAST(side)                                                                                            \
    static void rg8ToBgr8_bilinear_##side(const uint8_t* source, uint8_t* destination, int32_t height,            \
                                          int32_t width, int32_t start, uint32_t swapRB) {                        \
        side<Output::bgr>(source, height, width, start, ordered(destination, swapRB));                            \
    }                                                                                                             \
    static void rg8ToBgra8_bilinear_##side(const uint8_t* source, uint8_t* destination, int32_t height,           \
                                           int32_t width, int32_t start, uint32_t swapRB) {                       \
        side<Output::bgra>(source, height, width, start, ordered(destination, swapRB));                           \
    }                                                                                                             \
    static void rg8ToBgr8P_bilinear_##side(const uint8_t* source, uint8_t* red, uint8_t* green, uint8_t* blue,    \
                                           int32_t height, int32_t width, int32_t start) {                        \
        side<Output::planar>(source, height, width, start, planarTarget(red, green, blue));                       \
    }                                                                                                             \
    static void rg8ToMono8_bilinear_##side(const uint8_t* source, uint8_t* destination, int32_t height,           \
                                           int32_t width, int32_t start, const uint32_t* weights) {               \
        side<Output::mono>(source, height, width, start, grey(destination, weights));                             \
    }
    KRO_LAST(lastRows)
    KRO_LAST(lastCols)
#undef KRO_LAST
};

}  // namespace
}  // namespace kro
