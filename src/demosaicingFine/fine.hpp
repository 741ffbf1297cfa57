// Fine frames: green from differences of colours, weighed across and down by how little they vary, and red and blue
// as a local function of green.
#pragma once

#include "demosaicingFine/strip.hpp"
#include "row/narrow.hpp"

namespace kro {
namespace {

// What a row is made from: what its own sites hold, and the models around them.
template <class Sample, class Number>
struct FineRows {
    const Sample *colours, *greens;
    const Number *differences, *above, *here, *below;
};

template <class S, class Sample, Output kind>
class Fine {
    using FineStripOf = FineStrip<S, Sample>;
    using Number = typename FineStripOf::Number;

public:
    static void frame(const FrameJob& job) {
        if (madeByNarrowerSet<S, Sample>(KRO_FINE, kind, job)) {
            return;
        }
        for (int32_t x = 0; x < job.width;) {
            const int32_t end = x + columnsOf(job.width - x);
            walk(job, {x, end});
            x = end;
        }
    }

private:
    // As many columns as fit, but no strip narrower than the widest block beside another.
    static int32_t columnsOf(int32_t left) {
        constexpr int32_t most = FineStripOf::mostColumns, least = 64 / sizeof(Sample);
        return left <= most ? left : left < most + least ? most - least : most;
    }

    static KRO_OUTLINE void walk(const FrameJob& job, Columns columns) {
        FineStripOf strip(job, columns);
        const RowSpan rows = job.rows;
        for (int32_t y = rows.begin - FineStripOf::stepsBefore; y < rows.end + FineStripOf::rowsBehind; ++y) {
            strip.step(y);
            if (y - FineStripOf::rowsBehind >= rows.begin) {
                row(job, strip, y - FineStripOf::rowsBehind);
            }
        }
    }
    static KRO_INLINE void row(const FrameJob& job, FineStripOf& strip, int32_t y) {
        const Phase phase = phaseOfRow(job.phase, y);
        const auto make = functionFor<kind>(
            job.target, phase, [](auto colourOdd, auto ownFirst) { return pixels<colourOdd, ownFirst>; });
        make(job, strip, y);
    }
    static KRO_INLINE FineRows<Sample, Number> rowsAround(FineStripOf& strip, int32_t y, int32_t half) {
        constexpr int32_t odd = FineStripOf::next;
        const Sample* const samples = strip.samples(y);
        return {samples + half * odd,
                samples + (1 - half) * odd,
                strip.template row<Plane::colourMinusGreen>(y),
                strip.template row<Plane::models>(y - 1),
                strip.template row<Plane::models>(y),
                strip.template row<Plane::models>(y + 1)};
    }

    template <bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void pixels(const FrameJob& job, FineStripOf& strip, int32_t y) {
        const Strip& place = strip.strip();
        const auto out = rowTarget<kind, Sample>(job.target, phaseOfRow(job.phase, y), y, place.first);
        const FineRows<Sample, Number> in = rowsAround(strip, y, colourOdd ? 1 : 0);
        const int32_t top = job.top;  // bytes end where they are stored
        using V = BackEnd<S, Sample>;
        // Whatever the size: rows of a strip lie far apart (Zen 5, AVX2 and AVX-512: 12 Mpixel 1.4 and 1.75, 1280x960
        // 1.04 and 1.1).
        const auto make = [=](auto block) KRO_INLINE_LAMBDA {
            put<kind, ownFirst>(out, block, finePixels<colourOdd, decltype(block)>(in, block.x >> 1, top));
        };
        eachWholeBlock<V>(place.made, make, RowsAhead<kind, V>(out, job.target.stride[0], 1));
        finishRow<kind, V>(out, place.made);
    }

    template <bool colourOdd, class B>
    static KRO_INLINE auto finePixels(const FineRows<Sample, Number>& in, int32_t i, int32_t topOfSamples) {
        using V = typename B::Vector;
        using L = SiteLanes<std::conditional_t<V::columns == 2, PairOfColumns, S>, Sample>;
        constexpr int32_t e = eastern<colourOdd>;
        const auto at = [i](const auto* lanes, int32_t k) KRO_INLINE_LAMBDA { return L::loadLanes(lanes + i + k); };
        // The other colour's sites above and below a green one, and on the diagonals of a colour's.
        const auto column = [&](int32_t k) KRO_INLINE_LAMBDA { return L::add(at(in.above, k), at(in.below, k)); };
        const auto vertical = column(0), diagonal = L::add(vertical, column(colourOdd ? 1 : -1));
        const auto across = L::add(at(in.here, -e), at(in.here, 1 - e));
        const typename L::Lanes colour = at(in.colours, 0), green = at(in.greens, 0);
        const typename L::Lanes greenMade = L::sub(colour, at(in.differences, 0));
        const auto of = [](typename L::Lanes lanes)
                            KRO_INLINE_LAMBDA { return L::template shiftLeft<FineStripOf::slopeBits>(lanes); };
        const typename L::Lanes scaled = of(green);
        return joined<V, L, colourOdd>(colour, green, greenMade, colourOf<L, 2>(across, scaled),
                                       colourOf<L, 4>(diagonal, of(greenMade)), colourOf<L, 2>(vertical, scaled),
                                       topOfSamples);
    }
    // By the sum of a number of models: 16 times what is to be halved and divided by the number; the sum of slopes
    // below is too small to matter. Of bytes the product, 16 x 255 x 8, fits 16 bits; a sum that does not is white.
    template <class L, int number>
    static KRO_INLINE auto colourOf(typename L::Lanes models, typename L::Lanes scaledGreen) {
        constexpr int bits = FineStripOf::slopeBits;
        const auto slopes = L::bitAnd(models, L::all((1 << bits) - 1));
        const auto sum = L::addSaturated(L::mul(slopes, scaledGreen), models);
        return L::template shiftRightRounded<bits + (number == 2 ? 2 : 3)>(sum);
    }
    // Pixels in column order. The colours that were made may lie outside of what samples can be.
    template <class V, class L, bool colourOdd, class Lanes = typename L::Lanes>
    static KRO_INLINE auto joined(Lanes colour, Lanes green, Lanes greenMade, Lanes ownAtGreen, Lanes otherAtColour,
                                  Lanes otherAtGreen, int32_t top) {
        if constexpr (sizeof(Sample) == 1) {
            const auto greens = sites<colourOdd>(Mean<L, 0>{greenMade}, Mean<L, 0>{green});
            return SaturatedPixels<L, decltype(greens)>{
                sites<colourOdd>(Saturated<L>{colour}, Saturated<L>{ownAtGreen}), greens,
                sites<colourOdd>(Saturated<L>{otherAtColour}, Saturated<L>{otherAtGreen})};
        } else {
            const auto channel = [](Lanes atColour, Lanes atGreen) KRO_INLINE_LAMBDA {
                return Ready<V>{colourOdd ? L::joined(atGreen, atColour) : L::joined(atColour, atGreen)};
            };
            const auto clamped = [&](Lanes lanes) KRO_INLINE_LAMBDA { return L::clamp(lanes, L::all(top)); };
            return makePixels(channel(colour, clamped(ownAtGreen)), channel(greenMade, green),
                              channel(clamped(otherAtColour), clamped(otherAtGreen)));
        }
    }
};

}  // namespace
}  // namespace kro
