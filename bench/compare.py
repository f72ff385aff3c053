#!/usr/bin/env python3
"""Compares the speed and memory of two builds that must give the same partitions.

usage: compare.py OLD NEW [--repeat N] [--unit PROGRAM] [--instances FILE|FOLDER|NAME...] [--cases SCHEME:PARTS...]
                  [--options nruns=2...]

OLD and NEW are build folders or their bench_partition programs. Each case runs OLD, NEW, OLD, NEW, ...: what else the
machine does meets both. Per case: the cut, the smallest CPU seconds of both, NEW / OLD of the smallest, in brackets
the range of NEW / OLD over the pairs of neighbouring runs, and NEW / OLD of the peak memory. The last lines are
geometric means over the cases: of the smallest times, and of the pairs of each repetition.

--unit names a program that does a fixed piece of work and prints its CPU seconds as its only word, or nothing: then
its own CPU time counts. It runs before every run; the table then has the times in units of its smallest time.

Ends with status 1 if a partition differs, between the builds or from run to run.
"""
# SPDX-License-Identifier: MIT
import argparse
import dataclasses
import os
import statistics
import subprocess
import sys

import runs

LEAST = 1e-6  # seconds: a run below the clock's resolution must not divide by zero


@dataclasses.dataclass
class Case:
    name: str
    cut: str
    times: tuple  # of OLD and of NEW, one entry per repetition
    peaks: tuple
    same: bool

    def ratio(self):
        return min(self.times[1]) / min(self.times[0])

    def pairs(self):
        return [new / old for old, new in zip(*self.times)]

    def memory(self):
        return min(self.peaks[1]) / min(self.peaks[0])


def unit_seconds(program):
    before = os.times()
    result = subprocess.run([program], capture_output=True, text=True)
    after = os.times()
    if result.returncode:
        raise runs.Fault(f"{program}: ended with {result.returncode}: {result.stderr.strip()}")
    try:
        seconds = float(result.stdout) if result.stdout.strip() else (
            after.children_user + after.children_system - before.children_user - before.children_system)
    except ValueError:
        raise runs.Fault(f"{program}: printed '{result.stdout.strip()}', not its seconds") from None
    return max(seconds, LEAST)


def measure(builds, name, file, scheme, parts, args, units):
    rows = ([], [])
    for _ in range(args.repeat):
        for build, taken in zip(builds, rows):
            if args.unit:
                units.append(unit_seconds(args.unit))
            taken.append(runs.run(build, file, scheme, parts, args))
    results = {(row["cut"], row["soed"], row["hash"]) for row in rows[0] + rows[1]}
    return Case(f"{name} {scheme} {parts}", "/".join(sorted({row["cut"] for row in rows[0] + rows[1]})),
                tuple([max(float(row["cpu"]), LEAST) for row in taken] for taken in rows),
                tuple([float(row["peakmb"]) for row in taken] for taken in rows), len(results) == 1)


def spread(values):
    return f"{min(values):.3f} .. {max(values):.3f}"


def print_case(case, width, unit):
    old, new = (min(times) / unit for times in case.times)
    print(f"{case.name:<{width}} {case.cut:>8} {old:9.3f} {new:9.3f} {case.ratio():7.3f} [{spread(case.pairs())}] "
          f"{case.memory():7.3f}{'' if case.same else '  DIFFERENT PARTITIONS'}")


def print_overall(cases):
    mean = statistics.geometric_mean
    rounds = [mean(pairs) for pairs in zip(*(case.pairs() for case in cases))]
    print(f"\nCPU time, NEW / OLD, geometric mean of {len(cases)} cases: {mean([c.ratio() for c in cases]):.3f}")
    print(f"  per repetition: smallest {min(rounds):.3f}, median {statistics.median(rounds):.3f}, "
          f"largest {max(rounds):.3f}")
    print(f"peak memory, NEW / OLD, geometric mean: {mean([c.memory() for c in cases]):.3f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("old", metavar="OLD")
    parser.add_argument("new", metavar="NEW")
    parser.add_argument("--repeat", type=int, default=5)
    parser.add_argument("--unit", metavar="PROGRAM")
    runs.add_arguments(parser)
    args = parser.parse_args()
    if args.repeat < 1:
        parser.error(f"--repeat is {args.repeat}, not at least 1")
    builds = [runs.find_program(args.old), runs.find_program(args.new)]
    calls = runs.parse_cases(args.cases)  # a wrong one is noticed before anything is generated
    instances = runs.find_instances(args.instances, args.cache, builds[1])
    wanted = [(name, file, *call) for name, file in instances.items() for call in calls]

    width = max(len(f"{name} {scheme} {parts}") for name, _, scheme, parts in wanted)
    head = f"{'case':<{width}} {'cut':>8} {'OLD':>9} {'NEW':>9} {'ratio':>7} {'[pairs]':<18} {'memory':>7}"
    units, cases = [], []
    if not args.unit:
        print(head, flush=True)
    for item in wanted:
        cases.append(measure(builds, *item, args, units))
        if not args.unit:
            print_case(cases[-1], width, 1.0)
            sys.stdout.flush()
    if args.unit:
        # Only now is the smallest time of the unit known.
        print(f"unit: {min(units):.4f} seconds, the smallest of {len(units)}\n{head}")
        for case in cases:
            print_case(case, width, min(units))
    print_overall(cases)
    different = [case.name for case in cases if not case.same]
    if different:
        sys.exit("different partitions: " + ", ".join(different))


if __name__ == "__main__":
    try:
        main()
    except (runs.Fault, OSError) as fault:
        sys.exit(f"compare.py: {fault}")
