#include "frame_size.hpp"

#include <limits>
#include <regex>

#include "failure.hpp"

namespace cli {

namespace {

bool fits(int64_t width, int64_t height) {
    return width >= leastSide && height >= leastSide && width * height <= std::numeric_limits<int32_t>::max();
}

std::optional<FrameSize> makeSize(const std::smatch& match) {
    const int64_t width = std::stoll(match[1].str());
    const int64_t height = std::stoll(match[2].str());
    if (!fits(width, height)) {
        return std::nullopt;
    }
    return FrameSize{static_cast<int32_t>(width), static_cast<int32_t>(height)};
}

}  // namespace

std::string FrameSize::text() const { return std::to_string(width) + "x" + std::to_string(height); }

FrameSize parseFrameSize(const std::string& text) {
    static const std::regex pattern("([0-9]{1,9})[xX*]([0-9]{1,9})");
    std::smatch match;
    if (!std::regex_match(text, match, pattern)) {
        throw UsageFailure("bad size '" + text + "', expected WIDTHxHEIGHT such as 1280x960");
    }
    if (const std::optional<FrameSize> size = makeSize(match)) {
        return *size;
    }
    throw UsageFailure("bad size '" + text + "', expected at least 4x4 and fewer than 2^31 samples");
}

std::optional<FrameSize> findFrameSize(const std::string& fileName) {
    static const std::regex pattern("([1-9][0-9]{0,8})[xX]([1-9][0-9]{0,8})");
    for (std::sregex_iterator it(fileName.begin(), fileName.end(), pattern), end; it != end; ++it) {
        if (const std::optional<FrameSize> size = makeSize(*it)) {
            return size;
        }
    }
    return std::nullopt;
}

}  // namespace cli
