// Kernels still to be written.
#pragma once

#include "kro/kro.h"

namespace kro {
namespace {

struct PendingKernels {
    static constexpr decltype(&::demosaicingBilinearRGGBU16) demosaicingBilinearRGGBU16 = nullptr;
    static constexpr decltype(&::demosaicingBilinearRGGBU16P) demosaicingBilinearRGGBU16P = nullptr;
    static constexpr decltype(&::bilinearFirstRowsRGGBU16) bilinearFirstRowsRGGBU16 = nullptr;
    static constexpr decltype(&::bilinearFirstColsRGGBU16) bilinearFirstColsRGGBU16 = nullptr;
    static constexpr decltype(&::bilinearBodyRGGBU16) bilinearBodyRGGBU16 = nullptr;
    static constexpr decltype(&::bilinearLastRowsRGGBU16) bilinearLastRowsRGGBU16 = nullptr;
    static constexpr decltype(&::bilinearLastColsRGGBU16) bilinearLastColsRGGBU16 = nullptr;
    static constexpr decltype(&::bilinearFirstRowsRGGBU16P) bilinearFirstRowsRGGBU16P = nullptr;
    static constexpr decltype(&::bilinearFirstColsRGGBU16P) bilinearFirstColsRGGBU16P = nullptr;
    static constexpr decltype(&::bilinearBodyRGGBU16P) bilinearBodyRGGBU16P = nullptr;
    static constexpr decltype(&::bilinearLastRowsRGGBU16P) bilinearLastRowsRGGBU16P = nullptr;
    static constexpr decltype(&::bilinearLastColsRGGBU16P) bilinearLastColsRGGBU16P = nullptr;
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
