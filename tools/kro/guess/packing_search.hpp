#pragma once

#include <memory>
#include <vector>

#include "frames/frame_reader.hpp"
#include "guess/levels.hpp"
#include "guess/sample_layout.hpp"

namespace cli::guess {

// A layout of samples, and how many bits a byte of the file would take if samples were told by their neighbours in
// the row: the fewer, the likelier the layout.
struct RatedLayout {
    const SampleLayout* layout = nullptr;
    double bitsPerByte = 8;
    // What else speaks against it, in the same unit; contained in the number above.
    double penalty = 0;
    // For each chunk of the file, in which of its bytes a group begins.
    std::vector<std::size_t> offsets;
    std::shared_ptr<const Levels> levels;
};

// A short stretch of the file, long enough to show how samples lie in it.
struct Chunk {
    std::size_t at;
    std::size_t size;
};

// Chunks at even distances.
std::vector<Chunk> chunksOf(const Bytes& bytes);

// All layouts, best first.
std::vector<RatedLayout> rateLayouts(const Bytes& bytes, const std::vector<Chunk>& chunks);

}  // namespace cli::guess
