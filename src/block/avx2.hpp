// 32 columns a block. Byte shuffles stay within 16-byte lanes, so whole lanes are moved where rows are interleaved.
#pragma once

#include <immintrin.h>

#include "block/ssse3.hpp"

namespace kro {
namespace {

struct Avx2 {
    static constexpr int columns = 32;
    using Bytes = __m256i;
    using Lanes = __m256i;
    using Mask = __m256i;

    static KRO_INLINE Bytes load(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
    static KRO_INLINE void store(void* p, Bytes b) { _mm256_storeu_si256(static_cast<__m256i*>(p), b); }
    static KRO_INLINE Bytes table(const Shuffle<32>& t) {
        return _mm256_load_si256(reinterpret_cast<const __m256i*>(t.byte));
    }
    static KRO_INLINE Bytes halves(__m128i first, __m128i second) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(first), second, 1);
    }

    template <int outside>
    static KRO_INLINE Bytes loadMirroredLeft(const uint8_t* first) {
        return halves(Ssse3::loadMirroredLeft<outside>(first), Ssse3::load(first + 16 - outside));
    }
    template <int outside>
    static KRO_INLINE Bytes loadMirroredRight(const uint8_t* p) {
        return halves(Ssse3::load(p + outside), Ssse3::loadMirroredRight<outside>(p + 16));
    }

    static KRO_INLINE Lanes low(Bytes b) { return _mm256_and_si256(b, _mm256_set1_epi16(0x00FF)); }
    static KRO_INLINE Lanes high(Bytes b) { return _mm256_srli_epi16(b, 8); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm256_add_epi16(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm256_sub_epi16(a, b); }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return _mm256_mullo_epi16(a, b); }
    static KRO_INLINE Lanes all(uint32_t value) { return _mm256_set1_epi16(static_cast<int16_t>(value)); }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm256_abs_epi16(a); }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm256_cmpgt_epi16(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return _mm256_blendv_epi8(no, yes, m); }
    static KRO_INLINE Lanes clampByte(Lanes a) {
        return _mm256_min_epi16(_mm256_max_epi16(a, _mm256_setzero_si256()), _mm256_set1_epi16(255));
    }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return n == 0 ? a : _mm256_srai_epi16(a, n);
    }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return _mm256_slli_epi16(a, n);
    }
    static KRO_INLINE Bytes combine(Bytes even, Bytes odd) {
        return _mm256_or_si256(even, _mm256_andnot_si256(_mm256_set1_epi16(0x00FF), odd));
    }
    static KRO_INLINE Bytes evenOnly(Bytes b) { return low(b); }
    template <bool odd>
    static KRO_INLINE Bytes parityPick(Bytes here, Bytes left) {
        return odd ? combine(low(left), here) : combine(low(here), left);
    }
    static KRO_INLINE void packPair(Lanes evenA, Lanes oddA, Lanes evenB, Lanes oddB, Bytes& a, Bytes& b) {
        const __m256i even = _mm256_packus_epi16(evenA, evenB);
        const __m256i odd = _mm256_packus_epi16(oddA, oddB);
        a = _mm256_unpacklo_epi8(even, odd);
        b = _mm256_unpackhi_epi8(even, odd);
    }
    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return load(p); }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { store(p, a); }

    // Three vectors whose lanes hold pieces 0..2 and 3..5 of 96 bytes, stored in order.
    static KRO_INLINE void storeLanePieces(void* out, __m256i p03, __m256i p14, __m256i p25) {
        char* const bytes = static_cast<char*>(out);
        store(bytes, _mm256_permute2x128_si256(p03, p14, 0x20));
        store(bytes + 32, _mm256_blend_epi32(p25, p03, 0xF0));
        store(bytes + 64, _mm256_permute2x128_si256(p14, p25, 0x31));
    }
    // One rotation a channel, then blends: 3 shuffles where separate picks for each store would take 9.
    static KRO_INLINE void store3(uint8_t* out, Bytes c0, Bytes c1, Bytes c2) {
        static constexpr Shuffle<32> rotation[3] = {rotate3<32, 16, 1>(0), rotate3<32, 16, 1>(1),
                                                    rotate3<32, 16, 1>(2)};
        static constexpr Shuffle<32> third[3] = {everyThird<32, 16, 1>(0), everyThird<32, 16, 1>(1),
                                                 everyThird<32, 16, 1>(2)};
        const __m256i r0 = _mm256_shuffle_epi8(c0, table(rotation[0]));
        const __m256i r1 = _mm256_shuffle_epi8(c1, table(rotation[1]));
        const __m256i r2 = _mm256_shuffle_epi8(c2, table(rotation[2]));
        __m256i piece[3];
        for (int j = 0; j < 3; ++j) {
            const __m256i two = _mm256_blendv_epi8(r0, r1, table(third[modulo3(1 - j)]));
            piece[j] = _mm256_blendv_epi8(two, r2, table(third[modulo3(2 - j)]));
        }
        storeLanePieces(out, piece[0], piece[1], piece[2]);
    }
    static KRO_INLINE void storeTriple(uint8_t* out, Bytes grey) {
        Ssse3::storeTriple(out, _mm256_castsi256_si128(grey));
        Ssse3::storeTriple(out + 48, _mm256_extracti128_si256(grey, 1));
    }

    struct Quads {
        Bytes part[4];
    };
    static KRO_INLINE Quads quads(Bytes c0, Bytes c1, Bytes c2) {
        static constexpr DwordIndices order = transposedDwords<2>();
        const __m256i transposed = load(order.dword);
        c0 = _mm256_permutevar8x32_epi32(c0, transposed);
        c1 = _mm256_permutevar8x32_epi32(c1, transposed);
        c2 = _mm256_permutevar8x32_epi32(c2, transposed);
        const __m256i zero = _mm256_setzero_si256();
        const __m256i low01 = _mm256_unpacklo_epi8(c0, c1), high01 = _mm256_unpackhi_epi8(c0, c1);
        const __m256i low2 = _mm256_unpacklo_epi8(c2, zero), high2 = _mm256_unpackhi_epi8(c2, zero);
        return {{_mm256_unpacklo_epi16(low01, low2), _mm256_unpackhi_epi16(low01, low2),
                 _mm256_unpacklo_epi16(high01, high2), _mm256_unpackhi_epi16(high01, high2)}};
    }
    static KRO_INLINE Bytes keepBits(Bytes fresh, Bytes old, Bytes keep) {
        return _mm256_or_si256(fresh, _mm256_and_si256(old, keep));
    }
    static KRO_INLINE void widen48(const uint8_t* in, uint8_t* out) { Ssse3::widen48(in, out); }

    static KRO_INLINE Bytes inOrder(__m256i packedByLanes) { return _mm256_permute4x64_epi64(packedByLanes, 0xD8); }
    static KRO_INLINE Bytes reduceSaturated(const uint16_t* in, int shift) {
        const __m128i count = _mm_cvtsi32_si128(shift);
        return inOrder(
            _mm256_packus_epi16(_mm256_sra_epi16(load(in), count), _mm256_sra_epi16(load(in + 16), count)));
    }
    static KRO_INLINE Bytes highBytes(const uint16_t* in) {
        return inOrder(_mm256_packus_epi16(_mm256_srli_epi16(load(in), 8), _mm256_srli_epi16(load(in + 16), 8)));
    }
    static KRO_INLINE Bytes unpackGroups(const uint8_t* in) {
        return halves(Ssse3::unpackGroups(in), Ssse3::unpackGroups(in + 24));
    }
};

}  // namespace
}  // namespace kro
