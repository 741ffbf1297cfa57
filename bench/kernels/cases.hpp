// Everything that is measured: exported routines on whole frames.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "kernels/frame.hpp"
#include "kernels/table.hpp"

namespace bench {

using Work = std::function<void()>;

struct Case {
    std::string name;  // what/input/output, for example "bilinear/RG8/BGR8"
    Samples samples;
    size_t outputBytesPerPixel;
    // One frame's work on these buffers, which must outlive it. Empty where the table has no such kernel.
    std::function<Work(const Table&, const Frame&)> bind;
};

const std::vector<Case>& allCases();

}  // namespace bench
