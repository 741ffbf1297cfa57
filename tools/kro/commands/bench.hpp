#pragma once

#include <string>
#include <vector>

namespace cli {

// Becomes kro-bench, found beside this program or in PATH, with the given words, the first of
// which is its name. Returns only by a failure.
[[noreturn]] void becomeBench(std::vector<std::string> words);

}  // namespace cli
