#include "guess/guess.hpp"

#include <algorithm>
#include <cmath>
#include <set>
#include <tuple>

#include "guess/frame_search.hpp"

namespace cli::guess {

namespace {

constexpr std::size_t mostAnswers = 12;

// Layouts and rows that are this much worse than the best are not followed.
constexpr double layoutMargin = 1.35;
constexpr std::size_t mostLayouts = 4;
constexpr std::size_t mostRows = 4;

// Which bits of the samples vary.
struct UsedBits {
    uint32_t any = 0;
    uint32_t most = 0;
};

UsedBits usedBits(const Bytes& bytes, const FrameShape& shape) {
    constexpr std::size_t band = 16;
    UsedBits used;
    Samples samples;
    const Geometry& rows = shape.geometry;
    const std::size_t count = rows.rowsIn(bytes.size());
    const std::size_t height = std::min(band, count);
    for (std::size_t row = 0; row < count; row += band) {
        const uint8_t* first = &bytes[rows.start + std::min(row, count - height) * rows.stride];
        unpackRows({first, rows.stride, rows.width, height}, *rows.layout, samples);
        for (const uint16_t sample : samples) {
            used.any |= sample;
            used.most = std::max<uint32_t>(used.most, sample);
        }
    }
    return used;
}

int highestBit(uint32_t value) {
    int bits = 0;
    for (; value != 0; value >>= 1) {
        bits++;
    }
    return bits;
}

void setBits(const Bytes& bytes, Answer& answer) {
    answer.bits = answer.shape.geometry.layout->bits;
    if (!answer.shape.geometry.layout->isWords()) {
        return;
    }
    const UsedBits used = usedBits(bytes, answer.shape);
    const int low = highestBit(used.any & (~used.any + 1)) - 1;
    answer.leftAligned = used.most >= 0x8000 && low >= 2;
    if (answer.leftAligned) {
        answer.bits = 16 - low;
        return;
    }
    for (const int bits : {16, 14, 12, 10}) {
        answer.bits = highestBit(used.most) <= bits ? bits : answer.bits;
    }
}

// What the shape says, as a factor of bits. That a file is exactly as long as a frame of a usual size happens rarely
// by chance, while slanted lines may be told better by rows that are a sample too long.
double priorOf(const FrameShape& shape, uint64_t length) {
    const bool whole = shape.leftOver(length) == 0 && shape.geometry.start == 0;
    const double size = shape.usualSize ? (whole ? 0.82 : 0.9) : (whole ? 0.96 : 1);
    const double width = static_cast<double>(shape.geometry.width);
    const double height = static_cast<double>(shape.height);
    const double slim = std::max(0.0, std::log2(std::max(width, height) / std::min(width, height) / 2));
    const double odd = shape.geometry.width % 2 != 0 ? 1.03 : 1;
    return size * odd * (1 + 0.05 * slim) * (shape.padding() == 0 ? 0.99 : 1);
}

// How badly the likeness of the diagonals suits the meaning, as a factor of bits.
double diagonalsAgainst(Greens greens, double unlikeDiagonals) {
    const double evenUnlike = std::log(unlikeDiagonals);
    switch (greens) {
        case Greens::none:
            return 1 + 0.4 * std::max(0.0, std::abs(evenUnlike) - 0.15);
        case Greens::odd:
            return 1 + 0.4 * std::max(0.0, 0.2 - evenUnlike);
        case Greens::even:
            return 1 + 0.4 * std::max(0.0, 0.2 + evenUnlike);
    }
    return 1;
}

void addAnswers(const Material& material, const RatedLayout& layout, const RatedRows& rows,
                std::vector<Answer>& answers) {
    constexpr std::size_t places = 64;
    Answer answer;
    answer.shape = shapeOf(material, rows.geometry);
    const Likeness likeness = likenessOf(material.bytes, answer.shape.geometry, *layout.levels, places);
    setBits(material.bytes, answer);
    const double bytesPerSample =
        static_cast<double>(layout.layout->groupBytes) / static_cast<double>(layout.layout->groupSamples);
    answer.unlikeDiagonals = likeness.unlikeDiagonals;
    for (const Greens greens : allGreens) {
        const double bits = likeness.bitsPerByte[static_cast<std::size_t>(greens)];
        answer.greens = greens;
        answer.bitsPerSample = bits * bytesPerSample;
        answer.score = (bits + layout.penalty) * priorOf(answer.shape, material.length) *
                       diagonalsAgainst(greens, likeness.unlikeDiagonals);
        answers.push_back(answer);
    }
}

// Different rows may turn out to be the same frames.
void dropRepeated(std::vector<Answer>& answers) {
    const auto key = [](const Answer& answer) {
        const Geometry& rows = answer.shape.geometry;
        return std::tuple(rows.layout, rows.start, rows.stride, rows.width, answer.shape.height, answer.greens);
    };
    std::set<decltype(key(answers.front()))> seen;
    answers.erase(std::remove_if(answers.begin(), answers.end(),
                                 [&](const Answer& answer) { return !seen.insert(key(answer)).second; }),
                  answers.end());
}

// Samples that take as much as they have bits are noise.
bool isNoise(const Answer& answer) { return answer.bitsPerSample > 0.93 * answer.bits; }

// By how far the next answer lies behind the best.
void setCertainty(std::vector<Answer>& answers) {
    constexpr double clear = 1.08;
    constexpr double visible = 1.02;
    for (Answer& answer : answers) {
        const double ahead = &answer == &answers.front() && answers.size() > 1 ? answers[1].score / answer.score : 1;
        answer.certainty = ahead > clear ? Certainty::sure : ahead > visible ? Certainty::likely : Certainty::guess;
    }
}

}  // namespace

Phase Answer::phase() const {
    return greens == Greens::none ? Phase::mono : greens == Greens::odd ? Phase::rg : Phase::gr;
}

Phase Answer::exchangedPhase() const {
    return greens == Greens::none ? Phase::mono : greens == Greens::odd ? Phase::bg : Phase::gb;
}

std::string Answer::formatName(Phase phase) const {
    return shape.geometry.layout->formatName(phase, leftAligned ? 16 : bits);
}

std::string Answer::size() const { return std::to_string(shape.geometry.width) + "x" + std::to_string(shape.height); }

std::vector<Answer> answersFor(const Material& material) {
    const std::vector<Chunk> chunks = chunksOf(material.bytes);
    const std::vector<RatedLayout> layouts = rateLayouts(material.bytes, chunks);
    std::vector<Answer> answers;
    for (std::size_t i = 0; i < mostLayouts; i++) {
        if (layouts[i].bitsPerByte > layouts[0].bitsPerByte * layoutMargin + 0.1) {
            break;
        }
        const std::vector<RatedRows> rows = rateRows(material, chunks, layouts[i]);
        for (std::size_t r = 0; r < std::min(rows.size(), mostRows); r++) {
            addAnswers(material, layouts[i], rows[r], answers);
        }
    }
    answers.erase(std::remove_if(answers.begin(), answers.end(), isNoise), answers.end());
    std::stable_sort(answers.begin(), answers.end(),
                     [](const Answer& a, const Answer& b) { return a.score < b.score; });
    dropRepeated(answers);
    answers.resize(std::min(answers.size(), mostAnswers));
    setCertainty(answers);
    return answers;
}

}  // namespace cli::guess
