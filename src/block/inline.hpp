// How kernels are glued together: texts are inlined into loops, rare paths stay out of line.
#pragma once

#define KRO_INLINE inline __attribute__((always_inline))
#define KRO_INLINE_LAMBDA __attribute__((always_inline))
#define KRO_OUTLINE __attribute__((noinline))
