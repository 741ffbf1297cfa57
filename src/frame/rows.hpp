// The rows of a frame as bytes. Frames of bytes are read in place; others are reduced row by row into a small ring just
// ahead of the kernel, which costs far less than a pass over the whole frame.
#pragma once

#include "KRODemosaicingFuncs/reduction.hpp"
#include "frame/geometry.hpp"
#include "frame/job.hpp"

namespace kro {
namespace {

template <class V>
class Rows {
public:
    KRO_INLINE explicit Rows(const FrameJob& job)
        : source_(job.source), height_(job.height), width_(job.width), made_(0) {}

    // Rows up to y, mirrored at the frame's ends, can be read until ringRows further ones were asked for.
    KRO_INLINE void need(int32_t y) {
        if (source_.reduction != reductionNone) {
            makeUpTo(y < height_ ? y : height_ - 1);
        }
    }
    KRO_INLINE const uint8_t* operator[](int32_t y) const {
        const int32_t row = mirrored(y, height_);
        if (source_.reduction != reductionNone) {
            return source_.ring + (row & (ringRows - 1)) * source_.ringStride;
        }
        return static_cast<const uint8_t*>(source_.samples) + static_cast<ptrdiff_t>(row) * width_;
    }
    // Starts over: for kernels that walk a frame in strips.
    KRO_INLINE void rewind() { made_ = 0; }

private:
    KRO_OUTLINE void makeUpTo(int32_t y) {
        const ptrdiff_t n = static_cast<ptrdiff_t>(height_) * width_;
        for (; made_ <= y; ++made_) {
            reduceRun<V>(source_, static_cast<ptrdiff_t>(made_) * width_, width_, n,
                         source_.ring + (made_ & (ringRows - 1)) * source_.ringStride);
        }
    }

    Source source_;
    int32_t height_;
    int32_t width_;
    int32_t made_;
};

}  // namespace
}  // namespace kro
