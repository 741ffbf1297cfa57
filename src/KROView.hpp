// The call on views with the table of kernels given instead of chosen.
#pragma once

#include "kro/view.h"
#include "table/kernels.hpp"

namespace kro {

int32_t convertView(const Kernels& kernels, const KroSourceView* source, const KroPictureView* picture,
                    const KroViewOptions* given);

}  // namespace kro
