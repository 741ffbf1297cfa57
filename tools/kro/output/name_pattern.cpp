#include "output/name_pattern.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>

#include "support/failure.hpp"
#include "support/scan.hpp"

namespace fs = std::filesystem;

namespace cli {

namespace {

constexpr int mostDigits = 20;

std::string padded(uint64_t number, int digits) {
    const std::string text = std::to_string(number);
    const std::size_t width = static_cast<std::size_t>(digits);
    return std::string(text.size() < width ? width - text.size() : 0, '0') + text;
}

bool isWord(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isalpha(c) != 0 || c == '_'; });
}

}  // namespace

NamePattern::NamePattern(const std::string& text) {
    for (std::string_view rest = text; !rest.empty();) {
        if (!takeBraces(rest, text) && !takePercent(rest)) {
            addText(rest.substr(0, 1));
            rest.remove_prefix(1);
        }
    }
}

NamePattern NamePattern::inFolder(const std::string& folder, const std::string& extension) {
    NamePattern pattern;
    pattern.addText((fs::path(folder) / "").string());
    pattern.add(Kind::name);
    pattern.addText("." + extension);
    return pattern;
}

void NamePattern::addText(std::string_view text) {
    if (pieces_.empty() || pieces_.back().kind != Kind::text) {
        add(Kind::text);
    }
    pieces_.back().text += text;
}

bool NamePattern::takeBraces(std::string_view& rest, const std::string& whole) {
    if (takeWord(rest, "{{")) {
        addText("{");
    } else if (takeWord(rest, "{name}")) {
        add(Kind::name);
    } else if (takeWord(rest, "{frame}")) {
        add(Kind::frame);
    } else {
        const std::size_t end = rest.front() == '{' ? rest.find('}') : std::string_view::npos;
        if (end != std::string_view::npos && isWord(rest.substr(1, end - 1))) {
            throw UsageFailure("-o " + whole + ": unknown placeholder " + std::string(rest.substr(0, end + 1)) +
                               ", there are {name} (the input's name), {frame} (the frame's number) and %04d (the " +
                               "picture's number); a brace itself is {{");
        }
        return false;
    }
    return true;
}

// %d, %4d and %04d; %% is a per cent sign, and one that stands otherwise is left as it is.
bool NamePattern::takePercent(std::string_view& rest) {
    if (takeWord(rest, "%%")) {
        addText("%");
        return true;
    }
    std::string_view mark = rest;
    int64_t digits = 1;
    if (!takeWord(mark, "%")) {
        return false;
    }
    takeNumber(mark, digits);
    if (!takeWord(mark, "d") || digits > mostDigits) {
        return false;
    }
    add(Kind::picture, static_cast<int>(digits));
    rest = mark;
    return true;
}

bool NamePattern::has(Kind kind) const {
    return std::any_of(pieces_.begin(), pieces_.end(), [kind](const Piece& piece) { return piece.kind == kind; });
}

NamePattern NamePattern::withFrameMark() const {
    NamePattern numbered = *this;
    std::string extension;
    if (!pieces_.empty() && pieces_.back().kind == Kind::text) {
        // What precedes decides whether a dot begins an extension: ".png" alone has none, "{name}.png" has.
        std::string& text = numbered.pieces_.back().text;
        extension = fs::path((pieces_.size() > 1 ? "x" : "") + text).extension().string();
        text.erase(text.size() - extension.size());
    }
    numbered.addText("-");
    numbered.add(Kind::frame);
    numbered.addText(extension);
    return numbered;
}

std::string NamePattern::fill(const PictureName& name) const {
    std::string text;
    for (const Piece& piece : pieces_) {
        switch (piece.kind) {
            case Kind::text:
                text += piece.text;
                break;
            case Kind::name:
                text += name.stem;
                break;
            case Kind::frame:
                text += padded(name.frame, name.frameDigits);
                break;
            case Kind::picture:
                text += padded(name.picture, piece.digits);
                break;
        }
    }
    return text;
}

}  // namespace cli
