// The rows of a frame as bytes or words. What a kernel can read is read in place; other samples are prepared row by
// row in a small ring just ahead of it, which costs far less than a pass over the whole frame.
#pragma once

#include "row/reduction.hpp"

namespace kro {
namespace {

// Most columns that a kernel works on at a time where the ring of rows is its own: its memory is on the stack.
template <class Sample>
constexpr int32_t ringColumns = sizeof(Sample) == 1 ? 2624 : 1280;
// Columns of the frame that stand beside a strip in the ring: the block that 16-bit edge makes beside it.
constexpr int32_t ringMargin = 32;

// Strips of about equal width, a multiple of 64 but for the last.
constexpr int32_t stripEnd(int32_t begin, int32_t width, int32_t most) {
    const int32_t left = width - begin, strips = (left + most - 1) / most;
    return strips == 1 ? width : begin + ((left / strips + 63) & ~63);
}

// Rows before a band that its first row may depend on: of the 16-bit edge family two folded ones and two far ones.
constexpr int32_t rowsBefore = 4;

template <class Sample, int32_t mostColumns, int32_t ringRows = kro::ringRows>
struct Ring {
    alignas(64) Sample rows[ringRows][mostColumns + 2 * ringMargin];
};

// What lies in memory as samples, but for words that are too large for their bits.
template <class Sample>
bool readableInPlace(const Source& source) {
    return sizeof(Sample) == 1 ? source.layout == Layout::bytes
                               : source.layout == Layout::words && !source.exchanged && !source.leftAligned;
}
// The bits that words should not have and may.
KRO_INLINE int32_t unlimitedBits(const Source& source) {
    return source.layout == Layout::words ? 0xFFFF & ~((1 << source.bits) - 1) : 0;
}
template <class Sample>
bool readInPlace(const Source& source) {
    return readableInPlace<Sample>(source) && (sizeof(Sample) == 1 || unlimitedBits(source) == 0);
}

// Asks for samples that are to be read a step later, so many bytes away.
// The processor's own prefetching ends with a page, which a row of a large frame fills. (Where rows are mirrored, or
// prepared in a ring, the address is of no use, and no harm.) Zen 5, frames of 12 Mpixel: edge-directed 1.1 to 1.4
// times as fast, bilinear to BGR8 1 to 1.1, to Mono8 1.2 to 1.3; within the caches nothing.
// Nearest waits for stores and would lose.
template <class V, class Sample>
KRO_INLINE void expectAway(const Sample* samples, ptrdiff_t bytes) {
    if constexpr (V::columns > 2) {
        expectAt(samples, bytes);
    }
}
// The columns of the `count`-th row below `row`, where rows lie as far apart as `row` and the one before it.
template <class V, int count = 1, class Sample>
KRO_INLINE void expectBelow(int32_t x, const Sample* before, const Sample* row) {
    expectAway<V>(row + x, count * (reinterpret_cast<intptr_t>(row) - reinterpret_cast<intptr_t>(before)));
}

// Rows of a strip of columns; column 0 of a row is the strip's first.
template <class S, class Sample, int32_t ringRows = kro::ringRows>
class Rows {
public:
    // `ring` is used where samples have to be prepared; `firstRow` is the first that is made of them.
    KRO_INLINE Rows(const FrameJob& job, Columns strip, int32_t firstRow, void* ring, ptrdiff_t ringStride)
        : job_(job), made_(firstRow < rowsBefore ? 0 : firstRow - rowsBefore), strip_(strip) {
        if (readInPlace<Sample>(job.source) || ring == nullptr) {
            first_ = static_cast<const Sample*>(job.source.samples) + strip.begin;
            stride_ = job.source.stride;
        } else {
            const int32_t left = strip.begin < ringMargin ? strip.begin : ringMargin;
            prepared_ = {strip.begin - left, job.width - strip.end < ringMargin ? job.width : strip.end + ringMargin};
            ring_ = static_cast<Sample*>(ring) + left;
            stride_ = ringStride;
        }
    }

    // Rows up to y, mirrored at the frame's ends, can be read until ringRows further ones were asked for.
    KRO_INLINE void prepare(int32_t y) {
        if (ring_ != nullptr) {
            makeUpTo(y < job_.height ? y : job_.height - 1);
        }
    }
    KRO_INLINE const Sample* operator[](int32_t y) const { return at(mirrored(y, job_.height)); }
    // A row of the frame itself.
    KRO_INLINE const Sample* at(int32_t y) const {
        return ring_ != nullptr ? rows_[y % ringRows] : advanced(first_, y * stride_);
    }

private:
    KRO_OUTLINE void makeUpTo(int32_t y) {
        for (; made_ <= y; ++made_) {
            const int32_t place = made_ % ringRows;
            Sample* const row = advanced(ring_, place * stride_);
            rows_[place] = fittingRow(made_);
            if (rows_[place] == nullptr) {
                readRun<S>(job_, made_, prepared_, row - (strip_.begin - prepared_.begin));
                rows_[place] = row;
            }
        }
    }
    // Words that need but a limit are read where they are, as long as none of the row exceeds it: less than a copy.
    KRO_INLINE const Sample* fittingRow(int32_t y) const {
        if constexpr (sizeof(Sample) == 2) {
            const kro::Source& source = job_.source;
            if (readableInPlace<Sample>(source)) {
                const Sample* const row = advanced(static_cast<const Sample*>(source.samples), y * source.stride);
                const bool fits = !anyBits<typename S::Words>(row, prepared_, unlimitedBits(source));
                return fits ? row + strip_.begin : nullptr;
            }
        }
        return nullptr;
    }

    const FrameJob& job_;
    const Sample* first_ = nullptr;  // where rows are read in place
    ptrdiff_t stride_;
    Sample* ring_ = nullptr;
    int32_t made_;
    Columns strip_, prepared_{};
    const Sample* rows_[ringRows];  // of the rows in the ring: where they are
};

}  // namespace
}  // namespace kro
