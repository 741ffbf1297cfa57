#pragma once

#include <string>
#include <vector>

namespace cli {

// The options of `kro guess` as they were given.
struct GuessRequest {
    std::vector<std::string> inputs;
    std::string sheet;
    bool noClobber = false;
};

int guessFrames(const GuessRequest& request);

}  // namespace cli
