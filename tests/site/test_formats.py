"""The list of formats with everybody's names against those whose names they are."""

import csv
import pathlib
import re
import subprocess
import unittest

from support import COMMAND, ROOT, Case

# In headers of later kernels than Debian's.
LATER = {"Y12P", "Y14P", "RGB48", "BGR48"}


def rows():
    with open(ROOT / "site/formats.csv", newline="") as file:
        return list(csv.DictReader(file))


class Formats(Case):
    def test_every_format_of_the_library_is_listed(self):
        names = re.findall(r"\bX\((\w+), KRO_", (ROOT / "include/kro/kro.hpp").read_text())
        self.assertGreater(len(names), 80)
        self.assertEqual({row["name"] for row in rows()}, set(names))

    def test_the_command_takes_their_names_for_the_same_formats(self):
        (self.work / "p.ppm").write_bytes(b"P6 8 8 255\n" + bytes(192))
        tried = 0
        for row in (row for row in rows() if row["direction"] == "in"):
            for whose in ("name", "v4l2", "fourcc", "libcamera", "gstreamer", "ffmpeg"):
                if not row[whose]:
                    continue
                subprocess.run([COMMAND, "mosaic", "-q", "p.ppm", "-f", row[whose].strip(), "-o", "out/"], check=True,
                               cwd=self.work)
                made = [path.name for path in (self.work / "out").iterdir()]
                self.assertEqual(made, [f"p_8x8_{row['name']}.raw"], f"{whose}: {row[whose]}")
                (self.work / "out" / made[0]).unlink()
                tried += 1
        self.assertGreater(tried, 200)

    def test_v4l2_has_these_letters(self):
        header = pathlib.Path("/usr/include/linux/videodev2.h").read_text()
        codes = {name: "".join(re.findall(r"'(.)'", code))
                 for name, code in re.findall(r"#define V4L2_PIX_FMT_(\w+)\s+v4l2_fourcc\(([^)]*)\)", header)}
        known = [row for row in rows() if row["v4l2"] and (row["v4l2"] in codes or row["v4l2"] not in LATER)]
        self.assertGreater(len(known), 45)
        for row in known:
            self.assertEqual(row["fourcc"], codes.get(row["v4l2"]), row["v4l2"])


if __name__ == "__main__":
    unittest.main()
