"""The program's V4L2 side on recorded buffers, which a preloaded library sends as the kernel would."""

import os

from stage import FORMATS, Case, cli, converted

DEVICE = "/dev/video7"


class V4l2(Case):
    def describe(self, *lines):
        self.write("description", "".join(line + "\n" for line in lines).encode())

    def mode(self, letters, name, width, height, stride, size=None, count=4, seed=1):
        """A line of the description, and its buffers: rows padded with bytes that are no samples."""
        kind = FORMATS[name]
        frames = [kind.pack(cli.random_samples(width * height, kind.bits, seed + i), width, stride)
                  for i in range(count)]
        size = size or stride * height
        path = self.write(f"{letters}-{width}.buffers", b"".join(frame[:size].ljust(size, b"\xa5")
                                                                 for frame in frames))
        return f"mode {letters} {width} {height} {stride} {size} {path}", frames

    @property
    def environment(self):
        return {"LD_PRELOAD": os.environ["KRO_SIMULATED_V4L2"], "KRO_V4L2_DEVICE": DEVICE,
                "KRO_V4L2_DESCRIPTION": self.path("description"), "SDL_VIDEODRIVER": "dummy"}

    def run_device(self, *arguments, code=0):
        result, out, said = self.call("--v4l2", DEVICE, *arguments, **self.environment)
        self.assertEqual((result, out), (code, ""), said)
        return said

    def refused(self, says, *arguments):
        self.fails(1, [DEVICE, *says], "--v4l2", DEVICE, *arguments, **self.environment)

    def check_pictures(self, frames, width, height, name, stride):
        shown = self.names(r"\.png$")
        self.assertEqual(len(shown), len(frames))
        for frame, picture in zip(frames, shown):
            self.assertEqual(self.picture(picture),
                             (width, height, converted(frame, width, height, name, "edge", stride)), picture)

    def test_formats_with_padded_rows(self):
        for letters, name, width, height, stride in (
                ("RGGB", "BayerRG8", 100, 40, 128), ("BA81", "BayerBG8", 100, 40, 100),
                ("RG10", "BayerRG10", 60, 20, 128), ("BG12", "BayerBG12", 60, 20, 120),
                ("pRAA", "SRGGB10P", 100, 40, 160), ("pGAA", "SGBRG10P", 102, 40, 130),
                ("pRCC", "SRGGB12P", 100, 40, 160), ("GREY", "Mono8", 100, 40, 112), ("Y10P", "Y10P", 100, 40, 160)):
            line, frames = self.mode(letters, name, width, height, stride)
            self.describe(line)
            said = self.run_device("-n", "6", "--record", "raw,png")
            self.assertIn("6 frames, 0 lost", said)
            self.check_pictures(frames + frames[:2], width, height, name, stride)
            recorded, = self.names(r"^2.*\.raw$")
            self.assertEqual(self.frame_of(recorded), (width, height, name, stride))
            for file in self.names(r"^2"):
                os.remove(self.path(file))

    def test_a_buffer_may_end_with_the_last_sample(self):
        line, frames = self.mode("pRAA", "SRGGB10P", 100, 40, 160, size=160 * 39 + 125)
        self.describe(line)
        self.run_device("-n", "4", "--record", "raw,png")
        self.check_pictures(frames, 100, 40, "SRGGB10P", 160)
        recorded, = self.names(r"^2.*\.raw$")
        self.assertEqual(len(self.read(recorded)), 4 * 160 * 40)

    def test_the_chosen_format_and_size_are_set(self):
        bayer, _ = self.mode("RGGB", "BayerRG8", 100, 40, 128)
        small, _ = self.mode("pRAA", "SRGGB10P", 60, 20, 80)
        large, frames = self.mode("pRAA", "SRGGB10P", 100, 40, 160, seed=9)
        self.describe(bayer, small, large)
        self.run_device("-f", "SRGGB10P", "-s", "100x40", "-n", "2", "--record", "png")
        self.check_pictures(frames[:2], 100, 40, "SRGGB10P", 160)

    def test_another_size_than_the_wanted_one_is_said(self):
        line, _ = self.mode("RGGB", "BayerRG8", 100, 40, 128)
        self.describe(line)
        self.assertIn("the camera sends 100x40 instead of 640x480", self.run_device("-s", "640x480", "-n", "1"))

    def test_keys_go_through_formats_and_sizes(self):
        lines = [self.mode("RGGB", "BayerRG8", 320, 240, 384)[0], self.mode("pRAA", "SRGGB10P", 320, 240, 400)[0],
                 self.mode("pRAA", "SRGGB10P", 400, 300, 512)[0], self.mode("YUYV", "BayerRG8", 320, 240, 640)[0]]
        self.describe(*lines)
        program = self.run_program("--v4l2", DEVICE, **{**self.environment, "SDL_VIDEODRIVER": "x11"})
        for key, title in ((None, "320x240 BayerRG8"), ("f", "320x240 SRGGB10P"), ("z", "400x300 SRGGB10P"),
                           ("shift+z", "320x240 SRGGB10P"), ("f", "320x240 BayerRG8"), ("z", "320x240 BayerRG8")):
            if key:
                self.screen.press(key)
            self.wait_for_title("/dev/video7 (recorded buffers)", title)
        code, said = self.end(program)
        self.assertEqual(code, 0, said)
        self.assertIn(" 0 lost", said)

    def test_lost_frames_are_counted_and_not_shown(self):
        line, frames = self.mode("RGGB", "BayerRG8", 100, 40, 128, count=20)
        self.describe(line, "sequence 4294967293", "event 2 missing", "event 4 lost", "event 6 damaged",
                      "event 8 short")
        said = self.run_device("-n", "10", "--record", "png")
        # Three numbers were left out; lost, damaged and short ones are a frame each.
        self.assertIn("10 frames, 6 lost", said)
        whole = [frame for number, frame in enumerate(frames[:13]) if number not in (4, 6, 8)]
        self.check_pictures(whole, 100, 40, "BayerRG8", 128)

    def test_an_unplugged_device_ends_it_with_the_recording_kept(self):
        line, frames = self.mode("RGGB", "BayerRG8", 100, 40, 100, count=20)
        self.describe(line, "event 7 gone")
        said = self.run_device("--record", "raw", code=1)
        self.assertIn(f"{DEVICE}: the device is gone (unplugged?)", said)
        recorded, = self.names(r"^2.*\.raw$")
        self.assertEqual(self.read(recorded), b"".join(frames[:7]))

    def test_a_device_that_falls_silent(self):
        line, _ = self.mode("RGGB", "BayerRG8", 100, 40, 100)
        self.describe(line, "event 3 silent")
        self.refused(["no frame for", "is it triggered", "--timeout 0"], "--timeout", "0.5")

    def test_devices_that_cannot_be_used(self):
        line, _ = self.mode("RGGB", "BayerRG8", 100, 40, 100)
        self.describe(line, "event 0 busy")
        self.refused(["another program is using the device"])
        self.describe("capabilities 4000001".replace("4000001", "4001000"), line)
        self.refused(["multi-planar"])
        self.describe("capabilities 4000002", line)
        self.refused(["captures no video"])
        self.describe("capabilities 1", line)
        self.refused(["does not stream"])
        self.describe(self.mode("YUYV", "BayerRG8", 100, 40, 200)[0])
        self.refused(["has no format that kro reads"])
        self.describe(line)
        self.refused(["has no SRGGB10P, but BayerRG8"], "-f", "SRGGB10P")
        self.describe(line.replace(" 100 4000 ", " 99 4000 "))
        self.refused(["promises rows of 99 bytes, expected 100 or more for 100x40 BayerRG8"])
