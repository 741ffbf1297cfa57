// Edge-directed on 16-bit samples of any phase, 16-bit blue, green, red out.
//
// Rows are worked on in pairs. Every column of a pair holds one sample that is red or blue and one green, so a pair
// folds into a row of colours and a row of greens with a use for every lane, in column order:
//
//     upper row   R G R G R G        colours   R B R B R B
//     lower row   G B G B G B        greens    G G G G G G     (from the lower, the upper, the lower row ...)
//
// "Upper" columns are those whose colour stands in the upper row of the pair. Differences S - G are folded as
// colours.
//
// What bounds it: lane operations. A block of both rows takes about 6 to fold, 27 for greens, 28 for colours and 18
// to interleave (3 permutes and 6 blends a row), 79 for 64 pixels with AVX-512 at two a cycle, against 25 loads and 9
// stores. Measured on 1280 columns of 12 bits: .73, .65 and .37 (AVX-512, AVX2, SSSE3) of a plain stream from memory,
// .52, .40 and .18 of one within the second cache; .54, .37 and .17 with deeper samples, whose lanes are wide.
//
// Borders: greens and differences mirror at the frame's edges; where a far sample of a second difference lies
// outside, the opposite far sample stands in for it, which makes the difference one-sided and doubled.
#pragma once

#include <string.h>

#include "block/words.hpp"
#include "demosaicingEdge/interpolation.hpp"
#include "frame/rectangle.hpp"

namespace kro {
namespace {

struct EdgeFrame16 {
    const uint16_t* source;
    int32_t height, width;
    Phase phase;
    int32_t top;  // interpolated samples end here
    uint16_t* destination;

    KRO_INLINE const uint16_t* row(int32_t y) const { return source + static_cast<ptrdiff_t>(y) * width; }
    KRO_INLINE uint16_t* pixels(int32_t y) const { return destination + 3 * static_cast<ptrdiff_t>(y) * width; }
};

// The place of a far sample: two away from its centre, and on the other side of it where that is outside.
KRO_INLINE constexpr int32_t farIndex(int32_t index, int32_t n) {
    return index < 0 ? index + 4 : index >= n ? index - 4 : index;
}

// The three pairs in view of a strip of columns, each row with room on both sides. A fourth row would push 1280
// columns out of a first cache of 48 KiB (15 % slower). Wider frames are walked in strips, which cost less than the
// stack that their rows would take; narrower strips would break up the streams to and from memory (20 % slower at 640
// columns).
constexpr int32_t strip16Columns = 2048;

template <class Word>
class PairRows {
public:
    KRO_INLINE Word* at(int32_t pair, int32_t x) { return rows_[(pair + 3) % 3] + margin + (x - origin_); }
    void startAt(int32_t origin) { origin_ = origin; }

    // Continues a row of `width` columns by what stands `back` columns inside, `count` on each side.
    void continueSides(int32_t pair, Columns made, int32_t width, int32_t count, int32_t back) {
        if (made.begin == 0) {
            for (int32_t x = -count; x < 0; ++x) {
                *at(pair, x) = *at(pair, x + back);
            }
        }
        if (made.end == width) {
            for (int32_t x = width; x < width + count; ++x) {
                *at(pair, x) = *at(pair, x - back);
            }
        }
    }

private:
    static constexpr int32_t margin = 128;
    int32_t origin_ = 0;
    alignas(64) Word rows_[3][strip16Columns + 2 * margin];
};

// Samples of at most 12 bits keep every step within signed 16 bits: second differences are at most 8190, gradient
// sums 12285, greens 6142, differences within -6142..4095 and sums of four of them within -24568..16380.
constexpr int32_t deepBits = 0xF000;

template <class V, bool colourOdd, bool redUpper>
class EdgeStrip16 {
    using Words = typename WordsOf<V>::Words;
    using Wide = typename WordsOf<V>::Wide;
    static constexpr int32_t step = Words::columns;

public:
    EdgeStrip16(const EdgeFrame16& frame, Columns columns) : frame_(frame), columns_(columns) {
        colours_.startAt(columns.begin);
        greens_.startAt(columns.begin);
        narrow_.startAt(columns.begin);
        wide_.startAt(columns.begin);
    }

    // Pair by pair: fold two ahead, greens one ahead, colours. Lanes become wide at the first deep sample and stay
    // so.
    KRO_OUTLINE void run() {
        const int32_t pairs = (frame_.height + 1) / 2;
        fold(-1);
        fold(0);
        fold(1);
        green(0, pairs);
        for (int32_t pair = 0; pair < pairs; ++pair) {
            if (pair + 1 < pairs) {
                fold(pair + 2);
                green(pair + 1, pairs);
            }
            if (deep_) {
                colour<Wide>(wide_, pair, pairs);
            } else {
                colour<Words>(narrow_, pair, pairs);
            }
        }
    }

private:
    const EdgeFrame16& frame_;
    Columns columns_;
    bool deep_ = false;
    PairRows<uint16_t> colours_, greens_;
    PairRows<typename Words::Word> narrow_;
    PairRows<typename Wide::Word> wide_;

    // Chooses by where a column's colour stands.
    template <class L>
    static KRO_INLINE typename L::Lanes pick(typename L::Lanes atUpper, typename L::Lanes atLower) {
        return colourOdd ? L::alternate(atLower, atUpper) : L::alternate(atUpper, atLower);
    }

    // ---- folding ----

    // The rows that give a pair its colours and its greens: the same two but at the top and bottom of the frame.
    struct Folded {
        const uint16_t *upperColours, *lowerColours, *upperGreens, *lowerGreens;
    };
    void fold(int32_t pair) {
        const int32_t y = 2 * pair, height = frame_.height;
        const Columns made{columns_.begin > 0 ? columns_.begin - 64 : 0,
                           columns_.end + 64 < frame_.width ? columns_.end + 64 : frame_.width};
        const bool deep = foldRows({frame_.row(farIndex(y, height)), frame_.row(farIndex(y + 1, height)),
                                    frame_.row(mirrored(y, height)), frame_.row(mirrored(y + 1, height))},
                                   made, colours_.at(pair, 0), greens_.at(pair, 0));
        colours_.continueSides(pair, made, frame_.width, 2, 4);
        greens_.continueSides(pair, made, frame_.width, 1, 2);
        if (deep && !deep_) {
            deep_ = true;
            widenDifferences(pair);
        }
    }
    static KRO_OUTLINE bool foldRows(const Folded& rows, Columns made, uint16_t* colours, uint16_t* greens) {
        auto bits = Words::all(0);
        const auto block = [&, rows](int32_t x) KRO_INLINE_LAMBDA {
            const auto colour = pick<Words>(Words::load(rows.upperColours + x), Words::load(rows.lowerColours + x));
            const auto green = pick<Words>(Words::load(rows.lowerGreens + x), Words::load(rows.upperGreens + x));
            Words::store(colours + x, colour);
            Words::store(greens + x, green);
            bits = Words::bitOr(bits, Words::bitOr(colour, green));
        };
        int32_t x = made.begin;
        for (; x <= made.end - step; x += step) {
            block(x);
        }
        if (x < made.end && made.end - made.begin > step) {
            x = (made.end - step) & ~1;
            block(x);
            x += step;
        }
        int32_t rest = 0;
        for (; x < made.end; ++x) {
            const bool upper = (x % 2 != 0) == colourOdd;
            colours[x] = (upper ? rows.upperColours : rows.lowerColours)[x];
            greens[x] = (upper ? rows.lowerGreens : rows.upperGreens)[x];
            rest |= colours[x] | greens[x];
        }
        return Words::anyBits(bits, deepBits) || (rest & deepBits) != 0;
    }
    KRO_OUTLINE void widenDifferences(int32_t pair) {
        for (int32_t made = pair < 3 ? 0 : pair - 3; made < pair - 1; ++made) {
            for (int32_t x = columns_.begin - 2; x < columns_.end + 2; ++x) {
                *wide_.at(made, x) = *narrow_.at(made, x);
            }
        }
    }

    // ---- greens ----

    void green(int32_t pair, int32_t pairs) {
        if (deep_) {
            greenOf<Wide>(wide_, pair, pairs);
        } else {
            greenOf<Words>(narrow_, pair, pairs);
        }
    }
    template <class L>
    void greenOf(PairRows<typename L::Word>& differences, int32_t pair, int32_t pairs) {
        const Columns made{columns_.begin > 0 ? columns_.begin - step : 0,
                           columns_.end < frame_.width ? columns_.end + 1 : frame_.width};
        greenRow<L>(made, frame_.top, colours_.at(pair - 1, 0), colours_.at(pair, 0), colours_.at(pair + 1, 0),
                    greens_.at(pair - 1, 0), greens_.at(pair, 0), greens_.at(pair + 1, 0), differences.at(pair, 0));
        if (pair == pairs - 1 && frame_.height % 2 != 0) {
            // There is no lower row: its differences are those of the lower row before.
            for (int32_t x = made.begin + (colourOdd ? 0 : 1); x < made.end; x += 2) {
                *differences.at(pair, x) = *differences.at(pair - 1, x);
            }
        }
        differences.continueSides(pair, made, frame_.width, 1, 2);
    }
    template <class L>
    static KRO_OUTLINE void greenRow(Columns made, int32_t top, const uint16_t* coloursAbove, const uint16_t* colours,
                                     const uint16_t* coloursBelow, const uint16_t* greensAbove,
                                     const uint16_t* greens, const uint16_t* greensBelow,
                                     typename L::Word* differences) {
        const auto most = topOf<L>(top);
        for (int32_t x = made.begin; x < made.end; x += step) {
            const auto sample = L::load(colours + x), beside = L::load(greens + x);
            const auto value = interpolatedGreen(GreenTaps<L>{
                sample, L::load(greens + x - 1), L::load(greens + x + 1), pick<L>(L::load(greensAbove + x), beside),
                pick<L>(beside, L::load(greensBelow + x)), L::load(colours + x - 2), L::load(colours + x + 2),
                L::load(coloursAbove + x), L::load(coloursBelow + x)});
            L::storeLanes(differences + x, L::sub(sample, L::clamp(value, most)));
        }
    }
    template <class L>
    static KRO_INLINE typename L::Lanes topOf(int32_t top) {
        constexpr int32_t largest = sizeof(typename L::Word) == 2 ? 0x7FFF : 0xFFFF;
        return L::all(top < largest ? top : largest);
    }

    // ---- colours ----

    template <class L>
    void colour(PairRows<typename L::Word>& differences, int32_t pair, int32_t pairs) {
        const int32_t y = 2 * pair;
        colourRows<L>(columns_, frame_.top, colours_.at(pair, 0), greens_.at(pair, 0),
                      differences.at(pair == 0 ? 0 : pair - 1, 0), differences.at(pair, 0),
                      differences.at(pair + 1 == pairs ? pair : pair + 1, 0), frame_.pixels(y),
                      y + 1 < frame_.height ? frame_.pixels(y + 1) : nullptr);
    }
    // Both missing colours are green plus the mean of the differences around.
    template <class L>
    static KRO_OUTLINE void colourRows(Columns columns, int32_t top, const uint16_t* colours, const uint16_t* greens,
                                       const typename L::Word* above, const typename L::Word* same,
                                       const typename L::Word* below, uint16_t* upper, uint16_t* lower) {
        using Lanes = typename L::Lanes;
        const auto most = topOf<L>(top);
        const auto beside = [](const typename L::Word* row, int32_t x) KRO_INLINE_LAMBDA {
            return L::add(L::loadLanes(row + x - 1), L::loadLanes(row + x + 1));
        };
        const auto mean2 = [](Lanes a, Lanes b) KRO_INLINE_LAMBDA { return L::template shiftRight<1>(L::add(a, b)); };
        const auto mean4 = [](Lanes a, Lanes b) KRO_INLINE_LAMBDA { return L::template shiftRight<2>(L::add(a, b)); };
        for (int32_t x = columns.begin; x < columns.end; x += step) {
            const Lanes sample = L::load(colours + x), green = L::load(greens + x), here = L::loadLanes(same + x);
            const Lanes around = beside(same, x), made = L::sub(sample, here);
            const auto clamped = [&](Lanes base, Lanes difference)
                                     KRO_INLINE_LAMBDA { return L::clamp(L::add(base, difference), most); };

            const Lanes upperGreen = pick<L>(made, green), lowerGreen = pick<L>(green, made);
            const Lanes own = clamped(green, L::template shiftRight<1>(around));
            const Lanes upperOther =
                clamped(upperGreen, pick<L>(mean4(around, beside(above, x)), mean2(here, L::loadLanes(above + x))));
            const Lanes lowerOther =
                clamped(lowerGreen, pick<L>(mean2(here, L::loadLanes(below + x)), mean4(around, beside(below, x))));
            putRow<L, !redUpper>(upper, x, columns.end, pick<L>(sample, own), upperGreen, upperOther);
            if (lower != nullptr) {
                putRow<L, redUpper>(lower, x, columns.end, pick<L>(own, sample), lowerGreen, lowerOther);
            }
        }
    }
    template <class L, bool ownBlue>
    static KRO_INLINE void putRow(uint16_t* row, int32_t x, int32_t end, typename L::Lanes own,
                                  typename L::Lanes green, typename L::Lanes other) {
        const auto put = [&](uint16_t* out) KRO_INLINE_LAMBDA {
            L::store3(out, L::packed(ownBlue ? own : other), L::packed(green), L::packed(ownBlue ? other : own));
        };
        uint16_t* const out = row + 3 * static_cast<ptrdiff_t>(x);
        if (__builtin_expect(x + step <= end, 1)) {
            put(out);
        } else {
            uint16_t last[3 * step];
            put(last);
            memcpy(out, last, static_cast<size_t>(end - x) * 3 * sizeof *out);
        }
    }
};

template <class V>
struct Edge16 {
    static int32_t frame(const EdgeFrame16& job) {
        const int32_t strips = (job.width + strip16Columns - 1) / strip16Columns;
        const int32_t strip = ((job.width + strips - 1) / strips + 63) & ~63;
        for (int32_t x = 0; x < job.width; x += strip) {
            const Columns columns{x, x + strip < job.width ? x + strip : job.width};
            if (job.phase.greenFirst) {
                job.phase.blueRow ? run<true, false>(job, columns) : run<true, true>(job, columns);
            } else {
                job.phase.blueRow ? run<false, false>(job, columns) : run<false, true>(job, columns);
            }
        }
        return 0;
    }

private:
    template <bool colourOdd, bool redUpper>
    static KRO_OUTLINE void run(const EdgeFrame16& job, Columns columns) {
        EdgeStrip16<V, colourOdd, redUpper>(job, columns).run();
    }
};

// Pixel by pixel: for the exported regions, which work on what their neighbours left in the destination. Greens of
// the first `finished` rows stand there; others are made from the samples.
class EdgeRegion16 {
public:
    static constexpr int blue = 0, green = 1, red = 2;

    EdgeRegion16(const EdgeFrame16& frame, int32_t finished) : frame_(frame), finished_(finished) {}

    // Channels `from` to `to` of a rectangle.
    void put(RowSpan rows, Columns columns, int from, int to) const {
        for (int32_t y = rows.begin; y < rows.end; ++y) {
            for (int32_t x = columns.begin; x < columns.end; ++x) {
                for (int channel = from; channel <= to; ++channel) {
                    put(y, x, channel);
                }
            }
        }
    }
    void put(int32_t y, int32_t x, int channel) const {
        pixel(y, x)[channel] = static_cast<uint16_t>(value(y, x, channel));
    }
    void putMadeGreen(int32_t y, int32_t x) const { pixel(y, x)[green] = static_cast<uint16_t>(madeGreen(y, x)); }

private:
    EdgeFrame16 frame_;
    int32_t finished_;

    uint16_t* pixel(int32_t y, int32_t x) const { return frame_.pixels(y) + 3 * static_cast<ptrdiff_t>(x); }
    bool isSite(int32_t y, int32_t x) const { return (x % 2 != 0) == phaseOfRow(frame_.phase, y).greenFirst; }
    int32_t clamped(int32_t value) const { return value < 0 ? 0 : value > frame_.top ? frame_.top : value; }

    int32_t sample(int32_t y, int32_t x) const {
        return frame_.row(mirrored(y, frame_.height))[mirrored(x, frame_.width)];
    }
    int32_t farSample(int32_t y, int32_t x) const {
        return frame_.row(farIndex(y, frame_.height))[farIndex(x, frame_.width)];
    }
    int32_t madeGreen(int32_t y, int32_t x) const {
        return clamped(interpolatedGreen(
            GreenTaps<Cell>{sample(y, x), sample(y, x - 1), sample(y, x + 1), sample(y - 1, x), sample(y + 1, x),
                            farSample(y, x - 2), farSample(y, x + 2), farSample(y - 2, x), farSample(y + 2, x)}));
    }
    int32_t greenAt(int32_t y, int32_t x) const {
        return !isSite(y, x) ? sample(y, x) : y < finished_ ? pixel(y, x)[green] : madeGreen(y, x);
    }
    int32_t difference(int32_t y, int32_t x) const {
        const int32_t row = mirrored(y, frame_.height), column = mirrored(x, frame_.width);
        return sample(row, column) - greenAt(row, column);
    }
    int32_t across(int32_t y, int32_t x) const { return difference(y, x - 1) + difference(y, x + 1); }
    int32_t value(int32_t y, int32_t x, int channel) const {
        if (channel == green) {
            return greenAt(y, x);
        }
        const bool ownChannel = channel == (phaseOfRow(frame_.phase, y).blueRow ? blue : red);
        if (isSite(y, x)) {
            return ownChannel ? sample(y, x) : clamped(greenAt(y, x) + ((across(y - 1, x) + across(y + 1, x)) >> 2));
        }
        const int32_t around = ownChannel ? across(y, x) : difference(y - 1, x) + difference(y + 1, x);
        return clamped(sample(y, x) + (around >> 1));
    }
};

// Exported routines. Regions speak of a view whose row 0 is a red row; `start` is the column of a red site in it.
//
//     first rows      rows 0 and 1 but for the red of row 1; in the form for GB and BG also the blue row above them
//     first columns   columns before `start` of the rows from 2 on, and their red of row 1
//     interior        from row 2 and column `start`; red one row and one column behind
//     last rows       rows from the first that the interior left, columns from `start`; red of the row above them
//     last columns    columns from the first that the interior left, rows from 2; red of row 1 and the column before
//
// Some overlap, with equal values. Frames of 4 rows (5 where the first is a blue row) and 4 columns are complete
// after all five: first rows, which know no height, take the four rows from row 0 on to exist.
template <class V>
struct Edge16Kernels {
    using Region = EdgeRegion16;
    static constexpr int32_t noBottom = 1 << 30;  // far below any row that is asked for
    static constexpr Phase viewPhase(int32_t start) { return start % 2 != 0 ? phaseGR : phaseRG; }

#define KRO_FRAME(name, phase, top)                                                                     \
    static int32_t name(const uint16_t* source, int32_t height, int32_t width, uint16_t* destination) { \
        return Edge16<V>::frame({source, height, width, phase, top, destination});                      \
    }
    KRO_FRAME(demosaicingEdgeRGGBU16, phaseRG, 0xFFF)
    KRO_FRAME(demosaicingEdgeGRBGU16, phaseGR, 0xFFFF)
    KRO_FRAME(demosaicingEdgeGBRGU16, phaseGB, 0xFFFF)
    KRO_FRAME(demosaicingEdgeBGGRU16, phaseBG, 0xFFFF)
#undef KRO_FRAME

    static KroCoverage edgeSecRGGBU16(const uint16_t* source, uint16_t* destination, int32_t rows, int32_t width,
                                      int32_t start, int32_t clampMax) {
        if (rows <= 1) {
            return {start, 0};
        }
        const ptrdiff_t above = 2 * static_cast<ptrdiff_t>(width);  // the two rows above are in view
        const EdgeFrame16 view{source - above, noBottom, width, viewPhase(start), clampMax, destination - 3 * above};
        const Region region(view, noBottom);
        const int32_t covered = 2 * ((rows - 2) / 2 + 1);
        int32_t c = start;
        for (int32_t r = 2; r < 2 + covered; r += 2) {
            for (c = start; c < width - 3; c += 2) {
                step(region, r, c);
            }
        }
        return {c, covered};
    }
    static void edgeFirstRowsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t width, int32_t start,
                                     int32_t clampMax) {
        firstRows({source, noBottom, width, viewPhase(start), clampMax, destination}, 0);
    }
    static void edgeFirstRowsGBRGU16(const uint16_t* source, uint16_t* destination, int32_t width, int32_t start,
                                     int32_t clampMax) {
        firstRows({source, noBottom, width, phaseOfRow(viewPhase(start), 1), clampMax, destination}, 1);
    }
    static void edgeFirstColsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                     int32_t clampMax) {
        columns({source, height, width, phaseRG, clampMax, destination}, {0, 2});
    }
    static void edgeFirstColsGRBGU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                     int32_t clampMax) {
        columns({source, height, width, phaseGR, clampMax, destination}, {0, 3});
    }
    static void edgeLastRowsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                    int32_t firstRow, int32_t start, int32_t clampMax) {
        const Phase phase = phaseOfRow(viewPhase(start), firstRow);
        const Region region({source, height, width, phase, clampMax, destination}, 0);
        region.put({firstRow - 1, firstRow}, {start, width}, Region::red, Region::red);
        region.put({firstRow, height}, {start, width}, Region::blue, Region::red);
    }
    static void edgeLastColsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                    int32_t firstColumn, int32_t clampMax) {
        const EdgeFrame16 view{source, height, width, viewPhase(firstColumn), clampMax, destination};
        Region(view, 2).put({1, height}, {firstColumn - 1, firstColumn}, Region::red, Region::red);
        columns(view, {firstColumn, width});
    }

private:
    // Red comes one row and one column behind: its differences at (r, c) complete those around (r - 1, c - 1).
    static void step(const Region& region, int32_t r, int32_t c) {
        region.putMadeGreen(r, c);
        region.putMadeGreen(r + 1, c + 1);
        region.put(r, c, Region::red);
        region.put(r, c + 1, Region::green);
        region.put(r + 1, c, Region::green);
        region.put(r + 1, c + 1, Region::blue);
        region.put({r - 1, r}, {c - 1, c + 1}, Region::red, Region::red);
        region.put(r, c - 1, Region::red);
        region.put({r, r + 1}, {c, c + 2}, Region::blue, Region::blue);
        region.put(r + 1, c, Region::blue);
    }
    static void firstRows(const EdgeFrame16& frame, int32_t redRow) {
        const Region region(frame, 0);
        region.put({0, redRow + 1}, {0, frame.width}, Region::blue, Region::red);
        region.put({redRow + 1, redRow + 2}, {0, frame.width}, Region::blue, Region::green);
    }
    static void columns(const EdgeFrame16& view, Columns made) {
        const Region region(view, 2);
        region.put({1, 2}, made, Region::red, Region::red);
        region.put({2, view.height}, made, Region::blue, Region::red);
    }
};

}  // namespace
}  // namespace kro
