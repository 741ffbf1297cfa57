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

// The columns of a strip by how they are taken.
struct Stretches {
    Strip blocks, left, right;  // of pairs: to the left and to the right of the blocks

    template <class V>
    static KRO_INLINE Stretches of(const Strip& strip, Columns inner) {
        const Columns wide = blockColumns<V>(strip.made, inner);
        return {{strip.first, wide, strip.frame},
                {strip.first, {strip.made.begin, wide.begin}, strip.frame},
                {strip.first, {wide.end, strip.made.end}, strip.frame}};
    }
    KRO_INLINE bool havePairs() const { return left.made.begin < left.made.end || right.made.begin < right.made.end; }
    // Calls blocksOf(InBlocks, strip) and pairsOf(InPairs, strip) for those that there are.
    template <class BlocksOf, class PairsOf>
    KRO_INLINE void each(const BlocksOf& blocksOf, const PairsOf& pairsOf) const {
        if (blocks.made.begin < blocks.made.end) {
            blocksOf(InBlocks{}, blocks);
        }
        if (left.made.begin < left.made.end) {
            pairsOf(InPairs{}, left);
        }
        if (right.made.begin < right.made.end) {
            pairsOf(InPairs{}, right);
        }
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
    static KRO_INLINE void row(const Target& target, Phase phase, int32_t y, const Stretches& columns,
                               const RowInput<Sample>& in, const Family& family) {
        const auto part = rowOf(target, phase, y, in, family);
        columns.each(part, part);
    }
    static KRO_INLINE Stretches stretchesOf(const Strip& strip, const Family& family) {
        return Stretches::of<V>(strip, family.inner(strip.frame));
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
        const Stretches columns = stretchesOf(strip, family);
        int32_t y = rows.begin;
        while (y < rows.end) {
            const Phase phase = phaseOfRow(job.phase, y);
            source.prepare(y + 2);
            if (Family::pairs && rowsInPairs && phase.greenFirst && y + 1 < rows.end) {
                pair(job, source, y, columns, family);
                y += 2;
            } else {
                row(job.target, phase, y, columns, {source[y - 1], source[y], source[y + 1], y == 0}, family);
                ++y;
            }
        }
    }

    // Makes a row's part of given columns.
    static KRO_INLINE auto rowOf(const Target& target, Phase phase, int32_t y, const RowInput<Sample>& in,
                                 const Family& family) {
        return [=, &target, &in, &family](auto walk, const Strip& strip) KRO_INLINE_LAMBDA {
            using Walk = decltype(walk);
            const bool ownFirst = ordered && ownComesFirst(target, phase);
            const auto one = phase.greenFirst
                                 ? (ownFirst ? single<Walk, true, ordered> : single<Walk, true, false>)
                                 : (ownFirst ? single<Walk, false, ordered> : single<Walk, false, false>);
            one(target, phase.blueRow, y, strip, in.above, in.here, in.below, in.top, family);
        };
    }
    // (A whole phase would be put into memory byte by byte and read at once, for which stores are waited for.)
    template <class Walk, bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void single(const Target& target, bool blueRow, int32_t y, const Strip& strip,
                                   const Sample* above, const Sample* here, const Sample* below, bool top,
                                   const Family& family) {
        const auto out = rowTarget<kind, Sample>(target, {colourOdd, blueRow}, y, strip.first);
        const Family f = family;
        Walk::template each<V, 1>(
            strip.made, strip.frame, f.inner(strip.frame), [&](auto block) KRO_INLINE_LAMBDA {
                put<kind, ownFirst>(out, block, f.template row<colourOdd>(block, above, here, below));
            });
        if (strip.first + strip.made.begin == 0) {
            Family::template mend<kind, colourOdd, ownFirst>(out, RowInput<Sample>{above, here, below, top});
        }
        finishRow<kind, V>(out, strip.made);
    }

    static KRO_INLINE void pair(const FrameJob& job, const Rows<S, Sample>& source, int32_t y,
                                const Stretches& columns, const Family& family) {
        const Phase upper = phaseOfRow(job.phase, y);
        const RowInput<Sample> one{source[y - 1], source[y], source[y + 1], y == 0};
        const RowInput<Sample> two{one.here, one.below, source[y + 2], false};
        columns.each(
            [&](InBlocks, const Strip& strip) KRO_INLINE_LAMBDA {
                const bool ownFirst = ordered && ownComesFirst(job.target, upper);
                (ownFirst ? both<ordered> : both<false>)(job.target, upper.blueRow, y, strip, one.above, one.here,
                                                         two.here, two.below, family);
            },
            [&](InPairs walk, const Strip& strip) KRO_INLINE_LAMBDA {
                rowOf(job.target, upper, y, one, family)(walk, strip);
                rowOf(job.target, phaseOfRow(upper, 1), y + 1, two, family)(walk, strip);
            });
    }

    // Colour at odd columns of the upper row, at even columns of the lower. Every load of a step stands before its
    // first store: samples may alias, so the compiler could not reuse loads across stores.
    template <bool ownFirst>
    static KRO_OUTLINE void both(const Target& target, bool blueRow, int32_t y, const Strip& strip,
                                 const Sample* above, const Sample* here, const Sample* next, const Sample* below,
                                 const Family& family) {
        const auto upper = rowTarget<kind, Sample>(target, {true, blueRow}, y, strip.first);
        const auto lower = rowTarget<kind, Sample>(target, {false, !blueRow}, y + 1, strip.first);
        const Family f = family;
        InBlocks::each<V, 1>(strip.made, strip.frame, f.inner(strip.frame), [&](auto block) KRO_INLINE_LAMBDA {
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
