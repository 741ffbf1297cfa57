#include "modes.hpp"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace kro_camera {

// kroConvertView looks at the frame's format before the picture's, so a picture of no format tells them apart.
bool isFrameFormat(kro::PixelFormat format) {
    std::uint16_t samples = 0;
    std::error_code error;
    kro::convert({&samples, 4, 4, format}, {&samples, kro::PixelFormat{}}, {}, error);
    return error == kro::Error::outputFormat;
}

std::string textOf(const Size& size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

std::string textOf(const Mode& mode) { return textOf(mode.size) + " " + std::string(kro::nameOf(mode.format)); }

std::string counted(std::uint64_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

Size sizeNamed(const std::string& text) {
    Size size;
    const char* const end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, size.width);
    if (width.ec == std::errc() && width.ptr != end && *width.ptr == 'x') {
        const auto height = std::from_chars(width.ptr + 1, end, size.height);
        if (height.ec == std::errc() && height.ptr == end && size.width >= 4 && size.height >= 4) {
            return size;
        }
    }
    throw UsageFailure("size '" + text + "': expected WIDTHxHEIGHT, such as 1280x960, of 4 or more each");
}

kro::PixelFormat formatNamed(const std::string& text) {
    // SRGGB12P and BayerRG12p differ in their last letter alone, so names are taken as they are spelt.
    for (const kro::NamedFormat& named : kro::pixelFormats) {
        if (named.name == text && isFrameFormat(named.format)) {
            return named.format;
        }
    }
    throw UsageFailure("format '" + text +
                       "': expected the name of a frame's format, such as BayerRG12p or SRGGB10P");
}

namespace {

// The largest step of the bounds that does not exceed the wanted number.
std::int32_t stepped(std::int32_t least, std::int32_t most, std::int32_t step, std::int32_t wanted) {
    const std::int32_t inside = std::min(std::max(wanted, least), most);
    return least + (inside - least) / std::max(step, 1) * std::max(step, 1);
}

}  // namespace

Size within(const SizeBounds& bounds, const Size& wanted) {
    return {stepped(bounds.least.width, bounds.most.width, bounds.step.width, wanted.width),
            stepped(bounds.least.height, bounds.most.height, bounds.step.height, wanted.height)};
}

std::vector<Size> usualSizes(const SizeBounds& bounds) {
    std::vector<Size> sizes{within(bounds, bounds.most)};
    for (const Size usual : {Size{4096, 3000}, Size{2448, 2048}, Size{1920, 1080}, Size{1280, 960}, Size{1280, 720},
                             Size{640, 480}, Size{320, 240}}) {
        if (within(bounds, usual) == usual && !(usual == sizes.front())) {
            sizes.push_back(usual);
        }
    }
    return sizes;
}

std::size_t sampleBytes(const kro::Frame& frame) {
    if (frame.stride == 0) {
        const std::int64_t samples = std::int64_t{frame.width} * frame.height;
        if (samples > std::numeric_limits<std::int32_t>::max()) {
            throw Failure("frames of " + textOf(Size{frame.width, frame.height}) + " are too large for this program");
        }
        return static_cast<std::size_t>(kro::rowBytes(frame.format, static_cast<std::int32_t>(samples)));
    }
    return static_cast<std::size_t>(frame.stride) * static_cast<std::size_t>(frame.height - 1) +
           static_cast<std::size_t>(kro::rowBytes(frame.format, frame.width));
}

std::size_t frameBytes(const kro::Frame& frame) {
    return frame.stride == 0 ? sampleBytes(frame)
                             : static_cast<std::size_t>(frame.stride) * static_cast<std::size_t>(frame.height);
}

}  // namespace kro_camera
