// The checked entries of the 16-bit bilinear family.
#include "table/kernels.hpp"

namespace {

bool tooSmall(int32_t height, int32_t width) { return width < 4 || height < 4; }

}  // namespace

int32_t kroDemosaicingBilinearU16(const uint16_t* source, int32_t height, int32_t width, uint16_t* destination) {
    if (destination == nullptr || source == nullptr) {
        return KRO_ERR_NULL;
    }
    return tooSmall(height, width)
               ? KRO_ERR_SIZE
               : kro::bestKernels().demosaicingBilinearRGGBU16(source, height, width, destination);
}

int32_t kroDemosaicingBilinearU16P(const uint16_t* source, int32_t height, int32_t width, uint16_t* bluePlane,
                                   uint16_t* greenPlane, uint16_t* redPlane) {
    if (bluePlane == nullptr || source == nullptr || redPlane == nullptr || greenPlane == nullptr) {
        return KRO_ERR_NULL;
    }
    return tooSmall(height, width) ? KRO_ERR_SIZE
                                   : kro::bestKernels().demosaicingBilinearRGGBU16P(source, height, width, bluePlane,
                                                                                    greenPlane, redPlane);
}
