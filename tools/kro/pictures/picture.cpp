#include "pictures/picture.hpp"

#include <array>
#include <utility>

namespace cli {

namespace {

int channelOf(Order order, int colour) {
    if (order == Order::grey) {
        return 0;
    }
    for (int channel = 0; channel < channelCount(order); channel++) {
        if (colourOf(order, channel) == colour) {
            return channel;
        }
    }
    return -1;
}

template <typename Sample>
void copyChannel(const Picture& from, int fromChannel, Picture& to, int toChannel) {
    const ChannelView source = channelView(from, fromChannel);
    const ChannelView target = channelView(to, toChannel);
    const Sample* read = reinterpret_cast<const Sample*>(from.data.data()) + source.offset;
    Sample* write = reinterpret_cast<Sample*>(to.data.data()) + target.offset;
    const std::size_t count = from.size.samples();
    for (std::size_t i = 0; i < count; i++) {
        write[i * target.step] = read[i * source.step];
    }
}

}  // namespace

int channelCount(Order order) {
    switch (order) {
        case Order::grey:
            return 1;
        case Order::rgb:
        case Order::bgr:
            return 3;
        case Order::rgba:
        case Order::bgra:
        case Order::argb:
        case Order::abgr:
            return 4;
    }
    return 0;
}

bool hasAlpha(Order order) { return channelCount(order) == 4; }

int colourOf(Order order, int channel) {
    constexpr std::array<std::array<int, 4>, 7> colours{
        {{1}, {0, 1, 2}, {2, 1, 0}, {0, 1, 2, 3}, {2, 1, 0, 3}, {3, 0, 1, 2}, {3, 2, 1, 0}}};
    return colours[static_cast<std::size_t>(order)][static_cast<std::size_t>(channel)];
}

ChannelView channelView(const Picture& picture, int channel) {
    const std::size_t index = static_cast<std::size_t>(channel);
    if (picture.planar) {
        return {index * picture.size.samples(), 1};
    }
    return {index, static_cast<std::size_t>(channelCount(picture.order))};
}

Picture reordered(Picture picture, Order order) {
    if (picture.order == order && !picture.planar) {
        return picture;
    }
    Picture result{picture.size, order, false, picture.bits, {}};
    const std::size_t channels = static_cast<std::size_t>(channelCount(order));
    result.data.resize(picture.size.samples() * channels * static_cast<std::size_t>(picture.bits / 8));
    for (int channel = 0; channel < channelCount(order); channel++) {
        const int from = channelOf(picture.order, colourOf(order, channel));
        if (from >= 0) {
            picture.bits == 8 ? copyChannel<uint8_t>(picture, from, result, channel)
                              : copyChannel<uint16_t>(picture, from, result, channel);
        }
    }
    return result;
}

void swapWords(uint8_t* bytes, std::size_t count) {
    for (std::size_t at = 0; at + 1 < count; at += 2) {
        std::swap(bytes[at], bytes[at + 1]);
    }
}

}  // namespace cli
