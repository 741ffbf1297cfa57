#include "replay_camera.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>

#include "recorded_file.hpp"

namespace kro_camera {

namespace {

using Clock = std::chrono::steady_clock;

struct Recording {
    std::string path;
    kro::Frame frame;
    std::uint64_t frames = 0;
};

bool has(const Recording& recording, const Mode& mode) {
    return recording.frame.format == mode.format && Size{recording.frame.width, recording.frame.height} == mode.size;
}

// Options first, then the name.
kro::Frame layoutOf(const std::string& path, const Layout& layout) {
    kro::Frame frame;
    if (const auto named = layoutOfName(path)) {
        frame = *named;
    }
    frame.format = layout.format.value_or(frame.format);
    frame.width = layout.size.value_or(Size{frame.width, frame.height}).width;
    frame.height = layout.size.value_or(Size{frame.width, frame.height}).height;
    frame.stride = layout.stride != 0 ? layout.stride : frame.stride;
    if (frame.width == 0 || frame.format == kro::PixelFormat{}) {
        throw UsageFailure(path +
                           ": format and size are unknown, expected --format and --size, or a name such as "
                           "x_1280x960_BayerRG12p.raw");
    }
    const std::ptrdiff_t row = kro::rowBytes(frame.format, frame.width);
    if (frame.stride != 0 && frame.stride < row) {
        throw UsageFailure(path + ": stride " + std::to_string(frame.stride) + ", expected " + std::to_string(row) +
                           " or more");
    }
    return frame;
}

Recording look(const std::string& path, const Layout& layout) {
    Recording recording{path, layoutOf(path, layout), 0};
    std::error_code error;
    const std::uintmax_t bytes = std::filesystem::file_size(path, error);
    if (error) {
        throw Failure(path + ": cannot be read: " + error.message());
    }
    const std::uintmax_t each = frameBytes(recording.frame);
    recording.frames = bytes / each;
    if (bytes == 0 || bytes % each != 0) {
        throw Failure(path + ": " + std::to_string(bytes) + " bytes, expected a multiple of " + std::to_string(each) +
                      ", which a frame of " +
                      textOf(Mode{recording.frame.format, {recording.frame.width, recording.frame.height}}) +
                      " takes");
    }
    return recording;
}

class Replay final : public Camera {
public:
    Replay(const std::vector<std::string>& paths, const Layout& layout, double rate)
        : period_(std::chrono::duration_cast<Clock::duration>(
              std::chrono::duration<double>(1 / (rate > 0 ? rate : 25)))) {
        for (const std::string& path : paths) {
            recordings_.push_back(look(path, layout));
        }
    }
    std::string name() const override { return "replay of " + recordings_.front().path + others(); }
    std::vector<kro::PixelFormat> formats() override;
    std::vector<Size> sizes(kro::PixelFormat format) override;
    Mode start(const Mode& wanted) override;
    Arrival next(std::chrono::milliseconds timeout) override;
    void stop() override { file_.close(); }

private:
    std::string others() const {
        const std::size_t count = recordings_.size() - 1;
        return count == 0 ? "" : " and " + std::to_string(count) + (count == 1 ? " other" : " others");
    }
    void open(std::size_t recording);
    void turnToNextFile();

    Clock::duration period_;
    std::vector<Recording> recordings_;
    Mode mode_;
    std::size_t current_ = 0;
    std::uint64_t left_ = 0;
    std::ifstream file_;
    std::vector<char> samples_;
    Clock::time_point due_;
};

std::vector<kro::PixelFormat> Replay::formats() {
    std::vector<kro::PixelFormat> found;
    for (const Recording& recording : recordings_) {
        if (std::find(found.begin(), found.end(), recording.frame.format) == found.end()) {
            found.push_back(recording.frame.format);
        }
    }
    return found;
}

std::vector<Size> Replay::sizes(kro::PixelFormat format) {
    std::vector<Size> found;
    for (const Recording& recording : recordings_) {
        const Size size{recording.frame.width, recording.frame.height};
        if (recording.frame.format == format && std::find(found.begin(), found.end(), size) == found.end()) {
            found.push_back(size);
        }
    }
    return found;
}

void Replay::open(std::size_t recording) {
    current_ = recording;
    left_ = recordings_[recording].frames;
    file_.close();
    file_.clear();
    file_.open(recordings_[recording].path, std::ios::binary);
    if (!file_) {
        throw Failure(recordings_[recording].path + ": cannot be opened");
    }
    samples_.resize(frameBytes(recordings_[recording].frame));
}

// After the last one of that mode the first is next.
void Replay::turnToNextFile() {
    for (std::size_t step = 1; step <= recordings_.size(); ++step) {
        const std::size_t next = (current_ + step) % recordings_.size();
        if (has(recordings_[next], mode_)) {
            open(next);
            return;
        }
    }
}

// A size that no file of that format has gives way to the first one's.
Mode Replay::start(const Mode& wanted) {
    stop();
    const std::vector<Size> present = sizes(wanted.format);
    const bool found = std::find(present.begin(), present.end(), wanted.size) != present.end();
    mode_ = {wanted.format, found ? wanted.size : present.at(0)};
    current_ = recordings_.size() - 1;
    turnToNextFile();
    due_ = Clock::now();
    return mode_;
}

Arrival Replay::next(std::chrono::milliseconds timeout) {
    const auto now = Clock::now();
    if (due_ > now + timeout) {
        std::this_thread::sleep_for(timeout);
        return {};
    }
    std::this_thread::sleep_until(due_);
    due_ = std::max(due_ + period_, now);
    if (left_ == 0) {
        turnToNextFile();
    }
    file_.read(samples_.data(), static_cast<std::streamsize>(samples_.size()));
    if (!file_) {
        throw Failure(recordings_[current_].path + ": has become shorter while it was read");
    }
    --left_;
    Arrival arrival{recordings_[current_].frame, 0};
    arrival.frame.data = samples_.data();
    return arrival;
}

}  // namespace

std::unique_ptr<Camera> openReplay(const std::vector<std::string>& paths, const Layout& layout, double rate) {
    return std::make_unique<Replay>(paths, layout, rate);
}

}  // namespace kro_camera
