"""Out of memory at every single allocation of a call."""

import os
import subprocess
import sys

import pytest


@pytest.mark.skipif("KRO_FAILING_MALLOC" not in os.environ, reason="a sanitizer brings its own allocation functions")
def test_every_allocation_fails():
    script = os.path.join(os.path.dirname(__file__), "allocation_failures.py")
    environment = dict(os.environ, LD_PRELOAD=os.environ["KRO_FAILING_MALLOC"], PYTHONMALLOC="malloc")
    result = subprocess.run([sys.executable, "-B", script], env=environment, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, timeout=300)
    print(result.stdout.decode())
    assert result.returncode == 0, result.stdout.decode()
    assert result.stdout.decode().count("each a MemoryError or made good") == 7
