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
    changesDown,      // variation of that difference and gradient of the samples from the row above to the row below:
                      // both of even columns, both of odd ones
    sumsAcross,       // variations and gradients across of five columns
    difference,       // estimates across and down, weighed, times 8
    colourMinusGreen,
    estimates,  // across, of the difference at the site, times 8; the same where the neighbourhood is rough
    models,     // slope and offset: a colour is (slope x green + offset) / 2; 1 more, so that means are rounded
    sumsDown,   // variations and gradients of five rows
    weight,     // of the estimate across, 0 to 4; below 0 where the neighbourhood is not smooth
    passing,    // from one pass to the next
    count
};

// How many rows are at hand, as many as lie between the one that is made and the last that is read with it, whose
// place it may take; and how many half rows a row takes.
struct PlaneRows {
    int32_t rows, parts;
};
constexpr PlaneRows planeRows[] = {{13, 2}, {6, 2}, {4, 4}, {4, 2}, {4, 1}, {4, 1},
                                   {3, 2},  {3, 2}, {2, 2}, {2, 1}, {1, 6}};
constexpr PlaneRows rowsOf(Plane plane) { return planeRows[static_cast<int>(plane)]; }

// Planes of as many rows follow each other and share a ring: its row holds a row of each, so that few addresses lead
// to all of them.
struct PlaceInRing {
    int32_t ring;   // half rows before the ring
    int32_t part;   // half rows before the plane's, in a row of the ring
    int32_t parts;  // half rows of the ring's row
};
constexpr PlaceInRing placeOf(Plane plane) {
    PlaceInRing place{};
    int32_t passed = 0;
    for (int32_t i = 0; i < static_cast<int32_t>(Plane::count); ++i) {
        const PlaneRows shape = planeRows[i];
        if (shape.rows == rowsOf(plane).rows) {
            place.ring = place.parts == 0 ? passed : place.ring;
            place.part = i == static_cast<int32_t>(plane) ? place.parts : place.part;
            place.parts += shape.parts;
        }
        passed += shape.rows * shape.parts;
    }
    return place;
}
constexpr int32_t halfRows() {
    int32_t sum = 0;
    for (const PlaneRows& shape : planeRows) {
        sum += shape.rows * shape.parts;
    }
    return sum;
}

// i modulo n, looked up: with some thirty rows a step, divisions would cost a tenth of all time.
template <int32_t n>
struct Remainders {
    int8_t of[32];
};
template <int32_t n>
constexpr Remainders<n> remainders() {
    Remainders<n> table{};
    for (int i = 0; i < 32; ++i) {
        table.of[i] = static_cast<int8_t>(i % n);
    }
    return table;
}

template <class Number>
class Planes {
public:
    static constexpr int32_t lanes = 192 / static_cast<int32_t>(sizeof(Number));  // of a half row

    // From here on rows from y - 12 to y + 2 are asked for.
    KRO_INLINE void moveTo(int32_t y) {
        passed3_ = wholeRings<3>(y - 12);
        passed6_ = wholeRings<6>(y - 12);
        passed13_ = wholeRings<13>(y - 12);
    }
    // The first half row of a row; the others follow, `lanes` on.
    template <Plane plane>
    KRO_INLINE Number* row(int32_t y) {
        constexpr PlaceInRing place = placeOf(plane);
        return lanes_ + margin + (place.ring + place.part) * lanes +
               rowInRing<rowsOf(plane).rows>(y) * (place.parts * lanes);
    }

private:
    // Blocks look a few lanes beyond the first and the last half row.
    static constexpr int32_t margin = 64 / static_cast<int32_t>(sizeof(Number));

    int32_t passed3_ = 0, passed6_ = 0, passed13_ = 0;  // rows in whole rings before those that are asked for
    // Zeros at first: what blocks find beside the columns of a strip is of no consequence, but defined.
    alignas(64) Number lanes_[halfRows() * lanes + 2 * margin] = {};

    template <int32_t rows>
    KRO_INLINE ptrdiff_t rowInRing(int32_t y) const {
        if constexpr ((rows & (rows - 1)) == 0) {
            return y & (rows - 1);
        } else {
            static constexpr Remainders<rows> remainder = remainders<rows>();
            return remainder.of[y - (rows == 3 ? passed3_ : rows == 6 ? passed6_ : passed13_)];
        }
    }
    template <int32_t rows>
    static constexpr int32_t wholeRings(int32_t y) {
        constexpr uint32_t above = 100 * rows;  // so that nothing is negative
        return static_cast<int32_t>((static_cast<uint32_t>(y) + above) / rows * rows - above);
    }
};

}  // namespace
}  // namespace kro
