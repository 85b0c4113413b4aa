# SPDX-License-Identifier: MIT
"""Bad-file corpus: names that are odd, that name no readable file, or no writable one."""

from make_badfiles import CHAIN, OPTIONS, Case, Directory, Fifo, Link, Locked


FIX = b"1\n-1\n0\n-1\n"


def odd_names():
    names = {
        "blank": "my circuit.hgr",
        "blanks": "  ",
        "percent-s": "%s%s%s%s%s.hgr",
        "percent-n": "%n.hgr",
        "percent-d": "%d%999999999d.hgr",
        "newline": "two\nlines.hgr",
        "tab": "tab\there.hgr",
        "escape": "\x1b[31mred.hgr",
        "backslash": "back\\slash\\n.hgr",
        "quotes": '"it\'s".hgr',
        "leading-minus": "-2",
        "looks-like-option": "--help",
        "star": "*.hgr",
        "not-utf-8": "\udcff\udcfe.hgr",
        "accents": "schéma-überprüft.hgr",
        "dot-slash": "./././in.hgr",
        "double-slash": "deep//folder//in.hgr",
        "no-extension": "g",
        "hidden": ".hgr",
        "looks-like-output": "g.part.2",
        "of-200-letters": "n" * 200,
    }
    cases = []
    for kind, name in names.items():
        cases.append(Case(f"name-{kind}", [name, *OPTIONS], {name: CHAIN}))
    for kind in ("percent-s", "newline", "leading-minus", "not-utf-8"):
        files = {"in.hgr": CHAIN, names[kind]: b"7\n"}
        cases.append(Case(f"name-of-fix-{kind}", ["in.hgr", names[kind], *OPTIONS], files))
    return cases


def unreadable(place):
    """Cases for the file at words[place]: 0 is the hypergraph, 1 the fix file."""
    what = ("hgr", "fix")[place]
    contents = (CHAIN, FIX)[place]
    files = {
        "missing": ("nosuch", {}),
        "empty-name": ("", {}),
        "directory": ("in", {"in": Directory()}),
        "current-directory": (".", {}),
        "dangling-link": ("in", {"in": Link("nowhere")}),
        "circular-link": ("in", {"in": Link("in")}),
        "below-a-file": ("in/file", {"in": contents}),
        "slash-behind-file": ("in/", {"in": contents}),
        "too-long": ("n" * 256, {}),
        "path-too-long": ("d/" * 2100 + "in", {}),
        "null-device": ("in", {"in": Link("/dev/null")}),
        "link-to-file": ("in", {"in": Link("really"), "really": contents}),
        "pipe": ("in", {"in": Fifo(contents)}),
        "empty-pipe": ("in", {"in": Fifo(b"")}),
        "unreadable": ("in", {"in": Locked(contents)}),
    }
    cases = []
    for kind, (name, made) in files.items():
        words = [name, *OPTIONS] if place == 0 else ["in.hgr", name, *OPTIONS]
        made = made if place == 0 else {"in.hgr": CHAIN, **made}
        empty = place == 1 and kind in ("empty-pipe", "null-device")
        reads_as = {name: b"0\n0\n0\n0\n"} if empty else {}
        cases.append(Case(f"{what}-{kind}", words, made, reads_as=reads_as))
    return cases


def same_file_twice():
    return [
        Case("fix-is-the-hypergraph", ["in.hgr", "in.hgr", *OPTIONS], {"in.hgr": CHAIN}),
        Case("hgr-is-a-partition", ["in.fix", *OPTIONS], {"in.fix": FIX}),
    ]


def outputs():
    out = "in.hgr.part.2"
    words = ["in.hgr", *OPTIONS]
    ways = {
        "directory-in-the-way": {out: Directory()},
        "full-device": {out: Link("/dev/full")},
        "null-device": {out: Link("/dev/null")},
        "link-to-nowhere": {out: Link("no/such/folder")},
        "circular-link": {out: Link(out)},
        "not-to-be-written": {out: Locked(b"")},
        "link-below-a-file": {out: Link("in.hgr/below")},
    }
    cases = [Case(f"out-{kind}", words, {"in.hgr": CHAIN, **made}) for kind, made in ways.items()]
    long = "n" * 250
    pins = " ".join(str(v) for v in range(1, 30001))  # a partition file of more than a block
    large = f"1 30000\n{pins}\n".encode()
    return cases + [
        Case("out-name-too-long", [long, *OPTIONS], {long: CHAIN}),
        Case("out-full-device-late", words, {"in.hgr": large, out: Link("/dev/full")}),
    ]


def cases():
    return [*odd_names(), *unreadable(0), *unreadable(1), *same_file_twice(), *outputs()]
