// 16 columns a block.
#pragma once

#include "block/avx2.hpp"
#include "block/words_ssse3.hpp"

namespace kro {
namespace {

struct Avx2Words {
    static constexpr int columns = 16;
    using Word = int16_t;
    using Lanes = __m256i;
    using Mask = __m256i;
    using Packed = __m256i;

    static KRO_INLINE Lanes load(const uint16_t* p) { return Avx2::load(p); }
    static KRO_INLINE void store(uint16_t* p, Packed a) { Avx2::store(p, a); }
    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return Avx2::load(p); }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { Avx2::store(p, a); }
    static KRO_INLINE Packed packed(Lanes a) { return a; }

    static KRO_INLINE Lanes loadMirroredLeft(const uint16_t* first) {
        return Avx2::halves(Ssse3Words::loadMirroredLeft(first), Ssse3Words::load(first + 7));
    }
    static KRO_INLINE Lanes loadMirroredRight(const uint16_t* p) {
        return Avx2::halves(Ssse3Words::load(p + 1), Ssse3Words::loadMirroredRight(p + 8));
    }

    static KRO_INLINE Lanes all(int32_t value) { return _mm256_set1_epi16(static_cast<int16_t>(value)); }
    static KRO_INLINE Lanes iota() { return _mm256_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm256_add_epi16(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm256_sub_epi16(a, b); }
    static KRO_INLINE Lanes average(Lanes a, Lanes b) { return _mm256_avg_epu16(a, b); }
    static KRO_INLINE Lanes bitXor(Lanes a, Lanes b) { return _mm256_xor_si256(a, b); }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return _mm256_and_si256(a, b); }
    static KRO_INLINE Lanes bitOr(Lanes a, Lanes b) { return _mm256_or_si256(a, b); }
    static KRO_INLINE Lanes bitAndNot(Lanes a, Lanes b) { return _mm256_andnot_si256(b, a); }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm256_abs_epi16(a); }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return _mm256_srai_epi16(a, n);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm256_cmpgt_epi16(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return _mm256_blendv_epi8(no, yes, m); }
    static KRO_INLINE Lanes alternate(Lanes even, Lanes odd) { return _mm256_blend_epi16(even, odd, 0xAA); }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return _mm256_min_epi16(_mm256_max_epi16(a, _mm256_setzero_si256()), top);
    }
    static KRO_INLINE bool anyBits(Lanes a, int32_t bits) { return _mm256_testz_si256(a, all(bits)) == 0; }

    // One rotation a channel; places of a lane's eight words modulo 3, shifted by one from vector to vector.
    static KRO_INLINE void store3(uint16_t* out, Packed c0, Packed c1, Packed c2) {
        static constexpr Shuffle<32> rotation[3] = {rotate3<32, 16, 2>(0), rotate3<32, 16, 2>(1),
                                                    rotate3<32, 16, 2>(2)};
        constexpr int third[3] = {0x49, 0x92, 0x24};
        const __m256i r0 = _mm256_shuffle_epi8(c0, Avx2::table(rotation[0]));
        const __m256i r1 = _mm256_shuffle_epi8(c1, Avx2::table(rotation[1]));
        const __m256i r2 = _mm256_shuffle_epi8(c2, Avx2::table(rotation[2]));
        Avx2::storeLanePieces(out, _mm256_blend_epi16(_mm256_blend_epi16(r0, r1, third[1]), r2, third[2]),
                              _mm256_blend_epi16(_mm256_blend_epi16(r0, r1, third[2]), r2, third[0]),
                              _mm256_blend_epi16(_mm256_blend_epi16(r0, r1, third[0]), r2, third[1]));
    }
};

struct Avx2Dwords {
    using Lanes = __m256i;
    using Mask = __m256i;

    static KRO_INLINE Lanes load(const uint16_t* p) { return _mm256_cvtepu16_epi32(Ssse3::load(p)); }
    static KRO_INLINE Lanes loadLanes(const int32_t* p) { return Avx2::load(p); }
    static KRO_INLINE void storeLanes(int32_t* p, Lanes a) { Avx2::store(p, a); }
    static KRO_INLINE Lanes all(int32_t value) { return _mm256_set1_epi32(value); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm256_add_epi32(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm256_sub_epi32(a, b); }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm256_abs_epi32(a); }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return _mm256_srai_epi32(a, n);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm256_cmpgt_epi32(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return _mm256_blendv_epi8(no, yes, m); }
    static KRO_INLINE Lanes alternate(Lanes even, Lanes odd) { return _mm256_blend_epi32(even, odd, 0xAA); }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return _mm256_min_epi32(_mm256_max_epi32(a, _mm256_setzero_si256()), top);
    }
    static KRO_INLINE __m256i packed(Lanes first, Lanes second) {
        return Avx2::inOrder(_mm256_packus_epi32(first, second));
    }
};

template <>
struct WordsOf<Avx2> {
    using Words = Avx2Words;
    using Wide = Doubled<Avx2Dwords, Avx2Words>;
};

}  // namespace
}  // namespace kro
