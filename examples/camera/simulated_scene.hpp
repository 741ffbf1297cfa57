// What the simulated camera looks at: eight colour bars above a grey ramp, along which a white square moves.
#pragma once

#include <cstdint>
#include <vector>

#include "modes.hpp"

namespace kro_camera {

// The formats that it can be drawn in: PFNC's words and packings, no CSI-2.
std::vector<kro::PixelFormat> sceneFormats();

// Frame `number` of it, of rows without gaps; the width is a multiple of 4.
void drawScene(void* data, const Mode& mode, std::uint64_t number);

}  // namespace kro_camera
