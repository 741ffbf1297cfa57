#include <kro/kro.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <iostream>

#include "commands/bench.hpp"
#include "commands/convert.hpp"
#include "commands/formats.hpp"
#include "commands/info.hpp"
#include "commands/mosaic.hpp"
#include "output/output_file.hpp"
#include "support/failure.hpp"
#include "terminal/console.hpp"

namespace {

using namespace cli;

constexpr const char* mainExamples = R"(Examples:
  kro convert frame_1280x960_BayerRG8.raw -o frame.png
  kro convert capture.bin -f rggb12p -s 1280x960 -a bilinear -o capture.tif
  kro mosaic photo.png -f BayerGB10 -o frames/
  kro info frame_1280x960_BayerRG8.raw
  kro COMMAND --help says more of each.)";

constexpr const char* convertExamples = R"(Examples:
  kro convert outdoor_2592x1536_BayerGR8.raw -o outdoor.png
  kro convert capture.bin -f BayerRG12Packed -s 1280x960 -a bilinear -o capture.png
  kro convert capture.bin -f rggb10le -s 1280x960 --skip 512 --wb gray --gamma srgb -o look.png
  kro convert frames/*.raw -f BayerRG8 -s 1280x960 -o pictures/ --to ppm
  kro convert film_640x480_BayerRG8.raw --frames 10-20 -o 'film-{frame}.png'
  camera | kro convert - -f rggb8 -s 640x480 -O RGB8 -o - --to raw | player
  kro convert still_768x512_BayerRG12.raw --depth 16 --scale -o still.tif

Where pictures go:
  -o FILE.EXT    one file; frames of one input are numbered: FILE-0001.EXT
  -o FOLDER/     a picture for each input, named after it
  -o PATTERN     with {name} for the input's name, {frame} for the frame's number, or %04d for the picture's: 0001,
                 0002 and so on over all inputs
  -o -           standard output, of the type given by --to
A file appears whole or not at all. An input is never overwritten.

The bytes are the library's unless --wb, --gamma, --scale, --shift or --opaque is given. Alpha is 0 in BGRa8 and
RGBa8, as the library writes it. Sensor data has no white balance and no gamma: straight it looks green and dark.

--depth 16 takes the 16-bit paths: edge for every Bayer frame, bilinear for RG frames. Two limits are theirs: edge
holds interpolated values of RG frames to 4095, and bilinear means wrap around where samples pass 8191. Where a
frame goes beyond, a warning says so and which --shift helps.)";

constexpr const char* mosaicExamples = R"(Examples:
  kro mosaic photo.png -f BayerRG12Packed -o photo_640x480_BayerRG12Packed.raw
  kro mosaic photo.ppm -f grbg10le -o frames/
  kro mosaic photo.png -f rggb8 -o - | kro convert - -f rggb8 -s 640x480 -o back.png

With a folder the frame is named NAME_WIDTHxHEIGHT_FORMAT.raw, so that kro convert needs no more options.)";

constexpr const char* infoExamples = R"(Examples:
  kro info outdoor_2592x1536_BayerGR8.raw
  kro info capture.bin -f rggb10le -s 1280x960 --frames 1-3)";

constexpr const char* benchExamples = R"(Examples:
  kro bench --help
All arguments go to kro-bench, which must stand beside kro or in PATH.)";

void addFrameOptions(CLI::App& command, FrameRequest& frame, std::string& frames) {
    command.add_option("-f,--format", frame.formatName, "Pixel format: a PFNC name, a short name or a hex code")
        ->type_name("FORMAT");
    command.add_option("-s,--size", frame.sizeText, "Size of a frame")->type_name("WxH");
    command.add_option("--skip", frame.skip, "Bytes to pass over before the first frame")
        ->type_name("BYTES")
        ->check([](const std::string& text) { return std::string(text[0] == '-' ? "must not be negative" : ""); });
    command.add_option("--frames,--frame", frames, "Frames to take, counted from 1: 3, 2-5 or 2- (all)")
        ->type_name("N[-M]");
}

void addQuiet(CLI::App& command) {
    command.add_flag_callback(
        "-q,--quiet", [] { console::setQuiet(true); }, "Say warnings and errors only");
}

void addConvert(CLI::App& app, ConvertRequest& request) {
    CLI::App& command = *app.add_subcommand("convert", "Raw frames to pictures");
    command.add_option("FRAME", request.inputs, "Files of raw frames, or - for standard input")->required();
    addFrameOptions(command, request.frame, request.frames);
    command.add_option("-a,--algorithm", request.algorithm, "nearest, bilinear or edge (edge)")->type_name("NAME");
    command
        .add_option("-O,--output-format", request.outputFormat,
                    "BGR8, RGB8, BGRa8, RGBa8, RGB8Planar, BGR8Planar or Mono8 (what suits the file)")
        ->type_name("FORMAT");
    command.add_option("-o,--output", request.output, "Where the picture goes, see below")->type_name("OUT");
    command.add_option("--to", request.fileType, "File type where OUT does not say it: png, ppm, pgm, bmp, tif, raw")
        ->type_name("TYPE");
    command.add_flag("--many", request.many, "Write more than 1000 pictures of one file");
    command.add_option("--depth", request.depth, "Bits of a sample in the picture, 8 or 16 (8)")->type_name("BITS");
    command.add_flag("--scale", request.scale, "With --depth 16: stretch samples to the full 16 bits");
    command.add_option("--bits", request.bits, "With --depth 16: significant bits, where fewer than the format's")
        ->type_name("N")
        ->check(CLI::Range(1, 16).description("1..16"));
    command.add_option("--shift", request.shift, "With --depth 16: shift samples right before the library")
        ->type_name("N")
        ->check(CLI::Range(0, 15).description("0..15"));
    command.add_option("--wb", request.balance, "White balance of the picture: none, gray or R,G,B gains (none)")
        ->type_name("GAINS");
    command.add_option("--gamma", request.gamma, "Curve of the picture: none, srgb or a number such as 2.2 (none)")
        ->type_name("CURVE");
    command.add_flag("--opaque", request.opaque, "Set alpha to 255");
    command.add_option("-j,--jobs", request.jobs, "Threads (one a core)")
        ->type_name("N")
        ->check(CLI::Range(1, 1024).description("1..1024"));
    command.add_flag("--no-clobber", request.noClobber, "Do not replace files that exist");
    addQuiet(command);
    command.footer(convertExamples);
}

void addMosaic(CLI::App& app, MosaicRequest& request) {
    CLI::App& command = *app.add_subcommand("mosaic", "A picture to a raw frame, as a camera would have sent it");
    command.add_option("PICTURE", request.picture, "PNG, PPM or PGM of 8 or 16 bits, or - for standard input")
        ->required();
    command.add_option("-f,--format", request.format, "Pixel format of the frame, any that kro formats lists")
        ->type_name("FORMAT")
        ->required();
    command.add_option("-o,--output", request.output, "File, folder, or - for standard output")->type_name("OUT");
    command.add_flag("--no-clobber", request.noClobber, "Do not replace a file that exists");
    addQuiet(command);
    command.footer(mosaicExamples);
}

void addInfo(CLI::App& app, InfoRequest& request) {
    CLI::App& command = *app.add_subcommand("info", "What a frame is and what its samples are like");
    command.add_option("FRAME", request.inputs, "Files of raw frames, or - for standard input")->required();
    addFrameOptions(command, request.frame, request.frames);
    command.add_flag("--each", request.each, "Say all frames one by one, however many there are");
    addQuiet(command);
    command.footer(infoExamples);
}

struct Requests {
    ConvertRequest convert;
    MosaicRequest mosaic;
    InfoRequest info;
};

void describeApp(CLI::App& app, Requests& requests) {
    app.set_version_flag("--version", "kro " + std::to_string(KRO_VERSION_MAJOR) + "." +
                                          std::to_string(KRO_VERSION_MINOR) + "." +
                                          std::to_string(KRO_VERSION_PATCH));
    app.require_subcommand(1);
    app.footer(mainExamples);
    addConvert(app, requests.convert);
    addMosaic(app, requests.mosaic);
    app.add_subcommand("formats", "What goes in and what comes out")->footer("Example:\n  kro formats");
    addInfo(app, requests.info);
    app.add_subcommand("bench", "Measure the library's speed (kro-bench)")->footer(benchExamples);
}

int runCommand(const CLI::App& app, const Requests& requests) {
    if (app.got_subcommand("convert")) {
        return convert(requests.convert);
    }
    if (app.got_subcommand("mosaic")) {
        return mosaic(requests.mosaic);
    }
    if (app.got_subcommand("info")) {
        return info(requests.info);
    }
    std::fputs(formatTables().c_str(), stdout);
    return exitOk;
}

std::string commandName(const CLI::App& app) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    return chosen.empty() ? "kro" : "kro " + chosen.front()->get_name();
}

// CLI11's own answers are help texts and failures; the latter become one line like all others.
int answerParser(const CLI::App& app, const CLI::ParseError& answer) {
    if (answer.get_exit_code() == 0) {
        return app.exit(answer);
    }
    console::error(std::string(answer.what()) + " (see " + commandName(app) + " --help)");
    return exitUsage;
}

// What could not be printed is a failure, not a success.
int finishOutput(int result) {
    // The parser's answers go through std::cout, which hands everything straight to stdout.
    flushStandardOutput();
    return result;
}

// CLI11 would only say that some subcommand is required.
void requireKnownCommand(const CLI::App& app, const std::string& word) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    if (word.empty() || word[0] == '-' || std::find(names.begin(), names.end(), word) != names.end()) {
        return;
    }
    const std::string nearest = nearestName(word, names);
    throw UsageFailure("unknown command '" + word + "'" + (nearest.empty() ? "" : ", did you mean " + nearest + "?") +
                       " (see kro --help)");
}

int run(int count, char** arguments) {
    if (count > 1 && std::string(arguments[1]) == "bench") {
        becomeBench(arguments + 1);
    }
    CLI::App app{"kro: raw camera frames to pictures", "kro"};
    Requests requests;
    describeApp(app, requests);
    requireKnownCommand(app, count > 1 ? arguments[1] : "");
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& answer) {
        return finishOutput(answerParser(app, answer));
    }
    return finishOutput(runCommand(app, requests));
}

// As `cat` ends when nobody reads it any more; a caller that had us ignore the signal gets the message instead.
void endWithoutReader(void (*inherited)(int)) {
    if (inherited == SIG_IGN) {
        console::error("standard output: cannot be written: " + systemMessage(EPIPE));
        return;
    }
    std::signal(SIGPIPE, SIG_DFL);
    std::raise(SIGPIPE);
}

}  // namespace

int main(int count, char** arguments) {
    // A reader of a named pipe that goes away is a failure to write, not a reason to die.
    const auto whenReaderGone = std::signal(SIGPIPE, SIG_IGN);
    try {
        return run(count, arguments);
    } catch (const cli::ReaderGone&) {
        endWithoutReader(whenReaderGone);
    } catch (const cli::UsageFailure& failure) {
        cli::console::error(failure.what());
        return cli::exitUsage;
    } catch (const std::bad_alloc&) {
        cli::console::error("out of memory");
    } catch (const std::exception& failure) {
        cli::console::error(failure.what());
    }
    return cli::exitFailed;
}
