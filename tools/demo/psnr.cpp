// Peak signal to noise of pictures against a reference, per channel and over all, in decibels.

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "image.hpp"
#include "support/failure.hpp"

namespace demo {

namespace {

struct Request {
    std::vector<Labelled> pictures;
    int border = 8;
};

// Red, green, blue, all.
using Decibels = std::array<double, 4>;

double decibels(double squares, double count) {
    return squares == 0 ? INFINITY : 10 * std::log10(255.0 * 255.0 * count / squares);
}

Decibels compare(const Image& reference, const Image& picture, int border) {
    std::array<double, 3> squares{};
    for (int row = border; row < reference.height - border; row++) {
        for (int column = border; column < reference.width - border; column++) {
            for (std::size_t channel = 0; channel < 3; channel++) {
                const int difference = reference.pixel(column, row)[channel] - picture.pixel(column, row)[channel];
                squares[channel] += difference * difference;
            }
        }
    }
    const double count = static_cast<double>(reference.width - 2 * border) * (reference.height - 2 * border);
    return {decibels(squares[0], count), decibels(squares[1], count), decibels(squares[2], count),
            decibels(squares[0] + squares[1] + squares[2], 3 * count)};
}

int parseBorder(const std::string& text) {
    char* end = nullptr;
    const long border = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || border < 0 || border > 10000) {
        throw cli::UsageFailure("--border '" + text + "': expected a number of pixels");
    }
    return static_cast<int>(border);
}

Request parse(const std::vector<std::string>& arguments) {
    Request request;
    for (std::size_t i = 0; i < arguments.size(); i++) {
        if (arguments[i] == "--border") {
            request.border = parseBorder(i + 1 < arguments.size() ? arguments[++i] : "");
        } else {
            request.pictures.push_back(parseLabelled(arguments[i]));
        }
    }
    if (request.pictures.size() < 2) {
        throw cli::UsageFailure("expected a reference and at least one picture");
    }
    return request;
}

void requireComparable(const Image& reference, const Image& picture, const std::string& path, int border) {
    if (picture.width != reference.width || picture.height != reference.height) {
        throw cli::Failure(path + ": is not of the reference's size");
    }
    if (2 * border >= picture.width || 2 * border >= picture.height) {
        throw cli::Failure(path + ": nothing is left inside the border");
    }
}

void printRow(const std::string& label, const Decibels& whole, const Decibels& inside) {
    std::printf("%-18s", label.c_str());
    for (const Decibels& row : {whole, inside}) {
        std::printf("  %6.2f %6.2f %6.2f %6.2f", row[0], row[1], row[2], row[3]);
    }
    std::printf("\n");
}

int run(const std::vector<std::string>& arguments) {
    const Request request = parse(arguments);
    const Image reference = readImage(request.pictures[0].path);
    std::printf("%-18s  %-27s  without the outer %d pixels\n", "PSNR in dB", "whole picture", request.border);
    std::printf("%-18s  %6s %6s %6s %6s  %6s %6s %6s %6s\n", "", "red", "green", "blue", "all", "red", "green",
                "blue", "all");
    for (std::size_t i = 1; i < request.pictures.size(); i++) {
        const Labelled& entry = request.pictures[i];
        const Image picture = readImage(entry.path);
        requireComparable(reference, picture, entry.path, request.border);
        printRow(entry.label, compare(reference, picture, 0), compare(reference, picture, request.border));
    }
    return 0;
}

}  // namespace

}  // namespace demo

int main(int argumentCount, char** arguments) {
    return demo::runTool("kro-psnr", "REFERENCE [LABEL=]PICTURE... [--border PIXELS]", argumentCount, arguments,
                         demo::run);
}
