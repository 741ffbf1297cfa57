// Cameras that speak GenICam, GigE Vision and USB3 Vision, through Aravis.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "camera.hpp"

namespace kro_camera {

// What the camera that needs no hardware is called.
inline constexpr const char* simulatedId = "simulated";

// `id` as Aravis lists it, its address or its serial number; empty: the first one. `rate` in frames a second, 0: as
// the camera is set.
std::unique_ptr<Camera> openAravisCamera(const std::string& id, double rate);

std::vector<std::string> aravisCameras();

}  // namespace kro_camera
