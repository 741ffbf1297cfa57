// The 16-bit bilinear family: entries, drivers and region routines.
#include "regions.hpp"

namespace {

using reference::borderStart;
using reference::Mosaic;
using reference::Phase;
using reference::Picture;
using regions::Inside;

enum class Region { firstRows, firstColumns, body, lastRows, lastColumns };
constexpr Region allRegions[] = {Region::firstRows, Region::firstColumns, Region::body, Region::lastRows,
                                 Region::lastColumns};
const char* nameOf(Region region) {
    static const char* const names[] = {"first rows", "first columns", "body", "last rows", "last columns"};
    return names[static_cast<int>(region)];
}

Inside insideOf(Region region, Size size) {
    const int rowEnd = borderStart(size.height), columnEnd = borderStart(size.width);
    switch (region) {
        case Region::firstRows:
            return [](int y, int) { return y == 0; };
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

KroCoverage callInterleaved(const kro::Kernels& t, Region region, const uint16_t* from, uint16_t* to, Size size,
                            uint32_t order) {
    const int h = size.height, w = size.width;
    switch (region) {
        case Region::firstRows:
            call(t.bilinearFirstRowsRGGBU16, from, to, w, order);
            break;
        case Region::firstColumns:
            call(t.bilinearFirstColsRGGBU16, from, to, h, w, order);
            break;
        case Region::body:
            return call(t.bilinearBodyRGGBU16, from, to, h, w, order);
        case Region::lastRows:
            call(t.bilinearLastRowsRGGBU16, from, to, h, w, borderStart(h), order);
            break;
        case Region::lastColumns:
            call(t.bilinearLastColsRGGBU16, from, to, h, w, borderStart(w), order);
            break;
    }
    return {borderStart(w), borderStart(h)};
}

KroCoverage callPlanar(const kro::Kernels& t, Region region, const uint16_t* from, uint16_t* to, Size size) {
    const int h = size.height, w = size.width;
    uint16_t *const b = to, *const g = to + reference::place(h, 0, w), *const r = g + reference::place(h, 0, w);
    switch (region) {
        case Region::firstRows:
            call(t.bilinearFirstRowsRGGBU16P, from, b, g, r, w);
            break;
        case Region::firstColumns:
            call(t.bilinearFirstColsRGGBU16P, from, b, g, r, h, w);
            break;
        case Region::body:
            return call(t.bilinearBodyRGGBU16P, from, b, g, r, h, w);
        case Region::lastRows:
            call(t.bilinearLastRowsRGGBU16P, from, b, g, r, h, w, borderStart(h));
            break;
        case Region::lastColumns:
            call(t.bilinearLastColsRGGBU16P, from, b, g, r, h, w, borderStart(w));
            break;
    }
    return {borderStart(w), borderStart(h)};
}

constexpr int tops[] = {65535, 16383, 8191, 4095, 255};

class BilinearU16 : public testing::Test {
    explicit BilinearU16(size_t samples) : source(samples * 2), destination(samples * 6) {}

protected:
    guard::Buffer source;
    Destination destination;

    explicit BilinearU16(Size most = {80, 2000}) : BilinearU16(static_cast<size_t>(most.height * most.width)) {}

    const uint16_t* hold(const Mosaic& m, int parity = 0) {
        return source.hold(regions::wordsOf(m), guard::bothPlacements[parity % 2]);
    }
    static Mosaic mosaic(Size size, Content content, int top, uint32_t seed) {
        return {size.height, size.width, Phase::rg, samples(content, size, top, seed).data()};
    }
    void checkDrivers(Size size, Content content, int top, uint32_t seed) {
        const Mosaic m = mosaic(size, content, top, seed);
        const uint16_t* const from = hold(m, size.width);
        const Picture picture = reference::bilinearU16(m);
        const size_t n = m.sample.size();
        for (bool planar : {false, true}) {
            const Expected expected = regions::wordsOf(picture, planar, false);
            for (const kro::Kernels* t : usableTables()) {
                ASSERT_TRUE(destination.check(
                    *t, expected,
                    [&](uint8_t* bytes) {
                        uint16_t* const to = reinterpret_cast<uint16_t*>(bytes);
                        EXPECT_EQ(0, planar ? call(t->demosaicingBilinearRGGBU16P, from, size.height, size.width, to,
                                                   to + n, to + 2 * n)
                                            : call(t->demosaicingBilinearRGGBU16, from, size.height, size.width, to));
                    },
                    [&] {
                        return describe(size) + " " + nameOf(content) + " to " + std::to_string(top) +
                               (planar ? " planar" : "");
                    }));
            }
        }
    }
};

TEST_F(BilinearU16, DriversEverySize) {
    for (Size size : everySize(4, 12, 4, 70)) {
        const uint32_t seed = static_cast<uint32_t>(size.height * 100 + size.width);
        checkDrivers(size, Content::noise, tops[seed % 5], seed);
        checkDrivers(size, allContents[1 + seed % 5], tops[(seed + 1) % 5], seed);
        if (HasFailure()) {
            return;
        }
    }
}

TEST_F(BilinearU16, DriversLargeSizes) {
    for (Size size : largeSizes()) {
        checkDrivers(size, Content::noise, 65535, 3);
        checkDrivers(size, Content::noise, 8191, 4);
    }
}

// Pictures of more than 13 MiB, which AVX-512 leaves to AVX2.
class BilinearU16Uncached : public BilinearU16 {
protected:
    static constexpr Size size{300, 8000};
    BilinearU16Uncached() : BilinearU16(size) {}
};
TEST_F(BilinearU16Uncached, Drivers) { checkDrivers(size, Content::noise, 65535, 5); }

TEST_F(BilinearU16, RegionRoutinesWriteTheirRectangleAndNothingElse) {
    for (Size size : smallSizes()) {
        const Mosaic m = mosaic(size, Content::noise, 65535, 9);
        const uint16_t* const from = hold(m, size.width);
        const Picture picture = reference::bilinearU16(m);
        for (Region region : allRegions) {
            for (int form = 0; form < 3; ++form) {  // B, G, R; R, G, B; planes
                Picture stored = picture;
                if (form == 1 && region == Region::body) {  // blocks ignore the order flag
                    for (int y = 0; y < size.height; ++y) {
                        for (int x = 0; x < reference::u16BlockColumns(size.width).end; ++x) {
                            std::swap(stored.at(y, x)[reference::red], stored.at(y, x)[reference::blue]);
                        }
                    }
                }
                const Expected expected = regions::wordsOf(stored, form == 2, form == 1, insideOf(region, size));
                for (const kro::Kernels* t : usableTables()) {
                    ASSERT_TRUE(destination.check(
                        *t, expected,
                        [&](uint8_t* bytes) {
                            uint16_t* const to = reinterpret_cast<uint16_t*>(bytes);
                            const KroCoverage pair =
                                form == 2 ? callPlanar(*t, region, from, to, size)
                                          : callInterleaved(*t, region, from, to, size, static_cast<uint32_t>(form));
                            EXPECT_EQ(borderStart(size.width), pair.first);
                            EXPECT_EQ(borderStart(size.height), pair.second);
                        },
                        [&] {
                            return std::string(nameOf(region)) + " " + describe(size) + " form " +
                                   std::to_string(form);
                        }));
                }
            }
        }
    }
}

TEST_F(BilinearU16, OrderFlagIgnoredByBlocksOfThe16BitBody) {
    const Size size{4, 20};  // blocks up to column 16, cells at columns 17 and 18
    const Mosaic m = mosaic(size, Content::noise, 4095, 12);
    const std::vector<uint16_t> from = regions::wordsOf(m);
    for (const kro::Kernels* t : usableTables()) {
        std::vector<uint16_t> plain(4 * 20 * 3), ordered(plain);
        call(t->bilinearBodyRGGBU16, from.data(), plain.data(), 4, 20, 0u);
        call(t->bilinearBodyRGGBU16, from.data(), ordered.data(), 4, 20, 1u);
        for (size_t x = 1; x <= 18; ++x) {
            const size_t i = (20 + x) * 3;
            EXPECT_EQ(plain[i + 1], ordered[i + 1]);
            EXPECT_EQ(plain[i], ordered[x <= 16 ? i : i + 2]) << t->name << " column " << x;
            EXPECT_EQ(plain[i + 2], ordered[x <= 16 ? i + 2 : i]) << t->name << " column " << x;
        }
    }
}

TEST_F(BilinearU16, U16BilinearWrapsInBlocks) {
    const std::vector<uint16_t> flat(6 * 20, 0x4000);
    for (const kro::Kernels* t : usableTables()) {
        std::vector<uint16_t> to(6 * 20 * 3);
        call(t->demosaicingBilinearRGGBU16, flat.data(), 6, 20, to.data());
        const auto at = [&](size_t y, size_t x, size_t channel) { return to[(y * 20 + x) * 3 + channel]; };
        EXPECT_EQ(0x4000, at(1, 1, 0)) << t->name;   // own blue
        EXPECT_EQ(0x0000, at(1, 1, 1)) << t->name;   // four samples
        EXPECT_EQ(0xC000, at(1, 2, 0)) << t->name;   // two samples
        EXPECT_EQ(0x0000, at(4, 16, 1)) << t->name;  // the last column of the blocks
        for (size_t channel = 0; channel < 3; ++channel) {
            EXPECT_EQ(0x4000, at(1, 17, channel)) << t->name;  // exact after the blocks
            EXPECT_EQ(0x4000, at(0, 8, channel)) << t->name;
            EXPECT_EQ(0x4000, at(5, 8, channel)) << t->name;
            EXPECT_EQ(0x4000, at(3, 19, channel)) << t->name;
        }
    }
    const std::vector<uint16_t> four(4 * 10, 0x3000);
    for (const kro::Kernels* t : usableTables()) {
        std::vector<uint16_t> to(4 * 10 * 3);
        call(t->demosaicingBilinearRGGBU16, four.data(), 4, 10, to.data());
        EXPECT_EQ(0xF000, to[11 * 3 + 1]) << t->name;
    }
}

TEST_F(BilinearU16, WidthNineHasNoBlock) {
    const std::vector<uint16_t> flat(4 * 9, 0x4000);
    for (const kro::Kernels* t : usableTables()) {
        std::vector<uint16_t> to(4 * 9 * 3);
        call(t->demosaicingBilinearRGGBU16, flat.data(), 4, 9, to.data());
        EXPECT_EQ(std::vector<uint16_t>(4 * 9 * 3, 0x4000), to) << t->name;
    }
}

TEST_F(BilinearU16, CheckedEntries) {
    const Size size{9, 30};
    const Mosaic m = mosaic(size, Content::noise, 65535, 13);
    const uint16_t* const from = hold(m);
    const size_t n = m.sample.size();
    for (bool planar : {false, true}) {
        destination.check(
            kro::bestKernels(), regions::wordsOf(reference::bilinearU16(m), planar, false),
            [&](uint8_t* bytes) {
                uint16_t* const to = reinterpret_cast<uint16_t*>(bytes);
                EXPECT_EQ(KRO_OK, planar ? kroDemosaicingBilinearU16P(from, 9, 30, to, to + n, to + 2 * n)
                                         : kroDemosaicingBilinearU16(from, 9, 30, to));
            },
            [] { return std::string("entry"); });
    }
}

TEST_F(BilinearU16, CheckedEntriesRefuseNullsBeforeSizesAndWriteNothing) {
    std::vector<uint16_t> from(64, 5), to(64 * 3, 7);
    uint16_t *const b = to.data(), *const g = b + 64, *const r = g + 64;
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicingBilinearU16(nullptr, 8, 8, b));
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicingBilinearU16(from.data(), 8, 8, nullptr));
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicingBilinearU16(nullptr, 3, 3, b));
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicingBilinearU16P(nullptr, 8, 8, b, g, r));
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicingBilinearU16P(from.data(), 8, 8, nullptr, g, r));
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicingBilinearU16P(from.data(), 8, 8, b, nullptr, r));
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicingBilinearU16P(from.data(), 8, 8, b, g, nullptr));
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicingBilinearU16P(from.data(), 3, 8, b, g, nullptr));
    for (Size size : {Size{3, 8}, Size{8, 3}, Size{0, 8}, Size{8, 0}, Size{-8, 8}, Size{8, -8}, Size{-8, -8}}) {
        EXPECT_EQ(KRO_ERR_SIZE, kroDemosaicingBilinearU16(from.data(), size.height, size.width, b));
        EXPECT_EQ(KRO_ERR_SIZE, kroDemosaicingBilinearU16P(from.data(), size.height, size.width, b, g, r));
    }
    EXPECT_EQ(std::vector<uint16_t>(64 * 3, 7), to);
}

TEST_F(BilinearU16, CheckedEntriesTakeTheSmallestFrames) {
    for (const Size size : {Size{4, 4}, Size{4, 9}, Size{9, 4}}) {
        const reference::Mosaic m(size.height, size.width, reference::Phase::rg,
                                  samples(Content::noise, size, 4095, 71).data());
        const reference::Picture picture = reference::bilinearU16(m);
        const std::vector<uint16_t> from = regions::wordsOf(m);
        std::vector<uint16_t> bgr(size.pixels() * 3), planes[3];
        for (std::vector<uint16_t>& plane : planes) {
            plane.resize(size.pixels());
        }
        EXPECT_EQ(KRO_OK, kroDemosaicingBilinearU16(from.data(), size.height, size.width, bgr.data()));
        EXPECT_EQ(KRO_OK, kroDemosaicingBilinearU16P(from.data(), size.height, size.width, planes[0].data(),
                                                     planes[1].data(), planes[2].data()));
        for (size_t i = 0; i < bgr.size(); ++i) {
            ASSERT_EQ(picture.pixel[i / 3][2 - i % 3], bgr[i]) << describe(size) << " sample " << i;
            ASSERT_EQ(bgr[i], planes[i % 3][i / 3]) << describe(size) << " plane " << i % 3;
        }
    }
}

}  // namespace
