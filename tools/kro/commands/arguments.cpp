#include "commands/arguments.hpp"

#include <kro/kro.h>

#include <limits>

#include "commands/help_texts.hpp"
#include "pictures/png_file.hpp"
#include "support/scan.hpp"
#include "terminal/console.hpp"

namespace cli {

namespace {

constexpr const char* framesText = "Raw frames, or mosaics in PGM, PNG, TIFF or NPY files; - for standard input";

// The parser's own ranges speak of conversions and values.
std::function<std::string(const std::string&)> wholeNumber(int64_t least,
                                                           int64_t most = std::numeric_limits<int64_t>::max()) {
    return [=](const std::string& text) -> std::string {
        std::string_view rest = text;
        int64_t number = 0;
        if (takeNumber(rest, number) && rest.empty() && number >= least && number <= most) {
            return "";
        }
        const bool bounded = most != std::numeric_limits<int64_t>::max();
        return "expected a whole number " +
               (bounded ? "from " + std::to_string(least) + " to " + std::to_string(most)
                        : "of " + std::to_string(least) + " or more") +
               ", not '" + text + "'";
    };
}

void addRowOptions(CLI::App& command, uint64_t& stride, bool& bigEndian) {
    command.add_option("--stride", stride, "Bytes from row to row (no gaps, packed samples running on)")
        ->type_name("BYTES")
        ->check(wholeNumber(1, std::numeric_limits<int32_t>::max()));
    command.add_flag("--big-endian", bigEndian, "16-bit words have their high byte first");
}

void addFrameOptions(CLI::App& command, FrameRequest& frame, std::string& frames) {
    command
        .add_option("-f,--format", frame.formatName,
                    "Pixel format: any name that kro formats lists, four letters of V4L2 or a hex code")
        ->type_name("FORMAT");
    command.add_option("-s,--size", frame.sizeText, "Size of a frame")->type_name("WxH");
    command.add_option("--skip", frame.skip, "Bytes to pass over before the first frame, 0 or more")
        ->type_name("BYTES")
        ->check(wholeNumber(0));
    addRowOptions(command, frame.stride, frame.bigEndian);
    command.add_option("--frames,--frame", frames, "Frames to take, counted from 1: 3, 2-5 or 2- (all)")
        ->type_name("N[-M]");
}

void addAlgorithm(CLI::App& command, std::string& algorithm) {
    command.add_option("-a,--algorithm", algorithm, "nearest, bilinear, edge or fine (edge)")->type_name("NAME");
}

void addQuiet(CLI::App& command) {
    command.add_flag_callback(
        "-q,--quiet", [] { console::setQuiet(true); }, "Say warnings and errors only");
}

void addOutput(CLI::App& command, ConvertRequest& request) {
    command
        .add_option("-O,--output-format", request.outputFormat,
                    "What kro formats lists: RGB8, BGRa8, RGB8Planar, Mono8, RGB16 and others (what suits the file)")
        ->type_name("FORMAT");
    command.add_option("-o,--output", request.output, "Where the picture goes, see below")->type_name("OUT");
    command
        .add_option("--to", request.fileType,
                    "File type where OUT does not say it: png, jpg, ppm, pgm, bmp, tif, raw")
        ->type_name("TYPE");
    command.add_flag("--many", request.many, "Write more than 1000 pictures of one file");
}

void addRange(CLI::App& command, int& bits, int& black) {
    command.add_option("--bits", bits, "Significant bits of a sample, 1 to 16 (the format's)")
        ->type_name("N")
        ->check(wholeNumber(1, 16));
    command
        .add_option("--black", black,
                    "Subtract a pedestal first, 0 to 65535 in the samples' own units, as kro info says them (0)")
        ->type_name("N")
        ->check(wholeNumber(0, 65535));
}

void addDepth(CLI::App& command, ConvertRequest& request) {
    command.add_option("--depth", request.depth, "Bits of a sample in the picture, 8 or 16 (what -O has, else 8)")
        ->type_name("BITS")
        ->check([](const std::string& text) {
            return text == "8" || text == "16" ? "" : "expected 8 or 16, not '" + text + "'";
        });
    command.add_flag("--scale", request.scale, "With --depth 16: stretch samples to the full 16 bits");
    addRange(command, request.bits, request.black);
    command
        .add_option("--shift", request.shift,
                    "With --depth 16: shift samples right by 0 to 15 bits before the library")
        ->type_name("N")
        ->check(wholeNumber(0, 15));
}

void addFileOptions(CLI::App& command, ConvertRequest& request) {
    command.add_flag("--opaque", request.opaque, "Set alpha to opaque in raw files too, as in all others");
    command.add_option("--png-level", request.pngLevel, "PNG: 0 stores, 1 is fast, 12 the smallest (1)")
        ->type_name("N")
        ->check(wholeNumber(0, mostPngLevel));
    command
        .add_option("--quality", request.quality, "JPEG: 1 to 100; from 90 on with colour in full resolution (90)")
        ->type_name("N")
        ->check(wholeNumber(1, 100));
}

void addConvert(CLI::App& app, ConvertRequest& request) {
    CLI::App& command = *app.add_subcommand("convert", "Raw frames to pictures");
    command.add_option("FRAME", request.inputs, framesText)->required();
    addFrameOptions(command, request.frame, request.frames);
    addAlgorithm(command, request.algorithm);
    addOutput(command, request);
    addDepth(command, request);
    command.add_option("--wb", request.balance, "White balance of the picture: none, gray or R,G,B gains (none)")
        ->type_name("GAINS");
    command.add_option("--gamma", request.gamma, "Curve of the picture: none, srgb or a number such as 2.2 (none)")
        ->type_name("CURVE");
    addFileOptions(command, request);
    command
        .add_option("-j,--jobs,--threads", request.jobs,
                    "Threads, 1 to 1024, for many frames or parts of a large one (one a core)")
        ->type_name("N")
        ->check(wholeNumber(1, 1024));
    command.add_flag("--no-clobber", request.noClobber, "Do not replace files that exist");
    addQuiet(command);
    command.footer(convertExamples);
}

void addMosaic(CLI::App& app, MosaicRequest& request) {
    CLI::App& command = *app.add_subcommand("mosaic", "A picture to a raw frame, as a camera would have sent it");
    command
        .add_option("PICTURE", request.picture, "PNG, JPEG, TIFF, BMP, PPM or PGM picture, or - for standard input")
        ->required();
    command.add_option("-f,--format", request.format, "Pixel format of the frame, any that kro formats lists")
        ->type_name("FORMAT")
        ->required();
    addRowOptions(command, request.stride, request.bigEndian);
    command.add_option("-o,--output", request.output, "File, folder, or - for standard output")->type_name("OUT");
    command.add_flag("--no-clobber", request.noClobber, "Do not replace a file that exists");
    addQuiet(command);
    command.footer(mosaicExamples);
}

void addInfo(CLI::App& app, InfoRequest& request) {
    CLI::App& command = *app.add_subcommand("info", "What a frame is and what its samples are like");
    command.add_option("FRAME", request.inputs, framesText)->required();
    addFrameOptions(command, request.frame, request.frames);
    command.add_flag("--each", request.each, "Say all frames one by one, however many there are");
    addQuiet(command);
    command.footer(infoExamples);
}

void addGuess(CLI::App& app, GuessRequest& request) {
    CLI::App& command = *app.add_subcommand("guess", "What a raw file can be, when nobody knows");
    command.add_option("FILE", request.inputs, "Files of unknown size and format; - for standard input")->required();
    command.add_option("--sheet", request.sheet, "A picture of the six best answers, row by row from the best on")
        ->type_name("FILE.png");
    command.add_flag("--no-clobber", request.noClobber, "Do not replace a file that exists");
    addQuiet(command);
    command.footer(guessExamples);
}

void addShow(CLI::App& app, ShowRequest& request) {
    CLI::App& command = *app.add_subcommand("show", "Frames in the terminal or the desktop's viewer");
    command.add_option("FRAME", request.inputs, framesText)->required();
    addFrameOptions(command, request.frame, request.frames);
    addAlgorithm(command, request.algorithm);
    addRange(command, request.bits, request.black);
    command.add_option("--wb", request.balance, "White balance: none, gray or R,G,B gains (gray)")
        ->type_name("GAINS");
    command.add_option("--gamma", request.gamma, "Curve: none, srgb or a number such as 2.2 (srgb)")
        ->type_name("CURVE");
    command.add_flag("--plain", request.plain, "As the library gives it: no balance, no curve, no exposure");
    command.add_option("--in", request.graphics, "kitty, sixel or blocks (the best that the terminal answers to)")
        ->type_name("GRAPHICS");
    command.add_option("--columns", request.columns, "Characters to fill, 10 to 1000 (as wide as the terminal)")
        ->type_name("N")
        ->check(wholeNumber(10, 1000));
    command.add_flag("--viewer", request.viewer, "In the desktop's viewer (xdg-open) instead of the terminal");
    command.add_option("--most", request.most, "Frames on a contact sheet, 1 to 1000 (36)")
        ->type_name("N")
        ->check(wholeNumber(1, 1000));
    addQuiet(command);
    command.footer(showExamples);
}

}  // namespace

void describeCommands(CLI::App& app, Requests& requests) {
    app.set_version_flag("--version", "kro " + std::to_string(KRO_VERSION_MAJOR) + "." +
                                          std::to_string(KRO_VERSION_MINOR) + "." +
                                          std::to_string(KRO_VERSION_PATCH));
    // After the command's own name, other names are files like any.
    app.require_subcommand(0, 1);
    app.footer(mainExamples);
    addConvert(app, requests.convert);
    addShow(app, requests.show);
    addMosaic(app, requests.mosaic);
    app.add_subcommand("formats", "What goes in and what comes out")->footer("Example:\n  kro formats");
    addInfo(app, requests.info);
    addGuess(app, requests.guess);
    app.add_subcommand("selftest", "Whether the library gives the right bytes on this machine")
        ->footer(selftestExamples);
    app.add_subcommand("bench", "Measure the library's speed (kro-bench)")->footer(benchExamples);
    app.add_subcommand("help", "What a command does and which options it has")->footer(helpExamples);
}

}  // namespace cli
