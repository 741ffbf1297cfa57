#include "developing/look.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace cli {

namespace {

constexpr std::size_t channels = 3;

// Bytes become words, so that the means keep what lies between the levels of a dark picture.
constexpr uint32_t wordOfByte = 257;

uint16_t* wordsOf(Picture& picture) { return reinterpret_cast<uint16_t*>(picture.data.data()); }

Picture shrunk(const Picture& picture, const FrameSize& size) {
    Picture result{size, Order::rgb, false, 16, Bytes(size.samples() * channels * sizeof(uint16_t))};
    const std::size_t width = static_cast<std::size_t>(picture.size.width);
    const std::size_t height = static_cast<std::size_t>(picture.size.height);
    const std::size_t newWidth = static_cast<std::size_t>(size.width);
    const std::size_t newHeight = static_cast<std::size_t>(size.height);
    uint16_t* out = wordsOf(result);
    std::vector<uint64_t> sums(newWidth * channels);
    for (std::size_t y = 0; y < newHeight; y++) {
        const std::size_t top = y * height / newHeight;
        const std::size_t bottom = (y + 1) * height / newHeight;
        std::fill(sums.begin(), sums.end(), 0);
        for (std::size_t row = top; row < bottom; row++) {
            const uint8_t* pixels = &picture.data[row * width * channels];
            for (std::size_t x = 0; x < newWidth; x++) {
                for (std::size_t i = x * width / newWidth * channels; i < (x + 1) * width / newWidth * channels;
                     i++) {
                    sums[x * channels + i % channels] += pixels[i];
                }
            }
        }
        for (std::size_t i = 0; i < sums.size(); i++) {
            const std::size_t x = i / channels;
            const std::size_t columns = (x + 1) * width / newWidth - x * width / newWidth;
            const uint64_t area = std::max<uint64_t>((bottom - top) * columns, 1);  // 0 only of pictures that grow
            *out++ = static_cast<uint16_t>((sums[i] * wordOfByte + area / 2) / area);
        }
    }
    return result;
}

// The value that all but a few of the green samples stay below, but no less than a 32nd of white: noise is not lifted
// without end.
uint32_t whitePoint(Picture& picture) {
    constexpr double share = 0.99;
    constexpr uint32_t least = 65535 / 32;
    std::vector<uint16_t> greens;
    const uint16_t* words = wordsOf(picture);
    for (std::size_t i = 0; i < picture.size.samples(); i++) {
        greens.push_back(words[i * channels + 1]);
    }
    const std::size_t rank = static_cast<std::size_t>(share * static_cast<double>(greens.size() - 1));
    const auto place = greens.begin() + static_cast<std::ptrdiff_t>(rank);
    std::nth_element(greens.begin(), place, greens.end());
    return std::max<uint32_t>(*place, least);
}

Picture toBytes(Picture& picture) {
    Picture result{picture.size, Order::rgb, false, 8, Bytes(picture.size.samples() * channels)};
    const uint16_t* words = wordsOf(picture);
    for (std::size_t i = 0; i < result.data.size(); i++) {
        result.data[i] = static_cast<uint8_t>((words[i] + wordOfByte / 2) / wordOfByte);
    }
    return result;
}

}  // namespace

FrameSize fitted(const FrameSize& picture, const FrameSize& box) {
    const double scale = std::min(
        {1.0, static_cast<double>(box.width) / picture.width, static_cast<double>(box.height) / picture.height});
    return {std::max(1, static_cast<int32_t>(std::lround(picture.width * scale))),
            std::max(1, static_cast<int32_t>(std::lround(picture.height * scale)))};
}

Picture lookedAt(const Picture& picture, const FrameSize& size, const Look& look) {
    Picture small = shrunk(picture, size);
    applyTone(small, look.tone, look.expose ? whitePoint(small) : small.maximum(), small.maximum());
    return toBytes(small);
}

Picture sheetOf(const std::vector<const Picture*>& pictures, const FrameSize& cell, std::size_t perRow) {
    const std::size_t rows = (pictures.size() + perRow - 1) / perRow;
    const FrameSize size{static_cast<int32_t>(static_cast<std::size_t>(cell.width) * perRow),
                         static_cast<int32_t>(static_cast<std::size_t>(cell.height) * rows)};
    Picture sheet{size, Order::rgb, false, 8, Bytes(size.samples() * channels)};
    for (std::size_t i = 0; i < pictures.size(); i++) {
        const Picture& picture = *pictures[i];
        const std::size_t rowBytes = static_cast<std::size_t>(picture.size.width) * channels;
        const std::size_t left = i % perRow * static_cast<std::size_t>(cell.width);
        const std::size_t top = i / perRow * static_cast<std::size_t>(cell.height);
        for (std::size_t y = 0; y < static_cast<std::size_t>(picture.size.height); y++) {
            const std::size_t at = ((top + y) * static_cast<std::size_t>(size.width) + left) * channels;
            std::memcpy(&sheet.data[at], &picture.data[y * rowBytes], rowBytes);
        }
    }
    return sheet;
}

}  // namespace cli
