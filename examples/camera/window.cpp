#include "window.hpp"

#include <SDL2_gfxPrimitives.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kro_camera {

namespace {

// Of SDL2_gfx's own font.
constexpr int letterWidth = 8;
constexpr int lineHeight = 11;
constexpr int margin = 5;
// From here on letters are drawn twice as large.
constexpr Size comfortable{600, 360};

[[noreturn]] void fail(const std::string& what) { throw Failure(what + ": " + SDL_GetError()); }

int longest(const std::vector<std::string>& lines) {
    std::size_t most = 0;
    for (const std::string& line : lines) {
        most = std::max(most, line.size());
    }
    return static_cast<int>(most);
}

// Lines that are too long go on below, from a space on where there is one in their second half.
std::vector<std::string> wrapped(const std::vector<std::string>& lines, int columns) {
    const auto most = static_cast<std::size_t>(std::max(columns, 8));
    std::vector<std::string> shown;
    for (std::string rest : lines) {
        while (rest.size() > most) {
            const std::size_t space = rest.rfind(' ', most);
            const std::size_t end = space != std::string::npos && space >= most / 2 ? space : most;
            shown.push_back(rest.substr(0, end));
            rest.erase(0, rest[end] == ' ' ? end + 1 : end);
        }
        shown.push_back(rest);
    }
    return shown;
}

// Leaves room for the window's own frame and the desktop's bars.
Size fitting(const Size& size) {
    SDL_Rect room{};
    if (SDL_GetDisplayUsableBounds(0, &room) != 0 || room.w <= 0 || room.h <= 0) {
        return size;
    }
    const double scale = std::min({1.0, double(room.w) / size.width, double(room.h) / size.height});
    return {std::max(static_cast<std::int32_t>(size.width * scale), 160),
            std::max(static_cast<std::int32_t>(size.height * scale), 120)};
}

}  // namespace

Window::Library::Library() {
    // The program ends in good order by itself, with its recordings finished.
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_RENDER_SCALE_QUALITY, "linear");
    SDL_SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "0");
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fail("no window can be opened");
    }
    // What SDL takes by itself where there is no screen; it says nothing of it.
    if (std::getenv("SDL_VIDEODRIVER") == nullptr && std::strcmp(SDL_GetCurrentVideoDriver(), "offscreen") == 0) {
        std::fputs("kro-camera: no screen is there, so the frames are not seen; Ctrl-C ends the program\n", stderr);
    }
}

Window::Library::~Library() { SDL_Quit(); }

Window::Window(const std::string& title) {
    window_.reset(SDL_CreateWindow(title.c_str(), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, 640, 480,
                                   SDL_WINDOW_RESIZABLE | SDL_WINDOW_HIDDEN));
    if (!window_) {
        fail("no window can be opened");
    }
    // Frames are not held up until the screen is drawn anew.
    renderer_.reset(SDL_CreateRenderer(window_.get(), -1, 0));
    if (!renderer_) {
        fail("nothing can be drawn in the window");
    }
    SDL_SetRenderDrawBlendMode(renderer_.get(), SDL_BLENDMODE_BLEND);
}

void Window::show(const Size& size, bool fullScreen) {
    const Size fits = fitting(size);
    SDL_SetWindowSize(window_.get(), fits.width, fits.height);
    SDL_SetWindowPosition(window_.get(), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED);
    SDL_ShowWindow(window_.get());
    if (fullScreen) {
        toggleFullScreen();
    }
}

Window::~Window() = default;

Window::Pixels Window::lock(const Size& size) {
    if (!texture_ || !(size == size_)) {
        texture_.reset(SDL_CreateTexture(renderer_.get(), SDL_PIXELFORMAT_BGRA32, SDL_TEXTUREACCESS_STREAMING,
                                         size.width, size.height));
        if (!texture_) {
            fail("pictures of " + textOf(size) + " cannot be shown");
        }
        SDL_SetTextureBlendMode(texture_.get(), SDL_BLENDMODE_NONE);
        size_ = size;
    }
    void* data = nullptr;
    int stride = 0;
    if (SDL_LockTexture(texture_.get(), nullptr, &data, &stride) != 0) {
        fail("the picture cannot be shown");
    }
    return {data, stride};
}

void Window::unlock() { SDL_UnlockTexture(texture_.get()); }

void Window::setTitle(const std::string& title) { SDL_SetWindowTitle(window_.get(), title.c_str()); }

// The largest place in the window with the picture's proportions.
SDL_Rect Window::letterbox() const {
    int width = 0;
    int height = 0;
    SDL_GetRendererOutputSize(renderer_.get(), &width, &height);
    const double scale = std::min(double(width) / size_.width, double(height) / size_.height);
    const int shownWidth = std::max(static_cast<int>(std::lround(size_.width * scale)), 1);
    const int shownHeight = std::max(static_cast<int>(std::lround(size_.height * scale)), 1);
    return {(width - shownWidth) / 2, (height - shownHeight) / 2, shownWidth, shownHeight};
}

void Window::drawLines(const std::vector<std::string>& lines, bool inTheMiddle) {
    SDL_Renderer* const renderer = renderer_.get();
    int width = 0;
    int height = 0;
    SDL_GetRendererOutputSize(renderer, &width, &height);
    const int scale = width >= comfortable.width && height >= comfortable.height ? 2 : 1;
    SDL_RenderSetScale(renderer, static_cast<float>(scale), static_cast<float>(scale));
    width /= scale;
    height /= scale;
    const std::vector<std::string> shown = wrapped(lines, (width - 2 * margin) / letterWidth);
    const int textWidth = longest(shown) * letterWidth + 2 * margin;
    const int textHeight = static_cast<int>(shown.size()) * lineHeight + 2 * margin;
    const SDL_Rect box = inTheMiddle
                             ? SDL_Rect{(width - textWidth) / 2, (height - textHeight) / 2, textWidth, textHeight}
                             : SDL_Rect{0, height - textHeight, width, textHeight};
    SDL_SetRenderDrawColor(renderer, 0, 0, 0, 170);
    SDL_RenderFillRect(renderer, &box);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const int y = box.y + margin + static_cast<int>(i) * lineHeight + (lineHeight - letterWidth) / 2;
        stringRGBA(renderer, static_cast<Sint16>(box.x + margin), static_cast<Sint16>(y), shown[i].c_str(), 255, 255,
                   255, 255);
    }
    SDL_RenderSetScale(renderer, 1, 1);
}

void Window::draw(const std::vector<std::string>& status, const std::vector<std::string>& help) {
    SDL_SetRenderDrawColor(renderer_.get(), 0, 0, 0, 255);
    SDL_RenderClear(renderer_.get());
    if (texture_) {
        const SDL_Rect place = letterbox();
        SDL_RenderCopy(renderer_.get(), texture_.get(), nullptr, &place);
    }
    if (!status.empty()) {
        drawLines(status, false);
    }
    if (!help.empty()) {
        drawLines(help, true);
    }
    SDL_RenderPresent(renderer_.get());
    wantsDrawing_ = false;
}

void Window::toggleFullScreen() {
    const bool full = (SDL_GetWindowFlags(window_.get()) & SDL_WINDOW_FULLSCREEN_DESKTOP) != 0;
    SDL_SetWindowFullscreen(window_.get(), full ? 0 : SDL_WINDOW_FULLSCREEN_DESKTOP);
    SDL_ShowCursor(full ? SDL_ENABLE : SDL_DISABLE);
    wantsDrawing_ = true;
}

Action Window::actOnKey(const SDL_Keysym& key) {
    const bool backwards = (key.mod & KMOD_SHIFT) != 0;
    switch (key.sym) {
        case SDLK_a:
            return Action::nextAlgorithm;
        case SDLK_f:
            return backwards ? Action::previousFormat : Action::nextFormat;
        case SDLK_z:
            return backwards ? Action::previousSize : Action::nextSize;
        case SDLK_r:
            return Action::recordRaw;
        case SDLK_p:
            return Action::recordPictures;
        case SDLK_s:
            return Action::save;
        case SDLK_i:
            return Action::figures;
        case SDLK_h:
            return Action::help;
        case SDLK_RETURN:
        case SDLK_F11:
            toggleFullScreen();
            return Action::none;
        case SDLK_q:
            return Action::quit;
        case SDLK_ESCAPE:
            if ((SDL_GetWindowFlags(window_.get()) & SDL_WINDOW_FULLSCREEN_DESKTOP) == 0) {
                return Action::quit;
            }
            toggleFullScreen();
            return Action::none;
        default:
            return Action::none;
    }
}

Action Window::act(const SDL_Event& event) {
    switch (event.type) {
        case SDL_QUIT:
            return Action::quit;
        case SDL_WINDOWEVENT:
            wantsDrawing_ = true;
            return Action::none;
        case SDL_KEYDOWN:
            return event.key.repeat == 0 ? actOnKey(event.key.keysym) : Action::none;
        default:
            return Action::none;
    }
}

Action Window::poll() {
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        const Action action = act(event);
        if (action != Action::none) {
            return action;
        }
    }
    return Action::none;
}

}  // namespace kro_camera
