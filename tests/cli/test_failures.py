"""Everything wrong gets one line that names the file, the value and what was expected; exit code 1 or 2."""

import os

from pictures import write_png, write_ppm
from support import Case

SIZE = ("-f", "rggb8", "-s", "8x6")


class Failures(Case):
    def setUp(self):
        super().setUp()
        self.frame_file("f.raw", 8, 6, "BayerRG8")
        self.write("short.raw", b"\0" * 47)
        self.write("long.raw", b"\0" * 49)
        self.write("empty.raw", b"")

    def test_frames(self):
        for arguments, says in (
                (("missing.raw",), ["missing.raw", "No such file"]), ((".",), ["directory"]),
                (("short.raw",), ["short.raw", "47 bytes", "8x6 BayerRG8", "48"]),
                (("long.raw",), ["long.raw", "49 bytes", "48", "1 frame and 1 bytes more"]),
                (("empty.raw",), ["empty.raw", "empty", "48"]),
                (("f.raw", "--skip", "48"), ["--skip 48", "48 bytes"]),
                (("f.raw", "--skip", "1"), ["47 bytes"]), (("f.raw", "--frame", "2"), ["no frame 2", "1 frame"]),
                (("f.raw", "--frames", "1-9"), ["no frame 9", "1 frame"])):
            self.kro_fails(1, "convert", *arguments, *SIZE, "-o", "x.png", says=says)
            self.kro_fails(1, "info", *arguments, *SIZE, says=says)
        self.kro("convert", "long.raw", *SIZE, "--frames", "1-", "-o", "x.png")

    def test_usage(self):
        self.write("p.ppm", write_ppm(8, 6, [1] * 144))
        good = ("convert", "f.raw", *SIZE, "-o", "x.png")
        for arguments, says in (
                (("convrt",), "did you mean convert?"), (("xyzzy",), "xyzzy"),
                (("convert",), "FRAME"),
                (("convert", "f.raw", "-f", "rggb8", "-s", "8by6", "-o", "x.png"), ["8by6", "1280x960"]),
                (("convert", "f.raw", "-f", "rggb8", "-s", "3x9", "-o", "x.png"), ["3x9", "4x4"]),
                (("convert", "f.raw", "-f", "rggb8", "-s", "99999x99999", "-o", "x.png"), "99999x99999"),
                ((*good, "-a", "edg"), "did you mean edge?"), ((*good, "-a", "best"), "(nearest, bilinear, edge or fine)"),
                ((*good, "-O", "BGR9"), "did you mean BGR8?"),
                ((*good, "--wb", "red"), ["red", "gray"]), ((*good, "--wb", "1,0,1"), "1,0,1"),
                ((*good, "--wb", "1,1,1,1"), "1,1,1,1"), ((*good, "--gamma", "0"), ["'0'", "2.2"]),
                ((*good, "--gamma", "2.2x"), "2.2x"), ((*good, "--frames", "0"), "count from 1"),
                ((*good, "--frames=-3"), "'-3'"), ((*good, "--gamma", "inf"), "'inf'"), ((*good, "--gamma", "nan"), "'nan'"),
                ((*good, "-j", "3x"), "not '3x'"), ((*good, "-j", "1025"), "not '1025'"),
                (("convert", "f.raw", "-s", "8x6", "-o", "x.png", "-f", "0x01080009z"), "0x01080009z"),
                (("convert", "f.raw", "-s", "8x6", "-o", "x.png", "-f", "0x101080009"), "0x101080009"),
                (("convert", "f.raw", "-s", "8x6", "-o", "x.png", "-f", "rggb8p"), "unknown pixel format 'rggb8p'"),
                (("convert", "f.raw", "-s", "8x6", "-o", "x.png", "-f", "SRGGB8p"), "unknown pixel format 'SRGGB8p'"),
                (("convert", "f.raw", "-s", "8x6", "-o", "x.png", "-f", "rggbpacked"), "unknown pixel format 'rggbpacked'"),
                (("mosaic", "p.ppm", "-f", "rggb8", "--stride", "16", "-o", "x.png"), "--stride and --big-endian"),
                (("mosaic", "p.ppm", "-f", "rggb16be", "-o", "x.png"), "--stride and --big-endian"), (("--what",), "--what"),
                ((*good, "--frames", "4-2"), "4-2"), ((*good, "--frames", "a"), "2-5"),
                ((*good, "--skip", "-1"), "--skip"),
                ((*good, "--skip", "x"), "--skip: expected a whole number of 0 or more, not 'x'"),
                ((*good, "-j", "0"), "--jobs: expected a whole number from 1 to 1024, not '0'"),
                ((*good, "--jobs", "x"), "not 'x'"), ((*good, "--bits", "17"), "--bits: expected a whole number from 1"),
                ((*good, "--shift", "-1"), "from 0 to 15"), ((*good, "--depth", "10"), "expected 8 or 16, not '10'"),
                (("help", "convrt"), "did you mean convert?"), (("help", "xyzzy"), "xyzzy"),
                ((*good, "--what"), "--what"), ((*good, "-O", "Mono8", "--wb", "gray"), "colour"),
                (("mosaic", "f.raw", "-o", "x.raw"), "--format"), (("mosaic", "f.raw", "-f", "rggb8"), "-o"),
                (("formats", "more"), "more"), (("info",), "FRAME")):
            self.kro_fails(2, *arguments, says=says)
        self.assertNotIn("x.png", self.names())

    def test_pictures(self):
        good = write_png(8, 6, 3, [1] * 144)
        broken = bytearray(good)
        broken[50] ^= 255
        for name, data, says in (
                ("f.raw", None, "no PNG, JPEG, TIFF, BMP, PPM or PGM picture"), ("empty.raw", None, "empty"),
                ("none.png", None, "No such file"),
                ("cut.png", good[:-20], "damaged PNG"), ("broken.png", bytes(broken), "damaged PNG"),
                ("magic.png", good[:8], "damaged PNG"), ("cut.ppm", write_ppm(8, 6, [1] * 143), "too early"),
                ("head.ppm", b"P6\n8", "too early"), ("word.ppm", b"P6\n8 x 255\n", "number"), ("narrow.ppm", b"P6\n0 8 255\n", "0"),
                ("note.ppm", b"P6 # no more", "too early"), ("end.ppm", b"P6 8 6 255", "too early"),
                ("huge.ppm", b"P6\n999999 999999 255\n", "too early"), ("wide.ppm", b"P6\n99999999 4 255\n", "above"),
                ("zero.ppm", b"P6\n8 0 255\n", "0"), ("max.ppm", b"P5\n8 6 0\n" + b"\0" * 48, "0"),
                ("over.pgm", b"P5\n8 6 9\n" + b"\x0a" * 48, "above its maximum 9"),
                ("deep.pgm", b"P5\n8 6 65536\n" + b"\0" * 96, "above 65535"),
                ("small.ppm", write_ppm(3, 9, [1] * 81), ["3x9", "4x4"])):
            if data is not None:
                self.write(name, data)
            before = self.names()
            self.kro_fails(1, "mosaic", name, "-f", "rggb8", "-o", "x.raw", says=says)
            self.assertEqual(self.names(), before)

    def test_one_name_that_says_nothing_among_good_ones(self):
        for name in ("a_8x6_BayerRG8.raw", "b_8x6_BayerRG8.raw"):
            self.frame_file(name, 8, 6, "BayerRG8")
        names = ("a_8x6_BayerRG8.raw", "f.raw", "b_8x6_BayerRG8.raw")
        self.kro_fails(1, "convert", *names, "-o", "out/", "-q", says=["f.raw", "--size"])
        self.assertEqual(sorted(os.listdir(self.path("out"))), ["a_8x6_BayerRG8.png", "b_8x6_BayerRG8.png"])
        result = self.kro_fails(1, "info", *names, "-q", says=["f.raw", "--size"])
        self.assertEqual(result.stdout.count(b"1 frame in the file"), 2)
        # A bad option is said once and stops all.
        self.kro_fails(2, "convert", *names, "-s", "8by6", "-o", "none/", says="8by6")
        self.kro_fails(2, "info", *names, "-f", "rgbg8", says="rgbg8")

    def test_one_bad_file_among_good_ones(self):
        self.frame_file("g.raw", 8, 6, "BayerRG8")
        self.kro_fails(1, "convert", "f.raw", "short.raw", "g.raw", *SIZE, "-o", "out/", "-q", says="short.raw")
        self.kro("convert", "f.raw", "g.raw", *SIZE, "-o", "all/")
        for name in ("f.png", "g.png"):
            self.assertEqual(self.read("out/" + name), self.read("all/" + name))
        result = self.call("convert", "f.raw", "short.raw", "missing.raw", *SIZE, "-o", "-", "--to", "ppm")
        self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 2))
        self.assertEqual(len(result.stdout), len(b"P6\n8 6\n255\n") + 144)
