// Packed samples, two or four in a group of bytes, taken out of it.
//
// Every layout has 8 samples in as many bytes as a sample has bits (but GigE's 10 bits: 12), and every sample within
// two neighbouring bytes, or in a byte of high bits and one or two of low ones. So one description serves them all:
// two words of bytes are picked for each sample and multiplied by a power of two, which moves its bits to the upper
// end of a word:
//
//     lsb10, lsb12   first word: the two bytes that hold it                               shifted left
//     lsb14          the same, or of three bytes the upper two; second word: the lower two, shifted right
//     gige, csi      first word: its high byte, in place; second word: its low bits, shifted left, then 8 to the
//     right
//
// What stands below its bits then belongs to its neighbours and is shifted out by who takes the number.
#pragma once

#include "records/job.hpp"
#include "vector/shuffles.hpp"

namespace kro {
namespace {

struct Packing {
    int bits;
    int samples, bytes;  // of a group
    bool highFirst;      // a whole byte of high bits for each sample; else a run of bits
};
constexpr Packing packingOf(Layout layout) {
    switch (layout) {
        case Layout::gige10:
            return {10, 2, 3, true};
        case Layout::gige12:
        case Layout::csi12:
            return {12, 2, 3, true};
        case Layout::csi10:
            return {10, 4, 5, true};
        case Layout::csi14:
            return {14, 4, 7, true};
        case Layout::lsb10:
            return {10, 4, 5, false};
        case Layout::lsb12:
            return {12, 2, 3, false};
        case Layout::lsb14:
            return {14, 4, 7, false};
        default:
            return {8, 1, 1, true};
    }
}

// Bytes of `n` samples from the start of a group on; the last group is whole.
constexpr ptrdiff_t packedBytes(Layout layout, ptrdiff_t n) {
    const Packing p = packingOf(layout);
    return (n + p.samples - 1) / p.samples * p.bytes;
}

// Where the bits of sample i of a group begin: its byte of high bits (GigE: bytes 0 and 2), and the bit of its low
// ones.
constexpr int highByte(Layout layout, int i) {
    return layout == Layout::gige10 || layout == Layout::gige12 ? 2 * i : i;
}
constexpr int lowBit(Layout layout, int i) {
    const Packing p = packingOf(layout);
    return !p.highFirst               ? i * p.bits
           : layout == Layout::gige10 ? 8 + 4 * i
           : layout == Layout::gige12 ? 8 + 4 * i
                                      : 8 * p.samples + i * (p.bits - 8);
}

// One sample, by its definition.
KRO_INLINE uint32_t packedSample(Layout layout, const uint8_t* packed, ptrdiff_t index) {
    const Packing p = packingOf(layout);
    const int i = static_cast<int>(index % p.samples);
    const uint8_t* const group = packed + index / p.samples * p.bytes;
    const int first = lowBit(layout, i), lowBits = p.highFirst ? p.bits - 8 : p.bits;
    uint32_t low = 0;
    for (int bit = first / 8 * 8; bit < first + lowBits; bit += 8) {
        low |= static_cast<uint32_t>(group[bit / 8]) << (bit - first / 8 * 8);
    }
    low = (low >> (first % 8)) & ((1u << lowBits) - 1);
    return p.highFirst ? static_cast<uint32_t>(group[highByte(layout, i)]) << lowBits | low : low;
}

// ---- vectors: runs of 16 samples, each from two loads of 16 bytes that end with the run's last byte ----

constexpr int runBytes(Layout layout) { return 16 / packingOf(layout).samples * packingOf(layout).bytes; }
constexpr int runLane(Layout layout, int lane) {
    return lane / 2 * runBytes(layout) + lane % 2 * (runBytes(layout) - 16);
}

// The first and second word of sample k (0 to 15) of a run, as bytes of the run (-1: none), and their factors.
struct Picked {
    int low[2], high[2];
    uint16_t factor[2];
};
constexpr Picked pickedOf(Layout layout, int k) {
    const Packing p = packingOf(layout);
    const int group = k / p.samples * p.bytes, i = k % p.samples;
    const int first = lowBit(layout, i), byte = group + first / 8, bit = first % 8;
    if (p.highFirst) {
        const int lowBits = p.bits - 8;
        const bool spread = bit + lowBits > 8;
        return {{-1, byte},
                {group + highByte(layout, i), spread ? byte + 1 : -1},
                {1, static_cast<uint16_t>(1 << (16 - lowBits - bit))}};
    }
    if (bit + p.bits <= 16) {
        return {{byte, -1}, {byte + 1, -1}, {static_cast<uint16_t>(1 << (16 - p.bits - bit)), 0}};
    }
    // Bits of three bytes: 8 - (bit + bits - 16) places are free above the upper two.
    return {{byte + 1, byte},
            {byte + 2, byte + 1},
            {static_cast<uint16_t>(1 << (24 - p.bits - bit)), static_cast<uint16_t>(1 << (32 - p.bits - bit))}};
}

// Tables for the lanes of vector j of the two that a back end makes at once.
template <Layout layout, int word, int lanes, int j>
constexpr Shuffle<16 * lanes> pickedBytes() {
    Shuffle<16 * lanes> table{};
    for (int lane = 0; lane < lanes; ++lane) {
        const int place = j * lanes + lane, half = place % 2;
        for (int i = 0; i < 8; ++i) {
            const Picked picked = pickedOf(layout, 8 * half + i);
            const int base = half * (runBytes(layout) - 16);
            const int low = picked.low[word], high = picked.high[word];
            table.byte[16 * lane + 2 * i] = low < 0 ? nothing : static_cast<uint8_t>(low - base);
            table.byte[16 * lane + 2 * i + 1] = high < 0 ? nothing : static_cast<uint8_t>(high - base);
        }
    }
    return table;
}
template <Layout layout, int word, int lanes>
constexpr WordIndices<8 * lanes> factors() {
    WordIndices<8 * lanes> table{};
    for (int i = 0; i < 8 * lanes; ++i) {
        table.word[i] = pickedOf(layout, i % 8).factor[word];
    }
    return table;
}

// The bytes of high bits of 16 samples a lane, in the first or the last 16 bytes of their run.
template <Layout layout, int half, int lanes>
constexpr Shuffle<16 * lanes> pickedHighBytes() {
    Shuffle<16 * lanes> table{};
    for (int o = 0; o < 16 * lanes; ++o) {
        const int place = pickedOf(layout, o % 16).high[0], from = half * (runBytes(layout) - 16);
        const bool here = half == 0 ? place < 16 : place >= 16;
        table.byte[o] = here ? static_cast<uint8_t>(place - from) : nothing;
    }
    return table;
}
// The same of 64 samples, out of the first and the last 64 of their bytes (indices 64 and up).
template <Layout layout>
constexpr Shuffle<64> pickedHighBytes64() {
    Shuffle<64> table{};
    for (int o = 0; o < 64; ++o) {
        const int place = o / 16 * runBytes(layout) + pickedOf(layout, o % 16).high[0];
        table.byte[o] = static_cast<uint8_t>(place < 64 ? place : 64 + place - (4 * runBytes(layout) - 64));
    }
    return table;
}
template <class V, Layout layout>
KRO_INLINE typename V::Vector highBytesOf(const uint8_t* in) {
    constexpr int run = runBytes(layout);
    if constexpr (V::wholePermutes) {
        static constexpr Shuffle<64> order = pickedHighBytes64<layout>();
        return V::permuted(V::load(in), V::load(in + 4 * run - 64), order);
    } else {
        constexpr int lanes = V::columns / 16;
        static constexpr Shuffle<V::columns> head = pickedHighBytes<layout, 0, lanes>();
        static constexpr Shuffle<V::columns> tail = pickedHighBytes<layout, 1, lanes>();
        constexpr int32_t start[4] = {0, run, 2 * run, 3 * run};
        return V::bitOr(V::shuffled(V::lanesAt(in, start), head),
                        V::shuffled(V::lanesAt(in + run - 16, start), tail));
    }
}

// Words::columns samples, left-aligned: vector j of the two that hold 2 * Words::columns samples from `in` on.
template <class W, Layout layout, int j>
KRO_INLINE typename W::Vector leftAligned(const uint8_t* in) {
    constexpr int lanes = W::columns / 8, first = j * lanes;
    constexpr Packing packing = packingOf(layout);
    constexpr int32_t offset[4] = {runLane(layout, first), runLane(layout, first + 1), runLane(layout, first + 2),
                                   runLane(layout, first + 3)};
    static constexpr Shuffle<16 * lanes> pick1 = pickedBytes<layout, 0, lanes, j>();
    static constexpr Shuffle<16 * lanes> pick2 = pickedBytes<layout, 1, lanes, j>();
    static constexpr WordIndices<8 *lanes> factor1 = factors<layout, 0, lanes>(),
                                           factor2 = factors<layout, 1, lanes>();
    const auto bytes = W::lanesAt(in, offset);
    const auto one = W::shuffled(bytes, pick1);
    if constexpr (packing.highFirst) {
        const auto low = W::mul(W::shuffled(bytes, pick2), W::load(factor2.word));
        return W::bitOr(one, W::template shiftRightLogical<8>(low));
    } else if constexpr (packing.bits > 12) {
        const auto low = W::mulHigh(W::shuffled(bytes, pick2), W::load(factor2.word));
        return W::bitOr(W::mul(one, W::load(factor1.word)), low);
    } else {
        return W::mul(one, W::load(factor1.word));
    }
}

}  // namespace
}  // namespace kro
