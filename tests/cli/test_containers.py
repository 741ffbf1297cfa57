"""Mosaics in PGM, PNG, TIFF and NPY files, and headers that promise more than their file holds."""

import resource
import struct
import zlib

from pictures import read_png, read_pnm, read_tiff, write_bmp, write_npy, write_pgm, write_png, write_tiff
from support import FORMATS, SANITIZED, Case, random_samples, some

WIDTH, HEIGHT = 10, 8


def little_memory():
    # A sanitizer takes all addresses there are for its own books.
    if SANITIZED:
        return
    resource.setrlimit(resource.RLIMIT_AS, (1 << 30, 1 << 30))


class Containers(Case):
    def expected(self, samples, format_name, *more):
        self.write("raw", FORMATS[format_name].pack(samples))
        return self.kro("convert", "raw", "-f", format_name, "-s", f"{WIDTH}x{HEIGHT}", "-o", "-", "--to", "raw", *more)

    def contained(self, name, *more):
        return self.kro("convert", name, "-o", "-", "--to", "raw", *more)

    def containers(self, samples, bits):
        deep = bits > 8
        size = (WIDTH, HEIGHT)
        page = (*size, 1, samples, 16 if deep else 8)
        inverted = (*size, 1, [(65535 if deep else 255) - s for s in samples], 16 if deep else 8)
        files = {"a.pgm": write_pgm(*size, samples, (1 << bits) - 1),
                 "b.png": write_png(*size, 1, samples, 16 if deep else 8),
                 "c.tif": write_tiff([page]), "d.TIFF": write_tiff([page], order=">", rows_per_strip=3),
                 "e.tif": write_tiff([page], compression=8, rows_per_strip=2),
                 "f.tif": write_tiff([inverted], white_is_zero=True),
                 "g.npy": write_npy((HEIGHT, WIDTH), samples, "<u2" if deep else "|u1"),
                 "h.npy": write_npy((1, HEIGHT, WIDTH), samples, ">u2" if deep else "|u1", version=2),
                 "p2.pgm": f"P2 {WIDTH} {HEIGHT} {(1 << bits) - 1} {' '.join(map(str, samples))}".encode()}
        for name, data in files.items():
            self.write(name, data)
        return files

    def test_every_container(self):
        for bits, format_name in ((8, "BayerGB8"), (16, "BayerGB16")):
            samples = random_samples(WIDTH * HEIGHT, bits)
            expected = self.expected(samples, format_name)
            for name in some(self.containers(samples, bits)):
                for option in ("gbrg", format_name, "BayerGB"):
                    self.assertEqual(self.contained(name, "-f", option), expected, (name, option))

    def test_depth(self):
        """A PGM file says its depth; of the others the option does, or the name."""
        for bits, format_name in ((10, "BayerRG10"), (12, "BayerRG12"), (10, "Mono10")):
            samples = random_samples(WIDTH * HEIGHT, bits)
            expected = self.expected(samples, format_name)
            phase = "mono" if format_name.startswith("Mono") else "rggb"
            for name, data in some(self.containers(samples, bits).items()):
                self.assertEqual(self.contained(name, "-f", format_name), expected, name)
                self.assertEqual(self.contained(name, "-f", f"{phase}{bits}"), expected, name)
                named = f"{phase}_{bits}bit_{name}"
                self.write(named, data)
                self.assertEqual(self.contained(named), expected, named)
                self.assertEqual(self.contained(named, "-f", phase), expected, named)
            self.assertEqual(self.contained("a.pgm", "-f", phase), expected)
            wide = self.expected(samples, format_name.replace(str(bits), "16"))
            self.assertEqual(self.contained("b.png", "-f", phase), wide)
        samples = random_samples(WIDTH * HEIGHT, 10)
        self.write("odd.pgm", write_pgm(WIDTH, HEIGHT, [s * 900 // 1023 for s in samples], 900))
        self.assertEqual(self.contained("odd.pgm", "-f", "rggb"),
                         self.expected([s * 900 // 1023 for s in samples], "BayerRG10"))

    def test_sixteen_bits_out(self):
        samples = random_samples(WIDTH * HEIGHT, 12)
        expected = self.expected(samples, "BayerGR12", "--depth", "16")
        for name in self.containers(samples, 12):
            self.assertEqual(self.contained(name, "-f", "grbg12", "--depth", "16"), expected, name)

    def test_several_frames(self):
        frames = [random_samples(WIDTH * HEIGHT, 8, seed) for seed in range(3)]
        self.write("film_rggb.tif", write_tiff([(WIDTH, HEIGHT, 1, frame, 8) for frame in frames]))
        self.write("film_rggb.npy", write_npy((3, HEIGHT, WIDTH), sum(frames, [])))
        for kind in ("tif", "npy"):
            self.kro("convert", "film_rggb." + kind, "-o", kind + ".ppm")
            self.kro("convert", "film_rggb." + kind, "--frame", "2", "-o", "one.ppm")
            for number, frame in enumerate(frames, 1):
                picture = self.read(f"{kind}-000{number}.ppm")
                self.assertEqual(bytes(read_pnm(picture)[3]), self.expected(frame, "BayerRG8", "-O", "RGB8"))
            self.assertEqual(self.read("one.ppm"), self.read(f"{kind}-0002.ppm"))
            self.kro_fails(1, "convert", "film_rggb." + kind, "--frame", "4", "-o", "x.ppm", says=["no frame 4", "3"])
            self.assertEqual(self.kro("info", "film_rggb." + kind).count(b"\nframe "), 3)
        self.write("odd_rggb.tif", write_tiff([(WIDTH, HEIGHT, 1, frames[0], 8), (4, 4, 1, [0] * 16, 8)]))
        self.kro_fails(1, "convert", "odd_rggb.tif", "-o", "x.ppm", "-q", says=["frame 2", "4x4", "10x8"])

    def test_mosaics_made_by_the_command(self):
        self.write("p.png", write_png(WIDTH, HEIGHT, 3, random_samples(3 * WIDTH * HEIGHT, 8)))
        for format_name in ("BayerRG8", "BayerGR10", "BayerBG12Packed", "BayerGB16", "Mono12"):
            self.kro("mosaic", "p.png", "-f", format_name, "-o", "raw")
            expected = self.kro("convert", "raw", "-f", format_name, "-s", f"{WIDTH}x{HEIGHT}", "-o", "-", "--to", "raw")
            for kind in ("pgm", "png", "tif"):
                self.kro("mosaic", "p.png", "-f", format_name, "-o", f"m_{format_name}.{kind}")
                self.assertEqual(self.contained(f"m_{format_name}.{kind}"), expected, (format_name, kind))
        bits = {"pgm": 1023, "png": None, "tif": None}
        readers = {"pgm": read_pnm, "png": read_png, "tif": read_tiff}
        for kind in bits:
            self.assertEqual(readers[kind](self.read(f"m_BayerGR10.{kind}"))[:3], (WIDTH, HEIGHT, 1))
        self.assertIn(b"\n1023\n", self.read("m_BayerGR10.pgm"))
        for kind in ("ppm", "bmp", "jpg"):
            self.kro_fails(2, "mosaic", "p.png", "-f", "rggb8", "-o", "x." + kind, says=["x." + kind, "mosaic", "pgm"])

    def test_what_does_not_fit(self):
        samples = random_samples(WIDTH * HEIGHT, 8)
        self.containers(samples, 8)
        deep = [1024] * (WIDTH * HEIGHT)
        for code, name, data, more, says in (
                (2, "a.pgm", None, (), ["a.pgm", "phase", "--format"]),
                (2, "a.pgm", None, ("-f", "rggb", "-s", "8x10"), ["8x10", "10x8"]),
                (2, "a.pgm", None, ("-f", "rggb", "--skip", "2"), ["--skip"]),
                (2, "a.pgm", None, ("-f", "rggb12"), ["rggb12", "8 bits"]),
                (2, "a.pgm", None, ("-f", "rgbg"), ["rgbg"]),
                (1, "colour.png", write_png(WIDTH, HEIGHT, 3, samples * 3), ("-f", "rggb"), ["colour", "one channel"]),
                (1, "colour.tif", write_tiff([(WIDTH, HEIGHT, 3, samples * 3, 8)]), ("-f", "rggb"), ["colour"]),
                (1, "deep.png", write_png(WIDTH, HEIGHT, 1, deep, 16), ("-f", "rggb10"), ["1024", "BayerRG10"]),
                (1, "raw.png", bytes(80), ("-f", "rggb8", "-s", "10x8"), ["raw.png", "PNG", "as its name says"]),
                (1, "empty.npy", b"", ("-f", "rggb"), ["empty.npy"]),
                (1, "small.pgm", write_pgm(3, 8, [0] * 24), ("-f", "rggb"), ["3x8", "4x4"]),
                (1, "float.npy", write_npy((8, 10), samples, "<f8"), ("-f", "rggb"), ["<f8", "uint16"]),
                (1, "turned.npy", write_npy((8, 10), samples, fortran=True), ("-f", "rggb"), ["Fortran"]),
                (1, "flat.npy", write_npy((80,), samples), ("-f", "rggb"), ["shape"]),
                (1, "four.npy", write_npy((1, 1, 8, 10), samples), ("-f", "rggb"), ["shape"]),
                (1, "cut.npy", write_npy((9, 10), samples), ("-f", "rggb"), ["shorter"]),
                (1, "cut.png", write_png(WIDTH, HEIGHT, 1, samples)[:60], ("-f", "rggb"), ["damaged PNG"]),
                (1, "none.tif", b"II*\0" + bytes(36), ("-f", "rggb"), ["damaged TIFF", "no page"]),
                (1, "cut.tif", write_tiff([(WIDTH, HEIGHT, 1, samples, 8)])[:40], ("-f", "rggb"), ["damaged TIFF"])):
            if data is not None:
                self.write(name, data)
            before = self.names()
            self.kro_fails(code, "convert", name, *more, "-o", "out.ppm", "-q", says=says)
            self.assertEqual(self.names(), before, name)

    def test_depth_in_the_name_and_formats_as_codes(self):
        samples = random_samples(WIDTH * HEIGHT, 10)
        expected = self.expected(samples, "BayerRG10")
        self.write("x_BayerGR10.png", write_png(WIDTH, HEIGHT, 1, samples, 16))
        self.assertEqual(self.contained("x_BayerGR10.png", "-f", "rggb"), expected)
        self.assertEqual(self.contained("x_BayerGR10.png", "-f", "0X0110000D"), expected)
        self.assertEqual(self.contained("x_BayerGR10.png", "-f", "0x0110000d"), expected)

    def test_tiff_that_is_not_read(self):
        for start in (b"II+\0\x08\0\0\0", b"MM\0+\0\x08\0\0"):
            self.write("x.tif", start + bytes(32))
            self.kro_fails(1, "convert", "x.tif", "-f", "rggb", "-o", "y.ppm", says="no page")
        page = (WIDTH, HEIGHT, 1, [0] * (WIDTH * HEIGHT), 8)
        for tag in (256, 257, 273):
            self.write("x.tif", write_tiff([page], tags={tag: None}))
            self.kro_fails(1, "convert", "x.tif", "-f", "rggb", "-o", "y.ppm", says="x.tif: damaged TIFF: ")
        for tags, says in (({258: (3, [4])}, "4 bits"), ({339: (3, [3])}, "floating"), ({262: (3, [5])}, "other than RGB"),
                           ({259: (3, [40000])}, "compression 40000"), ({322: (3, [16]), 323: (3, [16])}, "tiles"),
                           ({262: (3, [2])}, "other than RGB"), ({277: (3, [2]), 284: (3, [2])}, "channels apart")):
            self.write("x.tif", write_tiff([page], tags=tags))
            self.kro_fails(1, "convert", "x.tif", "-f", "rggb", "-o", "y.ppm", says=[says, "expected"])
            self.kro_fails(1, "mosaic", "x.tif", "-f", "rggb8", "-o", "y.raw", says=[says, "expected"])

    def test_tiff_without_its_meaning(self):
        """Where none is said 0 is black, and three channels are RGB."""
        samples = random_samples(WIDTH * HEIGHT, 8)
        self.write("x.tif", write_tiff([(WIDTH, HEIGHT, 1, samples, 8)], tags={262: None}))
        self.assertEqual(self.contained("x.tif", "-f", "rggb"), self.expected(samples, "BayerRG8"))
        colour = random_samples(WIDTH * HEIGHT * 3, 8)
        self.write("x.tif", write_tiff([(WIDTH, HEIGHT, 3, colour, 8)], tags={262: None}))
        self.write("x.png", write_png(WIDTH, HEIGHT, 3, colour))
        self.assertEqual(*(self.kro("mosaic", name, "-f", "rggb8", "-o", "-") for name in ("x.tif", "x.png")))

    def test_sides_that_no_frame_has(self):
        page = (WIDTH, HEIGHT, 1, [0] * (WIDTH * HEIGHT), 8)
        for side in (256, 257):
            for length in (0, 1 << 31, (1 << 32) - 1):
                self.write("x.tif", write_tiff([page], tags={side: (4, [length])}))
                self.kro_fails(1, "convert", "x.tif", "-f", "rggb", "-o", "y.ppm", says="x.tif: damaged TIFF: ")
        samples = random_samples(WIDTH * HEIGHT, 8)
        for shape in ((0, 10), (8, 0), (-8, 10), (8, -10), (0, 8, 10), (1 << 16, 1 << 16)):
            self.write("x.npy", write_npy(shape, samples))
            self.kro_fails(1, "convert", "x.npy", "-f", "rggb", "-o", "y.ppm", says="x.npy: ")
        for header in (b"\x93NUMPY\1\0\xff\xff", b"\x93NUMPX" + write_npy((8, 10), samples)[6:],
                       write_npy((8, 10), samples)[:11]):
            self.write("x.npy", header)
            self.kro_fails(1, "convert", "x.npy", "-f", "rggb", "-o", "y.ppm", says="x.npy: ")


class Pictures(Case):
    """kro mosaic reads all that kro convert writes."""

    def test_what_the_command_writes(self):
        self.frame_file("f_20x14_BayerRG12.raw", 20, 14, "BayerRG12")
        for more, kinds in (((), ("png", "ppm", "tif", "bmp")), (("-O", "RGBa8"), ("png", "tif", "bmp")),
                            (("-O", "Mono8"), ("png", "pgm", "tif", "ppm", "bmp")),
                            (("--depth", "16"), ("png", "ppm", "tif"))):
            frames = set()
            for kind in kinds:
                self.kro("convert", "f_20x14_BayerRG12.raw", *more, "-o", "x." + kind)
                frames.add(self.kro("mosaic", "x." + kind, "-f", "bggr16", "-o", "-"))
                frames.add(self.kro("mosaic", "-", "-f", "bggr16", "-o", "-", data=self.read("x." + kind)))
            self.assertEqual(len(frames), 1, more)

    def test_bmp(self):
        colour = random_samples(9 * 6 * 3, 8)
        bgr = [colour[3 * i + c] for i in range(54) for c in (2, 1, 0)]
        bgrx = [v for i in range(54) for v in bgr[3 * i:3 * i + 3] + [9]]
        palette = random_samples(4 * 54, 8)
        indexed = [v for i in range(54) for v in (palette[4 * i + 2], palette[4 * i + 1], palette[4 * i])]
        grey_palette = [v for i in range(256) for v in (i, i, i, 0)]
        grey = random_samples(54, 8)
        for data, rgb in ((write_bmp(9, 6, 3, bgr), colour), (write_bmp(9, 6, 3, bgr, upwards=False), colour),
                          (write_bmp(9, 6, 4, bgrx), colour), (write_bmp(9, 6, 1, range(54), palette), indexed),
                          (write_bmp(9, 6, 1, grey, grey_palette), [v for g in grey for v in (g, g, g)])):
            self.write("x.bmp", data)
            self.write("x.png", write_png(9, 6, 3, rgb))
            for pixel_format in ("rggb8", "gbrg8"):
                self.assertEqual(self.kro("mosaic", "x.bmp", "-f", pixel_format, "-o", "-"),
                                 self.kro("mosaic", "x.png", "-f", pixel_format, "-o", "-"))

    def test_bmp_with_masks(self):
        """Masks that say what holds without them are read, others refused."""
        usual = (0xFF0000, 0xFF00, 0xFF)
        plain = write_bmp(9, 6, 4, random_samples(216, 8))
        self.write("plain.bmp", plain)
        wanted = self.kro("mosaic", "plain.bmp", "-f", "rggb8", "-o", "-")
        for at, mask in ((None, None), (0, 0xFF), (1, 0xFF0000), (2, 0xFF000000)):
            masks = [mask if place == at else value for place, value in enumerate(usual)]
            start = struct.unpack("<I", plain[10:14])[0]
            self.write("x.bmp", plain[:10] + struct.pack("<I", start + 12) + plain[14:30] + struct.pack("<I", 3) +
                       plain[34:start] + struct.pack("<III", *masks) + plain[start:])
            if at is None:
                good = self.read("x.bmp")
                self.assertEqual(self.kro("mosaic", "x.bmp", "-f", "rggb8", "-o", "-"), wanted)
            else:
                self.kro_fails(1, "mosaic", "x.bmp", "-f", "rggb8", "-o", "x.raw", says=["x.bmp", "compression 3"])
        self.write("x.bmp", good[:28] + b"\x18" + good[29:])
        self.kro_fails(1, "mosaic", "x.bmp", "-f", "rggb8", "-o", "x.raw", says=["24 bits", "compression 3"])

    def test_bmp_palettes(self):
        """All 256 colours where their number is not given; no more than there can be, and whole."""
        palette = random_samples(1024, 8)
        good = write_bmp(9, 6, 1, range(54), palette)
        self.write("x.bmp", good)
        wanted = self.kro("mosaic", "x.bmp", "-f", "rggb8", "-o", "-")
        self.write("x.bmp", good[:46] + bytes(4) + good[50:])
        self.assertEqual(self.kro("mosaic", "x.bmp", "-f", "rggb8", "-o", "-"), wanted)
        for count in (257, 1 << 31):
            self.write("x.bmp", good[:46] + struct.pack("<I", count) + good[50:])
            self.kro_fails(1, "mosaic", "x.bmp", "-f", "rggb8", "-o", "x.raw", says="palette")
        # Grey in blue and green alone is not grey.
        almost = [value for i in range(256) for value in (i, i, 255 - i, 0)]
        self.write("x.bmp", write_bmp(9, 6, 1, range(54), almost))
        self.write("x.png", write_png(9, 6, 3, [value for i in range(54) for value in (255 - i, i, i)]))
        self.assertEqual(self.kro("mosaic", "x.bmp", "-f", "rggb8", "-o", "-"),
                         self.kro("mosaic", "x.png", "-f", "rggb8", "-o", "-"))

    def test_damaged_bmp(self):
        good = write_bmp(9, 6, 3, [1] * 162)
        for data, says in ((good[:-1], "promises"), (good[:20], "too early"), (good[:28] + b"\x10" + good[29:], "16 bits"),
                           (good[:30] + b"\1" + good[31:], "compression 1"), (good[:18] + b"\0" * 4 + good[22:], "side"),
                           (good[:22] + b"\0" * 4 + good[26:], "side"), (good[:18] + b"\xff" * 4 + good[22:], "side"),
                           (good[:22] + b"\0\0\0\x80" + good[26:], "side"), (good[:28] + b"\x20" + good[29:], "promises"),
                           (good[:14] + b"\x0c" + good[15:], "short")):
            self.write("x.bmp", data)
            self.kro_fails(1, "mosaic", "x.bmp", "-f", "rggb8", "-o", "x.raw", says=["x.bmp", says])


class Promises(Case):
    """What a header claims takes no memory before the file can hold it. Each call has one GiB of address space."""

    def refused(self, name, data, *says):
        self.write(name, data)
        self.kro_fails(1, "mosaic", name, "-f", "rggb8", "-o", "x.raw", says=[name, *says], preexec_fn=little_memory)
        if not name.endswith((".jpg", ".bmp", ".ppm")):
            self.kro_fails(1, "convert", name, "-f", "rggb", "-o", "x.ppm", says=[name, *says],
                           preexec_fn=little_memory)

    def test_pictures(self):
        side = 40000

        def chunk(kind, body):
            return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

        for colour in (0, 2):
            header = struct.pack(">IIBBBBB", side, side, 8, colour, 0, 0, 0)
            self.refused("a.png", b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
                         chunk(b"IDAT", zlib.compress(b"\0" * 10)) + chunk(b"IEND", b""), "40000x40000", "can hold")
        page = (side, side, 1, [0] * 100, 8)
        self.refused("b.tif", write_tiff([page]), "40000x40000", "can hold")
        self.refused("c.tif", write_tiff([page], compression=8), "40000x40000", "can hold")
        self.refused("d.pgm", f"P5 {side} {side} 255\n".encode() + bytes(100), "too early")
        self.refused("e.bmp", write_bmp(40, 40, 3, [0] * 4800)[:18] + struct.pack("<ii", side, side) +
                     write_bmp(40, 40, 3, [0] * 4800)[26:], "40000x40000", "can hold")
        self.write("grey.ppm", b"P6 8 8 255\n" + bytes(192))
        self.kro("mosaic", "grey.ppm", "-f", "rggb8", "-o", "f_8x8_BayerRG8.raw")
        self.kro("convert", "f_8x8_BayerRG8.raw", "-o", "f.jpg")
        jpeg = self.read("f.jpg")
        at = jpeg.index(b"\xff\xc0") + 5
        self.refused("f.jpg", jpeg[:at] + struct.pack(">HH", side, side) + jpeg[at + 4:], "40000x40000", "can hold")
        self.refused("cut.jpg", jpeg[:-20], "damaged JPEG")

    def test_arrays(self):
        data = write_npy((40000, 40000), [0] * 100)
        self.write("g.npy", data)
        self.kro_fails(1, "convert", "g.npy", "-f", "rggb", "-o", "x.ppm", says="shorter", preexec_fn=little_memory)

    def test_pipes(self):
        arguments = ("convert", "-", "-f", "rggb8", "-s", "46340x46341", "-o", "x.png")
        data = bytes(30 << 20)
        self.kro_fails(1, *arguments, data=data, preexec_fn=little_memory, says=[str(len(data)), "frame 1"])
        self.assertEqual(self.names(), [])

    def test_a_large_frame_of_a_pipe(self):
        """Larger than the first piece of memory that is taken for a frame."""
        frame = bytes(range(256)) * (5000 * 4096 // 256)
        arguments = ("-f", "mono8", "-s", "5000x4096", "-O", "Mono8", "-o", "-", "--to", "raw")
        self.assertEqual(self.kro("convert", "-", *arguments, data=frame * 2), frame * 2)
