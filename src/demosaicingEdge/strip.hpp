// A strip of columns of a frame, green ahead of colour: the differences of the rows in view, and the two passes that
// make and use them.
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

// Most columns of a strip, by the lanes of its differences, which lie on the stack: in 20 KiB together with all else.
// Frames that are wider are walked in strips.
template <class Sample, class Number>
constexpr int32_t stripColumns = sizeof(Sample) == 1   ? 4352
                                 : sizeof(Number) == 2 ? 1664
                                                       : 960;
// The same where a ring of rows lies there too.
template <class Sample, class Number>
constexpr int32_t ringedStripColumns = sizeof(Sample) == 1   ? 1664
                                       : sizeof(Number) == 2 ? 704
                                                             : 512;

// Rows of differences of the units (one row, or two folded ones) in view: three, and where it costs little a fourth,
// so that their places are a mask. Lane 0 is the strip's column 0: of words a lane belongs to each column, of bytes
// to each two.
template <class Sample, class Number, int32_t mostColumns>
class Differences {
public:
    Differences() {}  // user-provided: the rows are not cleared

    KRO_INLINE Number* row(int32_t unit) { return rows_[static_cast<uint32_t>(unit + inView) % inView] + margin; }

    // Differences mirror at the frame's sides as samples do.
    KRO_INLINE void mirrorSides(int32_t unit, Columns frame, Columns made, bool colourOdd) {
        constexpr bool bytes = sizeof(Sample) == 1;
        Number* const start = row(unit);
        if (made.begin == frame.begin) {
            Number* const first = start + (bytes ? made.begin >> 1 : made.begin);
            first[-1] = bytes ? first[0] : first[1];
        }
        if (made.end == frame.end) {
            Number* const end = start + (bytes ? (made.end + (colourOdd ? 0 : 1)) >> 1 : made.end);
            *end = bytes ? end[-1] : end[-2];
        }
    }

private:
    static constexpr uint32_t inView = sizeof(Sample) == 1 ? 4 : 3;
    static constexpr int32_t margin = 32;
    alignas(64) Number rows_[inView][(sizeof(Sample) == 1 ? mostColumns / 2 : mostColumns) + 2 * margin];
};

// Two rows of words folded into a row of colours and one of greens.
template <int32_t mostColumns>
class Fold {
public:
    Fold() {}
    uint16_t* colours() { return colours_ + margin; }
    uint16_t* greens() { return greens_ + margin; }

    // Outside the frame far colours are the opposite ones, greens the mirrored ones.
    KRO_INLINE void continueSides(Columns frame, Columns made) {
        uint16_t *const colour = colours(), *const green = greens();
        if (made.begin == frame.begin) {
            colour[made.begin - 2] = colour[made.begin + 2];
            colour[made.begin - 1] = colour[made.begin + 3];
            green[made.begin - 1] = green[made.begin + 1];
        }
        if (made.end == frame.end) {
            colour[made.end] = colour[made.end - 4];
            colour[made.end + 1] = colour[made.end - 3];
            green[made.end] = green[made.end - 2];
        }
    }

private:
    static constexpr int32_t margin = 32;
    alignas(64) uint16_t colours_[mostColumns + 2 * margin];
    alignas(64) uint16_t greens_[mostColumns + 2 * margin];
};
template <class Sample, int32_t mostColumns>
using FoldOf = std::conditional_t<sizeof(Sample) == 2, Fold<mostColumns>, std::integral_constant<int, 0>>;

// ---- the two passes over one row, or two folded ones, of a strip ----

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

template <class S>
struct EdgeGreen {
    // `rows`: from two above to two below.
    static void make(bool colourOdd, const uint8_t* const (&rows)[5], Columns made, Columns frame,
                     int16_t* differences) {
        (colourOdd ? bytes<true> : bytes<false>)(rows[0], rows[1], rows[2], rows[3], rows[4], made, frame,
                                                 differences);
    }
    template <class Number>
    static void make(bool colourOdd, const FoldedRows& rows, Columns made, Columns frame, int32_t top,
                     Number* differences) {
        (colourOdd ? words<Number, true> : words<Number, false>)(rows, made, frame, top, differences);
    }
    static void fold(bool colourOdd, const uint16_t* upper, const uint16_t* lower, Columns made, Columns frame,
                     uint16_t* colours, uint16_t* greens) {
        (colourOdd ? foldRows<true> : foldRows<false>)(upper, lower, made, frame, colours, greens);
    }

private:
    template <bool colourOdd>
    static KRO_OUTLINE void bytes(const uint8_t* above2, const uint8_t* above, const uint8_t* here,
                                  const uint8_t* below, const uint8_t* below2, Columns made, Columns frame,
                                  int16_t* differences) {
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
        eachBlock<typename S::Words, 0>(made, frame, frame, [=](auto block) KRO_INLINE_LAMBDA {
            using L = WordLanes<S, decltype(block), sizeof(Number) == 4>;
            L::storeLanes(differences + block.x, foldedDifference<L, colourOdd>(block, in, topOf<L>(top)));
        });
    }
    template <bool colourOdd>
    static KRO_OUTLINE void foldRows(const uint16_t* upper, const uint16_t* lower, Columns made, Columns frame,
                                     uint16_t* colours, uint16_t* greens) {
        eachBlock<typename S::Words, 0>(made, frame, frame, [=](auto block) KRO_INLINE_LAMBDA {
            using V = typename decltype(block)::Vector;
            const auto atUpper = block.template tap<0>(upper), atLower = block.template tap<0>(lower);
            V::store(colours + block.x, folded<colourOdd, V>(atUpper, atLower));
            V::store(greens + block.x, folded<colourOdd, V>(atLower, atUpper));
        });
    }
};

// The differences that a row's colours are made of.
template <class Number>
struct DifferenceRows {
    const Number *above, *same, *below;
};

// A row of the output, or of words two folded ones, the lower of which may be missing.
struct ColourRow {
    const Target& target;
    Phase phase;
    int32_t y;
    const Strip& strip;
    Columns alphaColumns;
    int32_t top;
};

template <class S, class Sample, Output kind>
struct EdgeColour {
    static constexpr bool ordered = isInterleaved(kind);

    template <class Number>
    static KRO_INLINE void row(const ColourRow& to, const Sample* here, const DifferenceRows<Number>& rows) {
        const bool ownFirst = ordered && ownComesFirst(to.target, to.phase);
        const auto make = to.phase.greenFirst ? (ownFirst ? one<Number, true, ordered> : one<Number, true, false>)
                                              : (ownFirst ? one<Number, false, ordered> : one<Number, false, false>);
        make(to, here, rows.above, rows.same, rows.below);
    }
    // Both rows of a unit: what they share is loaded and added up once.
    template <class Number>
    static KRO_INLINE void rows(const ColourRow& to, const Sample* upper, const Sample* lower,
                                const DifferenceRows<Number>& rows) {
        const bool ownFirst = ordered && ownComesFirst(to.target, to.phase);
        const auto make = to.phase.greenFirst ? (ownFirst ? two<Number, true, ordered> : two<Number, true, false>)
                                              : (ownFirst ? two<Number, false, ordered> : two<Number, false, false>);
        make(to, upper, lower, rows.above, rows.same, rows.below);
    }

private:
    template <class Number, bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void one(const ColourRow& to, const Sample* here, const Number* above, const Number* same,
                                const Number* below) {
        auto out = rowTarget<kind, Sample>(to.target, to.phase, to.y, to.strip.first);
        out.alphaColumns = to.alphaColumns;
        const int32_t top = to.top;
        const Columns frame = to.strip.frame;
        eachBlock<BackEnd<S, Sample>, 1>(
            to.strip.made, frame, innerColumns<1>(frame), [=](auto block) KRO_INLINE_LAMBDA {
                put<kind, ownFirst>(out, block,
                                    edgePixels(neighbours<colourOdd>(block, here, above, same, below, top)));
            });
        finishRow<kind>(out, to.strip.made);
    }
    template <class Number, bool colourOdd, bool ownFirst>
    static KRO_OUTLINE void two(const ColourRow& to, const Sample* upper, const Sample* lower, const Number* above,
                                const Number* same, const Number* below) {
        const auto first = rowTarget<kind, Sample>(to.target, to.phase, to.y, to.strip.first);
        const auto second = rowTarget<kind, Sample>(to.target, phaseOfRow(to.phase, 1), to.y + 1, to.strip.first);
        const int32_t top = to.top;
        const Columns frame = to.strip.frame;
        eachBlock<BackEnd<S, Sample>, 1>(
            to.strip.made, frame, innerColumns<1>(frame), [=](auto block) KRO_INLINE_LAMBDA {
                const auto one = edgePixels(neighbours<colourOdd>(block, upper, above, same, same, top));
                const auto two = edgePixels(neighbours<!colourOdd>(block, lower, same, same, below, top));
                put<kind, ownFirst>(first, block, one);
                put<kind, ordered && !ownFirst>(second, block, two);
            });
        finishRow<kind>(first, to.strip.made);
        finishRow<kind>(second, to.strip.made);
    }
    template <bool colourOdd, class B>
    static KRO_INLINE auto neighbours(B block, const uint8_t* here, const int16_t* above, const int16_t* same,
                                      const int16_t* below, int32_t) {
        const int32_t lane = block.x / 2;
        return ByteNeighbours<colourOdd, B>{block.template tap<0>(here), above + lane, same + lane, below + lane};
    }
    template <bool colourOdd, class B, class Number>
    static KRO_INLINE auto neighbours(B block, const uint16_t* here, const Number* above, const Number* same,
                                      const Number* below, int32_t top) {
        using L = WordLanes<S, B, sizeof(Number) == 4>;
        return WordNeighbours<L, colourOdd, B>{block.template tap<0>(here), above + block.x, same + block.x,
                                               below + block.x, topOf<L>(top)};
    }
};

// ---- a strip ----

// What a strip works on besides its rows.
struct EdgeFrame {
    int32_t height, width;
    Phase phase;
    Target target;
    int32_t top;        // words: interpolated samples end here
    int32_t firstRow;   // units count from here
    RowSpan alphaRows;  // rows whose alpha is written, in alphaColumns, where it is not written everywhere
};

// `Source` gives rows: source[y] mirrored at the top and bottom, source.at(y) of the frame itself.
template <class S, class Sample, class Number, Output kind, class Source, int32_t mostColumns>
class EdgeStrip {
    static constexpr int32_t folded = rowsFolded<Sample>;
    using Width = std::integral_constant<int32_t, folded>;
    using Colours = EdgeColour<S, Sample, kind>;

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
    // What greens of those columns see.
    Columns sampleColumns() const {
        return {greens_.begin - 2 < strip_.frame.begin ? strip_.frame.begin : greens_.begin - 2,
                greens_.end + 2 > strip_.frame.end ? strip_.frame.end : greens_.end + 2};
    }

    KRO_INLINE void green(int32_t unit) { makeGreen(unit, Width{}); }
    KRO_INLINE void colour(int32_t y) {
        colour(y, mirrored(y - 1, frame_.height), mirrored(y + 1, frame_.height), y);
    }
    // From the differences of given rows to a given row of the output.
    KRO_INLINE void colour(int32_t y, int32_t above, int32_t below, int32_t outputRow) {
        Colours::row(rowOf(y, outputRow), source_[y],
                     DifferenceRows<Number>{differences(above), differences(y), differences(below)});
    }
    // Rows y and y + 1, which are folded into one unit.
    KRO_INLINE void colourUnit(int32_t y) {
        Colours::rows(rowOf(y, y), source_[y], source_[y + 1],
                      DifferenceRows<Number>{differences(mirrored(y - 1, frame_.height)), differences(y),
                                             differences(mirrored(y + 2, frame_.height))});
    }
    Number* differences(int32_t y) { return differences_.row(unitOf(y)); }
    // After differences were put in.
    KRO_INLINE void mirrorSides(int32_t unit) {
        differences_.mirrorSides(unit, strip_.frame, greens_, colourIsOdd(unit));
    }

private:
    const EdgeFrame& frame_;
    Source& source_;
    const Strip strip_;
    const Columns greens_;
    Differences<Sample, Number, mostColumns> differences_;
    FoldOf<Sample, mostColumns> fold_;

    KRO_INLINE ColourRow rowOf(int32_t y, int32_t outputRow) const {
        Columns alpha{INT32_MIN, INT32_MAX};
        if (kind == Output::bgra && !frame_.target.alphaEverywhere) {
            const Columns written = alphaColumns(frame_.width);
            const bool here = y >= frame_.alphaRows.begin && y < frame_.alphaRows.end;
            alpha = here ? Columns{written.begin - strip_.first, written.end - strip_.first} : Columns{0, 0};
        }
        return {frame_.target, phaseOfRow(frame_.phase, y), outputRow, strip_, alpha, frame_.top};
    }
    bool colourIsOdd(int32_t unit) const {
        return phaseOfRow(frame_.phase, frame_.firstRow + folded * unit).greenFirst;
    }
    KRO_INLINE void makeGreen(int32_t unit, std::integral_constant<int32_t, 1>) {
        const int32_t y = frame_.firstRow + unit;
        EdgeGreen<S>::make(colourIsOdd(unit),
                           {source_[y - 2], source_[y - 1], source_[y], source_[y + 1], source_[y + 2]}, greens_,
                           strip_.frame, differences_.row(unit));
        mirrorSides(unit);
    }
    KRO_OUTLINE void makeGreen(int32_t unit, std::integral_constant<int32_t, 2>) {
        const int32_t y = frame_.firstRow + 2 * unit;
        const bool odd = colourIsOdd(unit);
        const Columns seen = sampleColumns();
        EdgeGreen<S>::fold(odd, source_[y], source_[y + 1], seen, strip_.frame, fold_.colours(), fold_.greens());
        fold_.continueSides(strip_.frame, seen);
        const auto far = [&](int32_t row) { return source_.at(opposite(row, frame_.height)); };
        EdgeGreen<S>::make(odd,
                           {fold_.colours(),
                            fold_.greens(),
                            source_[y - 1],
                            source_[y + 2],
                            {far(y - 2), far(y - 1), far(y + 2), far(y + 3)}},
                           greens_, strip_.frame, frame_.top, differences_.row(unit));
        mirrorSides(unit);
    }
};

}  // namespace
}  // namespace kro
