extern "C" {
#include <libavutil/log.h>
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

#include <memory>

#include "peers/peers.hpp"

namespace bench {
namespace {

// libswscale interpolates a mosaic linearly on its way to BGR24; it wants even sizes.
Peer scaler(const char* caseName, AVPixelFormat from, AVPixelFormat to, int sourceBytes, int destinationBytes) {
    return {"libswscale", caseName, [=](const Frame& frame) -> Work {
                const int width = frame.width();
                const int height = frame.height();
                const std::shared_ptr<SwsContext> context(
                    sws_getContext(width, height, from, width, height, to, SWS_POINT, nullptr, nullptr, nullptr),
                    sws_freeContext);
                if (!context || width % 2 != 0 || height % 2 != 0) {
                    return {};
                }
                return [=, &frame] {
                    const uint8_t* source[4] = {frame.source<uint8_t>()};
                    uint8_t* destination[4] = {frame.destination()};
                    const int sourceStride[4] = {width * sourceBytes};
                    const int destinationStride[4] = {width * destinationBytes};
                    sws_scale(context.get(), source, sourceStride, 0, height, destination, destinationStride);
                };
            }};
}

}  // namespace

std::vector<Peer> swscalePeers() {
    av_log_set_level(AV_LOG_QUIET);
    return {
        scaler("mono/Mono8/BGR8", AV_PIX_FMT_GRAY8, AV_PIX_FMT_BGR24, 1, 3),
        scaler("bilinear/RG8/BGR8", AV_PIX_FMT_BAYER_RGGB8, AV_PIX_FMT_BGR24, 1, 3),
        scaler("entry-bilinear/RG16/BGR8", AV_PIX_FMT_BAYER_RGGB16LE, AV_PIX_FMT_BGR24, 2, 3),
    };
}

}  // namespace bench
