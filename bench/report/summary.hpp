// What a run says of each kernel, in a line.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "report/report.hpp"

namespace bench {

// Above this share of the plain stream a kernel is taken to wait for memory; below, its own operations are what
// lasts.
constexpr double memoryBoundAbove = .8;

std::string boundBy(const Result& kernel);

// A line for each kernel, instruction set and size: times the fastest peer, shares, what bounds it.
void printSummary(std::ostream& out, const std::vector<Result>& results);

}  // namespace bench
