// A host of the C++ interface: a grey frame with padded rows, in bands, must become a grey picture.
#include <kro/kro.hpp>
#include <kro/threads.hpp>

#include <algorithm>
#include <vector>

int main() {
    const int height = 600;
    const int width = 1000;
    const auto format = kro::formatNamed("BayerGR8");
    const std::vector<unsigned char> samples(1024 * height, 9);
    std::vector<unsigned char> pixels(3 * width * height);
    kro::Threads threads(2);
    std::error_code error;
    kro::convert({samples.data(), height, width, *format, 1024}, {pixels.data(), kro::PixelFormat::RGB8}, {}, threads,
                 error);
    const bool grey = std::all_of(pixels.begin(), pixels.end(), [](unsigned char sample) { return sample == 9; });
    return !error && grey ? 0 : 1;
}
