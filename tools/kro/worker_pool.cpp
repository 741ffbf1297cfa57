#include "worker_pool.hpp"

#include <algorithm>
#include <atomic>
#include <new>
#include <thread>
#include <vector>

#include "console.hpp"
#include "failure.hpp"

namespace cli {

namespace {

struct Shared {
    std::atomic<std::size_t> next{0};
    std::atomic<bool> failed{false};
    std::atomic<bool> stopped{false};
};

void runOne(Shared& shared, std::size_t index, Developer& developer,
            const std::function<void(std::size_t, Developer&)>& work) {
    try {
        work(index, developer);
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

}  // namespace

bool runOnThreads(std::size_t count, unsigned threads, const std::function<void(std::size_t, Developer&)>& work) {
    Shared shared;
    console::Progress progress(count);
    const auto loop = [&] {
        Developer developer;
        for (std::size_t i = shared.next++; i < count && !shared.stopped; i = shared.next++) {
            runOne(shared, i, developer, work);
            progress.step();
        }
    };
    std::vector<std::thread> others;
    for (std::size_t i = 1; i < std::min<std::size_t>(threads, count); i++) {
        others.emplace_back(loop);
    }
    loop();
    for (std::thread& thread : others) {
        thread.join();
    }
    return !shared.failed;
}

}  // namespace cli
