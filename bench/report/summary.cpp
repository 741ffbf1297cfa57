#include "report/summary.hpp"

#include <algorithm>
#include <cstdio>

namespace bench {
namespace {

const Result* fastestPeer(const std::vector<Result>& results, const Result& kernel) {
    const Result* fastest = nullptr;
    for (const Result& each : results) {
        if (each.kind == Kind::peer && each.caseName == kernel.caseName &&
            nameOf(each.shape) == nameOf(kernel.shape) &&
            (fastest == nullptr || each.medianNanoseconds < fastest->medianNanoseconds)) {
            fastest = &each;
        }
    }
    return fastest;
}

std::string fixed(int width, int decimals, double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%*.*f", width, decimals, value);
    return text;
}

std::string padded(const std::string& text, size_t width) {
    return text + std::string(width > text.size() ? width - text.size() : 0, ' ');
}

void printLine(std::ostream& out, const Result& kernel, const Result* peer, bool withBypassing) {
    out << padded(kernel.caseName, 31) << " " << padded(nameOf(kernel.shape), 12) << " " << padded(kernel.name, 11)
        << (peer == nullptr ? std::string(5, ' ') + "-" : fixed(6, 2, kernel.timesAsFastAs(*peer)))
        << fixed(8, 3, kernel.plain.ofMedians);
    if (withBypassing) {
        out << (kernel.bypassing ? fixed(11, 3, kernel.bypassing->ofMedians) : std::string(11, ' '));
    }
    out << "  " << (peer == nullptr ? boundBy(kernel) : padded(boundBy(kernel), 12) + peer->name) << "\n";
}

}  // namespace

std::string boundBy(const Result& kernel) {
    return kernel.plain.ofMedians > memoryBoundAbove ? "memory" : "operations";
}

void printSummary(std::ostream& out, const std::vector<Result>& results) {
    const bool withBypassing = std::any_of(results.begin(), results.end(),
                                           [](const Result& result) { return result.bypassing.has_value(); });
    out << "\n"
        << padded("Summary, by medians", 56) << "x peer  of plain" << (withBypassing ? " of bypass" : "")
        << "  bound by    fastest peer\n";
    for (const Result& result : results) {
        if (result.kind == Kind::kernel) {
            printLine(out, result, fastestPeer(results, result), withBypassing);
        }
    }
}

}  // namespace bench
