#pragma once

#include <CLI/CLI.hpp>

#include "commands/convert.hpp"
#include "commands/guess.hpp"
#include "commands/info.hpp"
#include "commands/mosaic.hpp"
#include "commands/show.hpp"

namespace cli {

// The options of every command as they were given.
struct Requests {
    ConvertRequest convert;
    MosaicRequest mosaic;
    InfoRequest info;
    GuessRequest guess;
    ShowRequest show;
};

// Tells the parser all commands with their options and help texts; it will fill the requests.
void describeCommands(CLI::App& app, Requests& requests);

}  // namespace cli
