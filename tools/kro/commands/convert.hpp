#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frames/inference.hpp"

namespace cli {

// The options of `kro convert` as they were given.
struct ConvertRequest {
    std::vector<std::string> inputs;
    FrameRequest frame;
    std::string frames;
    std::string algorithm = "edge";
    std::string outputFormat;
    std::string output;
    std::string fileType;
    std::string balance = "none";
    std::string gamma = "none";
    // 0 where not given: that of the output format, or 8.
    int depth = 0;
    int bits = 0;
    int black = 0;
    int shift = 0;
    unsigned jobs = 0;
    std::optional<int> pngLevel;
    std::optional<int> quality;
    bool scale = false;
    bool opaque = false;
    bool noClobber = false;
    bool many = false;
};

int convert(const ConvertRequest& request);

}  // namespace cli
