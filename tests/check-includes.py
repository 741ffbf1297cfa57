#!/usr/bin/env python3
"""Draws the include graph of src/ folder by folder, and fails on an arrow that climbs or a header that needs another one first.

usage: check-includes.py SOURCE_FOLDER SETS_DEF COMPILER [COMPILER FLAGS ...]

SETS_DEF are the lines of table/sets.def that the processor compiled for has.
"""
import pathlib
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

# Lowest first: a file may include what stands on its own line or on one above. Folders of a line do not know each other.
FLOORS = [
    ["kro"],  # the public headers
    ["records"],
    ["vector"],
    ["row"],
    ["demosaicingNearest", "demosaicingBilinear", "demosaicingEdge", "demosaicingFine"],
    ["table"],
    ["isa"],
    ["KRODemosaicingFuncs"],
    ["."],  # KROCreation, KRODemosaicing, KROView
]
FLOOR_OF = {folder: floor for floor, folders in enumerate(FLOORS) for folder in folders}


def folder_of(name):
    return name.split("/")[0] if "/" in name else "."


def arrows(source):
    for path in sorted(source.rglob("*")):
        if path.suffix not in (".hpp", ".cpp"):
            continue
        name = path.relative_to(source).as_posix()
        for included in re.findall(r'^\s*#\s*include\s+"([^"]+)"', path.read_text(), re.MULTILINE):
            yield name, included


def climbs(name, included):
    here, there = folder_of(name), folder_of(included)
    if there not in FLOOR_OF or here not in FLOOR_OF:
        return f"{name} includes {included}: folder '{there if there not in FLOOR_OF else here}' has no floor"
    if FLOOR_OF[there] > FLOOR_OF[here]:
        return f"{name} includes {included}: {here} stands below {there}"
    if FLOOR_OF[there] == FLOOR_OF[here] and here != there:
        return f"{name} includes {included}: {here} and {there} do not know each other"
    return None


def draw(graph):
    for folders in reversed(FLOORS):
        for folder in folders:
            below = sorted(graph.get(folder, ()), key=lambda other: -FLOOR_OF[other])
            print(f"{folder:22} -> {', '.join(below) if below else '-'}")


def sets_in(text):
    """Header and compiler flags of each set in the list."""
    return re.findall(r'^KRO_SET\(.*?"([^"]+)".*"([^"]*)"\)$', text, re.MULTILINE)


def compile_alone(header, source, command):
    done = subprocess.run([*command, "-std=c++17", "-fsyntax-only", "-x", "c++", "-I", source,
                           "-I", source.parent / "include", "-include", header, "/dev/null"],
                          capture_output=True, text=True)
    return None if done.returncode == 0 else f"{header.relative_to(source)} does not compile alone:\n{done.stderr}"


def main():
    source, ours = pathlib.Path(sys.argv[1]).resolve(), sets_in(pathlib.Path(sys.argv[2]).read_text())
    foreign = {header for header, _ in sets_in((source / "table/sets.def").read_text())} - {header for header, _ in ours}
    command = [*sys.argv[3:], *(flag for _, flags in ours for flag in flags.split() if flag.startswith("-m"))]
    graph, problems = {}, []
    for name, included in arrows(source):
        problem = climbs(name, included)
        if problem:
            problems.append(problem)
        elif folder_of(name) != folder_of(included):
            graph.setdefault(folder_of(name), set()).add(folder_of(included))
    draw(graph)
    headers = [path for path in sorted(source.rglob("*.hpp")) if path.relative_to(source).as_posix() not in foreign]
    with ThreadPoolExecutor(2) as pool:
        problems += filter(None, pool.map(lambda header: compile_alone(header, source, command), headers))
    print(f"{len(headers)} headers compiled alone, {len(problems)} problems")
    for problem in problems:
        print(problem)
    return 1 if problems or not graph or not headers or not ours else 0


if __name__ == "__main__":
    sys.exit(main())
