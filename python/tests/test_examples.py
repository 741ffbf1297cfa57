"""The examples run as they stand."""

import os
import re
import subprocess
import sys

import pytest

EXAMPLES = os.path.join(os.path.dirname(__file__), "..", "..", "examples")


def test_opencv_to_kro():
    pytest.importorskip("cv2")
    result = subprocess.run([sys.executable, "-B", os.path.join(EXAMPLES, "opencv_to_kro.py")], check=True,
                            stdout=subprocess.PIPE)
    rows = re.findall(r"(?m)^  (\w.*?) +([\d.]+) +([\d.]+)$", result.stdout.decode())
    assert [row[0] for row in rows] == ["cv2.cvtColor, edge-aware", "cv2.cvtColor, bilinear", "kro.convert, edge",
                                        "kro.convert, bilinear"]
    # Whatever is made of the scene looks like it.
    assert all(float(row[2]) > 25 for row in rows)
