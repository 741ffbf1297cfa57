#include "KRODemosaicingFuncs/normalisation.hpp"

namespace kro {
namespace {

uint32_t normalised(const InputFormat& input) {
    if (input.grey) {
        return KRO_MONO8;
    }
    return input.phase.greenFirst ? (input.phase.blueRow ? KRO_BAYER_GB8 : KRO_BAYER_GR8)
                                  : (input.phase.blueRow ? KRO_BAYER_BG8 : KRO_BAYER_RG8);
}

int32_t preConversion(const InputFormat& input) {
    return input.layout == Layout::bytes ? 0 : input.layout == Layout::words ? input.bits - 8 : -1;
}

}  // namespace

const InputFormat* findFrameInput(uint32_t format) {
    const InputFormat* const input = findInput(format);
    return input != nullptr && input->ofFrames ? input : nullptr;
}

}  // namespace kro

int32_t demosaicDataInit(const KroImage* input, KroContext*, uint32_t* normalisedFormat, int32_t* preConversion) {
    const kro::InputFormat* const format = kro::findFrameInput(input->pixelFormat);
    *normalisedFormat = format == nullptr ? input->pixelFormat : kro::normalised(*format);
    *preConversion = format == nullptr ? 0 : kro::preConversion(*format);
    return format == nullptr ? KRO_ERR_FORMAT : KRO_OK;
}
