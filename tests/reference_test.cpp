// The reference against examples worked by hand and against border formulas written out position by position: what
// judges the library is itself judged.
#include "reference.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "support.hpp"

namespace {

using reference::blue;
using reference::green;
using reference::Mosaic;
using reference::Phase;
using reference::Picture;
using reference::Pixel;
using reference::red;

Mosaic noiseMosaic(int height, int width, Phase phase, int top = 255, uint32_t seed = 1) {
    return {height, width, phase, samples(Content::noise, {height, width}, top, seed).data()};
}

// ---- nearest ----

TEST(Reference, NearestRgFourByFour) {
    const Mosaic m = noiseMosaic(4, 4, Phase::rg);
    const Picture p = reference::nearest(m);
    EXPECT_EQ((Pixel{m.at(0, 0), m.at(0, 1), m.at(1, 1)}), p.at(0, 0));
    EXPECT_EQ((Pixel{m.at(2, 0), m.at(1, 0), m.at(1, 1)}), p.at(2, 0));
    EXPECT_EQ((Pixel{m.at(2, 2), m.at(3, 2), m.at(3, 3)}), p.at(3, 3));
}

// R, G and B of every kind of site, as the RG phase has them.
TEST(Reference, NearestRgSitesWrittenOut) {
    for (Size size : everySize(4, 7, 4, 9)) {
        const Mosaic m = noiseMosaic(size.height, size.width, Phase::rg);
        const Picture p = reference::nearest(m);
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                const bool evenRow = y % 2 == 0;
                const bool evenColumn = x % 2 == 0;
                Pixel wanted;
                if (y == 0 && x == 0) {
                    wanted = {m.at(0, 0), m.at(0, 1), m.at(1, 1)};
                } else if (y == 0 && evenColumn) {
                    wanted = {m.at(0, x), m.at(0, x - 1), m.at(1, x - 1)};
                } else if (y == 0) {
                    wanted = {m.at(0, x - 1), m.at(0, x), m.at(1, x)};
                } else if (!evenRow && x == 0) {
                    wanted = {m.at(y - 1, 0), m.at(y, 0), m.at(y, 1)};
                } else if (!evenRow && !evenColumn) {
                    wanted = {m.at(y - 1, x - 1), m.at(y, x - 1), m.at(y, x)};
                } else if (!evenRow) {
                    wanted = {m.at(y - 1, x), m.at(y, x), m.at(y, x - 1)};
                } else if (x == 0) {
                    wanted = {m.at(y, 0), m.at(y - 1, 0), m.at(y - 1, 1)};
                } else if (!evenColumn) {
                    wanted = {m.at(y, x - 1), m.at(y, x), m.at(y - 1, x)};
                } else {
                    wanted = {m.at(y, x), m.at(y, x - 1), m.at(y - 1, x - 1)};
                }
                ASSERT_EQ(wanted, p.at(y, x)) << describe(size) << " row " << y << " column " << x;
            }
        }
    }
}

TEST(Reference, NearestGbRowsZeroAndOneUseTheSameRows) {
    const Mosaic m = noiseMosaic(4, 5, Phase::gb);
    const Picture p = reference::nearest(m);
    EXPECT_EQ((Pixel{m.at(1, 0), m.at(0, 0), m.at(0, 1)}), p.at(0, 0));
    EXPECT_EQ((Pixel{m.at(1, 0), m.at(0, 0), m.at(0, 1)}), p.at(1, 0));
    EXPECT_EQ((Pixel{m.at(1, 2), m.at(1, 1), m.at(0, 1)}), p.at(1, 2));
    EXPECT_EQ((Pixel{m.at(1, 2), m.at(0, 2), m.at(0, 3)}),
              (Pixel{p.at(0, 3)[red], p.at(0, 3)[green], p.at(0, 3)[blue]}));
}

// ---- bilinear: every border value of the RG view and of the first two rows of green-first frames ----

int half(int a, int b) { return (a + b) >> 1; }
int quarter(int a, int b, int c, int d) { return (a + b + c + d) >> 2; }

class BilinearByTable {
public:
    explicit BilinearByTable(const Mosaic& m) : m_(m), h_(m.height), w_(m.width) {}

    Picture rgView() {
        Picture p(h_, w_);
        for (int y = 1; y < h_ - 1; ++y) {
            for (int x = 1; x < w_ - 1; ++x) {
                p.at(y, x) = interior(y, x);
            }
        }
        firstRow(p);
        firstColumn(p);
        lastRows(p);
        lastColumns(p);
        return p;
    }

    // Rows 0 and 1 of a frame whose row 0 reads G Y G Y and row 1 X G X G, as (Y, G, X).
    Picture greenFirstRows() {
        Picture p(2, w_);
        p.at(0, 0) = {P(0, 1), P(0, 0), P(1, 0)};
        p.at(1, 0) = {half(P(0, 1), P(2, 1)), quarter(P(0, 0), P(1, 1), P(1, 1), P(2, 0)), P(1, 0)};
        for (int c = 1; c < w_ - 2; c += 2) {
            p.at(0, c) = {P(0, c), quarter(P(0, c - 1), P(0, c + 1), P(1, c), P(1, c)),
                          half(P(1, c - 1), P(1, c + 1))};
            p.at(0, c + 1) = {half(P(0, c), P(0, c + 2)), P(0, c + 1), P(1, c + 1)};
            p.at(1, c) = {half(P(0, c), P(2, c)), P(1, c), half(P(1, c - 1), P(1, c + 1))};
            p.at(1, c + 1) = {quarter(P(0, c), P(0, c + 2), P(2, c), P(2, c + 2)),
                              quarter(P(0, c + 1), P(1, c), P(1, c + 2), P(2, c + 1)), P(1, c + 1)};
        }
        const int e = w_ - 1;
        if (w_ % 2 == 0) {
            p.at(0, e) = {P(0, e), half(P(0, e - 1), P(1, e)), P(1, e - 1)};
            p.at(1, e) = {half(P(0, e), P(2, e)), P(1, e), P(1, e - 1)};
        } else {
            p.at(0, e - 1) = {P(0, e - 1), quarter(P(0, 0), P(0, e), P(1, e - 1), P(1, e - 1)),
                              half(P(1, e - 2), P(1, e))};
            p.at(0, e) = {P(0, e - 1), P(0, e), P(1, e)};
            p.at(1, e - 1) = {half(P(0, e - 1), P(2, 1)), P(1, e - 1), half(P(1, e - 2), P(1, e))};
            p.at(1, e) = {half(P(0, e - 1), P(2, 1)), quarter(P(0, e), P(1, e - 1), P(1, e - 1), P(2, e)), P(1, e)};
        }
        return p;
    }

private:
    const Mosaic& m_;
    int h_, w_;

    int P(int y, int x) const { return m_.at(y, x); }
    int crossOf(int y, int x) const { return quarter(P(y - 1, x), P(y, x - 1), P(y, x + 1), P(y + 1, x)); }
    int diagonalOf(int y, int x) const {
        return quarter(P(y - 1, x - 1), P(y - 1, x + 1), P(y + 1, x - 1), P(y + 1, x + 1));
    }
    Pixel interior(int y, int x) const {
        if (y % 2 == 1) {
            return x % 2 == 1 ? Pixel{diagonalOf(y, x), crossOf(y, x), P(y, x)}
                              : Pixel{half(P(y - 1, x), P(y + 1, x)), P(y, x), half(P(y, x - 1), P(y, x + 1))};
        }
        return x % 2 == 1 ? Pixel{half(P(y, x - 1), P(y, x + 1)), P(y, x), half(P(y - 1, x), P(y + 1, x))}
                          : Pixel{P(y, x), crossOf(y, x), diagonalOf(y, x)};
    }
    void firstRow(Picture& p) const {
        p.at(0, 0) = {P(0, 0), half(P(0, 1), P(1, 0)), P(1, 1)};
        for (int k = 1; k < w_ - 2; k += 2) {
            p.at(0, k) = {half(P(0, k - 1), P(0, k + 1)), P(0, k), P(1, k)};
            p.at(0, k + 1) = {P(0, k + 1), quarter(P(0, k), P(0, k + 2), P(1, k + 1), P(1, k + 1)),
                              half(P(1, k), P(1, k + 2))};
        }
        const int e = w_ - 1;
        if (w_ % 2 == 0) {
            p.at(0, e) = {P(0, e - 1), P(0, e), P(1, e)};
        } else {
            p.at(0, e - 1) = {half(P(0, e - 2), P(0, e)), P(0, e - 1), P(1, e - 1)};
            p.at(0, e) = {P(0, e), half(P(0, e - 1), P(1, e)), P(1, e - 1)};
        }
    }
    void firstColumn(Picture& p) const {
        for (int y = 1; y < h_ - 2; y += 2) {
            p.at(y, 0) = {half(P(y - 1, 0), P(y + 1, 0)), P(y, 0), P(y, 1)};
            p.at(y + 1, 0) = {P(y + 1, 0), quarter(P(y, 0), P(y + 1, 1), P(y + 1, 1), P(y + 2, 0)),
                              half(P(y, 1), P(y + 2, 1))};
        }
        const int e = h_ - 1;
        if (h_ % 2 == 0) {
            p.at(e, 0) = {P(e - 1, 0), P(e, 0), P(e, 1)};
        } else {
            p.at(e - 1, 0) = {half(P(e - 2, 0), P(e, 0)), P(e - 1, 0), P(e - 1, 1)};
            p.at(e, 0) = {P(e, 0), half(P(e - 1, 0), P(e, 1)), P(e - 1, 1)};
        }
    }
    void lastRows(Picture& p) const {
        for (int c = 1; c < w_ - 2; c += 2) {
            if (h_ % 2 == 0) {
                const int y = h_ - 1;
                p.at(y, c) = {half(P(y - 1, c - 1), P(y - 1, c + 1)),
                              quarter(P(y, c - 1), P(y, c + 1), P(y - 1, c), P(y - 1, c)), P(y, c)};
                p.at(y, c + 1) = {P(y - 1, c + 1), P(y, c + 1), half(P(y, c), P(y, c + 2))};
            } else {
                const int y = h_ - 2;
                p.at(y, c) = {diagonalOf(y, c), crossOf(y, c), P(y, c)};
                p.at(y, c + 1) = {half(P(y - 1, c + 1), P(y + 1, c + 1)), P(y, c + 1), half(P(y, c), P(y, c + 2))};
                p.at(y + 1, c) = {half(P(y + 1, c - 1), P(y + 1, c + 1)), P(y + 1, c), P(y, c)};
                p.at(y + 1, c + 1) = {P(y + 1, c + 1),
                                      quarter(P(y, c + 1), P(y, c + 1), P(y + 1, c), P(y + 1, c + 2)),
                                      half(P(y, c), P(y, c + 2))};
            }
        }
    }
    void lastColumns(Picture& p) const {
        const int e = h_ - 1;
        if (w_ % 2 == 0) {
            const int x = w_ - 1;
            for (int y = 1; y < h_ - 2; y += 2) {
                p.at(y, x) = {half(P(y - 1, x - 1), P(y + 1, x - 1)),
                              quarter(P(y - 1, x), P(y + 1, x), P(y, x - 1), P(y, x - 1)), P(y, x)};
                p.at(y + 1, x) = {P(y + 1, x - 1), P(y + 1, x), half(P(y, x), P(y + 2, x))};
            }
            if (h_ % 2 == 0) {
                p.at(e, x) = {P(e - 1, x - 1), half(P(e, x - 1), P(e - 1, x)), P(e, x)};
            } else {
                p.at(e - 1, x) = {half(P(e - 2, x - 1), P(e, x - 1)),
                                  quarter(P(e - 2, x), P(e - 1, x - 1), P(e - 1, x - 1), P(e, x)), P(e - 1, x)};
                p.at(e, x) = {P(e, x - 1), P(e, x), P(e - 1, x)};
            }
            return;
        }
        const int x = w_ - 2;
        for (int y = 1; y < h_ - 2; y += 2) {
            p.at(y, x) = {diagonalOf(y, x), crossOf(y, x), P(y, x)};
            p.at(y, x + 1) = {half(P(y - 1, x + 1), P(y + 1, x + 1)), P(y, x + 1), P(y, x)};
            p.at(y + 1, x) = {half(P(y + 1, x - 1), P(y + 1, x + 1)), P(y + 1, x), half(P(y, x), P(y + 2, x))};
            p.at(y + 1, x + 1) = {P(y + 1, x + 1), quarter(P(y, x + 1), P(y + 1, x), P(y + 1, x), P(y + 2, x + 1)),
                                  half(P(y, x), P(y + 2, x))};
        }
        if (h_ % 2 == 0) {
            p.at(e, x) = {half(P(e - 1, x - 1), P(e - 1, x + 1)),
                          quarter(P(e, x - 1), P(e, x + 1), P(e - 1, x), P(e - 1, x)), P(e, x)};
            p.at(e, x + 1) = {P(e - 1, x + 1), P(e, x + 1), P(e, x)};
        } else {
            p.at(e - 1, x) = {diagonalOf(e - 1, x), crossOf(e - 1, x), P(e - 1, x)};
            p.at(e - 1, x + 1) = {half(P(e - 2, x + 1), P(e, x + 1)), P(e - 1, x + 1), P(e - 1, x)};
            p.at(e, x) = {half(P(e, x - 1), P(e, x + 1)), P(e, x), P(e - 1, x)};
            p.at(e, x + 1) = {P(e, x + 1), half(P(e, x), P(e - 1, x + 1)), P(e - 1, x)};
        }
    }
};

TEST(Reference, BilinearRuleEqualsTheBorderTables) {
    for (Size size : everySize(4, 12, 4, 24)) {
        const Mosaic m = noiseMosaic(size.height, size.width, Phase::rg);
        EXPECT_EQ(BilinearByTable(m).rgView().pixel, reference::bilinear(m).pixel) << describe(size);
    }
}

TEST(Reference, BilinearGreenFirstRowsEqualTheirTable) {
    for (int width = 4; width <= 40; ++width) {
        const Mosaic m = noiseMosaic(5, width, Phase::gr);
        const Picture byTable = BilinearByTable(m).greenFirstRows();
        const Picture byRule = reference::bilinear(m);
        for (int y = 0; y < 2; ++y) {
            for (int x = 0; x < width; ++x) {
                ASSERT_EQ(byTable.at(y, x), byRule.at(y, x)) << "width " << width << " row " << y << " column " << x;
            }
        }
    }
}

// A green-first frame is the other kind of frame one row down.
TEST(Reference, BilinearGreenFirstFramesAreRgFramesOneRowDown) {
    for (Size size : everySize(5, 9, 4, 20)) {
        const Mosaic m = noiseMosaic(size.height, size.width, Phase::gb);
        const Mosaic below(size.height - 1, size.width, Phase::rg, m.sample.data() + size.width);
        const Picture whole = reference::bilinear(m);
        const Picture part = reference::bilinear(below);
        for (int y = 2; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                ASSERT_EQ(part.at(y - 1, x), whole.at(y, x)) << describe(size);
            }
        }
    }
}

TEST(Reference, BilinearTruncates) {
    Mosaic m(5, 5, Phase::rg);
    m.at(1, 1) = 1;
    m.at(1, 3) = 2;
    EXPECT_EQ(1, reference::bilinear(m).at(1, 2)[blue]);
    Mosaic n(5, 5, Phase::rg);
    n.at(0, 0) = n.at(0, 2) = n.at(2, 0) = 1;
    EXPECT_EQ(0, reference::bilinear(n).at(1, 1)[red]);
}

TEST(Reference, BilinearCornersOfTheSmallestFrames) {
    const Mosaic four = noiseMosaic(4, 4, Phase::rg);
    EXPECT_EQ((Pixel{four.at(2, 2), half(four.at(3, 2), four.at(2, 3)), four.at(3, 3)}),
              reference::bilinear(four).at(3, 3));
    const Mosaic five = noiseMosaic(5, 5, Phase::rg);
    EXPECT_EQ((Pixel{five.at(4, 4), half(five.at(4, 3), five.at(3, 4)), five.at(3, 3)}),
              reference::bilinear(five).at(4, 4));
}

// ---- edge-directed: the greens of every border position, written out ----

int clamp8(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }
int choose(int h, int gradientH, int v, int gradientV) { return clamp8(gradientH < gradientV ? h : v); }

class EdgeByTable {
public:
    explicit EdgeByTable(const Mosaic& m) : m_(m) {}

    int greenAt(int y, int x) const {
        if (m_.colour(y, x) == green) {
            return S(y, x);
        }
        int h = 0, gh = 0, v = 0, gv = 0;
        const int w = m_.width;
        const int rows = m_.height;
        if (x == 0) {
            h = S(y, 1) + ((2 * (S(y, 0) - S(y, 2))) >> 2);
            gh = std::abs(2 * (S(y, 0) - S(y, 2)));
        } else if (x == 1) {
            h = half(S(y, 0), S(y, 2)) + ((S(y, 1) - S(y, 3)) >> 2);
            gh = std::abs(S(y, 1) - S(y, 3)) + std::abs(S(y, 0) - S(y, 2));
        } else if (x == w - 2) {
            h = half(S(y, x - 1), S(y, x + 1)) + ((S(y, x) - S(y, x - 2)) >> 2);
            gh = std::abs(S(y, x) - S(y, x - 2)) + std::abs(S(y, x - 1) - S(y, x + 1));
        } else if (x == w - 1) {
            h = S(y, x - 1) + ((2 * (S(y, x) - S(y, x - 2))) >> 2);
            gh = std::abs(2 * (S(y, x) - S(y, x - 2)));
        } else {
            const int d = 2 * S(y, x) - S(y, x - 2) - S(y, x + 2);
            h = half(S(y, x - 1), S(y, x + 1)) + (d >> 2);
            gh = std::abs(S(y, x - 1) - S(y, x + 1)) + std::abs(d);
        }
        if (y == 0) {
            v = S(1, x) + ((2 * (S(0, x) - S(2, x))) >> 2);
            gv = std::abs(2 * (S(0, x) - S(2, x)));
        } else if (y == 1) {
            v = half(S(0, x), S(2, x)) + ((S(1, x) - S(3, x)) >> 2);
            gv = std::abs(S(1, x) - S(3, x)) + std::abs(S(0, x) - S(2, x));
        } else if (y == rows - 2) {
            v = half(S(y - 1, x), S(y + 1, x)) + ((S(y, x) - S(y - 2, x)) >> 2);
            gv = std::abs(S(y, x) - S(y - 2, x)) + std::abs(S(y - 1, x) - S(y + 1, x));
        } else if (y == rows - 1) {
            v = S(y - 1, x) + ((2 * (S(y, x) - S(y - 2, x))) >> 2);
            gv = std::abs(2 * (S(y, x) - S(y - 2, x)));
        } else {
            const int d = 2 * S(y, x) - S(y - 2, x) - S(y + 2, x);
            v = half(S(y - 1, x), S(y + 1, x)) + (d >> 2);
            gv = std::abs(S(y - 1, x) - S(y + 1, x)) + std::abs(d);
        }
        return choose(h, gh, v, gv);
    }

private:
    const Mosaic& m_;
    int S(int y, int x) const { return m_.at(y, x); }
};

TEST(Reference, EdgeGreensEqualTheBorderForms) {
    for (Phase phase : reference::allPhases) {
        for (Size size : everySize(4, 10, 4, 24)) {
            for (Content content : {Content::noise, Content::extremes, Content::ties}) {
                const Mosaic m(size.height, size.width, phase, samples(content, size, 255, 3).data());
                const std::vector<int> greens = reference::edgeGreens(m);
                for (int y = 0; y < size.height; ++y) {
                    for (int x = 0; x < size.width; ++x) {
                        ASSERT_EQ(EdgeByTable(m).greenAt(y, x), greens[reference::place(y, x, size.width)])
                            << describe(size) << " row " << y << " column " << x;
                    }
                }
            }
        }
    }
}

TEST(Reference, EdgeColourDifferencesAtTheBordersWrittenOut) {
    const Mosaic m = noiseMosaic(6, 8, Phase::rg);
    const std::vector<int> greens = reference::edgeGreens(m);
    const Picture p = reference::edge(m);
    auto K = [&](int y, int x) { return m.at(y, x) - greens[reference::place(y, x, 8)]; };
    auto G = [&](int y, int x) { return greens[reference::place(y, x, 8)]; };
    EXPECT_EQ(clamp8(G(1, 0) + K(1, 1)), p.at(1, 0)[blue]);
    EXPECT_EQ(clamp8(G(2, 7) + K(2, 6)), p.at(2, 7)[red]);
    EXPECT_EQ(clamp8(G(2, 0) + ((K(1, 1) + K(3, 1)) >> 1)), p.at(2, 0)[blue]);
    EXPECT_EQ(clamp8(G(1, 7) + ((K(0, 6) + K(2, 6)) >> 1)), p.at(1, 7)[red]);
    EXPECT_EQ(clamp8(G(0, 0) + K(1, 1)), p.at(0, 0)[blue]);
    EXPECT_EQ(clamp8(G(0, 2) + ((K(1, 1) + K(1, 3)) >> 1)), p.at(0, 2)[blue]);
    EXPECT_EQ(clamp8(G(0, 3) + ((K(0, 2) + K(0, 4)) >> 1)), p.at(0, 3)[red]);
    EXPECT_EQ(clamp8(G(0, 3) + K(1, 3)), p.at(0, 3)[blue]);
    EXPECT_EQ(clamp8(G(5, 2) + K(4, 2)), p.at(5, 2)[red]);
    EXPECT_EQ(clamp8(G(5, 3) + ((K(4, 2) + K(4, 4)) >> 1)), p.at(5, 3)[red]);
    EXPECT_EQ(m.at(5, 3), p.at(5, 3)[blue]);
    EXPECT_EQ(clamp8(G(3, 3) + ((K(2, 2) + K(2, 4) + K(4, 2) + K(4, 4)) >> 2)), p.at(3, 3)[red]);
}

TEST(Reference, EdgeTiesGoVertical) {
    Mosaic m(7, 7, Phase::rg);
    m.at(3, 2) = m.at(3, 4) = 10;  // left and right of the blue site (3, 3)
    m.at(2, 3) = m.at(4, 3) = 20;  // above and below: no gradient either way
    EXPECT_EQ(20, reference::edge(m).at(3, 3)[green]);
}

TEST(Reference, EdgeGreensAreClampedBeforeTheyEnterDifferences) {
    Mosaic m(9, 9, Phase::rg);
    m.at(4, 4) = 255;  // second difference 510: a quarter is 127
    m.at(4, 3) = m.at(4, 5) = m.at(3, 4) = m.at(5, 4) = 255;
    const Picture p = reference::edge(m);
    EXPECT_EQ(255, p.at(4, 4)[green]);  // 255 + 127 clamped
    EXPECT_EQ(255, p.at(4, 3)[red]);    // its difference is 0, not -127
}

TEST(Reference, FlatFramesStayFlat) {
    for (Phase phase : reference::allPhases) {
        for (int v : {0, 1, 127, 255}) {
            Mosaic m(9, 22, phase);
            m.sample.assign(m.sample.size(), v);
            for (reference::Method method : reference::allMethods) {
                for (const Pixel& pixel : reference::demosaic(method, m).pixel) {
                    ASSERT_EQ((Pixel{v, v, v}), pixel);
                    ASSERT_EQ(v, reference::luma(pixel, reference::lumaWeights));
                }
            }
        }
    }
}

TEST(Reference, EdgeBlocksByWidth) {
    for (int width : {4, 19}) {
        EXPECT_EQ(1, reference::edgeBlockColumns(width).end) << width;
    }
    EXPECT_EQ(17, reference::edgeBlockColumns(20).end);  // columns 1 to 16 complete, greens of columns 2 to 17
    EXPECT_EQ(17, reference::edgeBlockColumns(21).end);
    EXPECT_EQ(17, reference::edgeBlockColumns(35).end);
    EXPECT_EQ(33, reference::edgeBlockColumns(36).end);
    for (int width = 20; width < 200; ++width) {
        EXPECT_EQ((width - 20) / 16 * 16 + 17, reference::edgeBlockColumns(width).end);
    }
}

TEST(Reference, EdgeStepRowsByHeight) {
    EXPECT_EQ(1, reference::edgeStepRows(Phase::rg, 5).end);
    EXPECT_EQ(3, reference::edgeStepRows(Phase::rg, 6).end);
    EXPECT_EQ(3, reference::edgeStepRows(Phase::rg, 7).end);
    EXPECT_EQ(5, reference::edgeStepRows(Phase::bg, 8).end);
    EXPECT_EQ(2, reference::edgeStepRows(Phase::gb, 6).end);
    EXPECT_EQ(4, reference::edgeStepRows(Phase::gr, 7).end);
}

// ---- 16 bits ----

TEST(Reference, U16BilinearWrapExamples) {
    auto meanAt = [](int v) {
        Mosaic m(6, 20, Phase::rg);
        m.sample.assign(m.sample.size(), v);
        return reference::bilinearU16(m);
    };
    const Picture high = meanAt(0x4000);
    EXPECT_EQ((Pixel{0x0000, 0x0000, 0x4000}), high.at(1, 1));
    EXPECT_EQ((Pixel{0xC000, 0x4000, 0xC000}), high.at(1, 2));
    EXPECT_EQ((Pixel{0x4000, 0x4000, 0x4000}), high.at(0, 5));
    EXPECT_EQ((Pixel{0x4000, 0x4000, 0x4000}), high.at(1, 17));
    EXPECT_EQ(0xF000, meanAt(0x3000).at(1, 1)[green]);
    EXPECT_EQ(0x1FFF, meanAt(0x1FFF).at(1, 1)[green]);
}

TEST(Reference, U16BlockColumnsByWidth) {
    EXPECT_EQ(1, reference::u16BlockColumns(9).end);
    EXPECT_EQ(9, reference::u16BlockColumns(10).end);
    for (int width = 10; width < 100; ++width) {
        EXPECT_EQ((width - 10) / 8 * 8 + 9, reference::u16BlockColumns(width).end);
    }
}

// Every border case of the 16-bit bilinear family equals the 8-bit tables: one rule.
TEST(Reference, U16BilinearBordersEqualTheTables) {
    for (Size size : everySize(4, 9, 4, 9)) {
        const Mosaic m = noiseMosaic(size.height, size.width, Phase::rg, 0xFFFF);
        EXPECT_EQ(BilinearByTable(m).rgView().pixel, reference::bilinearU16(m).pixel) << describe(size);
    }
}

// Where nothing lies outside, the whole-frame rule and the interior's steps agree.
TEST(Reference, U16EdgeInteriorStepsEqualTheRule) {
    for (int width : {6, 7, 12, 21}) {
        const int height = 10;
        const Mosaic m = noiseMosaic(height, width, Phase::rg, 0xFFFF);
        const Picture rule = reference::edgeU16(m, 4095);
        reference::U16Frame frame{height, width, {}, {}};
        for (const Pixel& pixel : rule.pixel) {
            for (int channel : {0, pixel[green], 0}) {
                frame.bgr.push_back(static_cast<uint16_t>(channel));
            }
        }
        frame.written.assign(frame.bgr.size(), false);
        const reference::Covered covered = reference::edgeInteriorU16(m, frame, 2, height - 4, 2, 4095);
        EXPECT_EQ(height - 4, covered.rows);
        EXPECT_EQ(2 + ((width - 4 - 2) & ~1) + 2, covered.firstColumnAfter);
        size_t checked = 0;
        for (size_t i = 0; i < frame.bgr.size(); ++i) {
            if (frame.written[i]) {
                ASSERT_EQ(rule.pixel[i / 3][2 - i % 3], frame.bgr[i]) << "width " << width << " sample " << i;
                ++checked;
            }
        }
        EXPECT_GT(checked, 0u);
    }
}

TEST(Reference, U16EdgeOneSidedDifferenceIsAlwaysDoubled) {
    Mosaic m(6, 6, Phase::rg);  // the blue site (1, 1): both greens, far samples outside on the upper and left side
    m.at(1, 1) = 1000;
    m.at(0, 1) = 50;
    m.at(2, 1) = 150;
    m.at(3, 1) = 900;  // vertical: 2 (1000 - 900) = 200, a quarter is 50; gradient 200 + 100
    EXPECT_EQ(150, reference::edgeU16(m, 65535).at(1, 1)[green]);
}

// ---- normalisation ----

TEST(Reference, NormalisationExamples) {
    EXPECT_EQ((std::vector<uint8_t>{0x12, 0xFF}), reference::reduced({0x1234, 0xFF01}, 8));
    EXPECT_EQ(std::vector<uint8_t>(32, 255), reference::reduced(std::vector<uint16_t>(32, 1023), 2));
    std::vector<uint8_t> wanted(17, 255);
    wanted[16] = 0;
    EXPECT_EQ(wanted, reference::reduced(std::vector<uint16_t>(17, 1024), 2));
    EXPECT_EQ((std::vector<uint8_t>{0xAB, 0xEF}), reference::unpacked({0xAB, 0xCD, 0xEF}, 2));
}

}  // namespace
