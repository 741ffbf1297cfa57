// One converter a mosaic phase and one for grey: the output format decides kernel, channel order and planes.
#include <cstring>

#include "isa/kernels.hpp"

namespace kro {
namespace {

struct OutputRow {
    uint32_t format;
    Output kind;
    bool redFirst;
};

constexpr OutputRow outputs[] = {
    {KRO_RGB8_PLANAR, Output::planar, true}, {KRO_RGB8, Output::bgr, true},
    {KRO_BGR8, Output::bgr, false},          {KRO_MONO8, Output::mono, false},
    {KRO_RGBA8, Output::bgra, true},         {KRO_BGRA8, Output::bgra, false},
    {KRO_BGR8_PLANAR, Output::planar, false},
};

const OutputRow* findOutput(uint32_t format) {
    for (const OutputRow& row : outputs) {
        if (row.format == format) {
            return &row;
        }
    }
    return nullptr;
}

Target targetOf(const OutputRow& output, uint8_t* destination, ptrdiff_t n) {
    if (output.kind == Output::planar) {
        uint8_t *const first = destination, *const second = destination + n, *const third = destination + 2 * n;
        return output.redFirst ? planarTarget(first, second, third) : planarTarget(third, second, first);
    }
    Target target = interleavedTarget(destination, output.redFirst);
    std::memcpy(target.weight, lumaWeight, sizeof lumaWeight);
    return target;
}

// Grey samples reduced in pieces small enough to stay in the first-level cache until they are expanded.
constexpr ptrdiff_t pieceSamples = 4096;

void expandGrey(const Kernels& kernels, const Source& source, ptrdiff_t n, Output kind, uint8_t* destination) {
    const auto expand = kind == Output::bgr ? kernels.monoToBgr : kernels.monoToBgra;
    const ptrdiff_t pixelSize = kind == Output::bgr ? 3 : 4;
    if (source.reduction == reductionNone) {
        expand(static_cast<const uint8_t*>(source.samples), n, destination);
        return;
    }
    uint8_t piece[pieceSamples];
    for (ptrdiff_t first = 0; first < n; first += pieceSamples) {
        const ptrdiff_t count = n - first < pieceSamples ? n - first : pieceSamples;
        kernels.reduce(source, first, count, n, piece);
        expand(piece, count, destination + first * pixelSize);
    }
}

void copyGrey(const Kernels& kernels, const Source& source, ptrdiff_t n, uint8_t* destination) {
    if (source.reduction == reductionNone) {
        std::memcpy(destination, source.samples, static_cast<size_t>(n));
    } else {
        kernels.reduce(source, 0, n, n, destination);
    }
}

}  // namespace

int32_t bayerConvert(const Kernels& kernels, Phase phase, const Source& source, uint8_t* destination, int32_t height,
                     int32_t width, uint32_t outputFormat, KroAlgorithm algorithm) {
    const OutputRow* const output = findOutput(outputFormat);
    if (output == nullptr) {
        return KRO_ERR_OUTPUT_FORMAT;
    }
    if (algorithm < KRO_NEAREST || algorithm > KRO_EDGE) {
        return KRO_OK;  // an unknown algorithm is no error and writes nothing
    }
    const ptrdiff_t n = static_cast<ptrdiff_t>(height) * width;
    kernels.frame[algorithm][static_cast<int>(output->kind)](
        {source, height, width, phase, targetOf(*output, destination, n)});
    return KRO_OK;
}

int32_t monoConvert(const Kernels& kernels, const Source& source, uint8_t* destination, int32_t height, int32_t width,
                    uint32_t outputFormat) {
    const OutputRow* const output = findOutput(outputFormat);
    if (output == nullptr) {
        return KRO_ERR_OUTPUT_FORMAT;
    }
    const ptrdiff_t n = static_cast<ptrdiff_t>(height) * width;
    if (output->kind == Output::bgr || output->kind == Output::bgra) {
        expandGrey(kernels, source, n, output->kind, destination);
        return KRO_OK;
    }
    copyGrey(kernels, source, n, destination);
    if (output->kind == Output::planar) {
        std::memcpy(destination + n, destination, static_cast<size_t>(n));
        std::memcpy(destination + 2 * n, destination, static_cast<size_t>(n));
    }
    return KRO_OK;
}

}  // namespace kro

#define KRO_CONVERTER(name, phase)                                                                                \
    int32_t name(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width, int32_t outputFormat, \
                 KroAlgorithm algorithm, uint8_t*) {                                                              \
        return kro::bayerConvert(kro::bestKernels(), phase, kro::plainSource(source), destination, height, width, \
                                 static_cast<uint32_t>(outputFormat), algorithm);                                 \
    }
KRO_CONVERTER(rg8Convert, kro::phaseRG)
KRO_CONVERTER(gr8Convert, kro::phaseGR)
KRO_CONVERTER(gb8Convert, kro::phaseGB)
KRO_CONVERTER(bg8Convert, kro::phaseBG)
#undef KRO_CONVERTER

int32_t mono8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                     int32_t outputFormat) {
    return kro::monoConvert(kro::bestKernels(), kro::plainSource(source), destination, height, width,
                            static_cast<uint32_t>(outputFormat));
}
