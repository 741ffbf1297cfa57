// V4L2's records and what they mean, without a device.
#include "v4l2_formats.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using kro::PixelFormat;

struct Known {
    const char* letters;
    const char* name;
};

// The four letters as `v4l2-ctl --list-formats` shows them, from the kernel's documentation of each format.
constexpr Known known[] = {
    {"GREY", "Mono8"},     {"Y10 ", "Mono10"},    {"Y12 ", "Mono12"},    {"Y14 ", "Mono14"},    {"Y16 ", "Mono16"},
    {"Y10P", "Y10P"},      {"RGGB", "BayerRG8"},  {"GRBG", "BayerGR8"},  {"GBRG", "BayerGB8"},  {"BA81", "BayerBG8"},
    {"RG10", "BayerRG10"}, {"BA10", "BayerGR10"}, {"GB10", "BayerGB10"}, {"BG10", "BayerBG10"}, {"RG12", "BayerRG12"},
    {"BA12", "BayerGR12"}, {"GB12", "BayerGB12"}, {"BG12", "BayerBG12"}, {"RG14", "BayerRG14"}, {"GR14", "BayerGR14"},
    {"GB14", "BayerGB14"}, {"BG14", "BayerBG14"}, {"RG16", "BayerRG16"}, {"GR16", "BayerGR16"}, {"GB16", "BayerGB16"},
    {"BYR2", "BayerBG16"}, {"pRAA", "SRGGB10P"},  {"pgAA", "SGRBG10P"},  {"pGAA", "SGBRG10P"},  {"pBAA", "SBGGR10P"},
    {"pRCC", "SRGGB12P"},  {"pgCC", "SGRBG12P"},  {"pGCC", "SGBRG12P"},  {"pBCC", "SBGGR12P"},  {"pREE", "SRGGB14P"},
    {"pgEE", "SGRBG14P"},  {"pGEE", "SGBRG14P"},  {"pBEE", "SBGGR14P"},  {"Y12P", "Y12P"},      {"Y14P", "Y14P"}};

std::uint32_t codeOf(const char* letters) { return v4l2_fourcc(letters[0], letters[1], letters[2], letters[3]); }

v4l2_pix_format promise(const char* letters, std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                        std::uint32_t size) {
    v4l2_pix_format format{};
    format.pixelformat = codeOf(letters);
    format.width = width;
    format.height = height;
    format.bytesperline = stride;
    format.sizeimage = size;
    return format;
}

std::string refusal(const v4l2_pix_format& format) {
    try {
        kro_camera::frameOfV4l2(format);
    } catch (const kro_camera::Failure& failure) {
        return failure.what();
    }
    return "";
}

TEST(V4l2Formats, EveryCodeIsItsFormatAndBack) {
    for (const Known& one : known) {
        const auto format = kro_camera::formatOfV4l2(codeOf(one.letters));
        ASSERT_TRUE(format.has_value()) << one.letters;
        EXPECT_EQ(kro::nameOf(*format), one.name);
        EXPECT_EQ(kro_camera::v4l2CodeOf(*format), codeOf(one.letters)) << one.name;
        EXPECT_EQ(kro_camera::lettersOf(codeOf(one.letters)), one.letters);
    }
}

TEST(V4l2Formats, OthersAreNone) {
    for (const char* letters : {"YUYV", "MJPG", "RGB3", "AR24", "bRA8", "Y16B"}) {
        EXPECT_FALSE(kro_camera::formatOfV4l2(codeOf(letters)).has_value()) << letters;
    }
    // PFNC's codes are no four letters, and what V4L2 lacks has no code.
    EXPECT_FALSE(kro_camera::formatOfV4l2(KRO_BAYER_RG8).has_value());
    EXPECT_EQ(kro_camera::v4l2CodeOf(PixelFormat::BayerRG12Packed), 0u);
    EXPECT_EQ(kro_camera::v4l2CodeOf(PixelFormat::BayerRG12p), 0u);
    EXPECT_EQ(kro_camera::v4l2CodeOf(PixelFormat::RGB8), 0u);
    EXPECT_EQ(kro_camera::lettersOf(KRO_BAYER_RG8), "????");
}

TEST(V4l2Formats, RowsAreAsFarApartAsTheDriverSays) {
    const kro::Frame padded = kro_camera::frameOfV4l2(promise("pRAA", 1640, 1232, 2080, 2080 * 1232));
    EXPECT_EQ(padded.width, 1640);
    EXPECT_EQ(padded.height, 1232);
    EXPECT_EQ(padded.stride, 2080);
    EXPECT_EQ(padded.format, PixelFormat::SRGGB10P);
    EXPECT_EQ(padded.data, nullptr);
    // 5 bytes for 4 samples, 10 wide: 3 groups a row, of which the third is half empty.
    EXPECT_EQ(kro_camera::frameOfV4l2(promise("pRAA", 10, 4, 0, 0)).stride, 15);
}

TEST(V4l2Formats, PromisesThatCannotBeAreRefused) {
    EXPECT_EQ(refusal(promise("YUYV", 640, 480, 1280, 0)), "frames of format 'YUYV', which kro does not read");
    EXPECT_EQ(refusal(promise("RG10", 640, 480, 1279, 0)),
              "rows of 1279 bytes, expected 1280 or more for 640x480 BayerRG10");
    EXPECT_EQ(refusal(promise("RGGB", 3, 480, 0, 0)), "frames of 3x480, expected 4x4 or more");
    EXPECT_EQ(refusal(promise("RGGB", 640, 0xffffffffu, 0, 0)), "frames of 640x4294967295, expected 4x4 or more");
    EXPECT_EQ(refusal(promise("RGGB", 640, 480, 704, 704 * 479 + 639)),
              "buffers of 337855 bytes, expected 337856 or more");
    EXPECT_EQ(refusal(promise("RGGB", 640, 480, 704, 704 * 479 + 640)), "");
}

TEST(V4l2Formats, FramesAreWholeOrNot) {
    const kro::Frame frame = kro_camera::frameOfV4l2(promise("RGGB", 64, 4, 80, 320));
    v4l2_buffer buffer{};
    buffer.bytesused = 3 * 80 + 64;
    buffer.length = 320;
    EXPECT_TRUE(kro_camera::isWhole(frame, buffer));
    buffer.bytesused -= 1;
    EXPECT_FALSE(kro_camera::isWhole(frame, buffer));
    buffer.bytesused = 320;
    buffer.flags = V4L2_BUF_FLAG_ERROR;
    EXPECT_FALSE(kro_camera::isWhole(frame, buffer));
    buffer.flags = V4L2_BUF_FLAG_MAPPED;
    buffer.length = 3 * 80 + 63;
    EXPECT_FALSE(kro_camera::isWhole(frame, buffer));
}

TEST(V4l2Formats, NumbersOfFramesTellWhatIsMissing) {
    EXPECT_EQ(kro_camera::missingBetween(7, 8), 0u);
    EXPECT_EQ(kro_camera::missingBetween(7, 11), 3u);
    EXPECT_EQ(kro_camera::missingBetween(0xffffffffu, 0), 0u);
    EXPECT_EQ(kro_camera::missingBetween(0xfffffffeu, 1), 2u);
    // A driver that does not count.
    EXPECT_EQ(kro_camera::missingBetween(0, 0), 0u);
}

TEST(V4l2Formats, SizesOfARangeAreUsualOnes) {
    const auto sizes = kro_camera::usualSizes({{32, 16}, {2000, 1100}, {8, 2}});
    std::string text;
    for (const kro_camera::Size& size : sizes) {
        text += kro_camera::textOf(size) + " ";
    }
    EXPECT_EQ(text, "2000x1100 1920x1080 1280x960 1280x720 640x480 320x240 ");
}

}  // namespace
