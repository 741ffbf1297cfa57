// Frames that a narrower set makes faster: those narrower than a block of the set in hand (in pairs of columns they
// would take ten times as long), and colour pictures that no cache holds.
#pragma once

#include "kro/view.h"
#include "row/rectangle.hpp"

namespace kro {

// The frames of the widest set with vectors below `vectorBytes` that a row fills; beside the tables, which know the
// others.
void makeByNarrowerSet(int32_t vectorBytes, bool words, int32_t algorithm, Output kind, const FrameJob& job);

namespace {

// Whether a large picture waits for its stores rather than for arithmetic. Stores of whole lines that are not in the
// nearest cache take Zen 5 longer than those of half a line. Beside AVX-512 with VBMI, AVX2 makes 12 Mpixel to BGR8 1
// to 1.05 (nearest), 1.3 to 1.4 (bilinear) and 1.05 to 1.15 times as fast (edge-directed), to BGRa8 1.2, 1.2 and 1.1
// to 1.3, 16 bits to 1.45, unpacked or limited samples 1.04 to 1.3; 5 Mpixel .92 to 1.6, of 12 bits to BGR16 1.2,
// unpacked to BGR8 .8 to 1.15. With a cache of 32 MiB behind, pictures of 15 MB gain or are level, those of 9 to 12.6
// MB would lose: .62 to .95 where they are made again and again, .75 to .87 where others were in between. (Each store
// cut in two gains as much, but loses 5 to 15 % within the caches.) Grey, 32-bit lanes and fine are work that takes
// longer than stores.
template <class Sample>
KRO_INLINE bool waitsForStores(int32_t algorithm, Output kind, const FrameJob& job) {
    const int64_t mebibytes = readInPlace<Sample>(job.source) ? 13 : 24;
    const int64_t uncached = kind == Output::planar ? largePicture : mebibytes << 20;
    return pictureBytes(job.target, job.height) >= uncached && kind != Output::mono && algorithm != KRO_FINE &&
           (algorithm != KRO_EDGE || job.source.bits <= 12);
}

// False where the set in hand is to make the frame.
template <class S, class Sample>
KRO_INLINE bool madeByNarrowerSet(int32_t algorithm, Output kind, const FrameJob& job) {
    constexpr int32_t columns = BackEnd<S, Sample>::columns, bytes = columns * static_cast<int32_t>(sizeof(Sample));
    if (bytes <= 16) {
        return false;
    }
    const bool fills = job.width >= columns;
    constexpr bool wholeLines = bytes == 64;
    if (fills && !(wholeLines && waitsForStores<Sample>(algorithm, kind, job))) {
        return false;
    }
    makeByNarrowerSet(bytes, sizeof(Sample) == 2, algorithm, kind, job);
    return true;
}

}  // namespace
}  // namespace kro
