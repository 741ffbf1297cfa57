#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cli {

// The smallest frame that the library takes, in both directions.
constexpr int32_t leastSide = 4;

struct FrameSize {
    int32_t width = 0;
    int32_t height = 0;

    std::size_t samples() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
    std::string text() const;
};

// Sizes that cameras really have, by width.
const std::vector<FrameSize>& usualSizes();

// "1280x960"; a usage failure that says what is expected for anything else.
FrameSize parseFrameSize(const std::string& text);

// A failure where the library takes no such frame.
void requireFrameSize(const FrameSize& size, const std::string& name);

// The first WIDTHxHEIGHT in a file name that the library takes.
std::optional<FrameSize> findFrameSize(const std::string& fileName);

}  // namespace cli
