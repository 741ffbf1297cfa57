#include "commands/complete.hpp"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <functional>
#include <iterator>
#include <map>

#include "commands/bench.hpp"
#include "developing/developer.hpp"
#include "frames/format_names.hpp"
#include "pictures/picture_file.hpp"
#include "support/failure.hpp"

namespace cli {

namespace {

struct Candidate {
    std::string word;
    std::string meaning;
};
using Candidates = std::vector<Candidate>;

Candidates withoutMeaning(const std::vector<std::string>& words) {
    Candidates candidates;
    for (const std::string& word : words) {
        candidates.push_back({word, ""});
    }
    return candidates;
}

// Before the first letter each format goes by one name; then by every name that begins so.
Candidates inputNames(const std::string& start) {
    Candidates candidates;
    for (const InputFormat& format : inputFormats()) {
        candidates.push_back({format.name, ""});
        if (!start.empty()) {
            candidates.push_back({shortAlias(format), format.name});
            for (const std::string& name : otherNames(format)) {
                candidates.push_back({name, format.name});
            }
        }
    }
    return candidates;
}

Candidates fileTypeNames() {
    Candidates candidates;
    for (const FileType& type : fileTypes()) {
        candidates.push_back({type.name, type.holds});
    }
    return candidates;
}

// Options whose values can be told; an option that is not here takes numbers or names of files.
Candidates valuesOf(const CLI::Option& option, const std::string& start) {
    static const std::map<std::string, std::function<Candidates(const std::string&)>> values{
        {"format", inputNames},
        {"output-format", [](auto&) { return withoutMeaning(namesOf(outputFormats())); }},
        {"algorithm", [](auto&) { return withoutMeaning(algorithms()); }},
        {"to", [](auto&) { return fileTypeNames(); }},
        {"depth",
         [](auto&) {
             return withoutMeaning({"8", "16"});
         }},
        {"wb",
         [](auto&) {
             return withoutMeaning({"none", "gray"});
         }},
        {"gamma",
         [](auto&) {
             return withoutMeaning({"none", "srgb"});
         }},
        {"in",
         [](auto&) {
             return withoutMeaning({"kitty", "sixel", "blocks"});
         }},
    };
    const auto found = values.find(option.get_lnames().front());
    return found == values.end() ? Candidates{} : found->second(start);
}

bool takesFile(const CLI::Option& option) { return option.check_lname("output") || option.check_lname("sheet"); }

Candidates commandNames(const CLI::App& app) {
    Candidates candidates;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        candidates.push_back({command->get_name(), command->get_description()});
    }
    return candidates;
}

Candidates optionNames(const CLI::App& command) {
    Candidates candidates;
    for (const CLI::Option* option : command.get_options([](const CLI::Option* o) { return !o->get_positional(); })) {
        for (const std::string& name : option->get_lnames()) {
            candidates.push_back({"--" + name, option->get_description()});
        }
        for (const std::string& name : option->get_snames()) {
            candidates.push_back({"-" + name, option->get_description()});
        }
    }
    return candidates;
}

// The option that a word names, if it takes a value.
const CLI::Option* optionWithValue(const CLI::App& command, const std::string& word) {
    const CLI::Option* option = word.size() > 1 && word[0] == '-' ? command.get_option_no_throw(word) : nullptr;
    return option != nullptr && option->get_items_expected_max() > 0 ? option : nullptr;
}

Candidates thatBegin(const Candidates& candidates, const std::string& start, std::string (*spelling)(std::string)) {
    const std::string wanted = spelling(start);
    Candidates found;
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(found),
                 [&](const Candidate& each) { return spelling(each.word).compare(0, wanted.size(), wanted) == 0; });
    return found;
}

std::string asWritten(std::string word) { return word; }
std::string inLowerCase(std::string word) {
    std::transform(word.begin(), word.end(), word.begin(), [](unsigned char c) { return std::tolower(c); });
    return word;
}

// Names of formats are taken in any case, but some differ in nothing else.
void print(const Candidates& candidates, const std::string& start, const std::string& before = "") {
    Candidates found = thatBegin(candidates, start, asWritten);
    if (found.empty()) {
        found = thatBegin(candidates, start, inLowerCase);
    }
    for (const Candidate& each : found) {
        std::printf("%s%s\t%s\n", before.c_str(), each.word.c_str(), each.meaning.c_str());
    }
}

void printValues(const CLI::Option& option, const std::string& start, const std::string& before = "") {
    if (takesFile(option)) {
        std::puts(":files");
    } else {
        print(valuesOf(option, start), start, before);
    }
}

void completeBehind(const CLI::App& command, const std::vector<std::string>& words, const std::string& last) {
    const bool onlyFiles = std::find(words.begin(), words.end(), "--") != words.end();
    const std::size_t equals = last.find('=');
    if (const CLI::Option* option = onlyFiles ? nullptr : optionWithValue(command, words.back())) {
        printValues(*option, last);
    } else if (const CLI::Option* written = optionWithValue(command, last.substr(0, equals));
               !onlyFiles && equals != std::string::npos && written != nullptr) {
        printValues(*written, last.substr(equals + 1), last.substr(0, equals + 1));
    } else if (!onlyFiles && !last.empty() && last[0] == '-') {
        print(optionNames(command), last);
    } else if (!command.get_options([](const CLI::Option* o) { return o->get_positional(); }).empty()) {
        std::puts(":files");
    }
}

}  // namespace

int complete(const CLI::App& app, std::vector<std::string> words) {
    if (!words.empty() && words.front() == "--") {
        words.erase(words.begin());
    }
    if (words.empty()) {
        throw UsageFailure("complete: expected the words of a command after --, the last as far as it goes");
    }
    if (words.size() > 1 && words.front() == "bench") {
        words.front() = "--";
        words.insert(words.begin(), {"bench", "complete"});
        becomeBench(words);
    }
    const std::string last = words.back();
    words.pop_back();
    if (words.empty()) {
        Candidates candidates = commandNames(app);
        if (!last.empty()) {
            const Candidates options = optionNames(app);
            candidates.insert(candidates.end(), options.begin(), options.end());
        }
        print(candidates, last);
    } else if (words.front() == "help") {
        print(words.size() == 1 ? commandNames(app) : Candidates{}, last);
    } else {
        for (const CLI::App* command :
             app.get_subcommands([&](const CLI::App* c) { return c->check_name(words[0]); })) {
            completeBehind(*command, words, last);
        }
    }
    return exitOk;
}

}  // namespace cli
