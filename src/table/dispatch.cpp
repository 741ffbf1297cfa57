// Which table serves this processor: a pure function of the compiler runtime's CPU record, half a nanosecond, no
// state.
#include "table/kernels.hpp"

namespace kro {
namespace {

// `has` is a macro because the compiler wants a literal.
#define has(feature) (__builtin_cpu_supports(feature) != 0)

struct Set {
    const Kernels& table;
    bool usable;
};

}  // namespace

const Kernels& bestKernels() {
    const Kernels* best = nullptr;
#define KRO_SET(set, backEnd, header, usable, flags) \
    if (usable) {                                    \
        best = &set##Kernels;                        \
    }
#include "table/sets.def"
#undef KRO_SET
    return *best;
}

int usableKernels(const Kernels** tables, int room) {
    const Set sets[] = {
#define KRO_SET(set, backEnd, header, usable, flags) {set##Kernels, usable},
#include "table/sets.def"
#undef KRO_SET
    };
    int count = 0;
    for (const Set& set : sets) {
        if (set.usable) {
            if (count < room) {
                tables[count] = &set.table;
            }
            ++count;
        }
    }
    return count;
}

#undef has

}  // namespace kro
