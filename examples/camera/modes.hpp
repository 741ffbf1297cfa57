// Formats and sizes, what they are called and how many bytes they take.
#pragma once

#include <cstddef>
#include <cstdint>
#include <kro/kro.hpp>
#include <stdexcept>
#include <string>
#include <vector>

namespace kro_camera {

// What went wrong, as the one line that is shown for it.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The program was called wrongly: nothing was attempted.
struct UsageFailure : Failure {
    using Failure::Failure;
};

struct Size {
    std::int32_t width = 0;
    std::int32_t height = 0;
};
inline bool operator==(const Size& a, const Size& b) { return a.width == b.width && a.height == b.height; }

// How a camera sends.
struct Mode {
    kro::PixelFormat format{};
    Size size;
};

// Among kro's formats are those of pictures, too.
bool isFrameFormat(kro::PixelFormat format);

std::string textOf(const Size& size);
std::string textOf(const Mode& mode);
// "1 frame", "2 frames".
std::string counted(std::uint64_t count, const std::string& what);
// Usage failures name the argument that is neither size nor format.
Size sizeNamed(const std::string& text);
kro::PixelFormat formatNamed(const std::string& text);

// Of the sizes that cameras usually have those that lie within the bounds, largest first; both bounds at least.
struct SizeBounds {
    Size least;
    Size most;
    Size step{1, 1};
};
std::vector<Size> usualSizes(const SizeBounds& bounds);
Size within(const SizeBounds& bounds, const Size& wanted);

// From the first sample to the last; the gap behind the last row is not counted.
std::size_t sampleBytes(const kro::Frame& frame);
// The same with that gap: how far frames lie apart in a recording.
std::size_t frameBytes(const kro::Frame& frame);

}  // namespace kro_camera
