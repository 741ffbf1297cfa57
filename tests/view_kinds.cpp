#include "view_kinds.hpp"

using reference::InputFormat;
using reference::Layout;
using reference::Method;

KroViewOptions wordOptions(const InputFormat& format, uint32_t turn) {
    KroViewOptions options = noOptions;
    if (format.layout != Layout::words) {
        options.bits = turn % 2 == 0 ? 0 : format.bits;
        return options;
    }
    options.flags = (turn % 2 == 0 ? 0 : KRO_VIEW_BIG_ENDIAN) | (turn / 2 % 2 == 0 ? 0 : KRO_VIEW_LEFT_ALIGNED);
    options.bits = turn % 3 == 0 ? 0 : 8 + static_cast<int32_t>(turn * 5 % 9);
    return options;
}

const InputFormat& Kind::formatOfTurn(uint32_t turn) const {
    static const std::vector<InputFormat> formats = reference::viewInputFormats();
    size_t i = turn * 7 % formats.size();
    while (!holds(formats[i])) {
        i = (i + 1) % formats.size();
    }
    return formats[i];
}

std::vector<Kind> allKinds() {
    std::vector<Kind> kinds = {{true, reference::Phase::rg, Method::nearest}};
    for (const reference::Phase phase : reference::allPhases) {
        for (const Method method : reference::viewMethods) {
            kinds.push_back({false, phase, method});
        }
    }
    return kinds;
}

std::string kindName(const testing::TestParamInfo<Kind>& kind) {
    static const char* const phases[] = {"RG", "GR", "GB", "BG"};
    static const char* const methods[] = {"nearest", "bilinear", "edge", "fine"};
    return kind.param.mono ? "Mono"
                           : std::string(phases[static_cast<int>(kind.param.phase)]) + "_" +
                                 methods[static_cast<int>(kind.param.method)];
}

Conversion::Conversion(reference::Scene& scene, const reference::ViewOutput& output, const KroViewOptions& words,
                       Method method, uint32_t turn)
    : asked{output, words, spacingOfTurn(turn), output.planar && turn / 2 % 2 == 1} {
    asked.options.algorithm = static_cast<KroAlgorithm>(method);
    asked.options.flags |= turn % 2 == 0 ? 0 : KRO_VIEW_FULL_RANGE;
    if (turn / 2 % 3 == 0) {
        asked.options.flags |= KRO_VIEW_ALPHA;
        asked.options.alpha = output.depth == 8 ? 0x5A : 0xA55A;
    }
    expected = planesOf(scene, output, asked.options, asked.alphaPlane);
}

std::vector<Conversion> everyConversion(reference::Scene& scene, const InputFormat& format,
                                        const KroViewOptions& words, uint32_t turn) {
    std::vector<Conversion> conversions;
    for (const reference::ViewOutput& output : reference::viewOutputs) {
        for (const Method method : reference::viewMethods) {
            ++turn;
            if (!format.mono || turn % std::size(reference::viewMethods) == 0) {
                // An even number of algorithms: without the second term each would keep to a parity.
                conversions.emplace_back(scene, output, words, method, turn + turn / 4);
            }
        }
    }
    return conversions;
}
