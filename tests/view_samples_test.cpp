// Samples: every word in every reading of it, every sample of every group, and what lies beyond a word's bits.
#include "view_kinds.hpp"

namespace {

using reference::InputFormat;
using reference::Layout;
using reference::Method;

// All outputs that matter to a reading of samples: 8 bits, 16, and 16 in full range, from grey and from colour.
bool checkReadings(ViewCheck& check, const InputFormat& format, const KroViewOptions& words, Method method) {
    reference::Scene scene = check.scene(format, words);
    const struct {
        const char* output;
        uint32_t flags;
    } readings[] = {{"Mono8", 0}, {"Mono16", 0}, {"Mono16", KRO_VIEW_FULL_RANGE}, {"RGB16Planar", 0}, {"BGRa8", 0}};
    for (const auto& reading : readings) {
        KroViewOptions options = words;
        options.algorithm = static_cast<KroAlgorithm>(method);
        options.flags |= reading.flags;
        const reference::ViewOutput& output = outputNamed(reading.output);
        if (!check.convert({output, options}, planesOf(scene, output, options))) {
            return false;
        }
    }
    return true;
}

// ---- words ----

class ViewWords : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(OfBits, ViewWords, testing::Range(8, 17),
                         [](const auto& bits) { return std::to_string(bits.param); });

// A frame of all words, shuffled so that neighbours differ, ending in a part of a block of 16.
std::vector<uint16_t> everyWord(Size size) {
    std::vector<uint16_t> words;
    for (uint32_t i = 0; i < static_cast<uint32_t>(size.height * size.width); ++i) {
        words.push_back(static_cast<uint16_t>(i * 40503u));
    }
    return words;
}

TEST_P(ViewWords, EveryWordInBothOrdersAndAlignments) {
    const Size size{331, 199};  // 65869: thirteen samples in no whole block
    ViewCheck check(size);
    const std::vector<uint16_t> numbers = everyWord(size);
    for (const char* name : {"Mono12", "BayerGB16"}) {
        const InputFormat& format = inputNamed(name);
        for (const uint32_t flags :
             {0u, KRO_VIEW_BIG_ENDIAN, KRO_VIEW_LEFT_ALIGNED, KRO_VIEW_BIG_ENDIAN | KRO_VIEW_LEFT_ALIGNED}) {
            KroViewOptions words = noOptions;
            words.bits = GetParam();
            words.flags = flags;
            check.hold(format, size, numbers, flags == 0 ? Spacing::padded : Spacing::continuous, words);
            ASSERT_TRUE(checkReadings(check, format, words, Method::nearest));
        }
    }
}

// The samples after the last whole block, of which a frame has fifteen at most: many small frames.
TEST_P(ViewWords, EveryWordAfterTheLastWholeBlock) {
    const Size size{5, 19};  // 95
    ViewCheck check(size);
    const InputFormat& format = inputNamed("BayerRG14");
    std::vector<uint16_t> numbers(95);
    for (uint32_t first = 0; first < 65536; first += reducedRun ? 1500 : 150) {
        for (size_t i = 0; i < numbers.size(); ++i) {
            numbers[i] = static_cast<uint16_t>(first + 10 * i);
        }
        KroViewOptions words = noOptions;
        words.bits = GetParam();
        check.hold(format, size, numbers, spacingOfTurn(first / 150), words);
        ASSERT_TRUE(checkReadings(check, format, words, Method::nearest));
    }
}

// ---- packed groups ----

// Grey and one phase of each packing.
std::vector<InputFormat> packedFormats(bool ofThreeBytes) {
    std::vector<InputFormat> formats;
    for (const InputFormat& format : reference::viewInputFormats()) {
        const bool packing = format.layout != Layout::bytes && format.layout != Layout::words;
        const bool allBitsCount = format.bits == 12;  // of three bytes
        if (packing && (allBitsCount || !ofThreeBytes) && (format.mono || format.phase == reference::Phase::gr)) {
            formats.push_back(format);
        }
    }
    return formats;
}

class ViewGroups : public testing::TestWithParam<InputFormat> {
protected:
    static constexpr Size size{257, 131};
    bool holds(const std::vector<uint16_t>& numbers, Spacing spacing) {
        check_.hold(GetParam(), size, numbers, spacing, noOptions);
        return checkReadings(check_, GetParam(), noOptions, Method::nearest);
    }

private:
    ViewCheck check_{size};
};
INSTANTIATE_TEST_SUITE_P(Of, ViewGroups, testing::ValuesIn(packedFormats(false)), inputName);

// Each place in a group takes every value while its neighbours hold noise; rows begin at all places.
TEST_P(ViewGroups, EverySampleAtEveryPlace) {
    const uint32_t top = (1u << GetParam().bits) - 1;
    const uint32_t perFrame = static_cast<uint32_t>(size.height * size.width);
    const uint32_t period = static_cast<uint32_t>(reference::groupOf(GetParam()).samples);
    for (uint32_t placeInGroup = 0; placeInGroup < period; ++placeInGroup) {
        for (uint32_t value = 0; value <= top;) {
            std::vector<uint16_t> numbers = samples(Content::noise, size, static_cast<int>(top), 1 + value);
            for (uint32_t i = placeInGroup; i < perFrame; i += period) {
                numbers[i] = static_cast<uint16_t>(value++ & top);
            }
            ASSERT_TRUE(holds(numbers, Spacing::continuous));
        }
    }
}

TEST_P(ViewGroups, RandomGroupsInRowsOfTheirOwn) {
    const int top = (1 << GetParam().bits) - 1;
    for (uint32_t seed = 1; seed <= (reducedRun ? 1 : 6); ++seed) {
        ASSERT_TRUE(holds(samples(Content::noise, size, top, seed), spacingOfTurn(seed)));
    }
}

class ViewGroupsOfThreeBytes : public ViewGroups {};
INSTANTIATE_TEST_SUITE_P(Of, ViewGroupsOfThreeBytes, testing::ValuesIn(packedFormats(true)), inputName);

// All 2^24 groups, or one in 61.
TEST_P(ViewGroupsOfThreeBytes, AllBits) {
    const uint32_t step = stepOf(61, 6151);
    std::vector<uint16_t> numbers(static_cast<size_t>(size.height * size.width));
    for (uint32_t group = 0; group < 1u << 24;) {
        for (size_t i = 0; i + 1 < numbers.size(); i += 2) {
            numbers[i] = static_cast<uint16_t>(group & 0xFFF);
            numbers[i + 1] = static_cast<uint16_t>(group >> 12 & 0xFFF);
            group += step;
        }
        ASSERT_TRUE(holds(numbers, Spacing::continuous));
    }
}

}  // namespace
