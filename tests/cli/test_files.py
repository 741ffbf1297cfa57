"""Files appear whole or not at all, and nothing that was there is lost."""

import os
import pty
import resource
import signal
import stat
import subprocess
import time

from pictures import read_pnm, write_pgm, write_ppm
from support import COMMAND, Case, read_terminal

SIZE = ("-f", "rggb8", "-s", "8x6")


def default_signals():
    """Undoes what a caller such as nohup has told its children to ignore."""
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_DFL)


class Files(Case):
    def setUp(self):
        super().setUp()
        self.frame = self.frame_file("f.raw", 8, 6, "BayerRG8")

    def test_replaces_whole_files_only(self):
        self.write("x.png", b"old")
        self.kro_fails(1, "convert", "f.raw", *SIZE, "--no-clobber", "-o", "x.png", says=["x.png", "--no-clobber"])
        self.write("p.ppm", write_ppm(4, 4, [0] * 48))
        self.kro_fails(1, "mosaic", "p.ppm", "-f", "Mono8", "--no-clobber", "-o", "x.png", says="--no-clobber")
        self.kro_fails(1, "convert", "f.raw", "-f", "rggb8", "-s", "9x9", "-o", "x.png")
        self.kro_fails(1, "convert", "-", *SIZE, "-o", "x.png", data=b"short")
        self.assertEqual(self.read("x.png"), b"old")
        self.kro("convert", "f.raw", *SIZE, "-o", "x.png")
        self.assertEqual(self.read("x.png")[:4], b"\x89PNG")
        self.kro("convert", "f.raw", *SIZE, "--no-clobber", "-o", "new.png")
        self.assertEqual(self.names(), ["f.raw", "new.png", "p.ppm", "x.png"])

    def test_a_disk_that_is_full(self):
        def little_room():
            resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))

        self.write("x.ppm", b"old")
        self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", "x.ppm", preexec_fn=little_room,
                       says=["x.ppm", "too large"])
        self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", "y.ppm", preexec_fn=little_room, says="y.ppm")
        self.assertEqual((self.names(), self.read("x.ppm")), (["f.raw", "x.ppm"], b"old"))

    def test_the_input_is_never_the_output(self):
        os.symlink("f.raw", self.path("soft.raw"))
        os.link(self.path("f.raw"), self.path("hard.raw"))
        for name in ("f.raw", "./f.raw", "soft.raw", "hard.raw"):
            self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", name, says="never overwritten")
            with open(self.path("f.raw"), "rb") as source:
                result = subprocess.run([COMMAND, "convert", "-", *SIZE, "-o", name], stdin=source, cwd=self.folder,
                                        stderr=subprocess.PIPE)
            self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 1))
        self.write("p.pgm", write_pgm(4, 4, [0] * 16))
        self.kro_fails(1, "mosaic", "p.pgm", "-f", "Mono8", "-o", "p.pgm", says="never overwritten")
        self.assertEqual(self.read("f.raw"), self.frame)

    def test_another_input_is_no_output_either(self):
        second = self.frame_file("g.raw", 8, 6, "BayerRG8", seed=2)
        os.mkdir(self.path("d"))
        os.symlink("../g.raw", self.path("d/f.raw"))
        result = self.call("convert", "f.raw", "g.raw", *SIZE, "-o", "d/", "--to", "raw")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"d/f.raw: is an input file itself", result.stderr)
        self.assertEqual(self.read("g.raw"), second)

    def test_places_that_cannot_be_written(self):
        os.mkdir(self.path("folder.png"))
        self.write("file", b"")
        self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", "no/x.png", says=["no/x.png", "no directory no"])
        self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", "file/x/", says="file/x/")
        self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", "/proc/x.png", says="/proc/x.png")
        self.assertEqual(self.names(), ["f.raw", "file", "folder.png"])

    def test_links_and_modes_of_targets(self):
        self.write("real.png", b"old")
        os.chmod(self.path("real.png"), 0o640)
        os.symlink("real.png", self.path("link.png"))
        self.kro("convert", "f.raw", *SIZE, "-o", "link.png")
        self.assertTrue(os.path.islink(self.path("link.png")))
        self.assertEqual(self.read("real.png")[:4], b"\x89PNG")
        self.assertEqual(stat.S_IMODE(os.stat(self.path("real.png")).st_mode), 0o640)
        self.kro("convert", "f.raw", *SIZE, "-o", "/dev/null", "--to", "png")

    def test_links_to_what_is_not_there_yet(self):
        os.mkdir(self.path("d"))
        os.symlink("d/new.ppm", self.path("a.ppm"))
        os.symlink("a.ppm", self.path("b.ppm"))
        self.kro("convert", "f.raw", *SIZE, "-o", "b.ppm", "--no-clobber")
        self.assertTrue(os.path.islink(self.path("a.ppm")) and os.path.islink(self.path("b.ppm")))
        self.assertEqual(read_pnm(self.read("d/new.ppm"))[:2], (8, 6))
        os.symlink("no/x.ppm", self.path("c.ppm"))
        self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", "c.ppm", says=["c.ppm", "no directory no"])
        os.symlink("e.ppm", self.path("e.ppm"))
        self.kro_fails(1, "convert", "f.raw", *SIZE, "-o", "e.ppm", says=["e.ppm", "symbolic links"])
        self.assertEqual(self.names(), ["a.ppm", "b.ppm", "c.ppm", "d", "e.ppm", "f.raw"])

    def test_a_full_disk_is_said_once(self):
        self.frame_file("film.raw", 8, 6, "BayerRG8", frames=40)
        for n in range(1, 41):
            os.symlink("/dev/full" if n > 1 else "one.ppm", self.path(f"x-{n:04}.ppm"))
        for jobs in ("1", "5"):
            self.kro_fails(1, "convert", "film.raw", *SIZE, "-o", "x.ppm", "-j", jobs, says=["ppm", "No space left"])
        self.assertEqual(read_pnm(self.read("one.ppm"))[:2], (8, 6))

    def test_interrupts(self):
        width, height = 640, 480
        with open(self.path("long.raw"), "wb") as file:
            file.truncate(width * height * 3000)
        for number, wait in ((signal.SIGINT, 0.15), (signal.SIGTERM, 0.3), (signal.SIGHUP, 0.45)):
            os.mkdir(self.path(number.name))
            arguments = ("convert", "long.raw", "-f", "rggb8", "-s", f"{width}x{height}", "-o", number.name + "/",
                         "--to", "ppm", "--many")
            process = subprocess.Popen([COMMAND, *arguments], cwd=self.folder, stderr=subprocess.DEVNULL,
                                       preexec_fn=default_signals)
            time.sleep(wait)
            process.send_signal(number)
            self.assertEqual(process.wait(60), -number)
            written = os.listdir(self.path(number.name))
            self.assertLess(len(written), 3000)
            for name in written:
                self.assertRegex(name, r"^long-\d{4}\.ppm$")
                self.assertEqual(read_pnm(self.read(f"{number.name}/{name}"))[:3], (width, height, 3))

    def test_interrupts_that_the_caller_ignores(self):
        """As under nohup: the command goes on."""
        process = subprocess.Popen([COMMAND, "convert", "-", *SIZE, "-q", "-o", "x.ppm"], cwd=self.folder, stdin=subprocess.PIPE,
                                   preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        process.stdin.write(self.frame[:20])
        process.stdin.flush()
        time.sleep(0.2)
        process.send_signal(signal.SIGHUP)
        process.communicate(self.frame[20:], 60)
        self.assertEqual((process.returncode, read_pnm(self.read("x.ppm"))[:2]), (0, (8, 6)))

    def test_an_interrupt_in_the_middle_of_a_pipe(self):
        self.write("x.ppm", b"old")
        process = subprocess.Popen([COMMAND, "convert", "-", *SIZE, "-o", "x.ppm"], cwd=self.folder,
                                   stdin=subprocess.PIPE, preexec_fn=default_signals)
        process.stdin.write(self.frame[:20])
        process.stdin.flush()
        time.sleep(0.2)
        process.terminate()
        self.assertEqual(process.wait(60), -signal.SIGTERM)
        process.stdin.close()
        self.assertEqual((self.names(), self.read("x.ppm")), (["f.raw", "x.ppm"], b"old"))


class Terminals(Case):
    def test_progress_on_a_terminal_only(self):
        self.frame_file("f.raw", 8, 6, "BayerRG8", frames=9)
        arguments = ("convert", "f.raw", *SIZE, "-o", "x.ppm")
        self.assertEqual(self.call(*arguments).stderr, b"kro: 9 pictures written\n")
        for more, shown in (((), True), (("-q",), False)):
            near, far = pty.openpty()
            subprocess.run([COMMAND, *arguments, *more], stderr=far, cwd=self.folder, check=True)
            os.close(far)
            said = read_terminal(near)
            self.assertEqual(b"] 9/9" in said, shown, said)

    def test_no_pictures_on_a_screen(self):
        self.frame_file("f.raw", 8, 6, "BayerRG8")
        self.write("p.ppm", write_ppm(4, 4, [0] * 48))
        near, far = pty.openpty()
        for arguments in (("convert", "f.raw", *SIZE, "-o", "-", "--to", "png"),
                          ("mosaic", "p.ppm", "-f", "Mono8", "-o", "-")):
            result = subprocess.run([COMMAND, *arguments], stdout=far, stderr=subprocess.PIPE, cwd=self.folder)
            self.assertEqual(result.returncode, 2)
            self.assertIn(b"terminal", result.stderr)
        result = subprocess.run([COMMAND, "convert", "-", *SIZE, "-o", "x.png"], stdin=far, stderr=subprocess.PIPE,
                                cwd=self.folder)
        self.assertEqual(result.returncode, 2)
        os.close(far)
        os.close(near)
