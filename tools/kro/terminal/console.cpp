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
    constexpr std::string_view full = "########################################";
    constexpr std::string_view empty = "........................................";
    const std::size_t done = std::min(full.size(), bar.done * full.size() / bar.total);
    std::fprintf(stderr, "\r[%.*s%s] %zu/%zu ", static_cast<int>(done), full.data(), empty.data() + done, bar.done,
                 bar.total);
    std::fflush(stderr);
}

void clearBar() {
    if (bar.visible) {
        std::fputs("\r\033[K", stderr);
    }
}

void say(std::string_view kind, std::string_view text) noexcept {
    const std::lock_guard<std::mutex> lock(mutex);
    clearBar();
    std::fprintf(stderr, "kro: %.*s%.*s\n", static_cast<int>(kind.size()), kind.data(), static_cast<int>(text.size()),
                 text.data());
    drawBar();
}

}  // namespace

void setQuiet(bool quiet) { quietNotes = quiet; }

void note(std::string_view text) noexcept {
    if (!quietNotes) {
        say("", text);
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
    say("warning: ", text);
}

void error(std::string_view text) noexcept { say("", text); }

Progress::Progress(std::size_t total) noexcept {
    const std::lock_guard<std::mutex> lock(mutex);
    bar = {0, total, total > 1 && !quietNotes && isatty(STDERR_FILENO) == 1};
    drawBar();
}

Progress::~Progress() {
    const std::lock_guard<std::mutex> lock(mutex);
    clearBar();
    bar.visible = false;
}

void Progress::step() noexcept {
    const std::lock_guard<std::mutex> lock(mutex);
    bar.done++;
    drawBar();
}

}  // namespace cli::console
