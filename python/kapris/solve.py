"""The calls: partition, refine, evaluate."""
# SPDX-License-Identifier: MIT
from __future__ import annotations

import ctypes
import threading
from typing import Any, Callable, Iterable, Mapping, Union

from . import _arrays, _native
from ._arrays import Numbers
from ._native import core
from .hypergraph import Hypergraph, as_hypergraph
from .progress import Progress, open_progress
from .result import Infeasible, Result, Start, Told

# A hypergraph, or what as_hypergraph makes one of.
Given = Union[Hypergraph, Any]
Fixed = Union[Numbers, Mapping[Any, int], None]

_PRESETS: dict[str, dict[str, int]] = {"fast": {"runs": 3, "members": 1, "combinations": 3}, "default": {},
                                       "quality": {"members": 8, "combinations": 40}}


def _word(name: str, value: str, values: Mapping[str, int]) -> int:
    number = values.get(value) if isinstance(value, str) else None
    if number is None:
        raise ValueError(f"{name} is {value!r}, not one of {', '.join(values)}")
    return number


def _double(name: str, value: Any) -> float:
    if isinstance(value, str) or not hasattr(value, "__float__"):
        raise TypeError(f"{name} is {value!r}, not a number")
    return float(value)


def _problem(h: Hypergraph, parts: Any, target_weights: Any, fixed: Any) -> tuple[_native.Problem, list[Any]]:
    """The record, and what must live as long as it does: the target weights and the fixed cells."""
    problem = _native.new_problem()
    problem.nparts = _arrays.whole("parts", parts, 1, 2**31 - 1)
    targets = _arrays.of_length("target_weights", target_weights, "d", problem.nparts, "parts")
    given = _fixed_array(h, fixed)
    problem.ncells, problem.nnets = h.ncells, h.nnets
    problem.net_starts, problem.pins = _arrays.address(h.offsets), _arrays.address(h.pins)
    problem.cell_weights = _arrays.address(h.cell_weights)
    problem.net_weights = _arrays.address(h.net_weights)
    problem.target_weights = _arrays.address(targets)
    problem.fixed = _arrays.address(given)
    return problem, [targets, given]


def _fixed_array(h: Hypergraph, fixed: Any) -> Any:
    if not isinstance(fixed, Mapping):
        return _arrays.of_length("fixed", fixed, "i", h.ncells, "cells")
    parts = [-1] * h.ncells
    index = {name: i for i, name in enumerate(h.cell_names)} if h.cell_names is not None else {}
    for cell, part in fixed.items():
        at = index.get(cell, -1) if isinstance(cell, str) else _arrays.whole("a cell of fixed", cell, 0, h.ncells - 1)
        if at < 0:
            raise ValueError(f"fixed names the cell {cell!r}, which is not there")
        parts[at] = part
    return _arrays.buffer("fixed", parts, "i")


def _options(*, epsilon: Any, objective: Any, seed: Any, starts: Any, threads: Any, time_limit: Any, preset: Any,
             members: Any, combinations: Any, scheme: Any, coarsening: Any, refinement: Any, vcycle: Any, runs: Any,
             reconst: Any, min_epsilon: Any, allow_empty: Any, memory_limit: Any, records: Any) -> _native.Options:
    options = _native.new_options()
    most = 2**31 - 1
    if not isinstance(preset, str) or preset not in _PRESETS:
        raise ValueError(f"preset is {preset!r}, not one of {', '.join(_PRESETS)}")
    for name, number in _PRESETS[preset].items():
        setattr(options, name, number)
    options.objective = _word("objective", objective, _native.OBJECTIVES)
    options.scheme = _word("scheme", scheme, _native.SCHEMES)
    options.coarsening = _word("coarsening", coarsening, _native.COARSENINGS)
    options.refinement = _word("refinement", refinement, _native.REFINEMENTS)
    options.vcycle = _word("vcycle", vcycle, _native.VCYCLES)
    if members is not None:
        options.members = _arrays.whole("members", members, 0, most)
    if combinations is not None:
        options.combinations = _arrays.whole("combinations", combinations, 0, most)
    if runs is not None:
        options.runs = _arrays.whole("runs", runs, 1, most)
    options.seed = -1 if seed is None else _arrays.whole("seed", seed, 0, most)
    options.starts = _arrays.whole("starts", starts, 1, most)
    options.threads = _arrays.whole("threads", threads, 1, most)
    options.epsilon = _double("epsilon", epsilon)
    options.min_epsilon = _double("min_epsilon", min_epsilon)
    options.reconst, options.allow_empty, options.records = bool(reconst), bool(allow_empty), bool(records)
    if time_limit is not None:
        options.time_limit = _double("time_limit", time_limit)
        if not options.time_limit > 0:
            raise ValueError(f"time_limit is {time_limit}, but it should be above 0 seconds, or None")
    if memory_limit is not None:
        options.memory_limit = _arrays.whole("memory_limit", memory_limit, 1, 2**63 - 1)
    return options


# ---------------------------------------------------------------------------------------------------------------------
# The call


def _is_short(h: Hypergraph, options: _native.Options) -> bool:
    """Whether a call ends within a few milliseconds, so that Ctrl-C can wait for it."""
    work: int = len(h.pins) * options.starts * (options.members + options.combinations + 1)
    return bool(options.time_limit == 0) and work < 10000


class _Beside:
    """A long call on a thread of its own: the caller's must be free for signals, which Python takes between two of its
    own instructions only."""

    def __init__(self, call: Callable[[], int], cancel: ctypes.c_int) -> None:
        self._call, self._cancel = call, cancel
        self._lock, self._done = threading.Lock(), threading.Event()
        self._status: int | None = None
        self._refused = False
        self.running = False
        """The library may still write into the records of the call."""

    def _work(self) -> None:
        with self._lock:
            if self._refused:
                return
            self.running = True
        try:
            self._status = self._call()
        finally:
            self.running = False
            self._done.set()

    def status(self) -> int:
        thread = threading.Thread(target=self._work, name="kapris")
        try:
            thread.start()
            self._done.wait()
        except BaseException as interrupt:  # KeyboardInterrupt, or what another handler of a signal raises
            self._cancel.value = 1
            with self._lock:
                self._refused = not self.running
            if isinstance(interrupt, RuntimeError) and self._refused:
                self._cancel.value = 0
                return self._call()  # the system gives no more threads
            while self.running:
                try:
                    self._done.wait()
                except BaseException:  # the call ends soon, and must have ended
                    pass
            raise
        thread.join()
        if self._status is None:
            raise RuntimeError("internal failure: the call has no status")
        return self._status


def _run(function: Any, command: str, h: Hypergraph, problem: _native.Problem, kept: list[Any],
         options: _native.Options, part: Any, progress: Progress) -> Result:
    cancel = ctypes.c_int(0)
    options.cancel = ctypes.addressof(cancel)
    watch = open_progress(progress, cancel)
    if watch is not None:
        options.progress = ctypes.cast(watch.callback, ctypes.c_void_p).value
    made = ctypes.c_void_p()
    arguments: list[Any] = [ctypes.byref(problem), ctypes.byref(options)]
    if part is not None:
        arguments.append(_arrays.address(part))
    arguments.append(ctypes.byref(made))
    beside: _Beside | None = None
    try:
        if (_is_short(h, options) or command == "evaluate" or
                threading.current_thread() is not threading.main_thread()):
            status = function(*arguments)
        else:
            beside = _Beside(lambda: int(function(*arguments)), cancel)
            status = beside.status()
        if watch is not None:
            watch.close()
        if not made.value:
            raise MemoryError("out of memory")
        record = _native.ResultRecord.from_address(made.value)
        _check(status, record)
        return _result(record, command, h, problem, kept, options, part)
    finally:
        if watch is not None:
            watch.abandon()
        if beside is None or not beside.running:
            core.kapris_free_result(made)


def _check(status: int, record: _native.ResultRecord) -> None:
    """Raises where there is no partition."""
    if record.part:
        return
    text = record.message.decode(errors="replace").replace("nparts", "parts").replace("net_starts", "offsets")
    if status == _native.INVALID_ARGUMENT:
        raise ValueError(text)
    if status in (_native.OUT_OF_MEMORY, _native.MEMORY_LIMIT):
        raise MemoryError(text)
    raise RuntimeError(text)


def _result(record: _native.ResultRecord, command: str, h: Hypergraph, problem: _native.Problem, kept: list[Any],
            options: _native.Options, part: Any) -> Result:
    parts, starts = record.nparts, record.starts
    where = ctypes.cast(record.part, ctypes.c_void_p).value
    return Result(
        part=_arrays.copy_out(where, record.ncells, "i"), cut=record.cut, connectivity=record.connectivity,
        soed=record.soed, imbalance=record.imbalance, part_weights=tuple(record.part_weights[:parts]),
        limits=tuple(record.part_limits[:parts]), minimums=tuple(record.part_minimums[:parts]), excess=record.excess,
        balanced=bool(record.balanced), status=core.kapris_status_name(record.status).decode(),
        message=record.message.decode(errors="replace"), seed=record.seed,
        starts=tuple(_start(starts[i]) for i in range(record.nstarts)),
        best_start=None if record.best_start < 0 else record.best_start, seconds=record.seconds,
        peak_bytes=record.peak_bytes, hypergraph=h, _told=_tell(record, command, options, kept, part))


def _start(start: _native.StartRecord) -> Start:
    return Start(start.number, start.seed, start.cut, start.soed, start.soed - start.cut, start.imbalance,
                 start.excess, bool(start.balanced), bool(start.completed), start.seconds)


_TOLD_OPTIONS = ("scheme", "objective", "coarsening", "refinement", "vcycle", "runs", "members", "combinations",
                 "reconst", "epsilon", "min_epsilon", "allow_empty", "threads", "time_limit", "memory_limit")


def _tell(record: _native.ResultRecord, command: str, options: _native.Options, kept: list[Any], part: Any) -> Told:
    return Told(command, part if command == "refine" else None, kept[1], kept[0],
                {name: getattr(options, name) for name in _TOLD_OPTIONS}, record.seconds_prepare, record.seconds_starts,
                tuple(record.seconds_phase), _records(record) if options.records else None)


def _records(record: _native.ResultRecord) -> dict[str, Any]:
    phase = core.kapris_phase_name
    return {
        "input": {"format": "", "model": "", "unit_weights": False, "module": "", "depth": None, "weights": "",
                  "weight_by": "", "ignore_nets_above": None, "ignore_nets": []},
        "trials": [{"start": record.starts[t.start].number, "trial": t.number, "value": t.value,
                    "cycled": None if t.cycled < 0 else t.cycled, "imbalance": t.imbalance, "best": bool(t.best),
                    "parents": list(t.parents) if t.parents[0] >= 0 else []}
                   for t in record.trials[:record.ntrials]],
        "levels": [{"phase": phase(v.phase).decode(), "cycle": v.cycle, "polish": bool(v.polish), "cells": v.cells,
                    "nets": v.nets, "pins": v.pins, "value": None if v.value < 0 else v.value,
                    "imbalance": None if v.value < 0 else v.imbalance} for v in record.levels[:record.nlevels]],
        "bisections": [{"first": b.first, "parts": b.parts, "cut": b.cut, "weights": list(b.weights),
                        "seconds": b.seconds} for b in record.bisections[:record.nbisections]]}


def _feasible(result: Result) -> Result:
    if result.status == "infeasible balance":
        raise Infeasible(result.message, result)
    return result


# ---------------------------------------------------------------------------------------------------------------------
# What users call


def partition(h: Given, parts: int, *, epsilon: float = 0.03, objective: str = "cut", seed: int | None = 0,
              starts: int = 1, threads: int = 1, time_limit: float | None = None, fixed: Fixed = None,
              target_weights: Iterable[float] | None = None, preset: str = "default", members: int | None = None,
              combinations: int | None = None, scheme: str = "recursive", coarsening: str = "alternate",
              refinement: str = "early-exit-fm", vcycle: str = "best", runs: int | None = None, reconst: bool = False,
              min_epsilon: float = 1.0, allow_empty: bool = False, memory_limit: int | None = None,
              records: bool = False, progress: Progress = False) -> Result:
    """Partitions the cells of a hypergraph into parts of nearly equal weight and cuts as little net weight as possible.

    With the same arguments and seed the partition is the same on every machine and with any number of threads, unless
    a time limit or an interruption cuts the call short. The lock of the interpreter is released meanwhile. Ctrl-C ends
    the call soon, with ``KeyboardInterrupt``.

    :param h: a :class:`Hypergraph`; a sparse matrix of SciPy, whose columns become cells and rows nets; a pair
        ``(offsets, pins)``; a graph of networkx; or lists of cells
    :param parts: number of parts, >= 1
    :param epsilon: a part may weigh (1 + epsilon) x its share, the share rounded up, then the product down; >= 0
    :param objective: what is minimised: ``"cut"``, ``"connectivity"`` (or ``"km1"``) or ``"soed"``
    :param seed: 0 .. 2^31-1; None: from the clock, and the result tells which
    :param starts: independent starts, of which the best counts
    :param threads: threads that the call may use
    :param time_limit: seconds of wall time after which the best partition so far is returned; the call goes on until
        then, and whether the partition keeps the limits of the parts is for ``balanced`` to tell
    :param fixed: [ncells] the part that a cell must go to, or -1; or a dictionary of cells, by number or name
    :param target_weights: [parts] what the parts should weigh, in proportion to each other
    :param preset: ``"fast"``, ``"default"`` or ``"quality"``: how much time to spend
    :param members: partitions that a start makes and combines, 0: only one; by default as the preset says
    :param combinations: combinations of two of them at most; by default as the preset says
    :param min_epsilon: a part may not weigh less than (1 - min_epsilon) x its share; 0 .. 1
    :param allow_empty: parts may stay empty though there are cells that they can have
    :param memory_limit: bytes that the call may hold
    :param records: keep the trials for :meth:`Result.to_json` and :meth:`Result.report`
    :param progress: True shows a bar, by tqdm if it is there; or a function that is called up to ten times per second
        with a :class:`ProgressEvent`, and can return False to end the call
    :raises ValueError: names the argument, the index and the value
    :raises Infeasible: no partition within the limits was found; the best one is attached
    :raises MemoryError: there was not enough memory, or not within memory_limit

    ``docs/tuning.md`` tells what scheme, coarsening, refinement, vcycle, runs and reconst trade.

    >>> result = partition([[0, 1, 2], [2, 3], [3, 4, 5]], 2)
    >>> result.cut, result.part_weights
    (1, (3, 3))
    """
    given = as_hypergraph(h)
    problem, kept = _problem(given, parts, target_weights, fixed)
    options = _options(epsilon=epsilon, objective=objective, seed=seed, starts=starts, threads=threads,
                       time_limit=time_limit, preset=preset, members=members, combinations=combinations, scheme=scheme,
                       coarsening=coarsening, refinement=refinement, vcycle=vcycle, runs=runs, reconst=reconst,
                       min_epsilon=min_epsilon, allow_empty=allow_empty, memory_limit=memory_limit, records=records)
    return _feasible(_run(core.kapris_partition, "partition", given, problem, kept, options, None, progress))


def refine(h: Given, part: Numbers, parts: int | None = None, *, epsilon: float = 0.03, objective: str = "cut",
           seed: int | None = 0, starts: int = 1, threads: int = 1, time_limit: float | None = None,
           fixed: Fixed = None, target_weights: Iterable[float] | None = None, members: int | None = None,
           combinations: int | None = None, scheme: str = "recursive", refinement: str = "early-exit-fm",
           vcycle: str = "best", runs: int | None = None, min_epsilon: float = 1.0, allow_empty: bool = False,
           memory_limit: int | None = None, records: bool = False, progress: Progress = False) -> Result:
    """Improves a partition; what comes back is never worse.

    :param part: [ncells] 0 .. parts-1; only read
    :param parts: number of parts; by default the largest in ``part`` and one

    The other arguments, and what is raised, are those of :func:`partition`; ``combinations`` is the number of V-cycles.

    >>> refine([[0, 1, 2], [2, 3], [3, 4, 5]], [0, 0, 1, 1, 1, 1], epsilon=0.4).cut
    1
    """
    given, before, count = _given(h, part, parts)
    problem, kept = _problem(given, count, target_weights, fixed)
    options = _options(epsilon=epsilon, objective=objective, seed=seed, starts=starts, threads=threads,
                       time_limit=time_limit, preset="default", members=members, combinations=combinations,
                       scheme=scheme, coarsening="alternate", refinement=refinement, vcycle=vcycle, runs=runs,
                       reconst=False, min_epsilon=min_epsilon, allow_empty=allow_empty, memory_limit=memory_limit,
                       records=records)
    return _feasible(_run(core.kapris_refine, "refine", given, problem, kept, options, before, progress))


def evaluate(h: Given, part: Numbers, parts: int | None = None, *, epsilon: float = 0.03, min_epsilon: float = 1.0,
             target_weights: Iterable[float] | None = None) -> Result:
    """The figures of any partition, whoever made it; nothing is changed and :class:`Infeasible` is not raised.

    :param part: [ncells] 0 .. parts-1; only read
    :param parts: number of parts; by default the largest in ``part`` and one
    :raises ValueError: names the argument, the index and the value

    >>> evaluate([[0, 1, 2], [2, 3]], [0, 1, 0, 1])
    <kapris.Result: 4 cells in 2 parts, cut 2, imbalance 0.0, ok>
    """
    given, before, count = _given(h, part, parts)
    problem, kept = _problem(given, count, target_weights, None)
    options = _native.new_options()
    options.epsilon, options.min_epsilon = _double("epsilon", epsilon), _double("min_epsilon", min_epsilon)
    return _run(core.kapris_evaluate, "evaluate", given, problem, kept, options, before, False)


def _given(h: Given, part: Numbers, parts: int | None) -> tuple[Hypergraph, Any, Any]:
    given = as_hypergraph(h)
    before = _arrays.of_length("part", part, "i", given.ncells, "cells")
    if before is None:
        raise TypeError("part is None")
    if parts is None:
        parts = max(1, _arrays.largest(before) + 1)
    return given, before, parts


__all__ = ["evaluate", "partition", "refine"]
