// How a line of sets.def asks what this processor has.
#pragma once

#if defined(__x86_64__) || defined(__i386__)
// From the compiler runtime's CPU record; a macro because the compiler wants a literal.
#define has(feature) (__builtin_cpu_supports(feature) != 0)
#endif
