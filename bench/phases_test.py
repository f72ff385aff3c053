#!/usr/bin/env python3
"""Runs bench_phases on its smallest hypergraphs: every phase comes to a result that fits those of the others, and to
the same one again.

usage: phases_test.py BENCH_PHASES
"""
# SPDX-License-Identifier: MIT
import json
import subprocess
import sys


def results(program):
    run = subprocess.run([program, "--benchmark_filter=/10000$", "--benchmark_min_time=0.001",
                          "--benchmark_format=json"], capture_output=True, text=True)
    if run.returncode:
        sys.exit(f"ended with {run.returncode}: {run.stderr}")
    return {row["name"]: int(row["result"]) for row in json.loads(run.stdout)["benchmarks"]}


def main():
    first = results(sys.argv[1])
    faults = [] if first == results(sys.argv[1]) else ["the second run had other results"]
    for kind in ("circuit", "grid"):
        of = {name.split("/")[0]: value for name, value in first.items() if name.split("/")[1] == kind}
        holds = {
            "one level is left with fewer pins": all(
                0 < of[name] < of["incidence"] for name in of if name.startswith("match")),
            "contraction alone gives the level of its matching": of["contract"] == of["match_stars_degree"],
            "all levels have fewer pins than one": 0 < of["coarsen"] < of["contract"],
            "passes do not worsen the cut": all(
                0 < of[name] <= of["project"]
                for name in ("pass_fm", "pass_fm_heavy", "pass_early_exit", "pass_one_way")),
            "balancing has something to do": of["balance"] != of["project"],
            "a k-way pass improves the cut": 0 < of["kway_pass_cut"] < of["project_kway"] == of["kway_records"],
            "the SOED counts a cut net at least twice": of["kway_pass_soed"] > of["kway_pass_cut"],
        }
        faults += [f"{kind}: does not hold: {text}: {of}" for text, good in holds.items() if not good]
    sys.exit("\n".join(faults) or 0)


main()
