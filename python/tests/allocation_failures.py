"""Every allocation of a call fails in turn, alone and with the twenty that follow: the call then gives what it gives
otherwise, or MemoryError. Runs with failing_malloc preloaded and PYTHONMALLOC=malloc, which leads all of Python's
allocations there."""

import ctypes
import os
import sys
import tempfile
import warnings

import kro
import native
import numpy

ONE, SOME, NEVER = ctypes.c_long(1), ctypes.c_long(21), ctypes.c_long(0)
LIBC = ctypes.PyDLL(None)
fail_at = LIBC.kroFailAt
fail_at.restype = ctypes.c_long


def stop():
    """How many allocations there were; asked until memory is there for the answer."""
    while True:
        try:
            return fail_at(NEVER, ONE)
        except (MemoryError, ctypes.ArgumentError):
            pass


def failing(work, number, failures):
    """What a call gives where an allocation of it fails, or MemoryError, and whether it made that many."""
    place = ctypes.c_long(number)
    result = MemoryError
    stop()
    try:
        fail_at(place, failures)
        result = work()
    except MemoryError:
        pass
    except Exception as error:
        result = error
    count = stop()
    return result, count >= number


def same(result, expected):
    if isinstance(expected, numpy.ndarray):
        return isinstance(result, numpy.ndarray) and numpy.array_equal(result, expected)
    if isinstance(expected, Exception):
        return type(result) is type(expected) and str(result) == str(expected)
    return result == expected


def every_failure(name, work, expected, last=None):
    """Each allocation, or each of the last so many."""
    failed = 0
    fail_at(NEVER, ONE)
    work()
    first = 1 if last is None else stop() - last
    for failures in (ONE, SOME):
        number, reached = first - 1, True
        while reached:
            number += 1
            result, reached = failing(work, number, failures)
            if result is MemoryError:
                failed += 1
            elif not same(result, expected):
                stop()
                sys.exit(f"{name}: with allocation {number} failing: {result!r}")
    # Without one nothing was made to fail.
    if failed == 0:
        sys.exit(f"{name}: no allocation failed")
    print(f"{name}: {failed} failures, each a MemoryError or made good")


def refused(frame):
    try:
        kro.convert(frame, "BayerRG8", shape=(7, 8))
    except ValueError as error:
        return error


def main():
    warnings.simplefilter("ignore", kro.CopyWarning)
    data = native.random_frame("BayerRG10p", 8, 16)
    expected = native.picture(data, "BayerRG10p", 8, 16)
    every_failure("convert", lambda: kro.convert(data, "BayerRG10p", (8, 16)), expected)
    spellings = iter(["BayerRG10p" + "_" * i for i in range(1, 1000)])
    every_failure("new names", lambda: kro.convert(data, next(spellings), (8, 16), output="RGB_8" + "_"), expected)
    large = native.random_frame("BayerRG12", 720, 720)
    samples = numpy.frombuffer(large, "u2").reshape(720, 720)
    out = numpy.empty((720, 720, 3), "u1")
    whole = native.picture(large, "BayerRG12", 720, 720)
    counts = iter(range(1 << 30))
    every_failure("threads", lambda: kro.convert(samples, "BayerRG12", out=out, threads=2 + next(counts) % 2), whole)
    turned = samples[:8, 15::-1]
    # Behind the warning, within which Python 3.11 itself crashes where it has no memory for a frame object.
    every_failure("a copy", lambda: kro.convert(turned, "BayerRG12"),
                  native.picture(numpy.ascontiguousarray(turned).tobytes(), "BayerRG12", 8, 16), last=5)
    every_failure("a refusal", lambda: refused(data), refused(data))
    every_failure("formats", kro.formats, kro.formats())
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "film_16x8_BayerRG10p.raw")
        with open(path, "wb") as file:
            file.write(data * 2)
        every_failure("read_frames", lambda: kro.read_frames(path)[1].tobytes(), data)


if __name__ == "__main__":
    main()
