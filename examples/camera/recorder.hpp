// Writes frames as they came, and as pictures.
#pragma once

#include <cstdint>
#include <kro/kro.hpp>
#include <memory>
#include <string>
#include <vector>

#include "whole_file.hpp"

namespace kro_camera {

class Recorder {
public:
    // Files of all recordings begin with date and time of now, then a number: 20261121-230601-01.
    explicit Recorder(const std::string& folder);

    bool recordsRaw() const { return raw_; }
    bool recordsPictures() const { return pictures_; }
    void startRaw() { raw_ = true; }
    void startPictures();
    // Both say, in words, what there is now; empty where nothing was recorded. Failures end the recording.
    std::string stopRaw();
    std::string stopPictures();

    // What is being recorded takes this frame. A frame of another kind than the one before begins another file.
    void take(const kro::Frame& frame, kro::Algorithm algorithm);
    // This frame alone, raw and as a picture.
    std::string save(const kro::Frame& frame, kro::Algorithm algorithm);

    // Of the file and the pictures that are being written.
    std::uint64_t rawCount() const { return frames_; }
    std::uint64_t pictureCount() const { return pictureCount_; }

private:
    std::string nextStem();
    void takeRaw(const kro::Frame& frame);
    void finishFile();
    void writePicture(const std::string& path, const kro::Frame& frame, kro::Algorithm algorithm);

    std::string folder_;
    std::string began_;
    unsigned serial_ = 0;
    bool raw_ = false;
    bool pictures_ = false;
    std::unique_ptr<WholeFile> file_;
    std::string suffix_;
    std::string lastFile_;
    std::string pictureStem_;
    std::uint64_t frames_ = 0;  // of this raw recording
    std::uint64_t pictureCount_ = 0;
    std::vector<std::uint8_t> pixels_;
    std::vector<std::uint8_t> compressed_;
};

}  // namespace kro_camera
