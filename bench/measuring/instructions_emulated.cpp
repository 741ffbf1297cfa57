#include <fcntl.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "measuring/emulator_call.h"
#include "measuring/instructions.hpp"

namespace bench {
namespace {

// The emulator's plugin writes its counts here.
class Counter {
public:
    Counter() {
        if (pipe2(ends_, O_NONBLOCK) != 0) {
            throw std::runtime_error("no pipe");
        }
    }
    Counter(const Counter&) = delete;
    Counter& operator=(const Counter&) = delete;
    ~Counter() {
        close(ends_[0]);
        close(ends_[1]);
    }
    uint64_t now() const {
        syscall(countCall, countMagic, ends_[1]);
        char digits[32];
        const ssize_t size = read(ends_[0], digits, sizeof digits);
        if (size <= 0) {
            throw std::runtime_error(
                "instructions are counted by a plugin of qemu-user here, which does not run: see "
                "scripts/count-instructions");
        }
        return std::stoull(std::string(digits, static_cast<size_t>(size)));
    }

private:
    int ends_[2];
};

uint64_t countDuring(const Counter& counter, const Work& work) {
    const uint64_t before = counter.now();
    work();
    return counter.now() - before;
}

}  // namespace

uint64_t instructionsOf(const Work& work) {
    const Counter counter;
    countDuring(counter, work);  // binds lazily bound names first
    const uint64_t overhead = countDuring(counter, [] {});
    const uint64_t counted = countDuring(counter, work);
    return counted - overhead;
}

}  // namespace bench
