// Recordings: frames one after the other, as they came. The file's name says what they are, so that nothing can be
// parted from them: 20261121-230601-01_1640x1232_SRGGB10P_stride2080.raw. Rows without gaps need no stride.
#pragma once

#include <cstdint>
#include <kro/kro.hpp>
#include <optional>
#include <string>

namespace kro_camera {

// The part of the name between its beginning and `.raw`; with the underscore before it.
std::string layoutSuffix(const kro::Frame& frame);

// The frame, still without data, that a file's name tells of; none where it does not say format and size.
std::optional<kro::Frame> layoutOfName(const std::string& path);

}  // namespace kro_camera
