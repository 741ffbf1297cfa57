// While frames come: settings, threads, metas, the end.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "support.hpp"

namespace {

using namespace gsttest;
using reference::Method;

constexpr int largeHeight = 790, largeWidth = 641;  // shared by several threads

void setThreads(const Element& element, guint count) { g_object_set(element.element(), "n-threads", count, nullptr); }

TEST(Running, SettingsAreWhatTheyWereSetTo) {
    const Element element;
    gint algorithm = -1;
    guint threads = 99;
    g_object_get(element.element(), "algorithm", &algorithm, "n-threads", &threads, nullptr);
    EXPECT_EQ(2, algorithm);
    EXPECT_EQ(1U, threads);
    g_object_set(element.element(), "algorithm", 1, "n-threads", 7U, nullptr);
    g_object_get(element.element(), "algorithm", &algorithm, "n-threads", &threads, nullptr);
    EXPECT_EQ(1, algorithm);
    EXPECT_EQ(7U, threads);
}

TEST(Running, ThreadsMakeTheSameBytes) {
    const TestFrame frame(input("grbg10le"), largeHeight, largeWidth);
    reference::Scene scene = frame.scene();
    Element element;
    element.setCaps(frame.input->caps(largeHeight, largeWidth), output("RGBA").caps(largeHeight, largeWidth));
    for (const guint count : {2U, 3U, 0U, 1U, 8U, 2U}) {
        setThreads(element, count);
        ASSERT_EQ(GST_FLOW_OK, element.push(frame.buffer(false))) << element.postedError();
        EXPECT_EQ("",
                  differenceOf(element.pull().get(), output("RGBA"), largeHeight, largeWidth, scene, Method::edge));
    }
}

Bytes expectedBgr(reference::Scene& scene, Method method) {
    return reference::planeBytes(scene.picture(method, 8), "BGRA", 8, {255, 0});
}

TEST(Running, SettingsChangeBetweenFramesNeverWithinOne) {
    const TestFrame frame(input("bggr"), largeHeight, largeWidth);
    reference::Scene scene = frame.scene();
    const Bytes expected[] = {expectedBgr(scene, Method::nearest), expectedBgr(scene, Method::bilinear),
                              expectedBgr(scene, Method::edge), expectedBgr(scene, Method::fine)};
    Element element;
    element.setCaps(frame.input->caps(largeHeight, largeWidth), output("BGRA").caps(largeHeight, largeWidth));
    std::atomic<bool> over{false};
    std::thread changes([&] {
        for (guint i = 0; !over; ++i) {
            g_object_set(element.element(), "algorithm", static_cast<gint>(i % 4), "n-threads", 1 + i / 4 % 4,
                         nullptr);
            std::this_thread::yield();
        }
    });
    int seen[4] = {};
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(GST_FLOW_OK, element.push(frame.buffer(false))) << element.postedError();
        const BufferPointer picture = element.pull();
        bool known = false;
        for (size_t method = 0; method < 4 && !known; ++method) {
            known = gst_buffer_memcmp(picture.get(), 0, expected[method].data(), expected[method].size()) == 0;
            seen[method] += known ? 1 : 0;
        }
        EXPECT_TRUE(known) << "picture " << i << " is of no one algorithm";
    }
    over = true;
    changes.join();
    EXPECT_EQ(200, seen[0] + seen[1] + seen[2] + seen[3]);
}

TEST(Running, TimesAndMarksStay) {
    const TestFrame frame(input("rggb"), 6, 8);
    Element element;
    element.setCaps(frame.input->caps(6, 8), output("RGB").caps(6, 8));
    GstBuffer* const buffer = frame.buffer(true);
    GST_BUFFER_PTS(buffer) = 12345;
    GST_BUFFER_DURATION(buffer) = 678;
    GST_BUFFER_OFFSET(buffer) = 9;
    GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_DISCONT);
    gst_buffer_add_video_region_of_interest_meta(buffer, "face", 1, 2, 3, 4);
    ASSERT_EQ(GST_FLOW_OK, element.push(buffer));
    const BufferPointer picture = element.pull();
    EXPECT_EQ(12345U, GST_BUFFER_PTS(picture.get()));
    EXPECT_EQ(678U, GST_BUFFER_DURATION(picture.get()));
    EXPECT_EQ(9U, GST_BUFFER_OFFSET(picture.get()));
    EXPECT_TRUE(GST_BUFFER_FLAG_IS_SET(picture.get(), GST_BUFFER_FLAG_DISCONT));
    EXPECT_NE(nullptr, gst_buffer_get_video_region_of_interest_meta_id(picture.get(), 0));
    EXPECT_EQ(nullptr, gst_buffer_get_video_meta(picture.get()));
}

TEST(Running, OnlyEqualCapsPassThrough) {
    Element element;
    const auto pushed = [&](const char* in, const char* out) {
        const TestFrame frame(input(in), 8, 12);
        element.setCaps(frame.input->caps(8, 12), output(out).caps(8, 12));
        GstBuffer* const buffer = frame.buffer(false);
        const BufferPointer keep(gst_buffer_ref(buffer));
        EXPECT_EQ(GST_FLOW_OK, element.push(buffer));
        return element.pull().get() == buffer;
    };
    EXPECT_TRUE(pushed("GRAY8", "GRAY8"));
    EXPECT_FALSE(pushed("GRAY16_BE", "GRAY16_LE"));
    EXPECT_FALSE(pushed("GRAY8", "GRAY16_LE"));
    EXPECT_FALSE(pushed("rggb", "GRAY8"));
    EXPECT_TRUE(pushed("GRAY16_LE", "GRAY16_LE"));
    EXPECT_FALSE(pushed("GRAY8", "RGB"));
}

TEST(Running, SendersMayPadRowsAsTheyLike) {
    Element element;
    element.setCaps(input("rggb12le").caps(8, 10), output("RGB").caps(8, 10));
    const CapsPointer caps = capsOf(input("rggb12le").caps(8, 10));
    GstQuery* const query = gst_query_new_allocation(caps.get(), TRUE);
    EXPECT_TRUE(gst_pad_peer_query(element.harness()->srcpad, query));
    EXPECT_TRUE(gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr));
    gst_query_unref(query);
}

TEST(Running, EndsAndBeginsAgain) {
    const TestFrame frame(input("pGEE"), largeHeight, largeWidth);
    reference::Scene scene = frame.scene();
    Element element;
    setThreads(element, 3);
    for (int run = 0; run < 3; ++run) {
        element.setCaps(frame.input->caps(largeHeight, largeWidth), output("BGR").caps(largeHeight, largeWidth));
        ASSERT_EQ(GST_FLOW_OK, element.push(frame.buffer(false))) << element.postedError();
        EXPECT_EQ("",
                  differenceOf(element.pull().get(), output("BGR"), largeHeight, largeWidth, scene, Method::edge));
        ASSERT_TRUE(gst_harness_push_event(element.harness(), gst_event_new_eos()));
        bool ended = false;
        while (const auto event = std::unique_ptr<GstEvent, Unref>(gst_harness_try_pull_event(element.harness()))) {
            ended = ended || GST_EVENT_TYPE(event.get()) == GST_EVENT_EOS;
        }
        EXPECT_TRUE(ended);
        EXPECT_EQ(GST_FLOW_EOS, element.push(frame.buffer(false)));
        ASSERT_TRUE(gst_harness_push_event(element.harness(), gst_event_new_flush_start()));
        ASSERT_TRUE(gst_harness_push_event(element.harness(), gst_event_new_flush_stop(TRUE)));
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_TIME);
        ASSERT_TRUE(gst_harness_push_event(element.harness(), gst_event_new_segment(&segment)));
    }
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, gst_element_set_state(element.element(), GST_STATE_NULL));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, gst_element_set_state(element.element(), GST_STATE_PAUSED));
}

}  // namespace
