// Recorded frames as a camera: over and over, at the pace that is asked for.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "camera.hpp"

namespace kro_camera {

// What files do not say by their names.
struct Layout {
    std::optional<kro::PixelFormat> format;
    std::optional<Size> size;
    std::ptrdiff_t stride = 0;
};

// Every file is looked at here; which of them are shown depends on the mode. `rate` in frames a second, 0: 25.
std::unique_ptr<Camera> openReplay(const std::vector<std::string>& paths, const Layout& layout, double rate);

}  // namespace kro_camera
