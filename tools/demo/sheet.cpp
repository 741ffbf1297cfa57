// Pictures side by side: the same places of each, magnified so that single pixels can be seen.

#include <cstdio>
#include <string>
#include <vector>

#include "font.hpp"
#include "frames/frame_size.hpp"
#include "image.hpp"
#include "support/failure.hpp"

namespace demo {

namespace {

constexpr int zoom = 4;
constexpr int margin = 8;
constexpr int labelSize = 2;
constexpr int labelHeight = glyphHeight * labelSize + 2 * margin;

struct Place {
    int column;
    int row;
};

struct Request {
    std::string output;
    std::vector<Labelled> pictures;
    std::vector<Place> places;
    int side = 64;
};

Place parsePlace(const std::string& text) {
    Place place{};
    char rest = 0;
    if (std::sscanf(text.c_str(), "%d,%d%c", &place.column, &place.row, &rest) != 2) {
        throw cli::UsageFailure("--at '" + text + "': expected COLUMN,ROW");
    }
    return place;
}

Request parse(const std::vector<std::string>& arguments) {
    Request request;
    for (std::size_t i = 0; i < arguments.size(); i++) {
        const bool valued = i + 1 < arguments.size();
        if (arguments[i] == "--at" && valued) {
            request.places.push_back(parsePlace(arguments[++i]));
        } else if (arguments[i] == "--side" && valued) {
            request.side = cli::parseFrameSize(arguments[i + 1] + "x" + arguments[i + 1]).width;
            i++;
        } else if (request.output.empty()) {
            request.output = arguments[i];
        } else {
            request.pictures.push_back(parseLabelled(arguments[i]));
        }
    }
    if (request.pictures.empty()) {
        throw cli::UsageFailure("expected an output and at least one picture");
    }
    return request;
}

// Without a choice: the middle, and two corners, where the borders meet.
std::vector<Place> defaultPlaces(const Image& image, int side) {
    return {{0, 0}, {(image.width - side) / 2, (image.height - side) / 2}, {image.width - side, image.height - side}};
}

void magnify(const Image& from, const Place& place, int side, Image& sheet, int left, int top) {
    for (int y = 0; y < side * zoom; y++) {
        for (int x = 0; x < side * zoom; x++) {
            const uint8_t* source = from.pixel(place.column + x / zoom, place.row + y / zoom);
            uint8_t* target = sheet.pixel(left + x, top + y);
            target[0] = source[0];
            target[1] = source[1];
            target[2] = source[2];
        }
    }
}

void requireInside(const Image& image, const std::vector<Place>& places, int side, const std::string& path) {
    for (const Place& place : places) {
        const bool inside = place.column >= 0 && place.row >= 0 && place.column <= image.width - side &&
                            place.row <= image.height - side;
        if (!inside) {
            throw cli::Failure(path + ": a magnified place lies outside the picture");
        }
    }
}

int run(const std::vector<std::string>& arguments) {
    Request request = parse(arguments);
    const int tile = request.side * zoom + margin;
    Image sheet;
    for (std::size_t i = 0; i < request.pictures.size(); i++) {
        const Image image = readImage(request.pictures[i].path);
        if (request.places.empty()) {
            request.places = defaultPlaces(image, request.side);
        }
        requireInside(image, request.places, request.side, request.pictures[i].path);
        if (sheet.width == 0) {
            sheet = Image(margin + tile * static_cast<int>(request.pictures.size()),
                          labelHeight + tile * static_cast<int>(request.places.size()), 32);
        }
        const int left = margin + tile * static_cast<int>(i);
        drawText(sheet, request.pictures[i].label, left, margin, labelSize, {240, 240, 240});
        for (std::size_t j = 0; j < request.places.size(); j++) {
            magnify(image, request.places[j], request.side, sheet, left, labelHeight + tile * static_cast<int>(j));
        }
    }
    writeImage(request.output, sheet);
    return 0;
}

}  // namespace

}  // namespace demo

int main(int argumentCount, char** arguments) {
    return demo::runTool("kro-demo-sheet", "OUT.png [LABEL=]PICTURE... [--at COLUMN,ROW]... [--side PIXELS]",
                         argumentCount, arguments, demo::run);
}
