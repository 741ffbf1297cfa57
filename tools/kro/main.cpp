#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <iostream>

#include "commands/arguments.hpp"
#include "commands/bench.hpp"
#include "commands/complete.hpp"
#include "commands/formats.hpp"
#include "commands/selftest.hpp"
#include "output/output_file.hpp"
#include "support/failure.hpp"
#include "terminal/console.hpp"

namespace {

using namespace cli;

void (*inheritedPipeHandler)(int) = SIG_DFL;

int runCommand(const CLI::App& app, const Requests& requests) {
    if (app.got_subcommand("convert")) {
        return convert(requests.convert);
    }
    if (app.got_subcommand("mosaic")) {
        return mosaic(requests.mosaic);
    }
    if (app.got_subcommand("info")) {
        return info(requests.info);
    }
    if (app.got_subcommand("guess")) {
        return guessFrames(requests.guess);
    }
    if (app.got_subcommand("show")) {
        return show(requests.show);
    }
    if (app.got_subcommand("formats")) {
        std::fputs(formatTables().c_str(), stdout);
        return exitOk;
    }
    if (app.got_subcommand("selftest")) {
        return selftest();
    }
    // Called without a command: the help says what there is, the exit code that nothing was done.
    std::fputs(app.help().c_str(), stdout);
    return exitUsage;
}

std::string commandName(const CLI::App& app) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    return chosen.empty() ? "kro" : "kro " + chosen.front()->get_name();
}

// CLI11's own answers are help texts and failures; the latter become one line like all others.
int answerParser(const CLI::App& app, const CLI::ParseError& answer) {
    if (answer.get_exit_code() == 0) {
        return app.exit(answer);
    }
    console::error(std::string(answer.what()) + " (see " + commandName(app) + " --help)");
    return exitUsage;
}

// CLI11 would only say that some subcommand is required.
void requireKnownCommand(const CLI::App& app, const std::string& word) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    if (word.empty() || word[0] == '-' || std::find(names.begin(), names.end(), word) != names.end()) {
        return;
    }
    const std::string nearest = nearestName(word, names);
    throw UsageFailure("unknown command '" + word + "'" + (nearest.empty() ? "" : ", did you mean " + nearest + "?") +
                       " (see kro --help)");
}

// `kro help convert` is `kro convert --help`.
std::vector<std::string> withoutHelpCommand(std::vector<std::string> words) {
    if (words.empty() || words[0] != "help") {
        return words;
    }
    words.erase(words.begin());
    words.resize(std::min<std::size_t>(words.size(), 1));
    words.emplace_back("--help");
    return words;
}

int parseAndRun(CLI::App& app, const Requests& requests, std::vector<std::string> words) {
    // The parser takes its words from the back.
    std::reverse(words.begin(), words.end());
    try {
        app.parse(words);
    } catch (const CLI::ParseError& answer) {
        return answerParser(app, answer);
    }
    return runCommand(app, requests);
}

int run(std::vector<std::string> words) {
    words = withoutHelpCommand(std::move(words));
    const std::string first = words.empty() ? "" : words[0];
    if (first == "bench") {
        becomeBench(words);
    }
    // A reader of a named pipe that goes away is a failure to write, not a reason to die.
    inheritedPipeHandler = std::signal(SIGPIPE, SIG_IGN);
    CLI::App app{"kro: raw camera frames to pictures", "kro"};
    Requests requests;
    describeCommands(app, requests);
    int result = exitOk;
    if (first == "complete") {
        result = complete(app, {words.begin() + 1, words.end()});
    } else {
        requireKnownCommand(app, first);
        result = parseAndRun(app, requests, words);
    }
    flushStandardOutput();
    return result;
}

// As `cat` ends when nobody reads it any more; a caller that had us ignore the signal gets the message instead.
void endWithoutReader() {
    if (inheritedPipeHandler == SIG_IGN) {
        console::error("standard output: cannot be written: " + systemMessage(EPIPE));
        return;
    }
    std::signal(SIGPIPE, SIG_DFL);
    std::raise(SIGPIPE);
}

}  // namespace

int main(int count, char** arguments) {
    try {
        return run({arguments + 1, arguments + count});
    } catch (const cli::ReaderGone&) {
        endWithoutReader();
    } catch (const cli::UsageFailure& failure) {
        cli::console::error(failure.what());
        return cli::exitUsage;
    } catch (const std::bad_alloc&) {
        cli::console::error("out of memory");
    } catch (const std::exception& failure) {
        cli::console::error(failure.what());
    }
    return cli::exitFailed;
}
