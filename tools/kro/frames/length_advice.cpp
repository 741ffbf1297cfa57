#include "frames/length_advice.hpp"

#include <algorithm>

namespace cli {

namespace {

// Other formats of the same phase with which the file is one frame of this size.
std::vector<const InputFormat*> fittingFormats(const FrameLayout& layout, uint64_t payload) {
    std::vector<const InputFormat*> fitting;
    for (const InputFormat& format : inputFormats()) {
        if (format.phase == layout.format->phase && format.bytes(layout.size.samples()) == payload) {
            fitting.push_back(&format);
        }
    }
    return fitting;
}

// Drivers fill rows up to a few hundred bytes; what is longer is another format or another size.
bool isLikely(uint64_t stride, const FrameLayout& layout) {
    const uint64_t row = layout.rowBytes();
    const bool aligned = layout.format->packing != Packing::word || stride % 2 == 0;
    return stride > row && stride - row <= std::max<uint64_t>(256, row / 8) && aligned;
}

// The distance of rows with which the file is whole frames, the fewest, or one frame whose last row is not filled up;
// 0 where there is none.
uint64_t fittingStride(const FrameLayout& layout, uint64_t payload) {
    const uint64_t height = static_cast<uint64_t>(layout.size.height);
    const uint64_t row = layout.rowBytes();
    for (uint64_t frames = 1; frames <= payload / layout.bytes(); frames++) {
        const uint64_t stride = payload / (frames * height);
        if (stride * frames * height == payload && isLikely(stride, layout)) {
            return stride;
        }
    }
    const uint64_t stride = (payload - row) / (height - 1);
    return stride * (height - 1) + row == payload && isLikely(stride, layout) ? stride : 0;
}

std::string adviceFor(uint64_t stride) {
    return "rows " + std::to_string(stride) + " bytes apart? --stride " + std::to_string(stride);
}

}  // namespace

std::string strideAdvice(const FrameLayout& layout, uint64_t payload) {
    const uint64_t stride = layout.stride == 0 ? fittingStride(layout, payload) : 0;
    return stride == 0 ? "" : adviceFor(stride);
}

std::string lengthAdvice(const FrameLayout& layout, uint64_t payload) {
    if (layout.stride != 0) {
        return "wrong size, format or stride?";
    }
    const std::vector<const InputFormat*> fitting = fittingFormats(layout, payload);
    if (!fitting.empty()) {
        return "wrong format? it is one frame of " + listNames(fitting);
    }
    const uint64_t stride = fittingStride(layout, payload);
    const uint64_t rest = payload % layout.bytes();
    const uint64_t count = payload / layout.bytes();
    const std::string header = "a header? --skip " + std::to_string(layout.skip + rest);
    const std::string wholeOnes = "--frames 1- takes the whole ones";
    if (stride != 0) {
        // A distance that no driver chooses may be chance.
        return adviceFor(stride) + (stride % 4 == 0 ? "" : "; " + header);
    }
    if (rest < layout.bytes() / 4) {
        return header + "; something behind the frames? " + wholeOnes;
    }
    return count == 1 ? "wrong size or format?" : "wrong size or format, or cut off? " + wholeOnes;
}

}  // namespace cli
