// Nearest-neighbour: every pixel takes each missing colour from the 2 x 2 samples above and left of it and its own.
#pragma once

#include "frame/rectangle.hpp"

namespace kro {
namespace {

// What bounds it, colour output, one step of a row: VBMI 18 vector instructions for 64 pixels (5 loads, 3 permutes,
// 3 stores), BW 26, AVX2 24 for 32 pixels, SSSE3 42 for 16. The stores bound the wide sets, the nine shuffles of the
// interleave SSSE3.
struct NearestFamily {
    static constexpr bool pairs = false;  // rows share too little

    // Of the two columns x - 1 and x, the one that holds the wanted colour: in the row itself its own colour and green
    // alternate, in the row above the other colour stands where this row has green.
    template <bool colourOdd, class B>
    static KRO_INLINE auto row(B block, const uint8_t* above, const uint8_t* here, const uint8_t*) {
        using V = typename B::Vector;
        const auto now = block.template tap<0>(here), left = block.template tap<-1>(here);
        const auto up = block.template tap<0>(above), upLeft = block.template tap<-1>(above);
        return Pixels<Ready<V>, Ready<V>, Ready<V>>{{V::template parityPick<colourOdd>(now, left)},
                                                    {V::template parityPick<!colourOdd>(now, left)},
                                                    {V::template parityPick<!colourOdd>(up, upLeft)}};
    }

    // At a red or blue site of column 0 green comes from above, not from the mirrored neighbour on the right, in every
    // row but the first.
    template <Output kind, bool colourOdd, bool ownFirst>
    static KRO_INLINE void exception(const RowTarget& row, const RowInput& in) {
        if (!colourOdd && !in.top) {
            putPixel<kind, ownFirst>(row, 0, in.here[0], in.above[0], in.above[1]);
        }
    }
};

template <class V, Output kind>
using Nearest = Rectangle<V, kind, NearestFamily>;

// Exported routines.
template <class V>
struct NearestKernels {
    template <Output kind>
    static uint32_t frame(const uint8_t* source, int32_t height, int32_t width, Phase phase, const Target& target) {
        Nearest<V, kind>::frame({plainSource(source), height, width, phase, target});
        return 0;
    }
    // A G/B row and the R/G row below it; `rows` starts with the row above them.
    template <Output kind>
    static void body(const uint8_t* const* rows, int32_t width, const Target& target) {
        lastRow<kind>(rows, width, target);
        Nearest<V, kind>::row(target, phaseRG, 1, width, {0, width}, {rows[1], rows[2], nullptr, false});
    }
    template <Output kind>
    static void lastRow(const uint8_t* const* rows, int32_t width, const Target& target) {
        Nearest<V, kind>::row(target, phaseGB, 0, width, {0, width}, {rows[0], rows[1], nullptr, false});
    }

    static uint32_t rg8ToBgr8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                      int32_t swap) {
        return frame<Output::bgr>(source, height, width, phaseRG, interleavedTarget(destination, swap != 0));
    }
    static uint32_t gb8ToBgr8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                      int32_t swap) {
        return frame<Output::bgr>(source, height, width, phaseGB, interleavedTarget(destination, swap != 0));
    }
    static uint32_t rg8ToBgra8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                       int32_t swap) {
        return frame<Output::bgra>(source, height, width, phaseRG, interleavedTarget(destination, swap != 0));
    }
    static uint32_t gb8ToBgra8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                       int32_t swap) {
        return frame<Output::bgra>(source, height, width, phaseGB, interleavedTarget(destination, swap != 0));
    }
    static uint32_t rg8ToBgr8P_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* red,
                                       uint8_t* green, uint8_t* blue) {
        return frame<Output::planar>(source, height, width, phaseRG, planarTarget(red, green, blue));
    }
    static uint32_t gb8ToBgr8P_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* red,
                                       uint8_t* green, uint8_t* blue) {
        return frame<Output::planar>(source, height, width, phaseGB, planarTarget(red, green, blue));
    }
    static uint32_t rg8ToMono8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                       int32_t swap) {
        return frame<Output::mono>(source, height, width, phaseRG, lumaTarget(destination, swap != 0));
    }
    static uint32_t gb8ToMono8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                       int32_t swap) {
        return frame<Output::mono>(source, height, width, phaseGB, lumaTarget(destination, swap != 0));
    }

    static void rg8ToBgr8_nearest_body(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap) {
        body<Output::bgr>(rows, width, interleavedTarget(output, swap != 0));
    }
    static void rg8ToBgra8_nearest_body(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap) {
        body<Output::bgra>(rows, width, interleavedTarget(output, swap != 0));
    }
    static void rg8ToMono8_nearest_body(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap) {
        body<Output::mono>(rows, width, lumaTarget(output, swap != 0));
    }
    static void rg8ToBgr8P_nearest_body(const uint8_t* const* rows, int32_t width, uint8_t* red, uint8_t* green,
                                        uint8_t* blue) {
        body<Output::planar>(rows, width, planarTarget(red, green, blue));
    }
    static void rg8ToBgr8_nearest_lastRows(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap) {
        lastRow<Output::bgr>(rows, width, interleavedTarget(output, swap != 0));
    }
    static void rg8ToBgra8_nearest_lastRows(const uint8_t* const* rows, int32_t width, uint8_t* output,
                                            int32_t swap) {
        lastRow<Output::bgra>(rows, width, interleavedTarget(output, swap != 0));
    }
    static void rg8ToMono8_nearest_lastRows(const uint8_t* const* rows, int32_t width, uint8_t* output,
                                            int32_t swap) {
        lastRow<Output::mono>(rows, width, lumaTarget(output, swap != 0));
    }
    static void rg8ToBgr8P_nearest_lastRows(const uint8_t* const* rows, int32_t width, uint8_t* red, uint8_t* green,
                                            uint8_t* blue) {
        lastRow<Output::planar>(rows, width, planarTarget(red, green, blue));
    }
};

}  // namespace
}  // namespace kro
