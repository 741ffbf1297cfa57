#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <new>

#include "pictures/tiff_file.hpp"
#include "pictures/tiff_io.hpp"
#include "support/failure.hpp"

namespace cli {

namespace {

// None of the compressions makes more than this of a byte, unless of pictures that show nothing.
constexpr std::size_t mostInflated = 10000;

struct Page {
    PictureHeader header;
    uint32_t samplesOfPixel = 1;
    uint16_t bits = 1;
    bool whiteIsZero = false;
};

class TiffReader {
public:
    TiffReader(const ByteSource& source, const std::string& name);

    PictureHeader header();
    DecodedPicture decode(uint64_t number);

private:
    [[noreturn]] void damaged(const char* what) const;
    [[noreturn]] void unread(const std::string& what) const;
    uint32_t field(uint32_t tag, bool wide) const;
    uint32_t photometric(const Page& page) const;
    uint64_t countPages();
    Page readPage(uint64_t number);
    void requirePages() const;
    void requireReadable(const Page& page) const;
    void takeRow(const Bytes& row, const Page& page, std::vector<uint16_t>& samples) const;

    const ByteSource& source_;
    const std::string& name_;
    TiffIo io_;
    Tiff tiff_;
};

TiffReader::TiffReader(const ByteSource& source, const std::string& name)
    : source_(source), name_(name), tiff_(nullptr, TIFFClose) {
    io_.read = source.read;
    io_.size = [&source] { return source.size; };
    requirePages();
    // Tables and strips are no larger than the file that they are in.
    constexpr uint64_t plenty = uint64_t{1} << 26;
    io_.mostMemory = std::max(plenty, source.size);
    tiff_ = openTiff(io_, "rm");
    if (!tiff_) {
        damaged("cannot be opened");
    }
}

// Where the header leads nowhere libtiff refuses the file without a word, as if memory were short.
void TiffReader::requirePages() const {
    std::array<uint8_t, 16> header{};
    source_.read(0, header.data(), header.size());
    const bool big = header[2] == '+' || header[3] == '+';
    const auto first = header.begin() + (big ? 8 : 4);
    if (std::all_of(first, first + (big ? 8 : 4), [](uint8_t byte) { return byte == 0; })) {
        damaged("it has no page");
    }
}

void TiffReader::damaged(const char* what) const {
    if (io_.outOfMemory) {
        throw std::bad_alloc();
    }
    throw Failure(name_ + ": damaged TIFF: " + (io_.message[0] == '\0' ? what : io_.message.data()));
}

void TiffReader::unread(const std::string& what) const {
    throw Failure(name_ + ": a TIFF with " + what +
                  " is not read, expected grey or RGB of 8 or 16 bits, in strips, with the channels side by side");
}

uint32_t TiffReader::field(uint32_t tag, bool wide) const {
    uint32_t value = 0;
    uint16_t narrow = 0;
    if (wide) {
        return TIFFGetField(tiff_.get(), tag, &value) == 1 ? value : 0;
    }
    return TIFFGetFieldDefaulted(tiff_.get(), tag, &narrow) == 1 ? narrow : 0;
}

// Where it is not said, which it must be, it is what nearly all files mean.
uint32_t TiffReader::photometric(const Page& page) const {
    uint16_t said = 0;
    if (TIFFGetField(tiff_.get(), TIFFTAG_PHOTOMETRIC, &said) == 1) {
        return said;
    }
    return page.samplesOfPixel < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB;
}

uint64_t TiffReader::countPages() {
    const tdir_t pages = TIFFNumberOfDirectories(tiff_.get());
    return std::max<uint64_t>(pages, 1);
}

void TiffReader::requireReadable(const Page& page) const {
    const uint32_t meaning = photometric(page);
    const bool grey = meaning == PHOTOMETRIC_MINISBLACK || meaning == PHOTOMETRIC_MINISWHITE;
    if (TIFFIsTiled(tiff_.get()) != 0) {
        unread("tiles");
    }
    if (page.bits != 8 && page.bits != 16) {
        unread(std::to_string(page.bits) + " bits");
    }
    if (field(TIFFTAG_SAMPLEFORMAT, false) != SAMPLEFORMAT_UINT) {
        unread("signed or floating-point samples");
    }
    if (!grey && (meaning != PHOTOMETRIC_RGB || page.samplesOfPixel < 3)) {
        unread("a palette or colours other than RGB");
    }
    if (page.samplesOfPixel > 1 && field(TIFFTAG_PLANARCONFIG, false) == PLANARCONFIG_SEPARATE) {
        unread("channels apart");
    }
    if (TIFFIsCODECConfigured(static_cast<uint16_t>(field(TIFFTAG_COMPRESSION, false))) == 0) {
        unread("compression " + std::to_string(field(TIFFTAG_COMPRESSION, false)));
    }
}

Page TiffReader::readPage(uint64_t number) {
    if (number > 1 && TIFFSetDirectory(tiff_.get(), static_cast<tdir_t>(number - 1)) != 1) {
        damaged("a page is missing");
    }
    Page page;
    const uint32_t width = field(TIFFTAG_IMAGEWIDTH, true);
    const uint32_t height = field(TIFFTAG_IMAGELENGTH, true);
    constexpr uint32_t most = std::numeric_limits<int32_t>::max();
    if (width == 0 || height == 0 || width > most || height > most) {
        damaged("a side is 0 or too large");
    }
    page.bits = static_cast<uint16_t>(field(TIFFTAG_BITSPERSAMPLE, false));
    page.samplesOfPixel = field(TIFFTAG_SAMPLESPERPIXEL, false);
    page.whiteIsZero = photometric(page) == PHOTOMETRIC_MINISWHITE;
    requireReadable(page);
    page.header.size = {static_cast<int32_t>(width), static_cast<int32_t>(height)};
    page.header.channels = photometric(page) == PHOTOMETRIC_RGB ? 3 : 1;
    page.header.maximum = (1u << page.bits) - 1;
    const std::size_t promised = page.header.size.samples() * page.samplesOfPixel * (page.bits / 8u);
    const bool plain = field(TIFFTAG_COMPRESSION, false) == COMPRESSION_NONE;
    requireHoldable(name_, page.header.size, plain ? promised : promised / mostInflated, source_.size);
    return page;
}

void TiffReader::takeRow(const Bytes& row, const Page& page, std::vector<uint16_t>& samples) const {
    const std::size_t width = static_cast<std::size_t>(page.header.size.width);
    const std::size_t channels = static_cast<std::size_t>(page.header.channels);
    for (std::size_t x = 0; x < width; x++) {
        for (std::size_t channel = 0; channel < channels; channel++) {
            const std::size_t at = x * page.samplesOfPixel + channel;
            uint16_t sample = row[at];
            if (page.bits == 16) {
                std::memcpy(&sample, &row[at * 2], sizeof sample);
            }
            samples.push_back(page.whiteIsZero ? static_cast<uint16_t>(page.header.maximum - sample) : sample);
        }
    }
}

PictureHeader TiffReader::header() {
    PictureHeader header = readPage(1).header;
    header.pages = countPages();
    return header;
}

DecodedPicture TiffReader::decode(uint64_t number) {
    const Page page = readPage(number);
    DecodedPicture picture;
    static_cast<PictureHeader&>(picture) = page.header;
    Bytes row(static_cast<std::size_t>(TIFFScanlineSize64(tiff_.get())));
    // The samples grow with the rows that are really there.
    for (int32_t y = 0; y < picture.size.height; y++) {
        if (TIFFReadScanline(tiff_.get(), row.data(), static_cast<uint32_t>(y), 0) != 1) {
            damaged("a row cannot be read");
        }
        takeRow(row, page, picture.samples);
    }
    return picture;
}

}  // namespace

PictureHeader readTiffHeader(const ByteSource& source, const std::string& name) {
    return TiffReader(source, name).header();
}

DecodedPicture decodeTiff(const ByteSource& source, const std::string& name, uint64_t page) {
    return TiffReader(source, name).decode(page);
}

}  // namespace cli
