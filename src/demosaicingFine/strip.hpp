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

// Bound by the number of operations, and by how long they wait for each other: `model` ends a chain of some forty. On
// an AMD Zen 5 server core, whose adds take two cycles, a pixel takes 2.6 cycles with AVX2 and 1.75 with AVX-512
// (BGR8, 1280x960; edge-directed .57 and .35). A block has 97 instructions of changes, which wait for their 18
// stores, 148 of models, whose loads (14 of 46 across lines with AVX-512) take nearly as long, and 50 of pixels; a
// twelfth is spent on columns beside the strips. A strip's row has eight blocks (AVX2) or four (AVX-512); what stands
// around them takes as long as most of one.
template <class S, class Sample>
class FineStrip {
    using V = BackEnd<S, Sample>;
    using L = SiteLanes<S, Sample>;
    using Lanes = typename L::Lanes;

public:
    using Number = typename L::Number;
    static constexpr int32_t lanesOfBlock = V::columns / 2;
    static constexpr int aligned = lanesOfBlock == 1 ? 16 : 64;
    using PlanesOf = Planes<Sample, Number, aligned>;

    static constexpr int32_t next = PlanesOf::lanes;  // from a half row to the next
    static constexpr int32_t beside = PlanesOf::beside;
    static constexpr int32_t reach = 2 * beside;  // columns of samples
    static constexpr int slopeBits = 4;           // of models, also of four together: 0 to 8
    static constexpr int32_t mostColumns = 2 * (next - 2 * beside);

    // Steps are counted by the row whose bends across are made: the first one, the first one whose models count, and
    // how far behind it pixels are.
    static constexpr int32_t stepsBefore = 12, modelsBefore = 6, rowsBehind = 9;

    FineStrip(const FrameJob& job, Columns columns)
        : job_(job),
          strip_(Strip::of(columns, job.width)),
          count_(strip_.made.end),
          seen_{strip_.first == 0 ? 0 : -reach, strip_.frame.end == count_ ? count_ : ((count_ + 1) & ~1) + reach},
          inPlace_(blocksInRow() && readInPlace<Sample>(job.source)
                       ? static_cast<const Sample*>(job.source.samples) + strip_.first - reach
                       : nullptr),
          passes_(passesOf(colourIsOdd(1))) {
        fresh_ = freshSamples(job.rows.begin - stepsBefore + 2);
    }

    // After it the row `rowsBehind` above y can be made.
    KRO_INLINE void step(int32_t y) {
        passes_[y & (period - 1)](*this, y);
        fresh_ = freshSamples(y + 3);
    }

    bool colourIsOdd(int32_t y) const { return phaseOfRow(job_.phase, y).greenFirst; }
    const Strip& strip() const { return strip_; }
    // The first half row of a plane's row; lane 0 belongs to the strip's first two columns.
    template <Plane plane>
    KRO_INLINE Number* row(int32_t y) {
        return planes_.template row<plane>(y) + beside;
    }
    KRO_INLINE Sample* samples(int32_t y) { return planes_.samples(y) + beside; }

private:
    // How far ahead samples are asked for: a strip has a row done before memory answers (Zen 5, beside one row: 12
    // Mpixel AVX-512 1.1, AVX2 1.03, smaller ones 1 to 1.03).
    static constexpr int32_t rowsBelow = 3;
    // Sums lie where the row's estimates are put one step later.
    static constexpr Plane sumsDown = Plane::estimatesDown;

    const FrameJob& job_;
    const Strip strip_;
    const int32_t count_;  // of columns
    const Columns seen_;   // of the frame, that pixels depend on; what lies beyond is mirrored
    const Sample* const inPlace_;
    using Passes = void (*)(FineStrip& s, int32_t y);
    const Passes* const passes_;  // of rows modulo four
    const Sample* fresh_;         // the row two below that of the next step, from `reach` columns before the strip on
    alignas(aligned) Sample prepared_[2 * next] = {};
    PlanesOf planes_;

    // A block of lanes of the rows around row y, which is `turn` modulo four. Rows are named by their distance from
    // y; `colourOdd` is that of the rows one, three, five, ... above.
    template <int turn, bool colourOdd>
    struct Block {
        FineStrip* strip;
        Sample* groups[3];  // of samples, four rows each
        ptrdiff_t i;

        template <Plane plane>
        KRO_INLINE Number* row(int32_t k, int32_t part = 0) const {
            return strip->template row<plane>(turn + k) + part * next + i;
        }
        KRO_INLINE Sample* samples(int32_t k, bool odd) const {
            return groups[(((turn + k) >> 2) + 3) % 3] + (2 * ((turn + k) & 3) + odd) * next + i;
        }
        KRO_INLINE const Sample* colours(int32_t k) const { return samples(k, colourOdd); }
        KRO_INLINE const Sample* greens(int32_t k) const { return samples(k, !colourOdd); }
    };
    // Blocks that cover the strip's lanes and `more` at both ends.
    template <int turn, bool colourOdd, class Formula>
    KRO_INLINE void eachBlock(int32_t group, int32_t more, const Formula& formula) {
        const ptrdiff_t end = endOfBlocks(more);
        for (auto block = firstBlock<turn, colourOdd>(group, more); block.i < end; block.i += lanesOfBlock) {
            formula(block);
        }
    }
    template <int turn, bool colourOdd>
    KRO_INLINE Block<turn, colourOdd> firstBlock(int32_t group, int32_t more) {
        const auto samplesOf = [&](int32_t k)
                                   KRO_INLINE_LAMBDA { return planes_.samplesOfGroup(group + k) + beside; };
        return {this, {samplesOf(0), samplesOf(1), samplesOf(-1)}, lanesOfBlock == 1 ? -more : -beside};
    }
    KRO_INLINE ptrdiff_t endOfBlocks(int32_t more) const { return (count_ + 1) / 2 + more; }

    // `colourOdd`: of odd rows, which are those one, three, five above an even one.
    static KRO_INLINE const Passes* passesOf(bool colourOdd) {
        static constexpr Passes passes[2][period] = {
            {makePlanes<0, false>, makePlanes<1, true>, makePlanes<2, false>, makePlanes<3, true>},
            {makePlanes<0, true>, makePlanes<1, false>, makePlanes<2, true>, makePlanes<3, false>}};
        return passes[colourOdd];
    }
    // Models of the step before, then changes; pixels follow. What a pass reads some lanes beside those that another
    // one has just stored would wait for the cache: pixels stand between changes, or samples that are prepared, and
    // what reads them.
    template <int turn, bool colourOdd>
    static KRO_OUTLINE void makePlanes(FineStrip& s, int32_t y) {
        const int32_t group = y >> 2;
        if (y > s.job_.rows.begin - modelsBefore) {
            models<(turn + 3) % period, !colourOdd>(s, turn == 0 ? group - 1 : group);
            s.wholeAtSides(y - 8);
        }
        changes<turn, colourOdd>(s, group);
    }

    // ---- samples ----

    // Whether all columns of the passes' blocks are columns of the frame.
    bool blocksInRow() const {
        const int32_t lanes = (count_ + 1) / 2 + 2 * beside;
        const int32_t blocks = (lanes + lanesOfBlock - 1) / lanesOfBlock;
        return strip_.first >= reach && blocks * V::columns - reach <= strip_.frame.end;
    }
    KRO_INLINE const Sample* freshSamples(int32_t y) {
        const int32_t frameRow = mirroredFar(y, job_.height);
        if (inPlace_ != nullptr) {
            return advanced(inPlace_, frameRow * job_.source.stride);
        }
        prepare(frameRow);
        return prepared_;
    }
    KRO_OUTLINE void prepare(int32_t frameRow) {
        Sample* const row = prepared_ + reach;
        readRun<S>(job_, frameRow, {strip_.first + seen_.begin, strip_.first + seen_.end}, row + seen_.begin,
                   rowsBelow);
        if (count_ <= reach) {
            mirrorFar(row);
            return;
        }
        if (strip_.first == 0) {
            mirror<-1>(row);
        }
        if (strip_.frame.end == count_) {
            mirror<1>(row + count_ - 1);
        }
    }
    // What lies beyond an end. All loads come first, or the compiler asks what overlaps in three times as many
    // instructions.
    template <int outwards>
    static KRO_INLINE void mirror(Sample* end) {
        Sample columns[reach];
        for (int32_t k = 0; k < reach; ++k) {
            columns[k] = end[-outwards * (k + 1)];
        }
        for (int32_t k = 0; k < reach; ++k) {
            end[outwards * (k + 1)] = columns[k];
        }
    }
    KRO_RARE void mirrorFar(Sample* row) const {
        for (int32_t k = 1; k <= reach; ++k) {
            row[-k] = row[mirroredFar(-k, count_)];
            row[count_ - 1 + k] = row[mirroredFar(count_ - 1 + k, count_)];
        }
    }

    // ---- how colours bend, and how much the difference of two of them changes ----

    template <class Int>
    static KRO_INLINE Lanes at(const Int* lanes) {
        return L::loadLanes(lanes);
    }
    template <class Int>
    static KRO_INLINE Lanes besides(const Int* lanes) {
        return L::add(at(lanes - 1), at(lanes + 1));
    }
    static KRO_INLINE Lanes twice(Lanes a) { return L::add(a, a); }

    // Two colours alternate in a row or a column. What a site's neighbours have more than it, twice: the bends before
    // and after a site are together four times the difference of its colour and the other one.
    static KRO_INLINE Lanes bend(Lanes before, Lanes here, Lanes after) {
        return L::sub(L::add(before, after), twice(here));
    }
    // Of the differences before and after a site, which have the bend at the site in common; left are those two
    // before and two after. Variations and gradients are compared with each other; of words both are smaller by four
    // bits, so that sums of 12 bits are those of bytes.
    static KRO_INLINE Lanes variation(Lanes before2, Lanes after2) {
        return L::template shiftRight < sizeof(Sample) == 1 ? 1 : 5 > (L::absolute(L::sub(before2, after2)));
    }
    static KRO_INLINE Lanes gradient(Lanes before, Lanes after) {
        const Lanes magnitude = L::absolute(L::sub(before, after));
        if constexpr (sizeof(Sample) == 1) {
            return magnitude;
        } else {
            return L::template shiftRight<4>(magnitude);
        }
    }
    // Estimates of a difference are twice the site's own, less what its neighbours' differ, or in rough places half
    // of what its own colour bends: of either this, less the bends two before and two after, or twice its own.
    static KRO_INLINE Lanes estimate(Lanes before, Lanes here, Lanes after) {
        return twice(L::sub(L::add(before, after), here));
    }

    // Samples of the row two below y, bends down of the row below y and across of row y; with them variations of the
    // row above are complete, and sums down of the row two further up.
    template <int turn, bool colourOdd>
    static KRO_INLINE void changes(FineStrip& s, int32_t group) {
        const Sample* const fresh = s.fresh_;
        const ptrdiff_t below = s.inPlace_ != nullptr ? rowsBelow * s.job_.source.stride : 0;
        // Blocks ask for all lines but perhaps the last.
        expectAway<V>(fresh + reach + s.seen_.end - 1, below);
        s.eachBlock<turn, colourOdd>(group, beside, [=](const auto& block) KRO_INLINE_LAMBDA {
            const Sample* const in = fresh + 2 * (block.i + beside);
            expectAway<V>(in, below);
            V::storeSites(block.samples(2, false), block.samples(2, true), V::load(in));
            const Column colour = columnOf(block, colourOdd), green = columnOf(block, !colourOdd);
            variationsAcross(block);
            bendsAcross(block, green.here, colour.here);
            changesInColourColumns(block, colour);
            changesInGreenColumns(block, green);
        });
    }
    // Samples of a column around row y.
    struct Column {
        Lanes north2, here, south, south2;
        KRO_INLINE Lanes bend() const { return FineStrip::bend(here, south, south2); }
        KRO_INLINE Lanes gradient() const { return FineStrip::gradient(north2, here); }
    };
    template <class Block>
    static KRO_INLINE Column columnOf(const Block& block, bool odd) {
        const auto sample = [&](int32_t k) KRO_INLINE_LAMBDA { return at(block.samples(k, odd)); };
        return {sample(-2), sample(0), sample(1), sample(2)};
    }

    // Of the row above. A colour site and a green one beside each other have the same lane.
    template <class Block>
    static KRO_INLINE void variationsAcross(const Block& block) {
        const Number* const bends = block.template row<Plane::bendsAcross>(-1);
        const Number* const greenBends = bends + next;
        Number* const made = block.template row<Plane::variationsAcross>(0);
        const Lanes varies = variation(at(bends - 1), at(bends + 1));
        L::storeLanes(made, varies);
        L::storeLanes(made + next, L::add(varies, variation(at(greenBends - 1), at(greenBends + 1))));
    }
    // Of row y, whose red or blue stands in the green columns of the row above.
    template <int turn, bool colourOdd>
    static KRO_INLINE void bendsAcross(const Block<turn, colourOdd>& block, Lanes colour, Lanes green) {
        constexpr int32_t aside = colourOdd ? 1 : -1;
        const Lanes otherColour = at(block.greens(0) + aside), otherGreen = at(block.colours(0) - aside);
        Number* const made = block.template row<Plane::bendsAcross>(0);
        L::storeLanes(made, bend(green, colour, otherGreen));
        L::storeLanes(made + next, bend(colour, green, otherColour));
        Number* const gradients = block.template row<Plane::gradientsAcross>(0);
        const Lanes gradual = gradient(green, otherGreen);
        L::storeLanes(gradients, gradual);
        L::storeLanes(gradients + next, L::add(gradual, gradient(colour, otherColour)));
    }
    // Sums are complete here; estimates are those of the row above.
    template <int turn, bool colourOdd>
    static KRO_INLINE void changesInColourColumns(const Block<turn, colourOdd>& block, const Column& column) {
        const auto bendAt = [&](int32_t k)
                                KRO_INLINE_LAMBDA { return at(block.template row<Plane::bendsDown>(k, colourOdd)); };
        Number* const place = block.template row<Plane::bendsDown>(1, colourOdd);
        const Lanes before2 = bendAt(-3), made = column.bend();
        L::storeLanes(place, made);
        const Lanes varies = variation(before2, made), gradual = column.gradient();
        Number* const oldest = block.template row<Plane::changesDown>(-5);
        const Number* const older = block.template row<Plane::changesDown>(-3);
        Number* const sums = block.template row<sumsDown>(0);
        L::storeLanes(sums, L::add(L::add(at(oldest), at(older)), varies));
        L::storeLanes(sums + next, L::add(L::add(at(oldest + next), at(older + next)), gradual));
        Number* const newest = block.template row<Plane::changesDown>(-1);
        L::storeLanes(newest, varies);
        L::storeLanes(newest + next, gradual);
        const Lanes here = bendAt(-1), common = estimate(bendAt(-2), here, bendAt(0));
        Number* const estimates = block.template row<Plane::estimatesDown>(-1);
        L::storeLanes(estimates, L::sub(common, L::add(before2, made)));
        L::storeLanes(estimates + next, L::sub(common, twice(here)));
    }
    // The second row of a pair.
    template <int turn, bool colourOdd>
    static KRO_INLINE void changesInGreenColumns(const Block<turn, colourOdd>& block, const Column& column) {
        Number* const place = block.template row<Plane::bendsDown>(1, !colourOdd);
        const Lanes before2 = at(place), made = column.bend();
        L::storeLanes(place, made);
        Number* const pair = block.template row<Plane::changesDown>(-2);
        L::storeLanes(pair, L::add(at(pair), variation(before2, made)));
        L::storeLanes(pair + next, L::add(at(pair + next), column.gradient()));
    }

    // ---- the difference of colour and green ----

    // Differences of the row three above y, greens of the row five above and models of the row seven above: each
    // needs of the row that was made just before it the same columns only. The last two are made a block later, so
    // that what waits for each other is not all that a processor sees of the row (Zen 5: a twentieth less time; in
    // single lanes, where registers are few, a fifth more).
    template <int turn, bool colourOdd>
    static KRO_INLINE void models(FineStrip& s, int32_t group) {
        const Lanes top = L::all(sizeof(Sample) == 1 ? 255 : s.job_.top);
        if constexpr (lanesOfBlock == 1) {
            s.eachBlock<turn, colourOdd>(group, 3, [top](const auto& block) KRO_INLINE_LAMBDA {
                model(block, smoothed(block, weighed(block), top));
            });
            return;
        }
        const ptrdiff_t end = s.endOfBlocks(3);
        auto block = s.firstBlock<turn, colourOdd>(group, 3), before = block;
        Weighed below = weighed(block);
        for (block.i += lanesOfBlock; block.i < end; block.i += lanesOfBlock) {
            const Weighed fresh = weighed(block);
            model(before, smoothed(before, below, top));
            below = fresh;
            before = block;
        }
        model(before, smoothed(before, below, top));
    }
    struct Weighed {
        Lanes difference, weight;
    };

    // Over five columns, and the rows five, three and one above y: those whose red or blue stands in the same
    // columns. The newest takes the place of the first.
    template <bool colourOdd>
    static KRO_INLINE Lanes sumAcross(const Number* own, Number* above, const Number* here) {
        constexpr int32_t aside = colourOdd ? 1 : -1;
        const Number* const both = own + next;
        const Lanes below = L::add(L::add(at(both + aside), at(both)), at(own - aside));
        const Lanes sum = L::add(L::add(at(above), at(here)), below);
        L::storeLanes(above, below);
        return sum;
    }
    static KRO_INLINE Lanes threeColumns(const Number* sums) { return L::add(besides(sums), at(sums)); }

    template <int turn, bool colourOdd>
    static KRO_INLINE Weighed weighed(const Block<turn, colourOdd>& block) {
        Number* const above = block.template row<Plane::sumsAcross>(-5);
        const Number* const here = block.template row<Plane::sumsAcross>(-3);
        const Number* const sums = block.template row<sumsDown>(0);
        const Lanes across = sumAcross<colourOdd>(block.template row<Plane::variationsAcross>(0), above, here);
        const Lanes changes =
            sumAcross<colourOdd>(block.template row<Plane::gradientsAcross>(-1), above + next, here + next);
        const Lanes down = threeColumns(sums);
        const Lanes least = L::least(across, down);
        const Lanes activity = L::least(changes, threeColumns(sums + next));
        const auto notRough = L::greater(L::add(activity, L::template shiftRight<1>(activity)), least);
        const Lanes estimateAcross = estimatedAcross(block, notRough);
        const Number* const estimates = block.template row<Plane::estimatesDown>(-3);
        const Lanes estimateDown = L::select(notRough, at(estimates), at(estimates + next));
        const Lanes weight = weightAcross(across, down, least);
        const Lanes sum =
            L::add(L::template shiftLeft<2>(estimateDown), L::mul(weight, L::sub(estimateAcross, estimateDown)));
        return {L::template shiftRightRounded<3>(sum), L::select(L::greater(activity, least), weight, L::all(-1))};
    }
    template <int turn, bool colourOdd, class Mask>
    static KRO_INLINE Lanes estimatedAcross(const Block<turn, colourOdd>& block, Mask notRough) {
        constexpr int32_t e = eastern<colourOdd>;
        const Number* const bends = block.template row<Plane::bendsAcross>(-3);
        const Lanes here = at(bends);
        const Lanes common = estimate(at(bends + next - 1 + e), here, at(bends + next + e));
        return L::sub(common, L::select(notRough, besides(bends), twice(here)));
    }
    // Of the estimate across, from 0 to 4: the one direction counts more the less its differences vary.
    static KRO_INLINE Lanes weightAcross(Lanes across, Lanes down, Lanes least) {
        const Lanes most = L::most(across, down), quarter = L::template shiftRight<2>(most);
        Lanes less = L::lowered(L::greater(L::sub(most, quarter), least), L::all(0));
        less = L::lowered(L::greater(L::add(quarter, L::template shiftRight<3>(most)), least), less);
        return L::add(L::all(2), L::turned(less, across, down));
    }

    // Smooth neighbourhoods average differences once more, along the same direction.
    template <class Block>
    static KRO_INLINE Lanes smoothed(const Block& block, Weighed below, Lanes top) {
        Number* const above = block.template row<Plane::difference>(-7);
        const Number* const here = block.template row<Plane::difference>(-5);
        Number* const weights = block.template row<Plane::weight>(-5);
        const Lanes own = at(here), across = besides(here), down = L::add(at(above), below.difference);
        const Lanes weight = at(weights);
        L::storeLanes(above, below.difference);
        L::storeLanes(weights, below.weight);
        const Lanes sum = L::add(L::add(L::template shiftLeft<3>(own), L::template shiftLeft<2>(down)),
                                 L::mul(weight, L::sub(across, down)));
        const Lanes mean = L::template shiftRightRounded<4>(sum);
        const Lanes eighths = L::select(L::greater(L::all(0), weight), own, mean);
        const Lanes rounded = L::template shiftRightRounded<3>(eighths);
        const Lanes sample = at(block.colours(-5));
        return L::least(L::most(rounded, L::sub(sample, top)), sample);
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
    template <class Block>
    static KRO_INLINE void model(const Block& block, Lanes differenceBelow) {
        const Sample* const samples = block.colours(-7);
        const Number* const differences = block.template row<Plane::colourMinusGreen>(-7);
        Number* const above = block.template row<Plane::colourMinusGreen>(-9);
        const Lanes sample = at(samples), difference = at(differences);
        const auto to = [&](Lanes otherSample, Lanes otherDifference, const Changes& sums) KRO_INLINE_LAMBDA {
            return sums.with(L::sub(otherSample, sample), L::sub(otherDifference, difference));
        };
        Changes sums{L::all(0), L::all(0), L::all(0)};
        sums = to(at(samples - 1), at(differences - 1), sums);
        sums = to(at(samples + 1), at(differences + 1), sums);
        sums = to(at(block.colours(-9)), at(above), sums);
        sums = to(at(block.colours(-5)), differenceBelow, sums);
        L::storeLanes(above, differenceBelow);
        Number* const made = block.template row<Plane::models>(-7);
        const Lanes slope = slopeOf(sums);
        // From -510 to 510 for bytes: with the slope below, sums of four fit 16 bits.
        const Lanes offset = L::sub(twice(sample), L::mul(slope, L::sub(sample, difference)));
        L::storeLanes(made, L::add(L::template shiftLeft<slopeBits>(offset), slope));
    }
    // A slope below 2 must change less by a quarter, and by 8.
    static KRO_INLINE Lanes slopeOf(const Changes& sums) {
        const Lanes least = L::sub(L::sub(sums.whole, L::template shiftRight<2>(sums.whole)), L::all(8));
        const Lanes byHalf = L::template shiftRight<1>(sums.half);
        const Lanes slope = L::lowered(L::greater(least, byHalf), L::all(2));
        return L::select(L::greater(L::least(least, byHalf), sums.kept), L::all(0), slope);
    }
    // In the frame's outer two rows and columns colours follow green wholly: the offset is twice the difference.
    KRO_INLINE void wholeAtSides(int32_t y) {
        if (y < 2 || y >= job_.height - 2) {
            wholeRow(y);
            return;
        }
        if (strip_.first == 0) {
            whole(-1, y);
            whole(0, y);
        }
        if (strip_.frame.end == count_) {
            const int32_t last = (count_ - 1 - (colourIsOdd(y) ? 1 : 0)) >> 1;
            whole(last, y);
            whole(last + 1, y);
        }
    }
    KRO_RARE void wholeRow(int32_t y) {
        for (int32_t i = -1; i <= (count_ + 1) / 2; ++i) {
            whole(i, y);
        }
    }
    KRO_INLINE void whole(int32_t i, int32_t y) {
        const int32_t offset = 2 * row<Plane::colourMinusGreen>(y)[i];
        row<Plane::models>(y)[i] = static_cast<Number>(offset * (1 << slopeBits) + 2);
    }
};

}  // namespace
}  // namespace kro
