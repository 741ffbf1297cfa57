#pragma once

#include <stdexcept>
#include <string>

namespace cli {

// What went wrong, as the one line that is shown for it.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The command was called wrongly: nothing was attempted.
struct UsageFailure : Failure {
    using Failure::Failure;
};

// Neither options nor a file's name say how its frames are to be read.
struct UnknownLayout : UsageFailure {
    using UsageFailure::UsageFailure;
};

// Standard output or the disk takes no more; whatever would follow would fail for the same reason.
struct OutputGone : Failure {
    using Failure::Failure;
};

// Whoever read our standard output has had enough, which is nothing to complain of.
struct ReaderGone {};

enum ExitCode { exitOk = 0, exitFailed = 1, exitUsage = 2 };

std::string systemMessage(int errorNumber);

}  // namespace cli
