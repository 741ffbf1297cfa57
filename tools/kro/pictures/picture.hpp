#pragma once

#include <cstdint>

#include "frames/formats.hpp"
#include "frames/frame_reader.hpp"
#include "frames/frame_size.hpp"

namespace cli {

// Samples are bytes, or words of the machine where bits is 16.
struct Picture {
    FrameSize size;
    Order order = Order::rgb;
    bool planar = false;
    int bits = 8;
    Bytes data;

    uint32_t maximum() const { return (1u << bits) - 1; }
};

int channelCount(Order order);
bool hasAlpha(Order order);

// Which of red (0), green (1), blue (2) and alpha (3) the channel holds; a grey channel is taken for green.
int colourOf(Order order, int channel);

// A view of one channel: where its first sample is and how far it is from sample to sample.
struct ChannelView {
    std::size_t offset;
    std::size_t step;
};
ChannelView channelView(const Picture& picture, int channel);

// The same picture with its channels side by side in another order. Grey spreads into colours, never the reverse.
Picture reordered(Picture picture, Order order);

// Words of the other byte order.
void swapWords(uint8_t* bytes, std::size_t count);

}  // namespace cli
