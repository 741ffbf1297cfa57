#!/usr/bin/env python3
"""Writes the seeds that can be written down: fuzz/make_seeds.py COMMAND (kro, which makes the JPEG files).

Other files there are inputs on which something went wrong once."""

import os
import random
import struct
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "cli"))
from pictures import write_bmp, write_npy, write_pgm, write_png, write_ppm, write_tiff  # noqa: E402

W, H = 8, 6
GREY, COLOUR = list(range(W * H)), [i * 5 % 256 for i in range(W * H * 3)]
DEEP = [i * 85 for i in range(W * H)]


def jpegs(command):
    with tempfile.TemporaryDirectory() as folder:
        frame = os.path.join(folder, "f.raw")
        with open(frame, "wb") as file:
            file.write(bytes(GREY))
        for output in ("Mono8", "RGB8"):
            picture = os.path.join(folder, output + ".jpg")
            subprocess.run([command, "convert", frame, "-f", "rggb8", "-s", f"{W}x{H}", "-O", output, "-q", "-o", picture],
                           check=True)
            with open(picture, "rb") as file:
                yield output.lower() + ".jpg", file.read()


def pictures():
    yield "grey.pgm", write_pgm(W, H, GREY)
    yield "deep.pgm", write_pgm(W, H, DEEP, 4095)
    yield "plain.pgm", b"P2 4 4\n# plain\n15\n" + b" 7" * 16
    yield "plain.ppm", b"P3\n4 4\n255\n" + b"1 2 3\n" * 16
    yield "colour.ppm", write_ppm(W, H, COLOUR)
    yield "grey.png", write_png(W, H, 1, GREY)
    yield "deep.png", write_png(W, H, 1, DEEP, 16)
    yield "colour.png", write_png(W, H, 3, COLOUR)
    yield "alpha.png", write_png(W, H, 4, GREY * 4)
    yield "colour.bmp", write_bmp(W, H, 3, COLOUR)
    yield "downwards.bmp", write_bmp(W, H, 4, GREY * 4, upwards=False)
    yield "palette.bmp", write_bmp(W, H, 1, [i % 4 for i in GREY], palette=[9, 9, 9, 0, 1, 2, 3, 0, 7, 7, 7, 0, 4, 5, 6, 0])
    yield "grey.tif", write_tiff([(W, H, 1, GREY, 8)])
    yield "pages.tif", write_tiff([(W, H, 1, DEEP, 16), (W, H, 1, DEEP, 16)], order=">")
    yield "strips.tif", write_tiff([(W, H, 3, COLOUR, 8)], rows_per_strip=4, compression=8)
    yield "white.tif", write_tiff([(W, H, 1, GREY, 8)], white_is_zero=True)


def containers():
    """Eight bytes decide name and options (containers.cpp), the file follows."""
    def seed(name, content, *options):
        return bytes([name, *options]).ljust(8, b"\0") + content
    files = dict(pictures())
    yield "pgm", seed(0, files["grey.pgm"])
    yield "pgm-size", seed(0, files["deep.pgm"], 0, 3)
    yield "png", seed(1, files["deep.png"])
    yield "tif", seed(2, files["pages.tif"], 2)
    yield "npy", seed(3, write_npy((H, W), GREY))
    yield "npy-stack", seed(3, write_npy((2, H, W), DEEP * 2, kind=">u2"), 3)
    yield "npy-2", seed(3, write_npy((H, W), DEEP, kind="<u2", version=2))
    yield "raw", seed(4, bytes(GREY))
    yield "raw-packed", seed(5, bytes(72), 0)
    yield "raw-stride", seed(4, bytes(96), 0, 0, 4)
    yield "raw-csi2", seed(6, bytes(24))
    yield "raw-words", seed(7, struct.pack(">32H", *DEEP[:32]))
    yield "raw-options", seed(8, bytes(61), 3, 3, 0, 3)
    yield "raw-far", seed(9, bytes(GREY), 2, 4, 6)


def names():
    for i, name in enumerate((
            "BayerRG8", "SRGGB12P", "bayer_rggb16le", "rggb12packed", "pRCC", "0x01080009", "Y16_BE", "gray10p", "1280x960",
            "shot_1280x960_BayerRG12Packed_0001.raw", "cam 2448X2048 10bit rggb.bin", "4x4", "2-5", "3-", "18446744073709551616",
            "999999999999999999", "{name}-{frame}.png", "out/%04d.tif", "a{{b}}%%.jpg", "{nam}.ppm", "%99d.png", ".png", "RGB8Planar")):
        yield f"{i:02}", name.encode()


def calls(target, count):
    source = random.Random(target)
    for i in range(count):
        yield f"{i:02}", source.randbytes(32 + 8 * i)


def main():
    groups = {"pictures": [*pictures(), *jpegs(sys.argv[1])], "containers": [*containers()], "names": [*names()]}
    groups.update((target, [*calls(target, 24)]) for target in ("handle", "view", "tables", "gstreamer"))
    for target, seeds in groups.items():
        folder = os.path.join(HERE, "seeds", target)
        os.makedirs(folder, exist_ok=True)
        for name, content in seeds:
            with open(os.path.join(folder, name), "wb") as file:
                file.write(content)
        print(f"{target}: {len(seeds)} seeds")


if __name__ == "__main__":
    main()
