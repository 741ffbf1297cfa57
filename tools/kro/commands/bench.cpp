#include "commands/bench.hpp"

#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "support/failure.hpp"

namespace fs = std::filesystem;

namespace cli {

namespace {

constexpr const char* program = "kro-bench";

}  // namespace

void becomeBench(std::vector<std::string> words) {
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    std::error_code ignored;
    const fs::path own = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    // Installed, both stand in one folder; in a build tree each stands in its own.
    for (const fs::path& place : {own / program, own.parent_path() / "bench" / program}) {
        if (access(place.c_str(), X_OK) == 0) {
            execv(place.c_str(), arguments.data());
        }
    }
    execvp(program, arguments.data());
    throw Failure(std::string(program) +
                  ": cannot be started, it is neither beside kro nor in PATH: " + systemMessage(errno));
}

}  // namespace cli
