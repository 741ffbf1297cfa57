#pragma once

#include <sys/types.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "frames/inference.hpp"

namespace cli {

using Bytes = std::vector<uint8_t>;

constexpr const char* standardStream = "-";

// Frames are counted from 1, as people do.
struct FrameRange {
    uint64_t first = 1;
    uint64_t last = std::numeric_limits<int64_t>::max();
    bool chosen = false;

    bool single() const { return first == last; }
};

// "3", "2-5" or "2-".
FrameRange parseFrameRange(const std::string& text);

// A file descriptor that closes itself.
class Descriptor {
public:
    explicit Descriptor(int descriptor = -1) : descriptor_(descriptor) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : descriptor_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    int get() const { return descriptor_; }
    int release();

private:
    int descriptor_;
};

// Two names stand for the same file when their ids are equal.
using FileId = std::pair<dev_t, ino_t>;

// A file, or a pipe of which neither length nor place is known.
class InputFile {
public:
    explicit InputFile(const std::string& path);

    const std::string& shownName() const { return shownName_; }
    const std::optional<uint64_t>& length() const { return length_; }
    bool isStream() const { return !length_; }
    const FileId& id() const { return id_; }

    // How many bytes came before the end.
    std::size_t readAt(uint64_t offset, uint8_t* target, std::size_t size) const;
    std::size_t readNext(uint8_t* target, std::size_t size) const;
    Bytes readAll() const;

private:
    template <typename Read>
    std::size_t fill(uint8_t* target, std::size_t size, Read&& read) const;

    std::string shownName_;
    Descriptor descriptor_;
    std::optional<uint64_t> length_;
    FileId id_;
};

// The chosen frames of a file whose length is known; a failure where the length does not fit the layout.
FrameRange framesInFile(const InputFile& file, const FrameLayout& layout, const FrameRange& range);

void readFrame(const InputFile& file, const FrameLayout& layout, uint64_t number, Bytes& frame);

// Frames of a pipe, one after another.
class FrameStream {
public:
    FrameStream(const InputFile& file, const FrameLayout& layout, const FrameRange& range);

    // False at the end, be it a good one or not; the number of the frame just read is in number().
    bool next(Bytes& frame);
    uint64_t number() const { return number_; }
    // A failure where the pipe ended within a frame or before the chosen ones. Asked for after the last frame has
    // been used, so that nothing of what came whole is lost.
    void requireGoodEnd() const;

private:
    void skipHeader();
    std::size_t fillFrame(Bytes& frame) const;

    const InputFile& file_;
    FrameLayout layout_;
    FrameRange range_;
    uint64_t number_ = 0;
    bool ended_ = false;
    std::size_t leftOver_ = 0;
};

}  // namespace cli
