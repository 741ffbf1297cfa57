#include "guess/frame_search.hpp"

#include <algorithm>
#include <set>

#include "frames/frame_size.hpp"
#include "guess/row_search.hpp"

namespace cli::guess {

namespace {

constexpr std::size_t fewestRows = 12;
constexpr std::size_t narrowest = 32;
// Headers of usual sizes that are looked for.
constexpr uint64_t largestHeader = 65536;

bool isUsual(std::size_t width, std::size_t height) {
    return std::any_of(usualSizes().begin(), usualSizes().end(), [&](const FrameSize& size) {
        return static_cast<std::size_t>(size.width) == width && static_cast<std::size_t>(size.height) == height;
    });
}

uint64_t bytesOf(const FrameSize& size, const SampleLayout& layout) {
    return layout.rowBytes(static_cast<std::size_t>(size.width)) * static_cast<uint64_t>(size.height);
}

// Whether the file is a frame or frames of the size, or one with a header.
bool fills(uint64_t length, uint64_t frame) {
    return length >= frame && (length - frame <= largestHeader || length % frame == 0);
}

std::set<std::size_t> stridesFor(const Material& material, const std::vector<Chunk>& chunks,
                                 const RatedLayout& rated) {
    const SampleLayout& layout = *rated.layout;
    std::set<std::size_t> strides;
    for (const std::size_t distance : likeDistances(material.bytes, chunks, rated)) {
        // Valleys lie at rows, at the next of the same colours, and at multiples of these.
        for (const std::size_t rows : {1, 2, 3, 4}) {
            if (distance % rows == 0 && (distance / rows % 2 == 0 || !layout.isWords())) {
                strides.insert(distance / rows);
            }
        }
    }
    for (const FrameSize& size : usualSizes()) {
        if (fills(material.length, bytesOf(size, layout))) {
            strides.insert(layout.rowBytes(static_cast<std::size_t>(size.width)));
        }
    }
    return strides;
}

// What the length says for a stride, as a factor of bits.
double priorOf(uint64_t length, const Geometry& rows) {
    const SampleLayout& layout = *rows.layout;
    for (const FrameSize& size : usualSizes()) {
        if (layout.rowBytes(static_cast<std::size_t>(size.width)) == rows.stride &&
            fills(length, bytesOf(size, layout))) {
            return length % bytesOf(size, layout) == 0 ? 0.95 : 0.97;
        }
    }
    return length % rows.stride == 0 ? 0.98 : 1;
}

RatedRows rated(const Material& material, const Geometry& rows, std::size_t places) {
    RatedRows result{rows, likenessOf(material.bytes, rows, places), 0};
    result.score = result.likeness.least() * priorOf(material.length, rows);
    return result;
}

bool better(const RatedRows& a, const RatedRows& b) { return a.score < b.score; }

// Samples of two rows as one sequence each, from the same columns.
class RowReader {
public:
    RowReader(const Material& material, const Geometry& rows) : material_(material), rows_(rows) {}
    // Four samples of the row from a column that begins a group.
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

// How much less alike two rows are that meet at this one than rows around them.
double boundary(const Material& material, const Geometry& rows, std::size_t row) {
    RowReader reader(material, rows);
    const std::size_t width = std::min<std::size_t>(rows.width, 4096);
    if (row < 3 || row + 4 > reader.count()) {
        return 1;
    }
    const Samples& samples = reader.at(row - 3, 0, width, 7);
    std::array<double, 5> differences{};
    for (std::size_t r = 0; r < 5; r++) {
        for (std::size_t x = 0; x < width; x++) {
            differences[r] += std::abs(samples[r * width + x] - samples[(r + 2) * width + x]);
        }
    }
    const double around = std::min(differences[0], differences[4]);
    return (std::min(differences[1], differences[2]) + 1) / (around + 1);
}

// Bytes at the end of rows that are the same in all of them.
std::size_t constantTail(const Material& material, const Geometry& rows) {
    const std::size_t count = (material.bytes.size() - rows.start) / rows.stride;
    std::size_t least = rows.stride / 4;
    const uint8_t* first = &material.bytes[rows.start];
    for (std::size_t row = 0; row < count; row += std::max<std::size_t>(1, count / 100)) {
        const uint8_t* here = first + row * rows.stride;
        std::size_t same = 0;
        while (same < least && here[rows.stride - 1 - same] == first[rows.stride - 1 - same]) {
            same++;
        }
        least = same;
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
    const std::size_t tail = constantTail(material, rows);
    const std::size_t tailAtFront = constantTail(material, atFront);
    const bool byTail = tail != tailAtFront;
    if (byTail ? tailAtFront > tail : seam(material, atFront) > 1.5 * seam(material, rows)) {
        rows.start = 0;
    }
}

// Rows that a file as long as this has.
std::size_t rowsOf(const Material& material, const Geometry& rows) {
    return static_cast<std::size_t>((material.length - rows.start) / rows.stride);
}

// A usual width of which the rows hold padding; samples before the tail leave none out.
std::size_t widthIn(const Material& material, const Geometry& rows, std::size_t height) {
    const SampleLayout& layout = *rows.layout;
    const std::size_t whole = layout.samplesIn(rows.stride);
    if (isUsual(whole, height)) {
        return whole;
    }
    const std::size_t tail = constantTail(material, rows);
    std::size_t found = 0;
    for (const FrameSize& size : usualSizes()) {
        const std::size_t width = static_cast<std::size_t>(size.width);
        const std::size_t bytes = layout.rowBytes(width);
        const bool aligned = rows.stride % 16 == 0 && rows.stride - bytes <= 512;
        const bool sameHeight = static_cast<std::size_t>(size.height) == height;
        if (bytes <= rows.stride && bytes + (sameHeight && aligned ? 512 : tail) >= rows.stride) {
            found = std::max(found, width);
        }
    }
    if (found != 0) {
        return found;
    }
    return std::min(whole, layout.samplesIn(rows.stride - tail + layout.groupBytes - 1) / 2 * 2);
}

// Rows that are too many are several frames, or a header that is longer than a row.
void divideRows(const Material& material, FrameShape& shape) {
    Geometry& rows = shape.geometry;
    const std::size_t all = shape.height;
    for (const FrameSize& size : usualSizes()) {
        const std::size_t height = static_cast<std::size_t>(size.height);
        if (static_cast<std::size_t>(size.width) != rows.width || height >= all) {
            continue;
        }
        const std::size_t extra = all - height;
        if (extra * rows.stride <= largestHeader && boundary(material, rows, extra) > 1.5) {
            rows.start += extra * rows.stride;
            shape.height = height;
            return;
        }
        if (all % height == 0 && boundary(material, rows, height) > 1.3) {
            shape.frames = all / height;
            shape.height = height;
            return;
        }
    }
    for (std::size_t height = rows.width * 2; height >= rows.width / 3; height--) {
        if (all > rows.width * 3 / 2 && all % height == 0 && height < all &&
            boundary(material, rows, height) > 2) {
            shape.frames = all / height;
            shape.height = height;
            return;
        }
    }
}

}  // namespace

std::vector<RatedRows> rateRows(const Material& material, const std::vector<Chunk>& chunks, const RatedLayout& found) {
    constexpr std::size_t fewPlaces = 12;
    constexpr std::size_t manyPlaces = 64;
    constexpr std::size_t kept = 6;
    const SampleLayout& layout = *found.layout;
    std::vector<RatedRows> all;
    for (const std::size_t stride : stridesFor(material, chunks, found)) {
        Geometry rows{&layout, static_cast<std::size_t>(material.length % stride), stride, layout.samplesIn(stride)};
        if (rows.width < narrowest || rows.rowsIn(material.bytes.size()) < fewestRows) {
            continue;
        }
        all.push_back(rated(material, rows, fewPlaces));
        if (rows.start % layout.groupBytes != 0) {
            rows.start = 0;
            all.push_back(rated(material, rows, fewPlaces));
        }
    }
    std::sort(all.begin(), all.end(), better);
    all.resize(std::min(all.size(), kept));
    for (RatedRows& rows : all) {
        rows = rated(material, rows.geometry, manyPlaces);
    }
    std::sort(all.begin(), all.end(), better);
    return all;
}

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
