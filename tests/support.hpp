// What the suites share: instruction-set tables, mosaics worth trying, and comparison against the reference.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "guard.hpp"
#include "reference.hpp"
#include "table/kernels.hpp"

// Where everything takes long, sanitized or emulated, the same tests run on fewer sizes.
#ifdef KRO_TEST_REDUCED
constexpr bool reducedRun = true;
#else
constexpr bool reducedRun = false;
#endif
// Sanitized, counted or not optimised, the library tells nothing of its stack, and frames beyond 2 GiB take minutes.
#ifdef KRO_TEST_SANITIZED
constexpr bool sanitizedRun = true;
#else
constexpr bool sanitizedRun = false;
#endif

// Of what is too much for each run, every `spread`-th case is tried; with KRO_TEST_EXHAUSTIVE=1 in the environment
// all.
uint32_t stepOf(uint32_t spread, uint32_t reducedSpread);

struct Size {
    int height, width;
    size_t pixels() const { return static_cast<size_t>(height) * static_cast<size_t>(width); }
};
std::string describe(Size size);

// All of a record, padding too: to see that nobody wrote to it.
template <class Record>
std::vector<uint8_t> recordBytes(const Record& record) {
    std::vector<uint8_t> bytes(sizeof record);
    std::memcpy(bytes.data(), &record, sizeof record);
    return bytes;
}

std::vector<const kro::Kernels*> usableTables();

// A kernel of a table; one that is missing fails the test instead of crashing it.
template <class Result, class... Parameters, class... Arguments>
Result call(Result (*routine)(Parameters...), Arguments&&... arguments) {
    if (routine == nullptr) {
        throw std::runtime_error("this instruction set's table lacks the routine");
    }
    return routine(std::forward<Arguments>(arguments)...);
}

// ---- contents ----
enum class Content { noise, extremes, impulses, ramp, flat, ties };
constexpr Content allContents[] = {Content::noise, Content::extremes, Content::impulses,
                                   Content::ramp,  Content::flat,     Content::ties};
const char* nameOf(Content content);
const char* nameOf(reference::Method method);
uint32_t randomWord(uint32_t& state);
// Samples of 0 to `top`.
std::vector<uint16_t> samples(Content content, Size size, int top, uint32_t seed);
std::vector<uint8_t> sampleBytes(Content content, Size size, uint32_t seed);

std::vector<Size> everySize(int firstHeight, int lastHeight, int firstWidth, int lastWidth);
// Every width and height around all blocks of all instruction sets, or a spread of them that begins at `turn`.
std::vector<Size> everyShape(uint32_t turn);
std::vector<Size> smallSizes();  // shapes for direct calls of region routines: all block and parity cases
std::vector<Size> largeSizes();

// ---- comparison ----

// What a destination must hold; `written` tells which of its bytes must differ from what the caller had there.
using Expected = reference::Bytes;

Expected untouched(size_t bytes);

// A guarded destination, filled, handed to `run` and compared: once against the start of its memory over one fill,
// once against the end over the other. `where` is asked only when something differs.
class Destination {
public:
    explicit Destination(size_t capacity) : buffer_(capacity) {}
    // Returns false after reporting the first wrong byte.
    bool check(const kro::Kernels& table, const Expected& expected, const std::function<void(uint8_t*)>& run,
               const std::function<std::string()>& where);

private:
    guard::Buffer buffer_;
};

// Compares destination bytes already written in `buffer`.
testing::AssertionResult holds(const guard::Buffer& buffer, const Expected& expected);

// What the library finds on its stack in sanitized runs: sums of it overflow where they are read before they are
// written.
void paintStack();

// Counted for the line that the program prints at its end.
void countComparison(const kro::Kernels& table, uint64_t bytes);
void countComparison(const std::string& name, uint64_t bytes);
