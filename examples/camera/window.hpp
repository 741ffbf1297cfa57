// The window: a picture, letterboxed, with lines of text over it; and the keys.
#pragma once

#include <SDL.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "modes.hpp"

namespace kro_camera {

enum class Action {
    none,
    quit,
    nextAlgorithm,
    nextFormat,
    previousFormat,
    nextSize,
    previousSize,
    recordRaw,
    recordPictures,
    save,
    figures,
    help
};

class Window {
public:
    // Not to be seen before it is shown: opening takes longer than a camera has buffers for.
    explicit Window(const std::string& title);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    // As large as the frames, or as much of that as the screen has room for.
    void show(const Size& size, bool fullScreen);

    // The next key that means something; what concerns the window alone is done here.
    Action poll();

    // Where the next picture's pixels go, BGRa8, so that none is copied; until unlock().
    struct Pixels {
        void* data;
        std::ptrdiff_t stride;
    };
    Pixels lock(const Size& size);
    void unlock();

    void setTitle(const std::string& title);
    // Lines at the lower edge, and in the middle.
    void draw(const std::vector<std::string>& status, const std::vector<std::string>& help);
    // Has the window lost what was drawn, by a change of its size or what lay over it?
    bool wantsDrawing() const { return wantsDrawing_; }

private:
    struct Destroy {
        void operator()(SDL_Window* window) const { SDL_DestroyWindow(window); }
        void operator()(SDL_Renderer* renderer) const { SDL_DestroyRenderer(renderer); }
        void operator()(SDL_Texture* texture) const { SDL_DestroyTexture(texture); }
    };
    // Ends after what was made by it.
    struct Library {
        Library();
        ~Library();
        Library(const Library&) = delete;
        Library& operator=(const Library&) = delete;
    };

    Action act(const SDL_Event& event);
    Action actOnKey(const SDL_Keysym& key);
    void toggleFullScreen();
    SDL_Rect letterbox() const;
    void drawLines(const std::vector<std::string>& lines, bool inTheMiddle);

    Library library_;
    std::unique_ptr<SDL_Window, Destroy> window_;
    std::unique_ptr<SDL_Renderer, Destroy> renderer_;
    std::unique_ptr<SDL_Texture, Destroy> texture_;
    Size size_;
    bool wantsDrawing_ = true;
};

}  // namespace kro_camera
