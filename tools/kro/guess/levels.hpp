#pragma once

#include <cstdint>
#include <vector>

#include "frames/samples.hpp"

namespace cli::guess {

// The values that samples take at all. Where these are few (words of 12 bits, or 8 bits stretched to more), samples
// are better compared by their rank among them.
class Levels {
public:
    // Of samples of so many bits that stand for all of the file.
    Levels(const Samples& samples, int bits);

    // Each sample becomes its rank, or stays what it is where most values occur.
    void rank(Samples& samples) const;
    // Bits of a rank.
    double bits() const { return bits_; }

private:
    std::vector<uint16_t> ranks_;
    double bits_;
};

}  // namespace cli::guess
