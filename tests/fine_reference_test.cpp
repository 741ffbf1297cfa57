// The reference of the fine family: sites worked by hand, what its formulas leave as it is, and how large they get.
#include "fine_reference.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "fine_extremes.hpp"
#include "support.hpp"

namespace {

using reference::blue;
using reference::Colour;
using reference::FinePlanes;
using reference::FineScale;
using reference::fineScale16;
using reference::fineScale8;
using reference::green;
using reference::Mosaic;
using reference::Phase;
using reference::Picture;
using reference::Pixel;
using reference::Plane;
using reference::red;

using Number = std::function<int(int y, int x)>;

Mosaic mosaicOf(Size size, Phase phase, const Number& number) {
    Mosaic m(size.height, size.width, phase);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            m.at(y, x) = number(y, x);
        }
    }
    return m;
}

Mosaic filled(Size size, Phase phase, Content content, int top, uint32_t seed) {
    return {size.height, size.width, phase, samples(content, size, top, seed).data()};
}

const FineScale scales[] = {fineScale8, fineScale16(8), fineScale16(12), fineScale16(16)};

// ---- by hand ----

// One red sample 80 above a flat frame.
TEST(FineReference, ARoughSite) {
    Mosaic m = mosaicOf({9, 9}, Phase::rg, [](int, int) { return 100; });
    m.at(4, 4) = 180;
    const FinePlanes p(m, fineScale8);
    const int fh[] = {0, 0, 80, -160, 160, -160, 80, 0, 0};
    const int Dh[] = {0, 40, 80, 40, 0, 40, 80, 40, 0};
    for (int x = 0; x < 9; ++x) {
        EXPECT_EQ(fh[x], p.fh.at(4, x)) << x;
        EXPECT_EQ(Dh[x], p.Dh.at(4, x)) << x;
        EXPECT_EQ(x == 3 || x == 5 ? 80 : 0, p.Ah.at(4, x)) << x;
        EXPECT_EQ(fh[x], p.fv.at(x, 4)) << x;
    }
    EXPECT_EQ(240, p.H.at(4, 4));
    EXPECT_EQ(240, p.V.at(4, 4));
    EXPECT_EQ(160, p.A.at(4, 4));
    EXPECT_EQ(reference::rough, p.kind.at(4, 4));  // 240 is no less than 160 + 80
    EXPECT_EQ(4 * 160 + 2 * (360 - 200), p.eh.at(4, 4));
    EXPECT_EQ((4 * 960 + 4) >> 3, p.d.at(4, 4));
    EXPECT_EQ(180 - 60, p.g.at(4, 4));

    EXPECT_EQ(160, p.H.at(4, 2));  // columns 0 to 4 of row 4
    EXPECT_EQ(240, p.V.at(4, 2));  // those of column 4
    EXPECT_EQ(3, p.w.at(4, 2));    // 160 is less than 180, but not than 90
    EXPECT_EQ(1, p.w.at(2, 4));
    EXPECT_EQ((3 * (4 * 80 + 2 * (200 - 280)) + 4) >> 3, p.d.at(4, 2));  // 60
    EXPECT_EQ(100 - 8, p.g.at(4, 2));
    const reference::FineErrors e = reference::fineErrors(p, 4, 4);
    EXPECT_EQ(4 * 80, e.e0);
    EXPECT_EQ(4 * 52, e.e1);  // 8 - 60
    EXPECT_EQ(4 * 132, e.eh);
    EXPECT_EQ(2, p.a.at(4, 4));

    const Picture picture = reference::fine(m, fineScale8);
    EXPECT_EQ((Pixel{180, 120, 120}), picture.at(4, 4));
    EXPECT_EQ((400 + (2 * 100 - 2 * 92) + (2 * 180 - 2 * 120) + 2) >> 2, picture.at(4, 3)[red]);  // 134
    EXPECT_EQ((Pixel{134, 100, 100}), picture.at(4, 3));
    EXPECT_EQ((Pixel{134, 100, 100}), picture.at(3, 4));
}

// A grey ramp with a red sample above it.
Mosaic ramp(int above) {
    Mosaic m = mosaicOf({17, 17}, Phase::rg, [](int y, int x) { return 6 * x + 3 * y; });
    m.at(8, 8) += above;
    return m;
}
constexpr int rampThere = 6 * 8 + 3 * 8;

TEST(FineReference, ASmoothSite) {
    const FinePlanes p(ramp(8), fineScale8);
    EXPECT_EQ(24, p.H.at(8, 8));
    EXPECT_EQ(24, p.V.at(8, 8));
    EXPECT_EQ(15 * 12, p.A.at(8, 8));  // 20 and 4 in place of 12 and 12
    EXPECT_EQ(15 * 6 - 12 + 14 + 2, p.B.at(8, 8));
    EXPECT_EQ(reference::smooth, p.kind.at(8, 8));
    EXPECT_EQ(2 * 16 + 16 + 16, p.eh.at(8, 8));
    EXPECT_EQ((4 * 64 + 4) >> 3, p.d.at(8, 8));  // 32
    EXPECT_EQ(3, p.w.at(8, 6));                  // 16 is less than 24 - 6
    EXPECT_EQ((3 * 32 + 4) >> 3, p.d.at(8, 6));  // 12
    EXPECT_EQ(12, p.d.at(6, 8));
    EXPECT_EQ((8 * 32 + 4 * 24 + 8) >> 4, p.refined.at(8, 8));  // 22
    EXPECT_EQ(rampThere + 8 - 3, p.g.at(8, 8));
}

TEST(FineReference, DifferencesAreRoundedToTheNearest) {
    const FinePlanes nine(ramp(9), fineScale8);
    EXPECT_EQ(3, nine.w.at(8, 6));                 // 17 is less than 26 - 6
    EXPECT_EQ((3 * 36 + 4) / 8, nine.d.at(8, 6));  // 14 for 13.5
    const FinePlanes ten(ramp(10), fineScale8);
    EXPECT_EQ((3 * 40 + 4) >> 3, ten.d.at(8, 6));  // 15
    EXPECT_EQ(40, ten.d.at(8, 8));
    EXPECT_EQ((8 * 40 + 4 * 30 + 8) / 16, ten.refined.at(8, 8));  // 28 for 27.5
}

TEST(FineReference, APlainSite) {
    const FinePlanes last(ramp(72), fineScale8);
    EXPECT_EQ(216, last.V.at(8, 8));
    EXPECT_EQ(15 * 6 - 12 + 2 * 72, last.B.at(8, 8));  // 222
    EXPECT_EQ(reference::smooth, last.kind.at(8, 8));
    const FinePlanes first(ramp(78), fineScale8);
    EXPECT_EQ(234, first.V.at(8, 8));
    EXPECT_EQ(234, first.B.at(8, 8));
    EXPECT_EQ(reference::plain, first.kind.at(8, 8));
    const FinePlanes p(ramp(80), fineScale8);
    EXPECT_EQ(240, p.V.at(8, 8));
    EXPECT_EQ(15 * 6 - 12 + 2 * 80, p.B.at(8, 8));  // 238
    EXPECT_EQ(reference::plain, p.kind.at(8, 8));
    EXPECT_EQ((4 * 640 + 4) >> 3, p.d.at(8, 8));
    EXPECT_EQ(p.d.at(8, 8), p.refined.at(8, 8));
    EXPECT_EQ(rampThere + 80 - 40, p.g.at(8, 8));
}

// A sample among greens as bright as it, other reds being dark: its green would be brighter still.
TEST(FineReference, GreensEndAtTheLimits) {
    for (const int bright : {255, 0}) {
        Mosaic m =
            mosaicOf({9, 9}, Phase::rg, [=](int y, int x) { return (y + x) % 2 == 1 ? bright : 255 - bright; });
        m.at(4, 4) = bright;
        const FinePlanes p(m, fineScale8);
        const int without = bright - ((p.refined.at(4, 4) + 4) >> 3);
        EXPECT_TRUE(bright == 0 ? without < 0 : without > 255) << without;
        EXPECT_EQ(bright, p.g.at(4, 4));
    }
}

// Green rises along the row, by 10 a column if nothing else is said; red and blue stay, rise half as fast, or as
// fast.
Mosaic rising(int redStart, int redSlope, int greenSlope = 10) {
    return mosaicOf({15, 16}, Phase::rg,
                    [=](int y, int x) { return y % 2 == x % 2 ? redStart + redSlope * x : greenSlope * x; });
}

TEST(FineReference, ColoursThatDoNotFollowGreen) {
    const FinePlanes p(rising(50, 0), fineScale8);
    EXPECT_EQ(15 * 40, p.H.at(6, 6));
    EXPECT_EQ(0, p.V.at(6, 6));
    EXPECT_EQ(9 * 20, p.A.at(6, 6));
    EXPECT_EQ(0, p.B.at(6, 6));
    EXPECT_EQ(0, p.w.at(6, 6));
    EXPECT_EQ(400 - 80 * 6, p.d.at(6, 6));
    EXPECT_EQ(60, p.g.at(6, 6));
    const reference::FineErrors e = reference::fineErrors(p, 6, 6);
    EXPECT_EQ(0, e.e0);
    EXPECT_EQ(40, e.e1);
    EXPECT_EQ(40, e.eh);  // less than 2 (40 - 10 - 8), and 0 less than 20
    EXPECT_EQ(0, p.a.at(6, 6));
    EXPECT_EQ(100, p.b.at(6, 6));
    EXPECT_EQ(2, p.a.at(6, 0));
    const Picture picture = reference::fine(rising(50, 0), fineScale8);
    for (int x = 5; x < 10; ++x) {
        EXPECT_EQ((Pixel{50, 10 * x, 50}), picture.at(6, x)) << x;
        EXPECT_EQ((Pixel{50, 10 * x, 50}), picture.at(7, x)) << x;
    }
}

TEST(FineReference, ColoursThatFollowGreenByHalf) {
    const FinePlanes p(rising(30, 5), fineScale8);
    EXPECT_EQ(60, p.g.at(6, 6));
    const reference::FineErrors e = reference::fineErrors(p, 6, 6);
    EXPECT_EQ(20, e.e0);
    EXPECT_EQ(20, e.e1);
    EXPECT_EQ(0, e.eh);  // less than 2 (20 - 5 - 8); 20 is not less than 0
    EXPECT_EQ(1, p.a.at(6, 6));
    EXPECT_EQ(60, p.b.at(6, 6));
    const Picture picture = reference::fine(rising(30, 5), fineScale8);
    EXPECT_EQ(30 + 5 * 7, picture.at(6, 7)[red]);  // (70 x 2 + 120 + 2) / 4 is half a step more
    EXPECT_EQ(30 + 5 * 6, picture.at(6, 6)[blue]);
}

// Each limit is met by what is not below it.
TEST(FineReference, SlopesAtTheirLimits) {
    const struct {
        int redSlope, greenSlope, e0, e1, eh, slope;
    } cases[] = {{2, 6, 8, 16, 8, 2},     // 8 is not less than 2 (16 - 4 - 8)
                 {3, 12, 12, 36, 24, 1},  // 24 is less than 2 (36 - 9 - 8), 12 not less than 24 / 2
                 {2, 12, 8, 40, 32, 0}};  // 32 is less than 2 (40 - 10 - 8), 8 less than 32 / 2
    for (const auto& c : cases) {
        const FinePlanes p(rising(30, c.redSlope, c.greenSlope), fineScale8);
        EXPECT_EQ(c.greenSlope * 6, p.g.at(6, 6));
        const reference::FineErrors e = reference::fineErrors(p, 6, 6);
        EXPECT_EQ(c.e0, e.e0);
        EXPECT_EQ(c.e1, e.e1);
        EXPECT_EQ(c.eh, e.eh);
        EXPECT_EQ(c.slope, p.a.at(6, 6)) << c.redSlope << " of " << c.greenSlope;
    }
}

TEST(FineReference, ColoursThatFollowGreen) {
    const Picture picture = reference::fine(rising(30, 10), fineScale8);
    EXPECT_EQ(2, FinePlanes(rising(30, 10), fineScale8).a.at(6, 6));
    for (int x = 5; x < 10; ++x) {
        EXPECT_EQ((Pixel{30 + 10 * x, 10 * x, 30 + 10 * x}), picture.at(7, x)) << x;
    }
}

// Red of a green site in its row, blue of a red site: means of what two and four lines give, halves rounded up.
TEST(FineReference, ColoursAreRoundedToTheNearest) {
    Mosaic m = filled({40, 41}, Phase::rg, Content::noise, 255, 11);
    for (int& sample : m.sample) {
        sample += 500;  // nothing ends at the limits
    }
    const FinePlanes p(m, fineScale16(12));
    const Picture picture = reference::fine(m, fineScale16(12));
    int lowest4 = 0, highest4 = 0, lowest8 = 0, highest8 = 0;
    for (int y = 2; y < 38; y += 2) {
        for (int x = 2; x < 38; x += 2) {
            const int g = p.g.at(y, x + 1);
            const int two = p.a.at(y, x) * g + p.b.at(y, x) + p.a.at(y, x + 2) * g + p.b.at(y, x + 2);
            int four = 0;
            for (const int dy : {-1, 1}) {
                for (const int dx : {-1, 1}) {
                    four += p.a.at(y + dy, x + dx) * p.g.at(y, x) + p.b.at(y + dy, x + dx);
                }
            }
            const int above4 = 4 * picture.at(y, x + 1)[red] - two;
            const int above8 = 8 * picture.at(y, x)[blue] - four;
            lowest4 = std::min(lowest4, above4);
            highest4 = std::max(highest4, above4);
            lowest8 = std::min(lowest8, above8);
            highest8 = std::max(highest8, above8);
        }
    }
    EXPECT_EQ(-1, lowest4);
    EXPECT_EQ(2, highest4);
    EXPECT_EQ(-3, lowest8);
    EXPECT_EQ(4, highest8);
}

// 16 bits tell gradients in numbers of fewer bits: samples of 12 bits weigh as those of 8 that are their sixteenth.
TEST(FineReference, TwelveBitsWeighAsEight) {
    for (const Content content : allContents) {
        const Mosaic m = filled({13, 18}, Phase::gb, content, 255, 4);
        Mosaic deep = m;
        for (int& sample : deep.sample) {
            sample *= 16;
        }
        const FinePlanes p(m, fineScale8), q(deep, fineScale16(12));
        for (int y = 0; y < 13; ++y) {
            for (int x = 0; x < 18; ++x) {
                ASSERT_EQ(p.w.at(y, x), q.w.at(y, x));
                ASSERT_EQ(p.kind.at(y, x), q.kind.at(y, x));
                ASSERT_EQ(16 * p.eh.at(y, x), q.eh.at(y, x));
                ASSERT_EQ(p.Dh.at(y, x), q.Dh.at(y, x));
                ASSERT_EQ(p.Av.at(y, x), q.Av.at(y, x));
            }
        }
    }
}

// ---- edges ----

TEST(FineReference, Reflection) {
    const int of5[] = {0, 1, 2, 3, 4, 3, 2, 1, 0, 1, 2, 3, 4, 3};
    for (int i = 0; i < 14; ++i) {
        EXPECT_EQ(of5[i], reference::reflected(i, 5)) << i;
        EXPECT_EQ(of5[i], reference::reflected(-i, 5)) << -i;
    }
    EXPECT_EQ(2, reference::reflected(-4, 4));
    EXPECT_EQ(1, reference::reflected(5, 4));
}

// The planes of the frame, two sites beyond its edges included, are those of a frame that holds the reflected samples
// and whose own edges are too far away to matter. It makes no difference which of the two is reflected.
TEST(FineReference, ReflectedPlanesAreThoseOfReflectedSamples) {
    constexpr int around = 12;
    const Plane FinePlanes::*const members[] = {
        &FinePlanes::m,  &FinePlanes::fh,   &FinePlanes::fv, &FinePlanes::Dh, &FinePlanes::Dv, &FinePlanes::Ah,
        &FinePlanes::Av, &FinePlanes::H,    &FinePlanes::V,  &FinePlanes::A,  &FinePlanes::B,  &FinePlanes::w,
        &FinePlanes::eh, &FinePlanes::kind, &FinePlanes::ev, &FinePlanes::d,  &FinePlanes::g,  &FinePlanes::refined};
    uint32_t turn = 0;
    for (const Size size : everySize(4, 9, 4, 11)) {
        for (const Phase phase : reference::allPhases) {
            const FineScale& scale = scales[++turn % 4];
            const Mosaic m = filled(size, phase, allContents[turn % 5], scale.top, turn);
            const Mosaic wide =
                mosaicOf({size.height + 2 * around, size.width + 2 * around}, phase, [&](int y, int x) {
                    return m.at(reference::reflected(y - around, size.height),
                                reference::reflected(x - around, size.width));
                });
            const FinePlanes p(m, scale), q(wide, scale);
            for (size_t i = 0; i < std::size(members); ++i) {
                for (int y = -2; y < size.height + 2; ++y) {
                    for (int x = -2; x < size.width + 2; ++x) {
                        ASSERT_EQ((q.*members[i]).at(y + around, x + around), (p.*members[i]).at(y, x))
                            << "plane " << i << " of " << describe(size) << " at " << y << ", " << x;
                    }
                }
            }
            for (int y = 2; y < size.height - 2; ++y) {
                for (int x = 2; x < size.width - 2; ++x) {
                    ASSERT_EQ(q.a.at(y + around, x + around), p.a.at(y, x)) << describe(size);
                }
            }
        }
    }
}

TEST(FineReference, TheOuterTwoRowsAndColumnsKeepTheirSlope) {
    const Mosaic m = filled({12, 15}, Phase::rg, Content::noise, 255, 7);
    const FinePlanes p(m, fineScale8);
    int others = 0;
    for (int y = -1; y <= 12; ++y) {
        for (int x = -1; x <= 15; ++x) {
            if (m.colour((y + 2) % 2, (x + 2) % 2) == green) {
                EXPECT_EQ(0, p.a.at(y, x));
            } else if (y < 2 || y >= 10 || x < 2 || x >= 13) {
                EXPECT_EQ(2, p.a.at(y, x)) << y << ", " << x;
            } else {
                others += p.a.at(y, x) != 2 ? 1 : 0;
            }
        }
    }
    EXPECT_GT(others, 0);
}

// ---- what stays as it is ----

TEST(FineReference, FlatFramesStayFlat) {
    for (const Phase phase : reference::allPhases) {
        for (const FineScale& scale : scales) {
            for (const int v : {0, 1, 127, scale.top - 1, scale.top}) {
                const Mosaic m = mosaicOf({9, 22}, phase, [v](int, int) { return v; });
                for (const Pixel& pixel : reference::fine(m, scale).pixel) {
                    ASSERT_EQ((Pixel{v, v, v}), pixel);
                }
            }
        }
    }
}

// Colours each of one value: the picture is of that colour throughout.
TEST(FineReference, PlainColoursStayPlain) {
    for (const Phase phase : reference::allPhases) {
        const Pixel colour = {200, 90, 31};
        const Mosaic m = mosaicOf({9, 12}, phase, [&](int y, int x) { return colour[colourAt(phase, y, x)]; });
        for (const Pixel& pixel : reference::fine(m, fineScale8).pixel) {
            ASSERT_EQ(colour, pixel);
        }
    }
}

TEST(FineReference, GreyRampsStayRamps) {
    for (const Phase phase : reference::allPhases) {
        for (const auto& [down, along] : {std::pair{1, 5}, {5, 0}, {0, 6}, {3, 2}}) {
            const Mosaic m = mosaicOf({27, 29}, phase,
                                      [down = down, along = along](int y, int x) { return down * y + along * x; });
            const Picture picture = reference::fine(m, fineScale8);
            for (int y = 10; y < 17; ++y) {
                for (int x = 10; x < 19; ++x) {
                    const int v = down * y + along * x;
                    ASSERT_EQ((Pixel{v, v, v}), picture.at(y, x)) << y << ", " << x;
                }
            }
        }
    }
}

TEST(FineReference, SamplesStay) {
    for (const Phase phase : reference::allPhases) {
        const Mosaic m = filled({11, 14}, phase, Content::noise, 255, 9);
        const Picture picture = reference::fine(m, fineScale8);
        for (int y = 0; y < m.height; ++y) {
            for (int x = 0; x < m.width; ++x) {
                ASSERT_EQ(m.at(y, x), picture.at(y, x)[m.colour(y, x)]);
            }
        }
    }
}

// Where nothing ends at the limits, a brighter frame gives the same picture, brighter.
TEST(FineReference, BrightnessAddsUp) {
    for (const Phase phase : reference::allPhases) {
        Mosaic m = filled({13, 12}, phase, Content::noise, 4095, 5);
        for (int& sample : m.sample) {
            sample += 24000;
        }
        Mosaic brighter = m;
        for (int& sample : brighter.sample) {
            sample += 12345;
        }
        const Picture p = reference::fine(m, fineScale16(16)), q = reference::fine(brighter, fineScale16(16));
        for (size_t i = 0; i < p.pixel.size(); ++i) {
            for (size_t c = 0; c < 3; ++c) {
                ASSERT_EQ(p.pixel[i][c] + 12345, q.pixel[i][c]);
            }
        }
    }
}

// ---- symmetry ----

// Where a site of another frame comes from in this one.
struct Place {
    int y, x;
};
using From = std::function<Place(int y, int x)>;

// The formulas know neither left nor right, above nor below, and rows as columns: what is done to the mosaic is done
// to the picture.
void expectSymmetry(const Mosaic& m, const FineScale& scale, Size turned, const From& from) {
    const auto colour = [&](int y, int x) { return m.colour(from(y, x).y, from(y, x).x); };
    Phase phase = Phase::rg;
    for (const Phase candidate : reference::allPhases) {
        const bool same = colourAt(candidate, 0, 0) == colour(0, 0) && colourAt(candidate, 0, 1) == colour(0, 1);
        phase = same ? candidate : phase;
    }
    const Mosaic other = mosaicOf(turned, phase, [&](int y, int x) { return m.at(from(y, x).y, from(y, x).x); });
    const Picture p = reference::fine(m, scale), q = reference::fine(other, scale);
    for (int y = 0; y < turned.height; ++y) {
        for (int x = 0; x < turned.width; ++x) {
            ASSERT_EQ(p.at(from(y, x).y, from(y, x).x), q.at(y, x)) << describe(turned) << " " << y << ", " << x;
        }
    }
}

TEST(FineReference, FlippedAndTransposedMosaicsGiveSuchPictures) {
    uint32_t turn = 0;
    for (const Size size : {Size{4, 4}, Size{4, 7}, Size{5, 5}, Size{8, 9}, Size{13, 10}, Size{14, 17}}) {
        const int h = size.height, w = size.width;
        for (const Phase phase : reference::allPhases) {
            for (const Content content : allContents) {
                const FineScale& scale = scales[++turn % 4];
                const Mosaic m = filled(size, phase, content, scale.top, turn);
                expectSymmetry(m, scale, size, [=](int y, int x) { return Place{y, w - 1 - x}; });
                expectSymmetry(m, scale, size, [=](int y, int x) { return Place{h - 1 - y, x}; });
                expectSymmetry(m, scale, {w, h}, [](int y, int x) { return Place{x, y}; });
            }
        }
    }
}

TEST(FineReference, RedAndBlueAreAlike) {
    const std::pair<Phase, Phase> exchanged[] = {{Phase::rg, Phase::bg}, {Phase::gr, Phase::gb}};
    for (const auto& [one, other] : exchanged) {
        for (const Content content : allContents) {
            const Size size{11, 16};
            const Picture p = reference::fine(filled(size, one, content, 255, 3), fineScale8);
            const Picture q = reference::fine(filled(size, other, content, 255, 3), fineScale8);
            for (size_t i = 0; i < p.pixel.size(); ++i) {
                ASSERT_EQ((Pixel{p.pixel[i][blue], p.pixel[i][green], p.pixel[i][red]}), q.pixel[i]);
            }
        }
    }
}

// ---- how large numbers get ----

struct Range {
    int lowest = 0, highest = 0;
    void take(int value) {
        lowest = std::min(lowest, value);
        highest = std::max(highest, value);
    }
};

// Of bytes all sums fit 16 bits with a sign, and hardly.
TEST(FineReference, SumsOf8BitsFit16) {
    std::map<std::string, Range> ranges;
    const auto takeSite = [&](const FinePlanes& p, int y, int x) {
        for (const FineSum& sum : fineSums(p, y, x)) {
            ranges[sum.name].take(sum.value);
        }
    };
    for (const Content content : allContents) {
        for (uint32_t seed = 1; seed <= 4; ++seed) {
            const Mosaic m = filled({24, 40}, Phase::rg, content, 255, seed);
            const FinePlanes p(m, fineScale8);
            for (int y = 0; y < 24; ++y) {
                for (int x = y % 2; x < 40; x += 2) {
                    takeSite(p, y, x);
                }
            }
        }
    }
    const int steps = reducedRun ? 30 : 300;
    for (const FineExtreme& extreme : fineExtremes()) {
        fineExtreme(extreme, steps, [&](const FinePlanes& p) { takeSite(p, extremeSite, extremeSite); });
    }
    for (const auto& [name, range] : ranges) {
        RecordProperty(name, std::to_string(range.lowest) + " to " + std::to_string(range.highest));
        EXPECT_GE(range.lowest, -32768) << name;
        EXPECT_LE(range.highest, 32767) << name;
    }
    if (!reducedRun) {
        EXPECT_GT(ranges["8 d + 4 sv + w (sh - sv) + 8"].highest, 32000);
        EXPECT_LT(ranges["8 d + 4 sv + w (sh - sv) + 8"].lowest, -30000);
        EXPECT_LT(ranges["w (eh - ev)"].lowest, -20000);
    }
}

}  // namespace
