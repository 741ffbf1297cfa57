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
