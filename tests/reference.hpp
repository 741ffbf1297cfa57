// What every frame must look like, worked out pixel by pixel from each family's formulas. Slow, plain, and free of
// anything the library is built from: the tests hold the library against it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace reference {

enum Colour { red = 0, green = 1, blue = 2 };
enum class Phase { rg, gr, gb, bg };
enum class Method { nearest = 0, bilinear = 1, edge = 2, fine = 3 };

constexpr Phase allPhases[] = {Phase::rg, Phase::gr, Phase::gb, Phase::bg};
constexpr Method allMethods[] = {Method::nearest, Method::bilinear, Method::edge};  // of frames

Colour colourAt(Phase phase, int y, int x);

// Where (y, x) lies in a frame of that width.
inline size_t place(int y, int x, int width) { return static_cast<size_t>(static_cast<ptrdiff_t>(y) * width + x); }

// A grid of samples, 8 or 16 bits deep.
struct Mosaic {
    int height, width;
    Phase phase;
    std::vector<int> sample;

    Mosaic(int h, int w, Phase p) : height(h), width(w), phase(p), sample(place(h, 0, w)) {}
    template <class Sample>
    Mosaic(int h, int w, Phase p, const Sample* from)
        : height(h), width(w), phase(p), sample(from, from + static_cast<ptrdiff_t>(h) * w) {}

    bool has(int y, int x) const { return y >= 0 && y < height && x >= 0 && x < width; }
    int at(int y, int x) const { return sample[place(y, x, width)]; }
    int& at(int y, int x) { return sample[place(y, x, width)]; }
    Colour colour(int y, int x) const { return colourAt(phase, y, x); }
};

using Pixel = std::array<int, 3>;  // red, green, blue

struct Picture {
    int height, width;
    std::vector<Pixel> pixel;

    Picture(int h, int w) : height(h), width(w), pixel(place(h, 0, w)) {}
    const Pixel& at(int y, int x) const { return pixel[place(y, x, width)]; }
    Pixel& at(int y, int x) { return pixel[place(y, x, width)]; }
};

// ---- whole frames ----
Picture nearest(const Mosaic& mosaic);
Picture bilinear(const Mosaic& mosaic);     // 8 bits, with the marked values of green-first phases at odd widths
Picture bilinearU16(const Mosaic& mosaic);  // 16 bits, with the wrap-around of its blocks
Picture edge(const Mosaic& mosaic);         // 8 bits
Picture edgeU16(const Mosaic& mosaic, int clampMax);
Picture demosaic(Method method, const Mosaic& mosaic);

// The border rule alone: exact means, missing neighbours dropped or doubled.
Picture bilinearByRule(const Mosaic& mosaic);

// The two halves of the 8-bit edge family: a green for every site, then colour differences against given greens.
std::vector<int> edgeGreens(const Mosaic& mosaic);
Picture edgeColours(const Mosaic& mosaic, const std::vector<int>& greens);

// ---- extents that are visible in the bytes ----
struct Span {
    int begin, end;  // half open
    bool holds(int i) const { return i >= begin && i < end; }
};
Span edgeBlockColumns(int width);                 // columns whose alpha a row-pair step clears
Span edgeStepRows(Phase phase, int height);       // rows that row-pair steps complete
Span u16BlockColumns(int width);                  // columns that wrap in the 16-bit bilinear body
bool edgeStepWritesGreenBelow(int x, int width);  // of row r + 3; Mono8 has no place for it
inline int borderStart(int size) { return size - 1 - size % 2; }

// ---- output layouts ----
struct OutputFormat {
    const char* name;
    uint32_t code;
    int bytesPerPixel;
};
extern const std::array<OutputFormat, 7> outputFormats;

// Bytes of a finished frame; `written` is false where the library must leave the caller's byte alone.
struct Bytes {
    std::vector<uint8_t> value;
    std::vector<bool> written;
};
using AlphaMap = std::function<bool(int y, int x)>;  // is the fourth byte written (as 0) here?

AlphaMap alphaOf(Method method, Phase phase, int height, int width);
Bytes packed(const Picture& picture, uint32_t outputCode, const AlphaMap& alpha);
int luma(const Pixel& pixel, const std::array<uint32_t, 3>& weights);
constexpr std::array<uint32_t, 3> lumaWeights = {77, 150, 29};

// ---- input formats ----
enum class Layout { bytes, words, packed, lsbFirst, csi2 };  // the last two: of views alone
struct InputFormat {
    const char* name;
    uint32_t code;
    bool mono;
    Phase phase;
    Layout layout;
    int bits;
};
extern const std::array<InputFormat, 31> inputFormats;
uint32_t normalisedCode(const InputFormat& format);
int preConversion(const InputFormat& format);
// The smallest number of samples that fill whole bytes, as packings keep them together.
struct Group {
    size_t samples, bytes;
};
Group groupOf(const InputFormat& format);
size_t inputBytes(const InputFormat& format, size_t samples);  // of one run, whole groups

// 16 bits to 8: what lies beyond the format's depth saturates in whole blocks of 16 samples and is cut off after
// them.
std::vector<uint8_t> reduced(const std::vector<uint16_t>& words, unsigned shift);
// Two bytes for every begun group of two samples.
std::vector<uint8_t> unpacked(const std::vector<uint8_t>& groups, size_t samples);

// ---- the interior of the 16-bit edge family, step by step on a destination that it also reads ----
struct U16Frame {
    int height, width;
    std::vector<uint16_t> bgr;
    std::vector<bool> written;
};
struct Covered {
    int firstColumnAfter, rows;
};
Covered edgeInteriorU16(const Mosaic& mosaic, U16Frame& frame, int firstRow, int rows, int startColumn, int clampMax);

}  // namespace reference
