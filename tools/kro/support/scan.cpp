#include "support/scan.hpp"

#include <algorithm>
#include <charconv>

namespace cli {

bool takeWord(std::string_view& text, std::string_view word) {
    if (text.substr(0, word.size()) != word) {
        return false;
    }
    text.remove_prefix(word.size());
    return true;
}

bool takeAnyOf(std::string_view& text, std::string_view characters) {
    if (text.empty() || characters.find(text.front()) == std::string_view::npos) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

bool takeNumber(std::string_view& text, int64_t& value) {
    const std::size_t length = std::min(text.find_first_not_of("0123456789"), text.size());
    if (length == 0 || length > 18) {
        return false;
    }
    std::from_chars(text.data(), text.data() + length, value);
    text.remove_prefix(length);
    return true;
}

}  // namespace cli
