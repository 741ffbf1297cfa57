#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace cli {

// Everything said on standard error goes through here, so that lines of several threads and the progress bar
// do not run into each other. Saying needs no memory: that there is none left can be said too.
namespace console {

void setQuiet(bool quiet);
void note(std::string_view text) noexcept;
// The same key warns once: what holds for a whole file is not said for each of its frames.
void warnOnce(const std::string& key, const std::string& text);
void error(std::string_view text) noexcept;

// A bar that appears only where standard error is a terminal.
class Progress {
public:
    explicit Progress(std::size_t total) noexcept;
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    void step() noexcept;
};

}  // namespace console

}  // namespace cli
