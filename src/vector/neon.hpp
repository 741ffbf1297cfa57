// Vectors of 16 bytes, for 64-bit Arm and for 32-bit Arm with NEON.
//
// One type for whatever a register holds: formulas hand lanes on as samples. Reading it otherwise costs nothing.
#pragma once

#include <arm_neon.h>

#include "vector/pair.hpp"
#include "vector/vectors16.hpp"

namespace kro {
namespace {

// What bytes and words have in common: the register, and arithmetic on eight 16-bit lanes.
struct NeonLanes {
    using Vector = uint8x16_t;
    using Lanes = uint8x16_t;
    using Mask = uint8x16_t;
    using Number = int16_t;

    static KRO_INLINE int16x8_t s16(Vector v) { return vreinterpretq_s16_u8(v); }
    static KRO_INLINE uint16x8_t u16(Vector v) { return vreinterpretq_u16_u8(v); }
    static KRO_INLINE Vector of(int16x8_t a) { return vreinterpretq_u8_s16(a); }
    static KRO_INLINE Vector of(uint16x8_t a) { return vreinterpretq_u8_u16(a); }
    static KRO_INLINE Vector of(uint32x4_t a) { return vreinterpretq_u8_u32(a); }

    static KRO_INLINE Vector load(const void* p) { return vld1q_u8(static_cast<const uint8_t*>(p)); }
    static KRO_INLINE void store(void* p, Vector v) { vst1q_u8(static_cast<uint8_t*>(p), v); }
    static KRO_INLINE void storeHalves(void* first, void* second, Vector v) {
        vst1_u8(static_cast<uint8_t*>(first), vget_low_u8(v));
        vst1_u8(static_cast<uint8_t*>(second), vget_high_u8(v));
    }
    static KRO_INLINE Vector shuffled(Vector v, const Shuffle<16>& t) {
#if defined(__aarch64__)
        return vqtbl1q_u8(v, load(t.byte));
#else
        const uint8x8x2_t halves = {{vget_low_u8(v), vget_high_u8(v)}};
        return vcombine_u8(vtbl2_u8(halves, vld1_u8(t.byte)), vtbl2_u8(halves, vld1_u8(t.byte + 8)));
#endif
    }

    static KRO_INLINE Lanes loadLanes(const int16_t* p) { return load(p); }
    static KRO_INLINE void storeLanes(int16_t* p, Lanes a) { store(p, a); }
    static KRO_INLINE Lanes loadLanes(const uint8_t* p) { return vreinterpretq_s16_u16(vmovl_u8(vld1_u8(p))); }
    static KRO_INLINE Lanes all(int32_t value) { return of(vdupq_n_s16(static_cast<int16_t>(value))); }
    // By a mask in a register: with the instruction's own the operand would have to be copied first, mostly.
    static KRO_INLINE Lanes low(Vector v) {
        Vector mask = all(0x00FF);
        __asm__("" : "+w"(mask));
        return vandq_u8(v, mask);
    }
    static KRO_INLINE Lanes high(Vector v) { return of(vshrq_n_u16(u16(v), 8)); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return of(vaddq_u16(u16(a), u16(b))); }
    // Of a difference, the magnitude is one instruction with it, and one with the sum that it is added to.
    struct Difference {
        Lanes a, b;
        KRO_INLINE operator Lanes() const { return of(vsubq_u16(u16(a), u16(b))); }
    };
    static KRO_INLINE Difference sub(Lanes a, Lanes b) { return {a, b}; }
    static KRO_INLINE Lanes absolute(Difference d) { return of(vabdq_s16(s16(d.a), s16(d.b))); }
    static KRO_INLINE Lanes addSaturated(Lanes a, Lanes b) { return of(vqaddq_s16(s16(a), s16(b))); }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return of(vmulq_u16(u16(a), u16(b))); }
    static KRO_INLINE Lanes absolute(Lanes a) { return of(vabsq_s16(s16(a))); }
    static KRO_INLINE Lanes least(Lanes a, Lanes b) { return of(vminq_s16(s16(a), s16(b))); }
    static KRO_INLINE Lanes most(Lanes a, Lanes b) { return of(vmaxq_s16(s16(a), s16(b))); }
    static KRO_INLINE Lanes raised(Mask m, Lanes a) { return of(vsubq_u16(u16(a), u16(m))); }
    static KRO_INLINE Lanes lowered(Mask m, Lanes a) { return of(vaddq_u16(u16(a), u16(m))); }
    static KRO_INLINE Lanes turned(Lanes a, Lanes first, Lanes second) {
        return select(greater(second, first), of(vnegq_s16(s16(a))), a);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return of(vcgtq_s16(s16(a), s16(b))); }
    // Bit by bit, in one instruction that spares the mask: where clang knows it, it would make three instructions or
    // look-ups in two registers.
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) {
#if defined(__aarch64__)
        __asm__("bit %0.16b, %1.16b, %2.16b" : "+w"(no) : "w"(yes), "w"(m));
#else
        __asm__("vbit %q0, %q1, %q2" : "+w"(no) : "w"(yes), "w"(m));
#endif
        return no;
    }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return vandq_u8(a, b); }
    static KRO_INLINE Lanes bitOr(Lanes a, Lanes b) { return vorrq_u8(a, b); }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) {
        return of(vminq_s16(vmaxq_s16(s16(a), vdupq_n_s16(0)), s16(top)));
    }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        if constexpr (n == 0) {
            return a;
        } else {
            return of(vshrq_n_s16(s16(a), n));
        }
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightRounded(Lanes a) {
        return of(vrshrq_n_s16(s16(a), n));
    }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return of(vshlq_n_u16(u16(a), n));
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightLogical(Lanes a) {
        return of(vshrq_n_u16(u16(a), n));
    }
    static KRO_INLINE Lanes shiftRightBy(Lanes a, int32_t n) { return shiftLeftBy(a, -n); }
    static KRO_INLINE Lanes shiftLeftBy(Lanes a, int32_t n) { return of(vshlq_u16(u16(a), s16(all(n)))); }
};

struct NeonBytes : Vectors16<NeonLanes, uint8_t> {
    static constexpr bool weighsBytes = false;
    static constexpr bool wholePermutes = false;
    static constexpr Interleaving interleaving = Interleaving::channels;

    static KRO_INLINE Lanes clampByte(Lanes a) { return of(vmovl_u8(vqmovun_s16(s16(a)))); }
    // Bits are selected, so even columns may come from bytes whose odd ones are anything.
    static KRO_INLINE Vector combine(Vector even, Vector odd) { return select(all(0x00FF), even, odd); }
    static KRO_INLINE Vector evenOnly(Vector v) { return v; }
    // Two channels of signed lanes, saturated to the high bytes of lanes; those of the even columns move down.
    static KRO_INLINE void packPair(Lanes evenA, Lanes oddA, Lanes evenB, Lanes oddB, Vector& a, Vector& b) {
        a = saturated(evenA, oddA);
        b = saturated(evenB, oddB);
    }
    static KRO_INLINE Vector saturated(Lanes even, Lanes odd) {
        return of(vsriq_n_u16(vqshluq_n_s16(s16(odd), 8), vqshluq_n_s16(s16(even), 8), 8));
    }

    static KRO_INLINE void store3(uint8_t* out, Vector c0, Vector c1, Vector c2) {
        const uint8x16x3_t channels = {{c0, c1, c2}};  // named: clang's stores are macros
        vst3q_u8(out, channels);
    }
    static KRO_INLINE void storeTriple(uint8_t* out, Vector grey) { store3(out, grey, grey, grey); }
    static KRO_INLINE Quads quads(Vector c0, Vector c1, Vector c2, Vector c3) {
        const uint8x16x2_t c01 = vzipq_u8(c0, c1), c23 = vzipq_u8(c2, c3);
        const uint16x8x2_t low = vzipq_u16(u16(c01.val[0]), u16(c23.val[0]));
        const uint16x8x2_t high = vzipq_u16(u16(c01.val[1]), u16(c23.val[1]));
        return {{of(low.val[0]), of(low.val[1]), of(high.val[0]), of(high.val[1])}};
    }
    static KRO_INLINE Vector filled(uint32_t value) { return vdupq_n_u8(static_cast<uint8_t>(value)); }
    static KRO_INLINE void widen48(const uint8_t* in, uint8_t* out) {
        const uint8x16x3_t pixels = vld3q_u8(in);
        const uint8x16x4_t widened = {{pixels.val[0], pixels.val[1], pixels.val[2], vdupq_n_u8(0)}};
        vst4q_u8(out, widened);
    }

    static KRO_INLINE Vector reduceSaturated(Vector first, Vector second, int shift) {
        const int16x8_t down = vdupq_n_s16(static_cast<int16_t>(-shift));
        return vcombine_u8(vqmovun_s16(vshlq_s16(s16(first), down)), vqmovun_s16(vshlq_s16(s16(second), down)));
    }
    static KRO_INLINE Vector highBytes(Vector first, Vector second) { return vuzpq_u8(first, second).val[1]; }
    static KRO_INLINE Vector highBytesOfLanes(Vector first, Vector second) { return highBytes(first, second); }
};

struct NeonWords : Vectors16<NeonLanes, uint16_t> {
    static KRO_INLINE Lanes iota() {
        static constexpr int16_t places[8] = {0, 1, 2, 3, 4, 5, 6, 7};
        return load(places);
    }
    static KRO_INLINE Lanes average(Lanes a, Lanes b) { return of(vrhaddq_u16(u16(a), u16(b))); }
    static KRO_INLINE Lanes combine(Lanes even, Lanes odd) { return select(of(vdupq_n_u32(0x0000FFFF)), even, odd); }
    static KRO_INLINE bool anyBits(Lanes a, int32_t bits) {
        const uint64x2_t found = vreinterpretq_u64_u8(bitAnd(a, all(bits)));
        return (vgetq_lane_u64(found, 0) | vgetq_lane_u64(found, 1)) != 0;
    }
    static KRO_INLINE Lanes widened(Vector words) { return words; }
    static KRO_INLINE Vector packed(Lanes a) { return a; }
    static KRO_INLINE void store3(uint16_t* out, Vector c0, Vector c1, Vector c2) {
        const uint16x8x3_t channels = {{u16(c0), u16(c1), u16(c2)}};
        vst3q_u16(out, channels);
    }
    static KRO_INLINE Quads quads(Vector c0, Vector c1, Vector c2, Vector c3) {
        const uint16x8x2_t c01 = vzipq_u16(u16(c0), u16(c1)), c23 = vzipq_u16(u16(c2), u16(c3));
        const uint32x4x2_t low = vzipq_u32(u32(c01.val[0]), u32(c23.val[0]));
        const uint32x4x2_t high = vzipq_u32(u32(c01.val[1]), u32(c23.val[1]));
        return {{of(low.val[0]), of(low.val[1]), of(high.val[0]), of(high.val[1])}};
    }
    static KRO_INLINE uint32x4_t u32(uint16x8_t a) { return vreinterpretq_u32_u16(a); }
    static KRO_INLINE Vector filled(uint32_t value) { return all(static_cast<int32_t>(value)); }

    static KRO_INLINE Vector atMost(Vector words, Vector top) { return of(vminq_u16(u16(words), u16(top))); }
    static KRO_INLINE Vector less(Vector words, Vector by) { return of(vqsubq_u16(u16(words), u16(by))); }
    static KRO_INLINE Lanes mulHigh(Lanes a, Lanes b) {
        const uint16x8_t x = u16(a), y = u16(b);
        return of(vcombine_u16(vshrn_n_u32(vmull_u16(vget_low_u16(x), vget_low_u16(y)), 16),
                               vshrn_n_u32(vmull_u16(vget_high_u16(x), vget_high_u16(y)), 16)));
    }
    static KRO_INLINE void widenBytes(const uint8_t* in, Vector& first, Vector& second) {
        const Vector bytes = load(in);
        first = of(vmovl_u8(vget_low_u8(bytes)));
        second = of(vmovl_u8(vget_high_u8(bytes)));
    }
};

struct NeonDwords : Lanes32<NeonDwords> {
    using Lanes = int32x4_t;
    using Mask = uint32x4_t;

    static KRO_INLINE Lanes wide(uint16x4_t words) { return vreinterpretq_s32_u32(vmovl_u16(words)); }
    static KRO_INLINE Lanes firstHalf(uint8x16_t words) { return wide(vget_low_u16(NeonLanes::u16(words))); }
    static KRO_INLINE Lanes secondHalf(uint8x16_t words) { return wide(vget_high_u16(NeonLanes::u16(words))); }
    static KRO_INLINE Lanes loadLanes(const int32_t* p) { return vld1q_s32(p); }
    static KRO_INLINE void storeLanes(int32_t* p, Lanes a) { vst1q_s32(p, a); }
    static KRO_INLINE Lanes loadLanes(const uint16_t* p) { return wide(vld1_u16(p)); }
    static KRO_INLINE uint8x16_t joined(Lanes even, Lanes odd) {
        return vreinterpretq_u8_s32(vsliq_n_s32(even, odd, 16));
    }
    static KRO_INLINE Lanes mul(Lanes a, Lanes b) { return vmulq_s32(a, b); }
    static KRO_INLINE Lanes least(Lanes a, Lanes b) { return vminq_s32(a, b); }
    static KRO_INLINE Lanes most(Lanes a, Lanes b) { return vmaxq_s32(a, b); }
    static KRO_INLINE Lanes raised(Mask m, Lanes a) { return sub(a, vreinterpretq_s32_u32(m)); }
    static KRO_INLINE Lanes lowered(Mask m, Lanes a) { return add(a, vreinterpretq_s32_u32(m)); }
    template <int n>
    static KRO_INLINE Lanes shiftLeft(Lanes a) {
        return vshlq_n_s32(a, n);
    }
    static KRO_INLINE Lanes all(int32_t value) { return vdupq_n_s32(value); }
    static KRO_INLINE Lanes add(Lanes a, Lanes b) { return vaddq_s32(a, b); }
    static KRO_INLINE Lanes sub(Lanes a, Lanes b) { return vsubq_s32(a, b); }
    static KRO_INLINE Lanes bitAnd(Lanes a, Lanes b) { return vandq_s32(a, b); }
    static KRO_INLINE Lanes turned(Lanes a, Lanes first, Lanes second) {
        return select(greater(second, first), vnegq_s32(a), a);
    }
    template <int n>
    static KRO_INLINE Lanes shiftRightRounded(Lanes a) {
        return vrshrq_n_s32(a, n);
    }
    static KRO_INLINE Lanes absolute(Lanes a) { return vabsq_s32(a); }
    template <int n>
    static KRO_INLINE Lanes shiftRight(Lanes a) {
        return vshrq_n_s32(a, n);
    }
    static KRO_INLINE Mask greater(Lanes a, Lanes b) { return vcgtq_s32(a, b); }
    static KRO_INLINE Lanes select(Mask m, Lanes yes, Lanes no) { return vbslq_s32(m, yes, no); }
    static KRO_INLINE Lanes combine(Lanes even, Lanes odd) {
        return select(vreinterpretq_u32_u64(vdupq_n_u64(0x00000000FFFFFFFF)), even, odd);
    }
    static KRO_INLINE Lanes clamp(Lanes a, Lanes top) { return vminq_s32(vmaxq_s32(a, vdupq_n_s32(0)), top); }
    static KRO_INLINE uint8x16_t packed(Lanes first, Lanes second) {
        return NeonLanes::of(vcombine_s16(vmovn_s32(first), vmovn_s32(second)));
    }
};

struct Neon {
    using Bytes = NeonBytes;
    using Words = NeonWords;
    using Wide = Doubled<NeonDwords, NeonWords>;
    using Dwords = NeonDwords;
};

}  // namespace
}  // namespace kro
