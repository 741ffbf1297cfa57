// Bitmap rows and the fourth byte.
#include <climits>

#include "support.hpp"

namespace {

int32_t adjust(Size size, uint8_t* data) {
    const KroContext handle{};
    const KroImage image{size.height, size.width, KRO_BGR8, data};
    return kroBMPAdjust(&handle, &image);
}

TEST(BmpAdjust, PadsEveryWidthInPlace) {
    guard::Buffer buffer(12 * (60 * 3 + 3));
    for (Size size : everySize(4, 12, 4, 60)) {
        const size_t row = static_cast<size_t>(size.width) * 3;
        const size_t padded = (row + 3) / 4 * 4;
        const std::vector<uint8_t> image = sampleBytes(Content::noise, {size.height, static_cast<int>(row)}, 4);
        uint8_t* const data =
            buffer.place(padded * static_cast<size_t>(size.height), guard::Placement::againstEnd, guard::Fill::one);
        std::copy(image.begin(), image.end(), data);
        Expected expected;
        for (size_t y = 0; y < static_cast<size_t>(size.height); ++y) {
            const auto from = image.begin() + static_cast<ptrdiff_t>(y * row);
            expected.value.insert(expected.value.end(), from, from + static_cast<ptrdiff_t>(row));
            expected.value.insert(expected.value.end(), padded - row, 0);
        }
        expected.written.assign(expected.value.size(), true);
        ASSERT_EQ(KRO_OK, adjust(size, data));
        ASSERT_TRUE(holds(buffer, expected)) << describe(size);
    }
}

TEST(BmpAdjust, WidthsThatAreMultiplesOfFourTouchNothing) {
    std::vector<uint8_t> image = sampleBytes(Content::noise, {4, 12}, 4);
    const std::vector<uint8_t> before = image;
    EXPECT_EQ(KRO_OK, adjust({4, 4}, image.data()));
    EXPECT_EQ(before, image);
}

TEST(BmpAdjust, ErrorsInTheirOrder) {
    const KroContext handle{};
    uint8_t byte = 1;
    const KroImage good{8, 9, 0, &byte};
    const KroImage noData{1, 1, 0, nullptr};
    EXPECT_EQ(KRO_ERR_NULL, kroBMPAdjust(&handle, nullptr));
    EXPECT_EQ(KRO_ERR_NULL, kroBMPAdjust(nullptr, nullptr));
    EXPECT_EQ(KRO_ERR_NULL, kroBMPAdjust(nullptr, &good));
    EXPECT_EQ(KRO_ERR_NULL, kroBMPAdjust(&handle, &noData));
    for (Size size : {Size{3, 100}, Size{100, 3}, Size{-1, 9}, Size{9, -1}, Size{0, 0}, Size{INT_MIN, 9}}) {
        EXPECT_EQ(KRO_ERR_SIZE, adjust(size, &byte)) << describe(size);
    }
    EXPECT_EQ(1, byte);
}

TEST(BgrToBgra, EveryLengthGetsZeroAsFourthByte) {
    guard::Buffer source(3 * 150);
    Destination destination(4 * 150);
    for (int n = 1; n <= 150; ++n) {
        const std::vector<uint8_t> bgr = sampleBytes(Content::noise, {n, 3}, 6);
        Expected expected;
        for (size_t i = 0; i < bgr.size(); ++i) {
            expected.value.push_back(bgr[i]);
            if (i % 3 == 2) {
                expected.value.push_back(0);
            }
        }
        expected.written.assign(expected.value.size(), true);
        for (guard::Placement placement : guard::bothPlacements) {
            const uint8_t* const from = source.hold(bgr, placement);
            for (const kro::Kernels* table : usableTables()) {
                destination.check(
                    *table, expected,
                    [&](uint8_t* to) {
                        n % 3 == 0 ? call(table->bgrToBgra, from, 3, n / 3, to)
                                   : call(table->bgrToBgra, from, 1, n, to);
                    },
                    [&] { return std::to_string(n) + " pixels"; });
            }
        }
    }
}

}  // namespace
