#!/usr/bin/env python3
"""Checks that the code in the documentation of the safe interface is that of the examples.

usage: docs.py --doc FILE --examples FILE...
"""
# SPDX-License-Identifier: MIT
import argparse
import pathlib
import re
import sys


def faults(doc, examples):
    blocks = re.findall(r"^`examples/([^`]+)`:\n\n```(?:c|cpp)\n(.*?)^```$", doc.read_text(), re.M | re.S)
    code = dict(blocks)
    if doc.read_text().count("```c") != len(blocks):
        yield f"{doc.name}: code that no line names the example of"
    for example in examples:
        if example.name not in code:
            yield f"{doc.name}: {example.name} is missing"
        elif code.pop(example.name) != example.read_text():
            yield f"{doc.name}: the code of {example.name} differs from the file"
    for name in code:
        yield f"{doc.name}: {name} is no example"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--doc", type=pathlib.Path, required=True)
    parser.add_argument("--examples", type=pathlib.Path, nargs="+", required=True)
    args = parser.parse_args()
    found = list(faults(args.doc, args.examples))
    print("\n".join(found))
    sys.exit(1 if found else 0)


main()
