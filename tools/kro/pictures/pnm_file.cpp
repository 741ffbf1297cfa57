#include "pictures/pnm_file.hpp"

#include <cctype>

#include "support/failure.hpp"

namespace cli {

namespace {

class PnmReader {
public:
    PnmReader(const Bytes& file, const std::string& name) : file_(file), name_(name) {}

    DecodedPicture read() {
        DecodedPicture picture;
        static_cast<PictureHeader&>(picture) = readHeader();
        picture.samples.resize(picture.size.samples() * static_cast<std::size_t>(picture.channels));
        isPlain() ? readPlain(picture) : readBinary(picture);
        return picture;
    }

    PictureHeader readHeader() {
        const char kind = static_cast<char>(file_[1]);
        at_ = 2;
        PictureHeader picture;
        picture.channels = kind == '3' || kind == '6' ? 3 : 1;
        const int64_t width = number(maxSide);
        const int64_t height = number(maxSide);
        if (width < 1 || height < 1) {
            damaged("a side is 0");
        }
        picture.size = {static_cast<int32_t>(width), static_cast<int32_t>(height)};
        picture.maximum = static_cast<uint32_t>(number(65535));
        if (picture.maximum == 0) {
            damaged("its maximum is 0");
        }
        const std::size_t count = picture.size.samples() * static_cast<std::size_t>(picture.channels);
        checkLength(count, isPlain() || picture.maximum > 255 ? 2 : 1, isPlain());
        return picture;
    }

private:
    static constexpr int64_t maxSide = 1 << 20;

    [[noreturn]] void damaged(const std::string& what) const {
        throw Failure(name_ + ": damaged PNM picture: " + what);
    }

    bool isPlain() const { return file_[1] < '4'; }

    void passSpace() {
        while (at_ < file_.size() && (std::isspace(file_[at_]) != 0 || file_[at_] == '#')) {
            if (file_[at_] == '#') {
                while (at_ < file_.size() && file_[at_] != '\n') {
                    at_++;
                }
            } else {
                at_++;
            }
        }
    }

    int64_t number(int64_t most) {
        passSpace();
        int64_t value = 0;
        const std::size_t start = at_;
        for (; at_ < file_.size() && std::isdigit(file_[at_]) != 0 && value <= most; at_++) {
            value = value * 10 + (file_[at_] - '0');
        }
        if (at_ == start) {
            damaged(at_ == file_.size() ? "the file ends too early" : "a number was expected");
        }
        if (value > most) {
            damaged("a number is above " + std::to_string(most));
        }
        return value;
    }

    // Before memory is taken for what a header merely claims.
    void checkLength(std::size_t samples, std::size_t bytesEach, bool plain) const {
        const std::size_t start = at_ + (plain ? 0 : 1);
        const std::size_t needed = plain ? samples * bytesEach - 1 : samples * bytesEach;
        if (start > file_.size() || file_.size() - start < needed) {
            damaged("the file ends too early");
        }
    }

    uint16_t checked(uint32_t sample, uint32_t maximum) const {
        if (sample > maximum) {
            damaged("a sample is above its maximum " + std::to_string(maximum));
        }
        return static_cast<uint16_t>(sample);
    }

    void readPlain(DecodedPicture& picture) {
        for (uint16_t& sample : picture.samples) {
            sample = checked(static_cast<uint32_t>(number(65535)), picture.maximum);
        }
    }

    void readBinary(DecodedPicture& picture) {
        at_++;
        const bool wide = picture.maximum > 255;
        for (uint16_t& sample : picture.samples) {
            uint32_t value = file_[at_++];
            if (wide) {
                value = value << 8 | file_[at_++];
            }
            sample = checked(value, picture.maximum);
        }
    }

    const Bytes& file_;
    const std::string& name_;
    std::size_t at_ = 0;
};

}  // namespace

Bytes encodePnm(const Picture& picture, uint32_t maximum) {
    const std::string header = std::string(picture.order == Order::grey ? "P5" : "P6") + "\n" +
                               std::to_string(picture.size.width) + " " + std::to_string(picture.size.height) + "\n" +
                               std::to_string(maximum) + "\n";
    Bytes file;
    file.reserve(header.size() + picture.data.size());
    file.insert(file.end(), header.begin(), header.end());
    file.insert(file.end(), picture.data.begin(), picture.data.end());
    if (picture.bits == 16) {
        swapWords(file.data() + header.size(), picture.data.size());
    }
    return file;
}

PictureHeader readPnmHeader(const Bytes& file, const std::string& name) { return PnmReader(file, name).readHeader(); }

DecodedPicture decodePnm(const Bytes& file, const std::string& name) { return PnmReader(file, name).read(); }

}  // namespace cli
