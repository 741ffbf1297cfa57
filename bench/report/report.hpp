// Results and their three faces: a table to read, JSON, CSV.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "kernels/frame.hpp"
#include "measuring/race.hpp"

namespace bench {

// Time of a stream as a part of a contestant's time, of the same shape and run.
struct Share {
    double ofMedians;
    double ofMinima;
};

struct Result {
    std::string caseName;
    Shape shape;
    std::string name;
    Kind kind;
    std::string instructionSet;
    std::string build;
    double medianNanoseconds;
    double minimumNanoseconds;
    Share plain;                     // of the fastest stream with plain stores: the limit
    std::optional<Share> bypassing;  // of the fastest one past the caches, where that was measured

    double megapixelsPerSecond() const;
    double bestMegapixelsPerSecond() const;
    double timesAsFastAs(const Result& other) const { return other.medianNanoseconds / medianNanoseconds; }
};

struct RunFacts {
    int rounds;
    int seeds;
    int core;
    bool consumer;
};

// The race of one case: the streams with plain stores become one limit, everything is a share of it.
std::vector<Result> resultsOf(const std::string& caseName, const std::vector<Shape>& shapes,
                              const std::vector<Contestant>& contestants);

void printHeading(std::ostream& out, const RunFacts& facts);
void printTable(std::ostream& out, const std::vector<Result>& resultsOfOneCase);
// The kernels of two builds against each other.
void printRatios(std::ostream& out, const std::vector<Result>& results, const std::string& before,
                 const std::string& after);
void writeJson(std::ostream& out, const RunFacts& facts, const std::vector<Result>& results);
void writeCsv(std::ostream& out, const std::vector<Result>& results);

const Result* find(const std::vector<Result>& results, const std::string& caseName, const std::string& shapeName,
                   const std::string& instructionSet, const std::string& build = "");

}  // namespace bench
