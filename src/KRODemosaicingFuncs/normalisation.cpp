// Which 8-bit format an input format is reduced to, and how.
#include "KRODemosaicingFuncs/normalisation.hpp"

namespace kro {
namespace {

struct Row {
    uint32_t format, normalised;
    int32_t preConversion;
};

constexpr Row table[] = {
    {KRO_BAYER_RG8, KRO_BAYER_RG8, 0},   {KRO_BAYER_RG10, KRO_BAYER_RG8, 2},
    {KRO_BAYER_RG12, KRO_BAYER_RG8, 4},  {KRO_BAYER_RG16, KRO_BAYER_RG8, 8},
    {KRO_BAYER_RG10_PACKED, KRO_BAYER_RG8, -1}, {KRO_BAYER_RG12_PACKED, KRO_BAYER_RG8, -1},
    {KRO_BAYER_GB8, KRO_BAYER_GB8, 0},   {KRO_BAYER_GB10, KRO_BAYER_GB8, 2},
    {KRO_BAYER_GB12, KRO_BAYER_GB8, 4},  {KRO_BAYER_GB16, KRO_BAYER_GB8, 8},
    {KRO_BAYER_GB10_PACKED, KRO_BAYER_GB8, -1}, {KRO_BAYER_GB12_PACKED, KRO_BAYER_GB8, -1},
    {KRO_BAYER_GR8, KRO_BAYER_GR8, 0},   {KRO_BAYER_GR10, KRO_BAYER_GR8, 2},
    {KRO_BAYER_GR12, KRO_BAYER_GR8, 4},  {KRO_BAYER_GR16, KRO_BAYER_GR8, 8},
    {KRO_BAYER_GR10_PACKED, KRO_BAYER_GR8, -1}, {KRO_BAYER_GR12_PACKED, KRO_BAYER_GR8, -1},
    {KRO_BAYER_BG8, KRO_BAYER_BG8, 0},   {KRO_BAYER_BG10, KRO_BAYER_BG8, 2},
    {KRO_BAYER_BG12, KRO_BAYER_BG8, 4},  {KRO_BAYER_BG16, KRO_BAYER_BG8, 8},
    {KRO_BAYER_BG10_PACKED, KRO_BAYER_BG8, -1}, {KRO_BAYER_BG12_PACKED, KRO_BAYER_BG8, -1},
    {KRO_MONO8, KRO_MONO8, 0},           {KRO_MONO10, KRO_MONO8, 2},
    {KRO_MONO12, KRO_MONO8, 4},          {KRO_MONO14, KRO_MONO8, 6},
    {KRO_MONO16, KRO_MONO8, 8},          {KRO_MONO10_PACKED, KRO_MONO8, -1},
    {KRO_MONO12_PACKED, KRO_MONO8, -1},
};

}  // namespace

int32_t normalise(uint32_t format, uint32_t& normalised, int32_t& preConversion) {
    normalised = format;
    preConversion = 0;
    for (const Row& row : table) {
        if (row.format == format) {
            normalised = row.normalised;
            preConversion = row.preConversion;
            return KRO_OK;
        }
    }
    return KRO_ERR_FORMAT;
}

}  // namespace kro

int32_t demosaicDataInit(const KroImage* input, KroContext*, uint32_t* normalisedFormat, int32_t* preConversion) {
    return kro::normalise(input->pixelFormat, *normalisedFormat, *preConversion);
}
