// The 8-bit bilinear entries and region routines, called directly.
#include "regions.hpp"

namespace {

using reference::borderStart;
using reference::Mosaic;
using reference::Phase;
using reference::Picture;
using regions::Inside;
using regions::Kind;
using regions::Style;

// Where a region routine of any kind writes, in one set of arguments.
struct Where {
    const uint8_t* source;
    uint8_t* to;  // of planar output the three planes, one after the other
    int32_t height, width;
    uint32_t swap;
    const uint32_t* weights;
    ptrdiff_t plane;  // bytes from one plane to the next
};

enum class Region { firstColumns, body, lastRows, lastColumns };
constexpr Region allRegions[] = {Region::firstColumns, Region::body, Region::lastRows, Region::lastColumns};
const char* nameOf(Region region) {
    static const char* const names[] = {"first columns", "body", "last rows", "last columns"};
    return names[static_cast<int>(region)];
}

// `start` is the first border row or column. Only the body's pair means anything.
KroCoverage callRegion(const kro::Kernels& t, Region region, Kind kind, const Where& a, int32_t start) {
    uint8_t *const p1 = a.to, *const p2 = a.to + a.plane, *const p3 = a.to + 2 * a.plane;
    const bool bgr = kind == Kind::bgr;
    switch (region) {
        case Region::firstColumns:
            if (regions::interleaved(kind)) {
                call(bgr ? t.rg8ToBgr8_bilinear_firstCols : t.rg8ToBgra8_bilinear_firstCols, a.source, a.to, a.height,
                     a.width, a.swap);
            } else if (kind == Kind::planar) {
                call(t.rg8ToBgr8P_bilinear_firstCols, a.source, p1, p2, p3, a.height, a.width);
            } else {
                call(t.rg8ToMono8_bilinear_firstCols, a.source, a.to, a.height, a.width, a.weights);
            }
            break;
        case Region::body:
            if (regions::interleaved(kind)) {
                return call(bgr ? t.rg8ToBgr8_bilinear_body : t.rg8ToBgra8_bilinear_body, a.source, a.to, a.height,
                            a.width, a.swap);
            }
            if (kind == Kind::planar) {
                return call(t.rg8ToBgr8P_bilinear_body, a.source, p1, p2, p3, a.height, a.width);
            }
            return call(t.rg8ToMono8_bilinear_body, a.source, a.to, a.height, a.width, a.weights);
        case Region::lastRows:
            if (regions::interleaved(kind)) {
                call(bgr ? t.rg8ToBgr8_bilinear_lastRows : t.rg8ToBgra8_bilinear_lastRows, a.source, a.to, a.height,
                     a.width, start, a.swap);
            } else if (kind == Kind::planar) {
                call(t.rg8ToBgr8P_bilinear_lastRows, a.source, p1, p2, p3, a.height, a.width, start);
            } else {
                call(t.rg8ToMono8_bilinear_lastRows, a.source, a.to, a.height, a.width, start, a.weights);
            }
            break;
        case Region::lastColumns:
            if (regions::interleaved(kind)) {
                call(bgr ? t.rg8ToBgr8_bilinear_lastCols : t.rg8ToBgra8_bilinear_lastCols, a.source, a.to, a.height,
                     a.width, start, a.swap);
            } else if (kind == Kind::planar) {
                call(t.rg8ToBgr8P_bilinear_lastCols, a.source, p1, p2, p3, a.height, a.width, start);
            } else {
                call(t.rg8ToMono8_bilinear_lastCols, a.source, a.to, a.height, a.width, start, a.weights);
            }
            break;
    }
    return {-1, -1};
}

Inside insideOf(Region region, Size size) {
    const int rowEnd = borderStart(size.height), columnEnd = borderStart(size.width);
    switch (region) {
        case Region::firstColumns:
            return [](int y, int x) { return y >= 1 && x == 0; };
        case Region::body:
            return [=](int y, int x) { return y >= 1 && y < rowEnd && x >= 1 && x < columnEnd; };
        case Region::lastRows:
            return [=](int y, int x) { return y >= rowEnd && x >= 1 && x < columnEnd; };
        default:
            return [=](int y, int x) { return y >= 1 && x >= columnEnd; };
    }
}

int startOf(Region region, Size size) {
    return region == Region::lastRows ? borderStart(size.height) : borderStart(size.width);
}

constexpr uint32_t arbitraryWeights[][3] = {{77, 150, 29},
                                            {29, 150, 77},
                                            {0, 256, 0},
                                            {300, 1, 4000},
                                            {127, 129, 0},
                                            {0, 171, 127},
                                            {127, 171, 127},
                                            {128, 150, 29},
                                            {77, 150, 128},
                                            {77, 128, 29},
                                            {77, 172, 29},
                                            {65535, 65535, 65535},
                                            {0x10001u, 0xFFFFFFFFu, 7}};

Style styleOf(Kind kind, uint32_t swap, const uint32_t* weights) {
    return {kind, swap == 1, {weights[0], weights[1], weights[2]}};
}

class Bilinear : public testing::TestWithParam<Kind> {
protected:
    Kind kind() const { return GetParam(); }
    std::vector<uint32_t> swaps() const {
        return regions::interleaved(kind()) ? std::vector<uint32_t>{0, 1, 2, 0xFFFFFFFFu} : std::vector<uint32_t>{0};
    }
    size_t bytes(Size size) const {
        return reference::place(size.height, 0, size.width) * static_cast<size_t>(regions::bytesPerPixel(kind()));
    }
    Mosaic mosaic(Size size, Phase phase, uint32_t seed = 1) const {
        return {size.height, size.width, phase, sampleBytes(Content::noise, size, seed).data()};
    }
    ptrdiff_t planeOf(Size size) const { return static_cast<ptrdiff_t>(size.height) * size.width; }

    guard::Buffer source{48 * 72};
    Destination destination{48 * 72 * 4};
};
INSTANTIATE_TEST_SUITE_P(Every, Bilinear, testing::ValuesIn(regions::allKinds),
                         [](const auto& tested) { return regions::nameOf(tested.param); });

TEST_P(Bilinear, RegionRoutinesWriteTheirRectangleAndNothingElse) {
    for (Size size : smallSizes()) {
        const Mosaic m = mosaic(size, Phase::rg);
        const uint8_t* const from = source.hold(regions::bytesOf(m), guard::bothPlacements[size.width % 2]);
        const Picture picture = reference::bilinear(m);
        for (Region region : allRegions) {
            for (uint32_t swap : swaps()) {
                const Expected expected =
                    regions::bytesOf(picture, styleOf(kind(), swap, arbitraryWeights[0]), insideOf(region, size));
                for (const kro::Kernels* table : usableTables()) {
                    ASSERT_TRUE(destination.check(
                        *table, expected,
                        [&](uint8_t* to) {
                            const KroCoverage pair = callRegion(
                                *table, region, kind(),
                                {from, to, size.height, size.width, swap, arbitraryWeights[0], planeOf(size)},
                                startOf(region, size));
                            if (region == Region::body) {
                                EXPECT_EQ(borderStart(size.height), pair.first) << describe(size);
                                EXPECT_EQ(borderStart(size.width), pair.second) << describe(size);
                            }
                        },
                        [&] {
                            return std::string(nameOf(region)) + " " + describe(size) + " swap " +
                                   std::to_string(swap);
                        }));
                }
            }
        }
    }
}

TEST_P(Bilinear, BodyOfFewerThanFourRowsCoversNothing) {
    for (int height : {3, 2, 1}) {
        const Size size{height, 20};
        const uint8_t* const from = source.hold(sampleBytes(Content::noise, size, 1), guard::Placement::againstEnd);
        for (const kro::Kernels* table : usableTables()) {
            destination.check(
                *table, untouched(bytes(size)),
                [&](uint8_t* to) {
                    const KroCoverage pair =
                        callRegion(*table, Region::body, kind(),
                                   {from, to, height, size.width, 0, arbitraryWeights[0], planeOf(size)}, 0);
                    EXPECT_EQ(height - 1 - (height & 1), pair.first);
                    EXPECT_EQ(0, pair.second);
                },
                [&] { return describe(size); });
        }
    }
}

TEST_P(Bilinear, LastRowsAndColumnsDecideByTheDifferenceAlone) {
    for (Size size : {Size{8, 20}, Size{9, 21}}) {
        const Mosaic m = mosaic(size, Phase::rg);
        const uint8_t* const from = source.hold(regions::bytesOf(m), guard::Placement::againstEnd);
        for (Region region : {Region::lastRows, Region::lastColumns}) {
            const int whole = region == Region::lastRows ? size.height : size.width;
            for (int start : {whole, whole - 3, whole - 4, 0}) {
                for (const kro::Kernels* table : usableTables()) {
                    destination.check(
                        *table, untouched(bytes(size)),
                        [&](uint8_t* to) {
                            callRegion(*table, region, kind(),
                                       {from, to, size.height, size.width, 0, arbitraryWeights[0], planeOf(size)},
                                       start);
                        },
                        [&] { return std::string(nameOf(region)) + " from " + std::to_string(start); });
                }
            }
        }
    }
}

// The green-first entries pass the full frame and a start row counted in it: the parity of the height means nothing.
TEST_P(Bilinear, LastRowsOfTheUnshiftedFrame) {
    for (Size size : everySize(5, 10, 4, 40)) {
        const Mosaic m = mosaic(size, Phase::gb);
        const uint8_t* const from = source.hold(regions::bytesOf(m), guard::Placement::againstEnd);
        const int start = borderStart(size.height - 1) + 1;
        const Expected expected =
            regions::bytesOf(reference::bilinear(m), styleOf(kind(), 0, arbitraryWeights[0]),
                             [&](int y, int x) { return y >= start && x >= 1 && x < borderStart(size.width); });
        for (const kro::Kernels* table : usableTables()) {
            ASSERT_TRUE(destination.check(
                *table, expected,
                [&](uint8_t* to) {
                    callRegion(*table, Region::lastRows, kind(),
                               {from, to, size.height, size.width, 0, arbitraryWeights[0], planeOf(size)}, start);
                },
                [&] { return describe(size); }));
        }
    }
}

TEST_P(Bilinear, RegionsTileTheFrameExactlyOnce) {
    for (Size size : everySize(4, 40, 4, 40)) {
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                int count = y == 0 ? 1 : 0;  // first rows
                for (Region region : allRegions) {
                    count += insideOf(region, size)(y, x) ? 1 : 0;
                }
                ASSERT_EQ(1, count) << describe(size) << " row " << y << " column " << x;
            }
        }
    }
}

void callFirstRows(const kro::Kernels& t, Phase phase, Kind kind, const uint8_t* from, uint8_t* to, int width,
                   uint32_t swap) {
    if (phase == Phase::rg) {
        call(kind == Kind::bgr ? t.rg8ToBgr8_bilinear_firstRows : t.rg8ToBgra8_bilinear_firstRows, from, to, width,
             swap);
    } else {
        call(kind == Kind::bgr ? t.gr8ToBgr8_bilinear_firstRows : t.gr8ToBgra8_bilinear_firstRows, from, to, width,
             swap);
    }
}

TEST_P(Bilinear, FirstRows) {
    if (!regions::interleaved(kind())) {
        return;  // computed by the entries
    }
    for (int width = 4; width <= 72; ++width) {
        const Size size{4, width};
        for (Phase phase : {Phase::rg, Phase::gb}) {
            const Mosaic m = mosaic(size, phase);
            // Two rows are read for the RG phase, three for the green-first ones.
            std::vector<uint8_t> rows = regions::bytesOf(m);
            rows.resize(static_cast<size_t>(width) * (phase == Phase::rg ? 2 : 3));
            const uint8_t* const from = source.hold(rows, guard::Placement::againstEnd);
            const int written = phase == Phase::rg ? 1 : 2;
            const Picture part = regions::rowsOf(reference::bilinear(m), 0, written);
            for (uint32_t swap : swaps()) {
                const Expected expected = regions::bytesOf(part, styleOf(kind(), swap, arbitraryWeights[0]));
                for (const kro::Kernels* table : usableTables()) {
                    ASSERT_TRUE(destination.check(
                        *table, expected,
                        [&](uint8_t* to) { callFirstRows(*table, phase, kind(), from, to, width, swap); },
                        [&] { return "width " + std::to_string(width) + " swap " + std::to_string(swap); }));
                }
            }
        }
    }
}

// An entry of each kind and phase: what it is called with and how its bytes stand.
int32_t callEntry(const kro::Kernels& t, Phase phase, Kind kind, const Where& a) {
    uint8_t *const p1 = a.to, *const p2 = a.to + a.plane, *const p3 = a.to + 2 * a.plane;
    const decltype(t.rg8ToBgr8_bilinear) interleaved[2][4] = {
        {t.rg8ToBgr8_bilinear, t.gr8ToBgr8_bilinear, t.gb8ToBgr8_bilinear, t.bg8ToBgr8_bilinear},
        {t.rg8ToBgra8_bilinear, t.gr8ToBgra8_bilinear, t.gb8ToBgra8_bilinear, t.bg8ToBgra8_bilinear}};
    switch (kind) {
        case Kind::planar:
            return call(phase == Phase::rg ? t.rg8ToBgr8P_bilinear : t.gr8ToBgr8P_bilinear, a.source, a.height,
                        a.width, p1, p2, p3);
        case Kind::mono:
            return call(phase == Phase::rg ? t.rg8ToMono8_bilinear : t.gr8ToMono8_bilinear, a.source, a.height,
                        a.width, a.weights, a.to);
        default:
            return call(interleaved[kind == Kind::bgra][static_cast<int>(phase)], a.source, a.height, a.width, a.to);
    }
}

TEST_P(Bilinear, Entries) {
    for (Phase phase : reference::allPhases) {
        if (!regions::interleaved(kind()) && (phase == Phase::gb || phase == Phase::bg)) {
            continue;  // reached by exchanged planes or weights
        }
        for (Size size : smallSizes()) {
            const Mosaic m = mosaic(size, phase);
            const uint8_t* const from = source.hold(regions::bytesOf(m), guard::bothPlacements[size.height % 2]);
            const Picture picture = reference::bilinear(m);
            const bool grey = kind() == Kind::mono;
            for (const auto& weights : arbitraryWeights) {
                // The first plane and the first weight belong to the red of both the RG and the GR phase.
                const Expected expected = regions::bytesOf(picture, styleOf(kind(), 0, weights));
                for (const kro::Kernels* table : usableTables()) {
                    ASSERT_TRUE(destination.check(
                        *table, expected,
                        [&](uint8_t* to) {
                            EXPECT_EQ(0, callEntry(*table, phase, kind(),
                                                   {from, to, size.height, size.width, 0, weights, planeOf(size)}));
                        },
                        [&] { return describe(size) + " phase " + std::to_string(static_cast<int>(phase)); }));
                }
                if (!grey) {
                    break;
                }
            }
        }
    }
}

TEST_P(Bilinear, CallerWeightsInRegions) {
    if (kind() != Kind::mono) {
        return;
    }
    for (Size size : {Size{7, 37}, Size{8, 36}}) {
        const Mosaic m = mosaic(size, Phase::rg, 5);
        const uint8_t* const from = source.hold(regions::bytesOf(m), guard::Placement::againstEnd);
        const Picture picture = reference::bilinear(m);
        for (const auto& weights : arbitraryWeights) {
            for (Region region : allRegions) {
                const Expected expected =
                    regions::bytesOf(picture, styleOf(kind(), 0, weights), insideOf(region, size));
                for (const kro::Kernels* table : usableTables()) {
                    ASSERT_TRUE(destination.check(
                        *table, expected,
                        [&](uint8_t* to) {
                            callRegion(*table, region, kind(), {from, to, size.height, size.width, 0, weights, 0},
                                       startOf(region, size));
                        },
                        [&] { return std::string(nameOf(region)) + " weights " + std::to_string(weights[0]); }));
                }
            }
        }
    }
}

// Tiles of one colour each: in their middle all four kinds of sites have it.
constexpr int tile = 4;
std::vector<uint8_t> tilesOf(int blue) {
    std::vector<uint8_t> samples;
    for (int y = 0; y < 256 * tile; ++y) {
        for (int x = 0; x < 256 * tile; ++x) {
            const int red = y / tile, green = x / tile;
            samples.push_back(static_cast<uint8_t>(y % 2 != x % 2 ? green : y % 2 == 0 ? red : blue));
        }
    }
    return samples;
}
int wrongTiles(const std::vector<uint8_t>& grey, int blue, const std::array<uint32_t, 3>& weights) {
    int wrong = 0;
    for (int red = 0; red < 256; ++red) {
        for (int green = 0; green < 256; ++green) {
            const int expected = reference::luma({red, green, blue}, weights);
            for (const auto& [y, x] : {std::pair{1, 1}, {1, 2}, {2, 1}, {2, 2}}) {
                wrong += grey[reference::place(red * tile + y, green * tile + x, 256 * tile)] != expected ? 1 : 0;
            }
        }
    }
    return wrong;
}

TEST(BilinearLuma, OfEveryColour) {
    constexpr int length = 256 * tile;
    std::vector<uint8_t> grey(static_cast<size_t>(length) * length);
    const int step = static_cast<int>(stepOf(17, 85));
    for (int blue = 0; blue < 256; blue += step) {
        const std::vector<uint8_t> samples = tilesOf(blue);
        for (const auto& weights : {reference::lumaWeights, {127, 129, 0}, {127, 171, 127}}) {
            for (const kro::Kernels* table : usableTables()) {
                call(table->rg8ToMono8_bilinear, samples.data(), length, length, weights.data(), grey.data());
                ASSERT_EQ(0, wrongTiles(grey, blue, weights)) << table->name << " blue " << blue;
            }
        }
    }
}

std::vector<uint8_t> toBgr(const kro::Kernels& table, Phase phase, const Mosaic& m) {
    std::vector<uint8_t> bgr(m.sample.size() * 3);
    const std::vector<uint8_t> from = regions::bytesOf(m);
    callEntry(table, phase, Kind::bgr, {from.data(), bgr.data(), m.height, m.width, 0, nullptr, 0});
    return bgr;
}

TEST(BilinearOddities, BilinearGreenFirstOddWidthMarkedValues) {
    const Size size{6, 21};
    for (const kro::Kernels* table : usableTables()) {
        for (Phase phase : {Phase::gr, Phase::gb}) {
            Mosaic m(size.height, size.width, phase, sampleBytes(Content::noise, size, 21).data());
            m.at(0, 0) = 200;
            m.at(2, 1) = 200;
            const std::vector<uint8_t> before = toBgr(*table, phase, m);
            m.at(0, 0) = 100;
            m.at(2, 1) = 100;
            const std::vector<uint8_t> after = toBgr(*table, phase, m);
            // The colour at the odd columns of row 0: red in GR, in byte 2; blue in GB, in byte 0.
            const size_t top = phase == Phase::gr ? 2 : 0;
            EXPECT_EQ(25, before[19 * 3 + 1] - after[19 * 3 + 1]) << table->name;  // green at (0, W - 2)
            EXPECT_EQ(50, before[(21 + 19) * 3 + top] - after[(21 + 19) * 3 + top]) << table->name;
            EXPECT_EQ(50, before[(21 + 20) * 3 + top] - after[(21 + 20) * 3 + top]) << table->name;
            EXPECT_EQ((m.at(0, 0) + m.at(0, 20) + 2 * m.at(1, 19)) >> 2, after[19 * 3 + 1]);
        }
    }
}

TEST(BilinearOddities, EvenWidthsFollowTheBorderRuleThroughout) {
    const Size size{6, 20};
    const Mosaic m(size.height, size.width, Phase::gr, sampleBytes(Content::noise, size, 22).data());
    const Expected expected = regions::bytesOf(reference::bilinearByRule(m), {Kind::bgr});
    for (const kro::Kernels* table : usableTables()) {
        EXPECT_EQ(expected.value, toBgr(*table, Phase::gr, m)) << table->name;
    }
}

TEST(BilinearOddities, SwapRbTwoActsLikeZero) {
    const Size size{6, 40};
    const std::vector<uint8_t> mosaic = sampleBytes(Content::noise, size, 23);
    for (const kro::Kernels* table : usableTables()) {
        std::vector<uint8_t> zero(mosaic.size() * 3, 1), one = zero, two = zero;
        call(table->rg8ToBgr8_bilinear_body, mosaic.data(), zero.data(), 6, 40, 0u);
        call(table->rg8ToBgr8_bilinear_body, mosaic.data(), one.data(), 6, 40, 1u);
        call(table->rg8ToBgr8_bilinear_body, mosaic.data(), two.data(), 6, 40, 2u);
        EXPECT_EQ(zero, two) << table->name;
        EXPECT_NE(zero, one) << table->name;
    }
}

TEST(BilinearOddities, AlphaIsZeroInBilinear) {
    const std::vector<uint8_t> mosaic(7 * 37, 255);
    for (const kro::Kernels* table : usableTables()) {
        std::vector<uint8_t> bgra(mosaic.size() * 4, 0xEE);
        call(table->gb8ToBgra8_bilinear, mosaic.data(), 7, 37, bgra.data());
        for (size_t i = 0; i < bgra.size(); ++i) {
            ASSERT_EQ(i % 4 == 3 ? 0 : 255, bgra[i]) << table->name << " byte " << i;
        }
    }
}

TEST(BilinearOddities, GreenFirstFramesOfHeightFourAreFilled) {
    for (int width = 4; width <= 40; ++width) {
        const Size size{4, width};
        for (Phase phase : {Phase::gr, Phase::gb}) {
            const Mosaic m(4, width, phase, sampleBytes(Content::noise, size, 24).data());
            const Expected expected = regions::bytesOf(reference::bilinear(m), {Kind::bgr});
            for (const kro::Kernels* table : usableTables()) {
                EXPECT_EQ(expected.value, toBgr(*table, phase, m)) << table->name << " width " << width;
            }
        }
    }
}

}  // namespace
