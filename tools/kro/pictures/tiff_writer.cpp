#include <algorithm>
#include <cstring>
#include <new>

#include "pictures/tiff_file.hpp"
#include "pictures/tiff_io.hpp"
#include "support/failure.hpp"

namespace cli {

namespace {

void describe(TIFF* tiff, const Picture& picture) {
    const int channels = channelCount(picture.order);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(picture.size.width));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(picture.size.height));
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, channels);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, picture.bits);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
    if (hasAlpha(picture.order)) {
        const uint16_t extra = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &extra);
        // Short of memory for it, libtiff says nothing and writes another value.
        uint16_t count = 0;
        const uint16_t* kept = nullptr;
        if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kept) != 1 || count != 1 || kept == nullptr ||
            *kept != extra) {
            throw std::bad_alloc();
        }
    }
}

bool writeRows(TIFF* tiff, const Picture& picture) {
    const std::size_t height = static_cast<std::size_t>(picture.size.height);
    const std::size_t rowBytes = picture.data.size() / height;
    // libtiff takes the row as writable, since it may have to swap its bytes.
    Bytes row(rowBytes);
    for (std::size_t y = 0; y < height; y++) {
        std::memcpy(row.data(), picture.data.data() + y * rowBytes, rowBytes);
        if (TIFFWriteScanline(tiff, row.data(), static_cast<uint32_t>(y), 0) < 0) {
            return false;
        }
    }
    return TIFFFlush(tiff) == 1;
}

std::size_t readMemory(const Bytes& file, uint64_t at, uint8_t* target, std::size_t size) {
    const std::size_t from = static_cast<std::size_t>(std::min<uint64_t>(at, file.size()));
    const std::size_t count = std::min(size, file.size() - from);
    std::memcpy(target, file.data() + from, count);
    return count;
}

void writeMemory(Bytes& file, uint64_t at, const uint8_t* source, std::size_t size) {
    const std::size_t from = static_cast<std::size_t>(at);
    file.resize(std::max(file.size(), from + size));
    std::memcpy(file.data() + from, source, size);
}

}  // namespace

ByteSource sourceOf(const Bytes& file) {
    return {[&file](uint64_t at, uint8_t* target, std::size_t size) { return readMemory(file, at, target, size); },
            file.size()};
}

Bytes encodeTiff(const Picture& picture) {
    Bytes file;
    TiffIo io;
    io.read = [&](uint64_t at, uint8_t* target, std::size_t size) { return readMemory(file, at, target, size); };
    io.write = [&](uint64_t at, const uint8_t* source, std::size_t size) { writeMemory(file, at, source, size); };
    io.size = [&] { return file.size(); };
    Tiff tiff = openTiff(io, "w");
    if (!tiff) {
        throw Failure(std::string("TIFF cannot be made: ") + io.message.data());
    }
    describe(tiff.get(), picture);
    const bool written = writeRows(tiff.get(), picture);
    tiff.reset();
    if (io.outOfMemory) {
        throw std::bad_alloc();
    }
    if (!written) {
        throw Failure("TIFF cannot be made: it would pass 4 GiB");
    }
    return file;
}

}  // namespace cli
