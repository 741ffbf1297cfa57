"""README: every example has a test that runs it, its names and figures are those of their sources."""

import csv
import os
import pathlib
import re
import subprocess
import unittest

from support import COMMAND, ROOT, Case

README = (ROOT / "README.md").read_text()
TOOLS = pathlib.Path(os.environ["KRO_BUILD"]) / "tools/demo"
# Who runs a program or a line. What builds, installs and packs is run by those that say so by name.
RUNNERS = {
    "tests/check-readme.sh": r"```(c|cpp|python)|(cc|c\+\+ -std=c\+\+17) example|\./example",
    "tests/check-install.sh": r"sudo cmake --install |sudo ldconfig",
    "tests/site/test_commands.py": r"(camera \| )?kro \w",
    "tests/site/test_readme.py": r"scripts/demo | +PSNR +without border|(nearest|bilinear|edge|fine) +[\d.]+ dB",
    "gstreamer/tests/test_lines.py": r"gst-(launch|inspect)-1\.0 ",
    "examples/camera/tests/test_readme.py": r"kro-camera -",
    "examples/camera/tests/check-copied.sh": r"cmake -S examples/camera ",
    "scripts/test": r"scripts/install-packages( --wasm)?$|cmake --(preset|build)",
    "scripts/package": r"scripts/package|sudo apt install ",
    "scripts/page": r"scripts/page ",
    ".ci/run": r"scripts/test ",
}
# Planar formats with a fourth plane, which the list has under the name of those with three.
WITH_ALPHA = {"gbrap", "gbrap16le"}


def examples():
    """Lines of shell, and what stands as a block: programs by their first line."""
    fence = ""
    for line in README.splitlines():
        if line.startswith("```"):
            fence = "" if fence else line
            if fence and fence != "```sh":
                yield fence
        elif (fence == "```sh" or not fence and line.startswith("    ")) and line.strip():
            yield line if fence else line[4:]


def names_of(rows, column):
    return {row[column] for row in rows if row[column]}


class Readme(Case):
    def test_every_example_is_run_by_one(self):
        counted = dict.fromkeys(RUNNERS, 0)
        for example in examples():
            who = [name for name, pattern in RUNNERS.items() if re.match(pattern, example)]
            self.assertEqual(len(who), 1, f"{example!r} is run by {who or 'nobody'}")
            counted[who[0]] += 1
        for name, count in counted.items():
            self.assertTrue((ROOT / name).exists(), name)
            self.assertGreater(count, 0, f"{name} runs nothing of README any more")

    def test_the_demo_prints_these_figures(self):
        """Its steps, without its building."""
        frame = "scene_1280x960_BayerRG12Packed.raw"
        subprocess.run([TOOLS / "kro-demo-scene", "scene.ppm"], check=True, cwd=self.work)
        subprocess.run([COMMAND, "mosaic", "-q", "scene.ppm", "-f", "BayerRG12Packed", "-o", frame], check=True, cwd=self.work)
        said = re.findall(r"^    (\w+) +([\d.]+) dB +([\d.]+) dB", README, re.MULTILINE)
        self.assertEqual([row[0] for row in said], ["nearest", "bilinear", "edge", "fine"])
        for algorithm, *figures in said:
            subprocess.run([COMMAND, "convert", "-q", frame, "-a", algorithm, "-o", "made.ppm"], check=True, cwd=self.work)
            table = subprocess.run([TOOLS / "kro-psnr", "scene.ppm", "x=made.ppm"], check=True, cwd=self.work,
                                   capture_output=True, text=True).stdout
            row = next(line.split() for line in table.splitlines() if line.startswith("x "))
            self.assertEqual([row[4], row[8]], figures, algorithm)

    def test_names_of_formats_are_those_of_the_list(self):
        with open(ROOT / "site/formats.csv", newline="") as file:
            rows = list(csv.DictReader(file))
        pairs = {(row["v4l2"], row["fourcc"]) for row in rows}
        whose = {3: names_of(rows, "libcamera"), 4: names_of(rows, "gstreamer"), 5: names_of(rows, "ffmpeg")}
        tried = 0
        for line in re.findall(r"^\| (?:Mono|Y10P|Bayer|SRGGB|RGB|BGR|aRGB|xRGB).*\|$", README, re.MULTILINE):
            cells = [cell.strip() for cell in line.strip("|").split("|")]
            for name, code in re.findall(r"(\w+) \((.{4})\)", cells[2]):
                self.assertIn((name, code), pairs, line)
                tried += 1
            for column, known in whose.items():
                for name in cells[column].split(", "):
                    self.assertIn(name, known | {"-"} | WITH_ALPHA, line)
                    tried += 1
        self.assertGreater(tried, 100)

    def test_the_chart_is_what_the_document_says(self):
        subprocess.run([ROOT / "scripts/speed-chart", "--check"], check=True)


if __name__ == "__main__":
    unittest.main()
