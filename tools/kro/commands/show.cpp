#include "commands/show.hpp"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <memory>
#include <thread>

#include "commands/each_input.hpp"
#include "developing/developer.hpp"
#include "developing/look.hpp"
#include "guess/hint.hpp"
#include "output/output_file.hpp"
#include "pictures/picture_file.hpp"
#include "pictures/png_file.hpp"
#include "support/failure.hpp"
#include "support/worker_pool.hpp"
#include "terminal/console.hpp"
#include "terminal/drawing.hpp"
#include "terminal/viewer.hpp"

namespace cli {

namespace {

// Thumbnails on a terminal are at least this many characters wide, in the viewer this many pixels.
constexpr int leastColumns = 24;
constexpr int viewerCell = 360;
constexpr int viewerGap = 8;
constexpr std::size_t viewerPerRow = 6;

// Frames of a file, or one of a pipe, which cannot be read again and is kept.
struct Source {
    std::string input;
    FrameLayout layout;
    FrameRange range;
    std::shared_ptr<Bytes> frame;

    uint64_t count() const { return range.last - range.first + 1; }
};

struct Entry {
    const Source* source = nullptr;
    uint64_t number = 0;
    Picture picture;
};

// A name may hold what a terminal would obey.
std::string harmless(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 32 || c == 127; }, '?');
    return text;
}

// Filled or cut to a number of characters, of which one may be several bytes.
std::string toWidth(const std::string& text, int width) {
    std::string result;
    int characters = 0;
    for (const char c : text) {
        const bool begins = (static_cast<unsigned char>(c) & 0xC0) != 0x80;
        characters += begins ? 1 : 0;
        if (characters > width) {
            return result;
        }
        result += c;
    }
    return result + std::string(static_cast<std::size_t>(width - characters), ' ');
}

std::string labelOf(const Entry& entry) {
    const std::string& input = entry.source->input;
    const std::string name =
        input == standardStream ? "standard input" : std::filesystem::path(input).filename().string();
    const bool single = entry.source->range.single() && !entry.source->frame;
    return harmless(name) + (single ? "" : " " + std::to_string(entry.number));
}

class Show {
public:
    explicit Show(const ShowRequest& request);
    bool run();

private:
    void planInput(const std::string& input);
    void planStream(const InputFile& file, Source source);
    void chooseEntries();
    void develop(Entry& entry, const FrameSize& box, Developer& developer) const;
    bool developAll(const FrameSize& box);
    void print();
    void printRow(std::size_t first, std::size_t count, int columnsEach) const;
    void view();
    std::size_t perRow() const;

    const ShowRequest& request_;
    FrameRange range_;
    DevelopOptions options_;
    Look look_;
    Screen screen_;
    std::vector<Source> sources_;
    std::vector<Entry> entries_;
};

Show::Show(const ShowRequest& request)
    : request_(request), range_(request.frames.empty() ? FrameRange{} : parseFrameRange(request.frames)) {
    requireGoodRequest(request.frame);
    options_.algorithm = parseAlgorithm(request.algorithm);
    options_.output = &outputFormat(KRO_RGB8);
    options_.bits = request.bits == 0 ? std::nullopt : std::optional<int>(request.bits);
    options_.black = static_cast<uint32_t>(request.black);
    parseBalance(request.balance, look_.tone);
    parseGamma(request.gamma, look_.tone);
    if (request.plain) {
        look_ = {Tone{}, false};
    }
    const auto chosen =
        request.graphics.empty() ? std::nullopt : std::optional<Graphics>(parseGraphics(request.graphics));
    if (request.viewer) {
        return;
    }
    if (!chosen && isatty(STDOUT_FILENO) != 1) {
        throw UsageFailure(
            "standard output is no terminal, expected one, or --in with kitty, sixel or blocks, or --viewer");
    }
    screen_ = describeScreen(chosen);
    screen_.columns = request.columns != 0 ? request.columns : screen_.columns;
}

void Show::planInput(const std::string& input) {
    const InputFile file(input);
    Source source{input, guess::layoutOrHint(file, request_.frame), {}, nullptr};
    requireSomeBits(file.shownName(), *source.layout.format, options_);
    if (file.isStream()) {
        planStream(file, source);
        return;
    }
    source.range = framesInFile(file, source.layout, range_);
    sources_.push_back(source);
}

// A camera's pipe may never end, so without a choice its first frame is the one to be seen.
void Show::planStream(const InputFile& file, Source source) {
    FrameStream frames(file, source.layout, range_.chosen ? range_ : FrameRange{1, 1, true});
    Bytes frame;
    for (int taken = 0; taken < request_.most && frames.next(frame); taken++) {
        source.range = {frames.number(), frames.number(), true};
        source.frame = std::make_shared<Bytes>(frame);
        sources_.push_back(source);
    }
    frames.requireGoodEnd();
}

// All frames, or as many as wanted at even distances.
void Show::chooseEntries() {
    uint64_t total = 0;
    for (const Source& source : sources_) {
        total += source.count();
    }
    const uint64_t chosen = std::min<uint64_t>(total, static_cast<uint64_t>(request_.most));
    const Source* source = sources_.data();
    uint64_t before = 0;
    for (uint64_t i = 0; i < chosen; i++) {
        const uint64_t index = i * total / chosen;
        while (index - before >= source->count()) {
            before += source->count();
            source++;
        }
        entries_.push_back({source, source->range.first + index - before, {}});
    }
    if (chosen < total) {
        console::note(std::to_string(chosen) + " of " + std::to_string(total) +
                      " frames, at even distances; --frames chooses, --most says how many");
    }
}

void Show::develop(Entry& entry, const FrameSize& box, Developer& developer) const {
    const Source& source = *entry.source;
    Bytes frame;
    if (!source.frame) {
        readFrame(InputFile(source.input), source.layout, entry.number, frame);
    }
    const Picture straight = developer.develop(source.frame ? *source.frame : frame, source.layout, *options_.output,
                                               options_, source.input);
    entry.picture = lookedAt(straight, fitted(straight.size, box), look_);
}

// What could not be read has been said, and the others are shown.
bool Show::developAll(const FrameSize& box) {
    const unsigned threads = std::max(1u, std::thread::hardware_concurrency());
    const bool good = runOnThreads(entries_.size(), threads, threads, [&](std::size_t i, Developer& developer) {
        develop(entries_[i], box, developer);
    });
    entries_.erase(std::remove_if(entries_.begin(), entries_.end(),
                                  [](const Entry& entry) { return entry.picture.data.empty(); }),
                   entries_.end());
    return good;
}

std::size_t Show::perRow() const {
    if (request_.viewer) {
        return std::min(entries_.size(), viewerPerRow);
    }
    return std::min(entries_.size(), static_cast<std::size_t>(std::max(1, screen_.columns / leastColumns)));
}

void Show::printRow(std::size_t first, std::size_t count, int columnsEach) const {
    std::vector<const Picture*> pictures;
    FrameSize cell = pixelsOf(screen_, columnsEach, 0);
    std::string labels;
    for (std::size_t i = first; i < first + count; i++) {
        pictures.push_back(&entries_[i].picture);
        cell.height = std::max(cell.height, entries_[i].picture.size.height);
        labels += toWidth(labelOf(entries_[i]), columnsEach - 1) + " ";
    }
    if (entries_.size() == 1) {
        cell = pictures.front()->size;
    }
    labels.erase(labels.find_last_not_of(' ') + 1);
    const std::string text = drawn(sheetOf(pictures, cell, count), screen_) + labels + "\n";
    writeStandardOutput({text.begin(), text.end()});
}

void Show::print() {
    const std::size_t inRow = perRow();
    const int columnsEach = screen_.columns / static_cast<int>(inRow);
    for (std::size_t first = 0; first < entries_.size(); first += inRow) {
        printRow(first, std::min(inRow, entries_.size() - first), columnsEach);
    }
}

void Show::view() {
    std::vector<const Picture*> pictures;
    FrameSize cell;
    for (const Entry& entry : entries_) {
        pictures.push_back(&entry.picture);
        cell = {std::max(cell.width, entry.picture.size.width), std::max(cell.height, entry.picture.size.height)};
    }
    if (entries_.size() > 1) {
        cell = {cell.width + viewerGap, cell.height + viewerGap};
    }
    const std::string path = openInViewer(encodePng(sheetOf(pictures, cell, perRow()), EncodeOptions{}.pngLevel));
    console::note("the viewer has " + path);
}

bool Show::run() {
    const bool planned = eachInput(request_.inputs, [this](const std::string& input) { planInput(input); });
    chooseEntries();
    if (entries_.empty()) {
        return false;
    }
    constexpr int everything = std::numeric_limits<int32_t>::max();
    const bool one = entries_.size() == 1;
    // A character stays free between thumbnails; a line each for the label and the prompt.
    const int columns = std::max(1, screen_.columns / static_cast<int>(perRow()) - (one ? 0 : 1));
    const FrameSize box = !request_.viewer ? pixelsOf(screen_, columns, std::max(1, screen_.rows - 2))
                          : one            ? FrameSize{everything, everything}
                                           : FrameSize{viewerCell, viewerCell};
    const bool developed = developAll(box);
    if (!entries_.empty()) {
        request_.viewer ? view() : print();
    }
    return planned && developed;
}

}  // namespace

int show(const ShowRequest& request) { return Show(request).run() ? exitOk : exitFailed; }

}  // namespace cli
