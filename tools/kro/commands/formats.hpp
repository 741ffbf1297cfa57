#pragma once

#include <string>

namespace cli {

// What `kro formats` prints.
std::string formatTables();

}  // namespace cli
