// What a kernel is asked to do. Plain records: they cross from the entries to the instruction-set units.
#pragma once

#include "records/geometry.hpp"

namespace kro {

enum class Output : int32_t { bgr, bgra, abgr, planar, mono };
constexpr int outputKinds = 5;
constexpr int algorithms = 4;

// Row 0 decides: does it start with green, does it hold blue? Both change from row to row.
struct Phase {
    bool greenFirst;
    bool blueRow;
};
constexpr Phase phaseRG{false, false};
constexpr Phase phaseGR{true, false};
constexpr Phase phaseGB{true, true};
constexpr Phase phaseBG{false, true};

namespace {
constexpr Phase phaseOfRow(Phase frame, int32_t y) {
    const bool odd = (y & 1) != 0;
    return {frame.greenFirst != odd, frame.blueRow != odd};
}
}  // namespace

// Where pixels go. Interleaved and grey output use plane[0]; planar output has the red, green and blue plane.
struct Target {
    void* plane[3];
    ptrdiff_t stride[3];   // bytes from a row to the next
    int32_t firstRow;      // the row that the planes point to
    bool redFirst;         // interleaved: R, G, B instead of B, G, R
    uint16_t alpha;        // fourth channel
    bool alphaEverywhere;  // or, edge-directed, only where kro.h says
    int32_t spreadBits;    // 16 bits: finished samples of so many bits are spread over all 16; 0: they are not
    uint32_t weight[3];    // grey: of red, green and blue
    ptrdiff_t ahead;       // stride[0] where no cache holds the picture, 0 elsewhere; see RowsAhead (row/store.hpp)
};

constexpr uint32_t lumaWeight[3] = {77, 150, 29};

namespace {
constexpr Target interleavedTarget(void* destination, ptrdiff_t stride, bool redFirst) {
    return {{destination, nullptr, nullptr},
            {stride, 0, 0},
            0,
            redFirst,
            0,
            false,
            0,
            {lumaWeight[0], lumaWeight[1], lumaWeight[2]},
            0};
}
constexpr Target planarTarget(void* red, void* green, void* blue, ptrdiff_t stride) {
    return {{red, green, blue}, {stride, stride, stride}, 0, false, 0, false, 0, {}, 0};
}
constexpr Target greyTarget(void* destination, ptrdiff_t stride, uint32_t red, uint32_t green, uint32_t blue) {
    return {{destination, nullptr, nullptr}, {stride, 0, 0}, 0, false, 0, false, 0, {red, green, blue}, 0};
}
// Luma of red, green, blue; `exchanged` where what the kernel reads as red is blue.
constexpr Target lumaTarget(void* destination, ptrdiff_t stride, bool exchanged) {
    return greyTarget(destination, stride, lumaWeight[exchanged ? 2 : 0], lumaWeight[1],
                      lumaWeight[exchanged ? 0 : 2]);
}
}  // namespace

// How the samples of a frame lie in memory; row/packing.hpp has the groups of packed ones.
enum class Layout : int32_t { bytes, words, gige10, gige12, lsb10, lsb12, lsb14, csi10, csi12, csi14 };

// Where samples come from. What a kernel cannot read in place is prepared row by row in a ring just ahead of it.
struct Source {
    const void* samples;
    ptrdiff_t stride;  // bytes from a row to the next; 0: samples run on over the ends of rows
    Layout layout;
    int32_t bits;                 // significant ones of a sample
    bool exchanged, leftAligned;  // words: bytes in the other order; significant bits at the upper end
    void* ring;                   // room for ringRows rows; null: the kernel has its own, on the stack
    ptrdiff_t ringStride;         // bytes
};

// The most rows that a family has in view at a time (16-bit edge: two pairs and a row on both sides of them).
constexpr int32_t ringRows = 6;

namespace {
// Rows of bytes or native words, read in place.
constexpr Source plainSource(const uint8_t* samples, int32_t width) {
    return {samples, width, Layout::bytes, 8, false, false, nullptr, 0};
}
constexpr Source plainSource(const uint16_t* samples, int32_t width) {
    return {samples, static_cast<ptrdiff_t>(width) * 2, Layout::words, 16, false, false, nullptr, 0};
}
}  // namespace

struct FrameJob {
    Source source;
    int32_t height;
    int32_t width;
    Phase phase;
    Target target;
    RowSpan rows;  // those to make
    int32_t top;   // 16 bits: interpolated samples end here
    bool wraps;    // bilinear of 16 bits: sums do, as those of kro.h
};

namespace {
// Zen 5, caches of 1 and 32 MiB: BGR8 of 6 MB loses a little by being asked for, of 15 MB it gains a tenth to a
// third.
constexpr int64_t largePicture = int64_t{8} << 20;

// Of the picture, of planar output one plane.
constexpr int64_t pictureBytes(const Target& target, int32_t height) {
    const int64_t apart = target.stride[0];
    return (apart < 0 ? -apart : apart) * height;
}
constexpr FrameJob frameJob(const Source& source, int32_t height, int32_t width, Phase phase, const Target& target,
                            RowSpan rows, int32_t top) {
    FrameJob job{source, height, width, phase, target, rows, top, false};
    job.target.ahead = pictureBytes(target, height) >= largePicture ? target.stride[0] : 0;
    return job;
}
}  // namespace

}  // namespace kro
