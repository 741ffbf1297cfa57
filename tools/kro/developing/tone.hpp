#pragma once

#include <array>
#include <string>

#include "pictures/picture.hpp"

namespace cli {

// What is done to a finished picture so that sensor data can be looked at. Off, it leaves the library's bytes alone.
struct Tone {
    enum class Balance { none, greyWorld, gains };
    enum class Curve { linear, power, srgb };

    Balance balance = Balance::none;
    std::array<double, 3> gains{1, 1, 1};
    Curve curve = Curve::linear;
    double gamma = 1;

    bool isOff() const { return balance == Balance::none && curve == Curve::linear; }
};

// "none", "gray" or "R,G,B"; "none", "srgb" or a number.
void parseBalance(const std::string& text, Tone& tone);
void parseGamma(const std::string& text, Tone& tone);

// Samples of white become samples of newWhite, with the balance and the curve on the way.
void applyTone(Picture& picture, const Tone& tone, uint32_t white, uint32_t newWhite);

}  // namespace cli
