#include "rows.hpp"

namespace krogst {
namespace {

[[gnu::format(printf, 2, 3)]] bool fail(Reason& reason, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    g_vsnprintf(reason.text, sizeof reason.text, format, arguments);
    va_end(arguments);
    return false;
}

// A plane, as the buffer or its caps describe it.
struct Rows {
    gsize offset;
    gint64 stride;
    gsize rowBytes;
    gint count;

    // Strides have 32 bits and rows are fewer than 2^31.
    gint64 span() const { return stride * (count - 1); }
    bool insideOf(gsize size) const {
        const gint64 last = static_cast<gint64>(rowBytes) + MAX(span(), gint64{0});
        return offset <= size && size <= G_MAXINT64 && static_cast<gint64>(offset) + MIN(span(), gint64{0}) >= 0 &&
               last <= static_cast<gint64>(size - offset);
    }
};

bool place(const Rows& rows, const MappedBuffer& buffer, Reason& reason) {
    if (static_cast<gsize>(ABS(rows.stride)) < rows.rowBytes) {
        return fail(reason,
                    "rows of %" G_GSIZE_FORMAT " bytes are %" G_GINT64_FORMAT
                    " bytes apart, expected at least %" G_GSIZE_FORMAT,
                    rows.rowBytes, rows.stride, rows.rowBytes);
    }
    if (!rows.insideOf(buffer.size())) {
        return fail(reason,
                    "a buffer of %" G_GSIZE_FORMAT " bytes, expected %d rows of %" G_GSIZE_FORMAT
                    " bytes, %" G_GINT64_FORMAT " apart, from byte %" G_GSIZE_FORMAT " on",
                    buffer.size(), rows.count, rows.rowBytes, rows.stride, rows.offset);
    }
    return true;
}

bool describes(const GstVideoMeta& meta, GstVideoFormat format, guint planes, gint height, gint width,
               Reason& reason) {
    const bool known = format == GST_VIDEO_FORMAT_UNKNOWN || meta.format == format;
    if (known && meta.n_planes >= planes && meta.height >= static_cast<guint>(height) &&
        meta.width >= static_cast<guint>(width)) {
        return true;
    }
    return fail(reason, "a buffer with video meta of %u x %u %s, %u planes, expected %d x %d%s%s, %u planes",
                meta.width, meta.height, gst_video_format_to_string(meta.format), meta.n_planes, width, height,
                known ? "" : " ", known ? "" : gst_video_format_to_string(format), planes);
}

// Of a buffer that does not say it. Besides the usual distance rows may follow each other without gaps, as in files,
// or be padded further, as drivers do, and fill the buffer. That many bytes no driver adds; so much more is another
// format.
bool strideFrom(const FrameCaps& caps, gsize size, gint64& stride, Reason& reason) {
    constexpr gsize mostPadding = 256;
    const gsize height = static_cast<gsize>(caps.height), row = caps.rowBytes(), usual = caps.usualStride();
    const gsize each = size / height;
    if (size == caps.usualSize() || (!caps.isMosaic() && size > caps.usualSize())) {
        stride = static_cast<gint64>(usual);
        return true;
    }
    const bool padded = each > row && each % 4 == 0 && each - row < MIN(mostPadding, row);
    if (size % height == 0 && (each == row || padded)) {
        stride = static_cast<gint64>(each);
        return true;
    }
    return fail(reason,
                "a frame of %" G_GSIZE_FORMAT " bytes, expected %" G_GSIZE_FORMAT
                " for %d x %d %s: %d rows of %" G_GSIZE_FORMAT " bytes, %" G_GSIZE_FORMAT
                " apart; other distances take a GstVideoMeta",
                size, caps.usualSize(), caps.width, caps.height, caps.name, caps.height, row, usual);
}

}  // namespace

bool findFrame(const FrameCaps& caps, const MappedBuffer& buffer, kro::Frame& frame, Reason& reason) {
    Rows rows{0, 0, caps.rowBytes(), caps.height};
    if (const GstVideoMeta* const meta = buffer.videoMeta()) {
        if (!describes(*meta, caps.raw, 1, caps.height, caps.width, reason)) {
            return false;
        }
        rows.offset = meta->offset[0];
        rows.stride = meta->stride[0];
    } else if (!strideFrom(caps, buffer.size(), rows.stride, reason)) {
        return false;
    }
    if (!place(rows, buffer, reason)) {
        return false;
    }
    frame = {buffer.data() + rows.offset, caps.height, caps.width, caps.format,
             static_cast<std::ptrdiff_t>(rows.stride)};
    return true;
}

bool findPicture(const GstVideoInfo& caps, const MappedBuffer& buffer, kro::Picture& picture, Reason& reason) {
    const GstVideoFormat name = GST_VIDEO_INFO_FORMAT(&caps);
    const gint height = GST_VIDEO_INFO_HEIGHT(&caps), width = GST_VIDEO_INFO_WIDTH(&caps);
    const guint planes = GST_VIDEO_INFO_N_PLANES(&caps);
    const GstVideoMeta* const meta = buffer.videoMeta();
    if (meta != nullptr && !describes(*meta, name, planes, height, width, reason)) {
        return false;
    }
    picture = {};
    picture.format = pictureFormat(name)->format;
    const gsize rowBytes = static_cast<gsize>(kro::rowBytes(picture.format, width));
    // The planes of all planar formats in the order red, green, blue, alpha.
    for (guint i = 0; i < planes; ++i) {
        const guint plane = planes == 1 ? 0 : GST_VIDEO_INFO_COMP_PLANE(&caps, i);
        const Rows rows{meta != nullptr ? meta->offset[plane] : GST_VIDEO_INFO_PLANE_OFFSET(&caps, plane),
                        meta != nullptr ? meta->stride[plane] : GST_VIDEO_INFO_PLANE_STRIDE(&caps, plane), rowBytes,
                        height};
        if (!place(rows, buffer, reason)) {
            return false;
        }
        picture.plane[i] = {buffer.data() + rows.offset, static_cast<std::ptrdiff_t>(rows.stride)};
    }
    return true;
}

}  // namespace krogst
