#pragma once

#include <cstdint>
#include <cstdlib>

namespace cli::guess {

// How many bits a sample takes that is coded as its difference from a prediction, when these differences fall off
// geometrically around 0; never more than the sample itself has.
class CodeLength {
public:
    void add(int32_t difference) {
        sum_ += static_cast<uint64_t>(std::abs(difference));
        count_++;
    }
    uint64_t count() const { return count_; }
    double bitsEach(double sampleBits) const;

private:
    uint64_t sum_ = 0;
    uint64_t count_ = 0;
};

// The prediction from three neighbours that keeps both edges and slopes: their median once the third is the slope's.
constexpr int32_t median(int32_t a, int32_t b, int32_t c) {
    return a < b ? (b < c ? b : (a < c ? c : a)) : (a < c ? a : (b < c ? c : b));
}

}  // namespace cli::guess
