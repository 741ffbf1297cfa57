#include "support/failure.hpp"

#include <system_error>

namespace cli {

std::string systemMessage(int errorNumber) { return std::generic_category().message(errorNumber); }

}  // namespace cli
