#include "frames/container.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include "frames/npy_file.hpp"
#include "frames/samples.hpp"
#include "pictures/png_file.hpp"
#include "pictures/pnm_file.hpp"
#include "pictures/tiff_file.hpp"
#include "support/failure.hpp"

namespace cli {

namespace {

using namespace std::literals;

struct Magic {
    std::string_view bytes;
    Container container;
};

constexpr std::array<Magic, 8> magics{{{"P2"sv, Container::pgm},
                                       {"P5"sv, Container::pgm},
                                       {"\x89PNG\r\n\x1a\n"sv, Container::png},
                                       {"II*\0"sv, Container::tiff},
                                       {"MM\0*"sv, Container::tiff},
                                       {"II+\0"sv, Container::tiff},
                                       {"MM\0+"sv, Container::tiff},
                                       {"\x93NUMPY"sv, Container::npy}}};

// Raw frames may begin with any bytes, so a container is one only where its name says so too.
bool namedAsContainer(const std::string& path) {
    const std::string extension = foldName(std::filesystem::path(path).extension().string());
    constexpr std::array<std::string_view, 6> extensions{".pgm", ".pnm", ".png", ".tif", ".tiff", ".npy"};
    return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

Container containerOf(const InputFile& file) {
    std::array<uint8_t, 8> start{};
    const std::size_t count = file.readAt(0, start.data(), start.size());
    const Container container = containerIn(start.data(), count);
    if (container == Container::none) {
        throw Failure(file.shownName() + ": is no PGM, PNG, TIFF or NPY file, as its name says it is");
    }
    return container;
}

ByteSource sourceOf(const InputFile& file) {
    return {[&file](uint64_t at, uint8_t* target, std::size_t size) { return file.readAt(at, target, size); },
            *file.length()};
}

PictureHeader readHeader(const InputFile& file, Container container) {
    switch (container) {
        case Container::pgm:
            return readPnmHeader(file.readAll(), file.shownName());
        case Container::png:
            return readPngHeader(file.readAll(), file.shownName());
        case Container::tiff:
            return readTiffHeader(sourceOf(file), file.shownName());
        case Container::npy:
            return readNpyHeader(file);
        case Container::none:
            break;
    }
    return {};
}

DecodedPicture decode(const InputFile& file, Container container, uint64_t number) {
    switch (container) {
        case Container::pgm:
            return decodePnm(file.readAll(), file.shownName());
        case Container::png:
            return decodePng(file.readAll(), file.shownName());
        case Container::tiff:
            return decodeTiff(sourceOf(file), file.shownName(), number);
        case Container::npy:
            return decodeNpy(file, number);
        case Container::none:
            break;
    }
    return {};
}

void requireMosaic(const std::string& name, const PictureHeader& header) {
    if (header.channels != 1) {
        throw Failure(name +
                      ": holds a colour picture, but a mosaic has one channel (kro mosaic makes frames of pictures)");
    }
    requireFrameSize(header.size, name);
}

// What a header says already may be said again, but not otherwise.
void requireAgreement(const std::string& name, const FrameRequest& request, const PictureHeader& header) {
    const char* option = request.skip != 0     ? "--skip"
                         : request.stride != 0 ? "--stride"
                         : request.bigEndian   ? "--big-endian"
                                               : nullptr;
    if (option != nullptr) {
        throw UsageFailure(name + ": " + option + " belongs to raw frames, this file has a header of its own");
    }
    if (!request.sizeText.empty() && parseFrameSize(request.sizeText).text() != header.size.text()) {
        throw UsageFailure(name + ": --size " + request.sizeText + " contradicts the file, which is " +
                           header.size.text());
    }
}

}  // namespace

Container containerIn(const uint8_t* start, std::size_t count) {
    const std::string_view text(reinterpret_cast<const char*>(start), count);
    for (const Magic& magic : magics) {
        if (text.substr(0, magic.bytes.size()) == magic.bytes) {
            return magic.container;
        }
    }
    return Container::none;
}

const char* nameOf(Container container) {
    constexpr std::array<const char*, 5> names{"raw", "PGM", "PNG", "TIFF", "NPY"};
    return names[static_cast<std::size_t>(container)];
}

FrameLayout layoutOf(const InputFile& file, const FrameRequest& request) {
    const std::string& name = file.shownName();
    if (file.isStream() || !namedAsContainer(name)) {
        return inferLayout(name, request, file.length());
    }
    FrameLayout layout;
    layout.container = containerOf(file);
    const PictureHeader header = readHeader(file, layout.container);
    requireMosaic(name, header);
    requireAgreement(name, request, header);
    layout.size = header.size;
    layout.frames = header.pages;
    layout.format = &inferContained(name, request, header.maximum);
    layout.note = name + ": read as " + layout.text() + ", size and depth from the file" +
                  (request.formatName.empty() ? ", phase from its name" : "");
    return layout;
}

void readContained(const InputFile& file, const FrameLayout& layout, uint64_t number, Bytes& frame) {
    const DecodedPicture picture = decode(file, layout.container, number);
    requireMosaic(file.shownName(), picture);
    if (picture.size.text() != layout.size.text()) {
        throw Failure(file.shownName() + ": frame " + std::to_string(number) + " is " + picture.size.text() +
                      ", but the first is " + layout.size.text());
    }
    const uint32_t most = *std::max_element(picture.samples.begin(), picture.samples.end());
    if (most > layout.format->maximum()) {
        throw Failure(file.shownName() + ": samples reach " + std::to_string(most) + ", more than " +
                      layout.format->name + " holds");
    }
    frame = packSamples(picture.samples, layout);
}

}  // namespace cli
