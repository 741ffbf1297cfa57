#include "frames/statistics.hpp"

#include <algorithm>

namespace cli {

namespace {

std::vector<SiteStatistics> makeSites(bool bayer) {
    std::vector<SiteStatistics> sites;
    for (const char* name : {"R", "G (red rows)", "G (blue rows)", "B"}) {
        if (bayer) {
            sites.push_back({name});
        }
    }
    if (!bayer) {
        sites.push_back({"grey"});
    }
    return sites;
}

std::size_t siteIndex(Phase phase, std::size_t row, std::size_t column) {
    if (phase == Phase::mono) {
        return 0;
    }
    const RedSite red = redSite(phase);
    const std::size_t down = (row + static_cast<std::size_t>(red.row)) & 1;
    const std::size_t right = (column + static_cast<std::size_t>(red.column)) & 1;
    return 2 * down + right;
}

}  // namespace

uint64_t SiteStatistics::count() const {
    uint64_t sum = 0;
    for (const uint64_t entry : histogram) {
        sum += entry;
    }
    return sum;
}

uint32_t SiteStatistics::least() const {
    const auto found = std::find_if(histogram.begin(), histogram.end(), [](uint64_t entry) { return entry != 0; });
    return static_cast<uint32_t>(found - histogram.begin());
}

uint32_t SiteStatistics::most() const {
    const auto found = std::find_if(histogram.rbegin(), histogram.rend(), [](uint64_t entry) { return entry != 0; });
    return static_cast<uint32_t>(histogram.rend() - found - 1);
}

double SiteStatistics::mean() const {
    double sum = 0;
    for (std::size_t value = 0; value < histogram.size(); value++) {
        sum += static_cast<double>(value) * static_cast<double>(histogram[value]);
    }
    return sum / static_cast<double>(count());
}

uint32_t SiteStatistics::quantile(double share) const {
    const double wanted = share * static_cast<double>(count());
    double seen = 0;
    uint32_t value = 0;
    for (; value < 65535; value++) {
        seen += static_cast<double>(histogram[value]);
        if (seen >= wanted) {
            break;
        }
    }
    return value;
}

FrameStatistics::FrameStatistics(const InputFormat& format) : sites(makeSites(format.isBayer())) {}

void FrameStatistics::add(const Bytes& frame, const Samples& samples, const FrameLayout& layout) {
    words.add(frame, layout);
    const std::size_t width = static_cast<std::size_t>(layout.size.width);
    for (std::size_t i = 0; i < samples.size(); i++) {
        const std::size_t site = siteIndex(layout.format->phase, i / width, i % width);
        sites[site].histogram[samples[i]]++;
        all.histogram[samples[i]]++;
        usedBits |= samples[i];
    }
}

}  // namespace cli
