// What V4L2's records mean to kro. No device is touched here.
#pragma once

#include <linux/videodev2.h>

#include <cstdint>
#include <kro/kro.hpp>
#include <optional>
#include <string>

#include "modes.hpp"

namespace kro_camera {

// None where kro does not read it.
std::optional<kro::PixelFormat> formatOfV4l2(std::uint32_t code);
// 0 where V4L2 has no such format.
std::uint32_t v4l2CodeOf(kro::PixelFormat format);
// The four letters that v4l2-ctl shows.
std::string lettersOf(std::uint32_t code);

// Frames as the driver has promised them, still without data. Throws Failure where that makes no sense.
kro::Frame frameOfV4l2(const v4l2_pix_format& promised);

// Is a frame in the buffer, and all of it?
bool isWhole(const kro::Frame& frame, const v4l2_buffer& buffer);

// Frames that are missing between two numbers that drivers give; they begin anew at 2^32.
std::uint32_t missingBetween(std::uint32_t before, std::uint32_t now);

}  // namespace kro_camera
