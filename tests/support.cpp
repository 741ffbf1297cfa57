#include "support.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace {

struct Tally {
    uint64_t bytes = 0;
    uint64_t images = 0;
    std::vector<std::string> names;

    void add(const std::string& name, uint64_t count) {
        bytes += count;
        ++images;
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    }
};
Tally tally;

// Prints what was compared, and appends it to the file that KRO_TEST_TALLY names, with the tests that were skipped.
class TallyReport : public testing::EmptyTestEventListener {
    void OnTestProgramEnd(const testing::UnitTest& unitTest) override {
        if (unitTest.test_to_run_count() == 0) {
            std::fprintf(stderr, "no test matches\n");
            std::exit(1);
        }
        std::string lines = skipped(unitTest);
        if (tally.images != 0) {
            std::string names;
            for (const std::string& name : tally.names) {
                names += (names.empty() ? "" : ", ") + name;
            }
            const std::string bytes = std::to_string(tally.bytes), images = std::to_string(tally.images);
            std::printf("compared %s bytes in %s images on %s\n", bytes.c_str(), images.c_str(), names.c_str());
            lines += bytes + " " + images + " " + names + "\n";
        }
        if (const char* path = std::getenv("KRO_TEST_TALLY")) {
            if (std::FILE* file = std::fopen(path, "a")) {
                std::fputs(lines.c_str(), file);
                std::fclose(file);
            }
        }
    }

    static std::string skipped(const testing::UnitTest& unitTest) {
        std::string lines;
        for (int i = 0; i < unitTest.total_test_suite_count(); ++i) {
            const testing::TestSuite& suite = *unitTest.GetTestSuite(i);
            for (int j = 0; j < suite.total_test_count(); ++j) {
                const testing::TestInfo& test = *suite.GetTestInfo(j);
                if (test.should_run() && test.result()->Skipped()) {
                    lines += std::string("skipped ") + suite.name() + "." + test.name() + "\n";
                }
            }
        }
        return lines;
    }
};

uint16_t extremeSample(Size size, size_t i, int top, uint32_t& state) {
    // Checkerboards of 0 and top, of one and of two samples, changing every eight columns and rows; the rest coin
    // flips.
    const int y = static_cast<int>(i) / size.width;
    const int x = static_cast<int>(i) % size.width;
    const int kind = (y / 8 + x / 8) % 4;
    const bool high = kind == 0   ? (y + x) % 2 == 0
                      : kind == 1 ? (y / 2 + x / 2) % 2 == 0
                      : kind == 2 ? x % 2 == 0
                                  : randomWord(state) % 2 == 0;
    return static_cast<uint16_t>(high ? top : 0);
}

}  // namespace

std::string describe(Size size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);  // as everybody writes it
}

std::vector<const kro::Kernels*> usableTables() {
    std::vector<const kro::Kernels*> tables(static_cast<size_t>(kro::usableKernels(nullptr, 0)));
    kro::usableKernels(tables.data(), static_cast<int>(tables.size()));
    return tables;
}

const char* nameOf(Content content) {
    static const char* const names[] = {"noise", "extremes", "impulses", "ramp", "flat", "ties"};
    return names[static_cast<int>(content)];
}

const char* nameOf(reference::Method method) {
    static const char* const names[] = {"nearest", "bilinear", "edge", "fine"};
    return names[static_cast<int>(method)];
}

uint32_t randomWord(uint32_t& state) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
}

std::vector<uint16_t> samples(Content content, Size size, int top, uint32_t seed) {
    uint32_t state = seed * 2654435761u + 1;
    std::vector<uint16_t> result(reference::place(size.height, 0, size.width));
    const uint32_t range = static_cast<uint32_t>(top) + 1;
    const uint16_t level = static_cast<uint16_t>(randomWord(state) % range);
    for (size_t i = 0; i < result.size(); ++i) {
        const uint32_t word = randomWord(state) >> 8;
        const uint32_t y = static_cast<uint32_t>(i) / static_cast<uint32_t>(size.width);
        const uint32_t x = static_cast<uint32_t>(i) % static_cast<uint32_t>(size.width);
        switch (content) {
            case Content::noise:
                result[i] = static_cast<uint16_t>(word % range);
                break;
            case Content::extremes:
                result[i] = extremeSample(size, i, top, state);
                break;
            case Content::impulses:
                result[i] = static_cast<uint16_t>(word % 23 == 0 ? top : word % 29 == 1 ? 0 : level);
                break;
            case Content::ramp:
                result[i] = static_cast<uint16_t>((x * 7 + y * 3 + word % 3) * (range / 256) % range);
                break;
            case Content::flat:
                result[i] = level;
                break;
            case Content::ties:  // few levels and diagonal symmetry: most gradients are equal
                result[i] = static_cast<uint16_t>((x + y) / 2 % 3 * (range / 3) + word % 2);
                break;
        }
    }
    return result;
}

std::vector<uint8_t> sampleBytes(Content content, Size size, uint32_t seed) {
    const std::vector<uint16_t> words = samples(content, size, 255, seed);
    std::vector<uint8_t> bytes(words.size());
    std::transform(words.begin(), words.end(), bytes.begin(),
                   [](uint16_t word) { return static_cast<uint8_t>(word); });
    return bytes;
}

std::vector<Size> everySize(int firstHeight, int lastHeight, int firstWidth, int lastWidth) {
    std::vector<Size> sizes;
    const int widthStep = reducedRun ? 5 : 1;
    for (int height = firstHeight; height <= lastHeight; ++height) {
        for (int width = firstWidth + (reducedRun ? height % 5 : 0); width <= lastWidth; width += widthStep) {
            sizes.push_back({height, width});
        }
    }
    return sizes;
}

uint32_t stepOf(uint32_t spread, uint32_t reducedSpread) {
    static const bool exhaustive = std::getenv("KRO_TEST_EXHAUSTIVE") != nullptr;
    return exhaustive ? 1 : reducedRun ? reducedSpread : spread;
}

std::vector<Size> everyShape(uint32_t turn) {
    constexpr uint32_t widths = 127, heights = 17;
    const uint32_t step = stepOf(211, 1201);  // prime: all widths and heights take their turns
    std::vector<Size> shapes;
    for (uint32_t i = turn % step; i < widths * heights; i += step) {
        shapes.push_back({4 + static_cast<int>(i / widths), 4 + static_cast<int>(i % widths)});
    }
    return shapes;
}

std::vector<Size> smallSizes() { return everySize(4, reducedRun ? 7 : 9, 4, 70); }

std::vector<Size> largeSizes() {
    std::vector<Size> sizes = {{33, 129}, {65, 257}, {37, 1279}, {11, 1921}, {48, 640}};
    uint32_t state = 4711;
    const int extra = reducedRun ? 1 : 6;
    for (int i = 0; i < extra; ++i) {
        const int height = 4 + static_cast<int>(randomWord(state) % 60);
        const int width = 71 + static_cast<int>(randomWord(state) % 700);
        sizes.push_back({height, width});
    }
    return sizes;
}

Expected untouched(size_t bytes) { return {std::vector<uint8_t>(bytes), std::vector<bool>(bytes, false)}; }

testing::AssertionResult holds(const guard::Buffer& buffer, const Expected& expected) {
    const uint8_t* const data = buffer.data();
    size_t wrong = 0;
    std::ostringstream first;
    for (size_t i = 0; i < expected.value.size(); ++i) {
        const uint8_t wanted = expected.written[i] ? expected.value[i] : buffer.filled(i);
        if (data[i] != wanted && wrong++ == 0) {
            first << "byte " << i << " is " << int(data[i]) << ", expected " << int(wanted)
                  << (expected.written[i] ? "" : " (untouched)")
                  << (data[i] == buffer.filled(i) ? " (it was not written)" : "");
        }
    }
    if (wrong != 0) {
        return testing::AssertionFailure() << wrong << " bytes differ, first " << first.str();
    }
    if (!buffer.canariesHold()) {
        return testing::AssertionFailure() << "bytes around the destination were overwritten";
    }
    return testing::AssertionSuccess();
}

bool Destination::check(const kro::Kernels& table, const Expected& expected, const std::function<void(uint8_t*)>& run,
                        const std::function<std::string()>& where) {
    const struct {
        guard::Placement placement;
        guard::Fill fill;
    } rounds[] = {{guard::Placement::againstStart, guard::Fill::one},
                  {guard::Placement::againstEnd, guard::Fill::other}};
    for (const auto& round : rounds) {
        uint8_t* const to = buffer_.place(expected.value.size(), round.placement, round.fill);
        paintStack();
        run(to);
        const testing::AssertionResult result = holds(buffer_, expected);
        countComparison(table, expected.value.size());
        if (!result) {
            ADD_FAILURE() << table.name << ", " << where() << ": " << result.message();
            return false;
        }
    }
    return true;
}

void paintStack() {
    if constexpr (sanitizedRun) {
        uint8_t below[64 * 1024];
        std::memset(below, 0x7F, sizeof below);
        asm volatile("" : : "r"(below) : "memory");  // the paint stays
    }
}

void countComparison(const std::string& name, uint64_t bytes) { tally.add(name, bytes); }
void countComparison(const kro::Kernels& table, uint64_t bytes) { tally.add(table.name, bytes); }

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new TallyReport);
    return RUN_ALL_TESTS();
}
