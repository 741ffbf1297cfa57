// How long the library takes for one frame, in this process and on one thread.

#include <kro/view.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "developing/library.hpp"
#include "frames/formats.hpp"
#include "frames/frame_reader.hpp"
#include "image.hpp"
#include "support/failure.hpp"

namespace demo {

namespace {

using Clock = std::chrono::steady_clock;

// The best of many runs: whatever else the machine does only ever adds.
double bestMilliseconds(const KroSourceView& frame, const KroPictureView& picture, KroAlgorithm algorithm) {
    constexpr int warmUps = 5;
    constexpr int runs = 60;
    KroViewOptions options{};
    options.size = sizeof options;
    options.algorithm = algorithm;
    double best = 1e9;
    for (int i = 0; i < warmUps + runs; i++) {
        const Clock::time_point start = Clock::now();
        cli::checkStatus(kroConvertView(&frame, &picture, &options), "demosaicing");
        const double taken = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        best = i < warmUps ? best : std::min(best, taken);
    }
    return best;
}

int run(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        throw cli::UsageFailure("expected a frame whose name says its size and format");
    }
    const std::string& path = arguments[0];
    const cli::InputFile file(path);
    const cli::FrameLayout layout = cli::inferLayout(path, {}, file.length());
    cli::Bytes frame = file.readAll();
    if (frame.size() < layout.bytes()) {
        throw cli::Failure(path + ": is shorter than a frame");
    }
    cli::Bytes picture(layout.size.samples() * 3);
    const KroSourceView source{frame.data(), static_cast<std::ptrdiff_t>(layout.stride), layout.size.height,
                               layout.size.width, layout.format->code};
    const KroPictureView target{{picture.data()}, {0}, KRO_BGR8};

    struct Row {
        const char* name;
        KroAlgorithm algorithm;
    };
    for (const Row& row :
         {Row{"nearest", KRO_NEAREST}, Row{"bilinear", KRO_BILINEAR}, Row{"edge", KRO_EDGE}, Row{"fine", KRO_FINE}}) {
        const double best = bestMilliseconds(source, target, row.algorithm);
        std::printf("%-18s  %7.3f ms  %7.0f Mpixel/s\n", row.name, best,
                    static_cast<double>(layout.size.samples()) / best / 1e3);
    }
    return 0;
}

}  // namespace

}  // namespace demo

int main(int argumentCount, char** arguments) {
    return demo::runTool("kro-demo-time", "FRAME", argumentCount, arguments, demo::run);
}
