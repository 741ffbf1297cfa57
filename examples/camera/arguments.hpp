// The command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "modes.hpp"
#include "replay_camera.hpp"

namespace kro_camera {

enum class Source { aravis, v4l2, replay };

struct Arguments {
    bool help = false;
    bool list = false;
    std::optional<Source> source;
    // Which one: an identity, a path, or files.
    std::vector<std::string> what;
    Layout layout;
    kro::Algorithm algorithm = kro::Algorithm::edge;
    double rate = 0;
    double timeout = 10;
    std::uint64_t frames = 0;
    bool recordRaw = false;
    bool recordPictures = false;
    bool fullScreen = false;
    std::string folder = ".";
};

// A usage failure names the argument, its value and what was expected.
Arguments parseArguments(int count, char** values);

extern const char* const helpText;

// In the order in which the key goes through them.
std::vector<kro::Algorithm> algorithms();
kro::Algorithm algorithmNamed(const std::string& name);
const char* textOf(kro::Algorithm algorithm);

}  // namespace kro_camera
