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

// ---- bytes: a lane holds 16 samples, the run of its number ----

// Lanes of whole bytes are picked from two windows of 16 bytes each. Odd lanes have their main window at the run's
// end, so that two neighbouring lanes may share the other one.
template <Layout layout, int lanes>
struct HighByteWindows {
    static constexpr int run = runBytes(layout);
    static constexpr bool shared = lanes > 1 && run <= 24;
    static constexpr int main(int lane) { return lane * run + (lane % 2 == 0 ? 0 : run - 16); }
    static constexpr int other(int lane) {
        return shared ? lane / 2 * 2 * run + run - 8 : lane * run + (lane % 2 == 0 ? run - 16 : 0);
    }
    template <bool ofMain>
    static constexpr Shuffle<16 * lanes> picked() {
        Shuffle<16 * lanes> table{};
        for (int o = 0; o < 16 * lanes; ++o) {
            const int lane = o / 16, place = lane * run + pickedOf(layout, o % 16).high[0];
            const bool inMain = place >= main(lane) && place < main(lane) + 16;
            const int from = ofMain ? main(lane) : other(lane);
            table.byte[o] = inMain == ofMain ? static_cast<uint8_t>(place - from) : nothing;
        }
        return table;
    }
};
// 64 samples are picked out of the first and the last 64 of their bytes, of which the latter have indices from 64 on.
template <Layout layout>
struct Windows64 {
    static constexpr int second = 4 * runBytes(layout) - 64;
    // Of byte `within` of the run that holds sample k.
    static constexpr uint8_t index(int k, int within) {
        const int place = k / 16 * runBytes(layout) + within;
        return static_cast<uint8_t>(place < 64 ? place : 64 + place - second);
    }
    template <class V>
    static KRO_INLINE typename V::Vector permuted(const uint8_t* in, const Shuffle<64>& order) {
        return V::permuted(V::load(in), V::load(in + second), order);
    }
};
template <Layout layout>
constexpr Shuffle<64> pickedHighBytes64() {
    Shuffle<64> table{};
    for (int o = 0; o < 64; ++o) {
        table.byte[o] = Windows64<layout>::index(o, pickedOf(layout, o % 16).high[0]);
    }
    return table;
}
template <class V, Layout layout>
KRO_INLINE typename V::Vector highBytesOf(const uint8_t* in) {
    constexpr int run = runBytes(layout), lanes = V::columns / 16, end = lanes * run;
    if constexpr (V::wholePermutes) {
        static constexpr Shuffle<64> order = pickedHighBytes64<layout>();
        return Windows64<layout>::template permuted<V>(in, order);
    } else {
        using Windows = HighByteWindows<layout, lanes>;
        static constexpr Shuffle<V::columns> main = Windows::template picked<true>(),
                                             other = Windows::template picked<false>();
        constexpr int32_t mains[4] = {Windows::main(0), Windows::main(1), Windows::main(2), Windows::main(3)};
        constexpr int32_t others[4] = {Windows::other(0), Windows::other(1), Windows::other(2), Windows::other(3)};
        return V::bitOr(V::shuffled(V::lanesAt(in, mains, end), main),
                        V::shuffled(V::lanesAt(in, others, end), other));
    }
}

// Eight bits anywhere in a run of bits lie in two neighbouring bytes: words whose upper byte they become when they
// are multiplied, or whose lower byte in the upper half of the product of 32 bits.
struct PickedByte {
    int low, high;
    uint16_t factor;
};
constexpr PickedByte pickedByteOf(Layout layout, int k) {
    const Packing p = packingOf(layout);
    const int first = k / p.samples * p.bytes * 8 + lowBit(layout, k % p.samples) + p.bits - 8;
    const int byte = first / 8, bit = first % 8;
    return bit == 0 ? PickedByte{-1, byte, 1} : PickedByte{byte, byte + 1, static_cast<uint16_t>(1 << (8 - bit))};
}
// Of each lane samples 8 * half to 8 * half + 7, from 16 bytes at the run's start or end.
template <Layout layout, int half, int lanes>
constexpr Shuffle<16 * lanes> pickedBytePairs() {
    Shuffle<16 * lanes> table{};
    for (int o = 0; o < 16 * lanes; ++o) {
        const PickedByte picked = pickedByteOf(layout, 8 * half + o % 16 / 2);
        const int place = o % 2 == 0 ? picked.low : picked.high;
        table.byte[o] = place < 0 ? nothing : static_cast<uint8_t>(place - half * (runBytes(layout) - 16));
    }
    return table;
}
template <Layout layout, int half, int lanes>
constexpr WordIndices<8 * lanes> byteFactors() {
    WordIndices<8 * lanes> table{};
    for (int i = 0; i < 8 * lanes; ++i) {
        table.word[i] = pickedByteOf(layout, 8 * half + i % 8).factor;
    }
    return table;
}
template <class W, Layout layout, int half>
KRO_INLINE typename W::Vector bytesOnTop(const uint8_t* in) {
    constexpr int lanes = W::columns / 8, run = runBytes(layout), first = half * (run - 16);
    constexpr int32_t offset[4] = {first, first + run, first + 2 * run, first + 3 * run};
    static constexpr Shuffle<16 * lanes> pick = pickedBytePairs<layout, half, lanes>();
    static constexpr WordIndices<8 * lanes> factor = byteFactors<layout, half, lanes>();
    return W::mul(W::shuffled(W::lanesAt(in, offset, lanes * run), pick), W::load(factor.word));
}
// Words of the even samples, or of the odd ones, of 64.
template <Layout layout, int odd>
constexpr Shuffle<64> pickedBytePairs64() {
    Shuffle<64> table{};
    for (int o = 0; o < 64; ++o) {
        const int k = o / 2 * 2 + odd;
        const PickedByte picked = pickedByteOf(layout, k % 16);
        table.byte[o] = Windows64<layout>::index(k, o % 2 == 0 && picked.low >= 0 ? picked.low : picked.high);
    }
    return table;
}
template <Layout layout, int odd>
constexpr WordIndices<32> byteFactors64() {
    WordIndices<32> table{};
    for (int i = 0; i < 32; ++i) {
        table.word[i] = static_cast<uint16_t>(pickedByteOf(layout, (2 * i + odd) % 16).factor << (odd ? 0 : 8));
    }
    return table;
}
template <class V, class W, Layout layout>
KRO_INLINE typename V::Vector upperBytesOf(const uint8_t* in) {
    if constexpr (V::wholePermutes) {
        static constexpr Shuffle<64> even = pickedBytePairs64<layout, 0>(), odd = pickedBytePairs64<layout, 1>();
        static constexpr WordIndices<32> down = byteFactors64<layout, 0>(), up = byteFactors64<layout, 1>();
        using Windows = Windows64<layout>;
        return V::combine(W::mulHigh(Windows::template permuted<V>(in, even), W::load(down.word)),
                          W::mul(Windows::template permuted<V>(in, odd), W::load(up.word)));
    } else {
        return V::highBytesOfLanes(bytesOnTop<W, layout, 0>(in), bytesOnTop<W, layout, 1>(in));
    }
}

// ---- words ----

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
    const auto bytes = W::lanesAt(in, offset, lanes * runBytes(layout));
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
