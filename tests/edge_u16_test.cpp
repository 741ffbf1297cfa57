// The 16-bit edge-directed family: drivers, interior and border routines.
#include <cstring>

#include "regions.hpp"

namespace {

using reference::Mosaic;
using reference::Phase;
using reference::Picture;

int clampOf(Phase phase) { return phase == Phase::rg ? 4095 : 65535; }

int32_t callDriver(const kro::Kernels& t, Phase phase, const uint16_t* from, Size size, uint16_t* to) {
    const decltype(t.demosaicingEdgeRGGBU16) drivers[] = {t.demosaicingEdgeRGGBU16, t.demosaicingEdgeGRBGU16,
                                                          t.demosaicingEdgeGBRGU16, t.demosaicingEdgeBGGRU16};
    return call(drivers[static_cast<int>(phase)], from, size.height, size.width, to);
}

// Samples above 14 bits are the wide lanes' affair.
constexpr int tops[] = {65535, 16383, 4095, 1023, 16385};

class EdgeU16 : public testing::TestWithParam<Phase> {
protected:
    guard::Buffer source{80 * 2000 * 2};
    Destination destination{80 * 2000 * 6};

    void checkDriver(Size size, Content content, int top, uint32_t seed) {
        const Mosaic m(size.height, size.width, GetParam(), samples(content, size, top, seed).data());
        const uint16_t* const from = source.hold(regions::wordsOf(m), guard::bothPlacements[size.width % 2]);
        const Expected expected = regions::wordsOf(reference::edgeU16(m, clampOf(GetParam())), false, false);
        for (const kro::Kernels* t : usableTables()) {
            ASSERT_TRUE(destination.check(
                *t, expected,
                [&](uint8_t* to) {
                    EXPECT_EQ(0, callDriver(*t, GetParam(), from, size, reinterpret_cast<uint16_t*>(to)));
                },
                [&] { return describe(size) + " " + nameOf(content) + " to " + std::to_string(top); }));
        }
    }
};
const char* phaseName(const testing::TestParamInfo<Phase>& tested) {
    static const char* const names[] = {"RGGB", "GRBG", "GBRG", "BGGR"};
    return names[static_cast<int>(tested.param)];
}
INSTANTIATE_TEST_SUITE_P(Every, EdgeU16, testing::ValuesIn(reference::allPhases), phaseName);

TEST_P(EdgeU16, DriversEverySize) {
    for (Size size : everySize(4, 20, 4, 70)) {
        const uint32_t seed = static_cast<uint32_t>(size.height * 100 + size.width);
        checkDriver(size, Content::noise, tops[seed % 5], seed);
        checkDriver(size, allContents[1 + seed % 5], tops[(seed + 1) % 5], seed);
        if (HasFailure()) {
            return;
        }
    }
}

TEST_P(EdgeU16, DriversEveryContentAndDepth) {
    for (Size size : {Size{4, 4}, Size{7, 9}, Size{12, 41}, Size{13, 66}}) {
        for (Content content : allContents) {
            for (int top : tops) {
                checkDriver(size, content, top, 5);
            }
        }
    }
}

TEST_P(EdgeU16, DriversLargeSizes) {
    for (Size size : largeSizes()) {
        checkDriver(size, Content::noise, 65535, 3);
        checkDriver(size, Content::noise, 16383, 4);
    }
}

// One deep sample among shallow ones must not change what its far neighbours get.
TEST_P(EdgeU16, SingleDeepSamples) {
    const Size size{16, 150};
    for (int spot = 0; spot < 40; ++spot) {
        Mosaic m(size.height, size.width, GetParam(), samples(Content::noise, size, 16383, 8).data());
        m.at(spot * 7 % 16, spot * 13 % 150) = 65535 - spot;
        const uint16_t* const from = source.hold(regions::wordsOf(m), guard::Placement::againstEnd);
        const Expected expected = regions::wordsOf(reference::edgeU16(m, clampOf(GetParam())), false, false);
        for (const kro::Kernels* t : usableTables()) {
            ASSERT_TRUE(destination.check(
                *t, expected,
                [&](uint8_t* to) { callDriver(*t, GetParam(), from, size, reinterpret_cast<uint16_t*>(to)); },
                [&] { return "spot " + std::to_string(spot); }));
        }
    }
}

// ---- the five routines in the drivers' order ----

struct Plan {
    bool redRowFirst;  // otherwise row 0 is a green and blue row that the first rows take along
    int startColumn;
};
Plan planOf(Phase phase) {
    return {phase == Phase::rg || phase == Phase::gr, phase == Phase::rg || phase == Phase::gb ? 2 : 3};
}

// Runs the routines one by one; each writes its region and nothing else, all of it final.
class ByHand {
public:
    ByHand(const kro::Kernels& table, Phase phase, Size size, const uint16_t* from, uint16_t* to,
           const std::vector<uint16_t>& wanted)
        : t_(table),
          plan_(planOf(phase)),
          size_(size),
          clampMax_(clampOf(phase)),
          from_(from),
          to_(to),
          wanted_(wanted),
          before_(to, to + wanted.size()) {}

    void run() {
        const int h = size_.height, w = size_.width, s = plan_.startColumn;
        const int skipped = plan_.redRowFirst ? 0 : 1;
        const uint16_t* const image = from_ + static_cast<ptrdiff_t>(skipped) * w;
        uint16_t* const imageTo = to_ + static_cast<ptrdiff_t>(skipped) * w * 3;

        // Written: (row, column, channel in the order B, G, R) of the picture.
        call(skipped ? t_.edgeFirstRowsGBRGU16 : t_.edgeFirstRowsRGGBU16, from_, to_, w, s, clampMax_);
        finished("first rows", [=](int y, int, int c) { return y <= skipped || (y == skipped + 1 && c != red); });

        call(s == 2 ? t_.edgeFirstColsRGGBU16 : t_.edgeFirstColsGRBGU16, image, imageTo, h - skipped, w, clampMax_);
        finished("first columns", [=](int y, int x, int c) { return x < s && belowFirstRows(y - skipped, c); });

        const int first = 2 + skipped;
        const KroCoverage covered =
            call(t_.edgeSecRGGBU16, from_ + static_cast<ptrdiff_t>(first) * w,
                 to_ + static_cast<ptrdiff_t>(first) * w * 3, h - 4 - skipped, w, s, clampMax_);
        const int columnAfter = covered.first, rowAfter = first + covered.second;
        EXPECT_EQ(s >= w - 3 ? s : s + ((w - 4 - s) & ~1) + 2, columnAfter);
        EXPECT_EQ((h - 4 - skipped) / 2 * 2, covered.second);
        finished("interior", [=](int y, int x, int c) {
            const int behind = c == red ? 1 : 0;  // red runs one row and one column late
            const bool inside =
                y + behind >= first && y + behind < rowAfter && x + behind >= s && x + behind < columnAfter;
            return columnAfter > s && inside;
        });

        call(t_.edgeLastRowsRGGBU16, from_, to_, h, w, rowAfter, s, clampMax_);
        finished("last rows",
                 [=](int y, int x, int c) { return x >= s && (y >= rowAfter || (y == rowAfter - 1 && c == red)); });

        call(t_.edgeLastColsRGGBU16, image, imageTo, h - skipped, w, columnAfter, clampMax_);
        finished("last columns", [=](int y, int x, int c) {
            return (x >= columnAfter && belowFirstRows(y - skipped, c)) ||
                   (x == columnAfter - 1 && c == red && y > skipped);
        });
    }

private:
    const kro::Kernels& t_;
    Plan plan_;
    Size size_;
    int clampMax_;
    const uint16_t* from_;
    uint16_t* to_;
    const std::vector<uint16_t>& wanted_;
    std::vector<uint16_t> before_;

    static constexpr int red = 2;

    // Of a view that starts with a red row: what the first rows leave.
    static bool belowFirstRows(int y, int channel) { return y >= 2 || (y == 1 && channel == red); }

    void finished(const char* routine, const std::function<bool(int y, int x, int channel)>& written) {
        for (size_t i = 0; i < wanted_.size(); ++i) {
            const int y = static_cast<int>(i / 3) / size_.width, x = static_cast<int>(i / 3) % size_.width;
            const bool writes = written(y, x, static_cast<int>(i % 3));
            ASSERT_EQ(writes ? wanted_[i] : before_[i], to_[i])
                << t_.name << " " << describe(size_) << " " << routine << " row " << y << " column " << x
                << " channel " << i % 3 << (writes ? "" : " is not its own");
        }
        before_.assign(to_, to_ + wanted_.size());
    }
};

void checkByHand(Phase phase, Size size, guard::Buffer& source, Destination& destination) {
    const Mosaic m(size.height, size.width, phase, samples(Content::noise, size, 65535, 17).data());
    const uint16_t* const from = source.hold(regions::wordsOf(m), guard::Placement::againstEnd);
    const Picture picture = reference::edgeU16(m, clampOf(phase));
    std::vector<uint16_t> wanted;
    for (const reference::Pixel& pixel : picture.pixel) {
        for (size_t channel : {2u, 1u, 0u}) {
            wanted.push_back(static_cast<uint16_t>(pixel[channel]));
        }
    }
    const Expected expected = regions::wordsOf(picture, false, false);
    for (const kro::Kernels* t : usableTables()) {
        ASSERT_TRUE(destination.check(
            *t, expected,
            [&](uint8_t* to) { ByHand(*t, phase, size, from, reinterpret_cast<uint16_t*>(to), wanted).run(); },
            [&] { return describe(size); }));
        ASSERT_FALSE(testing::Test::HasFailure());
    }
}

TEST_P(EdgeU16, RoutinesInTheDriversOrderGiveTheFrame) {
    for (Size size : everySize(GetParam() == Phase::rg || GetParam() == Phase::gr ? 6 : 7, 14, 4, 40)) {
        ASSERT_NO_FATAL_FAILURE(checkByHand(GetParam(), size, source, destination));
    }
}

// Regions are worked on in strips of 256 columns.
TEST_P(EdgeU16, RoutinesOnRowsOfSeveralStripsGiveTheFrame) {
    for (int width : {255, 256, 257, 258, 259, 260, 511, 512, 513, 514, 515, 516, 1031}) {
        for (int height : {8, 9}) {
            ASSERT_NO_FATAL_FAILURE(checkByHand(GetParam(), {height, width}, source, destination));
        }
    }
}

// ---- the interior alone, on a destination whose greens may be anything ----

TEST(EdgeU16Interior, ReadsGreensBackAndWritesItsSamplesAndNothingElse) {
    guard::Buffer source(30 * 80 * 2), destination(30 * 80 * 6);
    for (int rows = 0; rows <= 9; ++rows) {
        for (int width = 4; width <= 70; width += reducedRun ? 5 : 1) {
            const Size size{rows + 4, width};
            for (int startColumn : {2, 3}) {
                const int clampMax = width % 3 == 0 ? 4095 : width % 3 == 1 ? 65535 : 1000;
                const Mosaic m(size.height, width, Phase::rg, samples(Content::noise, size, 65535, 19).data());
                const uint16_t* const from = source.hold(regions::wordsOf(m), guard::bothPlacements[width % 2]);
                for (guard::Fill fill : {guard::Fill::one, guard::Fill::other}) {
                    for (const kro::Kernels* t : usableTables()) {
                        const size_t count = m.sample.size() * 3;
                        uint16_t* const to = reinterpret_cast<uint16_t*>(
                            destination.place(count * 2, guard::bothPlacements[width % 2], fill));
                        reference::U16Frame frame{size.height, width, std::vector<uint16_t>(to, to + count),
                                                  std::vector<bool>(count, false)};
                        const reference::Covered wanted =
                            reference::edgeInteriorU16(m, frame, 2, rows, startColumn, clampMax);
                        const KroCoverage covered = call(t->edgeSecRGGBU16, from + 2 * width, to + 2 * 3 * width,
                                                         rows, width, startColumn, clampMax);
                        EXPECT_EQ(wanted.rows, covered.second);
                        if (rows > 1) {
                            EXPECT_EQ(wanted.firstColumnAfter, covered.first) << "width " << width;
                        }
                        const Expected expected = regions::wordsOf(frame.bgr, frame.written);
                        countComparison(*t, expected.value.size());
                        ASSERT_TRUE(holds(destination, expected))
                            << t->name << " rows " << rows << " width " << width << " start " << startColumn;
                    }
                }
            }
        }
    }
}

std::vector<uint16_t> demosaic(const kro::Kernels& t, const Mosaic& m) {
    std::vector<uint16_t> to(m.sample.size() * 3);
    EXPECT_EQ(0, callDriver(t, m.phase, regions::wordsOf(m).data(), {m.height, m.width}, to.data()));
    return to;
}

TEST(EdgeU16Oddities, U16EdgeRggbClampsAt4095) {
    const Size size{10, 40};
    for (const kro::Kernels* t : usableTables()) {
        for (Phase phase : reference::allPhases) {
            Mosaic m(size.height, size.width, phase);
            m.sample.assign(m.sample.size(), 50000);
            const std::vector<uint16_t> bgr = demosaic(*t, m);
            for (size_t i = 0; i < bgr.size(); ++i) {
                const int y = static_cast<int>(i / 3) / size.width, x = static_cast<int>(i / 3) % size.width;
                const bool own = m.colour(y, x) == static_cast<reference::Colour>(2 - i % 3);
                ASSERT_EQ(phase == Phase::rg && !own ? 4095 : 50000, bgr[i]) << t->name << " sample " << i;
            }
        }
    }
}

TEST(EdgeU16Oddities, StrongSecondDifferencesOnDarkPixelsGiveZero) {
    Mosaic m(9, 24, Phase::gr);
    m.sample.assign(m.sample.size(), 0);
    for (int y = 0; y < 9; ++y) {
        for (int x = y % 2 == 0 ? 1 : 0; x < 24; x += 4) {
            m.at(y, x) = 60000;  // every other red or blue sample of a row
        }
    }
    for (const kro::Kernels* t : usableTables()) {
        const std::vector<uint16_t> bgr = demosaic(*t, m);
        const Picture picture = reference::edgeU16(m, 65535);
        EXPECT_EQ(0, picture.at(4, 3)[reference::green]);
        EXPECT_EQ(0, bgr[(4 * 24 + 3) * 3 + 1]) << t->name;
    }
}

TEST(EdgeU16Oddities, U16TiesGoVertical) {
    for (Phase phase : reference::allPhases) {
        Mosaic m(10, 30, phase);
        for (int y = 0; y < 10; ++y) {
            for (int x = 0; x < 30; ++x) {
                m.at(y, x) = m.colour(y, x) != reference::green ? 0 : y % 2 == 0 ? 1000 : 2000;
            }
        }
        for (const kro::Kernels* t : usableTables()) {
            const std::vector<uint16_t> bgr = demosaic(*t, m);
            for (int y = 0; y < 10; ++y) {
                for (int x = 0; x < 30; ++x) {
                    if (m.colour(y, x) != reference::green) {
                        ASSERT_EQ(y % 2 == 0 ? 2000 : 1000, bgr[reference::place(y, x, 30) * 3 + 1])
                            << t->name << " row " << y << " column " << x;
                    }
                }
            }
        }
    }
}

}  // namespace
