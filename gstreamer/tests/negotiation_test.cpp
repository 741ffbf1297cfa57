// What caps are agreed on, from either side, and what is refused.
#include <gtest/gtest.h>

#include "support.hpp"

namespace {

using namespace gsttest;

std::string chosen(const std::string& in, const std::string& offered) {
    Element element;
    element.setCaps(in, offered);
    const GstFlowReturn flow = element.push(bufferOf(noise(64 * 48 * 2, 1)));
    EXPECT_NE(GST_FLOW_NOT_NEGOTIATED, flow);
    return element.outputFormat();
}

const char mosaic[] = "video/x-bayer,format=rggb,width=64,height=48,framerate=25/1";

TEST(Negotiation, MosaicsBecomeColourOfEightBitsWhereTheyMay) {
    EXPECT_EQ("BGRx", chosen(mosaic, "ANY"));
    EXPECT_EQ("RGB", chosen(mosaic, "video/x-raw,format={GRAY8,ARGB64,RGB}"));
    EXPECT_EQ("RGBP", chosen(mosaic, "video/x-raw,format={GRAY16_LE,GRAY8,RGBA64_LE,I420,RGBP}"));
    EXPECT_EQ("RGBA64_LE", chosen(mosaic, "video/x-raw,format={GRAY8,RGBA64_LE}"));
    EXPECT_EQ("RGBA", chosen(mosaic, "video/x-raw,format=GRAY8;video/x-raw,format=RGBA"));
    EXPECT_EQ("RGB", chosen(mosaic, "video/x-raw,format=RGBA;video/x-raw,format=RGB"));
    EXPECT_EQ("GRAY8", chosen(mosaic, "video/x-raw,format=GRAY8"));
}

TEST(Negotiation, GreyStaysGreyOfItsDepth) {
    const std::string size = ",width=64,height=48,framerate=25/1";
    EXPECT_EQ("GRAY8", chosen("video/x-raw,format=GRAY8" + size, "ANY"));
    EXPECT_EQ("GRAY8", chosen("video/x-raw,format=GRAY8" + size, "video/x-raw,format={RGB,GRAY16_LE,GRAY8}"));
    EXPECT_EQ("GRAY16_LE", chosen("video/x-raw,format=GRAY16_LE" + size, "video/x-raw,format={RGB,GRAY8,GRAY16_LE}"));
    EXPECT_EQ("GRAY16_LE", chosen("video/x-raw,format=GRAY16_BE" + size, "ANY"));
    EXPECT_EQ("GRAY8", chosen("video/x-raw,format=GRAY16_LE" + size, "video/x-raw,format={RGB,GRAY8}"));
    EXPECT_EQ("BGR", chosen("video/x-raw,format=GRAY8" + size, "video/x-raw,format={ARGB,BGR}"));
}

TEST(Negotiation, AllButTheFormatStays) {
    Element element;
    element.setCaps(
        "video/x-bayer,format=gbrg12le,width=8,height=6,framerate=30000/1001,pixel-aspect-ratio=4/3,"
        "colorimetry=bt709",
        "video/x-raw,format=BGR");
    ASSERT_EQ(GST_FLOW_OK, element.push(bufferOf(noise(8 * 6 * 2, 1))));
    const CapsPointer caps(gst_pad_get_current_caps(element.harness()->sinkpad));
    const CapsPointer expected =
        capsOf("video/x-raw,format=BGR,width=8,height=6,framerate=30000/1001,pixel-aspect-ratio=4/3");
    EXPECT_TRUE(gst_caps_is_strictly_equal(caps.get(), expected.get())) << gst_caps_to_string(caps.get());
}

// What the sink pad takes while the receiver takes that.
CapsPointer takenFor(const std::string& receiver, const char* filter) {
    Element element;
    gst_harness_set_sink_caps_str(element.harness(), receiver.c_str());
    const std::unique_ptr<GstPad, void (*)(gpointer)> pad(gst_element_get_static_pad(element.element(), "sink"),
                                                          gst_object_unref);
    const CapsPointer wanted = capsOf(filter);
    return CapsPointer(gst_pad_query_caps(pad.get(), wanted.get()));
}

TEST(Negotiation, SendersLearnWhatTheReceiverTakes) {
    const CapsPointer caps = takenFor("video/x-raw,format=RGB,width=640,height=[1,480],framerate=25/1", "ANY");
    for (const Input& in : inputs()) {
        EXPECT_TRUE(gst_caps_can_intersect(caps.get(), capsOf(in.caps(480, 640)).get())) << in.name;
    }
    EXPECT_FALSE(gst_caps_can_intersect(caps.get(), capsOf(inputs()[0].caps(480, 641)).get()));
    EXPECT_FALSE(gst_caps_can_intersect(caps.get(), capsOf(inputs()[0].caps(481, 640)).get()));
    EXPECT_FALSE(gst_caps_can_intersect(caps.get(), capsOf("video/x-raw,format=RGB").get()));
    EXPECT_TRUE(gst_caps_is_empty(takenFor("video/x-raw,format=I420", "ANY").get()));
    EXPECT_TRUE(gst_caps_is_empty(takenFor("video/x-raw,format=RGB", "video/x-raw,format=NV12").get()));
}

TEST(Negotiation, TheSendersOrderDecides) {
    const CapsPointer caps =
        takenFor("video/x-raw,format=RGB", "video/x-bayer,format=rggb;video/x-bayer,format=bggr12p");
    ASSERT_EQ(2U, gst_caps_get_size(caps.get()));
    EXPECT_STREQ("rggb", gst_structure_get_string(gst_caps_get_structure(caps.get(), 0), "format"));
}

TEST(Negotiation, WhatIsNoFrameIsRefused) {
    for (const char* caps :
         {"video/x-bayer,format=rggb13le,width=8,height=8", "video/x-bayer,width=8,height=8",
          "video/x-bayer,format=rggb,width=3,height=8", "video/x-bayer,format=rggb,width=8,height=3",
          "video/x-bayer,format=rggb,width=8", "video/x-raw,format=RGB,width=8,height=8",
          "video/x-bayer,format=rggb,width=2147483647,height=2147483647"}) {
        Element element;
        element.setCaps(caps, "video/x-raw,format=BGR");
        EXPECT_NE(GST_FLOW_OK, element.push(bufferOf(noise(64, 1)))) << caps;
        EXPECT_EQ(nullptr, element.pull()) << caps;
    }
}

TEST(Negotiation, CapsChangeInMidStream) {
    Element element;
    uint32_t turn = 0;
    for (const char* in : {"rggb", "bggr12le", "rggb", "GRAY8", "pgCC", "GRAY16_BE", "gbrg10p"}) {
        for (const char* out : {"BGR", "ARGB64", "GRAY8", "GBR"}) {
            const int height = 6 + static_cast<int>(turn % 3), width = 9 + static_cast<int>(++turn % 5);
            const TestFrame frame(input(in), height, width);
            reference::Scene scene = frame.scene();
            element.setCaps(frame.input->caps(height, width), output(out).caps(height, width));
            for (int i = 0; i < 2; ++i) {
                ASSERT_EQ(GST_FLOW_OK, element.push(frame.buffer(false))) << element.postedError();
                const BufferPointer picture = element.pull();
                if (std::string(in) == out) {  // grey to grey
                    EXPECT_EQ(0, gst_buffer_memcmp(picture.get(), 0, frame.bytes.data(), frame.bytes.size()));
                } else {
                    EXPECT_EQ(
                        "", differenceOf(picture.get(), output(out), height, width, scene, reference::Method::edge));
                }
            }
        }
    }
}

}  // namespace
