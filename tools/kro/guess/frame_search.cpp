#include "guess/frame_search.hpp"

#include <algorithm>
#include <set>

#include "frames/frame_size.hpp"
#include "guess/frame_shape.hpp"
#include "guess/row_search.hpp"

namespace cli::guess {

namespace {

constexpr std::size_t fewestRows = 12;
constexpr std::size_t narrowest = 32;
uint64_t bytesOf(const FrameSize& size, const SampleLayout& layout) {
    return layout.rowBytes(static_cast<std::size_t>(size.width)) * static_cast<uint64_t>(size.height);
}

// Whether the file is a frame or frames of so many bytes, but for a header.
bool fills(uint64_t length, uint64_t frame) { return length >= frame && length % frame <= largestHeader; }

std::set<std::size_t> stridesFor(const Material& material, const std::vector<Chunk>& chunks,
                                 const RatedLayout& rated) {
    const SampleLayout& layout = *rated.layout;
    std::set<std::size_t> strides;
    for (const std::size_t distance : likeDistances(material.bytes, chunks, rated)) {
        // Valleys lie at rows, at the next of the same colours, and at multiples of these.
        for (const std::size_t rows : {1u, 2u, 3u, 4u}) {
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
            return length % bytesOf(size, layout) == 0 ? 0.88 : 0.93;
        }
    }
    // Rows are padded to multiples of such lengths, and no sensor has an odd number of columns.
    const double aligned = rows.stride % 64 == 0 ? 0.985 : rows.width % 2 != 0 ? 1.02 : 1;
    return length % rows.stride == 0 ? 0.97 * aligned : aligned;
}

RatedRows rated(const Material& material, const Levels& levels, const Geometry& rows, std::size_t places) {
    RatedRows result{rows, likenessOf(material.bytes, rows, levels, places), 0};
    result.score = result.likeness.least() * priorOf(material.length, rows);
    return result;
}

void addRated(const Material& material, const RatedLayout& found, std::size_t stride, std::size_t places,
              std::vector<RatedRows>& all) {
    const SampleLayout& layout = *found.layout;
    Geometry rows{&layout, static_cast<std::size_t>(material.length % stride), stride, layout.samplesIn(stride)};
    if (rows.width < narrowest || rows.rowsIn(material.bytes.size()) < fewestRows) {
        return;
    }
    all.push_back(rated(material, *found.levels, rows, places));
    // Of packed samples it matters where groups begin: after a header or at once.
    if (rows.start % layout.groupBytes != 0) {
        rows.start = 0;
        all.push_back(rated(material, *found.levels, rows, places));
    }
}

// Valleys may be off by a sample or two.
void addNeighbours(const Material& material, const RatedLayout& found, const RatedRows& rows, std::size_t places,
                   std::vector<RatedRows>& all) {
    const std::size_t unit = rows.geometry.layout->isWords() ? 2 : 1;
    for (const std::size_t steps : {1u, 2u}) {
        for (const std::size_t stride : {rows.geometry.stride - steps * unit, rows.geometry.stride + steps * unit}) {
            const bool known = std::any_of(
                all.begin(), all.end(), [stride](const RatedRows& other) { return other.geometry.stride == stride; });
            if (!known) {
                addRated(material, found, stride, places, all);
            }
        }
    }
}

void keepBest(std::vector<RatedRows>& all, std::size_t count) {
    std::stable_sort(all.begin(), all.end(),
                     [](const RatedRows& a, const RatedRows& b) { return a.score < b.score; });
    all.resize(std::min(all.size(), count));
}

}  // namespace

std::vector<RatedRows> rateRows(const Material& material, const std::vector<Chunk>& chunks,
                                const RatedLayout& found) {
    constexpr std::size_t fewPlaces = 24;
    constexpr std::size_t manyPlaces = 64;
    constexpr std::size_t kept = 10;
    std::vector<RatedRows> all;
    for (const std::size_t stride : stridesFor(material, chunks, found)) {
        addRated(material, found, stride, fewPlaces, all);
    }
    keepBest(all, kept);
    for (const RatedRows& rows : std::vector<RatedRows>(all)) {
        addNeighbours(material, found, rows, fewPlaces, all);
    }
    keepBest(all, kept);
    for (RatedRows& rows : all) {
        rows = rated(material, *found.levels, rows.geometry, manyPlaces);
    }
    keepBest(all, kept);
    return all;
}

}  // namespace cli::guess
