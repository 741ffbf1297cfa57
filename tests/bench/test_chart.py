"""The chart of rates over sizes shows the rates of the file that it is drawn of."""

import json
import math
import pathlib
import re
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as xml

HERE = pathlib.Path(__file__).resolve().parent
SCRIPT = HERE.parent.parent / "scripts/speed-chart"
STORED = HERE / "sizes.json"
SVG = "{http://www.w3.org/2000/svg}"
PANELS = {"nearest": "nearest/RG8/BGR8", "bilinear": "bilinear/RG8/BGR8", "along edges": "edge/RG8/BGR8",
          "fine": "view-fine/RG8/BGR8"}
SIZES = ["64x64", "640x480", "1280x960", "4096x3000"]  # of those in the file that are sizes alone


def draw(*arguments):
    return subprocess.run([SCRIPT, *arguments], capture_output=True, text=True)


def pixels(size):
    width, height = size.split("x")
    return int(width) * int(height)


def scale(ticks):
    """From a place to what it stands for, by the first and the last of the labels (place, value)."""
    (begin, least), (end, most) = ticks[0], ticks[-1]
    return lambda at: least * (most / least) ** ((at - begin) / (end - begin))


class Chart(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory()
        cls.work = pathlib.Path(cls.temporary.name)
        made = cls.work / "made.svg"
        result = draw("--sizes", STORED, made)
        assert (result.returncode, result.stdout, result.stderr) == (0, "", ""), result
        cls.picture = xml.parse(made).getroot()
        cls.results = json.loads(STORED.read_text())["results"]

    @classmethod
    def tearDownClass(cls):
        cls.temporary.cleanup()

    def panels(self):
        """Title, labels and lines of each."""
        found = []
        for element in self.picture:
            if element.get("class") == "title":
                found.append((element.text, [], []))
            elif element.tag == SVG + "text" and found:
                found[-1][1].append(element)
            elif element.tag == SVG + "g":
                found[-1][2].append(element)
        return found

    def test_lines_are_the_rates_at_the_sizes(self):
        self.assertEqual([title for title, _, _ in self.panels()], list(PANELS))
        for title, labels, lines in self.panels():
            rates = [(float(e.get("y")), float(e.text.replace(",", ""))) for e in labels if e.get("text-anchor") == "end"]
            sizes = [(float(e.get("x")), e.text) for e in labels if e.get("text-anchor") == "middle"]
            self.assertEqual([name for _, name in sizes], SIZES)
            # Labels of rates stand four below their height.
            rate_at, size_at = scale([(y - 4, rate) for y, rate in rates]), scale([(x, pixels(name)) for x, name in sizes])
            wanted = {}
            for r in self.results:
                if r["case"] == PANELS[title] and r["kind"] != "stream" and r["size"] in SIZES:
                    name = "kro " + r["name"] if r["kind"] == "kernel" else r["name"]
                    wanted.setdefault(name, []).append((pixels(r["size"]), r["mpixel_s"]))
            self.assertEqual({line.find(SVG + "text").text for line in lines}, set(wanted))
            for line in lines:
                points = [point.split(",") for point in line.find(SVG + "polyline").get("points").split()]
                said = wanted[line.find(SVG + "text").text]
                self.assertEqual(len(points), len(said))
                self.assertEqual(len(line.findall(SVG + "circle")), len(said))
                for (x, y), (count, rate) in zip(points, said):
                    self.assertAlmostEqual(math.log(size_at(float(x)) / count), 0, delta=0.01)
                    self.assertAlmostEqual(math.log(rate_at(float(y)) / rate), 0, delta=0.01)

    def test_labels_do_not_cover_each_other(self):
        for title, _, lines in self.panels():
            heights = sorted(float(line.find(SVG + "text").get("y")) for line in lines)
            self.assertGreaterEqual(min(b - a for a, b in zip(heights, heights[1:])), 12, title)

    def test_every_line_has_a_colour_in_light_and_dark(self):
        light, dark = self.picture.find(SVG + "style").text.rsplit("@media (prefers-color-scheme: dark) {", 1)
        for _, _, lines in self.panels():
            for kind in {line.get("class") for line in lines}:
                rule = rf"\.{kind} {{ stroke: (#\w+);"
                self.assertNotEqual(re.search(rule, light).group(1), re.search(rule, dark).group(1))

    def test_the_machine_is_named(self):
        self.assertIn("none <made up>, 64 bits; L1d 1 KiB; none; 3 rounds", [e.text for e in self.picture])

    def test_what_is_no_run_is_refused(self):
        def refused(content):
            given = self.work / "given.json"
            given.write_text(content)
            result = draw("--sizes", given, self.work / "none.svg")
            self.assertEqual((result.returncode, result.stdout), (1, ""))
            self.assertIn(str(given), result.stderr)
            self.assertNotIn("Traceback", result.stderr)
            self.assertFalse((self.work / "none.svg").exists())
            return result.stderr

        for content in ("", "[]", "{}", '{"results": [{}]}'):
            self.assertIn("not a JSON file of kro-bench", refused(content))
        whole = json.loads(STORED.read_text())
        for results in ([r for r in self.results if r["case"] != "edge/RG8/BGR8"],
                        [r for r in self.results if r["case"] != "edge/RG8/BGR8" or r["size"] in ("64x64", "64x64+before", "1279x960")]):
            self.assertIn("edge/RG8/BGR8", refused(json.dumps({**whole, "results": results})))
        missing = draw("--sizes", self.work / "missing.json", self.work / "none.svg")
        self.assertEqual(missing.returncode, 1)
        self.assertIn("missing.json: No such file", missing.stderr)

    def test_help_says_how_it_is_made(self):
        result = draw("--help")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertIn("kro-bench --filter", result.stdout)
        for arguments in (["--sizes"], ["--nothing"], ["--sizes", "a", "b", "c"]):
            result = draw(*arguments)
            self.assertEqual((result.returncode, result.stdout), (2, ""))


if __name__ == "__main__":
    unittest.main()
