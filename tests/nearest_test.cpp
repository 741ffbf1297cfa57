// The nearest-neighbour entries and row routines, called directly.
#include "regions.hpp"

namespace {

using reference::Mosaic;
using reference::Phase;
using reference::Picture;
using regions::Kind;

constexpr int32_t swaps[] = {0, 1, 2, -1};

void callEntry(const kro::Kernels& t, Phase phase, Kind kind, const uint8_t* from, Size size, uint8_t* to,
               int32_t swap) {
    const bool rg = phase == Phase::rg;
    const int h = size.height, w = size.width;
    const size_t n = reference::place(h, 0, w);
    uint32_t result = 1;
    switch (kind) {
        case Kind::bgr:
            result = call(rg ? t.rg8ToBgr8_nearest : t.gb8ToBgr8_nearest, from, h, w, to, swap);
            break;
        case Kind::bgra:
            result = call(rg ? t.rg8ToBgra8_nearest : t.gb8ToBgra8_nearest, from, h, w, to, swap);
            break;
        case Kind::planar:
            result = call(rg ? t.rg8ToBgr8P_nearest : t.gb8ToBgr8P_nearest, from, h, w, to, to + n, to + 2 * n);
            break;
        case Kind::mono:
            result = call(rg ? t.rg8ToMono8_nearest : t.gb8ToMono8_nearest, from, h, w, to, swap);
            break;
    }
    EXPECT_EQ(0u, result);
}

// Rows of a band into `rows` rows at `to`.
void callRows(const kro::Kernels& t, bool body, Kind kind, const uint8_t* const* band, int w, uint8_t* to,
              int32_t swap) {
    const ptrdiff_t plane = static_cast<ptrdiff_t>(w) * (body ? 2 : 1);
    switch (kind) {
        case Kind::bgr:
            return call(body ? t.rg8ToBgr8_nearest_body : t.rg8ToBgr8_nearest_lastRows, band, w, to, swap);
        case Kind::bgra:
            return call(body ? t.rg8ToBgra8_nearest_body : t.rg8ToBgra8_nearest_lastRows, band, w, to, swap);
        case Kind::planar:
            return call(body ? t.rg8ToBgr8P_nearest_body : t.rg8ToBgr8P_nearest_lastRows, band, w, to, to + plane,
                        to + 2 * plane);
        case Kind::mono:
            return call(body ? t.rg8ToMono8_nearest_body : t.rg8ToMono8_nearest_lastRows, band, w, to, swap);
    }
}

// Any non-zero swap flag exchanges red and blue: in the bytes, or in the weights of grey.
Expected expectedBytes(const Picture& picture, Kind kind, int32_t swap) {
    if (kind == Kind::planar || swap == 0) {
        return regions::bytesOf(picture, {kind});
    }
    return regions::bytesOf(regions::exchanged(picture), {kind});
}

class Nearest : public testing::TestWithParam<Kind> {
protected:
    Kind kind() const { return GetParam(); }
    guard::Buffer source{20 * 130};
    Destination destination{20 * 130 * 4};
};
INSTANTIATE_TEST_SUITE_P(Every, Nearest, testing::ValuesIn(regions::allKinds),
                         [](const auto& tested) { return regions::nameOf(tested.param); });

TEST_P(Nearest, EntriesWithEverySwap) {
    for (Phase phase : {Phase::rg, Phase::gb}) {
        for (Size size : smallSizes()) {
            const Mosaic m(size.height, size.width, phase, sampleBytes(Content::noise, size, 2).data());
            const uint8_t* const from = source.hold(regions::bytesOf(m), guard::Placement::againstEnd);
            const Picture picture = reference::nearest(m);
            for (int32_t swap : swaps) {
                const Expected expected = expectedBytes(picture, kind(), swap);
                for (const kro::Kernels* table : usableTables()) {
                    ASSERT_TRUE(destination.check(
                        *table, expected,
                        [&](uint8_t* to) { callEntry(*table, phase, kind(), from, size, to, swap); },
                        [&] { return describe(size) + " swap " + std::to_string(swap); }));
                }
            }
        }
    }
}

TEST_P(Nearest, RowRoutinesWriteTheirRowsFromRowsThatStandAlone) {
    regions::Band band(130);
    for (int width = 4; width <= 130; ++width) {
        const Size size{3, width};
        const Mosaic m(3, width, Phase::rg, sampleBytes(Content::noise, size, 3).data());
        const Picture picture = reference::nearest(m);
        for (bool body : {true, false}) {
            const Picture part = regions::rowsOf(picture, 1, body ? 2 : 1);
            for (guard::Placement placement : guard::bothPlacements) {
                const uint8_t* const* const rows = band.hold(m, 0, body ? 3 : 2, placement);
                for (int32_t swap : swaps) {
                    const Expected expected = expectedBytes(part, kind(), swap);
                    for (const kro::Kernels* table : usableTables()) {
                        ASSERT_TRUE(destination.check(
                            *table, expected,
                            [&](uint8_t* to) { callRows(*table, body, kind(), rows, width, to, swap); },
                            [&] {
                                return std::string(body ? "body" : "last row") + " width " + std::to_string(width);
                            }));
                    }
                }
            }
        }
    }
}

std::vector<uint8_t> nearestBgr(const kro::Kernels& table, Phase phase, const Mosaic& m) {
    std::vector<uint8_t> bgr(m.sample.size() * 3);
    callEntry(table, phase, Kind::bgr, regions::bytesOf(m).data(), {m.height, m.width}, bgr.data(), 0);
    return bgr;
}

TEST(NearestOddities, NearestColumnZeroGreenComesFromAbove) {
    const Mosaic m(6, 20, Phase::rg, sampleBytes(Content::noise, {6, 20}, 11).data());
    for (const kro::Kernels* table : usableTables()) {
        const std::vector<uint8_t> rg = nearestBgr(*table, Phase::rg, m);
        EXPECT_EQ(m.at(0, 1), rg[1]) << table->name;  // row 0 looks to the right
        EXPECT_EQ(m.at(1, 0), rg[2 * 60 + 1]) << table->name;
        EXPECT_EQ(m.at(3, 0), rg[4 * 60 + 1]) << table->name;
        const std::vector<uint8_t> gb = nearestBgr(*table, Phase::gb, m);
        EXPECT_EQ(m.at(0, 0), gb[60 + 1]) << table->name;
        EXPECT_EQ(m.at(2, 0), gb[3 * 60 + 1]) << table->name;
        EXPECT_EQ(m.at(4, 0), gb[5 * 60 + 1]) << table->name;
    }
}

TEST(NearestOddities, AlphaIsZeroInNearest) {
    for (Size size : {Size{4, 4}, Size{5, 35}, Size{6, 64}}) {
        const std::vector<uint8_t> mosaic(static_cast<size_t>(size.height * size.width), 255);
        for (const kro::Kernels* table : usableTables()) {
            std::vector<uint8_t> bgra(mosaic.size() * 4, 0xEE);
            callEntry(*table, Phase::rg, Kind::bgra, mosaic.data(), size, bgra.data(), 0);
            for (size_t i = 0; i < bgra.size(); ++i) {
                ASSERT_EQ(i % 4 == 3 ? 0 : 255, bgra[i]) << table->name << " " << describe(size) << " byte " << i;
            }
        }
    }
}

TEST(NearestOddities, LumaOfFlatFramesIsExact) {
    for (int v = 0; v < 256; ++v) {
        const std::vector<uint8_t> mosaic(5 * 37, static_cast<uint8_t>(v));
        for (const kro::Kernels* table : usableTables()) {
            for (int32_t swap : {0, 1}) {
                std::vector<uint8_t> grey(mosaic.size());
                callEntry(*table, Phase::gb, Kind::mono, mosaic.data(), {5, 37}, grey.data(), swap);
                ASSERT_EQ(mosaic, grey) << table->name;
            }
        }
    }
}

}  // namespace
