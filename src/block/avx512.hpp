// 64 columns a block; with or without byte permutes across the whole vector (VBMI).
#pragma once

#include <immintrin.h>

#include "block/avx2.hpp"

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

template <bool bytePermutes>
struct Avx512 {
    static constexpr int columns = 64;
    using Bytes = __m512i;
    using Lanes = __m512i;
    using Mask = __mmask32;

    static constexpr uint64_t oddColumns = 0xAAAAAAAAAAAAAAAA;
    static constexpr uint64_t thirdBits[3] = {everyThirdBit(0), everyThirdBit(1), everyThirdBit(2)};

    static KRO_INLINE Bytes load(const void* p) { return _mm512_loadu_si512(p); }
    static KRO_INLINE void store(void* p, Bytes b) { _mm512_storeu_si512(p, b); }
    static KRO_INLINE Bytes table(const Shuffle<64>& t) { return _mm512_load_si512(t.byte); }

    // Masked loads do not touch what lies outside the row; the one or two mirrored bytes come from the merged register.
    template <int outside>
    static KRO_INLINE Bytes loadMirroredLeft(const uint8_t* first) {
        static constexpr uint64_t inside = ~uint64_t{0} << outside;
        const Bytes mirror = _mm512_set1_epi16(
            static_cast<int16_t>(outside == 1 ? first[1] : first[2] | first[1] << 8));
        return _mm512_mask_loadu_epi8(mirror, maskOf(inside), first - outside);
    }
    template <int outside>
    static KRO_INLINE Bytes loadMirroredRight(const uint8_t* p) {
        static constexpr uint64_t inside = ~uint64_t{0} >> outside;
        const Bytes mirror = _mm512_set1_epi16(
            static_cast<int16_t>(outside == 1 ? p[62] << 8 : p[62] | p[61] << 8));
        return _mm512_mask_loadu_epi8(mirror, maskOf(inside), p + outside);
    }

    static KRO_INLINE Lanes low(Bytes b) { return _mm512_and_si512(b, _mm512_set1_epi16(0x00FF)); }
    static KRO_INLINE Lanes high(Bytes b) { return _mm512_srli_epi16(b, 8); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm512_add_epi16(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm512_sub_epi16(a, b); }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return _mm512_mullo_epi16(a, b); }
    static KRO_INLINE Lanes all(uint32_t value) { return _mm512_set1_epi16(static_cast<int16_t>(value)); }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm512_abs_epi16(a); }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm512_cmpgt_epi16_mask(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return _mm512_mask_mov_epi16(no, m, yes); }
    static KRO_INLINE Lanes clampByte(Lanes a) {
        return _mm512_min_epi16(_mm512_max_epi16(a, _mm512_setzero_si512()), _mm512_set1_epi16(255));
    }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return n == 0 ? a : _mm512_srai_epi16(a, n);
    }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return _mm512_slli_epi16(a, n);
    }
    // A masked blend needs no clean halves, so even columns may come from bytes whose odd ones are anything too.
    static KRO_INLINE Bytes combine(Bytes even, Bytes odd) {
        return _mm512_mask_mov_epi8(even, maskOf(oddColumns), odd);
    }
    static KRO_INLINE Bytes evenOnly(Bytes b) { return b; }
    template <bool odd>
    static KRO_INLINE Bytes parityPick(Bytes here, Bytes left) {
        return odd ? combine(left, here) : combine(here, left);
    }
    static KRO_INLINE void packPair(Lanes evenA, Lanes oddA, Lanes evenB, Lanes oddB, Bytes& a, Bytes& b) {
        const __m512i even = _mm512_packus_epi16(evenA, evenB);
        const __m512i odd = _mm512_packus_epi16(oddA, oddB);
        a = _mm512_unpacklo_epi8(even, odd);
        b = _mm512_unpackhi_epi8(even, odd);
    }
    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return load(p); }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { store(p, a); }

    static KRO_INLINE Bytes blendThird(Bytes a, int q, Bytes b) {
        return _mm512_mask_mov_epi8(a, maskOf(thirdBits[q]), b);
    }
    static KRO_INLINE void store3(uint8_t* out, Bytes c0, Bytes c1, Bytes c2) {
        static constexpr int lane = bytePermutes ? 64 : 16;
        static constexpr Shuffle<64> rotation[3] = {rotate3<64, lane, 1>(0), rotate3<64, lane, 1>(1),
                                                    rotate3<64, lane, 1>(2)};
        const Bytes r0 = rotated(c0, rotation[0]), r1 = rotated(c1, rotation[1]), r2 = rotated(c2, rotation[2]);
        if constexpr (bytePermutes) {
            for (int j = 0; j < 3; ++j) {
                store(out + 64 * j, blendThird(blendThird(r0, modulo3(1 - j), r1), modulo3(2 - j), r2));
            }
        } else {
            Bytes piece[3];
            for (int j = 0; j < 3; ++j) {
                piece[j] = mergeLaneThirds(r0, r1, r2, j);
            }
            storeLanePieces(out, piece[0], piece[1], piece[2]);
        }
    }
    static KRO_INLINE Bytes rotated(Bytes channel, const Shuffle<64>& rotation) {
        if constexpr (bytePermutes) {
            return _mm512_permutexvar_epi8(table(rotation), channel);
        } else {
            return _mm512_shuffle_epi8(channel, table(rotation));
        }
    }
    static constexpr uint64_t laneThirdBits(int q) {
        const uint64_t lane = everyThirdBit(q) & 0xFFFF;
        return lane | lane << 16 | lane << 32 | lane << 48;
    }
    static constexpr uint64_t laneThirds[3] = {laneThirdBits(0), laneThirdBits(1), laneThirdBits(2)};
    static KRO_INLINE Bytes mergeLaneThirds(Bytes r0, Bytes r1, Bytes r2, int j) {
        const Bytes two = _mm512_mask_mov_epi8(r0, maskOf(laneThirds[modulo3(1 - j)]), r1);
        return _mm512_mask_mov_epi8(two, maskOf(laneThirds[modulo3(2 - j)]), r2);
    }
    // Lanes of the three vectors hold pieces 3 l, 3 l + 1 and 3 l + 2 of twelve; stored in order.
    static KRO_INLINE void storeLanePieces(void* out, Bytes p0, Bytes p1, Bytes p2) {
        char* const bytes = static_cast<char*>(out);
        const __m512i first = _mm512_setr_epi64(0, 1, 8, 9, 0, 1, 2, 3);      // p0[0] p1[0]  .   p0[1]
        const __m512i second = _mm512_setr_epi64(10, 11, 0, 1, 4, 5, 12, 13);  // p1[1]  .   p0[2] p1[2]
        const __m512i third = _mm512_setr_epi64(0, 1, 6, 7, 14, 15, 6, 7);     //  .   p0[3] p1[3]  .
        store(bytes, _mm512_mask_shuffle_i64x2(_mm512_permutex2var_epi64(p0, first, p1), 0x30, p2, p2, 0x00));
        store(bytes + 64, _mm512_mask_shuffle_i64x2(_mm512_permutex2var_epi64(p0, second, p1), 0x0C, p2, p2, 0x04));
        store(bytes + 128, _mm512_mask_shuffle_i64x2(_mm512_permutex2var_epi64(p0, third, p1), 0xC3, p2, p2, 0xC2));
    }
    static KRO_INLINE void storeTriple(uint8_t* out, Bytes grey) {
        for (int j = 0; j < 3; ++j) {
            if constexpr (bytePermutes) {
                static constexpr Shuffle<64> order[3] = {triple<64>(0), triple<64>(1), triple<64>(2)};
                store(out + 64 * j, _mm512_permutexvar_epi8(table(order[j]), grey));
            } else {
                static constexpr QwordIndices source[3] = {tripleSource(0), tripleSource(1), tripleSource(2)};
                static constexpr Shuffle<64> order[3] = {tripleWithin(0), tripleWithin(1), tripleWithin(2)};
                const Bytes near = _mm512_permutexvar_epi64(_mm512_load_si512(source[j].qword), grey);
                store(out + 64 * j, _mm512_shuffle_epi8(near, table(order[j])));
            }
        }
    }

    struct Quads {
        Bytes part[4];
    };
    static KRO_INLINE Quads quads(Bytes c0, Bytes c1, Bytes c2) {
        static constexpr DwordIndices order = transposedDwords<4>();
        const __m512i transposed = _mm512_load_si512(order.dword);
        c0 = _mm512_permutexvar_epi32(transposed, c0);
        c1 = _mm512_permutexvar_epi32(transposed, c1);
        c2 = _mm512_permutexvar_epi32(transposed, c2);
        const __m512i zero = _mm512_setzero_si512();
        const __m512i low01 = _mm512_unpacklo_epi8(c0, c1), high01 = _mm512_unpackhi_epi8(c0, c1);
        const __m512i low2 = _mm512_unpacklo_epi8(c2, zero), high2 = _mm512_unpackhi_epi8(c2, zero);
        return {{_mm512_unpacklo_epi16(low01, low2), _mm512_unpackhi_epi16(low01, low2),
                 _mm512_unpacklo_epi16(high01, high2), _mm512_unpackhi_epi16(high01, high2)}};
    }
    static KRO_INLINE Bytes keepBits(Bytes fresh, Bytes old, Bytes keep) {
        return _mm512_ternarylogic_epi64(fresh, old, keep, 0xF8);  // fresh | (old & keep)
    }
    static KRO_INLINE void widen48(const uint8_t* in, uint8_t* out) {
        static constexpr Shuffle<16> lane = widen3to4(0);
        const __m512i spread = _mm512_setr_epi32(0, 1, 2, 2, 3, 4, 5, 5, 6, 7, 8, 8, 9, 10, 11, 11);
        const Bytes groups = _mm512_permutexvar_epi32(spread, _mm512_maskz_loadu_epi32(0x0FFF, in));
        store(out, _mm512_shuffle_epi8(groups, _mm512_broadcast_i32x4(Ssse3::table(lane))));
    }

    static KRO_INLINE Bytes inOrder(__m512i packedByLanes) {
        return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), packedByLanes);
    }
    static KRO_INLINE Bytes reduceSaturated(const uint16_t* in, int shift) {
        const __m128i count = _mm_cvtsi32_si128(shift);
        return inOrder(
            _mm512_packus_epi16(_mm512_sra_epi16(load(in), count), _mm512_sra_epi16(load(in + 32), count)));
    }
    static KRO_INLINE Bytes highBytes(const uint16_t* in) {
        return inOrder(_mm512_packus_epi16(_mm512_srli_epi16(load(in), 8), _mm512_srli_epi16(load(in + 32), 8)));
    }
    static KRO_INLINE Bytes unpackGroups(const uint8_t* in) {
        if constexpr (bytePermutes) {
            static constexpr Shuffle<64> order = groups64();
            return _mm512_permutex2var_epi8(load(in), table(order), load(in + 32));
        } else {
            return _mm512_inserti64x4(_mm512_castsi256_si512(Avx2::unpackGroups(in)), Avx2::unpackGroups(in + 48), 1);
        }
    }
};

}  // namespace
}  // namespace kro
