// Every caps to every caps: pictures beside the reference's, at odd sizes, rows at all kinds of places.
#include <gtest/gtest.h>

#include "support.hpp"

namespace {

using namespace gsttest;

struct Size {
    int height, width;
};
constexpr const char* algorithms[] = {"nearest", "bilinear", "edge", "fine"};

size_t even(size_t bytes) { return bytes + bytes % 2; }

// A receiver with room around the rows of each plane; every other one from its last row up.
Receiver roomy(const Output& output, int width, bool apart) {
    Receiver receiver;
    for (size_t i = 0; i < output.planes.size(); ++i) {
        receiver.planes.push_back({6 + 2 * i, even(output.rowBytes(i, width)) + 2 + 4 * i, i % 2 == 1});
    }
    receiver.apart = apart;
    return receiver;
}

class EveryCaps : public testing::TestWithParam<int> {
protected:
    static const Input& in() { return inputs()[static_cast<size_t>(GetParam())]; }

    void expectAll(const TestFrame& frame, bool withMeta, bool roomyReceiver) {
        reference::Scene scene = frame.scene();
        for (const Output& out : outputs()) {
            if (roomyReceiver) {
                element_.receiveIn(roomy(out, frame.width, out.planes.size() % 2 == 1), out, frame.height,
                                   frame.width);
            }
            element_.setCaps(in().caps(frame.height, frame.width), out.caps(frame.height, frame.width));
            for (int algorithm = 0; algorithm < 4; ++algorithm) {
                gst_util_set_object_arg(G_OBJECT(element_.element()), "algorithm", algorithms[algorithm]);
                ASSERT_EQ(GST_FLOW_OK, element_.push(frame.buffer(withMeta))) << element_.postedError();
                const BufferPointer picture = element_.pull();
                if (in().name == out.name) {
                    ASSERT_NE(nullptr, picture);
                    EXPECT_EQ(0, gst_buffer_memcmp(picture.get(), 0, frame.bytes.data(), frame.bytes.size()));
                    continue;
                }
                EXPECT_EQ("", differenceOf(picture.get(), out, frame.height, frame.width, scene,
                                           static_cast<reference::Method>(algorithm)));
                if (roomyReceiver) {
                    EXPECT_EQ("", writtenGapsOf(picture.get(), out, frame.height, frame.width));
                }
                ASSERT_FALSE(HasFailure()) << in().name << " " << frame.height << " x " << frame.width;
            }
        }
    }

    Element element_;
};

TEST_P(EveryCaps, UsualRowsWithoutMeta) {
    for (const Size size : {Size{4, 4}, Size{7, 5}, Size{5, 19}, Size{9, 131}}) {
        expectAll(TestFrame(in(), size.height, size.width), false, false);
    }
}

TEST_P(EveryCaps, RowsAtAnyPlaceByMeta) {
    bool upwards = false;
    for (const Size size : {Size{5, 7}, Size{6, 35}, Size{11, 66}}) {
        const Place place{10, even(in().rowBytes(size.width)) + 6, upwards};
        expectAll(TestFrame(in(), size.height, size.width, place), true, true);
        upwards = !upwards;
    }
}

INSTANTIATE_TEST_SUITE_P(Caps, EveryCaps, testing::Range(0, static_cast<int>(inputs().size())),
                         [](const auto& one) { return inputs()[static_cast<size_t>(one.param)].name; });

TEST(EveryCapsList, IsTheElements) {
    const Element element;
    const auto listed = [&](const char* pad) {
        GstPadTemplate* const made = gst_element_get_pad_template(element.element(), pad);
        const CapsPointer caps(gst_pad_template_get_caps(made));
        guint count = 0;
        for (guint i = 0; i < gst_caps_get_size(caps.get()); ++i) {
            count +=
                gst_value_list_get_size(gst_structure_get_value(gst_caps_get_structure(caps.get(), i), "format"));
        }
        return count;
    };
    EXPECT_EQ(inputs().size(), listed("sink"));
    EXPECT_EQ(outputs().size(), listed("src"));
}

}  // namespace
