// Vectors of 16 bytes, of WebAssembly.
#pragma once

#include <wasm_simd128.h>

#include "vector/pair.hpp"
#include "vector/vectors16.hpp"

namespace kro {
namespace {

// What bytes and words have in common: the register, and arithmetic on eight 16-bit lanes.
struct Simd128Lanes {
    using Vector = v128_t;
    using Lanes = v128_t;
    using Mask = v128_t;
    using Number = int16_t;

    static KRO_INLINE Vector load(const void* p) { return wasm_v128_load(p); }
    static KRO_INLINE void store(void* p, Vector v) { wasm_v128_store(p, v); }
    static KRO_INLINE void storeHalves(void* first, void* second, Vector v) {
        wasm_v128_store64_lane(first, v, 0);
        wasm_v128_store64_lane(second, v, 1);
    }
    static KRO_INLINE Vector table(const Shuffle<16>& t) { return load(t.byte); }
    // Of one vector only: engines make a slow sequence of a shuffle of two.
    static KRO_INLINE Vector shuffled(Vector v, const Shuffle<16>& t) { return wasm_i8x16_swizzle(v, table(t)); }

    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return load(p); }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { store(p, a); }
    static KRO_INLINE Lanes loadLanes(const uint8_t* p) { return wasm_u16x8_load8x8(p); }
    static KRO_INLINE Lanes all(int32_t value) { return wasm_i16x8_splat(static_cast<int16_t>(value)); }
    static KRO_INLINE Lanes low(Vector v) { return wasm_v128_and(v, wasm_i16x8_const_splat(0x00FF)); }
    static KRO_INLINE Lanes high(Vector v) { return wasm_u16x8_shr(v, 8); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return wasm_i16x8_add(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return wasm_i16x8_sub(a, b); }
    static KRO_INLINE Lanes addSaturated(Lanes a, Lanes b) { return wasm_i16x8_add_sat(a, b); }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return wasm_i16x8_mul(a, b); }
    static KRO_INLINE Lanes absolute(Lanes a) { return wasm_i16x8_abs(a); }
    static KRO_INLINE Lanes least(Lanes a, Lanes b) { return wasm_i16x8_min(a, b); }
    static KRO_INLINE Lanes most(Lanes a, Lanes b) { return wasm_i16x8_max(a, b); }
    static KRO_INLINE Lanes raised(Mask m, Lanes a) { return sub(a, m); }
    static KRO_INLINE Lanes lowered(Mask m, Lanes a) { return add(a, m); }
    static KRO_INLINE Lanes turned(Lanes a, Lanes first, Lanes second) {
        return select(greater(second, first), wasm_i16x8_neg(a), a);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return wasm_i16x8_gt(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return wasm_v128_bitselect(yes, no, m); }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return wasm_v128_and(a, b); }
    static KRO_INLINE Lanes bitOr(Lanes a, Lanes b) { return wasm_v128_or(a, b); }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return wasm_i16x8_min(wasm_i16x8_max(a, wasm_i16x8_const_splat(0)), top);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return wasm_i16x8_shr(a, n);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightRounded(Lanes a) {
        return wasm_i16x8_q15mulr_sat(a, all(1 << (15 - n)));
    }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return wasm_i16x8_shl(a, n);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightLogical(Lanes a) {
        return wasm_u16x8_shr(a, n);
    }
    static KRO_INLINE Lanes shiftRightBy(Lanes a, int32_t n) { return wasm_u16x8_shr(a, static_cast<uint32_t>(n)); }
    static KRO_INLINE Lanes shiftLeftBy(Lanes a, int32_t n) { return wasm_i16x8_shl(a, static_cast<uint32_t>(n)); }

    // Alternating elements of the lower halves of two vectors, and of their upper halves.
    static KRO_INLINE Vector bytesOfLows(Vector a, Vector b) {
        return wasm_i8x16_shuffle(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    }
    static KRO_INLINE Vector bytesOfHighs(Vector a, Vector b) {
        return wasm_i8x16_shuffle(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    }
    static KRO_INLINE Vector wordsOfLows(Vector a, Vector b) {
        return wasm_i16x8_shuffle(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
    }
    static KRO_INLINE Vector wordsOfHighs(Vector a, Vector b) {
        return wasm_i16x8_shuffle(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
    }
};

struct Simd128Bytes : Vectors16<Simd128Lanes, uint8_t> {
    static constexpr bool weighsBytes = false;
    static constexpr bool wholePermutes = false;
    static constexpr Interleaving interleaving = Interleaving::channels;

    static KRO_INLINE Lanes clampByte(Lanes a) { return clamp(a, wasm_i16x8_const_splat(255)); }
    // Even columns from bytes whose odd ones are 0, odd columns from bytes whose even ones are anything.
    static KRO_INLINE Vector combine(Vector even, Vector odd) {
        return wasm_v128_or(even, wasm_v128_andnot(odd, wasm_i16x8_const_splat(0x00FF)));
    }
    static KRO_INLINE Vector evenOnly(Vector v) { return low(v); }
    // Two channels of signed lanes, saturated to bytes and brought into column order.
    static KRO_INLINE void packPair(Lanes evenA, Lanes oddA, Lanes evenB, Lanes oddB, Vector& a, Vector& b) {
        const v128_t even = wasm_u8x16_narrow_i16x8(evenA, evenB);
        const v128_t odd = wasm_u8x16_narrow_i16x8(oddA, oddB);
        a = bytesOfLows(even, odd);
        b = bytesOfHighs(even, odd);
    }

    // Four channels to 16 pixels of four bytes, a vector for every four pixels.
    static KRO_INLINE Quads quads(Vector c0, Vector c1, Vector c2, Vector c3) {
        const v128_t low01 = bytesOfLows(c0, c1), high01 = bytesOfHighs(c0, c1);
        const v128_t low23 = bytesOfLows(c2, c3), high23 = bytesOfHighs(c2, c3);
        return {{wordsOfLows(low01, low23), wordsOfHighs(low01, low23), wordsOfLows(high01, high23),
                 wordsOfHighs(high01, high23)}};
    }
    static KRO_INLINE Vector filled(uint32_t value) { return wasm_u8x16_splat(static_cast<uint8_t>(value)); }

    // Two vectors of words to bytes: signed shift, unsigned saturation.
    static KRO_INLINE Vector reduceSaturated(Vector first, Vector second, int shift) {
        const uint32_t count = static_cast<uint32_t>(shift);
        return wasm_u8x16_narrow_i16x8(wasm_i16x8_shr(first, count), wasm_i16x8_shr(second, count));
    }
    // Two vectors of words to their high bytes.
    static KRO_INLINE Vector highBytes(Vector first, Vector second) {
        return wasm_u8x16_narrow_i16x8(high(first), high(second));
    }
    static KRO_INLINE Vector highBytesOfLanes(Vector first, Vector second) { return highBytes(first, second); }
};

struct Simd128Words : Vectors16<Simd128Lanes, uint16_t> {
    static KRO_INLINE Lanes iota() { return wasm_i16x8_const(0, 1, 2, 3, 4, 5, 6, 7); }
    static KRO_INLINE Lanes average(Lanes a, Lanes b) { return wasm_u16x8_avgr(a, b); }
    static KRO_INLINE Lanes combine(Lanes even, Lanes odd) {
        return select(wasm_i32x4_const_splat(0xFFFF), even, odd);
    }
    static KRO_INLINE bool anyBits(Lanes a, int32_t bits) { return wasm_v128_any_true(bitAnd(a, all(bits))); }
    static KRO_INLINE Lanes widened(Vector words) { return words; }
    static KRO_INLINE Vector packed(Lanes a) { return a; }
    static KRO_INLINE Quads quads(Vector c0, Vector c1, Vector c2, Vector c3) {
        const v128_t low01 = wordsOfLows(c0, c1), high01 = wordsOfHighs(c0, c1);
        const v128_t low23 = wordsOfLows(c2, c3), high23 = wordsOfHighs(c2, c3);
        return {{dwordsOfLows(low01, low23), dwordsOfHighs(low01, low23), dwordsOfLows(high01, high23),
                 dwordsOfHighs(high01, high23)}};
    }
    static KRO_INLINE Vector filled(uint32_t value) { return all(static_cast<int32_t>(value)); }

    static KRO_INLINE Vector atMost(Vector words, Vector top) { return wasm_u16x8_min(words, top); }
    static KRO_INLINE Vector less(Vector words, Vector by) { return wasm_u16x8_sub_sat(words, by); }
    static KRO_INLINE Lanes mulHigh(Lanes a, Lanes b) {
        return wasm_u16x8_narrow_i32x4(wasm_u32x4_shr(wasm_u32x4_extmul_low_u16x8(a, b), 16),
                                       wasm_u32x4_shr(wasm_u32x4_extmul_high_u16x8(a, b), 16));
    }
    static KRO_INLINE void widenBytes(const uint8_t* in, Vector& first, Vector& second) {
        first = wasm_u16x8_load8x8(in);
        second = wasm_u16x8_load8x8(in + 8);
    }

private:
    static KRO_INLINE Vector dwordsOfLows(Vector a, Vector b) { return wasm_i32x4_shuffle(a, b, 0, 4, 1, 5); }
    static KRO_INLINE Vector dwordsOfHighs(Vector a, Vector b) { return wasm_i32x4_shuffle(a, b, 2, 6, 3, 7); }
};

struct Simd128Dwords : Lanes32<Simd128Dwords> {
    using Lanes = v128_t;
    using Mask = v128_t;

    static KRO_INLINE Lanes firstHalf(v128_t words) { return wasm_u32x4_extend_low_u16x8(words); }
    static KRO_INLINE Lanes secondHalf(v128_t words) { return wasm_u32x4_extend_high_u16x8(words); }
    static KRO_INLINE Lanes loadLanes(const int32_t* p) { return wasm_v128_load(p); }
    static KRO_INLINE void storeLanes(int32_t* p, Lanes a) { wasm_v128_store(p, a); }
    static KRO_INLINE Lanes loadLanes(const uint16_t* p) { return wasm_u32x4_load16x4(p); }
    static KRO_INLINE v128_t joined(Lanes even, Lanes odd) { return wasm_v128_or(even, wasm_i32x4_shl(odd, 16)); }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return wasm_i32x4_mul(a, b); }
    static KRO_INLINE Lanes least(Lanes a, Lanes b) { return wasm_i32x4_min(a, b); }
    static KRO_INLINE Lanes most(Lanes a, Lanes b) { return wasm_i32x4_max(a, b); }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return wasm_i32x4_shl(a, n);
    }
    static KRO_INLINE Lanes all(int32_t value) { return wasm_i32x4_splat(value); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return wasm_i32x4_add(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return wasm_i32x4_sub(a, b); }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return wasm_v128_and(a, b); }
    static KRO_INLINE Lanes turned(Lanes a, Lanes first, Lanes second) {
        return select(greater(second, first), wasm_i32x4_neg(a), a);
    }
    static KRO_INLINE Lanes absolute(Lanes a) { return wasm_i32x4_abs(a); }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return wasm_i32x4_shr(a, n);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return wasm_i32x4_gt(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return wasm_v128_bitselect(yes, no, m); }
    static KRO_INLINE Lanes combine(Lanes even, Lanes odd) {
        return select(wasm_i64x2_const_splat(0xFFFFFFFF), even, odd);
    }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return wasm_i32x4_min(wasm_i32x4_max(a, wasm_i32x4_const_splat(0)), top);
    }
    static KRO_INLINE v128_t packed(Lanes first, Lanes second) { return wasm_u16x8_narrow_i32x4(first, second); }
};

struct Simd128 {
    using Bytes = Simd128Bytes;
    using Words = Simd128Words;
    using Wide = Doubled<Simd128Dwords, Simd128Words>;
    using Dwords = Simd128Dwords;
};

}  // namespace
}  // namespace kro
