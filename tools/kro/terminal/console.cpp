#include "terminal/console.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <set>

namespace cli::console {

namespace {

struct Bar {
    std::size_t done = 0;
    std::size_t total = 0;
    bool visible = false;
};

std::mutex mutex;
Bar bar;
bool quietNotes = false;

void drawBar() {
    if (!bar.visible) {
        return;
    }
    constexpr std::size_t cells = 40;
    const std::size_t full = std::min(cells, bar.done * cells / bar.total);
    const std::string line = std::string(full, '#') + std::string(cells - full, '.');
    std::fprintf(stderr, "\r[%s] %zu/%zu ", line.c_str(), bar.done, bar.total);
    std::fflush(stderr);
}

void clearBar() {
    if (bar.visible) {
        std::fputs("\r\033[K", stderr);
    }
}

void say(const std::string& text) {
    const std::lock_guard<std::mutex> lock(mutex);
    clearBar();
    std::fprintf(stderr, "kro: %s\n", text.c_str());
    drawBar();
}

}  // namespace

void setQuiet(bool quiet) { quietNotes = quiet; }

void note(const std::string& text) {
    if (!quietNotes) {
        say(text);
    }
}

void warnOnce(const std::string& key, const std::string& text) {
    static std::set<std::string> warned;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (!warned.insert(key).second) {
            return;
        }
    }
    say("warning: " + text);
}

void error(const std::string& text) { say(text); }

Progress::Progress(std::size_t total) {
    const std::lock_guard<std::mutex> lock(mutex);
    bar = {0, total, total > 1 && !quietNotes && isatty(STDERR_FILENO) == 1};
    drawBar();
}

Progress::~Progress() {
    const std::lock_guard<std::mutex> lock(mutex);
    clearBar();
    bar.visible = false;
}

void Progress::step() {
    const std::lock_guard<std::mutex> lock(mutex);
    bar.done++;
    drawBar();
}

}  // namespace cli::console
