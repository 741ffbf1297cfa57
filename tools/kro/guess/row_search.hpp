#pragma once

#include <cstdint>
#include <vector>

#include "guess/packing_search.hpp"

namespace cli::guess {

// Distances in bytes at which the file is most like itself, shortest first: rows, pairs of rows, several of them.
std::vector<std::size_t> likeDistances(const Bytes& bytes, const std::vector<Chunk>& chunks,
                                       const RatedLayout& rated);

}  // namespace cli::guess
