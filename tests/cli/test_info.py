"""kro info, the help texts and the version."""

import os
import shutil
import subprocess

from support import COMMAND, FORMATS, Case


class Info(Case):
    def test_sites(self):
        values = {"R": 100, "Gr": 200, "Gb": 300, "B": 400}
        cells = {"RG": ("R", "Gr", "Gb", "B"), "GR": ("Gr", "R", "B", "Gb"), "GB": ("Gb", "B", "R", "Gr"),
                 "BG": ("B", "Gb", "Gr", "R")}
        for phase, cell in cells.items():
            for kind in ("10", "12", "16", "10Packed", "12Packed"):
                pixel_format = FORMATS["Bayer" + phase + kind]
                samples = [values[cell[2 * (y & 1) + (x & 1)]] for y in range(6) for x in range(8)]
                samples[0] += 7
                self.write("f.raw", pixel_format.pack(samples))
                said = self.kro("info", "f.raw", "-f", pixel_format.name, "-s", "8x6").decode()
                self.assertIn(f"8x6 {pixel_format.name} (0x{pixel_format.code:08X})", said)
                for site, value in (("R", 100), ("G (red rows)", 200), ("G (blue rows)", 300), ("B", 400)):
                    most = value + (7 if values[cell[0]] == value else 0)
                    mean = (12 * value + most - value) / 12
                    fields = [line.split(site, 1)[1].split() for line in said.splitlines()
                              if line.startswith(f"  {site} ")][0]
                    self.assertEqual(fields[:2], [str(value), str(most)], (pixel_format.name, site))
                    self.assertAlmostEqual(float(fields[2]), mean, delta=0.051)
                self.assertIn(f"significant bits seen: 9 of {pixel_format.bits}", said)

    def test_grey_and_frames(self):
        self.write("m_8x6_Mono8.raw", bytes([3] * 48 + [5] * 48 + [9] * 48))
        said = self.kro("info", "m_8x6_Mono8.raw").decode()
        self.assertIn("3 frames in the file", said)
        self.assertEqual(said.count("  grey "), 3)
        said = self.kro("info", "m_8x6_Mono8.raw", "--frame", "2").decode()
        self.assertIn("3 frames in the file", said)
        self.assertRegex(said, r"(?s)frame 2\n.*  grey +5 +5 +5\.0")
        self.assertNotIn("frame 3\n", said)
        piped = self.kro("info", "-", "-f", "mono8", "-s", "8x6", data=bytes([3] * 48)).decode()
        self.assertRegex(piped, r"  grey +3 +3 +3\.0")

    def test_a_frame_that_is_all_white(self):
        self.write("white.raw", b"\xff" * 96)
        self.assertRegex(self.kro("info", "white.raw", "-f", "mono16", "-s", "8x6").decode(),
                         r"  grey +65535 +65535 +65535\.0 +65535 +65535 +65535\n")

    def test_many_frames_are_summarised(self):
        self.write("m_8x6_Mono8.raw", b"".join(bytes([n] * 48) for n in range(1, 201)))
        self.write("few_8x6_Mono8.raw", bytes(480))
        said = self.kro("info", "m_8x6_Mono8.raw").decode()
        self.assertIn("200 frames in the file", said)
        self.assertIn("frames 1-200 together", said)
        self.assertRegex(said, r"  grey +1 +200 +100\.5")
        self.assertIn("darkest: frame 1, mean 1.0; brightest: frame 200, mean 200.0", said)
        self.assertLess(said.count("\n"), 10)
        self.write("falling_8x6_Mono8.raw", b"".join(bytes([n] * 48) for n in range(200, 0, -1)))
        self.assertIn("darkest: frame 200, mean 1.0; brightest: frame 1, mean 200.0",
                      self.kro("info", "falling_8x6_Mono8.raw").decode())
        self.assertRegex(self.kro("info", "m_8x6_Mono8.raw", "--frames", "11-30").decode(), r"frames 11-30 together")
        self.assertEqual(self.kro("info", "m_8x6_Mono8.raw", "--each").count(b"\nframe "), 200)
        self.assertEqual(self.kro("info", "m_8x6_Mono8.raw", "--frames", "5-9").count(b"\nframe "), 5)
        self.assertNotIn(b"together", self.kro("info", "few_8x6_Mono8.raw"))
        # Of a pipe the first frames are said as they come, and all together at its end.
        piped = self.kro("info", "-", "-f", "mono8", "-s", "8x6", data=self.read("m_8x6_Mono8.raw")).decode()
        self.assertEqual(piped.count("\nframe "), 10)
        self.assertEqual(piped[piped.index("frames 1-200"):], said[said.index("frames 1-200"):])

    def test_hints(self):
        self.write("m_8x6_Mono16.raw", b"\0\x10" * 48)
        said = self.kro("info", "m_8x6_Mono16.raw").decode()
        self.assertIn("significant bits seen: 13 of 16, the low 12 always 0", said)
        self.write("m_8x6_Mono10.raw", b"\0\x10" * 48)
        self.assertIn("samples above 1023", self.kro("info", "m_8x6_Mono10.raw").decode())


class Help(Case):
    def test_help_has_examples(self):
        self.assertIn("Examples:", self.kro("--help").decode())
        for command in ("convert", "show", "mosaic", "formats", "info", "selftest"):
            said = self.kro(command, "--help").decode()
            self.assertIn("Example", said)
            self.assertIn(f"kro {command}", said)

    def test_help_as_a_command(self):
        self.assertEqual(self.kro("help"), self.kro("--help"))
        for command in ("convert", "mosaic", "formats", "info", "selftest"):
            self.assertEqual(self.kro("help", command), self.kro(command, "--help"))

    def test_without_a_command(self):
        result = self.call()
        self.assertEqual((result.returncode, result.stderr), (2, b""))
        self.assertEqual(result.stdout, self.kro("--help"))

    def test_ranges_in_words(self):
        said = self.kro("convert", "--help").decode()
        for words in ("1 to 1024", "1 to 16", "0 to 15"):
            self.assertIn(words, said)
        self.assertNotRegex(said, r"\d\.\.\d")

    def test_version(self):
        self.assertRegex(self.kro("--version").decode(), r"^kro \d+\.\d+\.\d+\n$")


class Bench(Case):
    """kro bench becomes kro-bench: the one beside kro, else the one in PATH. Here scripts stand for it."""

    def put(self, name, says):
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        self.write(name, f"#!/bin/sh\nprintf '{says}'; printf '<%s>' \"$@\"\nexit 7\n".encode())
        os.chmod(self.path(name), 0o755)

    def copied(self, *arguments):
        """The copy of kro, which finds its library by a path from where the original lies."""
        library = os.path.join(os.path.dirname(os.path.realpath(COMMAND)), "..", "src")
        environment = dict(os.environ, PATH=self.path("path") + ":/usr/bin:/bin", LD_LIBRARY_PATH=library)
        return subprocess.run([self.path("bin/kro"), *arguments], env=environment, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE)

    def bench(self, *arguments):
        result = self.copied("bench", *arguments)
        return result.returncode, result.stdout.decode(), result.stderr.decode()

    def test_arguments_and_exit_code_are_passed(self):
        os.mkdir(self.path("bin"))
        shutil.copy(COMMAND, self.path("bin/kro"))
        code, printed, said = self.bench()
        self.assertEqual((code, printed, said.count("\n")), (1, "", 1), said)
        self.assertIn("kro-bench", said)
        self.put("path/kro-bench", "far")
        self.assertEqual(self.bench("--json", "a b"), (7, "far<--json><a b>", ""))
        self.put("bin/kro-bench", "near")
        self.assertEqual(self.bench("--help"), (7, "near<--help>", ""))
        result = self.copied("help", "bench")
        self.assertEqual((result.returncode, result.stdout), (7, b"near<--help>"))
