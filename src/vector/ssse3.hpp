// Vectors of 16 bytes.
#pragma once

#include <tmmintrin.h>

#include "vector/pair.hpp"
#include "vector/vectors16.hpp"

namespace kro {
namespace {

// What bytes and words have in common: the register, and arithmetic on eight 16-bit lanes.
struct Ssse3Lanes {
    using Vector = __m128i;
    using Lanes = __m128i;
    using Mask = __m128i;
    using Number = int16_t;

    static KRO_INLINE Vector load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
    static KRO_INLINE void store(void* p, Vector v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
    static KRO_INLINE void storeHalves(void* first, void* second, Vector v) {
        _mm_storel_epi64(static_cast<__m128i*>(first), v);
        _mm_storeh_pd(static_cast<double*>(second), _mm_castsi128_pd(v));
    }
    static KRO_INLINE Vector table(const Shuffle<16>& t) {
        return _mm_load_si128(reinterpret_cast<const __m128i*>(t.byte));
    }
    static KRO_INLINE Vector shuffled(Vector v, const Shuffle<16>& t) { return _mm_shuffle_epi8(v, table(t)); }

    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return load(p); }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { store(p, a); }
    static KRO_INLINE Lanes loadLanes(const uint8_t* p) {
        return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
    }
    static KRO_INLINE Lanes all(int32_t value) { return _mm_set1_epi16(static_cast<int16_t>(value)); }
    static KRO_INLINE Lanes low(Vector v) { return _mm_and_si128(v, _mm_set1_epi16(0x00FF)); }
    static KRO_INLINE Lanes high(Vector v) { return _mm_srli_epi16(v, 8); }
    static KRO_INLINE Lanes highOnly(Vector v) { return _mm_and_si128(v, _mm_set1_epi16(-0x0100)); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm_add_epi16(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm_sub_epi16(a, b); }
    static KRO_INLINE Lanes addSaturated(Lanes a, Lanes b) { return _mm_adds_epi16(a, b); }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return _mm_mullo_epi16(a, b); }
    static KRO_INLINE Lanes mulHigh(Lanes a, Lanes b) { return _mm_mulhi_epu16(a, b); }
    static KRO_INLINE Lanes average(Lanes a, Lanes b) { return _mm_avg_epu16(a, b); }
    // The sum of a lane's two bytes by weights below 128, of which together not more than 128.
    static constexpr bool weighsBytes = true;
    static KRO_INLINE Lanes weighBytes(Vector v, int32_t low, int32_t high) {
        return _mm_maddubs_epi16(v, all(low | high << 8));
    }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm_abs_epi16(a); }
    static KRO_INLINE Lanes least(Lanes a, Lanes b) { return _mm_min_epi16(a, b); }
    static KRO_INLINE Lanes most(Lanes a, Lanes b) { return _mm_max_epi16(a, b); }
    static KRO_INLINE Lanes raised(Mask m, Lanes a) { return sub(a, m); }
    static KRO_INLINE Lanes lowered(Mask m, Lanes a) { return add(a, m); }
    static KRO_INLINE Lanes turned(Lanes a, Lanes first, Lanes second) {
        return _mm_sign_epi16(a, sub(first, second));
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm_cmpgt_epi16(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) {
        return _mm_or_si128(_mm_and_si128(m, yes), _mm_andnot_si128(m, no));
    }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return _mm_and_si128(a, b); }
    static KRO_INLINE Lanes bitOr(Lanes a, Lanes b) { return _mm_or_si128(a, b); }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return _mm_min_epi16(_mm_max_epi16(a, _mm_setzero_si128()), top);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return n == 0 ? a : _mm_srai_epi16(a, n);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightRounded(Lanes a) {
        return _mm_mulhrs_epi16(a, all(1 << (15 - n)));
    }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return _mm_slli_epi16(a, n);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightLogical(Lanes a) {
        return _mm_srli_epi16(a, n);
    }
    static KRO_INLINE Lanes shiftRightBy(Lanes a, int32_t n) { return _mm_srl_epi16(a, _mm_cvtsi32_si128(n)); }
    static KRO_INLINE Lanes shiftLeftBy(Lanes a, int32_t n) { return _mm_sll_epi16(a, _mm_cvtsi32_si128(n)); }
};

struct Ssse3Bytes : Vectors16<Ssse3Lanes, uint8_t> {
    static constexpr bool wholePermutes = false;
    static constexpr Interleaving interleaving = Interleaving::channels;

    static KRO_INLINE Lanes clampByte(Lanes a) { return clamp(a, _mm_set1_epi16(255)); }
    // Even columns from bytes whose odd ones are 0, odd columns from bytes whose even ones are anything.
    static KRO_INLINE Vector combine(Vector even, Vector odd) {
        return _mm_or_si128(even, _mm_andnot_si128(_mm_set1_epi16(0x00FF), odd));
    }
    static KRO_INLINE Vector evenOnly(Vector v) { return low(v); }
    // Two channels of signed lanes, saturated to bytes and brought into column order:
    //     even  a0 a2 a4 .. a14 | b0 b2 b4 .. b14        a  a0 a1 a2 a3 .. a15
    //     odd   a1 a3 a5 .. a15 | b1 b3 b5 .. b15        b  b0 b1 b2 b3 .. b15
    static KRO_INLINE void packPair(Lanes evenA, Lanes oddA, Lanes evenB, Lanes oddB, Vector& a, Vector& b) {
        const __m128i even = _mm_packus_epi16(evenA, evenB);
        const __m128i odd = _mm_packus_epi16(oddA, oddB);
        a = _mm_unpacklo_epi8(even, odd);
        b = _mm_unpackhi_epi8(even, odd);
    }

    // Four channels to 16 pixels of four bytes, a vector for every four pixels:
    //     c01  a0 b0 a1 b1 ..    c23  c0 d0 c1 d1 ..    part 0  a0 b0 c0 d0 a1 b1 c1 d1 ..
    static KRO_INLINE Quads quads(Vector c0, Vector c1, Vector c2, Vector c3) {
        const __m128i low01 = _mm_unpacklo_epi8(c0, c1), high01 = _mm_unpackhi_epi8(c0, c1);
        const __m128i low23 = _mm_unpacklo_epi8(c2, c3), high23 = _mm_unpackhi_epi8(c2, c3);
        return {{_mm_unpacklo_epi16(low01, low23), _mm_unpackhi_epi16(low01, low23),
                 _mm_unpacklo_epi16(high01, high23), _mm_unpackhi_epi16(high01, high23)}};
    }
    static KRO_INLINE Vector filled(uint32_t value) { return _mm_set1_epi8(static_cast<char>(value)); }

    // Two vectors of words to bytes: signed shift, unsigned saturation.
    static KRO_INLINE Vector reduceSaturated(Vector first, Vector second, int shift) {
        const __m128i count = _mm_cvtsi32_si128(shift);
        return _mm_packus_epi16(_mm_sra_epi16(first, count), _mm_sra_epi16(second, count));
    }
    // Two vectors of words to their high bytes; or lane by lane, the first's and then the second's.
    static KRO_INLINE Vector highBytes(Vector first, Vector second) {
        return _mm_packus_epi16(high(first), high(second));
    }
    static KRO_INLINE Vector highBytesOfLanes(Vector first, Vector second) { return highBytes(first, second); }
};

struct Ssse3Words : Vectors16<Ssse3Lanes, uint16_t> {
    static KRO_INLINE Lanes iota() { return _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7); }
    static KRO_INLINE Lanes combine(Lanes even, Lanes odd) { return select(_mm_set1_epi32(0xFFFF), even, odd); }
    static KRO_INLINE bool anyBits(Lanes a, int32_t bits) {
        return _mm_movemask_epi8(_mm_cmpeq_epi16(bitAnd(a, all(bits)), _mm_setzero_si128())) != 0xFFFF;
    }
    static KRO_INLINE Lanes widened(Vector words) { return words; }
    static KRO_INLINE Vector packed(Lanes a) { return a; }
    static KRO_INLINE Quads quads(Vector c0, Vector c1, Vector c2, Vector c3) {
        const __m128i low01 = _mm_unpacklo_epi16(c0, c1), high01 = _mm_unpackhi_epi16(c0, c1);
        const __m128i low23 = _mm_unpacklo_epi16(c2, c3), high23 = _mm_unpackhi_epi16(c2, c3);
        return {{_mm_unpacklo_epi32(low01, low23), _mm_unpackhi_epi32(low01, low23),
                 _mm_unpacklo_epi32(high01, high23), _mm_unpackhi_epi32(high01, high23)}};
    }
    static KRO_INLINE Vector filled(uint32_t value) { return all(static_cast<int32_t>(value)); }

    // The smaller of unsigned words; SSSE3 has no minimum of them.
    static KRO_INLINE Vector atMost(Vector words, Vector top) { return sub(words, _mm_subs_epu16(words, top)); }
    // Of unsigned words, 0 where there is nothing left.
    static KRO_INLINE Vector less(Vector words, Vector by) { return _mm_subs_epu16(words, by); }
    static KRO_INLINE void widenBytes(const uint8_t* in, Vector& first, Vector& second) {
        first = _mm_unpacklo_epi8(load(in), _mm_setzero_si128());
        second = _mm_unpackhi_epi8(load(in), _mm_setzero_si128());
    }
};

struct Ssse3Dwords : Lanes32<Ssse3Dwords> {
    using Lanes = __m128i;
    using Mask = __m128i;

    static KRO_INLINE Lanes firstHalf(__m128i words) { return _mm_unpacklo_epi16(words, _mm_setzero_si128()); }
    static KRO_INLINE Lanes secondHalf(__m128i words) { return _mm_unpackhi_epi16(words, _mm_setzero_si128()); }
    static KRO_INLINE Lanes loadLanes(const int32_t* p) { return Ssse3Lanes::load(p); }
    static KRO_INLINE void storeLanes(int32_t* p, Lanes a) { Ssse3Lanes::store(p, a); }
    static KRO_INLINE Lanes loadLanes(const uint16_t* p) {
        return firstHalf(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
    }
    static KRO_INLINE __m128i joined(Lanes even, Lanes odd) { return _mm_or_si128(even, _mm_slli_epi32(odd, 16)); }
    // There is none of 32 bits: products of even lanes and of odd ones, of which the lower halves are taken.
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) {
        const __m128i even = _mm_mul_epu32(a, b), odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
        return combine(even, _mm_slli_epi64(odd, 32));
    }
    static KRO_INLINE Lanes least(Lanes a, Lanes b) { return select(greater(a, b), b, a); }
    static KRO_INLINE Lanes most(Lanes a, Lanes b) { return select(greater(a, b), a, b); }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return _mm_slli_epi32(a, n);
    }
    static KRO_INLINE Lanes all(int32_t value) { return _mm_set1_epi32(value); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm_add_epi32(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm_sub_epi32(a, b); }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return _mm_and_si128(a, b); }
    static KRO_INLINE Lanes turned(Lanes a, Lanes first, Lanes second) {
        return _mm_sign_epi32(a, sub(first, second));
    }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm_abs_epi32(a); }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return _mm_srai_epi32(a, n);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm_cmpgt_epi32(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return Ssse3Lanes::select(m, yes, no); }
    static KRO_INLINE Lanes combine(Lanes even, Lanes odd) { return select(_mm_set1_epi64x(0xFFFFFFFF), even, odd); }
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

struct Ssse3 {
    using Bytes = Ssse3Bytes;
    using Words = Ssse3Words;
    using Wide = Doubled<Ssse3Dwords, Ssse3Words>;
    using Dwords = Ssse3Dwords;
};

}  // namespace
}  // namespace kro
