#include "guess/code_length.hpp"

#include <algorithm>
#include <cmath>

namespace cli::guess {

double CodeLength::bitsEach(double sampleBits) const {
    if (sum_ == 0 || count_ == 0) {
        return 0;
    }
    // Differences of both signs in one sequence of whole numbers: 0, -1, 1, -2 ...
    const double mean = 2 * static_cast<double>(sum_) / static_cast<double>(count_);
    const double bits = (mean + 1) * std::log2(mean + 1) - mean * std::log2(mean);
    return std::min(bits, sampleBits);
}

}  // namespace cli::guess
