// What a strip of the fine algorithm has at hand: rows of several planes, all in one piece of the stack.
//
// Even and odd columns lie apart, so a row of samples is two half rows; what is known at red and blue sites only, or
// is summed up for them, takes one. A lane stands for two columns.
#pragma once

#include "row/rectangle.hpp"

namespace kro {
namespace {

enum class Plane {
    bendsDown,      // of the samples in a column: of even columns, of odd ones
    bendsAcross,    // of those in a row: at red and blue sites, at green ones
    estimatesDown,  // of the difference at a red or blue site, times 16: plain, and where the neighbourhood is rough;
                    // a step before, sums of changesDown over five rows
    changesDown,  // variation of differences down the column, gradient of samples, from row to row: in the columns of
                  // this row's red or blue sites, of this row and the next
    variationsAcross,  // along the row: of a red or blue site, of that and the green one of the same lane
    gradientsAcross,   // likewise
    sumsAcross,        // variations and gradients across of five columns
    weight,            // of the estimate across, 0 to 4; below 0 where the neighbourhood is not smooth
    difference,        // estimates across and down, weighed, times 8
    colourMinusGreen,
    models,  // 16 x offset + slope: a colour is (slope x green + offset) / 2
    count
};

// How many rows are at hand, as many as lie between the one that is made and the last that is read with it, whose
// place it may take; and how many half rows a row takes. Four rows at most, in powers of two: within a step whose row
// is known modulo four all rows have fixed places.
struct PlaneRows {
    int32_t rows, parts;
};
constexpr PlaneRows planeRows[] = {{4, 2}, {4, 2}, {4, 2}, {4, 2}, {1, 2}, {2, 2},
                                   {4, 2}, {2, 1}, {4, 1}, {4, 1}, {4, 1}};
constexpr int32_t period = 4;

constexpr int32_t halfRowsBefore(Plane plane) {
    int32_t sum = 0;
    for (int32_t i = 0; i < static_cast<int32_t>(plane); ++i) {
        sum += planeRows[i].rows * planeRows[i].parts;
    }
    return sum;
}

// `aligned`: as blocks are, so that none lies across lines of the cache. It costs its bytes of the stack.
template <class Sample, class Number, int aligned>
class Planes {
public:
    // Of a half row. With few registers more of the stack goes to passes.
    static constexpr int32_t lanes = (sizeof(void*) == 8 ? 256 : 192) / static_cast<int32_t>(sizeof(Number));
    static constexpr int32_t beside = 5;  // of these, at both ends of a strip: what its pixels depend on

    // The first half row of a row; the others follow, `lanes` on.
    template <Plane plane>
    KRO_INLINE Number* row(int32_t y) {
        constexpr PlaneRows shape = planeRows[static_cast<int32_t>(plane)];
        constexpr int32_t first = margin + halfRowsBefore(plane) * lanes;
        return lanes_ + first + (y & (shape.rows - 1)) * (shape.parts * lanes);
    }
    // Even columns; odd ones follow, `lanes` on. Twelve rows are at hand, in three groups of four.
    KRO_INLINE Sample* samples(int32_t y) { return samplesOfGroup(y >> 2) + (y & 3) * (2 * lanes); }
    KRO_INLINE Sample* samplesOfGroup(int32_t group) {
        constexpr int32_t aboveFrame = 9;  // so that nothing is negative
        return samples_ + margin +
               static_cast<ptrdiff_t>(static_cast<uint32_t>(group + aboveFrame) % 3) * (8 * lanes);
    }

private:
    // Blocks look a few lanes beyond the first and the last half row.
    static constexpr int32_t margin = 64 / static_cast<int32_t>(sizeof(Number));

    // Zeros at first: what blocks find beside the columns of a strip is of no consequence, but defined.
    alignas(aligned) Number lanes_[halfRowsBefore(Plane::count) * lanes + 2 * margin] = {};
    alignas(aligned) Sample samples_[24 * lanes + 2 * margin] = {};
};

}  // namespace
}  // namespace kro
