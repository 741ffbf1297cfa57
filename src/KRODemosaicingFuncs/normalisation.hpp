// Which 8-bit format an input format of frames is reduced to, and how.
#pragma once

#include "kro/kro.h"
#include "records/formats.hpp"

namespace kro {

// The formats of kro.h alone: null for all others.
const InputFormat* findFrameInput(uint32_t format);

}  // namespace kro
