// Preloaded, it is a device of Video4Linux that sends recorded buffers: it answers what the program asks the kernel
// of one path and leaves all else alone. It is as strict as the kernel about the order of the calls.
//
//     KRO_V4L2_DEVICE       the path
//     KRO_V4L2_DESCRIPTION  a file of lines:
//         capabilities HEX                                  of the device; without it: captures video, streams
//         mode LETTERS WIDTH HEIGHT STRIDE SIZEIMAGE FILE   the buffers that it sends in that mode, over and over
//         range LETTERS                                     sizes of that format are a range, not a list
//         sequence NUMBER                                   of the first frame
//         event NUMBER KIND                                 at that frame: gone, silent, lost (EIO), damaged, short,
//                                                           missing (three numbers are left out), busy (at the start)
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/videodev2.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

struct Mode {
    v4l2_pix_format promised{};
    std::vector<char> buffers;
};

struct Buffer {
    char* data = nullptr;
    bool queued = false;
};

class Device {
public:
    Device();
    int answer(unsigned long request, void* record);
    int wait(pollfd& wanted, int timeout);
    void* map(std::size_t length, off_t offset);

private:
    void read(const std::string& line);
    std::string eventNow() const;
    int enumerateFormat(v4l2_fmtdesc& description) const;
    int enumerateSize(v4l2_frmsizeenum& entry) const;
    int choose(v4l2_format& format);
    int request(v4l2_requestbuffers& wanted);
    int query(v4l2_buffer& buffer) const;
    int queue(const v4l2_buffer& buffer);
    int fetch(v4l2_buffer& buffer);
    int turn(bool on);

    std::uint32_t capabilities_ = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    std::vector<Mode> modes_;
    std::vector<std::uint32_t> ranges_;
    std::map<std::uint64_t, std::string> events_;
    std::uint32_t sequence_ = 0;
    std::uint64_t sent_ = 0;
    std::size_t mode_ = 0;
    std::vector<Buffer> buffers_;
    std::deque<std::uint32_t> queue_;
    bool streaming_ = false;
};

std::uint32_t codeOf(const std::string& letters) {
    std::uint32_t code = 0;
    for (std::size_t i = 0; i < letters.size(); ++i) {
        code |= static_cast<std::uint32_t>(letters[i] == '_' ? ' ' : letters[i]) << (8 * i);
    }
    return code;
}

Device::Device() {
    std::ifstream description(std::getenv("KRO_V4L2_DESCRIPTION"));
    for (std::string line; std::getline(description, line);) {
        read(line);
    }
}

void Device::read(const std::string& line) {
    std::istringstream words(line);
    std::string word;
    std::string letters;
    words >> word;
    if (word == "capabilities") {
        words >> std::hex >> capabilities_;
    } else if (word == "mode") {
        Mode mode;
        std::string path;
        words >> letters >> mode.promised.width >> mode.promised.height >> mode.promised.bytesperline >>
            mode.promised.sizeimage >> path;
        mode.promised.pixelformat = codeOf(letters);
        std::ifstream file(path, std::ios::binary);
        mode.buffers.assign(std::istreambuf_iterator<char>(file), {});
        modes_.push_back(mode);
    } else if (word == "range") {
        words >> letters;
        ranges_.push_back(codeOf(letters));
    } else if (word == "sequence") {
        words >> sequence_;
    } else if (word == "event") {
        std::uint64_t number = 0;
        words >> number;
        words >> events_[number];
    }
}

std::string Device::eventNow() const {
    const auto at = events_.find(sent_);
    return at == events_.end() ? std::string() : at->second;
}

int Device::enumerateFormat(v4l2_fmtdesc& description) const {
    std::vector<std::uint32_t> codes;
    for (const Mode& mode : modes_) {
        if (std::find(codes.begin(), codes.end(), mode.promised.pixelformat) == codes.end()) {
            codes.push_back(mode.promised.pixelformat);
        }
    }
    if (description.type != V4L2_BUF_TYPE_VIDEO_CAPTURE || description.index >= codes.size()) {
        return EINVAL;
    }
    description.pixelformat = codes[description.index];
    return 0;
}

int Device::enumerateSize(v4l2_frmsizeenum& entry) const {
    if (std::find(ranges_.begin(), ranges_.end(), entry.pixel_format) != ranges_.end()) {
        entry.type = V4L2_FRMSIZE_TYPE_STEPWISE;
        entry.stepwise = {32, 2000, 8, 16, 1100, 2};
        return entry.index == 0 ? 0 : EINVAL;
    }
    std::uint32_t index = 0;
    for (const Mode& mode : modes_) {
        if (mode.promised.pixelformat == entry.pixel_format && index++ == entry.index) {
            entry.type = V4L2_FRMSIZE_TYPE_DISCRETE;
            entry.discrete = {mode.promised.width, mode.promised.height};
            return 0;
        }
    }
    return EINVAL;
}

// A mode of that format, of that size if there is one; the driver's own where it has no such format.
int Device::choose(v4l2_format& format) {
    if (!buffers_.empty()) {
        return EBUSY;
    }
    const v4l2_pix_format& wanted = format.fmt.pix;
    std::size_t best = mode_;
    for (std::size_t i = modes_.size(); i-- > 0;) {
        const v4l2_pix_format& mode = modes_[i].promised;
        const bool sameSize = mode.width == wanted.width && mode.height == wanted.height;
        const bool bestHas = modes_[best].promised.pixelformat == wanted.pixelformat;
        if (mode.pixelformat == wanted.pixelformat && (sameSize || !bestHas)) {
            best = i;
        }
    }
    mode_ = best;
    format.fmt.pix = modes_[mode_].promised;
    return 0;
}

int Device::request(v4l2_requestbuffers& wanted) {
    if (wanted.type != V4L2_BUF_TYPE_VIDEO_CAPTURE || wanted.memory != V4L2_MEMORY_MMAP) {
        return EINVAL;
    }
    if (streaming_ || (eventNow() == "busy" && wanted.count != 0)) {
        return EBUSY;
    }
    wanted.count = std::min(wanted.count, 4u);
    buffers_.assign(wanted.count, {});
    queue_.clear();
    return 0;
}

int Device::query(v4l2_buffer& buffer) const {
    if (buffer.index >= buffers_.size()) {
        return EINVAL;
    }
    buffer.length = modes_[mode_].promised.sizeimage;
    buffer.m.offset = buffer.index * 0x1000000u;
    return 0;
}

void* Device::map(std::size_t length, off_t offset) {
    const auto index = static_cast<std::size_t>(offset / 0x1000000);
    void* const data = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    buffers_.at(index).data = static_cast<char*>(data);
    return data;
}

int Device::queue(const v4l2_buffer& buffer) {
    if (buffer.index >= buffers_.size() || buffers_[buffer.index].queued || buffers_[buffer.index].data == nullptr) {
        return EINVAL;
    }
    buffers_[buffer.index].queued = true;
    queue_.push_back(buffer.index);
    return 0;
}

int Device::fetch(v4l2_buffer& buffer) {
    const std::string event = eventNow();
    if (!streaming_) {
        return EINVAL;
    }
    if (event == "gone") {
        return ENODEV;
    }
    if (event == "lost") {
        ++sent_;
        ++sequence_;
        return EIO;
    }
    if (queue_.empty()) {
        return EAGAIN;
    }
    buffer.index = queue_.front();
    queue_.pop_front();
    buffers_[buffer.index].queued = false;
    const Mode& mode = modes_[mode_];
    const std::size_t size = mode.promised.sizeimage;
    const std::size_t count = std::max<std::size_t>(mode.buffers.size() / size, 1);
    std::memcpy(buffers_[buffer.index].data, mode.buffers.data() + sent_ % count * size, size);
    buffer.flags = event == "damaged" ? V4L2_BUF_FLAG_ERROR : 0;
    buffer.bytesused = static_cast<std::uint32_t>(event == "short" ? size / 2 : size);
    buffer.length = static_cast<std::uint32_t>(size);
    sequence_ += event == "missing" ? 3 : 0;
    buffer.sequence = sequence_++;
    ++sent_;
    return 0;
}

int Device::turn(bool on) {
    streaming_ = on;
    if (!on) {
        queue_.clear();
        for (Buffer& buffer : buffers_) {
            buffer.queued = false;
        }
    }
    return 0;
}

int Device::answer(unsigned long request, void* record) {
    switch (request) {
        case VIDIOC_QUERYCAP: {
            auto& capability = *static_cast<v4l2_capability*>(record);
            std::memcpy(capability.card, "recorded buffers", sizeof "recorded buffers");
            capability.capabilities = V4L2_CAP_DEVICE_CAPS | capabilities_;
            capability.device_caps = capabilities_;
            return 0;
        }
        case VIDIOC_ENUM_FMT:
            return enumerateFormat(*static_cast<v4l2_fmtdesc*>(record));
        case VIDIOC_ENUM_FRAMESIZES:
            return enumerateSize(*static_cast<v4l2_frmsizeenum*>(record));
        case VIDIOC_G_FMT:
            static_cast<v4l2_format*>(record)->fmt.pix = modes_.at(mode_).promised;
            return 0;
        case VIDIOC_S_FMT:
            return choose(*static_cast<v4l2_format*>(record));
        case VIDIOC_REQBUFS:
            return this->request(*static_cast<v4l2_requestbuffers*>(record));
        case VIDIOC_QUERYBUF:
            return query(*static_cast<v4l2_buffer*>(record));
        case VIDIOC_QBUF:
            return queue(*static_cast<v4l2_buffer*>(record));
        case VIDIOC_DQBUF:
            return fetch(*static_cast<v4l2_buffer*>(record));
        case VIDIOC_STREAMON:
            return queue_.empty() ? EINVAL : turn(true);
        case VIDIOC_STREAMOFF:
            return turn(false);
        default:
            return ENOTTY;
    }
}

int Device::wait(pollfd& wanted, int timeout) {
    wanted.revents = 0;
    if (eventNow() == "silent") {
        usleep(static_cast<useconds_t>(timeout) * 1000);
        return 0;
    }
    usleep(4000);
    wanted.revents = POLLIN;
    return 1;
}

int descriptor = -1;

Device& device() {
    static Device only;
    return only;
}

bool isOurs(const char* path) {
    const char* const ours = std::getenv("KRO_V4L2_DEVICE");
    return ours != nullptr && std::strcmp(path, ours) == 0;
}

}  // namespace

extern "C" {

// The C library's own parameters have names that nobody else may use.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    static const auto real = next<int(const char*, int, ...)>("open");
    if (!isOurs(path)) {
        return real(path, flags, mode);
    }
    descriptor = real("/dev/null", O_RDWR);
    return descriptor;
}

int ioctl(int file, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void* const record = va_arg(arguments, void*);
    va_end(arguments);
    static const auto real = next<int(int, unsigned long, ...)>("ioctl");
    if (file < 0 || file != descriptor) {
        return real(file, request, record);
    }
    errno = device().answer(request, record);
    return errno == 0 ? 0 : -1;
}

int poll(pollfd* wanted, nfds_t count, int timeout) {
    static const auto real = next<int(pollfd*, nfds_t, int)>("poll");
    return count == 1 && wanted->fd >= 0 && wanted->fd == descriptor ? device().wait(*wanted, timeout)
                                                                     : real(wanted, count, timeout);
}

void* mmap(void* address, std::size_t length, int protection, int flags, int file, off_t offset) {
    static const auto real = next<void*(void*, std::size_t, int, int, int, off_t)>("mmap");
    return file >= 0 && file == descriptor ? device().map(length, offset)
                                           : real(address, length, protection, flags, file, offset);
}

int close(int file) {
    static const auto real = next<int(int)>("close");
    descriptor = file == descriptor ? -1 : descriptor;
    return real(file);
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
}  // extern "C"
