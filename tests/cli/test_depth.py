"""Pictures of 16 bits, and of 8 bits from samples that do not fill their format."""

import os
import unittest

from pictures import read_png, read_pnm, read_tiff, words
from support import ALGORITHMS, ALL_FORMATS, FRAMES, Case, demosaic16, demosaic_samples, random_samples, some

EDGES = {"RGGB": "demosaicingEdgeRGGBU16", "GRBG": "demosaicingEdgeGRBGU16", "GBRG": "demosaicingEdgeGBRGU16",
         "BGGR": "demosaicingEdgeBGGRU16"}
WIDTH, HEIGHT = 22, 14


def rgb(bgr):
    return [v for i in range(0, len(bgr), 3) for v in (bgr[i + 2], bgr[i + 1], bgr[i])]


def mirrored(at, count):
    return -at if at < 0 else 2 * (count - 1) - at if at >= count else at


def bilinear(samples, width, height, sites):
    """Means of the nearest sites of each colour, in B, G, R order; at borders the frame mirrored about its edge."""
    result = []
    for y in range(height):
        for x in range(width):
            for colour in "BGR":
                found = [[], [], []]
                for dy in (-1, 0, 1):
                    for dx in (-1, 0, 1):
                        if sites[2 * ((y + dy) & 1) + ((x + dx) & 1)] == colour:
                            at = mirrored(y + dy, height) * width + mirrored(x + dx, width)
                            found[abs(dx) + abs(dy)].append(samples[at])
                nearest = next(values for values in found if values)
                result.append(sum(nearest) // len(nearest))
    return result


def full_range(value, bits):
    return value << (16 - bits) | value >> (2 * bits - 16)


def small_bits(samples, bits, white):
    """What the eight high bits are where a sample has fewer."""
    return [(s * 255 + white // 2) // white if bits < 8 else s >> (bits - 8) for s in samples]


class Depth(Case):
    def raw(self, name, *more):
        return words(self.kro("convert", name, "--depth", "16", "-o", "-", "--to", "raw", *more), "<")

    def eight(self, name, *more):
        return self.kro("convert", name, "-o", "-", "--to", "raw", *more)

    def frame(self, format_name, samples):
        name = f"f_{WIDTH}x{HEIGHT}_{format_name}.raw"
        self.write(name, ALL_FORMATS[format_name].pack(samples))
        return name

    def test_bilinear_of_every_format(self):
        for pixel_format in some(ALL_FORMATS.values()):
            samples = random_samples(WIDTH * HEIGHT, pixel_format.bits)
            name = self.frame(pixel_format.name, samples)
            wanted = samples if pixel_format.sites == "YYYY" else bilinear(samples, WIDTH, HEIGHT, pixel_format.sites)
            self.assertTrue(self.raw(name, "-a", "bilinear") == wanted, name)
            if pixel_format.bits != 16:
                scaled = [full_range(v, pixel_format.bits) for v in wanted]
                self.assertTrue(self.raw(name, "-a", "bilinear", "--scale") == scaled, name)

    def test_edge_of_every_format(self):
        # In the middle of the range nothing is held or wraps, so that the entries of kro.h say what is right.
        for pixel_format in some(ALL_FORMATS.values()):
            if pixel_format.sites == "YYYY":
                continue
            span = 1 << min(pixel_format.bits, 12)
            samples = [span * 3 // 8 + s * span // 4096 for s in random_samples(WIDTH * HEIGHT, 10)]
            name = self.frame(pixel_format.name, samples)
            wanted = demosaic16(samples, WIDTH, HEIGHT, EDGES[pixel_format.sites])
            self.assertTrue(self.raw(name) == wanted, name)

    def test_highlights_of_fourteen_bits(self):
        """Flat areas stay flat and nothing exceeds the range, however bright; all phases."""
        for format_name in ("BayerRG14", "BayerGR14", "BayerGB14p", "SBGGR14P"):
            for value in (5000, 16383):
                name = self.frame(format_name, [value] * (WIDTH * HEIGHT))
                for algorithm in ALGORITHMS:
                    self.assertEqual(set(self.raw(name, "-a", algorithm)), {value}, (name, algorithm))
                    self.assertEqual(set(self.raw(name, "-a", algorithm, "--scale")), {full_range(value, 14)})
            name = self.frame(format_name, [16383 * (s & 1) for s in random_samples(WIDTH * HEIGHT, 8)])
            self.assertEqual(max(self.raw(name)), 16383)
            self.assertEqual(max(self.raw(name, "--scale")), 65535)
        name = self.frame("BayerRG16", [16383] * (WIDTH * HEIGHT))
        result = self.call("convert", name, "--depth", "16", "--bits", "14", "--scale", "-o", "x.tif")
        self.assertNotIn(b"warning", result.stderr)
        self.assertEqual(set(read_tiff(self.read("x.tif"))[3]), {65535})

    def test_files(self):
        samples = random_samples(WIDTH * HEIGHT, 12)
        name = self.frame("BayerGR12Packed", samples)
        colours = bilinear(samples, WIDTH, HEIGHT, "GRBG")
        wanted = (WIDTH, HEIGHT, 3, rgb(colours))
        more = ("--depth", "16", "-a", "bilinear")
        for target, reader in (("x.png", read_png), ("x.tif", read_tiff), ("x.ppm", read_pnm)):
            self.kro("convert", name, *more, "-o", target)
            self.assertEqual(reader(self.read(target)), wanted, target)
        luma = [(77 * r + 150 * g + 29 * b + 128) >> 8 for b, g, r in zip(*[iter(colours)] * 3)]
        self.kro("convert", name, *more, "-o", "x.pgm")
        self.assertEqual(read_pnm(self.read("x.pgm")), (WIDTH, HEIGHT, 1, luma))
        grey = self.frame("Mono12p", samples)
        for target, reader in (("x.png", read_png), ("x.tif", read_tiff), ("x.pgm", read_pnm)):
            self.kro("convert", grey, "--depth", "16", "-o", target)
            self.assertEqual(reader(self.read(target)), (WIDTH, HEIGHT, 1, samples), target)

    def test_output_formats(self):
        samples = random_samples(WIDTH * HEIGHT, 14)
        name = self.frame("BayerGB14", samples)
        colours = bilinear(samples, WIDTH, HEIGHT, "GBRG")
        blue, green, red = colours[0::3], colours[1::3], colours[2::3]

        def raw(output, *more):
            return words(self.kro("convert", name, "-a", "bilinear", "-O", output, *more, "-o", "-", "--to", "raw"),
                         "<")

        self.assertTrue(raw("BGR16") == colours)
        self.assertTrue(raw("RGB16", "--depth", "16") == rgb(colours))
        self.assertTrue(raw("RGB16_Planar") == red + green + blue)
        self.assertTrue(raw("BGR16Planar") == blue + green + red)
        for alpha, more in ((0, ()), (65535, ("--opaque",))):
            self.assertTrue(raw("BGRa16", *more) == [v for p in zip(blue, green, red) for v in (*p, alpha)])
            self.assertTrue(raw("aRGB16", *more) == [v for p in zip(red, green, blue) for v in (alpha, *p)])
        self.kro("convert", name, "-a", "bilinear", "-O", "aBGR16", "-o", "x.png")
        wanted = [v for p in zip(red, green, blue) for v in (*p, 65535)]
        self.assertEqual(read_png(self.read("x.png")), (WIDTH, HEIGHT, 4, wanted))

    def test_significant_bits_in_eight(self):
        for format_name, bits in (("BayerRG16", 14), ("Mono16", 12), ("BayerGB12Packed", 10), ("BayerBG12p", 9),
                                  ("SGRBG14P", 10), ("Mono10", 7), ("BayerGR8", 5), ("BayerRG10", 1),
                                  ("BayerGB10", 12)):
            pixel_format = ALL_FORMATS[format_name]
            samples = random_samples(WIDTH * HEIGHT, bits)
            name = self.frame(format_name, samples)
            shown = small_bits(samples, bits, (1 << bits) - 1)
            wanted = demosaic_samples(shown, WIDTH, HEIGHT, pixel_format, "edge", "RGB8", bits=8)
            self.assertEqual(self.eight(name, "--bits", str(bits), "-O", "RGB8"), wanted, name)

    def test_what_exceeds_the_bits_is_white(self):
        samples = random_samples(WIDTH * HEIGHT, 16)
        name = self.frame("Mono16", samples)
        result = self.call("convert", name, "--bits", "12", "-o", "-", "--to", "raw")
        self.assertEqual(list(result.stdout), [min(s, 4095) >> 4 for s in samples])
        self.assertIn(f"samples reach {max(samples)}, more than the 4095 of --bits 12", result.stderr.decode())

    def test_black(self):
        samples = random_samples(WIDTH * HEIGHT, 12)
        for format_name, black in (("BayerGR12p", 300), ("SRGGB12P", 4000), ("Mono12", 64)):
            pixel_format = ALL_FORMATS[format_name]
            name = self.frame(format_name, samples)
            left = [max(0, s - black) for s in samples]
            wanted = demosaic_samples(left, WIDTH, HEIGHT, pixel_format, "bilinear", "BGR8")
            more = ("--black", str(black), "-a", "bilinear")
            self.assertEqual(self.eight(name, *more, "-O", "BGR8"), wanted, name)
            deep = left if pixel_format.sites == "YYYY" else bilinear(left, WIDTH, HEIGHT, pixel_format.sites)
            self.assertTrue(self.raw(name, *more) == deep, name)
            white = 4095 - black
            scaled = [(2 * v * 65535 + white) // (2 * white) for v in deep]
            self.assertTrue(self.raw(name, *more, "--scale") == scaled, name)

    def test_shift(self):
        samples = random_samples(WIDTH * HEIGHT, 14)
        name = self.frame("BayerGR16", samples)
        wanted = bilinear([s >> 2 for s in samples], WIDTH, HEIGHT, "GRBG")
        self.assertTrue(self.raw(name, "--shift", "2", "--bits", "14", "-a", "bilinear") == wanted)
        few = bilinear([s >> 9 for s in samples], WIDTH, HEIGHT, "GRBG")
        scaled = [(2 * v * 65535 + 31) // 62 for v in few]
        self.assertTrue(self.raw(name, "--shift", "9", "--bits", "14", "-a", "bilinear", "--scale") == scaled)

    def test_says_what_does_not_fit(self):
        name = self.frame("BayerRG10p", [0] * (WIDTH * HEIGHT))
        for more, says in ((("-o", "x.bmp"), "bmp"), (("-o", "x.jpg"), "jpg"),
                           (("-o", "x.png", "-O", "RGB8"), ["--depth 16", "RGB8"]),
                           (("-o", "x.ppm", "-O", "RGBa16"), ["ppm", "RGBa16"]),
                           (("-o", "x.png", "--bits", "11"), ["--bits 11", "BayerRG10p"]),
                           (("-o", "x.png", "--black", "1023"), ["--black 1023", "1023"]),
                           (("-o", "x.png", "--shift", "10"), "--shift 10")):
            self.kro_fails(2, "convert", name, "--depth", "16", *more, says=says)
        for more in (("--scale",), ("--shift", "1"), ("--depth", "12"), ("--depth", "8", "-O", "RGB16")):
            self.kro_fails(2, "convert", name, "-o", "x.png", *more, says="--depth")
        for more, says in ((("-O", "RGB16", "-o", "x.bmp"), "16 bits"), (("--black", "65536", "-o", "x.png"), "65535"),
                           (("--black", "-1", "-o", "x.png"), "--black")):
            self.kro_fails(2, "convert", name, *more, says=says)
        self.assertEqual(self.names(), [name])

    def test_show_takes_bits_and_black(self):
        name = self.frame("BayerRG16", [200 + s for s in random_samples(WIDTH * HEIGHT, 10)])
        plain = ("show", name, "--plain", "--in", "blocks")
        pictures = {self.kro(*plain, *more) for more in ((), ("--bits", "11"), ("--bits", "11", "--black", "200"))}
        self.assertEqual(len(pictures), 3)
        self.kro_fails(2, *plain, "--bits", "11", "--black", "2047", says="--black 2047")

    def test_real_frames(self):
        for name in ("chart_1920x1080_BayerRG10.raw", "still_768x512_BayerRG16.raw"):
            source = os.path.join(FRAMES, name)
            if not os.path.exists(source):
                raise unittest.SkipTest("no real frames beside the project")
            with open(source, "rb") as file:
                samples = words(file.read(), "<")
            width, height = map(int, name.split("_")[1].split("x"))
            rows = 12
            piece = self.write(f"p_{width}x{rows}_{name.split('_')[2]}", b"".join(
                s.to_bytes(2, "little") for s in samples[:width * rows]))
            self.assertTrue(self.raw(piece, "-a", "bilinear") == bilinear(samples[:width * rows], width, rows, "RGGB"))
            self.assertTrue(self.raw(source, "-a", "bilinear")[:3 * width * (rows - 1)] ==
                            self.raw(piece, "-a", "bilinear")[:3 * width * (rows - 1)])
