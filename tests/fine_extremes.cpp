#include "fine_extremes.hpp"

#include <algorithm>
#include <climits>

#include "support.hpp"

using reference::FinePlanes;
using reference::Mosaic;

namespace {

struct Refinement {
    int d8, sv4, weighted;
};
Refinement refinementAt(const FinePlanes& p, int y, int x) {
    if (p.kind.at(y, x) != reference::smooth) {
        return {0, 0, 0};
    }
    const int sh = p.d.at(y, x - 2) + p.d.at(y, x + 2);
    const int sv = p.d.at(y - 2, x) + p.d.at(y + 2, x);
    return {8 * p.d.at(y, x), 4 * sv, p.w.at(y, x) * (sh - sv)};
}

struct Line {
    int a, b;
};
Line diagonalSums(const FinePlanes& p, int y, int x) {
    Line sums = {0, 0};
    for (const int dy : {-1, 1}) {
        for (const int dx : {-1, 1}) {
            sums.a += p.a.at(y + dy, x + dx);
            sums.b += p.b.at(y + dy, x + dx);
        }
    }
    return sums;
}

// Where a climb begins: coin flips, small patterns over and over, or a value for each colour.
int firstSample(uint32_t seed, int y, int x, uint32_t& state) {
    const uint32_t bits = seed * 2654435761u;
    const uint32_t tile = static_cast<uint32_t>(y % 4 * 4 + x % 4);
    const uint32_t colour = static_cast<uint32_t>(reference::colourAt(reference::Phase::rg, y, x));
    const uint32_t kind = seed % 3;
    const bool high = kind == 0   ? (bits >> (8 + colour) & 1) != 0
                      : kind == 1 ? (bits >> (8 + tile) & 1) != 0
                                  : randomWord(state) % 2 != 0;
    return high ? 255 : 0;
}

}  // namespace

std::vector<FineSum> fineSums(const FinePlanes& p, int y, int x) {
    const Refinement refinement = refinementAt(p, y, x);
    const reference::FineErrors e = reference::fineErrors(p, y, x);
    const Line line = diagonalSums(p, y, x);
    const int t = std::min(p.A.at(y, x), p.B.at(y, x));
    const int difference = p.eh.at(y, x) - p.ev.at(y, x);
    return {{"8 d + 4 sv + w (sh - sv) + 8", refinement.d8 + refinement.sv4 + refinement.weighted + 8},
            {"8 d + 4 sv", refinement.d8 + refinement.sv4},
            {"w (sh - sv)", refinement.weighted},
            {"fh", p.fh.at(y, x)},
            {"fh - fh", p.fh.at(y, x - 1) - p.fh.at(y, x + 1)},
            {"H", p.H.at(y, x)},
            {"V", p.V.at(y, x)},
            {"t + t / 2", t + (t >> 1)},
            {"eh", p.eh.at(y, x)},
            {"w (eh - ev)", p.w.at(y, x) * difference},
            {"4 ev + w (eh - ev) + 4", 4 * p.ev.at(y, x) + p.w.at(y, x) * difference + 4},
            {"d'", p.refined.at(y, x)},
            {"m - d'", p.m.at(y, x) - ((p.refined.at(y, x) + 4) >> 3)},
            {"e1", e.e1},
            {"eh of colours", e.eh},
            {"2 L", 2 * (e.e1 - (e.e1 >> 2) - 8)},
            {"b", p.b.at(y, x)},
            {"g a", p.g.at(y, x) * line.a},
            {"g a + b + 4", p.g.at(y, x) * line.a + line.b + 4}};
}

std::vector<FineExtreme> fineExtremes() {
    std::vector<FineExtreme> extremes;
    for (const size_t sum : {0u, 1u, 2u, 9u, 10u, 12u}) {  // of a refinement, of a choice of directions, of a green
        for (uint32_t seed = 1; seed <= 3; ++seed) {
            extremes.push_back({sum, true, seed});
            extremes.push_back({sum, false, seed});
        }
    }
    return extremes;
}

Mosaic fineExtreme(const FineExtreme& wanted, int steps, const EachStep& look) {
    uint32_t state = wanted.seed * 2654435761u + 1;
    Mosaic m(extremeSize, extremeSize, reference::Phase::rg);
    for (int y = 0; y < extremeSize; ++y) {
        for (int x = 0; x < extremeSize; ++x) {
            m.at(y, x) = firstSample(wanted.seed, y, x, state);
        }
    }
    int best = INT_MIN;
    for (int step = 0; step < steps; ++step) {
        const std::vector<int> before = m.sample;
        for (uint32_t changes = step == 0 ? 0 : 1 + randomWord(state) % 3; changes > 0; --changes) {
            int& sample = m.sample[(randomWord(state) >> 8) % m.sample.size()];
            sample = 255 - sample;
        }
        const FinePlanes planes(m, reference::fineScale8);
        if (look) {
            look(planes);
        }
        const int sum = fineSums(planes, extremeSite, extremeSite)[wanted.sum].value;
        const int reached = wanted.large ? sum : -sum;
        if (reached >= best) {
            best = reached;
        } else {
            m.sample = before;
        }
    }
    return m;
}
