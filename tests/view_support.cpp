#include "view_support.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>

using reference::InputFormat;
using reference::Layout;
using reference::ViewOutput;

namespace {

// Bytes of a row with the largest padding, and of the guarded buffers that hold such rows.
size_t room(Size size, size_t sampleBytes) {
    return static_cast<size_t>(size.height) * (static_cast<size_t>(size.width) * sampleBytes + 64);
}

std::vector<uint8_t> noise(size_t bytes) {
    uint32_t state = 2463534242u;
    std::vector<uint8_t> result(bytes);
    for (uint8_t& byte : result) {
        byte = static_cast<uint8_t>(randomWord(state) >> 8);
    }
    return result;
}

template <class Formats>
const auto& named(const Formats& formats, const std::string& name) {
    for (const auto& format : formats) {
        if (name == format.name) {
            return format;
        }
    }
    throw std::runtime_error("no format " + name);
}

const uint8_t* rowZero(const uint8_t* base, ptrdiff_t stride, int height) {
    return stride < 0 ? base - stride * (height - 1) : base;
}

size_t distance(ptrdiff_t stride, size_t rowBytes) {
    return stride == 0 ? rowBytes : static_cast<size_t>(std::abs(stride));
}

}  // namespace

const char* nameOf(Spacing spacing) {
    static const char* const names[] = {"continuous", "exact", "padded", "odd", "flipped", "negative"};
    return names[static_cast<int>(spacing)];
}

ptrdiff_t strideOf(Spacing spacing, size_t rowBytes, bool words) {
    const ptrdiff_t row = static_cast<ptrdiff_t>(rowBytes);
    switch (spacing) {
        case Spacing::continuous:
            return 0;
        case Spacing::exact:
            return row;
        case Spacing::padded:
            return row / 16 * 16 + 32;
        case Spacing::odd:
            return words ? row / 4 * 4 + 6 : row / 2 * 2 + 5;
        case Spacing::flipped:
            return -row;
        default:
            return -(words ? row + 10 : row + 11);
    }
}

KroViewOptions withAlgorithm(reference::Method method) {
    KroViewOptions options = noOptions;
    options.algorithm = static_cast<KroAlgorithm>(method);
    return options;
}

const InputFormat& inputNamed(const std::string& name) {
    static const std::vector<InputFormat> formats = reference::viewInputFormats();
    return named(formats, name);
}
const ViewOutput& outputNamed(const std::string& name) { return named(reference::viewOutputs, name); }

std::vector<uint16_t> numbersFor(const InputFormat& format, const KroViewOptions& options, Content content, Size size,
                                 uint32_t seed, bool beyond) {
    const reference::Words words = wordsOf(format, options);
    const bool isWords = format.layout == Layout::words;
    const int bits = isWords ? words.bits : format.bits;
    std::vector<uint16_t> numbers = samples(content, size, beyond && isWords ? 0xFFFF : (1 << bits) - 1, seed);
    if (isWords && words.leftAligned && !beyond) {
        uint32_t state = seed + 1;
        for (uint16_t& number : numbers) {
            const uint32_t below = randomWord(state) % (1u << (16 - bits));
            number = static_cast<uint16_t>(static_cast<uint32_t>(number) << (16 - bits) | below);
        }
    }
    return numbers;
}

std::vector<uint8_t> rowOf(const InputFormat& format, const uint16_t* numbers, size_t count, bool bigEndian) {
    std::vector<uint8_t> row = noise(reference::inputBytes(format, count));
    for (size_t i = 0; i < count; ++i) {
        reference::setNumber(format, row.data(), i, bigEndian, numbers[i]);
    }
    return row;
}

void ViewSource::hold(const InputFormat& format, Size size, const std::vector<uint16_t>& numbers, Spacing spacing,
                      bool bigEndian, guard::Placement placement) {
    const size_t width = static_cast<size_t>(size.width);
    const ptrdiff_t stride = strideOf(spacing, reference::inputBytes(format, width), format.layout == Layout::words);
    std::vector<uint8_t> memory;
    if (stride == 0) {
        memory = rowOf(format, numbers.data(), numbers.size(), bigEndian);
    } else {
        const size_t step = static_cast<size_t>(std::abs(stride));
        const size_t last = static_cast<size_t>(size.height) - 1;
        memory = noise(step * last + reference::inputBytes(format, width));
        for (size_t y = 0; y <= last; ++y) {
            const std::vector<uint8_t> row = rowOf(format, numbers.data() + y * width, width, bigEndian);
            std::copy(row.begin(), row.end(),
                      memory.begin() + static_cast<ptrdiff_t>((stride < 0 ? last - y : y) * step));
        }
    }
    const uint8_t* const base = buffer_.hold(memory, placement);
    view_ = {rowZero(base, stride, size.height), stride, size.height, size.width, format.code};
}

const KroPictureView& ViewPicture::lay(const ViewOutput& output, Size size, Spacing spacing,
                                       guard::Placement placement, guard::Fill fill, bool alphaPlane) {
    view_ = {{nullptr, nullptr, nullptr, nullptr}, {0, 0, 0, 0}, output.code};
    size_ = size;
    rowBytes_.clear();
    for (const std::string& letters : reference::planesOf(output, alphaPlane)) {
        const size_t plane = rowBytes_.size();
        const size_t row = reference::bytesOf(letters, output.depth) * static_cast<size_t>(size.width);
        // Planes differ in their distances: each has a spacing of its own.
        const Spacing own = allSpacings[(static_cast<size_t>(spacing) + plane) % std::size(allSpacings)];
        const ptrdiff_t stride = strideOf(own, row, output.depth == 16);
        const size_t last = static_cast<size_t>(size.height) - 1;
        uint8_t* const base = buffers_[plane].place(distance(stride, row) * last + row, placement, fill);
        view_.plane[plane] = const_cast<uint8_t*>(rowZero(base, stride, size.height));
        view_.stride[plane] = stride;
        rowBytes_.push_back(row);
    }
    return view_;
}

testing::AssertionResult ViewPicture::planeHolds(size_t plane, const std::vector<uint8_t>& expected,
                                                 Band band) const {
    const guard::Buffer& buffer = buffers_[plane];
    const size_t row = rowBytes_[plane];
    const size_t step = distance(view_.stride[plane], row);
    for (int y = 0; y < size_.height; ++y) {
        const int inMemory = view_.stride[plane] < 0 ? size_.height - 1 - y : y;
        const size_t at = static_cast<size_t>(inMemory) * step;
        if (!band.holds(y)) {
            if (!buffer.untouched(at, row)) {
                return testing::AssertionFailure() << "row " << y << " of plane " << plane << " was written";
            }
        } else {
            const uint8_t* const wanted = expected.data() + static_cast<size_t>(y) * row;
            const testing::AssertionResult same = rowHolds(buffer.data() + at, wanted, row);
            if (!same) {
                return testing::AssertionFailure() << "row " << y << " of plane " << plane << ": " << same.message();
            }
        }
        if (inMemory + 1 < size_.height && !buffer.untouched(at + row, step - row)) {
            return testing::AssertionFailure() << "bytes after row " << y << " of plane " << plane << " were written";
        }
    }
    if (!buffer.canariesHold()) {
        return testing::AssertionFailure() << "bytes around plane " << plane << " were overwritten";
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult ViewPicture::holds(const Planes& expected, Band band) const {
    for (size_t plane = 0; plane < rowBytes_.size(); ++plane) {
        const testing::AssertionResult result = planeHolds(plane, expected[plane], band);
        if (!result) {
            return result;
        }
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult rowHolds(const uint8_t* row, const uint8_t* expected, size_t bytes) {
    if (std::memcmp(row, expected, bytes) == 0) {
        return testing::AssertionSuccess();
    }
    const auto different = std::mismatch(expected, expected + bytes, row);
    return testing::AssertionFailure() << "byte " << different.first - expected << " is " << int(*different.second)
                                       << ", expected " << int(*different.first);
}

std::string describe(const KroSourceView& source, const Asked& asked) {
    std::string name = "unknown format";
    for (const InputFormat& format : reference::viewInputFormats()) {
        name = format.code == source.format ? format.name : name;
    }
    const KroViewOptions& o = asked.options;
    return name + " " + describe(Size{source.height, source.width}) + " stride " + std::to_string(source.stride) +
           " to " + asked.output.name + " " + nameOf(asked.spacing) + (asked.alphaPlane ? " with alpha plane" : "") +
           ", algorithm " + std::to_string(o.algorithm) + " flags " + std::to_string(o.flags) + " bits " +
           std::to_string(o.bits) + " alpha " + std::to_string(o.alpha) + " rows " + std::to_string(o.firstRow) +
           " + " + std::to_string(o.rowCount);
}

ViewCheck::ViewCheck(Size largest) : source_(room(largest, 2)), picture_(room(largest, 8)) {}

void ViewCheck::hold(const InputFormat& format, Size size, const std::vector<uint16_t>& numbers, Spacing spacing,
                     const KroViewOptions& options, guard::Placement placement) {
    source_.hold(format, size, numbers, spacing, wordsOf(format, options).bigEndian, placement);
}

bool ViewCheck::convert(const Asked& asked, const Planes& expected) {
    for (const kro::Kernels* table : tables_) {
        if (!convert(*table, asked, expected, guard::Placement::againstStart, guard::Fill::one) ||
            !convert(*table, asked, expected, guard::Placement::againstEnd, guard::Fill::other)) {
            return false;
        }
    }
    return true;
}

bool ViewCheck::convert(const kro::Kernels& table, const Asked& asked, const Planes& expected,
                        guard::Placement placement, guard::Fill fill) {
    const KroSourceView& source = source_.view();
    const KroPictureView& picture =
        picture_.lay(asked.output, {source.height, source.width}, asked.spacing, placement, fill, asked.alphaPlane);
    paintStack();
    const int32_t status = kro::convertView(table, &source, &picture, &asked.options);
    const testing::AssertionResult result = status != KRO_OK
                                                ? testing::AssertionFailure() << "status " << status
                                                : picture_.holds(expected, bandOf(asked.options, source.height));
    uint64_t bytes = 0;
    for (const auto& plane : expected) {
        bytes += plane.size();
    }
    countComparison(table, bytes * static_cast<uint64_t>(bandOf(asked.options, source.height).rows) /
                               static_cast<uint64_t>(source.height));
    if (!result) {
        ADD_FAILURE() << table.name << ", " << describe(source, asked) << ": " << result.message();
        return false;
    }
    return true;
}
