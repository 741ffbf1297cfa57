"""Picture files hold the pixels that the library gave, read by readers of our own."""

from pictures import read_bmp, read_png, read_pnm, read_tiff, write_ppm
from support import ALGORITHMS, Case, demosaic, some

READERS = {"png": read_png, "ppm": read_pnm, "pgm": read_pnm, "bmp": read_bmp, "tif": read_tiff}
ORDERS = {"png": "RGB", "tif": "RGB", "ppm": "RGB", "bmp": "BGR"}


def interleaved(samples, output, order):
    """The library's bytes as pixels in the order of the file."""
    alpha = "a8" in output
    planar = output.endswith("Planar")
    channels = 4 if alpha else 3
    count = len(samples) // channels
    pixels = []
    for i in range(count):
        pixel = [samples[c * count + i] if planar else samples[i * channels + c] for c in range(channels)]
        if output[:3] != order:
            pixel[0], pixel[2] = pixel[2], pixel[0]
        pixels += pixel
        if alpha:
            pixels[-1] = 255
    return pixels


class Pictures(Case):
    def convert(self, frame, width, height, output, name, *more):
        self.write("frame.raw", frame)
        self.kro("convert", "frame.raw", "-f", "rggb8", "-s", f"{width}x{height}", "-O", output, "-o", name, *more)
        return READERS[name[-3:]](self.read(name))

    def test_colour_files(self):
        for width, height in some(((4, 4), (5, 4), (6, 5), (7, 9), (33, 6))):
            frame = self.frame_file("frame.raw", width, height, "BayerRG8")
            for output in ("BGR8", "RGB8", "BGR8Planar", "RGB8Planar", "BGRa8", "RGBa8"):
                samples = demosaic(frame, width, height, 0x01080009, "edge", output)
                channels = 4 if "a8" in output else 3
                for kind in ("png", "tif", "bmp") + (("ppm",) if channels == 3 else ()):
                    picture = self.convert(frame, width, height, output, "x." + kind)
                    self.assertEqual(picture[:3], (width, height, channels), (output, kind))
                    self.assertEqual(picture[3], interleaved(samples, output, ORDERS[kind]),
                                     (width, output, kind))

    def test_grey_files(self):
        width, height = 7, 5
        frame = self.frame_file("frame.raw", width, height, "BayerRG8")
        grey = list(demosaic(frame, width, height, 0x01080009, "edge", "Mono8"))
        for kind in ("png", "tif", "pgm"):
            self.assertEqual(self.convert(frame, width, height, "Mono8", "x." + kind), (width, height, 1, grey))
        for kind in ("ppm", "bmp"):
            spread = [v for v in grey for _ in range(3)]
            self.assertEqual(self.convert(frame, width, height, "Mono8", "x." + kind), (width, height, 3, spread))

    def test_output_follows_the_file(self):
        frame = self.frame_file("c_8x6_BayerRG8.raw", 8, 6, "BayerRG8")
        self.frame_file("m_8x6_Mono12.raw", 8, 6, "Mono12")
        for kind, colour, mono in (("png", 3, 1), ("tif", 3, 1), ("ppm", 3, 3), ("pgm", 1, 1), ("bmp", 3, 3)):
            for source, channels in (("c_8x6_BayerRG8.raw", colour), ("m_8x6_Mono12.raw", mono)):
                self.kro("convert", source, "-o", "x." + kind)
                self.assertEqual(READERS[kind](self.read("x." + kind))[2], channels, (kind, source))
        self.kro("convert", "c_8x6_BayerRG8.raw", "-o", "x.raw")
        self.assertEqual(self.read("x.raw"), demosaic(frame, 8, 6, 0x01080009, "edge", "BGR8"))

    def test_alpha(self):
        frame = self.frame_file("f_40x12_BayerRG8.raw", 40, 12, "BayerRG8")
        for algorithm in ALGORITHMS:
            colour = demosaic(frame, 40, 12, 0x01080009, algorithm, "RGB8")
            for more, name, alpha in (((), "x.png", 255), (("--opaque",), "x.png", 255), ((), "x.tif", 255),
                                      ((), "x.raw", 0), (("--opaque",), "x.raw", 255)):
                result = self.call("convert", "f_40x12_BayerRG8.raw", "-a", algorithm, "-O", "RGBa8", "-o", name,
                                   "-q", *more)
                self.assertEqual((result.returncode, result.stderr), (0, b""))
                data = self.read(name)
                samples = list(data) if name == "x.raw" else READERS[name[-3:]](data)[3]
                self.assertEqual(set(samples[3::4]), {alpha}, (algorithm, name))
                self.assertEqual([v for i, v in enumerate(samples) if i % 4 != 3], list(colour))
            piped = self.kro("convert", "f_40x12_BayerRG8.raw", "-a", algorithm, "-O", "BGRa8", "-o", "-", "--to", "raw")
            self.assertEqual(piped, demosaic(frame, 40, 12, 0x01080009, algorithm, "BGRa8"))

    def test_what_files_cannot_hold(self):
        self.frame_file("f_8x6_BayerRG8.raw", 8, 6, "BayerRG8")
        for output, name, says in (("BGR8", "x.pgm", "pgm"), ("RGBa8", "x.ppm", "ppm"), ("BGRa8", "x.pgm", "pgm")):
            self.kro_fails(2, "convert", "f_8x6_BayerRG8.raw", "-O", output, "-o", name, says=[says, output])
        self.assertEqual(self.names(), ["f_8x6_BayerRG8.raw"])

    def test_type_apart_from_the_name(self):
        self.frame_file("f_8x6_BayerRG8.raw", 8, 6, "BayerRG8")
        self.kro("convert", "f_8x6_BayerRG8.raw", "-o", "a", "--to", "png")
        self.kro("convert", "f_8x6_BayerRG8.raw", "-o", "a.PNG")
        self.assertEqual(self.read("a"), self.read("a.PNG"))
        self.kro("convert", "f_8x6_BayerRG8.raw", "-o", "a.tiff", "--to", "tif")
        for arguments in (("-o", "b"), ("-o", "b.webp"), ("-o", "b.png", "--to", "ppm"), ("-o", "-"),
                          ("-o", "b", "--to", "gif")):
            self.kro_fails(2, "convert", "f_8x6_BayerRG8.raw", *arguments)
        self.assertEqual(self.names(), ["a", "a.PNG", "a.tiff", "f_8x6_BayerRG8.raw"])

    def test_png_levels(self):
        """Flat, sloping and noisy pictures, so that each prediction of rows is the best for one of them."""
        width, height = 64, 50
        pictures = {"flat": lambda x, y: 77, "across": lambda x, y: 3 * x, "down": lambda x, y: 5 * y,
                    "both": lambda x, y: 2 * x + 2 * y, "waves": lambda x, y: (x * x // 8 + y * y // 4) % 251,
                    "noise": lambda x, y: (x * 7919 + y * 104729) * 31 % 256}
        for name, value in pictures.items():
            frame = bytes(value(x, y) for y in range(height) for x in range(width))
            for pixel_format, output, channels in (("mono8", "Mono8", 1), ("rggb8", "RGB8", 3), ("rggb8", "RGBa8", 4)):
                self.write("f.raw", frame)
                arguments = ("convert", "f.raw", "-f", pixel_format, "-s", f"{width}x{height}", "-O", output)
                wanted = list(self.kro(*arguments, "--opaque", "-o", "-", "--to", "raw"))
                for level in some(("0", "1", "5", "12")):
                    png = self.kro(*arguments, "-o", "-", "--to", "png", "--png-level", level)
                    self.assertEqual(read_png(png), (width, height, channels, wanted), (name, output, level))
                self.assertEqual(self.kro(*arguments, "-o", "-", "--to", "png", "--png-level", "1"),
                                 self.kro(*arguments, "-o", "-", "--to", "png"))

    def test_png_levels_compress(self):
        self.write("f.raw", bytes((x * y // 64) % 256 for y in range(200) for x in range(300)))
        sizes = [len(self.kro("convert", "f.raw", "-f", "rggb8", "-s", "300x200", "-o", "-", "--to", "png",
                              "--png-level", level)) for level in ("0", "1", "12")]
        self.assertGreater(sizes[0], 180000)
        self.assertLess(sizes[1], sizes[0] // 2)
        self.assertLess(sizes[2], sizes[1])

    def test_jpeg(self):
        self.write("p.ppm", write_ppm(48, 32, [v for y in range(32) for x in range(48) for v in (4 * x, 99, 6 * y)]))
        self.kro("mosaic", "p.ppm", "-f", "rggb8", "-o", "f_48x32_BayerRG8.raw")
        self.kro("convert", "f_48x32_BayerRG8.raw", "-o", "x.ppm")
        wanted = read_pnm(self.read("x.ppm"))[3]
        sizes = []
        for more in ((), ("-O", "BGR8"), ("-O", "RGB8Planar"), ("--quality", "90"), ("--quality", "30")):
            self.kro("convert", "f_48x32_BayerRG8.raw", "-o", "x.jpg", *more)
            data = self.read("x.jpg")
            self.assertEqual((data[:3], data[-2:]), (b"\xff\xd8\xff", b"\xff\xd9"))
            start = data.index(b"\xff\xc0") + 4
            self.assertEqual(data[start:start + 6], bytes([8, 0, 32, 0, 48, 3]))
            if more != ("--quality", "30"):
                self.assertLess(self.error_of_jpeg(wanted), 8, more)
            sizes.append(len(data))
        self.assertEqual(sizes[0], sizes[3])
        self.assertLess(sizes[4], sizes[0])
        self.kro("convert", "f_48x32_BayerRG8.raw", "-O", "Mono8", "-o", "x.JPEG")
        data = self.read("x.JPEG")
        self.assertEqual(data[data.index(b"\xff\xc0") + 9], 1)

    def error_of_jpeg(self, wanted):
        """The largest difference at the sites that a mosaic of the JPEG file keeps."""
        largest = 0
        for phase, colours in (("rggb8", (0, 1, 1, 2)), ("bggr8", (2, 1, 1, 0))):
            sites = self.kro("mosaic", "x.jpg", "-f", phase, "-o", "-")
            for i, site in enumerate(sites):
                colour = colours[2 * (i // 48 % 2) + i % 2]
                largest = max(largest, abs(site - wanted[3 * i + colour]))
        return largest

    def test_options_of_other_files(self):
        self.frame_file("f_8x6_BayerRG8.raw", 8, 6, "BayerRG8")
        for arguments, says in ((("-o", "x.jpg", "--png-level", "3"), ["--png-level", "jpg"]),
                                (("-o", "x.png", "--quality", "50"), ["--quality", "png"]),
                                (("-o", "x.png", "--png-level", "13"), "from 0 to 12"),
                                (("-o", "x.jpg", "--quality", "0"), "from 1 to 100"),
                                (("-o", "x.jpg", "-O", "RGBa8"), ["jpg", "RGBa8"]),
                                (("-o", "x.jpg", "--depth", "16"), ["jpg", "16 bits"])):
            self.kro_fails(2, "convert", "f_8x6_BayerRG8.raw", *arguments, says=says)
