"""The site's own pages: their programs and command lines are run in their order, as they stand."""

import os
import re
import subprocess
import unittest

from support import ROOT, Case

FENCE = re.compile(r"^(?:<!-- needs (?P<needs>[\w.+-]+) -->\n)?```(?P<language>\w+)(?: title=\"(?P<title>[^\"]+)\")?\n"
                   r"(?P<text>.*?)^```$", re.MULTILINE | re.DOTALL)


class Examples(Case):
    def run_page(self, page):
        tools = self.folder()
        self.tool(tools, "cc", f'exec {os.environ["CC"]} "$@"')
        self.tool(tools, "c++", f'exec {os.environ["CXX"]} "$@"')
        ran, left = 0, set()
        text = page.read_text()
        blocks = list(FENCE.finditer(text))
        self.assertEqual(2 * len(blocks), len(re.findall(r"^```", text, re.MULTILINE)), "a block is not understood")
        for block in blocks:
            needs = block["needs"]
            if needs and subprocess.run(["pkg-config", "--exists", needs], check=False).returncode != 0:
                left.add(needs)
                continue
            if block["language"] in ("c", "cpp"):
                self.assertIsNotNone(block["title"], "a program has no name: " + block["text"][:60])
                (self.work / block["title"]).write_text(block["text"])
            elif block["language"] == "sh":
                result = subprocess.run(["sh", "-eux"], input=block["text"].encode(), cwd=self.work, check=False,
                                        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300,
                                        env=self.environment(tools))
                self.assertEqual(result.returncode, 0, f"{page.name}:\n{result.stdout.decode()}")
                ran += 1
            else:
                self.assertEqual(block["language"], "text")
        for program in self.work.glob("*.c*"):
            self.assertIn(f" {program.name} ", text, f"{page.name} does not compile {program.name}")
        print(f"{page.name}: {ran} blocks ran" + "".join(f"; without {name}, which is not installed" for name in left))
        return ran

    def test_pages(self):
        pages = sorted((ROOT / "site/pages").glob("*.md"))
        self.assertTrue(pages)
        for page in pages:
            self.assertGreater(self.run_page(page), 0)


if __name__ == "__main__":
    unittest.main()
