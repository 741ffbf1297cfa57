// GStreamer's bayer2rgb (plugins "bad"): its transform is called directly, so no pipeline or thread is timed with it.
#include <gst/base/gstbasetransform.h>
#include <gst/gst.h>

#include <memory>

#include "peers/peers.hpp"

namespace bench {
namespace {

struct Unref {
    void operator()(GstElement* element) const { gst_object_unref(element); }
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
};

std::unique_ptr<GstCaps, Unref> capsOf(const char* media, const char* format, const Frame& frame) {
    return std::unique_ptr<GstCaps, Unref>(
        gst_caps_new_simple(media, "format", G_TYPE_STRING, format, "width", G_TYPE_INT, frame.width(), "height",
                            G_TYPE_INT, frame.height(), "framerate", GST_TYPE_FRACTION, 25, 1, nullptr));
}

std::shared_ptr<GstBuffer> bufferOver(void* memory, size_t size) {
    return {gst_buffer_new_wrapped_full(GstMemoryFlags(0), memory, size, 0, size, nullptr, nullptr), Unref()};
}

// It pads rows to four bytes, ours are not padded; and it crashes on unaligned destinations.
bool serves(const Frame& frame) {
    return frame.width() % 4 == 0 && reinterpret_cast<uintptr_t>(frame.destination()) % 16 == 0;
}

Work bayerToRgb(const Frame& frame) {
    if (!serves(frame)) {
        return {};
    }
    GstElement* made = gst_element_factory_make("bayer2rgb", nullptr);
    if (made == nullptr) {
        return {};
    }
    gst_object_ref_sink(made);
    const std::shared_ptr<GstElement> element(made, Unref());
    auto* transform = GST_BASE_TRANSFORM(element.get());
    const GstBaseTransformClass* methods = GST_BASE_TRANSFORM_GET_CLASS(transform);
    const auto from = capsOf("video/x-bayer", "rggb", frame);
    const auto to = capsOf("video/x-raw", "BGRA", frame);
    if (!methods->set_caps(transform, from.get(), to.get())) {
        return {};
    }
    const auto source = bufferOver(const_cast<uint8_t*>(frame.source<uint8_t>()), frame.sourceSize());
    const auto destination = bufferOver(frame.destination(), frame.destinationSize());
    return [element, methods, source, destination] {
        methods->transform(GST_BASE_TRANSFORM_CAST(element.get()), source.get(), destination.get());
    };
}

}  // namespace

std::vector<Peer> gstreamerPeers() {
    gst_init(nullptr, nullptr);
    return {{"GStreamer bayer2rgb", "bilinear/RG8/BGRa8", bayerToRgb}};
}

}  // namespace bench
