#!/usr/bin/env python3
"""Calls of kro.convert with arguments from anywhere: right ones, nearly right ones and nonsense, in memory between pages
that nobody may touch. A call gives the picture that the library gives, or an exception that names an argument.

Case N is the same for ever: `--first N --count 1` repeats one.
"""

import argparse
import faulthandler
import random
import sys
import time
import warnings

import kro
import native
import numpy
from native import ALGORITHMS, ALL_FORMATS, OUTPUTS

NAMES = sorted(ALL_FORMATS)
ARGUMENTS = ("frame", "format", "shape", "algorithm", "output", "out", "threads", "bits")
NUMBERS = (0, -1, 1, 3, 4, 7, 1 << 30, (1 << 30) + 1, (1 << 31) - 1, 1 << 31, 1 << 32, (1 << 63) - 1, 1 << 63, -(1 << 63),
           1 << 100)
NONSENSE = (None, 5, -1, 1.5, "", "x", b"", b"abc", (), [], {}, object(), True, "Bayer", "é", "\udc80", "a\0b", 1 << 70,
            numpy.float32(1), numpy.zeros((0, 4), "u1"), numpy.zeros((4, 4), "c16"), numpy.zeros(5, "O"),
            numpy.zeros((2, 2, 2, 2), "u1"), memoryview(b""), range(3))


class Case:
    def __init__(self, number):
        self.random = random.Random(number)
        self.pixel_format = self.random.choice(NAMES)
        self.known = ALL_FORMATS[self.pixel_format]
        self.height, self.width = self.side(), self.side()
        self.output = self.random.choice(sorted(OUTPUTS))
        self.held = []
        self.arguments = {"frame": self.frame(), "format": self.format(), "shape": (self.height, self.width)}
        self.add_others()
        self.spoil()

    def chance(self, part):
        return self.random.random() < part

    def side(self):
        return self.random.choice((4, 5, 6, 7, 8, 9, 15, 16, 17, 31, 33, self.random.randrange(4, 70)))

    def memory(self, size):
        """Random bytes whose first or last touches a page that must not be read."""
        guarded = native.Guarded(size)
        self.held.append(guarded)
        array = guarded.array(size, self.chance(0.5) and size % 2 == 0)
        array[...] = numpy.frombuffer(self.random.randbytes(size), "u1")
        return array

    def format(self):
        return self.random.choice((self.pixel_format, self.known.code, hex(self.known.code), self.pixel_format.lower()
                                   if not self.pixel_format.endswith("P") else self.pixel_format))

    def frame(self):
        plain = self.known.packing in ("byte", "word")
        return self.rows(plain) if self.chance(0.7) else self.bytes()

    def bytes(self):
        size = native.frame_bytes(self.pixel_format, self.height * self.width)
        change = self.random.choice((*[0] * 14, 1, -1, 2, self.height, self.height * 2, -size))
        data = self.memory(max(size + change, 0))
        return self.random.choice((data, memoryview(data), data.tobytes(), bytearray(data)))

    def rows(self, plain):
        kind = "u1"
        if self.known.packing == "word" and self.chance(0.8):
            kind = self.random.choice(("<u2", "<u2", ">u2"))
        size = numpy.dtype(kind).itemsize
        needed = native.frame_bytes(self.pixel_format, self.width) // size
        more = self.random.choice((0, 0, 0, 0, 1, 5, -1)) if not plain or size == 1 else 0
        step = self.random.choice((1, 1, 1, 1, 2, 3))
        columns = max(needed + more, 0) * step
        around = self.memory(self.height * columns * size).view(kind).reshape(self.height, columns)
        view = around[:: self.random.choice((1, 1, 1, -1)), :: step * self.random.choice((1, 1, 1, -1))]
        return numpy.broadcast_to(view[:1], view.shape) if self.chance(0.03) and len(view) else view

    def add_others(self):
        if self.known.packing in ("byte", "word") and self.chance(0.5):
            del self.arguments["shape"]
        if self.chance(0.8):
            self.arguments["algorithm"] = self.random.choice(sorted(ALGORITHMS))
        if self.chance(0.8):
            self.arguments["output"] = self.output
        else:
            self.output = "RGB8"
        if self.chance(0.3):
            self.arguments["threads"] = self.random.choice((None, 1, 2, 3, 100))
        if self.chance(0.3):
            right = (None, *(range(8, 17) if self.known.packing == "word" else (self.known.bits,)))
            self.arguments["bits"] = self.random.choice(right if self.chance(0.9) else range(7, 18))
        if self.chance(0.5):
            self.arguments["out"] = self.out()

    def out(self):
        shape = native.picture_shape(self.output, self.height, self.width)
        kind = OUTPUTS[self.output][2]
        size = int(numpy.prod(shape)) * numpy.dtype(kind).itemsize
        if self.chance(0.3):
            return self.memory(max(size + self.random.choice((0, 0, 0, 1, -1, 7)), 0))
        step = self.random.choice((1, 1, 1, 2))
        around = self.memory(size * step).view(kind)
        way = self.random.randrange(3)
        if way == 0:
            return around[:size // numpy.dtype(kind).itemsize].reshape(shape)[::-1]
        if way == 1:
            return around.reshape((shape[0] * step, *shape[1:]))[::step]
        return around.reshape((*shape[:-1], shape[-1] * step))[..., ::step]

    def spoil(self):
        """One or two arguments become something else."""
        for _ in range(self.random.choice((0, 0, 0, 0, 1, 2))):
            name = self.random.choice(ARGUMENTS)
            if name == "shape" and self.chance(0.6):
                value = (self.random.choice((self.height, *NUMBERS)), self.random.choice((self.width, *NUMBERS)))
            elif name in ("threads", "bits") and self.chance(0.6):
                value = self.random.choice(NUMBERS) % 64 if name == "threads" else self.random.choice(NUMBERS)
            elif name == "out" and self.chance(0.3):
                value = self.arguments["frame"]
            elif name == "format" and self.chance(0.5):
                letters = list(self.pixel_format)
                letters[self.random.randrange(len(letters))] = chr(self.random.randrange(1, 300))
                value = "".join(letters)
            else:
                value = self.random.choice(NONSENSE)
            self.arguments[name] = value

    def expected(self):
        """Of a call that went well."""
        frame = numpy.asarray(memoryview(self.arguments["frame"]))
        shape = self.arguments.get("shape")
        height, width = map(int, frame.shape if shape is None else shape)
        row = native.frame_bytes(self.pixel_format, width)
        frame = frame if frame.ndim == 1 else frame[:, :row // frame.itemsize]
        return native.picture(frame.tobytes(), self.pixel_format, height, width,
                              self.arguments.get("algorithm", "edge"), self.output,
                              int(self.arguments.get("bits") or 0), frame.dtype.str[0] == ">",
                              row if frame.ndim == 2 else 0)


def matches(case, result):
    if "format" in case.arguments and isinstance(case.arguments["format"], str):
        case.pixel_format = kro._kro.input_name(case.arguments["format"])
    if isinstance(case.arguments.get("output"), str):
        case.output = {f.code: f.name for f in kro.formats()}[OUTPUTS[case.output][0]]
    expected = case.expected()
    picture = result if isinstance(result, numpy.ndarray) and result.ndim > 1 else numpy.asarray(memoryview(result))
    return picture.tobytes() == expected.tobytes()


def run(number):
    """True where the call went well, False where it was refused; an AssertionError for anything else."""
    case = Case(number)
    try:
        result = kro.convert(**case.arguments)
    except (TypeError, ValueError, BufferError) as error:
        text = str(error)
        assert text.startswith(tuple(name + ":" for name in ARGUMENTS)) or text.startswith("convert()"), (number, text)
        return False
    assert matches(case, result), (number, case.arguments)
    return True


def main():
    parser = argparse.ArgumentParser(description="Throws arguments from anywhere at kro.convert.")
    parser.add_argument("--first", type=int, default=0, metavar="N", help="the first case")
    parser.add_argument("--count", type=int, default=1 << 62, metavar="N", help="how many cases at most")
    parser.add_argument("--seconds", type=float, default=60, metavar="S", help="how long at most")
    options = parser.parse_args()
    faulthandler.enable()
    warnings.simplefilter("ignore", kro.CopyWarning)
    end = time.monotonic() + options.seconds
    went_well = done = 0
    while done < options.count and time.monotonic() < end:
        went_well += run(options.first + done)
        done += 1
    print(f"{done} calls from case {options.first} on: {went_well} pictures, all right; {done - went_well} refused")


if __name__ == "__main__":
    sys.exit(main())
