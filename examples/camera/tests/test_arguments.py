"""Called wrongly, or with files that are not what they are said to be: one line that says what and what was expected."""

from stage import Case


class Arguments(Case):
    def test_help_names_every_option_and_key(self):
        code, out, said = self.call("--help")
        self.assertEqual((code, said), (0, ""))
        for word in ("--aravis", "--v4l2", "--replay", "--list", "--format", "--size", "--stride", "--rate",
                     "--algorithm", "--frames", "--timeout", "--record", "--output", "--full-screen", "Keys:",
                     "Examples:", "Exit codes:"):
            self.assertIn(word, out)

    def test_list_names_the_simulated_camera(self):
        code, out, _ = self.call("--list")
        self.assertEqual(code, 0)
        self.assertIn("--aravis simulated (needs no camera)\n", out)

    def test_wrong_calls(self):
        usage = ["see kro-camera --help"]
        for says, arguments in (
                (["no camera", "--aravis", "--v4l2", "--replay"], []),
                (["more than one of"], ["--aravis", "--replay", "x.raw"]),
                (["'--speed'", "no such option"], ["--aravis", "--speed", "3"]),
                (["'-x'", "no such option"], ["--aravis", "-x"]),
                (["--size", "expected a value"], ["--aravis", "--size"]),
                (["size '640'", "WIDTHxHEIGHT"], ["--aravis", "-s", "640"]),
                (["size '3x480'", "4 or more"], ["--aravis", "-s", "3x480"]),
                (["size '640x480x3'"], ["--aravis", "-s", "640x480x3"]),
                (["format 'bayerrg12P'", "BayerRG12p"], ["--aravis", "-f", "bayerrg12P"]),
                (["format 'RGB8'"], ["--aravis", "-f", "RGB8"]),
                (["algorithm 'best'", "nearest, bilinear, edge or fine"], ["--aravis", "-a", "best"]),
                (["--rate fast", "expected a number"], ["--aravis", "-r", "fast"]),
                (["--frames 0", "from 1"], ["--aravis", "-n", "0"]),
                (["--frames 1.5", "whole number"], ["--aravis", "-n", "1.5"]),
                (["--timeout -1"], ["--aravis", "--timeout", "-1"]),
                (["--record jpg", "raw, png or raw,png"], ["--aravis", "--record", "jpg"]),
                (["'two'", "one ID"], ["--aravis", "one", "two"]),
                (["0 devices", "/dev/video0"], ["--v4l2"]),
                (["no file", "--replay"], ["--replay"]),
                (["--stride is for --replay"], ["--aravis", "--stride", "900"])):
            self.fails(2, says + usage, *arguments)

    def test_files_that_do_not_say_what_they_are(self):
        self.write("frames.bin", bytes(64))
        self.fails(2, ["frames.bin", "format and size are unknown", "--format and --size"], "--replay", "frames.bin")
        self.fails(2, ["frames.bin", "stride 7", "expected 8 or more"], "--replay", "frames.bin", "-s", "8x8", "-f",
                   "BayerRG8", "--stride", "7")

    def test_files_that_cannot_be(self):
        self.write("a_8x8_BayerRG8.raw", bytes(63))
        self.write("b_8x8_BayerRG8.raw", b"")
        self.fails(1, ["a_8x8_BayerRG8.raw", "63 bytes", "multiple of 64", "8x8 BayerRG8"], "--replay",
                   "a_8x8_BayerRG8.raw")
        self.fails(1, ["b_8x8_BayerRG8.raw", "0 bytes"], "--replay", "b_8x8_BayerRG8.raw")
        self.fails(1, ["none_8x8_BayerRG8.raw", "No such file"], "--replay", "none_8x8_BayerRG8.raw")

    def test_folders_devices_cameras_and_screens_that_are_not_there(self):
        self.write("a_8x8_BayerRG8.raw", bytes(64))
        self.fails(1, ["elsewhere", "no folder"], "--replay", "a_8x8_BayerRG8.raw", "-o", "elsewhere")
        self.fails(1, ["/dev/video99", "cannot be opened", "No such file"], "--v4l2", "/dev/video99")
        self.fails(1, ["/dev/null", "no device of Video4Linux"], "--v4l2", "/dev/null")
        self.fails(1, ["camera 127.0.0.99", "not found"], "--aravis", "127.0.0.99")
        self.fails(1, ["no window can be opened"], "--replay", "a_8x8_BayerRG8.raw", DISPLAY=":9999")
        self.fails(1, ["simulated camera", "has no SRGGB10P, but BayerRG8"], "--aravis", "simulated", "-f", "SRGGB10P")
