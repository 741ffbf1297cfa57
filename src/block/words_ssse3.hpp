// 8 columns a block.
#pragma once

#include "block/ssse3.hpp"
#include "block/words.hpp"

namespace kro {
namespace {

struct Ssse3Words {
    static constexpr int columns = 8;
    using Word = int16_t;
    using Lanes = __m128i;
    using Mask = __m128i;
    using Packed = __m128i;

    static KRO_INLINE Lanes load(const uint16_t* p) { return Ssse3::load(p); }
    static KRO_INLINE void store(uint16_t* p, Packed a) { Ssse3::store(p, a); }
    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return Ssse3::load(p); }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { Ssse3::store(p, a); }
    static KRO_INLINE Packed packed(Lanes a) { return a; }

    // From one column before the row's first, and up to one column beyond its last.
    static KRO_INLINE Lanes loadMirroredLeft(const uint16_t* first) {
        return _mm_insert_epi16(_mm_slli_si128(load(first), 2), first[1], 0);
    }
    static KRO_INLINE Lanes loadMirroredRight(const uint16_t* p) {
        return _mm_insert_epi16(_mm_srli_si128(load(p), 2), p[columns - 2], 7);
    }

    static KRO_INLINE Lanes all(int32_t value) { return _mm_set1_epi16(static_cast<int16_t>(value)); }
    static KRO_INLINE Lanes iota() { return _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm_add_epi16(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm_sub_epi16(a, b); }
    static KRO_INLINE Lanes average(Lanes a, Lanes b) { return _mm_avg_epu16(a, b); }
    static KRO_INLINE Lanes bitXor(Lanes a, Lanes b) { return _mm_xor_si128(a, b); }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return _mm_and_si128(a, b); }
    static KRO_INLINE Lanes bitOr(Lanes a, Lanes b) { return _mm_or_si128(a, b); }
    static KRO_INLINE Lanes bitAndNot(Lanes a, Lanes b) { return _mm_andnot_si128(b, a); }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm_abs_epi16(a); }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return _mm_srai_epi16(a, n);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm_cmpgt_epi16(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return Ssse3::select(m, yes, no); }
    static KRO_INLINE Lanes alternate(Lanes even, Lanes odd) { return select(_mm_set1_epi32(0xFFFF), even, odd); }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return _mm_min_epi16(_mm_max_epi16(a, _mm_setzero_si128()), top);
    }
    static KRO_INLINE bool anyBits(Lanes a, int32_t bits) {
        return _mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(a, all(bits)), _mm_setzero_si128())) != 0xFFFF;
    }

    // Bound by its nine shuffles.
    static KRO_INLINE void store3(uint16_t* out, Packed c0, Packed c1, Packed c2) {
        static constexpr Shuffle<16> spread[3][3] = {
            {spread3<16, 2>(0, 0), spread3<16, 2>(0, 1), spread3<16, 2>(0, 2)},
            {spread3<16, 2>(1, 0), spread3<16, 2>(1, 1), spread3<16, 2>(1, 2)},
            {spread3<16, 2>(2, 0), spread3<16, 2>(2, 1), spread3<16, 2>(2, 2)}};
        for (int j = 0; j < 3; ++j) {
            store(out + columns * j, _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(c0, Ssse3::table(spread[0][j])),
                                                               _mm_shuffle_epi8(c1, Ssse3::table(spread[1][j]))),
                                                  _mm_shuffle_epi8(c2, Ssse3::table(spread[2][j]))));
        }
    }
};

struct Ssse3Dwords {
    using Lanes = __m128i;
    using Mask = __m128i;

    static KRO_INLINE Lanes load(const uint16_t* p) {
        return _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
    }
    static KRO_INLINE Lanes loadLanes(const int32_t* p) { return Ssse3::load(p); }
    static KRO_INLINE void storeLanes(int32_t* p, Lanes a) { Ssse3::store(p, a); }
    static KRO_INLINE Lanes all(int32_t value) { return _mm_set1_epi32(value); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm_add_epi32(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm_sub_epi32(a, b); }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm_abs_epi32(a); }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return _mm_srai_epi32(a, n);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm_cmpgt_epi32(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return Ssse3::select(m, yes, no); }
    static KRO_INLINE Lanes alternate(Lanes even, Lanes odd) {
        return select(_mm_set1_epi64x(0xFFFFFFFF), even, odd);
    }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        const Lanes positive = _mm_andnot_si128(_mm_srai_epi32(a, 31), a);
        return select(_mm_cmpgt_epi32(top, positive), positive, top);
    }
    // Lanes hold unsigned words; without an unsigned pack they are sign-extended first.
    static KRO_INLINE __m128i packed(Lanes first, Lanes second) {
        return _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(first, 16), 16),
                               _mm_srai_epi32(_mm_slli_epi32(second, 16), 16));
    }
};

template <>
struct WordsOf<Ssse3> {
    using Words = Ssse3Words;
    using Wide = Doubled<Ssse3Dwords, Ssse3Words>;
};

}  // namespace
}  // namespace kro
