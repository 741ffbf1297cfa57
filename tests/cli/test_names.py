"""Size and format from file names, and names of what is written."""

import os

from support import FORMATS, Case, some


class InputNames(Case):
    def inferred(self, name, size, more=()):
        self.write(name, b"\0" * size)
        result = self.call("convert", name, "-o", "x.ppm", *more)
        self.assertEqual(result.returncode, 0, result.stderr)
        said = result.stderr.decode()
        self.assertEqual(said.count("\n"), 1, said)
        return said.split("read as ")[1].split(",")[0]

    def test_names_that_say_it(self):
        n = 40 * 30
        for name, size, wanted in (
                ("outdoor_40x30_BayerGR8.raw", n, "BayerGR8"), ("x_40x30_10bit_RGGB.raw", 2 * n, "BayerRG10"),
                ("x_40x30_10bit_RGGB.raw", n * 3 // 2, "BayerRG10Packed"), ("40x30.rggb10le", 2 * n, "BayerRG10"),
                ("chart_40x30_BayerRG10.raw", 2 * n, "BayerRG10"), ("a-40X30-gbrg8.bin", n, "BayerGB8"),
                ("a_40x30_bggr.raw", n, "BayerBG8"), ("a_40x30_BGGR_12bit_packed.raw", n * 3 // 2, "BayerBG12Packed"),
                ("a_40x30_Mono12Packed.raw", n * 3 // 2, "Mono12Packed"), ("a_40x30_gray8.raw", n, "Mono8"),
                ("0x12_40x30_BayerRG8.raw", n, "BayerRG8"), ("12bit_40x30_grbg.raw", 2 * n, "BayerGR12"),
                ("BayerRG12_packed_40x30.raw", n * 3 // 2, "BayerRG12Packed"),
                ("r_40x30_mono_16b.raw", 2 * n, "Mono16"),
                ("bayer_rggb16_40x30.raw", 2 * n, "BayerRG16"), ("my_bg_40x30_BayerGB8.raw", n, "BayerGB8")):
            self.assertEqual(self.inferred(name, size), "40x30 " + wanted, name)

    def test_options_come_before_names(self):
        n = 40 * 30
        self.assertEqual(self.inferred("a_40x30_BayerRG8.raw", n, ("-f", "GB8")), "40x30 BayerGB8")
        self.assertEqual(self.inferred("b_40x30_BayerRG8.raw", n, ("-s", "20x60")), "20x60 BayerRG8")
        result = self.call("convert", "b_40x30_BayerRG8.raw", "-s", "30x40", "-f", "BayerBG8", "-o", "x.png")
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        result = self.call("convert", "b_40x30_BayerRG8.raw", "-q", "-o", "x.png")
        self.assertEqual((result.returncode, result.stderr), (0, b""))

    def test_names_that_do_not(self):
        n = 640 * 480
        for name, size, more, says in (
                ("a.raw", n, (), "--size"), ("a_640x480.raw", n, (), "--format"),
                ("a_2x2_BayerRG8.raw", 4, (), "--size"), ("b.raw", n, ("-f", "rggb8"), "640x480"),
                ("c_640x480_RGGB.raw", 2 * n, (), "BayerRG10, BayerRG12, BayerRG14 or BayerRG16"),
                ("d_640x480_bg.raw", n, (), "--format"), ("e_99999999999x4_BayerRG8.raw", n, (), "--size")):
            self.write(name, b"\0" * size)
            self.kro_fails(2, "convert", name, "-o", "x.png", *more, says=[name, says])
        self.assertNotIn("x.png", self.names())

    def test_depths_in_names(self):
        """A depth has a unit and is one that formats have; the first whole format of a name counts."""
        n = 40 * 30
        for name, wanted in (("a_RGGB_10bits", "BayerRG10"), ("a_RGGB_12bpp", "BayerRG12"), ("a_RGGB_12b", "BayerRG12"),
                             ("a_RGGB_BayerGR12", "BayerGR12"), ("a_BayerRG10_BayerGR12", "BayerRG10"),
                             ("a_RGGBle_12bit", "BayerRG12")):
            self.assertEqual(self.inferred(name + "_40x30.raw", 2 * n), "40x30 " + wanted, name)
        words = "BayerRG10, BayerRG12, BayerRG14 or BayerRG16"
        for name, says in (("a_RGGB_40bit", words), ("a_RGGB_7bit", words), ("a_RGGB_12xy", words), ("a_RGGB_10p", words),
                           ("a_Y8", "its name says none"), ("a_RGGB_13bit", "not clear from its name; give --format\n"),
                           ("a_RGGB8p", "not clear from its name; give --format\n"),
                           ("a_SRGGB8p", "not clear from its name; give --format\n"),
                           ("a_BayerRG12p_packed", "not clear from its name; give --format\n"),
                           ("a_RGGBle_packed", "not clear from its name; give --format\n"),
                           ("a_RGGBp", "BayerRG10p (PFNC's), BayerRG12p (PFNC's) or BayerRG14p (PFNC's)"),
                           ("a_RGGB_packed", "BayerRG10Packed (GigE Vision's) or BayerRG12Packed (GigE Vision's)")):
            self.write(name + "_40x30.raw", bytes(2 * n))
            self.kro_fails(2, "info", name + "_40x30.raw", says=[name, says])

    def test_lengths_with_several_meanings(self):
        """What makes the fewest frames of a length is meant, rows apart as --stride says."""
        self.write("x_8x6_RGGB.raw", bytes(6 * 48))
        self.kro_fails(2, "info", "x_8x6_RGGB.raw", says="give --format BayerRG10, BayerRG12, BayerRG14 or BayerRG16")
        self.kro_fails(2, "info", "x_8x6_RGGB.raw", "--stride", "12",
                       says="BayerRG10Packed (GigE Vision's), BayerRG12Packed (GigE Vision's), BayerRG12p (PFNC's) or SRGGB12P")
        self.assertIn(b"8x6 BayerRG8 with rows of 8 bytes", self.kro("info", "x_8x6_RGGB.raw", "--stride", "8"))


class OutputNames(Case):
    def setUp(self):
        super().setUp()
        self.film = self.frame_file("film_8x6_BayerRG8.raw", 8, 6, "BayerRG8", frames=5)
        self.write("one_8x6_BayerRG8.raw", self.film[:48])

    def new_names(self):
        return [name for name in self.names() if not name.endswith(".raw")]

    def test_numbers(self):
        for more, wanted in (((), [1, 2, 3, 4, 5]), (("--frames", "2-4"), [2, 3, 4]), (("--frames", "4-"), [4, 5]),
                             (("--frames", "5-"), [5])):
            self.kro("convert", "film_8x6_BayerRG8.raw", "-o", "x.ppm", *more)
            self.assertEqual(self.new_names(), [f"x-{n:04}.ppm" for n in wanted])
            for n in wanted:
                self.write("f.raw", self.film[48 * (n - 1):48 * n])
                alone = self.kro("convert", "f.raw", "-f", "rggb8", "-s", "8x6", "-o", "-", "--to", "ppm")
                self.assertEqual(self.read(f"x-{n:04}.ppm"), alone)
                os.remove(self.path(f"x-{n:04}.ppm"))

    def test_numbers_behind_a_placeholder(self):
        self.kro("convert", "film_8x6_BayerRG8.raw", "-o", "{name}", "--to", "ppm")
        self.assertEqual(self.new_names(), [f"film_8x6_BayerRG8-{n:04}" for n in range(1, 6)])

    def test_one_frame_has_no_number(self):
        self.kro("convert", "film_8x6_BayerRG8.raw", "--frame", "3", "-o", "x.png")
        self.kro("convert", "one_8x6_BayerRG8.raw", "-o", "y.png")
        self.assertEqual(self.new_names(), ["x.png", "y.png"])

    def test_patterns(self):
        self.kro("convert", "film_8x6_BayerRG8.raw", "--frames", "1-2", "-o", "{frame}of{name}.png")
        self.kro("convert", "film_8x6_BayerRG8.raw", "one_8x6_BayerRG8.raw", "--frame", "1", "-o", "p-{name}.ppm")
        self.assertEqual(self.new_names(), ["0001offilm_8x6_BayerRG8.png", "0002offilm_8x6_BayerRG8.png",
                                            "p-film_8x6_BayerRG8.ppm", "p-one_8x6_BayerRG8.ppm"])

    def test_pictures_are_counted(self):
        one = "one_8x6_BayerRG8.raw"
        film = "film_8x6_BayerRG8.raw"
        for pattern, wanted in (("%04d.ppm", [f"{n:04}.ppm" for n in range(1, 8)]),
                                ("a%d.ppm", [f"a{n}.ppm" for n in range(1, 8)]),
                                ("50%%-%3d-%s%20.ppm", [f"50%-00{n}-%s%20.ppm" for n in range(1, 8)])):
            self.kro("convert", one, film, "-", "-f", "rggb8", "-s", "8x6", "-o", pattern, data=self.film[48:96])
            self.assertEqual(self.new_names(), wanted)
            second = self.kro("convert", film, "--frame", "1", "-o", "-", "--to", "ppm")
            self.assertEqual(self.read(wanted[1]), second)
            self.assertEqual(self.read(wanted[6]), self.read(wanted[2]))
            for name in wanted:
                os.remove(self.path(name))
        self.kro("convert", film, "--frames", "4-5", "-o", "x%02d-{frame}.ppm")
        self.assertEqual(self.new_names(), ["x01-0004.ppm", "x02-0005.ppm"])
        self.kro_fails(2, "convert", "-", film, "-f", "rggb8", "-s", "8x6", "-o", "y%d.ppm", data=self.film, says="last")

    def test_numbers_sort(self):
        self.frame_file("long_4x4_BayerRG8.raw", 4, 4, "BayerRG8", frames=10001)
        self.kro("convert", "long_4x4_BayerRG8.raw", "film_8x6_BayerRG8.raw", "--frames", "2-3", "-o", "d/")
        self.kro("convert", "long_4x4_BayerRG8.raw", "--frames", "9999-10001", "-o", "x.ppm")
        self.assertEqual(self.new_names(), ["d", "x-09999.ppm", "x-10000.ppm", "x-10001.ppm"])
        self.assertIn("film_8x6_BayerRG8-0002.png", os.listdir(self.path("d")))

    def test_unknown_placeholders(self):
        for pattern in ("{nam}.png", "{frame}-{date}.png", "{Frame}.png"):
            self.kro_fails(2, "convert", "film_8x6_BayerRG8.raw", "-o", pattern,
                           says=["unknown placeholder", "{name}", "{frame}", "%04d"])
        self.kro("convert", "one_8x6_BayerRG8.raw", "-o", "{{nam}{1}{}.png")
        self.assertEqual(self.new_names(), ["{nam}{1}{}.png"])

    def test_a_size_that_makes_too_many(self):
        self.frame_file("f_160x100_BayerRG8.raw", 160, 100, "BayerRG8", frames=2)
        arguments = ("convert", "f_160x100_BayerRG8.raw", "-s", "4x4")
        self.kro_fails(2, *arguments, "-o", "x/", says=["2000 pictures", "4x4 BayerRG8", "size", "--many"])
        self.kro_fails(2, *arguments, "--frames", "2-", "-o", "x/", says=["1999 pictures", "--many"])
        self.assertNotIn("x", self.names())
        self.assertEqual(len(self.kro(*arguments, "-o", "-", "--to", "raw")), 96000)
        self.kro(*arguments, "--frames", "1-1001", "-o", "x/")
        self.assertEqual(len(os.listdir(self.path("x"))), 1001)
        self.kro(*arguments, "--many", "-o", "y/", "--to", "ppm")
        self.assertEqual(len(os.listdir(self.path("y"))), 2000)
        self.frame_file("g_4x4_BayerRG8.raw", 4, 4, "BayerRG8", frames=1000)
        self.kro("convert", "g_4x4_BayerRG8.raw", "-o", "z/")
        self.assertEqual(len(os.listdir(self.path("z"))), 1000)

    def test_files_named_as_commands(self):
        self.write("info", self.film[:48])
        self.kro("convert", "info", "-f", "rggb8", "-s", "8x6", "-o", "x.ppm")
        self.assertIn("x.ppm", self.new_names())

    def test_folder(self):
        self.kro("convert", "film_8x6_BayerRG8.raw", "one_8x6_BayerRG8.raw", "-o", "deep/er/", "--to", "bmp")
        self.assertEqual(sorted(os.listdir(self.path("deep/er"))),
                         [f"film_8x6_BayerRG8-000{n}.bmp" for n in range(1, 6)] + ["one_8x6_BayerRG8.bmp"])
        self.kro("convert", "one_8x6_BayerRG8.raw", "-o", "deep")
        self.assertIn("one_8x6_BayerRG8.png", os.listdir(self.path("deep")))

    def test_no_two_inputs_for_one_output(self):
        self.kro_fails(2, "convert", "film_8x6_BayerRG8.raw", "one_8x6_BayerRG8.raw", "-o", "x.png", says="FOLDER/")
        self.kro_fails(2, "convert", "./one_8x6_BayerRG8.raw", "one_8x6_BayerRG8.raw", "-o", "new/", says="twice")
        self.kro_fails(2, "convert", "film_8x6_BayerRG8.raw", says="-o")
        self.assertEqual(self.new_names(), [])

    def test_mosaic_names_are_understood_again(self):
        for pixel_format in some(FORMATS.values()):
            self.kro("convert", "one_8x6_BayerRG8.raw", "-o", "pic.png")
            self.kro("mosaic", "pic.png", "-f", pixel_format.name, "-o", "frames/")
            self.kro("convert", f"frames/pic_8x6_{pixel_format.name}.raw", "-o", "back.png")

    def test_many_on_all_cores(self):
        for jobs in ("1", "2", "7"):
            names = []
            for i in some(range(20)):
                names.append(f"m{i}_16x8_BayerGB12.raw")
                self.frame_file(names[-1], 16, 8, "BayerGB12", seed=i)
            self.kro("convert", *names, "-j", jobs, "-o", f"j{jobs}/", "--to", "ppm")
            for name in names:
                alone = self.kro("convert", name, "-o", "-", "--to", "ppm")
                self.assertEqual(self.read(f"j{jobs}/{name[:-4]}.ppm"), alone)
