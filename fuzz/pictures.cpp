// PNM, PNG, TIFF, BMP and JPEG files, read whole from memory.
#include "pictures/png_file.hpp"
#include "pictures/pnm_file.hpp"
#include "pictures/tiff_file.hpp"
#include "reading.hpp"

#include "frames/container.hpp"

namespace {

cli::PictureHeader headerOf(const cli::Bytes& file, cli::Container container) {
    const std::string name = "picture";
    return container == cli::Container::pgm   ? cli::readPnmHeader(file, name)
           : container == cli::Container::png ? cli::readPngHeader(file, name)
                                              : cli::readTiffHeader(cli::sourceOf(file), name);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const cli::Bytes file = fuzz::withGoodChecksums(cli::Bytes(data, data + size));
    cli::DecodedPicture picture;
    const bool read = fuzz::readOrRefuse([&] { picture = cli::decodePicture(file, "picture"); });
    if (read) {
        fuzz::requireWhole(picture);
    }
    const cli::Container container = cli::containerIn(file.data(), file.size());
    if (container == cli::Container::none || container == cli::Container::npy) {
        return 0;
    }
    cli::PictureHeader header;
    const bool headerRead = fuzz::readOrRefuse([&] { header = headerOf(file, container); });
    fuzz::require(headerRead || !read, "a picture is read whose header is refused");
    fuzz::require(!read || (header.size.text() == picture.size.text() && header.channels == picture.channels &&
                            header.maximum == picture.maximum),
                  "header and picture differ");
    for (uint64_t page = 2; headerRead && container == cli::Container::tiff && page <= header.pages && page < 5;
         ++page) {
        fuzz::readOrRefuse([&] { fuzz::requireWhole(cli::decodeTiff(cli::sourceOf(file), "picture", page)); });
    }
    return 0;
}
