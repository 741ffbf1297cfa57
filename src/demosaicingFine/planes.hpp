// What a strip of the fine algorithm has at hand: rings of rows of several planes, all in one piece of the stack.
//
// Even and odd columns lie apart, so a row of samples is two half rows; what is known at red and blue sites only, or
// is summed up for them, takes one. A lane stands for two columns.
#pragma once

#include "row/rectangle.hpp"

namespace kro {
namespace {

enum class Plane {
    samples,          // of even columns, of odd ones
    differencesDown,  // own colour minus the other, times 4, down the column: of even columns, of odd ones
    changesDown,      // variation of that difference and gradient of the samples from the row above to the row below
    sumsDown,         // variations and gradients of five rows
    sumsAcross,       // variations and gradients across of five columns
    estimates,        // across, of the difference at the site, times 8; the same where the neighbourhood is rough
    difference,       // the estimates across and down weighed, times 8
    weight,           // of the estimate across, 0 to 4; below 0 where the neighbourhood is not smooth
    colourMinusGreen,
    models,   // slope and offset: a colour is (slope x green + offset) / 2
    passing,  // from one pass to the next
    count
};

// How many half rows a row takes, and how many rows are at hand: as many as lie between the one that is made and the
// last that is read with it, whose place it may take.
struct PlaneRows {
    int32_t rows, parts;
};
constexpr PlaneRows planeRows[] = {{13, 2}, {6, 2}, {4, 4}, {2, 2}, {4, 2}, {3, 2},
                                   {4, 1},  {2, 1}, {4, 1}, {3, 2}, {1, 6}};
constexpr int32_t halfRowsBefore(Plane plane) {
    int32_t sum = 0;
    for (int32_t i = 0; i < static_cast<int32_t>(plane); ++i) {
        sum += planeRows[i].rows * planeRows[i].parts;
    }
    return sum;
}

template <class Number>
class Planes {
public:
    static constexpr int32_t lanes = 192 / static_cast<int32_t>(sizeof(Number));  // of a half row

    // The first half row of a row; the others follow, `lanes` on.
    template <Plane plane>
    KRO_INLINE Number* row(int32_t y) {
        constexpr PlaneRows shape = planeRows[static_cast<int>(plane)];
        static_assert(rowsAbove % shape.rows == 0, "The place of a row is a remainder");
        const uint32_t place = static_cast<uint32_t>(y + rowsAbove) % shape.rows;
        return lanes_ + margin + (halfRowsBefore(plane) + static_cast<int32_t>(place) * shape.parts) * lanes;
    }

private:
    static constexpr int32_t rowsAbove = 156;  // the first that is asked for is ten above the frame
    static constexpr int32_t margin = 32;      // blocks may look beyond the first and the last half row

    // Zeros at first: what blocks find beside the columns of a strip is of no consequence, but defined.
    alignas(64) Number lanes_[halfRowsBefore(Plane::count) * lanes + 2 * margin] = {};
};

}  // namespace
}  // namespace kro
