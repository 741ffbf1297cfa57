// The buffers that one case works on: a filled source, a destination, working memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace bench {

// Of buffers.
constexpr size_t alignment = 64;

struct Shape {
    int32_t width;
    int32_t height;
    bool offset;  // source and destination start one sample off the alignment: rows at odd addresses
};

size_t pixelsOf(const Shape& shape);
std::string nameOf(const Shape& shape);
// "1280x960", or "1280x960+1" for rows at odd addresses. Throws std::invalid_argument.
Shape shapeFrom(const std::string& text);

enum class Samples { u8, u10, u12, u16, packed10, packed12, packed14, bgr };

size_t sourceBytes(Samples samples, size_t pixels);

class Frame {
public:
    Frame(const Shape& shape, Samples samples, size_t outputBytesPerPixel);

    int32_t width() const { return shape_.width; }
    int32_t height() const { return shape_.height; }
    size_t pixels() const { return pixelsOf(shape_); }
    Samples samples() const { return samples_; }

    size_t sourceSize() const { return sourceBytes(samples_, pixels()); }
    size_t destinationSize() const { return pixels() * outputBytesPerPixel_; }

    template <class Sample>
    const Sample* source() const {
        return reinterpret_cast<const Sample*>(source_);
    }
    template <class Sample>
    Sample* plane(size_t index) const {
        return reinterpret_cast<Sample*>(destination_) + index * pixels();
    }
    uint8_t* destination() const { return destination_; }
    uint8_t* workingMemory() const { return workingMemory_.get(); }

private:
    struct Free {
        void operator()(uint8_t* memory) const;
    };
    using Memory = std::unique_ptr<uint8_t, Free>;
    static Memory allocate(size_t size);

    Shape shape_;
    Samples samples_;
    size_t outputBytesPerPixel_;
    Memory sourceMemory_, destinationMemory_, workingMemory_;
    uint8_t* source_;
    uint8_t* destination_;
};

}  // namespace bench
