# SPDX-License-Identifier: MIT
"""Bad-file corpus: hypergraph files, most of them variations of a chain of four vertices."""

from make_badfiles import CHAIN, LITTLE_MEMORY, hypergraph_case
from spellings import HUGE, SPELLINGS

BUFFER = 131072  # a line is taken in pieces of one less


def text_cases():
    """What a text file is: ends of lines, bytes that are none, comments, blanks."""
    texts = {
        "empty": b"",
        "one-newline": b"\n",
        "only-newlines": b"\n" * 10,
        "only-blanks": b"   \t  ",
        "only-nul": b"\0",
        "only-nuls": b"\0" * 1000,
        "only-comment": b"% nothing else\n",
        "only-comments": b"% one\n%\n% three\n",
        "only-comment-unended": b"% no newline",
        "only-percent": b"%",
        "no-final-newline": CHAIN[:-1],
        "no-final-newline-in-header": b"0 4",
        "no-final-newline-in-weights": b"1 2 10\n1 2\n5\n6",
        "no-final-newline-in-comment": CHAIN + b"% the end",
        "crlf": CHAIN.replace(b"\n", b"\r\n"),
        "crlf-comments": b"% a\r\n" + CHAIN.replace(b"\n", b"\r\n% b\r\n"),
        "crlf-weights": b"1 2 11\r\n7 1 2\r\n5\r\n6\r\n",
        "crlf-empty-hyperedge": b"3 4\r\n1 2\r\n\r\n3 4\r\n",
        "cr-only": CHAIN.replace(b"\n", b"\r"),
        "lf-cr": CHAIN.replace(b"\n", b"\n\r"),
        "nul-before-header": b"\0" + CHAIN,
        "nul-in-header": b"3 4\0 11\n1 2\n2 3\n3 4\n",
        "nul-for-newline": CHAIN.replace(b"\n", b"\0"),
        "nul-before-hyperedge": b"3 4\n1 2\n\0002 3\n3 4\n",
        "nul-in-hyperedge": b"3 4\n1 2\0 3 4\n2 3\n3 4\n",
        "nul-before-percent": b"3 4\n\0% hidden\n1 2\n2 3\n3 4\n",
        "nul-after-all": CHAIN + b"\0\0\0",
        "byte-order-mark": b"\xef\xbb\xbf" + CHAIN,
        "byte-order-mark-and-comment": b"\xef\xbb\xbf% a comment\n" + CHAIN,
        "utf-16": CHAIN.decode().encode("utf-16"),
        "utf-16-without-mark": CHAIN.decode().encode("utf-16-le"),
        "all-bytes": bytes(range(256)),
        "bytes-ff": b"\xff" * 64,
        "gzip": bytes.fromhex(
            "1f8b08000000000000033356305162325330e232503060023200b33a9bd111000000"
        ),
        "html": b"<!DOCTYPE html>\n<html>\n404\n</html>\n",
        "end-of-file-mark": CHAIN + b"\x1a",
        "tabs": CHAIN.replace(b" ", b"\t"),
        "vertical-tabs-and-form-feeds": b"3\v4\n1\f2\n2\v3\n3\f4\n",
        "non-breaking-blanks": CHAIN.replace(b" ", "\u00a0".encode()),
        "blanks-around": b"   3   4   \n   1   2   \n 2 3 \n 3 4 \n",
        "blank-line-first": b"\n" + CHAIN,
        "blank-lines-last": CHAIN + b"\n\n\n",
        "comments-everywhere": b"%\n%%\n3 4\n% 9 9\n1 2\n%x\n%y\n2 3\n%\n3 4\n%\n",
        "comment-after-blank": b" % no comment\n" + CHAIN,
        "comment-after-blank-in-body": b"3 4\n1 2\n % no comment\n2 3\n3 4\n",
        "comment-behind-numbers": b"3 4 % sizes\n1 2 % one\n2 3 % two\n3 4 % three\n",
        "comment-with-hash": b"# no comment here\n" + CHAIN,
        "lines-left-over": CHAIN + b"1 4\nand more\n",
    }
    return [hypergraph_case(f"text-{name}", text) for name, text in texts.items()]


def header_cases():
    body = b"1 2\n2 3\n3 4\n"
    weighted = b"7 1 2\n7 2 3\n7 3 4\n5\n5\n5\n5\n"
    headers = {
        "without-numbers": b"\n" + body,
        "of-one-number": b"3\n" + body,
        "of-four-numbers": b"3 4 0 9\n" + body,
        "of-words": b"three four\n" + body,
        "second-is-text": b"3 four\n" + body,
        "text-behind-second": b"3 4x\n" + body,
        "text-behind-first": b"3x 4\n" + body,
        "third-is-text": b"3 4 none\n" + body,
        "on-two-lines": b"3\n4\n" + body,
        "comma": b"3,4\n" + body,
        "no-hyperedges": b"0 4\n",
        "no-hyperedges-but-lines": b"0 4\n" + body,
        "no-hyperedges-with-weights": b"0 4 11\n5\n5\n5\n5\n",
        "no-hyperedges-weights-missing": b"0 4 10\n5\n",
        "negative-hyperedges": b"-3 4\n" + body,
        "negative-vertices": b"3 -4\n" + body,
        "both-negative": b"-3 -4\n" + body,
        "no-vertices": b"3 0\n" + body,
        "one-vertex": b"1 1\n1\n",
        "one-vertex-code-100": b"1 1 100\n1\n",
        "no-sizes": b"0 0\n",
        "sizes-exchanged": b"4 3\n" + body,
    }
    cases = [hypergraph_case(f"header-{name}", text) for name, text in headers.items()]
    for code in (
        "00",
        "1",
        "2",
        "9",
        "10",
        "011",
        "12",
        "20",
        "21",
        "90",
        "99",
        "100",
        "101",
        "110",
    ):
        cases.append(hypergraph_case(f"header-code-{code}", f"3 4 {code}\n".encode() + weighted))
    for code in (-1, -9, -10, -11, -100, -2147483648):
        text = f"3 4 {code}\n".encode() + body
        cases.append(hypergraph_case(f"header-code-minus-{-code}", text, b"3 4\n" + body))
    return cases + count_cases()


def count_cases():
    """Counts of 10^9 over a body of twenty bytes."""
    body = b"1 2\n2 3\n3 4\n% 20 bs\n"
    return [
        hypergraph_case("count-hyperedges-1e9", b"1000000000 4\n" + body),
        hypergraph_case("count-hyperedges-1e9-weighted", b"1000000000 4 11\n" + body),
        hypergraph_case("count-both-1e9", b"1000000000 1000000000\n" + body),
        hypergraph_case("count-vertices-1e9", b"3 1000000000\n" + body, memory=LITTLE_MEMORY),
        hypergraph_case(
            "count-vertices-1e9-weighted", b"3 1000000000 10\n" + body, memory=LITTLE_MEMORY
        ),
        hypergraph_case("count-vertices-1e9-alone", b"0 1000000000\n", memory=LITTLE_MEMORY),
    ]


def number_cases():
    places = {
        "hyperedges": b"%s 4\n1 2\n2 3\n3 4\n",
        "vertices": b"3 %s\n1 2\n2 3\n3 4\n",
        "code": b"3 4 %s\n1 2\n2 3\n3 4\n1\n1\n1\n1\n",
        "pin": b"3 4\n1 %s\n2 3\n3 4\n",
        "hyperedge-weight": b"3 4 1\n%s 1 2 1\n5 2 3\n5 3 4 3 4\n",
        "vertex-weight": b"3 4 10\n1 2\n2 3\n3 4\n1\n%s\n1\n1\n",
    }
    return [
        number_case(place, text, name, spelling)
        for place, text in places.items()
        for name, spelling in SPELLINGS.items()
    ]


def number_case(place, text, name, spelling):
    value = spelling.value or 0
    as_read = None
    if place == "code":
        as_read = text % (b"%d" % max(value, 0))  # a negative code is none
    elif place == "vertex-weight":
        as_read = text % (b"%d" % value)
    memory = LITTLE_MEMORY if place == "vertices" and value > HUGE else None
    return hypergraph_case(f"number-{place}-{name}", text % spelling.text, as_read, memory=memory)


def padded(start, length, end=b""):
    """start and end with blanks between them, length characters in all."""
    return start + b" " * (length - len(start) - len(end)) + end


def line_cases():
    """Lines about as long as the buffer, and far longer: what is beyond is the next line."""
    cases = []
    for length in (BUFFER - 2, BUFFER - 1, BUFFER, 2 * (BUFFER - 1), 10**7):
        lines = {
            "header": padded(b"3 4", length) + b"\n1 2\n2 3\n3 4\n",
            "hyperedge": b"3 4\n" + padded(b"1 2", length) + b"\n2 3\n3 4\n",
            "last-hyperedge": b"3 4\n1 2\n2 3\n" + padded(b"3 4", length),
            "hyperedge-ends-in-number": b"3 4\n" + padded(b"1", length, b"22") + b"\n2 3\n3 4\n",
            "comment": padded(b"%", length) + b"\n" + CHAIN,
            "comment-in-body": b"3 4\n1 2\n" + padded(b"%", length) + b"\n2 3\n3 4\n",
            "vertex-weight": b"1 3 10\n1 2\n" + padded(b"5", length) + b"\n5\n5\n",
        }
        cases += [line_case(f"{length}-{name}", text) for name, text in lines.items()]
    many = b"1 2 3 4 " * 1250000
    return cases + [
        line_case("of-percents", b"%" * (3 * BUFFER) + b"\n" + CHAIN),
        line_case("10000000-of-pins", b"2 4\n" + many + b"\n3 4\n"),
        line_case("of-digits", b"3 4\n1 " + b"2" * BUFFER + b"\n2 3\n3 4\n"),
        line_case("of-zeros", b"3 4\n1 " + b"0" * BUFFER + b"2\n2 3\n3 4\n"),
    ]


def line_case(name, text):
    """The checker is given each piece as a line, and for one without a number a 0."""
    pieces = [
        line[i : i + BUFFER - 1].strip() or b"0"
        for line in text.splitlines(keepends=True)
        for i in range(0, len(line), BUFFER - 1)
    ]
    return hypergraph_case(f"line-{name}", text, b"\n".join(pieces) + b"\n")


def pin_cases():
    texts = {
        "zero-first": b"3 4\n0 1 2\n2 3\n3 4\n",
        "zero-within": b"3 4\n1 2 0 3\n2 3\n3 4\n",
        "zero-in-last": b"3 4\n1 2\n2 3\n0 3 4\n",
        "negative-first": b"3 4\n-1 2\n2 3\n3 4\n",
        "negative-within": b"3 4\n1 2 -3 4\n2 3\n3 4\n",
        "above-count": b"3 4\n1 2\n2 5\n3 4\n",
        "above-count-in-last": b"3 4\n1 2\n2 3\n3 5\n",
        "above-count-behind-zero": b"3 4\n1 2\n2 3 0 5\n3 4\n",
        "above-count-behind-text": b"3 4\n1 2\n2 3 x 5\n3 4\n",
        "empty-first": b"3 4\n\n2 3\n3 4\n",
        "empty-middle": b"3 4\n1 2\n\n3 4\n",
        "empty-last": b"3 4\n1 2\n2 3\n\n",
        "empty-only": b"1 4\n\n",
        "empty-all": b"3 4\n\n\n\n",
        "empty-two": b"4 4\n1 2\n\n\n3 4\n",
        "empty-weighted": b"3 4 1\n5 1 2\n5\n5 3 4\n",
        "empty-weighted-last": b"3 4 1\n5 1 2\n5 2 3\n5\n",
        "empty-without-weight": b"3 4 1\n5 1 2\n\n5 3 4 3\n",
        "repeated": b"2 4\n1 2 1 2 2 1\n3 4 3\n",
        "all-the-same": b"2 4\n2 2 2 2\n3 4\n",
        "single": b"3 4\n1\n2\n3 4\n",
        "text": b"3 4\n1 2\na b\n3 4\n",
        "text-within": b"3 4\n1 two 3\n2 3\n3 4\n",
        "commas": b"3 4\n1,2\n2,3\n3,4\n",
        "line-missing": b"3 4\n1 2\n2 3\n",
        "line-missing-before-comment": b"3 4\n1 2\n2 3\n% no more\n",
        "all-lines-missing": b"3 4\n",
        "all-lines-missing-unended": b"3 4",
    }
    return [hypergraph_case(f"pins-{name}", text) for name, text in texts.items()]


def weight_cases():
    chain = b"1 2\n2 3\n3 4\n"
    texts = {
        "hyperedge-zero-hides": b"2 4 1\n0 1 2\n5 3 4\n",
        "hyperedge-zero": b"2 4 1\n0 1 2\n5 3 4 3 4 3\n",
        "hyperedge-negative-hides": b"2 4 1\n-5 1 2\n5 3 4\n",
        "hyperedge-negative": b"2 4 1\n-5 1 2\n5 3 4 3 4 3\n",
        "hyperedge-text": b"2 4 1\nheavy 1 2\n5 3 4\n",
        "hyperedge-all-zero": b"2 4 1\n0 1 2\n0 3 4\n",
        "hyperedge-total-at-limit": b"2 4 1\n2147483645 1 2\n1 3 4\n",
        "hyperedge-total-above-limit": b"2 4 1\n2147483645 1 2\n2 3 4\n",
        "vertex-all-zero": b"3 4 10\n" + chain + b"0\n0\n0\n0\n",
        "vertex-one-zero": b"3 4 10\n" + chain + b"1\n0\n1\n1\n",
        "vertex-negative": b"3 4 10\n" + chain + b"1\n1\n-1\n1\n",
        "vertex-text": b"3 4 10\n" + chain + b"1\nheavy\n1\n1\n",
        "vertex-several-on-a-line": b"3 4 10\n" + chain + b"1 2 3 4\n",
        "vertex-rest-of-line-ignored": b"3 4 10\n" + chain + b"1 x\n1 2\n1,5\n1.5\n",
        "vertex-missing": b"3 4 10\n" + chain,
        "vertex-last-missing": b"3 4 10\n" + chain + b"1\n1\n1\n",
        "vertex-missing-before-comment": b"3 4 10\n" + chain + b"1\n1\n1\n% no more\n",
        "vertex-comments-between": b"3 4 10\n" + chain + b"1\n% one\n1\n% two\n1\n1\n",
        "vertex-blank-line": b"3 4 10\n" + chain + b"1\n\n1\n1\n",
        "vertex-total-at-limit": b"3 4 10\n" + chain + b"2147483643\n1\n1\n1\n",
        "vertex-total-above-limit": b"3 4 10\n" + chain + b"2147483644\n1\n1\n1\n",
        "vertex-total-wraps": b"3 4 10\n" + chain + b"2147483647\n2147483647\n1\n1\n",
    }
    read_as = {
        "vertex-text": b"3 4 10\n" + chain + b"1\n0\n1\n1\n",
        "vertex-blank-line": b"3 4 10\n" + chain + b"1\n0\n1\n1\n",
    }
    return [hypergraph_case(f"weight-{n}", text, read_as.get(n)) for n, text in texts.items()]


def cases():
    return [
        *text_cases(),
        *header_cases(),
        *number_cases(),
        *line_cases(),
        *pin_cases(),
        *weight_cases(),
    ]
