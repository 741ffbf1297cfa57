#include "commands/info.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

#include "frames/frame_reader.hpp"
#include "frames/samples.hpp"
#include "support/failure.hpp"
#include "terminal/console.hpp"

namespace cli {

namespace {

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

struct FrameStatistics {
    std::vector<SiteStatistics> sites;
    uint32_t usedBits = 0;
    SiteStatistics all{"all"};
};

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

FrameStatistics measure(const Samples& samples, const FrameLayout& layout) {
    FrameStatistics statistics;
    statistics.sites = makeSites(layout.format->isBayer());
    const std::size_t width = static_cast<std::size_t>(layout.size.width);
    for (std::size_t i = 0; i < samples.size(); i++) {
        const std::size_t site = siteIndex(layout.format->phase, i / width, i % width);
        statistics.sites[site].histogram[samples[i]]++;
        statistics.all.histogram[samples[i]]++;
        statistics.usedBits |= samples[i];
    }
    return statistics;
}

int highestBit(uint32_t value) {
    int bits = 0;
    for (; value != 0; value >>= 1) {
        bits++;
    }
    return bits;
}

int lowestBit(uint32_t value) {
    int zeros = 0;
    for (; value != 0 && (value & 1) == 0; value >>= 1) {
        zeros++;
    }
    return zeros;
}

void printSites(const FrameStatistics& statistics) {
    std::printf("  %-14s %7s %7s %9s %7s %7s %7s\n", "site", "min", "max", "mean", "1 %", "50 %", "99 %");
    for (const SiteStatistics& site : statistics.sites) {
        std::printf("  %-14s %7u %7u %9.1f %7u %7u %7u\n", site.name, site.least(), site.most(), site.mean(),
                    site.quantile(0.01), site.quantile(0.5), site.quantile(0.99));
    }
}

void printBits(const FrameStatistics& statistics, const InputFormat& format) {
    const int used = highestBit(statistics.usedBits);
    const int low = lowestBit(statistics.usedBits);
    std::printf("  significant bits seen: %d of %d%s\n", used, format.bits,
                low > 0 ? (", the low " + std::to_string(low) + " always 0").c_str() : "");
    if (used != 0 && used < format.bits && format.bits > 8) {
        std::printf("  dark unless scaled: --depth 16 --scale --bits %d\n", used);
    }
    if (used > format.bits) {
        std::printf("  samples above %u: more than a %s sample holds\n", format.maximum(), format.name);
    }
}

// A row of 32 bars, each the share of a 32nd of the format's range, on a logarithmic scale.
void printHistogram(const FrameStatistics& statistics, const InputFormat& format) {
    constexpr std::size_t bins = 32;
    constexpr std::array<const char*, 9> bars{" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    std::array<uint64_t, bins> counts{};
    for (std::size_t value = 0; value < statistics.all.histogram.size(); value++) {
        const std::size_t bin = std::min(bins - 1, value * bins >> format.bits);
        counts[bin] += statistics.all.histogram[value];
    }
    const int most = highestBit(static_cast<uint32_t>(*std::max_element(counts.begin(), counts.end())));
    std::string row;
    for (const uint64_t count : counts) {
        row += bars[static_cast<std::size_t>((highestBit(static_cast<uint32_t>(count)) * 8 + most - 1) / most)];
    }
    const double samples = static_cast<double>(statistics.all.count());
    const double black = 100 * static_cast<double>(statistics.all.histogram[0]) / samples;
    const double white = 100 * static_cast<double>(statistics.all.histogram[format.maximum()]) / samples;
    std::printf("  histogram 0..%u: |%s|, at 0: %.2f %%, at %u: %.2f %%\n", format.maximum(), row.c_str(), black,
                format.maximum(), white);
}

void printFrame(const Bytes& frame, const FrameLayout& layout, uint64_t number) {
    Samples samples;
    unpackSamples(frame, *layout.format, layout.size.samples(), samples);
    const FrameStatistics statistics = measure(samples, layout);
    std::printf("frame %llu\n", static_cast<unsigned long long>(number));
    printSites(statistics);
    printBits(statistics, *layout.format);
    printHistogram(statistics, *layout.format);
}

void printLayout(const InputFile& file, const FrameLayout& layout) {
    if (!layout.note.empty()) {
        console::note(layout.note);
    }
    std::printf("%s: %s (0x%08X), first row %.2s, second %.2s, %d bits, %zu bytes a frame\n",
                file.shownName().c_str(), layout.text().c_str(), layout.format->code,
                layout.format->isBayer() ? firstSites(layout.format->phase) : "YY",
                layout.format->isBayer() ? firstSites(layout.format->phase) + 2 : "YY", layout.format->bits,
                layout.bytes());
}

void describeFile(const InputFile& file, const FrameLayout& layout, const FrameRange& range) {
    const FrameRange all = framesInFile(file, layout, FrameRange{1, FrameRange{}.last, range.chosen});
    const FrameRange shown = framesInFile(file, layout, range);
    printLayout(file, layout);
    std::printf("%llu %s in the file\n", static_cast<unsigned long long>(all.last),
                all.last == 1 ? "frame" : "frames");
    Bytes frame;
    for (uint64_t number = shown.first; number <= shown.last; number++) {
        readFrame(file, layout, number, frame);
        printFrame(frame, layout, number);
    }
}

void describeStream(const InputFile& file, const FrameLayout& layout, const FrameRange& range) {
    FrameStream frames(file, layout, range);
    printLayout(file, layout);
    Bytes frame;
    while (frames.next(frame)) {
        printFrame(frame, layout, frames.number());
    }
}

void describe(const std::string& input, const InfoRequest& request, const FrameRange& range) {
    const InputFile file(input);
    const FrameLayout layout = inferLayout(file.shownName(), request.frame, file.length());
    file.isStream() ? describeStream(file, layout, range) : describeFile(file, layout, range);
}

}  // namespace

int info(const InfoRequest& request) {
    const FrameRange range = request.frames.empty() ? FrameRange{} : parseFrameRange(request.frames);
    int result = exitOk;
    for (const std::string& input : request.inputs) {
        try {
            describe(input, request, range);
        } catch (const UsageFailure&) {
            throw;
        } catch (const Failure& failure) {
            console::error(failure.what());
            result = exitFailed;
        }
    }
    return result;
}

}  // namespace cli
