#include "developing/tone.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "support/failure.hpp"

namespace cli {

namespace {

bool readNumber(const char*& text, double& value) {
    char* end = nullptr;
    value = std::strtod(text, &end);
    const bool good = end != text && std::isfinite(value) && value > 0;
    text = end;
    return good;
}

bool readGains(const char* text, std::array<double, 3>& gains) {
    for (std::size_t i = 0; i < gains.size(); i++) {
        if (!readNumber(text, gains[i]) || *text != (i < 2 ? ',' : '\0')) {
            return false;
        }
        text++;
    }
    return true;
}

double curved(const Tone& tone, double value) {
    switch (tone.curve) {
        case Tone::Curve::linear:
            break;
        case Tone::Curve::power:
            return std::pow(value, 1 / tone.gamma);
        case Tone::Curve::srgb:
            return value <= 0.0031308 ? 12.92 * value : 1.055 * std::pow(value, 1 / 2.4) - 0.055;
    }
    return value;
}

template <typename Sample>
double meanOf(const Picture& picture, int channel) {
    const ChannelView view = channelView(picture, channel);
    const Sample* samples = reinterpret_cast<const Sample*>(picture.data.data()) + view.offset;
    uint64_t sum = 0;
    for (std::size_t i = 0; i < picture.size.samples(); i++) {
        sum += samples[i * view.step];
    }
    return static_cast<double>(sum) / static_cast<double>(picture.size.samples());
}

// The gains by colour that make all means equal to green's.
template <typename Sample>
std::array<double, 3> greyWorldGains(const Picture& picture) {
    std::array<double, 3> means{1, 1, 1};
    for (int channel = 0; channel < channelCount(picture.order); channel++) {
        const std::size_t colour = static_cast<std::size_t>(colourOf(picture.order, channel));
        if (colour < means.size()) {
            means[colour] = meanOf<Sample>(picture, channel);
        }
    }
    std::array<double, 3> gains{1, 1, 1};
    for (std::size_t colour = 0; colour < 3; colour++) {
        gains[colour] = means[colour] > 0 ? means[1] / means[colour] : 1;
    }
    return gains;
}

template <typename Sample>
std::vector<Sample> makeTable(const Picture& picture, const Tone& tone, double gain, uint32_t white,
                              uint32_t newWhite) {
    std::vector<Sample> table(std::size_t{1} << picture.bits);
    for (std::size_t i = 0; i < table.size(); i++) {
        const double value = std::min(1.0, static_cast<double>(i) / white * gain);
        table[i] = static_cast<Sample>(std::lround(curved(tone, value) * newWhite));
    }
    return table;
}

template <typename Sample>
void applyTables(Picture& picture, const Tone& tone, uint32_t white, uint32_t newWhite) {
    const std::array<double, 3> gains =
        tone.balance == Tone::Balance::greyWorld ? greyWorldGains<Sample>(picture) : tone.gains;
    for (int channel = 0; channel < channelCount(picture.order); channel++) {
        const std::size_t colour = static_cast<std::size_t>(colourOf(picture.order, channel));
        if (colour >= gains.size()) {
            continue;
        }
        const std::vector<Sample> table = makeTable<Sample>(picture, tone, gains[colour], white, newWhite);
        const ChannelView view = channelView(picture, channel);
        Sample* samples = reinterpret_cast<Sample*>(picture.data.data()) + view.offset;
        for (std::size_t i = 0; i < picture.size.samples(); i++) {
            samples[i * view.step] = table[samples[i * view.step]];
        }
    }
}

}  // namespace

void parseBalance(const std::string& text, Tone& tone) {
    const std::string word = foldName(text);
    if (word == "none") {
        tone.balance = Tone::Balance::none;
    } else if (word == "gray" || word == "grey") {
        tone.balance = Tone::Balance::greyWorld;
    } else if (readGains(text.c_str(), tone.gains)) {
        tone.balance = Tone::Balance::gains;
    } else {
        throw UsageFailure("bad --wb '" + text + "', expected none, gray or three gains such as 1.8,1,1.5");
    }
}

void parseGamma(const std::string& text, Tone& tone) {
    const std::string word = foldName(text);
    const char* number = text.c_str();
    if (word == "none") {
        tone.curve = Tone::Curve::linear;
    } else if (word == "srgb") {
        tone.curve = Tone::Curve::srgb;
    } else if (readNumber(number, tone.gamma) && *number == '\0') {
        tone.curve = Tone::Curve::power;
    } else {
        throw UsageFailure("bad --gamma '" + text + "', expected none, srgb or a number such as 2.2");
    }
}

void applyTone(Picture& picture, const Tone& tone, uint32_t white, uint32_t newWhite) {
    if (tone.isOff() && white == newWhite) {
        return;
    }
    picture.bits == 8 ? applyTables<uint8_t>(picture, tone, white, newWhite)
                      : applyTables<uint16_t>(picture, tone, white, newWhite);
}

}  // namespace cli
