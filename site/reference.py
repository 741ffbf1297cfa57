#!/usr/bin/env python3
"""The interface reference, out of the headers: their comments are the text, their declarations the code.

usage: site/reference.py HEADER...      Markdown on standard output
"""

import pathlib
import re
import sys

CAPITALS = re.compile(r"[A-Z][A-Z ]*[A-Z]$")
# A word and, far from it, what it means.
COLUMNS = re.compile(r"[A-Za-z_]+ {2,}\S")
RULE = re.compile(r"---- (.*?) ----$")


def escaped(line):
    """Markdown that reads as the line; words between backquotes are code in either."""
    return "".join(part if part.startswith("`") else re.sub(r"([*_<>\[\]|`])", r"\\\1", part)
                   for part in re.split(r"(`[^`]+`)", line))


def indent(line):
    return len(line) - len(line.lstrip())


def prose(lines, language):
    """A comment as Markdown: titles in capitals, paragraphs; what is indented stands as it is."""
    out, block, base = [], [], 0

    def flush():
        nonlocal block
        while block and not block[-1]:
            block.pop()
        if not block:
            return
        least = min(indent(line) for line in block if line)
        text = [line[least:] for line in block]
        if text[0].startswith("- "):
            out.extend(["", *map(escaped, text), ""])
        else:
            ends = sum(re.search(r"[;{}](\s*//.*)?$", line) is not None for line in text)
            out.extend(["", f"```{language if 2 * ends > len(text) else 'text'}", *text, "```", ""])
        block = []

    for line in lines:
        if CAPITALS.match(line):
            flush()
            out += ["", "## " + line.capitalize(), ""]
            base = 2
            continue
        if line and indent(line) < base:
            base = 0
        rest = line[base:] if line else ""
        if indent(rest) >= 2 or (block and not rest) or COLUMNS.match(rest):
            block.append(rest)
        else:
            flush()
            out.append(escaped(rest))
    flush()
    return out


def comment_lines(block):
    """The words of a comment of either language, without what marks it as one."""
    if block[0].startswith("//"):
        return [re.sub(r"^// ?", "", line).rstrip() for line in block]
    text = "\n".join(block)[2:-2]
    return [re.sub(r"^ \* ?", "", line).rstrip() for line in ("\n * " + text.strip()).split("\n")[1:]]


def pieces(text):
    """Comments at the left margin and what stands between them: pairs of a kind and lines."""
    lines, found, i = text.split("\n"), [], 0
    while i < len(lines):
        start = i
        if lines[i].startswith("/*"):
            while "*/" not in lines[i]:
                i += 1
            i += 1
            found.append(("comment", lines[start:i]))
        elif lines[i].startswith("//"):
            while i < len(lines) and lines[i].startswith("//"):
                i += 1
            found.append(("comment", lines[start:i]))
        else:
            depth = 0
            while i < len(lines) and (depth > 0 or not lines[i].startswith(("/*", "//")) and (i == start or lines[i - 1])):
                depth += lines[i].count("{") - lines[i].count("}")
                i += 1
            found.append(("code", lines[start:i]))
    return found


def c_code(lines):
    """Declarations and constants, without what compilers alone care for."""
    return [line.replace("KRO_API ", "") for line in lines]


def closing(text, start):
    """The place behind the bracket that closes the one at start."""
    depth = 0
    for i in range(start, len(text)):
        depth += (text[i] == "{") - (text[i] == "}")
        if depth == 0:
            return i + 1
    raise ValueError("a bracket is not closed: " + text[start:start + 80])


# The brackets of a function: behind its arguments, what it promises, and initialisers, which have brackets of their own.
BODY = re.compile(r"\)(?: const)?(?: noexcept)?(?: override)?((?:\s+: |,\s+)(?:[\w:<>]+(?:\([^{};]*\)|\{[^;]*?\}))"
                  r"(?:,\s*[\w:<>]+(?:\([^{};]*\)|\{[^;]*?\}))*)? \{")


def without_bodies(text):
    """Functions as they are declared."""
    out, i = "", 0
    while (match := BODY.search(text, i)):
        initialisers = match.start(1) if match.group(1) else match.end() - 2
        out += text[i:initialisers].rstrip() + ";"
        i = closing(text, match.end() - 1)
    return out + text[i:]


def cpp_code(lines):
    text = "\n".join(lines).strip("\n")
    # A value between brackets is no body.
    if re.match(r"inline constexpr|enum ", text):
        return text.split("\n")
    return re.sub(r"\n+private:\n.*(?=\n\};)", "", without_bodies(text), flags=re.DOTALL).split("\n")


def hidden(text, cpp):
    """The header without what is nobody's business: guards, includes, namespaces and macros of the inside."""
    if not cpp:
        return re.sub(r"^(#(?!define KRO_\w+(\(.*?\))? +[^_ ]).*|extern .*|\}|#define KRO_API.*)\n", "", text,
                      flags=re.MULTILINE)
    while (match := re.search(r"^namespace detail \{$", text, re.MULTILINE)):
        text = text[:match.start()] + text[closing(text, match.end() - 1):]
    formats = re.findall(r"X\((\w+), (\w+)\)", text)
    text = text.replace("    KRO_PIXEL_FORMATS(KRO_ENUMERATOR)\n", "".join(f"    {n} = {c},\n" for n, c in formats))
    text = text.replace("    KRO_PIXEL_FORMATS(KRO_NAMED)\n",
                        "".join(f'    {{PixelFormat::{n}, "{n}"}},\n' for n, _ in formats))
    text = re.sub(r"^// .*\n(?=inline namespace)", "", text, flags=re.MULTILINE)
    text = re.sub(r"^(// clang-format|  // namespace|\}  // namespace|(inline )?namespace ).*\n", "", text,
                  flags=re.MULTILINE)
    return re.sub(r"^#(?:.*\\\n)*.*\n", "", text, flags=re.MULTILINE)


def names_of(code):
    """What the declarations of a piece of code declare."""
    text = re.sub(r"/\*.*?\*/|//[^\n]*", "", "\n".join(code), flags=re.DOTALL)
    names = re.findall(r"#define (KRO_\w+)", text)
    names += re.findall(r"^\} (\w+);|^typedef \w+ (\w+);|^(?:enum class|struct|class) (\w+)\b(?!::)", text, re.MULTILINE)
    names += re.findall(r"^[a-zA-Z_][\w:<>,*& ]*?[ *&](\w+)\(", text, re.MULTILINE)
    names += re.findall(r"^inline constexpr \w+ (\w+)\[", text, re.MULTILINE)
    return list(dict.fromkeys(name if isinstance(name, str) else next(filter(None, name)) for name in names))


def declared(code, language, index):
    """A piece of code under its name, or with marks that links to its names lead to."""
    names = [name for name in names_of(code) if name not in index]
    index += names
    head = [f"### {names[0]} {{ #{names[0]} }}"] if len(names) == 1 else \
        ["".join(f'<a id="{name}"></a>' for name in names)]
    return [*head, "", f"```{language}", *code, "```", ""]


def page(path):
    """A header as Markdown. What a comment says of the code right behind it stands below that."""
    header = pathlib.Path(path)
    cpp = header.suffix == ".hpp"
    language = "cpp" if cpp else "c"
    out, waiting, index, begun = [f"# kro/{header.name}", ""], [], [], False
    for kind, lines in pieces(hidden(header.read_text(), cpp)):
        if kind == "code":
            code = "\n".join(cpp_code(lines) if cpp else c_code(lines)).rstrip()
            if code:
                out += declared(code.split("\n"), language, index) + prose(waiting, language) + [""]
                waiting = []
            continue
        out += prose(waiting, language) + [""]
        words = comment_lines(lines)
        title = RULE.match(words[0])
        if title:
            heading = title.group(1)
            out += ["", "## " + heading[0].upper() + heading[1:], ""] + prose(words[1:], language) + [""]
            words = []
        elif not begun:
            out += prose(words, language) + [""]
            words = []
        waiting, begun = words, True
    out += prose(waiting, language)
    out += ["", "## Names", "", ", ".join(f"[{name}](#{name})" for name in sorted(index))]
    return re.sub(r"\n{3,}", "\n\n", "\n".join(out)) + "\n"


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__.strip())
    print("\n".join(page(path) for path in sys.argv[1:]), end="")
