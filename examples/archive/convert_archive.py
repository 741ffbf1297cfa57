#!/usr/bin/env python3
"""Converts a tree of containers (raw files of many frames, NPY stacks) into a like tree of NPY stacks of pictures, on a
cluster of Dask's: workers of this machine, or any scheduler by its address.

One container is one task. Its pictures go into a part file that gets its name once it is whole, so a worker may be
killed at any time: its container is given to another one, and a later run goes on where this one ended. Needs kro,
NumPy and Dask's distributed, on every machine; the trees lie where all of them see them.
"""

import argparse
import collections
import fcntl
import json
import os
import socket
import sys

import kro
import numpy
from distributed import Client, LocalCluster, as_completed

PART = ".part"
MADE_WITH = ".made-with.json"

Outcome = collections.namedtuple("Outcome", "source frames problem")


# ---- one container, on a worker ----

def pictures_header(frames, output):
    """What an NPY file of these frames' pictures begins with, and room for one of them."""
    first = kro.convert(frames[0], frames.format, shape=frames.shape, output=output)
    return {"descr": first.dtype.str, "fortran_order": False, "shape": (len(frames), *first.shape)}, first


def write_pictures(file, source, algorithm, output):
    frames = kro.read_frames(source)
    header, picture = pictures_header(frames, output)
    numpy.lib.format.write_array_header_1_0(file, header)
    for frame in frames:
        kro.convert(frame, frames.format, shape=frames.shape, algorithm=algorithm, output=output, out=picture)
        file.write(picture)
    file.flush()
    os.fsync(file.fileno())
    return len(frames)


def convert_container(source, target, algorithm, output):
    """The pictures of a container, whole or not at all. What is wrong with it is an outcome, as another try would end in
    the same way."""
    part = f"{target}.{socket.gethostname()}-{os.getpid()}{PART}"
    try:
        os.makedirs(os.path.dirname(target), exist_ok=True)
        with open(part, "wb") as file:
            frames = write_pictures(file, source, algorithm, output)
        os.replace(part, target)
        return Outcome(source, frames, None)
    except (OSError, ValueError) as error:
        if os.path.exists(part):
            os.unlink(part)
        text = str(error)
        return Outcome(source, 0, text if text.startswith(source) else f"{source}: {text}")


# ---- the tree ----

def containers(tree, endings):
    for folder, folders, names in os.walk(tree):
        folders.sort()
        for name in sorted(names):
            if name.lower().endswith(endings):
                yield os.path.join(folder, name)


def target_of(source, tree, target_tree):
    return os.path.join(target_tree, os.path.relpath(source, tree) + ".npy")


def is_done(source, target):
    return os.path.exists(target) and os.path.getmtime(target) >= os.path.getmtime(source)


def claim(tree, wishes):
    """A tree holds pictures of one kind, as a run with other wishes would leave those that are there, and belongs to one
    run at a time. It does so until the file that is returned is closed."""
    os.makedirs(tree, exist_ok=True)
    path = os.path.join(tree, MADE_WITH)
    if not os.path.exists(path):
        with open(path + PART, "w") as file:
            json.dump(wishes, file)
        os.replace(path + PART, path)
    file = open(path)
    try:
        fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except OSError:
        sys.exit(f"convert_archive: another run is at work on {tree}")
    before = json.load(file)
    if before != wishes:
        sys.exit(f"convert_archive: {tree} holds pictures made with {before}, now {wishes} is wanted: give another folder")
    return file


def remove_parts(tree):
    """What killed workers left; nobody writes any more."""
    for path in list(containers(tree, (PART,))):
        os.unlink(path)


# ---- the run ----

class Progress:
    """A line that counts, on a terminal alone."""

    def __init__(self, count):
        self.count, self.done, self.frames, self.failures = count, 0, 0, []

    def add(self, outcome):
        self.done += 1
        self.frames += outcome.frames
        if outcome.problem is not None:
            self.failures.append(outcome)
        if sys.stderr.isatty():
            end = "\n" if self.done == self.count else ""
            print(f"\r{self.done}/{self.count} containers, {self.frames} frames, {len(self.failures)} failed", end=end,
                  file=sys.stderr, flush=True)


def outcome_of(future, source):
    """A container that takes several workers down with it is given up by the scheduler; so is one whose task breaks."""
    error = future.exception()
    return future.result() if error is None else Outcome(source, 0, f"{source}: {type(error).__name__}: {error}")


def run(client, work, options):
    progress = Progress(len(work))
    futures = {client.submit(convert_container, source, target, options.algorithm, options.output, pure=False): source
               for source, target in work}
    for future in as_completed(list(futures)):
        progress.add(outcome_of(future, futures[future]))
        future.release()
    return progress


def cluster_client(options):
    if options.scheduler is not None:
        try:
            return Client(options.scheduler)
        except (OSError, ValueError) as error:
            sys.exit(f"convert_archive: --scheduler {options.scheduler}: {error}")
    return Client(LocalCluster(n_workers=options.workers, threads_per_worker=1, dashboard_address=None, memory_limit=0))


def parsed(arguments):
    parser = argparse.ArgumentParser(description="Converts a tree of containers of raw frames on a Dask cluster.")
    parser.add_argument("source", metavar="SOURCE", help="the tree of containers")
    parser.add_argument("target", metavar="TARGET", help="the tree of pictures; what is whole there is not made again")
    parser.add_argument("--scheduler", metavar="ADDRESS", help="a running scheduler, such as tcp://host:8786")
    parser.add_argument("--workers", type=int, default=os.cpu_count(), metavar="N",
                        help="worker processes on this machine where no scheduler is given (all cores)")
    parser.add_argument("--endings", default=".raw,.bin,.npy", metavar="LIST", help="names of containers (%(default)s)")
    parser.add_argument("--algorithm", default="edge", choices=("nearest", "bilinear", "edge", "fine"))
    parser.add_argument("--output", default="RGB8", metavar="FORMAT", help="format of the pictures (%(default)s)")
    return parser.parse_args(arguments)


def convert_tree(source, target, options):
    pairs = [(path, target_of(path, source, target)) for path in containers(source, tuple(options.endings.split(",")))]
    work = [pair for pair in pairs if not is_done(*pair)]
    progress = Progress(0)
    if work:
        with cluster_client(options) as client:
            progress = run(client, work, options)
    remove_parts(target)
    for failure in progress.failures:
        print(f"convert_archive: {failure.problem}", file=sys.stderr)
    print(f"{len(work) - len(progress.failures)} containers converted ({progress.frames} frames), "
          f"{len(pairs) - len(work)} were there, {len(progress.failures)} failed")
    return 1 if progress.failures else 0


def main(arguments=None):
    options = parsed(arguments)
    source, target = os.path.abspath(options.source), os.path.abspath(options.target)
    if not os.path.isdir(source):
        sys.exit(f"convert_archive: {options.source}: no such folder")
    if target == source or target.startswith(source + os.sep):
        sys.exit(f"convert_archive: {options.target} lies within {options.source}: give a folder outside")
    with claim(target, {"algorithm": options.algorithm, "output": options.output}):
        return convert_tree(source, target, options)


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        sys.exit("convert_archive: interrupted; the same line goes on where this ended")
