// Timing: all contestants take turns in one process, so that whatever slows the machine slows all of them alike.
#pragma once

#include <string>
#include <vector>

#include "kernels/cases.hpp"

namespace bench {

enum class Kind { stream, bypassingStream, kernel, peer };

struct Contestant {
    std::string name;
    Kind kind;
    std::string instructionSet;  // of kernels
    std::string build;           // of kernels of a loaded module
    size_t shape;                // index of the frame shape it runs on
    std::vector<Work> works;     // on frames of different noises, which take turns
    int repeats = 1;
    std::vector<double> nanoseconds = {};  // one frame, one entry per turn

    double median() const;
    double minimum() const;
};

void pinToCore(int core);
// In every round each contestant takes as many turns as it has frames.
void race(std::vector<Contestant>& contestants, int rounds);

}  // namespace bench
