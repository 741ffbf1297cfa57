#include "support/worker_pool.hpp"

#include <algorithm>
#include <atomic>
#include <new>
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
    std::atomic<bool> readerGone{false};
};

template <typename Work>
void guarded(Shared& shared, Work&& work) noexcept {
    try {
        work();
    } catch (const ReaderGone&) {
        shared.readerGone = true;
        shared.stopped = true;
    } catch (const OutputGone& gone) {
        shared.failed = true;
        if (!shared.stopped.exchange(true)) {
            console::error(gone.what());
        }
    } catch (const std::bad_alloc&) {
        shared.failed = true;
        console::error("out of memory");
    } catch (const std::exception& failure) {
        shared.failed = true;
        console::error(failure.what());
    }
}

// Threads that do the same work. Where not all of them can be had, fewer do it.
class Threads {
public:
    template <typename Work>
    Threads(std::size_t count, const Work& work) noexcept {
        try {
            threads_.reserve(count);
            while (threads_.size() < count) {
                threads_.emplace_back(work);
            }
        } catch (const std::exception&) {
        }
    }
    ~Threads() {
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

private:
    std::vector<std::thread> threads_;
};

}  // namespace

bool runOnThreads(std::size_t count, unsigned threads, unsigned atOnce,
                  const std::function<void(std::size_t, Developer&)>& work) {
    const std::size_t workers = std::min<std::size_t>(std::min(threads, atOnce), std::max<std::size_t>(count, 1));
    const unsigned threadsEach = threads / static_cast<unsigned>(workers);
    Shared shared;
    console::Progress progress(count);
    const auto workThrough = [&]() noexcept {
        guarded(shared, [&] {
            Developer developer(threadsEach);
            for (std::size_t i = shared.next++; i < count && !shared.stopped; i = shared.next++) {
                guarded(shared, [&] { work(i, developer); });
                progress.step();
            }
        });
    };
    {
        const Threads others(workers - 1, workThrough);
        workThrough();
    }
    if (shared.readerGone) {
        throw ReaderGone{};
    }
    return !shared.failed;
}

}  // namespace cli
