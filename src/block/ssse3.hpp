// 16 columns a block.
#pragma once

#include <tmmintrin.h>

#include "block/cell.hpp"
#include "block/tables.hpp"

namespace kro {
namespace {

struct Ssse3 {
    static constexpr int columns = 16;
    using Bytes = __m128i;
    using Lanes = __m128i;
    using Mask = __m128i;

    static KRO_INLINE Bytes load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
    static KRO_INLINE void store(void* p, Bytes b) { _mm_storeu_si128(static_cast<__m128i*>(p), b); }
    static KRO_INLINE Bytes table(const Shuffle<16>& t) {
        return _mm_load_si128(reinterpret_cast<const __m128i*>(t.byte));
    }

    // 16 columns from `outside` before the row's first.
    template <int outside>
    static KRO_INLINE Bytes loadMirroredLeft(const uint8_t* first) {
        static constexpr Shuffle<16> order = mirroredLeft(outside);
        return _mm_shuffle_epi8(load(first), table(order));
    }
    // 16 columns of which the last `outside` lie beyond the row.
    template <int outside>
    static KRO_INLINE Bytes loadMirroredRight(const uint8_t* p) {
        static constexpr Shuffle<16> order = mirroredRight(outside);
        return _mm_shuffle_epi8(load(p), table(order));
    }

    static KRO_INLINE Lanes low(Bytes b) { return _mm_and_si128(b, _mm_set1_epi16(0x00FF)); }
    static KRO_INLINE Lanes high(Bytes b) { return _mm_srli_epi16(b, 8); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return _mm_add_epi16(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return _mm_sub_epi16(a, b); }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return _mm_mullo_epi16(a, b); }
    static KRO_INLINE Lanes all(uint32_t value) { return _mm_set1_epi16(static_cast<int16_t>(value)); }
    static KRO_INLINE Lanes absolute(Lanes a) { return _mm_abs_epi16(a); }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return _mm_cmpgt_epi16(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) {
        return _mm_or_si128(_mm_and_si128(m, yes), _mm_andnot_si128(m, no));
    }
    static KRO_INLINE Lanes clampByte(Lanes a) {
        return _mm_min_epi16(_mm_max_epi16(a, _mm_setzero_si128()), _mm_set1_epi16(255));
    }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return n == 0 ? a : _mm_srai_epi16(a, n);
    }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return _mm_slli_epi16(a, n);
    }
    // Even columns from bytes whose odd ones are 0, odd columns from bytes whose even ones are anything.
    static KRO_INLINE Bytes combine(Bytes even, Bytes odd) {
        return _mm_or_si128(even, _mm_andnot_si128(_mm_set1_epi16(0x00FF), odd));
    }
    static KRO_INLINE Bytes evenOnly(Bytes b) { return low(b); }
    template <bool odd>
    static KRO_INLINE Bytes parityPick(Bytes here, Bytes left) {
        return odd ? combine(low(left), here) : combine(low(here), left);
    }
    // Two channels of signed lanes, saturated to bytes and brought into column order.
    static KRO_INLINE void packPair(Lanes evenA, Lanes oddA, Lanes evenB, Lanes oddB, Bytes& a, Bytes& b) {
        const __m128i even = _mm_packus_epi16(evenA, evenB);
        const __m128i odd = _mm_packus_epi16(oddA, oddB);
        a = _mm_unpacklo_epi8(even, odd);
        b = _mm_unpackhi_epi8(even, odd);
    }
    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return load(p); }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { store(p, a); }

    // Bound by its nine shuffles: masks and rotations, which wider sets use, cost five logic operations a store here.
    static KRO_INLINE void store3(uint8_t* out, Bytes c0, Bytes c1, Bytes c2) {
        static constexpr Shuffle<16> spread[3][3] = {
            {spread3<16, 1>(0, 0), spread3<16, 1>(0, 1), spread3<16, 1>(0, 2)},
            {spread3<16, 1>(1, 0), spread3<16, 1>(1, 1), spread3<16, 1>(1, 2)},
            {spread3<16, 1>(2, 0), spread3<16, 1>(2, 1), spread3<16, 1>(2, 2)}};
        for (int j = 0; j < 3; ++j) {
            const __m128i bytes = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(c0, table(spread[0][j])),
                                                            _mm_shuffle_epi8(c1, table(spread[1][j]))),
                                               _mm_shuffle_epi8(c2, table(spread[2][j])));
            store(out + 16 * j, bytes);
        }
    }
    static KRO_INLINE void storeTriple(uint8_t* out, Bytes grey) {
        static constexpr Shuffle<16> order[3] = {triple<16>(0), triple<16>(1), triple<16>(2)};
        for (int j = 0; j < 3; ++j) {
            store(out + 16 * j, _mm_shuffle_epi8(grey, table(order[j])));
        }
    }

    struct Quads {
        Bytes part[4];
    };
    static KRO_INLINE Quads quads(Bytes c0, Bytes c1, Bytes c2) {
        const __m128i zero = _mm_setzero_si128();
        const __m128i low01 = _mm_unpacklo_epi8(c0, c1), high01 = _mm_unpackhi_epi8(c0, c1);
        const __m128i low2 = _mm_unpacklo_epi8(c2, zero), high2 = _mm_unpackhi_epi8(c2, zero);
        return {{_mm_unpacklo_epi16(low01, low2), _mm_unpackhi_epi16(low01, low2), _mm_unpacklo_epi16(high01, high2),
                 _mm_unpackhi_epi16(high01, high2)}};
    }
    static KRO_INLINE Bytes keepBits(Bytes fresh, Bytes old, Bytes keep) {
        return _mm_or_si128(fresh, _mm_and_si128(old, keep));
    }

    // 12 bytes to 16, four times; reads 48 bytes.
    static KRO_INLINE void widen48(const uint8_t* in, uint8_t* out) {
        static constexpr Shuffle<16> fromStart = widen3to4(0), fromEnd = widen3to4(4);
        store(out, _mm_shuffle_epi8(load(in), table(fromStart)));
        store(out + 16, _mm_shuffle_epi8(load(in + 12), table(fromStart)));
        store(out + 32, _mm_shuffle_epi8(load(in + 24), table(fromStart)));
        store(out + 48, _mm_shuffle_epi8(load(in + 32), table(fromEnd)));
    }

    // 16 words to bytes: signed shift, unsigned saturation.
    static KRO_INLINE Bytes reduceSaturated(const uint16_t* in, int shift) {
        const __m128i count = _mm_cvtsi32_si128(shift);
        return _mm_packus_epi16(_mm_sra_epi16(load(in), count), _mm_sra_epi16(load(in + 8), count));
    }
    // 16 words to their high bytes.
    static KRO_INLINE Bytes highBytes(const uint16_t* in) {
        return _mm_packus_epi16(_mm_srli_epi16(load(in), 8), _mm_srli_epi16(load(in + 8), 8));
    }
    // 24 bytes of packed groups to 16 samples.
    static KRO_INLINE Bytes unpackGroups(const uint8_t* in) {
        static constexpr Shuffle<16> first = groups16(0, 0), second = groups16(8, 16);
        return _mm_or_si128(_mm_shuffle_epi8(load(in), table(first)), _mm_shuffle_epi8(load(in + 8), table(second)));
    }
};

}  // namespace
}  // namespace kro
