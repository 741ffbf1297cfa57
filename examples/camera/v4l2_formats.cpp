#include "v4l2_formats.hpp"

namespace kro_camera {

namespace {

using kro::PixelFormat;

struct Pair {
    std::uint32_t code;
    PixelFormat format;
};

// CSI-2 packings are not among them: kro has V4L2's codes for those. The codes that are spelt out are in headers of
// later kernels only.
constexpr Pair pairs[] = {
    {V4L2_PIX_FMT_GREY, PixelFormat::Mono8},        {V4L2_PIX_FMT_Y10, PixelFormat::Mono10},
    {V4L2_PIX_FMT_Y12, PixelFormat::Mono12},        {V4L2_PIX_FMT_Y14, PixelFormat::Mono14},
    {V4L2_PIX_FMT_Y16, PixelFormat::Mono16},        {V4L2_PIX_FMT_SRGGB8, PixelFormat::BayerRG8},
    {V4L2_PIX_FMT_SGRBG8, PixelFormat::BayerGR8},   {V4L2_PIX_FMT_SGBRG8, PixelFormat::BayerGB8},
    {V4L2_PIX_FMT_SBGGR8, PixelFormat::BayerBG8},   {V4L2_PIX_FMT_SRGGB10, PixelFormat::BayerRG10},
    {V4L2_PIX_FMT_SGRBG10, PixelFormat::BayerGR10}, {V4L2_PIX_FMT_SGBRG10, PixelFormat::BayerGB10},
    {V4L2_PIX_FMT_SBGGR10, PixelFormat::BayerBG10}, {V4L2_PIX_FMT_SRGGB12, PixelFormat::BayerRG12},
    {V4L2_PIX_FMT_SGRBG12, PixelFormat::BayerGR12}, {V4L2_PIX_FMT_SGBRG12, PixelFormat::BayerGB12},
    {V4L2_PIX_FMT_SBGGR12, PixelFormat::BayerBG12}, {V4L2_PIX_FMT_SRGGB14, PixelFormat::BayerRG14},
    {V4L2_PIX_FMT_SGRBG14, PixelFormat::BayerGR14}, {V4L2_PIX_FMT_SGBRG14, PixelFormat::BayerGB14},
    {V4L2_PIX_FMT_SBGGR14, PixelFormat::BayerBG14}, {V4L2_PIX_FMT_SRGGB16, PixelFormat::BayerRG16},
    {V4L2_PIX_FMT_SGRBG16, PixelFormat::BayerGR16}, {V4L2_PIX_FMT_SGBRG16, PixelFormat::BayerGB16},
    {V4L2_PIX_FMT_SBGGR16, PixelFormat::BayerBG16},
};

// PFNC's codes have bit 24 set and bits 25 to 31 clear in all formats of frames; four letters are something else.
bool isFourLetters(PixelFormat format) { return (static_cast<std::uint32_t>(format) >> 24) != 1; }

}  // namespace

std::optional<PixelFormat> formatOfV4l2(std::uint32_t code) {
    for (const Pair& pair : pairs) {
        if (pair.code == code) {
            return pair.format;
        }
    }
    const auto format = static_cast<PixelFormat>(code);
    return isFourLetters(format) && isFrameFormat(format) ? std::optional(format) : std::nullopt;
}

std::uint32_t v4l2CodeOf(PixelFormat format) {
    for (const Pair& pair : pairs) {
        if (pair.format == format) {
            return pair.code;
        }
    }
    return isFourLetters(format) && isFrameFormat(format) ? static_cast<std::uint32_t>(format) : 0;
}

std::string lettersOf(std::uint32_t code) {
    std::string letters;
    for (int shift = 0; shift < 32; shift += 8) {
        const char letter = static_cast<char>((code >> shift) & 0x7f);
        letters += letter >= ' ' && letter <= '~' ? letter : '?';
    }
    return letters;
}

kro::Frame frameOfV4l2(const v4l2_pix_format& promised) {
    const std::optional<PixelFormat> format = formatOfV4l2(promised.pixelformat);
    if (!format) {
        throw Failure("frames of format '" + lettersOf(promised.pixelformat) + "', which kro does not read");
    }
    constexpr std::uint32_t most = 1u << 30;
    if (promised.width < 4 || promised.height < 4 || promised.width > most || promised.height > most) {
        throw Failure("frames of " + std::to_string(promised.width) + "x" + std::to_string(promised.height) +
                      ", expected 4x4 or more");
    }
    kro::Frame frame{nullptr, static_cast<std::int32_t>(promised.height), static_cast<std::int32_t>(promised.width),
                     *format, static_cast<std::ptrdiff_t>(promised.bytesperline)};
    const std::ptrdiff_t row = kro::rowBytes(*format, frame.width);
    // Drivers that leave it at 0 mean rows without gaps, each of whole groups of packed samples.
    if (frame.stride == 0) {
        frame.stride = row;
    }
    if (frame.stride < row) {
        throw Failure("rows of " + std::to_string(frame.stride) + " bytes, expected " + std::to_string(row) +
                      " or more for " + textOf(Mode{*format, {frame.width, frame.height}}));
    }
    if (promised.sizeimage != 0 && promised.sizeimage < sampleBytes(frame)) {
        throw Failure("buffers of " + std::to_string(promised.sizeimage) + " bytes, expected " +
                      std::to_string(sampleBytes(frame)) + " or more");
    }
    return frame;
}

bool isWhole(const kro::Frame& frame, const v4l2_buffer& buffer) {
    return (buffer.flags & V4L2_BUF_FLAG_ERROR) == 0 && buffer.bytesused >= sampleBytes(frame) &&
           buffer.length >= sampleBytes(frame);
}

std::uint32_t missingBetween(std::uint32_t before, std::uint32_t now) { return now == before ? 0 : now - before - 1; }

}  // namespace kro_camera
