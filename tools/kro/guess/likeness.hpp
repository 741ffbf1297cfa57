#pragma once

#include <array>

#include "frames/frame_reader.hpp"
#include "guess/levels.hpp"
#include "guess/sample_layout.hpp"

namespace cli::guess {

// What the samples of a frame are, as far as it can be told: grey; a mosaic with greens where row and column are both
// even or both odd; or one with greens at the other sites.
enum class Greens { none, even, odd };
constexpr std::array<Greens, 3> allGreens{Greens::none, Greens::even, Greens::odd};

// Rows of a layout somewhere in the file.
struct Geometry {
    const SampleLayout* layout = nullptr;
    // Bytes before the first row, from a row to the next, and samples in a row.
    std::size_t start = 0;
    std::size_t stride = 0;
    std::size_t width = 0;

    std::size_t rowsIn(std::size_t bytes) const;
};

// Bits a byte of the file if samples are told by their neighbours in all directions, for each meaning of the sites.
struct Likeness {
    std::array<double, 3> bitsPerByte{};
    // How much more the mean of the sites that are even differs from its diagonal neighbours' than that of the odd
    // ones does: 1 where frames are grey, above 1 where the even sites are red and blue.
    double unlikeDiagonals = 1;

    Greens best() const;
    double least() const { return bitsPerByte[static_cast<std::size_t>(best())]; }
};

// Looks at so many places of the frame.
Likeness likenessOf(const Bytes& bytes, const Geometry& geometry, const Levels& levels, std::size_t places);

}  // namespace cli::guess
