// Runs a family's row text over a rectangle of the frame: the one loop behind whole frames and region routines.
#pragma once

#include "block/rowstore.hpp"
#include "frame/rows.hpp"

namespace kro {
namespace {

struct RowSpan {
    int32_t begin, end;
};

// Two rows a step share their loads; 32-bit x86 has too few registers to profit.
#if defined(__x86_64__)
constexpr bool rowsInPairs = true;
#else
constexpr bool rowsInPairs = false;
#endif

// What a row is computed from.
struct RowInput {
    const uint8_t *above, *here, *below;
    bool top;  // the frame's first row
};

template <class V, Output kind, class Family>
struct Rectangle {
    static constexpr bool ordered = kind == Output::bgr || kind == Output::bgra;

    static void run(const FrameJob& job, RowSpan rows, Columns columns) {
        Rows<V> source(job);
        int32_t y = rows.begin;
        while (y < rows.end) {
            const Phase phase = phaseOfRow(job.phase, y);
            source.need(y + 2);
            if (Family::pairs && rowsInPairs && phase.greenFirst && y + 1 < rows.end) {
                pair(job, source, y, columns);
                y += 2;
            } else {
                row(job.target, phase, y, job.width, columns, {source[y - 1], source[y], source[y + 1], y == 0});
                ++y;
            }
        }
    }
    static void frame(const FrameJob& job) { run(job, {0, job.height}, {0, job.width}); }

    static KRO_INLINE void row(const Target& target, Phase phase, ptrdiff_t y, int32_t width, Columns columns,
                               const RowInput& in) {
        const bool ownFirst = ordered && ownComesFirst(target, phase);
        const auto one = phase.greenFirst ? (ownFirst ? single<true, ordered> : single<true, false>)
                                          : (ownFirst ? single<false, ordered> : single<false, false>);
        one(target, phase, y, width, columns, in.above, in.here, in.below, in.top);
    }

private:
    template <bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void single(const Target& target, Phase phase, ptrdiff_t y, int32_t width, Columns columns,
                                   const uint8_t* above, const uint8_t* here, const uint8_t* below, bool top) {
        const RowTarget out = rowTarget<kind>(target, phase, y, width);
        eachBlock<V, 1>(columns, width, [=](auto block) KRO_INLINE_LAMBDA {
            put<kind, ownFirst>(out, block, Family::template row<colourOdd>(block, above, here, below));
        });
        Family::template exception<kind, colourOdd, ownFirst>(out, {above, here, below, top});
    }

    static KRO_INLINE void pair(const FrameJob& job, const Rows<V>& source, int32_t y, Columns columns) {
        const Phase upper = phaseOfRow(job.phase, y);
        const bool ownFirst = ordered && ownComesFirst(job.target, upper);
        (ownFirst ? both<ordered> : both<false>)(job.target, upper, y, job.width, columns, source[y - 1], source[y],
                                                 source[y + 1], source[y + 2]);
    }

    // Colour at odd columns of the upper row, at even columns of the lower. Every load of a step stands before its
    // first store: bytes may alias, so the compiler could not reuse loads across stores.
    template <bool ownFirst>
    static KRO_OUTLINE void both(const Target& target, Phase phase, ptrdiff_t y, int32_t width, Columns columns,
                                 const uint8_t* above, const uint8_t* here, const uint8_t* next,
                                 const uint8_t* below) {
        const RowTarget upper = rowTarget<kind>(target, phase, y, width);
        const RowTarget lower = rowTarget<kind>(target, phaseOfRow(phase, 1), y + 1, width);
        eachBlock<V, 1>(columns, width, [=](auto block) KRO_INLINE_LAMBDA {
            const auto one = Family::template row<true>(block, above, here, next);
            const auto two = Family::template row<false>(block, here, next, below);
            put<kind, ownFirst>(upper, block, one);
            put<kind, ordered && !ownFirst>(lower, block, two);
        });
    }
};

}  // namespace
}  // namespace kro
