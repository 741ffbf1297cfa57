// Buffers that are, and buffers that are not, what caps and metas say.
#include <gst/check/gstharness.h>
#include <gtest/gtest.h>

#include <functional>

#include "support.hpp"

namespace {

using namespace gsttest;
using reference::Method;
using testing::Test;

class Buffers : public Test {
protected:
    // Makes a BGR picture of it and holds it against the reference.
    void expectTaken(const TestFrame& frame, GstBuffer* buffer) {
        reference::Scene scene = frame.scene();
        element_.setCaps(frame.input->caps(frame.height, frame.width), output("BGR").caps(frame.height, frame.width));
        ASSERT_EQ(GST_FLOW_OK, element_.push(buffer)) << element_.postedError();
        EXPECT_EQ("",
                  differenceOf(element_.pull().get(), output("BGR"), frame.height, frame.width, scene, Method::edge));
    }
    // Says why, makes nothing, and takes the next frame.
    void expectRefused(const TestFrame& frame, GstBuffer* buffer, const std::vector<std::string>& reasons) {
        element_.setCaps(frame.input->caps(frame.height, frame.width), output("BGR").caps(frame.height, frame.width));
        EXPECT_EQ(GST_FLOW_ERROR, element_.push(buffer));
        const std::string error = element_.postedError();
        for (const std::string& reason : reasons) {
            EXPECT_NE(std::string::npos, error.find(reason)) << reason << " is not in:\n" << error;
        }
        EXPECT_EQ(nullptr, element_.pull());
        expectTaken(frame, frame.buffer(true));
    }

    Element element_;
};

TEST_F(Buffers, RowsWithoutGapsAreTaken) {
    for (const Input& in : inputs()) {
        const TestFrame frame(in, 6, 33, {0, in.rowBytes(33), false});
        expectTaken(frame, frame.buffer(false));
    }
}

TEST_F(Buffers, RowsPaddedByDriversAreTaken) {
    const TestFrame frame(input("pRAA"), 8, 1640, {0, 2080, false});
    expectTaken(frame, frame.buffer(false));
    const TestFrame deep(input("rggb12le"), 5, 18, {0, 80, false});
    expectRefused(deep, deep.buffer(false), {"400", "200", "18 x 5 rggb12le", "GstVideoMeta"});
}

TEST_F(Buffers, OneByteLessIsSaid) {
    for (const Input& in : inputs()) {
        TestFrame frame(in, 6, 37);
        GstBuffer* const buffer = bufferOf(Bytes(frame.bytes.begin(), frame.bytes.end() - 1));
        expectRefused(frame, buffer,
                      {"a frame of " + std::to_string(frame.bytes.size() - 1) + " bytes",
                       "expected " + std::to_string(frame.bytes.size()), in.name, "37 x 6"});
    }
}

TEST_F(Buffers, OtherSizesAreSaid) {
    const TestFrame frame(input("rggb"), 8, 16);
    for (const size_t size : {size_t{0}, size_t{1}, size_t{129}, size_t{136}, size_t{256}, size_t{192 * 8}}) {
        expectRefused(frame, bufferOf(noise(size, 1)),
                      {"a frame of " + std::to_string(size) + " bytes", "expected 128"});
    }
}

TEST_F(Buffers, OfRawVideoMoreBytesAreTaken) {
    TestFrame frame(input("GRAY8"), 6, 33);
    frame.bytes.resize(frame.bytes.size() + 6 * 4);
    expectTaken(frame, frame.buffer(false));
}

using Change = std::function<void(GstVideoMeta&)>;

TEST_F(Buffers, MetasThatLeadOutsideAreSaid) {
    const TestFrame frame(input("gbrg12le"), 6, 18, {8, 40, false});
    const std::vector<Change> changes = {
        [](GstVideoMeta& m) { m.offset[0] += 1000; },
        [](GstVideoMeta& m) { m.offset[0] = G_MAXSIZE; },
        [](GstVideoMeta& m) { m.offset[0] = static_cast<gsize>(G_MAXINT64); },
        [](GstVideoMeta& m) { m.offset[0] += 8; },
        [](GstVideoMeta& m) { m.stride[0] = 34; },
        [](GstVideoMeta& m) { m.stride[0] = 0; },
        [](GstVideoMeta& m) { m.stride[0] = 48; },
        [](GstVideoMeta& m) { m.stride[0] = -40; },
        [](GstVideoMeta& m) { m.stride[0] = G_MAXINT; },
        [](GstVideoMeta& m) { m.stride[0] = G_MININT; },
        [](GstVideoMeta& m) { m.width = 17; },
        [](GstVideoMeta& m) { m.height = 5; },
        [](GstVideoMeta& m) { m.n_planes = 0; },
    };
    for (const Change& change : changes) {
        GstBuffer* const buffer = frame.buffer(true);
        change(*gst_buffer_get_video_meta(buffer));
        expectRefused(frame, buffer, {"A frame is not what its caps say", "expected"});
    }
}

TEST_F(Buffers, MetasOfOtherRawVideoAreSaid) {
    const TestFrame frame(input("GRAY16_LE"), 6, 18);
    GstBuffer* const buffer = frame.buffer(true);
    gst_buffer_get_video_meta(buffer)->format = GST_VIDEO_FORMAT_GRAY8;
    expectRefused(frame, buffer, {"GRAY8", "expected 18 x 6 GRAY16_LE"});
}

TEST_F(Buffers, WordsAtOddPlacesAreSaid) {
    const TestFrame odd(input("bggr16le"), 6, 18, {1, 40, false});
    element_.setCaps(odd.input->caps(6, 18), output("BGR").caps(6, 18));
    EXPECT_EQ(GST_FLOW_ERROR, element_.push(odd.buffer(true)));
    EXPECT_NE(std::string::npos, element_.postedError().find("odd address"));
    EXPECT_EQ(nullptr, element_.pull());
}

TEST_F(Buffers, FramesInSeveralMemories) {
    for (const bool withMeta : {false, true}) {
        const TestFrame frame(input("rggb12p"), 7, 30);
        const BufferPointer whole(frame.buffer(withMeta));
        GstBuffer* const parts = gst_buffer_new();
        gst_buffer_copy_into(parts, whole.get(), GST_BUFFER_COPY_META, 0, static_cast<gsize>(-1));
        gsize from = 0;
        for (const gsize to : {gsize{1}, gsize{100}, gsize{101}, frame.bytes.size()}) {
            GstBuffer* const part = bufferOf(Bytes(frame.bytes.begin() + static_cast<ptrdiff_t>(from),
                                                   frame.bytes.begin() + static_cast<ptrdiff_t>(to)));
            gst_buffer_append_memory(parts, gst_buffer_get_all_memory(part));
            gst_buffer_unref(part);
            from = to;
        }
        ASSERT_EQ(4U, gst_buffer_n_memory(parts));
        expectTaken(frame, parts);
    }
}

// ---- the receiver's buffers ----

class Receivers : public Test {
protected:
    void expectRefused(const Receiver& receiver, const char* name, const char* reason) {
        const TestFrame frame(input("grbg"), 6, 10);
        Element element;
        element.receiveIn(receiver, output(name), 6, 10);
        element.setCaps(frame.input->caps(6, 10), output(name).caps(6, 10));
        EXPECT_EQ(GST_FLOW_ERROR, element.push(frame.buffer(false)));
        const std::string error = element.postedError();
        EXPECT_NE(std::string::npos, error.find(reason)) << error;
        EXPECT_EQ(nullptr, element.pull());
    }
};

TEST_F(Receivers, BuffersThatAreTooSmallAreSaid) {
    Receiver receiver;
    receiver.tooSmall = true;
    receiver.planes = {{0, 40, false}};
    expectRefused(receiver, "RGBA", "A picture is not what its caps say");
    receiver.planes = {{0, 12, false}, {0, 12, false}, {0, 12, false}};
    expectRefused(receiver, "RGBP", "expected 6 rows of 10 bytes, 12 apart");
}

TEST_F(Receivers, RowsTooCloseAreSaid) {
    Receiver receiver;
    receiver.planes = {{60, 38, false}};
    expectRefused(receiver, "RGBA", "rows of 40 bytes are 38 bytes apart, expected at least 40");
}

TEST_F(Receivers, OtherFormatsAreSaid) {
    Receiver receiver;
    receiver.planes = {{0, 40, false}};
    receiver.otherMeta = true;
    expectRefused(receiver, "RGBA", "NV12");
}

TEST_F(Receivers, WordsAtOddPlacesAreSaid) {
    Receiver receiver;
    receiver.planes = {{0, 81, false}};
    expectRefused(receiver, "ARGB64", "odd");
}

TEST_F(Receivers, NoMemoryIsSaid) {
    Receiver receiver;
    receiver.planes = {{0, 40, false}};
    receiver.refuses = true;
    expectRefused(receiver, "RGBA", "No memory for a picture");
}

}  // namespace
