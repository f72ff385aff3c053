"""Bars and callbacks while a call runs."""
# SPDX-License-Identifier: MIT
from __future__ import annotations

import ctypes
import sys
from typing import Any, Callable, NamedTuple, Union

from . import _native


class ProgressEvent(NamedTuple):
    """A moment of a call."""

    starts_done: int
    """Starts that have ended."""
    starts: int
    """Starts that the call was asked for."""
    best: int | None
    """Objective of the best partition so far; None while there is none."""
    seconds: float
    """Wall time since the call began."""
    done: float
    """Estimate of the work done, 0 .. 1."""
    phase: str
    """What the start that reports is doing, such as ``"coarsening"``."""
    level_cells: int
    """Cells of the level that it works on, 0 where there is none."""


Progress = Union[bool, None, Callable[[ProgressEvent], Any]]


class _Line:
    """A line on standard error that is written anew."""

    def show(self, event: ProgressEvent) -> None:
        best = "" if event.best is None else f", best {event.best}"
        sys.stderr.write(f"\rkapris {100 * event.done:3.0f} %{best}, {event.seconds:.1f} s ")
        sys.stderr.flush()

    def close(self) -> None:
        sys.stderr.write("\n")
        sys.stderr.flush()


class _Bar:
    def __init__(self, tqdm: Any) -> None:
        self.bar = tqdm(total=100, desc="kapris", unit="%")

    def show(self, event: ProgressEvent) -> None:
        if event.best is not None:
            self.bar.set_postfix(best=event.best, refresh=False)
        self.bar.update(int(100 * event.done) - self.bar.n)

    def close(self) -> None:
        self.bar.close()


def _bar() -> _Line | _Bar:
    try:
        from tqdm.auto import tqdm
    except ImportError:
        return _Line()
    return _Bar(tqdm)


class Watch:
    """Hands the library's callbacks on; what they raise ends the call and is raised again after it."""

    def __init__(self, show: Callable[[ProgressEvent], Any], bar: _Line | _Bar | None, cancel: ctypes.c_int) -> None:
        self._bar, self._show, self._cancel = bar, show, cancel
        self._error: BaseException | None = None
        self.callback = _native.ProgressCallback(self._receive)

    def _receive(self, record: Any, user: Any) -> None:
        # Nothing may be raised through the library; what a signal raises here ends the call as well.
        try:
            r = record.contents
            event = ProgressEvent(r.starts_done, r.starts, None if r.best < 0 else r.best, r.seconds, r.done,
                                  _native.core.kapris_phase_name(r.phase).decode(), r.level_cells)
            if self._error is None and self._show(event) is False:
                self._cancel.value = 1
        except BaseException as error:
            self._error = error
            self._cancel.value = 1

    def close(self) -> None:
        """After the call: raises what a callback raised."""
        if self._error is not None:
            raise self._error

    def abandon(self) -> None:
        """Takes the bar away; can be called twice."""
        if self._bar is not None:
            self._bar.close()
            self._bar = None


def open_progress(progress: Progress, cancel: ctypes.c_int) -> Watch | None:
    if progress is None or progress is False:
        return None
    if progress is True:
        bar = _bar()
        return Watch(bar.show, bar, cancel)
    if not callable(progress):
        raise TypeError(f"progress is {progress!r}, neither True, False nor a function")
    return Watch(progress, None, cancel)


__all__ = ["Progress", "ProgressEvent"]
