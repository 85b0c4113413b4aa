"""Files: hypergraphs (.hgr), partitions and pre-assignments, plain or compressed by gzip."""

from __future__ import annotations

import contextlib
import gzip
import os
import tempfile
import zlib
from array import array
from typing import IO, Iterable, Iterator, List, Sequence, Tuple, Union

from .api import Partition
from .errors import InputError
from .hypergraph import Hypergraph, HypergraphLike, as_hypergraph, to_ints

Path = Union[str, "os.PathLike[str]"]
GZIP_MAGIC, ZSTD_MAGIC = b"\x1f\x8b", b"\x28\xb5\x2f\xfd"


def _open_text(path: Path) -> IO[str]:
    with open(path, "rb") as beginning:
        start = beginning.read(4)
    if start == ZSTD_MAGIC:
        name = os.fspath(path)
        raise InputError(f"{name} is compressed by zstd, which is for zorpelx only; expand it.")
    if start.startswith(GZIP_MAGIC):
        return gzip.open(path, "rt", encoding="ascii", errors="replace")
    return open(path, "rt", encoding="ascii", errors="replace")


class _Lines:
    """The lines of a file that are no comments, as integers."""

    def __init__(self, path: Path, file: IO[str]) -> None:
        self.path = os.fspath(path)
        self.number = 0
        self.file = file

    def fault(self, sentence: str) -> InputError:
        return InputError(f"{self.path}, line {self.number}: {sentence}")

    def next(self, wanted: str) -> List[int]:
        for line in self.file:
            self.number += 1
            if line.startswith("%"):
                continue
            try:
                return list(map(int, line.split()))
            except ValueError:
                raise self.fault(f"not a line of integers: {line.rstrip()[:40]!r}") from None
        raise InputError(f"{self.path} ends before {wanted}.")

    def rest(self) -> Iterator[int]:
        """Every number that is left."""
        for line in self.file:
            self.number += 1
            try:
                yield from map(int, line.split())
            except ValueError:
                raise self.fault(f"not a line of integers: {line.rstrip()[:40]!r}") from None


@contextlib.contextmanager
def _lines_of_file(path: Path) -> Iterator[_Lines]:
    """The lines of a file; damaged compression is a fault of the file."""
    try:
        with _open_text(path) as file:
            yield _Lines(path, file)
    except (EOFError, gzip.BadGzipFile, zlib.error) as reason:
        raise InputError(f"{os.fspath(path)}: {reason}") from None


def _read_header(lines: _Lines) -> Tuple[int, int, bool, bool]:
    header = lines.next("its header")
    if len(header) not in (2, 3) or min(header[:2]) < 0:
        raise lines.fault("the header should be: hyperedges, vertices and perhaps a format")
    code = header[2] if len(header) == 3 else 0
    if code not in (0, 1, 10, 11):
        raise lines.fault(f"the format is {code} instead of 0, 1, 10 or 11")
    return header[0], header[1], code % 10 == 1, code >= 10


def _check_pins(lines: _Lines, e: int, pins: List[int], nvtxs: int) -> None:
    if not pins:
        raise lines.fault(f"hyperedge {e + 1} has no vertices")
    for vertex in (min(pins), max(pins)):
        if not 1 <= vertex <= nvtxs:
            raise lines.fault(f"vertex {vertex} is not between 1 and {nvtxs}")


def _read_body(lines: _Lines) -> Hypergraph:
    nhedges, nvtxs, hedges_weighted, vertices_weighted = _read_header(lines)
    eptr, eind, hewgts, vwgts = [0], [], [], []  # type: ignore
    for e in range(nhedges):
        pins = lines.next(f"hyperedge {e + 1}")
        if hedges_weighted and pins:
            hewgts.append(pins.pop(0))
        _check_pins(lines, e, pins, nvtxs)
        eind.extend(vertex - 1 for vertex in dict.fromkeys(pins))
        eptr.append(len(eind))
    for v in range(nvtxs if vertices_weighted else 0):
        weight = lines.next(f"the weight of vertex {v + 1}")
        if len(weight) != 1:
            raise lines.fault(f"{len(weight)} numbers instead of the weight of vertex {v + 1}")
        vwgts += weight
    return Hypergraph(
        nvtxs,
        to_ints(eptr, "eptr"),
        to_ints(eind, "eind"),
        to_ints(vwgts, "vertex_weights") if vertices_weighted else None,
        to_ints(hewgts, "hyperedge_weights") if hedges_weighted else None,
    )


def read(path: Path) -> Hypergraph:
    """Reads a hypergraph file. A vertex that a hyperedge repeats counts once, as for the program;
    everything else that is not right is an InputError with the line."""
    with _lines_of_file(path) as lines:
        graph = _read_body(lines)
        for _ in lines.file:  # compression has its checksum at the end
            pass
        return graph


def _write_lines(path: Path, lines: Iterable[str]) -> None:
    """Writes a file, compressed if its name ends with .gz: whole, or the old one stays."""
    name = os.fspath(path)
    folder = os.path.dirname(os.path.abspath(name))
    handle, temporary = tempfile.mkstemp(prefix=".zorpel-", dir=folder)
    try:
        with os.fdopen(handle, "wb") as file:
            if name.endswith(".gz"):
                with gzip.GzipFile("", "wb", fileobj=file, mtime=0) as packed:
                    packed.writelines(line.encode() for line in lines)
            else:
                file.writelines(line.encode() for line in lines)
            file.flush()
            os.fsync(file.fileno())
        mask = os.umask(0)
        os.umask(mask)
        os.chmod(temporary, 0o666 & ~mask)
        os.replace(temporary, name)
    except BaseException:
        os.unlink(temporary)
        raise


def _lines_of(graph: Hypergraph) -> Iterator[str]:
    weighted = graph.hyperedge_weights
    code = (1 if weighted is not None else 0) + (10 if graph.vertex_weights is not None else 0)
    yield f"{len(graph)} {graph.nvtxs}{f' {code}' if code else ''}\n"
    for e, vertices in enumerate(graph):
        if not vertices:
            raise InputError(f"Hyperedge {e} is empty, which the file format cannot express.")
        numbers = [] if weighted is None else [weighted[e]]
        numbers += [v + 1 for v in vertices]
        yield " ".join(map(str, numbers)) + "\n"
    for weight in graph.vertex_weights or ():
        yield f"{weight}\n"


def write(path: Path, hypergraph: HypergraphLike) -> None:
    """Writes a hypergraph file, compressed if its name ends with .gz."""
    _write_lines(path, _lines_of(as_hypergraph(hypergraph)))


def read_partition(path: Path) -> List[int]:
    """Reads a partition or a file of pre-assignments: a number for each vertex."""
    with _lines_of_file(path) as lines:
        parts = array("i")
        try:
            parts.extend(lines.rest())
        except OverflowError:
            raise lines.fault("a number does not fit 32 bits") from None
        return parts.tolist()


def write_partition(path: Path, part: Union[Partition, Sequence[int]]) -> None:
    """Writes a partition, a line for each vertex; compressed if its name ends with .gz."""
    parts = to_ints(part.part if isinstance(part, Partition) else part, "part")
    _write_lines(path, (f"{p}\n" for p in parts))
