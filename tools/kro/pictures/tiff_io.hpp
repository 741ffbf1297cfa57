#pragma once

#include <tiffio.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

namespace cli {

// Where libtiff's bytes come from or go to. What goes wrong there cannot pass through libtiff as an exception, so it
// is kept here.
struct TiffIo {
    std::function<std::size_t(uint64_t at, uint8_t* target, std::size_t size)> read;
    std::function<void(uint64_t at, const uint8_t* source, std::size_t size)> write;
    std::function<uint64_t()> size;
    // The largest single piece of memory that libtiff may take for itself; 0 for no limit.
    uint64_t mostMemory = 0;

    uint64_t at = 0;
    bool outOfMemory = false;
    std::array<char, 160> message{};
};

using Tiff = std::unique_ptr<TIFF, void (*)(TIFF*)>;

// Null where the file is none, with the reason in the message; std::bad_alloc where memory was short.
Tiff openTiff(TiffIo& io, const char* mode);

}  // namespace cli
