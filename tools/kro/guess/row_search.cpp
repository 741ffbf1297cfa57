#include "guess/row_search.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace cli::guess {

namespace {

// The widest frame that is looked for, in samples.
constexpr std::size_t widest = 10000;
constexpr std::size_t narrowest = 32;
constexpr std::size_t mostDistances = 12;

// Bytes or words of the file, brought to ranks from 0 to 255, so that dark frames count as much as bright ones.
struct Keys {
    std::vector<uint8_t> ranks;
    // Bytes that one of them stands for.
    std::size_t unit;
};

std::vector<uint8_t> ranksOf(const std::vector<uint32_t>& histogram) {
    std::vector<uint8_t> ranks(histogram.size());
    uint64_t total = 0;
    for (const uint32_t count : histogram) {
        total += count;
    }
    uint64_t below = 0;
    for (std::size_t value = 0; value < histogram.size(); value++) {
        ranks[value] = static_cast<uint8_t>((below + histogram[value] / 2) * 255 / std::max<uint64_t>(1, total));
        below += histogram[value];
    }
    return ranks;
}

Keys keysOf(const Bytes& bytes, const SampleLayout& layout) {
    const std::size_t unit = layout.isWords() ? 2 : 1;
    const std::size_t count = bytes.size() / unit;
    const std::size_t high = layout.bigEndian ? 0 : 1;
    const auto value = [&](std::size_t i) -> std::size_t {
        return unit == 1 ? bytes[i] : static_cast<std::size_t>(bytes[2 * i + high] << 8 | bytes[2 * i + 1 - high]);
    };
    std::vector<uint32_t> histogram(unit == 1 ? 256 : 65536);
    const std::size_t step = std::max<std::size_t>(1, count / 500000) | 1;
    for (std::size_t i = 0; i < count; i += step) {
        histogram[value(i)]++;
    }
    const std::vector<uint8_t> ranks = ranksOf(histogram);
    Keys keys{std::vector<uint8_t>(count), unit};
    for (std::size_t i = 0; i < count; i++) {
        keys.ranks[i] = ranks[value(i)];
    }
    return keys;
}

// Places of high bits in a piece of each chunk, in units.
std::vector<std::size_t> placesOf(const std::vector<Chunk>& chunks, const RatedLayout& rated) {
    constexpr std::size_t fromEach = 48;
    const SampleLayout& layout = *rated.layout;
    std::vector<std::size_t> places;
    for (std::size_t c = 0; c < chunks.size(); c++) {
        if (layout.isWords()) {
            for (std::size_t i = 0; i < fromEach; i++) {
                places.push_back(chunks[c].at / 2 + i);
            }
            continue;
        }
        std::size_t taken = 0;
        for (std::size_t i = 0; i < chunks[c].size && taken < fromEach; i++) {
            if (layout.high[i % layout.groupBytes]) {
                places.push_back(chunks[c].at + rated.offsets[c] + i);
                taken++;
            }
        }
    }
    return places;
}

// For each distance the mean difference of what lies that far apart; negative where too little does.
std::vector<float> differencesOf(const Keys& keys, const std::vector<std::size_t>& places, std::size_t farthest) {
    std::vector<float> differences(farthest + 1, -1);
    for (std::size_t distance = 1; distance <= farthest; distance++) {
        const std::size_t end = keys.ranks.size() - distance;
        const std::size_t usable =
            static_cast<std::size_t>(std::lower_bound(places.begin(), places.end(), end) - places.begin());
        uint32_t sum = 0;
        const uint8_t* apart = keys.ranks.data() + distance;
        for (std::size_t i = 0; i < usable; i++) {
            sum += static_cast<uint32_t>(std::abs(keys.ranks[places[i]] - apart[places[i]]));
        }
        if (usable * 3 > places.size()) {
            differences[distance] = static_cast<float>(sum) / static_cast<float>(usable);
        }
    }
    return differences;
}

// Nothing within a row's own neighbourhood counts, only valleys beyond it, deepest first. A valley's depth is taken
// against its surroundings, since what is near is more alike anyway.
std::vector<std::size_t> valleys(const std::vector<float>& differences, std::size_t nearest) {
    std::vector<std::pair<float, std::size_t>> found;
    constexpr std::size_t shoulder = 24;
    for (std::size_t d = nearest; d + 1 < differences.size(); d++) {
        const float here = differences[d];
        if (here < 0 || here > differences[d - 1] || here > differences[d + 1]) {
            continue;
        }
        const std::size_t before = d > shoulder ? d - shoulder : 1;
        const std::size_t after = std::min(differences.size() - 1, d + shoulder);
        const float around = std::max(1e-3F, (differences[before] + differences[after]) / 2);
        found.emplace_back(here / around, d);
    }
    const std::size_t kept = std::min(found.size(), mostDistances);
    std::partial_sort(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(kept), found.end());
    std::vector<std::size_t> distances;
    for (std::size_t i = 0; i < kept; i++) {
        distances.push_back(found[i].second);
    }
    return distances;
}

}  // namespace

std::vector<std::size_t> likeDistances(const Bytes& bytes, const std::vector<Chunk>& chunks,
                                       const RatedLayout& rated) {
    const SampleLayout& layout = *rated.layout;
    const Keys keys = keysOf(bytes, layout);
    const std::size_t farthest = std::min(keys.ranks.size() * 2 / 3, layout.rowBytes(2 * widest) / keys.unit);
    const std::size_t nearest = std::max<std::size_t>(4, layout.rowBytes(narrowest) / keys.unit);
    const std::vector<std::size_t> places = placesOf(chunks, rated);
    std::vector<std::size_t> distances = valleys(differencesOf(keys, places, farthest), nearest);
    for (std::size_t& distance : distances) {
        distance *= keys.unit;
    }
    std::sort(distances.begin(), distances.end());
    return distances;
}

}  // namespace cli::guess
