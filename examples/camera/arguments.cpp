#include "arguments.hpp"

#include <getopt.h>

#include <cmath>
#include <cstdlib>

namespace kro_camera {

const char* const helpText =
    R"(usage: kro-camera --aravis [ID] | --v4l2 DEVICE | --replay FILE...  [OPTION...]

Shows the frames of a camera as kro makes pictures of them, live.

Cameras:
      --aravis [ID]     GigE Vision or USB3 Vision, through Aravis; the first one without ID.
                        ID "simulated" needs no camera
      --v4l2 DEVICE     a device of Video4Linux that sends raw frames
      --replay FILE...  recordings of this program, or other files of raw frames, over and over
  -l, --list            what is there

Frames:
  -f, --format FORMAT   BayerRG8, BayerRG12p, SRGGB10P, Mono8 ...; the camera's first one without it
  -s, --size WxH        the camera's largest one without it
      --stride BYTES    from row to row; of files whose name does not say it
  -r, --rate N          frames a second, as far as the camera can be told
  -a, --algorithm NAME  nearest, bilinear, edge (the default) or fine
  -n, --frames N        ends after so many frames
      --timeout SECONDS ends when no frame has come for so long; 0: waits for ever (default 10)

Recordings:
      --record WHAT     raw, png or raw,png from the first frame on
  -o, --output FOLDER   where they go (default: here)

      --full-screen
  -h, --help

Keys: a algorithm, f F format, z Z size, r record raw frames, p record PNG files, s save this frame,
i figures on or off, h help, Enter full screen, q end.

Examples:
  kro-camera --aravis simulated
  kro-camera --aravis -f BayerRG12Packed -s 1280x960 -r 30
  kro-camera --v4l2 /dev/video0 -f SRGGB10P -s 1640x1232
  kro-camera --replay 20261121-230601-01_1640x1232_SRGGB10P_stride2080.raw
  kro-camera --replay x.bin -f SRGGB12P -s 1920x1080 --stride 2880
  kro-camera --aravis --record raw -n 100 -o recordings

Exit codes: 0, 1 (something failed), 2 (called wrongly).
)";

namespace {

struct NamedAlgorithm {
    kro::Algorithm algorithm;
    const char* name;
};
constexpr NamedAlgorithm namedAlgorithms[] = {{kro::Algorithm::nearest, "nearest"},
                                              {kro::Algorithm::bilinear, "bilinear"},
                                              {kro::Algorithm::edge, "edge"},
                                              {kro::Algorithm::fine, "fine"}};

double numberNamed(const std::string& option, const std::string& text, double least, double most) {
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !(number >= least && number <= most)) {
        throw UsageFailure("--" + option + " " + text + ": expected a number from " +
                           std::to_string(static_cast<long long>(least)) + " to " +
                           std::to_string(static_cast<long long>(most)));
    }
    return number;
}

double wholeNumberNamed(const std::string& option, const std::string& text, double least, double most) {
    const double number = numberNamed(option, text, least, most);
    if (std::floor(number) != number) {
        throw UsageFailure("--" + option + " " + text + ": expected a whole number");
    }
    return number;
}

void setRecordings(const std::string& text, Arguments& arguments) {
    arguments.recordRaw = text == "raw" || text == "raw,png" || text == "png,raw";
    arguments.recordPictures = text == "png" || text == "raw,png" || text == "png,raw";
    if (!arguments.recordRaw && !arguments.recordPictures) {
        throw UsageFailure("--record " + text + ": expected raw, png or raw,png");
    }
}

enum Long { aravis = 256, v4l2, replay, stride, timeout, record, fullScreen };

constexpr option options[] = {{"aravis", no_argument, nullptr, aravis},
                              {"v4l2", no_argument, nullptr, v4l2},
                              {"replay", no_argument, nullptr, replay},
                              {"list", no_argument, nullptr, 'l'},
                              {"format", required_argument, nullptr, 'f'},
                              {"size", required_argument, nullptr, 's'},
                              {"stride", required_argument, nullptr, stride},
                              {"rate", required_argument, nullptr, 'r'},
                              {"algorithm", required_argument, nullptr, 'a'},
                              {"frames", required_argument, nullptr, 'n'},
                              {"timeout", required_argument, nullptr, timeout},
                              {"record", required_argument, nullptr, record},
                              {"output", required_argument, nullptr, 'o'},
                              {"full-screen", no_argument, nullptr, fullScreen},
                              {"help", no_argument, nullptr, 'h'},
                              {nullptr, 0, nullptr, 0}};

void setSource(Source source, Arguments& arguments) {
    if (arguments.source) {
        throw UsageFailure("more than one of --aravis, --v4l2 and --replay, expected one");
    }
    arguments.source = source;
}

void setValue(int letter, const std::string& value, Arguments& arguments) {
    switch (letter) {
        case 'f':
            arguments.layout.format = formatNamed(value);
            break;
        case 's':
            arguments.layout.size = sizeNamed(value);
            break;
        case stride:
            arguments.layout.stride = static_cast<std::ptrdiff_t>(wholeNumberNamed("stride", value, 1, 1 << 30));
            break;
        case 'r':
            arguments.rate = numberNamed("rate", value, 0, 10000);
            break;
        case 'a':
            arguments.algorithm = algorithmNamed(value);
            break;
        case 'n':
            arguments.frames = static_cast<std::uint64_t>(wholeNumberNamed("frames", value, 1, 1e12));
            break;
        case timeout:
            arguments.timeout = numberNamed("timeout", value, 0, 1e6);
            break;
        case record:
            setRecordings(value, arguments);
            break;
        default:
            arguments.folder = value;
            break;
    }
}

void setOption(int letter, Arguments& arguments) {
    switch (letter) {
        case aravis:
            return setSource(Source::aravis, arguments);
        case v4l2:
            return setSource(Source::v4l2, arguments);
        case replay:
            return setSource(Source::replay, arguments);
        case 'l':
            arguments.list = true;
            return;
        case 'h':
            arguments.help = true;
            return;
        case fullScreen:
            arguments.fullScreen = true;
            return;
        default:
            return setValue(letter, optarg, arguments);
    }
}

// Behind one letter several may follow in the same word.
std::string unknownOption(char** values) {
    const std::string word = values[optind - 1];
    return optopt == 0 || word.rfind("--", 0) == 0 ? word : std::string("-") + static_cast<char>(optopt);
}

void requireGood(const Arguments& arguments) {
    if (arguments.help || arguments.list) {
        return;
    }
    if (!arguments.source) {
        throw UsageFailure("no camera, expected --aravis, --v4l2 DEVICE or --replay FILE");
    }
    const std::size_t count = arguments.what.size();
    if (*arguments.source == Source::aravis && count > 1) {
        throw UsageFailure("'" + arguments.what[1] + "': expected one ID behind --aravis at most");
    }
    if (*arguments.source == Source::v4l2 && count != 1) {
        throw UsageFailure(std::to_string(count) + " devices behind --v4l2, expected one, such as /dev/video0");
    }
    if (*arguments.source == Source::replay && count == 0) {
        throw UsageFailure("no file behind --replay, expected one or more");
    }
    if (*arguments.source != Source::replay && arguments.layout.stride != 0) {
        throw UsageFailure("--stride is for --replay: cameras say it themselves");
    }
}

}  // namespace

kro::Algorithm algorithmNamed(const std::string& name) {
    for (const NamedAlgorithm& named : namedAlgorithms) {
        if (name == named.name) {
            return named.algorithm;
        }
    }
    throw UsageFailure("algorithm '" + name + "': expected nearest, bilinear, edge or fine");
}

std::vector<kro::Algorithm> algorithms() {
    std::vector<kro::Algorithm> all;
    for (const NamedAlgorithm& named : namedAlgorithms) {
        all.push_back(named.algorithm);
    }
    return all;
}

const char* textOf(kro::Algorithm algorithm) {
    for (const NamedAlgorithm& named : namedAlgorithms) {
        if (named.algorithm == algorithm) {
            return named.name;
        }
    }
    return "?";
}

Arguments parseArguments(int count, char** values) {
    Arguments arguments;
    opterr = 0;
    for (;;) {
        const int letter = getopt_long(count, values, ":lf:s:r:a:n:o:h", options, nullptr);
        if (letter == -1) {
            break;
        }
        if (letter == ':') {
            throw UsageFailure(std::string(values[optind - 1]) + ": expected a value behind it");
        }
        if (letter == '?') {
            throw UsageFailure("'" + unknownOption(values) + "': no such option");
        }
        setOption(letter, arguments);
    }
    arguments.what.assign(values + optind, values + count);
    requireGood(arguments);
    return arguments;
}

}  // namespace kro_camera
