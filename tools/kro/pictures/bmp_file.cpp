#include "pictures/bmp_file.hpp"

#include <kro/kro.h>

#include <limits>

#include "developing/library.hpp"
#include "support/failure.hpp"

namespace cli {

namespace {

constexpr uint32_t headerBytes = 14 + 40;

void put(Bytes& file, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; i++) {
        file.push_back(static_cast<uint8_t>(value >> (8 * i)));
    }
}

Bytes header(const Picture& picture, std::size_t pixelBytes) {
    Bytes file{'B', 'M'};
    put(file, static_cast<uint32_t>(headerBytes + pixelBytes), 4);
    put(file, 0, 4);
    put(file, headerBytes, 4);
    put(file, 40, 4);
    put(file, static_cast<uint32_t>(picture.size.width), 4);
    // A negative height says that the rows stand from top to bottom.
    put(file, static_cast<uint32_t>(-picture.size.height), 4);
    put(file, 1, 2);
    put(file, static_cast<uint32_t>(8 * channelCount(picture.order)), 2);
    put(file, 0, 4);
    put(file, static_cast<uint32_t>(pixelBytes), 4);
    for (int i = 0; i < 4; i++) {
        put(file, 0, 4);
    }
    return file;
}

// Rows of three-byte pixels grow to multiples of four bytes.
Bytes padRows(const Picture& picture) {
    const std::size_t height = static_cast<std::size_t>(picture.size.height);
    const std::size_t rowBytes = (picture.data.size() / height + 3) / 4 * 4;
    Bytes pixels(rowBytes * height);
    std::copy(picture.data.begin(), picture.data.end(), pixels.begin());
    const Handle handle;
    const KroImage image{picture.size.height, picture.size.width, KRO_BGR8, pixels.data()};
    checkStatus(kroBMPAdjust(handle.get(), &image), "bitmap rows");
    return pixels;
}

class BmpReader {
public:
    BmpReader(const Bytes& file, const std::string& name) : file_(file), name_(name) {}
    DecodedPicture read();

private:
    [[noreturn]] void damaged(const char* what) const { throw Failure(name_ + ": damaged BMP: " + what); }
    uint32_t number(std::size_t at, std::size_t bytes) const;
    void readHeader();
    void readPalette();
    void requireReadable() const;
    void takePixel(const uint8_t* pixel, std::vector<uint16_t>& samples) const;

    const Bytes& file_;
    const std::string& name_;
    DecodedPicture picture_;
    std::size_t pixelBytes_ = 0;
    std::size_t rowBytes_ = 0;
    std::size_t pixelsAt_ = 0;
    bool fromTop_ = false;
    // Blue, green, red and nothing for each value of 8 bits.
    Bytes palette_;
};

uint32_t BmpReader::number(std::size_t at, std::size_t bytes) const {
    if (at + bytes > file_.size()) {
        damaged("the file ends too early");
    }
    uint32_t value = 0;
    for (std::size_t i = 0; i < bytes; i++) {
        value |= static_cast<uint32_t>(file_[at + i]) << (8 * i);
    }
    return value;
}

void BmpReader::requireReadable() const {
    const uint32_t bits = number(28, 2);
    const uint32_t compression = number(30, 4);
    constexpr uint32_t none = 0;
    constexpr uint32_t masks = 3;
    // Masks that say what holds without them too: blue, green, red from the low byte up.
    const bool usual = compression == masks && bits == 32 && number(54, 4) == 0xFF0000 && number(58, 4) == 0xFF00 &&
                       number(62, 4) == 0xFF;
    if ((bits != 8 && bits != 24 && bits != 32) || (compression != none && !usual)) {
        throw Failure(name_ + ": a BMP of " + std::to_string(bits) + " bits with compression " +
                      std::to_string(compression) + " is not read, expected 8, 24 or 32 bits without compression");
    }
}

void BmpReader::readHeader() {
    pixelsAt_ = number(10, 4);
    if (number(14, 4) < 40) {
        damaged("its header is too short");
    }
    requireReadable();
    const int32_t width = static_cast<int32_t>(number(18, 4));
    const int64_t height = static_cast<int32_t>(number(22, 4));
    fromTop_ = height < 0;
    if (width <= 0 || height == 0 || height == std::numeric_limits<int32_t>::min()) {
        damaged("a side is 0 or negative");
    }
    picture_.size = {width, static_cast<int32_t>(fromTop_ ? -height : height)};
    picture_.maximum = 255;
    pixelBytes_ = number(28, 2) / 8;
    rowBytes_ = (static_cast<std::size_t>(width) * pixelBytes_ + 3) / 4 * 4;
    requireHoldable(name_, picture_.size, pixelsAt_ + rowBytes_ * static_cast<std::size_t>(picture_.size.height),
                    file_.size());
}

void BmpReader::readPalette() {
    picture_.channels = 3;
    if (pixelBytes_ != 1) {
        return;
    }
    const std::size_t at = 14 + number(14, 4);
    const std::size_t used = number(46, 4) == 0 ? 256 : number(46, 4);
    if (used > 256 || at + used * 4 > file_.size()) {
        damaged("its palette is cut off");
    }
    palette_.assign(&file_[at], &file_[at] + used * 4);
    palette_.resize(std::size_t{256} * 4);
    bool grey = true;
    for (std::size_t i = 0; i < palette_.size(); i += 4) {
        grey = grey && palette_[i] == palette_[i + 1] && palette_[i] == palette_[i + 2];
    }
    picture_.channels = grey ? 1 : 3;
}

void BmpReader::takePixel(const uint8_t* pixel, std::vector<uint16_t>& samples) const {
    const uint8_t* blue = pixelBytes_ == 1 ? &palette_[*pixel * std::size_t{4}] : pixel;
    if (picture_.channels == 1) {
        samples.push_back(*blue);
        return;
    }
    samples.insert(samples.end(), {blue[2], blue[1], blue[0]});
}

DecodedPicture BmpReader::read() {
    readHeader();
    readPalette();
    const std::size_t height = static_cast<std::size_t>(picture_.size.height);
    const std::size_t width = static_cast<std::size_t>(picture_.size.width);
    picture_.samples.reserve(width * height * static_cast<std::size_t>(picture_.channels));
    for (std::size_t y = 0; y < height; y++) {
        const uint8_t* row = &file_[pixelsAt_ + (fromTop_ ? y : height - 1 - y) * rowBytes_];
        for (std::size_t x = 0; x < width; x++) {
            takePixel(row + x * pixelBytes_, picture_.samples);
        }
    }
    return std::move(picture_);
}

}  // namespace

DecodedPicture decodeBmp(const Bytes& file, const std::string& name) { return BmpReader(file, name).read(); }

Bytes encodeBmp(const Picture& picture) {
    const Bytes pixels = hasAlpha(picture.order) ? picture.data : padRows(picture);
    if (pixels.size() > UINT32_MAX - headerBytes) {
        throw Failure("BMP cannot be made: it would pass 4 GiB");
    }
    Bytes file = header(picture, pixels.size());
    file.insert(file.end(), pixels.begin(), pixels.end());
    return file;
}

}  // namespace cli
