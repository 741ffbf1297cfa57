// How much stack the library takes: measured by paint on every path and instruction set, and lived with on small
// stacks.
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstring>
#include <functional>

#include "KRODemosaicing.hpp"
#include "view_kinds.hpp"

namespace {

using reference::InputFormat;
using reference::Method;
using reference::ViewOutput;

constexpr size_t page = 4096;
constexpr uint8_t paint = 0xE7;
#if defined(__s390x__)
constexpr size_t promised = 21 * 1024;  // each function keeps 160 bytes for those that it calls
#else
constexpr size_t promised = 20 * 1024;
#endif

// A thread tells where it began to call.
struct Call {
    const std::function<void()>* work;
    const uint8_t* top;
};
void* callOnStack(void* argument) {
    Call* const call = static_cast<Call*>(argument);
    uint8_t here = 0;
    call->top = &here;
    (*call->work)();
    return nullptr;
}

// A thread on a stack of our own.
void runOn(uint8_t* stack, size_t bytes, Call& call) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_t thread;
    if (pthread_attr_setstack(&attributes, stack, bytes) != 0 ||
        pthread_create(&thread, &attributes, callOnStack, &call) != 0) {
        throw std::runtime_error("no thread");
    }
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

// What has lost its paint below was used.
size_t stackUsedBy(const std::function<void()>& work) {
    constexpr size_t bytes = 256 * 1024;
    static std::vector<uint8_t> memory(bytes + page);
    uint8_t* const begin = memory.data() + (page - reinterpret_cast<uintptr_t>(memory.data()) % page);
    std::memset(begin, paint, bytes);
    Call call{&work, nullptr};
    runOn(begin, bytes, call);
    const uint8_t* deepest = begin;
    while (*deepest == paint) {
        ++deepest;
    }
    return deepest < call.top ? static_cast<size_t>(call.top - deepest) : 0;
}

// Every path of both headers, by name: wide frames, so that strips are as wide as they get, with samples above 12
// bits, so that lanes are.
using Visit = std::function<void(const kro::Kernels&, const std::string& name, const std::function<void()>&)>;

void visitViews(const Visit& visit, Size size, const std::vector<Method>& methods) {
    ViewSource source(size_t{1} << 17);
    ViewPicture picture(size_t{1} << 19);
    for (const char* name :
         {"BayerGR8", "BayerRG12", "SBGGR14P", "BayerGB10p", "BayerRG12Packed", "BayerGB16", "Mono14p"}) {
        const InputFormat& format = inputNamed(name);
        source.hold(format, size, numbersFor(format, noOptions, Content::noise, size, 2), Spacing::continuous, false,
                    guard::Placement::againstEnd);
        for (const ViewOutput& output : reference::viewOutputs) {
            picture.lay(output, size, Spacing::exact, guard::Placement::againstEnd, guard::Fill::one, true);
            for (const kro::Kernels* table : usableTables()) {
                for (const Method method : methods) {
                    const KroViewOptions options = withAlgorithm(method);
                    visit(*table, std::string(name) + " to " + output.name + ", " + nameOf(method), [&] {
                        EXPECT_EQ(KRO_OK, kro::convertView(*table, &source.view(), &picture.view(), &options));
                    });
                }
            }
        }
    }
}

void visitEntry(const Visit& visit) {
    const Size size{6, 9001};
    const std::vector<uint8_t> samples(size.pixels() * 2 + 3, uint8_t{0xA7});
    std::vector<uint8_t> pixels(size.pixels() * 4);
    for (const uint32_t format : {KRO_BAYER_RG8, KRO_BAYER_GB12, KRO_BAYER_BG12_PACKED, KRO_MONO12}) {
        for (const uint32_t output : {KRO_BGR8, KRO_BGRA8, KRO_RGB8_PLANAR, KRO_MONO8}) {
            for (const kro::Kernels* table : usableTables()) {
                for (const KroAlgorithm algorithm : {KRO_NEAREST, KRO_BILINEAR, KRO_EDGE}) {
                    KroContext handle{};
                    kroInit(&handle);
                    uint32_t configured = output;
                    EXPECT_EQ(KRO_OK, kroDemosaicSetConfig(&handle, &configured));
                    const KroImage input{size.height, size.width, format, const_cast<uint8_t*>(samples.data())};
                    const auto call = [&] {
                        KroImage picture{0, 0, 0, pixels.data()};
                        EXPECT_EQ(KRO_OK, kro::demosaicing(*table, &handle, &input, algorithm, &picture));
                    };
                    call();  // the scratch buffer grows
                    visit(*table, "kroDemosaicing", call);
                    std::free(handle.scratch.data);
                }
            }
        }
    }
}

void visitFrames16(const Visit& visit) {
    const Size size{7, 9001};
    for (const uint16_t sample : {uint16_t{0x0ABC}, uint16_t{0xFABC}}) {
        const std::vector<uint16_t> samples(size.pixels(), sample);
        std::vector<uint16_t> pixels(size.pixels() * 3);
        for (const kro::Kernels* table : usableTables()) {
            for (const auto routine :
                 {table->demosaicingEdgeRGGBU16, table->demosaicingEdgeGRBGU16, table->demosaicingEdgeGBRGU16,
                  table->demosaicingEdgeBGGRU16, table->demosaicingBilinearRGGBU16}) {
                visit(*table, "16-bit frame",
                      [&] { routine(samples.data(), size.height, size.width, pixels.data()); });
            }
        }
    }
}

void visitAll(const Visit& visit) {
    visitViews(visit, {6, 9001}, {Method::nearest, Method::bilinear, Method::edge});
    visitViews(visit, {6, 1030}, {Method::fine});
    visitEntry(visit);
    visitFrames16(visit);
}

TEST(Stack, NoCallNeedsMoreThan20Kibibytes) {
    if (sanitizedRun) {
        GTEST_SKIP() << "sanitizers use the stack too";
    }
    size_t most = 0;
    visitAll([&](const kro::Kernels& table, const std::string& name, const std::function<void()>& call) {
        const size_t used = stackUsedBy(call);
        EXPECT_LE(used, promised) << table.name << " " << name;
        most = std::max(most, used);
    });
    RecordProperty("bytes", static_cast<int>(most));
}

TEST(Stack, ThreadsOf32KibibytesSuffice) {
    if (sanitizedRun) {
        GTEST_SKIP() << "sanitizers use the stack too";
    }
    constexpr size_t bytes = 32 * 1024;
    if (sysconf(_SC_THREAD_STACK_MIN) > static_cast<long>(bytes)) {
        GTEST_SKIP() << "this system starts no thread on so small a stack";
    }
    guard::Buffer memory(bytes);  // unreadable on both sides
    uint8_t* const stack = memory.place(bytes, guard::Placement::againstStart, guard::Fill::one);
    visitAll([&](const kro::Kernels&, const std::string&, const std::function<void()>& work) {
        Call call{&work, nullptr};
        runOn(stack, bytes, call);
    });
}

const std::function<void()>* signalWork = nullptr;
void onSignal(int) { (*signalWork)(); }

TEST(Stack, AnAlternateSignalStackOf32KibibytesSuffices) {
    if (sanitizedRun) {
        GTEST_SKIP() << "sanitizers use the stack too";
    }
    constexpr size_t bytes = 32 * 1024;
    guard::Buffer memory(bytes);
    stack_t ours{}, before{};
    ours.ss_sp = memory.place(bytes, guard::Placement::againstStart, guard::Fill::one);
    ours.ss_size = bytes;
    ASSERT_EQ(0, sigaltstack(&ours, &before));
    struct sigaction action {
    }, previous{};
    action.sa_handler = onSignal;
    action.sa_flags = SA_ONSTACK;
    ASSERT_EQ(0, sigaction(SIGUSR1, &action, &previous));
    visitAll([](const kro::Kernels&, const std::string&, const std::function<void()>& work) {
        signalWork = &work;
        raise(SIGUSR1);
    });
    sigaction(SIGUSR1, &previous, nullptr);
    sigaltstack(&before, nullptr);
}

}  // namespace
