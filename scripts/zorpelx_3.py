#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the manual page zorpelx(3) from include/zorpelx.h, so that the two can't differ.

    scripts/zorpelx_3.py [--check]

Records and prototypes are shown as they stand; of the comments, paragraphs are filled, and what is
indented is kept as it is. --check compares with the page that is there.
"""

import re
import sys
import textwrap
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
HEADER = PROJECT / "include" / "zorpelx.h"
PAGE = PROJECT / "docs" / "man" / "zorpelx.3"
TERM = re.compile(r"(?:Cost|Returns?)\b")


def roff(line):
    """A line of text or code that roff leaves alone."""
    line = line.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + line if line.startswith((".", "'")) else line


def filled(line):
    """The same, with each sentence on a line of its own."""
    line = roff(re.sub(r"(?<=\w)\\-(?=\w)", "-", line))
    line = re.sub(r"\\-(?=\w)", "\\-", line)
    return re.sub(r"(?<=[.:]) +(?=[A-Z])", "\n", line).replace("e.g.\n", "e.g. ")


def with_functions(line):
    """A filled line, the functions that it names marked up."""
    marked = re.sub(r" ?\b(\w+)\(\)([.,:;]?) ?", r"\n.Fn \1 \2\n", line)
    return [piece.rstrip() for piece in marked.split("\n") if piece]


def literal(lines, indent="indent"):
    return [f".Bd -literal -offset {indent}", *map(roff, lines), ".Ed"]


def prose(comment):
    """Comment text as roff: filled paragraphs, indented lines as displays."""
    lines = [re.sub(r"^ \* ?", "", line).rstrip() for line in comment.split("\n")]
    lines[0] = lines[0].removeprefix(" ")
    out, paragraph, display = [], [], []

    def flush():
        nonlocal paragraph, display
        if paragraph:
            words = " ".join(paragraph).replace(" - ", " \\- ")
            for sentence in filled(words).split("\n"):
                for line in textwrap.wrap(sentence, 76, break_on_hyphens=False):
                    out.extend(with_functions(line))
        if display:
            out.extend(literal(display))
        paragraph, display = [], []

    for line in lines:
        starts = TERM.match(line)
        if not line.strip():
            flush()
            if out and out[-1] != ".Pp":
                out.append(".Pp")
        elif line.startswith("        ") and paragraph and TERM.match(paragraph[0]):
            paragraph.append(line.strip())
        elif line.startswith("  "):
            if paragraph:
                flush()
            display.append(line.removeprefix("  "))
        else:
            if display or starts:
                flush()
                if out:
                    out.append(".Pp")
            paragraph.append(re.sub(r" {2,}", ": ", line.strip()) if starts else line.strip())
    flush()
    while out and out[-1] == ".Pp":
        out.pop()
    return [line for i, line in enumerate(out) if line != ".Pp" or out[i + 1] != ".Bd -literal"]


def sections(text):
    """The header's items in order: (kind, name, comment, code)."""
    body = text[text.index('extern "C" {') : text.rindex("#ifdef __cplusplus")]
    body = body[body.index("/* What a routine returns.") :]
    pattern = re.compile(
        r"(?P<comments>(?:/\*(?:(?!\*/).)*\*/\s*)*)"
        r"(?P<code>enum \{.*?^\};|typedef struct \w+ \{.*?^\} \w+;|typedef [^{;]*;"
        r"|(?:ZORPELX_API [^;]+;\s*)+)", re.S | re.M,
    )  # fmt: skip
    for item in pattern.finditer(body):
        comments = re.findall(r"/\*(.*?)\*/", item["comments"], re.S)
        code = item["code"].rstrip()
        if code.startswith("ZORPELX_API"):
            names = re.findall(r"\b(zorpelx_\w+)\(", code)
            yield "function", ", ".join(names), comments, code.replace("ZORPELX_API ", "")
        elif code.startswith("enum"):
            yield "status", "", comments, code
        else:
            name = re.search(r"(?:\*(\w+)\)\(|\} (\w+);$)", code)
            yield "record", name[1] or name[2], comments, code


def page():
    text = HEADER.read_text()
    items = list(sections(text))
    functions = [item for item in items if item[0] == "function"]
    names = [name for item in functions for name in item[1].split(", ")]
    opening = re.search(r"^/\* (?!SPDX)(.*?)\*/", text, re.S | re.M)[1]
    opening = opening[opening.index("Every argument is checked") :]
    opening = re.sub(r"\n \* Use:.*?\n \*\n", "\n", opening, flags=re.S)
    example = re.search(r"^ \* Use:\n(.*?)\n \*\n", text, re.S | re.M)[1]
    out = [
        ".\\\" Made from zorpelx.h by scripts/zorpelx_3.py.",
        ".Dd November 22, 2026", ".Dt ZORPELX 3", ".Os", ".Sh NAME",
        *(f".Nm {name}" + " ,".join([""] * 2) for name in names[:-1]), f".Nm {names[-1]}",
        ".Nd partition hypergraphs from inside another program", ".Sh LIBRARY",
        ".Pq libzorpelx, \\-lzorpelx", ".Sh SYNOPSIS", ".In zorpelx.h",
    ]  # fmt: skip
    for _, _, _, code in functions:
        for prototype in re.findall(r"[^;]+;", code):
            flat = " ".join(prototype.split())
            kind, name, arguments = re.fullmatch(r"(.*?)(\w+)\((.*)\);", flat).groups()
            out += [f".Ft {roff(kind.strip())}", f".Fo {name}"]
            out += [f'.Fa "{argument}"' for argument in arguments.split(", ")] + [".Fc"]
    out += [".Sh DESCRIPTION", *prose(opening)]
    for kind, title in (("function", "FUNCTIONS"), ("record", "TYPES")):
        out.append(f".Sh {title}")
        for item, name, comments, code in items:
            if item != kind:
                continue
            if len(comments) > 1 and kind == "function":  # the first is on a group of them
                out += [".Ss Evaluation", *prose(comments[-2])]
            out.append(f".Ss {name}")
            out += prose(comments[-1])
            if kind == "record":
                out += literal(code.split("\n"), "2n")
    status = next(item for item in items if item[0] == "status")
    out += [".Sh RETURN VALUES", *prose(status[2][-1]), *literal(status[3].split("\n"), "2n")]
    example = textwrap.dedent("\n".join(line[2:] for line in example.split("\n")))
    out += [".Sh EXAMPLES", *literal(example.split("\n"))]
    out += [".Sh SEE ALSO", ".Xr zorpelx 1 ,", ".Xr zorpel 3"]
    return "\n".join(out) + "\n"


def main():
    if sys.argv[1:] == ["--check"]:
        sys.exit(PAGE.read_text() != page() and f"{PAGE.name} is not what the header says: run scripts/zorpelx_3.py")
    PAGE.write_text(page())


main()
