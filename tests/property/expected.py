#!/usr/bin/env python3
# tests/property/expected.py - compares a driver, which an emulator can run, with a folder of expected results.
# SPDX-License-Identifier: MIT
"""usage: expected.py FOLDER [--most-bytes N] -- COMMAND...

Runs the command on every case of FOLDER/cases.jsonl, or on those whose hypergraph has at most N bytes. Part vector, cut and
trace must be equal. Prints how many are; names the others on standard error.
"""

import argparse
import concurrent.futures
import gzip
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile


def normal(text):
    """Machines differ in the sign that they print for what is not a number."""
    return re.sub(r" *-?nan\b", " nan", text)


def differs(args, case):
    """What differs first, or nothing."""
    with tempfile.TemporaryDirectory() as folder:
        part = pathlib.Path(folder) / "part"
        command = [*args.command, case["entry"], args.folder / "graphs" / case["graph"], str(case["nparts"]),
                   str(case["ubfactor"]), ",".join(map(str, case["options"])), "-o", part]
        if case["input"]:
            command += ["-p", args.folder / "inputs" / case["input"]]
        run = subprocess.run(command, capture_output=True, text=True, check=False,
                             env={**os.environ, "GOLDEN_TIME": "1000000007"})
        if run.returncode:
            return f"status {run.returncode}: {run.stderr[-300:]}"
        trace, _, cut = run.stdout.rpartition("\nRESULT ")
        for name, got in (("trace", trace), ("part", part.read_text())):
            with gzip.open(args.folder / "expected" / f"{case['id']}.{name}.gz", "rt") as file:
                if normal(got) != normal(file.read()):
                    return name
        return "" if int(cut) == case["cut"] else "cut"


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--most-bytes", type=int, default=sys.maxsize)
    parser.add_argument("command", nargs="+")
    args = parser.parse_args()
    cases = [case for case in map(json.loads, (args.folder / "cases.jsonl").read_text().splitlines())
             if (args.folder / "graphs" / case["graph"]).stat().st_size <= args.most_bytes]
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        found = list(pool.map(lambda case: differs(args, case), cases))
    for case, what in zip(cases, found):
        if what:
            print(case["id"], what, file=sys.stderr)
    print(f"{found.count('')} of {len(cases)} the same")
    return 1 if any(found) or not cases else 0


sys.exit(main())
