#pragma once

#include <string>

#include "image.hpp"

namespace demo {

// Glyphs are five dots wide and seven high, one dot apart. Small letters are shown as capitals.
constexpr int glyphWidth = 5;
constexpr int glyphHeight = 7;
constexpr int glyphAdvance = 6;

// Whether the dot of a line of text is set; false anywhere outside.
bool textDot(const std::string& text, int column, int row);

// Writes a line of text with its top left corner at the given place, dots enlarged to squares.
void drawText(Image& image, const std::string& text, int column, int row, int enlarge, const Colour& colour);

}  // namespace demo
