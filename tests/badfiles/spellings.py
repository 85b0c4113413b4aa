# SPDX-License-Identifier: MIT
"""Spellings of a number, good and bad, for every place where the files hold one."""

from dataclasses import dataclass


@dataclass
class Spelling:
    text: bytes
    value: int = None  # what the beginning is read as; None: no number there, or one too large
    whole: bool = True  # whether the reading goes on behind it


SPELLINGS = {
    "plus": Spelling(b"+3", 3),
    "two-plusses": Spelling(b"++3"),
    "plus-blank": Spelling(b"+ 3"),
    "minus-zero": Spelling(b"-0", 0),
    "minus-one": Spelling(b"-1", -1),
    "exponent": Spelling(b"1e5", 1, whole=False),
    "fraction": Spelling(b"1.9", 1, whole=False),
    "hexadecimal": Spelling(b"0x3", 0, whole=False),
    "leading-zeros": Spelling(b"0" * 1000 + b"3", 3),
    "text-behind": Spelling(b"3abc", 3, whole=False),
    "text": Spelling(b"abc"),
    "letter-o": Spelling(b"O"),
    "comma": Spelling(b"3,4", 3, whole=False),
    "wide-digit": Spelling("３".encode()),
    "nul-inside": Spelling(b"1\0002", 1, whole=False),
    "nothing": Spelling(b""),
    "int-max-less-one": Spelling(b"2147483646", 2147483646),
    "int-max": Spelling(b"2147483647", 2147483647),
    "int-max-and-one": Spelling(b"2147483648"),
    "int-min": Spelling(b"-2147483648", -2147483648),
    "int-min-less-one": Spelling(b"-2147483649"),
    "wraps-to-three-at-32": Spelling(b"4294967299"),
    "long-max": Spelling(b"9223372036854775807"),
    "long-max-and-one": Spelling(b"9223372036854775808"),
    "long-min-less-one": Spelling(b"-9223372036854775809"),
    "wraps-to-three-at-64": Spelling(b"18446744073709551619"),
    "forty-digits": Spelling(b"9" * 40),
}

HUGE = 10**9  # so many vertices are a matter of memory
