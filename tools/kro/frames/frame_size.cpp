#include "frames/frame_size.hpp"

#include <cctype>
#include <limits>
#include <string_view>

#include "support/failure.hpp"
#include "support/scan.hpp"

namespace cli {

namespace {

bool fits(int64_t width, int64_t height) {
    constexpr int64_t most = std::numeric_limits<int32_t>::max();
    return width >= leastSide && height >= leastSide && width <= most / height;
}

std::optional<FrameSize> takeSize(std::string_view& text) {
    int64_t width = 0;
    int64_t height = 0;
    if (!takeNumber(text, width) || !takeAnyOf(text, "xX*") || !takeNumber(text, height) || !fits(width, height)) {
        return std::nullopt;
    }
    return FrameSize{static_cast<int32_t>(width), static_cast<int32_t>(height)};
}

}  // namespace

std::string FrameSize::text() const { return std::to_string(width) + "x" + std::to_string(height); }

const std::vector<FrameSize>& usualSizes() {
    static const std::vector<FrameSize> sizes{
        {640, 480},   {656, 492},   {659, 494},   {720, 540},   {728, 544},   {752, 480},   {768, 512},
        {782, 582},   {800, 600},   {1024, 768},  {1032, 778},  {1280, 720},  {1280, 800},  {1280, 960},
        {1280, 1024}, {1288, 964},  {1296, 966},  {1296, 972},  {1440, 1080}, {1456, 1088}, {1600, 1200},
        {1624, 1234}, {1640, 1232}, {1920, 1080}, {1920, 1200}, {1936, 1096}, {1936, 1216}, {2028, 1520},
        {2048, 1088}, {2048, 1536}, {2048, 2048}, {2064, 1544}, {2304, 1296}, {2448, 2048}, {2464, 2056},
        {2560, 1440}, {2560, 1920}, {2592, 1536}, {2592, 1944}, {2688, 1520}, {3072, 2048}, {3088, 2064},
        {3264, 2448}, {3280, 2464}, {3296, 2472}, {3840, 2160}, {3856, 2180}, {4000, 3000}, {4024, 3036},
        {4032, 3024}, {4056, 3040}, {4096, 2160}, {4096, 2304}, {4096, 3000}, {4096, 3072}, {4112, 3008},
        {4208, 3120}, {4608, 2592}, {4608, 3456}, {4656, 3496}, {5120, 5120}, {5320, 4600}, {5472, 3648},
        {5496, 3672}, {6000, 4000}};
    return sizes;
}

FrameSize parseFrameSize(const std::string& text) {
    std::string_view rest = text;
    const std::optional<FrameSize> size = takeSize(rest);
    if (!size || !rest.empty()) {
        throw UsageFailure("bad size '" + text +
                           "', expected WIDTHxHEIGHT such as 1280x960, at least 4x4 and fewer than 2^31 samples");
    }
    return *size;
}

void requireFrameSize(const FrameSize& size, const std::string& name) {
    const bool tooLarge = size.samples() > static_cast<std::size_t>(std::numeric_limits<int32_t>::max());
    if (size.width < leastSide || size.height < leastSide || tooLarge) {
        throw Failure(name + ": is " + size.text() + ", but a frame has at least 4x4 and fewer than 2^31 samples");
    }
}

std::optional<FrameSize> findFrameSize(const std::string& fileName) {
    for (std::size_t at = 0; at < fileName.size(); at++) {
        // Within a number there is no size to be found: 1040x30 is not 40x30.
        const bool withinNumber = at > 0 && std::isdigit(static_cast<unsigned char>(fileName[at - 1])) != 0;
        std::string_view rest = std::string_view(fileName).substr(at);
        if (const std::optional<FrameSize> size = withinNumber ? std::nullopt : takeSize(rest)) {
            return size;
        }
    }
    return std::nullopt;
}

}  // namespace cli
