"""Partitioning and evaluation."""

from __future__ import annotations

import ctypes
import signal
import threading
from array import array
from dataclasses import dataclass
from typing import Any, Callable, Dict, Iterable, List, Optional, Sequence, Tuple, Union

from . import _library as lib
from .errors import InputError, error_for
from .hypergraph import Hypergraph, HypergraphLike, as_hypergraph, pointer, to_ints, wants_numpy

MATCHINGS = {"hfc": 1, "fc": 2, "gfc": 3, "hedge": 4, "edge": 5}
REFINEMENTS = {"fm": 1, "1wayfm": 2, "eefm": 3}
VCYCLES = {"no": 0, "end": 1, "formin": 2, "all": 3}


@dataclass(frozen=True)
class Progress:
    """How far a call is, see zorpelx_progress in zorpelx.h."""

    starts: int
    running: int
    finished: int
    failed: int
    runs: int
    allruns: int
    levels: int
    level_vtxs: int
    run_cut: int
    cut: int
    seconds: float


@dataclass(frozen=True)
class Partition:
    """A partition and what is known of it.

    part is a list, or a numpy array if the hypergraph came in numpy arrays or a scipy matrix.
    """

    part: Any  #: the part of every vertex, from 0
    nparts: int
    cut: int  #: total weight of the hyperedges cut
    soed: int  #: sum of external degrees
    imbalance: float  #: heaviest part over the average part, less 1
    valid: bool  #: pre-assignments kept, every part within its limits
    seed: int  #: of the start that won
    finished: int  #: starts that gave a partition
    failed: int  #: starts that gave none
    dropped: int  #: hyperedges of less than two vertices, kept from the engine
    seconds: float
    complete: bool  #: False: a deadline or a cancellation cut starts off
    message: str  #: empty, or what is to be said
    traces: List[str]  #: of each start, if traces were asked for

    def __len__(self) -> int:
        """The number of vertices."""
        return len(self.part)


@dataclass(frozen=True)
class Quality:
    """Figures of a partition, exact in 64 bits; see zorpelx_quality in zorpelx.h."""

    cut: int
    soed: int
    connectivity: int
    cut_hyperedges: int
    absorption: float
    scaled_cost: float
    imbalance: float
    empty_parts: int
    part_weights: List[int]
    external_degrees: List[int]


class _Callbacks:
    """Functions for the library. What a Python function throws cancels the call, then comes out.

    So does what a signal handler throws, such as Ctrl-C: Python runs handlers when it is called
    back, where nobody would see the exception, so they are wrapped while the call lasts.
    """

    def __init__(
        self, progress: Optional[Callable[[Progress], Any]], starts: int, traced: bool
    ) -> None:
        self.progress = progress
        self.thrown: Optional[BaseException] = None
        self.traces = [""] * starts if traced else []
        self.on_progress = lib.ProgressFunction(self._tell_progress)
        self.on_trace = lib.TraceFunction(self._keep_trace) if traced else lib.NO_TRACES

    def __enter__(self) -> _Callbacks:
        self.handlers: Dict[int, Any] = {}
        if threading.current_thread() is threading.main_thread():
            for number in signal.valid_signals():
                if callable(signal.getsignal(number)):
                    self.handlers[number] = signal.signal(number, self._handle_signal)
        return self

    def __exit__(self, *_exception: Any) -> None:
        for number, handler in self.handlers.items():
            signal.signal(number, handler)

    def _handle_signal(self, number: int, frame: Any) -> None:
        try:
            self.handlers[number](number, frame)
        except BaseException as thrown:  # pylint: disable=broad-except
            self.thrown = thrown

    def _tell_progress(self, _user: Any, record: Any) -> int:
        try:
            if self.progress is None or self.thrown is not None:
                return self.thrown is not None
            fields = Progress.__dataclass_fields__
            return bool(self.progress(Progress(*(getattr(record[0], name) for name in fields))))
        except BaseException as thrown:  # pylint: disable=broad-except
            self.thrown = thrown
            return 1

    def _keep_trace(self, _user: Any, start: int, text: Any, length: int) -> None:
        try:
            self.traces[start] = ctypes.string_at(text, length).decode()
        except BaseException as thrown:  # pylint: disable=broad-except
            self.thrown = thrown


def _code(name: str, value: Union[str, int], codes: Dict[str, int]) -> int:
    if not isinstance(value, str):
        return _check_int(name, value)
    if value.lower() not in codes:
        raise InputError(f"{name} is {value!r}; it should be one of {', '.join(codes)}.", 2)
    return codes[value.lower()]


def _check_int(name: str, value: Any) -> int:
    if not hasattr(value, "__index__") or not -(2**31) <= value.__index__() < 2**31:
        raise InputError(f"{name} is {value!r}; it should be an integer of 32 bits.", 2)
    return int(value.__index__())


def _check_size(name: str, value: Any) -> int:
    if not hasattr(value, "__index__") or not 0 <= value.__index__() < 2**63:
        raise InputError(f"{name} is {value!r}; it should be a number of bytes.", 2)
    return int(value.__index__())


def _as_numpy(values: array[int]) -> Any:
    import numpy  # pylint: disable=import-outside-toplevel

    return numpy.array(values, dtype=numpy.intc)


def partition(
    hypergraph: HypergraphLike,
    nparts: int,
    ubfactor: int = 5,
    *,
    seed: Optional[int] = 1,
    runs: int = 10,
    matching: Union[str, int] = "hfc",
    refine: Union[str, int] = "fm",
    vcycle: Union[str, int] = "end",
    reconst: bool = False,
    polish: bool = True,
    fixed: Optional[Iterable[int]] = None,
    starts: int = 1,
    jobs: int = 0,
    timeout: Optional[float] = None,
    memory: Optional[int] = None,
    trace: int = 0,
    progress: Optional[Callable[[Progress], Any]] = None,
    nvtxs: Optional[int] = None,
    vertex_weights: Optional[Iterable[int]] = None,
    hyperedge_weights: Optional[Iterable[int]] = None,
) -> Partition:
    """Partitions a hypergraph into nparts parts, so that little weight of hyperedges is cut.

    >>> partition([[0, 1], [1, 2], [0, 2], [3, 4], [4, 5], [3, 5], [2, 3]], 2).cut
    1

    hypergraph, nvtxs, vertex_weights, hyperedge_weights: see as_hypergraph().
    ubfactor: percent by which a side of a bisection may miss its share, 1 to 49.
    seed: of the first start, the others count on; None draws one by chance.
    runs: of each bisection.
    matching: hfc, fc, gfc, hedge or edge.
    refine: fm, 1wayfm or eefm.
    vcycle: no, end, formin or all.
    reconst: keep the pieces of cut hyperedges when splitting.
    polish: refine all parts together at the end, if there are 3 to 64.
    fixed: the part of each vertex that is pre-assigned, -1 for a free one.
    starts, jobs: independent starts, and how many at once; 0 jobs: one for each processor.
    timeout, memory: seconds for the whole call, bytes that one start may take.
    trace: sum of trace bits; the texts are in the result.
    progress: called a few times a second with a Progress; cancels if it returns something true.

    The work is done in child processes: nothing it suffers reaches this one. Equal arguments give
    equal partitions, whatever the jobs. Raises Error or one of its kinds if there is none; when a
    deadline or a cancellation comes after a start has finished, the best is returned and its
    field complete is False.
    """
    graph = as_hypergraph(hypergraph, nvtxs, vertex_weights, hyperedge_weights)
    options = lib.new_record(lib.COptions, "zorpelx_options_init")
    numbers = {
        "nparts": nparts,
        "ubfactor": ubfactor,
        "nruns": runs,
        "ctype": _code("matching", matching, MATCHINGS),
        "rtype": _code("refine", refine, REFINEMENTS),
        "vcycle": _code("vcycle", vcycle, VCYCLES),
        "reconst": reconst,
        "polish": polish,
        "trace": trace,
        "seed": -1 if seed is None else seed,
        "starts": starts,
        "jobs": jobs,
    }
    for name, value in numbers.items():
        setattr(options, name, _check_int(name, value))
    options.timeout = 0 if timeout is None else timeout
    options.memory = 0 if memory is None else _check_size("memory", memory)
    fixed_ints = None if fixed is None else to_ints(fixed, "fixed")
    if fixed_ints is not None and len(fixed_ints) != graph.nvtxs:
        raise InputError(f"fixed has {len(fixed_ints)} entries instead of {graph.nvtxs}.")
    options.fixed = pointer(fixed_ints)
    callbacks = _Callbacks(progress, max(0, options.starts), trace != 0)
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
        raise error_for(status, result.message.decode())
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
        message=result.message.decode(),
        traces=callbacks.traces,
    )


class _Evaluation:
    """A hypergraph and a partition of it, ready for the evaluating routines."""

    def __init__(
        self,
        hypergraph: HypergraphLike,
        part: Union[Partition, Sequence[int]],
        nparts: Optional[int],
        vertex_weights: Optional[Iterable[int]],
        hyperedge_weights: Optional[Iterable[int]],
    ) -> None:
        if isinstance(part, Partition):
            nparts = part.nparts if nparts is None else nparts
            part = part.part
        self.part = to_ints(part, "part")
        counted = isinstance(hypergraph, Hypergraph) or hasattr(hypergraph, "tocsr")
        nvtxs = None if counted else len(self.part)
        self.graph = as_hypergraph(hypergraph, nvtxs, vertex_weights, hyperedge_weights)
        if len(self.part) != self.graph.nvtxs:
            raise InputError(f"part has {len(self.part)} entries instead of {self.graph.nvtxs}.")
        if nparts is None:
            nparts = max(1, max(self.part, default=0) + 1)
        self.nparts = _check_int("nparts", nparts)

    def call(self, routine: str, *outputs: Any) -> None:
        """Calls a routine of the library, or raises what it finds wrong."""
        message = ctypes.create_string_buffer(lib.MESSAGE_SIZE)
        record = ctypes.byref(self.graph.record())
        status = getattr(lib.loaded(), routine)(
            record, self.nparts, pointer(self.part), *outputs, message
        )
        if status != lib.OK:
            raise error_for(status, message.value.decode())


def evaluate(
    hypergraph: HypergraphLike,
    part: Union[Partition, Sequence[int]],
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
    pwgts = (ctypes.c_int64 * max(1, given.nparts))()
    pcuts = (ctypes.c_int64 * max(1, given.nparts))()
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
    part: Union[Partition, Sequence[int]],
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
    part: Union[Partition, Sequence[int]],
    nparts: Optional[int] = None,
    *,
    hyperedge_weights: Optional[Iterable[int]] = None,
) -> List[List[int]]:
    """The weight of the hyperedges that touch both of two parts; on the diagonal, within one.

    >>> cut_matrix([[0, 1], [1, 2]], [0, 0, 1])
    [[1, 1], [1, 0]]
    """
    given = _Evaluation(hypergraph, part, nparts, None, hyperedge_weights)
    size = max(1, given.nparts)
    matrix = (ctypes.c_int64 * (size * size))()
    given.call("zorpelx_cut_matrix", matrix)
    return [matrix[p * size : (p + 1) * size] for p in range(size)]


def part_limits(
    nparts: int, ubfactor: int, total: int, polish: bool = True
) -> List[Tuple[int, int]]:
    """The least and the most weight that each part may get of the total.

    >>> part_limits(2, 5, 100)
    [(45, 56), (44, 55)]
    """
    size = max(1, _check_int("nparts", nparts))
    least, most = (ctypes.c_int64 * size)(), (ctypes.c_int64 * size)()
    numbers = (nparts, _check_int("ubfactor", ubfactor), int(polish), int(total))
    if lib.loaded().zorpelx_part_limits(*numbers, least, most) != lib.OK:
        raise InputError(
            f"No limits for nparts {nparts}, ubfactor {ubfactor} and a weight of {total}.", 2
        )
    return list(zip(least, most))
