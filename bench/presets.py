#!/usr/bin/env python3
"""Cuts and CPU times of options of two builds, interleaved: geometric means by number of parts.

usage: presets.py OLD NEW [--old-options OPTIONS] [--options NAME=OPTIONS...] [--settings PARTS:EPSILON...] [--instances FOLDER] [--names NAME...]
                  [--seeds N...] [--figure cut|connectivity|soed] [--targets FILE] [--csv FILE]

OLD and NEW are the tool or the build folder that holds it. OLD runs with default options, or --old-options; NEW once for
each of --options, the presets by default. All runs of an instance and seed follow each other, so that what else the
machine does falls on all of them. Prints for each setting the ratio of the figure and of the CPU seconds, NEW over OLD;
with --targets, a table of instance, parts, eps and cut, also NEW over the best known cut. --csv keeps every run.
"""
# SPDX-License-Identifier: MIT
import argparse
import csv
import math
import pathlib
import sys
import tempfile

import runs

SHARED = runs.TOP.parent / "shared"


def mean(ratios):
    return math.exp(sum(map(math.log, ratios)) / len(ratios)) if ratios else math.nan


def read_targets(path):
    with path.open() as file:
        return {(row["instance"], row["parts"], row["eps"]): int(row["cut"])
                for row in csv.DictReader(file, delimiter="\t")}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("old", metavar="OLD", type=pathlib.Path)
    parser.add_argument("new", metavar="NEW", type=pathlib.Path)
    parser.add_argument("--old-options", default="", metavar="OPTIONS")
    parser.add_argument("--options", nargs="+", default=[f"{name}=--preset {name}" for name in ("fast", "default", "quality")])
    parser.add_argument("--settings", nargs="+", default=["2:0.02", "4:0.03", "8:0.03", "32:0.03"])
    parser.add_argument("--instances", type=pathlib.Path, default=SHARED / "instances", metavar="FOLDER")
    parser.add_argument("--names", nargs="+")
    parser.add_argument("--seeds", nargs="+", default=["1", "2", "3"])
    parser.add_argument("--figure", choices=("cut", "connectivity", "soed"), default="cut")
    parser.add_argument("--targets", type=pathlib.Path, metavar="FILE")
    parser.add_argument("--csv", type=pathlib.Path, metavar="FILE")
    args = parser.parse_args()
    ways = [("old", runs.find_tool(args.old), args.old_options.split())]
    ways += [(name, runs.find_tool(args.new), text.split()) for name, text in (way.split("=", 1) for way in args.options)]
    files = sorted(args.instances.glob("*.hgr"))
    files = [file for file in files if not args.names or file.stem in args.names]
    targets = read_targets(args.targets) if args.targets else {}
    out = args.csv.open("w", newline="") if args.csv else None
    table = csv.writer(out) if out else None
    if table:
        table.writerow(["instance", "parts", "eps", "seed", "way", "cut", "connectivity", "soed", "balanced", "seconds"])
    if not files:
        raise runs.Fault(f"no hypergraphs in {args.instances}")

    with tempfile.TemporaryDirectory() as folder:
        for setting in args.settings:
            parts, epsilon = setting.split(":")
            ratios = {name: ([], [], []) for name, _, _ in ways[1:]}
            for file in files:
                for seed in args.seeds:
                    base = None
                    for name, tool, options in ways:
                        seconds, figures = runs.partition(tool, ["partition", file, "-k", parts, "-e", epsilon, "--seed", seed, "-o",
                                                                 pathlib.Path(folder) / "part", *options], pathlib.Path(folder))
                        best = figures["best"]
                        if table:
                            table.writerow([file.stem, parts, epsilon, seed, name, best["cut"], best["connectivity"],
                                            best["soed"], best["balanced"], f"{seconds:.3f}"])
                            out.flush()
                        if base is None:
                            base = best[args.figure], seconds
                            continue
                        # Nothing cut is a ratio of nothing.
                        if base[0] > 0 and best[args.figure] > 0:
                            ratios[name][0].append(best[args.figure] / base[0])
                        ratios[name][1].append(seconds / base[1])
                        if (file.stem, parts, epsilon) in targets:
                            ratios[name][2].append(best["cut"] / targets[file.stem, parts, epsilon])
            for name, (figure, seconds, known) in ratios.items():
                over = f", {mean(known):.3f} of the best known" if known else ""
                print(f"{parts:>3} parts, {epsilon}, {name:>8}: {args.figure} {mean(figure):.3f}, CPU {mean(seconds):.2f}{over}",
                      flush=True)


if __name__ == "__main__":
    try:
        main()
    except runs.Fault as fault:
        sys.exit(f"presets.py: {fault}")
