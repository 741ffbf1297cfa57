#pragma once

#include <array>
#include <string>

#include "pictures/picture.hpp"

namespace cli {

enum class FileKind { png, ppm, pgm, jpeg, bmp, tiff, raw };

struct FileType {
    FileKind kind;
    const char* name;
    std::array<const char*, 2> extensions;
    const char* holds;
    bool grey;
    bool colour;
    bool alpha;
    bool deep;
};

const std::array<FileType, 7>& fileTypes();

// By name ("tiff") or by a file name's extension; null where unknown.
const FileType* findFileType(const std::string& name);
const FileType* fileTypeOf(const std::string& path);
const FileType& requireFileType(const std::string& name);
std::string extensionList();

struct EncodeOptions {
    // From 0, which stores, to 12.
    int pngLevel = 1;
    int jpegQuality = 90;
};

// A whole file in memory. The channels are put into the order that the file wants.
Bytes encodePicture(Picture picture, const FileType& type, const EncodeOptions& options = {});

struct PictureHeader {
    FrameSize size;
    int channels = 0;
    uint32_t maximum = 0;
    uint64_t pages = 1;
};

// Grey or RGB, with the file's own samples from 0 to maximum.
struct DecodedPicture : PictureHeader {
    std::vector<uint16_t> samples;
};

// PNG, JPEG, TIFF, BMP, PPM or PGM, told apart by their first bytes.
DecodedPicture decodePicture(const Bytes& file, const std::string& name);

// A failure where a header promises a picture that takes more bytes than the file has, before memory is taken for it.
void requireHoldable(const std::string& name, const FrameSize& size, std::size_t leastBytes, std::size_t fileBytes);

}  // namespace cli
