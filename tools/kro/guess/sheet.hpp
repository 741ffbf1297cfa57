#pragma once

#include <vector>

#include "guess/guess.hpp"
#include "pictures/picture.hpp"

namespace cli::guess {

// What the first frame looks like by each of the answers, three in a row, made to be judged.
Picture sheetOfAnswers(const Material& material, const std::vector<Answer>& answers);

}  // namespace cli::guess
