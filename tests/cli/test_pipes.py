"""Standard input and output, pipes that end early and readers that go away."""

import os
import signal
import subprocess
import threading

from pictures import write_ppm
from support import COMMAND, Case, demosaic

SIZE = ("-f", "rggb8", "-s", "8x6")


class Pipes(Case):
    def setUp(self):
        super().setUp()
        self.film = self.frame_file("film.raw", 8, 6, "BayerRG8", frames=4)

    def test_through_both_pipes(self):
        for kind in ("png", "ppm", "pgm", "bmp", "tif", "raw"):
            self.kro("convert", "film.raw", *SIZE, "--frame", "1", "-o", "x." + kind)
            piped = self.kro("convert", "-", *SIZE, "-o", "-", "--to", kind, data=self.film[:48])
            self.assertEqual(piped, self.read("x." + kind), kind)

    def test_all_frames_of_a_pipe(self):
        wanted = b"".join(demosaic(self.film[i:i + 48], 8, 6, 0x01080009, "edge", "RGB8") for i in range(0, 192, 48))
        whole = ("-O", "RGB8", "-o", "-", "--to", "raw")
        self.assertEqual(self.kro("convert", "-", *SIZE, *whole, data=self.film), wanted)
        self.assertEqual(self.kro("convert", "film.raw", *SIZE, *whole), wanted)
        self.assertEqual(self.kro("convert", "-", *SIZE, "--frames", "2-3", *whole, data=self.film), wanted[144:432])
        self.assertEqual(self.kro("convert", "film.raw", "film.raw", *SIZE, *whole), wanted * 2)

    def test_numbers_of_piped_frames(self):
        self.kro("convert", "-", *SIZE, "-o", "x.ppm", data=self.film[:48])
        self.kro("convert", "-", *SIZE, "-o", "y.ppm", data=self.film)
        self.kro("convert", "-", *SIZE, "-o", "z/", "--frame", "2", data=self.film)
        self.assertEqual(self.names(), ["film.raw", "x.ppm"] + [f"y-00000{n}.ppm" for n in (1, 2, 3, 4)] + ["z"])
        self.assertEqual(self.read("x.ppm"), self.read("y-000001.ppm"))
        self.assertEqual(os.listdir(self.path("z")), ["stdin.png"])

    def test_a_named_pipe_is_a_pipe(self):
        os.mkfifo(self.path("fifo_8x6_BayerRG8"))
        feeder = threading.Thread(target=lambda: self.write("fifo_8x6_BayerRG8", self.film))
        feeder.start()
        picture = self.kro("convert", "fifo_8x6_BayerRG8", "-o", "-", "--to", "ppm")
        feeder.join()
        self.assertEqual(picture, self.kro("convert", "film.raw", *SIZE, "-o", "-", "--to", "ppm"))

    def test_mosaic_into_convert(self):
        self.write("p.ppm", write_ppm(8, 6, [60, 70, 80] * 48))
        frame = self.kro("mosaic", "-", "-f", "gbrg12p", "-o", "-", data=self.read("p.ppm"))
        back = self.kro("convert", "-", "-f", "gbrg12p", "-s", "8x6", "-o", "-", "--to", "ppm", data=frame)
        self.assertEqual(back[-144:], bytes([60, 70, 80] * 48))

    def test_each_picture_leaves_at_once(self):
        process = subprocess.Popen([COMMAND, "convert", "-", *SIZE, "-o", "-", "--to", "raw"], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE)
        for i in range(3):
            process.stdin.write(self.film[:48])
            process.stdin.flush()
            self.assertEqual(len(process.stdout.read(144)), 144)
        process.stdin.close()
        self.assertEqual((process.stdout.read(), process.wait(60)), (b"", 0))
        process.stdout.close()

    def test_truncated_and_empty_pipes(self):
        self.kro_fails(1, "convert", "-", *SIZE, "-o", "x.png", data=b"", says=["standard input", "empty", "48"])
        self.kro_fails(1, "convert", "-", *SIZE, "-o", "x.png", data=self.film[:47],
                       says=["ended after 47 bytes of frame 1", "48"])
        self.kro_fails(1, "convert", "-", *SIZE, "--skip", "500", "-o", "x.png", data=self.film, says="--skip")
        self.kro_fails(1, "convert", "-", *SIZE, "--frame", "5", "-o", "x.png", data=self.film, says="no frame 5")
        self.kro_fails(1, "convert", "-", *SIZE, "--frames", "7-9", "-o", "x.png", data=self.film, says="no frame 7")
        result = self.kro_fails(1, "convert", "-", *SIZE, "--frames", "3-9", "-o", "-", "--to", "raw", data=self.film,
                                says=["no frame 5", "4 frames"])
        self.assertEqual(len(result.stdout), 2 * 144)
        self.kro_fails(2, "convert", "-", "-s", "8x6", "-o", "x.png", data=self.film, says="--format")
        self.assertEqual(self.names(), ["film.raw"])

    def test_whole_frames_before_the_cut_are_kept(self):
        result = self.kro_fails(1, "convert", "-", *SIZE, "-o", "-", "--to", "raw", data=self.film[:100])
        self.assertEqual(len(result.stdout), 288)
        self.kro_fails(1, "convert", "-", *SIZE, "-o", "x.ppm", data=self.film[:100],
                       says=["ended after 4 bytes of frame 3", "8x6 BayerRG8 frame takes 48", "2 frames came whole"])
        self.kro_fails(1, "convert", "-", *SIZE, "-o", "y.ppm", data=self.film[:95], says="after 47 bytes of frame 2")
        self.kro("convert", "film.raw", *SIZE, "--frames", "1-2", "-o", "{frame}.ppm")
        self.assertEqual(self.names(), ["0001.ppm", "0002.ppm", "film.raw", "x-000001.ppm", "x-000002.ppm", "y.ppm"])
        self.assertEqual(self.read("x-000001.ppm"), self.read("0001.ppm"))
        self.assertEqual(self.read("y.ppm"), self.read("0001.ppm"))
        self.assertEqual(self.read("x-000002.ppm"), self.read("0002.ppm"))
        result = self.kro_fails(1, "info", "-", *SIZE, data=self.film[:100], says="ended after 4 bytes of frame 3")
        self.assertEqual(result.stdout.count(b"\nframe "), 2)

    def reader_goes_away(self, *arguments, handler=signal.SIG_DFL):
        process = subprocess.Popen([COMMAND, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   cwd=self.folder, preexec_fn=lambda: signal.signal(signal.SIGPIPE, handler))
        process.stdout.read(10)
        process.stdout.close()
        said = process.stderr.read().decode()
        process.stderr.close()
        return process.wait(60), said

    def test_a_reader_that_goes_away(self):
        self.write("long.raw", self.film * 20000)
        for arguments in (("convert", "long.raw", *SIZE, "-o", "-", "--to", "ppm"),
                          ("info", "long.raw", *SIZE, "--each")):
            self.assertEqual(self.reader_goes_away(*arguments), (-signal.SIGPIPE, ""))
            self.assertEqual(self.reader_goes_away(*arguments, handler=signal.SIG_IGN),
                             (1, "kro: standard output: cannot be written: Broken pipe\n"))

    def test_a_full_device(self):
        with open("/dev/full", "wb") as full:
            for arguments in (("convert", "film.raw", *SIZE, "-o", "-", "--to", "ppm"), ("formats",),
                              ("info", "film.raw", *SIZE), ("--help",)):
                result = subprocess.run([COMMAND, *arguments], stdout=full, stderr=subprocess.PIPE, cwd=self.folder)
                self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 1), (arguments, result.stderr))
        self.kro_fails(1, "convert", "film.raw", *SIZE, "--frame", "1", "-o", "/dev/full", "--to", "png",
                       says="No space left")
