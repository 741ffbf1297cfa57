#include "formats.hpp"

#include <array>
#include <kro/kro.hpp>
#include <string_view>

#include "frames/format_names.hpp"
#include "pictures/picture.hpp"
#include "support/failure.hpp"

namespace binding {

namespace {

// Names are few, spellings of them without end.
constexpr Py_ssize_t mostRemembered = 256;
constexpr uint64_t bigEndianMark = uint64_t{1} << 32;

std::string textOf(PyObject* text, const char* argument) {
    Py_ssize_t length = 0;
    const char* start = PyUnicode_AsUTF8AndSize(text, &length);
    if (start == nullptr && PyErr_ExceptionMatches(PyExc_UnicodeError) != 0) {
        PyErr_Clear();
        raise(PyExc_ValueError, "%s: %R came, expected the name of a pixel format", argument, text);
    }
    checked(start);
    return {start, static_cast<std::size_t>(length)};
}

uint32_t codeOf(PyObject* number, const char* argument, const char* what) {
    const unsigned long code = PyLong_AsUnsignedLong(number);
    if ((code == static_cast<unsigned long>(-1) && PyErr_Occurred() != nullptr) || code > UINT32_MAX) {
        PyErr_Clear();
        raise(PyExc_ValueError, "%s: %R came, expected %s", argument, number, what);
    }
    return static_cast<uint32_t>(code);
}

const cli::OutputFormat* findOutput(uint32_t code) {
    for (const cli::OutputFormat& format : cli::outputFormats()) {
        if (format.code == code) {
            return &format;
        }
    }
    return nullptr;
}

uint64_t readInput(PyObject* asked) {
    constexpr const char* expected = "the code of a pixel format of frames (kro.formats() lists all)";
    if (PyLong_Check(asked)) {
        const uint32_t code = codeOf(asked, "format", expected);
        if (cli::findInputFormat(code) == nullptr) {
            raise(PyExc_ValueError, "format: %R came, expected %s", asked, expected);
        }
        return code;
    }
    const cli::NamedInput named = cli::requireInputFormat(textOf(asked, "format"));
    return named.format->code | (named.bigEndian ? bigEndianMark : 0);
}

uint64_t readOutput(PyObject* asked) {
    constexpr const char* expected = "the code of a pixel format of pictures (kro.formats() lists all)";
    if (PyLong_Check(asked)) {
        const uint32_t code = codeOf(asked, "output", expected);
        if (findOutput(code) == nullptr) {
            raise(PyExc_ValueError, "output: %R came, expected %s", asked, expected);
        }
        return code;
    }
    return cli::requireOutputFormat(textOf(asked, "output")).code;
}

// Looked up once; from then on a dictionary of Python's, whose strings know their hash, answers sooner.
template <typename Find>
uint64_t remembered(PyObject* asked, PyObject* found, const char* argument, Find&& find) {
    if (!PyUnicode_Check(asked) && !PyLong_Check(asked)) {
        raise(PyExc_TypeError, "%s: %R came, expected the name of a pixel format or its code", argument, asked);
    }
    if (PyObject* known = PyDict_GetItemWithError(found, asked)) {
        return PyLong_AsUnsignedLongLong(known);
    }
    if (PyErr_Occurred() != nullptr) {
        throw Raised{};
    }
    uint64_t value = 0;
    try {
        value = find(asked);
    } catch (const cli::Failure& failure) {
        raise(PyExc_ValueError, "%s: %s", argument, inPython(failure.what()).c_str());
    }
    if (PyDict_Size(found) >= mostRemembered) {
        PyDict_Clear(found);
    }
    const Reference number(checked(PyLong_FromUnsignedLongLong(value)));
    if (PyDict_SetItem(found, asked, number.get()) != 0) {
        throw Raised{};
    }
    return value;
}

struct Word {
    std::string_view ofCommand;
    std::string_view ofPython;
};

constexpr std::array<Word, 8> words{{{"--frames 1- takes", "ignore_rest=True takes"},
                                     {"--size WIDTHxHEIGHT", "shape=(height, width)"},
                                     {"--size ", "shape="},
                                     {"--format", "format="},
                                     {"--stride ", "stride="},
                                     {"--skip ", "skip="},
                                     {"--big-endian", "big_endian=True"},
                                     {"kro formats", "kro.formats()"}}};

Reference tupleOf(const std::vector<std::string>& texts) {
    Reference tuple(checked(PyTuple_New(static_cast<Py_ssize_t>(texts.size()))));
    for (std::size_t i = 0; i < texts.size(); i++) {
        PyTuple_SetItem(tuple.get(), static_cast<Py_ssize_t>(i), checked(PyUnicode_FromString(texts[i].c_str())));
    }
    return tuple;
}

// Name, code, bits, what order, how packed, whether of frames, whether of pictures, channels, other names.
PyObject* describe(const kro::NamedFormat& named) {
    const uint32_t code = static_cast<uint32_t>(named.format);
    const cli::InputFormat* input = cli::findInputFormat(code);
    const cli::OutputFormat* output = findOutput(code);
    const bool grey = input != nullptr ? !input->isBayer() : output->order == cli::Order::grey;
    const std::string letters(named.name.substr(0, named.name.find_first_of("0123456789")));
    const std::string sites = grey ? "Y" : input != nullptr ? cli::firstSites(input->phase) : letters;
    const char* packing = input != nullptr ? packingName(*input) : output->planar ? "planar" : "interleaved";
    std::vector<std::string> names;
    if (input != nullptr) {
        names = cli::otherNames(*input);
        names.insert(names.begin(), cli::shortAlias(*input));
    }
    const Reference others = tupleOf(names);
    return checked(Py_BuildValue("(skissOOiO)", named.name.data(), static_cast<unsigned long>(code),
                                 input != nullptr ? input->bits : output->bits, sites.c_str(), packing,
                                 input != nullptr ? Py_True : Py_False, output != nullptr ? Py_True : Py_False,
                                 output == nullptr ? 1 : cli::channelCount(output->order), others.get()));
}

}  // namespace

Input inputOf(PyObject* asked, PyObject* found) {
    const uint64_t value = remembered(asked, found, "format", readInput);
    return {cli::findInputFormat(static_cast<uint32_t>(value)), (value & bigEndianMark) != 0};
}

const cli::OutputFormat& outputOf(PyObject* asked, PyObject* found) {
    return cli::outputFormat(static_cast<uint32_t>(remembered(asked, found, "output", readOutput)));
}

const char* nameOf(uint32_t code) { return kro::nameOf(static_cast<kro::PixelFormat>(code)).data(); }

const char* packingName(const cli::InputFormat& format) {
    constexpr std::array<const char*, 5> names{"byte", "word", "packed", "lsb", "csi2"};
    return names.at(static_cast<std::size_t>(format.packing));
}

std::string inPython(std::string text) {
    for (const Word& word : words) {
        for (std::size_t at = text.find(word.ofCommand); at != std::string::npos;
             at = text.find(word.ofCommand, at)) {
            text.replace(at, word.ofCommand.size(), word.ofPython);
            at += word.ofPython.size();
        }
    }
    return text;
}

PyObject* listFormats() {
    Reference list(checked(PyList_New(0)));
    for (const kro::NamedFormat& named : kro::pixelFormats) {
        const Reference entry(describe(named));
        if (PyList_Append(list.get(), entry.get()) != 0) {
            throw Raised{};
        }
    }
    return list.release();
}

}  // namespace binding
