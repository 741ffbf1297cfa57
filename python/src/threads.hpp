// Threads that stay between calls, as starting some costs more than small frames do.
#pragma once

#include <kro/kro.hpp>

namespace binding {

// An executor for kro::convert: bands on at most so many threads, on this one where they cannot be had.
class Executor {
public:
    explicit Executor(unsigned most) noexcept : most_(most) {}
    void operator()(int count, const kro::BandTask& task) const;

private:
    unsigned most_;
};

// Once is enough; a package that is imported again asks again.
void keepThreadsOutOfForks();

}  // namespace binding
