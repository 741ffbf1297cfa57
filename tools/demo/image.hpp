#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace demo {

struct Colour {
    double red = 0;
    double green = 0;
    double blue = 0;
};

// A picture of 8-bit RGB pixels.
struct Image {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> samples;

    Image() = default;
    Image(int imageWidth, int imageHeight, uint8_t value = 0);
    uint8_t* pixel(int column, int row) { return &samples[offset(column, row)]; }
    const uint8_t* pixel(int column, int row) const { return &samples[offset(column, row)]; }
    std::size_t offset(int column, int row) const;
};

// Whatever kro mosaic reads; deeper samples are reduced to bytes.
Image readImage(const std::string& path);

// The file name's extension says the type. The file appears whole or not at all.
void writeImage(const std::string& path, const Image& image);

// "label=path"; a path alone is its own label.
struct Labelled {
    std::string label;
    std::string path;
};
Labelled parseLabelled(const std::string& argument);

// Runs a tool's body; what goes wrong becomes one line and exit code 1, a wrong call exit code 2.
int runTool(const char* name, const char* usage, int argumentCount, char** arguments,
            int (*body)(const std::vector<std::string>& arguments));

}  // namespace demo
