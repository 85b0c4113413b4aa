# SPDX-License-Identifier: MIT
"""Partitioning and evaluation."""

from __future__ import annotations

import ctypes
import math
import os
import re
import signal
import threading
from array import array
from typing import Any, Callable, Dict, Iterable, List, Mapping, Optional, Sequence, Tuple, Union

from . import _library as lib
from . import options as opt
from ._patterns import by_name
from .errors import Error, FileError, InputError, OutOfMemoryError, error_for
from .hypergraph import (
    Hypergraph,
    HypergraphLike,
    Path,
    as_hypergraph,
    is_path,
    pointer,
    to_ints,
    wants_numpy,
    with_names,
)
from .results import Bin, Partition, Progress, Quality, Spread, Stats, Step

#: Parts that any number of vertices may have; beyond, there are at least as many vertices.
MOST_EMPTY_PARTS = 1000000
MOST_MATRIX_PARTS = 10000
MOST_LISTED_PARTS = 100000000
MOST_CAPACITIES_TEXT = 1 << 26  # characters of a file of them

Parts = Union[Partition, Sequence[int], Path]
_OUR_NAMES = {
    "vwgts": "vertex_weights",
    "hewgts": "hyperedge_weights",
    "fixed": "fix",
    "groups": "together",
    "keep_price": "keep_in_place",
}


def _in_our_names(message: bytes) -> str:
    """A sentence of the library in the words of this package."""
    sentence = message.decode(errors="replace")
    names = r"\b(vwgts|hewgts|fixed|groups)(?=\[)|\b(keep_price)\b"
    return re.sub(names, lambda name: _OUR_NAMES[name[0]], sentence)


def _fault(status: int, message: bytes) -> Error:
    """The exception for a status of the library."""
    return error_for(status, _in_our_names(message))


class _Callbacks:
    """Functions for the library. What a Python function throws cancels the call, then comes out.

    So does what a signal handler throws, such as Ctrl-C: Python runs handlers when it is called
    back, where nobody would see the exception, so they are wrapped while the call lasts.
    """

    def __init__(self, progress: Optional[Callable[[Progress], Any]], traced: bool) -> None:
        self.progress = progress
        self.thrown: Optional[BaseException] = None
        self.texts: Dict[int, str] = {}
        self.handlers: Dict[int, Any] = {}
        self.on_progress = lib.ProgressFunction(self._tell_progress)
        self.on_trace = lib.TraceFunction(self._keep_trace) if traced else lib.NO_TRACES

    def traces(self) -> List[str]:
        """The text of each start; of those before the last that gave one, perhaps empty."""
        return [self.texts.get(start, "") for start in range(max(self.texts, default=-1) + 1)]

    def __enter__(self) -> _Callbacks:
        try:
            self._wrap()
        except BaseException:
            self._restore()
            raise
        return self

    def __exit__(self, *_exception: Any) -> None:
        self._restore()

    def _wrap(self) -> None:
        """Each handler is noted before it is replaced. That of the keyboard comes first and is the
        last to be there again: a handler that is wrapped throws nothing here."""
        if threading.current_thread() is not threading.main_thread():
            return
        for number in sorted(signal.valid_signals(), key=lambda number: number != signal.SIGINT):
            handler = signal.getsignal(number)
            if callable(handler):
                self.handlers[number] = handler
                signal.signal(number, self._handle_signal)

    def _restore(self) -> None:
        while self.handlers:
            try:
                number = next(reversed(self.handlers))
                signal.signal(number, self.handlers[number])
                del self.handlers[number]
            except BaseException as thrown:  # pylint: disable=broad-except
                self.thrown = thrown

    def _handle_signal(self, number: int, frame: Any) -> None:
        try:
            self.handlers[number](number, frame)
        except BaseException as thrown:  # pylint: disable=broad-except
            self.thrown = thrown

    def _tell_progress(self, _user: Any, record: Any) -> int:
        try:
            if self.progress is None or self.thrown is not None:
                return self.thrown is not None
            fields = {name: getattr(record[0], name) for name in Progress.__dataclass_fields__}
            fields["step"] = fields["step"].decode()
            return bool(self.progress(Progress(**fields)))
        except BaseException as thrown:  # pylint: disable=broad-except
            self.thrown = thrown
            return 1

    def _keep_trace(self, _user: Any, start: int, text: Any, length: int) -> None:
        try:
            self.texts[start] = ctypes.string_at(text, length).decode(errors="replace")
        except BaseException as thrown:  # pylint: disable=broad-except
            self.thrown = thrown


def _as_numpy(values: array[int]) -> Any:
    import numpy  # pylint: disable=import-outside-toplevel

    return numpy.array(values, dtype=numpy.intc)


def _read_parts(parts: Any, graph: Optional[Hypergraph] = None) -> Any:
    """The numbers of a file of them, if this is the path of one; with a hypergraph, the file is a
    partition of it."""
    if not is_path(parts):
        return parts
    from .files import read_partition  # pylint: disable=import-outside-toplevel,cyclic-import

    return read_partition(parts, graph)


def _per_vertex(values: Any, name: str, graph: Hypergraph) -> Optional[array[int]]:
    """A number for each vertex, from a list, a partition, a file, or by patterns of names."""
    if values is None:
        return None
    if isinstance(values, Mapping):
        return by_name(values, name, graph)
    if isinstance(values, Partition):
        values = values.part
    if is_path(values) and name != "start":
        from .files import read_choice  # pylint: disable=import-outside-toplevel,cyclic-import

        values = read_choice(values, graph)
    ints = to_ints(_read_parts(values, graph), name)
    if len(ints) != graph.nvtxs:
        raise InputError(f"{name} has {len(ints)} entries instead of {graph.nvtxs}.")
    return ints


def _groups(together: Any, graph: Hypergraph) -> Optional[array[int]]:
    """Any numbers from 0 as numbers below nvtxs: the first vertex of each group."""
    numbers = _per_vertex(together, "together", graph)
    if numbers is None:
        return None
    first: Dict[int, int] = {}
    for vertex, group in enumerate(numbers):
        if group < -1:
            raise InputError(f"together[{vertex}] is {group}; it should be -1 or more.")
        first.setdefault(group, vertex)
    return array("i", [-1 if group < 0 else first[group] for group in numbers])


def _numbers_in(path: Path) -> List[str]:
    try:
        with open(path, encoding="ascii") as file:
            return file.read(MOST_CAPACITIES_TEXT).replace(",", " ").split()
    except OSError as reason:
        raise FileError(f"Cannot read {os.fsdecode(path)}: {reason.strerror}.") from reason
    except ValueError:
        raise InputError(f"{os.fsdecode(path)!r} is no file of numbers.") from None


def _size(place: int, value: Any) -> float:
    try:
        size = float(value)
    except (TypeError, ValueError, OverflowError):
        size = math.nan
    if not 0 < size < math.inf:
        raise opt.bad_option(f"capacities[{place}] is {value!r}; it should be above 0.")
    return size


def _capacities(capacities: Any, nparts: int) -> Any:
    """The sizes of the parts for the library; None is NULL."""
    if capacities is None:
        return None
    if is_path(capacities):
        capacities = _numbers_in(capacities)
    try:
        sizes = [_size(place, value) for place, value in enumerate(capacities)]
    except TypeError:
        raise opt.bad_option(f"capacities is {capacities!r} instead of a list of numbers.") from None
    if len(sizes) != nparts:
        raise opt.bad_option(f"capacities has {len(sizes)} numbers; there are {nparts} parts.")
    return (ctypes.c_double * nparts)(*sizes)


def _percent(name: str, value: Any, default: float) -> float:
    return default if value is None else opt.check_real(name, value, "percent")


def _seconds(name: str, value: Any) -> float:
    return 0 if value is None else opt.check_real(name, value, "seconds")


def partition(
    hypergraph: HypergraphLike,
    nparts: int,
    epsilon: Optional[float] = None,
    *,
    least: Optional[float] = None,
    capacities: Union[Iterable[float], Path, None] = None,
    objective: Union[str, int] = "cut",
    start: Union[Parts, None] = None,
    keep_in_place: Optional[int] = None,
    together: Union[Iterable[int], Mapping[Any, int], Path, None] = None,
    time: Optional[float] = None,
    share: bool = False,
    preset: str = "default",
    ubfactor: Optional[int] = None,
    runs: Optional[int] = None,
    matching: Union[str, int, None] = None,
    refine: Union[str, int, None] = None,
    vcycle: Union[str, int, None] = None,
    reconst: Union[bool, str, None] = None,
    polish: Union[bool, str, None] = None,
    fix: Union[Iterable[int], Mapping[Any, int], Path, None] = None,
    seed: Optional[int] = 1,
    starts: Optional[int] = None,
    jobs: int = 0,
    threads: int = 0,
    timeout: Optional[float] = None,
    memory: Optional[int] = None,
    trace: Optional[int] = None,
    progress: Optional[Callable[[Progress], Any]] = None,
    nvtxs: Optional[int] = None,
    vertex_weights: Optional[Iterable[int]] = None,
    hyperedge_weights: Optional[Iterable[int]] = None,
    **older: Any,
) -> Partition:
    """Partitions a hypergraph into nparts parts, so that little weight of hyperedges is cut.

    >>> partition([[0, 1], [1, 2], [0, 2], [3, 4], [4, 5], [3, 5], [2, 3]], 2).cut
    1

    The options are those of the program zorpelx, by the same names and in the same units. A call
    searches within bounds on the parts, unless an option of the engine alone is given.

    hypergraph, nvtxs, vertex_weights, hyperedge_weights: see as_hypergraph().
    objective: what is made least: cut, km1 or soed; the result's cut, connectivity or soed.
    fix: the part of each vertex that is pre-assigned, -1 for a free one; or the path of such a file,
        or of a table of names and parts, in which vertices without a row are free; or a dict of
        parts by patterns of names, {"u_core/*": 2}, or by numbers of vertices. None: what the
        hypergraph fixes by itself.
    seed: of the first start, at least 1, the others count on; None or -1 draws one by chance.
    starts, jobs: independent starts, and how many at once; 0 jobs: one for each processor.
    threads: of each start; 0: all processors divided by the jobs. They change nothing but the time.
    timeout: seconds for the whole call; None or 0 for no deadline.
    memory: MiB that the call may take here and one start in all; None or 0 for no cap.
    progress: called a few times a second with a Progress; cancels if it returns something true.

    Of the search:

    epsilon: percent that a part may weigh more than the average, rounded up; None: 3.
    least: percent that a part may weigh less than the average, at most 100; None: no part is empty
        where that can be.
    capacities: sizes of the parts as shares of their sum, such as [3, 3, 2], or the path of a file
        of them; the average of a part is its share. None: all are equal.
    start: a partition to improve, of any origin, within the bounds or not; or its path.
    keep_in_place: price of moving a unit of weight out of its part in start.
    together: a number for each vertex: those of equal numbers from 0 stay in one part, -1 leaves
        one free; or the path of such a file, or of a table as for fix, or a dict as for fix.
    time: seconds to search for, the best found by then being the result; None or 0: as much is done
        as the preset says, the same on every machine.
    share: the starts are one search, which combines the best of them all.
    preset: fast, default or best: how much is done.

    Of the engine alone, which gives the partition of the program zorpel:

    ubfactor: percent by which a side of a bisection may miss its share, 1 to 49; None: 5.
    runs: of each bisection.
    matching: hfc, fc, gfc, hedge or edge.
    refine: fm, 1wayfm or eefm.
    vcycle: no, end, formin or all.
    reconst: keep the pieces of cut hyperedges when splitting; None: False.
    polish: refine all parts together at the end, if there are 3 to 64; None: True.
    trace: sum of trace bits; the texts are in the result.
    preset: sets runs, matching, refine, vcycle and starts if they are None.

    The work is done in child processes: nothing it suffers reaches this one. Equal arguments give
    equal partitions, whatever the jobs and threads, but for time. Raises Error or one of its kinds
    if there is none; when a deadline or a cancellation comes after a partition was found, the best
    is returned and its field complete is False.
    """
    given: Dict[str, Any] = {"fix": fix}
    if older:
        given = opt.by_new_names(older, given)
    schemes = {"runs": runs, "matching": matching, "refine": refine, "vcycle": vcycle}
    own = {"ubfactor": ubfactor, **schemes, "reconst": reconst, "polish": polish, "trace": trace}
    search = {"epsilon": epsilon, "least": least, "capacities": capacities, "start": start}
    search.update(keep_in_place=keep_in_place, together=together, time=time, share=share or None)
    engine = opt.check_apart(own, search)
    schedule = opt.of_preset(preset)
    chosen = dict(schedule) if engine else {}
    chosen.update((name, value) for name, value in own.items() if value is not None)
    chosen.update(nparts=nparts, objective=objective, jobs=jobs, threads=threads)
    for name, value in {"starts": starts, "keep_in_place": keep_in_place}.items():
        if value is not None:
            chosen[name] = value
    numbers = {name: opt.number(name, value) for name, value in chosen.items()}
    numbers["seed"] = opt.check_seed(seed)
    opt.check_callable("progress", progress)
    if keep_in_place is not None and start is None:
        raise opt.bad_option("keep_in_place needs start.")
    options = lib.new_record(lib.COptions, "zorpelx_options_init")
    options.epsilon = -1 if engine else _percent("epsilon", epsilon, opt.EPSILON)
    options.least = _percent("least", least, -1)
    options.time = _seconds("time", time)
    options.shared = int(bool(share) and numbers.get("starts", 1) > 1)
    options.preset = opt.SEARCH_PRESETS[preset.lower()]
    options.timeout = _seconds("timeout", timeout)
    options.memory = opt.check_memory(memory)
    graph = as_hypergraph(hypergraph, nvtxs, vertex_weights, hyperedge_weights)
    _check_nparts(numbers["nparts"], graph.nvtxs)
    for name, value in numbers.items():
        setattr(options, opt.NUMBERS[name].field, value)
    fixed = _per_vertex(given["fix"], "fix", graph)
    if fixed is None and graph.fixed is not None:
        fixed = graph.fixed
    given_start = _per_vertex(start, "start", graph)
    groups = _groups(graph.groups if together is None else together, graph)
    options.fixed, options.start = pointer(fixed), pointer(given_start)
    options.groups = pointer(groups)
    options.capacities = _capacities(capacities, numbers["nparts"])
    callbacks = _Callbacks(progress, numbers.get("trace", 0) != 0)
    options.on_progress = callbacks.on_progress
    options.on_trace = callbacks.on_trace
    part = array("i", bytes(4 * graph.nvtxs))
    result = lib.new_record(lib.CResult, "zorpelx_result_init")
    with callbacks:
        status = lib.loaded().zorpelx_partition(
            ctypes.byref(graph.record()), ctypes.byref(options), pointer(part), ctypes.byref(result)
        )
    if callbacks.thrown is not None:
        raise callbacks.thrown
    if result.finished == 0 or status not in (lib.OK, lib.TIMEOUT, lib.CANCELLED):
        raise _fault(status, result.message)
    return Partition(
        part=_as_numpy(part) if wants_numpy(hypergraph) else part.tolist(),
        nparts=options.nparts,
        cut=result.cut,
        soed=result.soed,
        imbalance=result.imbalance,
        valid=bool(result.valid),
        seed=result.seed,
        finished=result.finished,
        failed=result.failed,
        dropped=result.dropped,
        seconds=result.seconds,
        complete=status == lib.OK,
        message=_in_our_names(result.message),
        traces=callbacks.traces(),
        objective=(result.cut, result.connectivity, result.soed)[options.objective],
        connectivity=result.connectivity,
        moved=result.moved,
        jobs=result.jobs,
        pool=result.pool,
        generations=result.generations,
        steps=[
            Step(name, step.made, step.better, step.gained, step.seconds)
            for name, step in zip(lib.STEPS, result.steps)
            if step.made > 0
        ],
        source=graph,
    )


def _check_nparts(nparts: int, nvtxs: int) -> None:
    """As the library does, before anything is made for each part."""
    most = max(nvtxs, MOST_EMPTY_PARTS)
    if nparts > most:
        raise opt.bad_option(
            f"nparts is {nparts}; with {nvtxs} vertices it should be at most {most}."
        )


class _Evaluation:
    """A hypergraph and a partition of it, ready for the evaluating routines."""

    def __init__(
        self,
        hypergraph: HypergraphLike,
        part: Parts,
        nparts: Optional[int],
        vertex_weights: Optional[Iterable[int]],
        hyperedge_weights: Optional[Iterable[int]],
    ) -> None:
        if isinstance(part, Partition):
            nparts = part.nparts if nparts is None else nparts
            part = part.part
        hypergraph = with_names(hypergraph)
        known = hypergraph if isinstance(hypergraph, Hypergraph) else None
        self.part = to_ints(_read_parts(part, known), "part")
        counted = isinstance(hypergraph, Hypergraph) or hasattr(hypergraph, "tocsr")
        nvtxs = None if counted else len(self.part)
        self.graph = as_hypergraph(hypergraph, nvtxs, vertex_weights, hyperedge_weights)
        if len(self.part) != self.graph.nvtxs:
            raise InputError(f"part has {len(self.part)} entries instead of {self.graph.nvtxs}.")
        if nparts is None:
            nparts = max(1, max(self.part, default=0) + 1)
        self.nparts = opt.check_int("nparts", nparts, 1, opt.INT_MAX)
        _check_nparts(self.nparts, self.graph.nvtxs)

    def call(self, routine: str, *outputs: Any) -> None:
        """Calls a routine of the library, or raises what it finds wrong."""
        message = ctypes.create_string_buffer(lib.MESSAGE_SIZE)
        record = ctypes.byref(self.graph.record())
        status = getattr(lib.loaded(), routine)(
            record, self.nparts, pointer(self.part), *outputs, message
        )
        if status != lib.OK:
            raise _fault(status, message.value)


def evaluate(
    hypergraph: HypergraphLike,
    part: Parts,
    nparts: Optional[int] = None,
    *,
    vertex_weights: Optional[Iterable[int]] = None,
    hyperedge_weights: Optional[Iterable[int]] = None,
) -> Quality:
    """The figures of a partition of any origin. Without nparts, the largest part's number tells.

    >>> evaluate([[0, 1], [1, 2]], [0, 0, 1]).cut
    1
    """
    given = _Evaluation(hypergraph, part, nparts, vertex_weights, hyperedge_weights)
    quality = lib.new_record(lib.CQuality, "zorpelx_quality_init")
    pwgts = (ctypes.c_int64 * given.nparts)()
    pcuts = (ctypes.c_int64 * given.nparts)()
    given.call("zorpelx_evaluate", ctypes.byref(quality), pwgts, pcuts)
    return Quality(
        cut=quality.cut,
        soed=quality.soed,
        connectivity=quality.connectivity,
        cut_hyperedges=quality.cut_hedges,
        absorption=quality.absorption,
        scaled_cost=quality.scaled_cost,
        imbalance=quality.imbalance,
        empty_parts=quality.empty_parts,
        part_weights=list(pwgts),
        external_degrees=list(pcuts),
    )


def cut_hyperedges(
    hypergraph: HypergraphLike,
    part: Parts,
    nparts: Optional[int] = None,
) -> List[int]:
    """The numbers of the hyperedges cut, increasing.

    >>> cut_hyperedges([[0, 1], [1, 2]], [0, 0, 1])
    [1]
    """
    given = _Evaluation(hypergraph, part, nparts, None, None)
    hedges = (ctypes.c_int * max(1, len(given.graph)))()
    count = ctypes.c_int(0)
    given.call("zorpelx_cut_hyperedges", hedges, ctypes.byref(count))
    return hedges[: count.value]


def cut_matrix(
    hypergraph: HypergraphLike,
    part: Parts,
    nparts: Optional[int] = None,
    *,
    hyperedge_weights: Optional[Iterable[int]] = None,
) -> List[List[int]]:
    """The weight of the hyperedges that touch both of two parts; on the diagonal, within one.

    >>> cut_matrix([[0, 1], [1, 2]], [0, 0, 1])
    [[1, 1], [1, 0]]
    """
    given = _Evaluation(hypergraph, part, nparts, None, hyperedge_weights)
    size = given.nparts
    if size > MOST_MATRIX_PARTS:
        raise opt.bad_option(f"nparts is {size}; a matrix is for at most {MOST_MATRIX_PARTS}.")
    try:
        matrix = (ctypes.c_int64 * (size * size))()
    except MemoryError:
        raise OutOfMemoryError(f"No memory for a matrix of {size} x {size}.", 6) from None
    given.call("zorpelx_cut_matrix", matrix)
    return [matrix[p * size : (p + 1) * size] for p in range(size)]


def _bounds(routine: str, nparts: int, *arguments: Any) -> List[Tuple[int, int]]:
    try:
        least, most = (ctypes.c_int64 * nparts)(), (ctypes.c_int64 * nparts)()
    except MemoryError:
        raise OutOfMemoryError(f"No memory for the limits of {nparts} parts.", 6) from None
    status = getattr(lib.loaded(), routine)(nparts, *arguments, least, most)
    if status != lib.OK:
        raise error_for(status, f"No limits for {nparts} parts.")
    return list(zip(least, most))


def part_limits(
    nparts: int, ubfactor: int, total: int, polish: bool = True
) -> List[Tuple[int, int]]:
    """The least and the most weight that each part may get of the total from the engine alone.

    >>> part_limits(2, 5, 100)
    [(45, 56), (44, 55)]
    """
    size = opt.check_int("nparts", nparts, 1, MOST_LISTED_PARTS)
    factor, polished = opt.number("ubfactor", ubfactor), opt.number("polish", polish)
    return _bounds("zorpelx_part_limits", size, factor, polished, opt.check_int("total", total, 0))


def part_bounds(
    nparts: int,
    epsilon: float,
    total: int,
    least: Optional[float] = None,
    capacities: Union[Iterable[float], Path, None] = None,
) -> List[Tuple[int, int]]:
    """The least and the most weight that each part may get of the total from a search.

    >>> part_bounds(3, 3, 800, capacities=[3, 3, 2])
    [(1, 309), (1, 309), (1, 206)]
    """
    size = opt.check_int("nparts", nparts, 1, MOST_LISTED_PARTS)
    percents = _percent("epsilon", epsilon, opt.EPSILON), _percent("least", least, -1)
    sizes = _capacities(capacities, size)
    return _bounds("zorpelx_part_bounds", size, *percents, sizes, opt.check_int("total", total, 0))


def _spread(record: lib.CSpread) -> Spread:
    bins = [Bin(one.least, one.most, one.count) for one in record.bins[: record.nbins]]
    return Spread(record.least, record.most, record.average, bins)


def _heavy_vertices(graph: Hypergraph) -> List[int]:
    weights = graph.vertex_weights if graph.vertex_weights is not None else [1] * graph.nvtxs
    limit = 2 * sum(weights) // 100
    heavy = [v for v, weight in enumerate(weights) if weight > limit]
    return sorted(heavy, key=lambda v: -weights[v])


def stats(hypergraph: HypergraphLike, nvtxs: Optional[int] = None) -> Stats:
    """What a hypergraph is like, as the command zorpelx stats shows it.

    >>> stats([[0, 1, 2], [2, 3]], nvtxs=6).components
    3
    """
    graph = as_hypergraph(hypergraph, nvtxs)
    record = lib.new_record(lib.CStats, "zorpelx_stats_init")
    message = ctypes.create_string_buffer(lib.MESSAGE_SIZE)
    status = lib.loaded().zorpelx_describe(
        ctypes.byref(graph.record()), ctypes.byref(record), message
    )
    if status != lib.OK:
        raise _fault(status, message.value)
    return Stats(
        vertices=graph.nvtxs,
        hyperedges=len(graph),
        pins=record.pins,
        total_vertex_weight=record.vertex_weight,
        total_hyperedge_weight=record.hyperedge_weight,
        components=record.components,
        largest_component=record.largest_component,
        islands=record.islands,
        parked=record.parked,
        large_hyperedges=record.large_hyperedges,
        single_vertex_hyperedges=record.single_vertex_hyperedges,
        memory_bytes=record.memory,
        heavy_vertices=_heavy_vertices(graph),
        sizes=_spread(record.sizes),
        degrees=_spread(record.degrees),
    )
