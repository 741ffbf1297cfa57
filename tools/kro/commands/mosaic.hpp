#pragma once

#include <string>

namespace cli {

// The options of `kro mosaic` as they were given.
struct MosaicRequest {
    std::string picture;
    std::string format;
    std::string output;
    bool noClobber = false;
};

int mosaic(const MosaicRequest& request);

}  // namespace cli
