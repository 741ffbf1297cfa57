#include "frames/format_names.hpp"

#include <kro/view.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>

#include "support/failure.hpp"
#include "support/scan.hpp"

namespace cli {

namespace {

struct PhaseWord {
    std::string_view word;
    Phase phase;
};

// Four sites of a cell, row by row, and the two of the first row; longer words come first.
constexpr std::array<PhaseWord, 8> phaseWords{{{"rggb", Phase::rg},
                                               {"grbg", Phase::gr},
                                               {"gbrg", Phase::gb},
                                               {"bggr", Phase::bg},
                                               {"rg", Phase::rg},
                                               {"gr", Phase::gr},
                                               {"gb", Phase::gb},
                                               {"bg", Phase::bg}}};

struct Letters {
    std::string_view letters;
    uint32_t code;
};

// V4L2's four letters, where they do not spell phase and depth.
constexpr std::array<Letters, 4> oddLetters{
    {{"BA81", KRO_BAYER_BG8}, {"BA10", KRO_BAYER_GR10}, {"BA12", KRO_BAYER_GR12}, {"BYR2", KRO_BAYER_BG16}}};

bool startsWithDigit(std::string_view text) {
    return !text.empty() && std::isdigit(static_cast<unsigned char>(text.front())) != 0;
}

// Mono12, gray12; V4L2's Y12 and libcamera's R12, which have no letter before the depth but this one.
bool takeGrey(std::string_view& text, FormatHint& hint) {
    if (takeWord(text, "mono")) {
        hint.spelling = Spelling::full;
        return true;
    }
    if (takeWord(text, "gray") || takeWord(text, "grey")) {
        hint.spelling = Spelling::sites;
        return true;
    }
    if (text.size() < 2 || !startsWithDigit(text.substr(1)) || !takeAnyOf(text, "yr")) {
        return false;
    }
    hint.spelling = Spelling::initial;
    return true;
}

bool takePhase(std::string_view& text, FormatHint& hint) {
    if (takeGrey(text, hint)) {
        return true;
    }
    const bool bayer = takeWord(text, "bayer");
    hint.linux = !bayer && takeWord(text, "s");
    for (const PhaseWord& entry : phaseWords) {
        if (takeWord(text, entry.word)) {
            hint.phase = entry.phase;
            hint.spelling = entry.word.size() == 4 ? Spelling::sites : bayer ? Spelling::full : Spelling::letters;
            return true;
        }
    }
    return false;
}

bool takeBits(std::string_view& text, FormatHint& hint) {
    for (const int bits : {8, 10, 12, 14, 16}) {
        if (takeWord(text, std::to_string(bits))) {
            hint.bits = bits;
            return true;
        }
    }
    return !startsWithDigit(text);
}

// A bare p is PFNC's where it is small, and V4L2's where it is large behind a name of V4L2's. All else is unclear:
// the packings take the same number of bytes, and the wrong one gives noise.
void readP(FormatHint& hint, bool large) {
    hint.unclear = large != hint.linux || (hint.spelling == Spelling::initial && !hint.linux);
    hint.packing = large ? Packing::csi2 : Packing::lsb;
}

bool takeLayout(std::string_view& text, FormatHint& hint, bool large) {
    if (takeWord(text, "packed")) {
        hint.packing = Packing::packed;
    } else if (takeWord(text, "csi2p")) {
        hint.packing = Packing::csi2;
    } else if (takeWord(text, "p")) {
        readP(hint, large);
    } else if (takeWord(text, "le")) {
        hint.packing = hint.bits == 8 ? Packing::byte : Packing::word;
    } else if (takeWord(text, "be")) {
        hint.packing = Packing::word;
        hint.bigEndian = true;
    }
    return text.empty();
}

// Four letters are case-sensitive: pgAA and pGAA are two formats.
const InputFormat* findByLetters(std::string_view name) {
    for (const Letters& odd : oddLetters) {
        if (odd.letters == name) {
            return findInputFormat(odd.code);
        }
    }
    if (name.size() != 4) {
        return nullptr;
    }
    const InputFormat* format = findInputFormat(KRO_FOURCC(name[0], name[1], name[2], name[3]));
    return format != nullptr && format->packing == Packing::csi2 ? format : nullptr;
}

const InputFormat* findByCode(std::string_view name) {
    const std::string text(name);
    char* end = nullptr;
    const unsigned long code = std::strtoul(text.c_str(), &end, 16);
    return *end == '\0' && code <= UINT32_MAX ? findInputFormat(static_cast<uint32_t>(code)) : nullptr;
}

bool isCode(std::string_view name) { return name.substr(0, 2) == "0x" || name.substr(0, 2) == "0X"; }

NamedInput findInput(std::string_view name) {
    // As videodev2.h spells them.
    takeWord(name, "V4L2_PIX_FMT_");
    if (isCode(name)) {
        return {findByCode(name)};
    }
    if (const InputFormat* format = findByLetters(name)) {
        return {format};
    }
    FormatHint hint;
    if (!readFormatHint(name, hint) || hint.unclear) {
        return {};
    }
    if (hint.bits == 0 && !hint.packing && (hint.spelling == Spelling::sites || hint.phase == Phase::mono)) {
        // A bare "rggb" or "gray" is the 8-bit layout in the tools that use such names.
        hint.bits = 8;
    }
    return {findInputFormat(hint), hint.bigEndian};
}

// Those that a name ending in p may mean.
std::vector<const InputFormat*> packedFormats(const FormatHint& hint) {
    std::vector<const InputFormat*> found;
    for (const Packing packing : {Packing::lsb, Packing::csi2, Packing::packed}) {
        if (const InputFormat* format = findInputFormat(hint.phase, hint.bits, packing)) {
            found.push_back(format);
        }
    }
    return found;
}

const char* whosePacking(Packing packing) {
    switch (packing) {
        case Packing::packed:
            return " (GigE Vision's)";
        case Packing::lsb:
            return " (PFNC's)";
        case Packing::csi2:
            return " (CSI-2's)";
        case Packing::byte:
        case Packing::word:
            break;
    }
    return "";
}

std::string fourLetters(const InputFormat& format) {
    if (format.packing == Packing::csi2) {
        std::string letters;
        for (int shift = 0; shift < 32; shift += 8) {
            letters += static_cast<char>(format.code >> shift & 255);
        }
        return letters;
    }
    for (const Letters& odd : oddLetters) {
        if (odd.code == format.code) {
            return std::string(odd.letters);
        }
    }
    const std::string sites = firstSites(format.phase);
    return format.bits == 8 ? sites : sites.substr(0, 2) + std::to_string(format.bits);
}

std::vector<std::string> greyNames(const InputFormat& format) {
    const std::string bits = std::to_string(format.bits);
    // libcamera has no grey formats of 14 bits.
    switch (format.packing) {
        case Packing::byte:
            return {"GREY", "R8", "gray"};
        case Packing::word:
            return format.bits == 14   ? std::vector<std::string>{"Y14"}
                   : format.bits == 16 ? std::vector<std::string>{"Y16", "R16", "GRAY16_LE"}
                                       : std::vector<std::string>{"Y" + bits, "R" + bits};
        case Packing::csi2:
            return format.bits == 14 ? std::vector<std::string>{} : std::vector<std::string>{"R" + bits + "_CSI2P"};
        case Packing::packed:
        case Packing::lsb:
            break;
    }
    return {};
}

}  // namespace

bool readFormatHint(std::string_view text, FormatHint& hint) {
    const std::string folded = foldName(text);
    std::string_view rest = folded;
    const bool large = !text.empty() && text.back() == 'P';
    if (!takePhase(rest, hint)) {
        return false;
    }
    hint.linux = hint.linux || (hint.spelling == Spelling::initial && text.front() == 'Y');
    return takeBits(rest, hint) && takeLayout(rest, hint, large) &&
           (hint.spelling != Spelling::initial || hint.bits != 0);
}

const InputFormat* findInputFormat(const FormatHint& hint) {
    const Packing plain = hint.bits == 8 ? Packing::byte : Packing::word;
    return findInputFormat(hint.phase, hint.bits, hint.packing.value_or(plain));
}

NamedInput requireInputFormat(const std::string& name) {
    const NamedInput found = findInput(name);
    if (found.format != nullptr) {
        return found;
    }
    FormatHint hint;
    if (!isCode(name) && readFormatHint(name, hint) && hint.unclear) {
        const std::vector<const InputFormat*> meant = packedFormats(hint);
        if (!meant.empty()) {
            throw UsageFailure("pixel format '" + name + "' has several meanings, give " + listNames(meant));
        }
    }
    throw UsageFailure("unknown pixel format '" + name + "'" + suggestion(name, namesOf(inputFormats())) +
                       " (kro formats lists all)");
}

std::string listNames(const std::vector<const InputFormat*>& formats) {
    std::string text;
    for (const InputFormat* format : formats) {
        text += text.empty() ? "" : format == formats.back() ? " or " : ", ";
        text += std::string(format->name) + whosePacking(format->packing);
    }
    return text;
}

std::string shortAlias(const InputFormat& format) {
    const std::string base = foldName(format.isBayer() ? firstSites(format.phase) : "gray");
    constexpr std::array<const char*, 5> endings{"", "le", "packed", "p", "csi2p"};
    return base + std::to_string(format.bits) + endings[static_cast<std::size_t>(format.packing)];
}

std::vector<std::string> otherNames(const InputFormat& format) {
    if (!format.isBayer()) {
        return greyNames(format);
    }
    const std::string sites = firstSites(format.phase);
    const std::string linux = "S" + sites + std::to_string(format.bits);
    switch (format.packing) {
        case Packing::csi2:
            return {fourLetters(format), linux + "_CSI2P"};
        case Packing::byte:
            return {linux, fourLetters(format), "bayer_" + foldName(sites) + "8"};
        case Packing::word:
            return format.bits == 16
                       ? std::vector<std::string>{linux, fourLetters(format), "bayer_" + foldName(sites) + "16le"}
                       : std::vector<std::string>{linux, fourLetters(format)};
        case Packing::packed:
        case Packing::lsb:
            break;
    }
    return {};
}

}  // namespace cli
