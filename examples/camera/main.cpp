#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>

#include "arguments.hpp"
#if KRO_CAMERA_ARAVIS
#include "aravis_camera.hpp"
#endif
#include "replay_camera.hpp"
#include "v4l2_camera.hpp"
#include "viewer.hpp"

namespace {

using namespace kro_camera;

enum ExitCode { exitOk = 0, exitFailed = 1, exitUsage = 2 };

std::unique_ptr<Camera> openCamera(const Arguments& arguments) {
    switch (*arguments.source) {
        case Source::v4l2:
            return openV4l2Camera(arguments.what.front(), arguments.rate);
        case Source::replay:
            return openReplay(arguments.what, arguments.layout, arguments.rate);
        case Source::aravis:
            break;
    }
#if KRO_CAMERA_ARAVIS
    return openAravisCamera(arguments.what.empty() ? "" : arguments.what.front(), arguments.rate);
#else
    throw UsageFailure("--aravis: this program was built without Aravis");
#endif
}

void list() {
    std::vector<std::string> found = v4l2Devices();
#if KRO_CAMERA_ARAVIS
    for (const std::string& camera : aravisCameras()) {
        found.push_back(camera);
    }
    found.push_back(std::string("--aravis ") + simulatedId + " (needs no camera)");
#endif
    if (found.empty()) {
        std::fputs("kro-camera: no camera found\n", stderr);
    }
    for (const std::string& line : found) {
        std::printf("%s\n", line.c_str());
    }
}

int run(int count, char** values) {
    const Arguments arguments = parseArguments(count, values);
    if (arguments.help) {
        std::fputs(helpText, stdout);
        return exitOk;
    }
    if (arguments.list) {
        list();
        return exitOk;
    }
    // A file that may not grow is a failure to write, not a reason to die.
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, endViewer);
    }
    const std::unique_ptr<Camera> camera = openCamera(arguments);
    Viewer viewer(*camera, arguments);
    const bool good = viewer.run();
    std::fprintf(stderr, "kro-camera: %s\n", viewer.summary().c_str());
    return good ? exitOk : exitFailed;
}

}  // namespace

int main(int count, char** values) {
    try {
        return run(count, values);
    } catch (const UsageFailure& failure) {
        std::fprintf(stderr, "kro-camera: %s (see kro-camera --help)\n", failure.what());
        return exitUsage;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "kro-camera: %s\n", failure.what());
        return exitFailed;
    }
}
