#!/usr/bin/env python3
# tests/cli/io_test.py - check and convert as their users meet them.
# SPDX-License-Identifier: MIT
"""Tests of kapris check and kapris convert."""

import bz2
import gzip
import json
import lzma
import os
import shutil
import subprocess
import unittest

from tool import ToolTest, read, write

WEIGHTED = "4 5 11\n7 1 3\n0 2 2\n1\n3 4 1\n4\n0\n6\n1\n1\n"
MATRIX = "%%MatrixMarket matrix coordinate pattern general\n3 4 4\n1 1\n1 2\n3 2\n3 4\n"
FORMULA = "p cnf 3 2\n1 -3 0\n2 0\n"


class Io(ToolTest):
    """Files in all formats, compressed or not."""

    def kapris(self, *args, **options):
        return self.run_kapris(*args, **options).stdout

    def test_convert_round_trips_lose_nothing_whatever_the_line_ends_and_the_size(self):
        page = "%" * (4096 - len(WEIGHTED)) + "\n" + WEIGHTED[:-1]
        self.assertEqual(len(page), 4096)
        for text in (WEIGHTED, WEIGHTED.replace("\n", "\r\n"), WEIGHTED[:-1], page):
            write("a.hgr", text)
            self.assertIn("written        b.patoh.gz\n", self.kapris("convert", "a.hgr", "b.patoh.gz"))
            self.assertTrue(read("b.patoh.gz").startswith("1 5 4 6 3\n7 1 3\n"))
            os.rename("b.patoh.gz", "compressed")
            self.kapris("convert", "compressed", "c", "--format", "patoh", "--to", "hgr")
            self.assertEqual(read("c"), WEIGHTED)
        write("m.mtx.gz", MATRIX)
        self.kapris("convert", "m.mtx.gz", "m.hgr")
        self.assertEqual(read("m.hgr"), "3 4 10\n1 2\n\n2 4\n1\n2\n0\n1\n")
        self.kapris("convert", "m.hgr", "n.mtx")
        self.assertEqual(read("n.mtx"), MATRIX)
        write("f.cnf", FORMULA)
        self.assertEqual(self.kapris("convert", "f.cnf", "-", "--to", "hgr", "--model", "literal"), "2 6\n1 6\n3\n")
        self.assertEqual(self.kapris("convert", "-", "-", "--format", "mtx", "--to", "patoh", "--model", "column-net",
                                     "--unit-weights", text=MATRIX), "1 3 4 4\n1\n1 3\n\n3\n")

    def test_other_compressed_files_are_read_and_written_and_damage_is_named(self):
        zstd = bytes.fromhex("28b52ffd04586100003220330a3120320a3220330ab374815e")
        write("a.hgr", "2 3\n1 2\n2 3\n")
        for end, library in ((".xz", lzma), (".bz2", bz2), (".zst", None)):
            if library:
                self.kapris("convert", "a.hgr", "b.patoh" + end)
                with library.open("b.patoh" + end, "rt") as file:
                    self.assertEqual(file.read(), "1 3 2 4\n1 2\n2 3\n")
            else:
                self.fails(2, "cannot write b.patoh.zst: files of this kind are only read; choose .gz, .xz or .bz2",
                           "convert", "a.hgr", "b.patoh.zst")
            data = library.compress(b"2 3\n1 2\n2 3\n") if library else zstd
            name = "c.hgr" + end
            middle = len(data) // 2
            wrong = data[:middle] + bytes([data[middle] ^ 0x55]) + data[middle + 1:]
            twice = library.compress(data) if library else zstd[:9]
            for damaged in (None, data[:-3], wrong, data + b"more", twice):
                with open(name, "wb") as file:
                    file.write(damaged or data)
                if damaged:
                    self.fails(3, f"{name}:1:1: the {dict(xz='xz', bz2='bzip2', zst='zstd')[end[1:]]} data are damaged or",
                               "stats", name)
                else:
                    self.assertEqual(self.kapris("convert", name, "-", "--to", "hgr"), "2 3\n1 2\n2 3\n")
            with open(name, "wb") as file:
                file.write(library.compress(b"") + data if library else data)
            os.rename(name, "named.hgr.bz2")  # the bytes count, not the name
            self.assertEqual(self.kapris("convert", "named.hgr.bz2", "-", "--to", "hgr"), "2 3\n1 2\n2 3\n")

    @unittest.skipUnless(shutil.which("xxhsum"), "there is no xxhsum")
    def test_hashes_are_those_of_xxhsum(self):
        write("m.mtx", MATRIX)
        self.kapris("convert", "m.mtx", "m.hgr")
        self.kapris("partition", "m.mtx", "-k", "2", "--json=result", "-o", "part")
        with open("result", encoding="utf-8") as file:
            result = json.load(file)
        sums = subprocess.run(["xxhsum", "m.hgr", "part"], capture_output=True, encoding="utf-8", check=True).stdout
        self.assertEqual(sums, f"{result['hash']}  m.hgr\n{result['output']['hash']}  part\n")

    def test_byte_order_marks_are_passed_over_and_utf16_is_named(self):
        for name, text in (("a.hgr", WEIGHTED), ("m.mtx", MATRIX), ("f.cnf", FORMULA)):
            for encoding, mark in (("utf-8-sig", b""), ("utf-16-le", b""), ("utf-16-be", b""), ("utf-16-le", b"\xff\xfe"),
                                   ("utf-16-be", b"\xfe\xff")):
                with open(name, "wb") as file:
                    file.write(mark + text.encode(encoding))
                if encoding == "utf-8-sig":
                    marked = self.kapris("convert", name, "-", "--to", "hgr")
                    write(name, text)
                    self.assertEqual(marked, self.kapris("convert", name, "-", "--to", "hgr"))
                else:
                    self.fails(3, f"{name}:1:1: this looks like UTF-16", "stats", name)
                    self.assertIn("this looks like UTF-16", self.kapris("check", name, status=3))
        write("h.hgr", "1 2\n1 2\n")
        write("parts", "\ufeff0\n1\n")
        self.kapris("eval", "h.hgr", "parts")

    def test_names_that_cannot_be_shown_are_escaped(self):
        name, shown = "a\nb\t\x1b[1m\u202e'\\.hgr", r"'a\nb\t\x1b[1m\xe2\x80\xae'\.hgr'"
        write(name, "1 2\n1 2\n")
        done = self.run_kapris("partition", name, "-k", "2", "--json=r\n.json", "--report", "r\n.html")
        self.assertEqual(done.stdout.splitlines()[0], f"file           {shown}")
        for line in (f"written        {shown[:-1]}.part.2'", r"json           'r\n.json'", r"report         'r\n.html'"):
            self.assertIn(line, done.stdout.splitlines())
        # As they are for programs, and with --quiet.
        self.assertEqual(json.loads(read("r\n.json"))["file"], name)
        self.assertEqual(self.kapris("partition", name, "-k", "2", "-q"), f"{name}.part.2\n")
        write(name, "1 1\n1 2\n")
        self.fails(3, shown + ":2:3: pin 2", "stats", name)
        self.fails(6, r"cannot open 'no\x07ne': ", "stats", "no\x07ne")
        self.fails(2, r"x\ny", "stats", name, "x\ny")
        self.fails(2, r"the output './a\n", "convert", name, "./" + name)
        write("ä.hgr", "1 2\n1 2\n")
        self.assertIn("file           ä.hgr\n", self.kapris("stats", "ä.hgr"))

    def test_convert_refuses_what_the_target_cannot_hold_and_what_makes_no_sense(self):
        for name, text in (("a.hgr", WEIGHTED), ("w.hgr", "1 2 1\n3 1 2\n"), ("f.cnf", FORMULA), ("m.mtx", MATRIX)):
            write(name, text)
        for message, *args in (("1 pins are repeated", "a.hgr", "x.mtx"),
                               ("the cell weights would be lost", "a.hgr", "x.mtx", "--drop-repeats"),
                               ("the net weights would be lost", "w.hgr", "x.mtx"),
                               ("formulas can only be read", "f.cnf", "x.cnf"),
                               ("add --to", "f.cnf", "-"),
                               ("--model does not fit", "m.mtx", "x.hgr", "--model", "dual"),
                               ("--model does not fit", "f.cnf", "x.hgr", "--model", "row-net"),
                               ("--unit-weights is for matrices", "f.cnf", "x.hgr", "--unit-weights"),
                               ("the input itself", "w.hgr", "w.hgr")):
            self.fails(2, message, "convert", *args)
        self.kapris("convert", "a.hgr", "x.mtx", "--drop-repeats", "--drop-weights")
        self.assertTrue(read("x.mtx").endswith("\n4 5 5\n1 1\n1 3\n2 2\n4 1\n4 4\n"))

    def test_check_lists_problems_and_counts_them(self):
        write("a.hgr", WEIGHTED)
        self.assertEqual(self.kapris("check", "a.hgr").splitlines()[-1], "0 errors, 3 warnings")
        self.assertEqual(self.kapris("check", "-", status=3, text="2 3\n1 0\n4\n").splitlines(),
                         ["stdin:2:3: pin 0 in net 1 (line 2): pins count from 1",
                          "stdin:3:1: pin 4 in net 2 (line 3): there are only 3 cells, counted from 1",
                          "2 errors, 0 warnings"])
        many = self.kapris("check", "-", status=3, text="1 1\n" + "0 " * 1200)
        self.assertEqual(many.splitlines()[1000:], ["200 more problems not listed", "1200 errors, 0 warnings"])
        # Each total once, at the weight that takes it too far; then sums that the library refuses: for any number of
        # parts, and for more than two only.
        self.assertEqual(self.kapris("check", "-", status=3, text=f"2 3 11\n{2**61} 1\n1 2\n{2**61 + 1}\n{2**61}\n1\n")
                         .splitlines(),
                         [f"stdin:3:1: net weight: 1 takes the total to {2**61 + 1}, above {2**61}",
                          f"stdin:4:1: cell weight: '{2**61 + 1}' is above {2**61}, the largest number",
                          f"stdin:6:1: cell weight: 1 takes the total to {2**61 + 1}, above {2**61}",
                          "3 errors, 0 warnings"])
        self.assertIn("weights too large", self.kapris("check", "-", status=3, text=f"1 2 1\n{2**60 + 1} 1 2\n"))
        self.assertRegex(self.kapris("check", "-", text=f"1 3 1\n{2**60} 1 2 3\n"),
                         r"\(for more than two parts\)\nto partition: 2 parts about .*\n0 errors, 1 warning\n")
        write("t.hgr.gz", WEIGHTED)
        with open("t.hgr.gz", "r+b") as file:
            file.truncate(30)
        self.assertIn("t.hgr.gz:1:1: the gzip data ends too early", self.kapris("check", "t.hgr.gz", status=3))
        self.kapris("check", "none.hgr", status=6)


if __name__ == "__main__":
    unittest.main()
