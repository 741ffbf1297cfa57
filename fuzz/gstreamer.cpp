// krodemosaic: caps, sizes of buffers, metas and memories that bytes make up. A frame that lies in its buffer becomes
// the reference's picture; of any other the element says why, and makes nothing.
#include <gst/gst.h>

#include <cstdlib>
#include <string>

#include "choices.hpp"
#include "krodemosaic.hpp"
#include "memory.hpp"
#include "support.hpp"

namespace {

using fuzz::Choices;
using fuzz::require;
using gsttest::Bytes;
using gsttest::Input;

// No plugins but this one, and nothing of the machine's.
bool prepare() {
    setenv("GST_PLUGIN_SYSTEM_PATH_1_0", "", 1);
    gst_registry_fork_set_enabled(FALSE);
    gst_init(nullptr, nullptr);
    return GST_ELEMENT_REGISTER(krodemosaic, nullptr) != FALSE;
}

constexpr const char* oddCaps[] = {"video/x-bayer,format=rggb13le,width=8,height=8",
                                   "video/x-bayer,format=rggb,width=3,height=8",
                                   "video/x-bayer,format=rggb,width=2147483647,height=2147483647",
                                   "video/x-raw,format=NV12,width=8,height=8",
                                   "video/x-bayer,format=rggb,width=8",
                                   "video/x-bayer(memory:DMABuf),format=rggb,width=8,height=8",
                                   "image/jpeg"};

class Request {
public:
    explicit Request(Choices& choices)
        : input_(gsttest::inputs()[static_cast<size_t>(choices.byte()) % gsttest::inputs().size()]),
          output_(gsttest::outputs()[static_cast<size_t>(choices.byte()) % gsttest::outputs().size()]),
          height_(4 + choices.below(10)),
          width_(4 + choices.below(choices.oneIn(4) ? 150 : 40)),
          algorithm_(choices.below(4)),
          caps_(choices.oneIn(16) ? choices.oneOf(oddCaps) : input_.caps(height_, width_)) {
        chooseRows(choices);
        bytes_ = choices.samples(size_);
        cuts_ = {static_cast<size_t>(choices.byte()), static_cast<size_t>(choices.byte()) * 8};
    }

    void run() const {
        gsttest::Element element;
        g_object_set(element.element(), "algorithm", algorithm_, nullptr);
        element.setCaps(caps_, output_.caps(height_, width_));
        const GstFlowReturn flow = element.push(buffer());
        const gsttest::BufferPointer picture = element.pull();
        require((flow == GST_FLOW_OK) == (picture != nullptr), "a picture comes with success and with nothing else");
        if (caps_ != input_.caps(height_, width_)) {
            return;
        }
        if (input_.name == output_.name) {
            require(gst_buffer_memcmp(picture.get(), 0, bytes_.data(), bytes_.size()) == 0, "a buffer did not pass");
        } else if (fits()) {
            requirePicture(picture.get());
        } else {
            require(flow == GST_FLOW_ERROR, "a frame that does not lie in its buffer is taken");
            require(
                element.postedError().find("expected") != std::string::npos || (start_ % 2 != 0 || stride_ % 2 != 0),
                "an error does not say what was expected");
        }
    }

private:
    size_t row() const { return input_.rowBytes(width_); }
    bool ofWords() const { return input_.format.layout == reference::Layout::words; }
    bool raw() const { return input_.media == "video/x-raw"; }
    size_t usual() const {
        const size_t samples = static_cast<size_t>(width_ + 3) / 4 * 4;
        return ofWords() && !raw() ? 2 * samples : (row() + 3) / 4 * 4;
    }

    void chooseRows(Choices& choices) {
        const size_t strides[] = {
            usual(), usual(), row(), row() + 4, row() / 4 * 4 + 64, row() * 2, row() - 1, usual() + choices.byte()};
        const size_t apart = choices.oneOf(strides);
        const size_t front = static_cast<size_t>(choices.oneIn(2) ? choices.below(9) : 0);
        size_ = front + apart * static_cast<size_t>(height_);
        size_ += choices.oneIn(4) ? choices.byte() : 0U;
        size_ -= choices.oneIn(4) ? std::min<size_t>(size_, choices.byte()) : 0U;
        withMeta_ = choices.oneIn(2);
        meta_.upwards = choices.oneIn(4);
        start_ = static_cast<int64_t>(front + (meta_.upwards ? apart * static_cast<size_t>(height_ - 1) : 0));
        stride_ = static_cast<int64_t>(apart) * (meta_.upwards ? -1 : 1);
        meta_.width = width_ + (choices.oneIn(16) ? choices.below(5) - 2 : 0);
        meta_.height = height_ + (choices.oneIn(16) ? choices.below(5) - 2 : 0);
        meta_.planes = choices.oneIn(32) ? 0 : 1;
        meta_.otherFormat = choices.oneIn(32);
        constexpr int64_t odd[] = {0, 1, INT32_MIN, INT32_MAX, 1 << 30, -4};
        constexpr int64_t oddStarts[] = {int64_t{1} << 32, INT64_MAX, INT64_MIN, -1, 2};
        stride_ = choices.oneIn(16) ? choices.oneOf(odd) : stride_;
        start_ = choices.oneIn(16) ? choices.oneOf(oddStarts) : start_;
        if (!withMeta_) {
            start_ = 0;
            stride_ = strideOfSize();
        }
    }

    // 0 where no stride fits.
    int64_t strideOfSize() const {
        const size_t height = static_cast<size_t>(height_), each = size_ / height;
        if (size_ == usual() * height || (raw() && size_ > usual() * height)) {
            return static_cast<int64_t>(usual());
        }
        const bool padded = each > row() && each < row() + 256 && each < 2 * row() && each % 4 == 0;
        return size_ % height == 0 && (each == row() || padded) ? static_cast<int64_t>(each) : 0;
    }

    bool fits() const {
        if (withMeta_ &&
            (meta_.width < width_ || meta_.height < height_ || meta_.planes < 1 || (raw() && meta_.otherFormat))) {
            return false;
        }
        const int64_t span = stride_ * (height_ - 1), rowBytes = static_cast<int64_t>(row());
        const int64_t size = static_cast<int64_t>(size_);
        if (std::abs(stride_) < rowBytes || start_ < 0 || start_ > size || start_ + std::min<int64_t>(span, 0) < 0 ||
            start_ + std::max<int64_t>(span, 0) + rowBytes > size) {
            return false;
        }
        return !ofWords() || (start_ % 2 == 0 && stride_ % 2 == 0);
    }

    // Memories of its own for each part, so that a sanitizer sees the first byte beyond the last one.
    GstBuffer* buffer() const {
        GstBuffer* const whole = gst_buffer_new();
        size_t from = 0;
        for (const size_t cut : {cuts_[0], cuts_[1], size_}) {
            const size_t to = cut == size_ || cuts_[0] % 2 != 0 ? std::max(from, std::min(cut, size_)) : from;
            if (to > from) {
                void* const part = std::malloc(to - from);
                std::copy_n(bytes_.data() + from, to - from, static_cast<uint8_t*>(part));
                gst_buffer_append_memory(
                    whole, gst_memory_new_wrapped(GstMemoryFlags(0), part, to - from, 0, to - from, part, std::free));
            }
            from = to;
        }
        if (withMeta_) {
            const GstVideoFormat named =
                raw() ? gst_video_format_from_string(input_.name.c_str()) : GST_VIDEO_FORMAT_ENCODED;
            GstVideoMeta* const meta =
                gst_buffer_add_video_meta(whole, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_GRAY8, 8, 8);
            meta->format = meta_.otherFormat ? GST_VIDEO_FORMAT_RGB : named;
            meta->width = static_cast<guint>(meta_.width);
            meta->height = static_cast<guint>(meta_.height);
            meta->n_planes = static_cast<guint>(meta_.planes);
            meta->offset[0] = static_cast<gsize>(start_);
            meta->stride[0] = static_cast<gint>(stride_);
        }
        return whole;
    }

    void requirePicture(GstBuffer* picture) const {
        require(picture != nullptr, "a frame that lies in its buffer is refused");
        reference::Scene scene(input_.format,
                               {bytes_.data() + start_, static_cast<ptrdiff_t>(stride_), height_, width_},
                               {input_.format.bits, input_.bigEndian, false});
        const std::string difference = gsttest::differenceOf(picture, output_, height_, width_, scene,
                                                             static_cast<reference::Method>(algorithm_));
        require(difference.empty(), difference.c_str());
    }

    struct Meta {
        bool upwards, otherFormat;
        int width, height, planes;
    };

    const Input& input_;
    const gsttest::Output& output_;
    int height_, width_, algorithm_;
    std::string caps_;
    size_t size_ = 0;
    int64_t start_ = 0, stride_ = 0;
    bool withMeta_ = false;
    Meta meta_{};
    Bytes bytes_;
    std::array<size_t, 2> cuts_{};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool ready = prepare();
    require(ready, "the element cannot be registered");
    Choices choices(data, size);
    Request(choices).run();
    return 0;
}
