#include "stream/stream.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <numeric>

namespace bench {
namespace {

struct Width {
    const char* name;
    bool usable;
    StreamLoop (*loop)(size_t ratio, StreamKind kind);
};

// The nearest one: odd frames of packed samples hold a last group of which one sample counts.
size_t ratioOf(size_t sourceSize, size_t destinationSize) {
    const auto distance = [=](const StreamRatio& ratio) {
        return std::fabs(static_cast<double>(sourceSize) / static_cast<double>(destinationSize) -
                         static_cast<double>(ratio.in) / static_cast<double>(ratio.out));
    };
    const auto* nearest =
        std::min_element(std::begin(streamRatios), std::end(streamRatios),
                         [&](const StreamRatio& a, const StreamRatio& b) { return distance(a) < distance(b); });
    return static_cast<size_t>(nearest - streamRatios);
}

}  // namespace

std::vector<StreamVariant> streamVariants(size_t sourceSize, size_t destinationSize, bool withBypass) {
    const Width widths[] = {
#if defined(__x86_64__) || defined(__i386__)
        {"avx512", __builtin_cpu_supports("avx512f") != 0, streamLoopAvx512},
        {"avx2", __builtin_cpu_supports("avx2") != 0, streamLoopAvx2},
        {"sse2", __builtin_cpu_supports("sse2") != 0, streamLoopSse2},
#else
        {"16 bytes", true, streamLoopAny},
#endif
    };
    const size_t ratio = ratioOf(sourceSize, destinationSize);
    std::vector<StreamVariant> variants;
    for (const Width& width : widths) {
        if (!width.usable || variants.size() >= 4) {
            continue;  // the two widest are enough: a narrower one never was the fastest
        }
        const std::string name = width.name;
        variants.push_back({name, width.loop(ratio, StreamKind::plain), false});
        variants.push_back({name + " x4", width.loop(ratio, StreamKind::unrolled), false});
        if (withBypass && streamsBypass && variants.size() == 2) {
            variants.push_back({name, width.loop(ratio, StreamKind::bypass), true});
        }
    }
    return variants;
}

uint64_t consume(const uint8_t* bytes, size_t size) {
    uint64_t sums[8] = {};
    size_t i = 0;
    for (; i + sizeof sums <= size; i += sizeof sums) {
        uint64_t words[8];
        std::memcpy(words, bytes + i, sizeof words);
        for (size_t k = 0; k < 8; ++k) {
            sums[k] += words[k];
        }
    }
    for (; i < size; ++i) {
        sums[0] += bytes[i];
    }
    return std::accumulate(std::begin(sums), std::end(sums), uint64_t{0});
}

}  // namespace bench
