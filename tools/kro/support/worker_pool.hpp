#pragma once

#include <cstddef>
#include <functional>

#include "developing/developer.hpp"

namespace cli {

// Calls work(i, developer) for every i below count on that many threads, each with its own developer, in order of i
// as far as threads allow. A failure is said and the rest goes on; true where there was none.
bool runOnThreads(std::size_t count, unsigned threads, const std::function<void(std::size_t, Developer&)>& work);

}  // namespace cli
