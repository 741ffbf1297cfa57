"""A camera that speaks GigE Vision, in a process of its own: over the network's own loop, and unplugged."""

import os
import subprocess

from stage import PATIENCE, Case, converted, wait_for

ADDRESS = "127.0.0.1"


class Gige(Case):
    def setUp(self):
        super().setUp()
        self.camera = subprocess.Popen([os.environ["KRO_GIGE_CAMERA"], ADDRESS, "K7"], stdout=subprocess.PIPE)
        self.addCleanup(self.unplug)
        self.assertEqual(self.camera.stdout.readline(), b"running\n")

    def unplug(self):
        self.camera.kill()
        self.camera.wait()
        self.camera.stdout.close()

    def test_frames_and_pictures(self):
        code, _, said = self.call("--aravis", ADDRESS, "-f", "BayerGB8", "-s", "320x240", "-n", "3", "--record",
                                  "raw,png", SDL_VIDEODRIVER="dummy")
        self.assertEqual(code, 0, said)
        raw, = self.names(r"raw$")
        self.assertEqual(self.frame_of(raw), (320, 240, "BayerGB8", 0))
        data, size = self.read(raw), 320 * 240
        self.assertEqual(len(data), 3 * size)
        for number, name in enumerate(self.names(r"png$")):
            frame = data[number * size:(number + 1) * size]
            self.assertEqual(self.picture(name), (320, 240, converted(frame, 320, 240, "BayerGB8")))
        self.assertEqual(len(self.names(r"png$")), 3)

    def test_it_is_unplugged(self):
        program = self.run_program("--aravis", ADDRESS, "-s", "320x240", "--record", "raw", "--timeout",
                                   str(PATIENCE - 5))
        wait_for("frames", lambda: any(os.path.getsize(self.path(name)) > 320 * 240 for name in self.names("part$")))
        self.unplug()
        program.wait(PATIENCE)
        code, said = self.end(program)
        self.assertEqual(code, 1, said)
        self.assertIn("Aravis Fake K7: the camera is gone (unplugged, or taken by another program)\n", said)
        raw, = self.names()
        self.assertEqual(len(self.read(raw)) % (320 * 240), 0)
