// A strip of columns of words: two rows a unit, folded into a row of colours and one of greens, so that every lane
// has a use and what the two rows share is loaded and added up once.
//
//     upper row   R G R G R G        colours   R B R B R B
//     lower row   G B G B G B        greens    G G G G G G     (from the lower, the upper, the lower row ...)
//
// "Upper" columns are those whose colour stands in the upper row. Differences are folded as colours.
#pragma once

#include <type_traits>

#include "demosaicingEdge/strip.hpp"

namespace kro {
namespace {

// Bits that samples must not have: those above 14, for which 16-bit lanes are too narrow.
template <class Number>
constexpr int32_t deepBits = sizeof(Number) == 2 ? 0xC000 : 0;

// The lanes of a block: those of the set S, or, for a pair of columns, of the scalar one.
template <class S, class B>
using SetOf = std::conditional_t<B::Vector::columns == 2, PairOfColumns, S>;
template <class S, class B, bool wide>
using WordLanes = std::conditional_t<wide, typename SetOf<S, B>::Wide, typename SetOf<S, B>::Words>;

template <class L>
KRO_INLINE typename L::Lanes topOf(int32_t top) {
    constexpr int32_t largest = sizeof(typename L::Number) == 2 ? 0x7FFF : 0xFFFF;
    return L::all(top < largest ? top : largest);
}

// Where a unit's samples come from. They are its two rows', but outside the frame, where far colours are the opposite
// ones and greens the mirrored ones.
struct UnitRows {
    const uint16_t *upperColours, *lowerColours, *upperGreens, *lowerGreens;
};

// A strip's passes over one unit, whatever is made of it. `Number`: of the lanes.
template <class S, class Number>
class UnitPasses {
    using V = typename S::Words;
    using L = std::conditional_t<sizeof(Number) == 2, V, typename S::Wide>;

public:
    // Says whether a sample has any of the bits `unfit`.
    static bool fold(bool colourOdd, const UnitRows& rows, Columns seen, int32_t unfit, uint16_t* colours,
                     uint16_t* greens) {
        const bool wide = seen.end - seen.begin >= V::columns;
        return (colourOdd
                    ? (wide ? foldRows<V, true> : foldRows<PairWords, true>)
                    : (wide ? foldRows<V, false> : foldRows<PairWords, false>))(rows, seen, unfit, colours, greens);
    }
    // Of fewer columns than a block has, a whole block.
    static void green(bool colourOdd, const FoldedUnits& units, Columns made, int32_t top, Number* differences) {
        (colourOdd ? greens<true> : greens<false>)(units, made, top, differences);
    }

private:
    template <class W, bool colourOdd>
    static KRO_OUTLINE bool foldRows(const UnitRows& from, Columns seen, int32_t unfit, uint16_t* colours,
                                     uint16_t* greens) {
        const UnitRows rows = from;
        int32_t x = seen.begin;
        auto bits = W::all(0);
        for (; x <= seen.end - W::columns; x += W::columns) {
            expectBelow<W>(x, rows.upperGreens, rows.lowerGreens);
            expectBelow<W, 2>(x, rows.upperGreens, rows.lowerGreens);
            bits = W::bitOr(bits, foldBlock<W, colourOdd>(rows, x, colours, greens));
        }
        if (x < seen.end) {  // a block that ends with the row overlaps
            x = seen.end - W::columns;
            bits = W::bitOr(bits, x % 2 == 0 ? foldBlock<W, colourOdd>(rows, x, colours, greens)
                                             : foldBlock<W, !colourOdd>(rows, x, colours, greens));
        }
        return W::anyBits(bits, unfit);
    }
    template <class W, bool colourOdd>
    static KRO_INLINE auto foldBlock(const UnitRows& rows, int32_t x, uint16_t* colours, uint16_t* greens) {
        const auto colour = folded<W, colourOdd>(W::load(rows.upperColours + x), W::load(rows.lowerColours + x));
        const auto green = folded<W, colourOdd>(W::load(rows.lowerGreens + x), W::load(rows.upperGreens + x));
        W::store(colours + x, colour);
        W::store(greens + x, green);
        return W::bitOr(colour, green);
    }
    template <bool colourOdd>
    static KRO_OUTLINE void greens(const FoldedUnits& units, Columns made, int32_t top, Number* differences) {
        const FoldedUnits in = units;
        const auto most = topOf<L>(top);
        const int32_t end = (made.end + 1) & ~1, behind = end - V::columns;
        const int32_t last = behind < made.begin ? made.begin : behind;
        for (int32_t x = made.begin; x < end; x += V::columns) {
            // The last block overlaps. (Pairs do not, and compilers make vectors of a loop that says so.)
            const int32_t place = V::columns == 2 || x < last ? x : last;
            L::storeLanes(differences + place, foldedDifference<L, V, colourOdd>(in, place, most));
        }
    }
};

// Pixels of the two rows of a unit.
template <class S, class Number, Output kind>
struct UnitColours {
    static constexpr bool ordered = isInterleaved(kind);

    // The lower row may be missing: it is then written where the upper one follows.
    static KRO_INLINE void rows(const ColourRow& to, bool lowerToo, const FoldedColours<Number>& unit, int32_t top) {
        const int32_t lowerRow = lowerToo ? to.y + 1 : to.y;
        if (fillsBlock<V>(to.strip.made)) {
            part<true>(to, lowerRow, unit, top);
        }
        if (leavesPairs<V>(to.strip.made)) {
            part<false>(to, lowerRow, unit, top);
        }
        if (lowerToo) {
            finishRow<kind, V>(lowerTarget(to, lowerRow), to.strip.made);
        }
        finishRow<kind, V>(upperTarget(to), to.strip.made);
    }

private:
    using V = typename S::Words;

    static KRO_INLINE auto upperTarget(const ColourRow& to) {
        return rowTarget<kind, uint16_t>(to.target, to.phase, to.y, to.strip.first);
    }
    static KRO_INLINE auto lowerTarget(const ColourRow& to, int32_t lowerRow) {
        return rowTarget<kind, uint16_t>(to.target, phaseOfRow(to.phase, 1), lowerRow, to.strip.first);
    }
    template <bool inBlocks>
    static KRO_INLINE void part(const ColourRow& to, int32_t lowerRow, const FoldedColours<Number>& unit,
                                int32_t top) {
        const auto make = functionFor<kind>(
            to.target, to.phase, [](auto colourOdd, auto ownFirst) { return two<colourOdd, ownFirst, inBlocks>; });
        make(to, lowerRow, unit, top);
    }
    template <bool colourOdd, bool ownFirst, bool inBlocks>
    static KRO_OUTLINE void two(const ColourRow& to, int32_t lowerRow, const FoldedColours<Number>& unit,
                                int32_t top) {
        constexpr bool otherFirst = ordered && !ownFirst;
        const auto upper = upperTarget(to), lower = lowerTarget(to, lowerRow);
        const FoldedColours<Number> in = unit;
        const auto make = [=](auto block) KRO_INLINE_LAMBDA {
            using L = WordLanes<S, decltype(block), sizeof(Number) == 4>;
            const auto pixels = FoldedNeighbours<L, decltype(block), colourOdd>(in, block.x, L::all(top)).pixels();
            put<kind, otherFirst>(lower, block, pixels.lower);
            put<kind, ownFirst>(upper, block, pixels.upper);
        };
        if constexpr (inBlocks) {
            eachWholeBlock<V>(to.strip.made, make, RowsAhead<kind, V>(upper, to.target.ahead, 2));
        } else {
            eachPairLeft<V>(to.strip.made, make);
        }
    }
};

// A strip that begins within its frame has 32 columns less than `mostColumns`.
template <class S, class Number, Output kind, class Source, int32_t mostColumns>
class WordStrip {
    using Passes = UnitPasses<S, Number>;

public:
    static constexpr int32_t rowsAtOnce = 2;

    // `Source` gives rows: source[y] mirrored at the top and bottom, source.at(y) of the frame itself. The first unit
    // that differences are made of is `firstUnit`.
    WordStrip(const EdgeFrame& frame, Source& source, const Strip& strip, int32_t firstUnit)
        : frame_(frame),
          source_(source),
          strip_(strip),
          // Colours need differences one column beyond the strip, those two samples more. To the left a whole block
          // is made, so that vectors stay aligned: 17 % faster.
          greens_{strip.made.begin - strip.frame.begin < block ? strip.frame.begin : strip.made.begin - block,
                  strip.made.end + 2 < strip.frame.end ? strip.made.end + 2 : strip.frame.end},
          seen_{greens_.begin, strip.made.end + 4 < strip.frame.end ? strip.made.end + 4 : strip.frame.end},
          origin_(block - greens_.begin),
          foldedUnits_(firstUnit - 1) {
        clearMargins();
    }

    int32_t unitOf(int32_t y) const { return (y - frame_.firstRow) >> 1; }
    Columns greenColumns() const { return greens_; }

    // Differences of a unit; false where a sample in view does not fit.
    KRO_INLINE bool green(int32_t unit) {
        if (!foldUpTo(unit + 1)) {
            return false;
        }
        Passes::green(
            colourIsOdd(),
            {colours(unit - 1), colours(unit), colours(unit + 1), greens(unit - 1), greens(unit), greens(unit + 1)},
            greens_, frame_.top, differencesOf(unit));
        finishDifferences(unit);
        return true;
    }
    // Folds the units up to this one.
    KRO_OUTLINE bool foldUpTo(int32_t unit) {
        for (; foldedUnits_ <= unit; ++foldedUnits_) {
            if (fold(foldedUnits_)) {
                return false;
            }
        }
        return true;
    }
    // Rows y and y + 1, or the first of them only.
    KRO_INLINE void colour(int32_t y, int32_t rows) {
        const int32_t below = rows == 2 ? mirrored(y + 2, frame_.height) : y;
        colour(y, rows == 2, mirrored(y - 1, frame_.height), below, y);
    }
    // From the differences of the units of given rows to given rows of the output.
    KRO_INLINE void colour(int32_t y, bool lowerToo, int32_t above, int32_t below, int32_t outputRow) {
        const int32_t unit = unitOf(y);
        UnitColours<S, Number, kind>::rows(
            {frame_.target, phaseOfRow(frame_.phase, y), outputRow, strip_, {}}, lowerToo,
            {colours(unit), greens(unit), differences(above), differencesOf(unit), differences(below)}, frame_.top);
    }
    // Of the unit that holds row y. Lane 0 is the strip's column 0.
    Number* differences(int32_t y) { return differencesOf(unitOf(y)); }
    // After a unit's differences were made: they mirror as samples do, at the frame's sides and at its first and last
    // row where those stand alone in their unit.
    KRO_INLINE void finishDifferences(int32_t unit) {
        Number* const made = differencesOf(unit);
        if (greens_.begin == strip_.frame.begin) {
            made[greens_.begin - 1] = made[greens_.begin + 1];
        }
        if (greens_.end == strip_.frame.end) {
            made[greens_.end] = made[greens_.end - 2];
        }
        const int32_t y = frame_.firstRow + 2 * unit;
        if (y + 1 == frame_.height) {
            everyOther(differencesOf(unit - 1), made, !colourIsOdd());
        }
        if (y == 1) {
            everyOther(made, differencesOf(unit - 1), colourIsOdd());
        }
    }

private:
    static constexpr uint32_t inView = 3;
    static constexpr int32_t block = 32;  // the widest

    const EdgeFrame& frame_;
    Source& source_;
    const Strip strip_;
    const Columns greens_, seen_;
    const int32_t origin_;  // where column 0 lies
    int32_t foldedUnits_;   // the next unit to fold
    alignas(64) uint16_t colours_[inView][mostColumns + 2 * block];
    alignas(64) uint16_t greensOf_[inView][mostColumns + 2 * block];
    alignas(64) Number differences_[inView][mostColumns + 2 * block];

    static uint32_t place(int32_t unit) { return static_cast<uint32_t>(unit + 3) % inView; }
    uint16_t* colours(int32_t unit) { return colours_[place(unit)] + origin_; }
    uint16_t* greens(int32_t unit) { return greensOf_[place(unit)] + origin_; }
    Number* differencesOf(int32_t unit) { return differences_[place(unit)] + origin_; }
    bool colourIsOdd() const { return phaseOfRow(frame_.phase, frame_.firstRow).greenFirst; }

    // What blocks find beside the columns of a strip is of no consequence, but defined.
    void clearMargins() {
        const int32_t right = seen_.end < greens_.begin + block ? greens_.begin + block : seen_.end;
        for (int32_t unit = 0; unit < 3; ++unit) {
            clear(colours(unit), right);
            clear(greens(unit), right);
            clear(differencesOf(unit), right);
        }
    }
    template <class T>
    void clear(T* row, int32_t right) const {
        row[seen_.begin - 2] = row[seen_.begin - 1] = 0;
        for (int32_t x = seen_.end; x < right + 4; ++x) {
            row[x] = 0;
        }
    }
    KRO_INLINE bool fold(int32_t unit) {
        const int32_t y = frame_.firstRow + 2 * unit;
        source_.prepare(y + 1 < 3 ? 3 : y + 1);
        const auto far = [&](int32_t row) { return source_.at(opposite(row, frame_.height)); };
        uint16_t *const colour = colours(unit), *const green = greens(unit);
        const bool misfits = Passes::fold(colourIsOdd(), {far(y), far(y + 1), source_[y], source_[y + 1]}, seen_,
                                          frame_.unfit, colour, green);
        if (seen_.begin == strip_.frame.begin) {
            colour[seen_.begin - 2] = colour[seen_.begin + 2];
            colour[seen_.begin - 1] = colour[seen_.begin + 3];
            green[seen_.begin - 1] = green[seen_.begin + 1];
        }
        if (seen_.end == strip_.frame.end) {
            colour[seen_.end] = colour[seen_.end - 4];
            colour[seen_.end + 1] = colour[seen_.end - 3];
            green[seen_.end] = green[seen_.end - 2];
        }
        return misfits;
    }
    KRO_OUTLINE void everyOther(const Number* from, Number* to, bool odd) {
        for (int32_t x = greens_.begin + (odd ? -1 : 0); x <= greens_.end; x += 2) {
            to[x] = from[x];
        }
    }
};

}  // namespace
}  // namespace kro
