"""Names of pixel formats, and frames that kro mosaic makes in each of them."""

from pictures import write_png, write_ppm
from support import FORMATS, Case, random_samples


def short_names(pixel_format):
    if pixel_format.sites == "YYYY":
        base = ["gray", "grey"]
    else:
        base = [pixel_format.sites.lower(), "bayer_" + pixel_format.sites.lower(), "S" + pixel_format.sites]
    if pixel_format.packed:
        endings = ["p", "packed"]
    else:
        endings = ["le", ""] if pixel_format.bits > 8 else [""]
    return [name + str(pixel_format.bits) + ending for name in base for ending in endings]


def expected_sample(pixel, sites, x, y, bits, maximum):
    if sites == "YYYY":
        value = (77 * pixel[0] + 150 * pixel[1] + 29 * pixel[2] + 128) >> 8
    else:
        value = pixel["RGB".index(sites[2 * (y & 1) + (x & 1)])]
    return (value * ((1 << bits) - 1) + maximum // 2) // maximum


def expected_frame(samples, width, height, pixel_format, maximum):
    sites = []
    for y in range(height):
        for x in range(width):
            at = 3 * (y * width + x)
            sites.append(expected_sample(samples[at:at + 3], pixel_format.sites, x, y, pixel_format.bits, maximum))
    return pixel_format.pack(sites)


class Formats(Case):
    def test_table_lists_all(self):
        text = self.kro("formats").decode()
        for pixel_format in FORMATS.values():
            self.assertRegex(text, rf"(?m)^  {pixel_format.name} +0x{pixel_format.code:08X} ")
        for name in ("BGR8", "RGB8", "BGRa8", "RGBa8", "RGB8Planar", "BGR8Planar"):
            self.assertRegex(text, rf"(?m)^  {name} +0x02")

    def test_mosaic_of_every_format(self):
        width, height = 9, 7
        for maximum, bits in ((255, 8), (65535, 16), (1000, None)):
            samples = random_samples(3 * width * height, 16)
            samples = [s * maximum // 65535 for s in samples]
            self.write("picture.ppm", write_ppm(width, height, samples, maximum))
            pictures = ["picture.ppm"]
            if bits:
                self.write("picture.png", write_png(width, height, 3, samples, bits))
                pictures.append("picture.png")
            for pixel_format in FORMATS.values():
                expected = expected_frame(samples, width, height, pixel_format, maximum)
                for picture in pictures:
                    self.kro("mosaic", picture, "-f", pixel_format.name, "-o", "frame.raw")
                    self.assertEqual(self.read("frame.raw"), expected, (pixel_format.name, picture))

    def test_every_name_means_the_same(self):
        self.write("picture.ppm", write_ppm(6, 4, random_samples(72, 8)))
        for pixel_format in FORMATS.values():
            expected = self.kro("mosaic", "picture.ppm", "-f", pixel_format.name, "-o", "-")
            names = short_names(pixel_format) + [f"0x{pixel_format.code:08x}", pixel_format.name.upper(),
                                                 pixel_format.name.replace("Bayer", "bayer_")]
            for name in names:
                self.assertEqual(self.kro("mosaic", "picture.ppm", "-f", name, "-o", "-"), expected, name)

    def test_grey_pictures(self):
        samples = random_samples(48, 8)
        self.write("grey.png", write_png(8, 6, 1, samples))
        self.write("grey.pgm", b"P5 8 6 255\n" + bytes(samples))
        self.write("plain.pgm", ("P2\n8 6\n# c\n255\n" + " ".join(map(str, samples))).encode())
        self.write("plain.ppm", ("P3 8 6 255\n" + " ".join(f"{s} {s} {s}" for s in samples)).encode())
        for picture in ("grey.png", "grey.pgm", "plain.pgm", "plain.ppm"):
            for name in ("Mono8", "BayerBG8"):
                self.assertEqual(self.kro("mosaic", picture, "-f", name, "-o", "-"), bytes(samples), picture)

    def test_alpha_is_dropped(self):
        colour = random_samples(48, 8)
        with_alpha = [v for i in range(16) for v in colour[3 * i:3 * i + 3] + [7]]
        self.write("a.png", write_png(4, 4, 4, with_alpha))
        self.write("b.png", write_png(4, 4, 3, colour))
        frames = [self.kro("mosaic", name, "-f", "rggb8", "-o", "-") for name in ("a.png", "b.png")]
        self.assertEqual(*frames)

    def test_unknown_names(self):
        self.write("picture.ppm", write_ppm(4, 4, [0] * 48))
        for name, says in (("BayrRG8", "did you mean BayerRG8?"), ("rggb14", "BayerRG16"),
                           ("qqqqqqqqqq", "kro formats"),
                           ("BayerRG12p", "Packed"), ("Mono10p", "Packed"), ("rggb10be", "little-endian"),
                           ("0x02180015", "unknown pixel format"), ("0xzz", "unknown pixel format"),
                           ("rggb9", "unknown"), ("BayerRG", "unknown"), ("", "unknown pixel format ''")):
            self.kro_fails(2, "mosaic", "picture.ppm", "-f", name, "-o", "x.raw", says=says)
        self.assertEqual(self.names(), ["picture.ppm"])
