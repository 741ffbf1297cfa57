#pragma once

#include <cstdint>
#include <vector>

#include "guess/likeness.hpp"
#include "guess/material.hpp"
#include "guess/packing_search.hpp"

namespace cli::guess {

// How well rows of a stride tell each other, which where rows begin does not change much.
struct RatedRows {
    Geometry geometry;
    Likeness likeness;
    // Bits a byte, a little less where the length of the file speaks for it too.
    double score = 0;
};

// Row lengths that suit the layout, best first.
std::vector<RatedRows> rateRows(const Material& material, const std::vector<Chunk>& chunks, const RatedLayout& found);

}  // namespace cli::guess
