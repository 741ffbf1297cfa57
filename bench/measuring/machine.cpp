#include "measuring/machine.hpp"

#include <unistd.h>

#include <fstream>

namespace bench {
namespace {

std::string fieldOfCpuInfo(const std::string& field) {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        const size_t colon = line.find(": ");
        if (colon != std::string::npos && line.compare(0, field.size(), field) == 0) {
            return line.substr(colon + 2);
        }
    }
    return "unknown";
}

std::string cache(const char* name, int key) {
    return std::string(name) + " " + std::to_string(sysconf(key) / 1024) + " KiB";
}

}  // namespace

std::string processorName() {
    return fieldOfCpuInfo("model name") + " (family " + fieldOfCpuInfo("cpu family") + ", model " +
           fieldOfCpuInfo("model\t") + ")";
}

std::string compilerName() {
#ifdef __clang__
    return "clang " __clang_version__;
#else
    return "g++ " __VERSION__;
#endif
}

std::string cacheSizes() {
    return cache("L1d", _SC_LEVEL1_DCACHE_SIZE) + ", " + cache("L2", _SC_LEVEL2_CACHE_SIZE) + ", " +
           cache("L3", _SC_LEVEL3_CACHE_SIZE);
}

}  // namespace bench
