#pragma once

#include <string>
#include <vector>

#include "frames/inference.hpp"

namespace cli {

// The options of `kro show` as they were given.
struct ShowRequest {
    std::vector<std::string> inputs;
    FrameRequest frame;
    std::string frames;
    std::string algorithm = "edge";
    std::string balance = "gray";
    std::string gamma = "srgb";
    std::string graphics;
    int bits = 0;
    int black = 0;
    int columns = 0;
    int most = 36;
    bool plain = false;
    bool viewer = false;
};

int show(const ShowRequest& request);

}  // namespace cli
