// Bilinear: every missing colour is the truncated mean of the two or four nearest samples of that colour.
#pragma once

#include <type_traits>

#include "demosaicingBilinear/means.hpp"
#include "row/narrow.hpp"

namespace kro {
namespace {

// `Means` says how sums are formed. What bounds it on Zen 5, colour output: all operations alike, 90 for two rows of
// 32 columns in 22 cycles (AVX2), loads across lines of the cache (AVX-512); on Intel's server cores their two
// 512-bit pipes and, from the second-level cache on, the memory's write rate; shuffles (SSSE3). Grey output:
// operations (AVX2, on Zen 5 3.8 of 4 a cycle), loads across lines of the cache (AVX-512). Words: the six bytes a
// pixel written.
template <template <class> class Means>
struct BilinearFamily {
    static constexpr bool pairs = true;
    static KRO_INLINE Columns inner(Columns frame) { return innerColumns<1>(frame); }

    template <bool colourOdd, class B, class Sample>
    KRO_INLINE auto row(B block, const Sample* above, const Sample* here, const Sample* below) const {
        using V = typename B::Vector;
        using M = Means<V>;
        expectBelow<V>(block.x, above, below);
        const auto cross =
            M::four(vertical<M, colourOdd, 0>(block, above, below), horizontal<M, colourOdd>(block, here));
        const auto diagonal =
            M::four(vertical<M, colourOdd, -1>(block, above, below), vertical<M, colourOdd, 1>(block, above, below));
        return makePixels(
            sites<colourOdd>(M::template own<colourOdd>(block, here), M::two(horizontal<M, !colourOdd>(block, here))),
            sites<colourOdd>(cross, M::template own<!colourOdd>(block, here)),
            sites<colourOdd>(diagonal, M::two(vertical<M, !colourOdd, 0>(block, above, below))));
    }

    template <Output, bool, bool, class Sample>
    static KRO_INLINE void mend(const RowTarget<Sample>&, const RowInput<Sample>&) {}

private:
    // Of bytes, two loads, at x - 1 and x + 1, hold all that a row contributes.
    template <class M, bool odd, int k, class B, class Sample>
    static KRO_INLINE auto vertical(B block, const Sample* above, const Sample* below) {
        return M::pair(M::template at<odd, k>(block, above), M::template at<odd, k>(block, below));
    }
    template <class M, bool odd, class B, class Sample>
    static KRO_INLINE auto horizontal(B block, const Sample* row) {
        return M::pair(M::template at<odd, -1>(block, row), M::template at<odd, 1>(block, row));
    }
};

// 8 bits.
template <class S, Output kind>
struct Bilinear : Rectangle<S, uint8_t, kind, BilinearFamily<LaneMeans>> {
    using Rect = Rectangle<S, uint8_t, kind, BilinearFamily<LaneMeans>>;
    // Grey by weights that bytes can be weighed with where they are: 58 vector operations for two rows of a block
    // where it takes 70 otherwise, and seven constants, which AVX2 has registers for.
    using Grey = std::conditional_t<kind == Output::mono && S::Bytes::weighsBytes,
                                    Rectangle<S, uint8_t, kind, BilinearFamily<HighMeans>>, Rect>;
    static KRO_INLINE bool isGrey(const Target& target) {
        return !std::is_same_v<Grey, Rect> && weighsInHighHalves(target);
    }

    static void frame(const FrameJob& job) {
        if (madeByNarrowerSet<S, uint8_t>(KRO_BILINEAR, kind, job)) {
            return;
        }
        if (isGrey(job.target)) {
            Grey::frame(job, {});
        } else {
            Rect::frame(job, {});
        }
        if (job.phase.greenFirst && job.width % 2 != 0) {
            markedValues(job);
        }
    }
    static void run(const FrameJob& job, RowSpan rows, Columns columns) {
        if (isGrey(job.target)) {
            Grey::run(job, rows, columns, {});
        } else {
            Rect::run(job, rows, columns, {});
        }
    }

    // The exception: where a frame of odd width starts with green, three values at the right end of rows 0 and 1 are
    // taken from samples at the left: green of (0, W-2) from (0, 0) instead of (0, W-3), and the colour that row 0
    // holds at (1, W-2) and (1, W-1) from (2, 1) instead of (2, W-2). The five columns at the right end are computed
    // again from copies with these samples put in; no other value of the three pixels depends on them.
    static void markedValues(const FrameJob& job) {
        constexpr int32_t n = 5;
        uint8_t end[3][n], start[3][2];
        for (int32_t y = 0; y < 3; ++y) {
            readRun<S>(job, y, {job.width - n, job.width}, end[y]);
            readRun<S>(job, y, {0, 2}, start[y]);
        }
        const uint8_t third = end[0][n - 3];
        end[0][n - 3] = start[0][0];
        putMarked(job, 0, {n - 2, n - 1}, end);
        end[0][n - 3] = third;
        end[2][n - 2] = start[2][1];
        putMarked(job, 1, {n - 2, n}, end);
    }

private:
    static void putMarked(const FrameJob& job, int32_t y, Columns columns, const uint8_t (&copy)[3][5]) {
        if (y < job.rows.begin || y >= job.rows.end) {
            return;
        }
        const int32_t above = y == 0 ? 1 : 0;
        Rect::shortRow(job.target, phaseOfRow(job.phase, y), y, {job.width - 5, columns, {0, 5}},
                       {copy[above], copy[y], copy[y + 1], y == 0}, {});
    }
};

}  // namespace
}  // namespace kro
