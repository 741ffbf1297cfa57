"""What the tests of the command share: calling it, frames made here, and the library called directly."""

import ctypes
import os
import random
import subprocess
import tempfile
import unittest

# What a sanitized library needs to load into this process is no business of the commands that are started.
for variable in ("LD_PRELOAD", "ASAN_OPTIONS"):
    os.environ.pop(variable, None)

COMMAND = os.environ["KRO_COMMAND"]
LIBRARY = os.environ["KRO_LIBRARY"]
FRAMES = os.path.join(os.path.dirname(__file__), "..", "..", "..", "shared", "frames")

PHASES = {"RG": "RGGB", "GR": "GRBG", "GB": "GBRG", "BG": "BGGR"}
OUTPUTS = {"BGR8": (0x02180015, 3), "RGB8": (0x02180014, 3), "BGRa8": (0x02200017, 4), "RGBa8": (0x02200016, 4),
           "RGB8Planar": (0x02180021, 3), "BGR8Planar": (0x02180025, 3), "Mono8": (0x01080001, 1)}
ALGORITHMS = {"nearest": 0, "bilinear": 1, "edge": 2}


class Format:
    """A pixel format as this side knows it, from nothing but its PFNC name and code."""

    def __init__(self, name, code):
        self.name, self.code = name, code
        self.packed = name.endswith("Packed")
        self.sites = PHASES[name[5:7]] if name.startswith("Bayer") else "YYYY"
        self.bits = int("".join(c for c in name if c.isdigit()))

    def pack(self, samples):
        """A frame of these samples, as a camera sends it."""
        if self.bits == 8:
            return bytes(samples)
        if not self.packed:
            return b"".join(s.to_bytes(2, "little") for s in samples)
        low = self.bits - 8
        frame = bytearray()
        for a, b in zip(samples[::2], samples[1::2] + [0]):
            mask = (1 << low) - 1
            frame += bytes([a >> low, (a & mask) | (b & mask) << 4, b >> low])
        return bytes(frame)


def _formats():
    codes = {"Mono8": 0x01080001, "Mono10": 0x01100003, "Mono10Packed": 0x010C0004, "Mono12": 0x01100005,
             "Mono12Packed": 0x010C0006, "Mono14": 0x01100025, "Mono16": 0x01100007}
    for kind, first in (("8", 0x01080008), ("10", 0x0110000C), ("12", 0x01100010), ("16", 0x0110002E),
                        ("10Packed", 0x010C0026), ("12Packed", 0x010C002A)):
        for place, phase in enumerate(("GR", "RG", "GB", "BG")):
            codes["Bayer" + phase + kind] = first + place
    return {name: Format(name, code) for name, code in codes.items()}


FORMATS = _formats()


class Image(ctypes.Structure):
    _fields_ = [("height", ctypes.c_int32), ("width", ctypes.c_int32), ("format", ctypes.c_uint32),
                ("data", ctypes.c_void_p)]


def library():
    """The library itself, to compare its bytes with the command's."""
    return ctypes.CDLL(LIBRARY)


def demosaic(frame, width, height, code, algorithm, output):
    """The bytes that kroDemosaicing gives for a frame."""
    lib = library()
    output_code, channels = OUTPUTS[output]
    handle = ctypes.c_void_p()
    assert lib.kroCreate(ctypes.byref(handle)) == 0
    assert lib.kroDemosaicSetConfig(handle, ctypes.byref(ctypes.c_uint32(output_code))) == 0
    source = ctypes.create_string_buffer(frame, len(frame))
    target = ctypes.create_string_buffer(width * height * channels)
    image_in = Image(height, width, code, ctypes.addressof(source))
    image_out = Image(0, 0, 0, ctypes.addressof(target))
    status = lib.kroDemosaicing(handle, ctypes.byref(image_in), ALGORITHMS[algorithm], ctypes.byref(image_out))
    assert status == 0, status
    lib.kroRelease(ctypes.byref(handle))
    return target.raw


def demosaic16(samples, width, height, function):
    """The words, in B, G, R order, that one of the 16-bit entries gives."""
    source = (ctypes.c_uint16 * len(samples))(*samples)
    target = (ctypes.c_uint16 * (3 * len(samples)))()
    assert getattr(library(), function)(source, height, width, target) == 0
    return list(target)


def random_samples(count, bits, seed=1):
    generator = random.Random(seed)
    return [generator.randrange(1 << bits) for _ in range(count)]


class Case(unittest.TestCase):
    """Each test works in an empty folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)
        return self.path(name)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def names(self):
        return sorted(os.listdir(self.folder))

    def call(self, *arguments, data=None, **options):
        return subprocess.run([COMMAND, *arguments], input=data, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              cwd=self.folder, timeout=120, **options)

    def kro(self, *arguments, data=None):
        """A call that must succeed; its standard output."""
        result = self.call(*arguments, data=data)
        self.assertEqual(result.returncode, 0, (arguments, result.stderr))
        return result.stdout

    def kro_fails(self, code, *arguments, data=None, says=(), **options):
        """A call that must fail with one line on standard error that names all of says, and print nothing."""
        result = self.call(*arguments, data=data, **options)
        said = result.stderr.decode()
        self.assertEqual(result.returncode, code, (arguments, said))
        self.assertEqual(said.count("\n"), 1, said)
        for words in [says] if isinstance(says, str) else says:
            self.assertIn(words, said)
        return result

    def frame_file(self, name, width, height, pixel_format, seed=1, frames=1):
        """A file of random frames; its bytes."""
        samples = random_samples(width * height * frames, FORMATS[pixel_format].bits, seed)
        data = FORMATS[pixel_format].pack(samples)
        self.write(name, data)
        return data
