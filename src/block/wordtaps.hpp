// Loading 16-bit samples around a block of columns, mirrored at the ends of the row.
#pragma once

#include "block/words.hpp"

namespace kro {
namespace {

// A block whose every tap lies inside the row.
template <class W>
struct InnerWords {
    using Back = W;
    int32_t x;

    template <int k>
    KRO_INLINE typename W::Lanes tap(const uint16_t* row) const {
        return W::load(row + x + k);
    }
};

// A block that may stand at an end of its row.
template <class W>
struct EndWords {
    using Back = W;
    int32_t x;
    int32_t width;

    template <int k>
    KRO_INLINE typename W::Lanes tap(const uint16_t* row) const {
        static_assert(k >= -1 && k <= 1, "rows are mirrored by one column");
        if (k < 0 && x == 0) {
            return W::loadMirroredLeft(row);
        }
        if (k > 0 && x + W::columns == width) {
            return W::loadMirroredRight(row + x);
        }
        return W::load(row + x + k);
    }
};

// Two columns anywhere in a row, of which the output wants one or both.
template <>
struct EndWords<CellWords> {
    using Back = CellWords;
    int32_t x;
    int32_t width;
    bool wantEven = true, wantOdd = true;

    template <int k>
    KRO_INLINE CellWords::Lanes tap(const uint16_t* row) const {
        const uint16_t pair[2] = {row[mirrored(x + k, width)], row[mirrored(x + k + 1, width)]};
        return CellWords::load(pair);
    }
};

template <class Text>
KRO_OUTLINE void eachWordCell(Columns columns, int32_t width, const Text& text) {
    for (int32_t x = columns.begin & ~1; x < columns.end; x += 2) {
        text(EndWords<CellWords>{x, width, x >= columns.begin, x + 1 < columns.end});
    }
}
template <class W, class Text>
KRO_OUTLINE void endWordBlock(int32_t x, int32_t width, const Text& text) {
    text(EndWords<W>{x, width});
}

// Calls text(block) for the columns of a row of `width` columns: inner blocks where a block lies within `inner`, end
// blocks elsewhere (the last one overlaps: rows are no multiples of the block), cells where no block fits.
template <class W, class Text>
KRO_INLINE void eachWordBlock(Columns columns, Columns inner, int32_t width, const Text& text) {
    constexpr int32_t step = W::columns;
    const int32_t begin = (columns.begin + 1) & ~1;
    const int32_t end = columns.end & ~1;
    if (end - begin < step) {
        eachWordCell(columns, width, text);
        return;
    }
    if (columns.begin < begin) {
        eachWordCell({columns.begin, begin}, width, text);
    }
    int32_t x = begin;
    if (x < inner.begin) {
        endWordBlock<W>(x, width, text);
        x += step;
    }
    const int32_t lastInner = (end < inner.end ? end : inner.end) - step;
    for (; x <= lastInner; x += step) {
        text(InnerWords<W>{x});
    }
    for (; x < end; x += step) {
        endWordBlock<W>(x < end - step ? x : end - step, width, text);
    }
    if (end < columns.end) {
        eachWordCell({end, columns.end}, width, text);
    }
}

}  // namespace
}  // namespace kro
