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
    KRO_INLINE bool haveBlocks() const { return blocks.made.begin < blocks.made.end; }
    KRO_INLINE bool havePairs() const { return left.made.begin < left.made.end || right.made.begin < right.made.end; }
    // Calls blocksOf(InBlocks, strip) and pairsOf(InPairs, strip) for those that there are.
    template <class BlocksOf, class PairsOf>
    KRO_INLINE void each(const BlocksOf& blocksOf, const PairsOf& pairsOf) const {
        if (haveBlocks()) {
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
    static KRO_INLINE void row(const Target& target, Phase phase, int32_t y, const Strip& strip,
                               const RowInput<Sample>& in, const Family& family) {
        const auto part = [&](auto walk, const Strip& columns) KRO_INLINE_LAMBDA {
            rowOf<decltype(walk)>(target, phase, y, columns, in, family);
        };
        Stretches::of<V>(strip, family.inner(strip.frame)).each(part, part);
    }
    // The same in pairs of columns.
    template <class Walk = InPairs>
    static KRO_INLINE void rowOf(const Target& target, Phase phase, int32_t y, const Strip& strip,
                                 const RowInput<Sample>& in, const Family& family) {
        const bool ownFirst = ordered && ownComesFirst(target, phase);
        const auto one = phase.greenFirst ? (ownFirst ? single<Walk, true, ordered> : single<Walk, true, false>)
                                          : (ownFirst ? single<Walk, false, ordered> : single<Walk, false, false>);
        one(target, phase.blueRow, y, strip, in.above, in.here, in.below, in.top, family);
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
        const Phase greenFirst = phaseOfRow(job.phase, job.phase.greenFirst ? 0 : 1);
        const bool ownFirst = ordered && ownComesFirst(job.target, greenFirst);
        (ownFirst ? walk<ordered> : walk<false>)(job, rows, Stretches::of<V>(strip, family.inner(strip.frame)), source,
                                                 family);
    }

    // All rows; `ownFirst` speaks of those that start with green. Rows are made where they are counted: a call for each
    // takes as long as 64 columns.
    template <bool ownFirst>
    static KRO_OUTLINE void walk(const FrameJob& job, RowSpan rows, const Stretches& columns, Rows<S, Sample>& source,
                                 const Family& family) {
        constexpr bool otherFirst = ordered && !ownFirst;
        const Family f = family;
        const Strip blocks = columns.blocks;
        const bool haveBlocks = columns.haveBlocks(), havePairs = columns.havePairs();
        source.prepare(rows.begin + 1);
        const Sample *above = source[rows.begin - 1], *here = source[rows.begin];
        for (int32_t y = rows.begin; y < rows.end;) {
            source.prepare(y + 2);
            const Phase phase = phaseOfRow(job.phase, y);
            const Sample* const next = source[y + 1];
            const RowInput<Sample> in{above, here, next, y == 0};
            if (Family::pairs && rowsInPairs && phase.greenFirst && y + 1 < rows.end) {
                const RowInput<Sample> below{here, next, source[y + 2], false};
                if (haveBlocks) {
                    pair<ownFirst>(job.target, phase.blueRow, y, blocks, in, below.below, f);
                }
                if (havePairs) {
                    sides(job.target, phase, y, columns, in, f);
                    sides(job.target, phaseOfRow(phase, 1), y + 1, columns, below, f);
                }
                above = next;
                here = below.below;
                y += 2;
                continue;
            }
            if (haveBlocks) {
                phase.greenFirst ? part<InBlocks, true, ownFirst>(job.target, phase.blueRow, y, blocks, in, f)
                                 : part<InBlocks, false, otherFirst>(job.target, phase.blueRow, y, blocks, in, f);
            }
            if (havePairs) {
                sides(job.target, phase, y, columns, in, f);
            }
            above = here;
            here = next;
            ++y;
        }
    }
    static KRO_OUTLINE void sides(const Target& target, Phase phase, int32_t y, const Stretches& columns,
                                  const RowInput<Sample>& in, const Family& family) {
        columns.each([](auto, const Strip&) {},
                     [&](auto, const Strip& strip) { rowOf(target, phase, y, strip, in, family); });
    }

    // A row's part of given columns. (A whole phase would be put into memory byte by byte and read at once, for which
    // stores are waited for.)
    template <class Walk, bool colourOdd, bool ownFirst>
    static KRO_INLINE void part(const Target& target, bool blueRow, int32_t y, const Strip& strip,
                                const RowInput<Sample>& in, const Family& family) {
        const auto out = rowTarget<kind, Sample>(target, {colourOdd, blueRow}, y, strip.first);
        Walk::template each<V, 1>(
            strip.made, strip.frame, family.inner(strip.frame), [&](auto block) KRO_INLINE_LAMBDA {
                put<kind, ownFirst>(out, block, family.template row<colourOdd>(block, in.above, in.here, in.below));
            });
        if (strip.first + strip.made.begin == 0) {
            Family::template mend<kind, colourOdd, ownFirst>(out, in);
        }
        finishRow<kind, V>(out, strip.made);
    }
    template <class Walk, bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void single(const Target& target, bool blueRow, int32_t y, const Strip& strip,
                                   const Sample* above, const Sample* here, const Sample* below, bool top,
                                   const Family& family) {
        const Family f = family;
        part<Walk, colourOdd, ownFirst>(target, blueRow, y, strip, {above, here, below, top}, f);
    }

    // Two rows. Colour at odd columns of the upper row, at even columns of the lower. Every load of a step stands
    // before its first store: samples may alias, so the compiler could not reuse loads across stores.
    template <bool ownFirst>
    static KRO_INLINE void pair(const Target& target, bool blueRow, int32_t y, const Strip& strip,
                                const RowInput<Sample>& in, const Sample* below, const Family& family) {
        const auto upper = rowTarget<kind, Sample>(target, {true, blueRow}, y, strip.first);
        const auto lower = rowTarget<kind, Sample>(target, {false, !blueRow}, y + 1, strip.first);
        InBlocks::each<V, 1>(strip.made, strip.frame, family.inner(strip.frame), [&](auto block) KRO_INLINE_LAMBDA {
            const auto one = family.template row<true>(block, in.above, in.here, in.below);
            const auto two = family.template row<false>(block, in.here, in.below, below);
            put<kind, ownFirst>(upper, block, one);
            put<kind, ordered && !ownFirst>(lower, block, two);
        });
        finishRow<kind, V>(upper, strip.made);
        finishRow<kind, V>(lower, strip.made);
    }
};

}  // namespace
}  // namespace kro
