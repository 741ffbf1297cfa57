// The sums of the fine formulas, and mosaics that drive one of them to its end.
#pragma once

#include <functional>
#include <string>

#include "fine_reference.hpp"

// Every product and sum that a red or blue site needs, as the formulas add up.
struct FineSum {
    std::string name;
    int value;
};
std::vector<FineSum> fineSums(const reference::FinePlanes& planes, int y, int x);

// A mosaic of 0 and 255, red first, whose red site in the middle has made one of the sums large, or small: samples
// are changed here and there, and stay changed while the sum does not suffer.
constexpr int extremeSize = 17, extremeSite = 8;
struct FineExtreme {
    size_t sum;
    bool large;
    uint32_t seed;
};
std::vector<FineExtreme> fineExtremes();  // of the sums that get large
using EachStep = std::function<void(const reference::FinePlanes& planes)>;
reference::Mosaic fineExtreme(const FineExtreme& wanted, int steps, const EachStep& look = nullptr);
