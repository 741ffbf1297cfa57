// Input formats reduced to the five 8-bit ones.
#pragma once

#include "kro/kro.h"

namespace kro {

// Sets both results in every case: an unknown format to itself and no pre-conversion, with KRO_ERR_FORMAT.
int32_t normalise(uint32_t format, uint32_t& normalised, int32_t& preConversion);

}  // namespace kro
