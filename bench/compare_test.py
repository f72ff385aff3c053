#!/usr/bin/env python3
"""Tests compare.py: its arithmetic and verdict with programs of known figures, then a build against itself.

usage: compare_test.py [PROGRAM]: without PROGRAM, bench_partition, only the former.
"""
# SPDX-License-Identifier: MIT
import pathlib
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
# Reports the next of its CPU times at each run.
FAKE = """#!/usr/bin/env python3
import pathlib, sys
turns = pathlib.Path(__file__ + "." + sys.argv[1])
turn = len(turns.read_text()) if turns.exists() else 0
turns.write_text("x" * (turn + 1))
print(f"4,2,5,{CUT},{CUT},{2 * CUT},0.1,{TIMES[turn]},9,{PEAK},0,{HASH}")
"""


def compare(*arguments):
    return subprocess.run([sys.executable, "-B", HERE / "compare.py", *arguments], capture_output=True, text=True)


def expect(what, result, status, *texts):
    shown = result.stdout + result.stderr
    if result.returncode != status or any(text not in shown for text in texts):
        sys.exit(f"{what}: expected status {status} and {texts}, got {result.returncode}:\n{shown}")


def fake(folder, name, cut=3, times=(2.0, 4.0), peak=10, partition="aa"):
    program = folder / name
    values = f"CUT, TIMES, PEAK, HASH = {cut}, {times}, {peak}, '{partition}'\n"
    program.write_text(FAKE.replace("import pathlib, sys\n", "import pathlib, sys\n" + values))
    program.chmod(0o755)
    return program


def test_figures(folder):
    file = folder / "tiny.hgr"
    file.write_text("2 4\n1 2\n3 4 1\n")
    options = ["--instances", file, "--repeat", "2", "--cases", "recursive:2"]

    # Smallest 2 and 1, pairs 3/2 and 1/4; their single case is the mean.
    expect("ratios", compare(fake(folder, "old"), fake(folder, "new", times=(3.0, 1.0), peak=5), *options), 0,
           "recursive 2        3     2.000     1.000   0.500 [0.250 .. 1.500]   0.500",
           "geometric mean of 1 cases: 0.500", "smallest 0.250, median 0.875, largest 1.500", "mean: 0.500")
    unit = folder / "unit"
    unit.write_text("#!/bin/sh\necho 0.5\n")
    unit.chmod(0o755)
    expect("units", compare(fake(folder, "old2"), fake(folder, "new2"), "--unit", unit, *options), 0,
           "unit: 0.5000 seconds, the smallest of 4", "4.000     4.000   1.000")
    # Geometric, not arithmetic: 1/2 and 2.
    two = [*options[:-1], "recursive:2", "kway-cut:2", "--repeat", "1"]
    mixed = fake(folder, "mixed")
    mixed.write_text(mixed.read_text().replace("TIMES[turn]", "1.0 if sys.argv[1] == 'recursive' else 4.0"))
    expect("mean", compare(fake(folder, "base"), mixed, *two), 0, "geometric mean of 2 cases: 1.000")

    for name, change in (("other cut", {"cut": 2}), ("other partition", {"partition": "bb"})):
        expect(name, compare(fake(folder, name + " old"), fake(folder, name, **change), *options), 1,
               "DIFFERENT PARTITIONS", "different partitions: tiny recursive 2")
    lying = fake(folder, "lying")
    lying.write_text(lying.read_text().replace("{CUT},{CUT}", "{CUT},{CUT + 1}"))
    expect("wrong report", compare(lying, lying, *options), 1, "reported 3, recomputed 4")
    expect("missing build", compare(folder, folder, *options), 1, "bench_partition is missing")
    expect("same name", compare(lying, lying, "--instances", file, folder), 1, "more than one instance is called tiny")
    expect("wrong case", compare(lying, lying, "--cases", "recursive"), 1, "'recursive' is not SCHEME:PARTS")


def test_build(program, folder):
    expect("a build and itself",
           compare(program, program, "--repeat", "2", "--instances", "circuit-10k", "--cache", folder / "cache",
                   "--cases", "recursive:2", "kway-soed:3", "--options", "nruns=1", "vcycle=0"),
           0, "geometric mean of 2 cases")
    made = [file.name for file in (folder / "cache").iterdir()]
    if made != ["circuit-cells-10000-seed-1.hgr"]:
        sys.exit(f"the cache holds {made}")
    expect("unknown option", compare(program, program, "--cache", folder / "cache", "--options", "rums=1"), 1,
           "'rums=1' is not one of nruns=N")


with tempfile.TemporaryDirectory() as scratch:
    test_figures(pathlib.Path(scratch))
    if len(sys.argv) > 1:
        test_build(pathlib.Path(sys.argv[1]), pathlib.Path(scratch))
