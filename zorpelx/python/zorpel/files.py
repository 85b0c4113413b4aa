# SPDX-License-Identifier: MIT
"""Files: hypergraphs of all formats, partitions and pre-assignments, read as the program zorpelx reads
them, by the same code."""

from __future__ import annotations

import bz2
import gzip
import lzma
import os
import warnings
from dataclasses import dataclass
from typing import List, Optional, Sequence, Union

from . import _filelib as filelib
from ._output import write_files
from .errors import InputError
from .hypergraph import Hypergraph, HypergraphLike, Origin, as_hypergraph, pointer, to_ints
from .results import Partition

Path = Union[str, "os.PathLike[str]"]
SEVERITIES = ("note", "warning", "error", "error")
NOTE, WARNING, LOSS, ERROR = range(4)


class FileWarning(UserWarning):
    """A file was read in another way than it may have been meant."""


@dataclass(frozen=True)
class Finding:
    """Something that lint() found."""

    rule: str  #: "H13"; zorpelx lint --explain H13 says more
    name: str  #: "zero-based"
    severity: str  #: "note", "warning" or "error"
    forcible: bool  #: an error for what is lost, that force goes on without
    line: int  #: from 1; 0: the file as a whole
    column: int  #: from 1
    text: str


@dataclass(frozen=True)
class Lint:
    """What lint() found in a file."""

    findings: List[Finding]  #: in the order of the file
    errors: int
    warnings: int
    notes: int
    read_by_zorpel: Optional[bool]  #: what the plain program makes of the file; None: not known

    def __bool__(self) -> bool:
        """Whether something is an error."""
        return self.errors > 0


def _copy(file: filelib.OpenFile, origin: Origin) -> Hypergraph:
    record = file.hypergraph()
    assert record is not None  # a reading without one is an error
    npins = record.eptr[record.nhedges]
    return Hypergraph(
        record.nvtxs,
        filelib.copy_of(record.eptr, record.nhedges + 1),
        filelib.copy_of(record.eind, npins),
        filelib.copy_of(record.vwgts, record.nvtxs) if record.vwgts else None,
        filelib.copy_of(record.hewgts, record.nhedges) if record.hewgts else None,
        file.names(0, record.nvtxs),
        file.names(1, record.nhedges),
        file.entries("fixed", record.nvtxs),
        file.entries("groups", record.nvtxs),
        origin,
    )


def _warn(path: Path, file: filelib.OpenFile, told: str) -> None:
    for severity, word in ((LOSS, "error"), (WARNING, "warning")):
        count = file.count(severity) - file.count(LOSS if severity == WARNING else ERROR + 1)
        if count > 0:
            sentence = f"{os.fspath(path)}: {count} {word}{'s' * (count > 1)}; {told}"
            warnings.warn(sentence, FileWarning, stacklevel=3)


def read(
    path: Path,
    *,
    format: Optional[str] = None,  # pylint: disable=redefined-builtin
    model: Optional[str] = None,
    areas: Optional[Path] = None,
    skip_nets: Optional[str] = None,
    top_module: Optional[str] = None,
    from_: int = 1,
    lines: str = "whole",
    force: bool = False,
    strict: bool = False,
    timeout: Optional[float] = None,
    memory: Optional[int] = None,
) -> Hypergraph:
    """Reads a hypergraph of any format, plain or compressed by gzip, zstd, xz or bzip2.

    The content tells the format: hgr, mtx, cnf, yosys, hif, blif, bookshelf, verilog, csv, tsv,
    jsonl or edges. Names, fixed vertices and groups come with it, and partition() keeps to them.

    An error is an InputError with file, line and column; what loses vertices or weights is one
    unless force is given. Warnings are told as a FileWarning; lint() says more. The options are
    those of the program zorpelx:

    format: the format by its name; None: as the content tells.
    model: how a matrix or a formula is read: row-net, column-net or fine-grain; primal, dual or
        literal.
    areas: path of the areas of types of cells, a table or a Liberty file.
    skip_nets: patterns of nets to leave out, between commas.
    top_module: of a netlist.
    from_: number of the first vertex in a hypergraph file, 1 or 0.
    lines: refuse, whole or pieces: what to do with lines of more than 131071 characters.
    force: go on without vertices or weights that are lost.
    strict: take warnings for errors.
    timeout: seconds; None or 0 for no deadline.
    memory: MiB that reading may take; None or 0 for no cap.
    """
    options = filelib.read_options(from_, lines, force, strict, timeout, memory)
    filelib.set_format(options, format=format, model=model, skip_nets=skip_nets)
    filelib.set_format(
        options, areas=None if areas is None else os.fspath(areas), top_module=top_module
    )
    with filelib.read_by("zorpelx_read_hypergraph", path, options) as file:
        _warn(path, file, "zorpel.lint() says more")
        words = {"from": format or file.format(), "model": model, "skip-nets": skip_nets}
        words.update({"top-module": top_module, "first": str(from_)})
        words["areas"] = None if areas is None else os.fspath(areas)
        told = {name: word for name, word in words.items() if word is not None}
        return _copy(file, Origin(os.fspath(path), told))


def lint(
    path: Path,
    *,
    from_: int = 1,
    lines: str = "whole",
    limit: int = 20,
    timeout: Optional[float] = None,
    memory: Optional[int] = None,
) -> Lint:
    """Finds what is wrong or surprising in a hypergraph file, as the command zorpelx lint does.

    limit: findings listed of each rule; 0 for all. The other options are those of read().
    """
    options = filelib.read_options(from_, lines, False, False, timeout, memory)
    if not isinstance(limit, int) or not 0 <= limit < 2**31:
        raise InputError(f"limit is {limit!r}; it should be 0 or more.", 2)
    options.listed = limit
    with filelib.read_by("zorpelx_lint_hypergraph", path, options) as file:
        found = [
            Finding(
                one.rule.decode(),
                one.name.decode(),
                SEVERITIES[one.severity],
                one.severity == LOSS,
                one.line,
                one.column,
                one.text.decode(errors="replace"),
            )
            for one in file.findings()
        ]
        notes, warned, errors = (file.count(severity) for severity in (NOTE, WARNING, LOSS))
        return Lint(found, errors, warned - errors, notes - warned, file.suits_zorpel())


def read_partition(
    path: Path,
    hypergraph: Optional[HypergraphLike] = None,
    *,
    timeout: Optional[float] = None,
    memory: Optional[int] = None,
) -> List[int]:
    """Reads a partition or a file of pre-assignments: a number for each vertex.

    hypergraph: what is partitioned. The file is then a partition of it, and may be a table of names
    and parts as zorpelx annotate writes it; vertices without names are called 1, 2, ... there.
    """
    options = filelib.read_options(1, "whole", False, False, timeout, memory)
    if hypergraph is None:
        return _read_numbers("zorpelx_read_numbers", path, options)
    return _read_numbers("zorpelx_read_named_partition", path, options, as_hypergraph(hypergraph))


def _read_numbers(
    routine: str, path: Path, options: filelib.CReadOptions, graph: Optional[Hypergraph] = None
) -> List[int]:
    more = [] if graph is None else [graph.nvtxs, *filelib.packed_names(graph.vertex_names)]
    with filelib.read_by(routine, path, options, *more) as file:
        _warn(path, file, "the last line has no newline: it may have been cut off")
        return file.numbers().tolist()


def read_choice(path: Path, graph: Hypergraph) -> List[int]:
    """Reads what is said of each vertex: numbers, or a table of names and parts in which vertices
    without a row have -1."""
    options = filelib.read_options(1, "whole", False, False, None, None)
    return _read_numbers("zorpelx_read_named_numbers", path, options, graph)


def _packed(name: str, text: bytes) -> bytes:
    if name.endswith(".gz"):
        return gzip.compress(text, mtime=0)
    if name.endswith(".xz"):
        return lzma.compress(text)
    if name.endswith(".bz2"):
        return bz2.compress(text)
    if name.endswith(".zst"):
        raise InputError(f"{name}: zstd is read only; .gz, .xz and .bz2 are written.", 2)
    return text


def _write_bytes(path: Path, text: bytes) -> None:
    """Writes a file, compressed if its name says so: whole, or the old one stays."""
    write_files([(path, _packed(os.fsdecode(path), text))])


def write(path: Path, hypergraph: HypergraphLike) -> None:
    """Writes a hypergraph file, compressed if its name ends with .gz, .xz or .bz2."""
    graph = as_hypergraph(hypergraph)
    _write_bytes(path, filelib.text_by("zorpelx_hypergraph_text", graph.record()))


def write_partition(path: Path, part: Union[Partition, Sequence[int]]) -> None:
    """Writes a partition, a line for each vertex; compressed if its name ends with .gz, .xz or
    .bz2."""
    parts = to_ints(part.part if isinstance(part, Partition) else part, "part")
    _write_bytes(path, filelib.text_by("zorpelx_numbers_text", pointer(parts), len(parts)))
