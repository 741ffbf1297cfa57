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

// A block at the first columns of its row, or the last, or (in a row not much longer than a block) both. On the right
// `room` columns follow it: 0, or 1 where an odd width leaves one to a cell.
template <class V, bool first, bool last>
struct EndBlock {
    using Vector = V;
    int32_t x;
    int32_t room;

    template <int k>
    KRO_INLINE typename V::Bytes tap(const uint8_t* row) const {
        if constexpr (first && k < 0) {
            return V::template loadMirroredLeft<-k>(row);
        }
        if constexpr (last && k > 0) {
            if (room == 0) {
                return V::template loadMirroredRight<k>(row + x);
            }
        }
        if constexpr (last && k > 1) {
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
KRO_INLINE void eachCell(Columns columns, int32_t width, const Text& text) {
    for (int32_t x = columns.begin & ~1; x < columns.end; x += 2) {
        text(CellBlock{x, width, x >= columns.begin, x + 1 < columns.end});
    }
}
// The one column that an odd width, or a rectangle from column 1 on, leaves beside the blocks of every row.
template <class Text>
KRO_OUTLINE void oddColumn(int32_t column, int32_t width, const Text& text) {
    text(CellBlock{column & ~1, width, column % 2 == 0, column % 2 != 0});
}
template <class Text>
KRO_RARE void fewCells(Columns columns, int32_t width, const Text& text) {
    eachCell(columns, width, text);
}
template <class V, class Text>
KRO_OUTLINE void onlyBlock(int32_t x, int32_t room, const Text& text) {
    text(EndBlock<V, true, true>{x, room});
}
template <class V, int reach, class Text>
KRO_INLINE void eachBlock(Columns columns, int32_t width, const Text& text) {
    constexpr int32_t step = V::columns;
    const int32_t begin = (columns.begin + 1) & ~1;
    const int32_t end = columns.end & ~1;
    if constexpr (step > 2) {
        if (end - begin >= step) {
            if (columns.begin < begin) {
                oddColumn(columns.begin, width, text);
            }
            int32_t x = begin;
            if (x < reach) {
                if (width - step < reach) {
                    onlyBlock<V>(0, width - step, text);
                } else {
                    text(EndBlock<V, true, false>{0, 0});
                }
                x = step;
            }
            const Text inner = text;  // a copy that no call takes the address of stays in registers
            const int32_t lastInner = (end < width - reach ? end : width - reach) - step;
            for (; x <= lastInner; x += step) {
                inner(InnerBlock<V>{x});
            }
            if (x < end) {
                text(EndBlock<V, false, true>{end - step, width - end});
            }
            if (end < columns.end) {
                oddColumn(end, width, text);
            }
        } else {
            fewCells(columns, width, text);
        }
    } else {
        const int32_t inner = width - 2 - reach < end - 2 ? width - 2 - reach : end - 2;
        const int32_t first = begin < reach ? begin + 2 : begin;
        if (first > inner) {
            fewCells(columns, width, text);
            return;
        }
        fewCells({columns.begin, first}, width, text);
        int32_t x = first;
        for (; x <= inner; x += 2) {
            text(InnerBlock<Cell>{x});
        }
        fewCells({x, columns.end}, width, text);
    }
}

}  // namespace
}  // namespace kro
