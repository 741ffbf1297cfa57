// The kernels of one instruction set: every text instantiated for one back end. Included once by each unit; all of it
// has internal linkage, so that no function compiled for one processor can be linked in place of another's.
#pragma once

#include "KRODemosaicingFuncs/expansion.hpp"
#include "KRODemosaicingFuncs/reduction.hpp"
#include "demosaicingBilinear/bilinear.hpp"
#include "demosaicingBilinear/bilinear16.hpp"
#include "demosaicingEdge/edge.hpp"
#include "demosaicingEdge/edge16.hpp"
#include "demosaicingNearest/nearest.hpp"
#include "isa/kernels.hpp"

namespace kro {
namespace {

template <class V>
struct Entries : ReductionKernels<V>,
                 ExpansionKernels<V>,
                 NearestKernels<V>,
                 BilinearKernels<V>,
                 Bilinear16Kernels<V>,
                 EdgeKernels<V>,
                 Edge16Kernels<V> {};

template <class V>
constexpr Kernels kernelsOf(const char* name) {
    using E = Entries<V>;
    return {
        name,
#define KRO_KERNEL(routine, arity) E::routine,
#include "isa/kernels.def"
#undef KRO_KERNEL
        {{Nearest<V, Output::bgr>::frame, Nearest<V, Output::bgra>::frame, Nearest<V, Output::planar>::frame,
          Nearest<V, Output::mono>::frame},
         {Bilinear<V, Output::bgr>::frame, Bilinear<V, Output::bgra>::frame, Bilinear<V, Output::planar>::frame,
          Bilinear<V, Output::mono>::frame},
         {Edge<V, Output::bgr>::frame, Edge<V, Output::bgra>::frame, Edge<V, Output::planar>::frame,
          Edge<V, Output::mono>::frame}},
        reduceRun<V>,
        E::monoToBgr,
        E::monoToBgra,
    };
}

}  // namespace
}  // namespace kro
