#include "guess/frame_shape.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>

#include "frames/frame_size.hpp"

namespace cli::guess {

namespace {

bool isUsual(std::size_t width, std::size_t height) {
    return std::any_of(usualSizes().begin(), usualSizes().end(), [&](const FrameSize& size) {
        return static_cast<std::size_t>(size.width) == width && static_cast<std::size_t>(size.height) == height;
    });
}

class RowReader {
public:
    RowReader(const Material& material, const Geometry& rows) : material_(material), rows_(rows) {}
    // So many samples of the row and those after it, from a column that begins a group; row by row.
    const Samples& at(std::size_t row, std::size_t column, std::size_t count, std::size_t rowCount = 4) {
        const uint8_t* first = &material_.bytes[rows_.start + row * rows_.stride +
                                                column / rows_.layout->groupSamples * rows_.layout->groupBytes];
        unpackRows({first, rows_.stride, count, rowCount}, *rows_.layout, samples_);
        return samples_;
    }
    std::size_t count() const { return rows_.rowsIn(material_.bytes.size()); }

private:
    const Material& material_;
    const Geometry& rows_;
    Samples samples_;
};

// How different the end of a row is from the beginning of the next: about 1 within a picture, more where its right
// edge meets its left one.
double seam(const Material& material, const Geometry& rows) {
    constexpr std::size_t piece = 16;
    RowReader reader(material, rows);
    double across = 1;
    double within = 1;
    const std::size_t last = rows.width / 4 * 4 - piece;
    for (std::size_t row = 0; row + 5 < reader.count(); row += std::max<std::size_t>(4, reader.count() / 200)) {
        const Samples ends = reader.at(row, last, piece);
        const Samples& begins = reader.at(row + 1, 0, piece);
        for (std::size_t r = 0; r < 4; r++) {
            across += std::abs(begins[r * piece] - ends[r * piece + piece - 2]);
            within += (std::abs(begins[r * piece + 2] - begins[r * piece]) +
                       std::abs(ends[r * piece + piece - 2] - ends[r * piece + piece - 4])) /
                      2.0;
        }
    }
    return across / within;
}

// How much less alike rows are that meet at this one than those after it.
double boundary(const Material& material, const Geometry& rows, std::size_t row) {
    constexpr std::size_t around = 6;
    RowReader reader(material, rows);
    const std::size_t first = row < 2 ? 0 : row - 2;
    if (first + around > reader.count()) {
        return 1;
    }
    const std::size_t width = std::min<std::size_t>(rows.width, 4096);
    const Samples& samples = reader.at(first, 0, width, around);
    // Two rows apart, where colours are the same.
    std::array<double, around - 2> differences{};
    for (std::size_t r = 0; r + 2 < around; r++) {
        for (std::size_t x = 0; x < width; x++) {
            differences[r] += std::abs(samples[r * width + x] - samples[(r + 2) * width + x]);
        }
    }
    const double across = row < 2 ? differences[0] : std::min(differences[0], differences[1]);
    return (across + 1) / (differences[3] + 1);
}

// Bytes at the end of rows that are 0 in all of them, but for those that a header may take.
std::size_t emptyTail(const Material& material, const Geometry& rows) {
    const std::size_t count = (material.bytes.size() - rows.start) / rows.stride;
    const std::size_t inHeader = static_cast<std::size_t>(largestHeader) / rows.stride + 1;
    std::size_t least = rows.stride / 2;
    for (std::size_t row = inHeader * 3 < count ? inHeader : 0; row < count;
         row += std::max<std::size_t>(1, count / 100)) {
        const uint8_t* end = &material.bytes[rows.start] + (row + 1) * rows.stride;
        const uint8_t* used = std::find_if(std::make_reverse_iterator(end),
                                           std::make_reverse_iterator(end - static_cast<std::ptrdiff_t>(least)),
                                           [](uint8_t byte) { return byte != 0; })
                                  .base();
        least = static_cast<std::size_t>(end - used);
    }
    return least;
}

// The rest of the length as a header before the first row, or at the end.
void placeStart(const Material& material, Geometry& rows) {
    const std::size_t rest = static_cast<std::size_t>(material.length % rows.stride);
    // Groups of packed samples have shown already where they begin.
    const bool startIsKnown = rest % rows.layout->groupBytes != 0 && !rows.layout->isWords();
    Geometry atFront = rows;
    atFront.start = 0;
    rows.start = startIsKnown ? rows.start : rest;
    if (rest == 0 || startIsKnown) {
        return;
    }
    const std::size_t tail = emptyTail(material, rows);
    const std::size_t tailAtFront = emptyTail(material, atFront);
    const bool byTail = tail != tailAtFront;
    if (byTail ? tailAtFront > tail : seam(material, atFront) > 1.5 * seam(material, rows)) {
        rows.start = 0;
    }
}

// Rows that a file as long as this has.
std::size_t rowsOf(const Material& material, const Geometry& rows) {
    return static_cast<std::size_t>((material.length - rows.start) / rows.stride);
}

// Without the padding that rows end in: where it shows, or where a usual size of this height suggests it.
std::size_t widthIn(const Material& material, const Geometry& rows, std::size_t height) {
    constexpr std::size_t mostPadding = 512;
    const SampleLayout& layout = *rows.layout;
    const std::size_t whole = layout.samplesIn(rows.stride);
    if (isUsual(whole, height)) {
        return whole;
    }
    const std::size_t used = rows.stride - emptyTail(material, rows);
    const std::size_t leastWidth = (layout.samplesIn(used + layout.groupBytes - 1) + 1) / 2 * 2;
    for (const FrameSize& size : usualSizes()) {
        const std::size_t width = static_cast<std::size_t>(size.width);
        const std::size_t bytes = layout.rowBytes(width);
        const bool sameHeight = static_cast<std::size_t>(size.height) == height;
        const bool padded = rows.stride % 16 == 0 && bytes + mostPadding >= rows.stride && used == rows.stride;
        // The last samples of all rows may be 0 as well.
        const bool shows = bytes >= used && width <= leastWidth + 16;
        if (bytes < rows.stride && (shows || (sameHeight && padded))) {
            return width;
        }
    }
    return std::min(whole, leastWidth);
}

// Whether rows make frames of this height, but for a header that is longer than a row.
bool divides(const Material& material, const FrameShape& shape, std::size_t height, double leastBoundary) {
    const Geometry& rows = shape.geometry;
    const std::size_t extra = shape.height % height;
    const bool afterHeader = extra == 0 || boundary(material, rows, extra) > leastBoundary;
    const bool afterFrame =
        extra + height == shape.height || boundary(material, rows, extra + height) > leastBoundary;
    return extra * rows.stride + rows.start <= largestHeader && afterHeader && afterFrame;
}

void divide(FrameShape& shape, std::size_t height) {
    shape.geometry.start += shape.height % height * shape.geometry.stride;
    shape.frames = shape.height / height;
    shape.height = height;
}

// Rows that are too many are several frames, or a header that is longer than a row.
void divideRows(const Material& material, FrameShape& shape) {
    const std::size_t width = shape.geometry.width;
    for (const FrameSize& size : usualSizes()) {
        const std::size_t height = static_cast<std::size_t>(size.height);
        if (static_cast<std::size_t>(size.width) == width && height < shape.height &&
            divides(material, shape, height, 1.4)) {
            divide(shape, height);
            return;
        }
    }
    if (shape.height <= width * 3 / 2) {
        return;
    }
    for (std::size_t height = width * 3 / 2; height >= width / 3; height--) {
        if (shape.height % height == 0 && divides(material, shape, height, 2)) {
            divide(shape, height);
            return;
        }
    }
}

}  // namespace

FrameShape shapeOf(const Material& material, const Geometry& rows) {
    FrameShape shape{rows};
    placeStart(material, shape.geometry);
    shape.height = rowsOf(material, shape.geometry);
    shape.geometry.width = widthIn(material, shape.geometry, shape.height);
    divideRows(material, shape);
    shape.usualSize = isUsual(shape.geometry.width, shape.height);
    return shape;
}

}  // namespace cli::guess
