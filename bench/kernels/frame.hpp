// The buffers that one case works on: a filled source, a destination, working memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "kernels/buffer.hpp"

namespace bench {

struct Shape {
    int32_t width;
    int32_t height;
    Place place;  // of source and destination
};

size_t pixelsOf(const Shape& shape);
std::string nameOf(const Shape& shape);
// "1280x960", and behind it the place: "+1" for rows at odd addresses, "+before" and "+behind" for guarded pages.
// Throws std::invalid_argument.
Shape shapeFrom(const std::string& text);

enum class Samples { u8, u10, u12, u16, packed10, packed12, packed14, bgr };

size_t sourceBytes(Samples samples, size_t pixels);

class Frame {
public:
    // Seeds differ in the noise on the samples.
    Frame(const Shape& shape, Samples samples, size_t outputBytesPerPixel, uint32_t seed = 0);

    int32_t width() const { return shape_.width; }
    int32_t height() const { return shape_.height; }
    size_t pixels() const { return pixelsOf(shape_); }
    Samples samples() const { return samples_; }

    Place place() const { return shape_.place; }
    // What a row at an odd address is off by.
    size_t sourceSampleBytes() const;
    size_t destinationSampleBytes() const { return outputBytesPerPixel_ >= 6 ? 2 : 1; }

    size_t sourceSize() const { return sourceBytes(samples_, pixels()); }
    size_t destinationSize() const { return pixels() * outputBytesPerPixel_; }

    template <class Sample>
    const Sample* source() const {
        return reinterpret_cast<const Sample*>(source_.data());
    }
    template <class Sample>
    Sample* plane(size_t index) const {
        return reinterpret_cast<Sample*>(destination()) + index * pixels();
    }
    uint8_t* destination() const { return destination_.data(); }
    uint8_t* workingMemory() const { return workingMemory_.data(); }

private:
    Shape shape_;
    Samples samples_;
    size_t outputBytesPerPixel_;
    Buffer source_, destination_, workingMemory_;
};

}  // namespace bench
