#include <CLI/CLI.hpp>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <memory>
#include <regex>

#include "kernels/cases.hpp"
#include "kernels/table.hpp"
#include "measuring/instructions.hpp"
#include "measuring/machine.hpp"
#include "measuring/race.hpp"
#include "peers/peers.hpp"
#include "report/marks.hpp"
#include "report/report.hpp"
#include "report/summary.hpp"
#include "stream/stream.hpp"

namespace bench {
namespace {

constexpr const char* footer = R"(
Sizes:
  1280x960      source and destination start at a line of the cache
  1280x960+1    one sample beyond it: rows at odd addresses
  64x64+before  both start at a page, right behind a page that cannot be read
  64x64+behind  both start at a page, and the page behind their last one cannot be read

What the figures mean:
  of plain      share of the plain stream, the fastest of loops that read and write the same bytes with plain stores
  of bypass     share of the bypassing stream, whose stores go past the caches (--bypass); no limit of anything
  x peer        rate over that of the fastest other library beside the same kernel
  bound by      memory (or the cache that holds the frame) where the share of the plain stream is above 0.8, by medians;
                operations otherwise: the kernel's own arithmetic and, of small frames, what a call costs

Examples:
  kro-bench                                          every kernel at 1280x960 and 1920x1080
  kro-bench --filter 'bilinear/.*BGR8$' --isa avx2   some of them
  kro-bench --filter 'view-(edge|fine)/RG8/BGR8$'    what fine costs, beside edge-directed
  kro-bench --sizes all --json all.json              every size, for later
  kro-bench --sizes 1280x960,1280x960+1 --together   aligned rows and rows at odd addresses in the same rounds
  kro-bench --marks                                  the marks and what is reached
  kro-bench --consumer --bypass --sizes 4096x3000    with a reader of the picture, and stores past the cache
  kro-bench --sizes 64x64,64x64+behind --seeds 5     small frames of five noises, with and without a page behind them
  kro-bench --instructions                           instructions per pixel instead of time, as CSV
)";

constexpr const char* allSizes =
    "64x64,64x64+before,64x64+behind,640x480,1280x960,1279x960,1280x960+1,1920x1080,1921x1080,1920x1080+1,2448x2048,"
    "4096x3000";
constexpr const char* usualSizes = "1280x960,1920x1080";

struct Options {
    std::string filter = ".";
    std::string isa;
    std::string sizes;
    std::string jsonFile, csvFile;
    std::vector<std::string> modules;
    int rounds = 31;
    int seeds = 1;
    int core = 0;
    bool together = false, consumer = false, bypass = false, noPeers = false;
    bool list = false, marks = false, instructions = false;
};

std::vector<Shape> shapesFrom(const std::string& text) {
    std::vector<Shape> shapes;
    std::istringstream names(text == "all" ? allSizes : text);
    for (std::string name; std::getline(names, name, ',');) {
        shapes.push_back(shapeFrom(name));
    }
    return shapes;
}

// Whatever the benchmark writes to: a file, or standard output for "-".
void writeTo(const std::string& name, const std::function<void(std::ostream&)>& write) {
    if (name == "-") {
        write(std::cout);
        return;
    }
    std::ofstream file(name);
    write(file);
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + name);
    }
}

// Before minutes are spent on what could not be kept.
void requireWritable(const std::string& name) {
    if (!name.empty() && name != "-" && !std::ofstream(name, std::ios::app)) {
        throw std::runtime_error("cannot write " + name);
    }
}

const Options& requirePossible(const Options& options) {
    if (options.bypass && !streamsBypass) {
        throw std::runtime_error("--bypass: no stores past the caches are known on this processor (x86 has them)");
    }
    return options;
}

class Benchmark {
public:
    explicit Benchmark(const Options& options)
        : options_(requirePossible(options)),
          filter_(options.filter),
          tables_(ownTables()),
          facts_{options.rounds, options.seeds, options.core, options.consumer} {
        if (comparesBuilds()) {
            tables_.clear();
        }
        for (const std::string& module : options.modules) {
            const std::vector<Table> more = tablesOfModule(module);
            tables_.insert(tables_.end(), more.begin(), more.end());
        }
        const auto unwanted = [&](const Table& t) { return !options.isa.empty() && t.instructionSet != options.isa; };
        tables_.erase(std::remove_if(tables_.begin(), tables_.end(), unwanted), tables_.end());
        if (tables_.empty()) {
            throw std::runtime_error("this processor has no instruction set " + options.isa);
        }
    }

    void list() const {
        for (const Case& each : wantedCases()) {
            std::cout << each.name << ":";
            const Frame frame({16, 16, Place::aligned}, each.samples, each.outputBytesPerPixel);
            for (const Table& table : tables_) {
                std::cout << (each.bind(table, frame) ? " " : " missing:") << table.label();
            }
            for (const Peer& peer : allPeers()) {
                std::cout << (peer.caseName == each.name ? "; " + peer.name : "");
            }
            std::cout << "\n";
        }
    }

    void countInstructions() const {
        std::cout << "case,isa,bits,frame,instructions_per_pixel\n";
        for (const Case& each : wantedCases()) {
            for (const Table& table : tables_) {
                countInstructions(each, table);
            }
        }
    }

    void run() {
        requireWritable(options_.jsonFile);
        requireWritable(options_.csvFile);
        pinToCore(options_.core);
        const std::vector<Shape> shapes =
            options_.marks ? shapesForMarks() : shapesFrom(options_.sizes.empty() ? usualSizes : options_.sizes);
        const bool quiet = options_.jsonFile == "-" || options_.csvFile == "-";
        if (!quiet) {
            printHeading(std::cout, facts_);
        }
        for (const Case& each : wantedCases()) {
            for (const std::vector<Shape>& group : groupsOf(shapes)) {
                const std::vector<Result> results = measure(each, group);
                results_.insert(results_.end(), results.begin(), results.end());
                if (!quiet) {
                    print(results);
                }
            }
        }
        if (!quiet) {
            printEnd();
        }
        write();
    }

private:
    using Frames = std::vector<std::unique_ptr<Frame>>;  // of one shape, with different noises

    // A single step costs microseconds, so frames are small: wide enough for the widest loop, narrower for single
    // cells.
    void countInstructions(const Case& each, const Table& table) const {
        if (options_.sizes.empty()) {
            countInstructions(each, table, {table.instructionSet == "scalar" ? 64 : 320, 12, Place::aligned});
            return;
        }
        for (const Shape& shape : shapesFrom(options_.sizes)) {
            countInstructions(each, table, shape);
        }
    }
    void countInstructions(const Case& each, const Table& table, const Shape& shape) const {
        const Frame frame(shape, each.samples, each.outputBytesPerPixel);
        if (const Work work = each.bind(table, frame)) {
            const double perPixel = static_cast<double>(instructionsOf(work)) / static_cast<double>(frame.pixels());
            std::cout << each.name << ',' << table.label() << ',' << bitsOfThisBuild << ',' << nameOf(shape) << ','
                      << std::fixed << std::setprecision(4) << perPixel << std::endl;
        }
    }

    bool comparesBuilds() const { return !options_.modules.empty(); }

    void print(const std::vector<Result>& results) const {
        if (comparesBuilds()) {
            printRatios(std::cout, results, tables_.front().build, tables_.back().build);
        } else if (!options_.marks) {
            printTable(std::cout, results);
        }
    }

    void printEnd() const {
        if (options_.marks) {
            printMarks(std::cout, results_);
        } else if (!comparesBuilds()) {
            printSummary(std::cout, results_);
        }
    }

    std::vector<Case> wantedCases() const {
        std::vector<Case> cases;
        for (const Case& each : allCases()) {
            if (std::regex_search(each.name, filter_) && (!options_.marks || hasMarks(each.name))) {
                cases.push_back(each);
            }
        }
        if (cases.empty()) {
            throw std::runtime_error("no case matches " + options_.filter + " (see --list)");
        }
        return cases;
    }

    // Sizes of one group take their turns in the same rounds.
    std::vector<std::vector<Shape>> groupsOf(const std::vector<Shape>& shapes) const {
        if (options_.together || options_.marks) {
            return {shapes};
        }
        std::vector<std::vector<Shape>> groups;
        for (const Shape& shape : shapes) {
            groups.push_back({shape});
        }
        return groups;
    }

    std::vector<Result> measure(const Case& each, const std::vector<Shape>& shapes) const {
        std::vector<Frames> frames;
        std::vector<Contestant> contestants;
        for (const Shape& shape : shapes) {
            frames.emplace_back();
            for (uint32_t seed = 0; seed < static_cast<uint32_t>(options_.seeds); ++seed) {
                frames.back().push_back(std::make_unique<Frame>(shape, each.samples, each.outputBytesPerPixel, seed));
            }
            enter(each, frames.back(), frames.size() - 1, contestants);
        }
        race(contestants, options_.rounds);
        return resultsOf(each.name, shapes, contestants);
    }

    void enter(const Case& each, const Frames& frames, size_t shape, std::vector<Contestant>& contestants) const {
        const auto add = [&](const std::string& name, Kind kind, const std::function<Work(const Frame&)>& bind,
                             const Table& table = {}) {
            const std::vector<Work> works = worksOn(frames, bind);
            if (!works.empty()) {
                contestants.push_back({name, kind, table.instructionSet, table.build, shape, works});
            }
        };
        const Frame& any = *frames.front();
        for (const StreamVariant& variant :
             streamVariants(any.sourceSize(), any.destinationSize(), options_.bypass)) {
            add(variant.name, variant.bypassesCache ? Kind::bypassingStream : Kind::stream,
                [&](const Frame& frame) { return streaming(variant, frame); });
        }
        for (const Table& table : tables_) {
            add(
                table.label(), Kind::kernel, [&](const Frame& frame) { return each.bind(table, frame); }, table);
        }
        if (!options_.noPeers && !comparesBuilds()) {
            for (const Peer& peer : allPeers()) {
                if (peer.caseName == each.name) {
                    add(peer.name, Kind::peer, peer.bind);
                }
            }
        }
    }

    // Empty where one of them is not served.
    std::vector<Work> worksOn(const Frames& frames, const std::function<Work(const Frame&)>& bind) const {
        std::vector<Work> works;
        for (const std::unique_ptr<Frame>& frame : frames) {
            const Work work = bind(*frame);
            if (!work) {
                return {};
            }
            works.push_back(withConsumer(work, *frame));
        }
        return works;
    }

    static Work streaming(const StreamVariant& variant, const Frame& frame) {
        return [loop = variant.loop, &frame] {
            loop(frame.source<uint8_t>(), frame.sourceSize(), frame.destination(), frame.destinationSize());
        };
    }

    Work withConsumer(const Work& work, const Frame& frame) const {
        if (!options_.consumer) {
            return work;
        }
        return [work, &frame] {
            work();
            const uint64_t sum = consume(frame.destination(), frame.destinationSize());
            __asm__ volatile("" : : "g"(sum));
        };
    }

    void write() const {
        if (!options_.jsonFile.empty()) {
            writeTo(options_.jsonFile, [this](std::ostream& out) { writeJson(out, facts_, results_); });
        }
        if (!options_.csvFile.empty()) {
            writeTo(options_.csvFile, [this](std::ostream& out) { writeCsv(out, results_); });
        }
    }

    Options options_;
    std::regex filter_;
    std::vector<Table> tables_;
    RunFacts facts_;
    std::vector<Result> results_;
};

void declare(CLI::App& app, Options& options) {
    app.footer(footer);
    app.add_option("--filter", options.filter, "Regular expression: cases to run (see --list)");
    app.add_option("--isa", options.isa, "Only this instruction set: scalar, ssse3, avx2, avx512bw, avx512vbmi");
    app.add_option("--sizes", options.sizes, "Like 1280x960,1280x960+1 (see below), or all")
        ->type_name("SIZES [" + std::string(usualSizes) + "]");
    app.add_option("--rounds", options.rounds, "Interleaved rounds")->check(CLI::Range(1, 100000));
    app.add_option("--seeds", options.seeds, "Frames of so many different noises take turns in each round")
        ->check(CLI::Range(1, 1000));
    app.add_option("--core", options.core, "The core to run on")->check(CLI::Range(0, 1023));
    app.add_option("--json", options.jsonFile, "Write results to this file, - for standard output");
    app.add_option("--csv", options.csvFile, "Write results to this file, - for standard output");
    app.add_option("--module", options.modules, "LABEL=FILE, twice: compare two builds (see scripts/compare-builds)")
        ->expected(2);
    app.add_flag("--together", options.together, "Sizes take turns in the same rounds, to be compared");
    app.add_flag("--consumer", options.consumer, "Time includes reading the finished picture once");
    app.add_flag("--bypass", options.bypass, "Also a stream whose stores bypass the caches, and shares of it");
    app.add_flag("--no-peers", options.noPeers, "Without other libraries");
    app.add_flag("--list", options.list, "Name the cases, their instruction sets and peers");
    app.add_flag("--marks", options.marks, "Only the kernels that have marks, and whether they reach them");
    app.add_flag("--instructions", options.instructions, "Count instructions per pixel instead of time");
}

// As `kro complete` does: what the last of the words behind -- may become.
int complete(const CLI::App& app, const std::vector<std::string>& words) {
    const std::string& last = words.back();
    const std::string before = words.size() < 2 ? "" : words[words.size() - 2];
    const auto offer = [&](const std::string& word, const std::string& meaning) {
        if (word.compare(0, last.size(), last) == 0) {
            std::cout << word << "\t" << meaning << "\n";
        }
    };
    if (before == "--isa") {
        for (const Table& table : ownTables()) {
            offer(table.instructionSet, "");
        }
    } else if (before == "--json" || before == "--csv") {
        std::cout << ":files\n";
    } else {
        for (const CLI::Option* option : app.get_options()) {
            offer(option->get_name(), option->get_description());
        }
    }
    return 0;
}

int runWith(const Options& options) {
    Benchmark benchmark(options);
    if (options.list) {
        benchmark.list();
    } else if (options.instructions) {
        benchmark.countInstructions();
    } else {
        benchmark.run();
    }
    return 0;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    try {
        CLI::App app{"Speed of every kro kernel, beside the stream limit of the same bytes and other libraries",
                     "kro-bench"};
        bench::Options options;
        bench::declare(app, options);
        if (argc > 3 && argv[1] == std::string("complete")) {
            return bench::complete(app, {argv + 3, argv + argc});
        }
        try {
            app.parse(argc, argv);
        } catch (const CLI::ParseError& problem) {
            return app.exit(problem) == 0 ? 0 : 2;
        }
        return bench::runWith(options);
    } catch (const std::exception& problem) {
        std::cerr << "kro-bench: " << problem.what() << "\n";
        return 1;
    }
}
