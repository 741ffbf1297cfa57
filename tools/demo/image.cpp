#include "image.hpp"

#include <cstdio>
#include <exception>
#include <utility>

#include "frames/frame_reader.hpp"
#include "output/output_file.hpp"
#include "pictures/picture_file.hpp"
#include "support/failure.hpp"

namespace demo {

Image::Image(int imageWidth, int imageHeight, uint8_t value) : width(imageWidth), height(imageHeight) {
    samples.assign(offset(0, height), value);
}

std::size_t Image::offset(int column, int row) const {
    return (static_cast<std::size_t>(row) * static_cast<std::size_t>(width) + static_cast<std::size_t>(column)) * 3;
}

Image readImage(const std::string& path) {
    const cli::DecodedPicture decoded = cli::decodePicture(cli::InputFile(path).readAll(), path);
    Image image(decoded.size.width, decoded.size.height);
    const std::size_t channels = static_cast<std::size_t>(decoded.channels);
    for (std::size_t i = 0; i < image.samples.size(); i++) {
        const std::size_t from = channels == 1 ? i / 3 : i / 3 * channels + i % 3;
        image.samples[i] =
            static_cast<uint8_t>((decoded.samples[from] * 255u + decoded.maximum / 2) / decoded.maximum);
    }
    return image;
}

void writeImage(const std::string& path, const Image& image) {
    const cli::FileType* type = cli::fileTypeOf(path);
    if (type == nullptr) {
        throw cli::UsageFailure(path + ": a picture's name ends in .png or .ppm");
    }
    cli::Picture picture;
    picture.size = {image.width, image.height};
    picture.data = image.samples;
    cli::writeFile(path, cli::encodePicture(std::move(picture), *type), true);
}

Labelled parseLabelled(const std::string& argument) {
    const std::size_t equals = argument.find('=');
    return equals == std::string::npos ? Labelled{argument, argument}
                                       : Labelled{argument.substr(0, equals), argument.substr(equals + 1)};
}

int runTool(const char* name, const char* usage, int argumentCount, char** arguments,
            int (*body)(const std::vector<std::string>& arguments)) {
    const std::vector<std::string> given(arguments + 1, arguments + argumentCount);
    if (given.size() == 1 && (given[0] == "-h" || given[0] == "--help")) {
        std::printf("usage: %s %s\n", name, usage);
        return cli::exitOk;
    }
    try {
        return body(given);
    } catch (const cli::UsageFailure& failure) {
        std::fprintf(stderr, "%s: %s\nusage: %s %s\n", name, failure.what(), name, usage);
        return cli::exitUsage;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", name, failure.what());
        return cli::exitFailed;
    }
}

}  // namespace demo
