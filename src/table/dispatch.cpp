// Which table serves this processor: a pure function of what the system knows of it, half a nanosecond, no state.
#include "table/kernels.hpp"
#include "table/processor.hpp"

namespace kro {
namespace {

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

}  // namespace kro
