// Runs a family's row formula over a rectangle of the frame: the one loop behind whole frames, bands and region
// routines.
#pragma once

#include "row/source.hpp"
#include "row/store.hpp"

namespace kro {
namespace {

// Two rows a step share their loads; 32-bit x86 has too few registers to profit.
#if defined(__x86_64__) || defined(__aarch64__)
constexpr bool rowsInPairs = true;
#else
constexpr bool rowsInPairs = false;
#endif

// What a row is computed from.
template <class Sample>
struct RowInput {
    const Sample *above, *here, *below;
    bool top;  // the frame's first row
};

// The back end of a sample's width.
template <class S, class Sample>
struct BackEndOf {
    using Type = typename S::Bytes;
};
template <class S>
struct BackEndOf<S, uint16_t> {
    using Type = typename S::Words;
};
template <class S, class Sample>
using BackEnd = typename BackEndOf<S, Sample>::Type;

// A strip of columns of a frame, in coordinates that count from its first column.
struct Strip {
    int32_t first;  // of the frame
    Columns made;   // columns to make
    Columns frame;  // columns that exist

    static constexpr Strip of(Columns columns, int32_t width) {
        return {columns.begin, {0, columns.end - columns.begin}, {-columns.begin, width - columns.begin}};
    }
};

template <class S, class Sample, Output kind, class Family>
class Rectangle {
    using V = BackEnd<S, Sample>;
    static constexpr bool ordered = isInterleaved(kind);

public:
    // Rows and columns of a frame that is read in place, or that has a ring of the frame's width.
    static KRO_OUTLINE void run(const FrameJob& job, RowSpan rows, Columns columns, const Family& family) {
        const Strip strip{0, columns, {0, job.width}};
        Rows<S, Sample> source(job, {0, job.width}, rows.begin, job.source.ring, job.source.ringStride);
        runStrip(job, rows, strip, source, family);
    }
    static void frame(const FrameJob& job, const Family& family) {
        if (readInPlace<Sample>(job.source) || job.source.ring != nullptr) {
            run(job, job.rows, {0, job.width}, family);
        } else {
            runRinged(job, family);
        }
    }

    // One row whose input is at hand.
    static KRO_INLINE void row(const Target& target, Phase phase, int32_t y, const Strip& strip,
                               const RowInput<Sample>& in, const Family& family) {
        const bool ownFirst = ordered && ownComesFirst(target, phase);
        const auto one = phase.greenFirst ? (ownFirst ? single<true, ordered> : single<true, false>)
                                          : (ownFirst ? single<false, ordered> : single<false, false>);
        one(target, phase, y, strip, in.above, in.here, in.below, in.top, family);
    }

private:
    static KRO_OUTLINE void runRinged(const FrameJob& job, const Family& family) {
        Ring<Sample, ringColumns<Sample>> ring;
        constexpr int32_t most = ringColumns<Sample>;
        for (int32_t x = 0; x < job.width;) {
            const int32_t end = stripEnd(x, job.width, most);
            Rows<S, Sample> source(job, {x, end}, job.rows.begin, ring.rows, sizeof ring.rows[0]);
            runStrip(job, job.rows, Strip::of({x, end}, job.width), source, family);
            x = end;
        }
    }
    static KRO_INLINE void runStrip(const FrameJob& job, RowSpan rows, const Strip& strip, Rows<S, Sample>& source,
                                    const Family& family) {
        int32_t y = rows.begin;
        while (y < rows.end) {
            const Phase phase = phaseOfRow(job.phase, y);
            source.prepare(y + 2);
            if (Family::pairs && rowsInPairs && phase.greenFirst && y + 1 < rows.end) {
                pair(job, source, y, strip, family);
                y += 2;
            } else {
                row(job.target, phase, y, strip, {source[y - 1], source[y], source[y + 1], y == 0}, family);
                ++y;
            }
        }
    }

    template <bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void single(const Target& target, Phase phase, int32_t y, const Strip& strip,
                                   const Sample* above, const Sample* here, const Sample* below, bool top,
                                   const Family& family) {
        const auto out = rowTarget<kind, Sample>(target, phase, y, strip.first);
        const Family f = family;
        eachBlock<V, 1>(strip.made, strip.frame, f.inner(strip.frame), [=](auto block) KRO_INLINE_LAMBDA {
            put<kind, ownFirst>(out, block, f.template row<colourOdd>(block, above, here, below));
        });
        if (strip.first == 0) {
            Family::template mend<kind, colourOdd, ownFirst>(out, RowInput<Sample>{above, here, below, top});
        }
        finishRow<kind, V>(out, strip.made);
    }

    static KRO_INLINE void pair(const FrameJob& job, const Rows<S, Sample>& source, int32_t y, const Strip& strip,
                                const Family& family) {
        const Phase upper = phaseOfRow(job.phase, y);
        const bool ownFirst = ordered && ownComesFirst(job.target, upper);
        (ownFirst ? both<ordered> : both<false>)(job.target, upper, y, strip, source[y - 1], source[y], source[y + 1],
                                                 source[y + 2], family);
    }

    // Colour at odd columns of the upper row, at even columns of the lower. Every load of a step stands before its
    // first store: samples may alias, so the compiler could not reuse loads across stores.
    template <bool ownFirst>
    static KRO_OUTLINE void both(const Target& target, Phase phase, int32_t y, const Strip& strip,
                                 const Sample* above, const Sample* here, const Sample* next, const Sample* below,
                                 const Family& family) {
        const auto upper = rowTarget<kind, Sample>(target, phase, y, strip.first);
        auto lower = rowTarget<kind, Sample>(target, phaseOfRow(phase, 1), y + 1, strip.first);
        lower.ownWeight = upper.otherWeight;  // the compiler would not see that they are the same, and hold both
        lower.otherWeight = upper.ownWeight;
        const Family f = family;
        eachBlock<V, 1>(strip.made, strip.frame, f.inner(strip.frame), [=](auto block) KRO_INLINE_LAMBDA {
            const auto one = f.template row<true>(block, above, here, next);
            const auto two = f.template row<false>(block, here, next, below);
            put<kind, ownFirst>(upper, block, one);
            put<kind, ordered && !ownFirst>(lower, block, two);
        });
        finishRow<kind, V>(upper, strip.made);
        finishRow<kind, V>(lower, strip.made);
    }
};

}  // namespace
}  // namespace kro
