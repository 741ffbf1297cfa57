// What a call on views must write: its options read for the reference. Free of the test framework, for the fuzz
// targets.
#pragma once

#include "kro/view.h"
#include "view_reference.hpp"

reference::Method methodOf(const KroViewOptions& options);
reference::Words wordsOf(const reference::InputFormat& format, const KroViewOptions& options);
reference::Finish finishOf(const reference::ViewOutput& output, const KroViewOptions& options, int bits);

using Planes = std::vector<std::vector<uint8_t>>;  // rows without gaps
Planes planesOf(reference::Scene& scene, const reference::ViewOutput& output, const KroViewOptions& options,
                bool alphaPlane = false);

struct Band {
    int first, rows;
    bool holds(int y) const { return y >= first && y < first + rows; }
};
Band bandOf(const KroViewOptions& options, int height);
