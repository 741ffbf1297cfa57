// General libraries that do something comparable, measured where they were found when this program was built.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "kernels/cases.hpp"

namespace bench {

struct Peer {
    std::string name;
    std::string caseName;  // the case beside which it runs
    // Prepared work on the frame; empty where it does not serve the frame.
    std::function<Work(const Frame&)> bind;
};

std::vector<Peer> opencvPeers();
std::vector<Peer> swscalePeers();
std::vector<Peer> dc1394Peers();
std::vector<Peer> gstreamerPeers();

// Those that this program was built with.
const std::vector<Peer>& allPeers();

}  // namespace bench
