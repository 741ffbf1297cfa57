// Pure integers: where samples lie, no pixels.
#pragma once

#include <cstdint>

#include "block/inline.hpp"
#include "kro/kro.h"

namespace kro {
namespace {

// Index reflected about the first and last of n samples: -1 is 1, n is n - 2. Serves every border of every family;
// indices reach at most two beyond the frame and n is at least 3.
KRO_INLINE constexpr int32_t mirrored(int32_t index, int32_t n) {
    return index < 0 ? -index : index >= n ? 2 * (n - 1) - index : index;
}

// First row (column) that the bilinear interior leaves to the border: one remains of an even size, two of an odd one.
constexpr int32_t firstBorder(int32_t size) { return size - 1 - (size & 1); }

// Rows of a frame in steps of two columns or rows: what the border routines call pairs.
constexpr int32_t borderPairs(int32_t size) { return size <= 3 ? 0 : ((size - 4) >> 1) + 1; }

// Counts of samples are the low 32 bits of height x width, as a signed number.
constexpr int32_t wrappedProduct(int32_t height, int32_t width) {
    return static_cast<int32_t>(static_cast<uint32_t>(height) * static_cast<uint32_t>(width));
}

// A half-open range of columns.
struct Columns {
    int32_t begin, end;
};

}  // namespace
}  // namespace kro
