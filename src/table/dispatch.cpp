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

void makeByNarrowerSet(int32_t vectorBytes, bool words, int32_t algorithm, Output kind, const FrameJob& job) {
    const int32_t filled = words ? job.width * 2 : job.width;
    const Kernels* narrower = &scalarKernels;
#define KRO_SET(set, backEnd, header, usable, flags)                                                \
    if (set##Kernels.vectorBytes < vectorBytes && set##Kernels.vectorBytes <= filled && (usable)) { \
        narrower = &set##Kernels;                                                                   \
    }
#include "table/sets.def"
#undef KRO_SET
    (words ? narrower->words : narrower->bytes)[algorithm][static_cast<int32_t>(kind)](job);
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
