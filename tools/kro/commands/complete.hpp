#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace cli {

// `kro complete -- WORD... LAST`, which the shells' completions ask: what the last word may become behind the others,
// a candidate a line with a tab and what it means, or `:files` where names of files belong.
int complete(const CLI::App& app, std::vector<std::string> words);

}  // namespace cli
