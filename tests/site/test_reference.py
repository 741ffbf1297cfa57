"""The interface reference has every name that the headers declare, with its declaration and its text."""

import re
import subprocess
import sys
import unittest

from support import ROOT


def reference(header):
    return subprocess.run([sys.executable, ROOT / "site/reference.py", ROOT / "include/kro" / header], check=True,
                          capture_output=True, text=True).stdout


def words(text):
    return re.findall(r"[A-Za-z0-9]+", text)


class Reference(unittest.TestCase):
    def test_every_exported_function_is_declared(self):
        exported = re.findall(r"^ {4}(\w+);", (ROOT / "src/kro.map").read_text(), re.MULTILINE)
        self.assertGreater(len(exported), 100)
        text = reference("kro.h") + reference("view.h")
        for name in exported:
            self.assertRegex(text, rf"(?m)^\w[\w* ]*\b{name}\((.|\n)*?\);$")
            self.assertIn(f"[{name}](#{name})", text)

    def test_every_constant_has_its_value(self):
        for header in ("kro.h", "view.h"):
            text = reference(header)
            source = (ROOT / "include/kro" / header).read_text()
            constants = re.findall(r"^#define (KRO_\w+ .+)$", source, re.MULTILINE)
            for constant in constants:
                if not constant.startswith("KRO_API"):
                    self.assertIn(f"#define {constant}\n", text)

    def test_no_word_of_the_comments_is_lost(self):
        for header in ("kro.h", "view.h"):
            source = (ROOT / "include/kro" / header).read_text()
            comments = re.findall(r"/\*(.*?)\*/", source, re.DOTALL)
            text = " ".join(words(reference(header).replace("\\", "").lower()))
            for comment in comments:
                for paragraph in re.split(r"\n \*\n", comment):
                    lines = [re.sub(r"^ ?\* ?", "", line) for line in paragraph.split("\n")]
                    for line in lines:
                        self.assertIn(" ".join(words(line.lower())), text, line)

    def test_classes_keep_to_what_is_public(self):
        text = reference("kro.hpp") + reference("threads.hpp")
        for name in ("Frame", "Picture", "Options", "convert", "formatNamed", "rowBytes", "Threads", "BandTask"):
            self.assertIn(f"[{name}](#{name})", text)
        self.assertIn("    SRGGB10P = KRO_SRGGB10P,\n", text)
        self.assertIn("template <class Executor>\nvoid convert(const Frame& frame", text)
        for inside in ("private:", "helpers_", "namespace", "#include", "conversion_", "return "):
            for block in re.findall(r"^```cpp\n(.*?)^```", text, re.MULTILINE | re.DOTALL):
                self.assertNotIn(inside, re.sub(r"//.*", "", block))


if __name__ == "__main__":
    unittest.main()
