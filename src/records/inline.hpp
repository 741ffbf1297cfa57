// How kernels are glued together: formulas are inlined into loops, rare paths stay out of line.
#pragma once

#define KRO_INLINE inline __attribute__((always_inline))
#define KRO_INLINE_LAMBDA __attribute__((always_inline))
#define KRO_OUTLINE __attribute__((noinline))

// For paths that a frame takes a few times a row at most: compiled for size, which keeps five instruction sets small.
#define KRO_RARE __attribute__((noinline, cold))
