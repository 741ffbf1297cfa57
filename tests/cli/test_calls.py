"""Calls of the system that fail, and a library that refuses: said, nothing half written; what can be done otherwise is."""

import ctypes
import errno
import os
import stat
import subprocess
import time

from pictures import read_pnm, write_npy, write_tiff
from support import COMMAND, Case

FAILING_CALLS = os.environ["KRO_FAILING_CALLS"]
SIZE = ("-f", "rggb8", "-s", "8x6")
WITHOUT_END = 1 << 30


def without_override():
    """Not even root may write a file then that is not to be written."""
    drop_from_bounding_set, dac_override = 24, 1
    libc = ctypes.CDLL(None, use_errno=True)
    if os.geteuid() == 0 and libc.prctl(drop_from_bounding_set, dac_override, 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "prctl")


class Calls(Case):
    def setUp(self):
        super().setUp()
        self.frame = self.frame_file("f.raw", 8, 6, "BayerRG8")
        self.wanted = self.kro("convert", "f.raw", *SIZE, "-o", "-", "--to", "ppm")

    def failing(self, name, error, first=1, count=WITHOUT_END):
        """The environment of a command whose calls of this name fail, from the first on, so many times."""
        return dict(os.environ, LD_PRELOAD=FAILING_CALLS, KRO_FAIL=f"{name} {error} {first} {count}",
                    KRO_FAILED=self.path("failed"))

    def did_fail(self):
        """Whether one was made to fail since this was asked last."""
        failed = os.path.exists(self.path("failed"))
        if failed:
            os.unlink(self.path("failed"))
        return failed

    def refused(self, call, *arguments, says, data=None, error=errno.EIO, first=1):
        before = self.names()
        self.kro_fails(1, *arguments, data=data, says=[says, os.strerror(error)], env=self.failing(call, error, first))
        self.assertTrue(self.did_fail(), arguments)
        self.assertEqual(self.names(), before)

    def test_a_disk_that_cannot_be_read(self):
        for command in (("convert", "-o", "x.png"), ("info",)):
            self.refused("pread", *command, "f.raw", *SIZE, says="f.raw: cannot be read")
            self.refused("fstat", *command, "f.raw", *SIZE, says="f.raw: cannot be read", error=errno.EOVERFLOW)
            self.refused("read", *command, "-", *SIZE, says="standard input: cannot be read", data=self.frame)
        self.refused("pread", "guess", "f.raw", says="f.raw: cannot be read")

    def test_a_disk_that_fails_within_a_picture(self):
        self.write("p.tif", write_tiff([(8, 6, 1, list(self.frame), 8)], rows_per_strip=2))
        failed = 0
        for first in range(1, 40):
            result = self.call("convert", "p.tif", "-f", "rggb", "-q", "-o", "x.ppm", env=self.failing("pread", errno.EIO, first))
            if not self.did_fail():
                self.assertEqual((result.returncode, self.read("x.ppm")), (0, self.wanted))
                break
            failed += 1
            self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 1), result.stderr)
            self.assertIn(b"p.tif: cannot be read: Input/output error\n", result.stderr)
            self.assertEqual(self.names(), ["f.raw", "p.tif"])
        self.assertGreater(failed, 3)
        self.assertLess(failed, 39)

    def test_interrupted_calls_are_made_again(self):
        for call, source in (("pread", "f.raw"), ("read", "-"), ("write", "f.raw")):
            result = self.call("convert", source, *SIZE, "-q", "-o", "-", "--to", "ppm", env=self.failing(call, errno.EINTR, 1, 2),
                               data=self.frame)
            self.assertEqual((result.returncode, result.stdout), (0, self.wanted), result.stderr)
            self.assertTrue(self.did_fail(), call)

    def test_a_disk_that_cannot_be_written(self):
        for name in ("x.ppm", "new.ppm"):
            self.write("x.ppm", b"old")
            for call, error in (("write", errno.EDQUOT), ("write", errno.EIO), ("close", errno.EIO), ("renameat2", errno.EPERM)):
                self.refused(call, "convert", "f.raw", *SIZE, "-o", name, says=name + ": cannot be written", error=error)
            self.assertEqual((self.names(), self.read("x.ppm")), (["f.raw", "x.ppm"], b"old"))

    def test_a_file_system_that_cannot_rename_without_replacing(self):
        result = self.call("convert", "f.raw", *SIZE, "--no-clobber", "-q", "-o", "x.ppm",
                           env=self.failing("renameat2", errno.EINVAL))
        self.assertTrue(self.did_fail())
        self.assertEqual((result.returncode, self.read("x.ppm")), (0, self.wanted), result.stderr)
        self.assertEqual((self.names(), os.stat(self.path("x.ppm")).st_nlink), (["f.raw", "x.ppm"], 1))
        # Where replacing is allowed this error has another cause.
        self.refused("renameat2", "convert", "f.raw", *SIZE, "-o", "x.ppm", says="x.ppm: cannot be written",
                     error=errno.EINVAL)
        self.assertEqual(self.read("x.ppm"), self.wanted)

    def test_a_target_that_appears_meanwhile(self):
        """Checked at first, it is not there; the picture comes later."""
        for hindered in (None, self.failing("renameat2", errno.EINVAL)):
            process = subprocess.Popen([COMMAND, "convert", "-", *SIZE, "--no-clobber", "-o", "x.ppm"], cwd=self.folder,
                                       stdin=subprocess.PIPE, stderr=subprocess.PIPE, env=hindered)
            process.stdin.write(self.frame[:20])
            process.stdin.flush()
            time.sleep(0.3)
            self.write("x.ppm", b"somebody's")
            _, said = process.communicate(self.frame[20:], 60)
            self.did_fail()
            self.assertEqual((process.returncode, self.read("x.ppm")), (1, b"somebody's"))
            self.assertIn(b"x.ppm: ", said)
            self.assertEqual(self.names(), ["f.raw", "x.ppm"])
            os.unlink(self.path("x.ppm"))

    def test_targets_that_may_not_be_written(self):
        self.write("x.ppm", b"old")
        os.chmod(self.path("x.ppm"), 0o444)
        self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", "x.ppm", preexec_fn=without_override,
                       says="x.ppm: cannot be written: Permission denied")
        self.assertEqual((self.read("x.ppm"), stat.S_IMODE(os.stat(self.path("x.ppm")).st_mode)), (b"old", 0o444))
        os.mkdir(self.path("out"))
        os.mkdir(self.path("out/f.ppm"))
        self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", "out/", "--to", "ppm",
                       says="out/f.ppm: cannot be written: is a directory")
        # There is a terminal for whoever has one.
        self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", "/dev/tty", "--to", "ppm", start_new_session=True,
                       says="/dev/tty: cannot be opened: No such device or address")

    def test_input_that_may_not_be_read(self):
        with open(self.path("out"), "wb") as out:
            result = subprocess.run([COMMAND, "convert", "-", *SIZE, "-o", "x.png"], stdin=out, stderr=subprocess.PIPE,
                                    cwd=self.folder)
        self.assertEqual((result.returncode, result.stderr),
                         (1, b"kro: standard input: cannot be read: Bad file descriptor\n"))
        self.assertEqual(self.names(), ["f.raw", "out"])

    def test_threads_that_cannot_be_had(self):
        # The first one waits for interrupts.
        self.refused("pthread_create", "convert", "f.raw", *SIZE, "-o", "x.png", says="no thread can be started",
                     error=errno.EAGAIN)
        width, height = 800, 640
        self.frame_file("big.raw", width, height, "BayerRG8")
        self.frame_file("film.raw", 8, 6, "BayerRG8", frames=20)
        for source, size in (("big.raw", f"{width}x{height}"), ("film.raw", "8x6")):
            arguments = ("convert", source, "-f", "rggb8", "-s", size, "-q")
            wanted = self.kro(*arguments, "-j", "1", "-o", "-", "--to", "ppm")
            for first in (2, 3):
                folder = f"{source}-{first}"
                result = self.call(*arguments, "-j", "4", "-o", folder + "/", "--to", "ppm",
                                   env=self.failing("pthread_create", errno.EAGAIN, first))
                self.assertEqual((result.returncode, self.did_fail()), (0, True), (source, first, result.stderr))
                written = sorted(os.listdir(self.path(folder)))
                self.assertEqual(b"".join(self.read(f"{folder}/{name}") for name in written), wanted)

    def test_a_library_that_refuses(self):
        """What it is asked has been checked before; if it refuses all the same, that is said."""
        for status, says in ((-102, "input format not supported"), (-104, "size not supported"),
                             (-107, "output format not supported"), (-117, "out of memory"), (-99, "status -99")):
            for call in ("kroCreate", "kroBMPAdjust"):
                self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", "x.bmp", says=says, env=self.failing(call, status))
                self.assertTrue(self.did_fail(), call)
            self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", "x.ppm", says="f.raw: ",
                           env=self.failing("kroConvertView", status))
            self.assertTrue(self.did_fail())
        self.assertEqual(self.names(), ["f.raw"])
        # That memory runs out says nothing of the digests.
        for call in ("kroCreate", "kroConvertView"):
            result = self.kro_fails(1, "selftest", says="out of memory", env=self.failing(call, -117))
            self.assertNotIn(b"differs", result.stdout)
            result = self.call("selftest", env=self.failing(call, -99, 1, 1))
            self.assertEqual((result.returncode, b"differs: " in result.stdout), (1, True), result.stderr)

    def cut_while_read(self, name, data, *arguments):
        """The file ends early once the command has begun to write its pictures to a pipe that is full soon."""
        self.write(name, data)
        process = subprocess.Popen([COMMAND, "convert", name, *arguments, "-j", "1", "-q", "-o", "-", "--to", "ppm"],
                                   cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        picture = len(b"P6\n64 64\n255\n") + 64 * 64 * 3
        first = process.stdout.read(picture)
        os.truncate(self.path(name), len(data) // 2 - 100)
        rest, said = process.stdout.read(), process.stderr.read()
        process.stdout.close()
        process.stderr.close()
        process.wait(60)
        self.assertEqual(process.returncode, 1, said)
        self.assertEqual((read_pnm(first)[:2], len(rest) % picture), ((64, 64), 0))
        self.assertLess(len(rest) // picture, 199)
        return said.decode()

    def test_files_that_are_cut_while_they_are_read(self):
        frames = bytes(64 * 64 * 200)
        said = self.cut_while_read("film.raw", frames, "-f", "rggb8", "-s", "64x64")
        self.assertRegex(said, r"film\.raw: ended after \d+ of the 4096 bytes of frame \d+\n")
        said = self.cut_while_read("film.npy", write_npy((200, 64, 64), frames), "-f", "rggb")
        self.assertIn("film.npy: ", said)
