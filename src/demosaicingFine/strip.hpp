// A strip of columns, from samples to slopes: passes over rows that lie in the nearest cache. Each pass makes a row
// of a plane from rows that others have made, so no value is computed twice in a strip.
//
// Rows and columns beyond the frame are mirrored samples. Every filter is symmetric, so all planes are mirrored with
// them.
#pragma once

#include <type_traits>

#include "demosaicingFine/planes.hpp"

namespace kro {
namespace {

// Index reflected about the first and last of n, as often as it takes.
KRO_INLINE constexpr int32_t mirroredFar(int32_t index, int32_t n) {
    const int32_t period = 2 * (n - 1), place = (index % period + period) % period;
    return place < n ? place : period - place;
}

// Lanes that hold the even or the odd columns of a block.
template <class S, class Sample>
using SiteLanes = std::conditional_t<sizeof(Sample) == 1, typename S::Bytes, typename S::Dwords>;

// `colourOdd`: red or blue stands in the odd columns of a row. The green sites west and east of colour site i of a
// row are i - 1 + e and i + e, the colour sites beside green site i are i - e and i + 1 - e.
template <bool colourOdd>
constexpr int32_t eastern = colourOdd ? 1 : 0;

template <class S, class Sample>
class FineStrip {
    using V = BackEnd<S, Sample>;
    using L = SiteLanes<S, Sample>;
    using Lanes = typename L::Lanes;

public:
    using Number = typename L::Number;

    static constexpr int32_t reach = 12;  // columns beside a strip that its pixels depend on, rounded up
    static constexpr int32_t mostColumns = 2 * Planes<Number>::lanes - 2 * reach;

    // Steps are counted by the row whose differences down they make. The first one, and how far behind it pixels are.
    static constexpr int32_t stepsBefore = 8, rowsBehind = 9;

    FineStrip(const FrameJob& job, Columns columns)
        : job_(job),
          first_(columns.begin),
          count_(columns.end - columns.begin),
          frame_{-columns.begin, job.width - columns.begin},
          top_(L::all(sizeof(Sample) == 1 ? 255 : job.top)) {
        for (int32_t y = job.rows.begin - stepsBefore - 2; y < job.rows.begin - stepsBefore + 2; ++y) {
            load(y);
        }
    }

    // Passes that read what a pass before them has just stored, some lanes on, wait for the cache. So their order is
    // such that other work stands between them: two halves of a step, and pixels in between.
    KRO_INLINE void beginStep(int32_t y) {
        load(y + 2);
        const bool odd = colourIsOdd(y - 1);
        const bool ready = y - 1 >= job_.rows.begin - 7;
        if (ready) {
            (odd ? &FineStrip::differencesAcross<true> : &FineStrip::differencesAcross<false>)(*this, y - 1);
        }
        differencesDown(*this, y, 0);
        differencesDown(*this, y, 1);
        if (ready) {
            (odd ? &FineStrip::estimatesAcross<true> : &FineStrip::estimatesAcross<false>)(*this, y - 1);
        }
        if (y - 3 >= job_.rows.begin - 5) {
            sumsDown(*this, y - 3, colourIsOdd(y - 3));
        }
    }
    KRO_INLINE void endStep(int32_t y) {
        if (y - 1 >= job_.rows.begin - 7) {
            (colourIsOdd(y - 1) ? &FineStrip::sumsAcross<true> : &FineStrip::sumsAcross<false>)(*this, y - 1);
        }
        if (y - 3 >= job_.rows.begin - 5) {
            weigh(*this, y - 3, colourIsOdd(y - 3));
        }
        if (y - 5 >= job_.rows.begin - 3) {
            greens(*this, y - 5, colourIsOdd(y - 5));
        }
        if (y - 7 >= job_.rows.begin - 1) {
            slopes(*this, y - 7, colourIsOdd(y - 7));
        }
    }

    bool colourIsOdd(int32_t y) const { return phaseOfRow(job_.phase, y).greenFirst; }
    Strip strip() const { return {first_, {0, count_}, frame_}; }
    // Half a row of a plane; lane 0 belongs to the strip's first two columns.
    template <Plane plane>
    KRO_INLINE Number* row(int32_t y, int32_t half = 0) {
        return planes_.template row<plane>(y, half) + reach / 2;
    }

private:
    const FrameJob& job_;
    const int32_t first_, count_;
    const Columns frame_;
    const Lanes top_;
    alignas(64) Sample prepared_[sizeof(Sample) == 1 ? 256 : 128];
    Planes<Number> planes_;

    // Blocks of lanes that cover the strip's and `beside` more at both ends.
    template <class Formula>
    KRO_INLINE void eachLane(int32_t beside, const Formula& formula) const {
        constexpr int32_t step = V::columns / 2;
        const int32_t end = (count_ + 1) / 2 + beside;
        for (int32_t i = step == 1 ? -beside : -reach / 2; i < end; i += step) {
            formula(i);
        }
    }

    // ---- samples ----

    KRO_OUTLINE void load(int32_t y) {
        const int32_t frameRow = mirroredFar(y, job_.height), end = ((count_ + 1) & ~1) + reach;
        const Columns seen{frame_.begin < -reach ? -reach : frame_.begin, frame_.end < end ? frame_.end : end};
        const Sample* in;
        if (readInPlace<Sample>(job_.source)) {
            in = advanced(static_cast<const Sample*>(job_.source.samples), frameRow * job_.source.stride) + first_;
        } else {
            readRun<S>(job_, frameRow, {first_ + seen.begin, first_ + seen.end}, prepared_);
            in = prepared_ - seen.begin;
        }
        Number* const halves[2] = {row<Plane::samples>(y, 0), row<Plane::samples>(y, 1)};
        split(in, seen, halves);
        const auto mirror = [&](int32_t x) {
            halves[x & 1][x >> 1] = in[frame_.begin + mirroredFar(x - frame_.begin, job_.width)];
        };
        for (int32_t x = -reach; x < seen.begin; ++x) {
            mirror(x);
        }
        for (int32_t x = seen.end; x < end; ++x) {
            mirror(x);
        }
    }
    static KRO_INLINE void split(const Sample* in, Columns seen, Number* const (&halves)[2]) {
        const auto block = [&](int32_t x) KRO_INLINE_LAMBDA {
            const auto samples = V::load(in + x);
            L::storeLanes(halves[0] + (x >> 1), L::low(samples));
            L::storeLanes(halves[1] + (x >> 1), L::high(samples));
        };
        int32_t x = seen.begin;
        for (; x + V::columns <= seen.end; x += V::columns) {
            block(x);
        }
        if (x + 1 < seen.end && seen.end - seen.begin >= V::columns) {
            x = seen.end & ~1;
            block(x - V::columns);
        }
        for (; x < seen.end; ++x) {
            halves[x & 1][x >> 1] = in[x];
        }
    }

    // ---- differences of the two colours of a row or a column ----

    // Twice the site and the mean of its neighbours in the same colour, minus twice the other colour beside it.
    static KRO_INLINE Lanes difference(Lanes before2, Lanes before, Lanes here, Lanes after, Lanes after2) {
        const Lanes own = L::add(L::add(before2, after2), L::add(here, here));
        const Lanes other = L::add(before, after);
        return L::sub(own, L::add(other, other));
    }
    // Of words so many bits less that a variation and a gradient of 12 bits are as large as those of bytes.
    static KRO_INLINE Lanes variation(Lanes before, Lanes after) {
        return L::template shiftRight < sizeof(Sample) == 1 ? 1 : 5 > (L::absolute(L::sub(before, after)));
    }
    static KRO_INLINE Lanes gradient(Lanes before, Lanes after) {
        const Lanes magnitude = L::absolute(L::sub(before, after));
        if constexpr (sizeof(Sample) == 1) {
            return magnitude;
        } else {
            return L::template shiftRight<4>(magnitude);
        }
    }
    static KRO_INLINE Lanes at(const Number* lanes) { return L::loadLanes(lanes); }
    static KRO_INLINE Lanes beside(const Number* lanes) { return L::add(at(lanes - 1), at(lanes + 1)); }
    static KRO_INLINE Lanes twice(Lanes a) { return L::add(a, a); }

    // Down to row y, of one half; with it the variation and the gradient of the row above are complete.
    static KRO_OUTLINE void differencesDown(FineStrip& s, int32_t y, int32_t half) {
        const auto sample = [&](int32_t row) { return s.template row<Plane::samples>(row, half); };
        const Number *const north2 = sample(y - 2), *const north = sample(y - 1), *const here = sample(y),
                            *const south = sample(y + 1), *const south2 = sample(y + 2);
        const Number* const before = s.template row<Plane::differencesDown>(y - 2, half);
        Number* const made = s.template row<Plane::differencesDown>(y, half);
        Number* const variations = s.template row<Plane::variationDown>(y - 1, half);
        Number* const gradients = s.template row<Plane::gradientDown>(y - 1, half);
        s.eachLane(5, [=](int32_t i) KRO_INLINE_LAMBDA {
            const Lanes above = at(north2 + i), same = at(here + i);
            const Lanes down = difference(above, at(north + i), same, at(south + i), at(south2 + i));
            L::storeLanes(variations + i, variation(at(before + i), down));
            L::storeLanes(gradients + i, gradient(above, same));
            L::storeLanes(made + i, down);
        });
    }
    template <bool colourOdd>
    static KRO_OUTLINE void differencesAcross(FineStrip& s, int32_t y) {
        constexpr int32_t e = eastern<colourOdd>;
        const Number* const colour = s.template row<Plane::samples>(y, colourOdd ? 1 : 0);
        const Number* const green = s.template row<Plane::samples>(y, colourOdd ? 0 : 1);
        Number* const atColour = s.template row<Plane::passing>(0, 0);
        Number* const atGreen = s.template row<Plane::passing>(0, 1);
        s.eachLane(5, [=](int32_t i) KRO_INLINE_LAMBDA {
            const Lanes west = at(green + i - 1 + e), east = at(green + i + e);
            const Lanes westColour = at(colour + i - e), eastColour = at(colour + i + 1 - e);
            const Lanes c = difference(at(colour + i - 1), west, at(colour + i), east, at(colour + i + 1));
            const Lanes g = difference(at(green + i - 1), westColour, at(green + i), eastColour, at(green + i + 1));
            L::storeLanes(atColour + i, c);
            L::storeLanes(atGreen + i, g);
        });
    }

    // ---- variations, gradients, and estimates at red and blue sites ----

    template <bool colourOdd>
    static KRO_OUTLINE void estimatesAcross(FineStrip& s, int32_t y) {
        constexpr int32_t e = eastern<colourOdd>;
        const Number* const colour = s.template row<Plane::samples>(y, colourOdd ? 1 : 0);
        const Number* const green = s.template row<Plane::samples>(y, colourOdd ? 0 : 1);
        const Number* const atColour = s.template row<Plane::passing>(0, 0);
        const Number* const atGreen = s.template row<Plane::passing>(0, 1);
        Number* const made[4] = {s.template row<Plane::passing>(0, 2), s.template row<Plane::passing>(0, 3),
                                 s.template row<Plane::passing>(0, 4), s.template row<Plane::passing>(0, 5)};
        Number *const estimate = s.template row<Plane::estimateAcross>(y), *const rough =
                                                                               s.template row<Plane::roughAcross>(y);
        s.eachLane(4, [=](int32_t i) KRO_INLINE_LAMBDA {
            const Lanes west = at(atGreen + i - 1 + e), here = at(atColour + i), east = at(atGreen + i + e);
            const Lanes sample = at(colour + i);
            L::storeLanes(made[0] + i, variation(west, east));
            L::storeLanes(made[1] + i, variation(at(atColour + i - e), at(atColour + i + 1 - e)));
            L::storeLanes(made[2] + i, gradient(at(green + i - 1 + e), at(green + i + e)));
            L::storeLanes(made[3] + i, gradient(at(colour + i - e), at(colour + i + 1 - e)));
            L::storeLanes(estimate + i, L::sub(twice(here), L::add(west, east)));
            L::storeLanes(rough + i, roughEstimate(here, sample, beside(colour + i)));
        });
    }
    static KRO_INLINE Lanes roughEstimate(Lanes difference, Lanes sample, Lanes farSamples) {
        return twice(L::sub(L::add(twice(difference), twice(sample)), farSamples));
    }
    // Over five columns around each red or blue site of a row.
    template <bool colourOdd>
    static KRO_OUTLINE void sumsAcross(FineStrip& s, int32_t y) {
        constexpr int32_t e = eastern<colourOdd>;
        const auto sum = [](const Number* atColour, const Number* atGreen) KRO_INLINE_LAMBDA {
            return L::add(L::add(beside(atColour), at(atColour)), L::add(at(atGreen - 1 + e), at(atGreen + e)));
        };
        const Number* const made[4] = {s.template row<Plane::passing>(0, 2), s.template row<Plane::passing>(0, 3),
                                       s.template row<Plane::passing>(0, 4), s.template row<Plane::passing>(0, 5)};
        Number *const variations = s.template row<Plane::variationAcross>(y),
                      *const gradients = s.template row<Plane::gradientAcross>(y);
        s.eachLane(3, [=](int32_t i) KRO_INLINE_LAMBDA {
            L::storeLanes(variations + i, sum(made[0] + i, made[1] + i));
            L::storeLanes(gradients + i, sum(made[2] + i, made[3] + i));
        });
    }
    // Over five rows around row y, of the columns in which it has red or blue.
    static KRO_OUTLINE void sumsDown(FineStrip& s, int32_t y, bool colourOdd) {
        const int32_t half = colourOdd ? 1 : 0;
        const Number *variation[5], *gradient[5];
        for (int32_t k = 0; k < 5; ++k) {
            variation[k] = s.template row<Plane::variationDown>(y - 2 + k, half);
            gradient[k] = s.template row<Plane::gradientDown>(y - 2 + k, half);
        }
        const auto sum = [](const Number* const(&rows)[5], int32_t i) KRO_INLINE_LAMBDA {
            const Lanes upper = L::add(at(rows[0] + i), at(rows[1] + i)),
                        lower = L::add(at(rows[3] + i), at(rows[4] + i));
            return L::add(L::add(upper, lower), at(rows[2] + i));
        };
        Number* const variations = s.template row<Plane::passing>(0, 0);
        Number* const gradients = s.template row<Plane::passing>(0, 1);
        s.eachLane(4, [=](int32_t i) KRO_INLINE_LAMBDA {
            L::storeLanes(variations + i, sum(variation, i));
            L::storeLanes(gradients + i, sum(gradient, i));
        });
    }

    // ---- the difference of colour and green ----

    // Of the estimate across, from 0 to 4: the one direction counts more the less its differences vary.
    static KRO_INLINE Lanes weightAcross(Lanes across, Lanes down) {
        const Lanes quarterAcross = L::template shiftRight<2>(across), quarterDown = L::template shiftRight<2>(down);
        const Lanes littleAcross = L::add(quarterAcross, L::template shiftRight<3>(across));
        const Lanes littleDown = L::add(quarterDown, L::template shiftRight<3>(down));
        Lanes weight = L::all(2);
        weight = L::raised(L::greater(L::sub(down, quarterDown), across), weight);
        weight = L::raised(L::greater(littleDown, across), weight);
        weight = L::lowered(L::greater(L::sub(across, quarterAcross), down), weight);
        return L::lowered(L::greater(littleAcross, down), weight);
    }
    static KRO_INLINE Lanes threeColumns(const Number* sums) { return L::add(beside(sums), at(sums)); }

    static KRO_OUTLINE void weigh(FineStrip& s, int32_t y, bool colourOdd) {
        const int32_t half = colourOdd ? 1 : 0;
        const auto variations = s.template everySecond<Plane::variationAcross>(y);
        const auto gradients = s.template everySecond<Plane::gradientAcross>(y);
        const Number* const variationsDown = s.template row<Plane::passing>(0, 0);
        const Number* const gradientsDown = s.template row<Plane::passing>(0, 1);
        const Number *const estimate = s.template row<Plane::estimateAcross>(y),
                            *const rough = s.template row<Plane::roughAcross>(y);
        const Number* const down[3] = {s.template row<Plane::differencesDown>(y - 1, half),
                                       s.template row<Plane::differencesDown>(y, half),
                                       s.template row<Plane::differencesDown>(y + 1, half)};
        const Number* const samples[3] = {s.template row<Plane::samples>(y - 2, half),
                                          s.template row<Plane::samples>(y, half),
                                          s.template row<Plane::samples>(y + 2, half)};
        Number *const made = s.template row<Plane::difference>(y), *const weights = s.template row<Plane::weight>(y);
        s.eachLane(3, [=](int32_t i) KRO_INLINE_LAMBDA {
            const Lanes across = variations.sum(i), below = threeColumns(variationsDown + i);
            const Lanes least = L::least(across, below);
            const Lanes activity = L::least(gradients.sum(i), threeColumns(gradientsDown + i));
            const auto notRough = L::greater(L::add(activity, L::template shiftRight<1>(activity)), least);
            const Lanes weight = weightAcross(across, below);
            const Lanes here = at(down[1] + i), farSamples = L::add(at(samples[0] + i), at(samples[2] + i));
            const Lanes plain = L::sub(twice(here), L::add(at(down[0] + i), at(down[2] + i)));
            const Lanes estimateDown =
                L::select(notRough, plain, roughEstimate(here, at(samples[1] + i), farSamples));
            const Lanes estimateOver = L::select(notRough, at(estimate + i), at(rough + i));
            const Lanes weighed =
                L::add(L::template shiftLeft<2>(estimateDown), L::mul(weight, L::sub(estimateOver, estimateDown)));
            L::storeLanes(made + i, L::template shiftRight<3>(L::add(weighed, L::all(4))));
            L::storeLanes(weights + i, L::select(L::greater(activity, least), weight, L::all(-1)));
        });
    }
    struct ThreeRows {
        const Number *above, *here, *below;
        KRO_INLINE Lanes sum(int32_t i) const { return L::add(L::add(at(above + i), at(below + i)), at(here + i)); }
        KRO_INLINE Lanes outer(int32_t i) const { return L::add(at(above + i), at(below + i)); }
    };
    // Rows y - 2, y, y + 2: those whose red or blue stands in the same columns.
    template <Plane plane>
    KRO_INLINE ThreeRows everySecond(int32_t y, int32_t half = 0) {
        return {row<plane>(y - 2, half), row<plane>(y, half), row<plane>(y + 2, half)};
    }

    // Smooth neighbourhoods average differences once more, along the same direction.
    static KRO_OUTLINE void greens(FineStrip& s, int32_t y, bool colourOdd) {
        const auto differences = s.template everySecond<Plane::difference>(y);
        const Number *const weights = s.template row<Plane::weight>(y), *const samples =
                                                                            s.template row<Plane::samples>(
                                                                                y, colourOdd ? 1 : 0);
        Number* const made = s.template row<Plane::colourMinusGreen>(y);
        const Lanes top = s.top_;
        s.eachLane(2, [=](int32_t i) KRO_INLINE_LAMBDA {
            const Lanes own = at(differences.here + i), weight = at(weights + i), sample = at(samples + i);
            const Lanes across = beside(differences.here + i), down = differences.outer(i);
            const Lanes sum = L::add(L::add(L::template shiftLeft<3>(own), L::template shiftLeft<2>(down)),
                                     L::mul(weight, L::sub(across, down)));
            const Lanes smoothed = L::template shiftRight<4>(L::add(sum, L::all(8)));
            const Lanes eighths = L::select(L::greater(weight, L::all(-1)), smoothed, own);
            const Lanes rounded = L::template shiftRight<3>(L::add(eighths, L::all(4)));
            L::storeLanes(made + i, L::sub(sample, L::clamp(L::sub(sample, rounded), top)));
        });
    }

    // ---- how a colour follows green ----

    // Sums over the four nearest sites of the same colour, of how much changes from site to site if a colour stays
    // as it is (slope 0), follows green by half (1) or wholly (2).
    struct Changes {
        Lanes kept, half, whole;
        KRO_INLINE Changes with(Lanes sampleChange, Lanes differenceChange) const {
            return {L::add(kept, L::absolute(sampleChange)),
                    L::add(half, L::absolute(L::add(sampleChange, differenceChange))),
                    L::add(whole, L::absolute(differenceChange))};
        }
    };
    static KRO_OUTLINE void slopes(FineStrip& s, int32_t y, bool colourOdd) {
        const auto samples = s.template everySecond<Plane::samples>(y, colourOdd ? 1 : 0);
        const auto differences = s.template everySecond<Plane::colourMinusGreen>(y);
        Number *const slope = s.template row<Plane::slope>(y), *const offset = s.template row<Plane::offset>(y);
        s.eachLane(1, [=](int32_t i) KRO_INLINE_LAMBDA {
            const Lanes sample = at(samples.here + i), difference = at(differences.here + i);
            const auto to = [&](const Number* otherSample, const Number* otherDifference,
                                const Changes& sums) KRO_INLINE_LAMBDA {
                return sums.with(L::sub(at(otherSample), sample), L::sub(at(otherDifference), difference));
            };
            Changes sums{L::all(0), L::all(0), L::all(0)};
            sums = to(samples.here + i - 1, differences.here + i - 1, sums);
            sums = to(samples.here + i + 1, differences.here + i + 1, sums);
            sums = to(samples.above + i, differences.above + i, sums);
            sums = to(samples.below + i, differences.below + i, sums);
            storeModel(slope + i, offset + i, slopeOf(sums), sample, difference);
        });
        s.wholeAtSides(y, slope, offset, colourOdd);
    }
    // A slope below 2 must change less by a quarter, and by 8.
    static KRO_INLINE Lanes slopeOf(const Changes& sums) {
        const Lanes least = L::sub(L::sub(sums.whole, L::template shiftRight<2>(sums.whole)), L::all(8));
        const auto byHalf = L::greater(twice(least), sums.half);
        const Lanes left = L::select(byHalf, L::template shiftRight<1>(sums.half), least);
        return L::select(L::greater(left, sums.kept), L::all(0), L::lowered(byHalf, L::all(2)));
    }
    static KRO_INLINE void storeModel(Number* slope, Number* offset, Lanes made, Lanes sample, Lanes difference) {
        L::storeLanes(slope, made);
        L::storeLanes(offset, L::sub(twice(sample), L::mul(made, L::sub(sample, difference))));
    }
    // In the frame's outer two rows and columns colours follow green wholly: the offset is twice the difference.
    void wholeAtSides(int32_t y, Number* slope, Number* offset, bool colourOdd) {
        const Number* const difference = row<Plane::colourMinusGreen>(y);
        const auto whole = [=](int32_t begin, int32_t end) {
            for (int32_t i = begin; i < end; ++i) {
                slope[i] = 2;
                offset[i] = static_cast<Number>(2 * difference[i]);
            }
        };
        const int32_t lanes = (count_ + 1) / 2;
        if (y < 2 || y >= job_.height - 2) {
            whole(-1, lanes + 1);
            return;
        }
        if (frame_.begin == 0) {
            whole(-1, 1);
        }
        if (frame_.end == count_) {  // columns from two before the end on
            const int32_t odd = colourOdd ? 1 : 0;
            whole((count_ - 1 - odd) >> 1, lanes + 1);
        }
    }
};

}  // namespace
}  // namespace kro
