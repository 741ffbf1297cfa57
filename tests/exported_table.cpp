// The exported functions of libkro.so in the shape of a table of kernels: the suites that know tables then run on
// what a host links with.
#include <vector>

#include "isa/kernels.hpp"

namespace kro {
namespace {

constexpr Kernels exported = {
    "libkro.so",
#define KRO_KERNEL(routine, ...) ::routine,
#include "isa/kernels.def"
#undef KRO_KERNEL
    {},          nullptr, nullptr, nullptr,
};

}  // namespace

const Kernels& bestKernels() { return exported; }

int usableKernels(const Kernels** tables, int room) {
    if (room > 0) {
        tables[0] = &exported;
    }
    return 1;
}

int32_t demosaicing(const Kernels&, KroContext* handle, const KroImage* input, KroAlgorithm algorithm,
                    KroImage* output) {
    return ::kroDemosaicing(handle, input, algorithm, output);
}

int32_t bayerConvert(const Kernels&, Phase phase, const Source& source, uint8_t* destination, int32_t height,
                     int32_t width, uint32_t outputFormat, KroAlgorithm algorithm) {
    const auto convert = phase.greenFirst ? (phase.blueRow ? ::gb8Convert : ::gr8Convert)
                                          : (phase.blueRow ? ::bg8Convert : ::rg8Convert);
    std::vector<uint8_t> workingMemory(static_cast<size_t>(width));
    return convert(static_cast<const uint8_t*>(source.samples), destination, height, width,
                   static_cast<int32_t>(outputFormat), algorithm, workingMemory.data());
}

int32_t monoConvert(const Kernels&, const Source& source, uint8_t* destination, int32_t height, int32_t width,
                    uint32_t outputFormat) {
    return ::mono8Convert(static_cast<const uint8_t*>(source.samples), destination, height, width,
                          static_cast<int32_t>(outputFormat));
}

}  // namespace kro
