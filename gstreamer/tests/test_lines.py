"""README's lines of gst-launch-1.0 and gst-inspect-1.0, as they stand: they end well, and their files hold what they must."""

import os
import re
import subprocess
import sys
import unittest

SOURCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
sys.path.insert(0, os.path.join(SOURCE, "tests", "cli"))
from folder import FolderCase  # noqa: E402
from pictures import read_png  # noqa: E402

COMMAND = os.environ["KRO_COMMAND"]
SCENE = os.path.join(SOURCE, "docs", "images", "scene.png")
WIDTH, HEIGHT = 400, 300
# Stand-ins for what needs a camera and a screen.
HARDWARE = {"v4l2src": "videotestsrc num-buffers=9", "autovideosink": "fakesink"}
BARS = [(255, 255, 255), (255, 255, 0), (0, 255, 255), (0, 255, 0), (255, 0, 255), (255, 0, 0), (0, 0, 255)]


def lines_of_readme():
    with open(os.path.join(SOURCE, "README.md"), encoding="utf-8") as file:
        return re.findall(r"^ {4}(gst-(?:launch|inspect)-1\.0 .*)$", file.read(), re.MULTILINE)


class Lines(FolderCase):
    def kro(self, *arguments):
        subprocess.run([COMMAND, *arguments, "-q"], check=True, cwd=self.folder)

    def run_line(self, line, debug=""):
        for device, stand_in in HARDWARE.items():
            line = line.replace(device, stand_in)
        return subprocess.run(line.split(), check=True, cwd=self.folder, capture_output=True, text=True, timeout=120,
                              env={**os.environ, "GST_DEBUG": debug, "GST_DEBUG_NO_COLOR": "1"})

    def line_with(self, *words):
        found = [line for line in lines_of_readme() if all(word in line for word in words)]
        self.assertEqual(1, len(found), f"lines with {words}")
        return found[0]

    def scene(self, name):
        """The frame that README's lines read, as README says to make it."""
        with open(os.path.join(SOURCE, "README.md"), encoding="utf-8") as file:
            line, = re.findall(r"`kro (mosaic docs/images/scene\.png [^`]*)`", file.read())
        self.kro(*line.replace("docs/images/scene.png", SCENE).split())
        self.assertTrue(os.path.exists(self.path(name)), name)

    def pixels(self, name):
        with open(self.path(name), "rb") as file:
            return read_png(file.read())

    def assert_picture(self, name, frame, form, algorithm):
        """Pixel for pixel what the command makes of the frame."""
        self.kro("convert", frame, "-f", form, "-s", f"{WIDTH}x{HEIGHT}", "-a", algorithm, "-O", "RGB8", "--to", "raw", "-o",
                 "expected")
        with open(self.path("expected"), "rb") as file:
            expected = file.read()
        self.assertEqual((WIDTH, HEIGHT, 3), self.pixels(name)[:3])
        self.assertEqual(expected, bytes(self.pixels(name)[3]))

    def test_every_line_is_tried_here(self):
        self.assertEqual(6, len(lines_of_readme()))

    def test_bars(self):
        self.run_line(self.line_with("bars.png"))
        width, height, channels, samples = self.pixels("bars.png")
        self.assertEqual((1280, 720, 3), (width, height, channels))
        for i, colour in enumerate(BARS):
            at = (100 * width + width * (2 * i + 1) // 14) * 3
            self.assertEqual(colour, tuple(samples[at:at + 3]), f"bar {i}")

    def test_a_frame_of_a_file(self):
        self.scene("scene_400x300_BayerRG12p.raw")
        self.run_line(self.line_with("scene.png"))
        self.assert_picture("scene.png", "scene_400x300_BayerRG12p.raw", "BayerRG12p", "edge")

    def test_many_files(self):
        for i in range(3):
            self.kro("mosaic", SCENE, "-f", "SRGGB10P", "-o", "frame.raw")
            with open(self.path("frame.raw"), "rb") as file:
                frame = bytearray(file.read())
            frame[1000 * i:1000 * i + 500] = bytes(500)
            with open(self.path(f"frame_{i:04}.raw"), "wb") as file:
                file.write(frame)
        self.run_line(self.line_with("multifilesrc"))
        for i in range(3):
            self.assert_picture(f"frame_{i:04}.png", f"frame_{i:04}.raw", "SRGGB10P", "bilinear")

    def test_sixteen_bits(self):
        self.scene("scene_400x300_BayerRG12p.raw")
        self.run_line(self.line_with("RGBA64_LE"))
        self.kro("convert", "scene_400x300_BayerRG12p.raw", "-f", "BayerRG12p", "-s", f"{WIDTH}x{HEIGHT}", "--depth", "16",
                 "--scale", "--opaque", "-O", "RGBa16", "--to", "raw", "-o", "expected")
        with open(self.path("expected"), "rb") as expected, open(self.path("scene.rgba64"), "rb") as made:
            self.assertEqual(expected.read(), made.read())

    def test_a_camera(self):
        said = self.run_line(self.line_with("v4l2src"), "krodemosaic:4").stderr
        self.assertRegex(said, r"krodemosaic.*format=\(string\)rggb.* becomes .*format=\(string\)BGRx")

    def test_inspection(self):
        said = self.run_line(self.line_with("gst-inspect-1.0")).stdout
        for part in ("Filter/Converter/Video", "10p, 12p, 14p as in PFNC", "(string)bggr16be", "(string)pRCC", "RGBA64_LE",
                     "algorithm", "nearest", 'Default: 2, "edge"', "(3): fine", "n-threads", "0 = one a processor", "PLAYING state",
                     "MIT/X11"):
            self.assertIn(part, said)
        self.assertIn("krodemosaic: Demosaicing", self.run_line("gst-inspect-1.0 kro").stdout)

    def test_a_frame_of_another_size_is_an_error(self):
        self.scene("scene_400x300_BayerRG12p.raw")
        # Of an error before a sink has its first buffer gst-launch-1.0 sometimes makes an endless wait: no sink waits here.
        line = self.line_with("scene.png").replace("blocksize=180000", "blocksize=179999") + " async=false"
        with self.assertRaises(subprocess.CalledProcessError) as failure:
            self.run_line(line)
        self.assertIn("a frame of 179999 bytes, expected 180000 for 400 x 300 rggb12p", failure.exception.stderr)


if __name__ == "__main__":
    unittest.main()
