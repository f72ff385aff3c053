#!/usr/bin/env python3
"""Runs the partitioner on a list of hypergraphs and prints one line of CSV per run.

usage: instances.py --program BUILD/bench/bench_partition --schemes recursive kway-cut kway-soed
                    --parts 2 8 32 --ubfactor 5 --seed 7 -- FILE.hgr... > table.csv

One process per run, so the peak memory is that of the run. Times are CPU and wall seconds of the call alone. A run
that ends otherwise than with its figures, or whose reported value differs from the recomputed one, ends with an
error after the table.
"""
import argparse
import pathlib
import subprocess
import sys

COLUMNS = "cells,nets,pins,reported,cut,soed,imbalance,cpu,wall,peakmb,wrongcuts"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True)
    parser.add_argument("--schemes", nargs="+", default=["recursive"],
                        choices=["recursive", "kway-cut", "kway-soed"])
    parser.add_argument("--parts", nargs="+", type=int, default=[2, 8])
    parser.add_argument("--ubfactor", type=int, default=5)
    parser.add_argument("--seed", type=int, default=7)
    parser.add_argument("files", nargs="+", metavar="FILE")
    args = parser.parse_args()

    wrong = []
    print(f"instance,scheme,parts,ubfactor,{COLUMNS}", flush=True)
    for file in args.files:
        for scheme in args.schemes:
            for parts in args.parts:
                run = f"{pathlib.Path(file).stem},{scheme},{parts},{args.ubfactor}"
                result = subprocess.run([args.program, scheme, file, str(parts), str(args.ubfactor),
                                         str(args.seed)], capture_output=True, text=True)
                line = result.stdout.strip()
                print(f"{run},{line}", flush=True)
                if result.returncode or not line:
                    wrong.append(f"{run}: ended with {result.returncode}: {result.stderr.strip()}")
                    continue
                row = dict(zip(COLUMNS.split(","), line.split(",")))
                value = row["soed"] if scheme == "kway-soed" else row["cut"]
                if row["reported"] != value or row["wrongcuts"] != "0":
                    wrong.append(f"{run}: reported {row['reported']}, recomputed {value}, "
                                 f"{row['wrongcuts']} lines printed")
    for text in wrong:
        print(text, file=sys.stderr)
    sys.exit(1 if wrong else 0)


main()
