#include "commands/mosaic.hpp"

#include <filesystem>

#include "frames/samples.hpp"
#include "output/output_file.hpp"
#include "output/output_names.hpp"
#include "pictures/pnm_file.hpp"
#include "support/failure.hpp"
#include "terminal/console.hpp"

namespace cli {

namespace {

// Scaled to the format's whole range and rounded to the nearest.
uint16_t scaled(uint32_t sample, uint32_t maximum, const InputFormat& format) {
    return static_cast<uint16_t>((static_cast<uint64_t>(sample) * format.maximum() + maximum / 2) / maximum);
}

uint32_t greyOf(const uint16_t* pixel, int channels) {
    if (channels == 1) {
        return pixel[0];
    }
    // The weights of the library's own luma.
    return (77u * pixel[0] + 150u * pixel[1] + 29u * pixel[2] + 128u) >> 8;
}

// Through a colour filter a site sees one of the three colours.
int colourAt(Phase phase, int32_t row, int32_t column) {
    const RedSite red = redSite(phase);
    const bool redRow = (row & 1) == red.row;
    const bool redColumn = (column & 1) == red.column;
    return redRow == redColumn ? (redRow ? 0 : 2) : 1;
}

uint32_t siteValue(const DecodedPicture& picture, const InputFormat& format, int32_t row, int32_t column) {
    const std::size_t at = static_cast<std::size_t>(row) * static_cast<std::size_t>(picture.size.width) +
                           static_cast<std::size_t>(column);
    const uint16_t* pixel = &picture.samples[at * static_cast<std::size_t>(picture.channels)];
    if (!format.isBayer() || picture.channels == 1) {
        return greyOf(pixel, picture.channels);
    }
    return pixel[colourAt(format.phase, row, column)];
}

Samples takeSites(const DecodedPicture& picture, const InputFormat& format) {
    Samples samples;
    samples.reserve(picture.size.samples());
    for (int32_t row = 0; row < picture.size.height; row++) {
        for (int32_t column = 0; column < picture.size.width; column++) {
            samples.push_back(scaled(siteValue(picture, format, row, column), picture.maximum, format));
        }
    }
    return samples;
}

// A folder gets a name from which size and format are found again.
std::string targetName(const MosaicRequest& request, const FrameLayout& layout) {
    if (!meansFolder(request.output)) {
        return request.output;
    }
    makeFolder(request.output);
    const std::string name = stemOf(request.picture) + "_" + layout.size.text() + "_" + layout.format->name +
                             (layout.bigEndian ? "BE" : "") + ".raw";
    return (std::filesystem::path(request.output) / name).string();
}

bool canHoldFrame(const FileType& type) {
    return type.kind == FileKind::raw || type.kind == FileKind::pgm || type.kind == FileKind::png ||
           type.kind == FileKind::tiff;
}

void requireOutput(const MosaicRequest& request) {
    if (request.output.empty()) {
        throw UsageFailure("say where the frame goes: -o frame.raw, -o FOLDER/ or -o -");
    }
    if (request.output == standardStream) {
        refuseTerminal();
    }
    const FileType* type = fileTypeOf(request.output);
    if (type != nullptr && !canHoldFrame(*type)) {
        throw UsageFailure("-o " + request.output + ": a " + type->name +
                           " file cannot hold a mosaic; raw, pgm, png and tif files can");
    }
}

// Raw, or as the one channel of a picture file, from which kro convert reads it as well.
Bytes encodeFrame(const Samples& samples, const FrameLayout& layout, const FileType* type) {
    if (type == nullptr || type->kind == FileKind::raw) {
        return packSamples(samples, layout);
    }
    if (layout.stride != 0 || layout.bigEndian) {
        throw UsageFailure(std::string("--stride and --big-endian belong to raw frames, not to ") + type->name);
    }
    const bool bytes = layout.format->bits == 8;
    Picture picture{layout.size, Order::grey, false, bytes ? 8 : 16, {}};
    FrameLayout plain;
    plain.size = layout.size;
    plain.format = findInputFormat(layout.format->phase, layout.format->bits, bytes ? Packing::byte : Packing::word);
    picture.data = packSamples(samples, plain);
    return type->kind == FileKind::pgm ? encodePnm(picture, layout.format->maximum())
                                       : encodePicture(std::move(picture), *type);
}

FrameLayout layoutOf(const MosaicRequest& request, const NamedInput& input, const FrameSize& size) {
    FrameLayout layout;
    layout.size = size;
    layout.format = input.format;
    layout.stride = static_cast<std::size_t>(request.stride);
    layout.bigEndian = input.bigEndian || request.bigEndian;
    requireGoodRows(request.picture, layout);
    return layout;
}

void putFrame(const MosaicRequest& request, const std::string& target, const FileId& input, const Bytes& frame) {
    guardAgainstInterrupts();
    if (target == standardStream) {
        writeStandardOutput(frame);
        return;
    }
    checkTarget(target, {input}, !request.noClobber);
    writeFile(target, frame, !request.noClobber);
}

}  // namespace

int mosaic(const MosaicRequest& request) {
    const NamedInput input = requireInputFormat(request.format);
    requireOutput(request);
    const InputFile file(request.picture);
    const DecodedPicture picture = decodePicture(file.readAll(), file.shownName());
    requireFrameSize(picture.size, file.shownName());
    const FrameLayout layout = layoutOf(request, input, picture.size);
    const std::string target = targetName(request, layout);
    putFrame(request, target, file.id(), encodeFrame(takeSites(picture, *layout.format), layout, fileTypeOf(target)));
    console::note((target == standardStream ? "standard output" : target) + ": " + layout.text());
    return exitOk;
}

}  // namespace cli
