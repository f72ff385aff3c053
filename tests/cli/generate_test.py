#!/usr/bin/env python3
# tests/cli/generate_test.py - generated hypergraphs, and what stats and eval count, against counts in Python.
# SPDX-License-Identifier: MIT
"""Tests of the verbs generate, stats and eval."""

import hashlib
import json
import random
import statistics
import unittest

from tool import ToolTest, fields, random_hypergraph, read, write

# The bytes are a promise: other compilers and machines must give the same.
RECORDED = {
    "circuit --cells 3000 --rent 0.65 --pins 4":
        "90e9fc68c67e3e1132b5821f91762f3fb1e62a1051a204f3a918243dde698634",
    "grid --rows 7 --cols 5 --depth 3 --cell-weights 0:9":
        "6c5a21eb2d918efee31aad823e15a9a69d43e50bf5e88042e427dc3800ef70b2",
    "random --cells 500 --nets 700 --size 1:9 --net-weights 1:2147483647":
        "e599a7fc5c9461b57407f29df619aa53605b321950cdeba2acb6b98537e2fe7e",
    "powerlaw --cells 2000 --exponent 1.7 --max-size 300":
        "aaeddda890d3ba83b1ff649ad7b23a04b5235aa72b3668e0d2bb4c72a5108b4d",
    "planted --cells 1001 --nets 2000 --parts 7 --crossing 150 --net-weights 2:5 --cell-weights 3":
        "2856e3ff48a4752cff9d9d71b3ad10fd22f384b8d2ce88366026f60d37a4b24e",
}


def histogram(values):
    bins = [(0, 0)] + [(1 << n, (2 << n) - 1) for n in range(62)]
    counts = [(low, high, sum(low <= v <= high for v in values)) for low, high in bins]
    return [{"from": low, "to": high, "count": count} for low, high, count in counts if count]


def distribution(values):
    return {"total": sum(values), "min": min(values), "max": max(values), "average": sum(values) / len(values),
            "median": statistics.median(values), "histogram": histogram(values)}


def component_sizes(nets, ncells):
    """By the definition: what can be reached from each cell."""
    sizes, left = [], set(range(ncells))
    while left:
        reached = front = {left.pop()}
        while front:
            front = {cell for net in nets if front & net for cell in net} - reached
            reached = reached | front
        sizes.append(len(reached))
        left -= reached
    return sizes


class Generate(ToolTest):
    """What is generated, byte by byte and by its definition."""

    def test_bytes_are_those_recorded(self):
        for arguments, digest in RECORDED.items():
            text = self.run_kapris("generate", *arguments.split(), "--seed", "5", "-o", "-").stdout
            self.assertEqual(hashlib.sha256(text.encode()).hexdigest(), digest, arguments)
            other = self.run_kapris("generate", *arguments.split(), "--seed", "6", "-o", "-").stdout
            self.assertNotEqual(text, other, arguments)

    def test_planted_cut_is_that_of_the_planted_parts(self):
        done = self.run_kapris("generate", "planted", "--cells", "503", "--nets", "900", "--parts", "5", "--crossing",
                               "77", "--net-weights", "0:9", "--partition", "planted", "--seed", "4")
        summary = fields(done.stdout)
        measured = fields(self.run_kapris("eval", summary["file"], "planted", "--epsilon", "0").stdout)
        self.assertEqual(summary["file"], "planted-503-4.hgr")
        self.assertEqual(measured["cut"], summary["planted cut"])
        self.assertEqual(measured["connectivity"], summary["planted cut"])
        listed = self.run_kapris("eval", summary["file"], "planted", "--nets").stdout
        self.assertEqual(listed.count("cut net "), 77)

    def test_status_2_names_the_option_and_its_value(self):
        for message, arguments in (
                ("'ring'", "ring"), ("KIND", ""), ("--nets", "grid --nets 5"),
                ("--rent: '1.5'", "circuit --rent 1.5"), ("--rent: 'nan'", "circuit --rent nan"),
                ("--cells: Value 1 ", "powerlaw --cells 1"), ("--max-size: Value 1 ", "powerlaw --max-size 1"),
                ("--size is '3:2'", "random --size 3:2"), ("--size is '3:'", "random --size 3:"),
                ("--size is '0:2'", "random --size 0:2"), ("--size is 'x'", "random --size x"),
                (f"--cell-weights is '1:{2**61 + 1}'", f"random --cell-weights 1:{2**61 + 1}"),
                (f"--net-weights {2**60}:{2**61}: the first 2 of 9 weights add up to",
                 f"random --nets 9 --net-weights {2**60}:{2**61}"),
                ("--size is '1:2147483648'", "random --size 1:2147483648"),
                ("--size goes up to 9, but --cells is 8", "random --cells 8 --size 9"),
                ("--nets 600000000", "random --nets 600000000"),
                ("--rows 50000", "grid --rows 50000 --cols 50000"), ("--depth 1000000", "grid --depth 1000000"),
                ("--pins 100", "circuit --cells 50000000 --pins 100"),
                ("--size starts at 1", "planted --size 1:3"), ("--crossing 9", "planted --nets 8 --crossing 9"),
                ("--parts 2001", "planted --parts 2001"),
                ("both to be a", "planted -o a --partition a"),
                ("both to be planted-100-1.hgr", "planted --cells 100 --partition planted-100-1.hgr")):
            self.fails(2, message, "generate", *arguments.split())


class Counts(ToolTest):
    """Against the definitions, on small random hypergraphs."""

    def test_stats(self):
        for seed in range(8):
            text, nets, netwgts, cellwgts = random_hypergraph(seed, seed % 2 == 1, 2**40 if seed % 4 > 1 else None)
            if seed > 3:  # fewer nets, more components
                nets, netwgts = nets[:20], netwgts[:20]
                lines = text.splitlines()
                text = "\n".join(["20 60 11"] + lines[1:21] + lines[91:])
            write("h.hgr", text)
            sets = [set(net) for net in nets]
            degrees = [sum(cell in net for net in sets) for cell in range(60)]
            components = component_sizes(sets, 60)
            expected = {
                "schema": "kapris-stats-1", "file": "h.hgr", "cells": 60, "nets": len(nets),
                "pins": sum(map(len, nets)), "repeated_pins": sum(map(len, nets)) - sum(map(len, sets)),
                "empty_nets": sets.count(set()), "one_cell_nets": sum(len(net) == 1 for net in sets),
                "identical_nets": len(sets) - len(set(map(frozenset, sets))), "islands": degrees.count(0),
                "components": len(components), "cell_weight": distribution(cellwgts),
                "net_weight": distribution(netwgts), "net_size": distribution(list(map(len, sets))),
                "cell_degree": distribution(degrees), "component_size": distribution(components),
                "largest_components": sorted(components, reverse=True)[:10]}
            self.assertEqual(json.loads(self.run_kapris("stats", "h.hgr", "--json").stdout), expected)
        self.assertEqual(fields(self.run_kapris("stats", "-", text="0 0\n").stdout)["net size"], "none")
        heavy = ("stats", "-"), f"0 3 10\n0\n{2**60 + 1}\n{2**60 - 1}\n"
        found = json.loads(self.run_kapris(*heavy[0], "--json", text=heavy[1]).stdout)["cell_weight"]
        self.assertEqual([found[key] for key in ("total", "max", "median")], [2**61, 2**60 + 1, 2**60 - 1])
        self.assertIn(f"median {2**60 - 1}, max {2**60 + 1}", self.run_kapris(*heavy[0], text=heavy[1]).stdout)

    def test_eval(self):
        # Sums above 2^53 would not be exact in doubles.
        for seed, (nparts, heaviest) in enumerate(((2, None), (3, None), (7, 2**40), (20, None), (2, 2**40), (20, 2**54))):
            rng = random.Random(seed)
            text, nets, netwgts, cellwgts = random_hypergraph(seed, repeats=True, heaviest=heaviest)
            part = [rng.randrange(nparts) for _ in cellwgts]
            fixed = [rng.choice((-1, p, p, rng.randrange(nparts))) for p in part]
            write("h.hgr", text)
            write("parts", "".join(f"{p}\n" for p in part))
            write("fixed", "".join(f"{p}\n" for p in fixed))

            spans = [sorted({part[cell] for cell in net}) for net in nets]
            cut = [(n, netwgts[n], span) for n, span in enumerate(spans) if len(span) > 1]
            cut.sort(key=lambda one: (-one[1], one[0]))
            border = [(c, [netwgts[n] for n, _, _ in cut if c in nets[n]]) for c in range(60)]
            border = sorted([(c, sum(on), len(on)) for c, on in border if on], key=lambda one: (-one[1], one[0]))
            weights = [sum(w for w, p in zip(cellwgts, part) if p == q) for q in range(nparts)]
            limit = 103 * -(-sum(cellwgts) // nparts) // 100
            matrix = [[sum(w for _, w, span in cut if p in span and q in span) for q in range(nparts)]
                      for p in range(nparts)]
            elsewhere = [n for n, p in enumerate(fixed) if p not in (-1, part[n])]
            options = ("h.hgr", "parts", "-k", str(nparts), "--fixed", "fixed", "--matrix", "--nets", "--epsilon",
                       "0.03")
            found = json.loads(self.run_kapris("eval", *options, "--json", status=4).stdout)
            self.assertEqual(found["schema"], "kapris-eval-1")
            self.assertEqual(found["cut"], sum(w for _, w, _ in cut))
            self.assertEqual(found["soed"], sum(w * len(span) for _, w, span in cut))
            self.assertEqual(found["connectivity"], sum(w * (len(span) - 1) for _, w, span in cut))
            self.assertAlmostEqual(found["imbalance"], max(weights) * nparts / sum(weights) - 1)
            self.assertEqual([found[key] for key in ("cells", "nets", "pins")], [60, 90, sum(map(len, nets))])
            self.assertEqual(found["matrix"], matrix)
            self.assertEqual(found["cut_nets"], [{"net": n + 1, "weight": w, "parts": span} for n, w, span in cut])
            self.assertEqual(found["border_cells"], [{"cell": c + 1, "weight": w, "nets": count, "part": part[c]}
                                                     for c, w, count in border])
            self.assertEqual(found["limit"], limit)
            inside = {p: component_sizes([{cell for cell in net if part[cell] == p} for net in nets], 60) for p in set(part)}
            # Of each part, the cells of the others are components of one.
            inside = {p: sorted(sizes)[60 - part.count(p):] for p, sizes in inside.items()}
            self.assertEqual(found["part_weights"], [{"part": p, "weight": w, "over": w > limit, "components": len(inside[p]),
                                                      "cells_outside": sum(inside[p]) - max(inside[p])}
                                                     for p, w in enumerate(weights) if p in part])
            self.assertEqual(found["fixed"], {
                "cells": sum(p >= 0 for p in fixed),
                "elsewhere": [{"cell": n + 1, "fixed": fixed[n], "part": part[n]} for n in elsewhere]})

            text = self.run_kapris("eval", *options, status=4).stdout
            for key in ("cut", "soed", "connectivity"):
                self.assertEqual(fields(text)[key], str(found[key]))
            lines = text.splitlines()
            self.assertEqual([line[15:] for line in lines if line.startswith("cut net ")],
                             [f"{n + 1} {w} {len(span)} {' '.join(map(str, span))}" for n, w, span in cut])
            self.assertEqual([line[15:] for line in lines if line.startswith("border cell ")],
                             [f"{c + 1} {w} {count} {part[c]}" for c, w, count in border])
            self.assertEqual([[int(w) for w in line[15:].split("\t")] for line in lines if line.startswith("matrix ")],
                             matrix)

    def test_a_sum_that_leaves_64_bits_is_refused(self):
        write("h.hgr", f"2 5 1\n{2**61 - 1} 1 2 3 4\n1 1 2 3 4 5\n")
        write("parts", "0\n1\n2\n2\n2\n")
        found = json.loads(self.run_kapris("eval", "h.hgr", "parts", "--json").stdout)
        self.assertEqual([found[key] for key in ("cut", "soed", "connectivity")], [2**61, 3 * 2**61, 2 * 2**61])
        write("parts", "0\n1\n2\n3\n4\n")
        self.fails(3, f"h.hgr: weights too large: net 2, of weight 1 in 5 parts, takes the SOED above {2**63 - 1}",
                   "eval", "h.hgr", "parts")

    def test_status_4_only_if_a_limit_or_a_fixed_cell_is_missed(self):
        write("h.hgr", "1 5 10\n1 2 3\n" + "1\n" * 4 + "2\n")
        write("parts", "0\n0\n0\n1\n1\n")
        write("right", "0\n-1\n-1\n-1\n1\n")
        write("wrong", "0\n-1\n-1\n0\n1\n")
        self.run_kapris("eval", "h.hgr", "parts", "--fixed", "right", "--epsilon", "0")
        self.run_kapris("eval", "h.hgr", "parts", "--fixed", "wrong", status=4)
        write("h.hgr", "0 2 10\n49\n51\n")
        write("parts", "0\n1\n")
        found = json.loads(self.run_kapris("eval", "h.hgr", "parts", "-k", "2", "--epsilon", "0.1", "--json").stdout)
        self.assertEqual(found["limit"], 55)
        self.fails(2, "--epsilon: 'nan'", "eval", "h.hgr", "parts", "--epsilon", "nan")
        write("far", "0\n4096\n")
        self.fails(2, "--matrix is for up to 4096 parts, not 4097", "eval", "h.hgr", "far", "--matrix")


if __name__ == "__main__":
    unittest.main()
