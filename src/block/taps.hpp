// Loading around a block: plainly inside a row, mirrored where a block stands at an end of it.
#pragma once

#include "block/cell.hpp"

namespace kro {
namespace {

// A block whose every tap lies inside the row.
template <class V>
struct InnerBlock {
    using Vector = V;
    int32_t x;

    template <int k>
    KRO_INLINE typename V::Bytes tap(const uint8_t* row) const {
        return V::load(row + x + k);
    }
};

// A block at the first or last columns of its row: `room` columns follow it.
template <class V>
struct EndBlock {
    using Vector = V;
    int32_t x;
    int32_t room;

    template <int k>
    KRO_INLINE typename V::Bytes tap(const uint8_t* row) const {
        if constexpr (k < 0) {
            if (x == 0) {
                return V::template loadMirroredLeft<-k>(row);
            }
        }
        if constexpr (k > 0) {
            if (room == 0) {
                return V::template loadMirroredRight<k>(row + x);
            }
        }
        if constexpr (k > 1) {
            if (room == 1) {
                return V::template loadMirroredRight<k - 1>(row + x + 1);
            }
        }
        return V::load(row + x + k);
    }
};

// A cell anywhere in a row of `width` columns, of which the output wants one or both columns.
struct CellBlock {
    using Vector = Cell;
    int32_t x;
    int32_t width;
    bool wantEven, wantOdd;

    template <int k>
    KRO_INLINE Cell::Bytes tap(const uint8_t* row) const {
        return {row[mirrored(x + k, width)], row[mirrored(x + k + 1, width)]};
    }
};

// Calls text(block) for the columns of a row of `width` columns: cells up to the first even column, wide blocks, once
// more a wide block that ends at the last even column (rows are not multiples of the block), cells for the rest.
// `reach` is the farthest tap of the text.
template <class Text>
KRO_OUTLINE void eachCell(Columns columns, int32_t width, const Text& text) {
    for (int32_t x = columns.begin & ~1; x < columns.end; x += 2) {
        text(CellBlock{x, width, x >= columns.begin, x + 1 < columns.end});
    }
}
template <class V, class Text>
KRO_INLINE void endBlock(int32_t x, int32_t width, const Text& text) {
    text(EndBlock<V>{x, width - x - V::columns});
}
template <class V, int reach, class Text>
KRO_INLINE void eachBlock(Columns columns, int32_t width, const Text& text) {
    constexpr int32_t step = V::columns;
    const int32_t begin = (columns.begin + 1) & ~1;
    const int32_t end = columns.end & ~1;
    if constexpr (step > 2) {
        if (end - begin >= step) {
            if (columns.begin < begin) {
                eachCell({columns.begin, begin}, width, text);
            }
            int32_t x = begin;
            if (x < reach) {
                endBlock<V>(x, width, text);
                x += step;
            }
            const int32_t lastInner = (end < width - reach ? end : width - reach) - step;
            const Text inner = text;  // a copy that no call takes the address of stays in registers
            for (; x <= lastInner; x += step) {
                inner(InnerBlock<V>{x});
            }
            if (x < end) {
                endBlock<V>(end - step, width, text);
            }
            if (end < columns.end) {
                eachCell({end, columns.end}, width, text);
            }
            return;
        }
    }
    eachCell(columns, width, text);
}

}  // namespace
}  // namespace kro
