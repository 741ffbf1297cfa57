#include "threads.hpp"

#include <pthread.h>

#include <algorithm>
#include <exception>
#include <kro/threads.hpp>
#include <memory>
#include <mutex>
#include <new>

namespace binding {

namespace {

// Never destroyed: at the end of the process others may still be at work.
struct Kept {
    std::mutex mutex;
    std::shared_ptr<kro::Threads> threads;
};
Kept& kept() {
    static Kept& one = *new Kept;
    return one;
}

std::shared_ptr<kro::Threads> threadsOf(unsigned count) {
    const std::lock_guard<std::mutex> lock(kept().mutex);
    std::shared_ptr<kro::Threads>& threads = kept().threads;
    if (!threads || threads->count() != count) {
        threads = std::make_shared<kro::Threads>(count);
    }
    return threads;
}

// A forked process has none of the threads, and must not wait for them to end.
void forget() {
    new (&kept().threads) std::shared_ptr<kro::Threads>;
    kept().mutex.unlock();
}

}  // namespace

void Executor::operator()(int count, const kro::BandTask& task) const {
    std::shared_ptr<kro::Threads> threads;
    try {
        threads = threadsOf(std::min(most_, static_cast<unsigned>(count)));
    } catch (const std::exception&) {
        for (int band = 0; band < count; band++) {
            task(band);
        }
        return;
    }
    (*threads)(count, task);
}

void keepThreadsOutOfForks() {
    static const int done = pthread_atfork([] { kept().mutex.lock(); }, [] { kept().mutex.unlock(); }, forget);
    static_cast<void>(done);
}

}  // namespace binding
