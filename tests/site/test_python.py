"""README's lines of Python run as they stand, on what they speak of."""

import os
import re
import subprocess
import unittest

from support import ROOT, Case

BEFORE = """
import numpy
frame = bytes(960 * 1280 * 3 // 2)
mosaic = numpy.full((80, 96), 9, numpy.uint8)
canvas = numpy.zeros((64, 80, 3), numpy.uint8)
"""
AFTER = """
assert picture.shape == (960, 1280, 3) and picture.dtype == numpy.uint8
assert (canvas == 9).all()
assert len(film) == 2
"""


class Lines(Case):
    def test_readme(self):
        blocks = re.findall(r"^((?: {4}.*\n)*? {4}import kro\n(?: {4}.*\n)*)", (ROOT / "README.md").read_text(), re.MULTILINE)
        self.assertEqual(len(blocks), 1)
        self.assertIn("kro.convert(", blocks[0])
        (self.work / "film_1280x960_BayerRG12p.raw").write_bytes(bytes(2 * 960 * 1280 * 3 // 2))
        program = BEFORE + re.sub(r"^ {4}", "", blocks[0], flags=re.MULTILINE) + AFTER
        result = subprocess.run([os.environ["KRO_PYTHON"], "-B", "-c", program], cwd=self.work, check=False,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                env={**os.environ, "PYTHONPATH": os.environ["KRO_PYTHON_PACKAGE"]})
        self.assertEqual(result.returncode, 0, result.stdout.decode())


if __name__ == "__main__":
    unittest.main()
