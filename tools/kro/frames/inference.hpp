#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "frames/format_names.hpp"
#include "frames/frame_size.hpp"

namespace cli {

// What the user said of the frames, before any file name is looked at.
struct FrameRequest {
    std::string formatName;
    std::string sizeText;
    uint64_t skip = 0;
    // Bytes from row to row; 0 where rows have no gaps.
    uint64_t stride = 0;
    bool bigEndian = false;
};

// A usage failure where a given size or format is none, whatever the files are.
void requireGoodRequest(const FrameRequest& request);

struct FrameLayout;

// A usage failure where stride or byte order do not go with size and format.
void requireGoodRows(const std::string& name, const FrameLayout& layout);

// A picture file that holds frames; none where they lie in the file as they came from the camera.
enum class Container { none, pgm, png, tiff, npy };

// How the frames of one file are to be read.
struct FrameLayout {
    FrameSize size;
    const InputFormat* format = nullptr;
    uint64_t skip = 0;
    std::size_t stride = 0;
    bool bigEndian = false;
    Container container = Container::none;
    // Those in the container.
    uint64_t frames = 0;
    // What was inferred, to be said once the frames turn out to be usable; empty where nothing was.
    std::string note;

    std::size_t rowBytes() const { return format->bytes(static_cast<std::size_t>(size.width)); }
    // From frame to frame.
    std::size_t bytes() const;
    // Of the last frame of a file what follows its last sample may be missing.
    std::size_t leastBytes() const;
    std::string text() const;
};

// Options first, then the file's name. The file's length, where it is
// known, decides between layouts that the name leaves open.
FrameLayout inferLayout(const std::string& path, const FrameRequest& request, std::optional<uint64_t> fileBytes);

// The format of a container's frames: phase by option or name, depth by the largest sample that the container can
// hold, unless option or name give a smaller one.
const InputFormat& inferContained(const std::string& path, const FrameRequest& request, uint32_t maximum);

}  // namespace cli
