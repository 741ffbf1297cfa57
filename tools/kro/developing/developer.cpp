#include "developing/developer.hpp"

#include <algorithm>

#include "frames/word_range.hpp"
#include "support/failure.hpp"
#include "terminal/console.hpp"

namespace cli {

namespace {

// The library shows no fewer.
constexpr int leastBits = 8;

const std::vector<std::string> algorithmNames{"nearest", "bilinear", "edge", "fine"};

// The significant bits of a sample of the frame, and those that are left of it.
int givenBits(const InputFormat& format, const DevelopOptions& options) { return options.bits.value_or(format.bits); }
int remainingBits(const InputFormat& format, const DevelopOptions& options) {
    return givenBits(format, options) - options.shift;
}

bool changesSamples(const InputFormat& format, const DevelopOptions& options) {
    return options.black != 0 || options.shift != 0 || givenBits(format, options) != format.bits;
}

uint32_t changed(uint32_t sample, uint32_t most, const DevelopOptions& options) {
    const uint32_t held = std::min(sample, most);
    return (held > options.black ? held - options.black : 0) >> options.shift;
}

// Pictures of 8 bits show the eight high bits of a sample; where it has fewer they are spread over these.
void changeSamples(Samples& samples, const InputFormat& format, const DevelopOptions& options, bool spread) {
    const uint32_t most = (1u << givenBits(format, options)) - 1;
    const uint32_t white = (1u << remainingBits(format, options)) - 1;
    std::vector<uint16_t> table(65536);
    for (uint32_t sample = 0; sample < table.size(); sample++) {
        const uint32_t value = changed(sample, most, options);
        table[sample] = static_cast<uint16_t>(spread ? (value * 255 + white / 2) / white : value);
    }
    for (uint16_t& sample : samples) {
        sample = table[sample];
    }
}

void warnOfRange(const Bytes& frame, const FrameLayout& layout, const DevelopOptions& options,
                 const std::string& name) {
    const int bits = givenBits(*layout.format, options);
    if (bits == 16 || layout.format->packing != Packing::word) {
        return;
    }
    WordRange range;
    range.add(frame, layout);
    if (range.most >= 1u << bits) {
        console::warnOnce(name, name + ": samples reach " + std::to_string(range.most) + ", more than the " +
                                    std::to_string((1u << bits) - 1) + " of " +
                                    (options.bits ? "--bits " + std::to_string(bits) : layout.format->name) + " (" +
                                    likelyCause(range, layout, bits) + ")");
    }
}

kro::Picture viewOf(Picture& picture, const OutputFormat& output) {
    const auto format = static_cast<kro::PixelFormat>(output.code);
    uint8_t* pixels = picture.data.data();
    if (!output.planar) {
        return {pixels, format};
    }
    const std::size_t plane = picture.data.size() / 3;
    return {{pixels}, {pixels + plane}, {pixels + 2 * plane}, format};
}

}  // namespace

const std::vector<std::string>& algorithms() { return algorithmNames; }

KroAlgorithm parseAlgorithm(const std::string& name) {
    const auto found = std::find(algorithmNames.begin(), algorithmNames.end(), foldName(name));
    if (found == algorithmNames.end()) {
        throw UsageFailure("unknown algorithm '" + name + "'" + suggestion(name, algorithmNames) +
                           " (nearest, bilinear, edge or fine)");
    }
    return static_cast<KroAlgorithm>(found - algorithmNames.begin());
}

void requireSomeBits(const std::string& name, const InputFormat& format, const DevelopOptions& options) {
    if (options.bits > format.bits && format.packing != Packing::word) {
        throw UsageFailure(name + ": --bits " + std::to_string(*options.bits) + " is more than " + format.name +
                           " samples have");
    }
    if (remainingBits(format, options) < 1) {
        throw UsageFailure(name + ": --shift " + std::to_string(options.shift) + " leaves nothing of " + format.name +
                           " samples");
    }
    const uint32_t most = (1u << givenBits(format, options)) - 1;
    if (changed(most, most, options) == 0) {
        throw UsageFailure(name + ": --black " + std::to_string(options.black) + " leaves nothing of samples up to " +
                           std::to_string(most));
    }
}

Developer::Source Developer::sourceOf(const Bytes& frame, const FrameLayout& layout, const DevelopOptions& options,
                                      const OutputFormat& output) {
    const InputFormat& format = *layout.format;
    Source source;
    source.options.bigEndian = layout.bigEndian;
    source.frame = {frame.data(), layout.size.height, layout.size.width, static_cast<kro::PixelFormat>(format.code),
                    static_cast<std::ptrdiff_t>(layout.stride)};
    if (changesSamples(format, options)) {
        const int bits = remainingBits(format, options);
        unpackSamples(frame, layout, samples_);
        changeSamples(samples_, format, options, bits < leastBits && output.bits == 8);
        const InputFormat& words = *findInputFormat(format.phase, 16, Packing::word);
        source.frame = {samples_.data(), layout.size.height, layout.size.width,
                        static_cast<kro::PixelFormat>(words.code)};
        source.options.bits = std::max(bits, leastBits);
        source.options.bigEndian = false;
    }
    return source;
}

// Threads are started for the first frame that is large enough to need them. Where they cannot be had, this one does
// it all.
void Developer::runBands(int count, const kro::BandTask& task) {
    if (!pool_ && threads_ > 1) {
        try {
            pool_.emplace(threads_);
        } catch (const std::system_error&) {
            threads_ = 1;
        }
    }
    if (pool_) {
        (*pool_)(count, task);
        return;
    }
    for (int band = 0; band < count; band++) {
        task(band);
    }
}

Picture Developer::develop(const Bytes& frame, const FrameLayout& layout, const OutputFormat& output,
                           const DevelopOptions& options, const std::string& name) {
    warnOfRange(frame, layout, options, name);
    Picture picture{layout.size, output.order, output.planar, output.bits, {}};
    picture.data.resize(layout.size.samples() * static_cast<std::size_t>(channelCount(output.order)) *
                        static_cast<std::size_t>(output.bits / 8));
    // What a table does to the finished picture: the library scales where nothing else is wanted.
    const bool plainScale = options.scale && options.tone.isOff() && options.black == 0 &&
                            remainingBits(*layout.format, options) >= leastBits;
    Source source = sourceOf(frame, layout, options, output);
    source.options.algorithm = static_cast<kro::Algorithm>(options.algorithm);
    source.options.alpha = options.opaque ? static_cast<int32_t>(picture.maximum()) : 0;
    source.options.fullRange = plainScale;
    std::error_code error;
    kro::convert(
        source.frame, viewOf(picture, output), source.options,
        [this](int count, const kro::BandTask& task) { runBands(count, task); }, error);
    if (error) {
        throw Failure(name + ": " + error.message());
    }
    const uint32_t most = (1u << givenBits(*layout.format, options)) - 1;
    const uint32_t white = output.bits == 8 || plainScale ? picture.maximum() : changed(most, most, options);
    applyTone(picture, options.tone, white, options.scale ? picture.maximum() : white);
    return picture;
}

}  // namespace cli
