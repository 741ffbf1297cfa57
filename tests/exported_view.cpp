// The exported conversion of views in the place of the one that takes a table.
#include "KROView.hpp"
#include "kro/view.h"

namespace kro {

int32_t convertView(const Kernels&, const KroSourceView* source, const KroPictureView* picture,
                    const KroViewOptions* options) {
    return ::kroConvertView(source, picture, options);
}

}  // namespace kro
