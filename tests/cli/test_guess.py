"""kro guess: frames of known layouts told by their bytes alone, the errors, the contact sheet, hints of other commands."""

import math
import os
import random
import re
import struct
import subprocess

from pictures import read_png, write_ppm
from support import COMMAND, FORMATS, FRAMES, Case, random_samples, some

SIZE = (640, 480)
EXCHANGED = {"RG": "BG", "BG": "RG", "GR": "GB", "GB": "GR"}
SITES = {"RG": "RGGB", "GR": "GRBG", "GB": "GBRG", "BG": "BGGR"}


def scene(width, height, seed=1):
    """Coloured discs before a slope, with noise: 16-bit samples of a picture that has edges in all directions."""
    generator = random.Random(seed)
    discs = [(generator.randrange(width), generator.randrange(height), generator.randrange(20, 90),
              [generator.randrange(4000, 60000) for _ in range(3)]) for _ in range(40)]
    ground = [[(12000 + 30 * y, 20000 + 20 * x, 40000 - 40 * y) for x in range(width)] for y in range(height)]
    for left, top, radius, colour in discs:
        for y in range(max(0, top - radius), min(height, top + radius)):
            half = int(math.sqrt(radius ** 2 - (y - top) ** 2))
            for x in range(max(0, left - half), min(width, left + half)):
                shade = 1 - 0.4 * (x - left + radius) / (2 * radius)
                ground[y][x] = tuple(c * shade for c in colour)
    noise = [generator.gauss(0, 350) for _ in range(7919)]
    samples, at = [], 0
    for row in ground:
        for pixel in row:
            for c in pixel:
                at += 1
                samples.append(min(65535, max(0, int(c + noise[at % 7919]))))
    return samples


def bits_lowest_first(samples, bits):
    group = {10: 4, 12: 2, 14: 4}[bits]
    packed = bytearray()
    for i in range(0, len(samples), group):
        value = sum(sample << bits * place for place, sample in enumerate(samples[i:i + group]))
        packed += value.to_bytes(group * bits // 8, "little")
    return bytes(packed)


def csi2(samples, bits):
    group = {10: 4, 12: 2, 14: 4}[bits]
    low = bits - 8
    packed = bytearray()
    for i in range(0, len(samples), group):
        part = samples[i:i + group]
        rest = sum((sample & (1 << low) - 1) << low * place for place, sample in enumerate(part))
        packed += bytes(sample >> low for sample in part) + rest.to_bytes(group * low // 8, "little")
    return bytes(packed)


class Guess(Case):
    @classmethod
    def setUpClass(cls):
        """One scene serves all; mosaics of it are made once."""
        cls.picture = write_ppm(*SIZE, scene(*SIZE), 65535)
        cls.mosaics = {}

    def samples(self, phase, bits):
        """A mosaic of the scene as numbers of so many bits; phase None is grey."""
        if phase not in self.mosaics:
            name = f"Bayer{phase}16" if phase else "Mono16"
            made = subprocess.run([COMMAND, "mosaic", "-q", "-", "-f", name, "-o", "-"], input=self.picture, check=True,
                                  stdout=subprocess.PIPE).stdout
            self.mosaics[phase] = struct.unpack(f"<{len(made) // 2}H", made)
        return [sample >> 16 - bits for sample in self.mosaics[phase]]

    def frame(self, phase="RG", bits=8, pack=None):
        samples = self.samples(phase, bits)
        if pack is not None:
            return pack(samples)
        return bytes(samples) if bits == 8 else struct.pack(f"<{len(samples)}H", *samples)

    def answers(self, *arguments, data=None):
        """The convert lines, best first, as dictionaries of their options."""
        said = self.kro("guess", *arguments, data=data).decode()
        lines = re.findall(r"^   kro convert (.*)$", said, re.MULTILINE)
        return said, [dict(re.findall(r"(-f|-s|--skip|--stride|--frames) (\S+)", line),
                           **({"--big-endian": ""} if "--big-endian" in line else {})) for line in lines]

    def check(self, data, formats, **options):
        """The first answer for these bytes is one of these formats with exactly these further options."""
        self.write("frame.bin", data)
        said, answers = self.answers("frame.bin")
        wanted = {"-s": f"{SIZE[0]}x{SIZE[1]}", **{"--" + name.replace("_", "-"): value for name, value in options.items()}}
        best = dict(answers[0])
        self.assertIn(best.pop("-f"), formats, said)
        self.assertEqual(best, wanted, said)
        self.assertLessEqual(len(answers), 6)
        return said

    def names(self, phase, suffix):
        return [f"Bayer{p}{suffix}" for p in (phase, EXCHANGED[phase])] if phase else [f"Mono{suffix}"]

    def test_words_and_bytes(self):
        for phase, bits in some((("RG", 8), ("GR", 8), (None, 8), ("GB", 10), ("BG", 12), (None, 12), ("RG", 14), ("GR", 16))):
            self.check(self.frame(phase, bits), self.names(phase, bits))

    def test_big_endian_words(self):
        for phase, bits in some((("BG", 10), (None, 12), ("GR", 16))):
            self.check(self.frame(phase, bits, lambda samples: struct.pack(f">{len(samples)}H", *samples)),
                       self.names(phase, bits), big_endian="")

    def test_words_with_samples_in_the_high_bits(self):
        said = self.check(self.frame("GB", 12, lambda samples: struct.pack(f"<{len(samples)}H", *(s << 4 for s in samples))),
                          self.names("GB", 16))
        self.assertIn("high 12 bits", said)
        said = self.check(self.frame("GB", 12, lambda samples: struct.pack(f">{len(samples)}H", *(s << 4 for s in samples))),
                          self.names("GB", 16), big_endian="")
        self.assertIn("high 12 bits", said)

    def test_files_that_are_nearly_empty(self):
        """Words that are two equal bytes may be anything: nothing is sure."""
        self.write("few.bin", bytes(99000) + bytes(range(256)) * 4)
        said, answers = self.answers("few.bin")
        self.assertTrue(answers)
        self.assertNotIn("sure", said)

    def test_dark_frames(self):
        self.check(bytes(sample // 6 for sample in self.samples("RG", 8)), self.names("RG", 8))

    def test_packed(self):
        for phase, bits in some((("RG", 10), (None, 12), ("GB", 12))):
            layout = FORMATS[f"Mono{bits}Packed"]
            self.check(self.frame(phase, bits, layout.pack), self.names(phase, f"{bits}Packed"))
        for phase, bits in some((("BG", 10), ("GR", 12), (None, 14))):
            self.check(self.frame(phase, bits, lambda samples: bits_lowest_first(samples, bits)),
                       self.names(phase, f"{bits}p"))

    def test_csi2(self):
        for phase, bits in some((("RG", 10), ("GB", 12), (None, 10), ("BG", 14))):
            names = [f"S{SITES[p]}{bits}P" for p in (phase, EXCHANGED[phase])] if phase else [f"Y{bits}P"]
            self.check(self.frame(phase, bits, lambda samples: csi2(samples, bits)), names)

    def test_eight_bits_stretched(self):
        """Pictures of 8 bits in deeper formats leave most values out."""
        for layout, names in (("BayerRG12Packed", self.names("RG", "12Packed")), ("BayerGB16", self.names("GB", 16)),
                              ("Mono12", ["Mono12"])):
            bits = FORMATS[layout].bits
            samples = [(sample * ((1 << bits) - 1) + 127) // 255 for sample in self.samples(names[0][5:7] if "Bayer" in layout
                                                                                           else None, 8)]
            self.check(FORMATS[layout].pack(samples), names)

    def test_headers(self):
        frame = self.frame("GR", 8)
        for header in some((16, 512, 4096)):
            said = self.check(b"HEADER".ljust(header, b"\0") + frame, self.names("GR", 8), skip=str(header))
            self.assertIn(f"{header} bytes that are no such rows", said)

    def test_words_at_odd_places(self):
        """The library takes words where they are aligned only; the sheet shows them, too."""
        frame = self.frame("GB", 12)
        self.check(frame, self.names("GB", 12))
        self.kro("guess", "frame.bin", "--sheet", "even.png")
        self.check(b"H" * 17 + frame, self.names("GB", 12), skip="17")
        self.kro("guess", "frame.bin", "--sheet", "odd.png")
        sheets = [read_png(self.read(name)) for name in ("even.png", "odd.png")]
        firsts = [[samples[3 * y * width:3 * y * width + 1440] for y in range(480)] for width, _, _, samples in sheets]
        self.assertEqual(*firsts)

    def test_frames_of_an_unusual_height(self):
        samples = self.samples("GB", 8)
        crop = bytes(samples[y * 640 + x] for y in range(402) for x in range(614))
        self.write("frame.bin", crop * 3)
        said, answers = self.answers("frame.bin")
        self.assertEqual((answers[0]["-s"], answers[0]["-f"] in self.names("GB", 8)), ("614x402", True), said)
        self.assertIn("3 frames of 402 rows", said)

    def test_padding(self):
        frame = self.frame("BG", 12, lambda samples: csi2(samples, 12))
        padded = b"".join(frame[i:i + 960].ljust(1024, b"\0") for i in range(0, len(frame), 960))
        said = self.check(padded, ["SBGGR12P", "SRGGB12P"], stride="1024")
        frame = self.frame("GB", 10, FORMATS["BayerGB10Packed"].pack)
        padded = b"".join(frame[i:i + 960] + bytes(64) for i in range(0, len(frame), 960))
        self.assertIn("last 64 are padding", self.check(padded, self.names("GB", "10Packed"), stride="1024"))
        self.assertIn("last 64 are padding", said)

    def test_several_frames(self):
        frame = self.frame("RG", 8)
        self.assertIn("3 frames of 480 rows", self.check(frame * 3, self.names("RG", 8)))

    def test_a_header_of_one_byte(self):
        said = self.check(b"x" + self.frame("RG", 8), self.names("RG", 8), skip="1")
        self.assertIn("1 byte that", said)

    def test_a_header_as_long_as_a_row(self):
        self.check(b"HEADER".ljust(640, b"\0") + self.frame("RG", 8), self.names("RG", 8), skip="640")

    def test_a_header_before_padded_rows(self):
        """What ends all rows with zeros tells where they begin."""
        frame = self.frame("BG", 8)
        padded = b"".join(frame[i:i + 640] + bytes(64) for i in range(0, len(frame), 640))
        self.check(b"H" * 100 + padded, self.names("BG", 8), skip="100", stride="704")

    def test_more_rows_than_a_header_is_long(self):
        """A second frame that is cut off is no header of the first."""
        frame = self.frame("RG", 8)
        self.write("frame.bin", frame + frame[:300 * 640])
        said, answers = self.answers("frame.bin")
        self.assertNotIn("--skip", answers[0], said)

    def test_standard_input(self):
        said, answers = self.answers("-", data=self.frame("RG", 8))
        self.assertEqual((answers[0]["-f"], answers[0]["-s"]), ("BayerRG8", "640x480"), said)
        self.assertTrue(said.startswith("standard input: 307200 bytes\n1. sure: 640x480 BayerRG8 or BayerBG8\n"), said)

    def test_bytes_left_over(self):
        """What follows the last row stays away, and the line takes the whole frames."""
        said = self.check(self.frame("RG", 8) + bytes(random_samples(100, 8)), self.names("RG", 8), frames="1-")
        self.assertIn("then 100 bytes more", said)

    def test_unusual_size(self):
        samples = self.samples("GB", 8)
        crop = bytes(samples[y * 640 + x] for y in range(402) for x in range(614))
        self.write("frame.bin", crop)
        said, answers = self.answers("frame.bin")
        self.assertEqual((answers[0]["-s"], answers[0]["-f"] in self.names("GB", 8)), ("614x402", True), said)

    def test_the_line_converts(self):
        for name in ("it's one", "\u00fc+1,2@3%=:"):
            self.write(name + ".bin", self.frame("RG", 8))
            said, _ = self.answers(name + ".bin")
            line = re.search(r"^   kro (convert .*)$", said, re.MULTILINE)[1]
            subprocess.run(f"'{COMMAND}' {line} -q", shell=True, check=True, cwd=self.folder)
            self.assertEqual(read_png(self.read(name + ".png"))[:3], (640, 480, 3))

    def test_frames_that_begin_as_pictures_do(self):
        frame = self.frame("RG", 8)
        self.check(b"P5" + frame[2:], self.names("RG", 8))
        self.write("p.bin", b"P5 640 480 255\n" + frame)
        self.kro_fails(1, "guess", "p.bin", says=["PGM file", "says its size itself"])

    def test_what_tells_nothing(self):
        png = b"\x89PNG\r\n\x1a\n" + bytes(5000)
        for name, data, says in (("empty", b"", "empty"), ("small", bytes(range(100)), "100 bytes"),
                                 ("flat", bytes([7]) * 100000, "are 7"),
                                 ("noise", bytes(random_samples(100000, 8)), "nothing"), ("png", png, "PNG")):
            self.write(name, data)
            result = self.kro_fails(1, "guess", name, says=[name, says])
            self.assertEqual(result.stdout, b"")
        self.kro_fails(1, "guess", "missing", says="missing")
        self.kro_fails(1, "guess", ".", says="directory")
        self.kro_fails(1, "guess", "-", data=b"", says="standard input")
        self.kro_fails(2, "guess", says="FILE")

    def test_one_of_several_tells_nothing(self):
        self.write("flat", bytes(5000))
        self.write("good", self.frame("RG", 8))
        result = self.kro_fails(1, "guess", "flat", "good", says="flat")
        self.assertIn(b"good: 307200 bytes\n1. sure: 640x480", result.stdout)

    def test_sheet(self):
        self.write("frame.bin", self.frame("RG", 8))
        _, answers = self.answers("frame.bin", "--sheet", "sheet.png")
        width, height, channels, samples = read_png(self.read("sheet.png"))
        rows = (len(answers) + 2) // 3
        self.assertEqual((width, height, channels), (488 * min(3, len(answers)), 488 * rows, 3))
        # The first answer fills its cell from side to side.
        row = samples[100 * width * 3:(100 * width + 480) * 3]
        self.assertGreater(sum(sample > 20 for sample in row), 1000)
        before = self.read("sheet.png")
        self.kro_fails(1, "guess", "frame.bin", "--sheet", "sheet.png", "--no-clobber", says="sheet.png")
        self.assertEqual(self.read("sheet.png"), before)

    def test_sheets_that_cannot_be(self):
        self.write("frame.bin", self.frame("RG", 8))
        self.write("frame.png", self.frame("RG", 8))
        self.kro_fails(2, "guess", "frame.bin", "--sheet", "sheet.jpg", says=[".png", "sheet.jpg"])
        self.kro_fails(2, "guess", "frame.bin", "--sheet", "sheet.what", says=[".png", "sheet.what"])
        self.kro_fails(2, "guess", "frame.bin", "frame.bin", "--sheet", "sheet.png", says="one file")
        self.kro_fails(1, "guess", "frame.bin", "--sheet", "no/sheet.png", says="no/sheet.png")
        self.kro_fails(1, "guess", "frame.png", "--sheet", "frame.png", says="input")
        self.assertEqual(sorted(os.listdir(self.folder)), ["frame.bin", "frame.png"])

    def test_hints(self):
        """Commands that lack size or format say what the bytes look like."""
        self.write("frame.bin", self.frame("GR", 8))
        for command in (("convert", "frame.bin", "-o", "x.png"), ("info", "frame.bin"),
                        ("convert", "frame.bin", "-s", "640x480", "-o", "x.png")):
            self.kro_fails(2, *command, says=["--", "640x480 BayerGR8 or BayerGB8 (sure)", "kro guess"])
        self.write("noise.bin", bytes(random_samples(10000, 8)))
        self.assertNotIn(b"look like", self.kro_fails(2, "info", "noise.bin", says="--size").stderr)

    def test_real_frames(self):
        if not os.path.isdir(FRAMES):
            self.skipTest("no folder of real frames")
        for name, formats, size in (("chart_1920x1080_BayerRG10.raw", ["BayerRG10", "BayerBG10"], "1920x1080"),
                                    ("outdoor_2592x1536_BayerGR8.raw", ["BayerGR8", "BayerGB8"], "2592x1536"),
                                    ("still_768x512_BayerRG16.raw", ["BayerRG14", "BayerBG14"], "768x512")):
            with open(os.path.join(FRAMES, name), "rb") as file:
                self.write("frame.bin", file.read())
            said, answers = self.answers("frame.bin")
            self.assertEqual((answers[0]["-f"] in formats, answers[0]["-s"]), (True, size), said)
            self.assertEqual(len(answers[0]), 2, said)
