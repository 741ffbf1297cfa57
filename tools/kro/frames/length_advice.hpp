#pragma once

#include <cstdint>
#include <string>

#include "frames/inference.hpp"

namespace cli {

// Why bytes are left over behind the whole frames of a raw file, as a question with the option that answers it.
std::string lengthAdvice(const FrameLayout& layout, uint64_t payload);

// The part of it that speaks of gaps between rows; empty where none fit.
std::string strideAdvice(const FrameLayout& layout, uint64_t payload);

}  // namespace cli
