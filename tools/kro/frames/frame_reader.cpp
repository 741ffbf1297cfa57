#include "frames/frame_reader.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "frames/container.hpp"
#include "frames/frame_count.hpp"
#include "frames/length_advice.hpp"
#include "support/failure.hpp"
#include "support/scan.hpp"

namespace cli {

namespace {

Descriptor openForReading(const std::string& path) {
    const int descriptor = path == standardStream ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        throw Failure(path + ": cannot be read: " + systemMessage(errno));
    }
    return Descriptor(descriptor);
}

}  // namespace

FrameRange parseFrameRange(const std::string& text) {
    std::string_view rest = text;
    int64_t first = 0;
    bool good = takeNumber(rest, first);
    int64_t last = first;
    if (takeWord(rest, "-")) {
        last = std::numeric_limits<int64_t>::max();
        good = good && (rest.empty() || takeNumber(rest, last));
    }
    if (!good || !rest.empty()) {
        throw UsageFailure("bad frames '" + text + "', expected a number such as 3 or a range such as 2-5");
    }
    if (first == 0 || last < first) {
        throw UsageFailure("bad frames '" + text + "', frames count from 1 and go upwards");
    }
    return {static_cast<uint64_t>(first), static_cast<uint64_t>(last), true};
}

Descriptor::~Descriptor() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

int Descriptor::release() {
    const int descriptor = descriptor_;
    descriptor_ = -1;
    return descriptor;
}

InputFile::InputFile(const std::string& path)
    : shownName_(path == standardStream ? "standard input" : path), descriptor_(openForReading(path)) {
    struct stat status {};
    if (fstat(descriptor_.get(), &status) != 0) {
        throw Failure(shownName_ + ": cannot be read: " + systemMessage(errno));
    }
    id_ = {status.st_dev, status.st_ino};
    if (S_ISDIR(status.st_mode)) {
        throw Failure(shownName_ + ": is a directory, expected a file");
    }
    if (path == standardStream && isatty(descriptor_.get()) == 1) {
        throw UsageFailure("standard input is a terminal, expected a file or a pipe");
    }
    // Standard input redirected from a file may stand anywhere in it, so it is read on from there as a pipe is.
    if (S_ISREG(status.st_mode) && path != standardStream) {
        length_ = static_cast<uint64_t>(status.st_size);
    }
}

template <typename Read>
std::size_t InputFile::fill(uint8_t* target, std::size_t size, Read&& read) const {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = read(target + done, size - done, done);
        if (count < 0 && errno != EINTR) {
            throw Failure(shownName_ + ": cannot be read: " + systemMessage(errno));
        }
        if (count == 0) {
            break;
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return done;
}

std::size_t InputFile::readAt(uint64_t offset, uint8_t* target, std::size_t size) const {
    return fill(target, size, [&](uint8_t* place, std::size_t left, std::size_t done) {
        return pread(descriptor_.get(), place, left, static_cast<off_t>(offset + done));
    });
}

std::size_t InputFile::readNext(uint8_t* target, std::size_t size) const {
    return fill(target, size,
                [&](uint8_t* place, std::size_t left, std::size_t) { return read(descriptor_.get(), place, left); });
}

Bytes InputFile::readAll() const {
    if (length_) {
        Bytes all(static_cast<std::size_t>(*length_));
        all.resize(readAt(0, all.data(), all.size()));
        return all;
    }
    constexpr std::size_t step = std::size_t{1} << 20;
    Bytes all;
    std::size_t got = 0;
    do {
        const std::size_t before = all.size();
        all.resize(before + step);
        got = readNext(all.data() + before, step);
        all.resize(before + got);
    } while (got == step);
    return all;
}

FrameRange framesInFile(const InputFile& file, const FrameLayout& layout, const FrameRange& range) {
    const uint64_t count = layout.container == Container::none
                               ? countFrames(file.shownName(), *file.length(), layout, range.chosen)
                               : layout.frames;
    const bool toTheEnd = range.last == FrameRange{}.last;
    if (range.first > count || (!toTheEnd && range.last > count)) {
        throw Failure(file.shownName() + ": has no frame " +
                      std::to_string(range.first > count ? range.first : range.last) + ", it holds " +
                      framesText(count));
    }
    return {range.first, toTheEnd ? count : range.last, range.chosen};
}

void readFrame(const InputFile& file, const FrameLayout& layout, uint64_t number, Bytes& frame) {
    if (layout.container != Container::none) {
        readContained(file, layout, number, frame);
        return;
    }
    frame.resize(layout.bytes());
    const std::size_t got = file.readAt(layout.skip + (number - 1) * layout.bytes(), frame.data(), frame.size());
    if (got < layout.leastBytes()) {
        throw Failure(file.shownName() + ": ended after " + std::to_string(got) + " of the " +
                      std::to_string(frame.size()) + " bytes of frame " + std::to_string(number));
    }
}

FrameStream::FrameStream(const InputFile& file, const FrameLayout& layout, const FrameRange& range)
    : file_(file), layout_(layout), range_(range) {
    skipHeader();
}

void FrameStream::skipHeader() {
    Bytes passed(std::min<uint64_t>(layout_.skip, uint64_t{1} << 20));
    for (uint64_t left = layout_.skip; left > 0;) {
        const std::size_t step = static_cast<std::size_t>(std::min<uint64_t>(left, passed.size()));
        if (file_.readNext(passed.data(), step) != step) {
            throw Failure(file_.shownName() + ": ended within the " + std::to_string(layout_.skip) +
                          " bytes of --skip");
        }
        left -= step;
    }
}

// A first frame takes memory as it comes, since a wrong size may ask for far more than will ever arrive.
std::size_t FrameStream::fillFrame(Bytes& frame) const {
    std::size_t got = 0;
    for (std::size_t step = std::max(frame.capacity(), std::size_t{1} << 24);; step *= 2) {
        frame.resize(std::min(step, layout_.bytes()));
        got += file_.readNext(frame.data() + got, frame.size() - got);
        if (got != frame.size() && got >= layout_.leastBytes()) {
            frame.resize(layout_.bytes());
        }
        if (got != frame.size() || got == layout_.bytes()) {
            return got;
        }
    }
}

bool FrameStream::next(Bytes& frame) {
    do {
        if (number_ >= range_.last || ended_) {
            return false;
        }
        const std::size_t got = fillFrame(frame);
        ended_ = got < layout_.leastBytes();
        leftOver_ = ended_ ? got : 0;
        number_ += ended_ ? 0 : 1;
    } while (ended_ || number_ < range_.first);
    return true;
}

void FrameStream::requireGoodEnd() const {
    const std::string name = file_.shownName() + ": ";
    if (ended_ && number_ == 0 && leftOver_ == 0) {
        throw Failure(name + "is empty, but " + needText(layout_) + " bytes");
    }
    if (leftOver_ != 0) {
        const std::string rows = number_ == 0 ? "" : strideAdvice(layout_, number_ * layout_.bytes() + leftOver_);
        throw Failure(name + "ended after " + std::to_string(leftOver_) + " bytes of frame " +
                      std::to_string(number_ + 1) + ", but " + needText(layout_) +
                      (number_ == 0 ? "" : "; " + framesText(number_) + " came whole before") +
                      (rows.empty() ? "" : " (" + rows + ")"));
    }
    if (ended_ && (number_ < range_.first || range_.last != FrameRange{}.last)) {
        throw Failure(name + "has no frame " + std::to_string(std::max(range_.first, number_ + 1)) + ", it holds " +
                      framesText(number_));
    }
}

}  // namespace cli
