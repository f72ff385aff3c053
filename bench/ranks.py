#!/usr/bin/env python3
# bench/ranks.py - does a search of four ranks find what one process finds in four times the time, and more in the same?
# SPDX-License-Identifier: MIT
#
#   bench/ranks.py BUILD [--seconds 16] [--seeds 3] [--case FILE:PARTS ...]
#
# For each case: kapris with a limit of so many CPU seconds; four ranks that get the same CPU time together; four ranks that
# get it each. The limits are of CPU time, since the ranks share what processors there are: the system sends XCPU to the first
# rank that has used up its share, and the run ends with the best so far.
"""Prints two tables of cuts, and what messages cost."""

import argparse
import json
import math
import os
import pathlib
import re
import resource
import subprocess
import tempfile

RANKS = 4
SHARED = pathlib.Path(__file__).resolve().parent.parent.parent / "shared" / "instances"
CASES = ["ibm01.hgr:8", "ibm08.hgr:16", "s38584.hgr:4", "sat14_AProVE07-27.primal.hgr:32"]


def run(command, file, nparts, seed, seconds, folder):
    """Cut, CPU seconds of all ranks, and those of messages: mpirun does not wait for all that it ends."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    done = subprocess.run([*command, "partition", file, "-k", str(nparts), "--seed", str(seed), "--time-limit", "36000", "-v",
                           "-o", f"{folder}/part", f"--json={folder}/json"], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          encoding="utf-8", check=False,
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 30)))
    shares = re.findall(r"^rank \d+: ([\d.]+) of ([\d.]+) s", done.stderr, re.M)
    cpu = sum(float(share[1]) for share in shares) or resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before
    cut = json.loads(pathlib.Path(folder, "json").read_text(encoding="utf-8"))["best"]["cut"]
    return cut, cpu, sum(float(share[0]) for share in shares)


def mean(ratios):
    return math.exp(sum(map(math.log, ratios)) / len(ratios))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--seconds", type=int, default=16)
    parser.add_argument("--seeds", type=int, default=3)
    parser.add_argument("--case", nargs="+", default=CASES)
    args = parser.parse_args()
    one = [args.build / "cli" / "kapris"]
    many = ["mpirun", "--allow-run-as-root", "--oversubscribe", "-n", str(RANKS), args.build / "mpi" / "kapris-mpi"]
    same, more, shares = [], [], []

    print("| hypergraph, parts, seed | one process: cut, CPU s | 4 ranks, the same CPU time: cut, CPU s "
          "| 4 ranks, 4 times as much: cut, CPU s | messages |\n|---|---|---|---|---|", flush=True)
    with tempfile.TemporaryDirectory() as folder:
        for case in args.case:
            name, nparts = case.rsplit(":", 1)
            file = name if os.path.exists(name) else SHARED / name
            for seed in range(1, args.seeds + 1):
                alone, cpu, _ = run(one, file, nparts, seed, args.seconds, folder)
                split, cpusplit, _ = run(many, file, nparts, seed, args.seconds // RANKS, folder)
                long, cpulong, messages = run(many, file, nparts, seed, args.seconds, folder)
                same.append(split / alone)
                more.append(long / alone)
                shares.append(messages / cpulong)
                print(f"| {pathlib.Path(name).stem}, {nparts}, {seed} | {alone}, {cpu:.1f} | {split}, {cpusplit:.1f} "
                      f"| {long}, {cpulong:.1f} | {100 * shares[-1]:.2f} % |", flush=True)
    print(f"\nGeometric means against one process: {mean(same):.4f} with the same CPU time in all, {mean(more):.4f} with the "
          f"same CPU time each. Messages: {100 * max(shares):.2f} % of the CPU time at most.")


if __name__ == "__main__":
    main()
