"""Names of pixel formats, and frames that kro mosaic makes in each of them."""

from pictures import write_pgm, write_png, write_ppm
from support import ALL_FORMATS, Case, random_samples, some


def short_names(pixel_format):
    """What others call it, too: V4L2, libcamera, GStreamer, FFmpeg."""
    bits = str(pixel_format.bits)
    grey = pixel_format.sites == "YYYY"
    base = ["gray", "grey"] if grey else [pixel_format.sites.lower(), "bayer_" + pixel_format.sites.lower()]
    initial = ["Y" + bits, "R" + bits] if grey else ["S" + pixel_format.sites + bits]
    if pixel_format.packing == "packed":
        return [name + bits + "packed" for name in base + (["S" + pixel_format.sites] if not grey else [])]
    if pixel_format.packing == "lsb":
        return [name + bits + "p" for name in base]
    if pixel_format.packing == "csi2":
        return [name + "_CSI2P" for name in initial] + [initial[0] + "P", initial[0].lower() + "csi2p"]
    if pixel_format.packing == "byte":
        return [name + bits for name in base] + (["GREY", "GRAY8", "R8", "gray"] if grey else initial)
    return [name + bits + ending for name in base for ending in ("le", "")] + initial


LETTERS = {"GREY": "Mono8", "Y10 ": "Mono10", "Y12 ": "Mono12", "Y14 ": "Mono14", "Y16 ": "Mono16",
           "Y10P": "Y10P", "Y12P": "Y12P", "Y14P": "Y14P", "RGGB": "BayerRG8", "GRBG": "BayerGR8",
           "GBRG": "BayerGB8", "BA81": "BayerBG8", "RG10": "BayerRG10", "BA10": "BayerGR10", "GB10": "BayerGB10",
           "BG10": "BayerBG10", "RG12": "BayerRG12", "BA12": "BayerGR12", "GB12": "BayerGB12", "BG12": "BayerBG12",
           "RG14": "BayerRG14", "GR14": "BayerGR14", "GB14": "BayerGB14", "BG14": "BayerBG14", "RG16": "BayerRG16",
           "GR16": "BayerGR16", "GB16": "BayerGB16", "BYR2": "BayerBG16", "pRAA": "SRGGB10P", "pgAA": "SGRBG10P",
           "pGAA": "SGBRG10P", "pBAA": "SBGGR10P", "pRCC": "SRGGB12P", "pgCC": "SGRBG12P", "pGCC": "SGBRG12P",
           "pBCC": "SBGGR12P", "pREE": "SRGGB14P", "pgEE": "SGRBG14P", "pGEE": "SGBRG14P", "pBEE": "SBGGR14P"}


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
        for pixel_format in ALL_FORMATS.values():
            self.assertRegex(text, rf"(?m)^  {pixel_format.name} +0x{pixel_format.code:08X} ")
        for name in ("BGR8", "RGB8", "BGRa8", "RGBa8", "RGB8Planar", "BGR8Planar", "BGR16", "RGB16", "RGBa16", "xRGB8",
                     "aBGR16", "BGR16Planar"):
            self.assertRegex(text, rf"(?m)^  {name} +0x[08]2")

    def test_names_in_the_table_are_understood(self):
        self.write("picture.ppm", write_ppm(8, 4, random_samples(96, 8)))
        lines = self.kro("formats").decode().split("What comes out")[0].splitlines()[2:]
        rows = [line for line in lines if line.startswith("  ")]
        self.assertEqual(len(rows), len(ALL_FORMATS))
        for row in rows:
            name, code, short = row.split()[:3]
            others = row[79:].split(", ") if len(row) > 79 else []
            self.assertEqual(len(others) > 0, not name.endswith(("Packed", "p")) and name != "Y14P", row)
            expected = self.kro("mosaic", "picture.ppm", "-f", name, "-o", "-")
            for other in [code, short, *others]:
                self.assertEqual(self.kro("mosaic", "picture.ppm", "-f", other, "-o", "-"), expected, (name, other))

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
            for pixel_format in some(ALL_FORMATS.values()):
                expected = expected_frame(samples, width, height, pixel_format, maximum)
                for picture in pictures:
                    self.kro("mosaic", picture, "-f", pixel_format.name, "-o", "frame.raw")
                    self.assertEqual(self.read("frame.raw"), expected, (pixel_format.name, picture))

    def test_every_name_means_the_same(self):
        self.write("picture.ppm", write_ppm(6, 4, random_samples(72, 8)))
        for pixel_format in some(ALL_FORMATS.values()):
            expected = self.kro("mosaic", "picture.ppm", "-f", pixel_format.name, "-o", "-")
            names = short_names(pixel_format) + [f"0x{pixel_format.code:08x}",
                                                 pixel_format.name.replace("Bayer", "bayer_")]
            names += [pixel_format.name.upper()] if pixel_format.packing != "lsb" else [pixel_format.name.lower()]
            names += ["V4L2_PIX_FMT_" + name for name in names if name[0] in "SY"]
            names += [letters for letters, name in LETTERS.items() if name == pixel_format.name]
            for name in some(names):
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

    def test_big_endian_names(self):
        samples = random_samples(8 * 6, 16)
        self.write("grey.pgm", write_pgm(8, 6, samples, 65535))
        expected = ALL_FORMATS["Mono16"].pack(samples, big_endian=True)
        for name in ("Y16_BE", "GRAY16_BE", "gray16be", "mono16be"):
            self.assertEqual(self.kro("mosaic", "grey.pgm", "-f", name, "-o", "-"), expected, name)
        for name in ("rggb16be", "bayer_rggb16be", "SRGGB16_BE", "BayerRG16BE"):
            self.assertEqual(self.kro("mosaic", "grey.pgm", "-f", name, "-o", "-"), expected, name)
            self.assertEqual(self.kro("mosaic", "grey.pgm", "-f", name, "--big-endian", "-o", "-"), expected, name)
        self.assertEqual(self.kro("mosaic", "grey.pgm", "-f", "Mono16", "--big-endian", "-o", "-"), expected)

    def test_names_with_several_meanings(self):
        self.write("picture.ppm", write_ppm(4, 4, [0] * 48))
        for bits in (10, 12, 14):
            wanted = [f"BayerRG{bits}p (PFNC's)", f"SRGGB{bits}P (CSI-2's)"]
            wanted += [f"BayerRG{bits}Packed (GigE Vision's)"] if bits != 14 else []
            for name in (f"RGGB{bits}P", f"rggb{bits}P", f"BayerRG{bits}P", f"BAYERRG{bits}P", f"srggb{bits}p",
                         f"SRGGB{bits}p", f"bayer_rggb{bits}P", f"RG{bits}P"):
                for command in (("mosaic", "picture.ppm", "-o", "x.raw"), ("convert", "x", "-s", "8x8", "-o", "x.png"),
                                ("info", "x", "-s", "8x8")):
                    self.kro_fails(2, *command, "-f", name, says=[f"'{name}'", "several meanings", *wanted])
            for name in (f"Mono{bits}P", f"y{bits}p", f"Y{bits}p", f"R{bits}P", f"R{bits}p", f"gray{bits}P"):
                self.kro_fails(2, "mosaic", "picture.ppm", "-f", name, "-o", "x.raw",
                               says=[f"'{name}'", f"Mono{bits}p (PFNC's)", f"Y{bits}P (CSI-2's)"])
        self.assertEqual(self.names(), ["picture.ppm"])

    def test_unknown_names(self):
        self.write("picture.ppm", write_ppm(4, 4, [0] * 48))
        for name, says in (("BayrRG8", "did you mean BayerRG8?"), ("qqqqqqqqqq", "kro formats"),
                           ("0x02180015", "unknown pixel format"), ("0xzz", "unknown pixel format"),
                           ("0x1000000000A", "unknown"), ("rggb8be", "unknown"), ("rggb16p", "unknown"),
                           ("rggb14packed", "unknown"), ("rggb12pbe", "unknown"), ("pRcC", "unknown"),
                           ("ba81", "unknown"), ("prcc", "unknown"), ("Y", "unknown"), ("Y9", "unknown"),
                           ("rggb9", "unknown"), ("BayerRG", "unknown"), ("", "unknown pixel format ''")):
            self.kro_fails(2, "mosaic", "picture.ppm", "-f", name, "-o", "x.raw", says=says)
        self.assertEqual(self.names(), ["picture.ppm"])
