#include "measuring/race.hpp"

#include <gtest/gtest.h>

#include <ctime>

namespace {

using bench::Contestant;
using bench::Kind;

// What was worked on, repeats of the same left out.
struct Course {
    std::vector<int> visited;

    bench::Work work(int what) {
        return [this, what] {
            if (visited.empty() || visited.back() != what) {
                visited.push_back(what);
            }
            const clock_t begin = clock();
            while (clock() - begin < CLOCKS_PER_SEC / 20000) {
            }
        };
    }
};

TEST(BenchRace, FramesTakeTurnsInEachRound) {
    Course course;
    std::vector<Contestant> contestants = {
        {"one", Kind::kernel, "", "", 0, {course.work(10), course.work(11), course.work(12)}},
        {"other", Kind::peer, "", "", 0, {course.work(20), course.work(21), course.work(22)}}};
    race(contestants, 2);
    EXPECT_EQ(contestants[0].nanoseconds.size(), 6U);
    EXPECT_EQ(contestants[1].nanoseconds.size(), 6U);
    // Before the first round each finds out how often it has to run; who begins a round changes.
    EXPECT_EQ(course.visited, (std::vector<int>{10, 20, 10, 20, 21, 11, 12, 22, 20, 10, 11, 21, 22, 12}));
}

TEST(BenchRace, MediansAreOfAllTurns) {
    Contestant contestant{"", Kind::kernel, "", "", 0, {}};
    contestant.nanoseconds = {7, 1, 9, 3, 5};
    EXPECT_EQ(contestant.median(), 5);
    EXPECT_EQ(contestant.minimum(), 1);
}

}  // namespace
