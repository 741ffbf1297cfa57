#include "report/report.hpp"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "measuring/machine.hpp"
#include "report/marks.hpp"

namespace bench {
namespace {

// Medians and minima of one and the same kernel stay within these.
constexpr struct { double slower, faster; } noise{0.97, 1.03};

template <class... Values>
std::string format(const char* pattern, Values... values) {
    char text[512];
    std::snprintf(text, sizeof text, pattern, values...);
    return text;
}

const char* nameOf(Kind kind) {
    switch (kind) {
        case Kind::stream:
            return "stream";
        case Kind::bypassingStream:
            return "bypassing-stream";
        case Kind::kernel:
            return "kernel";
        default:
            return "peer";
    }
}

const Contestant* fastest(const std::vector<Contestant>& contestants, size_t shape, Kind kind) {
    const Contestant* found = nullptr;
    for (const Contestant& contestant : contestants) {
        if (contestant.kind == kind && contestant.shape == shape &&
            (found == nullptr || contestant.median() < found->median())) {
            found = &contestant;
        }
    }
    return found;
}

Share shareOf(const Contestant& stream, const Contestant& contestant) {
    return {stream.median() / contestant.median(), stream.minimum() / contestant.minimum()};
}

std::string cellsOf(const Share& share) {
    return format(" %7.3f %9s", share.ofMedians, format("(%.3f)", share.ofMinima).c_str());
}

std::string shown(const Result& result) {
    switch (result.kind) {
        case Kind::stream:
            return "plain stream (" + result.name + ")";
        case Kind::bypassingStream:
            return "bypassing stream (" + result.name + ")";
        case Kind::kernel:
            return "kro " + result.name;
        default:
            return result.name;
    }
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
        }
        result += c;
    }
    return result + "\"";
}

std::string numbers(const Result& result, const char* pattern) {
    return format(pattern, result.medianNanoseconds, result.minimumNanoseconds, result.megapixelsPerSecond(),
                  result.bestMegapixelsPerSecond(), result.plain.ofMedians, result.plain.ofMinima);
}

std::string bypassing(const Result& result, const char* pattern) {
    return result.bypassing ? format(pattern, result.bypassing->ofMedians, result.bypassing->ofMinima) : "";
}

std::string jsonOf(const Result& result) {
    const double mark = markOf(result.caseName, nameOf(result.shape), result.instructionSet);
    return "    {\"case\": " + quoted(result.caseName) + ", \"size\": " + quoted(nameOf(result.shape)) +
           ", \"kind\": " + quoted(nameOf(result.kind)) + ", \"name\": " + quoted(result.name) +
           ", \"isa\": " + quoted(result.instructionSet) +
           numbers(result,
                   ", \"median_ns\": %.1f, \"min_ns\": %.1f, \"mpixel_s\": %.1f, \"best_mpixel_s\": %.1f, "
                   "\"plain_share\": %.4f, \"plain_share_of_minima\": %.4f") +
           bypassing(result, ", \"bypassing_share\": %.4f, \"bypassing_share_of_minima\": %.4f") +
           (mark > 0 ? format(", \"mark\": %.2f}", mark) : "}");
}

}  // namespace

double Result::megapixelsPerSecond() const { return static_cast<double>(pixelsOf(shape)) * 1e3 / medianNanoseconds; }

double Result::bestMegapixelsPerSecond() const {
    return static_cast<double>(pixelsOf(shape)) * 1e3 / minimumNanoseconds;
}

std::vector<Result> resultsOf(const std::string& caseName, const std::vector<Shape>& shapes,
                              const std::vector<Contestant>& contestants) {
    std::vector<Result> results;
    for (size_t shape = 0; shape < shapes.size(); ++shape) {
        const Contestant* const limit = fastest(contestants, shape, Kind::stream);
        const Contestant* const past = fastest(contestants, shape, Kind::bypassingStream);
        if (limit == nullptr) {
            throw std::logic_error("no stream limit was measured");
        }
        for (const Contestant& contestant : contestants) {
            if (contestant.shape != shape || (contestant.kind == Kind::stream && &contestant != limit)) {
                continue;
            }
            results.push_back({caseName,
                               shapes[shape],
                               contestant.name,
                               contestant.kind,
                               contestant.instructionSet,
                               contestant.build,
                               contestant.median(),
                               contestant.minimum(),
                               shareOf(*limit, contestant),
                               {}});
            if (past != nullptr) {
                results.back().bypassing = shareOf(*past, contestant);
            }
        }
    }
    return results;
}

void printHeading(std::ostream& out, const RunFacts& facts) {
    out << "kro-bench, " << bitsOfThisBuild << " bits, " << compilerName() << "\n"
        << processorName() << ", core " << facts.core << "; " << cacheSizes() << "\n"
        << facts.rounds << " interleaved rounds"
        << (facts.seeds > 1 ? " of " + std::to_string(facts.seeds) + " frames" : "")
        << "; shares of the streams of the same run, by medians (by minima)"
        << (facts.consumer ? "; each time includes a consumer that reads the picture" : "") << "\n";
}

void printTable(std::ostream& out, const std::vector<Result>& resultsOfOneCase) {
    std::string shape;
    for (const Result& result : resultsOfOneCase) {
        if (nameOf(result.shape) != shape) {
            shape = nameOf(result.shape);
            const std::string title = result.caseName + "  " + shape;
            out << "\n" << format("%-48s %10s %10s %17s", title.c_str(), "Mpixel/s", "best", "of plain stream");
            out << (result.bypassing ? format(" %17s\n", "of bypassing") : "\n");
        }
        out << format("  %-46s %10.0f %10.0f", shown(result).c_str(), result.megapixelsPerSecond(),
                      result.bestMegapixelsPerSecond())
            << cellsOf(result.plain) << (result.bypassing ? cellsOf(*result.bypassing) : "") << "\n";
    }
    out.flush();
}

void printRatios(std::ostream& out, const std::vector<Result>& results, const std::string& before,
                 const std::string& after) {
    for (const Result& result : results) {
        const Result* old = find(results, result.caseName, nameOf(result.shape), result.instructionSet, before);
        if (result.kind != Kind::kernel || result.build != after || old == nullptr) {
            continue;
        }
        const double ofMedians = old->medianNanoseconds / result.medianNanoseconds;
        const double ofMinima = old->minimumNanoseconds / result.minimumNanoseconds;
        const char* verdict = std::max(ofMedians, ofMinima) < noise.slower   ? "  slower"
                              : std::min(ofMedians, ofMinima) > noise.faster ? "  faster"
                                                                             : "";
        out << format("%-31s %-11s %-11s %9.0f %9.0f %7.3f  (%.3f)%s\n", result.caseName.c_str(),
                      nameOf(result.shape).c_str(), result.instructionSet.c_str(), old->megapixelsPerSecond(),
                      result.megapixelsPerSecond(), ofMedians, ofMinima, verdict);
    }
    out.flush();
}

void writeJson(std::ostream& out, const RunFacts& facts, const std::vector<Result>& results) {
    out << "{\n  \"processor\": " << quoted(processorName()) << ",\n  \"caches\": " << quoted(cacheSizes())
        << ",\n  \"compiler\": " << quoted(compilerName()) << ",\n  \"bits\": " << bitsOfThisBuild
        << ",\n  \"rounds\": " << facts.rounds << ",\n  \"seeds\": " << facts.seeds
        << ",\n  \"consumer\": " << (facts.consumer ? "true" : "false") << ",\n  \"results\": [\n";
    for (size_t i = 0; i < results.size(); ++i) {
        out << jsonOf(results[i]) << (i + 1 < results.size() ? ",\n" : "\n");
    }
    out << "  ]\n}\n";
}

void writeCsv(std::ostream& out, const std::vector<Result>& results) {
    out << "case,size,kind,name,isa,bits,median_ns,min_ns,mpixel_s,best_mpixel_s,"
           "plain_share,plain_share_of_minima,bypassing_share,bypassing_share_of_minima\n";
    for (const Result& result : results) {
        out << result.caseName << ',' << nameOf(result.shape) << ',' << nameOf(result.kind) << ','
            << quoted(result.name) << ',' << result.instructionSet << ',' << bitsOfThisBuild
            << numbers(result, ",%.1f,%.1f,%.1f,%.1f,%.4f,%.4f")
            << (result.bypassing ? bypassing(result, ",%.4f,%.4f\n") : ",,\n");
    }
}

const Result* find(const std::vector<Result>& results, const std::string& caseName, const std::string& shapeName,
                   const std::string& instructionSet, const std::string& build) {
    const auto found = std::find_if(results.begin(), results.end(), [&](const Result& result) {
        return result.kind == Kind::kernel && result.caseName == caseName && nameOf(result.shape) == shapeName &&
               result.instructionSet == instructionSet && result.build == build;
    });
    return found == results.end() ? nullptr : &*found;
}

}  // namespace bench
