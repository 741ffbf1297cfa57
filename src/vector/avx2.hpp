// Vectors of 32 bytes. Byte shuffles stay within 16-byte lanes, so whole lanes are moved where rows are interleaved.
#pragma once

#include <immintrin.h>

#include "vector/ssse3.hpp"

namespace kro {
namespace {

struct Avx2Lanes {
    using Vector = __m256i;
    using Lanes = __m256i;
    using Mask = __m256i;
    using Number = int16_t;

    static KRO_INLINE Vector load(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
    static KRO_INLINE void store(void* p, Vector v) { _mm256_storeu_si256(static_cast<__m256i*>(p), v); }
    static KRO_INLINE Vector table(const Shuffle<32>& t) {
        return _mm256_load_si256(reinterpret_cast<const __m256i*>(t.byte));
    }
    static KRO_INLINE Vector shuffled(Vector v, const Shuffle<32>& t) { return _mm256_shuffle_epi8(v, table(t)); }
    static KRO_INLINE Vector halves(__m128i first, __m128i second) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(first), second, 1);
    }
    static KRO_INLINE Vector lanesAt(const uint8_t* in, const int32_t (&offset)[4], int32_t) {
        const __m128i first = Ssse3Lanes::load(in + offset[0]);
        return offset[0] == offset[1] ? _mm256_broadcastsi128_si256(first)
                                      : halves(first, Ssse3Lanes::load(in + offset[1]));
    }

    // Quarters 0 2 1 3 in order again.
    static KRO_INLINE Vector inOrder(__m256i packedByLanes) { return _mm256_permute4x64_epi64(packedByLanes, 0xD8); }
    template <class S>
    static KRO_INLINE void storeSites(S* even, S* odd, Vector v) {
        static constexpr Shuffle<32> order = sitesApart<32, sizeof(S)>();
        const Vector sites = inOrder(shuffled(v, order));
        Ssse3Lanes::store(even, _mm256_castsi256_si128(sites));
        Ssse3Lanes::store(odd, _mm256_extracti128_si256(sites, 1));
    }

    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return load(p); }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { store(p, a); }
    static KRO_INLINE Lanes loadLanes(const uint8_t* p) { return _mm256_cvtepu8_epi16(Ssse3Lanes::load(p)); }
    static KRO_INLINE Lanes all(int32_t value) { return _mm256_set1_epi16(static_cast<int16_t>(value)); }
    static KRO_INLINE Lanes low(Vector v) { return _mm256_and_si256(v, _mm256_set1_epi16(0x00FF)); }
    static KRO_INLINE Lanes high(Vector v) { return _mm256_srli_epi16(v, 8); }
    static KRO_INLINE Lanes highOnly(Vector v) { return _mm256_and_si256(v, _mm256_set1_epi16(-0x0100)); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm256_add_epi16(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm256_sub_epi16(a, b); }
    static KRO_INLINE Lanes addSaturated(Lanes a, Lanes b) { return _mm256_adds_epi16(a, b); }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return _mm256_mullo_epi16(a, b); }
    static KRO_INLINE Lanes mulHigh(Lanes a, Lanes b) { return _mm256_mulhi_epu16(a, b); }
    static KRO_INLINE Lanes average(Lanes a, Lanes b) { return _mm256_avg_epu16(a, b); }
    static constexpr bool weighsBytes = true;
    static KRO_INLINE Lanes weighBytes(Vector v, int32_t low, int32_t high) {
        return _mm256_maddubs_epi16(v, all(low | high << 8));
    }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm256_abs_epi16(a); }
    static KRO_INLINE Lanes least(Lanes a, Lanes b) { return _mm256_min_epi16(a, b); }
    static KRO_INLINE Lanes most(Lanes a, Lanes b) { return _mm256_max_epi16(a, b); }
    static KRO_INLINE Lanes raised(Mask m, Lanes a) { return sub(a, m); }
    static KRO_INLINE Lanes lowered(Mask m, Lanes a) { return add(a, m); }
    static KRO_INLINE Lanes turned(Lanes a, Lanes first, Lanes second) {
        return _mm256_sign_epi16(a, sub(first, second));
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm256_cmpgt_epi16(a, b); }
    // Not by the compiler's own function, which it takes for a question about signs: it compares the mask with 0
    // again, where two selections share it, too.
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) {
        Lanes chosen;
        __asm__("vpblendvb %3, %2, %1, %0" : "=x"(chosen) : "x"(no), "xm"(yes), "x"(m));
        return chosen;
    }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return _mm256_and_si256(a, b); }
    static KRO_INLINE Lanes bitOr(Lanes a, Lanes b) { return _mm256_or_si256(a, b); }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return _mm256_min_epi16(_mm256_max_epi16(a, _mm256_setzero_si256()), top);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return n == 0 ? a : _mm256_srai_epi16(a, n);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightRounded(Lanes a) {
        return _mm256_mulhrs_epi16(a, all(1 << (15 - n)));
    }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return _mm256_slli_epi16(a, n);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightLogical(Lanes a) {
        return _mm256_srli_epi16(a, n);
    }
    static KRO_INLINE Lanes shiftRightBy(Lanes a, int32_t n) { return _mm256_srl_epi16(a, _mm_cvtsi32_si128(n)); }
    static KRO_INLINE Lanes shiftLeftBy(Lanes a, int32_t n) { return _mm256_sll_epi16(a, _mm_cvtsi32_si128(n)); }

    // Interleaving within lanes takes dword j of each lane to part j; with the dwords of a channel transposed
    // beforehand
    //     lane 0  d0 d2 d4 d6    lane 1  d1 d3 d5 d7
    // all pixels are in order afterwards.
    struct Quads {
        Vector part[4];
    };
    static KRO_INLINE Vector transposed(Vector v) {
        static constexpr DwordIndices order = transposedDwords<2>();
        return _mm256_permutevar8x32_epi32(v, load(order.dword));
    }
};

struct Avx2Bytes : Avx2Lanes {
    static constexpr int columns = 32;
    static constexpr bool wholePermutes = false;
    static constexpr Interleaving interleaving = Interleaving::pairs;
    using Sample = uint8_t;

    template <int outside>
    static KRO_INLINE Vector loadLeft(const uint8_t* first) {
        return halves(Ssse3Bytes::loadLeft<outside>(first), Ssse3Bytes::load(first + 16 - outside));
    }
    template <int outside>
    static KRO_INLINE Vector loadRight(const uint8_t* p) {
        return halves(Ssse3Bytes::load(p + outside), Ssse3Bytes::loadRight<outside>(p + 16));
    }

    static KRO_INLINE Lanes clampByte(Lanes a) { return clamp(a, _mm256_set1_epi16(255)); }
    static KRO_INLINE Vector combine(Vector even, Vector odd) {
        return _mm256_or_si256(even, _mm256_andnot_si256(_mm256_set1_epi16(0x00FF), odd));
    }
    static KRO_INLINE Vector evenOnly(Vector v) { return low(v); }
    // As in Ssse3Bytes, lane by lane.
    static KRO_INLINE void packPair(Lanes evenA, Lanes oddA, Lanes evenB, Lanes oddB, Vector& a, Vector& b) {
        const __m256i even = _mm256_packus_epi16(evenA, evenB);
        const __m256i odd = _mm256_packus_epi16(oddA, oddB);
        a = _mm256_unpacklo_epi8(even, odd);
        b = _mm256_unpackhi_epi8(even, odd);
    }

    // Three vectors whose lanes hold pieces of 96 bytes, stored in order:
    //     p03  0 | 3        p14  1 | 4        p25  2 | 5        stores  0 | 1,  2 | 3,  4 | 5
    static KRO_INLINE void storeLanePieces(void* out, __m256i p03, __m256i p14, __m256i p25) {
        char* const bytes = static_cast<char*>(out);
        store(bytes, _mm256_permute2x128_si256(p03, p14, 0x20));
        store(bytes + 32, _mm256_blend_epi32(p25, p03, 0xF0));
        store(bytes + 64, _mm256_permute2x128_si256(p14, p25, 0x31));
    }
    // One rotation a channel, then blends: 3 shuffles where separate picks for each store would take 9.
    //     rotated, modulo 3   a0 . . a1 . ..     . b0 . . b1 ..     . . c0 . . c1 ..    (dots hold later elements)
    static KRO_INLINE void store3(uint8_t* out, Vector c0, Vector c1, Vector c2) {
        static constexpr Shuffle<32> rotation[3] = {rotate3<32, 16, 1>(0), rotate3<32, 16, 1>(1),
                                                    rotate3<32, 16, 1>(2)};
        static constexpr Shuffle<32> third[3] = {everyThird<32, 16, 1>(0), everyThird<32, 16, 1>(1),
                                                 everyThird<32, 16, 1>(2)};
        const __m256i r0 = shuffled(c0, rotation[0]), r1 = shuffled(c1, rotation[1]), r2 = shuffled(c2, rotation[2]);
        __m256i piece[3];
        for (int j = 0; j < 3; ++j) {
            const __m256i two = _mm256_blendv_epi8(r0, r1, table(third[modulo3(1 - j)]));
            piece[j] = _mm256_blendv_epi8(two, r2, table(third[modulo3(2 - j)]));
        }
        storeLanePieces(out, piece[0], piece[1], piece[2]);
    }
    // Of signed lanes, saturated: samples that become neighbours are packed together, eight bytes apart, and move as
    // words. Blends of words know their places beforehand; by a mask of bytes they are three operations to Intel's.
    template <class Channel>
    static KRO_INLINE void store3Lanes(uint8_t* out, const Channel& c0, const Channel& c1, const Channel& c2) {
        static constexpr Shuffle<32> rotation[3] = {rotatePacked3<32, 16, 2>(0), rotatePacked3<32, 16, 2>(1),
                                                    rotatePacked3<32, 16, 2>(2)};
        storeRotated(out, shuffled(_mm256_packus_epi16(c0.even, c1.even), rotation[0]),
                     shuffled(_mm256_packus_epi16(c2.even, c0.odd), rotation[1]),
                     shuffled(_mm256_packus_epi16(c1.odd, c2.odd), rotation[2]));
    }
    // Words whose places in a lane are 0, 1 and 2 modulo 3 of three rotated vectors, shifted by one from store to
    // store.
    static KRO_INLINE void storeRotated(void* out, Vector r0, Vector r1, Vector r2) {
        storeLanePieces(out, merged<0x92, 0x24>(r0, r1, r2), merged<0x24, 0x49>(r0, r1, r2),
                        merged<0x49, 0x92>(r0, r1, r2));
    }
    template <int second, int third>
    static KRO_INLINE Vector merged(Vector r0, Vector r1, Vector r2) {
        return _mm256_blend_epi16(_mm256_blend_epi16(r0, r1, second), r2, third);
    }
    static KRO_INLINE void storeTriple(uint8_t* out, Vector grey) {
        Ssse3Bytes::storeTriple(out, _mm256_castsi256_si128(grey));
        Ssse3Bytes::storeTriple(out + 48, _mm256_extracti128_si256(grey, 1));
    }

    static KRO_INLINE Quads quads(Vector c0, Vector c1, Vector c2, Vector c3) {
        const __m256i low01 = _mm256_unpacklo_epi8(c0, c1), high01 = _mm256_unpackhi_epi8(c0, c1);
        const __m256i low23 = _mm256_unpacklo_epi8(c2, c3), high23 = _mm256_unpackhi_epi8(c2, c3);
        return {{_mm256_unpacklo_epi16(low01, low23), _mm256_unpackhi_epi16(low01, low23),
                 _mm256_unpacklo_epi16(high01, high23), _mm256_unpackhi_epi16(high01, high23)}};
    }
    static KRO_INLINE Vector filled(uint32_t value) { return _mm256_set1_epi8(static_cast<char>(value)); }
    static KRO_INLINE Vector keepBits(Vector fresh, Vector old, Vector keep) { return select(keep, old, fresh); }
    static KRO_INLINE void widen48(const uint8_t* in, uint8_t* out) { Ssse3Bytes::widen48(in, out); }

    static KRO_INLINE Vector reduceSaturated(Vector first, Vector second, int shift) {
        const __m128i count = _mm_cvtsi32_si128(shift);
        return inOrder(_mm256_packus_epi16(_mm256_sra_epi16(first, count), _mm256_sra_epi16(second, count)));
    }
    static KRO_INLINE Vector highBytesOfLanes(Vector first, Vector second) {
        return _mm256_packus_epi16(high(first), high(second));
    }
    static KRO_INLINE Vector highBytes(Vector first, Vector second) {
        return inOrder(highBytesOfLanes(first, second));
    }
};

struct Avx2Words : Avx2Lanes {
    static constexpr int columns = 16;
    using Sample = uint16_t;

    template <int outside>
    static KRO_INLINE Vector loadLeft(const uint16_t* first) {
        return halves(Ssse3Words::loadLeft<outside>(first), Ssse3Words::load(first + 8 - outside));
    }
    template <int outside>
    static KRO_INLINE Vector loadRight(const uint16_t* p) {
        return halves(Ssse3Words::load(p + outside), Ssse3Words::loadRight<outside>(p + 8));
    }

    static KRO_INLINE Lanes iota() { return _mm256_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15); }
    static KRO_INLINE Lanes combine(Lanes even, Lanes odd) { return _mm256_blend_epi16(even, odd, 0xAA); }
    static KRO_INLINE bool anyBits(Lanes a, int32_t bits) { return _mm256_testz_si256(a, all(bits)) == 0; }
    static KRO_INLINE Lanes widened(Vector words) { return words; }
    static KRO_INLINE Vector packed(Lanes a) { return a; }

    // One rotation a channel; places of a lane's eight words modulo 3, shifted by one from vector to vector.
    static KRO_INLINE void store3(uint16_t* out, Vector c0, Vector c1, Vector c2) {
        static constexpr Shuffle<32> rotation[3] = {rotate3<32, 16, 2>(0), rotate3<32, 16, 2>(1),
                                                    rotate3<32, 16, 2>(2)};
        Avx2Bytes::storeRotated(out, shuffled(c0, rotation[0]), shuffled(c1, rotation[1]), shuffled(c2, rotation[2]));
    }
    static KRO_INLINE Quads quads(Vector c0, Vector c1, Vector c2, Vector c3) {
        const __m256i low01 = _mm256_unpacklo_epi16(c0, c1), high01 = _mm256_unpackhi_epi16(c0, c1);
        const __m256i low23 = _mm256_unpacklo_epi16(c2, c3), high23 = _mm256_unpackhi_epi16(c2, c3);
        return {{_mm256_unpacklo_epi32(low01, low23), _mm256_unpackhi_epi32(low01, low23),
                 _mm256_unpacklo_epi32(high01, high23), _mm256_unpackhi_epi32(high01, high23)}};
    }
    static KRO_INLINE Vector filled(uint32_t value) { return all(static_cast<int32_t>(value)); }

    static KRO_INLINE Vector atMost(Vector words, Vector top) { return _mm256_min_epu16(words, top); }
    static KRO_INLINE Vector less(Vector words, Vector by) { return _mm256_subs_epu16(words, by); }
    static KRO_INLINE void widenBytes(const uint8_t* in, Vector& first, Vector& second) {
        first = _mm256_cvtepu8_epi16(Ssse3Words::load(in));
        second = _mm256_cvtepu8_epi16(Ssse3Words::load(in + 16));
    }
};

struct Avx2Dwords : Lanes32<Avx2Dwords> {
    using Lanes = __m256i;
    using Mask = __m256i;

    static KRO_INLINE Lanes firstHalf(__m256i words) { return _mm256_cvtepu16_epi32(_mm256_castsi256_si128(words)); }
    static KRO_INLINE Lanes secondHalf(__m256i words) {
        return _mm256_cvtepu16_epi32(_mm256_extracti128_si256(words, 1));
    }
    static KRO_INLINE Lanes loadLanes(const int32_t* p) { return Avx2Lanes::load(p); }
    static KRO_INLINE void storeLanes(int32_t* p, Lanes a) { Avx2Lanes::store(p, a); }
    static KRO_INLINE Lanes loadLanes(const uint16_t* p) { return _mm256_cvtepu16_epi32(Ssse3Lanes::load(p)); }
    static KRO_INLINE __m256i joined(Lanes even, Lanes odd) {
        return _mm256_or_si256(even, _mm256_slli_epi32(odd, 16));
    }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return _mm256_mullo_epi32(a, b); }
    static KRO_INLINE Lanes least(Lanes a, Lanes b) { return _mm256_min_epi32(a, b); }
    static KRO_INLINE Lanes most(Lanes a, Lanes b) { return _mm256_max_epi32(a, b); }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return _mm256_slli_epi32(a, n);
    }
    static KRO_INLINE Lanes all(int32_t value) { return _mm256_set1_epi32(value); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm256_add_epi32(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm256_sub_epi32(a, b); }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return _mm256_and_si256(a, b); }
    static KRO_INLINE Lanes turned(Lanes a, Lanes first, Lanes second) {
        return _mm256_sign_epi32(a, sub(first, second));
    }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm256_abs_epi32(a); }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return _mm256_srai_epi32(a, n);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm256_cmpgt_epi32(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return _mm256_blendv_epi8(no, yes, m); }
    static KRO_INLINE Lanes combine(Lanes even, Lanes odd) { return _mm256_blend_epi32(even, odd, 0xAA); }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return _mm256_min_epi32(_mm256_max_epi32(a, _mm256_setzero_si256()), top);
    }
    static KRO_INLINE __m256i packed(Lanes first, Lanes second) {
        return Avx2Bytes::inOrder(_mm256_packus_epi32(first, second));
    }
};

struct Avx2 {
    using Bytes = Avx2Bytes;
    using Words = Avx2Words;
    using Wide = Doubled<Avx2Dwords, Avx2Words>;
    using Dwords = Avx2Dwords;
};

}  // namespace
}  // namespace kro
