#!/usr/bin/env python3
# tests/cli/netlist_docs.py - the commands of docs/netlists.md, from Verilog to names, with yosys.
# SPDX-License-Identifier: MIT
#
#   netlist_docs.py KAPRIS SOURCE       the top folder of the project
"""Runs the documented commands and checks that their results are about the cells of the design."""

import json
import os
import re
import subprocess
import sys
import tempfile

KAPRIS, SOURCE = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])


def table(path):
    with open(path, encoding="utf-8") as file:
        return dict(line.rstrip("\n").split("\t") for line in file)


def expect(condition, message):
    if not condition:
        sys.exit(message)


def check_results():
    with open("core.json", encoding="utf-8") as file:
        modules = json.load(file)["modules"]
    part = table("core.names")
    expect(len(part) > 4000, "the design is too small to be one")
    with open("core.cut", encoding="utf-8") as file:
        lines = [line.split("\t") for line in file.read().splitlines()]
    border = {line[1] for line in lines if line[0].startswith("border cell")}
    expect(border and border <= set(part), "the border cells are not cells of the design")
    expect({part[name] for name in border} == {"0", "1"}, "the border has one side")
    with open("by-flip-flops.part", encoding="utf-8") as file:
        expect(len(file.read().split()) == len(part), "there is not a part for every cell")
    expect(list(table("modules.names")) == list(modules["core"]["cells"]), "instances in the top are not its cells")
    together = table("together.names")
    expect({part for name, part in together.items() if name.startswith("counter.")} == {"0"}, "the counter is not fixed")
    expect(len({part for name, part in together.items() if name.startswith("decode.")}) == 1, "the decoder is torn apart")


def main():
    with open(os.path.join(SOURCE, "docs/netlists.md"), encoding="utf-8") as file:
        blocks = re.findall(r"^```sh\n(.*?)^```", file.read(), re.M | re.S)
    os.mkdir("bin")
    os.symlink(KAPRIS, "bin/kapris")
    os.symlink(os.path.join(SOURCE, "examples/netlist/core.v"), "core.v")
    expect(len(blocks) > 5, "the page has lost its commands")
    for block in blocks:
        done = subprocess.run(["bash", "-euc", block], env={**os.environ, "PATH": os.path.abspath("bin") + ":" + os.environ["PATH"]},
                              capture_output=True, encoding="utf-8", check=False)
        expect(done.returncode == 0, f"{block}\nstatus {done.returncode}: {done.stdout}{done.stderr}")
    check_results()


with tempfile.TemporaryDirectory() as directory:
    os.chdir(directory)
    main()
    os.chdir("/")
