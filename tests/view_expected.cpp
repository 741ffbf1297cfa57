#include "view_expected.hpp"

using reference::InputFormat;
using reference::ViewOutput;

reference::Method methodOf(const KroViewOptions& options) {
    return static_cast<reference::Method>(options.algorithm);
}

reference::Words wordsOf(const InputFormat& format, const KroViewOptions& options) {
    return {options.bits == 0 ? format.bits : options.bits, (options.flags & KRO_VIEW_BIG_ENDIAN) != 0,
            (options.flags & KRO_VIEW_LEFT_ALIGNED) != 0};
}

reference::Finish finishOf(const ViewOutput& output, const KroViewOptions& options, int bits) {
    const int opaque = output.depth == 8 ? 255 : 65535;
    const bool full = output.depth == 16 && (options.flags & KRO_VIEW_FULL_RANGE) != 0;
    return {(options.flags & KRO_VIEW_ALPHA) != 0 ? options.alpha : opaque, full ? bits : 0};
}

Planes planesOf(reference::Scene& scene, const ViewOutput& output, const KroViewOptions& options, bool alphaPlane) {
    const reference::Picture& picture = scene.picture(methodOf(options), output.depth);
    Planes planes;
    for (const std::string& letters : reference::planesOf(output, alphaPlane)) {
        planes.push_back(
            reference::planeBytes(picture, letters, output.depth, finishOf(output, options, scene.bits())));
    }
    return planes;
}

Band bandOf(const KroViewOptions& options, int height) {
    return {options.firstRow, options.rowCount == 0 ? height - options.firstRow : options.rowCount};
}
