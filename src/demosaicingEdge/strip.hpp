// A strip of columns of a frame, green ahead of colour: the differences of the rows in view, and the two passes that make
// and use them.
#pragma once

#include <type_traits>

#include "demosaicingEdge/colour.hpp"
#include "demosaicingEdge/green.hpp"
#include "row/rectangle.hpp"

namespace kro {
namespace {

// Of words, two rows are folded into one row of differences; of bytes, every row has its own.
template <class Sample>
constexpr int32_t rowsFolded = sizeof(Sample) == 1 ? 1 : 2;

// Most columns of a strip where rows are read in place. Differences lie on the stack, in 20 KiB together with all else.
// Frames that are wider are walked in strips.
template <class Sample>
constexpr int32_t stripColumns = sizeof(Sample) == 1 ? 5120 : 1408;

// Rows of differences: three units (of one row, or two folded ones) are in view. 16-bit lanes, or for deep words wide
// ones, in the same memory.
template <class Sample, int32_t mostColumns>
class Differences {
public:
    Differences() {}  // user-provided: the rows are not cleared

    // Lane of a strip's column 0: of words a lane belongs to each column, of bytes to each two.
    template <class Number>
    KRO_INLINE Number* row(int32_t unit) {
        return reinterpret_cast<Number*>(memory_[(unit + 3) % 3]) + margin;
    }
    static KRO_INLINE constexpr int32_t lane(int32_t x) { return sizeof(Sample) == 1 ? x >> 1 : x; }

    // Differences mirror at the frame's sides as samples do.
    template <class Number>
    KRO_INLINE void mirrorSides(int32_t unit, Columns frame, Columns made, bool colourOdd) {
        Number* const start = row<Number>(unit);
        constexpr bool bytes = sizeof(Sample) == 1;
        if (made.begin == frame.begin) {
            Number* const first = start + lane(made.begin);
            first[-1] = bytes ? first[0] : first[1];
        }
        if (made.end == frame.end) {
            Number* const end = start + (bytes ? (made.end + (colourOdd ? 0 : 1)) >> 1 : made.end);
            *end = bytes ? end[-1] : end[-2];
        }
    }

    // Narrow lanes made so far become wide ones, from the last to the first as they share the memory.
    KRO_OUTLINE void widen(int32_t unit, Columns made) {
        const int16_t* const narrow = row<int16_t>(unit);
        int32_t* const wide = row<int32_t>(unit);
        for (int32_t x = made.end; x >= made.begin - 1; --x) {
            int16_t lane;
            __builtin_memcpy(&lane, narrow + x, sizeof lane);
            const int32_t number = lane;
            __builtin_memcpy(wide + x, &number, sizeof number);
        }
    }

private:
    static constexpr int32_t margin = 32;
    static constexpr int32_t rowBytes =
        sizeof(Sample) == 1 ? (mostColumns / 2 + 2 * margin) * 2 : (mostColumns + 2 * margin) * 4;
    alignas(64) unsigned char memory_[3][rowBytes];
};

// ---- the two passes over one row, or two folded ones, of a strip ----

// The lanes of a block: those of the set S, or, for a pair of columns, of the scalar one.
template <class S, class B>
using SetOf = std::conditional_t<B::Vector::columns == 2, PairOfColumns, S>;
template <class S, class B, bool wide>
using WordLanes = std::conditional_t<wide, typename SetOf<S, B>::Wide, typename SetOf<S, B>::Words>;

template <class S>
struct EdgeGreen {
    // `rows`: from two above to two below.
    static void make(bool colourOdd, const uint8_t* const (&rows)[5], Columns made, Columns frame, int16_t* differences) {
        (colourOdd ? bytes<true> : bytes<false>)(rows[0], rows[1], rows[2], rows[3], rows[4], made, frame, differences);
    }
    template <class Number>
    static void make(bool colourOdd, const FoldedRows& rows, Columns made, Columns frame, int32_t top,
                     Number* differences) {
        (colourOdd ? words<Number, true> : words<Number, false>)(rows, made, frame, top, differences);
    }

private:
    template <bool colourOdd>
    static KRO_OUTLINE void bytes(const uint8_t* above2, const uint8_t* above, const uint8_t* here, const uint8_t* below,
                                  const uint8_t* below2, Columns made, Columns frame, int16_t* differences) {
        eachBlock<typename S::Bytes, 2>(made, frame, innerColumns<2>(frame), [=](auto block) KRO_INLINE_LAMBDA {
            using V = typename decltype(block)::Vector;
            V::storeLanes(differences + block.x / 2,
                          greenDifference<colourOdd>(block, above2, above, here, below, below2));
        });
    }
    template <class Number, bool colourOdd>
    static KRO_OUTLINE void words(const FoldedRows& rows, Columns made, Columns frame, int32_t top,
                                  Number* differences) {
        const FoldedRows in = rows;
        eachBlock<typename S::Words, 2>(made, frame, innerColumns<2>(frame), [=](auto block) KRO_INLINE_LAMBDA {
            using L = WordLanes<S, decltype(block), sizeof(Number) == 4>;
            L::storeLanes(differences + block.x, foldedDifference<L, colourOdd>(block, in, topOf<L>(top)));
        });
    }

public:
    template <class L>
    static KRO_INLINE typename L::Lanes topOf(int32_t top) {
        constexpr int32_t largest = sizeof(typename L::Number) == 2 ? 0x7FFF : 0xFFFF;
        return L::all(top < largest ? top : largest);
    }
};

// The differences that a row's colours are made of.
template <class Number>
struct DifferenceRows {
    const Number *above, *same, *below;
};

template <class S, class Sample, Output kind>
struct EdgeColour {
    static constexpr bool ordered = isInterleaved(kind);
    using T = RowTarget<Sample>;

    template <class Number>
    static void row(const T& out, bool ownFirst, bool colourOdd, Columns made, Columns frame, const Sample* here,
                    const DifferenceRows<Number>& rows, int32_t top) {
        const auto make = colourOdd ? (ordered && ownFirst ? put<Number, true, ordered> : put<Number, true, false>)
                                    : (ordered && ownFirst ? put<Number, false, ordered> : put<Number, false, false>);
        make(out, made, frame, here, rows, top);
    }

private:
    template <class Number, bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void put(const T& out, Columns made, Columns frame, const Sample* here,
                                const DifferenceRows<Number>& rows, int32_t top) {
        const T to = out;
        const DifferenceRows<Number> from = rows;
        eachBlock<BackEnd<S, Sample>, 1>(made, frame, innerColumns<1>(frame), [=](auto block) KRO_INLINE_LAMBDA {
            kro::put<kind, ownFirst>(to, block, edgePixels(neighbours<colourOdd>(block, here, from, top)));
        });
        finishRow<kind>(out, made);
    }
    template <bool colourOdd, class B>
    static KRO_INLINE auto neighbours(B block, const uint8_t* here, const DifferenceRows<int16_t>& rows, int32_t) {
        const int32_t lane = block.x / 2;
        return ByteNeighbours<colourOdd, B>{block.template tap<0>(here), rows.above + lane, rows.same + lane,
                                            rows.below + lane};
    }
    template <bool colourOdd, class B, class Number>
    static KRO_INLINE auto neighbours(B block, const uint16_t* here, const DifferenceRows<Number>& rows, int32_t top) {
        using L = WordLanes<S, B, sizeof(Number) == 4>;
        return WordNeighbours<L, colourOdd, B>{block.template tap<0>(here), rows.above + block.x, rows.same + block.x,
                                               rows.below + block.x, EdgeGreen<S>::template topOf<L>(top)};
    }
};

// ---- a strip ----

// What a strip works on besides its rows.
struct EdgeFrame {
    int32_t height, width;
    Phase phase;
    Target target;
    int32_t top;          // words: interpolated samples end here
    int32_t firstRow;     // units count from here
    RowSpan alphaRows;    // rows whose alpha is written, in alphaColumns, where it is not written everywhere
};

// `Source` gives rows: source[y] mirrored at the top and bottom, source.at(y) of the frame itself.
template <class S, class Sample, Output kind, class Source, int32_t mostColumns>
class EdgeStrip {
    static constexpr int32_t folded = rowsFolded<Sample>;
    using Width = std::integral_constant<int32_t, folded>;

public:
    EdgeStrip(const EdgeFrame& frame, Source& source, const Strip& strip)
        : frame_(frame),
          source_(source),
          strip_(strip),
          // Colours need differences one column beyond the strip.
          greens_{strip.made.begin - (strip.frame.begin < strip.made.begin ? 2 : 0),
                  strip.made.end + (strip.made.end < strip.frame.end ? 2 : 0)} {}

    int32_t unitOf(int32_t y) const { return (y - frame_.firstRow) >> (folded - 1); }
    Columns greenColumns() const { return greens_; }

    void green(int32_t unit) { makeGreen(unit, Width{}); }
    void colour(int32_t y) { colour(y, mirrored(y - 1, frame_.height), mirrored(y + 1, frame_.height), output(y)); }
    // From the differences of given rows to a given row of the output.
    void colour(int32_t y, int32_t above, int32_t below, const RowTarget<Sample>& out) {
        inLanes([&](auto number) { colourOf<decltype(number)>(y, above, below, out); });
    }
    RowTarget<Sample> output(int32_t y) const {
        RowTarget<Sample> out = rowTarget<kind, Sample>(frame_.target, phaseOfRow(frame_.phase, y), y, strip_.first);
        if (kind == Output::bgra && !frame_.target.alphaEverywhere) {
            const Columns written = alphaColumns(frame_.width);
            const bool here = y >= frame_.alphaRows.begin && y < frame_.alphaRows.end;
            out.alphaColumns = here ? Columns{written.begin - strip_.first, written.end - strip_.first} : Columns{0, 0};
        }
        return out;
    }

    template <class Number>
    Number* differences(int32_t y) {
        return differences_.template row<Number>(unitOf(y));
    }
    // After differences were put in by hand.
    void mirrorSides(int32_t unit) {
        inLanes([&](auto number) {
            differences_.template mirrorSides<decltype(number)>(unit, strip_.frame, greens_, colourIsOdd(unit));
        });
    }
    // Words: lanes become wide from this unit on; those of the units from `first` on that are still in view are made so.
    void deepenFrom(int32_t unit, int32_t first) {
        deep_ = true;
        for (int32_t made = unit - 2 < first ? first : unit - 2; made < unit; ++made) {
            differences_.widen(made, greens_);
        }
    }
    bool deep() const { return deep_; }

private:
    const EdgeFrame& frame_;
    Source& source_;
    const Strip strip_;
    const Columns greens_;
    bool deep_ = false;
    Differences<Sample, mostColumns> differences_;

    // Calls step with a number of the kind that lanes hold.
    template <class Step>
    void inLanes(const Step& step) const {
        if constexpr (sizeof(Sample) == 2) {
            if (deep_) {
                step(int32_t{});
                return;
            }
        }
        step(int16_t{});
    }
    bool colourIsOdd(int32_t unit) const {
        return phaseOfRow(frame_.phase, frame_.firstRow + folded * unit).greenFirst;
    }
    void makeGreen(int32_t unit, std::integral_constant<int32_t, 1>) {
        const int32_t y = frame_.firstRow + unit;
        EdgeGreen<S>::make(colourIsOdd(unit),
                           {source_[y - 2], source_[y - 1], source_[y], source_[y + 1], source_[y + 2]}, greens_,
                           strip_.frame, differences_.template row<int16_t>(unit));
        mirrorSides(unit);
    }
    void makeGreen(int32_t unit, std::integral_constant<int32_t, 2>) {
        const int32_t y = frame_.firstRow + 2 * unit;
        const auto far = [&](int32_t row) { return source_.at(opposite(row, frame_.height)); };
        const FoldedRows rows{{source_[y - 1], source_[y], source_[y + 1], source_[y + 2]},
                              {far(y - 2), far(y - 1), far(y + 2), far(y + 3)}};
        inLanes([&](auto number) {
            EdgeGreen<S>::make(colourIsOdd(unit), rows, greens_, strip_.frame, frame_.top,
                               differences_.template row<decltype(number)>(unit));
        });
        mirrorSides(unit);
    }
    template <class Number>
    void colourOf(int32_t y, int32_t above, int32_t below, const RowTarget<Sample>& out) {
        const Phase phase = phaseOfRow(frame_.phase, y);
        EdgeColour<S, Sample, kind>::row(out, ownComesFirst(frame_.target, phase), phase.greenFirst, strip_.made,
                                         strip_.frame, source_[y],
                                         DifferenceRows<Number>{differences<Number>(above), differences<Number>(y),
                                                                differences<Number>(below)},
                                         frame_.top);
    }
};

}  // namespace
}  // namespace kro
