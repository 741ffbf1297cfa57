// Short of memory and of threads: each allocation and each thread fails in turn, an error is posted, and what comes
// afterwards is right.
#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "support.hpp"

namespace {
// The number-th one from now on fails; 0: none. `seen` counts while it is watched.
struct Refusal {
    std::atomic<bool> watched{false};
    std::atomic<int> seen{0}, number{0};
    bool now() { return watched && ++seen == number; }
    void from(int which) {
        seen = 0;
        number = which;
        watched = true;
    }
    int over() {
        watched = false;
        return seen;
    }
};
Refusal memory, threads;
}  // namespace

// In place of the runtime's, for the plugin too: the program exports them.
#define EXPORTED __attribute__((visibility("default"), noinline))
EXPORTED void* operator new(std::size_t size) {
    void* const block = memory.now() ? nullptr : std::malloc(size);
    return block != nullptr ? block : throw std::bad_alloc();
}
EXPORTED void operator delete(void* block) noexcept { std::free(block); }
EXPORTED void operator delete(void* block, std::size_t) noexcept { std::free(block); }

// The system's names of the parameters are reserved ones.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" EXPORTED int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                                       void* argument) {
    using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const Create real = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    return threads.now() ? EAGAIN : real(thread, attributes, run, argument);
}

namespace {

using namespace gsttest;

constexpr int height = 790, width = 641;

// One frame by four threads that are started for it. How many could have failed?
int failing(Refusal& refusal, int number, reference::Scene& scene, const TestFrame& frame) {
    Element element;
    g_object_set(element.element(), "n-threads", 4U, nullptr);
    element.setCaps(frame.input->caps(height, width), output("BGR").caps(height, width));
    GstBuffer* const buffer = frame.buffer(false);
    refusal.from(number);
    const GstFlowReturn flow = element.push(buffer);
    const int seen = refusal.over();
    if (number != 0 && number <= seen) {
        EXPECT_EQ(GST_FLOW_ERROR, flow) << number;
        EXPECT_NE(std::string::npos, element.postedError().find("Threads cannot be started")) << number;
        EXPECT_EQ(nullptr, element.pull());
        EXPECT_EQ(GST_FLOW_OK, element.push(frame.buffer(false))) << element.postedError();
    } else {
        EXPECT_EQ(GST_FLOW_OK, flow);
    }
    EXPECT_EQ("", differenceOf(element.pull().get(), output("BGR"), height, width, scene, reference::Method::edge));
    return seen;
}

void eachFails(Refusal& refusal, int least) {
    const TestFrame frame(input("rggb"), height, width);
    reference::Scene scene = frame.scene();
    const int count = failing(refusal, 0, scene, frame);
    EXPECT_LE(least, count);
    for (int number = 1; number <= count; ++number) {
        failing(refusal, number, scene, frame);
    }
}

TEST(Failures, EachAllocation) { eachFails(memory, 4); }
TEST(Failures, EachThread) { eachFails(threads, 3); }

}  // namespace
