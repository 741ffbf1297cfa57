#include "stream.hpp"

#include <cstring>
#include <numeric>

namespace bench {
namespace {

struct Width {
    const char* name;
    bool usable;
    StreamLoop (*loop)(size_t in, size_t out, StreamKind kind);
};

struct Ratio {
    size_t in;
    size_t out;
};

// Odd frames of packed samples hold a last group of which one sample counts; it does not change the ratio.
Ratio ratioOf(size_t sourceSize, size_t destinationSize) {
    const size_t twelfths = (sourceSize * 12 + destinationSize / 2) / destinationSize;
    const size_t common = std::gcd(twelfths, size_t{12});
    return {twelfths / common, 12 / common};
}

}  // namespace

std::vector<StreamVariant> streamVariants(size_t sourceSize, size_t destinationSize, bool withBypass) {
    const Width widths[] = {
        {"avx512", __builtin_cpu_supports("avx512f") != 0, streamLoopAvx512},
        {"avx2", __builtin_cpu_supports("avx2") != 0, streamLoopAvx2},
        {"sse2", __builtin_cpu_supports("sse2") != 0, streamLoopSse2},
    };
    const Ratio ratio = ratioOf(sourceSize, destinationSize);
    std::vector<StreamVariant> variants;
    for (const Width& width : widths) {
        if (!width.usable || variants.size() >= 4) {
            continue;  // the two widest are enough: a narrower one never was the fastest
        }
        const std::string name = width.name;
        variants.push_back({name, width.loop(ratio.in, ratio.out, StreamKind::plain), false});
        variants.push_back({name + " x4", width.loop(ratio.in, ratio.out, StreamKind::unrolled), false});
        if (withBypass && variants.size() == 2) {
            variants.push_back({name + " bypassing", width.loop(ratio.in, ratio.out, StreamKind::bypass), true});
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
