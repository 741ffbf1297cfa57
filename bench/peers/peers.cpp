#include "peers/peers.hpp"

namespace bench {
namespace {

std::vector<Peer> collect() {
    std::vector<Peer> peers;
    const auto add = [&peers](std::vector<Peer> more) {
        peers.insert(peers.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    };
    (void)add;
#ifdef KRO_PEER_OPENCV
    add(opencvPeers());
#endif
#ifdef KRO_PEER_SWSCALE
    add(swscalePeers());
#endif
#ifdef KRO_PEER_DC1394
    add(dc1394Peers());
#endif
#ifdef KRO_PEER_GSTREAMER
    add(gstreamerPeers());
#endif
    return peers;
}

}  // namespace

const std::vector<Peer>& allPeers() {
    static const std::vector<Peer> peers = collect();
    return peers;
}

}  // namespace bench
