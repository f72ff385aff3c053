#!/usr/bin/env python3
# tests/cli/netlist_docs.py - the commands of docs/netlists.md, from Verilog to names, with yosys.
# SPDX-License-Identifier: MIT
#
#   netlist_docs.py KAPRIS SOURCE       the top folder of the project
"""Runs the documented commands and checks the names against the JSON text by a reading of its own."""

import collections
import json
import os
import re
import subprocess
import sys
import tempfile

KAPRIS, SOURCE = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])


def find(same, net):
    while net in same:
        net = same[net]
    return net


def flatten(modules, name, prefix, outside, cells, same):
    """Adds {name: (type, nets)} of all cells below a module; outside are the nets of its ports' bits. Nets that a module
    passes through from port to port are added to same, which leads from one to the next."""
    module = modules[name]
    net = lambda bit: outside.get(bit, (prefix, bit)) if isinstance(bit, int) else None
    for inner, cell in module["cells"].items():
        pins = {port: [net(bit) for bit in bits] for port, bits in cell["connections"].items()}
        if cell["type"] not in modules:
            cells[prefix + inner] = (cell["type"], {pin for bits in pins.values() for pin in bits} - {None})
            continue
        below = {}
        for port, bits in pins.items():
            for bit, outer in zip(modules[cell["type"]]["ports"][port]["bits"], bits):
                one, other = find(same, below.setdefault(bit, outer)), find(same, outer)
                if one != other:
                    same[one or other] = other if one else one
        flatten(modules, cell["type"], prefix + inner + ".", below, cells, same)


def table(path):
    with open(path, encoding="utf-8") as file:
        return dict(line.rstrip("\n").split("\t") for line in file)


def expect(condition, message):
    if not condition:
        sys.exit(message)


def check_results():
    with open("core.json", encoding="utf-8") as file:
        modules = json.load(file)["modules"]
    cells, same = {}, {}
    flatten(modules, "core", "", {}, cells, same)
    cells = {name: (kind, {find(same, net) for net in nets} - {None}) for name, (kind, nets) in cells.items()}
    parts = table("core.names")
    expect(list(parts) == list(cells), "the names are not those of the JSON text, in its order")
    expect(len(cells) > 4000, "the design is too small to be one")
    # Clock and reset are the first two ports, and bits of the top.
    ignored = {("", bit) for port in ("clk", "reset") for bit in modules["core"]["ports"][port]["bits"]}
    spans = collections.defaultdict(set)
    for name, (_, nets) in cells.items():
        for net in nets - ignored:
            spans[net].add(parts[name])
    cut = sum(len(span) > 1 for span in spans.values())
    with open("core.cut", encoding="utf-8") as file:
        lines = file.read().splitlines()
    expect(f"cut            {cut}" in lines, f"eval does not print the cut {cut}")
    expect(sum(line.startswith("cut net") for line in lines) == cut, "eval does not list all cut nets")
    border = {line.split("\t")[1] for line in lines if line.startswith("border cell")}
    on_cut = {name for name, (_, nets) in cells.items() if any(len(spans[net]) > 1 for net in nets - ignored)}
    expect(border == on_cut, "the border cells are not those on cut nets")
    flipflops = collections.Counter()
    with open("by-flip-flops.part", encoding="utf-8") as file:
        for (kind, _), part in zip(cells.values(), file.read().split()):
            flipflops[part] += "DFF" in kind
    limit = int(1.02 * -(-sum(flipflops.values()) // 2))
    expect(sum(flipflops.values()) > 1000 and max(flipflops.values()) <= limit, f"flip-flops are {flipflops}")
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
