// Blocks of columns: loading around them, plainly inside a row, mirrored where a block stands at an end of it.
#pragma once

#include "vector/pair.hpp"

namespace kro {
namespace {

// A block whose every tap lies inside the row.
template <class V>
struct InnerBlock {
    using Vector = V;
    int32_t x;

    template <int k>
    KRO_INLINE typename V::Vector tap(const typename V::Sample* row) const {
        return V::load(row + x + k);
    }
};

// A block at the first columns of its row, or the last, or (in a row not much longer than a block) both. On the right
// `room` columns follow it: 0, or 1 where an odd width leaves one to a pair.
template <class V, bool first, bool last>
struct EndBlock {
    using Vector = V;
    int32_t x;
    int32_t room;

    template <int k>
    KRO_INLINE typename V::Vector tap(const typename V::Sample* row) const {
        if constexpr (first && k < 0) {
            return V::template loadLeft<-k>(row + x);
        }
        if constexpr (last && k > 0) {
            if (room == 0) {
                return V::template loadRight<k>(row + x);
            }
        }
        if constexpr (last && k > 1) {
            if (room == 1) {
                return V::template loadRight<k - 1>(row + x + 1);
            }
        }
        return V::load(row + x + k);
    }
};

// The pair of columns x and x + 1 anywhere in a row that exists in `frame`, of which the output wants one or both.
template <class P>
struct PairBlock {
    using Vector = P;
    int32_t x;
    Columns frame;
    bool wantEven, wantOdd;

    template <int k>
    KRO_INLINE typename P::Vector tap(const typename P::Sample* row) const {
        return P::pairOf(row[inside(x + k)], row[inside(x + k + 1)]);
    }

private:
    KRO_INLINE int32_t inside(int32_t column) const {
        return frame.begin + mirrored(column - frame.begin, frame.end - frame.begin);
    }
};

// The pair that goes with a back end's samples.
template <class Sample>
struct PairFor;
template <>
struct PairFor<uint8_t> {
    using Type = PairBytes;
};
template <>
struct PairFor<uint16_t> {
    using Type = PairWords;
};
template <class V>
using PairOf = typename PairFor<typename V::Sample>::Type;

// ---- the columns of a row ----
//
// Blocks take what they can, pairs of columns the rest: an odd column on either side, or rows that are narrower than
// a block. Functions of rows are instantiated once for each of the two: a formula that went to a call out of line
// would lie in memory, and the first wide load from what narrow stores have just put there waits for them.

template <class V>
KRO_INLINE Columns blockColumns(Columns made, Columns inner) {
    const int32_t begin = (made.begin + 1) & ~1, end = made.end & ~1;
    Columns columns{begin, end};
    if constexpr (V::columns == 2) {
        columns.begin = begin < inner.begin ? begin + 2 : begin;
        columns.end = columns.begin + (((end < inner.end ? end : inner.end) - columns.begin) & ~1);
    }
    return columns.end - columns.begin < V::columns ? Columns{made.begin, made.begin} : columns;
}

// A row that has nothing to do from piece to piece is one piece (others: RowsAhead, store.hpp).
struct InOnePiece {
    KRO_INLINE int32_t begin(int32_t, int32_t last) const { return last; }
};
// Blocks that begin from column x to `last`, and the column behind them. `pieces` learns where a piece begins, and
// says where its last block may.
template <class V, class Pieces, class Make>
KRO_INLINE int32_t eachOf(int32_t x, int32_t last, const Pieces& pieces, const Make& make) {
    if (x > last) {
        return x;
    }
    do {
        const int32_t end = pieces.begin(x, last);
        do {
            make(x);
            x += V::columns;
        } while (x <= end);
    } while (x <= last);
    return x;
}

struct InPairs {
    template <class V, int reach, class Formula, class Pieces = InOnePiece>
    static KRO_INLINE void each(Columns made, Columns frame, Columns, const Formula& formula, const Pieces& = {}) {
        for (int32_t x = made.begin & ~1; x < made.end; x += 2) {
            formula(PairBlock<PairOf<V>>{x, frame, x >= made.begin, x + 1 < made.end});
        }
    }
};

// Wide blocks over even columns, at least a block apart: an end block where the row begins, inner blocks within
// `inner`, end blocks to the right of it. The last one overlaps, since rows are no multiples of the block, and writes
// the same values again. `reach` is the farthest tap of the formula.
struct InBlocks {
    template <class V, int reach, class Formula, class Pieces = InOnePiece>
    static KRO_INLINE void each(Columns made, Columns frame, Columns inner, const Formula& formula,
                                const Pieces& pieces = {}) {
        constexpr int32_t step = V::columns;
        int32_t x = made.begin;
        if constexpr (step > 2) {
            if (x < inner.begin) {  // only where strips count from the frame's first column: column 0
                if (frame.end - step < reach) {
                    formula(EndBlock<V, true, true>{0, frame.end - step});
                    return;
                }
                formula(EndBlock<V, true, false>{0, 0});
                x = step;
            }
        }
        const int32_t lastInner = (made.end < inner.end ? made.end : inner.end) - step;
        x = eachOf<V>(x, lastInner, pieces, [&](int32_t at) KRO_INLINE_LAMBDA { formula(InnerBlock<V>{at}); });
        if constexpr (step > 2) {
            for (; x < made.end; x += step) {
                const int32_t place = x < made.end - step ? x : made.end - step;
                formula(EndBlock<V, false, true>{place, frame.end - place - step});
            }
        }
    }
};

// ---- formulas that look at nothing beside them, from an even column on ----
//
// Whole blocks, of which the last overlaps, and pairs of columns for what they leave: the last column of an odd
// width, or a row narrower than a block.
template <class V>
KRO_INLINE bool fillsBlock(Columns made) {
    return (made.end & ~1) - made.begin >= V::columns;
}
template <class V>
KRO_INLINE bool leavesPairs(Columns made) {
    return made.end % 2 != 0 || !fillsBlock<V>(made);
}
// Of a row that fills a block. (With the last block in code of its own, AVX-512 makes 16-bit edge-directed pictures
// of 2 and 12 Mpixel .82 to .95 times as fast.)
template <class V, class Formula, class Pieces>
KRO_INLINE void eachWholeBlock(Columns made, const Formula& formula, const Pieces& pieces) {
    const int32_t last = (made.end & ~1) - V::columns;
    int32_t x = made.begin;
    for (;;) {
        const int32_t end = pieces.begin(x, last);
        for (bool over = false; !over;) {
            formula(InnerBlock<V>{x});
            if (x >= last) {
                return;
            }
            over = x >= end;
            x = x + V::columns < last ? x + V::columns : last;
        }
    }
}
template <class V, class Formula>
KRO_INLINE void eachPairLeft(Columns made, const Formula& formula) {
    const int32_t begin = fillsBlock<V>(made) ? made.end & ~1 : made.begin;
    InPairs::each<V, 0>({begin, made.end}, {}, {}, formula);
}
template <int reach>
KRO_INLINE constexpr Columns innerColumns(Columns frame) {
    return {frame.begin + reach, frame.end - reach};
}

}  // namespace
}  // namespace kro
