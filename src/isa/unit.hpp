// The kernels of one instruction set: every formula instantiated for one back end. Included once by each unit; all of
// it has internal linkage, so that no function compiled for one processor can be linked in place of another's.
#pragma once

#include "demosaicingBilinear/entries.hpp"
#include "demosaicingEdge/entries.hpp"
#include "demosaicingFine/fine.hpp"
#include "demosaicingNearest/entries.hpp"
#include "row/expansion.hpp"
#include "table/kernels.hpp"

namespace kro {
namespace {

// A family's frames of the five output kinds, in the order of `Output`.
#define KRO_KINDS(family, ...)                                                                    \
    {                                                                                             \
        family<__VA_ARGS__, Output::bgr>::frame, family<__VA_ARGS__, Output::bgra>::frame,        \
            family<__VA_ARGS__, Output::abgr>::frame, family<__VA_ARGS__, Output::planar>::frame, \
            family<__VA_ARGS__, Output::mono>::frame                                              \
    }

template <class S>
constexpr Kernels kernelsOf(const char* name) {
    return {
        name,
#define KRO_KERNEL(routine, arity, ...) __VA_ARGS__,
#include "table/kernels.def"
#undef KRO_KERNEL
        {KRO_KINDS(Nearest, S, uint8_t), KRO_KINDS(Bilinear, S), KRO_KINDS(Edge, S, uint8_t),
         KRO_KINDS(Fine, S, uint8_t)},
        {KRO_KINDS(Nearest, S, uint16_t), KRO_KINDS(BilinearWords, S), KRO_KINDS(Edge, S, uint16_t),
         KRO_KINDS(Fine, S, uint16_t)},
        KRO_KINDS(Grey, S, uint8_t),
        KRO_KINDS(Grey, S, uint16_t),
        S::Bytes::columns,
    };
}

#undef KRO_KINDS

}  // namespace
}  // namespace kro
