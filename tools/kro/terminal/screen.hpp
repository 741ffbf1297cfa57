#pragma once

#include <optional>
#include <string>

namespace cli {

// How a picture can be put on a terminal.
enum class Graphics { kitty, sixel, blocks };

Graphics parseGraphics(const std::string& name);

struct Screen {
    int columns = 80;
    int rows = 24;
    // Pixels of a character's cell.
    int cellWidth = 8;
    int cellHeight = 16;
    Graphics graphics = Graphics::blocks;
    bool trueColour = false;
};

// What the terminal says of itself; it is not asked for graphics where the choice is made.
Screen describeScreen(std::optional<Graphics> chosen);

}  // namespace cli
