#pragma once

#include <cstdint>
#include <vector>

#include "frames/inference.hpp"
#include "frames/samples.hpp"
#include "frames/word_range.hpp"

namespace cli {

// One colour site of the cell, or the whole frame where it is grey.
struct SiteStatistics {
    const char* name;
    std::vector<uint64_t> histogram = std::vector<uint64_t>(65536);

    uint64_t count() const;
    uint32_t least() const;
    uint32_t most() const;
    double mean() const;
    uint32_t quantile(double share) const;
};

// Of one frame or of several together.
struct FrameStatistics {
    std::vector<SiteStatistics> sites;
    uint32_t usedBits = 0;
    SiteStatistics all{"all"};
    WordRange words;

    explicit FrameStatistics(const InputFormat& format);
    void add(const Bytes& frame, const Samples& samples, const FrameLayout& layout);
};

}  // namespace cli
