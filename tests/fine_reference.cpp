#include "fine_reference.hpp"

#include <algorithm>
#include <cstdlib>

namespace reference {
namespace {

bool isGreen(const Mosaic& mosaic, int y, int x) { return mosaic.colour(y, x) == green; }

Plane sized(const Mosaic& mosaic) { return {mosaic.height, mosaic.width}; }

// Over five columns of every second row, or five rows of every second column.
int sumAlongRows(const Plane& plane, int y, int x) {
    int sum = 0;
    for (int dy = -2; dy <= 2; dy += 2) {
        for (int dx = -2; dx <= 2; ++dx) {
            sum += plane.at(y + dy, x + dx);
        }
    }
    return sum;
}

int sumAlongColumns(const Plane& plane, int y, int x) {
    int sum = 0;
    for (int dx = -2; dx <= 2; dx += 2) {
        for (int dy = -2; dy <= 2; ++dy) {
            sum += plane.at(y + dy, x + dx);
        }
    }
    return sum;
}

// 0: all from the column. 4: all from the row.
int weightOf(int H, int V) {
    int w = 2;
    w += H < V - (V >> 2) ? 1 : 0;
    w += H < (V >> 2) + (V >> 3) ? 1 : 0;
    w -= V < H - (H >> 2) ? 1 : 0;
    w -= V < (H >> 2) + (H >> 3) ? 1 : 0;
    return w;
}

FineKind kindOf(int H, int V, int A, int B) {
    const int n = std::min(H, V);
    const int t = std::min(A, B);
    return n < t ? smooth : n >= t + (t >> 1) ? rough : plain;
}

// Sites whose neighbours two away are not all in the frame, or at its edge.
bool isOuter(const Plane& plane, int y, int x) {
    return y < 2 || y >= plane.height() - 2 || x < 2 || x >= plane.width() - 2;
}

int slopeAt(const FinePlanes& p, int y, int x) {
    const FineErrors e = fineErrors(p, y, x);
    int limit = e.e1 - (e.e1 >> 2) - 8;
    int slope = 2;
    if (e.eh < 2 * limit) {
        slope = 1;
        limit = e.eh >> 1;
    }
    return e.e0 < limit ? 0 : slope;
}

struct Site {
    int y, x;
};

// The mean of what the lines of two or four sites make of a green.
template <size_t count>
int colourFrom(const FinePlanes& p, const Site (&sites)[count], int g, int top) {
    int a = 0, b = 0;
    for (const Site& site : sites) {
        a += p.a.at(site.y, site.x);
        b += p.b.at(site.y, site.x);
    }
    const int value = count == 4 ? (g * a + b + 4) >> 3 : (g * a + b + 2) >> 2;
    return std::min(std::max(value, 0), top);
}

Pixel pixelAt(const FinePlanes& p, const Mosaic& mosaic, int y, int x, int top) {
    const Colour own = mosaic.colour(y, x);
    const int g = p.g.at(y, x);
    Pixel pixel;
    pixel[green] = g;
    if (own != green) {
        const Site diagonals[] = {{y - 1, x - 1}, {y - 1, x + 1}, {y + 1, x - 1}, {y + 1, x + 1}};
        pixel[own] = mosaic.at(y, x);
        pixel[own == red ? blue : red] = colourFrom(p, diagonals, g, top);
    } else {
        const Site inRow[] = {{y, x - 1}, {y, x + 1}};
        const Site inColumn[] = {{y - 1, x}, {y + 1, x}};
        const Colour ofRow = mosaic.colour(y, x == 0 ? 1 : x - 1);
        pixel[ofRow] = colourFrom(p, inRow, g, top);
        pixel[ofRow == red ? blue : red] = colourFrom(p, inColumn, g, top);
    }
    return pixel;
}

}  // namespace

int reflected(int i, int size) {
    const int period = 2 * (size - 1);
    const int within = ((i % period) + period) % period;
    return within < size ? within : period - within;
}

void Plane::reflect() {
    for (int y = -margin; y < height_ + margin; ++y) {
        for (int x = -margin; x < width_ + margin; ++x) {
            inside(y, x) = at(reflected(y, height_), reflected(x, width_));
        }
    }
}

FinePlanes::FinePlanes(const Mosaic& mosaic, const FineScale& scale)
    : m(sized(mosaic)),
      fh(m),
      fv(m),
      Dh(m),
      Dv(m),
      Ah(m),
      Av(m),
      H(m),
      V(m),
      A(m),
      B(m),
      w(m),
      kind(m),
      eh(m),
      ev(m),
      d(m),
      refined(m),
      g(m),
      a(m),
      b(m) {
    m.set([&](int y, int x) { return mosaic.at(y, x); });
    weigh(mosaic, scale);
    differ(mosaic);
    refine(mosaic, scale);
    fitLines(mosaic);
}

void FinePlanes::weigh(const Mosaic& mosaic, const FineScale& scale) {
    fh.set([&](int y, int x) {
        return 2 * m.at(y, x) + m.at(y, x - 2) + m.at(y, x + 2) - 2 * (m.at(y, x - 1) + m.at(y, x + 1));
    });
    fv.set([&](int y, int x) {
        return 2 * m.at(y, x) + m.at(y - 2, x) + m.at(y + 2, x) - 2 * (m.at(y - 1, x) + m.at(y + 1, x));
    });
    Dh.set([&](int y, int x) { return std::abs(fh.at(y, x - 1) - fh.at(y, x + 1)) >> scale.curvatureShift; });
    Dv.set([&](int y, int x) { return std::abs(fv.at(y - 1, x) - fv.at(y + 1, x)) >> scale.curvatureShift; });
    Ah.set([&](int y, int x) { return std::abs(m.at(y, x - 1) - m.at(y, x + 1)) >> scale.gradientShift; });
    Av.set([&](int y, int x) { return std::abs(m.at(y - 1, x) - m.at(y + 1, x)) >> scale.gradientShift; });
    const auto atColours = [&mosaic](const auto& number) {
        return [&mosaic, number](int y, int x) { return isGreen(mosaic, y, x) ? 0 : number(y, x); };
    };
    H.set(atColours([this](int y, int x) { return sumAlongRows(Dh, y, x); }));
    A.set(atColours([this](int y, int x) { return sumAlongRows(Ah, y, x); }));
    V.set(atColours([this](int y, int x) { return sumAlongColumns(Dv, y, x); }));
    B.set(atColours([this](int y, int x) { return sumAlongColumns(Av, y, x); }));
    w.set(atColours([this](int y, int x) { return weightOf(H.at(y, x), V.at(y, x)); }));
    kind.set(atColours([this](int y, int x) { return kindOf(H.at(y, x), V.at(y, x), A.at(y, x), B.at(y, x)); }));
}

void FinePlanes::differ(const Mosaic& mosaic) {
    eh.set([&](int y, int x) {
        if (isGreen(mosaic, y, x)) {
            return 0;
        }
        return kind.at(y, x) == rough ? 4 * fh.at(y, x) + 2 * (2 * m.at(y, x) - m.at(y, x - 2) - m.at(y, x + 2))
                                      : 2 * fh.at(y, x) - fh.at(y, x - 1) - fh.at(y, x + 1);
    });
    ev.set([&](int y, int x) {
        if (isGreen(mosaic, y, x)) {
            return 0;
        }
        return kind.at(y, x) == rough ? 4 * fv.at(y, x) + 2 * (2 * m.at(y, x) - m.at(y - 2, x) - m.at(y + 2, x))
                                      : 2 * fv.at(y, x) - fv.at(y - 1, x) - fv.at(y + 1, x);
    });
    d.set([&](int y, int x) {
        if (isGreen(mosaic, y, x)) {
            return 0;
        }
        return (4 * ev.at(y, x) + w.at(y, x) * (eh.at(y, x) - ev.at(y, x)) + 4) >> 3;
    });
}

void FinePlanes::refine(const Mosaic& mosaic, const FineScale& scale) {
    refined.set([&](int y, int x) {
        if (isGreen(mosaic, y, x) || kind.at(y, x) != smooth) {
            return d.at(y, x);
        }
        const int sh = d.at(y, x - 2) + d.at(y, x + 2);
        const int sv = d.at(y - 2, x) + d.at(y + 2, x);
        return (8 * d.at(y, x) + 4 * sv + w.at(y, x) * (sh - sv) + 8) >> 4;
    });
    g.set([&](int y, int x) {
        if (isGreen(mosaic, y, x)) {
            return m.at(y, x);
        }
        return std::min(std::max(m.at(y, x) - ((refined.at(y, x) + 4) >> 3), 0), scale.top);
    });
}

void FinePlanes::fitLines(const Mosaic& mosaic) {
    a.set([&](int y, int x) { return isGreen(mosaic, y, x) ? 0 : isOuter(m, y, x) ? 2 : slopeAt(*this, y, x); });
    b.set([&](int y, int x) { return isGreen(mosaic, y, x) ? 0 : 2 * m.at(y, x) - a.at(y, x) * g.at(y, x); });
}

FineErrors fineErrors(const FinePlanes& p, int y, int x) {
    const Site around[] = {{y - 2, x}, {y, x - 2}, {y, x + 2}, {y + 2, x}};
    FineErrors errors = {0, 0, 0};
    for (const Site& i : around) {
        const int D = p.m.at(i.y, i.x) - p.m.at(y, x);
        const int u = (p.m.at(i.y, i.x) - p.g.at(i.y, i.x)) - (p.m.at(y, x) - p.g.at(y, x));
        errors.e0 += std::abs(D);
        errors.e1 += std::abs(u);
        errors.eh += std::abs(D + u);
    }
    return errors;
}

Picture fine(const Mosaic& mosaic, const FineScale& scale) {
    const FinePlanes planes(mosaic, scale);
    Picture picture(mosaic.height, mosaic.width);
    for (int y = 0; y < mosaic.height; ++y) {
        for (int x = 0; x < mosaic.width; ++x) {
            picture.at(y, x) = pixelAt(planes, mosaic, y, x, scale.top);
        }
    }
    return picture;
}

}  // namespace reference
