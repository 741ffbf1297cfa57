// The exported functions of libkro.so in the shape of a table of kernels: the suites that know tables then run on
// what a host links with.
#include <vector>

#include "KRODemosaicing.hpp"
#include "KRODemosaicingFuncs/converters.hpp"
#include "KROView.hpp"

namespace kro {
namespace {

constexpr Kernels exported = {
    "libkro.so",
#define KRO_KERNEL(routine, ...) ::routine,
#include "table/kernels.def"
#undef KRO_KERNEL
    {},          {}, {}, {}, 0,
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

int32_t convertView(const Kernels&, const KroSourceView* source, const KroPictureView* picture,
                    const KroViewOptions* options) {
    return ::kroConvertView(source, picture, options);
}

int32_t convertFrame(const Kernels&, const InputFormat& input, const Source& source, uint8_t* destination,
                     int32_t height, int32_t width, uint32_t outputFormat, KroAlgorithm algorithm) {
    const uint8_t* const samples = static_cast<const uint8_t*>(source.samples);
    const int32_t output = static_cast<int32_t>(outputFormat);
    if (input.grey) {
        return ::mono8Convert(samples, destination, height, width, output);
    }
    const auto convert = input.phase.greenFirst ? (input.phase.blueRow ? ::gb8Convert : ::gr8Convert)
                                                : (input.phase.blueRow ? ::bg8Convert : ::rg8Convert);
    std::vector<uint8_t> workingMemory(static_cast<size_t>(width));
    return convert(samples, destination, height, width, output, algorithm, workingMemory.data());
}

}  // namespace kro
