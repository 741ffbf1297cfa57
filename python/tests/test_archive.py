"""The archive converter: workers and whole runs are killed midway, and every byte is that of a plain loop."""

import fcntl
import importlib
import os
import re
import shutil
import signal
import subprocess
import sys
import time

import dask
import kro
import numpy
import pytest

SCRIPT = os.path.join(os.path.dirname(__file__), "..", "..", "examples", "archive", "convert_archive.py")
FRAMES = 40
FORMATS = ("BayerRG8", "BayerGB12p", "BayerBG10", "Mono8")


@pytest.fixture
def tree(tmp_path):
    """Containers of several formats in several folders, and one that is none."""
    generator = numpy.random.default_rng(7)
    source = tmp_path / "source"
    for number in range(12):
        pixel_format = FORMATS[number % len(FORMATS)]
        folder = source / f"day {number % 3}" / "camera"
        folder.mkdir(parents=True, exist_ok=True)
        bits = int(re.search(r"\d+", pixel_format)[0])
        size = FRAMES * 320 * 240 * (16 if bits == 10 else bits) // 8
        frames = generator.integers(0, 256, size, "u1")
        if bits == 10:
            frames[1::2] &= 3
        (folder / f"film{number}_320x240_{pixel_format}.raw").write_bytes(frames.tobytes())
    numpy.save(source / "stack_grbg.npy", generator.integers(0, 256, (5, 30, 40), "u1"))
    (source / "short_320x240_BayerRG8.raw").write_bytes(b"short")
    yield source, tmp_path / "target"
    shutil.rmtree(tmp_path)


def start(source, target, *options):
    return subprocess.Popen([sys.executable, "-B", SCRIPT, str(source), str(target), "--workers", "2", *options],
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True)


def finish(process):
    out, err = process.communicate(timeout=240)
    return process.returncode, out.decode(), err.decode()


def expected_of(path):
    frames = kro.read_frames(path)
    return numpy.stack([kro.convert(frame, frames.format, shape=frames.shape) for frame in frames])


def require_all_bytes(source, target):
    made = sorted(str(path.relative_to(target)) for path in target.rglob("*") if path.is_file())
    wanted = sorted(f"{path.relative_to(source)}.npy" for path in source.rglob("*")
                    if path.is_file() and not path.name.startswith("short"))
    assert made == sorted([*wanted, ".made-with.json"])
    for name in wanted:
        assert numpy.array_equal(numpy.load(target / name), expected_of(source / name[:-4])), name


def stopped_worker(target, process):
    """A worker that stands still in the midst of a container, and the part file of that."""
    while process.poll() is None:
        for part in target.rglob("*.part"):
            found = re.search(r"-(\d+)\.part$", part.name)
            if found is None:
                continue
            os.kill(int(found[1]), signal.SIGSTOP)
            if part.exists():
                return int(found[1]), part
            os.kill(int(found[1]), signal.SIGCONT)
        time.sleep(0.001)
    pytest.fail("the run ended before a worker could be stopped: " + str(finish(process)))


def test_a_killed_worker_loses_nothing_and_nothing_is_made_twice(tree):
    source, target = tree
    process = start(source, target)
    worker, part = stopped_worker(target, process)
    assert not (part.parent / (part.name.split(".npy.")[0] + ".npy")).exists()
    os.kill(worker, signal.SIGKILL)
    code, out, err = finish(process)
    assert code == 1 and out == f"13 containers converted ({12 * FRAMES + 5} frames), 0 were there, 1 failed\n", (code, out, err)
    assert "short_320x240_BayerRG8.raw: has 5 bytes, but one 320x240 BayerRG8 frame takes 76800" in err
    require_all_bytes(source, target)
    before = {path: (path.stat().st_ino, path.stat().st_mtime_ns) for path in target.rglob("*.npy")}
    (source / "short_320x240_BayerRG8.raw").unlink()
    assert finish(start(source, target)) == (0, "0 containers converted (0 frames), 13 were there, 0 failed\n", "")
    assert before == {path: (path.stat().st_ino, path.stat().st_mtime_ns) for path in target.rglob("*.npy")}


def test_a_killed_run_is_resumed(tree):
    source, target = tree
    (source / "short_320x240_BayerRG8.raw").unlink()
    process = start(source, target)
    while len(list(target.rglob("*.npy"))) < 2 and process.poll() is None:
        time.sleep(0.001)
    stopped_worker(target, process)
    os.killpg(process.pid, signal.SIGKILL)
    finish(process)
    before = {path: path.stat().st_ino for path in target.rglob("*.npy")}
    assert 2 <= len(before) < 13
    code, out, err = finish(start(source, target))
    assert code == 0 and out.endswith(f"{len(before)} were there, 0 failed\n"), (out, err)
    assert all(path.stat().st_ino == inode for path, inode in before.items())
    require_all_bytes(source, target)


def test_a_scheduler_that_does_not_answer(tree, monkeypatch):
    monkeypatch.syspath_prepend(os.path.dirname(SCRIPT))
    convert_archive = importlib.import_module("convert_archive")
    source, target = tree
    with dask.config.set({"distributed.comm.timeouts.connect": "1s"}):
        with pytest.raises(SystemExit, match="--scheduler tcp://127.0.0.1:9: Timed out"):
            convert_archive.main([str(source), str(target), "--scheduler", "tcp://127.0.0.1:9"])


def test_an_interrupted_run_says_what_goes_on(tree):
    source, target = tree
    process = start(source, target)
    worker, _ = stopped_worker(target, process)
    os.killpg(process.pid, signal.SIGINT)
    os.kill(worker, signal.SIGCONT)
    code, out, err = finish(process)
    assert (code, out) == (1, "") and "convert_archive: interrupted; the same line goes on" in err, (out, err)


def test_what_is_refused(tree, monkeypatch):
    monkeypatch.syspath_prepend(os.path.dirname(SCRIPT))
    convert_archive = importlib.import_module("convert_archive")
    source, target = tree
    target.mkdir()
    wishes = target / ".made-with.json"
    wishes.write_text('{"algorithm": "nearest", "output": "RGB8"}')
    for arguments, says in (((source, target), "holds pictures made with"), ((target / "no", target), "no such folder"),
                            ((source, source / "in"), "give a folder outside")):
        with pytest.raises(SystemExit, match=says):
            convert_archive.main([str(argument) for argument in arguments])
    with open(wishes) as held:
        fcntl.flock(held, fcntl.LOCK_EX)
        with pytest.raises(SystemExit, match="another run is at work"):
            convert_archive.main([str(source), str(target), "--algorithm", "nearest"])
