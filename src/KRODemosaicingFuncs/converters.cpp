#include "KRODemosaicingFuncs/converters.hpp"

namespace kro {
namespace {

Target targetOf(const OutputFormat& output, uint8_t* destination, int32_t height, int32_t width) {
    if (output.kind == Output::planar) {
        const ptrdiff_t n = static_cast<ptrdiff_t>(height) * width;
        uint8_t *const first = destination, *const second = destination + n, *const third = destination + 2 * n;
        return output.redFirst ? planarTarget(first, second, third, width)
                               : planarTarget(third, second, first, width);
    }
    const ptrdiff_t channels = output.kind == Output::mono ? 1 : output.kind == Output::bgr ? 3 : 4;
    return interleavedTarget(destination, width * channels, output.redFirst);
}

}  // namespace

void runFrame(const Kernels& kernels, const InputFormat& input, const OutputFormat& output, KroAlgorithm algorithm,
              const FrameJob& job) {
    const int kind = static_cast<int>(output.kind);
    if (input.grey) {
        (output.sampleBytes == 1 ? kernels.greyBytes : kernels.greyWords)[kind](job);
    } else {
        (output.sampleBytes == 1 ? kernels.bytes : kernels.words)[algorithm][kind](job);
    }
}

int32_t convertFrame(const Kernels& kernels, const InputFormat& input, const Source& source, uint8_t* destination,
                     int32_t height, int32_t width, uint32_t outputFormat, KroAlgorithm algorithm) {
    const OutputFormat* const output = findOutput(outputFormat);
    if (output == nullptr || !output->ofFrames) {
        return KRO_ERR_OUTPUT_FORMAT;
    }
    if (!input.grey && (algorithm < KRO_NEAREST || algorithm > KRO_EDGE)) {
        return KRO_OK;  // an unknown algorithm is no error and writes nothing
    }
    runFrame(
        kernels, input, *output, algorithm,
        frameJob(source, height, width, input.phase, targetOf(*output, destination, height, width), {0, height}, 0));
    return KRO_OK;
}

namespace {

int32_t convertBytes(uint32_t format, const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                     int32_t outputFormat, KroAlgorithm algorithm) {
    return convertFrame(bestKernels(), *findInput(format), plainSource(source, width), destination, height, width,
                        static_cast<uint32_t>(outputFormat), algorithm);
}

}  // namespace
}  // namespace kro

int32_t rg8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width, int32_t outputFormat,
                   KroAlgorithm algorithm, uint8_t*) {
    return kro::convertBytes(KRO_BAYER_RG8, source, destination, height, width, outputFormat, algorithm);
}
int32_t gr8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width, int32_t outputFormat,
                   KroAlgorithm algorithm, uint8_t*) {
    return kro::convertBytes(KRO_BAYER_GR8, source, destination, height, width, outputFormat, algorithm);
}
int32_t gb8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width, int32_t outputFormat,
                   KroAlgorithm algorithm, uint8_t*) {
    return kro::convertBytes(KRO_BAYER_GB8, source, destination, height, width, outputFormat, algorithm);
}
int32_t bg8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width, int32_t outputFormat,
                   KroAlgorithm algorithm, uint8_t*) {
    return kro::convertBytes(KRO_BAYER_BG8, source, destination, height, width, outputFormat, algorithm);
}
int32_t mono8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                     int32_t outputFormat) {
    return kro::convertBytes(KRO_MONO8, source, destination, height, width, outputFormat, KRO_NEAREST);
}
