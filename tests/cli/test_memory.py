"""Out of memory at every single allocation: the command succeeds or says so, and leaves no half-written file."""

import os
import subprocess
import tempfile
from concurrent.futures import ThreadPoolExecutor

from pictures import write_npy, write_png, write_tiff
from support import COMMAND, Case

FAILING_MALLOC = os.environ["KRO_FAILING_MALLOC"]
SPREAD = 1 if "KRO_TEST_EXHAUSTIVE" in os.environ else 3


class Memory(Case):
    def setUp(self):
        super().setUp()
        self.frame_file("f.raw", 8, 6, "BayerRG8", frames=2)
        self.write("p.png", write_png(8, 6, 3, [7] * 144))

    def start(self, arguments, folder, **variables):
        environment = dict(os.environ, LD_PRELOAD=FAILING_MALLOC, **variables)
        return subprocess.run([COMMAND, *arguments], cwd=folder, env=environment, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=60)

    def outputs(self, folder, result):
        """The files that are there, and what was printed."""
        written = {None: result.stdout} if result.returncode == 0 else {}
        for name in os.listdir(folder):
            with open(os.path.join(folder, name), "rb") as file:
                written[name] = file.read()
        return written

    def allocations(self, arguments):
        with tempfile.TemporaryDirectory() as folder:
            result = self.start(arguments, folder, KRO_COUNT=self.path("count"))
            self.assertEqual(result.returncode, 0, result.stderr)
            return int(self.read("count")), self.outputs(folder, result)

    def one_failure(self, arguments, number, for_good, whole):
        variables = {"KRO_FAIL_AT": str(number), **({"KRO_FAIL_ON": "1"} if for_good else {})}
        with tempfile.TemporaryDirectory() as folder:
            result = self.start(arguments, folder, **variables)
            written = self.outputs(folder, result)
        case = (arguments, variables, result.stderr)
        self.assertIn(result.returncode, (0, 1), case)
        for name, data in written.items():
            self.assertEqual(data, whole.get(name), (name, *case))
        if result.returncode == 0:
            self.assertEqual(written, whole, case)
        else:
            self.assertRegex(result.stderr, rb"(?m)^kro: ", case)
        return result.returncode

    def every_failure(self, *arguments, last=None, step=1):
        """Each allocation in turn, once and for good; or each `step`-th of the last so many. Of them all every third where
        the run is not an exhaustive one."""
        count, whole = self.allocations(arguments)
        self.assertTrue(any(whole.values()))
        first = 1 if last is None else count - last
        numbers = [(n, for_good) for n in range(first, count + 1, step * SPREAD) for for_good in (False, True)]
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            codes = list(pool.map(lambda number: self.one_failure(arguments, *number, whole), numbers))
        # Without this the test would pass where nothing was made to fail.
        self.assertGreater(codes.count(1), len(codes) // 4)

    def test_convert(self):
        source = (self.path("f.raw"), "-f", "rggb8", "-s", "8x6", "-q", "-j", "2")
        self.every_failure("convert", *source, "-o", "x.png")
        for kind in ("tif", "bmp", "jpg"):
            self.every_failure("convert", *source, "-o", "x." + kind, last=150)

    def test_a_large_frame_on_several_threads(self):
        self.frame_file("big.raw", 800, 640, "BayerGR12p")
        self.every_failure("convert", self.path("big.raw"), "-f", "BayerGR12p", "-s", "800x640", "--bits", "11", "-q",
                           "-j", "3", "-o", "x.ppm", last=100)

    def test_views(self):
        """Padded rows, CSI-2, big-endian words; deep, planar and several pictures."""
        self.frame_file("w.raw", 12, 6, "BayerRG12")
        self.frame_file("p.raw", 8, 6, "SRGGB10P", frames=2)
        self.every_failure("convert", self.path("w.raw"), "-f", "BayerRG12", "-s", "8x6", "--stride", "24", "--big-endian",
                           "--depth", "16", "-O", "RGBa16", "-q", "-o", "x.tif", last=150)
        self.every_failure("convert", self.path("p.raw"), "-f", "SRGGB10P", "-s", "8x6", "--depth", "16", "-q", "-o",
                           "x.png", last=150)
        self.every_failure("convert", self.path("p.raw"), "-f", "SRGGB10P", "-s", "8x6", "-O", "RGB8Planar", "-q", "-o",
                           "x.raw", last=100)

    def test_info(self):
        self.every_failure("info", self.path("f.raw"), "-f", "rggb8", "-s", "8x6", last=150)
        self.every_failure("formats", last=150)

    def test_show(self):
        self.frame_file("film.raw", 40, 30, "BayerRG8", frames=3)
        for graphics in ("kitty", "sixel", "blocks"):
            self.every_failure("show", self.path("film.raw"), "-f", "rggb8", "-s", "40x30", "--in", graphics, "--columns",
                               "40", "-q", last=600 if graphics == "sixel" else 150)

    def test_guess(self):
        samples = [100 + 60 * ((x // 7 + y // 5) % 2) + 40 * (x % 2 + y % 2 == 0) + x * y % 5
                   for y in range(48) for x in range(64)]
        self.write("unknown.bin", bytes(samples))
        self.every_failure("guess", self.path("unknown.bin"), "--sheet", "sheet.png", last=840, step=7)

    def test_mosaic(self):
        for output in ("x.raw", "x.pgm", "x.png", "x.tif"):
            self.every_failure("mosaic", self.path("p.png"), "-f", "BayerRG12Packed" if output == "x.raw" else "rggb",
                               "-q", "-o", output, last=120)

    def test_containers(self):
        page = (8, 6, 1, [7] * 48, 8)
        for name, data in (("m.tif", write_tiff([page])), ("m.png", write_png(8, 6, 1, [7] * 48)),
                           ("m.npy", write_npy((6, 8), [7] * 48))):
            self.write(name, data)
            self.every_failure("convert", self.path(name), "-f", "rggb", "-q", "-o", "x.ppm", last=150)
