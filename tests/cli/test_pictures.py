"""Picture files hold the pixels that the library gave, read by readers of our own."""

from pictures import read_bmp, read_png, read_pnm, read_tiff
from support import Case, demosaic

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
    return pixels


class Pictures(Case):
    def convert(self, frame, width, height, output, name, *more):
        self.write("frame.raw", frame)
        self.kro("convert", "frame.raw", "-f", "rggb8", "-s", f"{width}x{height}", "-O", output, "-o", name, *more)
        return READERS[name[-3:]](self.read(name))

    def test_colour_files(self):
        for width, height in ((4, 4), (5, 4), (6, 5), (7, 9), (33, 6)):
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
        for algorithm in ("nearest", "bilinear", "edge"):
            for more, alpha in (((), 0), (("--opaque",), 255)):
                self.kro("convert", "f_40x12_BayerRG8.raw", "-a", algorithm, "-O", "RGBa8", "-o", "x.png", *more)
                samples = read_png(self.read("x.png"))[3]
                self.assertEqual(set(samples[3::4]), {alpha}, algorithm)
                colour = demosaic(frame, 40, 12, 0x01080009, algorithm, "RGB8")
                self.assertEqual([v for i, v in enumerate(samples) if i % 4 != 3], list(colour))

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
        for arguments in (("-o", "b"), ("-o", "b.jpg"), ("-o", "b.png", "--to", "ppm"), ("-o", "-"),
                          ("-o", "b", "--to", "gif")):
            self.kro_fails(2, "convert", "f_8x6_BayerRG8.raw", *arguments)
        self.assertEqual(self.names(), ["a", "a.PNG", "a.tiff", "f_8x6_BayerRG8.raw"])
