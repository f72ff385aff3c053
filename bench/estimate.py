#!/usr/bin/env python3
"""Measures what partitions cost and fits the table behind the estimates of 'kapris check' and '--dry-run'.

usage: estimate.py KAPRIS [--instances FILE|FOLDER...] [--parts N,N...] [--limit SECONDS] [--update]
       estimate.py --calls FILE [--update]

KAPRIS is the tool or the build folder that holds it. For each way to partition (the presets, direct k-way partitioning,
refinement) and each number of parts, CPU seconds of one thread and the peak memory of the library are measured on the
instances, and fitted by a power of the size; the power is the same for all, the factor is in the middle between
the extremes of its own instances, so that the worst of the errors is as small as it can be. --limit leaves out calls that
are expected to take longer, by what the calls before took. Prints the measured calls with measured / estimated, as CSV
that --calls reads in place of measuring; --update writes the table into cli/solve/estimate.cpp and docs/performance.md.
"""
# SPDX-License-Identifier: MIT
import argparse
import collections
import csv
import datetime
import math
import pathlib
import subprocess
import sys
import tempfile

import runs

PINS = (10**4, 10**5, 10**6)
WAYS = {"fast": ["--preset", "fast"], "default": [], "quality": ["--preset", "quality"],
        "kway": ["--scheme", "kway"], "refine": []}
SOURCE = runs.TOP / "cli" / "solve" / "estimate.cpp"
PAGE = runs.TOP / "docs" / "performance.md"

Call = collections.namedtuple("Call", "name cells pins way parts seconds bytes")


def measure(tool, file, way, parts, folder):
    """One call, with the part file that refinement starts from made before."""
    out = folder / "part"
    verb = ["partition", file]
    if way == "refine":
        given = folder / f"{file.stem}.{parts}"
        if not given.exists():
            subprocess.run([tool, "partition", file, "-k", str(parts), "--preset", "fast", "--seed", "1", "-q", "-o",
                            given], check=True, stdout=subprocess.DEVNULL)
        verb = ["refine", file, given]
    seconds, figures = runs.partition(tool, [*verb, "-k", str(parts), *WAYS[way], "--seed", "1", "-o", out], folder)
    return Call(file.stem, figures["cells"], figures["pins"], way, parts, max(seconds, 1e-3), figures["peak_bytes"])


def measure_all(args):
    tool = runs.find_tool(args.tool)
    files = [file for path in args.instances for file in (sorted(path.glob("*.hgr")) if path.is_dir() else [path])]
    files.sort(key=lambda file: file.stat().st_size)
    calls = []
    with tempfile.TemporaryDirectory() as folder:
        for way in WAYS:
            for k in args.parts:
                slowest = 0.0  # seconds per byte
                for file in files:
                    if slowest * file.stat().st_size > args.limit:
                        continue
                    calls.append(measure(tool, file.resolve(), way, k, pathlib.Path(folder)))
                    slowest = max(slowest, calls[-1].seconds / file.stat().st_size)
    return calls


def read_calls(path):
    with path.open() as file:
        return [Call(row["instance"], int(row["cells"]), int(row["pins"]), row["way"], int(row["parts"]),
                     float(row["seconds"]), float(row["MB"]) * 1e6) for row in csv.DictReader(file)]


def size_of(call):
    """The pins, as cli/solve/estimate.cpp counts them: those of a hypergraph with four for each cell."""
    return 2 * math.sqrt(max(1, min(call.cells, call.pins)) * call.pins)


def fit(calls, figure):
    """The power of the pins, and for each way and number of parts the factor."""
    groups = collections.defaultdict(list)
    for call in calls:
        groups[call.way, call.parts].append((math.log(size_of(call)), math.log(getattr(call, figure))))
    above = below = 0.0
    for points in groups.values():
        x0, y0 = (sum(values) / len(points) for values in zip(*points))
        above += sum((x - x0) * (y - y0) for x, y in points)
        below += sum((x - x0) ** 2 for x, _ in points)
    power = above / below if below > 0 else 1.0
    factors = {}
    for group, points in groups.items():
        rest = [y - power * x for x, y in points]
        factors[group] = math.exp((max(rest) + min(rest)) / 2)
    return power, factors


def estimate(fitted, size, way, parts):
    power, factors = fitted
    return factors[way, parts] * size ** power


def rounded(value):
    """Two digits are more than the estimate is worth."""
    return f"{value:.2g}" if value < 10 else str(round(value, 1 - math.floor(math.log10(value)))).removesuffix(".0")


def rows(seconds, memory, parts):
    for way in WAYS:
        for k in parts:
            if (way, k) in seconds[1]:
                yield (way, k, [rounded(estimate(seconds, pins, way, k)) for pins in PINS],
                       [rounded(estimate(memory, pins, way, k) / 1e6) for pins in PINS])


def errors(calls, fitted, figure):
    """The range of measured / estimated."""
    ratios = [getattr(call, figure) / estimate(fitted, size_of(call), call.way, call.parts) for call in calls]
    return f"{min(ratios):.2f} to {max(ratios):.2f}"


def update(table, calls, seconds, memory):
    runs.replace(SOURCE, "static constexpr Row table[] = {\n", "};\n",
            [f'    {{"{way}", {k}, {{{", ".join(times)}}}, {{{", ".join(sizes)}}}}},\n'
             for way, k, times, sizes in table])
    head = "".join(f" {pins:,} pins: seconds | MB |" for pins in PINS)
    runs.replace(PAGE, "<!-- bench/estimate.py -->\n", "<!-- end -->\n",
            [f"| | parts |{head}\n", "|---|---|" + "---|---|" * len(PINS) + "\n"] +
            [f"| {way} | {k} |" + "".join(f" {s} | {m} |" for s, m in zip(times, sizes)) + "\n"
             for way, k, times, sizes in table] +
            [f"\nFitted to {len(calls)} calls on {len({call.name for call in calls})} public hypergraphs of "
             f"{min(call.pins for call in calls):,} to {max(call.pins for call in calls):,} pins, {datetime.date.today()}.\n"
             f"Measured over fitted: {errors(calls, seconds, 'seconds')} of the seconds, {errors(calls, memory, 'bytes')} of "
             f"the memory. Larger ones are extrapolated.\n"])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tool", metavar="KAPRIS", type=pathlib.Path, nargs="?")
    parser.add_argument("--calls", type=pathlib.Path, metavar="FILE")
    parser.add_argument("--instances", nargs="+", type=pathlib.Path, metavar="FILE|FOLDER",
                        default=[runs.TOP.parent / "shared" / "instances"], help="default: ../shared/instances")
    parser.add_argument("--parts", type=lambda text: [int(k) for k in text.split(",")], default=[2, 8, 64])
    parser.add_argument("--limit", type=float, default=60.0, metavar="SECONDS")
    parser.add_argument("--update", action="store_true")
    args = parser.parse_args()
    if (args.tool is None) == (args.calls is None):
        parser.error("either KAPRIS or --calls")
    calls = read_calls(args.calls) if args.calls else measure_all(args)
    if not calls:
        raise runs.Fault("there is nothing to measure")
    seconds, memory = fit(calls, "seconds"), fit(calls, "bytes")
    print("instance,cells,pins,way,parts,seconds,MB,seconds / estimate,MB / estimate")
    for call in calls:
        print(f"{call.name},{call.cells},{call.pins},{call.way},{call.parts},{call.seconds:.3f},{call.bytes / 1e6:.1f},"
              f"{call.seconds / estimate(seconds, size_of(call), call.way, call.parts):.2f},"
              f"{call.bytes / estimate(memory, size_of(call), call.way, call.parts):.2f}")
    print(f"seconds grow as size^{seconds[0]:.2f}, memory as size^{memory[0]:.2f}; {sum(c.seconds for c in calls):.0f} CPU "
          f"seconds measured", file=sys.stderr)
    if args.update:
        update(list(rows(seconds, memory, sorted({call.parts for call in calls}))), calls, seconds, memory)


if __name__ == "__main__":
    try:
        main()
    except (runs.Fault, OSError, subprocess.CalledProcessError) as fault:
        sys.exit(f"estimate.py: {fault}")
