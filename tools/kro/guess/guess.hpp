#pragma once

#include <string>
#include <vector>

#include "frames/formats.hpp"
#include "guess/frame_shape.hpp"

namespace cli::guess {

enum class Certainty { sure, likely, guess };

// One meaning that the bytes can have.
struct Answer {
    FrameShape shape;
    Greens greens = Greens::none;
    // Of words those that vary, of packed samples all.
    int bits = 0;
    bool leftAligned = false;
    Certainty certainty = Certainty::guess;
    // Bits a byte if this is right, weighted by what is usual: the fewer, the likelier.
    double score = 0;
    double bitsPerSample = 0;
    // As in Likeness.
    double unlikeDiagonals = 1;

    // Mosaics are named as if red came before blue.
    Phase phase() const;
    // The same greens with red and blue exchanged.
    Phase exchangedPhase() const;
    std::string formatName(Phase phase) const;
    std::string size() const;
};

// What the bytes can be, best first; empty where nothing in them looks like rows of a frame.
std::vector<Answer> answersFor(const Material& material);

}  // namespace cli::guess
