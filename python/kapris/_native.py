"""The C interfaces, as include/kapris_api.h and formats/kapris_formats.h declare them."""
# SPDX-License-Identifier: MIT
from __future__ import annotations

import ctypes
import functools
import pathlib
from ctypes import POINTER, c_char_p, c_double, c_int, c_int64, c_size_t, c_void_p
from typing import Any

_HERE = pathlib.Path(__file__).parent / "lib"

# Statuses of kapris_api.h.
OK, INVALID_ARGUMENT, INFEASIBLE, OUT_OF_MEMORY, MEMORY_LIMIT, TIME_LIMIT, CANCELLED, INTERNAL = range(8)
# Statuses of kapris_formats.h.
FILE_OK, FILE_MALFORMED, FILE_ARGUMENT, FILE_SYSTEM, FILE_OUT_OF_MEMORY, FILE_INTERNAL = range(6)
DROP_WEIGHTS, DROP_REPEATS, DROP_NAMES = 1, 2, 4

SCHEMES = {"recursive": 0, "kway": 1}
OBJECTIVES = {"cut": 0, "soed": 1, "connectivity": 2, "km1": 2}
COARSENINGS = {"alternate": 0, "degree-stars": 1, "strong-stars": 2, "whole-nets": 3, "pairs": 4}
REFINEMENTS = {"fm": 0, "one-way-fm": 1, "early-exit-fm": 2}
VCYCLES = {"never": 0, "best": 1, "improving": 2, "close": 3}


class Problem(ctypes.Structure):
    _fields_ = [("size", c_size_t), ("ncells", c_int), ("nnets", c_int), ("cell_weights", c_void_p),
                ("net_weights", c_void_p), ("net_starts", c_void_p), ("pins", c_void_p), ("nparts", c_int),
                ("target_weights", c_void_p), ("fixed", c_void_p)]


class ProgressRecord(ctypes.Structure):
    _fields_ = [("starts_done", c_int), ("starts", c_int), ("best", c_int64), ("seconds", c_double),
                ("done", c_double), ("phase", c_int), ("level_cells", c_int)]


ProgressCallback = ctypes.CFUNCTYPE(None, POINTER(ProgressRecord), c_void_p)


class Options(ctypes.Structure):
    _fields_ = [("size", c_size_t), ("scheme", c_int), ("objective", c_int), ("coarsening", c_int),
                ("refinement", c_int), ("vcycle", c_int), ("runs", c_int), ("members", c_int),
                ("combinations", c_int), ("reconst", c_int), ("seed", c_int64), ("epsilon", c_double),
                ("min_epsilon", c_double), ("allow_empty", c_int), ("starts", c_int), ("first_start", c_int),
                ("threads", c_int), ("time_limit", c_double), ("memory_limit", c_size_t), ("cancel", c_void_p),
                ("progress", c_void_p), ("log", c_void_p), ("log_level", c_int), ("user", c_void_p),
                ("records", c_int), ("completed", c_void_p), ("recall", c_void_p),
                ("improved", c_void_p), ("arrived", c_void_p)]


class StartRecord(ctypes.Structure):
    _fields_ = [("seed", c_int64), ("cut", c_int64), ("soed", c_int64), ("imbalance", c_double), ("excess", c_int64),
                ("balanced", c_int), ("completed", c_int), ("seconds", c_double), ("number", c_int)]


class TrialRecord(ctypes.Structure):
    _fields_ = [("start", c_int), ("number", c_int), ("value", c_int64), ("cycled", c_int64), ("imbalance", c_double),
                ("best", c_int), ("parents", c_int * 2)]


class LevelRecord(ctypes.Structure):
    _fields_ = [("phase", c_int), ("cycle", c_int), ("polish", c_int), ("cells", c_int), ("nets", c_int),
                ("pins", c_int), ("value", c_int64), ("imbalance", c_double)]


class BisectionRecord(ctypes.Structure):
    _fields_ = [("first", c_int), ("parts", c_int), ("cut", c_int64), ("weights", c_int64 * 2), ("seconds", c_double)]


class ResultRecord(ctypes.Structure):
    _fields_ = [("size", c_size_t), ("status", c_int), ("message", ctypes.c_char * 256), ("ncells", c_int),
                ("nparts", c_int), ("nstarts", c_int), ("part", POINTER(c_int)), ("cut", c_int64), ("soed", c_int64),
                ("connectivity", c_int64), ("part_weights", POINTER(c_int64)), ("part_limits", POINTER(c_int64)),
                ("part_minimums", POINTER(c_int64)), ("imbalance", c_double), ("excess", c_int64),
                ("balanced", c_int), ("seed", c_int64), ("best_start", c_int), ("starts", POINTER(StartRecord)),
                ("seconds", c_double), ("seconds_prepare", c_double), ("seconds_starts", c_double),
                ("seconds_phase", c_double * 5), ("peak_bytes", c_size_t), ("ntrials", c_int), ("nlevels", c_int),
                ("trials", POINTER(TrialRecord)), ("levels", POINTER(LevelRecord)), ("nbisections", c_int),
                ("bisections", POINTER(BisectionRecord))]


class Reading(ctypes.Structure):
    _fields_ = [("format", c_char_p), ("model", c_char_p), ("unit_weights", c_int), ("module", c_char_p),
                ("depth", c_int), ("has_depth", c_int)]


class NameTable(ctypes.Structure):
    _fields_ = [("bytes", c_void_p), ("starts", c_void_p)]


class FileRecord(ctypes.Structure):
    _fields_ = [("ncells", c_int), ("nnets", c_int), ("net_starts", c_void_p), ("pins", c_void_p),
                ("cell_weights", c_void_p), ("net_weights", c_void_p), ("cell_names", NameTable),
                ("net_names", NameTable)]


def _declare(library: ctypes.CDLL, name: str, result: Any, *arguments: Any) -> None:
    function = getattr(library, name)
    function.restype = result
    function.argtypes = arguments


def _load_core() -> ctypes.CDLL:
    core = ctypes.CDLL(str(_HERE / "libkapris.so"))
    _declare(core, "kapris_version", c_char_p)
    _declare(core, "kapris_status_name", c_char_p, c_int)
    _declare(core, "kapris_phase_name", c_char_p, c_int)
    _declare(core, "kapris_init_problem", None, POINTER(Problem))
    _declare(core, "kapris_init_options", None, POINTER(Options))
    _declare(core, "kapris_partition", c_int, POINTER(Problem), POINTER(Options), c_void_p)
    for name in ("kapris_refine", "kapris_evaluate"):
        _declare(core, name, c_int, POINTER(Problem), POINTER(Options), c_void_p, c_void_p)
    _declare(core, "kapris_free_result", None, c_void_p)
    # An array that is longer or shorter here than there would be read as something else.
    for record, initial in ((Problem, core.kapris_init_problem), (Options, core.kapris_init_options)):
        room = (ctypes.c_char * 4096)()  # for a longer one
        filled = record.from_buffer(room)
        initial(filled)
        if filled.size != ctypes.sizeof(record):
            raise ImportError(f"{core._name} is of another version than this package: {record.__name__} has "
                              f"{filled.size} bytes there and {ctypes.sizeof(record)} here")
    return core


def _load_formats() -> ctypes.CDLL:
    formats = ctypes.CDLL(str(_HERE / "libkapris_formats.so"))
    _declare(formats, "kapris_formats_version", c_char_p)
    _declare(formats, "kapris_read_file", c_int, c_char_p, POINTER(Reading), POINTER(POINTER(FileRecord)), c_char_p,
             c_size_t)
    _declare(formats, "kapris_free_file", None, POINTER(FileRecord))
    _declare(formats, "kapris_write_file", c_int, c_char_p, c_char_p, POINTER(FileRecord), c_int, c_char_p, c_size_t)
    _declare(formats, "kapris_hash_file", c_int, POINTER(FileRecord), c_char_p, c_char_p, c_size_t)
    _declare(formats, "kapris_hash_parts", c_int, c_void_p, c_int, c_char_p, c_char_p, c_size_t)
    return formats


def _load_report() -> ctypes.CDLL:
    report = ctypes.CDLL(str(_HERE / "libkapris_report.so"))
    _declare(report, "kapris_write_report", c_int, c_char_p, c_char_p, POINTER(FileRecord), c_void_p, c_char_p,
             c_size_t)
    _declare(report, "kapris_order", c_int, POINTER(FileRecord), c_void_p, c_int, c_void_p, c_void_p, c_void_p,
             c_void_p, c_char_p, c_size_t)
    return report


core = _load_core()


@functools.lru_cache(maxsize=None)
def formats() -> ctypes.CDLL:
    """The library of file formats, loaded when the first file is read or written."""
    return _load_formats()


@functools.lru_cache(maxsize=None)
def reports() -> ctypes.CDLL:
    """The library of orders and of the page of a result, loaded when the first is made."""
    return _load_report()


def version() -> str:
    """The version of the library inside this package.

    >>> version().count(".")
    2
    """
    text: bytes = core.kapris_version()
    return text.decode()


_default_options = Options()
core.kapris_init_options(_default_options)
_default_problem = Problem()
core.kapris_init_problem(_default_problem)


def new_options() -> Options:
    return Options.from_buffer_copy(_default_options)


def new_problem() -> Problem:
    return Problem.from_buffer_copy(_default_problem)


def check_file(status: int, message: ctypes.Array[ctypes.c_char]) -> None:
    """Raises what a status of the formats library stands for."""
    if status == FILE_OK:
        return
    text = message.value.decode(errors="replace").replace("net_starts", "offsets")
    if status == FILE_OUT_OF_MEMORY:
        raise MemoryError(text)
    if status == FILE_SYSTEM:
        raise OSError(text)
    raise (ValueError if status in (FILE_MALFORMED, FILE_ARGUMENT) else RuntimeError)(text)
