"""What the tests of the command share: calling it, frames made here, and the library called directly."""

import ctypes
import os
import random
import subprocess

from folder import FolderCase

# What a sanitized library needs to load into this process is no business of the commands that are started.
for variable in ("LD_PRELOAD", "ASAN_OPTIONS"):
    os.environ.pop(variable, None)

SANITIZED = "KRO_SANITIZED" in os.environ
COMMAND = os.environ["KRO_COMMAND"]
LIBRARY = os.environ["KRO_LIBRARY"]
FRAMES = os.path.join(os.path.dirname(__file__), "..", "..", "..", "shared", "frames")

PHASES = {"RG": "RGGB", "GR": "GRBG", "GB": "GBRG", "BG": "BGGR"}
OUTPUTS = {"BGR8": (0x02180015, 3), "RGB8": (0x02180014, 3), "BGRa8": (0x02200017, 4), "RGBa8": (0x02200016, 4),
           "RGB8Planar": (0x02180021, 3), "BGR8Planar": (0x02180025, 3), "Mono8": (0x01080001, 1)}
VIEW_ALPHA = 1
ALGORITHMS = {"nearest": 0, "bilinear": 1, "edge": 2, "fine": 3}


def some(cases):
    """All of them; of a sanitized command, whose every call takes several times as long, every eighth."""
    return list(cases)[::8 if SANITIZED else 1]


class Format:
    """A pixel format as this side knows it, from nothing but its name and code."""

    def __init__(self, name, code):
        self.name, self.code = name, code
        self.bits = int("".join(c for c in name if c.isdigit()))
        csi2 = name.endswith("P")
        self.packing = ("csi2" if csi2 else "lsb" if name.endswith("p") else "packed" if name.endswith("Packed")
                        else "byte" if self.bits == 8 else "word")
        self.packed = self.packing == "packed"
        self.sites = name[1:5] if name[0] == "S" else PHASES[name[5:7]] if name[0] == "B" else "YYYY"

    def pack(self, samples, width=None, stride=0, big_endian=False, fill=0xA5):
        """A frame of these samples, as a camera sends it; rows of a width so many bytes apart, filled up."""
        if stride:
            rows = [self.pack(samples[i:i + width], big_endian=big_endian) for i in range(0, len(samples), width)]
            return b"".join(row + bytes([fill]) * (stride - len(row)) for row in rows)
        if self.packing == "byte":
            return bytes(samples)
        if self.packing == "word":
            return b"".join(s.to_bytes(2, "big" if big_endian else "little") for s in samples)
        together = 4 if self.bits != 12 and self.packing != "packed" else 2
        samples = samples + [0] * (-len(samples) % together)
        return b"".join(self.group(samples[i:i + together]) for i in range(0, len(samples), together))

    def group(self, samples):
        """The fewest samples that take whole bytes."""
        low = self.bits - 8
        mask = (1 << low) - 1
        if self.packing == "lsb":
            number = sum(s << (i * self.bits) for i, s in enumerate(samples))
            return number.to_bytes(len(samples) * self.bits // 8, "little")
        if self.packing == "csi2":
            number = sum((s & mask) << (i * low) for i, s in enumerate(samples))
            return bytes(s >> low for s in samples) + number.to_bytes(len(samples) * low // 8, "little")
        a, b = samples
        return bytes([a >> low, (a & mask) | (b & mask) << 4, b >> low])


def _formats():
    codes = {"Mono8": 0x01080001, "Mono10": 0x01100003, "Mono10Packed": 0x010C0004, "Mono12": 0x01100005,
             "Mono12Packed": 0x010C0006, "Mono14": 0x01100025, "Mono16": 0x01100007}
    for kind, first in (("8", 0x01080008), ("10", 0x0110000C), ("12", 0x01100010), ("16", 0x0110002E),
                        ("10Packed", 0x010C0026), ("12Packed", 0x010C002A)):
        for place, phase in enumerate(("GR", "RG", "GB", "BG")):
            codes["Bayer" + phase + kind] = first + place
    return {name: Format(name, code) for name, code in codes.items()}


def _view_formats():
    codes = {"Mono10p": 0x010A0046, "Mono12p": 0x010C0047, "Mono14p": 0x010E0104}
    for place, phase in enumerate(("BG", "GB", "GR", "RG")):
        codes[f"Bayer{phase}10p"] = 0x010A0052 + 2 * place
        codes[f"Bayer{phase}12p"] = 0x010C0053 + 2 * place
    for place, phase in enumerate(("GR", "RG", "GB", "BG")):
        codes[f"Bayer{phase}14p"] = 0x010E0105 + place
        codes[f"Bayer{phase}14"] = 0x01100109 + place
    for bits, letter in (("10", "A"), ("12", "C"), ("14", "E")):
        codes[f"Y{bits}P"] = int.from_bytes(f"Y{bits}P".encode(), "little")
        for sites, first in (("RGGB", "R"), ("GRBG", "g"), ("GBRG", "G"), ("BGGR", "B")):
            codes[f"S{sites}{bits}P"] = int.from_bytes(f"p{first}{letter}{letter}".encode(), "little")
    return {name: Format(name, code) for name, code in codes.items()}


# Those that kroDemosaicing takes, and with those that only views take.
FORMATS = _formats()
ALL_FORMATS = {**FORMATS, **_view_formats()}


class Image(ctypes.Structure):
    _fields_ = [("height", ctypes.c_int32), ("width", ctypes.c_int32), ("format", ctypes.c_uint32),
                ("data", ctypes.c_void_p)]


class SourceView(ctypes.Structure):
    _fields_ = [("data", ctypes.c_void_p), ("stride", ctypes.c_ssize_t), ("height", ctypes.c_int32),
                ("width", ctypes.c_int32), ("format", ctypes.c_uint32)]


class PictureView(ctypes.Structure):
    _fields_ = [("plane", ctypes.c_void_p * 4), ("stride", ctypes.c_ssize_t * 4), ("format", ctypes.c_uint32)]


class ViewOptions(ctypes.Structure):
    _fields_ = [("size", ctypes.c_uint32), ("algorithm", ctypes.c_int), ("flags", ctypes.c_uint32),
                ("alpha", ctypes.c_int32), ("bits", ctypes.c_int32), ("firstRow", ctypes.c_int32),
                ("rowCount", ctypes.c_int32)]


def library():
    """The library itself, to compare its bytes with the command's."""
    return ctypes.CDLL(LIBRARY)


def converted(frame, width, height, code, algorithm, output, stride=0):
    """The bytes that kroConvertView gives for a frame, of output formats of 8 bits; alpha is 0."""
    output_code, channels = OUTPUTS[output]
    samples = ctypes.create_string_buffer(frame, len(frame))
    pixels = ctypes.create_string_buffer(width * height * channels)
    source = SourceView(ctypes.addressof(samples), stride, height, width, code)
    picture = PictureView(format=output_code)
    for plane in range(3 if output.endswith("Planar") else 1):
        picture.plane[plane] = ctypes.addressof(pixels) + plane * width * height
    options = ViewOptions(ctypes.sizeof(ViewOptions), ALGORITHMS[algorithm], VIEW_ALPHA)
    status = library().kroConvertView(ctypes.byref(source), ctypes.byref(picture), ctypes.byref(options))
    assert status == 0, status
    return pixels.raw


def demosaic(frame, width, height, code, algorithm, output):
    """The bytes that kroDemosaicing gives for a frame; by the algorithm that it does not know, kroConvertView."""
    if algorithm == "fine":
        return converted(frame, width, height, code, algorithm, output)
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


def demosaic_samples(samples, width, height, pixel_format, algorithm, output, bits=None):
    """The same for samples of any format: their eight high bits, as a frame of bytes."""
    bits = pixel_format.bits if bits is None else bits
    phases = {sites: phase for phase, sites in PHASES.items()}
    name = "Mono8" if pixel_format.sites == "YYYY" else f"Bayer{phases[pixel_format.sites]}8"
    return demosaic(bytes(s >> (bits - 8) for s in samples), width, height, FORMATS[name].code, algorithm, output)


def demosaic16(samples, width, height, function):
    """The words, in B, G, R order, that one of the 16-bit entries gives."""
    source = (ctypes.c_uint16 * len(samples))(*samples)
    target = (ctypes.c_uint16 * (3 * len(samples)))()
    assert getattr(library(), function)(source, height, width, target) == 0
    return list(target)


def random_samples(count, bits, seed=1):
    generator = random.Random(seed)
    return [generator.randrange(1 << bits) for _ in range(count)]


def read_terminal(near):
    """What was said to a terminal until nobody had its other side open any more; it is closed."""
    said = b""
    try:
        while part := os.read(near, 65536):
            said += part
    except OSError:
        pass
    os.close(near)
    return said


class Case(FolderCase):
    """The command in a folder of the test's own."""

    def run(self, result=None):
        """Skipped tests are named in the file that KRO_TEST_TALLY names, as those of the library are."""
        result = super().run(result)
        if "KRO_TEST_TALLY" in os.environ and any(test is self for test, _ in result.skipped):
            with open(os.environ["KRO_TEST_TALLY"], "a") as file:
                file.write(f"skipped {self.id()}\n")
        return result

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
        samples = random_samples(width * height * frames, ALL_FORMATS[pixel_format].bits, seed)
        data = ALL_FORMATS[pixel_format].pack(samples)
        self.write(name, data)
        return data
