"""Out of memory at every single allocation: the command succeeds or says so, and leaves no half-written file."""

import os
import subprocess
import tempfile
from concurrent.futures import ThreadPoolExecutor

from pictures import write_npy, write_png, write_tiff
from support import COMMAND, Case

FAILING_MALLOC = os.environ["KRO_FAILING_MALLOC"]


class Memory(Case):
    def setUp(self):
        super().setUp()
        self.frame_file("f.raw", 8, 6, "BayerRG8", frames=2)
        self.write("p.png", write_png(8, 6, 3, [7] * 144))

    def start(self, arguments, folder, **variables):
        environment = dict(os.environ, LD_PRELOAD=FAILING_MALLOC, **variables)
        return subprocess.run([COMMAND, *arguments], cwd=folder, env=environment, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=60)

    def outputs(self, folder):
        written = {}
        for name in os.listdir(folder):
            with open(os.path.join(folder, name), "rb") as file:
                written[name] = file.read()
        return written

    def allocations(self, arguments):
        with tempfile.TemporaryDirectory() as folder:
            result = self.start(arguments, folder, KRO_COUNT=self.path("count"))
            self.assertEqual(result.returncode, 0, result.stderr)
            return int(self.read("count")), self.outputs(folder)

    def one_failure(self, arguments, number, for_good, whole):
        variables = {"KRO_FAIL_AT": str(number), **({"KRO_FAIL_ON": "1"} if for_good else {})}
        with tempfile.TemporaryDirectory() as folder:
            result = self.start(arguments, folder, **variables)
            written = self.outputs(folder)
        case = (arguments, variables, result.stderr)
        self.assertIn(result.returncode, (0, 1), case)
        for name, data in written.items():
            self.assertEqual(data, whole.get(name), (name, *case))
        if result.returncode == 0:
            self.assertEqual(written, whole, case)
        else:
            self.assertRegex(result.stderr, rb"(?m)^kro: ", case)
        return result.returncode

    def every_failure(self, *arguments, last=None):
        """Each allocation in turn, once and for good; or the last so many."""
        count, whole = self.allocations(arguments)
        self.assertTrue(whole)
        first = 1 if last is None else count - last
        numbers = [(n, for_good) for n in range(first, count + 1) for for_good in (False, True)]
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
        self.frame_file("big.raw", 800, 400, "BayerGR12p")
        self.every_failure("convert", self.path("big.raw"), "-f", "BayerGR12p", "-s", "800x400", "--bits", "11", "-q",
                           "-j", "3", "-o", "x.ppm", last=100)

    def test_mosaic(self):
        self.every_failure("mosaic", self.path("p.png"), "-f", "BayerRG12Packed", "-q", "-o", "x.raw",
                           last=150)

    def test_containers(self):
        page = (8, 6, 1, [7] * 48, 8)
        for name, data in (("m.tif", write_tiff([page])), ("m.png", write_png(8, 6, 1, [7] * 48)),
                           ("m.npy", write_npy((6, 8), [7] * 48))):
            self.write(name, data)
            self.every_failure("convert", self.path(name), "-f", "rggb", "-q", "-o", "x.ppm", last=150)
