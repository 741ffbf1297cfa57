// Finished images widened: grey to colour, three bytes a pixel to four. Bound by the stores on every set.
#pragma once

#include "row/rectangle.hpp"

namespace kro {
namespace {

// Grey samples in every channel of `kind`, or, planar and grey, copied. `kind` decides how many channels there are.
template <class V, Output kind>
KRO_INLINE void expandBlock(const typename V::Sample* in, uint32_t alpha, typename V::Sample* out) {
    const auto grey = V::load(in);
    if constexpr (kind == Output::bgr && ofBytes<V>) {
        V::storeTriple(out, grey);
    } else if constexpr (kind == Output::bgr) {
        V::store3(out, grey, grey, grey);
    } else {
        const auto level = V::transposed(grey), fourth = V::filled(alpha);
        storeQuads<V>(out, kind == Output::abgr ? V::quads(fourth, level, level, level)
                                                : V::quads(level, level, level, fourth));
    }
}
template <Output kind, class Sample>
KRO_INLINE void expandSample(Sample grey, uint32_t alpha, Sample* out) {
    constexpr int colours = kind == Output::abgr ? 1 : 0;
    out[colours] = out[colours + 1] = out[colours + 2] = grey;
    if constexpr (kind != Output::bgr) {
        out[kind == Output::abgr ? 0 : 3] = static_cast<Sample>(alpha);
    }
}
template <class V, Output kind>
void expandGrey(const typename V::Sample* source, ptrdiff_t n, uint32_t alpha, typename V::Sample* destination) {
    constexpr int channels = channelsIn(kind);
    ptrdiff_t i = 0;
    if constexpr (V::columns > 2) {
        i = eachRun<V::columns>(n, [=](ptrdiff_t k) KRO_INLINE_LAMBDA {
            expandBlock<V, kind>(source + k, alpha, destination + channels * k);
        });
    }
    for (; i < n; ++i) {
        expandSample<kind>(source[i], alpha, destination + channels * i);
    }
}

template <class S>
struct ExpansionEntries {
    static void bgrToBgra(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination) {
        const ptrdiff_t n = static_cast<ptrdiff_t>(height) * width;
        ptrdiff_t i = 0;
        if constexpr (S::Bytes::columns > 2) {
            for (; i + 16 <= n; i += 16) {
                S::Bytes::widen48(source + 3 * i, destination + 4 * i);
            }
        }
        for (; i < n; ++i) {
            for (int c = 0; c < 3; ++c) {
                destination[4 * i + c] = source[3 * i + c];
            }
            destination[4 * i + 3] = 0;
        }
    }
};

// Grey frames to any output, in pieces small enough to stay in the first-level cache between reading and writing.
template <class S, class Sample, Output kind>
class Grey {
    static constexpr ptrdiff_t piece = 4096 / sizeof(Sample);

public:
    static void frame(const FrameJob& job) {
        const ptrdiff_t rowBytes = job.width * static_cast<ptrdiff_t>(sizeof(Sample));
        const bool asIs = readInPlace<Sample>(job.source) && job.target.spreadBits == 0;
        if (asIs && job.source.stride == rowBytes && targetRunsOn(job.target, rowBytes)) {
            expandRow(job, job.rows.begin, static_cast<ptrdiff_t>(job.rows.end - job.rows.begin) * job.width);
            return;
        }
        for (int32_t y = job.rows.begin; y < job.rows.end; ++y) {
            asIs ? expandRow(job, y, job.width) : readRow(job, y);
        }
    }

private:
    static bool targetRunsOn(const Target& target, ptrdiff_t rowBytes) {
        bool runsOn = target.stride[0] == rowBytes * channelsIn(kind);
        for (int plane = 1; plane < 3 && kind == Output::planar; ++plane) {
            runsOn = runsOn && target.stride[plane] == rowBytes;
        }
        return runsOn;
    }
    // `count` samples from the start of row y on.
    static void expandRow(const FrameJob& job, int32_t y, ptrdiff_t count) {
        put(job.target, y, 0, advanced(static_cast<const Sample*>(job.source.samples), y * job.source.stride), count);
    }
    static KRO_OUTLINE void readRow(const FrameJob& job, int32_t y) {
        Sample samples[piece];
        for (int32_t x = 0; x < job.width; x += piece) {
            const int32_t end = job.width - x < piece ? job.width : x + static_cast<int32_t>(piece);
            readRun<S>(job, y, {x, end}, samples);
            if constexpr (sizeof(Sample) == 2) {
                if (job.target.spreadBits != 0) {
                    spreadSamples<typename S::Words>(samples, end - x, job.target.spreadBits);
                }
            }
            put(job.target, y, x, samples, end - x);
        }
    }
    static void put(const Target& target, int32_t y, int32_t x, const Sample* samples, ptrdiff_t count) {
        for (int plane = 0; plane < (kind == Output::planar ? 3 : 1); ++plane) {
            Sample* const out = advanced(static_cast<Sample*>(target.plane[plane]), y * target.stride[plane]) +
                                static_cast<ptrdiff_t>(x) * channelsIn(kind);
            if constexpr (isInterleaved(kind)) {
                expandGrey<BackEnd<S, Sample>, kind>(samples, count, target.alpha, out);
            } else {
                __builtin_memcpy(out, samples, static_cast<size_t>(count) * sizeof(Sample));
            }
        }
    }
};

}  // namespace
}  // namespace kro
