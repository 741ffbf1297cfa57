"""What the tests of kro-camera share: the program, a screen to look at, keys to press, and pictures by the library."""

import os
import re
import signal
import struct
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.environ["KRO_CLI_TESTS"])
import pictures  # noqa: E402
import support as cli  # noqa: E402

PROGRAM = os.environ["KRO_CAMERA"]
ALGORITHMS = cli.ALGORITHMS
FORMATS = cli.ALL_FORMATS
# A machine may be busy; nothing is measured.
PATIENCE = 60


def converted(frame, width, height, name, algorithm="edge", stride=0):
    """The RGB8 bytes that kroConvertView gives for a frame."""
    return cli.converted(frame, width, height, FORMATS[name].code, algorithm, "RGB8", stride)


def wait_for(what, condition):
    """The condition's first answer that is true."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        answer = condition()
        if answer:
            return answer
        time.sleep(0.05)
    raise AssertionError(f"waited {PATIENCE} s for {what}")


class Screen:
    """A screen of its own, that nobody sees but the tests."""

    width, height = 1000, 800

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory()
        reading, writing = os.pipe()
        # Without -noreset it starts anew when its last client leaves, and loses a window that is about to come.
        self.process = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", f"{self.width}x{self.height}x24", "-nolisten", "tcp",
             "-noreset", "-fbdir", self.folder.name], pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as answer:
            self.name = ":" + answer.readline().strip()
        assert self.name != ":", "Xvfb does not start"
        self.environment = {**os.environ, "DISPLAY": self.name, "SDL_VIDEODRIVER": "x11",
                            "SDL_RENDER_DRIVER": "software", "SDL_AUDIODRIVER": "dummy"}

    def close(self):
        self.process.terminate()
        self.process.wait()
        self.folder.cleanup()

    def xdotool(self, *arguments):
        return subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, check=True,
                              stdout=subprocess.PIPE).stdout.decode()

    def window(self):
        """The number of the program's window, once it is there."""
        def visible():
            found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^kro-camera"],
                                   env=self.environment, stdout=subprocess.PIPE).stdout.split()
            return found and found[0].decode()
        return wait_for("the window", visible)

    def title(self):
        return self.xdotool("getwindowname", self.window()).strip()

    def press(self, *keys):
        self.xdotool("mousemove", self.width // 2, self.height // 2, "key", *keys)

    def place(self):
        """Of the window: left, top, width, height."""
        said = dict(line.split("=") for line in
                    self.xdotool("getwindowgeometry", "--shell", self.window()).splitlines())
        return tuple(int(said[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))

    def rgb(self, left=0, top=0, width=None, height=None):
        """What is on the screen there, as the X server keeps it: a dump of the kind xwd makes."""
        width, height = width or self.width, height or self.height
        with open(os.path.join(self.folder.name, "Xvfb_screen0"), "rb") as file:
            dump = file.read()
        header, colours, row = (struct.unpack(">I", dump[at:at + 4])[0] for at in (0, 76, 48))
        first = header + 12 * colours
        rows = []
        for y in range(top, top + height):
            at = first + y * row + 4 * left
            pixels = dump[at:at + 4 * width]
            rgb = bytearray(3 * width)
            rgb[0::3], rgb[1::3], rgb[2::3] = pixels[2::4], pixels[1::4], pixels[0::4]
            rows.append(bytes(rgb))
        return b"".join(rows)

    def shot(self, path):
        with open(path, "wb") as file:
            file.write(pictures.write_png(self.width, self.height, 3, self.rgb()))


class Case(cli.FolderCase):
    """Each test works in an empty folder of its own; those that look share a screen."""

    @classmethod
    def setUpClass(cls):
        cls.screen = Screen()

    @classmethod
    def tearDownClass(cls):
        cls.screen.close()

    def names(self, pattern=""):
        return sorted(name for name in os.listdir(self.folder) if re.search(pattern, name))

    def call(self, *arguments, **environment):
        """The program to its end: exit code, standard output, standard error."""
        done = subprocess.run([PROGRAM, *arguments], cwd=self.folder, timeout=120, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, env={**self.screen.environment, **environment})
        return done.returncode, done.stdout.decode(), done.stderr.decode()

    def fails(self, code, says, *arguments, **environment):
        """A call that must fail with one line that names all of `says`."""
        result, out, said = self.call(*arguments, **environment)
        self.assertEqual((result, out, said.count("\n")), (code, "", 1), said)
        self.assertTrue(said.startswith("kro-camera: "), said)
        for words in says:
            self.assertIn(words, said)

    def run_program(self, *arguments, **environment):
        """The program with its window on the screen; ended at the latest with the test."""
        process = subprocess.Popen([PROGRAM, *arguments], cwd=self.folder, stderr=subprocess.PIPE,
                                   env={**self.screen.environment, **environment})
        self.addCleanup(self.end, process)
        self.screen.window()
        return process

    def end(self, process):
        """Ends it as a terminal does; exit code and standard error."""
        if process.poll() is None:
            process.send_signal(signal.SIGINT)
        said = process.communicate(timeout=PATIENCE)[1] if not process.stderr.closed else b""
        return process.returncode, said.decode()

    def wait_for_title(self, *parts):
        wait_for(f"a title with {parts}", lambda: all(part in self.screen.title() for part in parts))

    def picture(self, name):
        """Width, height and RGB bytes of a PNG file."""
        width, height, channels, samples = pictures.read_png(self.read(name))
        self.assertEqual(channels, 3)
        return width, height, bytes(samples)

    def frame_of(self, name):
        """What a recording's name says: width, height, format, stride."""
        found = re.search(r"_(\d+)x(\d+)_(\w+?)(?:_stride(\d+))?\.raw$", name)
        self.assertIsNotNone(found, name)
        return int(found[1]), int(found[2]), found[3], int(found[4] or 0)
