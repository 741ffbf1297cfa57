// Kernels still to be written.
#pragma once

#include "kro/kro.h"

namespace kro {
namespace {

struct PendingKernels {
    static constexpr decltype(&::demosaicingEdgeRGGBU16) demosaicingEdgeRGGBU16 = nullptr;
    static constexpr decltype(&::demosaicingEdgeGRBGU16) demosaicingEdgeGRBGU16 = nullptr;
    static constexpr decltype(&::demosaicingEdgeGBRGU16) demosaicingEdgeGBRGU16 = nullptr;
    static constexpr decltype(&::demosaicingEdgeBGGRU16) demosaicingEdgeBGGRU16 = nullptr;
    static constexpr decltype(&::edgeSecRGGBU16) edgeSecRGGBU16 = nullptr;
    static constexpr decltype(&::edgeFirstRowsRGGBU16) edgeFirstRowsRGGBU16 = nullptr;
    static constexpr decltype(&::edgeFirstRowsGBRGU16) edgeFirstRowsGBRGU16 = nullptr;
    static constexpr decltype(&::edgeFirstColsRGGBU16) edgeFirstColsRGGBU16 = nullptr;
    static constexpr decltype(&::edgeFirstColsGRBGU16) edgeFirstColsGRBGU16 = nullptr;
    static constexpr decltype(&::edgeLastRowsRGGBU16) edgeLastRowsRGGBU16 = nullptr;
    static constexpr decltype(&::edgeLastColsRGGBU16) edgeLastColsRGGBU16 = nullptr;
};

}  // namespace
}  // namespace kro
