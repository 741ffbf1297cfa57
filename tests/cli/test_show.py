"""kro show: pictures on terminals of several kinds, contact sheets, and the desktop's viewer."""

import fcntl
import os
import pty
import select
import struct
import subprocess
import termios
import time

from pictures import read_blocks, read_kitty, read_png, read_pnm, read_sixel
from support import COMMAND, Case, random_samples, read_terminal

FILM = ("film.raw", "-f", "rggb8", "-s", "40x30")


class Show(Case):
    def setUp(self):
        super().setUp()
        self.frames = [random_samples(1200, 8, seed) for seed in range(5)]
        self.write("film.raw", bytes(sum(self.frames, [])))

    def shown(self, graphics, *arguments, data=None, columns="40"):
        return self.call("show", *arguments, "--in", graphics, "--columns", columns, data=data,
                         env=dict(os.environ, COLORTERM="truecolor"))

    def converted(self, *arguments):
        return read_pnm(self.kro("convert", *arguments, "-o", "-", "--to", "ppm"))

    def test_one_frame_as_it_is(self):
        """A frame that fits is shown pixel by pixel; plain, it is what kro convert gives."""
        wanted = self.converted(*FILM, "--frame", "2")
        result = self.shown("kitty", *FILM, "--frame", "2", "--plain")
        pictures, text = read_kitty(result.stdout)
        self.assertEqual((result.returncode, pictures, text), (0, [wanted], b"\nfilm.raw\n"), result.stderr)
        picture, text = read_blocks(self.shown("blocks", *FILM, "--frame", "2", "--plain").stdout)
        self.assertEqual((picture, text), (wanted, b"film.raw\n"))
        pictures, text = read_sixel(self.shown("sixel", *FILM, "--frame", "2", "--plain").stdout)
        self.assertEqual((pictures[0][:3], text), (wanted[:3], b"\nfilm.raw\n"))

    def test_sixel_colours(self):
        self.write("flat.raw", bytes([100] * 1200))
        pictures, _ = read_sixel(self.shown("sixel", "flat.raw", *FILM[1:], "--plain").stdout)
        self.assertEqual(len(pictures), 1)
        self.assertLess(max(abs(v - 100) for v in pictures[0][3]), 4)

    def test_made_smaller_by_means(self):
        width, height = 160, 100
        self.frame_file("big.raw", width, height, "BayerRG8")
        arguments = ("big.raw", "-f", "rggb8", "-s", "160x100")
        pixels = self.converted(*arguments)[3]
        wanted = []
        for y in range(0, height, 2):
            for x in range(0, width, 2):
                for c in range(3):
                    around = [pixels[3 * ((y + j) * width + x + i) + c] for j in (0, 1) for i in (0, 1)]
                    wanted.append(sum(around) / 4)
        picture = read_kitty(self.shown("kitty", *arguments, "--plain", columns="10").stdout)[0][0]
        self.assertEqual(picture[:3], (80, 50, 3))
        self.assertLessEqual(max(abs(a - b) for a, b in zip(picture[3], wanted)), 0.51)

    def test_made_to_be_judged(self):
        """Dark frames are lifted, colours balanced; --plain, --wb and --gamma say otherwise."""
        cell = {(0, 0): 20, (1, 0): 40, (0, 1): 40, (1, 1): 10}
        self.write("dark.raw", bytes(cell[x & 1, y & 1] for y in range(30) for x in range(40)))

        def colour(*more):
            picture = read_kitty(self.shown("kitty", "dark.raw", *FILM[1:], *more).stdout)[0][0]
            return picture[3][3 * 610:3 * 611]

        self.assertEqual(colour("--plain"), [20, 40, 10])
        self.assertEqual(colour(), [255, 255, 255])
        self.assertEqual(colour("--wb", "none", "--gamma", "none"), [128, 255, 64])
        self.assertEqual(colour("--wb", "1,1,2", "--gamma", "none"), [128, 255, 128])

    def test_a_frame_that_is_all_white(self):
        self.write("white.raw", b"\xff" * 2400)
        picture = read_kitty(self.shown("kitty", "white.raw", "-f", "rggb16", *FILM[3:]).stdout)[0][0]
        self.assertEqual(picture, (40, 30, 3, [255] * 3600))

    def test_contact_sheet(self):
        wanted = [self.converted(*FILM, "--frame", str(n)) for n in range(1, 6)]
        result = self.shown("kitty", *FILM, "--plain", columns="75")
        pictures, text = read_kitty(result.stdout)
        # Three to a row, in cells of 25 characters of 8 pixels.
        self.assertEqual([p[:2] for p in pictures], [(600, 30), (400, 30)], result.stderr)
        labels = [line.split() for line in text.decode().splitlines() if line]
        self.assertEqual(labels, [["film.raw", "1", "film.raw", "2", "film.raw", "3"],
                                  ["film.raw", "4", "film.raw", "5"]])
        for n, frame in enumerate(wanted):
            sheet = pictures[n // 3]
            for y in range(30):
                at = 3 * (y * sheet[0] + n % 3 * 200)
                self.assertEqual(sheet[3][at:at + 120], frame[3][120 * y:120 * y + 120], n)

    def test_many_frames_are_thinned_out(self):
        self.write("long.raw", bytes(1200 * 100))
        result = self.shown("kitty", "long.raw", *FILM[1:], "--most", "4", columns="100")
        labels = read_kitty(result.stdout)[1].split()
        self.assertEqual(labels[1::2], [b"1", b"26", b"51", b"76"])
        self.assertIn(b"4 of 100 frames", result.stderr)
        result = self.shown("kitty", "long.raw", "film.raw", *FILM[1:], "--frames", "2-3", columns="100")
        labels = read_kitty(result.stdout)[1].split()
        self.assertEqual(labels, [b"long.raw", b"2", b"long.raw", b"3", b"film.raw", b"2", b"film.raw", b"3"])

    def test_pipes(self):
        data = self.read("film.raw")
        wanted = self.converted(*FILM, "--frame", "1")
        arguments = ("-", *FILM[1:], "--plain")
        self.assertEqual(read_kitty(self.shown("kitty", *arguments, data=data).stdout)[0], [wanted])
        result = self.shown("kitty", *arguments, "--frames", "4-5", data=data, columns="60")
        self.assertEqual(read_kitty(result.stdout)[1].split(), [b"standard", b"input", b"4", b"standard", b"input", b"5"])
        self.assertEqual(self.shown("kitty", *arguments, data=data[:100]).returncode, 1)
        result = self.shown("kitty", *arguments, "--frames", "1-", "--most", "2", data=data, columns="60")
        self.assertEqual(read_kitty(result.stdout)[1].split(), [b"standard", b"input", b"1", b"standard", b"input", b"2"])

    def test_grey_deep_and_contained_frames(self):
        self.frame_file("m_40x30_Mono12Packed.raw", 40, 30, "Mono12Packed")
        self.kro("convert", *FILM, "--frame", "1", "-O", "Mono8", "-o", "m_mono.png")
        for name in ("m_40x30_Mono12Packed.raw", "m_mono.png"):
            picture = read_kitty(self.shown("kitty", name, "--plain").stdout)[0][0]
            self.assertEqual(picture, self.converted(name, "-O", "RGB8"))

    def test_one_bad_file_among_good_ones(self):
        self.write("short.raw", b"1")
        result = self.shown("kitty", "film.raw", "short.raw", *FILM[1:], "--frame", "1")
        self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 1))
        self.assertEqual(read_kitty(result.stdout)[1], b"\nfilm.raw\n")

    def test_names_cannot_steer_the_terminal(self):
        name = "a\x1b[31m\n\x7f.raw"
        self.write(name, self.read("film.raw")[:1200])
        text = read_kitty(self.shown("kitty", name, *FILM[1:]).stdout)[1]
        self.assertEqual(text, b"\na?[31m??.raw\n")

    def test_long_names_are_cut_at_their_cell(self):
        """Of characters, not of bytes; standard input goes by words of its own."""
        name = "\u00fc" * 40 + ".raw"
        self.write(name, self.read("film.raw"))
        text = read_kitty(self.shown("kitty", name, *FILM[1:], "--frames", "1-2", columns="50").stdout)[1].decode()
        label = text.strip("\n")
        self.assertEqual((label[:20], label[25:45]), ("\u00fc" * 20,) * 2)
        self.assertNotIn("raw", text)
        self.assertEqual(len(text.strip("\n").split("\n")), 1)
        text = read_kitty(self.shown("kitty", "-", *FILM[1:], "--frame", "1", data=self.read("film.raw")).stdout)[1]
        self.assertEqual(text, b"\nstandard input 1\n")

    def test_size_from_the_environment(self):
        """COLUMNS and LINES count where there is no terminal, and only as numbers that make sense."""
        self.write("f.raw", bytes([90] * 640 * 400))
        sizes = {}
        for columns, lines in ((None, None), ("40", "24"), ("0", "24"), ("x", "24"), ("40x", "24"), ("10000", "24"), ("40", "9"),
                               ("40", "-9")):
            environment = {name: value for name, value in os.environ.items() if name not in ("COLUMNS", "LINES")}
            environment.update({name: value for name, value in (("COLUMNS", columns), ("LINES", lines)) if value})
            result = self.call("show", "f.raw", "-f", "rggb8", "-s", "640x400", "--in", "kitty", "--plain", env=environment)
            sizes[columns, lines] = read_kitty(result.stdout)[0][0][:2]
        self.assertEqual(sizes["40", "24"], (320, 200))
        self.assertLess(sizes["40", "9"][1], 200)
        for nonsense in ((None, None), ("0", "24"), ("x", "24"), ("40x", "24"), ("10000", "24")):
            self.assertEqual(sizes[nonsense], sizes[None, None], nonsense)
        self.assertEqual(sizes["40", "-9"], sizes["40", "24"])

    def test_wrong_calls(self):
        self.kro_fails(2, "show", *FILM, says=["no terminal", "--in", "--viewer"])
        self.kro_fails(2, "show", *FILM, "--in", "ascii", says=["ascii", "kitty, sixel or blocks"])
        self.kro_fails(2, "show", *FILM, "--in", "kitty", "--columns", "3", says="from 10 to 1000")
        self.kro_fails(2, "show", "film.raw", "--in", "kitty", says="--size")
        self.kro_fails(1, "show", "none.raw", *FILM[1:], "--in", "kitty", says="none.raw")


class Terminals(Case):
    """A terminal of 80 columns of 10 pixels is played here; it answers what it is asked as kitty, xterm and others do."""

    def setUp(self):
        super().setUp()
        self.write("f.raw", bytes([90] * 640 * 400))

    def on_terminal(self, answer, *more, term="xterm-256color", pixels=(800, 480), colours="truecolor", later=b"",
                    background=False, characters=(24, 80)):
        sized, size = os.pipe()
        child, terminal = pty.fork()
        if child == 0:
            os.environ.update(TERM=term, COLORTERM=colours)
            os.read(sized, 1)
            os.chdir(self.folder)
            if background and os.fork() != 0:
                os._exit(os.waitstatus_to_exitcode(os.wait()[1]))
            if background:
                os.setpgid(0, 0)
            os.execv(COMMAND, [COMMAND, "show", "f.raw", "-f", "rggb8", "-s", "640x400", "-q", *more])
        fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", *characters, *pixels))
        os.write(size, b"!")
        os.close(sized)
        os.close(size)
        said, asked = b"", False
        try:
            while select.select([terminal], [], [], 30)[0]:
                part = os.read(terminal, 65536)
                if not part:
                    break
                said += part
                if not asked and b"\x1b[c" in said:
                    asked = True
                    os.write(terminal, answer)
                    if later:
                        time.sleep(0.05)
                        os.write(terminal, later)
        except OSError:
            pass
        os.close(terminal)
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), 0, said[-300:])
        return asked, said.split(b"\x1b[c")[-1].replace(b"\r\n", b"\n")

    def test_answers(self):
        features = b"\x1b[?62;4;22c"
        for answer, reader in ((b"\x1b_Gi=31;OK\x1b\\" + features, read_kitty), (features, read_sixel)):
            asked, said = self.on_terminal(answer)
            self.assertTrue(asked)
            pictures, text = reader(said)
            # 22 rows of 20 pixels are left for it.
            self.assertEqual([p[:3] for p in pictures], [(640, 400, 3)], (answer, text))
            self.assertIn(b"f.raw", text)
        for answer in (b"\x1b[?6c", b"\x1b[?1;2c", b"\x1b[?64;41;42c", b""):
            asked, said = self.on_terminal(answer)
            self.assertTrue(asked)
            self.assertEqual(read_blocks(said)[0][:2], (70, 44), answer)

    def test_size_of_a_cell(self):
        answer = b"\x1b_Gi=31;OK\x1b\\\x1b[6;10;4t\x1b[?62c"
        pictures, _ = read_kitty(self.on_terminal(answer, pixels=(0, 0))[1])
        self.assertEqual(pictures[0][:2], (320, 200))
        # 8 x 16 where the answer is none.
        for size in (b"", b"\x1b[6;t", b"\x1b[6;10t", b"\x1b[6;10;t", b"\x1b[6;0;4t", b"\x1b[6;10;0t", b"\x1b[6;201;4t",
                     b"\x1b[6;10;201t"):
            pictures, _ = read_kitty(self.on_terminal(b"\x1b_Gi=31;OK\x1b\\" + size + b"\x1b[?62c", pixels=(800, 10))[1])
            self.assertEqual(pictures[0][:2], (563, 352), size)

    def test_an_answer_in_pieces(self):
        _, said = self.on_terminal(b"\x1b_Gi=31;OK\x1b\\\x1b[?62", later=b"c")
        self.assertEqual(read_kitty(said)[0][0][:2], (640, 400))

    def test_colours_of_terminals(self):
        """Which colours there are is said by COLORTERM or TERM."""
        for said, term, true_colour in (("24bit", "xterm", True), ("", "xterm-direct", True), ("", "xterm", False)):
            _, text = self.on_terminal(b"\x1b[?6c", term=term, colours=said)
            self.assertEqual(b"\x1b[38;2;" in text or b";48;2;" in text, true_colour, (said, term))
            self.assertEqual(b"38;5;" in text, not true_colour, (said, term))

    def test_terminals_that_do_not_say_their_size(self):
        for characters in ((0, 0), (0, 80), (24, 0)):
            _, said = self.on_terminal(b"\x1b[?6c", "--columns", "70", characters=characters)
            self.assertEqual(read_blocks(said)[0][:2], (70, 44), characters)

    def test_a_terminal_that_is_not_the_controlling_one(self):
        """Its answer could not be read, so it is not asked."""
        near, far = pty.openpty()
        fcntl.ioctl(far, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 80, 0, 0))
        process = subprocess.Popen([COMMAND, "show", "f.raw", "-f", "rggb8", "-s", "640x400", "-q"], stdout=far, cwd=self.folder,
                                   env=dict(os.environ, TERM="xterm", COLORTERM="truecolor"), start_new_session=True)
        os.close(far)
        said = read_terminal(near)
        self.assertEqual((process.wait(60), b"\x1b[c" in said), (0, False))
        self.assertEqual(read_blocks(said.replace(b"\r\n", b"\n"))[0][:2], (70, 44))

    def test_nobody_is_asked_in_the_background(self):
        """The question would stop the command there, and its answer go to somebody else."""
        asked, said = self.on_terminal(b"", background=True)
        self.assertFalse(asked)
        self.assertEqual(read_blocks(said)[0][:2], (70, 44))

    def test_terminals_that_are_not_asked(self):
        for more, term in ((("--in", "blocks"), "xterm"), ((), "dumb")):
            asked, said = self.on_terminal(b"", *more, term=term)
            self.assertFalse(asked)
            self.assertEqual(read_blocks(said)[0][:2], (70, 44))


class Viewer(Case):
    def setUp(self):
        super().setUp()
        self.frame_file("film.raw", 40, 30, "BayerRG8", frames=3)
        os.mkdir(self.path("bin"))
        os.mkdir(self.path("tmp"))

    def view(self, *arguments, script="cp \"$1\" seen.png", variable="TMPDIR", folder="tmp"):
        if script:
            self.write("bin/xdg-open", f"#!/bin/sh\n{script}\n".encode())
            os.chmod(self.path("bin/xdg-open"), 0o755)
        environment = {name: value for name, value in os.environ.items() if name not in ("TMPDIR", "TMP", "TEMP", "TEMPDIR")}
        environment.update({"PATH": self.path("bin") + (":/usr/bin:/bin" if script else ""), variable: self.path(folder)})
        return self.call("show", *FILM, "--viewer", *arguments, env=environment)

    def test_picture_and_sheet(self):
        result = self.view("--frame", "2", "--plain")
        self.assertEqual(result.returncode, 0, result.stderr)
        wanted = read_pnm(self.kro("convert", *FILM, "--frame", "2", "-o", "-", "--to", "ppm"))
        self.assertEqual(read_png(self.read("seen.png")), wanted)
        self.assertRegex(result.stderr, rb"tmp/kro-show-\w+\.png")
        self.assertEqual(self.view().returncode, 0)
        self.assertEqual(read_png(self.read("seen.png"))[:2], (3 * 48, 38))

    def test_no_place_for_the_picture(self):
        """The viewer reads a file, for which there must be a folder."""
        for variable, folder, says in (("TMPDIR", "none", "none: no folder for temporary files"),
                                       ("TMPDIR", "film.raw", "film.raw: no folder"), ("TMPDIR", "/proc", "/proc/kro-show-"),
                                       ("TEMP", "none", "TEMP=")):
            result = self.view("--frame", "1", variable=variable, folder=folder)
            said = result.stderr.decode()
            self.assertEqual((result.returncode, said.count("\n")), (1, 1), said)
            self.assertIn(says, said)
        self.assertNotIn("seen.png", self.names())

    def test_a_viewer_that_is_killed(self):
        result = self.view("--frame", "1", script="kill -9 $$")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"xdg-open: cannot show the picture; it is in ", result.stderr)

    def test_no_viewer(self):
        for script in (None, "exit 3"):
            result = self.view("--frame", "1", script=script)
            said = result.stderr.decode()
            self.assertEqual((result.returncode, said.count("\n")), (1, 1), said)
            self.assertIn("xdg-open: cannot show the picture", said)
            with open(said.split("it is in ")[1].strip(), "rb") as file:
                self.assertEqual(read_png(file.read())[:2], (40, 30))
