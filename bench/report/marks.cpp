#include "report/marks.hpp"

#include <algorithm>
#include <cstdio>

#include "measuring/machine.hpp"

namespace bench {
namespace {

struct SetMark {
    const char* instructionSet;
    double share;
};

// At 1280x960 and 1920x1080, whole frames with borders.
struct Marks {
    const char* caseName;
    SetMark wide[4];
    SetMark narrow[3];   // 32 bits; "best": the better of the AVX-512 tables
    double largeFrames;  // the best set at 4096x3000; 0: none
};

constexpr Marks allMarks[] = {
    {"mono/Mono8/BGR8", {{"avx512vbmi", .60}, {"avx512bw", .60}, {"avx2", .60}}, {}, 0},
    {"nearest/RG8/BGR8",
     {{"avx512vbmi", .90}, {"avx512bw", .85}, {"avx2", .65}, {"ssse3", .50}},
     {{"best", .80}, {"avx2", .48}, {"ssse3", .36}},
     .80},
    {"bilinear/RG8/BGR8",
     {{"avx512vbmi", .80}, {"avx512bw", .68}, {"avx2", .40}, {"ssse3", .19}},
     {{"best", .50}, {"avx2", .34}, {"ssse3", .15}},
     .80},
    {"bilinear/RG8/Mono8", {{"avx512vbmi", .36}, {"avx512bw", .36}, {"avx2", .20}, {"ssse3", .11}}, {}, 0},
    {"edge/RG8/BGR8",
     {{"avx512vbmi", .48}, {"avx512bw", .42}, {"avx2", .25}, {"ssse3", .11}},
     {{"best", .22}, {"avx2", .17}, {"ssse3", .08}},
     .50},
    {"entry-bilinear/RG12/BGR8", {{"avx512vbmi", .62}, {"avx512bw", .56}, {"avx2", .34}, {"ssse3", .17}}, {}, 0},
    {"entry-bilinear/RG12Packed/BGR8",
     {{"avx512vbmi", .62}, {"avx512bw", .56}, {"avx2", .34}, {"ssse3", .17}},
     {},
     0},
    {"bilinear/RG16/BGR16",
     {{"avx512vbmi", .75}, {"avx512bw", .70}, {"avx2", .50}, {"ssse3", .20}},
     {{"best", .45}, {"avx2", .35}, {"ssse3", .15}},
     0},
    {"edge/RG12/BGR16",
     {{"avx512vbmi", .48}, {"avx512bw", .45}, {"avx2", .30}, {"ssse3", .11}},
     {{"best", .28}, {"avx2", .20}, {"ssse3", .08}},
     0},
};

constexpr const char* plainSizes[] = {"1280x960", "1920x1080"};
constexpr const char* oddSizes[] = {"1279x960", "1280x960+1"};
constexpr const char* largeSize = "4096x3000";
constexpr const char* smallSize = "64x64";
constexpr const char* setsBestFirst[] = {"avx512vbmi", "avx512bw", "avx2", "ssse3"};

const Marks* marksOf(const std::string& caseName) {
    const auto* found = std::find_if(std::begin(allMarks), std::end(allMarks),
                                     [&](const Marks& marks) { return caseName == marks.caseName; });
    return found == std::end(allMarks) ? nullptr : found;
}

bool isPlain(const std::string& shapeName) {
    return std::find(std::begin(plainSizes), std::end(plainSizes), shapeName) != std::end(plainSizes);
}

bool isAvx512(const std::string& instructionSet) { return instructionSet.compare(0, 6, "avx512") == 0; }

double shareNamed(const SetMark* begin, const SetMark* end, const std::string& instructionSet) {
    for (const SetMark* mark = begin; mark != end; ++mark) {
        if (mark->instructionSet != nullptr && instructionSet == mark->instructionSet) {
            return mark->share;
        }
    }
    return 0;
}

const Result* best(const std::vector<Result>& results, const std::string& caseName, const std::string& shapeName) {
    const Result* fastest = nullptr;
    for (const char* set : setsBestFirst) {
        const Result* result = find(results, caseName, shapeName, set);
        if (result != nullptr && (fastest == nullptr || result->plain.ofMedians > fastest->plain.ofMedians)) {
            fastest = result;
        }
    }
    return fastest;
}

std::string cellOf(double value, double mark, bool showMark) {
    char text[64];
    const std::string against = showMark && mark > 0 ? "/" + std::to_string(mark).substr(1, 3) : "";
    std::snprintf(text, sizeof text, "%.3f%s%s", value, against.c_str(),
                  mark <= 0       ? ""
                  : value >= mark ? "  ok"
                                  : " low");
    return text;
}

void printRow(std::ostream& out, const std::string& caseName, const std::string& what,
              const std::vector<std::string>& cells) {
    char text[128];
    std::snprintf(text, sizeof text, "%-31s %-10s", caseName.c_str(), what.c_str());
    out << text;
    for (const std::string& cell : cells) {
        std::snprintf(text, sizeof text, " %15s", cell.c_str());
        out << text;
    }
    out << "\n";
}

std::string shareCell(const Result* result, double mark) {
    return result == nullptr ? "" : cellOf(result->plain.ofMedians, mark, true);
}

std::string plainCell(const std::vector<Result>& results, const Marks& marks, const char* size, const char* set) {
    const Result* result = find(results, marks.caseName, size, set);
    const bool otherIsBest = bitsOfThisBuild == 32 && isAvx512(set) && result != best(results, marks.caseName, size);
    return shareCell(result, otherIsBest ? 0 : markOf(marks.caseName, size, set));
}

// What rows at odd addresses and odd widths cost: the rate against that of the plain size, in the same rounds.
std::string oddCell(const std::vector<Result>& results, const Marks& marks, const char* size, const char* set) {
    const Result* odd = find(results, marks.caseName, size, set);
    const Result* plain = find(results, marks.caseName, plainSizes[0], set);
    if (odd == nullptr || plain == nullptr) {
        return "";
    }
    return cellOf(odd->megapixelsPerSecond() / plain->megapixelsPerSecond(), isAvx512(set) ? .80 : .90, false);
}

using Cell = std::string (*)(const std::vector<Result>&, const Marks&, const char* size, const char* set);

void printSets(std::ostream& out, const std::vector<Result>& results, const char* const (&sizes)[2], Cell cell) {
    for (const Marks& marks : allMarks) {
        for (const char* size : sizes) {
            if (best(results, marks.caseName, size) == nullptr) {
                continue;
            }
            std::vector<std::string> cells;
            for (const char* set : setsBestFirst) {
                cells.push_back(cell(results, marks, size, set));
            }
            printRow(out, marks.caseName, size, cells);
        }
    }
}

void printExtremes(std::ostream& out, const std::vector<Result>& results) {
    for (const Marks& marks : allMarks) {
        const Result* large = best(results, marks.caseName, largeSize);
        const Result* small = best(results, marks.caseName, smallSize);
        const Result* plain = best(results, marks.caseName, plainSizes[0]);
        if (large != nullptr && small != nullptr && plain != nullptr) {
            const double rate = small->megapixelsPerSecond() / plain->megapixelsPerSecond();
            printRow(out, marks.caseName, "", {shareCell(large, marks.largeFrames), cellOf(rate, 0, false)});
        }
    }
}

}  // namespace

double markOf(const std::string& caseName, const std::string& shapeName, const std::string& instructionSet) {
    const Marks* marks = marksOf(caseName);
    if (marks == nullptr || !isPlain(shapeName)) {
        return 0;
    }
    if (bitsOfThisBuild == 64) {
        return shareNamed(std::begin(marks->wide), std::end(marks->wide), instructionSet);
    }
    return shareNamed(std::begin(marks->narrow), std::end(marks->narrow),
                      isAvx512(instructionSet) ? "best" : instructionSet);
}

bool hasMarks(const std::string& caseName) { return marksOf(caseName) != nullptr; }

std::vector<Shape> shapesForMarks() {
    std::vector<Shape> shapes;
    for (const char* size : {plainSizes[0], plainSizes[1], oddSizes[0], oddSizes[1], largeSize, smallSize}) {
        shapes.push_back(shapeFrom(size));
    }
    return shapes;
}

void printMarks(std::ostream& out, const std::vector<Result>& results) {
    const std::vector<std::string> sets(std::begin(setsBestFirst), std::end(setsBestFirst));
    out << "\nShare of the plain stream/mark\n";
    printRow(out, "", "", sets);
    printSets(out, results, plainSizes, plainCell);
    out << "\nRate against the rate at 1280x960; AVX-512 keeps .80, the others .90\n";
    printRow(out, "", "", sets);
    printSets(out, results, oddSizes, oddCell);
    out << "\nThe best set: share of the plain stream/mark, and rate against the rate at 1280x960\n";
    printRow(out, "", "", {largeSize, smallSize});
    printExtremes(out, results);
}

}  // namespace bench
