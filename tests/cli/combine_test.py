#!/usr/bin/env python3
# tests/cli/combine_test.py - one partition of several part files.
# SPDX-License-Identifier: MIT
"""Tests of the verb combine."""

import json
import os
import re
import unittest

from tool import ToolTest, fields, read, write


class Combine(ToolTest):
    """Four quick partitions of one circuit."""

    def setUp(self):
        super().setUp()
        self.run_kapris("generate", "circuit", "--cells", "900", "--net-weights", "1:5", "-o", "c.hgr")
        self.parts = [f"{i}.part" for i in range(4)]
        self.cuts = []
        for i, part in enumerate(self.parts):
            done = self.run_kapris("partition", "c.hgr", "-k", "4", "--members", "0", "--runs", "1", "--seed", str(i), "-o",
                                   part)
            self.cuts.append(int(fields(done.stdout)["cut"]))

    def test_a_better_one_is_written_and_told(self):
        done = self.run_kapris("combine", "c.hgr", *self.parts, "-k", "4", "--combinations", "20", "--seed", "1",
                               "--json=json", "--report", "page.html", "--starts", "2")
        shown, result = fields(done.stdout), json.loads(read("json"))
        self.assertLess(int(shown["cut"]), min(self.cuts))
        self.assertEqual(result["best"]["cut"], int(shown["cut"]))
        self.assertEqual((result["command"], result["given"]), ("combine", None))
        self.assertEqual([one["path"] for one in result["combined"]], self.parts)
        self.assertIn("kapris combine c.hgr 0.part 1.part 2.part 3.part -k 4", re.sub("<[^>]*>", "", read("page.html")))
        evaluated = self.run_kapris("eval", "c.hgr", "c.hgr.combined.4", "--epsilon", "0.03")
        self.assertEqual(fields(evaluated.stdout)["cut"], shown["cut"])

        # The starts of several machines.
        args = ("combine", "c.hgr", *self.parts, "-k", "4", "--combinations", "20", "--seed", "1")
        for number in ("0", "1"):
            self.run_kapris(*args, "--start-range", f"{number}:{number}", "-o", "p" + number, f"--json=r{number}")
        self.run_kapris("best", "r0", "r1", "-o", "best")
        self.assertEqual(read("best"), read("c.hgr.combined.4"))
        self.run_kapris("combine", "c.hgr", *self.parts[:3], "-k", "4", "--start-range", "1:1", "-o", "p2", "--json=r2",
                        "--combinations", "20", "--seed", "1")
        self.fails(2, "the number of partitions to combine is 4 in one and 3 in the other", "best", "r0", "r2")

    def test_groups_and_fixed_cells(self):
        write("groups", "1 2\n")
        write("fixed", "0\n" + "-1\n" * 899)
        for part in self.parts:
            lines = read(part).splitlines()
            lines[:2] = "0", "0"
            write(part, "\n".join(lines) + "\n")
        self.run_kapris("combine", "c.hgr", *self.parts, "-k", "4", "--groups", "groups", "--fixed", "fixed", "-o", "out",
                        "-e", "0.1")
        self.assertEqual(read("out").splitlines()[:2], ["0", "0"])

    def test_inputs_that_cannot_be(self):
        write("short", "0\n1\n")
        write("high", "4\n" * 900)
        write("fixed", "".join(f"{(int(line) + 1) % 4}\n" for line in read("1.part").splitlines()))
        combine = ("combine", "c.hgr", "0.part")
        self.fails(3, "short:", *combine, "short", "-k", "4")
        self.fails(3, "high:1:1", *combine, "high", "-k", "4")
        self.fails(3, ":1:1: part ", "combine", "c.hgr", *self.parts[1:], "-k", "4", "--fixed", "fixed")
        self.fails(6, "cannot open none", *combine, "none", "-k", "4")
        self.fails(2, "PART", "combine", "c.hgr", "-k", "4")
        self.fails(2, "only one of the inputs can be standard input", *combine, "-", "-", "-k", "4")
        self.fails(2, "is the input itself", *combine, "1.part", "-k", "4", "-o", "1.part")
        self.fails(2, "--members", *combine, "1.part", "-k", "4", "--members", "2")


if __name__ == "__main__":
    unittest.main()
