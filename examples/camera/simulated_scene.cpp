#include "simulated_scene.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace kro_camera {

namespace {

enum Channel : std::uint8_t { red, green, blue, grey };

// What a format's name says: BayerRG12p is RG, 12 bits, one sample's after the other's.
struct Packing {
    unsigned bits = 0;
    bool bitByBit = false;      // 10p, 12p
    bool inThreeBytes = false;  // 10Packed, 12Packed
    std::array<std::array<Channel, 2>, 2> sites{};
};

Packing packingOf(kro::PixelFormat format) {
    const std::string name(kro::nameOf(format));
    Packing packing;
    packing.bits = static_cast<unsigned>(std::stoul(name.substr(name.find_first_of("0123456789"))));
    packing.bitByBit = name.back() == 'p';
    packing.inThreeBytes = name.find("Packed") != std::string::npos;
    const std::string phase = name.rfind("Bayer", 0) == 0 ? name.substr(5, 2) : "";
    if (phase == "RG") {
        packing.sites = {{{red, green}, {green, blue}}};
    } else if (phase == "GR") {
        packing.sites = {{{green, red}, {blue, green}}};
    } else if (phase == "GB") {
        packing.sites = {{{green, blue}, {red, green}}};
    } else if (phase == "BG") {
        packing.sites = {{{blue, green}, {green, red}}};
    } else {
        packing.sites = {{{grey, grey}, {grey, grey}}};
    }
    return packing;
}

// White, yellow, cyan, green, magenta, red, blue, black; of 4096 levels.
unsigned barLevel(int bar, Channel channel) {
    constexpr unsigned bright = 3000;
    constexpr unsigned dark = 200;
    const std::array<bool, 3> lit = {(bar & 2) == 0, (bar & 4) == 0, (bar & 1) == 0};
    if (channel == grey) {
        return dark + (bright - dark) * static_cast<unsigned>(lit[0] + lit[1] + lit[2]) / 3;
    }
    return lit[channel] ? bright : dark;
}

class Drawing {
public:
    Drawing(const Mode& mode, std::uint64_t number) : mode_(mode), packing_(packingOf(mode.format)) {
        edge_ = mode.size.height / 8;
        const auto way = static_cast<std::uint64_t>(std::max(mode.size.width - edge_, 1));
        left_ = static_cast<std::int32_t>(number * 4 % way);
    }

    void row(std::int32_t y, std::uint8_t* out) {
        samples_.clear();
        for (std::int32_t x = 0; x < mode_.size.width; ++x) {
            const Channel channel = packing_.sites[static_cast<std::size_t>(y & 1)][static_cast<std::size_t>(x & 1)];
            samples_.push_back(static_cast<std::uint16_t>(level(x, y, channel) << 4 >> (16 - packing_.bits)));
        }
        pack(out);
    }
    // Rows come in kinds; of one kind all rows of the same parity are alike.
    int kind(std::int32_t y) const { return isRamp(y) ? (isSquare(y) ? 2 : 1) : 0; }

private:
    bool isRamp(std::int32_t y) const { return y >= mode_.size.height / 4 * 3; }
    bool isSquare(std::int32_t y) const {
        return y >= mode_.size.height - edge_ * 3 / 2 && y < mode_.size.height - edge_ / 2;
    }
    unsigned level(std::int32_t x, std::int32_t y, Channel channel) const {
        if (!isRamp(y)) {
            return barLevel(static_cast<int>(std::int64_t{x} * 8 / mode_.size.width), channel);
        }
        if (isSquare(y) && x >= left_ && x < left_ + edge_) {
            return 4095;
        }
        return static_cast<unsigned>(std::int64_t{x} * 4095 / mode_.size.width);
    }
    void pack(std::uint8_t* out) const;

    Mode mode_;
    Packing packing_;
    std::int32_t edge_;
    std::int32_t left_;
    std::vector<std::uint16_t> samples_;
};

void Drawing::pack(std::uint8_t* out) const {
    if (packing_.inThreeBytes) {
        const unsigned low = packing_.bits - 8;
        for (std::size_t i = 0; i + 1 < samples_.size(); i += 2) {
            const unsigned mask = (1u << low) - 1;
            *out++ = static_cast<std::uint8_t>(samples_[i] >> low);
            *out++ = static_cast<std::uint8_t>((samples_[i] & mask) | (samples_[i + 1] & mask) << 4);
            *out++ = static_cast<std::uint8_t>(samples_[i + 1] >> low);
        }
        return;
    }
    // Each sample in so many bits, lowest first: its own number where they are packed, else those of its container.
    const unsigned each = packing_.bitByBit ? packing_.bits : packing_.bits == 8 ? 8 : 16;
    std::uint32_t pending = 0;
    unsigned count = 0;
    for (const std::uint16_t sample : samples_) {
        pending |= static_cast<std::uint32_t>(sample) << count;
        for (count += each; count >= 8; count -= 8) {
            *out++ = static_cast<std::uint8_t>(pending);
            pending >>= 8;
        }
    }
}

}  // namespace

std::vector<kro::PixelFormat> sceneFormats() {
    using kro::PixelFormat;
    return {PixelFormat::BayerRG8,        PixelFormat::BayerGR8,   PixelFormat::BayerGB8,
            PixelFormat::BayerBG8,        PixelFormat::BayerRG10,  PixelFormat::BayerRG12,
            PixelFormat::BayerRG10p,      PixelFormat::BayerRG12p, PixelFormat::BayerRG10Packed,
            PixelFormat::BayerRG12Packed, PixelFormat::Mono8,      PixelFormat::Mono12};
}

void drawScene(void* data, const Mode& mode, std::uint64_t number) {
    Drawing drawing(mode, number);
    const auto bytes = static_cast<std::size_t>(kro::rowBytes(mode.format, mode.size.width));
    auto* const first = static_cast<std::uint8_t*>(data);
    for (std::int32_t y = 0; y < mode.size.height; ++y) {
        std::uint8_t* const here = first + static_cast<std::size_t>(y) * bytes;
        if (y >= 2 && drawing.kind(y) == drawing.kind(y - 2)) {
            std::memcpy(here, here - 2 * bytes, bytes);
        } else {
            drawing.row(y, here);
        }
    }
}

}  // namespace kro_camera
