// The exported routines of the nearest-neighbour family.
#pragma once

#include "demosaicingNearest/nearest.hpp"
#include "row/entries.hpp"

namespace kro {
namespace {

// What a routine writes to, made of its own arguments: `swap` exchanges red and blue where it is not 0.
template <Output kind>
constexpr Target swappedTarget(uint8_t* output, int32_t width, bool swap) {
    return kind == Output::mono ? lumaTarget(output, width, swap) : rowsTarget<kind>(output, width, swap);
}

template <class S, Output kind>
struct NearestEntries {
    template <Mosaic mosaic>
    static uint32_t frame(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination, int32_t swap) {
        Nearest<S, uint8_t, kind>::frame(
            frameJob(source, height, width, phaseOf(mosaic), swappedTarget<kind>(destination, width, swap != 0)));
        return 0;
    }
    static void body(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap) {
        pair(rows, width, swappedTarget<kind>(output, width, swap != 0));
    }
    static void lastRows(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap) {
        blueRow(rows, width, swappedTarget<kind>(output, width, swap != 0));
    }

    // A G/B row and the R/G row below it; `rows` starts with the row above them.
    static void pair(const uint8_t* const* rows, int32_t width, const Target& target) {
        blueRow(rows, width, target);
        one(rows + 1, 1, phaseRG, width, target);
    }
    static void blueRow(const uint8_t* const* rows, int32_t width, const Target& target) {
        one(rows, 0, phaseGB, width, target);
    }

private:
    static void one(const uint8_t* const* rows, int32_t y, Phase phase, int32_t width, const Target& target) {
        Nearest<S, uint8_t, kind>::row(target, phase, y, Strip::of({0, width}, width),
                                       {rows[0], rows[1], nullptr, false}, {});
    }
};

template <class S>
struct NearestPlanarEntries {
    using Planes = NearestEntries<S, Output::planar>;

    template <Mosaic mosaic>
    static uint32_t frame(const uint8_t* source, int32_t height, int32_t width, uint8_t* red, uint8_t* green,
                          uint8_t* blue) {
        Nearest<S, uint8_t, Output::planar>::frame(
            frameJob(source, height, width, phaseOf(mosaic), planarTarget(red, green, blue, width)));
        return 0;
    }
    static void body(const uint8_t* const* rows, int32_t width, uint8_t* red, uint8_t* green, uint8_t* blue) {
        Planes::pair(rows, width, planarTarget(red, green, blue, width));
    }
    static void lastRows(const uint8_t* const* rows, int32_t width, uint8_t* red, uint8_t* green, uint8_t* blue) {
        Planes::blueRow(rows, width, planarTarget(red, green, blue, width));
    }
};

}  // namespace
}  // namespace kro
