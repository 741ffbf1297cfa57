"""README's lines of kro-camera, as they stand; a preloaded device, and the simulated camera, for those that are not here."""

import os
import re
import shlex

from stage import Case

README = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "..", "README.md")
DEVICE = "/dev/video0"


def lines_of_readme():
    with open(README, encoding="utf-8") as file:
        return [shlex.split(line, comments=True)[1:]
                for line in re.findall(r"^ {4}(kro-camera .*)$", file.read(), re.MULTILINE)]


class Lines(Case):
    def device(self):
        width, height, stride = 1640, 1232, 2080
        buffers = self.write("buffers", bytes(stride * height))
        self.write("description", f"mode pRAA {width} {height} {stride} {stride * height} {buffers}\n".encode())
        return {"LD_PRELOAD": os.environ["KRO_SIMULATED_V4L2"], "KRO_V4L2_DEVICE": DEVICE,
                "KRO_V4L2_DESCRIPTION": self.path("description")}

    def test_every_line(self):
        lines = lines_of_readme()
        self.assertEqual([line[0] for line in lines], ["--aravis", "--aravis", "--v4l2", "--replay"])
        for line in lines:
            environment = self.device() if line[0] == "--v4l2" else {}
            if line[0] == "--replay":
                height, stride = map(int, re.search(r"x(\d+)_SRGGB10P_stride(\d+)", line[1]).groups())
                self.write(line[1], bytes(height * stride))
            if line[0] == "--aravis" and line[1] != "simulated":
                line.insert(1, "simulated")
            code, _, said = self.call(*line, "-n", "2", SDL_VIDEODRIVER="dummy", **environment)
            self.assertEqual(code, 0, f"{line}\n{said}")
            self.assertIn("2 frames, 0 lost", said)
