// Input formats and their reduction to 8 bits.
#include "support.hpp"

namespace {

TEST(Normalisation, EveryInputFormat) {
    for (const reference::InputFormat& format : reference::inputFormats) {
        const KroImage image{0, 0, format.code, nullptr};
        uint32_t code = 0;
        int32_t conversion = 99;
        EXPECT_EQ(KRO_OK, demosaicDataInit(&image, nullptr, &code, &conversion)) << format.name;
        EXPECT_EQ(reference::normalisedCode(format), code) << format.name;
        EXPECT_EQ(reference::preConversion(format), conversion) << format.name;
    }
}

TEST(Normalisation, Examples) {
    const struct {
        uint32_t input, code;
        int32_t conversion;
    } examples[] = {{KRO_BAYER_GB12, KRO_BAYER_GB8, 4},
                    {KRO_MONO14, KRO_MONO8, 6},
                    {KRO_BAYER_RG12_PACKED, KRO_BAYER_RG8, -1},
                    {KRO_BAYER_BG16, KRO_BAYER_BG8, 8}};
    for (const auto& example : examples) {
        const KroImage image{0, 0, example.input, nullptr};
        uint32_t code = 0;
        int32_t conversion = 0;
        EXPECT_EQ(KRO_OK, demosaicDataInit(&image, nullptr, &code, &conversion));
        EXPECT_EQ(example.code, code);
        EXPECT_EQ(example.conversion, conversion);
    }
}

// Every code within and around the families of formats: known ones exactly as listed, all others refused.
TEST(Normalisation, UnknownFormatsAreEchoedWithoutConversion) {
    for (uint32_t base : {0x01080000u, 0x01100000u, 0x010C0000u, 0x02180000u, 0x02200000u, 0u, 0xFFFFFF00u}) {
        for (uint32_t low = 0; low < 256; ++low) {
            const KroImage image{0, 0, base + low, nullptr};
            bool known = false;
            for (const reference::InputFormat& format : reference::inputFormats) {
                known = known || format.code == image.pixelFormat;
            }
            uint32_t code = 5;
            int32_t conversion = 99;
            const int32_t status = demosaicDataInit(&image, nullptr, &code, &conversion);
            EXPECT_EQ(known ? KRO_OK : KRO_ERR_FORMAT, status) << std::hex << image.pixelFormat;
            if (!known) {
                EXPECT_EQ(image.pixelFormat, code);
                EXPECT_EQ(0, conversion);
            }
        }
    }
}

class Reduction : public testing::Test {
protected:
    static constexpr int longest = 200;
    guard::Buffer source{longest * 3 + 64};
    Destination destination{longest + 64};

    void checkWords(const std::vector<uint16_t>& words, uint32_t shift) {
        const std::vector<uint8_t> bytes = reference::reduced(words, shift);
        const Expected expected{bytes, std::vector<bool>(bytes.size(), true)};
        for (guard::Placement placement : guard::bothPlacements) {
            const uint16_t* const from = source.hold(words, placement);
            for (const kro::Kernels* table : usableTables()) {
                destination.check(
                    *table, expected,
                    [&](uint8_t* to) {
                        call(table->u16Tou8, from, 1, static_cast<int32_t>(words.size()), shift, to);
                    },
                    [&] { return "shift " + std::to_string(shift) + " of " + std::to_string(words.size()); });
            }
        }
    }
};

TEST_F(Reduction, U16Tou8EveryLengthAndShift) {
    for (int n = 1; n <= 100; ++n) {
        for (uint32_t shift = 0; shift <= 16; ++shift) {
            checkWords(samples(Content::noise, {1, n}, 0xFFFF, static_cast<uint32_t>(n)), shift);
            checkWords(samples(Content::noise, {1, n}, 0x0FFF, static_cast<uint32_t>(n)), shift);
        }
    }
}

// Every word in a whole block and, fifteen at a time, behind the last one.
TEST_F(Reduction, U16Tou8EveryWordAndShift) {
    constexpr size_t all = 65536;
    std::vector<uint16_t> words(all + 15);
    for (size_t i = 0; i < words.size(); ++i) {
        words[i] = static_cast<uint16_t>(i * 40503u);
    }
    for (uint32_t shift = 0; shift <= 16; ++shift) {
        const std::vector<uint8_t> wanted = reference::reduced(words, shift);
        for (const kro::Kernels* table : usableTables()) {
            std::vector<uint8_t> bytes(words.size());
            call(table->u16Tou8, words.data(), 1, static_cast<int32_t>(words.size()), shift, bytes.data());
            ASSERT_EQ(wanted, bytes) << table->name << " shift " << shift;
            countComparison(*table, bytes.size());
            for (size_t first = 0; first < all; first += 15) {
                const std::vector<uint16_t> tail(&words[first], &words[first] + 15);
                bytes.assign(15, 0);
                call(table->u16Tou8, tail.data(), 1, 15, shift, bytes.data());
                ASSERT_EQ(reference::reduced(tail, shift), bytes) << table->name << " shift " << shift;
            }
        }
    }
}

TEST_F(Reduction, U16Tou8SaturatesInVectorPartAndTruncatesInTail) {
    std::vector<uint8_t> wanted(17, 255);
    wanted[16] = 0;
    const std::vector<uint16_t> words(17, 1024);
    for (const kro::Kernels* table : usableTables()) {
        std::vector<uint8_t> bytes(17);
        call(table->u16Tou8, words.data(), 1, 17, 2u, bytes.data());
        EXPECT_EQ(wanted, bytes) << table->name;
        const std::vector<uint16_t> negative(17, 0x8404);
        call(table->u16Tou8, negative.data(), 1, 17, 2u, bytes.data());
        EXPECT_EQ(0, bytes[0]) << table->name;
        EXPECT_EQ(1, bytes[16]) << table->name;
    }
}

TEST_F(Reduction, U16Tou8Of16BitsNeverSaturates) {
    const std::vector<uint16_t> words(40, 0xFF01);
    for (const kro::Kernels* table : usableTables()) {
        std::vector<uint8_t> bytes(40);
        call(table->u16Tou8, words.data(), 5, 8, 8u, bytes.data());
        EXPECT_EQ(std::vector<uint8_t>(40, 0xFF), bytes) << table->name;
    }
}

TEST_F(Reduction, U16Tou8TakesTheFrameAsOneRun) {
    const std::vector<uint16_t> words = samples(Content::noise, {6, 7}, 0xFFFF, 3);
    const std::vector<uint8_t> wanted = reference::reduced(words, 4);
    for (const kro::Kernels* table : usableTables()) {
        std::vector<uint8_t> bytes(42);
        call(table->u16Tou8, words.data(), 6, 7, 4u, bytes.data());
        EXPECT_EQ(wanted, bytes) << table->name;
    }
}

TEST_F(Reduction, NothingToConvertWritesNothing) {
    for (const kro::Kernels* table : usableTables()) {
        uint8_t byte = 9;
        call(table->u16Tou8, nullptr, 0, 5, 2u, &byte);
        call(table->u16Tou8, nullptr, -3, 5, 2u, &byte);
        call(table->unpacked, nullptr, 0, 5, &byte);
        call(table->unpacked, nullptr, 5, -3, &byte);
        EXPECT_EQ(9, byte);
    }
}

TEST_F(Reduction, UnpackedEveryLength) {
    for (int n = 1; n <= 200; ++n) {
        const std::vector<uint8_t> groups = sampleBytes(Content::noise, {(n + 1) / 2, 3}, 7);
        const std::vector<uint8_t> bytes = reference::unpacked(groups, static_cast<size_t>(n));
        const Expected expected{bytes, std::vector<bool>(bytes.size(), true)};
        for (guard::Placement placement : guard::bothPlacements) {
            const uint8_t* const from = source.hold(groups, placement);
            for (const kro::Kernels* table : usableTables()) {
                destination.check(
                    *table, expected, [&](uint8_t* to) { call(table->unpacked, from, 1, n, to); },
                    [&] { return std::to_string(n) + " samples"; });
            }
        }
    }
}

// All 2^24 groups of three bytes, or one in 61.
TEST_F(Reduction, UnpackedEveryGroup) {
    constexpr uint32_t perRun = 1 << 14;
    const uint32_t step = stepOf(61, 6151);
    std::vector<uint8_t> groups(3 * perRun);
    for (uint32_t group = 0; group < 1u << 24;) {
        for (size_t i = 0; i < perRun; ++i, group += step) {
            groups[3 * i] = static_cast<uint8_t>(group >> 16);
            groups[3 * i + 1] = static_cast<uint8_t>(group >> 8);
            groups[3 * i + 2] = static_cast<uint8_t>(group);
        }
        const std::vector<uint8_t> wanted = reference::unpacked(groups, 2 * perRun);
        for (const kro::Kernels* table : usableTables()) {
            std::vector<uint8_t> bytes(2 * perRun);
            call(table->unpacked, groups.data(), 2, static_cast<int32_t>(perRun), bytes.data());
            ASSERT_EQ(wanted, bytes) << table->name << " groups before " << group;
            countComparison(*table, bytes.size());
        }
    }
}

TEST_F(Reduction, UnpackedOddCountWritesOneByteMore) {
    const std::vector<uint8_t> groups = sampleBytes(Content::noise, {17, 3}, 7);
    for (const kro::Kernels* table : usableTables()) {
        std::vector<uint8_t> bytes(36, 0);
        call(table->unpacked, groups.data(), 3, 11, bytes.data());
        EXPECT_EQ(groups[48], bytes[32]) << table->name;
        EXPECT_EQ(groups[50], bytes[33]) << table->name;
        EXPECT_EQ(0, bytes[34]) << table->name;
    }
}

}  // namespace
