#!/usr/bin/env python3
# tests/cli/solve_test.py - partition, refine and best: options, results as JSON, early ends, what a terminal shows.
# SPDX-License-Identifier: MIT
"""Tests of the verbs that run the library."""

import fcntl
import json
import os
import pty
import re
import select
import signal
import struct
import subprocess
import termios
import time
import unittest

from tool import KAPRIS, ToolTest, fields, random_hypergraph, read, write

FOREVER = ("--members", "0", "--runs", "2000000000")


def drain(terminal, until=None):
    """What was written to a terminal, which may take its time to deliver, or the beginning with a wanted text."""
    text = b""
    while select.select([terminal], [], [], 60 if until else 0.5)[0]:
        text += os.read(terminal, 65536)
        if until and until in text.decode():
            break
    return text.decode()


class Solve(ToolTest):
    """A circuit of 400 cells in each working directory."""

    def setUp(self):
        super().setUp()
        self.run_kapris("generate", "circuit", "--cells", "400", "-o", "c.hgr")

    def result(self, *args, **options):
        """The object that the command prints."""
        return json.loads(self.run_kapris(*args, "--json", **options).stdout)

    def test_options_reach_the_library_and_the_result_tells_them(self):
        # Sums above 2^53 would not be exact in doubles.
        write("h.hgr", random_hypergraph(1, repeats=False, heaviest=2**52)[0])
        write("w", "3\n1 , 2\n")
        done = self.result("partition", "h.hgr", "-k", "3", "--scheme", "kway", "--objective", "soed",
                           "--coarsening", "pairs", "--refinement", "one-way-fm", "--vcycle", "never", "--runs", "2",
                           "--members", "0", "--combinations", "4", "--starts", "3", "-t", "2",
                           "--seed", "9", "-e", "0.25", "--target-weights", "@w", "--time-limit", "60",
                           "--memory-limit", "1G", "-o", "h.part")
        options = {"parts": 3, "scheme": "kway", "objective": "soed", "coarsening": "pairs",
                   "refinement": "one-way-fm", "vcycle": "never", "runs": 2, "members": 0, "combinations": 4, "reconst": False, "epsilon": 0.25, "min_epsilon": 1.0, "allow_empty": False,
                   "target_weights": [3 / 6, 1 / 6, 2 / 6], "seed": 9}
        self.assertEqual(done["options"], options)
        self.assertEqual(done["limits"], {"threads": 2, "seconds": 60.0, "bytes": 2**30})
        self.assertEqual([start["number"] for start in done["starts"]], [0, 1, 2])
        best = min(done["starts"], key=lambda s: (s["excess"], s["soed"], s["cut"], s["imbalance"], s["number"]))
        self.assertEqual(done["best"], {"start": best["number"]} | {key: best[key] for key in
                                        ("cut", "soed", "connectivity", "imbalance", "excess", "balanced")} | {"empty_parts": 0})
        measured = self.result("eval", "h.hgr", "h.part")
        for key in ("cut", "soed", "connectivity"):
            self.assertEqual(done["best"][key], measured[key])
        self.assertEqual(done["part_weights"], [part["weight"] for part in measured["part_weights"]])
        total = sum(done["part_weights"])
        self.assertEqual(done["part_limits"], [5 * -(-share * total // 6) // 4 for share in (3, 1, 2)])
        self.assertEqual((done["schema"], done["status"], done["output"]["path"]), ("kapris-result-1", "ok", "h.part"))

    def test_threads_and_the_road_to_the_file_do_not_change_the_result(self):
        parts = set()
        for args in (["-t", "1"], ["-t", "0"], ["-t", "3", "--quiet"], ["--epsilon", "0.03", "--preset", "default"]):
            self.run_kapris("partition", "c.hgr", "-k", "6", "--starts", "2", "-o", "c.part", *args)
            parts.add(read("c.part"))
        parts.add(self.run_kapris("partition", "-", "-k", "6", "--starts", "2", "-o", "-", text=read("c.hgr")).stdout)
        self.assertEqual(len(parts), 1)
        clock = [self.result("partition", "c.hgr", "-k", "2", "--runs", "1", "--seed", "-1")["options"]["seed"]]
        self.assertGreater(clock[0], 10**6)
        # The percentage of a bisection, and what quiet leaves of the report.
        self.assertEqual(self.result("partition", "c.hgr", "-k", "4", "--ubfactor", "5", "--runs", "1")
                         ["options"]["epsilon"], 0.21)
        done = self.run_kapris("partition", "c.hgr", "-k", "6", "-q", "--json=r.json")
        self.assertEqual((done.stdout, done.stderr), ("c.hgr.part.6\n", ""))
        self.assertEqual(json.loads(read("r.json"))["output"]["path"], "c.hgr.part.6")

    def test_dry_run_says_what_would_be_done_and_does_nothing(self):
        before = sorted(os.listdir("."))
        report = fields(self.run_kapris("partition", "c.hgr", "-k", "3", "--dry-run", "--start-range", "4:6").stdout)
        self.assertEqual((report["starts"], report["would write"]), ("3, numbers 4 to 6", "c.hgr.part.3"))
        self.assertEqual(report["part 0"], "about 133.3, at most 138")
        cost = {}
        for extra in ((), ("--starts", "400"), ("--starts", "400", "-t", "4"), ("--starts", "400", "--time-limit", "1.5")):
            text = fields(self.run_kapris("partition", "c.hgr", "-k", "3", "--dry-run", *extra).stdout)["cost"]
            cost[extra] = [float(number) for number in re.match(r"about ([\d.]+) s, ([\d.]+) MB", text).groups()]
        one, many, threads, limited = cost.values()
        self.assertLess(one[0], many[0] / 100)
        self.assertAlmostEqual(threads[0] / many[0], 0.25, delta=0.05)
        self.assertEqual(limited[0], 1.5)
        self.assertGreater(threads[1], 2 * many[1])
        self.assertEqual(sorted(os.listdir(".")), before)

    def test_best_of_several_machines_is_what_one_gives(self):
        args = ("-k", "5", "--runs", "1", "--seed", "3")
        whole = self.result("partition", "c.hgr", *args, "--starts", "9", "-o", "whole")
        for name, span in (("a", "0:3"), ("b", "4:4"), ("c", "5:8")):
            self.run_kapris("partition", "c.hgr", *args, "--start-range", span, "-o", name, f"--json={name}.json")
        done = self.run_kapris("best", "c.json", "a.json", "b.json", "-o", "merged", "--json=merged.json")
        self.assertEqual((read("merged"), done.stderr), (read("whole"), ""))
        merged = json.loads(read("merged.json"))
        self.assertEqual(merged["best"], whole["best"])
        self.assertEqual([{**start, "seconds": 0} for start in merged["starts"]],
                         [{**start, "seconds": 0} for start in whole["starts"]])
        self.assertIn("no completed start 4:", self.run_kapris("best", "a.json", "c.json").stderr)

        self.run_kapris("partition", "c.hgr", *args, "-e", "0.1", "-o", "d", "--json=d.json")
        self.fails(2, "epsilon is 0.03 in one and 0.1 in the other", "best", "a.json", "d.json")
        self.run_kapris("generate", "circuit", "--cells", "400", "--seed", "2", "-o", "c.hgr")
        self.run_kapris("partition", "c.hgr", *args, "-o", "d", "--json=d.json")
        self.fails(2, "do not belong together: ", "best", "a.json", "d.json")
        write("a", read("b"))
        self.fails(3, "a:1:1: not the partition that a.json speaks of", "best", "a.json", "-o", "x")
        for text in ("[1", "{}", read("b.json")[:-2] + ', "x": ' + "[" * 200000 + "]" * 200000 + "}",
                     read("b.json").replace('"number": 4', '"number": 18446744073709551615'), "[]", '{"schema": 3}', read("b.json").replace('"balanced": true', '"balanced": 2')):
            write("bad.json", text)
            self.fails(3, "bad.json:1:1: not a", "best", "a.json", "bad.json")

    def test_the_objective_decides_among_results(self):
        done = self.result("partition", "c.hgr", "-k", "3", "--runs", "1", "--members", "0", "-o", "p")
        for name, better in (("cut", "a.json"), ("soed", "a.json"), ("connectivity", "b.json")):
            done["options"]["objective"] = name
            for letter, cut, soed in (("a", 10, 30), ("b", 12, 31)):
                done["best"].update(cut=cut, soed=soed, connectivity=soed - cut)
                write(f"{letter}.json", json.dumps(done))
            self.assertEqual(fields(self.run_kapris("best", "a.json", "b.json").stdout)["of"], better)

    def interrupted(self, signals, *args, terminal=None, meanwhile=lambda: time.sleep(0.1)):
        """Runs the command, sends the signals when it is at work, and returns it."""
        child = subprocess.Popen([KAPRIS, "partition", "c.hgr", "-k", "2", *FOREVER, *args],
                                 stdout=subprocess.PIPE, stderr=terminal or subprocess.PIPE, encoding="ascii")
        self.await_work(child)
        meanwhile()
        for number in signals:
            child.send_signal(number)
        child.wait(60)
        return child

    def test_early_ends_leave_the_best_so_far(self):
        # A limit that was asked for is kept with success, if the result is balanced. Starts that never began are left out.
        for extra in (FOREVER, ["--starts", "1000000", "--json=r.json"], ["--members", "1", "-t", "2"]):
            done = self.run_kapris("partition", "c.hgr", "-k", "2", *extra, "--time-limit", "0.3")
            self.assertIn("time limit", fields(done.stdout)["status"])
            self.run_kapris("eval", "c.hgr", "c.hgr.part.2", "-k", "2", "--epsilon", "0.03")
        result = json.loads(read("r.json"))
        self.assertEqual((result["status"], [start["number"] for start in result["starts"]]), ("time limit", [0]))
        write("heavy.hgr", "1 3 10\n1 2 3\n5\n1\n1\n")
        for extra in (FOREVER, []):
            self.run_kapris("partition", "heavy.hgr", "-k", "2", *extra, "--time-limit", "0.1", "-o", "p", status=4)
        for number in (signal.SIGINT, signal.SIGTERM):
            os.remove("c.hgr.part.2")
            child = self.interrupted([number])
            self.assertEqual((child.returncode, child.stderr.read()), (130, ""))
            self.assertEqual(fields(child.stdout.read())["written"], "c.hgr.part.2")
            self.run_kapris("eval", "c.hgr", "c.hgr.part.2", "-k", "2", "--epsilon", "0.03")
            child.stdout.close()
            child.stderr.close()

    def test_a_terminal_shows_progress_and_colours_unless_they_are_unwanted(self):
        master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 60, 0, 0))
        begun = time.monotonic()
        shown = []
        self.interrupted([signal.SIGINT], "--starts", "3", terminal=slave,
                         meanwhile=lambda: shown.append(drain(master, "best cut"))).stdout.close()
        shown = "".join([*shown, drain(master)]).split("\r\x1b[K")
        lines = [line for line in shown if line]
        self.assertLessEqual(len(lines), 5 * (time.monotonic() - begun) + 2)
        self.assertTrue(any(re.match(r"(coarsening|refining|initial partition) \d+ cells, start 1/3, best cut \d+, [\d.]+ s", line)
                            for line in lines), shown)
        self.assertTrue(all(len(line) < 60 for line in lines), lines)
        self.assertEqual(shown[-1], "")

        environment = {name: value for name, value in os.environ.items() if name != "NO_COLOR"} | {"TERM": "xterm"}
        for args, extra, coloured in (([], {}, True), ([], {"NO_COLOR": "1"}, False), (["--color", "never"], {}, False),
                                      (["--color=always"], {"NO_COLOR": "1"}, True), ([], {"TERM": "dumb"}, False)):
            subprocess.run([KAPRIS, *args, "partition", "none", "-k", "2"], stderr=slave, env=environment | extra, check=False)
            self.assertEqual("\x1b[" in drain(master), coloured, (args, extra))
        os.close(slave)
        os.close(master)
        self.assertIn("\x1b[", self.run_kapris("partition", "none", "-k", "2", "--color", "always", status=6).stderr)


if __name__ == "__main__":
    unittest.main()
