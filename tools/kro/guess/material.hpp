#pragma once

#include <cstdint>

#include "frames/frame_reader.hpp"

namespace cli::guess {

// What a guess is made from: the first bytes of a file, and how many it has in all.
struct Material {
    Bytes bytes;
    uint64_t length = 0;
};

// A failure where nothing can be told by the bytes: too few, all the same, or a picture file's.
Material readMaterial(const InputFile& file);

}  // namespace cli::guess
