"""Completion in bash, zsh and fish, driven on a terminal of their own with the files that an installation has."""

import os
import pty
import re
import select
import shutil
import subprocess
import tempfile
import time
import unittest

COMMAND = os.environ["KRO_COMMAND"]
BENCH = os.environ["KRO_BENCH"]
BUILD = os.environ["KRO_BUILD"]
START_OF_LINE, END_OF_LINE = "\x01", "\x05"


def kro(*words):
    return subprocess.run([COMMAND, "complete", "--", *words], check=True, capture_output=True, text=True).stdout


def candidates(*words):
    return [line.split("\t")[0] for line in kro(*words).splitlines()]


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory()
        cls.prefix = os.path.join(cls.temporary.name, "prefix")
        subprocess.run(["cmake", "--install", BUILD, "--prefix", cls.prefix], check=True, stdout=subprocess.DEVNULL)
        cls.folder = os.path.join(cls.temporary.name, "frames")
        os.makedirs(os.path.join(cls.folder, "home"))
        for name in ("unlike_any.raw", "sheet with blanks.raw"):
            with open(os.path.join(cls.folder, name), "wb"):
                pass

    @classmethod
    def tearDownClass(cls):
        cls.temporary.cleanup()

    def share(self, *names):
        return os.path.join(self.prefix, "share", *names)


class Shell:
    """A shell that answers on a pseudo-terminal; a typed line is shown as the words that it would run."""

    def __init__(self, arguments, case, setup):
        environment = {"HOME": os.path.join(case.folder, "home"), "TERM": "xterm", "LC_ALL": "C.UTF-8",
                       "PATH": os.path.join(case.prefix, "bin") + ":/usr/bin:/bin",
                       "XDG_DATA_DIRS": case.share() + ":/usr/share", "INPUTRC": "/dev/null"}
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.chdir(case.folder)
            os.execvpe(arguments[0], arguments, environment)
        self.count = 0
        self.type(setup + "\r")
        self.words_of("set up")

    def type(self, text):
        os.write(self.terminal, text.encode())

    def words_of(self, typed):
        """The words of the line once it is typed, tabs and all."""
        self.count += 1
        mark = f"line{self.count}"
        self.type(typed + START_OF_LINE + f"printf '<%s>\\n' {mark} " + END_OF_LINE + " end\r")
        said = self.read_until(re.compile(rf"^<{mark}>\n((?:<.*>\n)*?)<end>\n", re.MULTILINE))
        return re.findall(r"<(.*)>", said.group(1))

    def read_until(self, pattern):
        said, end = "", time.monotonic() + 30
        while time.monotonic() < end:
            if select.select([self.terminal], [], [], 1)[0]:
                said += os.read(self.terminal, 65536).decode(errors="replace")
                plain = re.sub(r"\x1b(\[[0-9;?>=]*[a-zA-Z]|\][^\a]*\a|[()][A-Z0-9]|[=>])", "", said)
                found = pattern.search(re.sub(r"\r+\n?", "\n", plain))
                if found:
                    return found
        raise AssertionError(f"no answer from the shell: {said!r}")

    def close(self):
        os.close(self.terminal)
        os.waitpid(self.process, 0)


class Completion(Installed):
    TYPED = (
        ("kro conv\t", ["kro", "convert"]),
        ("kro help mos\t", ["kro", "help", "mosaic"]),
        ("kro convert --no-cl\t", ["kro", "convert", "--no-clobber"]),
        ("kro convert -a bil\t", ["kro", "convert", "-a", "bilinear"]),
        ("kro show -a fi\t", ["kro", "show", "-a", "fine"]),
        ("kro convert -f BayerRG12Pa\t", ["kro", "convert", "-f", "BayerRG12Packed"]),
        ("kro convert -f bayergb10pa\t", ["kro", "convert", "-f", "BayerGB10Packed"]),
        ("kro convert --output-format xR\t", ["kro", "convert", "--output-format", "xRGB8"]),
        ("kro convert --gamma=sr\t", ["kro", "convert", "--gamma=srgb"]),
        ("kro show --in ki\t", ["kro", "show", "--in", "kitty"]),
        ("kro convert x.raw --to jp\t", ["kro", "convert", "x.raw", "--to", "jpg"]),
        ("kro convert unl\t", ["kro", "convert", "unlike_any.raw"]),
        ("kro convert -o unl\t", ["kro", "convert", "-o", "unlike_any.raw"]),
        ("kro info sheet\t", ["kro", "info", "sheet with blanks.raw"]),
        ("kro bench --instr\t", ["kro", "bench", "--instructions"]),
        ("kro-bench --isa sca\t", ["kro-bench", "--isa", "scalar"]),
    )

    def drive(self, arguments, setup):
        self.assertIsNotNone(shutil.which(arguments[0]), f"{arguments[0]} is not installed")
        shell = Shell(arguments, self, setup)
        self.addCleanup(shell.close)
        for typed, wanted in self.TYPED:
            self.assertEqual(shell.words_of(typed), wanted, typed)

    def test_bash(self):
        # As an interactive shell of Debian's does: the file is found by the name of the command.
        self.drive(["bash", "--norc", "--noprofile", "-i"], ". /usr/share/bash-completion/bash_completion; PS1='$ '")

    def test_bash_without_its_library(self):
        self.drive(["bash", "--norc", "--noprofile", "-i"],
                   f". '{self.share('bash-completion', 'completions', 'kro')}'; PS1='$ '")

    def test_zsh(self):
        self.drive(["zsh", "-f", "-i"], f"fpath=('{self.share('zsh', 'vendor-completions')}' $fpath); "
                   "autoload -U compinit; compinit -u -D; unsetopt prompt_sp; bindkey -e; PS1='$ '")

    def test_fish(self):
        self.drive(["fish", "--no-config", "--private"], f"set fish_complete_path '{self.share('fish', 'vendor_completions.d')}'"
                   " $fish_complete_path; function fish_prompt; echo '$ '; end")


class Words(unittest.TestCase):
    def test_every_option_of_the_help_is_offered(self):
        for command in candidates(""):
            if command == "help":
                continue
            text = subprocess.run([COMMAND, command, "--help"], check=True, capture_output=True, text=True).stdout
            options = re.search(r"^Options:\n((?:  .*\n)+)", text, re.MULTILINE).group(1)
            named = re.findall(r"(?:^  |,)(--?[a-zA-Z][a-z-]*)(?=[ ,\n])", options, re.MULTILINE)
            long_ones = [name for name in named if name.startswith("--")]
            self.assertTrue(long_ones)
            self.assertEqual([name for name in candidates(command, "--")], long_ones, command)

    def test_every_name_of_a_format_is_taken(self):
        names = {name for letter in "BMSYRGpgbryg" for name in candidates("mosaic", "-f", letter)}
        self.assertGreater(len(names), 150)
        with tempfile.TemporaryDirectory() as folder:
            picture = os.path.join(folder, "p.ppm")
            with open(picture, "wb") as file:
                file.write(b"P6 8 4 255\n" + bytes(96))
            for name in sorted(names):
                subprocess.run([COMMAND, "mosaic", "-q", picture, "-f", name, "-o", os.path.join(folder, "x.raw")],
                               check=True)

    def test_every_value_is_taken(self):
        with tempfile.TemporaryDirectory() as folder:
            frame = os.path.join(folder, "x_8x4_BayerRG8.raw")
            with open(frame, "wb") as file:
                file.write(bytes(32))
            tried = 0
            for option in ("--algorithm", "--output-format", "--to", "--depth", "--wb", "--gamma"):
                values = candidates("convert", option, "")
                self.assertGreater(len(values), 1, option)
                for value in values:
                    more = ["-o", folder + "/out/"] + ([] if option == "--to" else ["--to", "raw"])
                    subprocess.run([COMMAND, "convert", "-q", frame, option, value, *more], check=True)
                    tried += 1
            for value in candidates("show", "--in", ""):
                subprocess.run([COMMAND, "show", "-q", frame, "--in", value], check=True, stdout=subprocess.DEVNULL)
                tried += 1
            self.assertGreater(tried, 40)

    def test_formats_go_by_one_name_before_the_first_letter(self):
        names = candidates("mosaic", "-f", "")
        self.assertEqual((len(names), len(set(names)), "BayerRG8" in names, "rggb8" in names), (65, 65, True, False))
        self.assertIn("rggb8", candidates("mosaic", "-f", "r"))

    def test_words_as_shells_give_them(self):
        self.assertEqual(kro("convert", "-o", ""), ":files\n")
        self.assertEqual(kro("guess", "--sheet", "x"), ":files\n")
        self.assertEqual(kro("convert", "x.raw", ""), ":files\n")
        self.assertEqual(kro("convert", "x.r"), ":files\n")
        self.assertEqual(kro("convert", "--no-clobber", ""), ":files\n")
        self.assertEqual(kro("convert", "-", ""), ":files\n")
        self.assertEqual(kro("convert", "--output=x"), ":files\n")
        self.assertEqual(candidates("convert", "--gamma=sr"), ["--gamma=srgb"])
        self.assertEqual(candidates("convert", "--wb="), ["--wb=none", "--wb=gray"])
        self.assertEqual(kro("convert", "--no-clobber=x"), "")
        self.assertEqual(kro("convert", "--", "--gamma=sr"), ":files\n")
        self.assertEqual(candidates("convert", "-a", "BIL"), ["bilinear"])
        self.assertEqual(candidates("help", "mos"), ["mosaic"])
        self.assertEqual(kro("help", "mosaic", "x"), "")
        self.assertIn("--help", candidates("--h"))
        self.assertEqual(candidates("conv"), ["convert"])
        without_dashes = subprocess.run([COMMAND, "complete", "convert", "--depth", ""], check=True, capture_output=True, text=True)
        self.assertEqual(without_dashes.stdout, kro("convert", "--depth", ""))

    def test_nothing_is_offered_where_nothing_fits(self):
        self.assertEqual(kro("convert", "--bits", ""), "")
        self.assertEqual(kro("convert", "-a", "zz"), "")
        self.assertEqual(kro("unknown", ""), "")
        self.assertEqual(kro("formats", ""), "")
        self.assertEqual(kro("convert", "--", "--"), ":files\n")
        self.assertNotIn("complete", candidates(""))

    def test_it_is_called_with_words(self):
        result = subprocess.run([COMMAND, "complete"], capture_output=True, text=True)
        self.assertEqual((result.returncode, result.stdout), (2, ""))
        self.assertIn("--", result.stderr)


if __name__ == "__main__":
    unittest.main()
