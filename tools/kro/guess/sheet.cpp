#include "guess/sheet.hpp"

#include <algorithm>

#include "developing/look.hpp"

namespace cli::guess {

namespace {

constexpr FrameSize cell{480, 480};
constexpr int32_t gap = 8;
constexpr std::size_t perRow = 3;

// Rows beyond what was read of the file stay away.
Picture develop(const Material& material, const Answer& answer) {
    const Geometry& rows = answer.shape.geometry;
    const std::size_t height = std::min(answer.shape.height, rows.rowsIn(material.bytes.size()));
    Picture picture;
    picture.size = {static_cast<int32_t>(rows.width), static_cast<int32_t>(height)};
    picture.data.resize(picture.size.samples() * 3);
    Bytes aligned;
    const uint8_t* first = &material.bytes[rows.start];
    if (rows.layout->isWords() && rows.start % 2 != 0) {
        aligned.assign(first, material.bytes.data() + material.bytes.size());
        first = aligned.data();
    }
    const kro::Frame frame{first, picture.size.height, picture.size.width,
                           *kro::formatNamed(answer.formatName(answer.phase())),
                           static_cast<std::ptrdiff_t>(rows.stride)};
    kro::Options options;
    options.bigEndian = rows.layout->bigEndian;
    kro::convert(frame, {picture.data.data(), kro::PixelFormat::RGB8}, options);
    return picture;
}

}  // namespace

Picture sheetOfAnswers(const Material& material, const std::vector<Answer>& answers) {
    Look look;
    parseBalance("gray", look.tone);
    parseGamma("srgb", look.tone);
    std::vector<Picture> pictures;
    for (const Answer& answer : answers) {
        const Picture straight = develop(material, answer);
        pictures.push_back(lookedAt(straight, fitted(straight.size, cell), look));
    }
    std::vector<const Picture*> shown;
    for (const Picture& picture : pictures) {
        shown.push_back(&picture);
    }
    return sheetOf(shown, {cell.width + gap, cell.height + gap}, std::min(perRow, shown.size()));
}

}  // namespace cli::guess
