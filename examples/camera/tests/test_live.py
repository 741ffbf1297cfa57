"""The simulated camera in the real window: what the screen shows, and what keys do."""

from stage import ALGORITHMS, FORMATS, PATIENCE, Case, cli, converted, wait_for

BRIGHT, DARK = 3000 >> 4, 200 >> 4
# White, yellow, cyan, green, magenta, red, blue, black.
BARS = [(1, 1, 1), (1, 1, 0), (0, 1, 1), (0, 1, 0), (1, 0, 1), (1, 0, 0), (0, 0, 1), (0, 0, 0)]
FORMATS_OF_CAMERA = ["BayerRG8", "BayerGR8", "BayerGB8", "BayerBG8", "BayerRG10", "BayerRG12", "BayerRG10p",
                     "BayerRG12p", "BayerRG10Packed", "BayerRG12Packed", "Mono8", "Mono12"]


def bar_colours(name):
    if name.startswith("Mono"):
        return [((200 + 2800 * sum(bar) // 3) >> 4,) * 3 for bar in BARS]
    return [tuple(BRIGHT if lit else DARK for lit in bar) for bar in BARS]


class Live(Case):
    def colours(self, width, height, rgb):
        """Those in the middle of each bar."""
        at = [(height // 4 * width + width * (2 * bar + 1) // 16) * 3 for bar in range(8)]
        return [tuple(rgb[i:i + 3]) for i in at]

    def saved(self, before):
        """The name of the frame that was saved last, once its picture is there too."""
        return wait_for("the saved frame", lambda: [name for name in self.names(r"^2.*\.raw$")
                                                    if name not in before and
                                                    name.split("_")[0] + ".png" in self.names()])[0]

    def test_the_screen_shows_what_the_library_makes_with_each_algorithm(self):
        width, height = 322, 243
        frame = FORMATS["BayerGB10p"].pack(cli.random_samples(width * height, 10))
        self.write("a_322x243_BayerGB10p.raw", frame)
        self.run_program("--replay", "a_322x243_BayerGB10p.raw", "-a", "nearest")
        self.screen.press("i")
        left, top, *size = self.screen.place()
        self.assertEqual(size, [width, height])
        for algorithm in ALGORITHMS:
            self.wait_for_title(algorithm)
            expected = converted(frame, width, height, "BayerGB10p", algorithm)
            wait_for(f"the picture by {algorithm}",
                     lambda: self.screen.rgb(left, top, width, height) == expected)
            self.screen.press("a")
        self.wait_for_title("nearest")

    def test_every_format_of_the_simulated_camera(self):
        program = self.run_program("--aravis", "simulated", "-s", "320x240", "-r", "60")
        seen = []
        for name in FORMATS_OF_CAMERA:
            self.wait_for_title("simulated camera", f"320x240 {name},")
            self.screen.press("s")
            raw = self.saved(seen)
            seen.append(raw)
            self.assertEqual(self.frame_of(raw), (320, 240, name, 0))
            width, height, rgb = self.picture(raw.split("_")[0] + ".png")
            self.assertEqual(rgb, converted(self.read(raw), width, height, name), name)
            self.assertEqual(self.colours(width, height, rgb), bar_colours(name), name)
            self.screen.press("f")
        self.wait_for_title("320x240 BayerRG8,")
        self.screen.press("shift+f")
        self.wait_for_title("320x240 Mono12,")
        self.screen.press("q")
        program.wait(PATIENCE)
        code, said = self.end(program)
        self.assertEqual(code, 0, said)
        self.assertIn("lost", said)

    def test_sizes(self):
        self.run_program("--aravis", "simulated", "-s", "640x480", "-f", "BayerRG12Packed")
        for key, size in (("z", "320x240"), ("z", "2048x2048"), ("z", "1920x1080"), ("shift+z", "2048x2048")):
            self.wait_for_title(" BayerRG12Packed,")
            self.screen.press(key)
            self.wait_for_title(f"{size} BayerRG12Packed,")
        self.screen.press("s")
        raw = self.saved([])
        self.assertEqual(self.frame_of(raw), (2048, 2048, "BayerRG12Packed", 0))
        self.assertEqual(len(self.read(raw)), 2048 * 2048 * 3 // 2)

    def test_a_window_of_other_proportions_is_letterboxed(self):
        self.run_program("--aravis", "simulated", "-s", "320x240")
        self.screen.press("i")
        for width, height, place in ((640, 240, (160, 0, 320, 240)), (320, 480, (0, 120, 320, 240)),
                                     (800, 480, (80, 0, 640, 480))):
            self.screen.xdotool("windowmove", self.screen.window(), 0, 0, "windowsize", self.screen.window(), width,
                                height)
            left, top, inner_width, inner_height = place

            def fits():
                rgb = self.screen.rgb(0, 0, width, height)
                outside = {rgb[3 * (y * width + x):3 * (y * width + x) + 3]
                           for x, y in ((left // 2, height // 2), (width - 1, top // 2), (width - 1 - left // 2, 3))
                           if not (left <= x < left + inner_width and top <= y < top + inner_height)}
                inside = self.screen.rgb(left, top, inner_width, inner_height)
                return outside == {b"\0\0\0"} and self.colours(inner_width, inner_height,
                                                               inside) == bar_colours("BayerRG8")
            wait_for(f"a letterboxed picture in {width}x{height}", fits)

    def white(self):
        """How many pixels of the bars are white, which nothing but letters is there."""
        left, top, width, height = self.screen.place()
        rgb = self.screen.rgb(left, top, width, height // 4 * 3)
        return sum(rgb[i:i + 3] == b"\xff\xff\xff" for i in range(0, len(rgb), 3))

    def test_figures_and_help_come_and_go(self):
        self.run_program("--aravis", "simulated", "-s", "640x480")
        left, top, width, height = self.screen.place()

        def ramp_is_bare():
            # The ramp is grey up to its end; under the figures it is darkened.
            return self.screen.rgb(left + width - 2, top + height - 3, 1, 1)[0] > 200
        wait_for("the figures", lambda: not ramp_is_bare())
        self.screen.press("i")
        wait_for("no figures", ramp_is_bare)
        self.assertEqual(self.white(), 0)
        self.screen.press("h")
        wait_for("the help", lambda: self.white() > 500)
        self.screen.press("h")
        wait_for("no help", lambda: self.white() == 0)

    def test_keys_record(self):
        program = self.run_program("--aravis", "simulated", "-s", "320x240", "-f", "BayerRG10p", "-r", "60")
        self.screen.press("r")
        self.screen.press("p")
        wait_for("pictures", lambda: len(self.names(r"-\d{4}\.png$")) >= 3)
        self.assertEqual(self.names(r"^2.*raw$"), [])
        self.screen.press("p")
        self.screen.press("r")
        raw, = wait_for("the recording", lambda: self.names(r"^2.*raw$"))
        data, size = self.read(raw), 320 * 240 * 10 // 8
        self.assertEqual(len(data) % size, 0)
        frames = [data[at:at + size] for at in range(0, len(data), size)]
        shown = [self.picture(name)[2] for name in self.names(r"png$")]
        made = [converted(frame, 320, 240, "BayerRG10p") for frame in frames]
        # Pictures began later and ended sooner, or with the same frame; between them none is left out.
        start = made.index(shown[0])
        self.assertEqual(made[start:start + len(shown)], shown)
        # The square moves from frame to frame.
        self.assertEqual(len(set(frames)), len(frames))
        self.screen.press("q")
        program.wait(PATIENCE)
        code, said = self.end(program)
        self.assertEqual(code, 0, said)
        self.assertIn(f"{len(frames)} frames in {raw}", said)
        self.assertIn(f"{len(shown)} pictures in", said)

    def test_a_change_of_format_begins_another_file(self):
        program = self.run_program("--aravis", "simulated", "-s", "320x240", "--record", "raw")
        wait_for("a frame to be recorded", self.names)
        self.screen.press("f")
        self.wait_for_title("BayerGR8")
        wait_for("the first file", lambda: self.names(r"^2.*_BayerRG8\.raw$"))
        self.screen.press("q")
        program.wait(PATIENCE)
        self.assertEqual(len(self.names(r"^2.*_BayerGR8\.raw$")), 1)
        self.assertEqual(self.names(r"part$"), [])
