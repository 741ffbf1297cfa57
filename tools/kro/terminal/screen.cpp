#include "terminal/screen.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string_view>

#include "support/failure.hpp"
#include "support/scan.hpp"

namespace cli {

namespace {

using namespace std::literals;

// A picture of one pixel that is only asked about, the size of a cell, and last what every terminal answers: which
// of its features there are.
constexpr std::string_view question = "\033_Gi=31,s=1,v=1,a=q,t=d,f=24;AAAA\033\\\033[16t\033[c"sv;
constexpr auto patience = 500ms;

// The terminal itself, without echo and lines while it is asked.
class Conversation {
public:
    Conversation() : terminal_(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY)) {
        // In the background the question would stop us, and its answer go to somebody else.
        quiet_ = terminal_ >= 0 && tcgetpgrp(terminal_) == getpgrp() && tcgetattr(terminal_, &before_) == 0;
        if (quiet_) {
            termios raw = before_;
            raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
            raw.c_cc[VMIN] = 0;
            raw.c_cc[VTIME] = 0;
            tcsetattr(terminal_, TCSAFLUSH, &raw);
        }
    }
    ~Conversation() {
        if (quiet_) {
            // What comes too late is not for whoever reads the terminal next.
            tcsetattr(terminal_, TCSAFLUSH, &before_);
        }
        if (terminal_ >= 0) {
            close(terminal_);
        }
    }
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    std::string ask() const {
        if (!quiet_ || write(terminal_, question.data(), question.size()) != static_cast<ssize_t>(question.size())) {
            return "";
        }
        std::string answer;
        const auto end = std::chrono::steady_clock::now() + patience;
        while (!isWhole(answer)) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
            pollfd input{terminal_, POLLIN, 0};
            char part[256];
            const ssize_t count = left > 0ms && poll(&input, 1, static_cast<int>(left.count())) == 1
                                      ? read(terminal_, part, sizeof part)
                                      : 0;
            if (count <= 0) {
                break;
            }
            answer.append(part, static_cast<std::size_t>(count));
        }
        return answer;
    }

private:
    static bool isWhole(const std::string& answer) {
        const std::size_t at = answer.find("\033[?");
        return at != std::string::npos && answer.find('c', at) != std::string::npos;
    }

    int terminal_;
    bool quiet_ = false;
    termios before_{};
};

// ESC [ ? 62 ; 4 ; 6 c: the features have numbers, and 4 is sixel.
bool hasSixel(std::string_view answer) {
    const std::size_t at = answer.find("\033[?");
    if (at == std::string_view::npos) {
        return false;
    }
    std::string_view rest = answer.substr(at + 3);
    int64_t feature = 0;
    while (takeNumber(rest, feature)) {
        if (feature == 4) {
            return true;
        }
        takeAnyOf(rest, ";");
    }
    return false;
}

// ESC [ 6 ; height ; width t
void readCell(std::string_view answer, Screen& screen) {
    constexpr int64_t most = 200;
    const std::size_t at = answer.find("\033[6;");
    if (at == std::string_view::npos) {
        return;
    }
    std::string_view rest = answer.substr(at + 4);
    int64_t height = 0;
    int64_t width = 0;
    if (takeNumber(rest, height) && takeAnyOf(rest, ";") && takeNumber(rest, width) && height > 0 && width > 0 &&
        height <= most && width <= most) {
        screen.cellHeight = static_cast<int>(height);
        screen.cellWidth = static_cast<int>(width);
    }
}

int variable(const char* name, int otherwise) {
    const char* text = std::getenv(name);
    std::string_view rest = text == nullptr ? "" : text;
    int64_t number = 0;
    return takeNumber(rest, number) && rest.empty() && number > 0 && number < 10000 ? static_cast<int>(number)
                                                                                    : otherwise;
}

void readSize(Screen& screen) {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
        screen.columns = variable("COLUMNS", screen.columns);
        screen.rows = variable("LINES", screen.rows);
        return;
    }
    screen.columns = size.ws_col;
    screen.rows = size.ws_row;
    if (size.ws_xpixel >= size.ws_col && size.ws_ypixel >= size.ws_row) {
        screen.cellWidth = size.ws_xpixel / size.ws_col;
        screen.cellHeight = size.ws_ypixel / size.ws_row;
    }
}

bool says(const char* name, std::string_view word) {
    const char* text = std::getenv(name);
    return text != nullptr && std::string_view(text).find(word) != std::string_view::npos;
}

}  // namespace

Graphics parseGraphics(const std::string& name) {
    if (name == "kitty") {
        return Graphics::kitty;
    }
    if (name == "sixel") {
        return Graphics::sixel;
    }
    if (name == "blocks") {
        return Graphics::blocks;
    }
    throw UsageFailure("bad --in '" + name + "', expected kitty, sixel or blocks");
}

Screen describeScreen(std::optional<Graphics> chosen) {
    Screen screen;
    readSize(screen);
    screen.trueColour = says("COLORTERM", "truecolor") || says("COLORTERM", "24bit") || says("TERM", "direct");
    if (isatty(STDOUT_FILENO) == 1 && !says("TERM", "dumb") && chosen != Graphics::blocks) {
        const std::string answer = Conversation().ask();
        readCell(answer, screen);
        screen.graphics = answer.find("\033_Gi=31;OK") != std::string::npos ? Graphics::kitty
                          : hasSixel(answer)                                ? Graphics::sixel
                                                                            : Graphics::blocks;
    }
    screen.graphics = chosen.value_or(screen.graphics);
    return screen;
}

}  // namespace cli
