// The exported configuration, the one call a host makes for each frame, and bitmap rows.
#include <cstring>
#include <limits>

#include "KRODemosaicingFuncs/normalisation.hpp"
#include "frame/geometry.hpp"
#include "isa/kernels.hpp"

namespace kro {
namespace {

bool isOutputFormat(uint32_t format) {
    switch (format) {
        case KRO_RGB8:
        case KRO_BGR8:
        case KRO_BGRA8:
        case KRO_RGBA8:
        case KRO_BGR8_PLANAR:
        case KRO_RGB8_PLANAR:
        case KRO_MONO8:
            return true;
        default:
            return false;
    }
}

template <class Address>
Address alignedUp(Address address, uintptr_t alignment) {
    return reinterpret_cast<Address>((reinterpret_cast<uintptr_t>(address) + alignment - 1) & ~(alignment - 1));
}

// The buffer holds a frame of bytes and more; only a ring of its rows is ever made in it. Rows begin on cache lines
// where there is room for that.
Source reducedSource(const void* samples, int32_t preConversion, const KroScratch& scratch, int32_t height,
                     int32_t width) {
    constexpr int64_t line = 64;
    uint8_t* const buffer = static_cast<uint8_t*>(scratch.data);
    const int64_t wide = (static_cast<int64_t>(width) + line - 1) / line * line;
    const int64_t usable = (static_cast<int64_t>(height) + 1) * width + 64;
    if (ringRows * wide + line <= usable) {
        return {samples, preConversion, alignedUp(buffer, line), static_cast<ptrdiff_t>(wide)};
    }
    return {samples, preConversion, alignedUp(buffer, 16), width};
}

// 0 where a 31-bit count cannot hold it.
int32_t scratchSize(int32_t height, int32_t width, int32_t preConversion) {
    const int64_t rows = preConversion == reductionNone ? 1 : static_cast<int64_t>(height) + 1;
    const int64_t size = rows * width + 64;
    return size > std::numeric_limits<int32_t>::max() ? 0 : static_cast<int32_t>(size);
}

int32_t convert(const Kernels& kernels, uint32_t normalised, const Source& source, uint8_t* destination,
                int32_t height, int32_t width, uint32_t outputFormat, KroAlgorithm algorithm) {
    const auto bayer = [&](Phase phase) {
        return bayerConvert(kernels, phase, source, destination, height, width, outputFormat, algorithm);
    };
    switch (normalised) {
        case KRO_MONO8:
            return monoConvert(kernels, source, destination, height, width, outputFormat);
        case KRO_BAYER_GR8:
            return bayer(phaseGR);
        case KRO_BAYER_RG8:
            return bayer(phaseRG);
        case KRO_BAYER_GB8:
            return bayer(phaseGB);
        case KRO_BAYER_BG8:
            return bayer(phaseBG);
        default:
            return KRO_ERR_FORMAT;
    }
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
    uint32_t normalised;
    int32_t preConversion;
    if (const int32_t status = normalise(input->pixelFormat, normalised, preConversion); status != KRO_OK) {
        return status;
    }
    const int32_t size = scratchSize(height, width, preConversion);
    if (size == 0) {
        return KRO_ERR_NO_MEMORY;
    }
    if (const int32_t status = kroMemRealloc(&handle->scratch, size); status != KRO_OK) {
        return status;
    }
    const Source source = preConversion == reductionNone
                              ? plainSource(input->data)
                              : reducedSource(input->data, preConversion, handle->scratch, height, width);
    const uint32_t outputFormat = handle->outputFormat;
    const int32_t status = convert(kernels, normalised, source, static_cast<uint8_t*>(output->data), height, width,
                                   outputFormat, algorithm);
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
    if (!kro::isOutputFormat(*formatIn)) {
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
