#include "formats.hpp"

#include <cstring>
#include <iterator>

namespace krogst {
namespace {

using kro::PixelFormat;

// The formats of a phase. Words as GStreamer 1.24 names them; 10p, 12p and 14p are PFNC's, packed with the lowest
// bits first; ..packed is GigE Vision's; the four letters are V4L2's, of what CSI-2 packs.
#define KRO_PHASE(phase, pfnc, v4l2, letter)                                                                      \
    {phase, PixelFormat::pfnc##8, false}, {phase "10le", PixelFormat::pfnc##10, false},                           \
        {phase "10be", PixelFormat::pfnc##10, true}, {phase "12le", PixelFormat::pfnc##12, false},                \
        {phase "12be", PixelFormat::pfnc##12, true}, {phase "14le", PixelFormat::pfnc##14, false},                \
        {phase "14be", PixelFormat::pfnc##14, true}, {phase "16le", PixelFormat::pfnc##16, false},                \
        {phase "16be", PixelFormat::pfnc##16, true}, {phase "10p", PixelFormat::pfnc##10p, false},                \
        {phase "12p", PixelFormat::pfnc##12p, false}, {phase "14p", PixelFormat::pfnc##14p, false},               \
        {phase "10packed", PixelFormat::pfnc##10Packed, false},                                                   \
        {phase "12packed", PixelFormat::pfnc##12Packed, false}, {"p" letter "AA", PixelFormat::v4l2##10P, false}, \
        {"p" letter "CC", PixelFormat::v4l2##12P, false}, {                                                       \
        "p" letter "EE", PixelFormat::v4l2##14P, false                                                            \
    }
constexpr MosaicFormat mosaics[] = {
    KRO_PHASE("bggr", BayerBG, SBGGR, "B"),
    KRO_PHASE("gbrg", BayerGB, SGBRG, "G"),
    KRO_PHASE("grbg", BayerGR, SGRBG, "g"),
    KRO_PHASE("rggb", BayerRG, SRGGB, "R"),
};
#undef KRO_PHASE

constexpr RawFormat greys[] = {
    {GST_VIDEO_FORMAT_GRAY8, PixelFormat::Mono8, false},
    {GST_VIDEO_FORMAT_GRAY16_LE, PixelFormat::Mono16, false},
    {GST_VIDEO_FORMAT_GRAY16_BE, PixelFormat::Mono16, true},
};

// In order of preference: 8 bits before 16, colour before grey, alpha only where there is nothing without, and first
// what displays take and videoconvert converts fastest. kro writes words of the machine.
#define KRO_OF_THIS_MACHINE(name) (G_BYTE_ORDER == G_BIG_ENDIAN ? name##_BE : name##_LE)
constexpr RawFormat pictures[] = {
    {GST_VIDEO_FORMAT_BGRx, PixelFormat::BGRx8, false},
    {GST_VIDEO_FORMAT_RGBx, PixelFormat::RGBx8, false},
    {GST_VIDEO_FORMAT_xRGB, PixelFormat::xRGB8, false},
    {GST_VIDEO_FORMAT_xBGR, PixelFormat::xBGR8, false},
    {GST_VIDEO_FORMAT_RGB, PixelFormat::RGB8, false},
    {GST_VIDEO_FORMAT_BGR, PixelFormat::BGR8, false},
    {GST_VIDEO_FORMAT_BGRA, PixelFormat::BGRa8, false},
    {GST_VIDEO_FORMAT_RGBA, PixelFormat::RGBa8, false},
    {GST_VIDEO_FORMAT_ARGB, PixelFormat::aRGB8, false},
    {GST_VIDEO_FORMAT_ABGR, PixelFormat::aBGR8, false},
    {GST_VIDEO_FORMAT_RGBP, PixelFormat::RGB8_Planar, false},
    {GST_VIDEO_FORMAT_BGRP, PixelFormat::RGB8_Planar, false},
    {GST_VIDEO_FORMAT_GBR, PixelFormat::RGB8_Planar, false},
    {GST_VIDEO_FORMAT_GBRA, PixelFormat::RGB8_Planar, false},
    {GST_VIDEO_FORMAT_ARGB64, PixelFormat::aRGB16, false},
    {KRO_OF_THIS_MACHINE(GST_VIDEO_FORMAT_ARGB64), PixelFormat::aRGB16, false},
    {KRO_OF_THIS_MACHINE(GST_VIDEO_FORMAT_RGBA64), PixelFormat::RGBa16, false},
    {KRO_OF_THIS_MACHINE(GST_VIDEO_FORMAT_BGRA64), PixelFormat::BGRa16, false},
    {KRO_OF_THIS_MACHINE(GST_VIDEO_FORMAT_ABGR64), PixelFormat::aBGR16, false},
    {GST_VIDEO_FORMAT_GRAY8, PixelFormat::Mono8, false},
    {KRO_OF_THIS_MACHINE(GST_VIDEO_FORMAT_GRAY16), PixelFormat::Mono16, false},
};
#undef KRO_OF_THIS_MACHINE

constexpr const char mosaicMedia[] = "video/x-bayer";
constexpr const char rawMedia[] = "video/x-raw";

const char* nameOf(const MosaicFormat& format) { return format.name; }
const char* nameOf(const RawFormat& format) { return gst_video_format_to_string(format.name); }

bool any(const RawFormat&) { return true; }
bool isGrey(const RawFormat& format) {
    return format.format == PixelFormat::Mono8 || format.format == PixelFormat::Mono16;
}
bool isDeep(const RawFormat& format) {
    return GST_VIDEO_FORMAT_INFO_DEPTH(gst_video_format_get_info(format.name), 0) > 8;
}
// Sets the field "format" to the formats of the table that `wanted` takes.
template <class Format, size_t count, class Wanted>
void setFormats(GstStructure* structure, const Format (&table)[count], Wanted wanted) {
    GValue list = G_VALUE_INIT;
    g_value_init(&list, GST_TYPE_LIST);
    for (const Format& format : table) {
        if (wanted(format)) {
            GValue name = G_VALUE_INIT;
            g_value_init(&name, G_TYPE_STRING);
            g_value_set_static_string(&name, nameOf(format));
            gst_value_list_append_and_take_value(&list, &name);
        }
    }
    gst_structure_take_value(structure, "format", &list);
}

GstStructure* anySize(const char* media) {
    constexpr gint least = 4;
    return gst_structure_new(media, "width", GST_TYPE_INT_RANGE, least, G_MAXINT, "height", GST_TYPE_INT_RANGE, least,
                             G_MAXINT, "framerate", GST_TYPE_FRACTION_RANGE, 0, 1, G_MAXINT, 1, nullptr);
}

// The same but for the media type, and for what belongs to the format.
GstStructure* without(const GstStructure* from, const char* media) {
    GstStructure* const structure = gst_structure_copy(from);
    gst_structure_set_name(structure, media);
    gst_structure_remove_fields(structure, "format", "colorimetry", "chroma-site", nullptr);
    return structure;
}

GstStructure* ofMosaics(GstStructure* structure) {
    setFormats(structure, mosaics, [](const MosaicFormat&) { return true; });
    return structure;
}
template <size_t count, class Wanted>
GstStructure* ofRaw(GstStructure* structure, const RawFormat (&table)[count], Wanted wanted) {
    setFormats(structure, table, wanted);
    return structure;
}

// What of the offered ones is wanted, in the table's order; null where nothing is.
template <class Wanted>
GstCaps* wantedOf(GstCaps* offered, Wanted wanted) {
    GstCaps* const wish = gst_caps_new_empty();
    for (const RawFormat& format : pictures) {
        if (wanted(format)) {
            gst_caps_append_structure(wish,
                                      gst_structure_new(rawMedia, "format", G_TYPE_STRING, nameOf(format), nullptr));
        }
    }
    GstCaps* const both = gst_caps_intersect_full(wish, offered, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(wish);
    if (gst_caps_is_empty(both)) {
        gst_caps_unref(both);
        return nullptr;
    }
    return both;
}

bool readFormat(const GstStructure* structure, FrameCaps& frame) {
    const char* const name = gst_structure_get_string(structure, "format");
    if (name == nullptr) {
        return false;
    }
    if (gst_structure_has_name(structure, mosaicMedia)) {
        for (const MosaicFormat& format : mosaics) {
            if (std::strcmp(format.name, name) == 0) {
                frame = {format.name, GST_VIDEO_FORMAT_UNKNOWN, format.format, format.bigEndian, 0, 0};
                return true;
            }
        }
        return false;
    }
    for (const RawFormat& format : greys) {
        if (gst_structure_has_name(structure, rawMedia) && std::strcmp(nameOf(format), name) == 0) {
            frame = {nameOf(format), format.name, format.format, format.bigEndian, 0, 0};
            return true;
        }
    }
    return false;
}

}  // namespace

gsize FrameCaps::usualStride() const {
    const gsize row = rowBytes();
    const gsize samples = static_cast<gsize>(width);
    return isMosaic() && row == 2 * samples ? 2 * GST_ROUND_UP_4(samples) : GST_ROUND_UP_4(row);
}

GstCaps* frameTemplate() {
    return gst_caps_new_full(ofMosaics(anySize(mosaicMedia)), ofRaw(anySize(rawMedia), greys, any), nullptr);
}

GstCaps* pictureTemplate() { return gst_caps_new_full(ofRaw(anySize(rawMedia), pictures, any), nullptr); }

bool readFrameCaps(const GstCaps* caps, FrameCaps& frame) {
    const GstStructure* const structure = gst_caps_get_structure(caps, 0);
    return readFormat(structure, frame) && gst_structure_get_int(structure, "height", &frame.height) &&
           gst_structure_get_int(structure, "width", &frame.width);
}

const RawFormat* pictureFormat(GstVideoFormat name) {
    for (const RawFormat& format : pictures) {
        if (format.name == name) {
            return &format;
        }
    }
    return nullptr;
}

GstCaps* pictureCapsOf(const GstCaps* frames) {
    GstCaps* result = gst_caps_new_empty();
    for (guint i = 0; i < gst_caps_get_size(frames); ++i) {
        const GstStructure* const frame = gst_caps_get_structure(frames, i);
        result = gst_caps_merge_structure(result, ofRaw(without(frame, rawMedia), pictures, any));
    }
    return result;
}

GstCaps* frameCapsOf(const GstCaps* pictureCaps) {
    GstCaps* result = gst_caps_new_empty();
    for (guint i = 0; i < gst_caps_get_size(pictureCaps); ++i) {
        const GstStructure* const picture = gst_caps_get_structure(pictureCaps, i);
        result = gst_caps_merge_structure(result, ofMosaics(without(picture, mosaicMedia)));
        result = gst_caps_merge_structure(result, ofRaw(without(picture, rawMedia), greys, any));
    }
    return result;
}

GstCaps* bestPictures(const FrameCaps& frame, GstCaps* offered) {
    const bool deep = frame.format == PixelFormat::Mono16;
    GstCaps* best = nullptr;
    if (!frame.isMosaic()) {
        best = wantedOf(offered, [deep](const RawFormat& f) { return isGrey(f) && isDeep(f) == deep; });
        best = best != nullptr ? best : wantedOf(offered, isGrey);
    }
    best = best != nullptr ? best : wantedOf(offered, any);
    gst_caps_unref(offered);
    return best != nullptr ? best : gst_caps_new_empty();
}

}  // namespace krogst
