// What a strip of the fine algorithm has at hand: rings of rows of several planes, all in one piece of the stack.
//
// Even and odd columns lie apart, so a row of samples is two half rows; planes that are known at red and blue sites
// only, or are summed up for them, have one. A lane stands for two columns.
#pragma once

#include "row/rectangle.hpp"

namespace kro {
namespace {

enum class Plane {
    samples,
    differencesDown,  // own colour minus the other, times 4, down the column
    variationDown,    // how much that difference changes from the row above to the row below
    gradientDown,     // and how much the samples do
    variationAcross,  // of differences across, summed over the columns around
    gradientAcross,
    estimateAcross,  // of the difference at the site itself, times 8
    roughAcross,     // the same where the neighbourhood is rough
    difference,      // the estimates weighed, times 8
    weight,          // of the estimate across, 0 to 4; below 0 where the neighbourhood is not smooth
    colourMinusGreen,
    slope,  // a colour is (slope x green + offset) / 2
    offset,
    passing,  // from one pass to the next, within a row
    count
};

struct PlaneRows {
    int32_t rows, halves;
};
// As many rows as lie between the pass that makes them and the last one that reads them.
constexpr PlaneRows planeRows[] = {{12, 2}, {5, 2}, {5, 2}, {5, 2}, {5, 1}, {5, 1}, {3, 1},
                                   {3, 1},  {5, 1}, {3, 1}, {5, 1}, {4, 1}, {4, 1}, {1, 6}};
constexpr int32_t halfRowsBefore(Plane plane) {
    int32_t sum = 0;
    for (int32_t i = 0; i < static_cast<int32_t>(plane); ++i) {
        sum += planeRows[i].rows * planeRows[i].halves;
    }
    return sum;
}

template <class Number>
class Planes {
public:
    static constexpr int32_t lanes = 192 / static_cast<int32_t>(sizeof(Number));  // of a half row

    // Rows from `rowsAbove` before the frame on.
    template <Plane plane>
    KRO_INLINE Number* row(int32_t y, int32_t half = 0) {
        constexpr PlaneRows shape = planeRows[static_cast<int>(plane)];
        static_assert(rowsAbove % shape.rows == 0, "The place of a row is a remainder");
        const int32_t place = static_cast<int32_t>(static_cast<uint32_t>(y + rowsAbove) % shape.rows);
        return lanes_ + margin + (halfRowsBefore(plane) + place * shape.halves + half) * lanes;
    }

private:
    static constexpr int32_t rowsAbove = 60;
    static constexpr int32_t margin = 32;  // blocks may look beyond the first and the last half row

    // Zeros at first: what blocks find beside the columns of a strip is of no consequence, but defined.
    alignas(64) Number lanes_[halfRowsBefore(Plane::count) * lanes + 2 * margin] = {};
};

}  // namespace
}  // namespace kro
