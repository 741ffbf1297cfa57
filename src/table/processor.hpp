// How a line of sets.def asks what this processor has.
#pragma once

#if defined(__x86_64__) || defined(__i386__)
// From the compiler runtime's CPU record; a macro because the compiler wants a literal.
#define has(feature) (__builtin_cpu_supports(feature) != 0)
#elif defined(__arm__)
// From the system's record of the processor.
#include <asm/hwcap.h>
#include <sys/auxv.h>
#define has(feature) ((getauxval(AT_HWCAP) & (feature)) != 0)
#endif
