// What every view must become: rows of samples in any packing, pictures of 8 and 16 bits. Slow and plain, as the rest
// of the reference is, and like it free of anything the library is built from.
#pragma once

#include <map>
#include <string>

#include "reference.hpp"

namespace reference {

// ---- formats ----
extern const std::array<InputFormat, 34> furtherInputFormats;
std::vector<InputFormat> viewInputFormats();  // these and the 31 of frames without gaps

struct ViewOutput {
    const char* name;
    uint32_t code;
    const char* letters;  // of a pixel in memory: R, G, B, A for alpha or a byte without meaning, Y for luma
    int depth;            // bits of a sample: 8 or 16
    bool planar;          // a plane for each letter
};
extern const std::array<ViewOutput, 22> viewOutputs;

// The letters of each plane; with an alpha plane A alone at the end.
std::vector<std::string> planesOf(const ViewOutput& output, bool alphaPlane);
inline size_t bytesOf(const std::string& letters, int depth) {
    return letters.size() * static_cast<size_t>(depth) / 8;
}

// ---- samples in memory ----

// Where bit `bit` of the i-th number of a run lies: byte * 8 + bit of that byte. Words have 16 bits, others the
// format's.
size_t bitPlace(const InputFormat& format, size_t i, int bit, bool bigEndian);
uint16_t numberAt(const InputFormat& format, const uint8_t* run, size_t i, bool bigEndian);
// Sets the bits of the i-th number and no others.
void setNumber(const InputFormat& format, uint8_t* run, size_t i, bool bigEndian, uint16_t number);

// Rows in memory. Stride 0: one run over all rows.
struct Rows {
    const uint8_t* data;
    ptrdiff_t stride;
    int height, width;
};
std::vector<uint16_t> numbersOf(const InputFormat& format, const Rows& rows, bool bigEndian);

// How words hold their samples.
struct Words {
    int bits;
    bool bigEndian, leftAligned;
};
// Numbers as they lie in memory, row after row, to samples of 8 bits and of as many as they have.
std::vector<uint8_t> eightBits(const InputFormat& format, const std::vector<uint16_t>& numbers, const Words& words);
std::vector<uint16_t> allBits(const InputFormat& format, const std::vector<uint16_t>& numbers, const Words& words);

// ---- pictures ----

constexpr Method viewMethods[] = {Method::nearest, Method::bilinear, Method::edge, Method::fine};

// One frame and what it looks like; pictures are worked out when first asked for.
class Scene {
public:
    Scene(const InputFormat& format, const Rows& rows, const Words& words);
    const Picture& picture(Method method, int depth);
    int bits() const { return bits_; }

private:
    Picture made(Method method, int depth) const;

    InputFormat format_;
    int height_, width_, bits_;
    std::vector<uint8_t> eight_;
    std::vector<uint16_t> all_;
    std::map<std::pair<Method, int>, Picture> pictures_;
};

int fullRange(int value, int bits);

struct Finish {
    int alpha;
    int fullRangeOf;  // bits of the samples that take up all 16; 0: samples as they are
};
// The bytes of one plane, row after row without gaps.
std::vector<uint8_t> planeBytes(const Picture& picture, const std::string& letters, int depth, const Finish& finish);

}  // namespace reference
