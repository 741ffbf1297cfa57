#pragma once

#include <cstdint>
#include <string>

namespace cli {

// The options of `kro mosaic` as they were given.
struct MosaicRequest {
    std::string picture;
    std::string format;
    std::string output;
    uint64_t stride = 0;
    bool bigEndian = false;
    bool noClobber = false;
};

int mosaic(const MosaicRequest& request);

}  // namespace cli
