// Which table serves this processor: a pure function of the compiler runtime's CPU record, half a nanosecond, no state.
#include "isa/tables.hpp"

namespace kro {
namespace {

bool hasSsse3() { return __builtin_cpu_supports("ssse3") != 0; }
bool hasAvx2() { return __builtin_cpu_supports("avx2") != 0; }
bool hasAvx512bw() {
    return __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
           __builtin_cpu_supports("avx512dq") != 0;
}
bool hasAvx512vbmi() { return hasAvx512bw() && __builtin_cpu_supports("avx512vbmi") != 0; }

}  // namespace

const Kernels& bestKernels() {
    if (hasAvx512vbmi()) {
        return avx512vbmiKernels;
    }
    if (hasAvx512bw()) {
        return avx512bwKernels;
    }
    if (hasAvx2()) {
        return avx2Kernels;
    }
    return hasSsse3() ? ssse3Kernels : scalarKernels;
}

int usableKernels(const Kernels** tables, int room) {
    const struct {
        const Kernels* table;
        bool usable;
    } all[] = {{&scalarKernels, true},
               {&ssse3Kernels, hasSsse3()},
               {&avx2Kernels, hasAvx2()},
               {&avx512bwKernels, hasAvx512bw()},
               {&avx512vbmiKernels, hasAvx512vbmi()}};
    int count = 0;
    for (const auto& entry : all) {
        if (entry.usable) {
            if (count < room) {
                tables[count] = entry.table;
            }
            ++count;
        }
    }
    return count;
}

}  // namespace kro
