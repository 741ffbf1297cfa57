// The marks: the share of the plain stream that kernels are meant to reach at the least.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "report/report.hpp"

namespace bench {

// 0 where there is none.
double markOf(const std::string& caseName, const std::string& shapeName, const std::string& instructionSet);

bool hasMarks(const std::string& caseName);
// Sizes that are measured together for the marks, the plain one first.
std::vector<Shape> shapesForMarks();

void printMarks(std::ostream& out, const std::vector<Result>& results);

}  // namespace bench
