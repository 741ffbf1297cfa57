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

// A row's address, held in a register as long as its blocks are made. One that lives on for the next row g++ 12
// leaves in memory, and loads for each block, unless it is made anew just ahead of the loop (SSSE3 on Zen 5, 640x480:
// nearest to planes 12 %; in 32 bits bilinear BGR8 10 %). In 32 bits it holds those of wider sets, and to make them
// anew would cost small frames 4 %.
template <class V, class Sample>
KRO_INLINE const Sample* heldAddress(const Sample* row) {
    if constexpr (rowsInPairs || sizeof(typename V::Vector) == 16) {
        __asm__("" : "+r"(row));
    }
    return row;
}

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

// The columns of a strip by how they are taken: blocks, and pairs to the left and to the right of them.
struct Stretches {
    Strip blocks, sides[2];

    template <class V>
    static KRO_INLINE Stretches of(const Strip& strip, Columns inner) {
        const Columns wide = blockColumns<V>(strip.made, inner);
        return {{strip.first, wide, strip.frame},
                {{strip.first, {strip.made.begin, wide.begin}, strip.frame},
                 {strip.first, {wide.end, strip.made.end}, strip.frame}}};
    }
    KRO_INLINE bool haveBlocks() const { return blocks.made.begin < blocks.made.end; }
    KRO_INLINE bool havePairs() const { return isThere(sides[0]) || isThere(sides[1]); }
    template <class Make>
    KRO_INLINE void eachSide(const Make& make) const {
        for (const Strip& side : sides) {
            if (isThere(side)) {
                make(side);
            }
        }
    }

private:
    static KRO_INLINE bool isThere(const Strip& side) { return side.made.begin < side.made.end; }
};

template <class S, class Sample, Output kind, class Family>
class Rectangle {
    using V = BackEnd<S, Sample>;
    static constexpr bool ordered = isInterleaved(kind);
    // (Nearest to planes is a quarter slower if it asks for rows, with AVX2.)
    static constexpr bool asks = ordered || Family::pairs;

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
    static void row(const Target& target, Phase phase, int32_t y, const Strip& strip, const RowInput<Sample>& in,
                    const Family& family) {
        const Stretches columns = Stretches::of<V>(strip, family.inner(strip.frame));
        if (columns.haveBlocks()) {
            stretch<InBlocks>(target, phase, y, columns.blocks, in, family);
        }
        sides(target, phase, y, columns, in, family);
    }
    // The same of few columns.
    static void shortRow(const Target& target, Phase phase, int32_t y, const Strip& strip, const RowInput<Sample>& in,
                         const Family& family) {
        stretch<InPairs>(target, phase, y, strip, in, family);
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
        const auto walked = ownFirst ? walk<ordered> : walk<false>;
        walked(job, rows, Stretches::of<V>(strip, family.inner(strip.frame)), source, family);
    }

    // Rows are made where they are counted: a call for each would take as long as 64 columns (Zen 5). `ownFirst`
    // speaks of those that start with green.
    template <bool ownFirst>
    static KRO_OUTLINE void walk(const FrameJob& job, RowSpan rows, const Stretches& columns, Rows<S, Sample>& source,
                                 const Family& family) {
        constexpr bool otherFirst = ordered && !ownFirst;
        constexpr bool apart = V::columns == 2;  // general registers are too few for a row and all around it
        const Family f = family;
        const Strip blocks = columns.blocks;
        const bool haveBlocks = columns.haveBlocks(), havePairs = columns.havePairs();
        source.prepare(rows.begin + 1);
        const Sample *above = source[rows.begin - 1], *here = source[rows.begin];
        for (int32_t y = rows.begin; y < rows.end; ++y) {
            source.prepare(y + 2);
            const Phase phase = phaseOfRow(job.phase, y);
            const RowInput<Sample> in{above, here, source[y + 1], y == 0};
            above = here;
            here = in.below;
            if (havePairs) {
                sides(job.target, phase, y, columns, in, f);
            }
            if (Family::pairs && rowsInPairs && phase.greenFirst && y + 1 < rows.end) {
                const RowInput<Sample> lower{above, here, source[y + 2], false};
                if (havePairs) {
                    sides(job.target, phaseOfRow(phase, 1), y + 1, columns, lower, f);
                }
                if (haveBlocks) {
                    (apart ? outlinedPair<ownFirst> : pair<ownFirst>)(job.target, phase.blueRow, y, blocks, in,
                                                                      lower.below, f);
                }
                above = here;
                here = lower.below;
                ++y;
            } else if (haveBlocks && phase.greenFirst) {
                (apart ? outlined<InBlocks, true, ownFirst>
                       : single<InBlocks, true, ownFirst>)(job.target, phase.blueRow, y, blocks, in, f);
            } else if (haveBlocks) {
                (apart ? outlined<InBlocks, false, otherFirst>
                       : single<InBlocks, false, otherFirst>)(job.target, phase.blueRow, y, blocks, in, f);
            }
        }
    }
    static KRO_OUTLINE void sides(const Target& target, Phase phase, int32_t y, const Stretches& columns,
                                  const RowInput<Sample>& in, const Family& family) {
        columns.eachSide([&](const Strip& side) { stretch<InPairs>(target, phase, y, side, in, family); });
    }

    // One row in given columns. (A whole phase as an argument would be put into memory byte by byte and read at once,
    // for which stores are waited for.)
    template <class Walk, bool colourOdd, bool ownFirst>
    static KRO_INLINE void single(const Target& target, bool blueRow, int32_t y, const Strip& strip,
                                  const RowInput<Sample>& in, const Family& family) {
        const auto out = rowTarget<kind, Sample>(target, {colourOdd, blueRow}, y, strip.first);
        const Sample *const above = heldAddress<V>(in.above), *const here = heldAddress<V>(in.here),
                            *const below = heldAddress<V>(in.below);
        Walk::template each<V, 1>(
            strip.made, strip.frame, family.inner(strip.frame),
            [&](auto block) KRO_INLINE_LAMBDA {
                put<kind, ownFirst>(out, block, family.template row<colourOdd>(block, above, here, below));
            },
            RowsAhead<kind, V>(out, asks ? target.ahead : 0, 1));
        if (strip.first + strip.made.begin == 0) {
            Family::template mend<kind, colourOdd, ownFirst>(out, in);
        }
        finishRow<kind, V>(out, strip.made);
    }
    template <class Walk, bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void outlined(const Target& target, bool blueRow, int32_t y, const Strip& strip,
                                     const RowInput<Sample>& in, const Family& family) {
        const Family f = family;
        const RowInput<Sample> rows = in;
        single<Walk, colourOdd, ownFirst>(target, blueRow, y, strip, rows, f);
    }
    template <class Walk>
    static void stretch(const Target& target, Phase phase, int32_t y, const Strip& strip, const RowInput<Sample>& in,
                        const Family& family) {
        const auto make = functionFor<kind>(
            target, phase, [](auto colourOdd, auto ownFirst) { return outlined<Walk, colourOdd, ownFirst>; });
        make(target, phase.blueRow, y, strip, in, family);
    }

    // Two rows. Colour at odd columns of the upper row, at even columns of the lower. Every load of a step stands
    // before its first store: samples may alias, so the compiler could not reuse loads across stores.
    template <bool ownFirst>
    static KRO_INLINE void pair(const Target& target, bool blueRow, int32_t y, const Strip& strip,
                                const RowInput<Sample>& in, const Sample* below, const Family& family) {
        constexpr bool otherFirst = ordered && !ownFirst;
        const auto upper = rowTarget<kind, Sample>(target, {true, blueRow}, y, strip.first);
        auto lower = rowTarget<kind, Sample>(target, {false, !blueRow}, y + 1, strip.first);
        lower.ownWeight = upper.otherWeight;  // the compiler would not see that they are the same, and hold both
        lower.otherWeight = upper.ownWeight;
        InBlocks::each<V, 1>(
            strip.made, strip.frame, family.inner(strip.frame),
            [&](auto block) KRO_INLINE_LAMBDA {
                const auto one = family.template row<true>(block, in.above, in.here, in.below);
                const auto two = family.template row<false>(block, in.here, in.below, below);
                put<kind, ownFirst>(upper, block, one);
                put<kind, otherFirst>(lower, block, two);
            },
            RowsAhead<kind, V>(upper, asks ? target.ahead : 0, 2));
        finishRow<kind, V>(upper, strip.made);
        finishRow<kind, V>(lower, strip.made);
    }
    template <bool ownFirst>
    static KRO_OUTLINE void outlinedPair(const Target& target, bool blueRow, int32_t y, const Strip& strip,
                                         const RowInput<Sample>& in, const Sample* below, const Family& family) {
        const Family f = family;
        const RowInput<Sample> rows = in;
        pair<ownFirst>(target, blueRow, y, strip, rows, below, f);
    }
};

}  // namespace
}  // namespace kro
