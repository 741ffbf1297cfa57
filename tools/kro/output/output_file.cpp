#include "output/output_file.hpp"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

#include "support/failure.hpp"

namespace fs = std::filesystem;

namespace cli {

namespace {

// Names of the files that are half written. Whoever holds the lock may create or rename one, so the interrupt
// watcher, which takes it and never gives it back, sees all of them.
std::mutex unfinishedMutex;
std::set<std::string> unfinished;

[[noreturn]] void dieOf(int signalNumber, const sigset_t& signals) {
    unfinishedMutex.lock();
    for (const std::string& path : unfinished) {
        unlink(path.c_str());
    }
    std::signal(signalNumber, SIG_DFL);
    raise(signalNumber);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    _exit(128 + signalNumber);
}

void watchInterrupts(sigset_t signals) {
    int signalNumber = 0;
    while (sigwait(&signals, &signalNumber) != 0) {
    }
    dieOf(signalNumber, signals);
}

[[noreturn]] void cannotWrite(const std::string& path, const char* what, int errorNumber) {
    const std::string text = path + ": " + what + ": " + systemMessage(errorNumber);
    if (errorNumber == ENOSPC || errorNumber == EDQUOT) {
        throw OutputGone(text);
    }
    throw Failure(text);
}

// The error that ended it, or 0.
int writeAll(int descriptor, const Bytes& data) {
    for (std::size_t done = 0; done < data.size();) {
        const ssize_t count = write(descriptor, data.data() + done, data.size() - done);
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return 0;
}

void writeWhole(int descriptor, const Bytes& data, const std::string& shownName) {
    if (const int errorNumber = writeAll(descriptor, data)) {
        cannotWrite(shownName, "cannot be written", errorNumber);
    }
}

// Renaming would replace a link by a file, so a link is followed to what it stands for, be that there or not.
fs::path finalTarget(const std::string& path) {
    constexpr int mostLinks = 40;
    fs::path target = path;
    std::error_code noLink;
    for (int i = 0; i < mostLinks; i++) {
        const fs::path next = fs::read_symlink(target, noLink);
        if (noLink) {
            return target;
        }
        target = target.parent_path() / next;
    }
    cannotWrite(path, "cannot be written", ELOOP);
}

fs::path directoryOf(const fs::path& target) {
    return target.has_parent_path() ? target.parent_path() : fs::path(".");
}

class TemporaryFile {
public:
    // Failures speak of the name that was given, which may be a link to the target.
    TemporaryFile(const fs::path& target, const std::string& shownName);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    void write(const Bytes& data);
    void becomeTarget(bool mayReplace);

private:
    void takeModeOfTarget();

    fs::path target_;
    std::string shownName_;
    std::string path_;
    Descriptor descriptor_;
};

TemporaryFile::TemporaryFile(const fs::path& target, const std::string& shownName)
    : target_(target), shownName_(shownName) {
    static std::atomic<unsigned> serial{0};
    const std::string name = ".kro-" + std::to_string(getpid()) + "-" + std::to_string(serial++) + ".part";
    path_ = (directoryOf(target) / name).string();
    const std::lock_guard<std::mutex> lock(unfinishedMutex);
    // On the list before it exists: where the list cannot grow, there is no file yet that would be left behind.
    const auto entry = unfinished.insert(path_).first;
    descriptor_ = Descriptor(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (descriptor_.get() < 0) {
        const int errorNumber = errno;
        unfinished.erase(entry);
        cannotWrite(shownName, "cannot be created", errorNumber);
    }
}

TemporaryFile::~TemporaryFile() {
    const std::lock_guard<std::mutex> lock(unfinishedMutex);
    if (unfinished.erase(path_) != 0) {
        unlink(path_.c_str());
    }
}

void TemporaryFile::write(const Bytes& data) { writeWhole(descriptor_.get(), data, shownName_); }

void TemporaryFile::takeModeOfTarget() {
    struct stat status {};
    if (stat(target_.c_str(), &status) == 0) {
        fchmod(descriptor_.get(), status.st_mode & 07777);
    }
}

void TemporaryFile::becomeTarget(bool mayReplace) {
    takeModeOfTarget();
    if (close(descriptor_.release()) != 0) {
        cannotWrite(shownName_, "cannot be written", errno);
    }
    const std::lock_guard<std::mutex> lock(unfinishedMutex);
    const unsigned flags = mayReplace ? 0u : static_cast<unsigned>(RENAME_NOREPLACE);
    int result = renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target_.c_str(), flags);
    if (result != 0 && errno == EINVAL && !mayReplace) {
        // This file system cannot rename without replacing; a second name in its stead is refused as safely.
        result = link(path_.c_str(), target_.c_str());
        if (result == 0) {
            unlink(path_.c_str());
        }
    }
    if (result != 0) {
        cannotWrite(shownName_, "cannot be written", errno);
    }
    unfinished.erase(path_);
}

bool isSpecialFile(const fs::path& target) {
    std::error_code ignored;
    const fs::file_status status = fs::status(target, ignored);
    return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

// Where a buffer was written earlier the error's number may be lost, but a pipe without reader still shows.
bool readerIsGone(int errorNumber) {
    pollfd output{STDOUT_FILENO, 0, 0};
    return errorNumber == EPIPE || (errorNumber == 0 && poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0);
}

[[noreturn]] void standardOutputFailed(int errorNumber) {
    if (readerIsGone(errorNumber)) {
        throw ReaderGone{};
    }
    throw OutputGone("standard output: cannot be written" +
                     (errorNumber == 0 ? "" : ": " + systemMessage(errorNumber)));
}

void writeSpecialFile(const fs::path& target, const Bytes& data, const std::string& shownName) {
    const Descriptor descriptor(open(target.c_str(), O_WRONLY | O_CLOEXEC));
    if (descriptor.get() < 0) {
        cannotWrite(shownName, "cannot be opened", errno);
    }
    writeWhole(descriptor.get(), data, shownName);
}

}  // namespace

void guardAgainstInterrupts() {
    // A file that may not grow is a failure to write, not a reason to die.
    std::signal(SIGXFSZ, SIG_IGN);
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction present {};
        sigaction(number, nullptr, &present);
        // What the caller has told us to ignore (nohup) stays ignored.
        if (present.sa_handler != SIG_IGN) {
            sigaddset(&signals, number);
        }
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    try {
        std::thread(watchInterrupts, signals).detach();
    } catch (const std::system_error& error) {
        throw Failure(std::string("no thread can be started: ") + error.what());
    }
}

void writeFile(const std::string& path, const Bytes& data, bool mayReplace) {
    const fs::path target = finalTarget(path);
    if (isSpecialFile(target)) {
        writeSpecialFile(target, data, path);
        return;
    }
    TemporaryFile file(target, path);
    file.write(data);
    file.becomeTarget(mayReplace);
}

void writeStandardOutput(const Bytes& data) {
    if (const int errorNumber = writeAll(STDOUT_FILENO, data)) {
        standardOutputFailed(errorNumber);
    }
}

void flushStandardOutput() {
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        standardOutputFailed(errno);
    }
}

void checkTarget(const std::string& path, const std::set<FileId>& inputs, bool mayReplace) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        const std::string directory = directoryOf(finalTarget(path)).string();
        std::error_code ignored;
        if (!fs::is_directory(directory, ignored)) {
            throw Failure(path + ": cannot be created: no directory " + directory);
        }
        return;
    }
    if (S_ISDIR(status.st_mode)) {
        throw Failure(path + ": cannot be written: is a directory");
    }
    if (S_ISREG(status.st_mode) && inputs.count({status.st_dev, status.st_ino}) != 0) {
        throw Failure(path + ": is an input file itself, which is never overwritten");
    }
    if (S_ISREG(status.st_mode) && !mayReplace) {
        throw Failure(path + ": exists already, and --no-clobber was given");
    }
    if (access(path.c_str(), W_OK) != 0) {
        cannotWrite(path, "cannot be written", errno);
    }
}

void refuseTerminal() {
    if (isatty(STDOUT_FILENO) == 1) {
        throw UsageFailure("standard output is a terminal, expected a pipe or a file");
    }
}

}  // namespace cli
