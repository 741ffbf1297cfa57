"""What does not fit is answered with the option that helps, and never with one that shears the picture."""

import struct

from support import ALL_FORMATS, FORMATS, Case, random_samples

SIZE = ("-f", "rggb8", "-s", "40x30")


class Lengths(Case):
    def advice(self, size, *arguments):
        self.write("f", bytes(size))
        said = [self.kro_fails(1, *command, "f", *arguments, *more).stderr.decode()
                for command, more in ((("convert",), ("-o", "x.png")), (("info",), ()))]
        self.assertEqual(*said)
        self.assertEqual(self.names(), ["f"])
        return said[0]

    def test_padded_rows(self):
        for row, height, stride, frames, more in (
                (1280, 960, 1344, 1, ("-f", "Mono8", "-s", "1280x960")),
                (1280, 960, 1344, 3, ("-f", "Mono8", "-s", "1280x960")),
                (1936, 1216, 2048, 1, ("-f", "rggb8", "-s", "1936x1216")),
                (2028 * 5 // 4, 1520, 2560, 1, ("-f", "SRGGB10P", "-s", "2028x1520")),
                (600, 200, 608, 1, ("-f", "Mono16", "-s", "300x200"))):
            self.assertLess(row, stride)
            for missing in {0, stride - row} if frames == 1 else {0}:
                said = self.advice(stride * height * frames - missing, *more)
                self.assertIn(f"--stride {stride}", said)
                self.assertNotIn("--frames", said)
                self.assertNotIn("--skip", said)
            self.kro("convert", "f", *more, "--stride", str(stride), "-o", "-", "--to", "raw")

    def test_padded_rows_of_a_pipe(self):
        arguments = ("convert", "-", "-f", "Mono8", "-s", "1280x960", "-o", "-", "--to", "raw")
        said = self.call(*arguments, data=bytes(1344 * 960)).stderr.decode()
        self.assertIn("1 frame came whole before (rows 1344 bytes apart? --stride 1344)", said)
        said = self.call(*arguments, data=bytes(1280 * 960 + 1000)).stderr.decode()
        self.assertNotIn("--stride", said)

    def test_a_header(self):
        for header in (77, 128, 250):
            said = self.advice(1200 + header, *SIZE)
            self.assertIn(f"--skip {header};", said)
            self.assertNotIn("--stride", said)
            said = self.advice(10 + 3 * 1200 + header, *SIZE, "--skip", "10")
            self.assertIn(f"--skip {header + 10};", said)
        self.assertIn("--skip 512", self.advice(1280 * 960 + 512, "-f", "Mono8", "-s", "1280x960"))

    def test_another_format(self):
        said = self.advice(1200 * 2, "-f", "rggb12p", "-s", "40x30")
        self.assertIn("one frame of BayerRG10, BayerRG12, BayerRG14 or BayerRG16", said)
        said = self.advice(1200 * 3 // 2, *SIZE)
        self.assertIn("SRGGB12P", said)
        self.assertNotIn("--stride", said)

    def test_what_fits_nothing(self):
        said = self.advice(1200 + 700, *SIZE)
        for option in ("--stride", "--skip", "--frames"):
            self.assertNotIn(option, said)
        self.assertIn("wrong size", said)
        self.assertIn("--frames 1- takes the whole ones", self.advice(2 * 1200 + 700, *SIZE))
        said = self.advice(48 * 31, *SIZE, "--stride", "48")
        self.assertIn("stride?", said)
        self.assertNotIn("--", said)


class Ranges(Case):
    def warning(self, name, *more):
        result = self.call("convert", name, "-s", "40x30", *more, "-o", "-", "--to", "raw")
        self.assertEqual(result.returncode, 0)
        return result.stderr.decode()

    def info(self, name, *more):
        return self.kro("info", name, "-s", "40x30", *more).decode()

    def test_causes(self):
        ten = random_samples(1200, 10)
        pixel_format = FORMATS["BayerGR10"]
        self.write("big", pixel_format.pack(ten, big_endian=True))
        self.write("left", struct.pack("<1200H", *(s << 6 for s in ten)))
        self.write("deep", FORMATS["BayerGR16"].pack(random_samples(1199, 13) + [8191]))
        self.write("good", pixel_format.pack(ten))
        self.write("padded", pixel_format.pack(ten, 40, 96, fill=255))
        for name, more, cause in (("big", (), "big-endian words? --big-endian"),
                                  ("left", (), "left-aligned samples? -f BayerGR16"),
                                  ("deep", (), "more significant bits? -f BayerGR16 --bits 13;"),
                                  ("good", ("--big-endian",), "little-endian words? then without --big-endian")):
            for depth in ("8", "16"):
                said = self.warning(name, "-f", "BayerGR10", "--depth", depth, *more)
                self.assertIn(f"warning: {name}: samples reach ", said)
                self.assertIn(f"more than the 1023 of BayerGR10 ({cause}", said)
                self.assertEqual(said.count("\n"), 1)
            said = self.info(name, "-f", "BayerGR10", *more)
            self.assertIn("samples above 1023: more than a BayerGR10 sample holds", said)
            self.assertIn(cause, said)
        for name, more in (("good", ()), ("big", ("--big-endian",)), ("padded", ("--stride", "96"))):
            self.assertEqual(self.warning(name, "-f", "BayerGR10", *more), "")
            self.assertNotIn("samples above", self.info(name, "-f", "BayerGR10", *more))
        self.assertEqual(self.warning("left", "-f", "BayerGR16"), "")

    def test_one_warning_for_a_file(self):
        self.write("f", b"\xff\xff" * 4800)
        said = self.warning("f", "-f", "Mono12")
        self.assertEqual(said.count("\n"), 1)

    def test_what_info_recommends_is_bright(self):
        samples = random_samples(1200, 14)
        self.write("f", FORMATS["BayerRG16"].pack(samples))
        said = self.info("f", "-f", "BayerRG16")
        self.assertIn("--bits 14, for a picture of 16 bits --depth 16 --bits 14 --scale", said)
        options = ("-f", "BayerRG16", "-s", "40x30", "-a", "nearest", "-o", "-", "--to", "raw")
        plain = self.kro("convert", "f", *options)
        shown = self.kro("convert", "f", *options, "--bits", "14")
        self.assertLess(max(plain), 64)
        self.assertEqual(max(shown), 255)
        for name in ("BayerRG14p", "SRGGB14P"):
            self.write("g", ALL_FORMATS[name].pack(samples))
            self.assertNotIn("dark", self.info("g", "-f", name))
