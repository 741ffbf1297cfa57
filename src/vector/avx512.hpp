// Vectors of 64 bytes; with or without byte permutes across the whole vector (VBMI).
#pragma once

#include <immintrin.h>

#include "vector/avx2.hpp"

namespace kro {
namespace {

// A 64-bit mask from memory: on 32-bit x86 the compiler would build it from halves in general registers and stall.
KRO_INLINE __mmask64 maskOf(const uint64_t& bits) {
#if defined(__i386__)
    __mmask64 mask;
    __asm__("kmovq %1, %0" : "=k"(mask) : "m"(bits));
    return mask;
#else
    return bits;
#endif
}

struct Avx512Lanes {
    using Vector = __m512i;
    using Lanes = __m512i;
    using Mask = __mmask32;
    using Number = int16_t;

    static KRO_INLINE Vector load(const void* p) { return _mm512_loadu_si512(p); }
    static KRO_INLINE void store(void* p, Vector v) { _mm512_storeu_si512(p, v); }
    static KRO_INLINE Vector table(const Shuffle<64>& t) { return _mm512_load_si512(t.byte); }
    static KRO_INLINE Vector shuffled(Vector v, const Shuffle<64>& t) { return _mm512_shuffle_epi8(v, table(t)); }
    static KRO_INLINE Vector halves(__m256i first, __m256i second) {
        return _mm512_inserti64x4(_mm512_castsi256_si512(first), second, 1);
    }
    // Offsets are multiples of four: out of the first and the last 64 bytes.
    static KRO_INLINE Vector lanesAt(const uint8_t* in, const int32_t (&offset)[4], int32_t end) {
        const auto from = [&](int32_t lane, int32_t i) KRO_INLINE_LAMBDA {
            const int32_t place = offset[lane] + 4 * i;
            return (place + 4 <= 64 ? place : 128 - end + place) / 4;
        };
        const __m512i order = _mm512_setr_epi32(
            from(0, 0), from(0, 1), from(0, 2), from(0, 3), from(1, 0), from(1, 1), from(1, 2), from(1, 3),
            from(2, 0), from(2, 1), from(2, 2), from(2, 3), from(3, 0), from(3, 1), from(3, 2), from(3, 3));
        return offset[3] + 16 <= 64 ? _mm512_permutexvar_epi32(order, load(in))
                                    : _mm512_permutex2var_epi32(load(in), order, load(in + end - 64));
    }

    // Quarters of lanes 0 2 4 6 1 3 5 7 in order again.
    static KRO_INLINE Vector inOrder(__m512i packedByLanes) {
        return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), packedByLanes);
    }
    template <class S>
    static KRO_INLINE void storeSites(S* even, S* odd, Vector v) {
        static constexpr Shuffle<64> order = sitesApart<64, sizeof(S)>();
        const Vector sites = inOrder(shuffled(v, order));
        Avx2Lanes::store(even, _mm512_castsi512_si256(sites));
        Avx2Lanes::store(odd, _mm512_extracti64x4_epi64(sites, 1));
    }

    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return load(p); }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { store(p, a); }
    static KRO_INLINE Lanes loadLanes(const uint8_t* p) { return _mm512_cvtepu8_epi16(Avx2Lanes::load(p)); }
    static KRO_INLINE Lanes all(int32_t value) { return _mm512_set1_epi16(static_cast<int16_t>(value)); }
    static KRO_INLINE Lanes low(Vector v) { return _mm512_and_si512(v, _mm512_set1_epi16(0x00FF)); }
    static KRO_INLINE Lanes high(Vector v) { return _mm512_srli_epi16(v, 8); }
    static KRO_INLINE Lanes highOnly(Vector v) { return _mm512_and_si512(v, _mm512_set1_epi16(-0x0100)); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm512_add_epi16(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm512_sub_epi16(a, b); }
    static KRO_INLINE Lanes addSaturated(Lanes a, Lanes b) { return _mm512_adds_epi16(a, b); }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return _mm512_mullo_epi16(a, b); }
    static KRO_INLINE Lanes mulHigh(Lanes a, Lanes b) { return _mm512_mulhi_epu16(a, b); }
    static KRO_INLINE Lanes average(Lanes a, Lanes b) { return _mm512_avg_epu16(a, b); }
    static constexpr bool weighsBytes = true;
    static KRO_INLINE Lanes weighBytes(Vector v, int32_t low, int32_t high) {
        return _mm512_maddubs_epi16(v, all(low | high << 8));
    }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm512_abs_epi16(a); }
    static KRO_INLINE Lanes least(Lanes a, Lanes b) { return _mm512_min_epi16(a, b); }
    static KRO_INLINE Lanes most(Lanes a, Lanes b) { return _mm512_max_epi16(a, b); }
    static KRO_INLINE Lanes raised(Mask m, Lanes a) { return _mm512_mask_add_epi16(a, m, a, all(1)); }
    static KRO_INLINE Lanes lowered(Mask m, Lanes a) { return _mm512_mask_sub_epi16(a, m, a, all(1)); }
    static KRO_INLINE Lanes turned(Lanes a, Lanes first, Lanes second) {
        return _mm512_mask_sub_epi16(a, greater(second, first), _mm512_setzero_si512(), a);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm512_cmpgt_epi16_mask(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return _mm512_mask_mov_epi16(no, m, yes); }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return _mm512_and_si512(a, b); }
    static KRO_INLINE Lanes bitOr(Lanes a, Lanes b) { return _mm512_or_si512(a, b); }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return _mm512_min_epi16(_mm512_max_epi16(a, _mm512_setzero_si512()), top);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return n == 0 ? a : _mm512_srai_epi16(a, n);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightRounded(Lanes a) {
        return _mm512_mulhrs_epi16(a, all(1 << (15 - n)));
    }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return _mm512_slli_epi16(a, n);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightLogical(Lanes a) {
        return _mm512_srli_epi16(a, n);
    }
    static KRO_INLINE Lanes shiftRightBy(Lanes a, int32_t n) { return _mm512_srl_epi16(a, _mm_cvtsi32_si128(n)); }
    static KRO_INLINE Lanes shiftLeftBy(Lanes a, int32_t n) { return _mm512_sll_epi16(a, _mm_cvtsi32_si128(n)); }

    // As in Avx2Lanes, with four lanes: lane 0 holds dwords d0 d4 d8 d12.
    struct Quads {
        Vector part[4];
    };
    static KRO_INLINE Vector transposed(Vector v) {
        static constexpr DwordIndices order = transposedDwords<4>();
        return _mm512_permutexvar_epi32(_mm512_load_si512(order.dword), v);
    }
};

template <bool bytePermutes>
struct Avx512Bytes : Avx512Lanes {
    static constexpr int columns = 64;
    static constexpr bool wholePermutes = bytePermutes;
    static constexpr Interleaving interleaving = Interleaving::packs;
    using Sample = uint8_t;

    static constexpr uint64_t oddColumns = 0xAAAAAAAAAAAAAAAA;
    static constexpr uint64_t thirdBits[3] = {everyThirdBit(0), everyThirdBit(1), everyThirdBit(2)};

    // Loads that lie inside the row: masked ones that reach outside cost hundreds of cycles where a page is unmapped.
    template <int outside>
    static KRO_INLINE Vector loadLeft(const uint8_t* first) {
        if constexpr (bytePermutes) {
            static constexpr Shuffle<64> order = leftOf<64, 1>(outside);
            return _mm512_permutexvar_epi8(table(order), load(first));
        } else {
            return halves(Avx2Bytes::loadLeft<outside>(first), Avx2Bytes::load(first + 32 - outside));
        }
    }
    template <int outside>
    static KRO_INLINE Vector loadRight(const uint8_t* p) {
        if constexpr (bytePermutes) {
            static constexpr Shuffle<64> order = rightOf<64, 1>(outside);
            return _mm512_permutexvar_epi8(table(order), load(p));
        } else {
            return halves(Avx2Bytes::load(p + outside), Avx2Bytes::loadRight<outside>(p + 32));
        }
    }

    static KRO_INLINE Vector permuted(Vector first, Vector second, const Shuffle<64>& order) {
        return _mm512_permutex2var_epi8(first, table(order), second);
    }

    static KRO_INLINE Lanes clampByte(Lanes a) { return clamp(a, _mm512_set1_epi16(255)); }
    // A masked blend needs no clean halves, so even columns may come from bytes whose odd ones are anything too.
    static KRO_INLINE Vector combine(Vector even, Vector odd) {
        return _mm512_mask_mov_epi8(even, maskOf(oddColumns), odd);
    }
    static KRO_INLINE Vector evenOnly(Vector v) { return v; }
    // As in Ssse3Bytes, lane by lane.
    static KRO_INLINE void packPair(Lanes evenA, Lanes oddA, Lanes evenB, Lanes oddB, Vector& a, Vector& b) {
        const __m512i even = _mm512_packus_epi16(evenA, evenB);
        const __m512i odd = _mm512_packus_epi16(oddA, oddB);
        a = _mm512_unpacklo_epi8(even, odd);
        b = _mm512_unpackhi_epi8(even, odd);
    }

    // One rotation a channel, then blends, as in Avx2Bytes. With byte permutes the whole vector rotates and each
    // merge is a store; without them lanes rotate, and the merged pieces are put in order.
    static KRO_INLINE void store3(uint8_t* out, Vector c0, Vector c1, Vector c2) {
        static constexpr int lane = bytePermutes ? 64 : 16;
        static constexpr Shuffle<64> rotation[3] = {rotate3<64, lane, 1>(0), rotate3<64, lane, 1>(1),
                                                    rotate3<64, lane, 1>(2)};
        storeRotated(out, rotated(c0, rotation[0]), rotated(c1, rotation[1]), rotated(c2, rotation[2]));
    }
    // The same of an outer two of signed lanes, saturated: the rotation takes samples from where a pack left them.
    template <class Channel>
    static KRO_INLINE void store3Lanes(uint8_t* out, const Channel& c0, Vector c1, const Channel& c2) {
        static constexpr int lane = bytePermutes ? 64 : 16;
        static constexpr Shuffle<64> rotation[3] = {rotatePacked3<64, lane, 1>(0), rotate3<64, lane, 1>(1),
                                                    rotatePacked3<64, lane, 1>(2)};
        storeRotated(out, rotated(_mm512_packus_epi16(c0.even, c0.odd), rotation[0]), rotated(c1, rotation[1]),
                     rotated(_mm512_packus_epi16(c2.even, c2.odd), rotation[2]));
    }
    static KRO_INLINE void storeRotated(uint8_t* out, Vector r0, Vector r1, Vector r2) {
        if constexpr (bytePermutes) {
            for (int j = 0; j < 3; ++j) {
                store(out + 64 * j, blendThird(blendThird(r0, modulo3(1 - j), r1), modulo3(2 - j), r2));
            }
        } else {
            Vector piece[3];
            for (int j = 0; j < 3; ++j) {
                piece[j] = mergeLaneThirds(r0, r1, r2, j);
            }
            storeLanePieces(out, piece[0], piece[1], piece[2]);
        }
    }
    static KRO_INLINE Vector blendThird(Vector a, int q, Vector b) {
        return _mm512_mask_mov_epi8(a, maskOf(thirdBits[q]), b);
    }
    static KRO_INLINE Vector rotated(Vector channel, const Shuffle<64>& rotation) {
        if constexpr (bytePermutes) {
            return _mm512_permutexvar_epi8(table(rotation), channel);
        } else {
            return shuffled(channel, rotation);
        }
    }
    // The same 16 bits for each lane.
    static constexpr uint64_t laneThirdBits(int q) { return (everyThirdBit(q) & 0xFFFF) * 0x0001'0001'0001'0001; }
    static constexpr uint64_t laneThirds[3] = {laneThirdBits(0), laneThirdBits(1), laneThirdBits(2)};
    static KRO_INLINE Vector mergeLaneThirds(Vector r0, Vector r1, Vector r2, int j) {
        const Vector two = _mm512_mask_mov_epi8(r0, maskOf(laneThirds[modulo3(1 - j)]), r1);
        return _mm512_mask_mov_epi8(two, maskOf(laneThirds[modulo3(2 - j)]), r2);
    }
    // Lanes of the three vectors hold pieces 3 l, 3 l + 1 and 3 l + 2 of twelve; stored in order.
    static KRO_INLINE void storeLanePieces(void* out, Vector p0, Vector p1, Vector p2) {
        char* const bytes = static_cast<char*>(out);
        const __m512i first = _mm512_setr_epi64(0, 1, 8, 9, 0, 1, 2, 3);       // p0[0] p1[0]  .   p0[1]
        const __m512i second = _mm512_setr_epi64(10, 11, 0, 1, 4, 5, 12, 13);  // p1[1]  .   p0[2] p1[2]
        const __m512i third = _mm512_setr_epi64(0, 1, 6, 7, 14, 15, 6, 7);     //  .   p0[3] p1[3]  .
        store(bytes, _mm512_mask_shuffle_i64x2(_mm512_permutex2var_epi64(p0, first, p1), 0x30, p2, p2, 0x00));
        store(bytes + 64, _mm512_mask_shuffle_i64x2(_mm512_permutex2var_epi64(p0, second, p1), 0x0C, p2, p2, 0x04));
        store(bytes + 128, _mm512_mask_shuffle_i64x2(_mm512_permutex2var_epi64(p0, third, p1), 0xC3, p2, p2, 0xC2));
    }
    static KRO_INLINE void storeTriple(uint8_t* out, Vector grey) {
        for (int j = 0; j < 3; ++j) {
            if constexpr (bytePermutes) {
                static constexpr Shuffle<64> order[3] = {triple<64>(0), triple<64>(1), triple<64>(2)};
                store(out + 64 * j, _mm512_permutexvar_epi8(table(order[j]), grey));
            } else {
                static constexpr QwordIndices source[3] = {tripleSource(0), tripleSource(1), tripleSource(2)};
                static constexpr Shuffle<64> order[3] = {tripleWithin(0), tripleWithin(1), tripleWithin(2)};
                const Vector near = _mm512_permutexvar_epi64(_mm512_load_si512(source[j].qword), grey);
                store(out + 64 * j, shuffled(near, order[j]));
            }
        }
    }

    static KRO_INLINE Quads quads(Vector c0, Vector c1, Vector c2, Vector c3) {
        const __m512i low01 = _mm512_unpacklo_epi8(c0, c1), high01 = _mm512_unpackhi_epi8(c0, c1);
        const __m512i low23 = _mm512_unpacklo_epi8(c2, c3), high23 = _mm512_unpackhi_epi8(c2, c3);
        return {{_mm512_unpacklo_epi16(low01, low23), _mm512_unpackhi_epi16(low01, low23),
                 _mm512_unpacklo_epi16(high01, high23), _mm512_unpackhi_epi16(high01, high23)}};
    }
    static KRO_INLINE Vector filled(uint32_t value) { return _mm512_set1_epi8(static_cast<char>(value)); }
    static KRO_INLINE Vector keepBits(Vector fresh, Vector old, Vector keep) {
        return _mm512_ternarylogic_epi64(fresh, old, keep, 0xD8);  // keep ? old : fresh
    }
    static KRO_INLINE void widen48(const uint8_t* in, uint8_t* out) {
        static constexpr Shuffle<16> lane = widen3to4(0);
        const __m512i spread = _mm512_setr_epi32(0, 1, 2, 2, 3, 4, 5, 5, 6, 7, 8, 8, 9, 10, 11, 11);
        const __m256i last = _mm256_castsi128_si256(Ssse3Lanes::load(in + 32));
        const Vector groups = _mm512_permutexvar_epi32(spread, halves(Avx2Lanes::load(in), last));
        store(out, _mm512_shuffle_epi8(groups, _mm512_broadcast_i32x4(Ssse3Bytes::table(lane))));
    }

    static KRO_INLINE Vector reduceSaturated(Vector first, Vector second, int shift) {
        const __m128i count = _mm_cvtsi32_si128(shift);
        return inOrder(_mm512_packus_epi16(_mm512_sra_epi16(first, count), _mm512_sra_epi16(second, count)));
    }
    static KRO_INLINE Vector highBytesOfLanes(Vector first, Vector second) {
        return _mm512_packus_epi16(high(first), high(second));
    }
    static KRO_INLINE Vector highBytes(Vector first, Vector second) {
        return inOrder(highBytesOfLanes(first, second));
    }
};

// Word permutes across the whole vector need no more than AVX-512BW.
struct Avx512Words : Avx512Lanes {
    static constexpr int columns = 32;
    using Sample = uint16_t;

    static constexpr Mask oddColumns = 0xAAAAAAAA;

    template <int outside>
    static KRO_INLINE Vector loadLeft(const uint16_t* first) {
        static constexpr WordIndices<32> order = elementsOf<32>(leftOf<64, 2>(outside));
        return permuted(load(first), order);
    }
    template <int outside>
    static KRO_INLINE Vector loadRight(const uint16_t* p) {
        static constexpr WordIndices<32> order = elementsOf<32>(rightOf<64, 2>(outside));
        return permuted(load(p), order);
    }
    static KRO_INLINE Vector permuted(Vector v, const WordIndices<32>& order) {
        return _mm512_permutexvar_epi16(_mm512_load_si512(order.word), v);
    }

    static KRO_INLINE Lanes iota() {
        static constexpr WordIndices<32> place = elementsOf<32>(leftOf<64, 2>(0));
        return _mm512_load_si512(place.word);
    }
    static KRO_INLINE Lanes combine(Lanes even, Lanes odd) { return _mm512_mask_mov_epi16(even, oddColumns, odd); }
    static KRO_INLINE bool anyBits(Lanes a, int32_t bits) { return _mm512_test_epi16_mask(a, all(bits)) != 0; }
    static KRO_INLINE Lanes widened(Vector words) { return words; }
    static KRO_INLINE Vector packed(Lanes a) { return a; }

    // One rotation a channel; places of the 32 words modulo 3, shifted by one from vector to vector.
    static KRO_INLINE void store3(uint16_t* out, Vector c0, Vector c1, Vector c2) {
        static constexpr WordIndices<32> rotation[3] = {rotateWords3<32>(0), rotateWords3<32>(1),
                                                        rotateWords3<32>(2)};
        const __m512i r0 = permuted(c0, rotation[0]), r1 = permuted(c1, rotation[1]), r2 = permuted(c2, rotation[2]);
        for (int j = 0; j < 3; ++j) {
            store(out + columns * j, blendThird(blendThird(r0, (1 + j) % 3, r1), (2 + j) % 3, r2));
        }
    }
    static KRO_INLINE Vector blendThird(Vector a, int q, Vector b) {
        static constexpr Mask third[3] = {static_cast<Mask>(everyThirdBit(0)), static_cast<Mask>(everyThirdBit(1)),
                                          static_cast<Mask>(everyThirdBit(2))};
        return _mm512_mask_mov_epi16(a, third[q], b);
    }
    static KRO_INLINE Quads quads(Vector c0, Vector c1, Vector c2, Vector c3) {
        const __m512i low01 = _mm512_unpacklo_epi16(c0, c1), high01 = _mm512_unpackhi_epi16(c0, c1);
        const __m512i low23 = _mm512_unpacklo_epi16(c2, c3), high23 = _mm512_unpackhi_epi16(c2, c3);
        return {{_mm512_unpacklo_epi32(low01, low23), _mm512_unpackhi_epi32(low01, low23),
                 _mm512_unpacklo_epi32(high01, high23), _mm512_unpackhi_epi32(high01, high23)}};
    }
    static KRO_INLINE Vector filled(uint32_t value) { return all(static_cast<int32_t>(value)); }

    static KRO_INLINE Vector atMost(Vector words, Vector top) { return _mm512_min_epu16(words, top); }
    static KRO_INLINE Vector less(Vector words, Vector by) { return _mm512_subs_epu16(words, by); }
    static KRO_INLINE void widenBytes(const uint8_t* in, Vector& first, Vector& second) {
        first = _mm512_cvtepu8_epi16(Avx2Lanes::load(in));
        second = _mm512_cvtepu8_epi16(Avx2Lanes::load(in + 32));
    }
};

struct Avx512Dwords : Lanes32<Avx512Dwords> {
    using Lanes = __m512i;
    using Mask = __mmask16;

    static KRO_INLINE Lanes firstHalf(__m512i words) { return _mm512_cvtepu16_epi32(_mm512_castsi512_si256(words)); }
    static KRO_INLINE Lanes secondHalf(__m512i words) {
        return _mm512_cvtepu16_epi32(_mm512_extracti64x4_epi64(words, 1));
    }
    static KRO_INLINE Lanes loadLanes(const int32_t* p) { return _mm512_loadu_si512(p); }
    static KRO_INLINE void storeLanes(int32_t* p, Lanes a) { _mm512_storeu_si512(p, a); }
    static KRO_INLINE Lanes loadLanes(const uint16_t* p) { return _mm512_cvtepu16_epi32(Avx2Lanes::load(p)); }
    static KRO_INLINE __m512i joined(Lanes even, Lanes odd) {
        return _mm512_or_si512(even, _mm512_slli_epi32(odd, 16));
    }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return _mm512_mullo_epi32(a, b); }
    static KRO_INLINE Lanes least(Lanes a, Lanes b) { return _mm512_min_epi32(a, b); }
    static KRO_INLINE Lanes most(Lanes a, Lanes b) { return _mm512_max_epi32(a, b); }
    static KRO_INLINE Lanes raised(Mask m, Lanes a) { return _mm512_mask_add_epi32(a, m, a, all(1)); }
    static KRO_INLINE Lanes lowered(Mask m, Lanes a) { return _mm512_mask_sub_epi32(a, m, a, all(1)); }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return _mm512_slli_epi32(a, n);
    }
    static KRO_INLINE Lanes all(int32_t value) { return _mm512_set1_epi32(value); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm512_add_epi32(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm512_sub_epi32(a, b); }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return _mm512_and_si512(a, b); }
    static KRO_INLINE Lanes turned(Lanes a, Lanes first, Lanes second) {
        return _mm512_mask_sub_epi32(a, greater(second, first), all(0), a);
    }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm512_abs_epi32(a); }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return _mm512_srai_epi32(a, n);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm512_cmpgt_epi32_mask(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return _mm512_mask_mov_epi32(no, m, yes); }
    static KRO_INLINE Lanes combine(Lanes even, Lanes odd) { return _mm512_mask_mov_epi32(even, 0xAAAA, odd); }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return _mm512_min_epi32(_mm512_max_epi32(a, _mm512_setzero_si512()), top);
    }
    static KRO_INLINE __m512i packed(Lanes first, Lanes second) {
        return Avx512Lanes::inOrder(_mm512_packus_epi32(first, second));
    }
};

template <bool bytePermutes>
struct Avx512 {
    using Bytes = Avx512Bytes<bytePermutes>;
    using Words = Avx512Words;
    using Wide = Doubled<Avx512Dwords, Avx512Words>;
    using Dwords = Avx512Dwords;
};

}  // namespace
}  // namespace kro
