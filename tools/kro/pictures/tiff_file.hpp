#pragma once

#include <functional>
#include <string>

#include "pictures/picture_file.hpp"

namespace cli {

// Uncompressed; the picture's channels must be grey, RGB or RGBA.
Bytes encodeTiff(const Picture& picture);

// A file that is read here and there instead of from front to back.
struct ByteSource {
    // How many bytes came before the end.
    std::function<std::size_t(uint64_t at, uint8_t* target, std::size_t size)> read;
    uint64_t size = 0;
};
ByteSource sourceOf(const Bytes& file);

PictureHeader readTiffHeader(const ByteSource& source, const std::string& name);
// Pages count from 1.
DecodedPicture decodeTiff(const ByteSource& source, const std::string& name, uint64_t page = 1);

}  // namespace cli
