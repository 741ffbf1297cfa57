#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace cli {

// What is known of one picture when its file is named.
struct PictureName {
    std::string stem;
    // The frame's number in its input, and the picture's among all of this call; both count from 1.
    uint64_t frame = 1;
    uint64_t picture = 1;
    // Digits that a frame's number has at the least.
    int frameDigits = 4;
};

// A name with marks in it: {name} for the input's name, {frame} for the frame's number, %d or %04d for the picture's.
class NamePattern {
public:
    NamePattern() = default;
    // A usage failure that lists the known marks where there is an unknown one.
    explicit NamePattern(const std::string& text);
    static NamePattern inFolder(const std::string& folder, const std::string& extension);

    bool hasName() const { return has(Kind::name); }
    bool hasNumber() const { return has(Kind::frame) || has(Kind::picture); }
    bool countsPictures() const { return has(Kind::picture); }
    // "a/b.png" becomes "a/b-{frame}.png".
    NamePattern withFrameMark() const;
    std::string fill(const PictureName& name) const;

private:
    enum class Kind { text, name, frame, picture };
    struct Piece {
        Kind kind;
        std::string text;
        int digits = 0;
    };

    bool has(Kind kind) const;
    void add(Kind kind, int digits = 0) { pieces_.push_back({kind, "", digits}); }
    void addText(std::string_view text);
    bool takeBraces(std::string_view& rest, const std::string& whole);
    bool takePercent(std::string_view& rest);

    std::vector<Piece> pieces_;
};

}  // namespace cli
