// Where the rows of frames and pictures lie in the memory of buffers.
#pragma once

#include <gst/video/video.h>

#include "formats.hpp"

namespace krogst {

// Why a buffer cannot be what its caps say.
struct Reason {
    char text[256] = "";
};

// A buffer's memory, seen as one block.
class MappedBuffer {
public:
    MappedBuffer(GstBuffer* buffer, GstMapFlags flags)
        : buffer_(buffer), mapped_(gst_buffer_map(buffer, &map_, flags) != FALSE) {}
    ~MappedBuffer() {
        if (mapped_) {
            gst_buffer_unmap(buffer_, &map_);
        }
    }
    MappedBuffer(const MappedBuffer&) = delete;
    MappedBuffer& operator=(const MappedBuffer&) = delete;

    explicit operator bool() const { return mapped_; }
    guint8* data() const { return map_.data; }
    gsize size() const { return map_.size; }
    const GstVideoMeta* videoMeta() const { return gst_buffer_get_video_meta(buffer_); }

private:
    GstBuffer* buffer_;
    GstMapInfo map_{};
    bool mapped_;
};

// Each fills in where the rows are, all of them inside the buffer, or the reason why they cannot be there.
bool findFrame(const FrameCaps& caps, const MappedBuffer& buffer, kro::Frame& frame, Reason& reason);
bool findPicture(const GstVideoInfo& caps, const MappedBuffer& buffer, kro::Picture& picture, Reason& reason);

}  // namespace krogst
