#include "records/formats.hpp"

#include "kro/view.h"

namespace kro {
namespace {

constexpr InputFormat inputs[] = {
    {KRO_BAYER_RG8, false, phaseRG, Layout::bytes, 8, true},
    {KRO_BAYER_GR8, false, phaseGR, Layout::bytes, 8, true},
    {KRO_BAYER_GB8, false, phaseGB, Layout::bytes, 8, true},
    {KRO_BAYER_BG8, false, phaseBG, Layout::bytes, 8, true},
    {KRO_MONO8, true, phaseRG, Layout::bytes, 8, true},
    {KRO_BAYER_RG10, false, phaseRG, Layout::words, 10, true},
    {KRO_BAYER_GR10, false, phaseGR, Layout::words, 10, true},
    {KRO_BAYER_GB10, false, phaseGB, Layout::words, 10, true},
    {KRO_BAYER_BG10, false, phaseBG, Layout::words, 10, true},
    {KRO_BAYER_RG12, false, phaseRG, Layout::words, 12, true},
    {KRO_BAYER_GR12, false, phaseGR, Layout::words, 12, true},
    {KRO_BAYER_GB12, false, phaseGB, Layout::words, 12, true},
    {KRO_BAYER_BG12, false, phaseBG, Layout::words, 12, true},
    {KRO_BAYER_RG16, false, phaseRG, Layout::words, 16, true},
    {KRO_BAYER_GR16, false, phaseGR, Layout::words, 16, true},
    {KRO_BAYER_GB16, false, phaseGB, Layout::words, 16, true},
    {KRO_BAYER_BG16, false, phaseBG, Layout::words, 16, true},
    {KRO_MONO10, true, phaseRG, Layout::words, 10, true},
    {KRO_MONO12, true, phaseRG, Layout::words, 12, true},
    {KRO_MONO14, true, phaseRG, Layout::words, 14, true},
    {KRO_MONO16, true, phaseRG, Layout::words, 16, true},
    {KRO_BAYER_RG10_PACKED, false, phaseRG, Layout::gige10, 10, true},
    {KRO_BAYER_GR10_PACKED, false, phaseGR, Layout::gige10, 10, true},
    {KRO_BAYER_GB10_PACKED, false, phaseGB, Layout::gige10, 10, true},
    {KRO_BAYER_BG10_PACKED, false, phaseBG, Layout::gige10, 10, true},
    {KRO_MONO10_PACKED, true, phaseRG, Layout::gige10, 10, true},
    {KRO_BAYER_RG12_PACKED, false, phaseRG, Layout::gige12, 12, true},
    {KRO_BAYER_GR12_PACKED, false, phaseGR, Layout::gige12, 12, true},
    {KRO_BAYER_GB12_PACKED, false, phaseGB, Layout::gige12, 12, true},
    {KRO_BAYER_BG12_PACKED, false, phaseBG, Layout::gige12, 12, true},
    {KRO_MONO12_PACKED, true, phaseRG, Layout::gige12, 12, true},
    {KRO_BAYER_RG14, false, phaseRG, Layout::words, 14, false},
    {KRO_BAYER_GR14, false, phaseGR, Layout::words, 14, false},
    {KRO_BAYER_GB14, false, phaseGB, Layout::words, 14, false},
    {KRO_BAYER_BG14, false, phaseBG, Layout::words, 14, false},
    {KRO_BAYER_RG10P, false, phaseRG, Layout::lsb10, 10, false},
    {KRO_BAYER_GR10P, false, phaseGR, Layout::lsb10, 10, false},
    {KRO_BAYER_GB10P, false, phaseGB, Layout::lsb10, 10, false},
    {KRO_BAYER_BG10P, false, phaseBG, Layout::lsb10, 10, false},
    {KRO_MONO10P, true, phaseRG, Layout::lsb10, 10, false},
    {KRO_BAYER_RG12P, false, phaseRG, Layout::lsb12, 12, false},
    {KRO_BAYER_GR12P, false, phaseGR, Layout::lsb12, 12, false},
    {KRO_BAYER_GB12P, false, phaseGB, Layout::lsb12, 12, false},
    {KRO_BAYER_BG12P, false, phaseBG, Layout::lsb12, 12, false},
    {KRO_MONO12P, true, phaseRG, Layout::lsb12, 12, false},
    {KRO_BAYER_RG14P, false, phaseRG, Layout::lsb14, 14, false},
    {KRO_BAYER_GR14P, false, phaseGR, Layout::lsb14, 14, false},
    {KRO_BAYER_GB14P, false, phaseGB, Layout::lsb14, 14, false},
    {KRO_BAYER_BG14P, false, phaseBG, Layout::lsb14, 14, false},
    {KRO_MONO14P, true, phaseRG, Layout::lsb14, 14, false},
    {KRO_SRGGB10P, false, phaseRG, Layout::csi10, 10, false},
    {KRO_SGRBG10P, false, phaseGR, Layout::csi10, 10, false},
    {KRO_SGBRG10P, false, phaseGB, Layout::csi10, 10, false},
    {KRO_SBGGR10P, false, phaseBG, Layout::csi10, 10, false},
    {KRO_Y10P, true, phaseRG, Layout::csi10, 10, false},
    {KRO_SRGGB12P, false, phaseRG, Layout::csi12, 12, false},
    {KRO_SGRBG12P, false, phaseGR, Layout::csi12, 12, false},
    {KRO_SGBRG12P, false, phaseGB, Layout::csi12, 12, false},
    {KRO_SBGGR12P, false, phaseBG, Layout::csi12, 12, false},
    {KRO_Y12P, true, phaseRG, Layout::csi12, 12, false},
    {KRO_SRGGB14P, false, phaseRG, Layout::csi14, 14, false},
    {KRO_SGRBG14P, false, phaseGR, Layout::csi14, 14, false},
    {KRO_SGBRG14P, false, phaseGB, Layout::csi14, 14, false},
    {KRO_SBGGR14P, false, phaseBG, Layout::csi14, 14, false},
    {KRO_Y14P, true, phaseRG, Layout::csi14, 14, false},
};

constexpr OutputFormat outputs[] = {
    {KRO_BGR8, Output::bgr, false, 1, true},
    {KRO_RGB8, Output::bgr, true, 1, true},
    {KRO_BGRA8, Output::bgra, false, 1, true},
    {KRO_RGBA8, Output::bgra, true, 1, true},
    {KRO_BGR8_PLANAR, Output::planar, false, 1, true},
    {KRO_RGB8_PLANAR, Output::planar, true, 1, true},
    {KRO_MONO8, Output::mono, false, 1, true},
    {KRO_BGRX8, Output::bgra, false, 1, false},
    {KRO_RGBX8, Output::bgra, true, 1, false},
    {KRO_ABGR8, Output::abgr, false, 1, false},
    {KRO_ARGB8, Output::abgr, true, 1, false},
    {KRO_XBGR8, Output::abgr, false, 1, false},
    {KRO_XRGB8, Output::abgr, true, 1, false},
    {KRO_BGR16, Output::bgr, false, 2, false},
    {KRO_RGB16, Output::bgr, true, 2, false},
    {KRO_BGRA16, Output::bgra, false, 2, false},
    {KRO_RGBA16, Output::bgra, true, 2, false},
    {KRO_ABGR16, Output::abgr, false, 2, false},
    {KRO_ARGB16, Output::abgr, true, 2, false},
    {KRO_BGR16_PLANAR, Output::planar, false, 2, false},
    {KRO_RGB16_PLANAR, Output::planar, true, 2, false},
    {KRO_MONO16, Output::mono, false, 2, false},
};

template <class Format, size_t n>
const Format* find(const Format (&table)[n], uint32_t code) {
    for (const Format& format : table) {
        if (format.code == code) {
            return &format;
        }
    }
    return nullptr;
}

}  // namespace

const InputFormat* findInput(uint32_t code) { return find(inputs, code); }
const OutputFormat* findOutput(uint32_t code) { return find(outputs, code); }

}  // namespace kro
