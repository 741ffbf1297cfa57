// What the viewer asks of a camera, whatever it is attached by.
#pragma once

#include <chrono>
#include <cstdint>
#include <kro/kro.hpp>
#include <string>
#include <vector>

#include "modes.hpp"

namespace kro_camera {

// What a wait for a frame brought.
struct Arrival {
    // Its samples stay where they are until the next call of next() or stop(). No data: nothing came in time.
    kro::Frame frame;
    // Frames that did not arrive whole since the wait before this one.
    std::uint64_t lost = 0;
};

// One thread calls all of it. Every function throws Failure where the device refuses or is gone.
class Camera {
public:
    Camera() = default;
    virtual ~Camera() = default;
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    virtual std::string name() const = 0;
    // Those that it has and kro reads, its own choice first.
    virtual std::vector<kro::PixelFormat> formats() = 0;
    virtual std::vector<Size> sizes(kro::PixelFormat format) = 0;
    // Frames come from here on, of that format and of the size nearest to the wanted one: what they are is returned.
    virtual Mode start(const Mode& wanted) = 0;
    virtual Arrival next(std::chrono::milliseconds timeout) = 0;
    // May be started again.
    virtual void stop() = 0;
};

}  // namespace kro_camera
