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
    while (index < 0 || index >= n) {
        index = mirrored(index, n);
    }
    return index;
}

// Lanes that hold the even or the odd columns of a block.
template <class S, class Sample>
using SiteLanes = std::conditional_t<sizeof(Sample) == 1, typename S::Bytes, typename S::Dwords>;

// `colourOdd`: red or blue stands in the odd columns of a row. The green sites west and east of colour site i of a
// row are i - 1 + e and i + e, the colour sites beside green site i are i - e and i + 1 - e.
template <bool colourOdd>
constexpr int32_t eastern = colourOdd ? 1 : 0;

// Bound by the number of instructions: with AVX2 17 a pixel where edge-directed has 3.3 (BGR8, 1280x960; an AMD Zen 5
// server core executes four a cycle of both). Of these models take 45 in 100, differences 21, pixels 16, estimates
// 10, samples 5. A seventh is spent on columns beside the strips, a sixth on addresses and calls: a row of a strip is
// six blocks long, three of AVX-512.
template <class S, class Sample>
class FineStrip {
    using V = BackEnd<S, Sample>;
    using L = SiteLanes<S, Sample>;
    using Lanes = typename L::Lanes;

public:
    using Number = typename L::Number;

    static constexpr int32_t next = Planes<Number>::lanes;  // from a half row to the next
    static constexpr int32_t reach = 12;  // columns beside a strip that its pixels depend on, rounded up
    static constexpr int32_t mostColumns = 2 * next - 2 * reach;

    // Steps are counted by the row whose differences down they make: the first one, and how far behind it pixels are.
    static constexpr int32_t stepsBefore = 8, rowsBehind = 10;

    FineStrip(const FrameJob& job, Columns columns)
        : job_(job),
          first_(columns.begin),
          count_(columns.end - columns.begin),
          frame_{-columns.begin, job.width - columns.begin},
          seen_{first_ == 0 ? 0 : -reach, frame_.end == count_ ? count_ : ((count_ + 1) & ~1) + reach},
          inPlace_(readInPlace<Sample>(job.source) ? static_cast<const Sample*>(job.source.samples) + first_
                                                   : nullptr),
          top_(L::all(sizeof(Sample) == 1 ? 255 : job.top)) {
        const int32_t first = job.rows.begin - stepsBefore;
        planes_.moveTo(first);
        for (int32_t y = first - 2; y < first + 2; ++y) {
            load(y);
        }
    }

    // A step's passes before its pixels are made, and after. What a pass reads some lanes beside those that another
    // one has just stored would wait for the cache: other work stands between such two.
    KRO_INLINE void beginStep(int32_t y) {
        planes_.moveTo(y);
        load(y + 2);
        (colourIsOdd(y - 2) ? estimatesAcross<true> : estimatesAcross<false>)(*this, y - 2);
        (colourIsOdd(y - 1) ? differences<true> : differences<false>)(*this, y);
    }
    KRO_INLINE void endStep(int32_t y) { models(*this, y - 4, colourIsOdd(y - 4) ? 1 : 0); }

    bool colourIsOdd(int32_t y) const { return phaseOfRow(job_.phase, y).greenFirst; }
    Strip strip() const { return {first_, {0, count_}, frame_}; }
    // The first half row of a plane's row; lane 0 belongs to the strip's first two columns.
    template <Plane plane>
    KRO_INLINE Number* row(int32_t y) {
        return planes_.template row<plane>(y) + reach / 2;
    }

private:
    const FrameJob& job_;
    const int32_t first_, count_;
    const Columns frame_;
    const Columns seen_;  // of which samples are read; what lies beyond is mirrored
    const Sample* const inPlace_;
    const Lanes top_;
    alignas(64) Sample prepared_[2 * next] = {};
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
        const int32_t frameRow = mirroredFar(y, job_.height);
        Number* const samples = row<Plane::samples>(y);
        if (inPlace_ != nullptr) {
            split(advanced(inPlace_, frameRow * job_.source.stride), seen_, samples);
        } else {
            readRun<S>(job_, frameRow, {first_ + seen_.begin, first_ + seen_.end}, prepared_);
            split(prepared_ - seen_.begin, seen_, samples);
        }
        if (first_ == 0 || frame_.end == count_) {
            mirrorBeside(samples);
        }
    }
    static KRO_INLINE int32_t laneOf(int32_t x) { return (x - (x & 1)) / 2; }
    static KRO_INLINE Number& sampleAt(Number* samples, int32_t x) { return samples[(x & 1) * next + laneOf(x)]; }
    // From the frame's sides on outwards, in turns: of a narrow frame what is mirrored at the one side is mirrored
    // once more at the other.
    KRO_OUTLINE void mirrorBeside(Number* samples) const {
        const bool left = first_ == 0, right = frame_.end == count_;
        for (int32_t k = 1; k <= reach + 1; ++k) {
            if (left && k <= reach) {
                sampleAt(samples, -k) = sampleAt(samples, k);
            }
            if (right) {
                sampleAt(samples, count_ - 1 + k) = sampleAt(samples, count_ - 1 - k);
            }
        }
    }
    static KRO_INLINE void split(const Sample* in, Columns seen, Number* samples) {
        const auto block = [&](int32_t x) KRO_INLINE_LAMBDA {
            const auto both = V::load(in + x);
            L::storeLanes(samples + laneOf(x), L::low(both));
            L::storeLanes(samples + next + laneOf(x), L::high(both));
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
            sampleAt(samples, x) = in[x];
        }
    }

    // ---- differences of the two colours of a row or a column ----

    // Twice the site and the mean of its neighbours in the same colour, minus twice the other colour beside it.
    static KRO_INLINE Lanes difference(Lanes before2, Lanes before, Lanes here, Lanes after, Lanes after2) {
        const Lanes own = L::add(L::add(before2, after2), L::add(here, here));
        const Lanes other = L::add(before, after);
        return L::sub(own, L::add(other, other));
    }
    // Variations and gradients are compared with each other; of words both are smaller by four bits, so that sums of
    // 12 bits are those of bytes.
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

    // Rows around the one that differences down are made of: samples from two above to two below, differences of two
    // above and of its own, and changes of four rows, of which the first gives way to the newest.
    struct RowsDown {
        const Number* samples[5];
        const Number* before;
        Number* difference;
        Number* changes[4];
    };
    RowsDown rowsDown(int32_t y) {
        RowsDown rows{};
        for (int32_t k = 0; k < 5; ++k) {
            rows.samples[k] = row<Plane::samples>(y - 2 + k);
        }
        rows.before = row<Plane::differencesDown>(y - 2);
        rows.difference = row<Plane::differencesDown>(y);
        for (int32_t k = 0; k < 4; ++k) {
            rows.changes[k] = row<Plane::changesDown>(y - 5 + k);
        }
        return rows;
    }

    // Differences down to row y; with them variation and gradient of the row above are complete, and their sums of
    // the row two further up. Differences across, of the row above.
    template <bool colourOdd>
    static KRO_OUTLINE void differences(FineStrip& s, int32_t y) {
        constexpr int32_t colours = colourOdd ? next : 0, greens = next - colours;
        const RowsDown rows = s.rowsDown(y);
        Number *const sums = s.template row<Plane::sumsDown>(y - 3), *const across =
                                                                         s.template row<Plane::passing>(0);
        s.eachLane(5, [=](int32_t i) KRO_INLINE_LAMBDA {
            const Down down = downOf(rows, i + colours);
            L::storeLanes(sums + i, L::add(sumOf(rows.changes, i + 2 * colours), down.variation));
            L::storeLanes(sums + next + i, L::add(sumOf(rows.changes, i + 2 * colours + next), down.gradient));
            store(rows, i + colours, i + 2 * colours, down);
            store(rows, i + greens, i + 2 * greens, downOf(rows, i + greens));
            acrossRow<colourOdd>(rows.samples[1] + colours + i, rows.samples[1] + greens + i, across + i);
        });
    }
    struct Down {
        Lanes difference, variation, gradient;
    };
    static KRO_INLINE Down downOf(const RowsDown& in, int32_t i) {
        const auto sample = [&](int k) KRO_INLINE_LAMBDA { return at(in.samples[k] + i); };
        const Lanes north2 = sample(0), here = sample(2);
        const Lanes made = difference(north2, sample(1), here, sample(3), sample(4));
        return {made, variation(at(in.before + i), made), gradient(north2, here)};
    }
    static KRO_INLINE void store(const RowsDown& out, int32_t i, int32_t change, const Down& made) {
        L::storeLanes(out.difference + i, made.difference);
        L::storeLanes(out.changes[0] + change, made.variation);
        L::storeLanes(out.changes[0] + change + next, made.gradient);
    }
    static KRO_INLINE Lanes sumOf(Number* const (&rows)[4], int32_t i) {
        return L::add(L::add(at(rows[0] + i), at(rows[1] + i)), L::add(at(rows[2] + i), at(rows[3] + i)));
    }
    template <bool colourOdd>
    static KRO_INLINE void acrossRow(const Number* colour, const Number* green, Number* made) {
        constexpr int32_t e = eastern<colourOdd>;
        const Lanes west = at(green - 1 + e), east = at(green + e);
        const Lanes westColour = at(colour - e), eastColour = at(colour + 1 - e);
        const Lanes c = difference(at(colour - 1), west, at(colour), east, at(colour + 1));
        const Lanes g = difference(at(green - 1), westColour, at(green), eastColour, at(green + 1));
        L::storeLanes(made + colourDifference, c);
        L::storeLanes(made + greenDifference, g);
    }

    // Half rows on their way to the next pass: differences across, of colour and green sites; variations of a colour
    // site, and with that of the green site east of it; gradients likewise.
    enum Passing : int32_t {
        colourDifference = 0,
        greenDifference = next,
        ownVariation = 2 * next,
        bothVariations = 3 * next,
        ownGradient = 4 * next,
        bothGradients = 5 * next
    };

    // ---- estimates at red and blue sites; variations and gradients across ----

    template <bool colourOdd>
    static KRO_OUTLINE void estimatesAcross(FineStrip& s, int32_t y) {
        constexpr int32_t e = eastern<colourOdd>;
        const Number* const samples = s.template row<Plane::samples>(y);
        Number *const passing = s.template row<Plane::passing>(0), *const made = s.template row<Plane::estimates>(y);
        s.eachLane(4, [=](int32_t i) KRO_INLINE_LAMBDA {
            Number* const here = passing + i;
            const Number* const colour = samples + (colourOdd ? next : 0) + i;
            const Number* const green = samples + (colourOdd ? 0 : next) + i;
            const Lanes west = at(here + greenDifference - 1 + e), east = at(here + greenDifference + e);
            const Lanes own = at(here + colourDifference), nextOwn = at(here + colourDifference + 1);
            const Lanes sample = at(colour), eastSample = at(colour + 1), westSample = at(colour - 1);
            const Lanes ownVaries = variation(west, east), ownChanges = gradient(at(green - 1 + e), at(green + e));
            L::storeLanes(here + ownVariation, ownVaries);
            L::storeLanes(here + bothVariations, L::add(ownVaries, variation(own, nextOwn)));
            L::storeLanes(here + ownGradient, ownChanges);
            L::storeLanes(here + bothGradients, L::add(ownChanges, gradient(sample, eastSample)));
            L::storeLanes(made + i, plainEstimate(west, own, east));
            L::storeLanes(made + next + i, roughEstimate(own, sample, L::add(westSample, eastSample)));
        });
    }
    static KRO_INLINE Lanes plainEstimate(Lanes before, Lanes here, Lanes after) {
        return L::sub(twice(here), L::add(before, after));
    }
    static KRO_INLINE Lanes roughEstimate(Lanes difference, Lanes sample, Lanes farSamples) {
        return twice(L::sub(twice(L::add(difference, sample)), farSamples));
    }

    // ---- the difference of colour and green ----

    // Rows around the one whose differences are weighed, of its red or blue columns; what is made of these in the
    // same loop lies two and four rows above it. Where the newest of three rows is stored, it takes the place of the
    // first.
    struct ModelRows {
        const Number* passing;
        Number* sumsAcross[2];  // from two above
        const Number *sumsDown, *estimates;
        const Number* down[3];
        const Number* samples[5];     // every second row, from six above to two below
        Number* difference[2];        // from four above
        Number* weight;               // of two above
        Number* colourMinusGreen[2];  // from six above
        Number* model;                // of four above
    };
    ModelRows modelRows(int32_t y, int32_t half) {
        const int32_t on = half * next;
        ModelRows rows{};
        for (int32_t k = 0; k < 2; ++k) {
            rows.sumsAcross[k] = row<Plane::sumsAcross>(y - 2 + 2 * k);
            rows.difference[k] = row<Plane::difference>(y - 4 + 2 * k);
            rows.colourMinusGreen[k] = row<Plane::colourMinusGreen>(y - 6 + 2 * k);
        }
        for (int32_t k = 0; k < 3; ++k) {
            rows.down[k] = row<Plane::differencesDown>(y - 1 + k) + on;
        }
        for (int32_t k = 0; k < 5; ++k) {
            rows.samples[k] = row<Plane::samples>(y - 6 + 2 * k) + on;
        }
        rows.passing = row<Plane::passing>(0);
        rows.sumsDown = row<Plane::sumsDown>(y);
        rows.estimates = row<Plane::estimates>(y);
        rows.weight = row<Plane::weight>(y - 2);
        rows.model = row<Plane::models>(y - 4);
        return rows;
    }

    // Differences of row y, greens of the row two above and models of the row four above: each needs of the row that
    // was made just before it the same columns only.
    static KRO_OUTLINE void models(FineStrip& s, int32_t y, int32_t half) {
        const ModelRows rows = s.modelRows(y, half);
        const Lanes top = s.top_;
        s.eachLane(3, [=](int32_t i) KRO_INLINE_LAMBDA {
            const Lanes weightAbove = at(rows.weight + i);
            const Lanes difference = weighed(rows, i);
            const Lanes colourMinusGreen = smoothed(rows, i, weightAbove, difference, top);
            model(rows, i, colourMinusGreen);
        });
        s.wholeAtSides(y - 4, half, rows.colourMinusGreen[1], rows.model);
    }

    // Over five columns, and rows y - 2, y and y + 2: those whose red or blue stands in the same columns.
    static KRO_INLINE Lanes sumAcross(const Number* own, const Number* both, Number* above, const Number* here) {
        const Lanes below = L::add(L::add(at(both - 1), at(both)), at(own + 1));
        const Lanes sum = L::add(L::add(at(above), at(here)), below);
        L::storeLanes(above, below);
        return sum;
    }
    static KRO_INLINE Lanes threeColumns(const Number* sums) { return L::add(beside(sums), at(sums)); }

    static KRO_INLINE Lanes weighed(const ModelRows& rows, int32_t i) {
        Number *const above = rows.sumsAcross[0] + i, *const here = rows.sumsAcross[1] + i;
        const Number* const fresh = rows.passing + i;
        const Lanes across = sumAcross(fresh + ownVariation, fresh + bothVariations, above, here);
        const Lanes changes = sumAcross(fresh + ownGradient, fresh + bothGradients, above + next, here + next);
        const Lanes down = threeColumns(rows.sumsDown + i);
        const Lanes least = L::least(across, down);
        const Lanes activity = L::least(changes, threeColumns(rows.sumsDown + next + i));
        const auto notRough = L::greater(L::add(activity, L::template shiftRight<1>(activity)), least);
        const Lanes estimateAcross = L::select(notRough, at(rows.estimates + i), at(rows.estimates + next + i));
        const Lanes estimateDown = L::select(notRough, plainDown(rows, i), roughDown(rows, i));
        const Lanes weight = weightAcross(across, down);
        const Lanes sum =
            L::add(L::template shiftLeft<2>(estimateDown), L::mul(weight, L::sub(estimateAcross, estimateDown)));
        L::storeLanes(rows.weight + i, L::select(L::greater(activity, least), weight, L::all(-1)));
        return L::template shiftRight<3>(L::add(sum, L::all(4)));
    }
    static KRO_INLINE Lanes plainDown(const ModelRows& rows, int32_t i) {
        return plainEstimate(at(rows.down[0] + i), at(rows.down[1] + i), at(rows.down[2] + i));
    }
    static KRO_INLINE Lanes roughDown(const ModelRows& rows, int32_t i) {
        return roughEstimate(at(rows.down[1] + i), at(rows.samples[3] + i),
                             L::add(at(rows.samples[2] + i), at(rows.samples[4] + i)));
    }
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

    // Two rows above: smooth neighbourhoods average differences once more, along the same direction.
    static KRO_INLINE Lanes smoothed(const ModelRows& rows, int32_t i, Lanes weight, Lanes differenceBelow,
                                     Lanes top) {
        const Lanes own = at(rows.difference[1] + i), sample = at(rows.samples[2] + i);
        const Lanes across = beside(rows.difference[1] + i),
                    down = L::add(at(rows.difference[0] + i), differenceBelow);
        L::storeLanes(rows.difference[0] + i, differenceBelow);
        const Lanes sum = L::add(L::add(L::template shiftLeft<3>(own), L::template shiftLeft<2>(down)),
                                 L::mul(weight, L::sub(across, down)));
        const Lanes mean = L::template shiftRight<4>(L::add(sum, L::all(8)));
        const Lanes eighths = L::select(L::greater(weight, L::all(-1)), mean, own);
        const Lanes rounded = L::template shiftRight<3>(L::add(eighths, L::all(4)));
        return L::sub(sample, L::clamp(L::sub(sample, rounded), top));
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
    // Four rows above.
    static KRO_INLINE void model(const ModelRows& rows, int32_t i, Lanes differenceBelow) {
        const Number *const samples = rows.samples[1] + i, *const differences = rows.colourMinusGreen[1] + i;
        const Lanes sample = at(samples), difference = at(differences);
        const auto to = [&](Lanes otherSample, Lanes otherDifference, const Changes& sums) KRO_INLINE_LAMBDA {
            return sums.with(L::sub(otherSample, sample), L::sub(otherDifference, difference));
        };
        Changes sums{L::all(0), L::all(0), L::all(0)};
        sums = to(at(samples - 1), at(differences - 1), sums);
        sums = to(at(samples + 1), at(differences + 1), sums);
        sums = to(at(rows.samples[0] + i), at(rows.colourMinusGreen[0] + i), sums);
        sums = to(at(rows.samples[2] + i), differenceBelow, sums);
        L::storeLanes(rows.colourMinusGreen[0] + i, differenceBelow);
        const Lanes slope = slopeOf(sums);
        L::storeLanes(rows.model + i, slope);
        const Lanes offset = L::sub(twice(sample), L::mul(slope, L::sub(sample, difference)));
        L::storeLanes(rows.model + next + i, L::add(offset, L::all(1)));
    }
    // A slope below 2 must change less by a quarter, and by 8.
    static KRO_INLINE Lanes slopeOf(const Changes& sums) {
        const Lanes least = L::sub(L::sub(sums.whole, L::template shiftRight<2>(sums.whole)), L::all(8));
        const auto byHalf = L::greater(twice(least), sums.half);
        const Lanes left = L::select(byHalf, L::template shiftRight<1>(sums.half), least);
        return L::select(L::greater(left, sums.kept), L::all(0), L::lowered(byHalf, L::all(2)));
    }
    // In the frame's outer two rows and columns colours follow green wholly: the offset is twice the difference.
    KRO_INLINE void wholeAtSides(int32_t y, int32_t half, const Number* differences, Number* model) const {
        const int32_t lanes = (count_ + 1) / 2;
        if (y < 2 || y >= job_.height - 2) {
            whole({-1, lanes + 1}, differences, model);
            return;
        }
        if (first_ == 0) {
            whole({-1, 1}, differences, model);
        }
        if (frame_.end == count_) {
            whole({(count_ - 1 - half) >> 1, lanes + 1}, differences, model);
        }
    }
    static KRO_RARE void whole(Columns lanes, const Number* differences, Number* model) {
        for (int32_t i = lanes.begin; i < lanes.end; ++i) {
            model[i] = 2;
            model[next + i] = static_cast<Number>(2 * differences[i] + 1);
        }
    }
};

}  // namespace
}  // namespace kro
