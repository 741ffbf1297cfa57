#include "pictures/picture_file.hpp"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "pictures/bmp_file.hpp"
#include "pictures/jpeg_file.hpp"
#include "pictures/png_file.hpp"
#include "pictures/pnm_file.hpp"
#include "pictures/tiff_file.hpp"
#include "support/failure.hpp"

namespace cli {

namespace {

using namespace std::literals;

constexpr std::array<FileType, 7> typeTable{{
    {FileKind::png,
     "png",
     {".png", ".png"},
     "grey or colour, with or without alpha, 8 or 16 bits",
     true,
     true,
     true,
     true},
    {FileKind::ppm, "ppm", {".ppm", ".pnm"}, "colour, 8 or 16 bits", false, true, false, true},
    {FileKind::pgm, "pgm", {".pgm", ".pgm"}, "grey, 8 or 16 bits", true, false, false, true},
    {FileKind::jpeg,
     "jpg",
     {".jpg", ".jpeg"},
     "grey or colour, 8 bits, not quite the same pixels: for a quick look",
     true,
     true,
     false,
     false},
    {FileKind::bmp, "bmp", {".bmp", ".bmp"}, "colour, with or without alpha, 8 bits", false, true, true, false},
    {FileKind::tiff,
     "tif",
     {".tif", ".tiff"},
     "grey or colour, with or without alpha, 8 or 16 bits",
     true,
     true,
     true,
     true},
    {FileKind::raw, "raw", {".raw", ".bin"}, "the library's bytes, without a header", true, true, true, true},
}};

const std::string picturesRead = "PNG, JPEG, TIFF, BMP, PPM or PGM";

Order fileOrder(const FileType& type, Order order) {
    const bool alpha = hasAlpha(order);
    switch (type.kind) {
        case FileKind::png:
        case FileKind::tiff:
            return order == Order::grey ? Order::grey : alpha ? Order::rgba : Order::rgb;
        case FileKind::ppm:
            return Order::rgb;
        case FileKind::bmp:
            return alpha ? Order::bgra : Order::bgr;
        case FileKind::pgm:
        case FileKind::jpeg:
        case FileKind::raw:
            break;
    }
    return order;
}

bool startsWith(const Bytes& file, std::string_view magic) {
    return file.size() >= magic.size() && std::equal(magic.begin(), magic.end(), file.begin(),
                                                     [](char a, uint8_t b) { return static_cast<uint8_t>(a) == b; });
}

}  // namespace

const std::array<FileType, 7>& fileTypes() { return typeTable; }

const FileType* findFileType(const std::string& name) {
    const std::string extension = foldName(name.substr(0, 1) == "." ? name : "." + name);
    for (const FileType& type : typeTable) {
        if (extension == type.extensions[0] || extension == type.extensions[1]) {
            return &type;
        }
    }
    return nullptr;
}

const FileType* fileTypeOf(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    return extension.empty() ? nullptr : findFileType(extension);
}

std::string extensionList() {
    std::string text;
    for (const FileType& type : typeTable) {
        text += (text.empty() ? "" : type.kind == FileKind::raw ? " or " : ", ") + std::string(type.name);
    }
    return text;
}

const FileType& requireFileType(const std::string& name) {
    if (const FileType* type = findFileType(name)) {
        return *type;
    }
    throw UsageFailure("unknown file type '" + name + "', expected " + extensionList());
}

Bytes encodePicture(Picture picture, const FileType& type, const EncodeOptions& options) {
    if (type.kind == FileKind::raw) {
        return std::move(picture.data);
    }
    const Order order = fileOrder(type, picture.order);
    Picture ready = reordered(std::move(picture), order);
    switch (type.kind) {
        case FileKind::png:
            return encodePng(std::move(ready), options.pngLevel);
        case FileKind::jpeg:
            return encodeJpeg(ready, options.jpegQuality);
        case FileKind::ppm:
        case FileKind::pgm:
            return encodePnm(ready, ready.maximum());
        case FileKind::bmp:
            return encodeBmp(ready);
        case FileKind::tiff:
            return encodeTiff(ready);
        case FileKind::raw:
            break;
    }
    return {};
}

void requireHoldable(const std::string& name, const FrameSize& size, std::size_t leastBytes, std::size_t fileBytes) {
    if (leastBytes > fileBytes) {
        throw Failure(name + ": damaged: its header promises " + size.text() + " pixels, more than its " +
                      std::to_string(fileBytes) + " bytes can hold");
    }
}

DecodedPicture decodePicture(const Bytes& file, const std::string& name) {
    if (file.empty()) {
        throw Failure(name + ": the file is empty, expected one of " + picturesRead);
    }
    if (startsWith(file, "\x89PNG\r\n\x1a\n"sv)) {
        return decodePng(file, name);
    }
    if (startsWith(file, "\xff\xd8\xff"sv)) {
        return decodeJpeg(file, name);
    }
    if (startsWith(file, "BM"sv)) {
        return decodeBmp(file, name);
    }
    for (const std::string_view magic : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv}) {
        if (startsWith(file, magic)) {
            return decodeTiff(sourceOf(file), name);
        }
    }
    for (const char* magic : {"P2", "P3", "P5", "P6"}) {
        if (startsWith(file, magic)) {
            return decodePnm(file, name);
        }
    }
    throw Failure(name + ": is no " + picturesRead + " picture");
}

}  // namespace cli
