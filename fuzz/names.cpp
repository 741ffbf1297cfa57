// Text that people type or name files with: formats, sizes, ranges, numbers, patterns of output names.
#include <algorithm>
#include <string>

#include "frames/format_names.hpp"
#include "frames/frame_reader.hpp"
#include "output/name_pattern.hpp"
#include "reading.hpp"
#include "support/scan.hpp"

namespace {

using fuzz::readOrRefuse;
using fuzz::require;

void formats(const std::string& text) {
    cli::FormatHint hint;
    if (cli::readFormatHint(text, hint)) {
        cli::findInputFormat(hint);
    }
    readOrRefuse([&] { require(cli::requireInputFormat(text).format != nullptr, "a name without a format"); });
    readOrRefuse([&] { require(cli::requireOutputFormat(text).name != nullptr, "a name without an output"); });
    readOrRefuse([&] { cli::requireFileType(text); });
    cli::fileTypeOf(text);
}

void sizes(const std::string& text) {
    const std::optional<cli::FrameSize> found = cli::findFrameSize(text);
    if (found) {
        const cli::FrameSize again = cli::parseFrameSize(found->text());
        require(again.width == found->width && again.height == found->height, "a size is not read back");
        cli::requireFrameSize(*found, "found");
    }
    readOrRefuse([&] { cli::requireFrameSize(cli::parseFrameSize(text), text); });
}

void numbers(const std::string& text) {
    std::string_view rest = text;
    int64_t value = -1;
    if (cli::takeNumber(rest, value)) {
        require(value >= 0 && rest.size() < text.size(), "a number is negative or takes nothing");
        const std::string digits = text.substr(0, text.size() - rest.size());
        require(digits.size() - std::min(digits.find_first_not_of('0'), digits.size() - 1) ==
                    std::to_string(value).size(),
                "a number is not the one written");
    } else {
        require(rest.size() == text.size() && value == -1, "no number, but something was taken");
    }
    readOrRefuse([&] {
        const cli::FrameRange range = cli::parseFrameRange(text);
        require(range.first >= 1 && range.first <= range.last, "a range of frames without frames");
    });
}

void patterns(const std::string& text) {
    readOrRefuse([&] {
        const cli::NamePattern pattern(text);
        const std::string name = pattern.fill({"stem", 7, 3, 4});
        require(name.size() <= text.size() * 40 + 4, "a name grows out of all proportion");
        const cli::NamePattern numbered = pattern.withFrameMark();
        require(numbered.hasNumber(), "a pattern lost its number");
        require(numbered.fill({"stem", 7, 3, 4}) != numbered.fill({"stem", 8, 3, 4}), "frames share a name");
    });
}

// A name of a file with a length may say all, too little or contradictory things.
void layouts(const std::string& text) {
    for (const uint64_t length : {uint64_t{0}, uint64_t{48}, uint64_t{96}, uint64_t{1} << 40}) {
        readOrRefuse([&] {
            const cli::FrameLayout layout = cli::inferLayout(text, {}, length);
            require(layout.bytes() >= layout.size.samples() && layout.leastBytes() <= layout.bytes(),
                    "a frame of fewer bytes than samples");
        });
    }
    for (const uint32_t maximum : {1u, 255u, 1023u, 65535u}) {
        readOrRefuse([&] { require(cli::inferContained(text, {}, maximum).bits >= 8, "a format of no depth"); });
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // No argument and no name of a file goes on beyond a zero.
    const std::string text(data, std::find(data, data + size, uint8_t{0}));
    formats(text);
    sizes(text);
    numbers(text);
    patterns(text);
    layouts(text);
    return 0;
}
