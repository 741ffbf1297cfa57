#include "guess/likeness.hpp"

#include <algorithm>
#include <cmath>

#include "guess/code_length.hpp"

namespace cli::guess {

namespace {

// A window's columns, and its rows, of which the first two only tell the others.
constexpr std::size_t windowColumns = 256;
constexpr std::size_t windowRows = 10;

// A window of samples as numbers.
class Window {
public:
    Window(const Samples& samples, std::size_t width) : samples_(samples), width_(width) {}
    std::size_t width() const { return width_; }
    std::size_t height() const { return samples_.size() / width_; }
    int32_t at(std::size_t y, std::size_t x) const { return samples_[y * width_ + x]; }

    // Each from neighbours above and to the left: all of them, those of the same colour, or the nearest greens.
    int32_t byAdjacent(std::size_t y, std::size_t x) const { return slope(y, x, 1); }
    int32_t bySameColour(std::size_t y, std::size_t x) const { return slope(y, x, 2); }
    int32_t byGreens(std::size_t y, std::size_t x) const {
        const int32_t left = at(y, x - 2);
        const int32_t upLeft = at(y - 1, x - 1);
        const int32_t upRight = at(y - 1, x + 1);
        return median(left, (upLeft + upRight) / 2, left + upRight - upLeft);
    }
    // How far a site lies from the mean of its four diagonal neighbours.
    int32_t fromDiagonals(std::size_t y, std::size_t x) const {
        return 4 * at(y, x) - at(y - 1, x - 1) - at(y - 1, x + 1) - at(y + 1, x - 1) - at(y + 1, x + 1);
    }

private:
    int32_t slope(std::size_t y, std::size_t x, std::size_t step) const {
        const int32_t left = at(y, x - step);
        const int32_t up = at(y - step, x);
        return median(left, up, left + up - at(y - step, x - step));
    }

    const Samples& samples_;
    std::size_t width_;
};

// Of even and odd sites.
struct Sums {
    std::array<double, 3> bits{};
    std::array<double, 2> unlike{};
    double bytes = 0;
};

void addBits(const Window& window, const SampleLayout& layout, double bits, Sums& sums) {
    // By the site's place in the cell.
    std::array<CodeLength, 4> adjacent;
    std::array<CodeLength, 4> sameColour;
    std::array<CodeLength, 4> greens;
    for (std::size_t y = 2; y < window.height(); y++) {
        for (std::size_t x = 2; x + 1 < window.width(); x++) {
            const std::size_t site = y % 2 * 2 + x % 2;
            const int32_t sample = window.at(y, x);
            adjacent[site].add(sample - window.byAdjacent(y, x));
            sameColour[site].add(sample - window.bySameColour(y, x));
            greens[site].add(sample - window.byGreens(y, x));
        }
    }
    for (std::size_t site = 0; site < 4; site++) {
        const double count = static_cast<double>(adjacent[site].count());
        const bool even = site == 0 || site == 3;
        const double byColour = sameColour[site].bitsEach(bits);
        const double byGreens = greens[site].bitsEach(bits);
        sums.bits[0] += count * adjacent[site].bitsEach(bits);
        sums.bits[1] += count * (even ? byGreens : byColour);
        sums.bits[2] += count * (even ? byColour : byGreens);
        sums.bytes += count * static_cast<double>(layout.groupBytes) / static_cast<double>(layout.groupSamples);
    }
}

// Means over patches let detail and noise cancel, while a difference of colours stays.
void addUnlikeness(const Window& window, Sums& sums) {
    constexpr std::size_t patch = 8;
    for (std::size_t left = 1; left + patch < window.width(); left += patch) {
        std::array<int64_t, 4> means{};
        for (std::size_t y = 1; y <= patch; y++) {
            for (std::size_t x = left; x < left + patch; x++) {
                means[y % 2 * 2 + x % 2] += window.fromDiagonals(y, x);
            }
        }
        sums.unlike[0] += static_cast<double>(std::abs(means[0]) + std::abs(means[3]));
        sums.unlike[1] += static_cast<double>(std::abs(means[1]) + std::abs(means[2]));
    }
}

// Places at even distances, but for shifts that share no rhythm with rows.
std::size_t placeIn(std::size_t size, std::size_t index, std::size_t places) {
    constexpr double goldenRatio = 0.6180339887;
    const double shift = static_cast<double>(index) * goldenRatio;
    return static_cast<std::size_t>((static_cast<double>(index) + shift - std::floor(shift)) *
                                    static_cast<double>(size) / static_cast<double>(places));
}

}  // namespace

std::size_t Geometry::rowsIn(std::size_t bytes) const {
    const std::size_t row = layout->rowBytes(width);
    return bytes < start + row ? 0 : (bytes - start - row) / stride + 1;
}

Greens Likeness::best() const {
    const auto least = std::min_element(bitsPerByte.begin(), bitsPerByte.end());
    return allGreens[static_cast<std::size_t>(least - bitsPerByte.begin())];
}

Likeness likenessOf(const Bytes& bytes, const Geometry& geometry, const Levels& levels, std::size_t places) {
    const SampleLayout& layout = *geometry.layout;
    const std::size_t rows = geometry.rowsIn(bytes.size());
    const std::size_t height = std::min(windowRows, rows / 2 * 2);
    const std::size_t width = std::min(windowColumns, geometry.width);
    const std::size_t groups = (geometry.width - width) / layout.groupSamples;
    Sums sums;
    Samples samples;
    for (std::size_t i = 0; i < places; i++) {
        // The same places of the file for every geometry, so that each is judged by the same samples.
        const std::size_t at = placeIn(bytes.size() - geometry.start, i, places);
        const std::size_t top = std::min(at / geometry.stride, rows - height) / 2 * 2;
        const std::size_t group = std::min(at % geometry.stride / layout.groupBytes, groups) / 2 * 2;
        const uint8_t* first = &bytes[geometry.start + top * geometry.stride + group * layout.groupBytes];
        unpackRows({first, geometry.stride, width, height}, layout, samples);
        levels.rank(samples);
        const Window window(samples, width);
        addBits(window, layout, levels.bits(), sums);
        addUnlikeness(window, sums);
    }
    Likeness likeness;
    for (std::size_t i = 0; i < 3; i++) {
        likeness.bitsPerByte[i] = sums.bits[i] / std::max(1.0, sums.bytes);
    }
    likeness.unlikeDiagonals = (sums.unlike[0] + 1) / (sums.unlike[1] + 1);
    return likeness;
}

}  // namespace cli::guess
