#!/usr/bin/env python3
"""What the package costs and gains: a call, two threads on two frames, bands of one. Best of several rounds, taken in
turns; figures are the machine's."""

import argparse
import threading
import time
import timeit

import kro
import numpy

ROUNDS = 9


def microseconds(statement, names, number):
    timer = timeit.Timer(statement, timer=time.thread_time, globals=names)
    return min(timer.repeat(ROUNDS, number)) / number * 1e6


def report_calls():
    frame = numpy.zeros((4, 8), "u1")
    names = {"kro": kro, "frame": frame, "out": numpy.empty((4, 8, 3), "u1"), "packed": bytes(48)}
    for what, call in (("array, out=", "kro.convert(frame, 'BayerRG8', out=out)"),
                       ("array, new picture", "kro.convert(frame, 'BayerRG8')"),
                       ("bytes, everything named", "kro.convert(packed, 'BayerRG12p', shape=(4, 8), algorithm='edge', "
                                                   "output='RGB8', out=out, threads=None, bits=None)")):
        print(f"call, 8x4, {what:<24} {microseconds(call, names, 20000):8.2f} us")


def two_at_once(convert):
    other = threading.Thread(target=convert, args=(1,))
    other.start()
    convert(0)
    other.join()


def report_threads(height, width, turns):
    frames = numpy.random.default_rng(1).integers(0, 256, (2, height, width), "u1")
    pictures = numpy.empty((2, height, width, 3), "u1")

    def convert(which, threads=None):
        for _ in range(turns):
            kro.convert(frames[which], "BayerRG8", out=pictures[which], threads=threads)

    best = {"one": 1e9, "two": 1e9, "bands": 1e9}
    for _ in range(ROUNDS):
        best["one"] = min(best["one"], timeit.timeit(lambda: (convert(0), convert(1)), number=1))
        best["two"] = min(best["two"], timeit.timeit(lambda: two_at_once(convert), number=1))
        best["bands"] = min(best["bands"], timeit.timeit(lambda: (convert(0, 2), convert(1, 2)), number=1))
    frame = best["one"] / turns / 2 * 1e3
    print(f"{width}x{height} BayerRG8, edge, one thread {frame:9.3f} ms a frame")
    print(f"  two threads on two frames      {best['one'] / best['two']:8.2f} x")
    print(f"  threads=2 on each frame        {best['one'] / best['bands']:8.2f} x")


def main():
    parser = argparse.ArgumentParser(description="Measures what kro.convert costs and gains.")
    parser.parse_args()
    report_calls()
    report_threads(480, 640, 1500)
    report_threads(2048, 2448, 30)


if __name__ == "__main__":
    main()
