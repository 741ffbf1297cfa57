// krodemosaic beside GStreamer's own bayer2rgb, on all caps that both have: frames go through both in turns in one
// process, so that whatever slows the machine slows both.
#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr const char* mosaics[] = {"rggb", "grbg", "gbrg", "bggr"};
constexpr const char* pictures[] = {"RGBx", "BGRx", "xRGB", "xBGR", "RGBA", "BGRA", "ARGB", "ABGR"};
constexpr const char* launches[] = {"bayer2rgb", "krodemosaic algorithm=bilinear", "krodemosaic algorithm=edge",
                                    "krodemosaic algorithm=bilinear n-threads=0",
                                    "krodemosaic algorithm=edge n-threads=0"};

struct Size {
    int width, height;
};

// Offers the elements a pool, as sinks do; else each gets its memory as it will.
GstPadProbeReturn offerPool(GstPad*, GstPadProbeInfo* info, gpointer) {
    GstQuery* const query = GST_PAD_PROBE_INFO_QUERY(info);
    GstCaps* caps = nullptr;
    GstVideoInfo picture;
    if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION) {
        return GST_PAD_PROBE_OK;
    }
    gst_query_parse_allocation(query, &caps, nullptr);
    if (caps == nullptr || !gst_video_info_from_caps(&picture, caps)) {
        return GST_PAD_PROBE_OK;
    }
    GstBufferPool* const pool = gst_video_buffer_pool_new();
    gst_query_add_allocation_pool(query, pool, static_cast<guint>(picture.size), 2, 0);
    gst_object_unref(pool);
    return GST_PAD_PROBE_HANDLED;
}

// An element, ready for frames.
class Contestant {
public:
    Contestant(const char* launch, const std::string& from, const std::string& to, bool pool)
        : harness_(gst_harness_new_parse(launch)) {
        if (pool) {
            gst_pad_add_probe(harness_->sinkpad, GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM, offerPool, nullptr, nullptr);
        }
        gst_harness_set_drop_buffers(harness_, TRUE);
        gst_harness_set_caps_str(harness_, from.c_str(), to.c_str());
    }
    ~Contestant() { gst_harness_teardown(harness_); }
    Contestant(const Contestant&) = delete;
    Contestant& operator=(const Contestant&) = delete;

    // A turn: as in a stream, the element has just had a frame when the frames that count come.
    void run(GstBuffer* frame) {
        push(frame);
        for (int i = 0; i < 3; ++i) {
            const auto start = std::chrono::steady_clock::now();
            push(frame);
            const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
            times_.push_back(taken.count());
        }
    }
    double median() {
        std::sort(times_.begin(), times_.end());
        return times_[times_.size() / 2];
    }
    double minimum() const { return *std::min_element(times_.begin(), times_.end()); }

private:
    void push(GstBuffer* frame) {
        if (gst_harness_push(harness_, gst_buffer_ref(frame)) != GST_FLOW_OK) {
            std::fprintf(stderr, "compare-gstreamer: an element failed\n");
            std::exit(1);
        }
    }

    GstHarness* harness_;
    std::vector<double> times_;
};

GstBuffer* makeFrame(Size size) {
    const gsize bytes = static_cast<gsize>(GST_ROUND_UP_4(size.width)) * static_cast<gsize>(size.height);
    GstBuffer* const frame = gst_buffer_new_allocate(nullptr, bytes, nullptr);
    GstMapInfo map;
    gst_buffer_map(frame, &map, GST_MAP_WRITE);
    guint32 state = 1;
    for (gsize i = 0; i < bytes; ++i) {
        state = state * 1664525U + 1013904223U;
        map.data[i] = static_cast<guint8>((i % 251) / 2 + (state >> 25));
    }
    gst_buffer_unmap(frame, &map);
    return frame;
}

// How many times as long the stock element takes.
struct Ratio {
    double byMedians = 1e9, byMinima = 1e9;
    void take(const Ratio& other) {
        byMedians = std::min(byMedians, other.byMedians);
        byMinima = std::min(byMinima, other.byMinima);
    }
};

// One line of the table, and the least ratio in it.
Ratio compare(GstBuffer* frame, Size size, const char* mosaic, const char* picture, bool pool, int rounds) {
    const std::string shape =
        ",width=" + std::to_string(size.width) + ",height=" + std::to_string(size.height) + ",framerate=25/1";
    std::vector<std::unique_ptr<Contestant>> contestants;
    for (const char* launch : launches) {
        contestants.push_back(
            std::make_unique<Contestant>(launch, std::string("video/x-bayer,format=") + mosaic + shape,
                                         std::string("video/x-raw,format=") + picture + shape, pool));
    }
    for (int round = 0; round < rounds; ++round) {
        for (const auto& contestant : contestants) {
            contestant->run(frame);
        }
    }
    Contestant& stock = *contestants[0];
    std::printf("%4dx%-4d %s %s %s %7.3f", size.width, size.height, mosaic, picture, pool ? "pool" : "own ",
                stock.median());
    Ratio least;
    for (size_t i = 1; i < contestants.size(); ++i) {
        Contestant& kro = *contestants[i];
        const Ratio ratio{stock.median() / kro.median(), stock.minimum() / kro.minimum()};
        std::printf("  %7.3f %5.2f (%5.2f)", kro.median(), ratio.byMedians, ratio.byMinima);
        least.take(ratio);
    }
    std::printf("%s\n", least.byMinima <= 1 ? "  slower" : "");
    return least;
}

}  // namespace

// compare ROUNDS WIDTHxHEIGHT...
int main(int count, char** arguments) {
    gst_init(nullptr, nullptr);
    const int rounds = count > 1 ? std::atoi(arguments[1]) : 0;
    std::vector<Size> sizes;
    for (int i = 2; i < count; ++i) {
        Size size{};
        if (std::sscanf(arguments[i], "%dx%d", &size.width, &size.height) == 2 && size.width > 3 && size.height > 3) {
            sizes.push_back(size);
        }
    }
    if (rounds < 1 || sizes.empty() || static_cast<int>(sizes.size()) != count - 2) {
        std::fprintf(stderr, "usage: %s ROUNDS WIDTHxHEIGHT...\n", arguments[0]);
        return 2;
    }
    std::printf("medians in ms; times as long bayer2rgb takes, by medians (by minima)\n%24s %7s", "memory", "stock");
    for (const char* column : {"bilinear", "edge", "bilinear, threads", "edge, threads"}) {
        std::printf("  %21s", column);
    }
    std::printf("\n");
    Ratio least;
    for (const Size size : sizes) {
        GstBuffer* const frame = makeFrame(size);
        for (const bool pool : {false, true}) {
            for (const char* mosaic : mosaics) {
                for (const char* picture : pictures) {
                    least.take(compare(frame, size, mosaic, picture, pool, rounds));
                }
            }
        }
        gst_buffer_unref(frame);
    }
    std::printf("the least: bayer2rgb takes %.2f times as long by medians, %.2f by minima\n", least.byMedians,
                least.byMinima);
    return 0;
}
