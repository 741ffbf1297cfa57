#pragma once

#include <string>
#include <vector>

#include "guess/guess.hpp"

namespace cli::guess {

const char* wordFor(Certainty certainty);

// "1280x960 BayerRG8 or BayerBG8".
std::string meaning(const Answer& answer);

// What speaks for the answer.
std::vector<std::string> reasonsFor(const Answer& answer, uint64_t length);

// The command that converts a file of this length so.
std::string convertLine(const std::string& input, const Answer& answer, uint64_t length);

}  // namespace cli::guess
