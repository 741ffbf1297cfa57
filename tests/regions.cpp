#include "regions.hpp"

#include <algorithm>
#include <cstring>

namespace regions {

using reference::Mosaic;
using reference::Picture;
using reference::Pixel;

const char* nameOf(Kind kind) {
    static const char* const names[] = {"Bgr8", "Bgra8", "Bgr8P", "Mono8"};
    return names[static_cast<int>(kind)];
}

Expected bytesOf(const Picture& picture, const Style& style, const Inside& inside, const reference::AlphaMap& alpha) {
    Expected expected;
    const auto add = [&](int value, bool written) {
        expected.value.push_back(static_cast<uint8_t>(value));
        expected.written.push_back(written);
    };
    const int planes = style.kind == Kind::planar ? 3 : 1;
    for (int plane = 0; plane < planes; ++plane) {
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) {
                const Pixel& pixel = picture.at(y, x);
                const bool in = inside(y, x);
                if (style.kind == Kind::planar) {
                    add(pixel[static_cast<size_t>(plane)], in);
                } else if (style.kind == Kind::mono) {
                    add(reference::luma(pixel, style.weights), in);
                } else {
                    add(pixel[style.redFirst ? reference::red : reference::blue], in);
                    add(pixel[reference::green], in);
                    add(pixel[style.redFirst ? reference::blue : reference::red], in);
                    if (style.kind == Kind::bgra) {
                        add(0, in && alpha(y, x));
                    }
                }
            }
        }
    }
    return expected;
}

Expected wordsOf(const std::vector<uint16_t>& words, const std::vector<bool>& written) {
    Expected expected;
    for (size_t i = 0; i < words.size(); ++i) {
        uint8_t bytes[2];
        std::memcpy(bytes, &words[i], sizeof bytes);
        expected.value.insert(expected.value.end(), bytes, bytes + 2);
        expected.written.insert(expected.written.end(), 2, written[i]);
    }
    return expected;
}

Expected wordsOf(const Picture& picture, bool planar, bool redFirst, const Inside& inside) {
    std::vector<uint16_t> words;
    std::vector<bool> written;
    const auto addPixels = [&](std::initializer_list<size_t> channels) {
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) {
                for (size_t channel : channels) {
                    words.push_back(static_cast<uint16_t>(picture.at(y, x)[channel]));
                    written.push_back(inside(y, x));
                }
            }
        }
    };
    if (planar) {  // the blue, green and red plane
        addPixels({2});
        addPixels({1});
        addPixels({0});
    } else if (redFirst) {
        addPixels({0, 1, 2});
    } else {
        addPixels({2, 1, 0});
    }
    return wordsOf(words, written);
}

Picture rowsOf(const Picture& picture, int first, int count) {
    Picture part(count, picture.width);
    for (int y = 0; y < count; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            part.at(y, x) = picture.at(first + y, x);
        }
    }
    return part;
}

Picture exchanged(Picture picture) {
    for (Pixel& pixel : picture.pixel) {
        std::swap(pixel[reference::red], pixel[reference::blue]);
    }
    return picture;
}

Band::Band(int longest) {
    for (auto& row : rows_) {
        row = std::make_unique<guard::Buffer>(static_cast<size_t>(longest));
    }
}

const uint8_t* const* Band::hold(const Mosaic& mosaic, int first, int count, guard::Placement placement) {
    pointers_.fill(nullptr);
    for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
        std::vector<uint8_t> row;
        for (int x = 0; x < mosaic.width; ++x) {
            row.push_back(static_cast<uint8_t>(mosaic.at(first + static_cast<int>(i), x)));
        }
        pointers_[i] = rows_[i]->hold(row, placement);
    }
    return pointers_.data();
}

std::vector<uint8_t> bytesOf(const Mosaic& mosaic) {
    std::vector<uint8_t> bytes;
    for (int sample : mosaic.sample) {
        bytes.push_back(static_cast<uint8_t>(sample));
    }
    return bytes;
}

std::vector<uint16_t> wordsOf(const Mosaic& mosaic) {
    std::vector<uint16_t> words;
    for (int sample : mosaic.sample) {
        words.push_back(static_cast<uint16_t>(sample));
    }
    return words;
}

}  // namespace regions
