// Finished images widened: grey to colour, three bytes a pixel to four. Bound by the stores on every set.
#pragma once

#include "KRODemosaicingFuncs/reduction.hpp"

namespace kro {
namespace {

template <class V>
struct ExpansionKernels {
    static void monoToBgr(const uint8_t* source, int64_t pixels, uint8_t* destination) {
        const ptrdiff_t n = static_cast<ptrdiff_t>(pixels);
        ptrdiff_t i = 0;
        if constexpr (V::columns > 2) {
            i = eachRun<V>(n, [=](ptrdiff_t k) KRO_INLINE_LAMBDA {
                V::storeTriple(destination + 3 * k, V::load(source + k));
            });
        }
        for (; i < n; ++i) {
            destination[3 * i] = destination[3 * i + 1] = destination[3 * i + 2] = source[i];
        }
    }

    // Alpha is 0, as in the colour kernels.
    static void monoToBgra(const uint8_t* source, int64_t pixels, uint8_t* destination) {
        const ptrdiff_t n = static_cast<ptrdiff_t>(pixels);
        ptrdiff_t i = 0;
        if constexpr (V::columns > 2) {
            i = eachRun<V>(n, [=](ptrdiff_t k) KRO_INLINE_LAMBDA {
                const auto grey = V::load(source + k);
                const auto quads = V::quads(grey, grey, grey);
                for (int part = 0; part < 4; ++part) {
                    V::store(destination + 4 * k + part * V::columns, quads.part[part]);
                }
            });
        }
        for (; i < n; ++i) {
            destination[4 * i] = destination[4 * i + 1] = destination[4 * i + 2] = source[i];
            destination[4 * i + 3] = 0;
        }
    }

    static void bgrToBgra(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination) {
        const ptrdiff_t n = static_cast<ptrdiff_t>(height) * width;
        ptrdiff_t i = 0;
        if constexpr (V::columns > 2) {
            for (; i + 16 <= n; i += 16) {
                V::widen48(source + 3 * i, destination + 4 * i);
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

}  // namespace
}  // namespace kro
