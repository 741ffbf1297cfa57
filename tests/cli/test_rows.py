"""Frames in every packing, with any distance from row to row and either byte order."""

import struct

from pictures import read_pnm, words, write_npy, write_pgm, write_ppm
from support import ALL_FORMATS, FORMATS, Case, demosaic, demosaic_samples, random_samples, some

WIDTH, HEIGHT = 21, 13


class Rows(Case):
    def raw(self, name, pixel_format, *more, data=None):
        return self.kro("convert", name, "-f", pixel_format, "-s", f"{WIDTH}x{HEIGHT}", "-o", "-", "--to", "raw", *more,
                        data=data)

    def test_every_format_with_and_without_gaps(self):
        for pixel_format in some(ALL_FORMATS.values()):
            samples = random_samples(WIDTH * HEIGHT, pixel_format.bits)
            expected = demosaic_samples(samples, WIDTH, HEIGHT, pixel_format, "edge", "RGB8")
            exact = len(pixel_format.pack(samples[:WIDTH]))
            for stride in (0, exact, exact + 22):
                self.write("f", pixel_format.pack(samples, WIDTH, stride))
                more = ("--stride", str(stride)) if stride else ()
                picture = self.raw("f", pixel_format.name, "-O", "RGB8", *more)
                self.assertEqual(picture, expected, (pixel_format.name, stride))

    def test_every_sample_arrives(self):
        for pixel_format in some(ALL_FORMATS.values()):
            if pixel_format.sites != "YYYY":
                continue
            samples = random_samples(WIDTH * HEIGHT, pixel_format.bits, seed=3)
            for stride in (0, 96):
                self.write("f", pixel_format.pack(samples, WIDTH, stride))
                more = ("--stride", "96") if stride else ()
                picture = self.raw("f", pixel_format.name, "--depth", "16", *more)
                self.assertEqual(words(picture, "<"), samples, (pixel_format.name, stride))

    def test_byte_order(self):
        for name in ("Mono10", "Mono16", "BayerRG12", "BayerGB14", "BayerBG16"):
            pixel_format = ALL_FORMATS[name]
            samples = random_samples(WIDTH * HEIGHT, pixel_format.bits)
            expected = demosaic_samples(samples, WIDTH, HEIGHT, pixel_format, "bilinear", "BGR8")
            for stride in (0, 64):
                self.write("f", pixel_format.pack(samples, WIDTH, stride, big_endian=True))
                more = ("-a", "bilinear", "-O", "BGR8", *(("--stride", "64") if stride else ()))
                self.assertEqual(self.raw("f", name, "--big-endian", *more), expected, name)
                self.assertEqual(self.raw("f", name + "BE", *more), expected, name)
        self.write("thermal_21x13_Y16_BE.raw", ALL_FORMATS["Mono16"].pack(samples, big_endian=True))
        for more in (("--big-endian", "-f", "Y16"), ("-f", "y16be")):
            self.kro("convert", "thermal_21x13_Y16_BE.raw", *more, "-o", "x.pgm")
            self.assertEqual(read_pnm(self.read("x.pgm"))[3], [s >> 8 for s in samples])

    def test_skip_and_stride_and_several_frames(self):
        samples = random_samples(WIDTH * HEIGHT * 3, 12)
        frames = [samples[i * WIDTH * HEIGHT:(i + 1) * WIDTH * HEIGHT] for i in range(3)]
        pixel_format = ALL_FORMATS["SGBRG12P"]
        expected = [demosaic_samples(frame, WIDTH, HEIGHT, pixel_format, "edge", "BGR8") for frame in frames]
        data = b"H" * 31 + pixel_format.pack(samples, WIDTH, 48)
        options = ("--skip", "31", "--stride", "48", "-O", "BGR8")
        # The last row of the last frame may be as short as a row is.
        for cut in (0, 1, 15, 48 - 33):
            self.write("f", data[:len(data) - cut])
            self.assertEqual(self.raw("f", "SGBRG12P", *options), b"".join(expected), cut)
            self.assertEqual(self.raw("-", "SGBRG12P", *options, data=self.read("f")), b"".join(expected), cut)
            self.assertEqual(self.raw("f", "SGBRG12P", *options, "--frame", "3"), expected[2], cut)
        self.write("f", data[:-16])
        self.kro_fails(1, "convert", "f", "-f", "SGBRG12P", "-s", "21x13", *options, "-o", "x.png",
                       says=["2 frames", "stride"])
        result = self.call("convert", "-", "-f", "SGBRG12P", "-s", "21x13", *options, "-o", "-", "--to", "raw",
                           data=self.read("f"))
        self.assertEqual((result.returncode, result.stdout), (1, b"".join(expected[:2])))
        self.assertIn(b"frame 3", result.stderr)

    def test_a_stream_of_bits_may_end_with_its_last_bit(self):
        samples = random_samples(WIDTH * HEIGHT, 10)
        whole = ALL_FORMATS["BayerGR10p"].pack(samples)
        bits = (WIDTH * HEIGHT * 10 + 7) // 8
        self.assertLess(bits, len(whole))
        expected = demosaic_samples(samples, WIDTH, HEIGHT, ALL_FORMATS["BayerGR10p"], "edge", "BGR8")
        self.write("f", whole[:bits])
        self.assertEqual(self.raw("f", "BayerGR10p", "-O", "BGR8"), expected)
        self.assertEqual(self.raw("-", "BayerGR10p", "-O", "BGR8", data=whole[:bits]), expected)
        self.write("f", whole[:bits - 1])
        self.kro_fails(1, "convert", "f", "-f", "BayerGR10p", "-s", "21x13", "-o", "x.png", says="short file")

    def test_mosaic_writes_what_a_camera_sends(self):
        samples = random_samples(WIDTH * HEIGHT, 16)
        self.write("p.pgm", write_pgm(WIDTH, HEIGHT, samples, 65535))
        for pixel_format in some(ALL_FORMATS.values()):
            most = (1 << pixel_format.bits) - 1
            sites = [(s * most + 32767) // 65535 for s in samples]
            frame = self.kro("mosaic", "p.pgm", "-f", pixel_format.name, "--stride", "64", "-o", "-")
            self.assertEqual(frame, pixel_format.pack(sites, WIDTH, 64, fill=0), pixel_format.name)
            if pixel_format.packing == "word":
                frame = self.kro("mosaic", "p.pgm", "-f", pixel_format.name, "--big-endian", "-o", "-")
                self.assertEqual(frame, pixel_format.pack(sites, big_endian=True), pixel_format.name)

    def test_info_and_show_read_the_same(self):
        for pixel_format in some(ALL_FORMATS.values()):
            value = (1 << pixel_format.bits) - 5
            samples = [7] * (WIDTH * HEIGHT - 1) + [value]
            self.write("f", pixel_format.pack(samples, WIDTH, 64))
            options = ("-f", pixel_format.name, "-s", "21x13", "--stride", "64")
            said = self.kro("info", "f", *options).decode()
            self.assertIn(f"with rows of 64 bytes (0x{pixel_format.code:08X})", said)
            self.assertRegex(said, rf" +7 +{value} ", pixel_format.name)
            self.assertIn(b"\x1b[38;", self.kro("show", "f", *options, "--in", "blocks"))

    def test_names_of_files(self):
        self.write("p.ppm", write_ppm(8, 6, random_samples(144, 8)))
        for name in some(ALL_FORMATS):
            self.kro("mosaic", "p.ppm", "-f", name, "-o", "frames/")
            said = self.call("convert", f"frames/p_8x6_{name}.raw", "-o", "x.ppm").stderr.decode()
            self.assertIn(f"8x6 {name},", said)
        self.kro("mosaic", "p.ppm", "-f", "BayerRG10", "--big-endian", "-o", "frames/")
        said = self.call("convert", "frames/p_8x6_BayerRG10BE.raw", "-o", "x.ppm").stderr.decode()
        self.assertIn("8x6 BayerRG10 big-endian,", said)
        for name, size, wanted in (("a_8x6_Y16.raw", 96, "Mono16"), ("a_8x6_SRGGB12_CSI2P.raw", 72, "SRGGB12P"),
                                   ("a_8x6_Y16_BE.raw", 96, "Mono16 big-endian"), ("RGGB_10_8x6.raw", 48, "BayerRG8"),
                                   ("a_8x6_bayer_rggb16be.raw", 96, "BayerRG16 big-endian"),
                                   ("x8_y16_8x6_GRBG.raw", 48, "BayerGR8"), ("R10_8x6_mono.raw", 48, "Mono8"),
                                   ("a_8x6_rggb12p.raw", 72, "BayerRG12p"), ("a_8x6_RGGB12Packed.raw", 72, "BayerRG12Packed"),
                                   ("a_8x6_10bit_GBRG.raw", 72, "BayerGB10Packed")):
            self.write(name, bytes(size))
            result = self.call("convert", name, "-o", "x.ppm")
            self.assertIn(f"8x6 {wanted},", result.stderr.decode())
        for name, size in (("a_8x6_RGGB12P.raw", 72), ("a_8x6_12bit_RGGB.raw", 72), ("a_8x6_srggb12p.raw", 72)):
            self.write(name, bytes(size))
            self.kro_fails(2, "convert", name, "-o", "y.png",
                           says=["--format", "BayerRG12p (PFNC's)", "SRGGB12P (CSI-2's)", "BayerRG12Packed (GigE"])
        self.assertNotIn("y.png", self.names())

    def test_bad_rows(self):
        self.write("f", bytes(100000))
        self.write("m.pgm", write_pgm(8, 6, [0] * 48))
        self.write("m.npy", write_npy((6, 8), [0] * 48))
        frame = ("convert", "f", "-s", "21x13", "-o", "x.png")
        for arguments, says in (
                ((*frame, "-f", "Mono8", "--stride", "20"), ["--stride 20", "21"]),
                ((*frame, "-f", "Mono12p", "--stride", "32"), ["--stride 32", "Mono12p", "33"]),
                ((*frame, "-f", "Mono16", "--stride", "43"), ["--stride 43", "odd"]),
                ((*frame, "-f", "Mono8", "--stride", "9" * 18), "from 1 to 2147483647"),
                ((*frame, "-f", "Mono8", "--stride", "-1"), "--stride: expected a whole number from 1"),
                ((*frame, "-f", "Mono8", "--stride", "0"), "from 1 to"),
                ((*frame, "-f", "Mono8", "--big-endian"), ["--big-endian", "Mono8"]),
                ((*frame, "-f", "SRGGB12P", "--big-endian"), ["--big-endian", "SRGGB12P"]),
                (("convert", "m.pgm", "-f", "rggb", "--stride", "8", "-o", "x.png"), ["m.pgm", "--stride"]),
                (("convert", "m.npy", "-f", "rggb", "--big-endian", "-o", "x.png"), ["m.npy", "--big-endian"]),
                (("mosaic", "m.pgm", "-f", "Mono8", "--stride", "7", "-o", "x.raw"), ["--stride 7", "8"]),
                (("mosaic", "m.pgm", "-f", "Mono8", "--stride", "9", "-o", "x.png"), ["--stride", "png"])):
            self.kro_fails(2, *arguments, says=says)
        self.assertEqual(self.names(), ["f", "m.npy", "m.pgm"])


class Bands(Case):
    def test_a_large_frame_is_the_same_on_any_threads(self):
        width, height = 1000, 801
        samples = list(struct.unpack(f"<{width * height}H", FORMATS["Mono8"].pack(
            random_samples(2 * width * height, 8))))
        for name, stride in (("BayerGR12", 0), ("SBGGR10P", 1312)):
            pixel_format = ALL_FORMATS[name]
            these = [s >> (16 - pixel_format.bits) for s in samples]
            self.write("f", pixel_format.pack(these, width, stride))
            options = ("-f", name, "-s", f"{width}x{height}", *(("--stride", str(stride)) if stride else ()))
            expected = demosaic_samples(these, width, height, pixel_format, "edge", "BGR8")
            for threads in ("1", "2", "5"):
                self.kro("convert", "f", *options, "--threads", threads, "-o", f"x{threads}.raw")
                self.assertTrue(self.read(f"x{threads}.raw") == expected, (name, threads))
                deep = self.kro("convert", "f", *options, "-j", threads, "--depth", "16", "-o", "-", "--to", "raw")
                self.assertEqual(len(deep), 6 * width * height)
                self.write(f"deep{threads}", deep)
                self.assertTrue(deep == self.read("deep1"), (name, threads))
            data = self.read("f")
            piped = self.kro("convert", "-", *options, "-j", "3", "-o", "-", "--to", "raw", data=data + data)
            self.assertTrue(piped == 2 * expected, name)

    def test_fine_is_the_same_on_any_threads(self):
        width, height = 1000, 801
        frame = self.frame_file("f", width, height, "BayerGB8")
        expected = demosaic(frame, width, height, FORMATS["BayerGB8"].code, "fine", "BGR8")
        convert = ("convert", "f", "-f", "BayerGB8", "-s", f"{width}x{height}", "-a", "fine", "-o", "-", "--to", "raw")
        deep = self.kro(*convert, "-j", "1", "--depth", "16")
        for threads in ("1", "2", "5"):
            self.assertTrue(self.kro(*convert, "-j", threads) == expected, threads)
            self.assertTrue(self.kro(*convert, "-j", threads, "--depth", "16") == deep, threads)
