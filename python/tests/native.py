"""What the tests compare with: the library's C function, called without the package, on frames without gaps."""

import ctypes
import mmap
import os
import sys

import numpy

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "..", "tests", "cli"))
# The formats and records as the command's tests know them.
from support import ALGORITHMS, ALL_FORMATS, PictureView, SourceView, ViewOptions  # noqa: E402

LIBRARY = ctypes.CDLL(os.environ["KRO_LIBRARY"])
LIBC = ctypes.CDLL(None)
BIG_ENDIAN = 2

# Name: code, shape of the array around (height, width), type.
OUTPUTS = {
    "RGB8": (0x02180014, 3, "u1"), "BGR8": (0x02180015, 3, "u1"), "RGBa8": (0x02200016, 4, "u1"),
    "BGRa8": (0x02200017, 4, "u1"), "RGBx8": (0x82200001, 4, "u1"), "BGRx8": (0x82200002, 4, "u1"),
    "aRGB8": (0x82200003, 4, "u1"), "aBGR8": (0x82200004, 4, "u1"), "xRGB8": (0x82200005, 4, "u1"),
    "xBGR8": (0x82200006, 4, "u1"), "RGB8_Planar": (0x02180021, "planes", "u1"),
    "BGR8_Planar": (0x02180025, "planes", "u1"), "Mono8": (0x01080001, 1, "u1"), "RGB16": (0x02300033, 3, "u2"),
    "BGR16": (0x0230004B, 3, "u2"), "RGBa16": (0x02400064, 4, "u2"), "BGRa16": (0x02400051, 4, "u2"),
    "aRGB16": (0x82400007, 4, "u2"), "aBGR16": (0x82400008, 4, "u2"), "RGB16_Planar": (0x02300024, "planes", "u2"),
    "BGR16_Planar": (0x82300009, "planes", "u2"), "Mono16": (0x01100007, 1, "u2"),
}


def picture_shape(output, height, width):
    channels = OUTPUTS[output][1]
    return ((3, height, width) if channels == "planes" else (height, width) if channels == 1
            else (height, width, channels))


def picture(data, pixel_format, height, width, algorithm="edge", output="RGB8", bits=0, big_endian=False,
            stride=0):
    """The picture of a frame in bytes, without gaps but for a stride."""
    code, channels, kind = OUTPUTS[output]
    target = numpy.full(picture_shape(output, height, width), 0x5A, kind)
    held = numpy.frombuffer(data, "u1").copy()
    source = SourceView(held.ctypes.data, stride, height, width, ALL_FORMATS[pixel_format].code)
    planes = PictureView(format=code)
    for i in range(3 if channels == "planes" else 1):
        planes.plane[i] = target.ctypes.data + i * target.nbytes // 3
    flags = BIG_ENDIAN if big_endian else 0
    options = ViewOptions(ctypes.sizeof(ViewOptions), ALGORITHMS[algorithm], flags, 0, bits, 0, 0)
    status = LIBRARY.kroConvertView(ctypes.byref(source), ctypes.byref(planes), ctypes.byref(options))
    assert status == 0, status
    return target


def frame_bytes(pixel_format, samples):
    """How long so many samples without gaps are: whole groups of packed ones."""
    known = ALL_FORMATS[pixel_format]
    together, size = {"byte": (1, 1), "word": (1, 2), "packed": (2, 3)}.get(known.packing, (None, None))
    if together is None:
        together = 2 if known.bits == 12 else 4
        size = together * known.bits // 8
    return -(-samples // together) * size


def random_frame(pixel_format, height, width, seed=0):
    """Bytes without gaps; words keep to their format."""
    known = ALL_FORMATS[pixel_format]
    generator = numpy.random.default_rng([seed, height, width])
    if known.packing == "word":
        return generator.integers(0, 1 << known.bits, height * width, "u2").tobytes()
    return generator.integers(0, 256, frame_bytes(pixel_format, height * width), "u1").tobytes()


class Guarded:
    """Memory with a page before and one behind that nobody may touch."""

    def __init__(self, size):
        page = mmap.PAGESIZE
        self.size = -(-max(size, 1) // page) * page
        self.memory = mmap.mmap(-1, self.size + 2 * page)
        start = ctypes.addressof(ctypes.c_char.from_buffer(self.memory))
        for at in (start, start + page + self.size):
            assert LIBC.mprotect(ctypes.c_void_p(at), page, 0) == 0

    def array(self, size, at_end):
        """So many bytes that touch the page before or behind."""
        start = mmap.PAGESIZE + (self.size - size if at_end else 0)
        return numpy.frombuffer(self.memory, "u1", size, start)
