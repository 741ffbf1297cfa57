// A ready executor for kro::convert: threads that sleep between frames. Programs that have a pool of their own,
// OpenMP or parallel algorithms hand that to kro::convert instead and do not need this header. Needs exceptions, and
// on systems that keep threads in a library of their own that library (-pthread; in CMake Threads::Threads).
//
//     kro::Threads threads(4);
//     for (each frame) kro::convert(frame, picture, {}, threads);
#ifndef KRO_THREADS_HPP
#define KRO_THREADS_HPP

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "kro/kro.hpp"

namespace kro {
inline namespace v0 {

// Runs function(0) to function(count - 1) on several threads, of which the caller's is one.
// Allocates in the constructor only (a list of threads, and what the system needs for each).
// Thread rules: calls from several threads take turns; a function that calls its own executor waits for ever.
class Threads {
public:
    // `count` threads with the caller's, which is always one of them: count - 1 are started, and end in the
    // destructor. Throws std::system_error where one cannot be started; none is left running then.
    explicit Threads(unsigned count = std::thread::hardware_concurrency()) : Threads(Started{}) {
        while (helpers_.size() + 1 < count) {
            helpers_.emplace_back(&Threads::help, this);
        }
    }

    ~Threads() {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            ending_ = true;
        }
        wake_.notify_all();
        for (std::thread& helper : helpers_) {
            helper.join();
        }
    }

    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

    // Threads that work, the caller's among them.
    unsigned count() const noexcept { return static_cast<unsigned>(helpers_.size()) + 1; }

    // Calls function(0) to function(count - 1), each once, and comes back when all are done. An exception of a call
    // is rethrown here, the first one where there are several; calls that have not begun by then are left out.
    template <class Function>
    void operator()(int count, Function&& function) {
        const std::lock_guard<std::mutex> turn(turn_);
        Job job(count, std::ref(function));
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            job_ = &job;
            ++round_;
        }
        wake_.notify_all();
        job.work();
        std::unique_lock<std::mutex> lock(mutex_);
        job_ = nullptr;
        left_.wait(lock, [&job] { return job.helpers == 0; });
        if (job.failure) {
            std::rethrow_exception(job.failure);
        }
    }

private:
    struct Job {
        // A reference fits into a std::function without memory of its own.
        template <class Function>
        Job(int callCount, std::reference_wrapper<Function> function)
            : count(callCount > 0 ? static_cast<unsigned>(callCount) : 0), call(function) {}

        void work() noexcept {
            for (unsigned i = next++; i < count; i = next++) {
                try {
                    call(static_cast<int>(i));
                } catch (...) {
                    next = count;
                    if (!failed.exchange(true)) {
                        failure = std::current_exception();
                    }
                }
            }
        }

        const unsigned count;
        const std::function<void(int)> call;
        std::atomic<unsigned> next{0};
        std::atomic<bool> failed{false};
        std::exception_ptr failure;
        int helpers = 0;  // at work on it; under the mutex
    };

    // Where the public constructor throws after this one, the destructor runs and ends what was started.
    struct Started {};
    explicit Threads(Started) {}

    void help() {
        std::unique_lock<std::mutex> lock(mutex_);
        for (unsigned seen = 0;;) {
            wake_.wait(lock, [&] { return ending_ || (job_ != nullptr && round_ != seen); });
            if (ending_) {
                return;
            }
            seen = round_;
            Job& job = *job_;
            ++job.helpers;
            lock.unlock();
            job.work();
            lock.lock();
            if (--job.helpers == 0) {
                left_.notify_all();
            }
        }
    }

    std::vector<std::thread> helpers_;
    std::mutex turn_;   // held by the caller whose job is being done
    std::mutex mutex_;  // guards what follows
    std::condition_variable wake_;
    std::condition_variable left_;
    Job* job_ = nullptr;
    unsigned round_ = 0;
    bool ending_ = false;
};

}  // namespace v0
}  // namespace kro

#endif
