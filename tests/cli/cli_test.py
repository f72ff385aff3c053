#!/usr/bin/env python3
# tests/cli/cli_test.py - the kapris command as its users meet it: files, streams and exit statuses.
# SPDX-License-Identifier: MIT
"""Tests of the kapris command."""

import gzip
import json
import os
import resource
import signal
import subprocess
import unittest

from tool import KAPRIS, ToolTest, fields, read, write

TWO_TRIANGLES = "7 6\n1 2\n2 3\n1 3\n4 5\n5 6\n4 6\n3 4\n"


class Commands(ToolTest):
    """Files, streams and exit statuses."""

    def test_streams_and_default_names(self):
        os.mkdir("sub")
        write("sub/t.hgr", TWO_TRIANGLES)
        self.run_kapris("partition", "sub/t.hgr", "-k", "2")
        self.run_kapris("partition", "-", "-k", "2", text=TWO_TRIANGLES)
        self.assertEqual(sorted(os.listdir(".")), ["stdin.part.2", "sub", "t.hgr.part.2"])
        done = self.run_kapris("partition", "sub/t.hgr", "-k", "2", "-o", "-")
        self.assertEqual(sorted(done.stdout.splitlines()), ["0"] * 3 + ["1"] * 3)
        self.assertEqual(fields(done.stderr)["written"], "standard output")
        self.run_kapris("eval", "sub/t.hgr", "-", text=done.stdout)
        self.assertEqual(len(os.listdir(".")), 3)

    def test_outputs_that_are_no_plain_files(self):
        write("t.hgr", TWO_TRIANGLES)
        partition = ("partition", "t.hgr", "-k", "2", "-o")
        self.run_kapris(*partition, "/dev/null")
        os.mkfifo("pipe")
        with subprocess.Popen(["cat", "pipe"], stdout=subprocess.PIPE, encoding="ascii") as reader:
            self.run_kapris(*partition, "pipe")
            self.assertEqual(len(reader.stdout.read().splitlines()), 6)
        # The file that standard output goes to is added to, not replaced.
        write("log", "before\n")
        with open("log", "a", encoding="ascii") as log:
            self.run_kapris("stats", "t.hgr", "--json=/dev/stdout", stdout=log)
        self.assertTrue(read("log").startswith("before\n{\n"))
        os.symlink("target", "link")
        write("target", "old\n")
        os.chmod("target", 0o640)
        self.run_kapris(*partition, "link")
        self.assertEqual((len(read("target").split()), os.path.islink("link"), os.stat("target").st_mode & 0o777),
                         (6, True, 0o640))
        self.run_kapris(*partition, "part.gz")
        self.run_kapris("eval", "t.hgr", "part.gz")
        with gzip.open("part.gz", "rt") as file:
            self.assertEqual(file.read(), read("target"))
        # A message that nobody can read does not change the exit status.
        for number, args in ((6, ("partition", "none", "-k", "2")), (2, ("partition",)), (0, (*partition, "again"))):
            with open("/dev/full", "w", encoding="ascii") as full:
                self.assertEqual(subprocess.run([KAPRIS, *args], stderr=full, stdout=subprocess.DEVNULL,
                                                check=False).returncode, number)
        self.assertEqual(sorted(os.listdir(".")), ["again", "link", "log", "part.gz", "pipe", "t.hgr", "target"])

    def test_degenerate_hypergraphs(self):
        for text, ncells in (("0 0\n", 0), ("0 4\n", 4), ("2 2\n\n1 1\n", 2), ("1 2 11\n0 1 2\n0\n0\n", 2)):
            write("d.hgr", text)
            self.run_kapris("partition", "d.hgr", "-k", "2", "-o", "parts")
            self.assertEqual(len(read("parts").splitlines()), ncells)
            self.assertEqual(fields(self.run_kapris("eval", "d.hgr", "parts").stdout)["cut"], "0")

    def test_status_2_for_wrong_usage(self):
        write("t.hgr", TWO_TRIANGLES)
        write("parts", "0\n" * 6)
        partition = ("partition", "t.hgr")
        for message, *args in (
                ("a verb is missing",),
                ("no verb 'cut'", "--color", "never", "cut", "--wide"),
                ("FILE", "partition", "-k", "2"),
                ("--parts", *partition),
                ("--parts", *partition, "-k", "0"),
                ("--parts", *partition, "-k", "2x"),
                ("--parts", *partition, "-k", "2147483648"),
                ("--epsilon", *partition, "-k", "2", "--epsilon", "-0.1"),
                ("--ubfactor", *partition, "-k", "2", "--ubfactor", "50"),
                ("--epsilon", *partition, "-k", "2", "--epsilon", "0.1", "--ubfactor", "5"),
                ("--scheme: 'flat' is not one of recursive|kway", *partition, "-k", "2", "--scheme", "flat"),
                ("'1,0' is not", *partition, "-k", "2", "--start-range", "1,0"),
                ("'3:1' is not A:B", *partition, "-k", "2", "--start-range", "3:1"),
                ("clock seed", *partition, "-k", "2", "--start-range", "0:1", "--seed", "-1"),
                ("--target-weights: 3 weights for 2 parts", *partition, "-k", "2", "--target-weights", "1,1,1"),
                ("--target-weights: '-1' is not a weight", *partition, "-k", "2", "--target-weights", "1,-1"),
                ("two results go to standard output", *partition, "-k", "2", "-o", "-", "--json"),
                ("both to be ./x", *partition, "-k", "2", "-o", "x", "--json=./x"),
                ("parts is the input itself", "eval", "t.hgr", "parts", "--json=parts"),
                ("parts is the input itself", *partition, "-k", "2", "--fixed", "./parts", "-o", "parts"),
                ("--fixed: the value is empty", *partition, "-k", "2", "--fixed", ""),
                ("leading zero", *partition, "-k", "010"),
                ("'nan' is not a number", *partition, "-k", "2", "--time-limit", "nan"),
                ("'-1' is not a number of bytes", *partition, "-k", "2", "--memory-limit", "-1"),
                ("--runs", *partition, "-k", "2", "--runs", "0"),
                ("--seed", *partition, "-k", "2", "--seed", "x"),
                ("extra", *partition, "extra", "-k", "2"),
                ("t.hgr is the input itself", *partition, "-k", "2", "-o", "./t.hgr"),
                ("PART", "eval", "t.hgr"),
                ("--parts", "eval", "t.hgr", "parts", "-k", "0"),
                ("only one", "eval", "-", "-")):
            self.fails(2, message, *args)

    def test_status_3_for_malformed_input(self):
        write("bad.hgr", "2 3\n1 2\n2 4\n")
        self.fails(3, "bad.hgr:3:3: pin 4", "partition", "bad.hgr", "-k", "2")
        self.fails(3, "stdin:3:3: pin 4", "partition", "-", "-k", "2", text=read("bad.hgr"))
        self.fails(3, "bad.hgr:3:3: pin 4", "eval", "bad.hgr", "bad.hgr")
        write("old", "kept\n")
        self.fails(3, "pin 4", "partition", "bad.hgr", "-k", "2", "-o", "old")
        write("heavy.hgr", f"1 2 10\n1 2\n{2**61}\n1\n")
        self.fails(3, f"heavy.hgr:4:1: cell weight: 1 takes the total to {2**61 + 1}, above {2**61}",
                   "partition", "heavy.hgr", "-k", "2")
        write("heavy.hgr", f"2 3 1\n{2**59} 1 2 3\n{2**58} 1 2 3\n")
        self.fails(3, f"heavy.hgr: weights too large: net 2, of weight {2**58}, takes the total", "partition", "heavy.hgr", "-k", "3")

        write("t.hgr", TWO_TRIANGLES)
        for parts, message in (("0\n1\n", "parts:3:1: the text ends after the parts of 2 of 6 cells"),
                               ("0\n" * 7, "parts:7:1: '0' is left over"),
                               ("0\n" * 5 + "-1\n", "parts:6:1: part: '-1' is negative"),
                               ("0\n 1.5\n" + "0\n" * 4, "parts:2:2: part: '1.5' is not a whole number"),
                               ("0\n0 1\n" + "0\n" * 4, "parts:2:3: '1' is left over"),
                               ("0\n\n" + "0\n" * 5, "parts:2:1: the part of cell 2 is missing"),
                               ("0\n2\n" + "0\n" * 4, "parts:2:1: part 2, but parts are numbered from 0 to 1")):
            write("parts", parts)
            self.fails(3, message, "eval", "t.hgr", "parts", "-k", "2")

    def test_status_4_for_a_part_over_its_limit_with_the_parts_written(self):
        write("h.hgr", "1 3 10\n1 2 3\n10\n1\n1\n")
        done = self.run_kapris("partition", "h.hgr", "-k", "2", status=4)
        self.assertEqual(len(read("h.hgr.part.2").splitlines()), 3)
        self.assertEqual(fields(done.stdout)["parts over"], "1")
        self.assertEqual(sum(line.endswith(" of at most 6, over") for line in done.stdout.splitlines()), 1)

    def test_what_people_type_is_understood_or_corrected(self):
        write("t.hgr", TWO_TRIANGLES)
        self.assertIn("Usage: kapris generate grid", self.run_kapris("help", "generate", "grid").stdout)
        options = []
        for args in (["-k", "3", "-e", "0.5", "--target-weights", "2,1,1"],
                     ["--k", "3", "--imbalance", "0.5", "--part-shares", "2,1,1"],
                     ["--k=3", "--imbalance=0.5", "--part-shares=2,1,1"]):
            self.run_kapris("partition", "t.hgr", "-q", "-o", "parts", "--json=r.json", *args)
            options.append(json.loads(read("r.json"))["options"])
        self.assertEqual(options[1:], options[:1] * 2)
        for message, *args in (
                ("there is no verb 'partiton'; did you mean 'partition'?", "partiton", "t.hgr"),
                ("there is no verb 'frobnicate'\n", "frobnicate"),
                ("a verb is missing before '-k'", "-k", "2", "t.hgr"),
                # Not what it makes seem to be missing.
                ("there is no option '--part'; did you mean '--parts'?", "partition", "t.hgr", "--part", "2"),
                ("there is no option '--imblance'; did you mean '--imbalance'?", "partition", "t.hgr", "--imblance", "0.1"),
                ("there is no option '--epsilom'; did you mean '--epsilon'?", "eval", "t.hgr", "--epsilom=3", "parts"),
                ("there is no option '--xyzzy'\n", "stats", "t.hgr", "--xyzzy", "5"),
                ("'more' was not expected", "stats", "t.hgr", "more", "and more"),
                ("--seed: 'x' is neither a whole number", "partition", "t.hgr", "-k", "2", "--seed", "x")):
            self.fails(2, "kapris: " + message, *args)

    def test_what_is_hardly_meant_gets_a_warning_and_no_part_stays_empty(self):
        write("t.hgr", TWO_TRIANGLES)
        for args, warning, nempty in ((["-k", "2", "-e", "3"], "all cells fit into one part; if 3 percent is meant, give 0.03", 0),
                                      (["-k", "4", "-e", "1"], "an epsilon of 1 allows parts of 2 times", 0),
                                      (["-k", "9"], "9 parts for 6 cells: 3 parts stay empty", 3),
                                      (["-k", "2", "-e", "9", "--min-epsilon", "0.01"], "all cells fit", 0),
                                      (["-k", "1"], None, 0), (["-k", "2"], None, 0)):
            done = self.run_kapris("partition", "t.hgr", "-o", "parts", "--json=r.json", *args)
            self.assertIn(warning or "", done.stderr)
            self.assertEqual(len(done.stderr.splitlines()), warning is not None)
            result = json.loads(read("r.json"))
            self.assertEqual([f"kapris: warning: {text}" for text in result["warnings"]], done.stderr.splitlines())
            self.assertEqual(result["best"]["empty_parts"], nempty)
            self.assertEqual(len(set(read("parts").split())), int(args[1]) - nempty)
        write("parts", "0\n0\n0\n0\n1\n1\n")
        done = self.run_kapris("eval", "t.hgr", "parts", "-e", "0.5", "--min-epsilon", "0.01", status=4)
        self.assertEqual(fields(done.stdout)["part 1"], "2 of 3 to 4, under")
        self.run_kapris("eval", "t.hgr", "parts", "-e", "0", "--target-weights", "2,1")
        self.run_kapris("eval", "t.hgr", "parts", "-e", "0", "--target-weights", "1,2", status=4)

    def test_fixed_cells_go_where_they_must_whatever_it_costs(self):
        write("t.hgr", TWO_TRIANGLES)
        write("fixed", "0\n0\n0\n0\n0\n-1\n")
        done = self.run_kapris("partition", "t.hgr", "-k", "2", "--fixed", "fixed", "-o", "parts", status=4)
        self.assertEqual(read("parts").split()[:5], ["0"] * 5)
        self.assertEqual(fields(done.stdout)["parts over"], "1")
        write("fixed", "0\n-1\n-2\n-1\n-1\n-1\n")
        self.fails(3, "fixed:3:1: part: '-2' is negative", "partition", "t.hgr", "-k", "2", "--fixed", "fixed")
        write("fixed", "-1\n-1\n-1\n-1\n-1\n0\n")
        write("given", "0\n0\n0\n1\n1\n1\n")
        self.fails(3, "given:6:1: part 1, but fixed fixes the cell to part 0",
                   "refine", "t.hgr", "given", "-k", "2", "--fixed", "fixed")

    def test_what_the_library_says_does_not_mix_with_parts_on_standard_output(self):
        # Nets of one pin and cells that a net names twice, which the library traces in words of its own.
        nets = ("27/17 19 17 15/27 1 9 4/13 12 13 25/26 23 25 7/14 15 27/20 21 5 21 6/7 25/9/13 24 8 26/4/20 18 21 19/"
                "23/16 4 28 5 27/23 1 13/21/28 22 3 17 23/28/15 2 13 16/20 6 14 12 4/4 15 23 12/4 17 28/7 8/14/"
                "21 21 10/22 9 12/25 3 24").split("/")
        write("r.hgr", "27 28\n" + "\n".join(nets))
        done = self.run_kapris("partition", "r.hgr", "-k", "2", "--runs", "1", "--seed", "1", "-vv", "-o", "-")
        self.assertIn("The mincut for this bisection", done.stderr)
        self.assertTrue(all(line in ("0", "1") for line in done.stdout.splitlines()), done.stdout)

    @unittest.skipIf("KAPRIS_TEST_NO_MEMORY_LIMIT" in os.environ, "built with sanitizers")
    def test_status_5_when_memory_is_short_in_the_tool_or_in_the_library(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_AS, (400 << 20, 400 << 20))
        write("big.hgr", "0 20000000 10\n" + "1\n" * 20000000)
        self.fails(5, "out of memory", "partition", "big.hgr", "-k", "2", preexec_fn=limit)
        write("t.hgr", TWO_TRIANGLES)
        self.fails(5, "--memory-limit of 1000 bytes is too low", "partition", "t.hgr", "-k", "2",
                   "--memory-limit", "1000")
        # What a header claims is out of proportion to the file.
        write("huge.hgr", "0 524288000\n")
        self.fails(3, "524288000 cells are too many for a text of 12 bytes", "partition", "huge.hgr", "-k", "2",
                   preexec_fn=limit)

    def test_status_6_for_files_that_cannot_be_read_or_written(self):
        write("t.hgr", TWO_TRIANGLES)
        os.mkdir("directory")
        partition = ("partition", "t.hgr", "-k", "2", "-o")
        self.fails(6, "cannot open none.hgr: No such file", "partition", "none.hgr", "-k", "2")
        self.fails(6, "cannot read directory: Is a directory", "partition", "directory", "-k", "2")
        self.fails(6, "cannot open none: No such file", "eval", "t.hgr", "none")
        self.fails(6, "cannot write none/out: No such file", *partition, "none/out")
        self.fails(6, "cannot write t.hgr/out: Not a directory", *partition, "t.hgr/out")
        self.fails(6, "cannot write directory: Is a directory", *partition, "directory")
        if os.path.exists("/dev/full"):
            with open("/dev/full", "w", encoding="ascii") as full:
                self.fails(6, "cannot write standard output", "--help", stdout=full)
                self.fails(6, "cannot write standard output: No space left", "check", "-", stdout=full,
                           text="1 1\n" + "0 " * 900)
            # The partition itself is there when something after it fails.
            done = self.run_kapris(*partition, "parts", "--json=/dev/full", status=6)
            self.assertIn("cannot write /dev/full: No space left on device\nthe partition is in parts\n", done.stderr)
            self.run_kapris("eval", "t.hgr", "parts", "-k", "2", "--epsilon", "0.03")
        if os.geteuid() != 0:
            write("protected", "kept\n")
            os.chmod("protected", 0o444)
            self.fails(6, "cannot write protected: Permission denied", *partition, "protected")

    def test_status_6_for_files_that_take_only_a_part_or_give_nothing(self):
        self.run_kapris("generate", "grid", "--rows", "40", "--cols", "40", "-o", "g.hgr")
        write("old", "kept\n")
        write("part", "0\n1\n" * 800)

        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (2048, 2048))
        partition = ("partition", "g.hgr", "-k", "2", "--runs", "1")
        for name, *args in (("old", *partition, "-o", "old"), ("new", "convert", "g.hgr", "new", "--to", "patoh"),
                            ("g.mtx.gz", "convert", "g.hgr", "g.mtx.gz"), ("old", "eval", "g.hgr", "part", "--nets", "--json=old"),
                            ("n.hgr", "generate", "circuit", "--cells", "400", "-o", "n.hgr")):
            self.fails(6, f"cannot write {name}: File too large", *args, preexec_fn=limit)
        with open("stream", "w", encoding="ascii") as stream:
            done = self.run_kapris("convert", "g.hgr", "-", "--to", "hgr", status=6, preexec_fn=limit, stdout=stream)
            self.assertIn("cannot write standard output: File too large", done.stderr)
        os.remove("stream")
        for args in ((*partition[:1], "/proc/self/mem", *partition[2:]), ("eval", "g.hgr", "/proc/self/mem"),
                     (*partition, "--fixed", "/proc/self/mem"), (*partition, "--target-weights", "@/proc/self/mem"),
                     ("best", "/proc/self/mem", "g.hgr")):
            self.fails(6, "cannot read /proc/self/mem: Input/output error", *args)
        # Nobody reads on: the usual signal ends the tool, and its other results are not half done.
        before = sorted(os.listdir("."))
        reader, writer = os.pipe()
        os.close(reader)
        with open(writer, "w", encoding="ascii") as stream:
            self.run_kapris(*partition, "-o", "-", "--json=run.json", stdout=stream, status=-signal.SIGPIPE)
            self.assertEqual(sorted(os.listdir(".")), before)
            self.run_kapris(*partition, "-o", "parts", "--report", "page", "--json", stdout=stream, status=-signal.SIGPIPE)
        self.assertEqual(sorted(os.listdir(".")), sorted([*before, "page", "parts"]))


if __name__ == "__main__":
    unittest.main()
