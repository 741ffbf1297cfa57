"""The site is built: every link leads somewhere, every page is in it, nothing is fetched from elsewhere."""

import re
import shutil
import subprocess
import unittest

from support import COMMAND, ROOT, Case


class Build(Case):
    def test_pages(self):
        subprocess.run([ROOT / "scripts/site", "--kro", COMMAND, "--pages", self.work], check=True)
        pages = {path.relative_to(self.work).as_posix(): path.read_text() for path in self.work.rglob("*.md")}
        for name in ("index.md", "formats.md", "coming-from.md", "command/kro-convert.md", "reference/view.h.md"):
            self.assertIn(name, pages)
        anchors = 0
        for name, text in pages.items():
            for target in re.findall(r"\]\(([^)#: ]+)[^)]*\)", re.sub(r"```.*?```|`[^`]*`", "", text, flags=re.DOTALL)):
                self.assertTrue((self.work / name).parent.joinpath(target).exists(), f"{name}: {target}")
                anchors += 1
        self.assertGreater(anchors, 15)

    @unittest.skipUnless(shutil.which("mkdocs"), "mkdocs is not installed")
    def test_site(self):
        subprocess.run([ROOT / "scripts/site", "--kro", COMMAND, "--output", self.work / "site"], check=True)
        pages = list((self.work / "site").rglob("index.html"))
        self.assertGreater(len(pages), 15)
        for page in pages:
            text = page.read_text()
            self.assertNotIn("```", text, page)
            self.assertEqual(re.findall(r'(?:<script[^>]*src|<link[^>]*href|<img[^>]*src)="(https?:[^"]*)"', text), [], page)


if __name__ == "__main__":
    unittest.main()
