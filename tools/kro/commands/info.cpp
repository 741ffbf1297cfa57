#include "commands/info.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <numeric>

#include "commands/each_input.hpp"
#include "frames/statistics.hpp"
#include "guess/hint.hpp"
#include "output/output_file.hpp"
#include "support/failure.hpp"
#include "terminal/console.hpp"

namespace cli {

namespace {

int highestBit(uint64_t value) {
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

void printBits(const FrameStatistics& statistics, const FrameLayout& layout) {
    const InputFormat& format = *layout.format;
    const int used = highestBit(statistics.usedBits);
    const int low = lowestBit(statistics.usedBits);
    std::printf("  significant bits seen: %d of %d%s\n", used, format.bits,
                low > 0 ? (", the low " + std::to_string(low) + " always 0").c_str() : "");
    if (used != 0 && used < format.bits && format.bits > 8) {
        std::printf("  dark unless told: --bits %d, for a picture of 16 bits --depth 16 --bits %d --scale\n", used,
                    used);
    }
    if (used > format.bits) {
        std::printf("  samples above %u: more than a %s sample holds (%s)\n", format.maximum(), format.name,
                    likelyCause(statistics.words, layout, format.bits).c_str());
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
    const int most = highestBit(*std::max_element(counts.begin(), counts.end()));
    std::string row;
    for (const uint64_t count : counts) {
        row += bars[static_cast<std::size_t>((highestBit(count) * 8 + most - 1) / most)];
    }
    const double samples = static_cast<double>(statistics.all.count());
    const double black = 100 * static_cast<double>(statistics.all.histogram[0]) / samples;
    const double white = 100 * static_cast<double>(statistics.all.histogram[format.maximum()]) / samples;
    std::printf("  histogram 0..%u: |%s|, at 0: %.2f %%, at %u: %.2f %%\n", format.maximum(), row.c_str(), black,
                format.maximum(), white);
}

void printStatistics(const FrameStatistics& statistics, const FrameLayout& layout) {
    printSites(statistics);
    printBits(statistics, layout);
    printHistogram(statistics, *layout.format);
}

// A block for each frame, or one for all together where there are many. Of a pipe, whose frames may come slowly, the
// first have a block as soon as they are there.
class Report {
public:
    Report(const FrameLayout& layout, bool each, std::optional<uint64_t> count);
    void add(const Bytes& frame, uint64_t number);
    void finish() const;
    bool onlyTogether() const { return blocks_ == 0; }

private:
    struct Extreme {
        uint64_t frame = 0;
        double mean = 0;
    };

    static constexpr uint64_t mostBlocks = 10;

    const FrameLayout& layout_;
    uint64_t blocks_;
    Samples samples_;
    FrameStatistics together_;
    uint64_t first_ = 0;
    uint64_t last_ = 0;
    uint64_t count_ = 0;
    Extreme darkest_;
    Extreme brightest_;
};

Report::Report(const FrameLayout& layout, bool each, std::optional<uint64_t> count)
    : layout_(layout), blocks_(mostBlocks), together_(*layout.format) {
    if (each) {
        blocks_ = std::numeric_limits<uint64_t>::max();
    } else if (count > mostBlocks) {
        blocks_ = 0;
    }
}

void Report::add(const Bytes& frame, uint64_t number) {
    unpackSamples(frame, layout_, samples_);
    if (count_ < blocks_) {
        FrameStatistics alone(*layout_.format);
        alone.add(frame, samples_, layout_);
        std::printf("frame %llu\n", static_cast<unsigned long long>(number));
        printStatistics(alone, layout_);
        flushStandardOutput();
    }
    together_.add(frame, samples_, layout_);
    const double mean = std::accumulate(samples_.begin(), samples_.end(), 0.0) / static_cast<double>(samples_.size());
    first_ = count_ == 0 ? number : first_;
    darkest_ = count_ == 0 || mean < darkest_.mean ? Extreme{number, mean} : darkest_;
    brightest_ = count_ == 0 || mean > brightest_.mean ? Extreme{number, mean} : brightest_;
    last_ = number;
    count_++;
}

void Report::finish() const {
    if (count_ <= blocks_) {
        return;
    }
    const auto shown = [](uint64_t number) { return static_cast<unsigned long long>(number); };
    std::printf("frames %llu-%llu together (--each says all of them one by one, --frames some)\n", shown(first_),
                shown(last_));
    printStatistics(together_, layout_);
    std::printf("  darkest: frame %llu, mean %.1f; brightest: frame %llu, mean %.1f\n", shown(darkest_.frame),
                darkest_.mean, shown(brightest_.frame), brightest_.mean);
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

void describeFile(const InputFile& file, const FrameLayout& layout, const InfoRequest& request,
                  const FrameRange& range) {
    const FrameRange all = framesInFile(file, layout, FrameRange{1, FrameRange{}.last, range.chosen});
    const FrameRange shown = framesInFile(file, layout, range);
    printLayout(file, layout);
    std::printf("%llu %s in the file\n", static_cast<unsigned long long>(all.last),
                all.last == 1 ? "frame" : "frames");
    const uint64_t count = shown.last - shown.first + 1;
    Report report(layout, request.each, count);
    console::Progress progress(report.onlyTogether() ? static_cast<std::size_t>(count) : 0);
    Bytes frame;
    for (uint64_t number = shown.first; number <= shown.last; number++) {
        readFrame(file, layout, number, frame);
        report.add(frame, number);
        progress.step();
    }
    report.finish();
}

void describeStream(const InputFile& file, const FrameLayout& layout, const InfoRequest& request,
                    const FrameRange& range) {
    FrameStream frames(file, layout, range);
    printLayout(file, layout);
    Report report(layout, request.each, std::nullopt);
    Bytes frame;
    while (frames.next(frame)) {
        report.add(frame, frames.number());
    }
    report.finish();
    frames.requireGoodEnd();
}

void describe(const std::string& input, const InfoRequest& request, const FrameRange& range) {
    const InputFile file(input);
    const FrameLayout layout = guess::layoutOrHint(file, request.frame);
    file.isStream() ? describeStream(file, layout, request, range) : describeFile(file, layout, request, range);
}

}  // namespace

int info(const InfoRequest& request) {
    const FrameRange range = request.frames.empty() ? FrameRange{} : parseFrameRange(request.frames);
    requireGoodRequest(request.frame);
    return eachInput(request.inputs, [&](const std::string& input) { describe(input, request, range); }) ? exitOk
                                                                                                         : exitFailed;
}

}  // namespace cli
