#pragma once

#include <cstddef>
#include <string>

namespace cli {

// Everything said on standard error goes through here, so that lines of several threads and the progress bar
// do not run into each other.
namespace console {

void setQuiet(bool quiet);
void note(const std::string& text);
// The same key warns once: what holds for a whole file is not said for each of its frames.
void warnOnce(const std::string& key, const std::string& text);
void error(const std::string& text);

// A bar that appears only where standard error is a terminal.
class Progress {
public:
    explicit Progress(std::size_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    void step();
};

}  // namespace console

}  // namespace cli
