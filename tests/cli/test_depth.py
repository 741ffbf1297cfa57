"""16 bits in, 16 bits out."""

import os
import unittest

from pictures import read_png, read_pnm, read_tiff, words
from support import FORMATS, FRAMES, Case, demosaic16, random_samples

EDGES = {"RGGB": "demosaicingEdgeRGGBU16", "GRBG": "demosaicingEdgeGRBGU16", "GBRG": "demosaicingEdgeGBRGU16",
         "BGGR": "demosaicingEdgeBGGRU16"}
BILINEAR = "kroDemosaicingBilinearU16"
WIDTH, HEIGHT = 22, 14


def rgb(bgr):
    return [v for i in range(0, len(bgr), 3) for v in (bgr[i + 2], bgr[i + 1], bgr[i])]


class Depth(Case):
    def raw(self, name, *more):
        return words(self.kro("convert", name, "--depth", "16", "-o", "-", "--to", "raw", *more), "<")

    def sixteen(self, pixel_format, samples):
        name = f"f_{WIDTH}x{HEIGHT}_{pixel_format.name}.raw"
        self.write(name, pixel_format.pack(samples))
        return name

    def test_every_bayer_format(self):
        for pixel_format in FORMATS.values():
            if pixel_format.sites == "YYYY":
                continue
            samples = random_samples(WIDTH * HEIGHT, pixel_format.bits)
            name = self.sixteen(pixel_format, samples)
            self.assertEqual(self.raw(name), demosaic16(samples, WIDTH, HEIGHT, EDGES[pixel_format.sites]), name)
            if pixel_format.sites == "RGGB":
                self.assertEqual(self.raw(name, "-a", "bilinear"), demosaic16(samples, WIDTH, HEIGHT, BILINEAR), name)

    def test_files(self):
        samples = random_samples(WIDTH * HEIGHT, 12)
        name = self.sixteen(FORMATS["BayerGR12Packed"], samples)
        wanted = (WIDTH, HEIGHT, 3, rgb(demosaic16(samples, WIDTH, HEIGHT, EDGES["GRBG"])))
        for target, reader in (("x.png", read_png), ("x.tif", read_tiff), ("x.ppm", read_pnm)):
            self.kro("convert", name, "--depth", "16", "-o", target)
            self.assertEqual(reader(self.read(target)), wanted, target)

    def test_scaling_only_on_request(self):
        for format_name, bits in (("BayerGB10", 10), ("BayerRG12", 12), ("BayerBG16", 16)):
            pixel_format = FORMATS[format_name]
            samples = random_samples(WIDTH * HEIGHT, bits)
            name = self.sixteen(pixel_format, samples)
            plain = demosaic16(samples, WIDTH, HEIGHT, EDGES[pixel_format.sites])
            white = (1 << bits) - 1
            scaled = [min(65535, (2 * v * 65535 + white) // (2 * white)) for v in plain]
            self.assertEqual(self.raw(name, "--scale"), scaled, format_name)

    def test_fewer_bits_and_shift(self):
        samples = random_samples(WIDTH * HEIGHT, 14)
        name = self.sixteen(FORMATS["BayerGR16"], samples)
        plain = demosaic16(samples, WIDTH, HEIGHT, EDGES["GRBG"])
        scaled = [min(65535, (2 * v * 65535 + 16383) // (2 * 16383)) for v in plain]
        self.assertEqual(self.raw(name, "--scale", "--bits", "14"), scaled)
        shifted = demosaic16([s >> 2 for s in samples], WIDTH, HEIGHT, EDGES["GRBG"])
        self.assertEqual(self.raw(name, "--shift", "2"), shifted)

    def test_warnings_of_the_two_limits(self):
        for most, algorithm, warned in ((4095, "edge", False), (4096, "edge", True), (8191, "bilinear", False),
                                        (8192, "bilinear", True)):
            name = self.sixteen(FORMATS["BayerRG16"], [most] * (WIDTH * HEIGHT))
            said = self.call("convert", name, "--depth", "16", "-a", algorithm, "-o", "x.png").stderr.decode()
            self.assertEqual("warning" in said, warned, said)
            self.assertEqual(str(most) in said and "--shift 1" in said, warned, said)
        name = self.sixteen(FORMATS["BayerGR16"], [65535] * (WIDTH * HEIGHT))
        said = self.call("convert", name, "--depth", "16", "-o", "x.png").stderr.decode()
        self.assertNotIn("warning", said)

    def test_says_what_exists(self):
        for format_name, algorithm in (("BayerRG10", "nearest"), ("BayerGR10", "bilinear"), ("Mono12", "edge")):
            name = self.sixteen(FORMATS[format_name], [0] * (WIDTH * HEIGHT))
            self.kro_fails(2, "convert", name, "--depth", "16", "-a", algorithm, "-o", "x.png",
                           says=[format_name, algorithm, "there are edge for every Bayer frame and bilinear"])
        name = self.sixteen(FORMATS["BayerRG10"], [0] * (WIDTH * HEIGHT))
        for more, says in ((("-o", "x.bmp"), "bmp"), (("-o", "x.pgm"), "pgm"),
                           (("-o", "x.png", "-O", "RGB8"), "-format"), (("-o", "x.png", "--opaque"), "--opaque"),
                           (("-o", "x.png", "--shift", "10"), "--shift 10")):
            self.kro_fails(2, "convert", name, "--depth", "16", *more, says=says)
        for more in (("--scale",), ("--bits", "9"), ("--shift", "1"), ("--depth", "12")):
            self.kro_fails(2, "convert", name, "-o", "x.png", *more, says="--depth")

    def test_real_frames(self):
        for name, format_name in (("chart_1920x1080_BayerRG10.raw", "BayerRG10"),
                                  ("still_768x512_BayerRG16.raw", "BayerRG16")):
            source = os.path.join(FRAMES, name)
            if not os.path.exists(source):
                raise unittest.SkipTest("no real frames beside the project")
            with open(source, "rb") as file:
                samples = words(file.read(), "<")
            width, height = map(int, name.split("_")[1].split("x"))
            for algorithm, function in (("edge", EDGES["RGGB"]), ("bilinear", BILINEAR)):
                self.assertEqual(self.raw(source, "-a", algorithm), demosaic16(samples, width, height, function))
