// Frames narrower than a block of the set in hand: the widest set whose blocks they have room for makes them. (In
// pairs of columns they would take ten times as long.)
#pragma once

#include "kro/view.h"
#include "row/rectangle.hpp"

namespace kro {

// The frames of the widest set with vectors below `vectorBytes` that a row fills; beside the tables, which know the
// others.
void makeByNarrowerSet(int32_t vectorBytes, bool words, int32_t algorithm, Output kind, const FrameJob& job);

namespace {

// False where the set in hand is to make the frame.
template <class S, class Sample>
KRO_INLINE bool madeByNarrowerSet(int32_t algorithm, Output kind, const FrameJob& job) {
    constexpr int32_t columns = BackEnd<S, Sample>::columns, bytes = columns * static_cast<int32_t>(sizeof(Sample));
    if (bytes <= 16 || job.width >= columns) {
        return false;
    }
    makeByNarrowerSet(bytes, sizeof(Sample) == 2, algorithm, kind, job);
    return true;
}

}  // namespace
}  // namespace kro
