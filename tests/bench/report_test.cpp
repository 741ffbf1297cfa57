#include "report/report.hpp"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <stdexcept>

#include "report/summary.hpp"

namespace {

using bench::Contestant;
using bench::Kind;
using bench::Result;

Contestant taking(const std::string& name, Kind kind, double nanoseconds, size_t shape = 0) {
    Contestant contestant{name, kind, kind == Kind::kernel ? name : "", "", shape, {}};
    contestant.nanoseconds = {nanoseconds};
    return contestant;
}

const bench::Shape small{100, 100, bench::Place::aligned}, large{200, 100, bench::Place::aligned};

const Result& named(const std::vector<Result>& results, const std::string& name) {
    for (const Result& result : results) {
        if (result.name == name) {
            return result;
        }
    }
    throw std::out_of_range(name);
}

TEST(BenchReport, SharesOfThePlainStreamAreNeverOfABypassingOne) {
    const std::vector<Result> results =
        bench::resultsOf("case", {small},
                         {taking("slow", Kind::stream, 50), taking("fast", Kind::stream, 40),
                          taking("past", Kind::bypassingStream, 20), taking("scalar", Kind::kernel, 80)});
    EXPECT_EQ(results.size(), 3U);  // of the plain streams the fastest alone
    EXPECT_DOUBLE_EQ(named(results, "fast").plain.ofMedians, 1);
    EXPECT_DOUBLE_EQ(named(results, "past").plain.ofMedians, 2);
    EXPECT_DOUBLE_EQ(named(results, "past").bypassing.value().ofMedians, 1);
    EXPECT_DOUBLE_EQ(named(results, "scalar").plain.ofMedians, .5);
    EXPECT_DOUBLE_EQ(named(results, "scalar").bypassing.value().ofMedians, .25);
    EXPECT_DOUBLE_EQ(named(results, "scalar").bypassing.value().ofMinima, .25);
}

TEST(BenchReport, WithoutABypassingStreamNothingIsAShareOfIt) {
    const auto results =
        bench::resultsOf("case", {small}, {taking("s", Kind::stream, 40), taking("k", Kind::kernel, 80)});
    EXPECT_FALSE(named(results, "k").bypassing.has_value());
    EXPECT_THROW(bench::resultsOf("case", {small}, {taking("past", Kind::bypassingStream, 20)}), std::logic_error);
}

TEST(BenchReport, SharesAreOfTheSameSize) {
    const auto results = bench::resultsOf("case", {small, large},
                                          {taking("s", Kind::stream, 40, 0), taking("k", Kind::kernel, 80, 0),
                                           taking("S", Kind::stream, 90, 1), taking("K", Kind::kernel, 100, 1)});
    EXPECT_DOUBLE_EQ(named(results, "k").plain.ofMedians, .5);
    EXPECT_DOUBLE_EQ(named(results, "K").plain.ofMedians, .9);
}

TEST(BenchReport, MemoryBoundsWhatIsAboveFourFifthsOfThePlainStream) {
    Result result{"case", small, "avx2", Kind::kernel, "avx2", "", 100, 100, {.8, .99}, bench::Share{.99, .99}};
    EXPECT_EQ(boundBy(result), "operations");
    result.plain.ofMedians = .81;
    EXPECT_EQ(boundBy(result), "memory");
}

TEST(BenchReport, SummariesCompareWithTheFastestPeerOfTheSameSize) {
    std::ostringstream out;
    bench::printSummary(out,
                        bench::resultsOf("case", {small, large},
                                         {taking("s", Kind::stream, 40, 0), taking("quick", Kind::peer, 120, 0),
                                          taking("slow", Kind::peer, 160, 0), taking("avx2", Kind::kernel, 48, 0),
                                          taking("S", Kind::stream, 40, 1), taking("avx2", Kind::kernel, 80, 1)}));
    std::istringstream lines(out.str());
    std::string line;
    std::vector<std::vector<std::string>> rows;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        rows.emplace_back(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>());
    }
    ASSERT_EQ(rows.size(), 4U);  // behind an empty line and the heading
    EXPECT_EQ(rows[2], (std::vector<std::string>{"case", "100x100", "avx2", "2.50", "0.833", "memory", "quick"}));
    EXPECT_EQ(rows[3], (std::vector<std::string>{"case", "200x100", "avx2", "-", "0.500", "operations"}));
}

}  // namespace
