// 32 columns a block; word permutes across the whole vector need no more than AVX-512BW.
#pragma once

#include "block/avx512.hpp"
#include "block/words_avx2.hpp"

namespace kro {
namespace {

struct Avx512Words {
    static constexpr int columns = 32;
    using Word = int16_t;
    using Lanes = __m512i;
    using Mask = __mmask32;
    using Packed = __m512i;

    static constexpr Mask oddColumns = 0xAAAAAAAA;

    static KRO_INLINE Lanes load(const uint16_t* p) { return _mm512_loadu_si512(p); }
    static KRO_INLINE void store(uint16_t* p, Packed a) { _mm512_storeu_si512(p, a); }
    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return _mm512_loadu_si512(p); }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { _mm512_storeu_si512(p, a); }
    static KRO_INLINE Packed packed(Lanes a) { return a; }

    static KRO_INLINE Lanes loadMirroredLeft(const uint16_t* first) {
        return _mm512_mask_loadu_epi16(all(first[1]), 0xFFFFFFFE, first - 1);
    }
    static KRO_INLINE Lanes loadMirroredRight(const uint16_t* p) {
        return _mm512_mask_loadu_epi16(all(p[columns - 2]), 0x7FFFFFFF, p + 1);
    }

    static KRO_INLINE Lanes all(int32_t value) { return _mm512_set1_epi16(static_cast<int16_t>(value)); }
    static KRO_INLINE Lanes iota() {
        return _mm512_cvtepu8_epi16(_mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18,
                                                     19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31));
    }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm512_add_epi16(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm512_sub_epi16(a, b); }
    static KRO_INLINE Lanes average(Lanes a, Lanes b) { return _mm512_avg_epu16(a, b); }
    static KRO_INLINE Lanes bitXor(Lanes a, Lanes b) { return _mm512_xor_si512(a, b); }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return _mm512_and_si512(a, b); }
    static KRO_INLINE Lanes bitOr(Lanes a, Lanes b) { return _mm512_or_si512(a, b); }
    static KRO_INLINE Lanes bitAndNot(Lanes a, Lanes b) { return _mm512_andnot_si512(b, a); }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm512_abs_epi16(a); }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return _mm512_srai_epi16(a, n);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm512_cmpgt_epi16_mask(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return _mm512_mask_mov_epi16(no, m, yes); }
    static KRO_INLINE Lanes alternate(Lanes even, Lanes odd) { return _mm512_mask_mov_epi16(even, oddColumns, odd); }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return _mm512_min_epi16(_mm512_max_epi16(a, _mm512_setzero_si512()), top);
    }
    static KRO_INLINE bool anyBits(Lanes a, int32_t bits) { return _mm512_test_epi16_mask(a, all(bits)) != 0; }

    // One rotation a channel; places of the 32 words modulo 3, shifted by one from vector to vector.
    static KRO_INLINE void store3(uint16_t* out, Packed c0, Packed c1, Packed c2) {
        static constexpr WordIndices<32> rotation[3] = {rotateWords3<32>(0), rotateWords3<32>(1),
                                                        rotateWords3<32>(2)};
        const __m512i r0 = rotated(c0, rotation[0]), r1 = rotated(c1, rotation[1]), r2 = rotated(c2, rotation[2]);
        for (int j = 0; j < 3; ++j) {
            store(out + columns * j, blendThird(blendThird(r0, (1 + j) % 3, r1), (2 + j) % 3, r2));
        }
    }
    static KRO_INLINE __m512i rotated(Packed channel, const WordIndices<32>& rotation) {
        return _mm512_permutexvar_epi16(_mm512_load_si512(rotation.word), channel);
    }
    static KRO_INLINE __m512i blendThird(__m512i a, int q, __m512i b) {
        static constexpr Mask third[3] = {static_cast<Mask>(everyThirdBit(0)), static_cast<Mask>(everyThirdBit(1)),
                                          static_cast<Mask>(everyThirdBit(2))};
        return _mm512_mask_mov_epi16(a, third[q], b);
    }
};

struct Avx512Dwords {
    using Lanes = __m512i;
    using Mask = __mmask16;

    static KRO_INLINE Lanes load(const uint16_t* p) { return _mm512_cvtepu16_epi32(Avx2::load(p)); }
    static KRO_INLINE Lanes loadLanes(const int32_t* p) { return _mm512_loadu_si512(p); }
    static KRO_INLINE void storeLanes(int32_t* p, Lanes a) { _mm512_storeu_si512(p, a); }
    static KRO_INLINE Lanes all(int32_t value) { return _mm512_set1_epi32(value); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm512_add_epi32(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm512_sub_epi32(a, b); }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm512_abs_epi32(a); }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return _mm512_srai_epi32(a, n);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm512_cmpgt_epi32_mask(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return _mm512_mask_mov_epi32(no, m, yes); }
    static KRO_INLINE Lanes alternate(Lanes even, Lanes odd) { return _mm512_mask_mov_epi32(even, 0xAAAA, odd); }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return _mm512_min_epi32(_mm512_max_epi32(a, _mm512_setzero_si512()), top);
    }
    static KRO_INLINE __m512i packed(Lanes first, Lanes second) {
        return Avx512<false>::inOrder(_mm512_packus_epi32(first, second));
    }
};

template <bool bytePermutes>
struct WordsOf<Avx512<bytePermutes>> {
    using Words = Avx512Words;
    using Wide = Doubled<Avx512Dwords, Avx512Words>;
};

}  // namespace
}  // namespace kro
