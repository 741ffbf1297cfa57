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
        FrameJob asking = job;
        asking.target.ahead = pictureBytes(job.target, job.height) >= askedFor ? 2 * job.target.stride[0] : 0;
        for (int32_t x = 0; x < job.width;) {
            const int32_t end = x + columnsOf(job.width - x);
            walk(asking, {x, end});
            x = end;
        }
    }

private:
    // Places are asked for two rows ahead, as a strip has a row done before memory answers (Zen 5, 12 Mpixel, beside
    // one row: AVX-512 1.06, AVX2 1.01), and of smaller pictures than others ask for: strips jump from row to row,
    // which the processor foresees or not (1920x1080 with AVX-512, others busy: .75 to .95 without).
    static constexpr int64_t askedFor = int64_t{2} << 20;

    // As many columns as fit, but no strip narrower than the widest block beside another.
    static int32_t columnsOf(int32_t left) {
        constexpr int32_t most = FineStripOf::mostColumns, least = 64 / sizeof(Sample);
        return left <= most ? left : left < most + least ? most - least : most;
    }

    using MakeRow = void (*)(const FrameJob& job, FineStripOf& strip, int32_t y);

    // What even and odd rows are made by is the same all along (asked in each row: Zen 5, AVX-512 2 %, AVX2 1 %).
    static KRO_OUTLINE void walk(const FrameJob& job, Columns columns) {
        FineStripOf strip(job, columns);
        const Strip& place = strip.strip();
        using V = BackEnd<S, Sample>;
        const bool blocks = fillsBlock<V>(place.made), pairs = leavesPairs<V>(place.made);
        const MakeRow inBlocks[2] = {pixelsOf<true>(job, 0), pixelsOf<true>(job, 1)};
        const MakeRow inPairs[2] = {pixelsOf<false>(job, 0), pixelsOf<false>(job, 1)};
        const RowSpan rows = job.rows;
        for (int32_t y = rows.begin - FineStripOf::stepsBefore; y < rows.begin + FineStripOf::rowsBehind; ++y) {
            strip.step(y);
        }
        for (int32_t y = rows.begin; y < rows.end; ++y) {
            strip.step(y + FineStripOf::rowsBehind);
            if (blocks) {
                inBlocks[y & 1](job, strip, y);
            }
            if (pairs) {
                inPairs[y & 1](job, strip, y);
            }
            finishRow<kind, V>(rowTarget<kind, Sample>(job.target, phaseOfRow(job.phase, y), y, place.first),
                               place.made);
        }
    }
    template <bool inBlocks>
    static KRO_INLINE MakeRow pixelsOf(const FrameJob& job, int32_t y) {
        return functionFor<kind>(job.target, phaseOfRow(job.phase, y),
                                 [](auto colourOdd, auto ownFirst) { return pixels<colourOdd, ownFirst, inBlocks>; });
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

    // Blocks and pairs apart: a function that calls none keeps nothing in memory (Zen 5: AVX-512 1.05 to 1.08, AVX2
    // 1.02 to 1.03).
    template <bool colourOdd, bool ownFirst, bool inBlocks>
    static KRO_OUTLINE void pixels(const FrameJob& job, FineStripOf& strip, int32_t y) {
        const Strip& place = strip.strip();
        const auto out = rowTarget<kind, Sample>(job.target, phaseOfRow(job.phase, y), y, place.first);
        const FineRows<Sample, Number> in = rowsAround(strip, y, colourOdd ? 1 : 0);
        const int32_t top = job.top;  // bytes end where they are stored
        using V = BackEnd<S, Sample>;
        const auto make = [=](auto block) KRO_INLINE_LAMBDA {
            put<kind, ownFirst>(out, block, finePixels<colourOdd, decltype(block)>(in, block.x >> 1, top));
        };
        if constexpr (inBlocks) {
            eachWholeBlock<V>({0, place.made.end}, make, RowsAhead<kind, V>(out, job.target.ahead, 1));
        } else {
            eachPairLeft<V>(place.made, make);
        }
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
