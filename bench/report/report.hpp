// Results and their three faces: a table to read, JSON, CSV.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "kernels/frame.hpp"
#include "measuring/race.hpp"

namespace bench {

struct Result {
    std::string caseName;
    Shape shape;
    std::string name;
    Kind kind;
    std::string instructionSet;
    std::string build;
    double medianNanoseconds;
    double minimumNanoseconds;
    double shareOfMedians;  // of the stream limit of the same shape and run
    double shareOfMinima;

    double megapixelsPerSecond() const;
    double bestMegapixelsPerSecond() const;
};

struct RunFacts {
    int rounds;
    int core;
    bool consumer;
};

// The race of one case: the stream variants become one limit, everything else a share of it.
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
