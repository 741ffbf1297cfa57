#include "guess/levels.hpp"

#include <cmath>

namespace cli::guess {

Levels::Levels(const Samples& samples, int bits) : bits_(bits) {
    // Values that are merely rare must not seem to be left out.
    constexpr std::size_t leastEach = 8;
    constexpr std::size_t fewest = 3;
    const std::size_t values = std::size_t{1} << bits;
    std::vector<bool> occurs(values);
    for (const uint16_t sample : samples) {
        occurs[sample] = true;
    }
    std::vector<uint16_t> ranks(values);
    std::size_t levels = 0;
    for (std::size_t value = 0; value < values; value++) {
        ranks[value] = static_cast<uint16_t>(levels);
        levels += occurs[value] ? 1 : 0;
    }
    if (levels * fewest <= values && levels * leastEach <= samples.size()) {
        ranks_ = ranks;
        bits_ = std::log2(static_cast<double>(levels) + 1);
    }
}

void Levels::rank(Samples& samples) const {
    if (ranks_.empty()) {
        return;
    }
    for (uint16_t& sample : samples) {
        sample = ranks_[sample];
    }
}

}  // namespace cli::guess
