#pragma once

#include <cstddef>
#include <functional>

#include "developing/developer.hpp"

namespace cli {

// Calls work(i, developer) for every i below count, at most so many at once, each thread with its own developer, in
// order of i as far as threads allow. Threads that are left over work on bands of single frames. A failure is said
// and the rest goes on; true where there was none.
bool runOnThreads(std::size_t count, unsigned threads, unsigned atOnce,
                  const std::function<void(std::size_t, Developer&)>& work);

}  // namespace cli
