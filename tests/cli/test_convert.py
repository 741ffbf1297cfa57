"""Frames of 8-bit pictures: every input, output and algorithm against the library called directly."""

import os
import unittest

from pictures import read_png, write_ppm
from support import ALGORITHMS, FORMATS, FRAMES, OUTPUTS, Case, demosaic, some


class Convert(Case):
    def test_every_combination(self):
        width, height = 21, 13
        for pixel_format in some(FORMATS.values()):
            frame = self.frame_file("frame.raw", width, height, pixel_format.name)
            for output in OUTPUTS:
                for algorithm in ALGORITHMS:
                    picture = self.kro("convert", "frame.raw", "-f", pixel_format.name, "-s", f"{width}x{height}",
                                       "-O", output, "-a", algorithm, "-o", "-", "--to", "raw")
                    expected = demosaic(frame, width, height, pixel_format.code, algorithm, output)
                    self.assertEqual(picture, expected, (pixel_format.name, output, algorithm))

    def test_a_flat_picture_comes_back(self):
        colour = (200, 90, 30)
        self.write("flat.ppm", write_ppm(20, 14, list(colour) * 280))
        for pixel_format in some(FORMATS.values()):
            self.kro("mosaic", "flat.ppm", "-f", pixel_format.name, "-o", "frame.raw")
            for algorithm in ALGORITHMS:
                self.kro("convert", "frame.raw", "-f", pixel_format.name, "-s", "20x14", "-a", algorithm,
                         "-o", "x.ppm")
                luma = (77 * 200 + 150 * 90 + 29 * 30 + 128) >> 8
                wanted = [luma] * 3 if pixel_format.sites == "YYYY" else list(colour)
                self.assertEqual(list(self.read("x.ppm")[-840:]), wanted * 280, (pixel_format.name, algorithm))

    def test_edge_is_the_default(self):
        self.frame_file("f_24x18_BayerGB10.raw", 24, 18, "BayerGB10")
        self.kro("convert", "f_24x18_BayerGB10.raw", "-o", "a.png")
        self.kro("convert", "f_24x18_BayerGB10.raw", "-a", "EDGE", "-o", "b.png")
        self.kro("convert", "f_24x18_BayerGB10.raw", "-a", "bilinear", "-o", "c.png")
        self.assertEqual(self.read("a.png"), self.read("b.png"))
        self.assertNotEqual(self.read("a.png"), self.read("c.png"))

    def test_names_of_outputs(self):
        self.frame_file("f_24x18_BayerGB8.raw", 24, 18, "BayerGB8")
        for name, alias in (("BGR8", "bgr24"), ("RGB8", "rgb"), ("RGBa8", "RGBA"), ("Mono8", "grey"),
                            ("RGB8Planar", "rgb8_planar")):
            pictures = [self.kro("convert", "f_24x18_BayerGB8.raw", "-O", output, "-o", "-", "--to", "raw")
                        for output in (name, alias)]
            self.assertEqual(*pictures)

    def test_a_fourth_byte_in_any_place(self):
        frame = self.frame_file("f_24x18_BayerGB8.raw", 24, 18, "BayerGB8")
        pixels = demosaic(frame, 24, 18, FORMATS["BayerGB8"].code, "edge", "RGB8")
        balanced = self.kro("convert", "f_24x18_BayerGB8.raw", "--wb", "gray", "-O", "RGB8", "-o", "-", "--to", "raw")
        for more, colours, fourth in (((), pixels, 0), (("--opaque",), pixels, 255), (("--wb", "gray"), balanced, 0)):
            for output, places in (("RGBx8", "RGBx"), ("BGRx8", "BGRx"), ("aRGB8", "xRGB"), ("aBGR8", "xBGR"),
                                   ("xRGB8", "xRGB"), ("xBGR8", "xBGR"), ("RGBa8", "RGBx")):
                expected = bytearray(4 * 24 * 18)
                for channel, place in enumerate(places):
                    rest = bytes([fourth]) * (24 * 18)
                    expected[channel::4] = rest if place == "x" else colours["RGB".index(place)::3]
                picture = self.kro("convert", "f_24x18_BayerGB8.raw", *more, "-O", output, "-o", "-", "--to", "raw")
                self.assertEqual(picture, expected, (output, more))
        for output in ("aBGR8", "xRGB8", "BGRx8"):
            self.kro("convert", "f_24x18_BayerGB8.raw", "-O", output, "-o", "x.png")
            width, height, channels, samples = read_png(self.read("x.png"))
            self.assertEqual((width, height, channels, set(samples[3::4])), (24, 18, 4, {255}))
            self.assertEqual(bytes(v for i, v in enumerate(samples) if i % 4 != 3), pixels)

    def test_skip_passes_over_a_header(self):
        frame = self.frame_file("plain.raw", 8, 6, "BayerRG8")
        self.write("header.raw", b"\xff" * 77 + frame)
        for data, source in ((None, "header.raw"), (self.read("header.raw"), "-")):
            picture = self.kro("convert", source, "-f", "rggb8", "-s", "8x6", "--skip", "77", "-o", "-", "--to",
                               "raw", data=data)
            plain = self.kro("convert", "plain.raw", "-f", "rggb8", "-s", "8x6", "-o", "-", "--to", "raw")
            self.assertEqual(picture, plain)

    def test_real_frame_needs_no_options(self):
        source = os.path.join(FRAMES, "outdoor_2592x1536_BayerGR8.raw")
        if not os.path.exists(source):
            raise unittest.SkipTest("no real frames beside the project")
        self.kro("convert", source, "-a", "nearest", "-o", "x.png")
        with open(source, "rb") as file:
            expected = demosaic(file.read(), 2592, 1536, 0x01080008, "nearest", "RGB8")
        width, height, channels, samples = read_png(self.read("x.png"))
        self.assertEqual((width, height, channels), (2592, 1536, 3))
        self.assertEqual(bytes(samples), expected)
