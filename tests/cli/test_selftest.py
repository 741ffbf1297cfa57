"""kro selftest: all right as built, on an emulated older processor too; a wrong byte is found and named."""

import os
import subprocess
import unittest

from support import COMMAND, Case

QEMU = os.environ.get("KRO_QEMU")
WRONG_PIXEL = os.environ.get("KRO_WRONG_PIXEL")


class Selftest(Case):
    def test_all_right(self):
        said = self.kro("selftest").decode().splitlines()
        self.assertRegex(said[0], r"^instruction sets: scalar(, \w+)* \(the last is in use\)$")
        self.assertRegex(said[1], r"^digests: [1-9][0-9]{2,}$")
        self.assertEqual(said[2:], ["all right"])

    def test_takes_no_arguments(self):
        result = self.call("selftest", "frame.raw")
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        self.assertIn(b"frame.raw", result.stderr)

    @unittest.skipUnless(QEMU, "no emulator for this build")
    def test_older_processor(self):
        result = subprocess.run([QEMU, "-cpu", "core2duo", COMMAND, "selftest"], stdout=subprocess.PIPE, timeout=120)
        self.assertEqual(result.returncode, 0)
        self.assertIn(b"instruction sets: scalar, ssse3 (", result.stdout)
        self.assertTrue(result.stdout.endswith(b"\nall right\n"), result.stdout)

    @unittest.skipUnless(WRONG_PIXEL, "nothing can be preloaded into this build")
    def test_wrong_byte_is_named(self):
        result = subprocess.run([COMMAND, "selftest"], env=dict(os.environ, LD_PRELOAD=WRONG_PIXEL),
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60)
        self.assertEqual(result.returncode, 1)
        named = [line for line in result.stdout.decode().splitlines() if line.startswith("differs: ")]
        self.assertEqual(named, [f"differs: view {layout} bilinear {phase} planes16"
                                 for layout in ("bytes", "words", "GigE", "PFNC", "CSI-2")
                                 for phase in ("RGGB", "GRBG", "GBRG", "BGGR")])
        self.assertNotIn(b"all right", result.stdout)
        self.assertRegex(result.stderr, rb"^kro: .*20 of [0-9]+ digests differ.*\n$")
