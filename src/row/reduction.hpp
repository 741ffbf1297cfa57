// Samples of any layout to bytes (their eight high bits) or to words (numbers of `bits` bits). A run of samples of a
// row is read on its own, so that a row can be made just before it is needed.
//
// What bounds it: loads, whose half stands across two lines of the cache, and shuffles. Zen 5, cycles for 64 samples
// to bytes from the first-level cache (AVX2 / AVX-512BW / VBMI): words 3 / 2 / 2, whole bytes of high bits 4 / 2.5
// / 2.2, runs of bits 5.5 / 3.5 / 3.5. A frame pays one or two more for samples from beyond the second level, since a
// row is read in one go: bilinear takes 24 (AVX2) and 13 cycles (VBMI) for as many pixels of 8 bits.
#pragma once

#include "row/blocks.hpp"
#include "row/packing.hpp"

namespace kro {
namespace {

// Calls step(i) for the blocks of `columns` elements in [0, count): whole blocks, then one more that ends at `count`.
// Returns how many elements from 0 are done: all, or none where not even one block fits.
template <int columns, class Step>
KRO_INLINE ptrdiff_t eachRun(ptrdiff_t count, const Step& step) {
    if (count < columns) {
        return 0;
    }
    const ptrdiff_t last = count - columns;
    for (ptrdiff_t i = 0; i < last; i += columns) {
        step(i);
    }
    step(last);
    return count;
}
// The same of what is read from `in`, `bytes` bytes a block. Those as far `below` are asked for block by block, if
// that is not 0: the next row, else waited for since a row is read in one go (Zen 5, 12 bits in packs or words to
// BGR8, 5 and 12 Mpixel, bilinear 1.05 to 1.4, edge-directed 1.2 to 1.5; a whole row at once gains two thirds of
// that, the row after the next no more).
template <int columns, int bytes, class Step>
KRO_INLINE ptrdiff_t eachRunOf(const void* in, ptrdiff_t below, ptrdiff_t count, const Step& step) {
    return eachRun<columns>(count, [&](ptrdiff_t i) KRO_INLINE_LAMBDA {
        if (below != 0) {
            const auto start = static_cast<ptrdiff_t>(static_cast<size_t>(i) * bytes / columns);
            for (ptrdiff_t line = 0; line < bytes; line += 64) {
                expectAt(in, below + start + line);
            }
        }
        step(i);
    });
}

// ---- words to bytes ----

// Samples of whole blocks of 16 saturate as signed words, those of the frame's incomplete last block are truncated.
// The eight high bits of 16-bit samples are always taken as they are.
constexpr ptrdiff_t saturatedSamples(ptrdiff_t n, uint32_t shift) { return shift <= 7 ? n & ~ptrdiff_t{15} : 0; }

KRO_INLINE uint8_t saturatedSample(uint16_t word, uint32_t shift) {
    const int32_t value = static_cast<int16_t>(word) >> shift;
    return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}
KRO_INLINE uint8_t truncatedSample(uint16_t word, uint32_t shift) {
    return static_cast<uint8_t>(shift < 16 ? word >> shift : 0);
}

// Words as they lie in memory, or with their bytes exchanged.
template <bool exchanged, class W>
KRO_INLINE typename W::Vector loadWords(const uint16_t* p) {
    if constexpr (exchanged) {
        const auto words = W::load(p);
        return W::bitOr(W::template shiftLeft<8>(words), W::template shiftRightLogical<8>(words));
    } else {
        return W::load(p);
    }
}
template <bool exchanged>
KRO_INLINE uint16_t wordAt(const uint16_t* p) {
    return exchanged ? static_cast<uint16_t>(*p << 8 | *p >> 8) : *p;
}

// Samples of a frame, of which `inBlocks` are left until those that are truncated.
template <class S, bool exchanged>
void reduceWords(const uint16_t* in, ptrdiff_t below, ptrdiff_t count, ptrdiff_t inBlocks, uint32_t shift,
                 uint8_t* out) {
    using V = typename S::Bytes;
    using W = typename S::Words;
    const ptrdiff_t saturated = inBlocks < 0 ? 0 : inBlocks < count ? inBlocks : count;
    ptrdiff_t i = 0;
    if constexpr (V::columns > 2) {
        constexpr int bytes = 2 * V::columns;
        const auto words = [=](ptrdiff_t k) KRO_INLINE_LAMBDA { return loadWords<exchanged, W>(in + k); };
        if (saturated > 0) {
            i = eachRunOf<V::columns, bytes>(in, below, saturated, [&](ptrdiff_t k) KRO_INLINE_LAMBDA {
                V::store(out + k, V::reduceSaturated(words(k), words(k + W::columns), static_cast<int>(shift)));
            });
        } else if (shift == 8) {
            i = eachRunOf<V::columns, bytes>(in, below, count, [&](ptrdiff_t k) KRO_INLINE_LAMBDA {
                V::store(out + k, V::highBytes(words(k), words(k + W::columns)));
            });
        }
    }
    for (; i < saturated; ++i) {
        out[i] = saturatedSample(wordAt<exchanged>(in + i), shift);
    }
    for (; i < count; ++i) {
        out[i] = truncatedSample(wordAt<exchanged>(in + i), shift);
    }
}

// ---- packed groups ----

KRO_INLINE void unpackOne(Layout layout, const uint8_t* packed, ptrdiff_t index, uint8_t* out) {
    const Packing p = packingOf(layout);
    *out = p.highFirst ? packed[index / p.samples * p.bytes + highByte(layout, static_cast<int>(index % p.samples))]
                       : static_cast<uint8_t>(packedSample(layout, packed, index) >> (p.bits - 8));
}
KRO_INLINE void unpackOne(Layout layout, const uint8_t* packed, ptrdiff_t index, uint16_t* out) {
    *out = static_cast<uint16_t>(packedSample(layout, packed, index));
}

// One block of samples from the start of a run of groups.
template <class S, Layout layout>
KRO_INLINE void unpackBlock(const uint8_t* in, uint8_t* out) {
    using V = typename S::Bytes;
    using W = typename S::Words;
    if constexpr (packingOf(layout).highFirst) {
        V::store(out, highBytesOf<V, layout>(in));
    } else {
        V::store(out, upperBytesOf<V, W, layout>(in));
    }
}
template <class S, Layout layout>
KRO_INLINE void unpackBlock(const uint8_t* in, uint16_t* out) {
    using W = typename S::Words;
    constexpr int unused = 16 - packingOf(layout).bits;
    W::store(out, W::template shiftRightLogical<unused>(leftAligned<W, layout, 0>(in)));
    W::store(out + W::columns, W::template shiftRightLogical<unused>(leftAligned<W, layout, 1>(in)));
}

// Samples [first, first + count) counted from the group that `packed` points to.
template <class S, Layout layout, class Sample>
void unpackRun(const uint8_t* packed, ptrdiff_t below, ptrdiff_t first, ptrdiff_t count, Sample* out) {
    constexpr Packing packing = packingOf(layout);
    const auto one = [&](ptrdiff_t i) KRO_INLINE_LAMBDA { unpackOne(layout, packed, first + i, out + i); };
    ptrdiff_t i = 0;
    if constexpr (S::Bytes::columns > 2) {
        for (; i < count && (first + i) % packing.samples != 0; ++i) {
            one(i);
        }
        const uint8_t* const groups = packed + (first + i) / packing.samples * packing.bytes;
        Sample* const to = out + i;
        constexpr size_t samples = packing.samples, bytes = packing.bytes;
        constexpr int columns = S::Bytes::columns;
        const ptrdiff_t whole = (count - i) / packing.samples * packing.samples;
        i += eachRunOf<columns, columns * bytes / samples>(groups, below, whole, [&](ptrdiff_t k) KRO_INLINE_LAMBDA {
            unpackBlock<S, layout>(groups + static_cast<size_t>(k) * bytes / samples, to + k);
        });
    }
    for (; i < count; ++i) {
        one(i);
    }
}

template <class S, class Sample>
void unpackLayout(Layout layout, const uint8_t* packed, ptrdiff_t below, ptrdiff_t first, ptrdiff_t count,
                  Sample* out) {
    switch (layout) {
        case Layout::gige10:
            return unpackRun<S, Layout::gige10>(packed, below, first, count, out);
        case Layout::gige12:
            return unpackRun<S, Layout::gige12>(packed, below, first, count, out);
        case Layout::lsb10:
            return unpackRun<S, Layout::lsb10>(packed, below, first, count, out);
        case Layout::lsb12:
            return unpackRun<S, Layout::lsb12>(packed, below, first, count, out);
        case Layout::lsb14:
            return unpackRun<S, Layout::lsb14>(packed, below, first, count, out);
        case Layout::csi10:
            return unpackRun<S, Layout::csi10>(packed, below, first, count, out);
        case Layout::csi12:
            return unpackRun<S, Layout::csi12>(packed, below, first, count, out);
        case Layout::csi14:
            return unpackRun<S, Layout::csi14>(packed, below, first, count, out);
        default:
            return;
    }
}

// ---- bytes and words to words ----

template <class S>
void widenBytes(const uint8_t* in, ptrdiff_t below, ptrdiff_t count, uint16_t* out) {
    using W = typename S::Words;
    ptrdiff_t i = 0;
    if constexpr (W::columns > 2) {
        i = eachRunOf<2 * W::columns, 2 * W::columns>(in, below, count, [&](ptrdiff_t k) KRO_INLINE_LAMBDA {
            typename W::Vector first, second;
            W::widenBytes(in + k, first, second);
            W::store(out + k, first);
            W::store(out + k + W::columns, second);
        });
    }
    for (; i < count; ++i) {
        out[i] = in[i];
    }
}

// Words to numbers of `bits` bits, larger ones to the largest.
template <class S, bool exchanged>
void limitWords(const uint16_t* in, ptrdiff_t below, ptrdiff_t count, int32_t bits, bool leftAligned, uint16_t* out) {
    using W = typename S::Words;
    const uint32_t top = (1u << bits) - 1;
    const int32_t down = leftAligned ? 16 - bits : 0;
    ptrdiff_t i = 0;
    if constexpr (W::columns > 2) {
        const auto most = W::all(static_cast<int32_t>(top));
        i = eachRunOf<W::columns, 2 * W::columns>(in, below, count, [&](ptrdiff_t k) KRO_INLINE_LAMBDA {
            W::store(out + k, W::atMost(W::shiftRightBy(loadWords<exchanged, W>(in + k), down), most));
        });
    }
    for (; i < count; ++i) {
        const uint32_t number = static_cast<uint32_t>(wordAt<exchanged>(in + i)) >> down;
        out[i] = static_cast<uint16_t>(number < top ? number : top);
    }
}

// Whether a word of a row has any of these bits.
template <class W>
KRO_OUTLINE bool anyBits(const uint16_t* row, Columns columns, int32_t which) {
    int32_t x = columns.begin;
    auto bits = W::all(0);
    for (; x <= columns.end - W::columns; x += W::columns) {
        bits = W::bitOr(bits, W::load(row + x));
    }
    int32_t rest = 0;
    for (; x < columns.end; ++x) {
        rest |= row[x];
    }
    return W::anyBits(bits, which) || (rest & which) != 0;
}

// ---- rows ----

// Runs of a row; the same columns of the next one are `below` bytes away, 0 if they are not to be asked for.
//
// Words to bytes or words. Left-aligned ones are reduced to their high bytes, as those of 16 bits are.
template <class S>
KRO_INLINE void readWords(const FrameJob& job, const uint16_t* in, ptrdiff_t below, ptrdiff_t first, ptrdiff_t count,
                          uint8_t* out) {
    const Source& source = job.source;
    const uint32_t shift = source.leftAligned ? 8 : static_cast<uint32_t>(source.bits - 8);
    const ptrdiff_t inBlocks = saturatedSamples(static_cast<ptrdiff_t>(job.height) * job.width, shift) - first;
    (source.exchanged ? reduceWords<S, true> : reduceWords<S, false>)(in, below, count, inBlocks, shift, out);
}
template <class S>
KRO_INLINE void readWords(const FrameJob& job, const uint16_t* in, ptrdiff_t below, ptrdiff_t, ptrdiff_t count,
                          uint16_t* out) {
    const Source& source = job.source;
    (source.exchanged ? limitWords<S, true> : limitWords<S, false>)(in, below, count, source.bits, source.leftAligned,
                                                                    out);
}
template <class S>
KRO_INLINE void readBytes(const uint8_t* in, ptrdiff_t, ptrdiff_t count, uint8_t* out) {
    __builtin_memcpy(out, in, static_cast<size_t>(count));
}
template <class S>
KRO_INLINE void readBytes(const uint8_t* in, ptrdiff_t below, ptrdiff_t count, uint16_t* out) {
    widenBytes<S>(in, below, count, out);
}

// The samples of row y in some of its columns. Of a large picture the same columns are asked for so many rows below.
template <class S, class Sample>
void readRun(const FrameJob& job, int32_t y, Columns columns, Sample* out, int32_t rowsBelow = 1) {
    const Source& source = job.source;
    const auto* const row = advanced(static_cast<const uint8_t*>(source.samples), y * source.stride);
    const ptrdiff_t count = columns.end - columns.begin;
    const ptrdiff_t passed = static_cast<ptrdiff_t>(y) * job.width;
    // Others have their rows in a cache: those of 64x64 would take 1.1 times as long, of 1280x960 .95 to 1.03.
    const bool large = job.target.ahead != 0;
    const ptrdiff_t apart = source.stride != 0 ? source.stride : packedBytes(source.layout, job.width);
    const ptrdiff_t below = large ? rowsBelow * apart : 0;
    if (source.layout == Layout::bytes) {
        readBytes<S>(row + columns.begin, below, count, out);
    } else if (source.layout == Layout::words) {
        readWords<S>(job, reinterpret_cast<const uint16_t*>(row) + columns.begin, below, passed + columns.begin,
                     count, out);
    } else {
        const ptrdiff_t first = (source.stride == 0 ? passed : 0) + columns.begin;
        unpackLayout<S>(source.layout, row, below, first, count, out);
    }
}

// The exported routines: runs of samples.
template <class S>
struct ReductionEntries {
    static void u16Tou8(const uint16_t* source, int32_t height, int32_t width, uint32_t shift, uint8_t* destination) {
        const int32_t n = wrappedProduct(height, width);
        reduceWords<S, false>(source, 0, n, saturatedSamples(n, shift), shift, destination);
    }
    // An odd count ends within a group, whose second sample is written too.
    static void unpacked(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination) {
        const ptrdiff_t n = wrappedProduct(height, width);
        unpackRun<S, Layout::gige12>(source, 0, 0, n <= 0 ? 0 : (n + 1) & ~ptrdiff_t{1}, destination);
    }
};

}  // namespace
}  // namespace kro
