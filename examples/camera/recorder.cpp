#include "recorder.hpp"

#include <png.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <utility>

#include "modes.hpp"
#include "recorded_file.hpp"

namespace kro_camera {

namespace {

std::string timeNow() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y%m%d-%H%M%S", &parts);
    return text.data();
}

std::string padded(std::uint64_t number, std::size_t digits) {
    const std::string text = std::to_string(number);
    return std::string(digits > text.size() ? digits - text.size() : 0, '0') + text;
}

// The samples of each row, and zeros for what may lie behind the last row or not.
void writeFrame(WholeFile& file, const kro::Frame& frame) {
    const std::size_t samples = sampleBytes(frame);
    file.write(frame.data, samples);
    const std::vector<char> gap(frameBytes(frame) - samples);
    file.write(gap.data(), gap.size());
}

}  // namespace

Recorder::Recorder(const std::string& folder) : folder_(folder), began_(timeNow()) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(folder, ignored)) {
        throw Failure(folder + ": is no folder that recordings could go to");
    }
}

// Another program may have begun in the same second and the same folder.
std::string Recorder::nextStem() {
    std::string stem;
    std::error_code ignored;  // of a folder that is gone by now: no file can be made there either
    bool taken = true;
    while (taken) {
        stem = began_ + "-" + padded(++serial_, 2);
        taken = false;
        for (const auto& entry : std::filesystem::directory_iterator(folder_, ignored)) {
            taken = taken || entry.path().filename().string().find(stem) != std::string::npos;
        }
    }
    return (std::filesystem::path(folder_) / stem).lexically_normal().string();
}

void Recorder::startPictures() {
    pictureStem_ = nextStem();
    pictureCount_ = 0;
    pictures_ = true;
}

void Recorder::finishFile() {
    if (file_) {
        lastFile_ = file_->path();
        const std::unique_ptr<WholeFile> finished = std::move(file_);
        finished->finish();
    }
}

std::string Recorder::stopRaw() {
    raw_ = false;
    const std::uint64_t count = std::exchange(frames_, 0);
    finishFile();
    return count == 0 ? "" : counted(count, "frame") + " in " + lastFile_;
}

std::string Recorder::stopPictures() {
    pictures_ = false;
    return pictureCount_ == 0 ? "" : counted(pictureCount_, "picture") + " in " + pictureStem_ + "-*.png";
}

void Recorder::takeRaw(const kro::Frame& frame) {
    const std::string suffix = layoutSuffix(frame);
    if (file_ && suffix != suffix_) {
        finishFile();
        frames_ = 0;
    }
    if (!file_) {
        file_ = std::make_unique<WholeFile>(nextStem() + suffix + ".raw");
        suffix_ = suffix;
    }
    writeFrame(*file_, frame);
    ++frames_;
}

void Recorder::take(const kro::Frame& frame, kro::Algorithm algorithm) {
    try {
        if (raw_) {
            takeRaw(frame);
        }
        if (pictures_) {
            writePicture(pictureStem_ + "-" + padded(pictureCount_ + 1, 4) + ".png", frame, algorithm);
            ++pictureCount_;
        }
    } catch (const Failure&) {
        raw_ = false;
        pictures_ = false;
        file_.reset();
        frames_ = 0;
        throw;
    }
}

std::string Recorder::save(const kro::Frame& frame, kro::Algorithm algorithm) {
    const std::string stem = nextStem();
    WholeFile raw(stem + layoutSuffix(frame) + ".raw");
    writeFrame(raw, frame);
    writePicture(stem + ".png", frame, algorithm);
    raw.finish();
    return stem + ".png and the raw frame";
}

void Recorder::writePicture(const std::string& path, const kro::Frame& frame, kro::Algorithm algorithm) {
    const auto format = kro::PixelFormat::RGB8;
    pixels_.resize(static_cast<std::size_t>(kro::rowBytes(format, frame.width)) *
                   static_cast<std::size_t>(frame.height));
    kro::Options options;
    options.algorithm = algorithm;
    kro::convert(frame, {pixels_.data(), format}, options);

    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(frame.width);
    image.height = static_cast<png_uint_32>(frame.height);
    image.format = PNG_FORMAT_RGB;
    image.flags = PNG_IMAGE_FLAG_FAST;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    compressed_.resize(size);
    if (png_image_write_to_memory(&image, compressed_.data(), &size, 0, pixels_.data(), 0, nullptr) == 0) {
        throw Failure(path + ": cannot be made: " + image.message);
    }
    WholeFile file(path);
    file.write(compressed_.data(), size);
    file.finish();
}

}  // namespace kro_camera
