// What the suites of views share: frames with every distance from row to row in guarded memory, and pictures
// likewise.
#pragma once

#include "KROView.hpp"
#include "kro/view.h"
#include "support.hpp"
#include "view_expected.hpp"

// How rows follow each other.
enum class Spacing {
    continuous,  // stride 0: packed groups run on over the ends of rows
    exact,       // the length of a row
    padded,      // some more
    odd,         // an odd number of bytes; of words an odd number of words
    flipped,     // exact, the last row first
    negative     // the last row first, padded
};
constexpr Spacing allSpacings[] = {Spacing::continuous, Spacing::exact,   Spacing::padded,
                                   Spacing::odd,        Spacing::flipped, Spacing::negative};
const char* nameOf(Spacing spacing);
ptrdiff_t strideOf(Spacing spacing, size_t rowBytes, bool words);

constexpr KroViewOptions noOptions = {sizeof(KroViewOptions), KRO_EDGE, 0, 0, 0, 0, 0};
KroViewOptions withAlgorithm(reference::Method method);

const reference::InputFormat& inputNamed(const std::string& name);
const reference::ViewOutput& outputNamed(const std::string& name);
inline std::string inputName(const testing::TestParamInfo<reference::InputFormat>& format) {
    return format.param.name;
}

// ---- sources ----

// Samples in words as the options have them: noise in the bits that do not count if they are left-aligned, beyond
// their depth if asked for. Of packed formats just samples.
std::vector<uint16_t> numbersFor(const reference::InputFormat& format, const KroViewOptions& options, Content content,
                                 Size size, uint32_t seed, bool beyond = false);

// Read-only memory that ends with the frame's last byte, or begins with its first. Bytes between rows and unused bits
// of groups are noise.
class ViewSource {
public:
    explicit ViewSource(size_t capacity) : buffer_(capacity) {}
    void hold(const reference::InputFormat& format, Size size, const std::vector<uint16_t>& numbers, Spacing spacing,
              bool bigEndian, guard::Placement placement);
    const KroSourceView& view() const { return view_; }
    reference::Rows rows() const {
        return {static_cast<const uint8_t*>(view_.data), view_.stride, view_.height, view_.width};
    }

private:
    guard::Buffer buffer_;
    KroSourceView view_{};
};

// The bytes of a source of that format and size: of rows on their own, and of all of them in one run.
std::vector<uint8_t> rowOf(const reference::InputFormat& format, const uint16_t* numbers, size_t count,
                           bool bigEndian);

// ---- pictures ----

class ViewPicture {
public:
    explicit ViewPicture(size_t planeCapacity)
        : buffers_{guard::Buffer(planeCapacity), guard::Buffer(planeCapacity), guard::Buffer(planeCapacity),
                   guard::Buffer(planeCapacity)} {}
    const KroPictureView& lay(const reference::ViewOutput& output, Size size, Spacing spacing,
                              guard::Placement placement, guard::Fill fill, bool alphaPlane);
    const KroPictureView& view() const { return view_; }
    // The band's rows as expected, everything else as it was filled.
    testing::AssertionResult holds(const Planes& expected, Band band) const;
    testing::AssertionResult untouched() const { return holds(Planes(rowBytes_.size()), {0, 0}); }

private:
    testing::AssertionResult planeHolds(size_t plane, const std::vector<uint8_t>& expected, Band band) const;

    std::array<guard::Buffer, 4> buffers_;
    KroPictureView view_{};
    Size size_{};
    std::vector<size_t> rowBytes_;
};

// ---- comparison ----

testing::AssertionResult rowHolds(const uint8_t* row, const uint8_t* expected, size_t bytes);

// One conversion of what a source holds.
struct Asked {
    const reference::ViewOutput& output;
    KroViewOptions options;
    Spacing spacing = Spacing::continuous;
    bool alphaPlane = false;
};
std::string describe(const KroSourceView& source, const Asked& asked);

// Frames and pictures up to a size, on all tables.
class ViewCheck {
public:
    explicit ViewCheck(Size largest);

    void hold(const reference::InputFormat& format, Size size, const std::vector<uint16_t>& numbers, Spacing spacing,
              const KroViewOptions& options, guard::Placement placement = guard::Placement::againstEnd);
    reference::Scene scene(const reference::InputFormat& format, const KroViewOptions& options) const {
        return {format, source_.rows(), wordsOf(format, options)};
    }
    // Over two fills, against both ends of the memory. False after reporting the first wrong byte.
    bool convert(const Asked& asked, const Planes& expected);

private:
    bool convert(const kro::Kernels& table, const Asked& asked, const Planes& expected, guard::Placement placement,
                 guard::Fill fill);

    ViewSource source_;
    ViewPicture picture_;
    std::vector<const kro::Kernels*> tables_ = usableTables();
};
