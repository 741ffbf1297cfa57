// Pure integers: where samples lie, no pixels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/inline.hpp"

namespace kro {

// Half-open ranges.
struct Columns {
    int32_t begin, end;
};
struct RowSpan {
    int32_t begin, end;
};

namespace {

// Index reflected about the first and last of n samples: -1 is 1, n is n - 2. Serves every border of every family;
// indices reach at most two beyond the frame and n is at least 3.
KRO_INLINE constexpr int32_t mirrored(int32_t index, int32_t n) {
    return index < 0 ? -index : index >= n ? 2 * (n - 1) - index : index;
}

// The far samples of the 16-bit edge family stand two away from their centre, and on the other side of it where that
// is outside: index -2 (of centre 0) is 2, index n (of centre n - 2) is n - 4.
KRO_INLINE constexpr int32_t opposite(int32_t index, int32_t n) {
    return index < 0 ? index + 4 : index >= n ? index - 4 : index;
}

// First row (column) that the bilinear interior leaves to the border: one remains of an even size, two of an odd one.
constexpr int32_t firstBorder(int32_t size) { return size - 1 - (size & 1); }

// Pairs of rows or columns between the first and the last of a size: the steps of the border routines.
constexpr int32_t borderPairs(int32_t size) { return size <= 3 ? 0 : ((size - 4) >> 1) + 1; }

// Counts of samples are the low 32 bits of height x width, as a signed number.
constexpr int32_t wrappedProduct(int32_t height, int32_t width) {
    return static_cast<int32_t>(static_cast<uint32_t>(height) * static_cast<uint32_t>(width));
}

// A place in memory so many bytes on.
template <class T>
KRO_INLINE T* advanced(T* start, ptrdiff_t bytes) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(start) + bytes);
}
template <class T>
KRO_INLINE const T* advanced(const T* start, ptrdiff_t bytes) {
    return reinterpret_cast<const T*>(reinterpret_cast<const char*>(start) + bytes);
}

// Asks the nearest cache for what lies so many bytes away: a number, since that may be beyond any memory.
template <bool toWrite = false>
KRO_INLINE void expectAt(const void* start, ptrdiff_t bytes) {
    const uintptr_t expected = reinterpret_cast<uintptr_t>(start) + static_cast<uintptr_t>(bytes);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): see above
    __builtin_prefetch(reinterpret_cast<const void*>(expected), toWrite ? 1 : 0);
}

}  // namespace
}  // namespace kro
