#!/usr/bin/env python3
# tests/cli/report_test.py - the page of a result: its numbers, hostile names and hostile results, sizes.
# SPDX-License-Identifier: MIT
"""Tests of the verb report and of the options --report and --records."""

import copy
import html.parser
import json
import os
import random
import re
import shlex
import subprocess
import unittest

from tool import KAPRIS, ToolTest, random_hypergraph, read, write

HOSTILE = "a'b\"<script>alert(1)<\x2fscript>&amp;\n\u202e\U0001f600.hgr"
PICTURES = ["part-weights", "cut-matrix", "spy-before", "spy-after", "net-spans", "starts", "trials", "levels"]


class Page(html.parser.HTMLParser):
    """The tables of a page by id, its texts by id, its tags; fails on tags that do not close."""

    VOID = {"meta", "link", "br"}

    def __init__(self, text):
        super().__init__()
        self.open, self.tables, self.texts, self.tags, self.attributes = [], {}, {}, [], []
        self.feed(text)
        self.close()
        assert not self.open, self.open

    def handle_starttag(self, tag, attrs):
        attrs = dict(attrs)
        self.tags.append(tag)
        self.attributes += attrs.items()
        if tag not in self.VOID:
            self.open.append((tag, attrs.get("id")))
        if tag == "table":
            self.tables[attrs["id"]] = []
        if tag == "tr":
            self.table().append([])
        if tag in ("td", "th"):
            self.table()[-1].append("")

    def handle_startendtag(self, tag, attrs):
        self.tags.append(tag)
        self.attributes += attrs

    def handle_endtag(self, tag):
        assert self.open.pop()[0] == tag, tag

    def handle_data(self, data):
        for tag, name in self.open:
            if name:
                self.texts[name] = self.texts.get(name, "") + data
        if self.open and self.open[-1][0] in ("td", "th"):
            self.table()[-1][-1] += data

    def table(self):
        return self.tables[[name for tag, name in self.open if tag == "table"][-1]]


class Report(ToolTest):
    """A circuit of 400 cells in each working directory."""

    def setUp(self):
        super().setUp()
        self.run_kapris("generate", "circuit", "--cells", "400", "-o", "c.hgr")

    def make(self, *args, status=0):
        """The page of a run and its result."""
        self.run_kapris("partition", *args, "-q", "--report", "page.html", "--json=r.json", status=status)
        with open("page.html", encoding="utf-8") as page, open("r.json", encoding="utf-8") as result:
            return Page(page.read()), json.load(result)

    def check_numbers(self, page, result, file, part, nparts):
        measured = json.loads(self.run_kapris("eval", file, part, "-k", str(nparts), "--matrix", "--nets", "--json").stdout)
        figures = [row[1] for row in page.tables["figures"][1:]]
        self.assertEqual(figures[:3], [str(measured[key]) for key in ("cut", "soed", "connectivity")])
        self.assertAlmostEqual(float(figures[3]), result["best"]["imbalance"], 6)
        self.assertEqual(sorted(page.tables["components-numbers"][1:]),
                         sorted([str(part[key]) for key in ("part", "components", "cells_outside")]
                                for part in measured["part_weights"][:200]))
        weights = {part["part"]: part["weight"] for part in measured["part_weights"]}
        self.assertEqual([row[:2] for row in page.tables["weights"][1:]],
                         [[str(p), str(weights.get(p, 0))] for p in range(nparts)])
        self.assertEqual([row[1:] for row in page.tables["cut-matrix-numbers"][1:]],
                         [[str(weight) for weight in row] for row in measured["matrix"]])
        spans = [len(net["parts"]) for net in measured["cut_nets"]]
        shown = {int(row[0]): int(row[1]) for row in page.tables["spans"][1:]}
        self.assertEqual(sum(shown.values()), measured["nets"])
        self.assertEqual({span: n for span, n in shown.items() if span > 1}, {s: spans.count(s) for s in set(spans)})

    def test_numbers_are_those_of_eval_and_of_the_result(self):
        write("h.hgr", random_hypergraph(1, repeats=True)[0])
        write("w.hgr", random_hypergraph(1, repeats=True, heaviest=2**40)[0])
        write("fixed", "".join(f"{cell % 3 if cell % 4 == 0 else -1}\n" for cell in range(60)))
        alone = ["--members", "0"]
        for file, nparts, extra in (("c.hgr", 2, ["--starts", "4", *alone]), ("c.hgr", 7, ["--scheme", "kway", *alone]),
                                    ("w.hgr", 3, ["-e", "0.5"]),
                                    ("h.hgr", 3, ["--fixed", "fixed", "--target-weights", "1,2,3", "-e", "0.5"])):
            page, result = self.make(file, "-k", str(nparts), "--runs", "3", "-o", "p", *extra)
            self.check_numbers(page, result, file, "p", nparts)
            records = result["records"]
            self.assertEqual([row[:3] for row in page.tables["trials-numbers"][1:]],
                             [[str(trial[key]) for key in ("start", "trial", "value")] for trial in records["trials"]])
            self.assertEqual([[int(cell) for cell in row[2:5]] for row in page.tables.get("levels-numbers", [])[1:]],
                             [[level[key] for key in ("cells", "nets", "pins")] for level in records["levels"]])
            self.assertEqual([name for name in PICTURES if name not in page.texts], [])
            searched = result["options"]["members"] > 0
            self.assertEqual((not records["levels"], "--members 0" in page.texts["levels"]), (searched, searched))
            tree = records["bisections"] if nparts > 2 else []
            self.assertEqual([row[:4:2] + row[3:4] for row in page.tables.get("bisections-numbers", [])[1:]],
                             [[f"{one['first']}-{one['first'] + one['parts'] - 1}", str(one["cut"]), "{} + {}".format(*one["weights"])]
                              for one in tree])
            recursive = result["options"]["scheme"] == "recursive" and not searched
            self.assertEqual(len(records["bisections"]), nparts - 1 if recursive else 0)
            self.assertEqual(page.tags.count("svg"),
                             len(PICTURES) - (len(result["starts"]) == 1) - searched + (len(tree) > 0))
            self.assertFalse({"script", "link", "iframe", "object", "embed"} & set(page.tags))
            # Nothing is loaded from elsewhere.
            for name, value in page.attributes:
                if name in ("href", "src"):
                    self.assertTrue(value.startswith("data:image/png;base64,"), value[:40])
        weights = [int(row[-1]) for row in page.tables["weights"][1:]]
        cellwgts = random_hypergraph(1, repeats=True)[3]
        self.assertEqual(weights, [sum(cellwgts[cell] for cell in range(0, 60, 4) if cell % 3 == p) for p in range(3)])

    def test_generations_of_a_search_follow_from_the_parents(self):
        page, result = self.make("c.hgr", "-k", "5", "--members", "4", "--combinations", "9", "--starts", "2", "-o", "p",
                                 "--objective", "connectivity")
        generations, least = {}, {}
        rows = page.tables["trials-numbers"]
        shown = [dict(zip(rows[0], row)) for row in rows[1:]]
        self.assertEqual(len(shown), len(result["records"]["trials"]))
        for row, trial in zip(shown, result["records"]["trials"]):
            start, number, parents, value = (trial[key] for key in ("start", "trial", "parents", "value"))
            generations[start, number] = max((1 + generations[start, parent] for parent in parents), default=0)
            self.assertEqual(row["of trials"], " and ".join(str(parent) for parent in dict.fromkeys(parents)))
            self.assertEqual(row["generation"], str(generations[start, number]))
            self.assertEqual(row["best so far"], "yes" if value < least.get(start, value + 1) else "")
            least[start] = min(value, least.get(start, value))
            self.assertEqual(row["kept"], "yes" if trial["best"] else "")
        self.assertIn(f"in up to {max(generations.values())} generation", page.texts["trials"])

    def test_results_from_before_the_search_are_read(self):
        result = self.make("c.hgr", "-k", "3", "--members", "0", "-o", "p")[1]
        for key in ("members", "combinations"):
            del result["options"][key]
        for trial in result["records"]["trials"]:
            del trial["parents"]
        write("old.json", json.dumps(result))
        self.run_kapris("report", "old.json", "c.hgr", "p", "-o", "old.html")
        self.assertEqual(read("old.html"), read("page.html"))

    def test_expected_best_follows_from_the_sample(self):
        page, result = self.make("c.hgr", "-k", "6", "--runs", "1", "--starts", "9", "--vcycle", "never", "--members", "0")
        values = [start["cut"] for start in result["starts"] if start["balanced"]]
        rng = random.Random(1)
        for row in page.tables["starts-expected"][1:]:
            n = int(row[0])
            draws = [min(rng.sample(values, n)) for _ in range(4000)]
            spread = max(values) - min(values)
            self.assertAlmostEqual(float(row[1]), sum(draws) / len(draws), delta=0.05 * spread + 0.01)
        self.assertEqual(int(page.tables["starts-expected"][-1][2]), min(values))

    def test_the_command_repeats_the_run(self):
        self.run_kapris("convert", "c.hgr", "m.mtx")
        write("fixed", "0\n" + 399 * "-1\n")
        for args in (["c.hgr", "-k", "5", "--target-weights", "1,2,3,4,5", "--start-range", "2:3", "--objective", "km1"],
                     ["m.mtx", "-k", "3", "--model", "column-net", "--unit-weights", "--preset", "fast", "--reconst"],
                     ["c.hgr", "-k", "4", "--members", "0", "--vcycle", "best"],
                     ["c.hgr", "-k", "2", "--fixed", "fixed", "--scheme", "kway", "--seed", "77", "-e", "0.1"]):
            page, result = self.make(*args, "--runs", "2", "-o", "first")
            words = shlex.split(page.texts["command"])
            self.assertEqual(words[0], "kapris")
            self.run_kapris(*words[1:], "-o", "second", "-q")
            self.assertEqual(read("first"), read("second"))
            # The verb makes the page of the run, reading the input as the run did.
            self.run_kapris("report", "r.json", args[0], "first", "-o", "again.html")
            self.assertEqual(read("again.html"), read("page.html"))

    def test_records_are_there_on_request_and_change_nothing(self):
        args = ("partition", "c.hgr", "-k", "4", "--runs", "1", "--members", "0")
        self.run_kapris(*args, "-o", "plain", "--json=plain.json")
        result = json.loads(self.run_kapris(*args, "-o", "p", "--json", "--records").stdout)
        self.assertEqual((read("p"), result.keys() - json.loads(read("plain.json")).keys()), (read("plain"), {"records"}))
        self.run_kapris("report", "plain.json", "-o", "page.html")
        page = Page(read("page.html"))
        for picture, text in (("trials", "--records"), ("levels", "--records"), ("cut-matrix", "FILE PART")):
            self.assertIn(text, page.texts[picture])

    def test_names_are_harmless_everywhere(self):
        os.mkdir(os.path.dirname(HOSTILE))
        os.rename("c.hgr", HOSTILE)
        self.run_kapris("partition", HOSTILE, "-k", "2", "--runs", "1", "-q", "--report", "page.html", "-o", "p")
        with open("page.html", encoding="utf-8") as file:
            text = file.read()
        page = Page(text)
        self.assertNotIn("script", page.tags)
        self.assertFalse(set("\u202e\u0000") & set(text))
        shell = subprocess.run(["bash", "-c", "printf %s " + " ".join(page.texts["command"].split(" ")[2:3])],
                               stdout=subprocess.PIPE, check=True)
        self.assertEqual(shell.stdout.decode(), HOSTILE)

        os.rename(HOSTILE, b"\xff\xc0\xaf\xed\xa0\x80 -.hgr")
        subprocess.run([KAPRIS, "partition", b"\xff\xc0\xaf\xed\xa0\x80 -.hgr", "-k", "2", "--runs", "1", "-q", "-o", "p",
                        "--report", "page.html"], check=True, stdout=subprocess.DEVNULL)
        with open("page.html", encoding="utf-8") as file:
            command = Page(file.read()).texts["command"]
        shell = subprocess.run(["bash", "-c", "set -- " + command + "; printf %s \"$3\""], stdout=subprocess.PIPE, check=True)
        self.assertEqual(shell.stdout, b"\xff\xc0\xaf\xed\xa0\x80 -.hgr")

    def test_hostile_results_are_refused_with_file_and_key(self):
        self.run_kapris("partition", "c.hgr", "-k", "3", "--runs", "3", "--members", "0", "-o", "p", "--json=good.json",
                        "--records", "-q")
        good = json.loads(read("good.json"))

        def keys(value, path=()):
            for key, inner in value.items() if isinstance(value, dict) else enumerate(value) if isinstance(value, list) else ():
                yield path + (key,)
                yield from keys(inner, path + (key,))

        def name(path):
            return "".join(f"[{key}]" if isinstance(key, int) else f".{key}" for key in path)[1:]

        def changed(path, *value):
            result = copy.deepcopy(good)
            place = result
            for key in path[:-1]:
                place = place[key]
            if value:
                place[path[-1]] = value[0]
            else:
                del place[path[-1]]
            return json.dumps(result)

        rng = random.Random(1)
        paths = [path for path in keys(good) if path[:2] not in (("seconds", "prepare"), ("seconds", "starts"))]
        optional = {"records", "members", "parents"}  # the last two are not in results of older versions
        for path in [path for path in paths if len(path) == 1] + rng.sample(paths, 60):
            write("bad.json", changed(path, {"x": ["</script>"]}))
            self.fails(3, "bad.json:1:1: ", "report", "bad.json", "-o", "page.html")
            if isinstance(path[-1], str) and path[-1] not in optional:
                write("bad.json", changed(path))
                self.fails(3, f"bad.json:1:1: the key {name(path)} is missing", "report", "bad.json", "-o", "page.html")
        for path, value, message in ((("best", "cut"), -1, "best.cut is -1"), (("best", "cut"), 10**30, "best.cut is"),
                                     (("options", "parts"), 10**9, "part_weights has 3 elements, but there are 1000000000"),
                                     (("part_weights",), [1] * 100000, "part_weights has 100000 elements"),
                                     (("starts", 0, "seconds"), "NaN", 'starts[0].seconds is "NaN"'),
                                     (("records", "trials", 2, "parents"), [1, 2], "records.trials[2].parents is [1,2]"),
                                     (("records", "levels", 1, "cells"), 2.5, "records.levels[1].cells is 2.5")):
            write("bad.json", changed(path, value))
            self.fails(3, "bad.json:1:1: " + message, "report", "bad.json", "-o", "page.html")
        for text in ("", "[" * 100000, read("good.json").replace('"cut": ', '"cut": NaN ', 1), '{"cells": 1e999}', "null", "[]"):
            write("bad.json", text)
            self.fails(3, "bad.json:1:1: ", "report", "bad.json", "-o", "page.html")
        write("bad.json", changed(("part_weights",), [2**60, 2**60, 1]))
        self.fails(3, f"bad.json:1:1: part_weights add up to more than {2**61}", "report", "bad.json", "-o", "page.html")
        # Nonsense of the right types makes a page all the same.
        for path, value in ((("starts",), []), (("records", "levels"), []), (("records", "trials"), []), (("records", "bisections"), []), (("part_limits",), [0, 0, 0]),
                            (("part_weights",), [0, 0, 0]), (("options", "epsilon"), 1e15), (("best", "imbalance"), 1e15),
                            (("nets",), 0), (("starts", 0, "cut"), 2**63 - 1), (("records", "trials", 0, "value"), 2**63 - 1)):
            write("odd.json", changed(path, value))
            self.run_kapris("report", "odd.json", "c.hgr", "p", "-o", "page.html")
            self.assertNotRegex(read("page.html"), r'="[^"]*\b(nan|inf)\b')
            Page(read("page.html"))

    def test_figures_of_64_bits_are_exact(self):
        unit = 2**50 + 1
        result = self.make("c.hgr", "-k", "3", "--runs", "3", "--starts", "4", "--members", "0")[1]
        for place in (result["best"], *result["starts"], *result["records"]["trials"], *result["records"]["levels"]):
            for key in {"cut", "soed", "connectivity", "value", "cycled"} & place.keys():
                place[key] = place[key] and place[key] * unit
        for key in ("part_weights", "part_limits"):
            result[key] = [weight * unit for weight in result[key]]
        result["records"]["fixed_weights"] = [unit, 0, 2 * unit]
        # So close to each other that doubles cannot count the steps of a scale between them.
        for number, start in enumerate(result["starts"]):
            start["cut"] = 2**61 + 1 + 128 * number
        write("big.json", json.dumps(result))
        self.run_kapris("report", "big.json", "-o", "big.html")
        page = Page(read("big.html"))
        self.assertEqual([row[1] for row in page.tables["figures"][1:4]],
                         [str(result["best"][key]) for key in ("cut", "soed", "connectivity")])
        total = sum(result["part_weights"])
        self.assertEqual([row[1:4] + row[5:] for row in page.tables["weights"][1:]],
                         [[str(weight), f"{total // 3}.{(10 * (total % 3) + 1) // 3}", str(limit), str(fixed)]
                          for weight, limit, fixed in zip(result["part_weights"], result["part_limits"], [unit, 0, 2 * unit])])
        self.assertEqual([row[1:4] for row in page.tables["starts-numbers"][1:]],
                         [[str(start[key]) for key in ("cut", "soed", "connectivity")] for start in result["starts"]])
        self.assertIn(f"values from {2**61 + 1} to {2**61 + 385}", read("big.html"))
        self.assertEqual(page.tables["starts-expected"][-1][2:], [str(2**61 + 1)] * 2)
        self.assertEqual([row[2] for row in page.tables["trials-numbers"][1:]],
                         [str(trial["value"]) for trial in result["records"]["trials"]])

    def test_files_that_do_not_belong_together_are_refused(self):
        self.run_kapris("partition", "c.hgr", "-k", "3", "--runs", "1", "-o", "p", "--json=r.json", "-q")
        self.run_kapris("generate", "circuit", "--cells", "400", "--seed", "5", "-o", "other.hgr")
        write("q", read("p").replace("2", "1"))
        self.fails(3, "other.hgr:1:1: not the hypergraph that r.json speaks of", "report", "r.json", "other.hgr", "p")
        self.fails(3, "q:1:1: not the partition that r.json speaks of", "report", "r.json", "c.hgr", "q")
        self.fails(2, "FILE and PART go together", "report", "r.json", "c.hgr")
        self.fails(2, "is the input itself", "report", "r.json", "c.hgr", "p", "-o", "./p")
        self.fails(2, "is the input itself", "partition", "c.hgr", "-k", "2", "--report", "c.hgr")
        self.fails(6, "cannot write", "report", "r.json", "-o", "none/page.html")
        self.fails(2, "--records goes into the object of --json", "partition", "c.hgr", "-k", "2", "--records")
        self.fails(2, "--dry-run has no result for --report", "partition", "c.hgr", "-k", "2", "--report", "x", "--dry-run")

    def test_pages_of_many_parts_stay_small(self):
        self.run_kapris("generate", "random", "--cells", "9000", "--nets", "9000", "-o", "h.hgr")
        self.run_kapris("partition", "h.hgr", "-k", "4000", "--runs", "1", "--members", "0", "-e", "1", "-q",
                        "--report", "page.html")
        self.assertLess(os.path.getsize("page.html"), 2_000_000)
        self.assertIn("4000 parts, shown in 64 groups", Page(read("page.html")).texts["part-weights"])


if __name__ == "__main__":
    unittest.main()
