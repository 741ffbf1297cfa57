// What the exported routines of the families share: jobs and targets made of their plain arguments.
#pragma once

#include "row/store.hpp"

namespace kro {
namespace {

enum class Mosaic { rg, gr, gb, bg };
constexpr Phase phaseOf(Mosaic mosaic) {
    return mosaic == Mosaic::rg ? phaseRG : mosaic == Mosaic::gr ? phaseGR : mosaic == Mosaic::gb ? phaseGB : phaseBG;
}

// Interleaved rows without gaps.
template <Output kind, class Sample>
constexpr Target rowsTarget(Sample* destination, int32_t width, bool redFirst) {
    constexpr ptrdiff_t pixel = channelsIn(kind) * static_cast<ptrdiff_t>(sizeof(Sample));
    return interleavedTarget(destination, width * pixel, redFirst);
}

// A frame whose rows follow each other without gaps, all rows of it.
template <class Sample>
constexpr FrameJob frameJob(const Sample* source, int32_t height, int32_t width, Phase phase, const Target& target) {
    return kro::frameJob(plainSource(source, width), height, width, phase, target, {0, height}, 0);
}

constexpr int32_t anyHeight = 4;  // for first rows: they end where no bottom border is in sight

}  // namespace
}  // namespace kro
