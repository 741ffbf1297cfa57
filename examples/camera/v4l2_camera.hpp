// A device of Video4Linux that sends mosaics or grey frames.
#pragma once

#include <memory>
#include <string>

#include "camera.hpp"

namespace kro_camera {

// `path` is that of the device, /dev/video0; `rate` in frames a second, 0: as the device is set.
std::unique_ptr<Camera> openV4l2Camera(const std::string& path, double rate);

// One line for each device of this machine that sends frames which kro reads.
std::vector<std::string> v4l2Devices();

}  // namespace kro_camera
