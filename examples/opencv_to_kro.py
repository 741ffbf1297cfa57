#!/usr/bin/env python3
"""cv2.cvtColor's demosaicing replaced by kro's, and what that changes: time for a frame, and likeness to the picture
that the frame was made of (PSNR, higher is better).

    opencv_to_kro.py [PICTURE]     without one, of a scene drawn here

Needs NumPy, OpenCV's Python module and kro.
"""

import argparse
import sys
import timeit

import cv2
import kro
import numpy


# ---- the replacement ----

def by_opencv(frame):
    return cv2.cvtColor(frame, cv2.COLOR_BayerBG2BGR_EA)


def by_kro(frame, picture):
    return kro.convert(frame, "BayerRG8", output="BGR8", algorithm="edge", out=picture)  # OpenCV's "BG" begins with red


# ---- what it brings ----

def drawn_scene(height=960, width=1280):
    """Rings, slopes and shades on tiles of other tints, drawn four times as large; as in photographs, what divides light
    from dark does so in all colours."""
    y, x = numpy.mgrid[0:4 * height, 0:4 * width].astype("f4") / 4
    rings = 0.5 + 0.5 * numpy.sin(((x - width / 2) ** 2 + (y - height / 2) ** 2) / 900)
    slopes = (x + 2 * y) % 96 < 48
    light = (0.3 + 0.5 * rings) * (0.6 + 0.4 * slopes) * (0.7 + 0.3 * x / width)
    tints = numpy.random.default_rng(1).uniform(0.4, 1, (8, 8, 3)).astype("f4")
    scene = light[..., None] * tints[(y * 8 / height).astype("i4"), (x * 8 / width).astype("i4")]
    return cv2.resize((scene * 255).astype("u1"), (width, height), interpolation=cv2.INTER_AREA)


def mosaic_of(picture):
    """What a sensor whose first row begins with red and green sees of a BGR picture."""
    frame = picture[..., 1].copy()
    frame[0::2, 0::2] = picture[0::2, 0::2, 2]
    frame[1::2, 1::2] = picture[1::2, 1::2, 0]
    return frame


def psnr(picture, result):
    """Without the outermost pixels, where OpenCV repeats its neighbours."""
    difference = picture[4:-4, 4:-4].astype("f8") - result[4:-4, 4:-4]
    return 10 * numpy.log10(255 ** 2 / numpy.mean(difference ** 2))


def milliseconds(work):
    return min(timeit.repeat(work, number=5, repeat=7)) / 5 * 1e3


def main():
    parser = argparse.ArgumentParser(description="Compares cv2.cvtColor's demosaicing with kro's on one frame.")
    parser.add_argument("picture", nargs="?", metavar="PICTURE", help="a photograph; without one a scene is drawn")
    path = parser.parse_args().picture
    picture = drawn_scene() if path is None else cv2.imread(path)
    if picture is None:
        sys.exit(f"opencv_to_kro: {path}: cannot be read as a picture")
    frame = mosaic_of(picture)
    out = numpy.empty_like(picture)
    cv2.setNumThreads(1)
    height, width = frame.shape
    print(f"{width}x{height} BayerRG8, one thread each{'':8}ms a frame   PSNR in dB")
    for name, work in (("cv2.cvtColor, edge-aware", lambda: by_opencv(frame)),
                       ("cv2.cvtColor, bilinear",
                        lambda: cv2.cvtColor(frame, kro.to_opencv_code("BayerRG8", "BGR8", "bilinear"))),
                       ("kro.convert, edge", lambda: by_kro(frame, out)),
                       ("kro.convert, bilinear",
                        lambda: kro.convert(frame, "BayerRG8", output="BGR8", algorithm="bilinear", out=out))):
        print(f"  {name:<36}{milliseconds(work):10.3f}{psnr(picture, work()):13.2f}")


if __name__ == "__main__":
    main()
