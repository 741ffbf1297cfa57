// The formats that caps name, and what kro calls them.
#pragma once

#include <gst/video/video.h>

#include "kro/kro.hpp"

namespace krogst {

// Of video/x-bayer.
struct MosaicFormat {
    const char* name;
    kro::PixelFormat format;
    bool bigEndian;
};

// Of video/x-raw.
struct RawFormat {
    GstVideoFormat name;
    kro::PixelFormat format;
    bool bigEndian;
};

// What the caps of a frame say.
struct FrameCaps {
    const char* name;  // of the format, as caps spell it; lives as long as the program
    GstVideoFormat raw;
    kro::PixelFormat format;
    bool bigEndian;
    gint height, width;

    bool isMosaic() const { return raw == GST_VIDEO_FORMAT_UNKNOWN; }
    gsize rowBytes() const { return static_cast<gsize>(kro::rowBytes(format, width)); }
    // From row to row where nobody says otherwise. bayer2rgb and its friends put samples at multiples of four.
    gsize usualStride() const;
    gsize usualSize() const { return usualStride() * static_cast<gsize>(height); }
};

// What can come in and go out; the callers' references.
GstCaps* frameTemplate();
GstCaps* pictureTemplate();

// False where the caps are none of the template's, or not fixed.
bool readFrameCaps(const GstCaps* caps, FrameCaps& frame);
// Null for what is no format of pictures.
const RawFormat* pictureFormat(GstVideoFormat name);

// Caps of pictures that frames of these caps can become, and the reverse: all but the format stays.
GstCaps* pictureCapsOf(const GstCaps* frames);
GstCaps* frameCapsOf(const GstCaps* pictureCaps);

// Of the pictures on offer those that suit the frame, the best one first: grey for grey ones, of its depth; colour
// for mosaics. Takes the reference, as gst_caps_fixate does.
GstCaps* bestPictures(const FrameCaps& frame, GstCaps* offered);

}  // namespace krogst
