#!/usr/bin/env python3
"""Runs the partitioner on hypergraphs and prints one line of CSV per run.

usage: instances.py PROGRAM [--instances FILE|FOLDER|NAME...] [--cases SCHEME:PARTS...] [--options nruns=2...]

PROGRAM is bench_partition or the build folder that holds it. One process per run, so the peak memory is that of the
run. Times are CPU and wall seconds of the call alone. A run that ends otherwise than with its figures, or whose
reported value differs from the recomputed one, ends with an error after the table.
"""
# SPDX-License-Identifier: MIT
import argparse
import sys

import runs


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", metavar="PROGRAM")
    runs.add_arguments(parser)
    args = parser.parse_args()
    program = runs.find_program(args.program)
    cases = runs.parse_cases(args.cases)
    faults = []

    print("instance,scheme,parts,ubfactor," + ",".join(runs.COLUMNS), flush=True)
    for name, file in runs.find_instances(args.instances, args.cache, program).items():
        for scheme, parts in cases:
            try:
                row = runs.run(program, file, scheme, parts, args)
            except runs.Fault as fault:
                faults.append(str(fault))
                continue
            print(f"{name},{scheme},{parts},{args.ubfactor}," + ",".join(row.values()), flush=True)
    if faults:
        sys.exit("\n".join(faults))


if __name__ == "__main__":
    try:
        main()
    except (runs.Fault, OSError) as fault:
        sys.exit(f"instances.py: {fault}")
