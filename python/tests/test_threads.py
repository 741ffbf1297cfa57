"""Threads of the interpreter's and of the library's."""

import os
import subprocess
import sys
import threading
from concurrent.futures import ThreadPoolExecutor

import kro
import native
import numpy


def runs_meanwhile(work, attempts):
    """Whether another thread gets on while this one is at work, which it does only where the lock is released: nobody
    asks this thread for it."""
    before = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    go, ran = threading.Lock(), threading.Event()
    go.acquire()
    other = threading.Thread(target=lambda: (go.acquire(), ran.set()))
    other.start()
    try:
        go.release()
        for _ in range(attempts):
            work()
            if ran.is_set():
                return True
        return False
    finally:
        sys.setswitchinterval(before)
        other.join()


def test_the_lock_is_released():
    frame = numpy.zeros((3000, 4000), "u1")
    out = numpy.empty((3000, 4000, 3), "u1")
    numbers = list(range(300000))
    assert not runs_meanwhile(lambda: sorted(numbers), 30)
    assert runs_meanwhile(lambda: kro.convert(frame, "BayerRG8", out=out), 200)
    # A copy takes time, too.
    kro.convert(frame, "BayerRG8", out=out, threads=2)
    assert runs_meanwhile(lambda: kro.convert(frame, "BayerRG8", out=out, threads=2), 200)


def test_parts_make_the_whole():
    data = native.random_frame("BayerGR12Packed", 701, 900)
    expected = native.picture(data, "BayerGR12Packed", 701, 900)
    for threads in (1, 2, 3, 7, 1 << 40):
        assert numpy.array_equal(kro.convert(data, "BayerGR12Packed", (701, 900), threads=threads), expected), threads


def test_many_threads_at_once():
    frames = [native.random_frame("BayerRG8", 800, 640 + 2 * i, i) for i in range(8)]
    expected = [native.picture(frame, "BayerRG8", 800, 640 + 2 * i) for i, frame in enumerate(frames)]

    def convert(call):
        i = call % len(frames)
        result = kro.convert(frames[i], "BayerRG8", (800, 640 + 2 * i), threads=1 + call % 3)
        return numpy.array_equal(result, expected[i])

    with ThreadPoolExecutor(6) as pool:
        assert all(pool.map(convert, range(96)))


def test_a_forked_process_has_threads_of_its_own():
    data = native.random_frame("BayerRG8", 720, 720)
    expected = native.picture(data, "BayerRG8", 720, 720)
    assert numpy.array_equal(kro.convert(data, "BayerRG8", (720, 720), threads=3), expected)
    child = os.fork()
    if child == 0:
        try:
            good = all(numpy.array_equal(kro.convert(data, "BayerRG8", (720, 720), threads=threads), expected)
                       for threads in (3, 2))
            os._exit(0 if good else 1)
        except BaseException:
            os._exit(2)
    assert os.waitpid(child, 0)[1] == 0


def succeeds(program):
    """A process of its own that must end well and say nothing."""
    result = subprocess.run([sys.executable, "-B", "-c", program], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            timeout=120)
    return (result.returncode, result.stdout) == (0, b"") or (result.returncode, result.stdout)


def test_threads_that_still_convert_when_the_interpreter_ends():
    program = ("import kro, threading, time\n"
               "def convert():\n"
               "    while True: kro.convert(bytes(960 * 640), 'BayerRG8', (640, 960), threads=2)\n"
               "for _ in range(4): threading.Thread(target=convert, daemon=True).start()\n"
               "time.sleep(0.05)\n")
    for _ in range(5):
        assert succeeds(program) is True


def test_a_package_that_is_imported_again():
    program = ("import sys, os, kro\n"
               "for name in [name for name in sys.modules if name.startswith('kro')]: del sys.modules[name]\n"
               "import kro\n"
               "kro.convert(bytes(518400), 'BayerRG8', (720, 720), threads=2)\n"
               "child = os.fork()\n"
               "if child == 0: os._exit(0)\n"
               "assert os.waitpid(child, 0)[1] == 0\n")
    assert succeeds(program) is True
