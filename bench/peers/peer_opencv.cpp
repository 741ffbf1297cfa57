// OpenCV names a phase by the second row's second and third pixel: its BayerBG is RGGB.
#include <opencv2/core.hpp>
#include <opencv2/core/version.hpp>
#include <opencv2/imgproc.hpp>

#include "peers/peers.hpp"

namespace bench {
namespace {

cv::Mat matOf(const Frame& frame, void* data, int type) { return {frame.height(), frame.width(), type, data}; }

cv::Mat sourceOf(const Frame& frame, int type) {
    return matOf(frame, const_cast<uint8_t*>(frame.source<uint8_t>()), type);
}

Peer conversion(const char* what, const char* caseName, int sourceType, int code, int destinationType) {
    return {std::string("OpenCV " CV_VERSION " ") + what, caseName, [=](const Frame& frame) -> Work {
                const cv::Mat source = sourceOf(frame, sourceType);
                cv::Mat destination = matOf(frame, frame.destination(), destinationType);
                return [=]() mutable { cv::cvtColor(source, destination, code); };
            }};
}

Peer reduction(const char* caseName, double scale) {
    return {"OpenCV " CV_VERSION " convertTo", caseName, [=](const Frame& frame) -> Work {
                const cv::Mat source = sourceOf(frame, CV_16UC1);
                cv::Mat destination = matOf(frame, frame.destination(), CV_8UC1);
                return [=]() mutable { source.convertTo(destination, CV_8U, scale); };
            }};
}

Peer reductionAndConversion(const char* caseName, double scale) {
    return {"OpenCV " CV_VERSION " convertTo, bilinear", caseName, [=](const Frame& frame) -> Work {
                const cv::Mat source = sourceOf(frame, CV_16UC1);
                cv::Mat bytes(frame.height(), frame.width(), CV_8UC1);
                cv::Mat destination = matOf(frame, frame.destination(), CV_8UC3);
                return [=]() mutable {
                    source.convertTo(bytes, CV_8U, scale);
                    cv::cvtColor(bytes, destination, cv::COLOR_BayerBG2BGR);
                };
            }};
}

}  // namespace

std::vector<Peer> opencvPeers() {
    cv::setNumThreads(1);
    return {
        conversion("gray to BGR", "mono/Mono8/BGR8", CV_8UC1, cv::COLOR_GRAY2BGR, CV_8UC3),
        conversion("gray to BGRA", "mono/Mono8/BGRa8", CV_8UC1, cv::COLOR_GRAY2BGRA, CV_8UC4),
        conversion("BGR to BGRA", "widen/BGR8/BGRa8", CV_8UC3, cv::COLOR_BGR2BGRA, CV_8UC4),
        conversion("bilinear", "bilinear/RG8/BGR8", CV_8UC1, cv::COLOR_BayerBG2BGR, CV_8UC3),
        conversion("bilinear", "bilinear/RG8/BGRa8", CV_8UC1, cv::COLOR_BayerBG2BGRA, CV_8UC4),
        conversion("bilinear gray", "bilinear/RG8/Mono8", CV_8UC1, cv::COLOR_BayerBG2GRAY, CV_8UC1),
        conversion("bilinear", "bilinear/RG16/BGR16", CV_16UC1, cv::COLOR_BayerBG2BGR, CV_16UC3),
        conversion("edge-aware", "edge/RG8/BGR8", CV_8UC1, cv::COLOR_BayerBG2BGR_EA, CV_8UC3),
        conversion("VNG", "edge/RG8/BGR8", CV_8UC1, cv::COLOR_BayerBG2BGR_VNG, CV_8UC3),
        conversion("edge-aware", "edge/RG12/BGR16", CV_16UC1, cv::COLOR_BayerBG2BGR_EA, CV_16UC3),
        conversion("edge-aware", "edge/RG16/BGR16", CV_16UC1, cv::COLOR_BayerBG2BGR_EA, CV_16UC3),
        reduction("reduce/u12/u8", 1.0 / 16),
        reductionAndConversion("entry-bilinear/RG10/BGR8", 1.0 / 4),
        reductionAndConversion("entry-bilinear/RG12/BGR8", 1.0 / 16),
        reductionAndConversion("entry-bilinear/RG16/BGR8", 1.0 / 256),
    };
}

}  // namespace bench
