#pragma once

#include <cstdint>
#include <string_view>

namespace cli {

// Each takes what it finds at the front of the text, or leaves the text as it is.
bool takeWord(std::string_view& text, std::string_view word);
bool takeAnyOf(std::string_view& text, std::string_view characters);
// At most 18 digits.
bool takeNumber(std::string_view& text, int64_t& value);

}  // namespace cli
