#include "measuring/race.hpp"

#include <sched.h>

#include <algorithm>
#include <ctime>
#include <stdexcept>

namespace bench {
namespace {

constexpr double shortestTiming = 200e3;  // nanoseconds; reading the clock costs a thousandth of it

// The time that this thread had the core: another process that is given the core meanwhile is not counted.
double now() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

double timeOf(const Work& work, int repeats) {
    const double begin = now();
    for (int i = 0; i < repeats; ++i) {
        work();
    }
    return now() - begin;
}

void chooseRepeats(Contestant& contestant) {
    const Work& work = contestant.works.front();
    work();
    double elapsed = timeOf(work, contestant.repeats);
    while (elapsed < shortestTiming) {
        const double wanted = contestant.repeats * std::min(8.0, 1.2 * shortestTiming / std::max(elapsed, 1.0));
        contestant.repeats = std::max(contestant.repeats + 1, static_cast<int>(wanted));
        elapsed = timeOf(work, contestant.repeats);
    }
}

void takeTurn(Contestant& contestant, size_t turn) {
    const Work& work = contestant.works[turn % contestant.works.size()];
    if (contestant.repeats > 1) {
        work();  // finds the caches as its own repeats leave them, not as the one before did
    }
    contestant.nanoseconds.push_back(timeOf(work, contestant.repeats) / contestant.repeats);
}

}  // namespace

double Contestant::median() const {
    std::vector<double> sorted = nanoseconds;
    const auto middle = sorted.begin() + static_cast<ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    return *middle;
}

double Contestant::minimum() const { return *std::min_element(nanoseconds.begin(), nanoseconds.end()); }

void pinToCore(int core) {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(static_cast<size_t>(core), &cores);
    if (sched_setaffinity(0, sizeof cores, &cores) != 0) {
        throw std::runtime_error("cannot run on core " + std::to_string(core));
    }
}

void race(std::vector<Contestant>& contestants, int rounds) {
    for (Contestant& contestant : contestants) {
        chooseRepeats(contestant);
    }
    const size_t frames = contestants.empty() ? 0 : contestants.front().works.size();
    for (size_t turn = 0; turn < static_cast<size_t>(rounds) * frames; ++turn) {
        for (size_t i = 0; i < contestants.size(); ++i) {
            takeTurn(contestants[(i + turn) % contestants.size()], turn);
        }
    }
}

}  // namespace bench
