"""What a call gives."""
# SPDX-License-Identifier: MIT
from __future__ import annotations

import ctypes
import dataclasses
import json
from typing import TYPE_CHECKING, Any, NamedTuple

from . import _arrays, _native
from .hypergraph import Hypergraph, Path, file_name

if TYPE_CHECKING:
    import numpy
    import numpy.typing

    IntArray = numpy.typing.NDArray[numpy.int32]


class Start(NamedTuple):
    """One independent start; a list of them makes a DataFrame."""

    number: int
    seed: int
    cut: int
    soed: int
    connectivity: int
    imbalance: float
    excess: int
    balanced: bool
    completed: bool
    """False: cut short; the figures are those of the best partition that it had."""
    seconds: float


class Told(NamedTuple):
    """What the JSON object of a run says beside the fields of its result."""

    command: str
    given: Any
    fixed: Any
    targets: Any
    options: dict[str, Any]
    seconds_prepare: float
    seconds_starts: float
    seconds_phase: tuple[float, ...]
    records: dict[str, Any] | None


@dataclasses.dataclass(frozen=True, repr=False, eq=False)
class Result:
    """A partition and its figures, which hold for the hypergraph as it was given.

    >>> import kapris
    >>> result = kapris.partition(kapris.Hypergraph.from_nets([[0, 1], [1, 2], [2, 3], [3, 0], [0, 2]]), 2)
    >>> result
    <kapris.Result: 4 cells in 2 parts, cut 3, imbalance 0.0, ok>
    >>> sorted(result.part.tolist()), result.part_weights, result.limits
    ([0, 0, 1, 1], (2, 2), (2, 2))
    """

    part: IntArray
    """[ncells] the part of each cell, 0 .. parts-1: int32 of NumPy, or an ``array.array`` where there is no NumPy."""
    cut: int
    """Total weight of the nets that lie in more than one part."""
    connectivity: int
    """For every net that spans k parts, k - 1 times its weight; also known as km1."""
    soed: int
    """Sum of external degrees: for every net that spans k > 1 parts, k times its weight."""
    imbalance: float
    """Largest part weight over its share of the total, less 1."""
    part_weights: tuple[int, ...]
    limits: tuple[int, ...]
    """Largest weight of each part that epsilon allows."""
    minimums: tuple[int, ...]
    """Smallest weight of each part that min_epsilon allows."""
    excess: int
    """What parts weigh above their limits and lack to their minimums, added up."""
    balanced: bool
    """Whether excess is 0."""
    status: str
    """``"ok"``, ``"infeasible balance"``, ``"time limit"`` or ``"cancelled"``."""
    message: str
    """Why the status is not ok; else empty."""
    seed: int
    """The seed that was used."""
    starts: tuple[Start, ...]
    """One for each start that has begun; none from evaluate."""
    best_start: int | None
    """Index into starts; None: the given partition, or a simple one made before the first start ended."""
    seconds: float
    """Wall time of the call."""
    peak_bytes: int
    """Largest memory that the call held, the result left out."""
    hypergraph: Hypergraph = dataclasses.field(compare=False)
    _told: Told = dataclasses.field(compare=False)

    @property
    def parts(self) -> int:
        """Number of parts."""
        return len(self.part_weights)

    def __repr__(self) -> str:
        return (f"<kapris.Result: {len(self.part)} cells in {self.parts} parts, cut {self.cut}, imbalance "
                f"{round(self.imbalance, 4)}, {self.status}>")

    def cells(self, part: int) -> list[int]:
        """The cells of one part, in rising order.

        >>> import kapris
        >>> kapris.evaluate([[0, 1], [1, 2]], [0, 1, 1]).cells(1)
        [1, 2]
        """
        return [i for i, p in enumerate(self.part.tolist()) if p == part]

    def to_json(self) -> str:
        """The object ``kapris-result-1`` of the tool, which ``docs/json.md`` describes; ``kapris best`` and
        ``kapris report`` read it.

        :raises ValueError: for the result of evaluate, which tells of no run

        >>> import json, kapris
        >>> json.loads(kapris.partition([[0, 1], [1, 2]], 2).to_json())["best"]["cut"]
        1
        """
        return json.dumps(self._object(), indent=1)

    def _object(self) -> dict[str, Any]:
        h, told = self.hypergraph, self._told
        if told.command == "evaluate":
            raise ValueError("the result of evaluate tells of no run: partition and refine give results for this")
        best = None if self.best_start is None else self.starts[self.best_start].number
        return {
            "schema": "kapris-result-1", "file": h.path or "hypergraph", "cells": h.ncells, "nets": h.nnets,
            "pins": h.npins, "hash": h.hash(), "version": _native.version(), "command": told.command,
            "given": _part_object(told.given), "fixed": _part_object(told.fixed), "options": self._options(),
            "limits": {"threads": told.options["threads"], "seconds": told.options["time_limit"] or None,
                       "bytes": told.options["memory_limit"] or None},
            "status": self.status, "message": self.message, "warnings": [],
            "best": {"start": best, "cut": self.cut, "soed": self.soed, "connectivity": self.connectivity,
                     "imbalance": self.imbalance, "excess": self.excess,
                     "empty_parts": self.parts - len(set(self.part.tolist())), "balanced": self.balanced},
            "starts": [start._asdict() for start in self.starts], "part_weights": self.part_weights,
            "part_limits": self.limits, "part_minimums": self.minimums,
            "output": {"path": "part", "hash": _hash_of(self.part)}, "seconds": self._seconds(),
            "peak_bytes": self.peak_bytes,
            **({"records": {**told.records, "fixed_weights": self._fixed_weights()}} if told.records else {})}

    def _options(self) -> dict[str, Any]:
        options, targets = self._told.options, self._told.targets
        words = {"scheme": _native.SCHEMES, "objective": _native.OBJECTIVES, "coarsening": _native.COARSENINGS,
                 "refinement": _native.REFINEMENTS, "vcycle": _native.VCYCLES}
        made: dict[str, Any] = {"parts": self.parts}
        for name, values in words.items():
            made[name] = next(word for word, value in values.items() if value == options[name])
        for name in ("runs", "members", "combinations", "epsilon", "min_epsilon"):
            made[name] = options[name]
        made["reconst"], made["allow_empty"] = bool(options["reconst"]), bool(options["allow_empty"])
        made["target_weights"] = None if targets is None else [float(t) / float(sum(targets)) for t in targets]
        made["seed"] = self.seed
        return made

    def _seconds(self) -> dict[str, float]:
        told = self._told
        return {"total": self.seconds, "read": 0.0, "prepare": told.seconds_prepare, "starts": told.seconds_starts,
                **dict(zip(("coarsening", "initial", "refining", "balancing"), told.seconds_phase[1:]))}

    def _fixed_weights(self) -> list[int] | None:
        if self._told.fixed is None:
            return None
        weights, cells = [0] * self.parts, self.hypergraph.cell_weights
        for i, p in enumerate(self._told.fixed):
            if p >= 0:
                weights[p] += 1 if cells is None else int(cells[i])
        return weights

    def report(self, path: Path) -> None:
        """Writes one HTML page with pictures of the result, which loads nothing else; ``docs/report.md`` shows one.

        Trials are on the page if the call had ``records=True``.

        :raises OSError: if the file cannot be written
        :raises ValueError: for the result of evaluate, which tells of no run

        >>> import pathlib, tempfile, kapris
        >>> with tempfile.TemporaryDirectory() as folder:
        ...     page = pathlib.Path(folder) / "page.html"
        ...     kapris.partition([[0, 1], [1, 2]], 2).report(page)
        ...     page.read_text()[:15]
        '<!DOCTYPE html>'
        """
        message = ctypes.create_string_buffer(1000)
        part = _arrays.buffer("part", self.part, "i")
        file, kept = self.hypergraph._record()
        status = _native.reports().kapris_write_report(file_name(path), self.to_json().encode(), ctypes.byref(file),
                                                       _arrays.address(part), message, len(message))
        del kept
        _native.check_file(status, message)

    def _repr_html_(self) -> str:
        from ._picture import summary
        return summary(self)


def _hash_of(part: Any) -> str:
    numbers = _arrays.buffer("part", part, "i")
    digits, message = ctypes.create_string_buffer(17), ctypes.create_string_buffer(1000)
    _native.check_file(_native.formats().kapris_hash_parts(_arrays.address(numbers), len(numbers), digits, message,
                                                           len(message)), message)
    return digits.value.decode()


def _part_object(part: Any) -> dict[str, str] | None:
    return None if part is None else {"path": "array", "hash": _hash_of(part)}


class Infeasible(ValueError):
    """No partition within the limits was found; ``result`` is the best one.

    >>> import kapris
    >>> h = kapris.Hypergraph.from_nets([[0, 1], [1, 2]], cell_weights=[9, 1, 1])
    >>> try:
    ...     result = kapris.partition(h, 2, epsilon=0)
    ... except kapris.Infeasible as error:
    ...     print(sorted(error.result.part_weights), error.result.limits)
    [2, 9] (6, 6)
    """

    result: Result

    def __init__(self, message: str, result: Result) -> None:
        super().__init__(message)
        self.result = result

    def __reduce__(self) -> tuple[Any, ...]:
        return type(self), (str(self), self.result)


__all__ = ["Infeasible", "Result", "Start"]
