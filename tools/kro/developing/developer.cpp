#include "developing/developer.hpp"

#include <algorithm>
#include <array>

#include "support/failure.hpp"
#include "terminal/console.hpp"

namespace cli {

namespace {

// Above 13 bits the sum of four samples leaves the signed 16-bit lanes of the bilinear interior; interpolated values
// of the RGGB edge-directed path are held to 12 bits.
constexpr uint32_t bilinearExactTo = 8191;
constexpr uint32_t edgeRggbHeldTo = 4095;

const std::vector<std::string> algorithmNames{"nearest", "bilinear", "edge"};

int bitsNeeded(uint32_t value) {
    int bits = 0;
    for (; value != 0; value >>= 1) {
        bits++;
    }
    return bits;
}

std::string shiftAdvice(uint32_t most, uint32_t limit) {
    return "; --shift " + std::to_string(bitsNeeded(most) - bitsNeeded(limit)) + " brings them into range";
}

void warnOfRange(const std::string& name, Phase phase, KroAlgorithm algorithm, uint32_t most) {
    const std::string reach = name + ": samples reach " + std::to_string(most);
    if (algorithm == KRO_BILINEAR && most > bilinearExactTo) {
        console::warnOnce(name, reach + ", and 16-bit bilinear means wrap around above " +
                                    std::to_string(bilinearExactTo) + shiftAdvice(most, bilinearExactTo));
    }
    if (algorithm == KRO_EDGE && phase == Phase::rg && most > edgeRggbHeldTo) {
        console::warnOnce(name, reach + ", and 16-bit edge holds interpolated values of RG frames to " +
                                    std::to_string(edgeRggbHeldTo) + shiftAdvice(most, edgeRggbHeldTo));
    }
}

using DeepEdge = int32_t (*)(const uint16_t*, int32_t, int32_t, uint16_t*);

DeepEdge deepEdge(Phase phase) {
    constexpr std::array<DeepEdge, 5> byPhase{nullptr, demosaicingEdgeRGGBU16, demosaicingEdgeGRBGU16,
                                              demosaicingEdgeGBRGU16, demosaicingEdgeBGGRU16};
    return byPhase[static_cast<std::size_t>(phase)];
}

// The significant bits that the samples have when they reach the library.
int significantBits(const InputFormat& format, const DevelopOptions& options) {
    return std::min(options.bits.value_or(format.bits), format.bits) - options.shift;
}

}  // namespace

KroAlgorithm parseAlgorithm(const std::string& name) {
    const auto found = std::find(algorithmNames.begin(), algorithmNames.end(), foldName(name));
    if (found == algorithmNames.end()) {
        const std::string nearest = nearestName(name, algorithmNames);
        throw UsageFailure("unknown algorithm '" + name + "'" +
                           (nearest.empty() ? std::string() : ", did you mean " + nearest + "?") +
                           " (nearest, bilinear or edge)");
    }
    return static_cast<KroAlgorithm>(found - algorithmNames.begin());
}

void requireDeepPath(const std::string& name, const InputFormat& format, const DevelopOptions& options) {
    const KroAlgorithm algorithm = options.algorithm;
    const bool exists =
        (algorithm == KRO_EDGE && format.isBayer()) || (algorithm == KRO_BILINEAR && format.phase == Phase::rg);
    if (!exists) {
        throw UsageFailure(name + ": no 16-bit path for " + format.name + " with " +
                           algorithmNames[static_cast<std::size_t>(algorithm)] +
                           "; there are edge for every Bayer frame and bilinear for BayerRG frames");
    }
    if (significantBits(format, options) < 1) {
        throw UsageFailure(name + ": --shift " + std::to_string(options.shift) + " leaves nothing of " + format.name +
                           " samples");
    }
}

Picture Developer::develop(const Bytes& frame, const FrameLayout& layout, const OutputFormat* output,
                           const DevelopOptions& options, const std::string& name) {
    if (options.depth == 8) {
        Picture picture = developShallow(frame, layout, *output, options.algorithm, name);
        applyTone(picture, options.tone, 255, 255);
        if (options.opaque && hasAlpha(picture.order)) {
            setAlpha(picture, 255);
        }
        return picture;
    }
    const int bits = significantBits(*layout.format, options);
    Picture picture = developDeep(frame, layout, options, name);
    const uint32_t white = (1u << bits) - 1;
    applyTone(picture, options.tone, white, options.scale ? picture.maximum() : white);
    return picture;
}

Picture Developer::developShallow(const Bytes& frame, const FrameLayout& layout, const OutputFormat& output,
                                  KroAlgorithm algorithm, const std::string& name) {
    Picture picture{layout.size, output.order, output.planar, 8, {}};
    // Zero throughout, because the edge-directed kernels leave alpha as they find it in places.
    picture.data.resize(layout.size.samples() * static_cast<std::size_t>(channelCount(output.order)));
    checkStatus(kroDemosaicSetConfig(handle_.get(), &output.code), name);
    const KroImage input{layout.size.height, layout.size.width, layout.format->code,
                         const_cast<uint8_t*>(frame.data())};
    KroImage result{0, 0, 0, picture.data.data()};
    checkStatus(kroDemosaicing(handle_.get(), &input, algorithm, &result), name);
    return picture;
}

Picture Developer::developDeep(const Bytes& frame, const FrameLayout& layout, const DevelopOptions& options,
                               const std::string& name) {
    const FrameSize& size = layout.size;
    unpackSamples(frame, *layout.format, size.samples(), samples_);
    for (uint16_t& sample : samples_) {
        sample = static_cast<uint16_t>(sample >> options.shift);
    }
    const Phase phase = layout.format->phase;
    warnOfRange(name, phase, options.algorithm, *std::max_element(samples_.begin(), samples_.end()));
    Picture picture{size, Order::bgr, false, 16, {}};
    picture.data.resize(size.samples() * 3 * sizeof(uint16_t));
    uint16_t* target = reinterpret_cast<uint16_t*>(picture.data.data());
    const int32_t status = options.algorithm == KRO_BILINEAR
                               ? kroDemosaicingBilinearU16(samples_.data(), size.height, size.width, target)
                               : deepEdge(phase)(samples_.data(), size.height, size.width, target);
    checkStatus(status, name);
    return picture;
}

}  // namespace cli
