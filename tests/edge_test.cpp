// The 8-bit edge-directed entries, the row-pair step and the bottom kernels, called directly.
#include "regions.hpp"

namespace {

using reference::Mosaic;
using reference::Phase;
using reference::Picture;
using regions::Kind;

constexpr uint32_t swaps[] = {0, 1, 2, 0x80000000u};

int32_t callEntry(const kro::Kernels& t, Phase phase, Kind kind, const uint8_t* from, Size size, uint8_t* to,
                  uint32_t swap, uint8_t* scratch) {
    const bool rg = phase == Phase::rg;
    const int h = size.height, w = size.width;
    const size_t n = reference::place(h, 0, w);
    switch (kind) {
        case Kind::bgr:
            return call(rg ? t.rg8ToBgr8_edge : t.gb8ToBgr8_edge, from, h, w, to, swap);
        case Kind::bgra:
            return call(rg ? t.rg8ToBgra8_edge : t.gb8ToBgra8_edge, from, h, w, to, swap);
        case Kind::planar:
            return call(rg ? t.rg8ToBgr8P_edge : t.gb8ToBgr8P_edge, from, h, w, to, to + n, to + 2 * n, scratch);
        default:
            return call(rg ? t.rg8ToMono8_edge : t.gb8ToMono8_edge, from, h, w, to, swap, scratch);
    }
}

enum class Step { body, last2Rows, last3Rows };
constexpr Step allSteps[] = {Step::body, Step::last2Rows, Step::last3Rows};
const char* nameOf(Step step) {
    static const char* const names[] = {"row-pair step", "last two rows", "last three rows"};
    return names[static_cast<int>(step)];
}
// Rows of the band that exist, and rows of output from row r + 1 on that the step may touch.
int bandRows(Step step) { return step == Step::body ? 6 : step == Step::last2Rows ? 4 : 5; }
int outputRows(Step step) { return step == Step::last3Rows ? 4 : 3; }

// `to` is row r + 1; the routines are given row r + 2.
int32_t callStep(const kro::Kernels& t, Step step, Kind kind, const uint8_t* const* band, int w, uint8_t* to,
                 uint8_t* greenRow, uint32_t swap) {
    const auto pick = [step](auto body, auto last2, auto last3) {
        return step == Step::body ? body : step == Step::last2Rows ? last2 : last3;
    };
    uint8_t* const second = to + w * (kind == Kind::bgr ? 3 : kind == Kind::bgra ? 4 : 1);
    const ptrdiff_t plane = static_cast<ptrdiff_t>(outputRows(step)) * w;
    switch (kind) {
        case Kind::bgr:
            return call(pick(t.rg8ToBgr8_edge_body, t.rg8ToBgr8_edge_last2Rows, t.rg8ToBgr8_edge_last3Rows), band, w,
                        second, greenRow, swap);
        case Kind::bgra:
            return call(pick(t.rg8ToBgra8_edge_body, t.rg8ToBgra8_edge_last2Rows, t.rg8ToBgra8_edge_last3Rows), band,
                        w, second, greenRow, swap);
        case Kind::planar:
            return call(pick(t.rg8ToBgr8P_edge_body, t.rg8ToBgr8P_edge_last2Rows, t.rg8ToBgr8P_edge_last3Rows), band,
                        w, second, second + plane, second + 2 * plane, greenRow);
        default:
            return call(pick(t.rg8ToMono8_edge_body, t.rg8ToMono8_edge_last2Rows, t.rg8ToMono8_edge_last3Rows), band,
                        w, second, greenRow, swap);
    }
}

Expected expectedBytes(const Picture& picture, Kind kind, uint32_t swap, const regions::Inside& inside,
                       const reference::AlphaMap& alpha) {
    const bool exchange = kind != Kind::planar && swap != 0;
    return regions::bytesOf(exchange ? regions::exchanged(picture) : picture, {kind}, inside, alpha);
}

// A band with the green row buffer handed to a step, and what must come of both.
struct StepCase {
    Mosaic mosaic;
    std::vector<uint8_t> greenRow;       // before
    std::vector<uint8_t> greenRowAfter;  // only the row-pair step leaves one
    Picture rows;                        // from row r + 1 on

    // With `arbitrary` the buffer holds anything; otherwise the greens that the rows above would have left.
    StepCase(Step step, int width, Content content, uint32_t seed, bool arbitrary)
        : mosaic(bandRows(step), width, Phase::rg, sampleBytes(content, {bandRows(step), width}, seed).data()),
          rows(outputRows(step), width) {
        std::vector<int> greens = reference::edgeGreens(mosaic);
        const std::vector<uint8_t> any = sampleBytes(Content::noise, {1, width}, seed + 1);
        for (int x = 0; x < width; ++x) {
            int& handed = greens[reference::place(x % 2, x, width)];  // red sites of row r, blue sites of row r + 1
            if (arbitrary) {
                handed = any[static_cast<size_t>(x)];
            }
            greenRow.push_back(static_cast<uint8_t>(handed));
            greenRowAfter.push_back(static_cast<uint8_t>(greens[reference::place(2 + x % 2, x, width)]));
        }
        const Picture whole = reference::edgeColours(mosaic, greens);
        rows = regions::rowsOf(whole, 1, outputRows(step));
    }
};

class Edge : public testing::TestWithParam<Kind> {
protected:
    Kind kind() const { return GetParam(); }
    guard::Buffer source{20 * 140};
    Destination destination{20 * 140 * 4};
    guard::Buffer greenRow{140};
};
INSTANTIATE_TEST_SUITE_P(Every, Edge, testing::ValuesIn(regions::allKinds),
                         [](const auto& tested) { return regions::nameOf(tested.param); });

TEST_P(Edge, EntriesWithEverySwapUseNoMoreWorkingMemoryThanARow) {
    for (Phase phase : {Phase::rg, Phase::gb}) {
        for (Size size : everySize(4, reducedRun ? 8 : 14, 4, 70)) {
            const Mosaic m(size.height, size.width, phase, sampleBytes(Content::noise, size, 2).data());
            const uint8_t* const from = source.hold(regions::bytesOf(m), guard::bothPlacements[size.width % 2]);
            const Picture picture = reference::edge(m);
            const auto alpha = reference::alphaOf(reference::Method::edge, phase, size.height, size.width);
            for (uint32_t swap : swaps) {
                const Expected expected = expectedBytes(picture, kind(), swap, regions::everywhere, alpha);
                for (const kro::Kernels* table : usableTables()) {
                    ASSERT_TRUE(destination.check(
                        *table, expected,
                        [&](uint8_t* to) {
                            uint8_t* const scratch = greenRow.place(static_cast<size_t>(size.width),
                                                                    guard::Placement::againstEnd, guard::Fill::one);
                            EXPECT_EQ(0, callEntry(*table, phase, kind(), from, size, to, swap, scratch));
                            EXPECT_TRUE(greenRow.canariesHold());
                        },
                        [&] { return describe(size) + " swap " + std::to_string(swap); }));
                }
            }
        }
    }
}

void checkSteps(Kind kind, int width, regions::Band& band, Destination& destination, guard::Buffer& greenRow) {
    for (Step step : allSteps) {
        for (bool arbitrary : {false, true}) {
            const Content content = arbitrary ? Content::noise : allContents[width % 6];
            const StepCase c(step, width, content, static_cast<uint32_t>(width), arbitrary);
            const reference::Span blocks = reference::edgeBlockColumns(width);
            const int complete = step == Step::body ? 2 : outputRows(step);
            for (uint32_t swap : swaps) {
                Expected expected = expectedBytes(
                    c.rows, kind, swap, [&](int y, int) { return y < complete; },
                    [&](int, int x) { return step == Step::body && blocks.holds(x); });
                if (step == Step::body && kind != Kind::mono) {
                    const int pixel = regions::interleaved(kind) ? regions::bytesPerPixel(kind) : 1;
                    const int green = regions::interleaved(kind) ? 1 : outputRows(step) * width;
                    for (int x = 0; x < width; ++x) {
                        expected.written[static_cast<size_t>(2 * width + x) * static_cast<size_t>(pixel) +
                                         static_cast<size_t>(green)] = reference::edgeStepWritesGreenBelow(x, width);
                    }
                }
                const auto placement = guard::bothPlacements[swap % 2];
                const uint8_t* const* const rows = band.hold(c.mosaic, 0, bandRows(step), placement);
                for (const kro::Kernels* table : usableTables()) {
                    ASSERT_TRUE(destination.check(
                        *table, expected,
                        [&](uint8_t* to) {
                            uint8_t* const greens =
                                greenRow.place(static_cast<size_t>(width), placement, guard::Fill::one);
                            std::copy(c.greenRow.begin(), c.greenRow.end(), greens);
                            EXPECT_EQ(0, callStep(*table, step, kind, rows, width, to, greens, swap));
                            if (step == Step::body) {
                                EXPECT_TRUE(holds(greenRow,
                                                  {c.greenRowAfter, std::vector<bool>(c.greenRowAfter.size(), true)}))
                                    << "green row";
                            }
                            EXPECT_TRUE(greenRow.canariesHold());
                        },
                        [&] {
                            return std::string(nameOf(step)) + " width " + std::to_string(width) + " swap " +
                                   std::to_string(swap) + (arbitrary ? " any greens" : "");
                        }));
                    ASSERT_FALSE(testing::Test::HasFailure())
                        << table->name << " " << nameOf(step) << " width " << width;
                }
            }
        }
    }
}

TEST_P(Edge, StepsHonourTheGreenRowAndWriteTheirRowsAndNothingElse) {
    regions::Band band(140);
    for (int width = 4; width <= 140; width += reducedRun ? 5 : 1) {
        ASSERT_NO_FATAL_FAILURE(checkSteps(kind(), width, band, destination, greenRow));
    }
}

// Rows of more than 8192 columns are worked on in several strips, each of which needs what its neighbour knew.
constexpr int severalStrips[] = {8194, 9001, 20000};

TEST_P(Edge, StepsOnRowsOfSeveralStrips) {
    constexpr int widest = 20000;
    regions::Band band(widest);
    Destination wideDestination{4 * widest * 4};
    guard::Buffer wideGreenRow{widest};
    for (int width : severalStrips) {
        ASSERT_NO_FATAL_FAILURE(checkSteps(kind(), width, band, wideDestination, wideGreenRow));
    }
}

TEST_P(Edge, FramesOfSeveralStrips) {
    constexpr size_t most = 7 * 20000;
    guard::Buffer wideSource{most};
    Destination wideDestination{most * 4};
    for (Phase phase : {Phase::rg, Phase::gb}) {
        for (int width : severalStrips) {
            const Size size{7, width};
            const Mosaic m(size.height, width, phase, sampleBytes(Content::noise, size, 5).data());
            const uint8_t* const from = wideSource.hold(regions::bytesOf(m), guard::bothPlacements[0]);
            const auto alpha = reference::alphaOf(reference::Method::edge, phase, size.height, width);
            const Expected expected = expectedBytes(reference::edge(m), kind(), 0, regions::everywhere, alpha);
            std::vector<uint8_t> scratch(static_cast<size_t>(width));
            for (const kro::Kernels* table : usableTables()) {
                ASSERT_TRUE(wideDestination.check(
                    *table, expected,
                    [&](uint8_t* to) {
                        EXPECT_EQ(0, callEntry(*table, phase, kind(), from, size, to, 0, scratch.data()));
                    },
                    [&] { return "width " + std::to_string(width); }));
            }
        }
    }
}

// A frame put together by hand from the entry's first rows, the steps and a bottom kernel is the entry's frame.
TEST_P(Edge, StepsComposedGiveTheWholeFrame) {
    for (Size size : {Size{4, 21}, Size{5, 20}, Size{8, 37}, Size{9, 52}, Size{13, 19}}) {
        const Mosaic m(size.height, size.width, Phase::rg, sampleBytes(Content::noise, size, 31).data());
        const Picture picture = reference::edge(m);
        const std::vector<int> greens = reference::edgeGreens(m);
        const std::vector<uint8_t> mosaic = regions::bytesOf(m);
        const ptrdiff_t w = size.width;
        const ptrdiff_t row = w * (kind() == Kind::bgr ? 3 : kind() == Kind::bgra ? 4 : 1);
        const ptrdiff_t plane = w * size.height;
        const Expected whole = expectedBytes(
            picture, kind(), 0, [](int y, int) { return y > 0; },
            reference::alphaOf(reference::Method::edge, Phase::rg, size.height, size.width));
        for (const kro::Kernels* t : usableTables()) {
            destination.check(
                *t, whole,
                [&](uint8_t* to) {
                    std::vector<uint8_t> buffer;
                    for (int x = 0; x < size.width; ++x) {
                        buffer.push_back(static_cast<uint8_t>(greens[reference::place(x % 2, x, size.width)]));
                    }
                    const auto at = [&](auto interleaved, auto planar, auto grey, int r) {
                        const uint8_t* band[6] = {};
                        for (int i = 0; i < 6 && r + i < size.height; ++i) {
                            band[i] = mosaic.data() + (r + i) * w;
                        }
                        uint8_t* const out = to + (r + 2) * row;
                        if (regions::interleaved(kind())) {
                            call(interleaved, band, size.width, out, buffer.data(), 0u);
                        } else if (kind() == Kind::planar) {
                            call(planar, band, size.width, out, out + plane, out + 2 * plane, buffer.data());
                        } else {
                            call(grey, band, size.width, out, buffer.data(), 0u);
                        }
                    };
                    const bool bgr = kind() == Kind::bgr;
                    int r = 0;
                    for (int counter = 2; counter < size.height - 3; counter += 2, r += 2) {
                        at(bgr ? t->rg8ToBgr8_edge_body : t->rg8ToBgra8_edge_body, t->rg8ToBgr8P_edge_body,
                           t->rg8ToMono8_edge_body, r);
                    }
                    if (size.height % 2 == 0) {
                        at(bgr ? t->rg8ToBgr8_edge_last2Rows : t->rg8ToBgra8_edge_last2Rows,
                           t->rg8ToBgr8P_edge_last2Rows, t->rg8ToMono8_edge_last2Rows, r);
                    } else {
                        at(bgr ? t->rg8ToBgr8_edge_last3Rows : t->rg8ToBgra8_edge_last3Rows,
                           t->rg8ToBgr8P_edge_last3Rows, t->rg8ToMono8_edge_last3Rows, r);
                    }
                },
                [&] { return describe(size); });
        }
    }
}

// The bottom kernels read the greens before they write the last row, where the three-byte form may keep them.
TEST(EdgeOddities, GreenRowInTheLastBytesOfTheOutputIsReadBeforeItIsOverwritten) {
    Destination destination(4 * 140 * 3);
    regions::Band band(140);
    for (Step step : {Step::last2Rows, Step::last3Rows}) {
        for (int width = 4; width <= 140; ++width) {
            const StepCase c(step, width, Content::noise, 41, true);
            const Expected expected = regions::bytesOf(c.rows, {Kind::bgr});
            const uint8_t* const* const rows = band.hold(c.mosaic, 0, bandRows(step), guard::Placement::againstEnd);
            for (const kro::Kernels* table : usableTables()) {
                ASSERT_TRUE(destination.check(
                    *table, expected,
                    [&](uint8_t* to) {
                        uint8_t* const greens = to + (3 * outputRows(step) - 1) * width;
                        std::copy(c.greenRow.begin(), c.greenRow.end(), greens);
                        callStep(*table, step, Kind::bgr, rows, width, to, greens, 0);
                    },
                    [&] { return std::string(nameOf(step)) + " width " + std::to_string(width); }));
            }
        }
    }
}

TEST(EdgeOddities, EdgeAlphaOnlyWhereBlocksWrote) {
    for (Phase phase : {Phase::rg, Phase::gb}) {
        for (Size size :
             {Size{9, 4}, Size{9, 19}, Size{4, 40}, Size{6, 20}, Size{7, 21}, Size{12, 36}, Size{13, 60}}) {
            const std::vector<uint8_t> mosaic = sampleBytes(Content::noise, size, 51);
            for (const kro::Kernels* table : usableTables()) {
                std::vector<uint8_t> bgra(mosaic.size() * 4, 0xC3);
                callEntry(*table, phase, Kind::bgra, mosaic.data(), size, bgra.data(), 0, nullptr);
                // Complete row pairs from the third row (the fourth where green comes first) on, in blocks of 16.
                const int first = phase == Phase::rg ? 2 : 3;
                for (int y = 0; y < size.height; ++y) {
                    for (int x = 0; x < size.width; ++x) {
                        const int counter = y + ((y - first) % 2 == 0 ? 0 : 1);
                        const bool inStep = counter >= first && y >= first - 1 && counter < size.height - 3;
                        const bool inBlock = size.width >= 20 && x >= 1 && x <= (size.width - 20) / 16 * 16 + 16;
                        ASSERT_EQ(inStep && inBlock ? 0 : 0xC3, bgra[reference::place(y, x, size.width) * 4 + 3])
                            << table->name << " " << describe(size) << " row " << y << " column " << x;
                    }
                }
            }
        }
    }
}

TEST(EdgeOddities, PlanesInterleavedEqualTheThreeByteOutput) {
    const Size size{12, 53};
    const size_t n = 12 * 53;
    const std::vector<uint8_t> mosaic = sampleBytes(Content::extremes, size, 61);
    for (const kro::Kernels* table : usableTables()) {
        for (Phase phase : {Phase::rg, Phase::gb}) {
            std::vector<uint8_t> rgb(3 * n), planes(3 * n), scratch(53);
            callEntry(*table, phase, Kind::bgr, mosaic.data(), size, rgb.data(), 1, nullptr);
            callEntry(*table, phase, Kind::planar, mosaic.data(), size, planes.data(), 0, scratch.data());
            for (size_t i = 0; i < n; ++i) {
                for (size_t channel = 0; channel < 3; ++channel) {
                    ASSERT_EQ(rgb[3 * i + channel], planes[channel * n + i]) << table->name << " pixel " << i;
                }
            }
        }
    }
}

TEST(EdgeOddities, SwapExchangesBytesZeroAndTwoOnly) {
    const Size size{11, 45};
    const std::vector<uint8_t> mosaic = sampleBytes(Content::noise, size, 62);
    for (const kro::Kernels* table : usableTables()) {
        std::vector<uint8_t> plain(mosaic.size() * 3), swapped(mosaic.size() * 3);
        callEntry(*table, Phase::gb, Kind::bgr, mosaic.data(), size, plain.data(), 0, nullptr);
        callEntry(*table, Phase::gb, Kind::bgr, mosaic.data(), size, swapped.data(), 9, nullptr);
        for (size_t i = 0; i < plain.size(); i += 3) {
            ASSERT_EQ(plain[i], swapped[i + 2]);
            ASSERT_EQ(plain[i + 1], swapped[i + 1]);
            ASSERT_EQ(plain[i + 2], swapped[i]);
        }
    }
}

TEST(EdgeOddities, TiesGoVertical) {
    // Columns differ by 40 where rows do not, equally on both sides: all gradients vanish, only the direction shows.
    const Size size{12, 40};
    std::vector<uint8_t> mosaic(12 * 40);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            mosaic[reference::place(y, x, size.width)] = static_cast<uint8_t>((y + x) % 2 == 0 ? 0
                                                                              : y % 2 == 0     ? 100
                                                                                               : 200);
        }
    }
    for (const kro::Kernels* table : usableTables()) {
        std::vector<uint8_t> bgr(mosaic.size() * 3);
        callEntry(*table, Phase::rg, Kind::bgr, mosaic.data(), size, bgr.data(), 0, nullptr);
        for (int y = 1; y < size.height - 1; ++y) {
            for (int x = 1 + (y + 1) % 2; x < size.width - 1; x += 2) {  // red and blue sites
                const int above = y % 2 == 0 ? 200 : 100;
                ASSERT_EQ(above, bgr[reference::place(y, x, size.width) * 3 + 1])
                    << table->name << " row " << y << " column " << x;
            }
        }
    }
}

TEST(EdgeOddities, GbFramesOfHeightFourAreFilled) {
    for (int width = 4; width <= 60; ++width) {
        const Size size{4, width};
        const Mosaic m(4, width, Phase::gb, sampleBytes(Content::noise, size, 63).data());
        const Expected expected = regions::bytesOf(reference::edge(m), {Kind::bgr});
        for (const kro::Kernels* table : usableTables()) {
            std::vector<uint8_t> bgr(m.sample.size() * 3);
            callEntry(*table, Phase::gb, Kind::bgr, regions::bytesOf(m).data(), size, bgr.data(), 0, nullptr);
            EXPECT_EQ(expected.value, bgr) << table->name << " width " << width;
        }
    }
}

TEST(EdgeOddities, FlatFramesGiveTheirLevelInGrey) {
    for (int v = 0; v < 256; ++v) {
        const std::vector<uint8_t> mosaic(9 * 37, static_cast<uint8_t>(v));
        for (const kro::Kernels* table : usableTables()) {
            std::vector<uint8_t> grey(mosaic.size()), scratch(37);
            callEntry(*table, Phase::rg, Kind::mono, mosaic.data(), {9, 37}, grey.data(), 1, scratch.data());
            ASSERT_EQ(mosaic, grey) << table->name;
        }
    }
}

}  // namespace
