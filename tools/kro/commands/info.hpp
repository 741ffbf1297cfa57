#pragma once

#include <string>
#include <vector>

#include "frames/inference.hpp"

namespace cli {

// The options of `kro info` as they were given.
struct InfoRequest {
    std::vector<std::string> inputs;
    FrameRequest frame;
    std::string frames;
    bool each = false;
};

int info(const InfoRequest& request);

}  // namespace cli
