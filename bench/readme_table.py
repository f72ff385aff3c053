#!/usr/bin/env python3
"""The table of the README: cuts and times of the presets against the best known cuts.

usage: readme_table.py KAPRIS [--instances FOLDER] [--targets FILE] [--names NAME...] [--parts N...] [--update]

KAPRIS is the tool or the build folder that holds it. --targets is a table of instance, parts, eps and cut. Each preset runs
once, with seed 1, one thread and epsilon 0.03; seconds are CPU seconds of the whole command. A cut above its limits would be
no cut to compare: the script fails. Prints the table, whose last line has geometric means; --update writes it into
README.md.
"""
# SPDX-License-Identifier: MIT
import argparse
import csv
import datetime
import pathlib
import statistics
import sys
import tempfile

import runs

PRESETS = ("fast", "default", "quality")
EPSILON = "0.03"
SHARED = runs.TOP.parent / "shared"


def read_targets(path):
    with path.open() as file:
        return {(row["instance"], int(row["parts"])): int(row["cut"]) for row in csv.DictReader(file, delimiter="\t")
                if row["eps"] == EPSILON}


def measure(tool, file, parts, preset, folder):
    seconds, figures = runs.partition(tool, ["partition", file, "-k", str(parts), "-e", EPSILON, "--preset", preset,
                                             "--seed", "1", "-o", folder / "part"], folder)
    if not figures["best"]["balanced"]:
        raise runs.Fault(f"{file}, {parts} parts, {preset}: parts are out of their limits")
    return figures["cells"], figures["best"]["cut"], seconds


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tool", metavar="KAPRIS", type=pathlib.Path)
    parser.add_argument("--instances", type=pathlib.Path, default=SHARED / "instances", metavar="FOLDER")
    parser.add_argument("--targets", type=pathlib.Path, default=SHARED / "targets" / "best-known.tsv", metavar="FILE")
    parser.add_argument("--names", nargs="+", default=["ibm01", "ibm05", "ibm10"])
    parser.add_argument("--parts", nargs="+", type=int, default=[2, 8])
    parser.add_argument("--update", action="store_true")
    args = parser.parse_args()
    tool, targets = runs.find_tool(args.tool), read_targets(args.targets)
    lines = ["| circuit | cells | parts | best known cut |" + "".join(f" `{preset}` | seconds |" for preset in PRESETS) + "\n",
             "|---|---|---|---|" + "---|---|" * len(PRESETS) + "\n"]
    ratios = {preset: [] for preset in PRESETS}

    with tempfile.TemporaryDirectory() as folder:
        for name in args.names:
            for parts in args.parts:
                if (name, parts) not in targets:
                    raise runs.Fault(f"{args.targets} has no cut of {name} in {parts} parts for epsilon {EPSILON}")
                best, cells, row = targets[name, parts], 0, ""
                for preset in PRESETS:
                    cells, cut, seconds = measure(tool, args.instances / f"{name}.hgr", parts, preset,
                                                  pathlib.Path(folder))
                    ratios[preset].append(cut / best)
                    row += f" {cut:,} | {seconds:.1f} |"
                lines.append(f"| {name} | {cells:,} | {parts} | {best:,} |{row}\n")
    lines.append("| cut over best known, geometric mean | | | 1 |"
                 + "".join(f" {statistics.geometric_mean(ratios[preset]):.3f} | |" for preset in PRESETS) + "\n")
    lines.append(f"\nOne run, seed 1, one thread; CPU seconds of the whole command on a shared machine, {datetime.date.today()}.\n")
    print("".join(lines), end="")
    if args.update:
        runs.replace(runs.TOP / "README.md", "<!-- bench/readme_table.py -->\n", "<!-- end -->\n", lines)


if __name__ == "__main__":
    try:
        main()
    except (runs.Fault, OSError) as fault:
        sys.exit(f"readme_table.py: {fault}")
