#include "viewer.hpp"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>

namespace kro_camera {

namespace {

volatile std::sig_atomic_t endWanted = 0;

// Keys are obeyed at least this often while no frame comes.
constexpr std::chrono::milliseconds patience(20);
constexpr std::chrono::seconds timeToRead(4);

double milliseconds(Figures::Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

template <class... Values>
std::string printed(const char* format, Values... values) {
    std::array<char, 160> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

std::string rates(double frames, double spent, double seconds) {
    return printed("%.1f frames/s  %.2f ms each  %.1f ms/s", frames / seconds, frames > 0 ? spent / frames : 0.0,
                   spent / seconds);
}

// The one that follows, or goes before, in a circle; the first one where `present` is not among them.
template <class Value>
Value neighbour(const std::vector<Value>& all, const Value& present, int step) {
    const auto at = std::find(all.begin(), all.end(), present);
    if (at == all.end()) {
        return all.front();
    }
    const auto count = static_cast<std::ptrdiff_t>(all.size());
    return all[static_cast<std::size_t>(((at - all.begin()) + step + count) % count)];
}

// The wanted format, if the camera has it; its first one else.
kro::PixelFormat firstFormat(const Camera& camera, const std::vector<kro::PixelFormat>& formats,
                             const std::optional<kro::PixelFormat>& wanted) {
    if (formats.empty()) {
        throw Failure(camera.name() + ": has no format that kro reads");
    }
    if (!wanted) {
        return formats.front();
    }
    if (std::find(formats.begin(), formats.end(), *wanted) == formats.end()) {
        std::string names;
        for (const kro::PixelFormat format : formats) {
            names += (names.empty() ? "" : ", ") + std::string(kro::nameOf(format));
        }
        throw Failure(camera.name() + ": has no " + std::string(kro::nameOf(*wanted)) + ", but " + names);
    }
    return *wanted;
}

}  // namespace

void endViewer(int) noexcept { endWanted = 1; }

void Figures::add(Clock::duration conversion) {
    ++frames_;
    ++framesSince_;
    spent_ += conversion;
    spentSince_ += conversion;
}

bool Figures::settle() {
    const auto now = Clock::now();
    const double seconds = milliseconds(now - since_) / 1000;
    if (seconds < 0.5) {
        return false;
    }
    text_ = rates(static_cast<double>(framesSince_), milliseconds(spentSince_), seconds);
    since_ = now;
    framesSince_ = 0;
    spentSince_ = {};
    return true;
}

std::string Figures::summary(std::uint64_t lost) const {
    const double seconds = std::max(milliseconds(Clock::now() - began_) / 1000, 0.001);
    return counted(frames_, "frame") + ", " + std::to_string(lost) + " lost, " +
           rates(static_cast<double>(frames_), milliseconds(spent_), seconds);
}

Viewer::Viewer(Camera& camera, const Arguments& arguments)
    : camera_(camera),
      arguments_(arguments),
      recorder_(arguments.folder),
      window_("kro-camera: " + camera.name()),
      formats_(camera.formats()),
      mode_(camera.start(
          {firstFormat(camera, formats_, arguments.layout.format), arguments.layout.size.value_or(Size{})})),
      algorithm_(arguments.algorithm),
      lastFrame_(Clock::now()) {
    window_.show(mode_.size, arguments.fullScreen);
    if (arguments.layout.size && !(*arguments.layout.size == mode_.size)) {
        say("the camera sends " + textOf(mode_.size) + " instead of " + textOf(*arguments.layout.size));
    }
    if (arguments.recordRaw) {
        recorder_.startRaw();
    }
    if (arguments.recordPictures) {
        recorder_.startPictures();
    }
}

// Whatever ends it, frames that are recorded by then stay.
bool Viewer::run() {
    try {
        while (mayGoOn()) {
            step();
        }
    } catch (const Failure&) {
        finishRecordings();
        throw;
    }
    finishRecordings();
    camera_.stop();
    return !complained_;
}

void Viewer::finishRecordings() {
    recording([&] {
        for (const std::string& text : {recorder_.stopRaw(), recorder_.stopPictures()}) {
            if (!text.empty()) {
                say(text);
            }
        }
    });
}

bool Viewer::mayGoOn() const {
    return !ended_ && endWanted == 0 && (arguments_.frames == 0 || figures_.frames() < arguments_.frames);
}

void Viewer::step() {
    const Arrival arrival = camera_.next(patience);
    changed_ = changed_ || arrival.lost != 0;
    lost_ += arrival.lost;
    if (arrival.frame.data != nullptr) {
        show(arrival.frame);
    } else {
        waitFailed();
    }
    act(window_.poll());
    changed_ = figures_.settle() || changed_;
    if ((changed_ || window_.wantsDrawing()) && Clock::now() >= drawAgain_) {
        draw();
    }
}

void Viewer::show(const kro::Frame& frame) {
    lastFrame_ = Clock::now();
    kro::Options options;
    options.algorithm = algorithm_;
    const Window::Pixels pixels = window_.lock({frame.width, frame.height});
    const auto before = Clock::now();
    std::error_code error;
    kro::convert(frame, {pixels.data, kro::PixelFormat::BGRa8, pixels.stride}, options, threads_, error);
    figures_.add(Clock::now() - before);
    window_.unlock();
    if (error) {
        throw Failure(camera_.name() + ": " + error.message());
    }
    recording([&] {
        recorder_.take(frame, algorithm_);
        if (wantsSaving_) {
            wantsSaving_ = false;
            say("saved " + recorder_.save(frame, algorithm_));
        }
    });
    changed_ = true;
}

void Viewer::waitFailed() {
    const double seconds = milliseconds(Clock::now() - lastFrame_) / 1000;
    if (arguments_.timeout > 0 && seconds >= arguments_.timeout) {
        throw Failure(camera_.name() + ": no frame for " + printed("%.1f", seconds) +
                      " s: is it triggered, is its cable in? (--timeout 0 waits for ever)");
    }
}

// A recording that fails ends; the frames go on.
template <class Function>
void Viewer::recording(Function&& function) {
    try {
        function();
    } catch (const Failure& failure) {
        complained_ = true;
        wantsSaving_ = false;
        say(failure.what());
    }
}

void Viewer::say(const std::string& text) {
    std::fprintf(stderr, "kro-camera: %s\n", text.c_str());
    said_ = text;
    saidAt_ = Clock::now();
    changed_ = true;
}

void Viewer::act(Action action) {
    changed_ = changed_ || action != Action::none;
    switch (action) {
        case Action::none:
            return;
        case Action::quit:
            ended_ = true;
            return;
        case Action::nextAlgorithm:
            algorithm_ = neighbour(algorithms(), algorithm_, 1);
            return;
        case Action::nextFormat:
            return turnFormat(1);
        case Action::previousFormat:
            return turnFormat(-1);
        case Action::nextSize:
            return turnSize(1);
        case Action::previousSize:
            return turnSize(-1);
        case Action::recordRaw:
            return recording([&] { toggleRaw(); });
        case Action::recordPictures:
            return recording([&] { togglePictures(); });
        case Action::save:
            wantsSaving_ = true;
            return;
        case Action::figures:
            showsFigures_ = !showsFigures_;
            return;
        case Action::help:
            showsHelp_ = !showsHelp_;
            return;
    }
}

// What a camera does not take leaves it as it was.
void Viewer::change(const Mode& wanted) {
    try {
        mode_ = camera_.start(wanted);
    } catch (const Failure& failure) {
        say(failure.what());
        mode_ = camera_.start(mode_);
    }
    lastFrame_ = Clock::now();
}

void Viewer::turnFormat(int step) {
    if (formats_.size() > 1) {
        change({neighbour(formats_, mode_.format, step), mode_.size});
    }
}

void Viewer::turnSize(int step) {
    const std::vector<Size> sizes = camera_.sizes(mode_.format);
    if (sizes.size() > 1) {
        change({mode_.format, neighbour(sizes, mode_.size, step)});
    }
}

void Viewer::toggleRaw() {
    if (recorder_.recordsRaw()) {
        say(recorder_.stopRaw());
    } else {
        recorder_.startRaw();
    }
}

void Viewer::togglePictures() {
    if (recorder_.recordsPictures()) {
        say(recorder_.stopPictures());
    } else {
        recorder_.startPictures();
    }
}

std::string Viewer::recordingText() const {
    std::string text;
    if (recorder_.recordsRaw()) {
        text += "  RAW " + std::to_string(recorder_.rawCount());
    }
    if (recorder_.recordsPictures()) {
        text += "  PNG " + std::to_string(recorder_.pictureCount());
    }
    return text;
}

std::vector<std::string> Viewer::statusLines() const {
    std::vector<std::string> lines;
    const auto now = Clock::now();
    if (now - lastFrame_ > std::chrono::seconds(1)) {
        lines.push_back(printed("no frame for %.0f s", milliseconds(now - lastFrame_) / 1000));
    }
    if (!said_.empty() && now - saidAt_ < timeToRead) {
        lines.push_back(said_);
    }
    if (showsFigures_) {
        lines.push_back(textOf(mode_) + " " + textOf(algorithm_) + recordingText());
        lines.push_back(figures_.text() + (lost_ == 0 ? "" : "  " + std::to_string(lost_) + " lost"));
    }
    return lines;
}

// Takes half of the time at most: what is recorded comes before what is seen.
void Viewer::draw() {
    const auto before = Clock::now();
    static const std::vector<std::string> keys = {"a      algorithm",
                                                  "f F    format, back",
                                                  "z Z    size, back",
                                                  "r      record raw frames",
                                                  "p      record PNG files",
                                                  "s      save this frame",
                                                  "i      figures",
                                                  "h      this help",
                                                  "Enter  full screen and back",
                                                  "q      end"};
    window_.setTitle("kro-camera: " + camera_.name() + ", " + textOf(mode_) + ", " + textOf(algorithm_));
    window_.draw(statusLines(), showsHelp_ ? keys : std::vector<std::string>());
    changed_ = false;
    const auto now = Clock::now();
    drawAgain_ = now + (now - before);
}

}  // namespace kro_camera
