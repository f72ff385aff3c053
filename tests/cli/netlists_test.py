#!/usr/bin/env python3
# tests/cli/netlists_test.py - netlists, graphs and weighted formulas through the command; names in and out; groups.
# SPDX-License-Identifier: MIT
#
#   netlists_test.py KAPRIS [unittest arguments]
"""Tests what becomes of names, and of cells that stay together."""

import json
import os
import re
import unittest

from tool import ToolTest, fields, random_hypergraph, read, write


def module(cells, ports=(), nets=(), top=False):
    """A module of the JSON text: cells {name: (type, {port: bits})}, ports and nets {name: bits}."""
    return {"attributes": {"top": "1"} if top else {},
            "ports": {name: {"direction": "inout", "bits": bits} for name, bits in dict(ports).items()},
            "cells": {name: {"hide_name": 0, "type": kind, "parameters": {"P": [{}, 1.5, None, True]}, "connections": bits}
                      for name, (kind, bits) in cells.items()},
            "netnames": {name: {"hide_name": int(name.startswith("$")), "bits": bits} for name, bits in dict(nets).items()}}


def design():
    """Two instances of a pair behind a clock; one has an input tied to a constant, the other passes a wire through."""
    pair = module({"ff": ("DFF", {"C": [2], "D": [3], "Q": [4]}), "not": ("INV", {"A": [4], "Y": [5]})},
                  {"clk": [2], "d": [3], "q": [5], "thru": [3]}, {"$1": [4], "state": [4], "clk": [2], "d": [3]})
    top = module({"a": ("pair", {"clk": [2], "d": ["0"], "q": [3]}),
                  "b": ("pair", {"clk": [2], "d": [3], "q": [4], "thru": [5]}),
                  "ram": ("RAM", {"A": [4, 5, "x"], "C": [2]})},
                 {"clk": [2]}, {"clk": [2], "bus": [3, 4], "late": [5]}, top=True)
    return {"creator": "a test", "modules": {"pair": pair, "top": top}}


NAMES = ["a.ff", "a.not", "b.ff", "b.not", "ram"]


class NetlistsTest(ToolTest):

    def convert(self, *args):
        """The .hgr text, and the names of cells and nets."""
        self.run_kapris("convert", *args, "out.hgr", "--names", "out.names")
        lines = [line.split("\t") for line in read("out.names").splitlines()]
        return read("out.hgr"), *([name for kind, _, name in lines if kind == wanted] for wanted in ("cell", "net"))

    def test_hierarchy_becomes_cells_and_nets_with_names(self):
        write("d.json", json.dumps(design()))
        # a.d is a constant; b.thru joins the nets late and bus[0], which the upper instance names by its first.
        self.assertEqual(self.convert("d.json"),
                         ("5 5\n1 3 5\n1 2\n2 3 5\n3 4\n4 5\n", NAMES, ["clk", "a.state", "bus[0]", "b.state", "bus[1]"]))
        # Instances as cells weigh what is in them.
        hgr, cells, nets = self.convert("d.json", "--depth", "0")
        self.assertEqual((hgr, cells), ("4 3 10\n1 2 3\n1 2\n2 3\n2 3\n2\n2\n1\n", ["a", "b", "ram"]))
        self.assertEqual(nets, ["clk", "bus[0]", "bus[1]", "late"])
        self.assertEqual(self.convert("d.json", "--module", "pair")[1], ["ff", "not"])
        write("types", "type area lut\nDFF 5 0\n\"INV\" 1 1\n% others\n* 9 0\n")
        self.assertTrue(self.convert("d.json", "--weights", "types")[0].endswith("\n5\n1\n5\n1\n9\n"))
        self.assertTrue(self.convert("d.json", "--weights", "types", "--weight-by", "lut",
                                     "--depth", "0")[0].endswith("\n1\n1\n0\n"))
        _, _, nets = self.convert("d.json", "--ignore-nets-above", "2", "--ignore-nets", "bus[*]")
        self.assertEqual(nets, ["a.state", "b.state"])
        write("few", "DFF 5\n")
        self.fails(3, "d.json:1:", "stats", "d.json", "--weights", "few")
        self.fails(3, "few has no weight for the type 'INV'", "stats", "d.json", "--weights", "few")
        self.fails(2, "names would be lost", "convert", "d.json", "x.hgr")
        self.fails(2, "are for netlists", "stats", "d.hgr", "--depth", "0")

    def test_faults_of_netlists_have_their_places(self):
        good = json.dumps(design(), indent=1)
        line = 1 + good[:good.index('"ram"')].count("\n")
        top = '"modules": {"m": {"cells": '
        cases = [("{\"modules\": {\n \"m\": nul}}", "d.json:2:"), ("", "d.json:1:1: no JSON"), ("[]", "an object is expected"),
                 ("{" + top + "{\"u\": {\"type\": \"T\", \"connections\": {\"A\": [\n -1]}}}}}}",
                  "d.json:2:2: modules.m.cells.u.connections.A: the bit -1"),
                 ("{" + top + "{\"u\": {\"connections\": {}}}}}}", "modules.m.cells.u: the cell has no type"),
                 (json.dumps({"modules": {"m": module({"u": ("m", {})}, top=True)}}), "the module 'm' contains itself"),
                 (good.replace('"type": "RAM"', '"type": 7'), "modules.top.cells.ram.type: a string is expected"),
                 (good.replace('"ram"', '"a"'), f"d.json:{line}:5: the cell 'a' stands twice"),
                 (re.sub(r'"thru"(: \[\s+5)', r'"nothing"\1', good), "has no port 'nothing'"),
                 ("[" * 100000, "an object is expected"), ("{\"x\":" + "[" * 100000, "no JSON")]
        for text, message in cases:
            write("d.json", text)
            self.fails(3, message, "stats", "d.json")
            self.assertIn(message, self.run_kapris("check", "d.json", status=3).stdout)
        # Each of sixty modules holds the one before twice.
        modules = {"m0": module({"u": ("T", {"A": [2]})})}
        for i in range(60):
            modules[f"m{i + 1}"] = module({"l": (f"m{i}", {}), "r": (f"m{i}", {})})
        write("d.json", json.dumps({"modules": modules}))
        self.fails(3, "too large for a text of", "stats", "d.json")
        done = self.run_kapris("convert", "d.json", "-", "--to", "hgr", "--depth", "0", "--drop-names")
        self.assertEqual(done.stdout, f"0 2 10\n{2 ** 59}\n{2 ** 59}\n")

    def test_names_go_in_and_out(self):
        write("d.json", json.dumps(design()))
        write("fixed", "% by name, the others are free\nram 1\na.ff\t0\n")
        done = self.run_kapris("partition", "d.json", "-k", "2", "-e", "0.5", "--fixed", "fixed", "--names", "d.names",
                               "--json=r.json", "--json-names", "--records")
        self.assertIn("names          d.names", done.stdout)
        parts = dict(line.split("\t") for line in read("d.names").splitlines())
        self.assertEqual(list(parts), NAMES)
        self.assertEqual((parts["ram"], parts["a.ff"]), ("1", "0"))
        self.assertEqual(read("d.json.part.2"), "".join(part + "\n" for part in parts.values()))
        result = json.loads(read("r.json"))
        self.assertEqual(result["names"], [{"name": name, "part": int(part)} for name, part in parts.items()])
        # What is written is a part file too.
        write("backwards", "".join(reversed(read("d.names").splitlines(keepends=True))))
        shown = self.run_kapris("eval", "d.json", "backwards", "--nets", "--fixed", "fixed").stdout
        self.assertEqual(fields(shown)["cut"], str(result["best"]["cut"]))
        cut = [line.split("\t")[1] for line in shown.splitlines() if line.startswith("cut net")]
        self.assertIn("clk", cut)
        border = [line.split("\t")[1] for line in shown.splitlines() if line.startswith("border cell")]
        self.assertLessEqual({"a.ff", "ram"}, set(border))
        done = self.run_kapris("eval", "d.json", "d.names", "--nets", "--json", "--json-names").stdout
        self.assertEqual([net["name"] for net in json.loads(done)["cut_nets"]], cut)
        self.run_kapris("report", "r.json", "d.json", "d.names", "-o", "page.html")
        self.assertIn("ram", read("page.html"))
        for text, message in (("ram 1\nram 0\n", "fixed:2:1: 'ram' has its part in line 1 already"),
                              ("none 1\n", "fixed:1:1: no cell is called 'none'"), ("ram 2\n", "fixed:1:5: part 2, but"),
                              ("\"ra\\q\" 1\n", "fixed:1:4: a backslash"), ("\"ram 1\n", "fixed:1:1: the line ends")):
            write("fixed", text)
            self.fails(3, message, "partition", "d.json", "-k", "2", "--fixed", "fixed")
        write("few", "ram 1\n")
        self.fails(3, "1 of 5 cells; cell 1, 'a.ff', has none", "eval", "d.json", "few")

    def test_hostile_names_survive(self):
        names = ["tab\there", "line\nend", "\"quoted\"", "%comment", "", " ", "esc\x1b[2J", "\u202ereversed", "back\\slash",
                 "long" * 250000, "7", "é"]
        write("d.json", json.dumps({"modules": {"m": module({name: ("T", {"A": [2]}) for name in names})}}))
        self.run_kapris("partition", "d.json", "-k", "2", "--names", "d.names", "--json=r.json", "--report", "page.html")
        lines = read("d.names").splitlines()
        self.assertEqual(len(lines), len(names))
        for name, line in zip(names, lines):
            word, part = line.split("\t")
            self.assertIn(part, ("0", "1"))
            if word.startswith('"'):
                word = re.sub(r"(?:\\x[0-9a-f]{2})+", lambda found: bytes.fromhex(found[0].replace("\\x", "")).decode(), word[1:-1])
                word = re.sub(r"\\(.)", lambda found: {"n": "\n", "t": "\t"}.get(found[1], found[1]), word)
            self.assertEqual(word, name)
        # All are read again; "7" is a name, so that 1 is no number of a cell.
        self.run_kapris("eval", "d.json", "d.names", "--nets")
        write("fixed", "1 0\n")
        self.fails(3, "no cell is called '1'", "partition", "d.json", "-k", "2", "--fixed", "fixed")
        # Two paths with one name.
        both = {"t": module({"a.b": ("T", {"A": [2]}), "a": ("s", {})}, top=True), "s": module({"b": ("T", {"A": [2]})})}
        write("d.json", json.dumps({"modules": both}))
        self.assertIn("names of more than one cell: 1 repeated; the first is 'a.b', of cells 1 and 2",
                      self.run_kapris("check", "d.json").stdout)
        write("fixed", "a.b 0\n")
        self.fails(3, "2 cells are called 'a.b'", "partition", "d.json", "-k", "2", "--fixed", "fixed")

    def test_groups_stay_together_and_measures_are_of_all_cells(self):
        text, nets, netwgts, cellwgts = random_hypergraph(3, True)
        write("h.hgr", text)
        groups = [list(range(first, 60, 9)) for first in range(4)]
        write("groups", "".join(" ".join(str(cell + 1) for cell in group) + "\n" for group in groups))
        for command in (("partition",), ("refine", "h.hgr.part.3")):
            args = (command[0], "h.hgr", *command[1:], "-k", "3", "-e", "0.1", "--groups", "groups", "--json=r.json", "--seed", "1")
            self.run_kapris(*args, *(("--vcycle", "never") if command[0] == "refine" else ()))
            part = [int(line) for line in read("h.hgr." + ("refined" if command[0] == "refine" else "part") + ".3").split()]
            for group in groups:
                self.assertEqual(len({part[cell] for cell in group}), 1)
            spans = [len({part[cell] for cell in net}) for net in nets]
            best = json.loads(read("r.json"))["best"]
            self.assertEqual(best["cut"], sum(weight for weight, span in zip(netwgts, spans) if span > 1))
            self.assertEqual(best["soed"], sum(weight * span for weight, span in zip(netwgts, spans) if span > 1))
            weights = [sum(weight for weight, of in zip(cellwgts, part) if of == p) for p in range(3)]
            self.assertEqual(json.loads(read("r.json"))["part_weights"], weights)
        # A fixed cell takes its group along.
        write("fixed", "10 2\n")
        self.run_kapris("partition", "h.hgr", "-k", "3", "-e", "0.1", "--groups", "groups", "--fixed", "fixed")
        part = read("h.hgr.part.3").split()
        self.assertEqual({part[cell] for cell in groups[0]}, {"2"})
        write("fixed", "1 2\n10 1\n")
        self.fails(3, "groups:1:1: the group cannot stay together: cell '1' is fixed to part 2, cell '10' is fixed to part 1",
                   "partition", "h.hgr", "-k", "3", "--groups", "groups", "--fixed", "fixed")
        for text, message in (("1 2\n3 2\n", "groups:2:3: '2' is in the group of line 1 already"),
                              ("0\n", "groups:1:1: '0' is not the number of a cell, 1 to 60")):
            write("groups", text)
            self.fails(3, message, "partition", "h.hgr", "-k", "2", "--groups", "groups")

    def bookshelf(self):
        write("p.aux", "RowBasedPlacement : p.nodes p.nets p.wts p.pl p.scl\n")
        write("p.nodes", "UCLA nodes 1.0\n# c\nNumNodes : 5\nNumTerminals : 2\n a 2 3\n b 1.0 4\n c\udcff 1 1\n"
                         " west 9 9 terminal\n east 9 9 terminal_NI\n")
        write("p.nets", "UCLA nets 1.0\nNumNets : 3\nNumPins : 7\nNetDegree : 3 n1\n a I : 0.5 -1\n b O\n west B\n"
                        "NetDegree:2\n b\n c\udcff\nNetDegree : 2 n3\n c\udcff\n east\n")
        write("p.wts", "UCLA wts 1.0\nn3 7\na 4\n")
        write("p.pl", "UCLA pl 1.0\na 0 0 : N\nwest -10 2.5 : N /FIXED\neast 1e1 3 : N /FIXED\n")

    def test_bookshelf_problems_weigh_areas_and_fix_terminals(self):
        self.bookshelf()
        hgr, cells, nets = self.convert("p.aux")
        self.assertEqual(hgr, "3 5 11\n1 1 2 4\n1 2 3\n7 3 5\n6\n4\n1\n0\n0\n")
        self.assertEqual((cells, nets), (["a", "b", '"c\\xff"', "west", "east"], ["n1", "2", "n3"]))
        self.run_kapris("partition", "p.aux", "-k", "2", "-e", "1", "--terminals", "2x1", "--names", "p.names")
        parts = dict(line.split("\t") for line in read("p.names").splitlines())
        self.assertEqual((parts["west"], parts["east"]), ("0", "1"))
        self.run_kapris("partition", "p.aux", "-k", "2", "-e", "1", "--terminals", "1x2", "--names", "p.names", "-o", "q")
        # The list comes first.
        write("fixed", "west 1\n")
        self.run_kapris("partition", "p.aux", "-k", "2", "-e", "1", "--terminals", "2x1", "--fixed", "fixed", "-o", "q")
        self.assertEqual(read("q").split()[3:], ["1", "1"])
        self.fails(2, "2 columns of 2 fields are not 2 parts", "partition", "p.aux", "-k", "2", "--terminals", "2x2")
        self.assertIn("p.wts:3:1: warning: the weight of a node", self.run_kapris("check", "p.aux").stdout)
        for file, old, new, message in (("p.nets", " a I", " x I", "p.nets:5:2: no node is called 'x'"),
                                        ("p.nets", "NetDegree : 3", "NetDegree : 4", "p.nets:8:1: the net 'n1' has 3 pins"),
                                        ("p.nodes", " b 1.0", " a 1.5", "p.nodes:6:4: width: '1.5' is not a whole number"),
                                        ("p.nodes", " b 1.0", " a 1.0", "p.nodes:6:1: the node 'a' stands in line 5 already"),
                                        ("p.wts", "n3", "n4", "p.wts:2:1: no net is called 'n4'"),
                                        ("p.pl", "1e1", "1e", "p.pl:4:6: '1e' is not a coordinate"),
                                        ("p.aux", "p.nets", "", "p.aux:2:1: no file .nets is named")):
            self.bookshelf()
            write(file, read(file).replace(old, new))
            self.fails(3, message, "stats", "p.aux")

    def test_what_is_written_as_bookshelf_is_read_again(self):
        self.bookshelf()
        self.run_kapris("convert", "p.aux", "q.aux")
        self.assertEqual(self.convert("q.aux"), self.convert("p.aux"))
        write("d.json", json.dumps(design()))
        self.run_kapris("convert", "d.json", "d.aux")
        hgr, cells, nets = self.convert("d.aux")
        self.assertEqual((cells, nets), self.convert("d.json")[1:])
        self.assertEqual(hgr, self.convert("d.json")[0].replace("5 5\n", "5 5 10\n", 1) + 5 * "1\n")
        self.assertFalse({"d.wts", "d.pl"} & set(os.listdir(".")))
        write("h.hgr", "2 3 11\n4 1 2 1\n0\n2\n0\n5\n")
        self.run_kapris("convert", "h.hgr", "h.aux")
        self.assertEqual(self.convert("h.aux"), ("2 3 11\n4 1 2 1\n0\n2\n0\n5\n", ["c1", "c2", "c3"], ["n1", "n2"]))
        write("d.json", json.dumps({"modules": {"m": module({"a b": ("T", {"A": [2]})})}}))
        self.fails(2, "cell 1 is called 'a b', which a file of Bookshelf cannot hold", "convert", "d.json", "e.aux")
        self.fails(2, "ends with .aux", "convert", "d.json", "-", "--to", "bookshelf")

    def test_graphs_are_written_as_they_are_read(self):
        write("g.graph", "% c\n4 3 011\n5 2 7 3 1\n0 1 7\n2 1 1 4 0\n1 3 0\n")
        self.run_kapris("convert", "g.graph", "g.hgr")
        self.assertEqual(read("g.hgr"), "3 4 11\n7 1 2\n1 1 3\n0 3 4\n5\n0\n2\n1\n")
        self.run_kapris("convert", "g.hgr", "again.graph")
        self.assertEqual(read("again.graph"), read("g.graph").replace("% c\n", ""))
        write("h.hgr", "2 3\n2 1\n1 2\n")
        self.fails(2, "nets 1 and 2 have the same cells", "convert", "h.hgr", "h.graph")
        write("h.hgr", "1 3\n1 2 3\n")
        self.fails(2, "net 1 has 3 cells", "convert", "h.hgr", "h.graph")


if __name__ == "__main__":
    unittest.main()
