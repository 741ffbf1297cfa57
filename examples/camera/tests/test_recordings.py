"""What is recorded: the very bytes that came, pictures that the library makes of them, whole files or none."""

import os
import resource
import signal
import subprocess
import unittest

from stage import FORMATS, PATIENCE, PROGRAM, Case, cli, converted, wait_for

# Without a window that anybody sees, where only files matter.
UNSEEN = {"SDL_VIDEODRIVER": "dummy"}


class Recordings(Case):
    def frames(self, name, width, height, stride=0, count=3):
        """Random frames as a camera sends them."""
        kind = FORMATS[name]
        each = [cli.random_samples(width * height, kind.bits, seed) for seed in range(count)]
        return [kind.pack(samples, width, stride) for samples in each]

    def replay(self, *arguments):
        code, out, said = self.call("--replay", *arguments, "-r", "200", **UNSEEN)
        self.assertEqual((code, out), (0, ""), said)
        return said

    @unittest.skipIf(os.path.exists("/dev/dri"), "SDL can draw on this machine's screen without a server")
    def test_a_machine_without_a_screen_is_told(self):
        self.write("a_64x48_BayerRG8.raw", self.frames("BayerRG8", 64, 48)[0])
        without = {name: value for name, value in self.screen.environment.items()
                   if name not in ("DISPLAY", "WAYLAND_DISPLAY", "SDL_VIDEODRIVER")}
        for environment, told in ((without, True), ({**without, **UNSEEN}, False)):
            done = subprocess.run([PROGRAM, "--replay", "a_64x48_BayerRG8.raw", "-n", "2"], cwd=self.folder, env=environment,
                                  stderr=subprocess.PIPE, text=True, timeout=120)
            self.assertEqual((done.returncode, "no screen is there" in done.stderr), (0, told), done.stderr)

    def test_raw_and_pictures_of_many_layouts(self):
        for name, width, height, stride in (("BayerRG8", 64, 48, 0), ("BayerGB12Packed", 62, 40, 0),
                                            ("BayerBG10p", 64, 32, 0), ("Mono12p", 50, 30, 0), ("SRGGB8", 50, 20, 80),
                                            ("BayerGR16", 36, 20, 96), ("SRGGB10P", 50, 20, 96),
                                            ("SBGGR12P", 50, 20, 80)):
            name = name.replace("SRGGB8", "BayerRG8")
            frames = self.frames(name, width, height, stride)
            self.write("frames.bin", b"".join(frames))
            layout = ["-f", name, "-s", f"{width}x{height}"] + (["--stride", str(stride)] if stride else [])
            said = self.replay("frames.bin", *layout, "-n", "3", "--record", "raw,png", "-a", "bilinear")
            self.assertIn("3 frames, 0 lost", said)
            recorded, = self.names(r"\.raw$")
            self.assertEqual(self.frame_of(recorded), (width, height, name, stride))
            row = len(FORMATS[name].pack([0] * width))
            expected = b"".join(frame[:-(stride - row)] + bytes(stride - row) if stride else frame for frame in frames)
            self.assertEqual(self.read(recorded), expected, name)
            shown = self.names(r"\.png$")
            self.assertEqual(len(shown), 3)
            for frame, picture in zip(frames, shown):
                self.assertEqual(self.picture(picture), (
                    width, height, converted(frame, width, height, name, "bilinear", stride)), (name, picture))
            self.assertEqual(self.names(r"part$"), [])
            for file in self.names():
                os.remove(self.path(file))

    def test_a_recording_is_replayed_by_its_name(self):
        frames = self.frames("SRGGB10P", 50, 20, 96)
        self.write("a_50x20_SRGGB10P_stride96.raw", b"".join(frames))
        self.replay("a_50x20_SRGGB10P_stride96.raw", "-n", "7", "--record", "png")
        shown = [self.picture(name)[2] for name in self.names(r"\.png$")]
        once = [converted(frame, 50, 20, "SRGGB10P", "edge", 96) for frame in frames]
        self.assertEqual(shown, once + once + once[:1])

    def test_the_command_reads_a_recording_by_its_name(self):
        self.write("a_64x48_BayerGR12Packed.raw", self.frames("BayerGR12Packed", 64, 48)[0])
        self.replay("a_64x48_BayerGR12Packed.raw", "-n", "1", "--record", "raw,png")
        recorded, = self.names(r"-01_.*\.raw$|-02_.*\.raw$")
        subprocess.run([cli.COMMAND, "convert", recorded, "-o", "command.png"], cwd=self.folder, check=True,
                       stderr=subprocess.DEVNULL)
        own, = self.names(r"^2.*\.png$")
        self.assertEqual(self.picture(own), self.picture("command.png"))

    def test_files_of_one_mode_follow_each_other(self):
        first, second = self.frames("BayerRG8", 64, 48, count=2)
        self.write("a_64x48_BayerRG8.raw", first)
        self.write("b_32x32_Mono8.raw", bytes(32 * 32))
        self.write("c_64x48_BayerRG8.raw", second)
        self.replay("a_64x48_BayerRG8.raw", "b_32x32_Mono8.raw", "c_64x48_BayerRG8.raw", "-n", "3", "--record", "raw")
        recorded, = self.names(r"^2.*\.raw$")
        self.assertEqual(self.read(recorded), first + second + first)

    def test_a_file_that_shrinks_meanwhile(self):
        frames = self.frames("BayerRG8", 640, 480, count=2)
        path = self.write("a_640x480_BayerRG8.raw", b"".join(frames))
        program = self.run_program("--replay", "a_640x480_BayerRG8.raw", "-r", "50", "--record", "raw")
        os.truncate(path, 1000)
        program.wait(PATIENCE)
        code, said = self.end(program)
        self.assertEqual(code, 1, said)
        self.assertIn("a_640x480_BayerRG8.raw: has become shorter", said)
        # What had come by then stays, in whole frames.
        recorded, = self.names(r"^2.*\.raw$")
        data = self.read(recorded)
        self.assertEqual(len(data) % len(frames[0]), 0)
        self.assertEqual(data[:len(frames[0])], frames[0])

    def begin(self, size="320x240"):
        """A recording that has begun: nothing is there under its name yet."""
        program = subprocess.Popen([PROGRAM, "--aravis", "simulated", "-s", size, "--record", "raw"], cwd=self.folder,
                                   stderr=subprocess.PIPE, env={**self.screen.environment, **UNSEEN})
        self.addCleanup(self.end, program)
        wait_for("bytes", lambda: any(os.path.getsize(self.path(name)) > 0 for name in self.names(r"\.part$")))
        self.assertEqual(self.names(r"^2"), [])
        return program

    def test_signals_finish_a_recording(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            program = self.begin()
            program.send_signal(number)
            code, said = self.end(program)
            self.assertEqual(code, 0, said)
            recorded, = self.names()
            self.assertEqual(self.frame_of(recorded), (320, 240, "BayerRG8", 0))
            self.assertEqual(os.path.getsize(self.path(recorded)) % (320 * 240), 0)
            self.assertIn(f" in {recorded}\n", said)
            os.remove(self.path(recorded))

    def test_a_killed_program_leaves_no_file_of_that_name(self):
        program = self.begin()
        program.kill()
        program.wait()
        self.assertEqual(self.names(r"^2"), [])

    def test_a_full_disk_ends_the_recording_and_leaves_nothing(self):
        limit = 200000
        done = subprocess.run(
            [PROGRAM, "--aravis", "simulated", "-s", "320x240", "--record", "raw", "-n", "10", "-r", "100"],
            cwd=self.folder, stderr=subprocess.PIPE, env={**self.screen.environment, **UNSEEN}, timeout=60,
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
        said = done.stderr.decode()
        self.assertEqual(done.returncode, 1, said)
        self.assertIn("_320x240_BayerRG8.raw: cannot be written: File too large", said)
        self.assertRegex(said, r"10 frames, \d+ lost")  # the simulated camera does not wait for a machine under load
        self.assertEqual(self.names(), [])
