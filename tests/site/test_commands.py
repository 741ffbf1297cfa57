"""Every line of the command in README and in the help runs, on files made as the line describes them."""

import re
import shlex
import subprocess
import unittest

from support import COMMAND, ROOT, Case

SCENE = "scene.ppm"
OPTIONS_OF_FRAMES = {"-f": "BayerRG12Packed", "-s": "", "--stride": "", "--skip": "0", "--frames": ""}


def lines_of(text):
    """Lines of the command, without what is said of them."""
    for line in text.splitlines():
        match = re.match(r" {2,4}((?:[a-z-]+ \| )?kro .*)$", line)
        if match and "COMMAND" not in line:
            yield re.sub(r" {3,}#.*| {3,}\S.*$", "", match.group(1)).strip()


class Commands(Case):
    def command(self, *words, data=None):
        return subprocess.run([COMMAND, *words], check=True, cwd=self.work, input=data, stdout=subprocess.PIPE).stdout

    def scene(self, width, height):
        line = bytes(range(256)) * (3 * width // 256 + 2)
        rows = b"".join(line[y % 256:][:3 * width] for y in range(height))
        (self.work / SCENE).write_bytes(b"P6 %d %d 255\n" % (width, height) + rows)

    def frame(self, name, options, flags):
        """Raw frames of the size and format that name or options say."""
        size = re.search(r"(\d+)x(\d+)", options["-s"] or name) or re.match(r"(\d+)x(\d+)", "320x240")
        self.scene(int(size.group(1)), int(size.group(2)))
        spelt = re.search(r"_((?:Bayer|Mono)\w+)\.", name)
        more = [word for key in ("--stride",) if options[key] for word in (key, options[key])]
        more += ["--big-endian"] if "--big-endian" in flags else []
        data = self.command("mosaic", "-q", SCENE, "-f", spelt.group(1) if spelt else options["-f"], *more, "-o", "-")
        count = int((re.findall(r"\d+", options["--frames"]) or ["1"])[-1])
        (self.work / name).parent.mkdir(exist_ok=True)
        (self.work / name).write_bytes(bytes(int(options["--skip"])) + data * count)

    def input(self, name, options, flags):
        """One file that a line takes."""
        path = self.work / name
        path.parent.mkdir(exist_ok=True)
        if name.startswith("photo."):
            self.frame("f_640x480_BayerRG8.raw", OPTIONS_OF_FRAMES, [])
            self.command("convert", "-q", "f_640x480_BayerRG8.raw", "-o", name)
            (self.work / "f_640x480_BayerRG8.raw").unlink()
        elif name.endswith(".tif"):
            self.scene(64, 48)
            self.command("mosaic", "-q", SCENE, "-f", "BayerRG8", "-o", name)
        elif name.endswith(".npy"):
            head = "{'descr': '|u1', 'fortran_order': False, 'shape': (2, 48, 64), }".ljust(117) + "\n"
            path.write_bytes(b"\x93NUMPY\x01\x00\x76\x00" + head.encode() + bytes(2 * 48 * 64))
        else:
            self.frame(name, options, flags)

    def prepare(self, line):
        """Makes the inputs of each command of a line; the line as it can be run here."""
        for part in line.split("|"):
            words = shlex.split(part)
            if words[0] != "kro" or len(words) < 3:
                continue
            options, names, skip = dict(OPTIONS_OF_FRAMES), [], False
            for word, following in zip(words[2:], words[3:] + [""]):
                if skip or word.startswith("-") and word != "-":
                    options[word], skip = following, not skip and word not in ("--big-endian", "--scale", "--viewer")
                elif word != "-":
                    names.append(word)
            for name in names:
                like = "_320x240_BayerRG8" if not options["-s"] else ""
                for one in [name.replace("*", first + like) for first in "ab"] if "*" in name else [name]:
                    if re.search(r"\.\w+$", one):
                        self.input(one, options, words)
            if line.startswith("camera"):
                self.frame("camera.raw", options, words)
        (self.work / SCENE).unlink(missing_ok=True)
        return re.sub(r"\| (player|less -R)", "| cat > out", re.sub(r"^camera(-dump)? ", "cat camera.raw ", line))

    def try_line(self, line):
        self.work = self.folder()
        tools = self.folder()
        self.tool(tools, "xdg-open", "test -s \"$1\"")
        (self.work / "pictures").mkdir()
        prepared = self.prepare(line)
        # Where a person sees pictures there is a terminal.
        run = ["script", "-qec", prepared, "/dev/null"] if " show " in line else ["sh", "-euc", prepared]
        result = subprocess.run(run, cwd=self.work, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env=self.environment(tools), check=False)
        self.assertEqual(result.returncode, 0, f"{line}\n{result.stdout.decode(errors='replace')[-2000:]}")

    def test_help(self):
        said = self.command("complete", "--", "").decode()
        lines = set(lines_of(self.command("--help").decode()))
        for command in (line.split("\t")[0] for line in said.splitlines()):
            if command != "bench":
                lines.update(lines_of(self.command("help", command).decode()))
        self.assertGreater(len(lines), 25)
        for line in sorted(lines):
            with self.subTest(line=line):
                self.try_line(line)

    def test_readme(self):
        lines = list(lines_of((ROOT / "README.md").read_text()))
        self.assertGreater(len(lines), 15)
        for line in lines:
            with self.subTest(line=line):
                self.try_line(line)


if __name__ == "__main__":
    unittest.main()
