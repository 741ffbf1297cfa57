#include "recorded_file.hpp"

#include <charconv>
#include <filesystem>
#include <string_view>

#include "modes.hpp"

namespace kro_camera {

namespace {

constexpr std::string_view strideWord = "stride";

std::string nextPart(std::string& rest) {
    const std::size_t end = rest.find('_');
    std::string part = rest.substr(0, end);
    rest = end == std::string::npos ? std::string() : rest.substr(end + 1);
    return part;
}

bool takeStride(const std::string& part, kro::Frame& frame) {
    if (part.rfind(strideWord, 0) != 0) {
        return false;
    }
    const char* const end = part.data() + part.size();
    const auto result = std::from_chars(part.data() + strideWord.size(), end, frame.stride);
    return result.ec == std::errc() && result.ptr == end;
}

void takePart(const std::string& part, kro::Frame& frame) {
    if (takeStride(part, frame)) {
        return;
    }
    try {
        frame.format = formatNamed(part);
        return;
    } catch (const UsageFailure&) {
        // Something else, then.
    }
    try {
        const Size size = sizeNamed(part);
        frame.width = size.width;
        frame.height = size.height;
    } catch (const UsageFailure&) {
        // A part of the name that speaks of other things.
    }
}

}  // namespace

std::string layoutSuffix(const kro::Frame& frame) {
    std::string suffix = "_" + textOf(Size{frame.width, frame.height}) + "_" + std::string(kro::nameOf(frame.format));
    if (frame.stride != 0) {
        suffix += "_" + std::string(strideWord) + std::to_string(frame.stride);
    }
    return suffix;
}

std::optional<kro::Frame> layoutOfName(const std::string& path) {
    kro::Frame frame;
    std::string rest = std::filesystem::path(path).stem().string();
    while (!rest.empty()) {
        takePart(nextPart(rest), frame);
    }
    return frame.width != 0 && frame.format != kro::PixelFormat{} ? std::optional(frame) : std::nullopt;
}

}  // namespace kro_camera
