// Nearest-neighbour: every pixel takes each missing colour from the 2 x 2 samples above and left of it and its own.
#pragma once

#include "row/narrow.hpp"

namespace kro {
namespace {

// What bounds it, colour output: the stores on the wide sets (on Intel's server cores they run at the stream's rate,
// on Zen 5 at .6 to .75 of it), the nine shuffles of the interleave on SSSE3.
struct NearestFamily {
    static constexpr bool pairs = false;  // rows share too little
    static KRO_INLINE Columns inner(Columns frame) { return innerColumns<1>(frame); }

    // Of the two columns x - 1 and x, the one that holds the wanted colour: in the row itself its own colour and
    // green alternate, in the row above the other colour stands where this row has green.
    template <bool colourOdd, class B, class Sample>
    KRO_INLINE auto row(B block, const Sample* above, const Sample* here, const Sample*) const {
        using V = typename B::Vector;
        const auto now = block.template tap<0>(here), left = block.template tap<-1>(here);
        const auto up = block.template tap<0>(above), upLeft = block.template tap<-1>(above);
        return makePixels(Ready<V>{picked<V, colourOdd>(now, left)}, Ready<V>{picked<V, !colourOdd>(now, left)},
                          Ready<V>{picked<V, !colourOdd>(up, upLeft)});
    }

    // At a red or blue site of column 0 green comes from above, not from the mirrored neighbour on the right, in
    // every row but the first.
    template <Output kind, bool colourOdd, bool ownFirst, class Sample>
    static KRO_INLINE void mend(const RowTarget<Sample>& row, const RowInput<Sample>& in) {
        if (!colourOdd && !in.top) {
            putPixel<kind, ownFirst>(row, 0, in.here[0], in.above[0], in.above[1]);
        }
    }
};

template <class S, class Sample, Output kind>
struct Nearest : Rectangle<S, Sample, kind, NearestFamily> {
    using Rect = Rectangle<S, Sample, kind, NearestFamily>;
    static void frame(const FrameJob& job) {
        if (!madeByNarrowerSet<S, Sample>(KRO_NEAREST, kind, job)) {
            Rect::frame(job, {});
        }
    }
};

}  // namespace
}  // namespace kro
