// Deeper and packed samples to bytes. A run of samples [first, first + count) of a frame of n is reduced on its own, so
// that a row can be made just before it is needed.
//
// What bounds it: two loads and a store for each block of bytes; unpacking without byte permutes across lanes adds two
// shuffles for every 16 samples.
#pragma once

#include "block/cell.hpp"
#include "frame/job.hpp"

namespace kro {
namespace {

// Calls step(i) for the blocks of V in [0, count): whole blocks, then one more that ends at `count`. Returns how many
// elements from 0 are done: all, or none where not even one block fits.
template <class V, class Step>
KRO_INLINE ptrdiff_t eachRun(ptrdiff_t count, const Step& step) {
    if (count < V::columns) {
        return 0;
    }
    ptrdiff_t i = 0;
    for (; i + V::columns <= count; i += V::columns) {
        step(i);
    }
    if (i < count) {
        step(count - V::columns);
    }
    return count;
}

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

template <class V>
void reduceWords(const uint16_t* samples, ptrdiff_t first, ptrdiff_t count, ptrdiff_t n, uint32_t shift,
                 uint8_t* out) {
    const uint16_t* const in = samples + first;
    const ptrdiff_t left = saturatedSamples(n, shift) - first;
    const ptrdiff_t saturated = left < 0 ? 0 : left < count ? left : count;
    ptrdiff_t i = 0;
    if constexpr (V::columns > 2) {
        if (saturated > 0) {
            i = eachRun<V>(saturated, [&](ptrdiff_t k) KRO_INLINE_LAMBDA {
                V::store(out + k, V::reduceSaturated(in + k, static_cast<int>(shift)));
            });
        } else if (shift == 8) {
            i = eachRun<V>(count, [&](ptrdiff_t k) KRO_INLINE_LAMBDA { V::store(out + k, V::highBytes(in + k)); });
        }
    }
    for (; i < saturated; ++i) {
        out[i] = saturatedSample(in[i], shift);
    }
    for (; i < count; ++i) {
        out[i] = truncatedSample(in[i], shift);
    }
}

// Two samples in three bytes; the middle one, which holds the low bits of both, is never read.
template <class V>
void unpackRun(const uint8_t* packed, ptrdiff_t first, ptrdiff_t count, uint8_t* out) {
    const auto sample = [&](ptrdiff_t k) { return packed[k / 2 * 3 + k % 2 * 2]; };
    ptrdiff_t i = 0;
    if (first % 2 != 0 && count > 0) {
        out[i++] = sample(first);
    }
    if constexpr (V::columns > 2) {
        const uint8_t* const groups = packed + (first + i) / 2 * 3;
        uint8_t* const to = out + i;
        i += eachRun<V>((count - i) & ~ptrdiff_t{1}, [&](ptrdiff_t k) KRO_INLINE_LAMBDA {
            V::store(to + k, V::unpackGroups(groups + k / 2 * 3));
        });
    }
    for (; i < count; ++i) {
        out[i] = sample(first + i);
    }
}

template <class V>
void reduceRun(const Source& source, ptrdiff_t first, ptrdiff_t count, ptrdiff_t n, uint8_t* out) {
    if (source.reduction == reductionUnpack) {
        unpackRun<V>(static_cast<const uint8_t*>(source.samples), first, count, out);
    } else {
        reduceWords<V>(static_cast<const uint16_t*>(source.samples), first, count, n,
                       static_cast<uint32_t>(source.reduction), out);
    }
}

template <class V>
struct ReductionKernels {
    static void u16Tou8(const uint16_t* source, int32_t height, int32_t width, uint32_t shift, uint8_t* destination) {
        const int32_t n = wrappedProduct(height, width);
        reduceWords<V>(source, 0, n, n, shift, destination);
    }
    // An odd count ends within a group, whose second sample is written too.
    static void unpacked(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination) {
        const ptrdiff_t n = wrappedProduct(height, width);
        unpackRun<V>(source, 0, n <= 0 ? 0 : (n + 1) & ~ptrdiff_t{1}, destination);
    }
};

}  // namespace
}  // namespace kro
