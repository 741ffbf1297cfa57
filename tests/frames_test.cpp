// Whole frames through the demosaicing entry: every input format, output format, algorithm and instruction set.
#include <algorithm>
#include <cstring>

#include "KRODemosaicing.hpp"
#include "support.hpp"

namespace {

using reference::InputFormat;
using reference::Layout;
using reference::Method;
using reference::OutputFormat;
using reference::Phase;
using reference::Picture;

const InputFormat& formatNamed(const std::string& name) {
    for (const InputFormat& format : reference::inputFormats) {
        if (name == format.name) {
            return format;
        }
    }
    throw std::runtime_error("no format " + name);
}

const InputFormat& bytesOf(Phase phase) {
    static const char* const names[] = {"BayerRG8", "BayerGR8", "BayerGB8", "BayerBG8"};
    return formatNamed(names[static_cast<int>(phase)]);
}

std::vector<uint8_t> inMemory(const std::vector<uint16_t>& words) {
    std::vector<uint8_t> bytes(words.size() * 2);
    std::memcpy(bytes.data(), words.data(), bytes.size());
    return bytes;
}

// A raw frame and the 8-bit samples that it stands for.
struct Raw {
    std::vector<uint8_t> bytes;
    std::vector<uint8_t> reduced;
};

// `beyond` lets words exceed the format's depth.
Raw rawFrame(const InputFormat& format, Size size, Content content, uint32_t seed, bool beyond) {
    const size_t n = reference::place(size.height, 0, size.width);
    Raw raw;
    if (format.layout == Layout::words) {
        const int top = beyond ? 0xFFFF : (1 << format.bits) - 1;
        const std::vector<uint16_t> words = samples(content, size, top, seed);
        raw.bytes = inMemory(words);
        raw.reduced = reference::reduced(words, static_cast<unsigned>(format.bits - 8));
    } else if (format.layout == Layout::packed) {
        const int groups = static_cast<int>((n + 1) / 2);
        raw.bytes = sampleBytes(content, {groups, 3}, seed);
        raw.reduced = reference::unpacked(raw.bytes, n);
        raw.reduced.resize(n);
    } else {
        raw.bytes = sampleBytes(content, size, seed);
        raw.reduced = raw.bytes;
    }
    return raw;
}

Picture pictureOf(const InputFormat& format, Method method, Size size, const std::vector<uint8_t>& reduced) {
    if (!format.mono) {
        return reference::demosaic(method, {size.height, size.width, format.phase, reduced.data()});
    }
    Picture picture(size.height, size.width);
    std::transform(reduced.begin(), reduced.end(), picture.pixel.begin(), [](uint8_t v) {
        return reference::Pixel{v, v, v};
    });
    return picture;
}

int32_t scratchNeed(const InputFormat& format, Size size) {
    return format.layout == Layout::bytes ? size.width + 64 : (size.height + 1) * size.width + 64;
}

class FrameCheck {
public:
    explicit FrameCheck(Size largest)
        : source_(3 * samplesOf(largest)),
          scratch_(2 * samplesOf(largest) + 4096),
          destination_(4 * samplesOf(largest)) {}

    // All methods asked for x all outputs x all tables on one frame. False after the first failure.
    bool frame(const InputFormat& format, Size size, Content content, uint32_t seed, bool beyond,
               const std::vector<Method>& methods) {
        const Raw raw = rawFrame(format, size, content, seed, beyond);
        const guard::Placement placement = guard::bothPlacements[seed % 2];
        const uint8_t* const samplesAt = source_.hold(raw.bytes, placement);
        for (Method method : methods) {
            const Picture picture = pictureOf(format, method, size, raw.reduced);
            const auto alpha = format.mono ? reference::alphaOf(Method::nearest, Phase::rg, size.height, size.width)
                                           : reference::alphaOf(method, format.phase, size.height, size.width);
            for (const OutputFormat& output : reference::outputFormats) {
                const Expected expected = reference::packed(picture, output.code, alpha);
                for (const kro::Kernels* table : tables_) {
                    const bool right = destination_.check(
                        *table, expected,
                        [&](uint8_t* to) { convert(*table, format, size, samplesAt, method, output, to); },
                        [&] {
                            return std::string(format.name) + " " + describe(size) + " " + nameOf(content) +
                                   " seed " + std::to_string(seed) + " algorithm " +
                                   std::to_string(static_cast<int>(method)) + " to " + output.name;
                        });
                    if (!right || testing::Test::HasFailure()) {
                        return false;
                    }
                }
            }
        }
        return true;
    }

private:
    static size_t samplesOf(Size size) { return reference::place(size.height, 0, size.width); }

    void convert(const kro::Kernels& table, const InputFormat& format, Size size, const uint8_t* from, Method method,
                 const OutputFormat& output, uint8_t* to) {
        const int32_t need = scratchNeed(format, size);
        KroContext handle{};
        handle.outputFormat = output.code;
        handle.scratch = {scratch_.place(static_cast<size_t>(need), guard::Placement::againstEnd, guard::Fill::one),
                          need};
        const KroImage in{size.height, size.width, format.code, const_cast<uint8_t*>(from)};
        KroImage out{-1, -2, 3, to};
        EXPECT_EQ(KRO_OK, kro::demosaicing(table, &handle, &in, static_cast<KroAlgorithm>(method), &out));
        EXPECT_EQ(size.height, out.height);
        EXPECT_EQ(size.width, out.width);
        EXPECT_EQ(output.code, out.pixelFormat);
        EXPECT_EQ(to, out.data);
        EXPECT_EQ(need, handle.scratch.capacity);
        EXPECT_TRUE(scratch_.canariesHold());
    }

    guard::Buffer source_;
    guard::Buffer scratch_;
    Destination destination_;
    std::vector<const kro::Kernels*> tables_ = usableTables();
};

std::string phaseName(Phase phase) {
    static const char* const names[] = {"RG", "GR", "GB", "BG"};
    return names[static_cast<int>(phase)];
}

using PhaseAndMethod = std::tuple<Phase, Method>;
class Frames : public testing::TestWithParam<PhaseAndMethod> {
protected:
    Phase phase() const { return std::get<0>(GetParam()); }
    Method method() const { return std::get<1>(GetParam()); }
};
std::string phaseAndMethodName(const testing::TestParamInfo<PhaseAndMethod>& tested) {
    return phaseName(std::get<0>(tested.param)) + "_" + nameOf(std::get<1>(tested.param));
}
INSTANTIATE_TEST_SUITE_P(Of8Bits, Frames,
                         testing::Combine(testing::ValuesIn(reference::allPhases),
                                          testing::ValuesIn(reference::allMethods)),
                         phaseAndMethodName);

TEST_P(Frames, EverySmallSize) {
    FrameCheck check({20, 70});
    for (Size size : everySize(4, method() == Method::edge ? 20 : 12, 4, 70)) {
        const uint32_t seed = static_cast<uint32_t>(size.height * 100 + size.width);
        const Content other = allContents[1 + seed % 5];
        ASSERT_TRUE(check.frame(bytesOf(phase()), size, Content::noise, seed, false, {method()}));
        ASSERT_TRUE(check.frame(bytesOf(phase()), size, other, seed + 1, false, {method()}));
    }
}

TEST_P(Frames, EveryContent) {
    FrameCheck check({19, 53});
    for (Size size : {Size{4, 4}, Size{5, 5}, Size{7, 21}, Size{8, 20}, Size{18, 36}, Size{19, 53}}) {
        for (Content content : allContents) {
            for (uint32_t seed = 1; seed <= (reducedRun ? 2 : 8); ++seed) {
                ASSERT_TRUE(check.frame(bytesOf(phase()), size, content, seed, false, {method()}));
            }
        }
    }
}

TEST_P(Frames, LargeSizes) {
    FrameCheck check({65, 1921});
    for (Size size : largeSizes()) {
        ASSERT_TRUE(check.frame(bytesOf(phase()), size, Content::noise, 5, false, {method()}));
        ASSERT_TRUE(check.frame(bytesOf(phase()), size, Content::extremes, 6, false, {method()}));
    }
}

class Formats : public testing::TestWithParam<InputFormat> {};
INSTANTIATE_TEST_SUITE_P(Every, Formats, testing::ValuesIn(reference::inputFormats),
                         [](const auto& format) { return std::string(format.param.name); });

TEST_P(Formats, EveryOutputAndAlgorithm) {
    FrameCheck check({33, 129});
    const std::vector<Method> methods(std::begin(reference::allMethods), std::end(reference::allMethods));
    std::vector<Size> sizes = {{4, 4}, {5, 5}, {4, 70}, {12, 4}, {13, 67}, {9, 32}, {33, 129}};
    for (int width = 4; width <= 70; width += reducedRun ? 11 : 3) {
        sizes.push_back({4 + width % 9, width});
    }
    uint32_t seed = GetParam().code & 0xFF;
    for (Size size : sizes) {
        ++seed;
        ASSERT_TRUE(check.frame(GetParam(), size, Content::noise, seed, false, methods));
        ASSERT_TRUE(check.frame(GetParam(), size, Content::noise, seed, true, methods));
        ASSERT_TRUE(check.frame(GetParam(), size, Content::extremes, seed, false, methods));
    }
}

TEST_P(Formats, EveryShape) {
    FrameCheck check({20, 130});
    const std::vector<Method> methods(std::begin(reference::allMethods), std::end(reference::allMethods));
    uint32_t seed = GetParam().code & 0xFF;
    for (const Size size : everyShape(seed * 37)) {
        ++seed;
        const Content content = seed % 2 == 0 ? Content::noise : allContents[seed / 2 % 6];
        ASSERT_TRUE(check.frame(GetParam(), size, content, seed, seed % 3 == 0, methods));
    }
}

TEST(DeepFrames, LargeSizes) {
    FrameCheck check({37, 1279});
    for (const char* name : {"BayerRG12", "BayerGB10", "BayerGR16", "BayerBG12Packed", "BayerGR10Packed", "Mono14"}) {
        for (Method method : reference::allMethods) {
            ASSERT_TRUE(check.frame(formatNamed(name), {37, 1279}, Content::noise, 3, true, {method}));
            ASSERT_TRUE(check.frame(formatNamed(name), {31, 640}, Content::noise, 4, false, {method}));
        }
    }
}

// A packed frame and its unpacked counterpart show the same picture.
TEST(DeepFrames, PackedFrameEqualsItsUnpackedCounterpart) {
    const Size size{6, 14};
    const std::vector<uint16_t> words = samples(Content::noise, size, 4095, 9);
    std::vector<uint8_t> packedBytes;
    for (size_t i = 0; i < words.size(); i += 2) {
        packedBytes.push_back(static_cast<uint8_t>(words[i] >> 4));
        packedBytes.push_back(static_cast<uint8_t>((words[i] & 15) | (words[i + 1] & 15) << 4));
        packedBytes.push_back(static_cast<uint8_t>(words[i + 1] >> 4));
    }
    EXPECT_EQ(reference::reduced(words, 4), reference::unpacked(packedBytes, words.size()));
    std::vector<uint8_t> wordBytes = inMemory(words);
    for (const kro::Kernels* table : usableTables()) {
        std::vector<uint8_t> pictures[2];
        const struct {
            uint32_t code;
            std::vector<uint8_t>& bytes;
        } inputs[] = {{KRO_BAYER_GB12, wordBytes}, {KRO_BAYER_GB12_PACKED, packedBytes}};
        for (int i = 0; i < 2; ++i) {
            pictures[i].resize(words.size() * 3);
            KroContext* handle = nullptr;
            ASSERT_EQ(KRO_OK, kroCreate(&handle));
            const KroImage in{size.height, size.width, inputs[i].code, inputs[i].bytes.data()};
            KroImage out{0, 0, 0, pictures[i].data()};
            EXPECT_EQ(KRO_OK, kro::demosaicing(*table, handle, &in, KRO_BILINEAR, &out));
            EXPECT_EQ(KRO_OK, kroRelease(&handle));
        }
        EXPECT_EQ(pictures[0], pictures[1]) << table->name;
    }
}

}  // namespace
