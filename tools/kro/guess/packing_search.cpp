#include "guess/packing_search.hpp"

#include <algorithm>
#include <array>

#include "guess/code_length.hpp"

namespace cli::guess {

namespace {

// A multiple of all groups' bytes, and room for the largest offset of one.
constexpr std::size_t chunkBytes = 1680;
constexpr std::size_t slack = 8;
constexpr std::size_t mostChunks = 64;

// A sample of a mosaic is told by the last but one, of a grey frame by the last.
double bitsPerSample(const Samples& samples, double bits) {
    std::array<CodeLength, 2> apart;
    CodeLength adjacent;
    for (std::size_t i = 2; i < samples.size(); i++) {
        apart[i % 2].add(samples[i] - samples[i - 2]);
        adjacent.add(samples[i] - samples[i - 1]);
    }
    return std::min((apart[0].bitsEach(bits) + apart[1].bitsEach(bits)) / 2, adjacent.bitsEach(bits));
}

void unpackChunk(const uint8_t* chunk, const SampleLayout& layout, Samples& samples) {
    constexpr std::size_t rows = 4;
    const std::size_t width = layout.samplesIn(chunkBytes / rows);
    unpackRows({chunk, layout.rowBytes(width), width, rows}, layout, samples);
}

double bitsPerByte(const Samples& samples, const SampleLayout& layout, double bits) {
    return bitsPerSample(samples, bits) * static_cast<double>(layout.groupSamples) /
           static_cast<double>(layout.groupBytes);
}

// In which of a chunk's bytes groups begin, to tell the samples best.
std::size_t offsetIn(const uint8_t* chunk, const SampleLayout& layout, Samples& samples) {
    // Words begin at even bytes.
    const std::size_t offsets = layout.isWords() ? 1 : layout.groupBytes;
    double least = layout.bits;
    std::size_t best = 0;
    for (std::size_t offset = 0; offset < offsets && offsets > 1; offset++) {
        unpackChunk(chunk + offset, layout, samples);
        const double bits = bitsPerByte(samples, layout, layout.bits);
        best = bits < least ? offset : best;
        least = std::min(least, bits);
    }
    return best;
}

// How different the bytes' roles are at the places of a group of so many: of bytes that are samples, all places are
// alike, but of others some hold high bits and some noise.
double rolesIn(const Bytes& bytes, const std::vector<Chunk>& chunks, std::size_t group) {
    double most = 0;
    double least = 1;
    std::size_t large = 0;
    std::size_t largeLeast = chunks.size() * chunkBytes;
    for (std::size_t place = 0; place < group; place++) {
        uint64_t near = 1;
        uint64_t far = 1;
        std::size_t over = 0;
        for (std::size_t c = 0; c < chunks.size(); c++) {
            const uint8_t* here = &bytes[chunks[c].at / 210 * 210];
            const uint8_t* there = &bytes[chunks[(c + chunks.size() / 2) % chunks.size()].at / 210 * 210];
            for (std::size_t i = place; i + 2 * group < chunkBytes; i += group) {
                near += static_cast<uint64_t>(std::abs(here[i] - here[i + 2 * group]));
                far += static_cast<uint64_t>(std::abs(here[i] - there[chunkBytes - group + place - i + place]));
                over += here[i] >= 64 ? 1 : 0;
            }
        }
        const double unlikeness = std::min(1.0, static_cast<double>(near) / static_cast<double>(far));
        most = std::max(most, unlikeness);
        least = std::min(least, unlikeness);
        large = std::max(large, over);
        largeLeast = std::min(largeLeast, over);
    }
    const bool unlikeRanges = large > chunks.size() * 16 && largeLeast * 200 < large;
    return unlikeRanges ? 1 : most - least;
}

// Frames of 8 bits stretched to 16 hold every byte twice.
bool holdsPairs(const Bytes& bytes, const std::vector<Chunk>& chunks) {
    std::size_t equal = 0;
    std::size_t others = 0;
    for (const Chunk& chunk : chunks) {
        const uint8_t* words = &bytes[chunk.at / 2 * 2];
        for (std::size_t i = 0; i + 2 < chunkBytes; i += 2) {
            equal += words[i] == words[i + 1] ? 1 : 0;
            others += words[i + 1] == words[i + 2] ? 1 : 0;
        }
    }
    const std::size_t pairs = chunks.size() * (chunkBytes / 2 - 1);
    return equal * 100 > pairs * 98 && others * 100 < pairs * 95;
}

// Words whose high bits are the significant ones have zeros in the low bits of every other byte: of the even ones, or
// of the odd ones where high bytes come first.
enum class Zeros { none, even, odd };

Zeros zerosIn(const Bytes& bytes, const std::vector<Chunk>& chunks) {
    std::array<uint32_t, 2> any{};
    for (const Chunk& chunk : chunks) {
        for (std::size_t i = chunk.at; i < chunk.at + chunkBytes; i++) {
            any[i % 2] |= bytes[i];
        }
    }
    const bool even = (any[0] & 3) == 0;
    const bool odd = (any[1] & 3) == 0;
    return even == odd ? Zeros::none : even ? Zeros::even : Zeros::odd;
}

// Four bits of each group of 10Packed are zeros, at the same place for a while at least.
bool leavesBits(const Bytes& bytes, const std::vector<Chunk>& chunks) {
    constexpr std::size_t piece = 210;
    std::size_t pieces = 0;
    std::size_t leaving = 0;
    for (const Chunk& chunk : chunks) {
        for (std::size_t at = chunk.at; at < chunk.at + chunkBytes; at += piece) {
            std::array<uint32_t, 3> any{};
            for (std::size_t i = 0; i < piece; i++) {
                any[i % 3] |= bytes[at + i];
            }
            const bool leaves = std::any_of(any.begin(), any.end(), [](uint32_t bits) { return (bits & 0xCC) == 0; });
            leaving += leaves ? 1 : 0;
            pieces++;
        }
    }
    return leaving * 2 > pieces;
}

// What all layouts are held against besides the bits that they take.
struct Signs {
    bool pairs;
    Zeros zeros;
    bool leavesBits;
    // Of bytes in groups of any size.
    double roles;
};

Signs signsIn(const Bytes& bytes, const std::vector<Chunk>& chunks) {
    Signs signs{holdsPairs(bytes, chunks), zerosIn(bytes, chunks), leavesBits(bytes, chunks), 0};
    for (const std::size_t group : {2u, 3u, 5u, 7u}) {
        signs.roles = std::max(signs.roles, rolesIn(bytes, chunks, group));
    }
    return signs;
}

// What speaks against a layout, in bits a byte.
double penaltyOf(const SampleLayout& layout, const Signs& signs) {
    constexpr double excluded = 8;
    constexpr double strong = 2;
    if (layout.isWords()) {
        const Zeros wrong = layout.bigEndian ? Zeros::even : Zeros::odd;
        return signs.zeros == wrong ? strong : 0;
    }
    if (signs.pairs || signs.zeros != Zeros::none) {
        return excluded;
    }
    if (layout.groupBytes == 1) {
        return signs.roles < 0.3 ? 0 : 2 * strong * signs.roles;
    }
    return signs.leavesBits == (layout.mono == kro::PixelFormat::Mono10Packed) ? 0 : strong;
}

// With groups that begin in these bytes of the chunks.
RatedLayout rateWith(const SampleLayout& layout, const Bytes& bytes, const std::vector<Chunk>& chunks,
                     std::vector<std::size_t> offsets) {
    RatedLayout rated{&layout, 0, 0, std::move(offsets), nullptr};
    Samples samples;
    Samples all;
    for (std::size_t c = 0; c < chunks.size(); c++) {
        unpackChunk(&bytes[chunks[c].at + rated.offsets[c]], layout, samples);
        all.insert(all.end(), samples.begin(), samples.end());
    }
    rated.levels = std::make_shared<Levels>(all, layout.bits);
    rated.levels->rank(all);
    const std::size_t each = samples.size();
    for (std::size_t c = 0; c < chunks.size(); c++) {
        samples.assign(all.begin() + static_cast<std::ptrdiff_t>(c * each),
                       all.begin() + static_cast<std::ptrdiff_t>((c + 1) * each));
        rated.bitsPerByte += bitsPerByte(samples, layout, rated.levels->bits()) / static_cast<double>(chunks.size());
    }
    return rated;
}

// Groups run on from one of the first bytes, or begin anew in each padded row.
RatedLayout rate(const SampleLayout& layout, const Bytes& bytes, const std::vector<Chunk>& chunks) {
    const std::size_t group = layout.isWords() ? 1 : layout.groupBytes;
    std::vector<std::size_t> offsets;
    Samples samples;
    for (const Chunk& chunk : chunks) {
        offsets.push_back(offsetIn(&bytes[chunk.at], layout, samples));
    }
    RatedLayout best = rateWith(layout, bytes, chunks, offsets);
    for (std::size_t first = 0; first < group && group > 1; first++) {
        std::transform(chunks.begin(), chunks.end(), offsets.begin(),
                       [&](const Chunk& chunk) { return (first + group - chunk.at % group) % group; });
        const RatedLayout running = rateWith(layout, bytes, chunks, offsets);
        best = running.bitsPerByte <= best.bitsPerByte ? running : best;
    }
    return best;
}

// Of layouts that tell the samples equally well, the one with fewer values is the right one: in bits a byte, little
// enough to decide between such only.
double variety(const RatedLayout& rated) {
    constexpr double weight = 0.03;
    return weight * rated.levels->bits() * static_cast<double>(rated.layout->groupSamples) /
           static_cast<double>(rated.layout->groupBytes);
}

}  // namespace

std::vector<Chunk> chunksOf(const Bytes& bytes) {
    std::vector<Chunk> chunks;
    const std::size_t room = bytes.size() - chunkBytes - slack;
    const std::size_t count = std::min(mostChunks, 1 + room / chunkBytes);
    for (std::size_t i = 0; i < count; i++) {
        chunks.push_back({room * (2 * i + 1) / (2 * count) / 2 * 2, chunkBytes});
    }
    return chunks;
}

std::vector<RatedLayout> rateLayouts(const Bytes& bytes, const std::vector<Chunk>& chunks) {
    std::vector<RatedLayout> all;
    const Signs signs = signsIn(bytes, chunks);
    for (const SampleLayout& layout : sampleLayouts()) {
        RatedLayout rated = rate(layout, bytes, chunks);
        rated.penalty = penaltyOf(layout, signs) + variety(rated);
        rated.bitsPerByte += rated.penalty;
        all.push_back(rated);
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const RatedLayout& a, const RatedLayout& b) { return a.bitsPerByte < b.bitsPerByte; });
    return all;
}

}  // namespace cli::guess
