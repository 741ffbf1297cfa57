#include "support.hpp"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace gsttest {
namespace {

using reference::InputFormat;
using reference::Layout;
using reference::Phase;

constexpr uint8_t untouched = 0xA5;

std::string sizeText(int height, int width) {
    return ",width=" + std::to_string(width) + ",height=" + std::to_string(height) + ",framerate=25/1";
}

void addMosaics(std::vector<Input>& list, const std::string& phase, const std::string& letter,
                const InputFormat& format) {
    const std::string bits = std::to_string(format.bits);
    switch (format.layout) {
        case Layout::bytes:
            list.push_back({"video/x-bayer", phase, format, false});
            break;
        case Layout::words:
            list.push_back({"video/x-bayer", phase + bits + "le", format, false});
            list.push_back({"video/x-bayer", phase + bits + "be", format, true});
            break;
        case Layout::packed:
            list.push_back({"video/x-bayer", phase + bits + "packed", format, false});
            break;
        case Layout::lsbFirst:
            list.push_back({"video/x-bayer", phase + bits + "p", format, false});
            break;
        case Layout::csi2: {
            const std::string depth = format.bits == 10 ? "AA" : format.bits == 12 ? "CC" : "EE";
            list.push_back({"video/x-bayer", "p" + letter + depth, format, false});
            break;
        }
    }
}

std::vector<Input> makeInputs() {
    const std::vector<std::pair<Phase, std::pair<const char*, const char*>>> phases = {{Phase::rg, {"rggb", "R"}},
                                                                                       {Phase::gr, {"grbg", "g"}},
                                                                                       {Phase::gb, {"gbrg", "G"}},
                                                                                       {Phase::bg, {"bggr", "B"}}};
    std::vector<Input> list;
    for (const InputFormat& format : reference::viewInputFormats()) {
        if (format.mono && format.layout == Layout::bytes) {
            list.push_back({"video/x-raw", "GRAY8", format, false});
        } else if (format.mono && format.layout == Layout::words && format.bits == 16) {
            list.push_back({"video/x-raw", "GRAY16_LE", format, false});
            list.push_back({"video/x-raw", "GRAY16_BE", format, true});
        }
        for (const auto& [phase, names] : phases) {
            if (!format.mono && format.phase == phase) {
                addMosaics(list, names.first, names.second, format);
            }
        }
    }
    return list;
}

// ---- a receiver's pool ----

struct Pool {
    GstBufferPool parent;
    Receiver* receiver;
    GstVideoInfo* info;
};
struct PoolClass {
    GstBufferPoolClass parent;
};
G_DEFINE_TYPE(Pool, test_pool, GST_TYPE_BUFFER_POOL)

size_t planeBytes(const Receiver& receiver, size_t plane, int height) {
    const Place& place = receiver.planes[plane];
    return place.front + place.stride * static_cast<size_t>(height) - (receiver.tooSmall ? place.stride + 1 : 0);
}

GstFlowReturn allocate(GstBufferPool* base, GstBuffer** buffer, GstBufferPoolAcquireParams*) {
    const Pool& pool = *reinterpret_cast<Pool*>(base);
    const Receiver& receiver = *pool.receiver;
    if (receiver.refuses) {
        return GST_FLOW_ERROR;
    }
    const int height = GST_VIDEO_INFO_HEIGHT(pool.info);
    gsize offsets[4] = {};
    gint strides[4] = {};
    gsize end = 0;
    *buffer = gst_buffer_new();
    for (size_t i = 0; i < receiver.planes.size(); ++i) {
        const Place& place = receiver.planes[i];
        const size_t bytes = planeBytes(receiver, i, height);
        const size_t firstRow = place.upwards ? place.stride * static_cast<size_t>(height - 1) : 0;
        offsets[i] = end + place.front + firstRow;
        strides[i] = static_cast<gint>(place.stride) * (place.upwards ? -1 : 1);
        end += bytes;
        if (receiver.apart || i + 1 == receiver.planes.size()) {
            const size_t whole = receiver.apart ? bytes : end;
            guint8* const memory = static_cast<guint8*>(g_malloc(whole));
            std::memset(memory, untouched, whole);
            gst_buffer_append_memory(
                *buffer, gst_memory_new_wrapped(GstMemoryFlags(0), memory, whole, 0, whole, memory, g_free));
        }
    }
    const GstVideoFormat format = receiver.otherMeta ? GST_VIDEO_FORMAT_NV12 : GST_VIDEO_INFO_FORMAT(pool.info);
    gst_buffer_add_video_meta_full(*buffer, GST_VIDEO_FRAME_FLAG_NONE, format,
                                   static_cast<guint>(GST_VIDEO_INFO_WIDTH(pool.info)), static_cast<guint>(height),
                                   static_cast<guint>(receiver.planes.size()), offsets, strides);
    return GST_FLOW_OK;
}

void finalizePool(GObject* object) {
    Pool* const pool = reinterpret_cast<Pool*>(object);
    delete pool->receiver;
    gst_video_info_free(pool->info);
    G_OBJECT_CLASS(test_pool_parent_class)->finalize(object);
}

void test_pool_init(Pool* pool) {
    pool->receiver = nullptr;
    pool->info = gst_video_info_new();
}
void test_pool_class_init(PoolClass* type) {
    GST_BUFFER_POOL_CLASS(type)->alloc_buffer = allocate;
    G_OBJECT_CLASS(type)->finalize = finalizePool;
}

}  // namespace

// ---- formats ----

std::string Input::caps(int height, int width) const { return media + ",format=" + name + sizeText(height, width); }

std::string Output::caps(int height, int width) const {
    return "video/x-raw,format=" + name + sizeText(height, width);
}

const std::vector<Input>& inputs() {
    static const std::vector<Input> list = makeInputs();
    return list;
}

const std::vector<Output>& outputs() {
    static const std::vector<Output> list = {{"RGB", {"RGB"}, 8},          {"BGR", {"BGR"}, 8},
                                             {"RGBx", {"RGBA"}, 8},        {"BGRx", {"BGRA"}, 8},
                                             {"xRGB", {"ARGB"}, 8},        {"xBGR", {"ABGR"}, 8},
                                             {"RGBA", {"RGBA"}, 8},        {"BGRA", {"BGRA"}, 8},
                                             {"ARGB", {"ARGB"}, 8},        {"ABGR", {"ABGR"}, 8},
                                             {"RGBP", {"R", "G", "B"}, 8}, {"BGRP", {"B", "G", "R"}, 8},
                                             {"GBR", {"G", "B", "R"}, 8},  {"GBRA", {"G", "B", "R", "A"}, 8},
                                             {"GRAY8", {"Y"}, 8},          {"GRAY16_LE", {"Y"}, 16},
                                             {"ARGB64", {"ARGB"}, 16},     {"ARGB64_LE", {"ARGB"}, 16},
                                             {"RGBA64_LE", {"RGBA"}, 16},  {"BGRA64_LE", {"BGRA"}, 16},
                                             {"ABGR64_LE", {"ABGR"}, 16}};
    return list;
}

namespace {
template <class Format>
const Format& named(const std::vector<Format>& list, const std::string& name) {
    for (const Format& format : list) {
        if (format.name == name) {
            return format;
        }
    }
    throw std::runtime_error("no format " + name);
}
}  // namespace
const Input& input(const std::string& name) { return named(inputs(), name); }
const Output& output(const std::string& name) { return named(outputs(), name); }

// ---- memory ----

Bytes noise(size_t count, uint32_t seed) {
    Bytes bytes(count);
    uint32_t state = seed * 2654435761u | 1;
    for (uint8_t& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return bytes;
}

GstBuffer* bufferOf(const Bytes& bytes) {
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, bytes.size(), nullptr);
    gst_buffer_fill(buffer, 0, bytes.data(), bytes.size());
    return buffer;
}

CapsPointer capsOf(const std::string& text) { return CapsPointer(gst_caps_from_string(text.c_str())); }

TestFrame::TestFrame(const Input& format, int h, int w, Place rows)
    : input(&format), height(h), width(w), place(rows), bytes() {
    const size_t row = format.rowBytes(w);
    if (place.stride == 0) {
        const size_t samples = GST_ROUND_UP_4(static_cast<size_t>(w));
        place.stride = row == 2 * static_cast<size_t>(w) ? 2 * samples : GST_ROUND_UP_4(row);
        place.stride = format.media == "video/x-raw" ? GST_ROUND_UP_4(row) : place.stride;
    }
    bytes = noise(place.front + place.stride * static_cast<size_t>(h), static_cast<uint32_t>(h * 1000 + w));
}

size_t TestFrame::rowZero() const {
    return place.front + (place.upwards ? place.stride * static_cast<size_t>(height - 1) : 0);
}

GstBuffer* TestFrame::buffer(bool withMeta) const {
    GstBuffer* const made = bufferOf(bytes);
    if (withMeta) {
        gsize offsets[4] = {rowZero()};
        gint strides[4] = {static_cast<gint>(place.stride) * (place.upwards ? -1 : 1)};
        const GstVideoFormat format = input->media == "video/x-raw"
                                          ? gst_video_format_from_string(input->name.c_str())
                                          : GST_VIDEO_FORMAT_ENCODED;
        gst_buffer_add_video_meta_full(made, GST_VIDEO_FRAME_FLAG_NONE, format, static_cast<guint>(width),
                                       static_cast<guint>(height), 1, offsets, strides);
    }
    return made;
}

reference::Scene TestFrame::scene() const {
    const ptrdiff_t stride = static_cast<ptrdiff_t>(place.stride) * (place.upwards ? -1 : 1);
    return {input->format,
            {bytes.data() + rowZero(), stride, height, width},
            {input->format.bits, input->bigEndian, false}};
}

// ---- the element ----

Element::Element(const char* launch)
    : harness_(gst_harness_new_parse(launch)),
      element_(gst_harness_find_element(harness_, "krodemosaic")),
      bus_(gst_bus_new()) {
    gst_element_set_bus(element_, bus_);
    gst_pad_add_probe(harness_->sinkpad, GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM, answer, this, nullptr);
}

Element::~Element() {
    gst_element_set_bus(element_, nullptr);
    gst_object_unref(element_);
    gst_harness_teardown(harness_);
    gst_object_unref(bus_);
    g_clear_object(&pool_);
}

void Element::setCaps(const std::string& in, const std::string& out) {
    gst_harness_set_caps_str(harness_, in.c_str(), out.c_str());
}

void Element::receiveIn(const Receiver& receiver, const Output& output, int height, int width) {
    g_clear_object(&pool_);
    pool_ = GST_BUFFER_POOL(g_object_new(test_pool_get_type(), nullptr));
    Pool* const pool = reinterpret_cast<Pool*>(pool_);
    pool->receiver = new Receiver(receiver);
    gst_video_info_set_format(pool->info, gst_video_format_from_string(output.name.c_str()),
                              static_cast<guint>(width), static_cast<guint>(height));
}

GstPadProbeReturn Element::answer(GstPad*, GstPadProbeInfo* info, gpointer self) {
    GstQuery* const query = GST_PAD_PROBE_INFO_QUERY(info);
    GstBufferPool* const pool = static_cast<Element*>(self)->pool_;
    if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION || pool == nullptr) {
        return GST_PAD_PROBE_OK;
    }
    const Pool& made = *reinterpret_cast<Pool*>(pool);
    size_t size = 0;
    for (size_t i = 0; i < made.receiver->planes.size(); ++i) {
        size += planeBytes(*made.receiver, i, GST_VIDEO_INFO_HEIGHT(made.info));
    }
    gst_query_add_allocation_pool(query, pool, static_cast<guint>(size), 0, 0);
    gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    return GST_PAD_PROBE_HANDLED;
}

std::string Element::postedError() {
    const std::unique_ptr<GstMessage, Unref> message(gst_bus_pop_filtered(bus_, GST_MESSAGE_ERROR));
    if (!message) {
        return "";
    }
    GError* error = nullptr;
    gchar* details = nullptr;
    gst_message_parse_error(message.get(), &error, &details);
    std::string text = std::string(error->message) + "\n" + (details != nullptr ? details : "");
    g_error_free(error);
    g_free(details);
    return text;
}

std::string Element::outputFormat() {
    GstCaps* const caps = gst_pad_get_current_caps(harness_->sinkpad);
    if (caps == nullptr) {
        return "";
    }
    const CapsPointer owner(caps);
    const char* const format = gst_structure_get_string(gst_caps_get_structure(caps, 0), "format");
    return format != nullptr ? format : "";
}

// ---- pictures ----

namespace {

// The planes' first rows and strides, by the buffer's meta or GStreamer's own rules.
struct Layout4 {
    gsize offset[4];
    gint stride[4];
};
Layout4 layoutOf(GstBuffer* buffer, const Output& output, int height, int width) {
    Layout4 layout{};
    GstVideoInfo info;
    gst_video_info_set_format(&info, gst_video_format_from_string(output.name.c_str()), static_cast<guint>(width),
                              static_cast<guint>(height));
    const GstVideoMeta* const meta = gst_buffer_get_video_meta(buffer);
    for (size_t i = 0; i < output.planes.size(); ++i) {
        layout.offset[i] = meta != nullptr ? meta->offset[i] : info.offset[i];
        layout.stride[i] = meta != nullptr ? meta->stride[i] : info.stride[i];
    }
    return layout;
}

}  // namespace

std::string differenceOf(GstBuffer* buffer, const Output& output, int height, int width, reference::Scene& scene,
                         reference::Method method) {
    GstMapInfo map;
    if (buffer == nullptr || !gst_buffer_map(buffer, &map, GST_MAP_READ)) {
        return "no picture";
    }
    const Layout4 layout = layoutOf(buffer, output, height, width);
    const reference::Finish finish = {output.depth == 8 ? 255 : 65535, output.depth == 8 ? 0 : scene.bits()};
    const reference::Picture& picture = scene.picture(method, output.depth);
    std::string difference;
    for (size_t plane = 0; plane < output.planes.size(); ++plane) {
        const Bytes expected = reference::planeBytes(picture, output.planes[plane], output.depth, finish);
        const size_t row = output.rowBytes(plane, width);
        for (int y = 0; y < height; ++y) {
            const guint8* const at =
                map.data + layout.offset[plane] + static_cast<ptrdiff_t>(layout.stride[plane]) * y;
            if (std::memcmp(expected.data() + static_cast<size_t>(y) * row, at, row) != 0) {
                difference += output.name + " plane " + std::to_string(plane) + " row " + std::to_string(y) + "; ";
            }
        }
    }
    gst_buffer_unmap(buffer, &map);
    return difference;
}

std::string writtenGapsOf(GstBuffer* buffer, const Output& output, int height, int width) {
    GstMapInfo map;
    if (buffer == nullptr || !gst_buffer_map(buffer, &map, GST_MAP_READ)) {
        return "no picture";
    }
    const Layout4 layout = layoutOf(buffer, output, height, width);
    std::vector<bool> pixel(map.size);
    for (size_t plane = 0; plane < output.planes.size(); ++plane) {
        for (int y = 0; y < height; ++y) {
            const ptrdiff_t at =
                static_cast<ptrdiff_t>(layout.offset[plane]) + static_cast<ptrdiff_t>(layout.stride[plane]) * y;
            std::fill_n(pixel.begin() + at, output.rowBytes(plane, width), true);
        }
    }
    std::string written;
    size_t gaps = 0;
    for (size_t i = 0; i < map.size; ++i) {
        gaps += pixel[i] ? 0 : 1;
        written += pixel[i] || map.data[i] == untouched ? "" : "byte " + std::to_string(i) + "; ";
    }
    gst_buffer_unmap(buffer, &map);
    return gaps > 0 ? written : "no gaps";
}

}  // namespace gsttest
