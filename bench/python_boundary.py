#!/usr/bin/env python3
"""What a call from Python costs beside the same call of the library, in the environment of scripts/python.

usage: bench/python_boundary.py [--circuit FILE.hgr] [--update]

Run it with a Python that has the package built with optimisation, NumPy and SciPy. Prints a table; --update writes it
into docs/python.md. Times are the smallest of many calls, Python and library in turn, on one thread.
"""
# SPDX-License-Identifier: MIT
import argparse
import ctypes
import os
import pathlib
import signal
import statistics
import subprocess
import sys
import threading
import time

import numpy as np
import scipy.sparse

import kapris
from kapris import _arrays, _native, solve

DOCUMENT = pathlib.Path(__file__).resolve().parents[1] / "docs" / "python.md"
BEGIN, END = "<!-- bench/python_boundary.py -->", "<!-- end -->"


def seconds(call):
    began = time.perf_counter()
    call()
    return time.perf_counter() - began


def in_turn(first, second, repeat):
    """The smallest times of two calls that run one after the other."""
    pairs = [(seconds(first), seconds(second)) for _ in range(repeat)]
    return tuple(min(column) for column in zip(*pairs))


def bare(h, parts):
    """The call of the library alone, with records that are there already."""
    problem, kept = solve._problem(h, parts, None, None)
    options = _native.new_options()

    def call():
        made = ctypes.c_void_p()
        _native.core.kapris_partition(ctypes.byref(problem), ctypes.byref(options), ctypes.byref(made))
        _native.core.kapris_free_result(made)
        return kept

    return call


def small():
    rng = np.random.default_rng(1)
    nets = [rng.choice(30, 3, replace=False).tolist() for _ in range(40)]
    h = kapris.Hypergraph.from_nets(nets)
    rows = []
    for name, call in (("30 cells, a `Hypergraph`", lambda: kapris.partition(h, 2)),
                       ("30 cells, from lists of cells", lambda: kapris.partition(nets, 2))):
        python, library = in_turn(call, bare(h, 2), 300)
        rows.append((name, python, library))
    return rows


def circuit(path):
    h = kapris.Hypergraph.read(path)
    python, library = in_turn(lambda: kapris.partition(h, 2), bare(h, 2), 15)
    return [(f"{path.stem}, 2 parts", python, library)]


def matrix(entries=10_000_000):
    """Of a large matrix, what comes before the engine."""
    rng = np.random.default_rng(1)
    n = entries // 10
    indices = np.sort(rng.integers(0, n, (n, 10), np.int32), axis=1).ravel()
    rows = []
    for dtype in (np.int32, np.int64):
        a = scipy.sparse.csr_matrix((np.ones(entries, np.int8), indices, np.arange(0, entries + 1, 10)), (n, n))
        a.indices, a.indptr = a.indices.astype(dtype), a.indptr.astype(dtype)
        rows.append((f"CSR of {entries:,} entries, {np.dtype(dtype).name}, before the library is called",
                     min(seconds(lambda: solve._problem(kapris.Hypergraph.from_scipy(a), 2, None, None))
                         for _ in range(5))))
    return rows


def interrupt():
    """Ctrl-C in a long call, until the exception is there."""
    n = 200_000
    h = kapris.Hypergraph.from_nets([[i, i * 7919 % n, (i + 1) % n] for i in range(n)])
    took = []
    for wait in np.linspace(0.1, 2.5, 12):
        sent = []

        def send(wait=wait, sent=sent):
            time.sleep(wait)
            sent.append(time.perf_counter())
            os.kill(os.getpid(), signal.SIGINT)

        threading.Thread(target=send).start()
        try:
            kapris.partition(h, 16, preset="quality")
        except KeyboardInterrupt:
            took.append(time.perf_counter() - sent[0])
    return statistics.median(took), max(took)


def start():
    code = "import time; t = time.perf_counter(); import kapris; print(time.perf_counter() - t)"
    return min(float(subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True).stdout)
               for _ in range(9))


def table(arguments):
    lines = ["| what | in Python | library alone | boundary |", "|---|---|---|---|"]
    rows = small() + (circuit(arguments.circuit) if arguments.circuit else [])
    for name, python, library in rows:
        lines.append(f"| {name} | {1e3 * python:.3f} ms | {1e3 * library:.3f} ms | {1e3 * (python - library):.3f} ms, "
                     f"{100 * (python / library - 1):.1f} % |")
    for name, took in matrix():
        lines.append(f"| {name} | {took:.3f} s | | |")
    middle, longest = interrupt()
    lines.append(f"| Ctrl-C in a long call, until `KeyboardInterrupt`; median and longest of 12 | {middle:.3f} s, "
                 f"{longest:.3f} s | | |")
    lines.append(f"| `import kapris` | {1e3 * start():.0f} ms | | |")
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--circuit", type=pathlib.Path, help="a file .hgr, such as ibm01.hgr")
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--note", default="", help="what else the table says, as in ', with checks'")
    arguments = parser.parse_args()
    assert _arrays.numpy() is not None
    made = table(arguments)
    print(made)
    if arguments.update:
        text = DOCUMENT.read_text()
        before, rest = text.split(BEGIN)
        DOCUMENT.write_text(f"{before}{BEGIN}\n{made}\n\nThe smallest of many times on one thread of a shared machine"
                            f"{arguments.note}, {time.strftime('%Y-%m-%d')}.\n{END}{rest.split(END)[1]}")


main()
