// What a result depends on besides the code: processor, compiler, width.
#pragma once

#include <string>

namespace bench {

constexpr int bitsOfThisBuild = static_cast<int>(sizeof(void*)) * 8;

std::string processorName();
std::string compilerName();
std::string cacheSizes();  // "L1d 48 KiB, L2 2048 KiB, L3 32768 KiB"

}  // namespace bench
