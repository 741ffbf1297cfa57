#include "support/worker_pool.hpp"

#include <algorithm>
#include <atomic>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

#include "support/failure.hpp"
#include "terminal/console.hpp"

namespace cli {

namespace {

struct Shared {
    std::atomic<std::size_t> next{0};
    std::atomic<bool> failed{false};
    std::atomic<bool> stopped{false};
};

void guarded(Shared& shared, const std::function<void()>& work) {
    try {
        work();
    } catch (const OutputGone& gone) {
        shared.stopped = true;
        shared.failed = true;
        console::error(gone.what());
    } catch (const std::bad_alloc&) {
        shared.failed = true;
        console::error("out of memory");
    } catch (const std::exception& failure) {
        shared.failed = true;
        console::error(failure.what());
    }
}

// Fewer threads than wanted do the same work.
void startThreads(std::vector<std::thread>& threads, std::size_t count, const std::function<void()>& work) {
    try {
        while (threads.size() < count) {
            threads.emplace_back(work);
        }
    } catch (const std::system_error&) {
    }
}

}  // namespace

bool runOnThreads(std::size_t count, unsigned threads, const std::function<void(std::size_t, Developer&)>& work) {
    Shared shared;
    console::Progress progress(count);
    const auto workThrough = [&] {
        Developer developer;
        for (std::size_t i = shared.next++; i < count && !shared.stopped; i = shared.next++) {
            guarded(shared, [&] { work(i, developer); });
            progress.step();
        }
    };
    std::vector<std::thread> others;
    startThreads(others, std::min<std::size_t>(threads, std::max<std::size_t>(count, 1)) - 1,
                 [&] { guarded(shared, workThrough); });
    guarded(shared, workThrough);
    for (std::thread& thread : others) {
        thread.join();
    }
    return !shared.failed;
}

}  // namespace cli
