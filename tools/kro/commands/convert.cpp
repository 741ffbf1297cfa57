#include "commands/convert.hpp"

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <set>
#include <thread>

#include "commands/each_input.hpp"
#include "developing/developer.hpp"
#include "guess/hint.hpp"
#include "output/output_file.hpp"
#include "output/output_names.hpp"
#include "support/failure.hpp"
#include "support/worker_pool.hpp"
#include "terminal/console.hpp"

namespace cli {

namespace {

// One frame of a file, or all frames of a pipe, whose number is not known until it ends.
struct Unit {
    std::string input;
    FrameLayout layout;
    const OutputFormat* output = nullptr;
    PictureName name;
    // Whether its input holds several frames, so that their names need numbers.
    bool numbered = false;
    std::string target;
    std::shared_ptr<InputFile> stream;
};

// A wrong size makes thousands of pictures of one file; more than these are written only where that is wanted.
constexpr uint64_t mostUnasked = 1000;

// Numbers of one length sort as text does. What comes out of a pipe without end is expected to pass four digits.
constexpr int digitsOfEndless = 6;

int digitsOf(uint64_t number) { return std::max(4, static_cast<int>(std::to_string(number).size())); }

DevelopOptions developOptions(const ConvertRequest& request) {
    DevelopOptions options;
    options.algorithm = parseAlgorithm(request.algorithm);
    options.output = request.outputFormat.empty() ? nullptr : &requireOutputFormat(request.outputFormat);
    options.depth = request.depth != 0 ? request.depth : options.output != nullptr ? options.output->bits : 8;
    options.scale = request.scale;
    options.black = static_cast<uint32_t>(request.black);
    options.shift = request.shift;
    options.bits = request.bits == 0 ? std::nullopt : std::optional<int>(request.bits);
    parseBalance(request.balance, options.tone);
    parseGamma(request.gamma, options.tone);
    return options;
}

void requireDepthOptions(const ConvertRequest& request, const DevelopOptions& options) {
    if (options.depth == 8 && (request.scale || request.shift != 0)) {
        throw UsageFailure("--scale and --shift belong to --depth 16");
    }
    if (options.output != nullptr && options.output->bits != options.depth) {
        throw UsageFailure("--depth " + std::to_string(options.depth) + " contradicts --output-format " +
                           options.output->name + ", which has " + std::to_string(options.output->bits) + " bits");
    }
}

const OutputFormat& defaultOutput(const FileType& type, const InputFormat& format, int depth) {
    const bool deep = depth == 16;
    if (!type.colour || (!format.isBayer() && type.grey)) {
        return outputFormat(deep ? KRO_MONO16 : KRO_MONO8);
    }
    if (type.kind == FileKind::raw || type.kind == FileKind::bmp) {
        return outputFormat(deep ? KRO_BGR16 : KRO_BGR8);
    }
    return outputFormat(deep ? KRO_RGB16 : KRO_RGB8);
}

void requireRoom(const FileType& type, const OutputFormat& output) {
    const std::string cannot =
        std::string("a ") + type.name + " file cannot hold " + output.name + ", it holds " + type.holds;
    if ((!type.colour && output.order != Order::grey) || (hasAlpha(output.order) && !type.alpha)) {
        throw UsageFailure(cannot);
    }
}

EncodeOptions encodeOptions(const ConvertRequest& request, const FileType& type) {
    if (request.pngLevel && type.kind != FileKind::png) {
        throw UsageFailure(std::string("--png-level belongs to png files, not to ") + type.name);
    }
    if (request.quality && type.kind != FileKind::jpeg) {
        throw UsageFailure(std::string("--quality belongs to jpg files, not to ") + type.name);
    }
    EncodeOptions options;
    options.pngLevel = request.pngLevel.value_or(options.pngLevel);
    options.jpegQuality = request.quality.value_or(options.jpegQuality);
    return options;
}

class Conversion {
public:
    explicit Conversion(const ConvertRequest& request);
    bool plan();
    bool run();

private:
    void planInput(const std::string& input);
    void planFrames(const InputFile& file, Unit unit);
    void requireWantedCount(const InputFile& file, const Unit& unit, const FrameRange& range) const;
    const OutputFormat* chooseOutput(const std::string& input, const InputFormat& format) const;
    void nameUnits();
    void reserveTarget(const Unit& unit);
    bool keepWritable();
    void sayInferred() const;
    void convertUnit(const Unit& unit, Developer& developer);
    void convertStream(Unit unit, Developer& developer);
    void put(const Unit& unit, const Bytes& frame, Developer& developer);
    unsigned threads() const;

    const ConvertRequest& request_;
    DevelopOptions options_;
    FrameRange range_;
    OutputNames names_;
    EncodeOptions encode_;
    std::vector<Unit> units_;
    std::set<FileId> inputs_;
    std::set<std::string> targets_;
    std::atomic<uint64_t> written_{0};
};

Conversion::Conversion(const ConvertRequest& request)
    : request_(request),
      options_(developOptions(request)),
      range_(request.frames.empty() ? FrameRange{} : parseFrameRange(request.frames)),
      names_(request.output, request.fileType, request.inputs.size()) {
    requireGoodRequest(request.frame);
    requireDepthOptions(request, options_);
    if (options_.depth == 16 && !names_.type().deep) {
        throw UsageFailure(std::string("a ") + names_.type().name +
                           " file cannot hold 16 bits here; png, ppm, pgm, tif and raw can");
    }
    if (names_.isStandardOutput()) {
        refuseTerminal();
    }
    if (options_.output != nullptr) {
        requireRoom(names_.type(), *options_.output);
    }
    // What can be looked at is opaque; raw bytes are the library's.
    options_.opaque = request.opaque || names_.type().kind != FileKind::raw;
    encode_ = encodeOptions(request, names_.type());
}

const OutputFormat* Conversion::chooseOutput(const std::string& input, const InputFormat& format) const {
    requireSomeBits(input, format, options_);
    const OutputFormat& output =
        options_.output != nullptr ? *options_.output : defaultOutput(names_.type(), format, options_.depth);
    if (output.order == Order::grey && options_.tone.balance != Tone::Balance::none) {
        throw UsageFailure("--wb needs colour, but " + input + " becomes " + output.name);
    }
    return &output;
}

void Conversion::planInput(const std::string& input) {
    auto file = std::make_shared<InputFile>(input);
    Unit unit;
    unit.input = input;
    unit.name.stem = stemOf(input);
    unit.layout = guess::layoutOrHint(*file, request_.frame);
    unit.output = chooseOutput(file->shownName(), *unit.layout.format);
    inputs_.insert(file->id());
    if (file->isStream()) {
        const bool endless = range_.last == FrameRange{}.last;
        unit.name.frameDigits = endless ? digitsOfEndless : digitsOf(range_.last);
        unit.numbered = range_.chosen && !range_.single();
        unit.stream = file;
        units_.push_back(unit);
        return;
    }
    planFrames(*file, unit);
}

void Conversion::planFrames(const InputFile& file, Unit unit) {
    const FrameRange range = framesInFile(file, unit.layout, range_);
    requireWantedCount(file, unit, range);
    unit.name.frameDigits = digitsOf(range.last);
    // A range that happens to end in one frame is numbered like any other.
    unit.numbered = !range.single() || (range_.chosen && !range_.single());
    for (unit.name.frame = range.first; unit.name.frame <= range.last; unit.name.frame++) {
        units_.push_back(unit);
    }
}

void Conversion::requireWantedCount(const InputFile& file, const Unit& unit, const FrameRange& range) const {
    const uint64_t count = range.last - range.first + 1;
    const bool asked = request_.many || names_.isStandardOutput() || range_.last != FrameRange{}.last;
    if (count > mostUnasked && !asked) {
        throw UsageFailure(file.shownName() + ": would become " + std::to_string(count) + " pictures, one for each " +
                           unit.layout.text() + " frame; is the size right? --many writes them all, --frames some");
    }
}

// Numbers count on over all inputs, so that they stand in the order of the arguments. How many come out of a pipe is
// not known beforehand, which leaves the last place for one.
void Conversion::nameUnits() {
    uint64_t picture = 0;
    int digits = 0;
    for (const Unit& unit : units_) {
        digits = std::max(digits, unit.name.frameDigits);
        if (unit.stream && names_.countsPictures() && &unit != &units_.back()) {
            throw UsageFailure(unit.stream->shownName() + ": how many frames it holds is not known beforehand, so " +
                               "numbered pictures want it as the last input");
        }
    }
    for (Unit& unit : units_) {
        unit.name.picture = ++picture;
        unit.name.frameDigits = digits;
        if (!names_.isStandardOutput() && !unit.stream) {
            unit.target = names_.nameFor(unit.name, unit.numbered);
        }
    }
}

void Conversion::reserveTarget(const Unit& unit) {
    if (!unit.target.empty() && !targets_.insert(unit.target).second) {
        throw UsageFailure(unit.target + " would be written twice, the second time from " + unit.input);
    }
}

bool Conversion::plan() {
    const bool good = eachInput(request_.inputs, [this](const std::string& input) { planInput(input); });
    nameUnits();
    for (const Unit& unit : units_) {
        reserveTarget(unit);
    }
    names_.makeFolder();
    return keepWritable() && good;
}

bool Conversion::keepWritable() {
    bool good = true;
    std::vector<Unit> ready;
    for (const Unit& unit : units_) {
        try {
            if (!unit.target.empty()) {
                checkTarget(unit.target, inputs_, !request_.noClobber);
            }
            ready.push_back(unit);
        } catch (const Failure& failure) {
            console::error(failure.what());
            good = false;
        }
    }
    units_ = ready;
    return good;
}

void Conversion::put(const Unit& unit, const Bytes& frame, Developer& developer) {
    Picture picture = developer.develop(frame, unit.layout, *unit.output, options_, unit.input);
    const Bytes file = encodePicture(std::move(picture), names_.type(), encode_);
    if (names_.isStandardOutput()) {
        writeStandardOutput(file);
    } else {
        writeFile(unit.target, file, !request_.noClobber);
    }
    written_++;
}

void Conversion::convertUnit(const Unit& unit, Developer& developer) {
    if (unit.stream) {
        convertStream(unit, developer);
        return;
    }
    Bytes frame;
    readFrame(InputFile(unit.input), unit.layout, unit.name.frame, frame);
    put(unit, frame, developer);
}

// A pipe's pictures are numbered when there are several, so the second frame is awaited before the first is named.
// On standard output nothing has a name, and each picture leaves as soon as its frame has come.
void Conversion::convertStream(Unit unit, Developer& developer) {
    FrameStream frames(*unit.stream, unit.layout, range_);
    Bytes frame;
    Bytes following;
    bool more = frames.next(frame);
    while (more) {
        unit.name.frame = frames.number();
        if (names_.isStandardOutput()) {
            put(unit, frame, developer);
            more = frames.next(frame);
            continue;
        }
        more = frames.next(following);
        unit.numbered = unit.numbered || more;
        unit.target = names_.nameFor(unit.name, unit.numbered);
        checkTarget(unit.target, inputs_, !request_.noClobber);
        put(unit, frame, developer);
        frame.swap(following);
        unit.name.picture++;
    }
    frames.requireGoodEnd();
}

unsigned Conversion::threads() const {
    return request_.jobs != 0 ? request_.jobs : std::max(1u, std::thread::hardware_concurrency());
}

void Conversion::sayInferred() const {
    std::set<std::string> said;
    for (const Unit& unit : units_) {
        if (!unit.layout.note.empty() && said.insert(unit.layout.note).second) {
            console::note(unit.layout.note);
        }
    }
}

bool Conversion::run() {
    sayInferred();
    guardAgainstInterrupts();
    // On standard output pictures follow each other.
    const unsigned atOnce = names_.isStandardOutput() ? 1 : threads();
    const bool good = runOnThreads(units_.size(), threads(), atOnce, [this](std::size_t index, Developer& developer) {
        convertUnit(units_[index], developer);
    });
    if (good && written_ > 1 && !names_.isStandardOutput()) {
        console::note(std::to_string(written_) + " pictures written");
    }
    return good;
}

}  // namespace

int convert(const ConvertRequest& request) {
    Conversion conversion(request);
    const bool planned = conversion.plan();
    const bool converted = conversion.run();
    return planned && converted ? exitOk : exitFailed;
}

}  // namespace cli
