// Takes frames from a camera, shows them and records them, until it is told to end.
#pragma once

#include <chrono>
#include <cstdint>
#include <kro/threads.hpp>
#include <string>
#include <vector>

#include "arguments.hpp"
#include "camera.hpp"
#include "recorder.hpp"
#include "window.hpp"

namespace kro_camera {

// What is counted over a while and then shown.
class Figures {
public:
    using Clock = std::chrono::steady_clock;
    void add(Clock::duration conversion);
    // True when there are new ones, twice a second.
    bool settle();
    std::string text() const { return text_; }
    // Of all frames since the beginning.
    std::string summary(std::uint64_t lost) const;
    std::uint64_t frames() const { return frames_; }

private:
    Clock::time_point began_ = Clock::now();
    Clock::time_point since_ = began_;
    std::uint64_t framesSince_ = 0;
    Clock::duration spentSince_{};
    std::uint64_t frames_ = 0;
    Clock::duration spent_{};
    std::string text_;
};

class Viewer {
public:
    Viewer(Camera& camera, const Arguments& arguments);
    // Until a key, a signal or the number of frames ends it. False: something could not be recorded.
    bool run();
    std::string summary() const { return figures_.summary(lost_); }

private:
    using Clock = Figures::Clock;

    bool mayGoOn() const;
    void step();
    void show(const kro::Frame& frame);
    void waitFailed();
    void finishRecordings();
    void act(Action action);
    void change(const Mode& wanted);
    void turnFormat(int step);
    void turnSize(int step);
    void toggleRaw();
    void togglePictures();
    void say(const std::string& text);
    template <class Function>
    void recording(Function&& function);
    void draw();
    std::vector<std::string> statusLines() const;
    std::string recordingText() const;

    Camera& camera_;
    const Arguments arguments_;
    Recorder recorder_;
    Window window_;
    std::vector<kro::PixelFormat> formats_;
    Mode mode_;
    kro::Algorithm algorithm_;
    kro::Threads threads_;
    Figures figures_;
    std::uint64_t lost_ = 0;
    bool ended_ = false;
    bool complained_ = false;  // of a recording that failed
    bool showsFigures_ = true;
    bool showsHelp_ = false;
    bool wantsSaving_ = false;
    bool changed_ = true;
    Clock::time_point drawAgain_;
    std::string said_;
    Clock::time_point saidAt_;
    Clock::time_point lastFrame_;
};

// A signal that asks the program to end; called from its handler.
void endViewer(int) noexcept;

}  // namespace kro_camera
