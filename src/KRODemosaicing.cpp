// The exported configuration, the one call a host makes for each frame, and bitmap rows.
#include "KRODemosaicing.hpp"

#include <cstring>
#include <limits>

#include "KRODemosaicingFuncs/converters.hpp"
#include "KRODemosaicingFuncs/normalisation.hpp"

namespace kro {
namespace {

uint8_t* alignedUp(uint8_t* address, uintptr_t alignment) {
    const uintptr_t beyond = reinterpret_cast<uintptr_t>(address) % alignment;
    return beyond == 0 ? address : address + (alignment - beyond);
}

// 8-bit frames are read in place. For the others the scratch buffer would hold a frame of bytes and more; only a ring
// of its rows is ever made in it. Rows begin on cache lines where there is room for that.
Source sourceOf(const InputFormat& input, const void* samples, const KroScratch& scratch, int32_t height,
                int32_t width) {
    constexpr int64_t line = 64;
    if (input.layout == Layout::bytes) {
        return plainSource(static_cast<const uint8_t*>(samples), width);
    }
    const bool words = input.layout == Layout::words;
    Source source{
        samples, words ? static_cast<ptrdiff_t>(width) * 2 : 0, input.layout, input.bits, false, false, nullptr, 0};
    uint8_t* const buffer = static_cast<uint8_t*>(scratch.data);
    const int64_t wide = (static_cast<int64_t>(width) + line - 1) / line * line;
    const int64_t usable = (static_cast<int64_t>(height) + 1) * width + 64;
    const bool lines = ringRows * wide + line <= usable;
    source.ring = alignedUp(buffer, lines ? line : 16);
    source.ringStride = lines ? static_cast<ptrdiff_t>(wide) : width;
    return source;
}

// 0 where a 31-bit count cannot hold it.
int32_t scratchSize(int32_t height, int32_t width, bool inPlace) {
    const int64_t rows = inPlace ? 1 : static_cast<int64_t>(height) + 1;
    const int64_t size = rows * width + 64;
    return size > std::numeric_limits<int32_t>::max() ? 0 : static_cast<int32_t>(size);
}

}  // namespace

int32_t demosaicing(const Kernels& kernels, KroContext* handle, const KroImage* input, KroAlgorithm algorithm,
                    KroImage* output) {
    if (input == nullptr || handle == nullptr || output == nullptr || input->data == nullptr ||
        output->data == nullptr) {
        return KRO_ERR_NULL;
    }
    const int32_t height = input->height, width = input->width;
    if (height <= 3 || width <= 3 || wrappedProduct(height, width) < 0) {
        return KRO_ERR_SIZE;
    }
    const InputFormat* const format = findFrameInput(input->pixelFormat);
    if (format == nullptr) {
        return KRO_ERR_FORMAT;
    }
    const int32_t size = scratchSize(height, width, format->layout == Layout::bytes);
    if (size == 0) {
        return KRO_ERR_NO_MEMORY;
    }
    if (const int32_t status = kroMemRealloc(&handle->scratch, size); status != KRO_OK) {
        return status;
    }
    const uint32_t outputFormat = handle->outputFormat;
    const int32_t status =
        convertFrame(kernels, *format, sourceOf(*format, input->data, handle->scratch, height, width),
                     static_cast<uint8_t*>(output->data), height, width, outputFormat, algorithm);
    if (status != KRO_OK) {
        return status;
    }
    output->height = height;
    output->width = width;
    output->pixelFormat = outputFormat;
    return KRO_OK;
}

}  // namespace kro

int32_t kroDemosaicGetConfig(const KroContext* handle, uint32_t* formatOut) {
    if (formatOut == nullptr || handle == nullptr) {
        return KRO_ERR_NULL;
    }
    *formatOut = handle->outputFormat;
    return KRO_OK;
}

int32_t kroDemosaicSetConfig(KroContext* handle, const uint32_t* formatIn) {
    if (formatIn == nullptr || handle == nullptr) {
        return KRO_ERR_NULL;
    }
    const kro::OutputFormat* const output = kro::findOutput(*formatIn);
    if (output == nullptr || !output->ofFrames) {
        return KRO_ERR_OUTPUT_FORMAT;
    }
    handle->outputFormat = *formatIn;
    return KRO_OK;
}

int32_t kroDemosaicing(KroContext* handle, const KroImage* input, KroAlgorithm algorithm, KroImage* output) {
    return kro::demosaicing(kro::bestKernels(), handle, input, algorithm, output);
}

int32_t kroBMPAdjust(const KroContext* handle, const KroImage* image) {
    if (image == nullptr || handle == nullptr || image->data == nullptr) {
        return KRO_ERR_NULL;
    }
    if (image->height <= 3 || image->width <= 3) {
        return KRO_ERR_SIZE;
    }
    const size_t packed = static_cast<size_t>(image->width) * 3, padded = (packed + 3) & ~size_t{3};
    if (padded == packed) {
        return KRO_OK;
    }
    // From the last row backwards, so that no row is overwritten before it has moved.
    uint8_t* const rows = static_cast<uint8_t*>(image->data);
    for (size_t r = static_cast<size_t>(image->height); r-- > 0;) {
        std::memmove(rows + r * padded, rows + r * packed, packed);
        std::memset(rows + r * padded + packed, 0, padded - packed);
    }
    return KRO_OK;
}
