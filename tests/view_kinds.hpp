// How the suites of views go through formats, options and distances without trying every combination of them: each
// turn takes the next of each.
#pragma once

#include "view_support.hpp"

// Bits, byte order and alignment of words; nothing for other layouts.
KroViewOptions wordOptions(const reference::InputFormat& format, uint32_t turn);
// Mixed, so that neither goes with the parity of a turn.
inline uint32_t mixed(uint32_t turn) { return turn * 2654435761u >> 16; }
inline Spacing spacingOfTurn(uint32_t turn) { return allSpacings[mixed(turn) % 6]; }
inline guard::Placement placementOfTurn(uint32_t turn) { return guard::bothPlacements[mixed(turn) / 6 % 2]; }

// A phase with an algorithm, or grey.
struct Kind {
    bool mono;
    reference::Phase phase;
    reference::Method method;

    bool holds(const reference::InputFormat& format) const {
        return format.mono == mono && (mono || format.phase == phase);
    }
    const reference::InputFormat& formatOfTurn(uint32_t turn) const;
};
// Fine takes several times as long as the others, and works in narrower strips.
inline bool takesLong(const Kind& kind) { return !kind.mono && kind.method == reference::Method::fine; }
std::vector<Kind> allKinds();
std::string kindName(const testing::TestParamInfo<Kind>& kind);

// A conversion with range, alpha, alpha plane and distance of its turn, and what it must give.
struct Conversion {
    Asked asked;
    Planes expected;

    Conversion(reference::Scene& scene, const reference::ViewOutput& output, const KroViewOptions& words,
               reference::Method method, uint32_t turn);
};
// All outputs by all algorithms; of grey frames each output by one of them.
std::vector<Conversion> everyConversion(reference::Scene& scene, const reference::InputFormat& format,
                                        const KroViewOptions& words, uint32_t turn);
