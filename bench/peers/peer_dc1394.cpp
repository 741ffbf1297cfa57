// libdc1394's decoders write R, G, B; the bytes moved are the same. Its colour filter names are the phases' own.
#include <dc1394/dc1394.h>

#include "peers/peers.hpp"

namespace bench {
namespace {

Peer decoder8(const char* what, const char* caseName, dc1394bayer_method_t method) {
    return {std::string("libdc1394 ") + what, caseName, [=](const Frame& frame) -> Work {
                return [=, &frame] {
                    dc1394_bayer_decoding_8bit(
                        frame.source<uint8_t>(), frame.destination(), static_cast<uint32_t>(frame.width()),
                        static_cast<uint32_t>(frame.height()), DC1394_COLOR_FILTER_RGGB, method);
                };
            }};
}

Peer decoder16(const char* what, const char* caseName, dc1394bayer_method_t method, uint32_t bits) {
    return {std::string("libdc1394 ") + what, caseName, [=](const Frame& frame) -> Work {
                return [=, &frame] {
                    dc1394_bayer_decoding_16bit(
                        frame.source<uint16_t>(), frame.plane<uint16_t>(0), static_cast<uint32_t>(frame.width()),
                        static_cast<uint32_t>(frame.height()), DC1394_COLOR_FILTER_RGGB, method, bits);
                };
            }};
}

}  // namespace

std::vector<Peer> dc1394Peers() {
    return {
        decoder8("nearest", "nearest/RG8/BGR8", DC1394_BAYER_METHOD_NEAREST),
        decoder8("bilinear", "bilinear/RG8/BGR8", DC1394_BAYER_METHOD_BILINEAR),
        decoder8("high-quality linear", "edge/RG8/BGR8", DC1394_BAYER_METHOD_HQLINEAR),
        decoder8("edge sense", "edge/RG8/BGR8", DC1394_BAYER_METHOD_EDGESENSE),
        decoder16("bilinear", "bilinear/RG16/BGR16", DC1394_BAYER_METHOD_BILINEAR, 16),
        decoder16("high-quality linear", "edge/RG12/BGR16", DC1394_BAYER_METHOD_HQLINEAR, 12),
    };
}

}  // namespace bench
