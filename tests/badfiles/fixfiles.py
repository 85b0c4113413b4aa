# SPDX-License-Identifier: MIT
"""Bad-file corpus: fix files for a chain of four vertices in two parts."""

from make_badfiles import fix_case
from spellings import SPELLINGS


def text_cases():
    texts = {
        "empty": b"",
        "one-newline": b"\n",
        "only-blanks": b"  \t\n \n",
        "short": b"1\n-1\n",
        "short-by-one": b"1\n-1\n0\n",
        "long": b"1\n-1\n0\n-1\n0\n1\n7\n",
        "long-with-text": b"1\n-1\n0\n-1\nthe end\n",
        "no-final-newline": b"1\n-1\n0\n-1",
        "crlf": b"1\r\n-1\r\n0\r\n-1\r\n",
        "cr-only": b"1\r-1\r0\r-1\r",
        "on-one-line": b"1 -1 0 -1\n",
        "blank-lines": b"\n\n1\n\n\n-1\n0\n\n-1\n",
        "blanks-10000000": b"1\n-1\n" + b" " * 10**7 + b"0\n-1\n",
        "comment": b"% parts\n1\n-1\n0\n-1\n",
        "comment-within": b"1\n-1\n% half\n0\n-1\n",
        "text-first": b"free\n-1\n1\n-1\n",
        "text-last": b"1\n-1\n0\nfree\n",
        "commas": b"1,-1,0,-1\n",
        "nul-between": b"1\n\0-1\n0\n-1\n",
        "byte-order-mark": b"\xef\xbb\xbf1\n-1\n0\n-1\n",
        "utf-16": "1\n-1\n0\n-1\n".encode("utf-16"),
        "all-free": b"-1\n-1\n-1\n-1\n",
        "all-in-part-0": b"0\n0\n0\n0\n",
        "all-in-part-1": b"1\n1\n1\n1\n",
        "part-equals-nparts": b"1\n-1\n2\n-1\n",
        "part-above-nparts": b"1\n-1\n99\n-1\n",
        "below-minus-one": b"1\n-2\n0\n-1\n",
        "below-minus-one-all": b"-2\n-3\n-4\n-5\n",
        "below-minus-one-and-above-nparts": b"-2\n5\n0\n-1\n",
        "bad-entry-after-the-last-vertex": b"1\n-1\n0\n-1\n-2\n99\n",
        "sign-alone": b"1\n-\n0\n-1\n",
    }
    read_as = {  # what follows the first bad entry is 0
        "empty": (0, 0, 0, 0),
        "one-newline": (0, 0, 0, 0),
        "only-blanks": (0, 0, 0, 0),
        "short": (1, -1, 0, 0),
        "short-by-one": (1, -1, 0, 0),
        "comment": (0, 0, 0, 0),
        "comment-within": (1, -1, 0, 0),
        "text-first": (0, 0, 0, 0),
        "text-last": (1, -1, 0, 0),
        "commas": (1, 0, 0, 0),
        "nul-between": (1, 0, 0, 0),
        "byte-order-mark": (0, 0, 0, 0),
        "utf-16": (0, 0, 0, 0),
        "sign-alone": (1, 0, 0, 0),
    }
    return [
        fix_case(f"fix-{name}", text, entries(*read_as[name]) if name in read_as else None)
        for name, text in texts.items()
    ]


def entries(*parts):
    return b"".join(b"%d\n" % part for part in parts)


def number_cases():
    """The second entry in every spelling; a run accepts only -1, 0 and 1."""
    made = []
    for name, spelling in SPELLINGS.items():
        second = spelling.value or 0
        rest = (0, 1) if spelling.value is not None and spelling.whole else (0, 0)
        text = b"-1\n%s\n0\n1\n" % spelling.text
        if name == "nothing":
            second, rest = 0, (1, 0)  # a blank line is no entry, so all move up
        made.append(fix_case(f"fix-number-{name}", text, entries(-1, second, *rest)))
    return made


def cases():
    return [*text_cases(), *number_cases()]
