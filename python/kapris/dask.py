"""The starts of one call on the workers of a Dask cluster.

``partition`` gives what :func:`kapris.partition` gives with the same arguments: each start is a function of the hypergraph,
the options, the seed and its number, wherever it is made, and the library itself compares them. Needs the package
``distributed`` here, and kapris of the same version where the workers run.
"""
# SPDX-License-Identifier: MIT
from __future__ import annotations

import ctypes
import inspect
import threading
import time
from typing import TYPE_CHECKING, Any

from . import _native, solve
from .hypergraph import Hypergraph, as_hypergraph
from .result import Result, Start

if TYPE_CHECKING:
    from distributed import Client

# What does not go with starts that are made elsewhere.
_REFUSED = {"progress": "Dask shows how far its tasks are", "records": "trials stay with the workers",
            "time_limit": "the answer would depend on the machines"}
# How often starts are asked for anew whose hypergraph has left with its workers.
_TRIES = 5
# Seconds between looks whether the call is to end.
_WAIT = 0.2

_Recall = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(_native.StartRecord), ctypes.c_void_p, ctypes.c_void_p)


def _options(arguments: dict[str, Any]) -> _native.Options:
    return solve._options(**{name: value for name, value in arguments.items()
                             if name not in ("h", "parts", "fixed", "target_weights", "progress")})


def _run(h: Hypergraph, arguments: dict[str, Any], options: _native.Options) -> Result:
    problem, kept = solve._problem(h, arguments["parts"], arguments["target_weights"], arguments["fixed"])
    return solve._run(_native.core.kapris_partition, "partition", h, problem, kept, options, None, False)


def _make_start(h: Hypergraph, arguments: dict[str, Any], number: int, version: str) -> tuple[Start, bytes]:
    """On a worker: one start, and its partition as int32."""
    if version != _native.version():
        raise RuntimeError(f"this worker has kapris {_native.version()}, the client {version}")
    options = _options(arguments)
    options.first_start, options.starts = number, 1
    result = _run(h, arguments, options)
    return result.starts[0], result.part.tobytes()


class _Starts:
    """The futures of all starts, and what the library asks for."""

    def __init__(self, client: Client, h: Hypergraph, arguments: dict[str, Any], options: _native.Options) -> None:
        import distributed
        self._lost, self._late = distributed.CancelledError, distributed.TimeoutError
        self._client: Any = client
        self._h, self._arguments, self._options = h, arguments, options
        self._futures: dict[int, Any] = {}
        self.error: BaseException | None = None
        self.callback = _Recall(self._recall)

    def _submit(self) -> None:
        """All that have not been taken; the hypergraph goes to each worker once."""
        there = self._client.scatter(self._h, broadcast=True, hash=False)
        for number in self._futures or range(self._options.starts):
            self._futures[number] = self._client.submit(_make_start, there, self._arguments, number, _native.version(),
                                                        pure=False)

    def _wait(self, number: int) -> tuple[Start, bytes]:
        future, done = self._futures[number], threading.Event()
        future.add_done_callback(lambda _: done.set())
        while not done.wait(_WAIT):
            if self._ended.value:
                raise KeyboardInterrupt
        # It can have been lost since.
        while True:
            try:
                made: tuple[Start, bytes] = future.result(timeout=_WAIT)
                return made
            except self._late:
                if self._ended.value:
                    raise

    def _take(self, number: int) -> tuple[Start, bytes]:
        # Not before the library has looked at the arguments.
        if not self._futures:
            self._submit()
        for tries in range(1, _TRIES + 1):
            try:
                made = self._wait(number)
                del self._futures[number]
                return made
            except self._lost:
                # All workers that had the hypergraph are gone.
                if tries == _TRIES:
                    raise
                time.sleep(tries)
                self._submit()
        raise RuntimeError("internal failure: a start was not taken")

    def _recall(self, record: Any, part: int, user: Any) -> int:
        # Nothing may be raised through the library.
        try:
            start, made = self._take(record.contents.number)
            ctypes.memmove(part, made, len(made))
            record.contents.seconds, record.contents.completed = start.seconds, int(start.completed)
            return 1
        except BaseException as error:
            self.error = error
            self._ended.value = 1
            return 0

    @property
    def _ended(self) -> ctypes.c_int:
        """Whether the call is to end, also by Ctrl-C."""
        return ctypes.c_int.from_address(self._options.cancel)

    def cancel(self) -> None:
        if self._futures:
            self._client.cancel(list(self._futures.values()), force=True)


def partition(client: Client, h: solve.Given, parts: int, *, starts: int = 1, **arguments: Any) -> Result:
    """:func:`kapris.partition` with its starts on the workers of a cluster.

    The hypergraph goes to each worker once, and each start is a task. A start whose worker is lost is made again on
    another one. ``threads`` are those of each start; a worker of several threads makes as many starts at once.

    :param client: a ``distributed.Client``
    :param starts: independent starts, of which the best counts
    :param arguments: those of :func:`kapris.partition`, but for ``time_limit``, ``records`` and ``progress``
    :raises ValueError: names the argument, the index and the value
    :raises Infeasible: no partition within the limits was found; the best one is attached
    """
    for name, why in _REFUSED.items():
        if arguments.get(name):
            raise ValueError(f"{name} is not for starts on a cluster: {why}")
    bound = inspect.signature(solve.partition).bind(h, parts, starts=starts, **arguments)
    bound.apply_defaults()
    given, asked = as_hypergraph(h), {name: value for name, value in bound.arguments.items() if name != "h"}
    if asked["seed"] is None:
        asked["seed"] = int(time.time()) % 2**31
    options = _options(asked)
    made = _Starts(client, given, asked, options)
    options.recall = ctypes.cast(made.callback, ctypes.c_void_p).value
    options.threads = 1  # the library only compares
    try:
        result = _run(given, asked, options)
    finally:
        made.cancel()
        if made.error is not None:
            raise made.error
    return solve._feasible(result)


__all__ = ["partition"]
