"""What the tests of the documents share: the repository, an installation, a folder to work in."""

import os
import pathlib
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
COMMAND = os.environ["KRO_COMMAND"]


class Case(unittest.TestCase):
    """All tests of a class share an installation; each works in an empty folder of its own."""

    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        cls.prefix = pathlib.Path(temporary.name)
        subprocess.run(["cmake", "--install", os.environ["KRO_BUILD"], "--prefix", cls.prefix], check=True,
                       stdout=subprocess.DEVNULL)

    def setUp(self):
        self.work = self.folder()

    def folder(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        return pathlib.Path(temporary.name)

    def environment(self, tools):
        """As a user has it who has installed kro where the system looks; `tools` is a folder of programs before all."""
        found = next(self.prefix.rglob("kro.pc")).parent
        return {**os.environ, "PATH": f"{tools}:{self.prefix}/bin:{os.environ['PATH']}", "PKG_CONFIG_PATH": str(found),
                "LD_LIBRARY_PATH": str(found.parent)}

    def tool(self, folder, name, line):
        path = folder / name
        path.write_text(f"#!/bin/sh\n{line}\n")
        path.chmod(0o755)
