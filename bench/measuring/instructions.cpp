#include "measuring/instructions.hpp"

#include <signal.h>
#include <ucontext.h>
#include <x86intrin.h>

namespace bench {
namespace {

#ifdef __x86_64__
constexpr int instructionPointer = REG_RIP;
using Flags = unsigned long long;
#else
constexpr int instructionPointer = REG_EIP;
using Flags = unsigned int;
#endif

constexpr Flags singleStep = 0x100;

volatile uint64_t steps;
volatile greg_t lastAddress;

// A repeated string instruction traps once per repetition at one address; it counts once, as everywhere else.
void onStep(int, siginfo_t*, void* context) {
    const greg_t address = static_cast<ucontext_t*>(context)->uc_mcontext.gregs[instructionPointer];
    if (address != lastAddress) {
        steps = steps + 1;
        lastAddress = address;
    }
}

uint64_t stepsDuring(const Work& work) {
    steps = 0;
    __writeeflags(__readeflags() | singleStep);
    work();
    __writeeflags(__readeflags() & ~singleStep);
    return steps;
}

}  // namespace

uint64_t instructionsOf(const Work& work) {
    struct sigaction action {};
    struct sigaction previous {};
    action.sa_sigaction = onStep;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGTRAP, &action, &previous);
    work();  // binds lazily bound names first
    const uint64_t overhead = stepsDuring([] {});
    const uint64_t counted = stepsDuring(work);
    sigaction(SIGTRAP, &previous, nullptr);
    return counted - overhead;
}

}  // namespace bench
