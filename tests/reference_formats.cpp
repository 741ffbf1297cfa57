// Names, codes and layouts of all formats.
#include "view_reference.hpp"

namespace reference {
namespace {

constexpr Phase noPhase = Phase::rg;  // of grey formats

constexpr InputFormat bayer(const char* name, uint32_t code, Phase phase, Layout layout, int bits) {
    return {name, code, false, phase, layout, bits};
}
constexpr InputFormat grey(const char* name, uint32_t code, Layout layout, int bits) {
    return {name, code, true, noPhase, layout, bits};
}

// The number that Linux makes of four letters.
constexpr uint32_t fourLetters(const char (&letters)[5]) {
    uint32_t code = 0;
    for (int i = 3; i >= 0; --i) {
        code = code << 8 | static_cast<uint8_t>(letters[i]);
    }
    return code;
}

}  // namespace

const std::array<OutputFormat, 7> outputFormats = {{{"RGB8", 0x02180014u, 3},
                                                    {"BGR8", 0x02180015u, 3},
                                                    {"RGBa8", 0x02200016u, 4},
                                                    {"BGRa8", 0x02200017u, 4},
                                                    {"RGB8Planar", 0x02180021u, 3},
                                                    {"BGR8Planar", 0x02180025u, 3},
                                                    {"Mono8", 0x01080001u, 1}}};

const std::array<InputFormat, 31> inputFormats = {{
    bayer("BayerRG8", 0x01080009u, Phase::rg, Layout::bytes, 8),
    bayer("BayerRG10", 0x0110000Du, Phase::rg, Layout::words, 10),
    bayer("BayerRG12", 0x01100011u, Phase::rg, Layout::words, 12),
    bayer("BayerRG16", 0x0110002Fu, Phase::rg, Layout::words, 16),
    bayer("BayerRG10Packed", 0x010C0027u, Phase::rg, Layout::packed, 10),
    bayer("BayerRG12Packed", 0x010C002Bu, Phase::rg, Layout::packed, 12),
    bayer("BayerGB8", 0x0108000Au, Phase::gb, Layout::bytes, 8),
    bayer("BayerGB10", 0x0110000Eu, Phase::gb, Layout::words, 10),
    bayer("BayerGB12", 0x01100012u, Phase::gb, Layout::words, 12),
    bayer("BayerGB16", 0x01100030u, Phase::gb, Layout::words, 16),
    bayer("BayerGB10Packed", 0x010C0028u, Phase::gb, Layout::packed, 10),
    bayer("BayerGB12Packed", 0x010C002Cu, Phase::gb, Layout::packed, 12),
    bayer("BayerGR8", 0x01080008u, Phase::gr, Layout::bytes, 8),
    bayer("BayerGR10", 0x0110000Cu, Phase::gr, Layout::words, 10),
    bayer("BayerGR12", 0x01100010u, Phase::gr, Layout::words, 12),
    bayer("BayerGR16", 0x0110002Eu, Phase::gr, Layout::words, 16),
    bayer("BayerGR10Packed", 0x010C0026u, Phase::gr, Layout::packed, 10),
    bayer("BayerGR12Packed", 0x010C002Au, Phase::gr, Layout::packed, 12),
    bayer("BayerBG8", 0x0108000Bu, Phase::bg, Layout::bytes, 8),
    bayer("BayerBG10", 0x0110000Fu, Phase::bg, Layout::words, 10),
    bayer("BayerBG12", 0x01100013u, Phase::bg, Layout::words, 12),
    bayer("BayerBG16", 0x01100031u, Phase::bg, Layout::words, 16),
    bayer("BayerBG10Packed", 0x010C0029u, Phase::bg, Layout::packed, 10),
    bayer("BayerBG12Packed", 0x010C002Du, Phase::bg, Layout::packed, 12),
    grey("Mono8", 0x01080001u, Layout::bytes, 8),
    grey("Mono10", 0x01100003u, Layout::words, 10),
    grey("Mono12", 0x01100005u, Layout::words, 12),
    grey("Mono14", 0x01100025u, Layout::words, 14),
    grey("Mono16", 0x01100007u, Layout::words, 16),
    grey("Mono10Packed", 0x010C0004u, Layout::packed, 10),
    grey("Mono12Packed", 0x010C0006u, Layout::packed, 12),
}};

uint32_t normalisedCode(const InputFormat& format) {
    if (format.mono) {
        return 0x01080001u;
    }
    const uint32_t codes[] = {0x01080009u, 0x01080008u, 0x0108000Au, 0x0108000Bu};  // in the order of Phase
    return codes[static_cast<int>(format.phase)];
}

int preConversion(const InputFormat& format) {
    switch (format.layout) {
        case Layout::bytes:
            return 0;
        case Layout::words:
            return format.bits - 8;
        default:
            return -1;
    }
}

Group groupOf(const InputFormat& format) {
    switch (format.layout) {
        case Layout::bytes:
            return {1, 1};
        case Layout::words:
            return {1, 2};
        case Layout::packed:
            return {2, 3};
        default:
            return format.bits == 12 ? Group{2, 3} : Group{4, static_cast<size_t>(format.bits) / 2};
    }
}

size_t inputBytes(const InputFormat& format, size_t samples) {
    const Group group = groupOf(format);
    return (samples + group.samples - 1) / group.samples * group.bytes;
}

// ---- of views alone ----

const std::array<InputFormat, 34> furtherInputFormats = {{
    grey("Mono10p", 0x010A0046u, Layout::lsbFirst, 10),
    grey("Mono12p", 0x010C0047u, Layout::lsbFirst, 12),
    grey("Mono14p", 0x010E0104u, Layout::lsbFirst, 14),
    bayer("BayerBG10p", 0x010A0052u, Phase::bg, Layout::lsbFirst, 10),
    bayer("BayerBG12p", 0x010C0053u, Phase::bg, Layout::lsbFirst, 12),
    bayer("BayerBG14p", 0x010E0108u, Phase::bg, Layout::lsbFirst, 14),
    bayer("BayerGB10p", 0x010A0054u, Phase::gb, Layout::lsbFirst, 10),
    bayer("BayerGB12p", 0x010C0055u, Phase::gb, Layout::lsbFirst, 12),
    bayer("BayerGB14p", 0x010E0107u, Phase::gb, Layout::lsbFirst, 14),
    bayer("BayerGR10p", 0x010A0056u, Phase::gr, Layout::lsbFirst, 10),
    bayer("BayerGR12p", 0x010C0057u, Phase::gr, Layout::lsbFirst, 12),
    bayer("BayerGR14p", 0x010E0105u, Phase::gr, Layout::lsbFirst, 14),
    bayer("BayerRG10p", 0x010A0058u, Phase::rg, Layout::lsbFirst, 10),
    bayer("BayerRG12p", 0x010C0059u, Phase::rg, Layout::lsbFirst, 12),
    bayer("BayerRG14p", 0x010E0106u, Phase::rg, Layout::lsbFirst, 14),
    bayer("BayerGR14", 0x01100109u, Phase::gr, Layout::words, 14),
    bayer("BayerRG14", 0x0110010Au, Phase::rg, Layout::words, 14),
    bayer("BayerGB14", 0x0110010Bu, Phase::gb, Layout::words, 14),
    bayer("BayerBG14", 0x0110010Cu, Phase::bg, Layout::words, 14),
    grey("Y10P", fourLetters("Y10P"), Layout::csi2, 10),
    grey("Y12P", fourLetters("Y12P"), Layout::csi2, 12),
    grey("Y14P", fourLetters("Y14P"), Layout::csi2, 14),
    bayer("SRGGB10P", fourLetters("pRAA"), Phase::rg, Layout::csi2, 10),
    bayer("SRGGB12P", fourLetters("pRCC"), Phase::rg, Layout::csi2, 12),
    bayer("SRGGB14P", fourLetters("pREE"), Phase::rg, Layout::csi2, 14),
    bayer("SGRBG10P", fourLetters("pgAA"), Phase::gr, Layout::csi2, 10),
    bayer("SGRBG12P", fourLetters("pgCC"), Phase::gr, Layout::csi2, 12),
    bayer("SGRBG14P", fourLetters("pgEE"), Phase::gr, Layout::csi2, 14),
    bayer("SGBRG10P", fourLetters("pGAA"), Phase::gb, Layout::csi2, 10),
    bayer("SGBRG12P", fourLetters("pGCC"), Phase::gb, Layout::csi2, 12),
    bayer("SGBRG14P", fourLetters("pGEE"), Phase::gb, Layout::csi2, 14),
    bayer("SBGGR10P", fourLetters("pBAA"), Phase::bg, Layout::csi2, 10),
    bayer("SBGGR12P", fourLetters("pBCC"), Phase::bg, Layout::csi2, 12),
    bayer("SBGGR14P", fourLetters("pBEE"), Phase::bg, Layout::csi2, 14),
}};

const std::array<ViewOutput, 22> viewOutputs = {{
    {"Mono8", 0x01080001u, "Y", 8, false},         {"RGB8", 0x02180014u, "RGB", 8, false},
    {"BGR8", 0x02180015u, "BGR", 8, false},        {"RGBa8", 0x02200016u, "RGBA", 8, false},
    {"BGRa8", 0x02200017u, "BGRA", 8, false},      {"RGBx8", 0x82200001u, "RGBA", 8, false},
    {"BGRx8", 0x82200002u, "BGRA", 8, false},      {"aRGB8", 0x82200003u, "ARGB", 8, false},
    {"aBGR8", 0x82200004u, "ABGR", 8, false},      {"xRGB8", 0x82200005u, "ARGB", 8, false},
    {"xBGR8", 0x82200006u, "ABGR", 8, false},      {"RGB8Planar", 0x02180021u, "RGB", 8, true},
    {"BGR8Planar", 0x02180025u, "BGR", 8, true},   {"Mono16", 0x01100007u, "Y", 16, false},
    {"RGB16", 0x02300033u, "RGB", 16, false},      {"BGR16", 0x0230004Bu, "BGR", 16, false},
    {"RGBa16", 0x02400064u, "RGBA", 16, false},    {"BGRa16", 0x02400051u, "BGRA", 16, false},
    {"aRGB16", 0x82400007u, "ARGB", 16, false},    {"aBGR16", 0x82400008u, "ABGR", 16, false},
    {"RGB16Planar", 0x02300024u, "RGB", 16, true}, {"BGR16Planar", 0x82300009u, "BGR", 16, true},
}};

std::vector<InputFormat> viewInputFormats() {
    std::vector<InputFormat> formats(inputFormats.begin(), inputFormats.end());
    formats.insert(formats.end(), furtherInputFormats.begin(), furtherInputFormats.end());
    return formats;
}

}  // namespace reference
