// Direct calls of the exported routines: which bytes of a frame a region holds, and rows that stand alone in memory.
#pragma once

#include <array>
#include <memory>

#include "support.hpp"

namespace regions {

enum class Kind { bgr, bgra, planar, mono };
constexpr Kind allKinds[] = {Kind::bgr, Kind::bgra, Kind::planar, Kind::mono};
const char* nameOf(Kind kind);
inline bool interleaved(Kind kind) { return kind == Kind::bgr || kind == Kind::bgra; }
inline int bytesPerPixel(Kind kind) { return kind == Kind::bgra ? 4 : kind == Kind::mono ? 1 : 3; }

// How the three values of a pixel are stored. Planes stand in the order red, green, blue.
struct Style {
    Kind kind;
    bool redFirst = false;
    std::array<uint32_t, 3> weights = reference::lumaWeights;  // of red, green, blue
};

using Inside = std::function<bool(int y, int x)>;
inline bool everywhere(int, int) { return true; }

// The frame's bytes where `inside` holds; the rest untouched.
Expected bytesOf(const reference::Picture& picture, const Style& style, const Inside& inside = everywhere,
                 const reference::AlphaMap& alpha = everywhere);
Expected wordsOf(const reference::Picture& picture, bool planar, bool redFirst, const Inside& inside = everywhere);
Expected wordsOf(const std::vector<uint16_t>& words, const std::vector<bool>& written);

reference::Picture rowsOf(const reference::Picture& picture, int first, int count);

// Red and blue exchanged.
reference::Picture exchanged(reference::Picture picture);

// Rows of a mosaic, each in guarded memory of its own.
class Band {
public:
    explicit Band(int longest);
    // Pointers to rows first to first + count - 1; the rest of the six is null.
    const uint8_t* const* hold(const reference::Mosaic& mosaic, int first, int count, guard::Placement placement);

private:
    std::array<std::unique_ptr<guard::Buffer>, 6> rows_;
    std::array<const uint8_t*, 6> pointers_{};
};

std::vector<uint8_t> bytesOf(const reference::Mosaic& mosaic);
std::vector<uint16_t> wordsOf(const reference::Mosaic& mosaic);

}  // namespace regions
