#include "frames/inference.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <string_view>
#include <vector>

#include "support/failure.hpp"
#include "support/scan.hpp"

namespace cli {

namespace {

std::vector<std::string> nameParts(const std::string& fileName) {
    std::vector<std::string> parts(1);
    for (const char c : fileName) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            parts.back() += c;
        } else {
            parts.emplace_back();
        }
    }
    return parts;
}

// A part may name a phase without a depth (RGGB), a depth (10bit) or a whole format (BayerRG10). A bare two-letter
// word such as "bg" or "gr" names nothing: too many file names contain one.
bool namesPhase(const FormatHint& hint) { return hint.longName || hint.fourSites || hint.bits != 0; }

int depthOf(const std::string& part) {
    const std::string folded = foldName(part);
    std::string_view rest = folded;
    int64_t bits = 0;
    const bool isDepth = takeNumber(rest, bits) && (rest == "b" || rest == "bit" || rest == "bits" || rest == "bpp");
    return isDepth && bits >= 8 && bits <= 16 ? static_cast<int>(bits) : 0;
}

struct NameHints {
    std::optional<FormatHint> format;
    int bits = 0;
    bool packed = false;
};

NameHints readName(const std::string& fileName) {
    NameHints hints;
    for (const std::string& part : nameParts(fileName)) {
        FormatHint hint;
        if (readFormatHint(part, hint) && namesPhase(hint) && (!hints.format || hints.format->bits == 0)) {
            hints.format = hint;
        }
        const int bits = depthOf(part);
        hints.bits = bits != 0 ? bits : hints.bits;
        hints.packed = hints.packed || foldName(part) == "packed";
    }
    return hints;
}

std::vector<const InputFormat*> candidates(const NameHints& hints) {
    const int bits = hints.format->bits != 0 ? hints.format->bits : hints.bits;
    const bool packed = hints.format->packed || hints.packed;
    std::vector<const InputFormat*> found;
    for (const InputFormat& format : inputFormats()) {
        const bool layoutFits = (!packed || format.packing == Packing::packed) &&
                                (!hints.format->words || format.packing == Packing::word);
        if (format.phase == hints.format->phase && (bits == 0 || format.bits == bits) && layoutFits) {
            found.push_back(&format);
        }
    }
    return found;
}

// A word that gives the depth as well leaves nothing open, unless "packed" stands apart from it.
const InputFormat* exactFormat(const NameHints& hints) {
    if (hints.format->bits == 0 || (hints.packed && !hints.format->packed)) {
        return nullptr;
    }
    return findInputFormat(*hints.format);
}

std::string listNames(const std::vector<const InputFormat*>& formats) {
    std::string text;
    for (const InputFormat* format : formats) {
        text += (text.empty() ? "" : format == formats.back() ? " or " : ", ") + std::string(format->name);
    }
    return text;
}

bool holdsWholeFrames(const InputFormat& format, const FrameSize& size, uint64_t payload) {
    return payload != 0 && payload % format.frameBytes(size.samples()) == 0;
}

// Several layouts can divide a length (one frame of words is two of bytes): then the one with the fewest frames is
// meant, since files of one frame are by far the commonest.
std::vector<const InputFormat*> largestFitting(std::vector<const InputFormat*> formats, const FrameSize& size,
                                               uint64_t payload) {
    std::size_t largest = 0;
    for (const InputFormat* format : formats) {
        if (holdsWholeFrames(*format, size, payload)) {
            largest = std::max(largest, format->frameBytes(size.samples()));
        }
    }
    formats.erase(
        std::remove_if(formats.begin(), formats.end(),
                       [&](const InputFormat* format) { return format->frameBytes(size.samples()) != largest; }),
        formats.end());
    return formats;
}

const InputFormat& inferFormat(const std::string& path, const std::string& fileName, const FrameSize& size,
                               uint64_t payload) {
    const NameHints hints = readName(fileName);
    if (!hints.format) {
        throw UnknownLayout(path + ": pixel format unknown, its name says none; give --format, such as BayerRG8");
    }
    if (const InputFormat* format = exactFormat(hints)) {
        return *format;
    }
    std::vector<const InputFormat*> open = candidates(hints);
    if (open.size() > 1) {
        const std::vector<const InputFormat*> fitting = largestFitting(open, size, payload);
        open = fitting.empty() ? open : fitting;
    }
    if (open.size() == 1) {
        return *open.front();
    }
    throw UnknownLayout(path + ": pixel format not clear from its name" +
                        (open.empty() ? std::string("; give --format") : "; give --format " + listNames(open)));
}

// Offered where a file's length fits them.
std::string likelySizes(const InputFormat* format, uint64_t payload) {
    std::string text;
    for (const FrameSize& size : usualSizes()) {
        if (format != nullptr && payload == format->frameBytes(size.samples())) {
            text += (text.empty() ? " (its length fits " : " or ") + size.text();
        }
    }
    return text.empty() ? text : text + ")";
}

// The bytes that frames can lie in; 0, which fits no layout, where the length is not known.
uint64_t payloadOf(const std::optional<uint64_t>& fileBytes, uint64_t skip) {
    return fileBytes && *fileBytes > skip ? *fileBytes - skip : 0;
}

int bitsOf(uint32_t maximum) {
    int bits = 0;
    for (; maximum != 0; maximum >>= 1) {
        bits++;
    }
    return bits;
}

NameHints hintsOf(const std::string& path) { return readName(std::filesystem::path(path).filename().string()); }

int depthInName(const std::string& path) {
    const NameHints hints = hintsOf(path);
    return hints.format && hints.format->bits != 0 ? hints.format->bits : hints.bits;
}

FormatHint phaseInName(const std::string& path) {
    const NameHints hints = hintsOf(path);
    if (!hints.format) {
        throw UsageFailure(path + ": phase unknown, its name says none; give --format, such as rggb or mono");
    }
    return *hints.format;
}

}  // namespace

void requireGoodRequest(const FrameRequest& request) {
    if (!request.sizeText.empty()) {
        parseFrameSize(request.sizeText);
    }
    // A phase alone is enough for files that say their depth themselves.
    FormatHint hint;
    if (!request.formatName.empty() && !(readFormatHint(request.formatName, hint) && hint.bits == 0)) {
        requireInputFormat(request.formatName);
    }
}

FrameLayout inferLayout(const std::string& path, const FrameRequest& request, std::optional<uint64_t> fileBytes) {
    FrameLayout layout;
    layout.skip = request.skip;
    const std::string fileName = std::filesystem::path(path).filename().string();
    const uint64_t payload = payloadOf(fileBytes, request.skip);
    layout.format = request.formatName.empty() ? nullptr : &requireInputFormat(request.formatName);
    const std::optional<FrameSize> size =
        request.sizeText.empty() ? findFrameSize(fileName) : parseFrameSize(request.sizeText);
    if (!size) {
        throw UnknownLayout(path + ": size unknown, its name says none; give --size WIDTHxHEIGHT" +
                            likelySizes(layout.format, payload));
    }
    layout.size = *size;
    if (layout.format == nullptr) {
        layout.format = &inferFormat(path, fileName, *size, payload);
    }
    if (request.sizeText.empty() || request.formatName.empty()) {
        const char* what = !request.sizeText.empty()     ? "format"
                           : !request.formatName.empty() ? "size"
                                                         : "size and format";
        layout.note = path + ": read as " + layout.text() + ", " + what + " from its name";
    }
    return layout;
}

const InputFormat& inferContained(const std::string& path, const FrameRequest& request, uint32_t maximum) {
    const int containedBits = bitsOf(maximum);
    FormatHint hint;
    if (request.formatName.empty()) {
        hint = phaseInName(path);
    } else if (!readFormatHint(request.formatName, hint) || hint.bits != 0) {
        const InputFormat& format = requireInputFormat(request.formatName);
        hint = {format.phase, format.bits};
        if (format.bits > std::max(8, containedBits)) {
            throw UsageFailure(path + ": --format " + request.formatName +
                               " contradicts the file, whose samples have " + std::to_string(containedBits) +
                               " bits");
        }
    }
    // A phase in the option does not take back the depth in the name.
    hint.bits = hint.bits == 0 ? depthInName(path) : hint.bits;
    const int bits = hint.bits == 0 ? containedBits : std::min(hint.bits, std::max(8, containedBits));
    // Not every phase has every depth; the next one holds the samples too.
    for (const int depth : {8, 10, 12, 14, 16}) {
        const InputFormat* format =
            depth < bits ? nullptr : findInputFormat(hint.phase, depth, depth == 8 ? Packing::byte : Packing::word);
        if (format != nullptr) {
            return *format;
        }
    }
    throw UsageFailure(path + ": no pixel format for samples of " + std::to_string(bits) + " bits");
}

}  // namespace cli
