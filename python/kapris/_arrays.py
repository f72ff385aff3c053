"""Arrays as the C interface takes them, without a copy where the layout allows; NumPy is used if it is there."""
# SPDX-License-Identifier: MIT
from __future__ import annotations

import array
import ctypes
import sys
from typing import Any, Iterable, Sequence, Union

Buffer = Any
"""A NumPy array or an ``array.array`` of 32-bit or 64-bit whole numbers or of doubles, contiguous."""

_TYPES = {"i": "int32", "q": "int64", "d": "float64"}
_LIMITS = {"i": (-2**31, 2**31 - 1), "q": (-2**63, 2**63 - 1)}
assert array.array("i").itemsize == 4 and array.array("q").itemsize == 8

_numpy: Any = None
_looked = False


def numpy() -> Any:
    """The module NumPy, or None where it is not installed."""
    global _numpy, _looked
    if not _looked:
        try:
            import numpy as found
            _numpy = found
        except ImportError:
            pass
        _looked = True
    return _numpy


def _is_numpy(values: Any) -> bool:
    loaded = sys.modules.get("numpy")
    return loaded is not None and isinstance(values, loaded.ndarray)


def address(buffer: Buffer) -> int | None:
    """Of the first element, for as long as the buffer lives; None stands for no array."""
    if buffer is None:
        return None
    if isinstance(buffer, array.array):
        return buffer.buffer_info()[0]
    place: int = buffer.__array_interface__["data"][0]
    return place


def _refuse(name: str, values: Iterable[Any], code: str) -> None:
    """Raises for the first element that is no number of that type."""
    low, high = _LIMITS.get(code, (0, 0))
    for i, value in enumerate(values):
        if code == "d":
            try:
                float(value)
            except (TypeError, ValueError):
                raise TypeError(f"{name}[{i}] is {value!r}, not a number") from None
            continue
        if not hasattr(value, "__index__"):
            if not isinstance(value, float):
                raise TypeError(f"{name}[{i}] is {value!r}, not a whole number")
            if not value.is_integer():
                raise ValueError(f"{name}[{i}] is {value}, not a whole number")
        if not low <= int(value) <= high:
            raise ValueError(f"{name}[{i}] is {int(value)}, which does not fit {8 * array.array(code).itemsize} bits")


def _from_numpy(name: str, values: Any, code: str) -> Buffer:
    np = sys.modules["numpy"]
    if values.ndim != 1:
        raise ValueError(f"{name} has {values.ndim} dimensions, not 1")
    wanted = np.dtype(_TYPES[code])
    if values.dtype == wanted:
        return np.ascontiguousarray(values)
    if values.dtype.kind not in "iu" + ("f" if code == "d" else "") and len(values) > 0:
        if values.dtype.kind != "f":
            raise TypeError(f"{name} has the type {values.dtype}, not whole numbers" if code != "d" else
                            f"{name} has the type {values.dtype}, not numbers")
        wrong = ~np.isfinite(values) | (values != np.floor(values))
        if wrong.any():
            at = int(wrong.argmax())
            raise ValueError(f"{name}[{at}] is {values[at]}, not a whole number")
    if code != "d" and len(values) > 0:
        low, high = _LIMITS[code]
        for at in (int(values.argmin()), int(values.argmax())):
            if not low <= int(values[at]) <= high:
                raise ValueError(f"{name}[{at}] is {int(values[at])}, which does not fit {8 * wanted.itemsize} bits")
    return np.ascontiguousarray(values, dtype=wanted)


def buffer(name: str, values: Any, code: str) -> Buffer:
    """The values as contiguous numbers of a type: "i" 32 bits, "q" 64 bits, "d" double. Names are for messages.

    >>> buffer("pins", [0, 2, 1], "i")
    array('i', [0, 2, 1])
    >>> buffer("pins", [0, 2**31], "i")
    Traceback (most recent call last):
    ValueError: pins[1] is 2147483648, which does not fit 32 bits
    """
    if _is_numpy(values):
        return _from_numpy(name, values, code)
    if isinstance(values, array.array) and values.typecode == code:
        return values
    if isinstance(values, (str, bytes)) or not hasattr(values, "__iter__"):
        raise TypeError(f"{name} is {values!r}, not a sequence of numbers")
    if not isinstance(values, (list, tuple)):
        values = list(values)
    try:
        return array.array(code, values)
    except (TypeError, OverflowError):
        _refuse(name, values, code)
        # Whole numbers that are written as floating ones.
        return array.array(code, [int(value) for value in values])


def of_length(name: str, values: Any, code: str, length: int, what: str) -> Buffer:
    """The same, or None for None, for arrays with a given length."""
    if values is None:
        return None
    made = buffer(name, values, code)
    if len(made) != length:
        raise ValueError(f"{name} has {len(made)} elements, but there are {length} {what}")
    return made


def whole(name: str, value: Any, low: int, high: int) -> int:
    """One whole number of a range."""
    if isinstance(value, bool) or not hasattr(value, "__index__"):
        raise TypeError(f"{name} is {value!r}, not a whole number")
    number = int(value.__index__())
    if not low <= number <= high:
        raise ValueError(f"{name} is {number}, but it should be between {low} and {high}")
    return number


def empty(count: int, code: str) -> Buffer:
    """A new array to be filled: NumPy's if it is there, else an ``array.array``."""
    np = numpy()
    if np is not None:
        return np.empty(count, _TYPES[code])
    return array.array(code, bytes(count * array.array(code).itemsize))


def copy_out(pointer: int | None, count: int, code: str) -> Buffer:
    """A new array with what stands at an address."""
    made = empty(count, code)
    place = address(made)
    if count > 0 and pointer and place:
        ctypes.memmove(place, pointer, count * made.itemsize)
    return made


def largest(made: Buffer) -> int:
    """The largest of whole numbers; -1 of none or if all are below."""
    if len(made) == 0:
        return -1
    return max(-1, int(made.max() if hasattr(made, "max") else max(made)))


Numbers = Union[Sequence[int], "array.array[int]", Any]
"""What whole numbers can be given as: a NumPy array, an ``array.array``, a list, a tuple, any iterable."""
