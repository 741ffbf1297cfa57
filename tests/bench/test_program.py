"""kro-bench from the outside: its three reports say the same of one run, and what they say of it adds up."""

import csv
import io
import json
import os
import pathlib
import platform
import re
import subprocess
import tempfile
import unittest

BENCH = os.environ["KRO_BENCH"]
CASE = "nearest/RG8/BGR8"
X86 = platform.machine() in ("x86_64", "i686")


def bench(*arguments):
    return subprocess.run([BENCH, "--rounds", "1", *arguments], capture_output=True, text=True)


class Program(unittest.TestCase):
    def succeeds(self, *arguments):
        result = bench(*arguments)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout

    def refused(self, *arguments):
        result = bench(*arguments)
        self.assertEqual(result.stdout, "")
        self.assertNotEqual(result.returncode, 0)
        return result.stderr

    def reports(self, *arguments):
        """Text, JSON and CSV of one run."""
        with tempfile.TemporaryDirectory() as folder:
            files = [pathlib.Path(folder) / name for name in ("json", "csv")]
            text = self.succeeds("--filter", f"^{CASE}$", "--json", files[0], "--csv", files[1], *arguments)
            said, table = (file.read_text() for file in files)
        return text, json.loads(said), list(csv.DictReader(io.StringIO(table)))

    @unittest.skipUnless(X86, "nowhere else are there stores past the caches")
    def test_shares_are_of_the_stream_that_they_name(self):
        _, run, rows = self.reports("--sizes", "64x64,64x64+before", "--bypass")
        for size in ("64x64", "64x64+before"):
            results = [r for r in run["results"] if r["size"] == size]
            self.assertGreater(sum(r["kind"] == "kernel" for r in results), 0)
            for kind, name in (("stream", "plain"), ("bypassing-stream", "bypassing")):
                of, = (r for r in results if r["kind"] == kind)
                for result in results:
                    self.assertAlmostEqual(result[f"{name}_share"] / (of["median_ns"] / result["median_ns"]), 1, delta=0.05)
                    self.assertAlmostEqual(result[f"{name}_share_of_minima"] / (of["min_ns"] / result["min_ns"]), 1, delta=0.05)
        self.assertEqual(len(rows), len(run["results"]))
        for row, result in zip(rows, run["results"]):
            self.assertEqual({k: v for k, v in row.items() if k != "bits"},
                             {k: v if isinstance(v, str) else f"{v:.{1 if k.endswith(('_ns', '_s')) else 4}f}"
                              for k, v in result.items() if k != "mark"})

    def test_without_bypass_there_is_no_share_of_it(self):
        text, run, rows = self.reports("--sizes", "64x64")
        self.assertNotIn("bypass", text)
        for result, row in zip(run["results"], rows):
            self.assertNotEqual(result["kind"], "bypassing-stream")
            self.assertEqual([k for k in result if "bypass" in k], [])
            self.assertEqual((row["bypassing_share"], row["bypassing_share_of_minima"]), ("", ""))

    def test_the_summary_says_what_was_measured(self):
        text, run, _ = self.reports("--sizes", "64x64,640x480", *["--bypass"] * X86)
        bound = float(re.search(r"plain stream is above ([\d.]+),", self.succeeds("--help")).group(1))
        lines = text.split("\nSummary")[1].splitlines()[1:]
        kernels = [r for r in run["results"] if r["kind"] == "kernel"]
        self.assertEqual(len(lines), len(kernels))
        for line, kernel in zip(lines, kernels):
            peers = [r for r in run["results"] if r["kind"] == "peer" and r["size"] == kernel["size"]]
            best = min(peers, key=lambda r: r["median_ns"], default=None)
            name, size, instruction_set, factor, *shares, by = line.split(maxsplit=6 + X86)[:6 + X86]
            peer = line.split(maxsplit=6 + X86)[6 + X86:]
            self.assertEqual([name, size, instruction_set], [kernel["case"], kernel["size"], kernel["isa"]])
            for share, key in zip(shares, ("plain_share", "bypassing_share")):
                self.assertAlmostEqual(float(share), kernel[key], delta=0.001)
            if abs(kernel["plain_share"] - bound) > 0.0001:  # as the file rounds
                self.assertEqual(by, "memory" if kernel["plain_share"] > bound else "operations")
            self.assertEqual(peer, [best["name"]] if best else [])
            if best:
                self.assertAlmostEqual(float(factor), best["median_ns"] / kernel["median_ns"], delta=0.02)
            else:
                self.assertEqual(factor, "-")

    def test_every_kernel_and_peer_runs_beside_guarded_pages(self):
        sizes = "64x64+before,64x64+behind,68x34+before,66x34+behind"
        run = json.loads(self.succeeds("--sizes", sizes, "--json", "-"))
        listed = [line.split(":")[0] for line in self.succeeds("--list").splitlines()]
        for size in sizes.split(","):
            self.assertEqual(list(dict.fromkeys(r["case"] for r in run["results"]
                                                if r["size"] == size and r["kind"] == "kernel")), listed)

    def test_all_sizes_have_small_frames_in_every_place(self):
        _, run, _ = self.reports("--sizes", "all", "--no-peers", "--isa", "scalar")
        self.assertLessEqual({"64x64", "64x64+before", "64x64+behind", "4096x3000"}, {r["size"] for r in run["results"]})

    def test_seeds_are_told_and_within_range(self):
        text, run, _ = self.reports("--sizes", "64x64", "--seeds", "3")
        self.assertIn("1 interleaved rounds of 3 frames", text)
        self.assertEqual(run["seeds"], 3)
        self.assertEqual(self.reports("--sizes", "64x64")[1]["seeds"], 1)
        for value in ("0", "-1", "1001", "many"):
            self.assertIn("--seeds", self.refused("--seeds", value))

    def test_an_unknown_place_is_refused_by_name(self):
        said = self.refused("--sizes", "64x64+after")
        self.assertIn("64x64+after", said)
        self.assertIn("64x64+behind", said)


if __name__ == "__main__":
    unittest.main()
