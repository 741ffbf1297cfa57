#include "kernels/frame.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <stdexcept>

namespace bench {
namespace {

// A slope in both directions with rings and a little noise: neither flat nor random, as pictures are.
uint32_t sampleAt(int32_t row, int32_t column, uint32_t& noise) {
    noise = noise * 1664525u + 1013904223u;
    const auto r = static_cast<uint32_t>(row);
    const auto c = static_cast<uint32_t>(column);
    const uint32_t slope = r * 13 + c * 17;
    const uint32_t rings = (r * r + c * c) >> 4;
    return (slope + (rings & 0x3FFFu) + (noise >> 22)) & 0xFFFFu;
}

void fillBytes(uint8_t* bytes, size_t count, int32_t width, uint32_t noise) {
    for (size_t i = 0; i < count; ++i) {
        const auto row = static_cast<int32_t>(i / static_cast<size_t>(width));
        const auto column = static_cast<int32_t>(i % static_cast<size_t>(width));
        bytes[i] = static_cast<uint8_t>(sampleAt(row, column, noise) >> 8);
    }
}

void fillWords(uint8_t* bytes, const Shape& shape, int droppedBits, uint32_t noise) {
    for (int32_t row = 0; row < shape.height; ++row) {
        for (int32_t column = 0; column < shape.width; ++column) {
            const auto word = static_cast<uint16_t>(sampleAt(row, column, noise) >> droppedBits);
            std::memcpy(bytes, &word, sizeof word);
            bytes += sizeof word;
        }
    }
}

int droppedBits(Samples samples) { return samples == Samples::u10 ? 6 : samples == Samples::u12 ? 4 : 0; }

bool isWords(Samples samples) {
    return samples == Samples::u10 || samples == Samples::u12 || samples == Samples::u16;
}

// Of a size's name.
constexpr struct Suffix {
    const char* text;
    Place place;
} suffixes[] = {
    {"", Place::aligned}, {"+1", Place::odd}, {"+before", Place::guardedBefore}, {"+behind", Place::guardedBehind}};

std::string suffixOf(Place place) {
    return std::find_if(std::begin(suffixes), std::end(suffixes), [=](const Suffix& s) { return s.place == place; })
        ->text;
}

}  // namespace

size_t pixelsOf(const Shape& shape) { return static_cast<size_t>(shape.width) * static_cast<size_t>(shape.height); }

std::string nameOf(const Shape& shape) {
    return std::to_string(shape.width) + "x" + std::to_string(shape.height) + suffixOf(shape.place);
}

Shape shapeFrom(const std::string& text) {
    Shape shape{};
    int used = 0;
    const int fields = std::sscanf(text.c_str(), "%dx%d%n", &shape.width, &shape.height, &used);
    const std::string rest = fields == 2 ? text.substr(static_cast<size_t>(used)) : "?";
    const auto* suffix =
        std::find_if(std::begin(suffixes), std::end(suffixes), [&](const Suffix& each) { return rest == each.text; });
    if (suffix == std::end(suffixes) || shape.width < 4 || shape.height < 4) {
        throw std::invalid_argument("not a size: " + text +
                                    " (like 1280x960, 1280x960+1 for odd addresses, 64x64+before or 64x64+behind for "
                                    "guarded pages)");
    }
    shape.place = suffix->place;
    return shape;
}

size_t sourceBytes(Samples samples, size_t pixels) {
    switch (samples) {
        case Samples::packed10:
            return (pixels + 3) / 4 * 5;
        case Samples::packed12:
            return (pixels + 1) / 2 * 3;
        case Samples::packed14:
            return (pixels + 3) / 4 * 7;
        default:
            return pixels * (isWords(samples) ? 2 : samples == Samples::bgr ? 3 : 1);
    }
}

size_t Frame::sourceSampleBytes() const { return isWords(samples_) ? 2 : 1; }

Frame::Frame(const Shape& shape, Samples samples, size_t outputBytesPerPixel, uint32_t seed)
    : shape_(shape),
      samples_(samples),
      outputBytesPerPixel_(outputBytesPerPixel),
      source_(sourceSize(), shape.place, sourceSampleBytes()),
      destination_(destinationSize(), shape.place, destinationSampleBytes()),
      workingMemory_(static_cast<size_t>(shape.width)) {
    const uint32_t noise = 1 + seed * 0x9E3779B9u;
    if (isWords(samples)) {
        fillWords(source_.data(), shape, droppedBits(samples), noise);
    } else {
        fillBytes(source_.data(), sourceSize(), shape.width, noise);
    }
}

}  // namespace bench
