#include "frames/inference.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>
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
// word such as "bg" or "gr" names nothing: too many file names contain one. Nor does R10, which is a camera, and y16,
// which is a place.
bool namesPhase(const FormatHint& hint) {
    switch (hint.spelling) {
        case Spelling::full:
        case Spelling::sites:
            return true;
        case Spelling::letters:
            return hint.bits != 0;
        case Spelling::initial:
            return hint.linux && hint.bits > 8;
    }
    return false;
}

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

// Behind a depth a part may say no more than the packing or the byte order: SRGGB12_CSI2P, Y16_BE.
bool readParts(const std::vector<std::string>& parts, std::size_t at, FormatHint& hint) {
    FormatHint longer;
    if (!readFormatHint(parts[at], hint) || !namesPhase(hint)) {
        return false;
    }
    if (hint.bits != 0 && at + 1 < parts.size() && readFormatHint(parts[at] + parts[at + 1], longer)) {
        hint = longer;
    }
    return true;
}

NameHints readName(const std::string& fileName) {
    NameHints hints;
    const std::vector<std::string> parts = nameParts(fileName);
    for (std::size_t i = 0; i < parts.size(); i++) {
        FormatHint hint;
        if (readParts(parts, i, hint) && (!hints.format || hints.format->bits == 0)) {
            hints.format = hint;
        }
        const int bits = depthOf(parts[i]);
        hints.bits = bits != 0 ? bits : hints.bits;
        hints.packed = hints.packed || foldName(parts[i]) == "packed";
    }
    return hints;
}

bool packingFits(const NameHints& hints, Packing packing) {
    if (hints.format->unclear) {
        return packing != Packing::byte && packing != Packing::word;
    }
    return (!hints.packed || packing == Packing::packed) && hints.format->packing.value_or(packing) == packing;
}

std::vector<const InputFormat*> candidates(const NameHints& hints) {
    const int bits = hints.format->bits != 0 ? hints.format->bits : hints.bits;
    std::vector<const InputFormat*> found;
    for (const InputFormat& format : inputFormats()) {
        if (format.phase == hints.format->phase && (bits == 0 || format.bits == bits) &&
            packingFits(hints, format.packing)) {
            found.push_back(&format);
        }
    }
    return found;
}

// A word that gives the depth as well leaves nothing open, unless "packed" stands apart from it.
const InputFormat* exactFormat(const NameHints& hints) {
    if (hints.format->bits == 0 || hints.format->unclear ||
        (hints.packed && hints.format->packing != Packing::packed)) {
        return nullptr;
    }
    return findInputFormat(*hints.format);
}

// Several layouts can divide a length (one frame of words is two of bytes): then the one with the fewest frames is
// meant, since files of one frame are by far the commonest.
std::vector<const InputFormat*> largestFitting(const std::vector<const InputFormat*>& formats, FrameLayout layout,
                                               uint64_t payload) {
    std::vector<const InputFormat*> fitting;
    std::size_t largest = 0;
    for (const InputFormat* format : formats) {
        layout.format = format;
        const std::size_t row = layout.rowBytes();
        const bool fits =
            payload != 0 && payload % layout.bytes() == 0 && (layout.stride == 0 || row <= layout.stride);
        const std::size_t bytes = format->bytes(layout.size.samples());
        if (!fits || bytes < largest) {
            continue;
        }
        if (bytes > largest) {
            fitting.clear();
        }
        largest = bytes;
        fitting.push_back(format);
    }
    return fitting;
}

NamedInput inferFormat(const std::string& path, const std::string& fileName, const FrameLayout& layout,
                       uint64_t payload) {
    const NameHints hints = readName(fileName);
    if (!hints.format) {
        throw UnknownLayout(path + ": pixel format unknown, its name says none; give --format, such as BayerRG8");
    }
    if (const InputFormat* format = exactFormat(hints)) {
        return {format, hints.format->bigEndian};
    }
    std::vector<const InputFormat*> open = candidates(hints);
    if (open.size() > 1) {
        const std::vector<const InputFormat*> fitting = largestFitting(open, layout, payload);
        open = fitting.empty() ? open : fitting;
    }
    if (open.size() == 1) {
        return {open.front(), hints.format->bigEndian};
    }
    throw UnknownLayout(path + ": pixel format not clear from its name" +
                        (open.empty() ? std::string("; give --format") : "; give --format " + listNames(open)));
}

// Offered where a file's length fits them.
std::string likelySizes(const InputFormat* format, uint64_t payload) {
    std::string text;
    for (const FrameSize& size : usualSizes()) {
        if (format != nullptr && payload == format->bytes(size.samples())) {
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

std::string withoutFolders(const std::string& path) { return path.substr(path.rfind('/') + 1); }

NameHints hintsOf(const std::string& path) { return readName(withoutFolders(path)); }

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

std::size_t FrameLayout::bytes() const {
    return stride != 0 ? stride * static_cast<std::size_t>(size.height) : format->bytes(size.samples());
}

std::size_t FrameLayout::leastBytes() const {
    const std::size_t run = stride != 0 ? static_cast<std::size_t>(size.width) : size.samples();
    const std::size_t last =
        format->packing == Packing::lsb ? (run * static_cast<std::size_t>(format->bits) + 7) / 8 : format->bytes(run);
    return stride != 0 ? stride * static_cast<std::size_t>(size.height - 1) + last : last;
}

std::string FrameLayout::text() const {
    return size.text() + " " + format->name + (bigEndian ? " big-endian" : "") +
           (stride != 0 ? " with rows of " + std::to_string(stride) + " bytes" : "");
}

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

void requireGoodRows(const std::string& name, const FrameLayout& layout) {
    const std::string stride = name + ": --stride " + std::to_string(layout.stride);
    if (layout.bigEndian && layout.format->packing != Packing::word) {
        throw UsageFailure(name + ": --big-endian belongs to formats of 16-bit words, which " + layout.format->name +
                           " is not");
    }
    if (layout.stride == 0) {
        return;
    }
    if (layout.stride < layout.rowBytes()) {
        throw UsageFailure(stride + " is shorter than a row of " + layout.size.text() + " " + layout.format->name +
                           ", which takes " + std::to_string(layout.rowBytes()) + " bytes");
    }
    if (layout.format->packing == Packing::word && layout.stride % 2 != 0) {
        throw UsageFailure(stride + " is odd, but rows of 16-bit words are an even number of bytes apart");
    }
    if (layout.stride > std::numeric_limits<std::ptrdiff_t>::max() / static_cast<std::size_t>(layout.size.height)) {
        throw UsageFailure(stride + " makes a frame larger than memory can be");
    }
}

FrameLayout inferLayout(const std::string& path, const FrameRequest& request, std::optional<uint64_t> fileBytes) {
    FrameLayout layout;
    layout.skip = request.skip;
    layout.stride = static_cast<std::size_t>(request.stride);
    const std::string fileName = withoutFolders(path);
    const uint64_t payload = payloadOf(fileBytes, request.skip);
    NamedInput input = request.formatName.empty() ? NamedInput{} : requireInputFormat(request.formatName);
    const std::optional<FrameSize> size =
        request.sizeText.empty() ? findFrameSize(fileName) : parseFrameSize(request.sizeText);
    if (!size) {
        throw UnknownLayout(path + ": size unknown, its name says none; give --size WIDTHxHEIGHT" +
                            likelySizes(input.format, payload));
    }
    layout.size = *size;
    if (input.format == nullptr) {
        input = inferFormat(path, fileName, layout, payload);
    }
    layout.format = input.format;
    layout.bigEndian = input.bigEndian || request.bigEndian;
    requireGoodRows(path, layout);
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
        const InputFormat& format = *requireInputFormat(request.formatName).format;
        hint.phase = format.phase;
        hint.bits = format.bits;
        if (format.bits > std::max(8, containedBits)) {
            throw UsageFailure(path + ": --format " + request.formatName +
                               " contradicts the file, whose samples have " + std::to_string(containedBits) +
                               " bits");
        }
    }
    // A phase in the option does not take back the depth in the name.
    hint.bits = hint.bits == 0 ? depthInName(path) : hint.bits;
    const int bits = hint.bits == 0 ? containedBits : std::min(hint.bits, std::max(8, containedBits));
    // Not every depth has a format; the next one holds the samples too.
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
