#include "terminal/viewer.hpp"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "output/output_file.hpp"
#include "support/failure.hpp"

namespace cli {

namespace {

constexpr const char* program = "xdg-open";

// Where the system is told to keep temporary files, in the order in which it asks.
std::string chosenFolder() {
    for (const char* name : {"TMPDIR", "TMP", "TEMP", "TEMPDIR"}) {
        if (const char* folder = std::getenv(name)) {
            return name + ("=" + std::string(folder));
        }
    }
    return "/tmp";
}

// The viewer may read the file at any time after we are gone, so it stays where the system clears up.
std::string reserveFile() {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (error) {
        throw Failure(chosenFolder() + ": no folder for temporary files: " + error.message());
    }
    std::string path = (folder / "kro-show-XXXXXX.png").string();
    const Descriptor descriptor(mkstemps(path.data(), 4));
    if (descriptor.get() < 0) {
        throw Failure(path + ": cannot be created: " + systemMessage(errno));
    }
    return path;
}

struct Destroy {
    void operator()(posix_spawnattr_t* attributes) const {
        posix_spawnattr_destroy(attributes);
        delete attributes;
    }
};

// A viewer wants to end when its reader goes away, which we do not.
std::unique_ptr<posix_spawnattr_t, Destroy> withUsualSignals() {
    auto attributes = std::make_unique<posix_spawnattr_t>();
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    posix_spawnattr_init(attributes.get());
    posix_spawnattr_setsigdefault(attributes.get(), &signals);
    posix_spawnattr_setflags(attributes.get(), POSIX_SPAWN_SETSIGDEF);
    return std::unique_ptr<posix_spawnattr_t, Destroy>(attributes.release());
}

}  // namespace

std::string openInViewer(const Bytes& png) {
    std::string path = reserveFile();
    writeFile(path, png, true);
    std::string name = program;
    std::vector<char*> words{name.data(), path.data(), nullptr};
    pid_t child = 0;
    const int error = posix_spawnp(&child, program, nullptr, withUsualSignals().get(), words.data(), environ);
    int status = 0;
    const bool ended = error == 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
    if (!ended || WEXITSTATUS(status) != 0) {
        throw Failure(std::string(program) + ": cannot show the picture" +
                      (error != 0 ? ": " + systemMessage(error) : "") + "; it is in " + path);
    }
    return path;
}

}  // namespace cli
