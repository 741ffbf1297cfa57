// The fine family, plane by plane: every number that its formulas speak of can be looked at.
#pragma once

#include "reference.hpp"

namespace reference {

// Numbers at the sites of a frame, which reflects about its edge sites without end: row -1 is row 1, row H is row
// H - 2, columns alike.
class Plane {
public:
    Plane(int height, int width)
        : height_(height), width_(width), value_(place(height + 2 * margin, 0, width + 2 * margin)) {}

    int height() const { return height_; }
    int width() const { return width_; }
    // Up to two rows and columns outside, where set() has put what they reflect.
    int at(int y, int x) const { return value_[place(y + margin, x + margin, width_ + 2 * margin)]; }
    // Each site's number is what the function makes of its place.
    template <class Number>
    void set(const Number& number) {
        for (int y = 0; y < height_; ++y) {
            for (int x = 0; x < width_; ++x) {
                inside(y, x) = number(y, x);
            }
        }
        reflect();
    }

private:
    static constexpr int margin = 2;

    int& inside(int y, int x) { return value_[place(y + margin, x + margin, width_ + 2 * margin)]; }
    void reflect();

    int height_, width_;
    std::vector<int> value_;
};

// Where (without end) outside sites have their numbers from.
int reflected(int i, int size);

// How gradients are told in numbers of fewer bits, and where values end.
struct FineScale {
    int top;
    int curvatureShift;  // of Dh and Dv
    int gradientShift;   // of Ah and Av
};
constexpr FineScale fineScale8 = {255, 1, 0};
constexpr FineScale fineScale16(int bits) { return {(1 << bits) - 1, 5, 4}; }

enum FineKind { smooth, plain, rough };

// By the letters of the formulas. Of two letters the second says along what: h a row, v a column. H, A: sums of Dh
// and Ah; V, B: of Dv and Av. Those of red and blue sites alone are 0 at green ones.
struct FinePlanes {
    Plane m, fh, fv, Dh, Dv, Ah, Av;
    Plane H, V, A, B, w, kind, eh, ev, d;
    Plane refined;  // d' of the formulas
    Plane g, a, b;

    FinePlanes(const Mosaic& mosaic, const FineScale& scale);

private:
    void weigh(const Mosaic& mosaic, const FineScale& scale);
    void differ(const Mosaic& mosaic);
    void refine(const Mosaic& mosaic, const FineScale& scale);
    void fitLines(const Mosaic& mosaic);
};

// A red or blue value is (a g + b) / 2; how well a = 2, 1 and 0 agree with the four neighbours of a site's colour.
struct FineErrors {
    int e0, e1, eh;
};
FineErrors fineErrors(const FinePlanes& planes, int y, int x);

Picture fine(const Mosaic& mosaic, const FineScale& scale);

}  // namespace reference
