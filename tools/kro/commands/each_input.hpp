#pragma once

#include <functional>
#include <string>
#include <vector>

namespace cli {

// Calls work for each input. What is wrong with one of several is said, and the others follow; with the only one it
// is the call that is wrong. True where nothing was wrong.
bool eachInput(const std::vector<std::string>& inputs, const std::function<void(const std::string&)>& work);

}  // namespace cli
