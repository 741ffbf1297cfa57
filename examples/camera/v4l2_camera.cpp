#include "v4l2_camera.hpp"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <system_error>

#include "v4l2_formats.hpp"

namespace kro_camera {

namespace {

constexpr std::uint32_t capture = V4L2_BUF_TYPE_VIDEO_CAPTURE;
// One is shown, one is filled, the rest waits while a picture takes longer for once.
constexpr std::uint32_t bufferCount = 6;

std::string systemMessage(int errorNumber) { return std::generic_category().message(errorNumber); }

// The open file, and what the kernel says to it.
class Device {
public:
    explicit Device(const std::string& path) : path_(path), descriptor_(open(path.c_str(), O_RDWR | O_NONBLOCK)) {
        if (descriptor_ < 0) {
            fail("cannot be opened: " + systemMessage(errno));
        }
    }
    ~Device() { close(descriptor_); }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    const std::string& path() const { return path_; }
    [[noreturn]] void fail(const std::string& what) const { throw Failure(path_ + ": " + what); }
    [[noreturn]] void failGone() const { fail("the device is gone (unplugged?)"); }

    // The error's number, or 0.
    template <class Record>
    int ask(unsigned long request, Record& record) const {
        int result = 0;
        do {
            result = ioctl(descriptor_, request, &record);
        } while (result < 0 && errno == EINTR);
        return result < 0 ? errno : 0;
    }
    template <class Record>
    void command(unsigned long request, Record& record, const std::string& what) const {
        const int errorNumber = ask(request, record);
        if (errorNumber == ENODEV) {
            failGone();
        }
        if (errorNumber == EBUSY) {
            fail(what + ": another program is using the device");
        }
        if (errorNumber != 0) {
            fail(what + ": " + systemMessage(errorNumber));
        }
    }
    // Is there something to fetch?
    bool wait(std::chrono::milliseconds timeout) const {
        pollfd readable{descriptor_, POLLIN, 0};
        const int count = poll(&readable, 1, static_cast<int>(timeout.count()));
        if (count > 0 && (readable.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0 &&
            (readable.revents & POLLIN) == 0) {
            failGone();
        }
        return count > 0;
    }
    void* map(const v4l2_buffer& buffer) const {
        void* const data = mmap(nullptr, buffer.length, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_,
                                static_cast<off_t>(buffer.m.offset));
        if (data == MAP_FAILED) {
            fail("a buffer cannot be mapped: " + systemMessage(errno));
        }
        return data;
    }

private:
    std::string path_;
    int descriptor_;
};

v4l2_buffer bufferRecord(std::uint32_t index = 0) {
    v4l2_buffer buffer{};
    buffer.type = capture;
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.index = index;
    return buffer;
}

class V4l2Camera final : public Camera {
public:
    V4l2Camera(const std::string& path, double rate);
    ~V4l2Camera() override;
    std::string name() const override { return device_.path() + " (" + card_ + ")"; }
    std::vector<kro::PixelFormat> formats() override;
    std::vector<Size> sizes(kro::PixelFormat format) override;
    Mode start(const Mode& wanted) override;
    Arrival next(std::chrono::milliseconds timeout) override;
    void stop() override;

private:
    void setFormat(const Mode& wanted);
    void setRate() const;
    void mapBuffers();
    void giveBack();
    void release() noexcept;
    bool fetch(v4l2_buffer& buffer, Arrival& arrival);
    void count(const v4l2_buffer& buffer, Arrival& arrival);

    struct Mapped {
        void* data;
        std::size_t length;
    };

    Device device_;
    double rate_;
    std::string card_;
    kro::Frame frame_;
    std::vector<Mapped> buffers_;
    bool streaming_ = false;
    std::optional<std::uint32_t> held_;      // the buffer that the viewer looks at
    std::optional<std::uint32_t> sequence_;  // the number of the frame before
    std::uint32_t unnumbered_ = 0;           // lost since then, as far as the kernel said so
};

V4l2Camera::V4l2Camera(const std::string& path, double rate) : device_(path), rate_(rate) {
    v4l2_capability capability{};
    if (const int errorNumber = device_.ask(VIDIOC_QUERYCAP, capability)) {
        device_.fail("is no device of Video4Linux: " + systemMessage(errorNumber));
    }
    card_ = reinterpret_cast<const char*>(capability.card);
    const std::uint32_t able =
        (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0 ? capability.device_caps : capability.capabilities;
    if ((able & V4L2_CAP_VIDEO_CAPTURE) == 0) {
        device_.fail((able & V4L2_CAP_VIDEO_CAPTURE_MPLANE) != 0
                         ? "captures by the multi-planar interface only, which this program does not speak"
                         : "captures no video");
    }
    if ((able & V4L2_CAP_STREAMING) == 0) {
        device_.fail("does not stream");
    }
}

V4l2Camera::~V4l2Camera() { release(); }

std::vector<kro::PixelFormat> V4l2Camera::formats() {
    std::vector<kro::PixelFormat> found;
    v4l2_fmtdesc description{};
    description.type = capture;
    for (; device_.ask(VIDIOC_ENUM_FMT, description) == 0; ++description.index) {
        if (const auto format = formatOfV4l2(description.pixelformat)) {
            found.push_back(*format);
        }
    }
    return found;
}

std::vector<Size> V4l2Camera::sizes(kro::PixelFormat format) {
    std::vector<Size> found;
    v4l2_frmsizeenum entry{};
    entry.pixel_format = v4l2CodeOf(format);
    for (; device_.ask(VIDIOC_ENUM_FRAMESIZES, entry) == 0; ++entry.index) {
        if (entry.type != V4L2_FRMSIZE_TYPE_DISCRETE) {
            const auto side = [](std::uint32_t pixels) { return static_cast<std::int32_t>(pixels); };
            const v4l2_frmsize_stepwise& range = entry.stepwise;
            return usualSizes({{side(range.min_width), side(range.min_height)},
                               {side(range.max_width), side(range.max_height)},
                               {side(range.step_width), side(range.step_height)}});
        }
        found.push_back(
            {static_cast<std::int32_t>(entry.discrete.width), static_cast<std::int32_t>(entry.discrete.height)});
    }
    return found;
}

void V4l2Camera::setFormat(const Mode& wanted) {
    v4l2_format format{};
    format.type = capture;
    device_.command(VIDIOC_G_FMT, format, "the format cannot be read");
    format.fmt.pix.pixelformat = v4l2CodeOf(wanted.format);
    if (wanted.size.width > 0) {
        format.fmt.pix.width = static_cast<std::uint32_t>(wanted.size.width);
        format.fmt.pix.height = static_cast<std::uint32_t>(wanted.size.height);
    }
    format.fmt.pix.field = V4L2_FIELD_NONE;
    // The driver knows better than a number that belonged to another size.
    format.fmt.pix.bytesperline = 0;
    format.fmt.pix.sizeimage = 0;
    device_.command(VIDIOC_S_FMT, format, textOf(wanted) + " is refused");
    try {
        frame_ = frameOfV4l2(format.fmt.pix);
    } catch (const Failure& failure) {
        device_.fail(std::string("promises ") + failure.what());
    }
    if (frame_.format != wanted.format) {
        device_.fail("sends " + std::string(kro::nameOf(frame_.format)) + " instead of " +
                     std::string(kro::nameOf(wanted.format)));
    }
}

// Not every device can be told; then it keeps its own.
void V4l2Camera::setRate() const {
    if (rate_ > 0) {
        v4l2_streamparm parameters{};
        parameters.type = capture;
        parameters.parm.capture.timeperframe = {1000, static_cast<std::uint32_t>(std::lround(rate_ * 1000))};
        device_.ask(VIDIOC_S_PARM, parameters);
    }
}

void V4l2Camera::mapBuffers() {
    v4l2_requestbuffers request{};
    request.count = bufferCount;
    request.type = capture;
    request.memory = V4L2_MEMORY_MMAP;
    device_.command(VIDIOC_REQBUFS, request, "buffers are refused");
    for (std::uint32_t index = 0; index < request.count; ++index) {
        v4l2_buffer buffer = bufferRecord(index);
        device_.command(VIDIOC_QUERYBUF, buffer, "a buffer is refused");
        buffers_.push_back({device_.map(buffer), buffer.length});
        device_.command(VIDIOC_QBUF, buffer, "a buffer is not taken");
    }
}

Mode V4l2Camera::start(const Mode& wanted) {
    stop();
    setFormat(wanted);
    setRate();
    try {
        mapBuffers();
        int type = capture;
        device_.command(VIDIOC_STREAMON, type, "does not start");
        streaming_ = true;
    } catch (const Failure&) {
        release();
        throw;
    }
    return {frame_.format, {frame_.width, frame_.height}};
}

void V4l2Camera::giveBack() {
    if (held_) {
        v4l2_buffer buffer = bufferRecord(*held_);
        held_.reset();
        device_.command(VIDIOC_QBUF, buffer, "a buffer is not taken back");
    }
}

// False where there is none after all.
bool V4l2Camera::fetch(v4l2_buffer& buffer, Arrival& arrival) {
    const int errorNumber = device_.ask(VIDIOC_DQBUF, buffer);
    if (errorNumber == ENODEV) {
        device_.failGone();
    }
    if (errorNumber == EIO) {
        // The kernel's word for a frame that was lost on its way; the stream goes on.
        ++arrival.lost;
        ++unnumbered_;
    } else if (errorNumber != 0 && errorNumber != EAGAIN) {
        device_.fail("no frame can be fetched: " + systemMessage(errorNumber));
    }
    return errorNumber == 0;
}

void V4l2Camera::count(const v4l2_buffer& buffer, Arrival& arrival) {
    if (sequence_) {
        // Those that were told of already are missing in the numbers too.
        const std::uint32_t missing = missingBetween(*sequence_, buffer.sequence);
        arrival.lost += missing - std::min(missing, unnumbered_);
    }
    unnumbered_ = 0;
    sequence_ = buffer.sequence;
}

Arrival V4l2Camera::next(std::chrono::milliseconds timeout) {
    Arrival arrival;
    giveBack();
    v4l2_buffer buffer = bufferRecord();
    if (!device_.wait(timeout) || !fetch(buffer, arrival)) {
        return arrival;
    }
    if (buffer.index >= buffers_.size()) {
        device_.fail("hands out buffer " + std::to_string(buffer.index) + " of " + std::to_string(buffers_.size()));
    }
    held_ = buffer.index;
    count(buffer, arrival);
    buffer.length = static_cast<std::uint32_t>(buffers_[buffer.index].length);
    if (!isWhole(frame_, buffer)) {
        ++arrival.lost;
        return arrival;
    }
    arrival.frame = frame_;
    arrival.frame.data = buffers_[buffer.index].data;
    return arrival;
}

// The device may be gone, which is no reason to keep what was mapped.
void V4l2Camera::release() noexcept {
    if (streaming_) {
        int type = capture;
        device_.ask(VIDIOC_STREAMOFF, type);
        streaming_ = false;
    }
    for (const Mapped& buffer : buffers_) {
        munmap(buffer.data, buffer.length);
    }
    if (!buffers_.empty()) {
        v4l2_requestbuffers none{};
        none.type = capture;
        none.memory = V4L2_MEMORY_MMAP;
        device_.ask(VIDIOC_REQBUFS, none);
    }
    buffers_.clear();
    held_.reset();
    sequence_.reset();
    unnumbered_ = 0;
}

void V4l2Camera::stop() { release(); }

}  // namespace

std::unique_ptr<Camera> openV4l2Camera(const std::string& path, double rate) {
    return std::make_unique<V4l2Camera>(path, rate);
}

std::vector<std::string> v4l2Devices() {
    std::vector<std::string> found;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/dev", ignored)) {
        if (entry.path().filename().string().rfind("video", 0) == 0) {
            try {
                V4l2Camera camera(entry.path(), 0);
                if (!camera.formats().empty()) {
                    found.push_back("--v4l2 " + camera.name());
                }
            } catch (const Failure&) {
                // A device of another kind, or one that is not for us.
            }
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace kro_camera
