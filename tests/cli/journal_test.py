#!/usr/bin/env python3
# tests/cli/journal_test.py - a run with a journal that is killed at any moment goes on to what an unbroken one gives.
# SPDX-License-Identifier: MIT
#
# KAPRIS_TEST_KILLS runs are killed at random moments, drawn from KAPRIS_TEST_SEED; KAPRIS_TEST_KILLS=200 is a long form.
"""Tests of partition --journal."""

import contextlib
import json
import os
import random
import resource
import signal
import subprocess
import sys
import time
import unittest

from tool import KAPRIS, ToolTest, at_work, fields, read, write

KILLS = int(os.environ.get("KAPRIS_TEST_KILLS", "8"))
SEED = int(os.environ.get("KAPRIS_TEST_SEED", "1"))


def instead(words, *options):
    """The words of a command with other values of options, or with more of them."""
    words = list(words)
    for name, *_ in (options[i:i + 2] for i in range(0, len(options), 2)):
        if name in words:
            at = words.index(name)
            del words[at:at + 2]
    return (*words, *options)


def without_times(text):
    """A JSON result but for times and what depends on them: the memory, and the threads, which may differ."""
    result = json.loads(text)
    for key in ("seconds", "peak_bytes", "limits"):
        del result[key]
    for start in result["starts"]:
        del start["seconds"]
    return json.dumps(result)


class Journal(ToolTest):
    """A run of eight starts."""

    unbroken = None  # hypergraph, partition and result, which are made once

    def setUp(self):
        super().setUp()
        self.args = ("partition", "c.hgr", "-k", "5", "--seed", "3", "--starts", "8", "--members", "2", "--combinations",
                     "2", "-o", "out")
        self.journaled = (*self.args, "--journal", "j", "--json=json")
        if Journal.unbroken is None:
            self.run_kapris("generate", "circuit", "--cells", "600", "-o", "c.hgr")
            self.run_kapris(*self.args, "--json=json")
            Journal.unbroken = read("c.hgr"), read("out"), without_times(read("json"))
            for path in ("out", "json"):
                os.remove(path)
        hypergraph, self.part, self.result = Journal.unbroken
        write("c.hgr", hypergraph)

    def finish(self, *args):
        """Runs the command to its end: the result of an unbroken run."""
        done = self.run_kapris(*self.journaled, *args)
        self.assertEqual((read("out"), without_times(read("json"))), (self.part, self.result))
        return done

    def kill_once(self, rng):
        """A run that is killed up to three times, and goes on with any number of threads."""
        for path in ("j", "out", "json"):
            with contextlib.suppress(FileNotFoundError):
                os.remove(path)
        lengths = []
        for _ in range(rng.choice((1, 1, 2, 3))):
            child = subprocess.Popen([KAPRIS, *self.journaled, "-t", rng.choice("12")], stdout=subprocess.DEVNULL,
                                     stderr=subprocess.DEVNULL)
            while rng.random() < 0.9 and child.poll() is None and not at_work(child.pid):
                time.sleep(0.001)
            time.sleep(rng.uniform(0, 0.3))
            child.kill()
            child.wait()
            lengths.append(len(read("j").splitlines()) if os.path.exists("j") else 0)
        # What was there has stayed, but for a line that was torn.
        self.assertTrue(all(after >= before - 1 for before, after in zip(lengths, lengths[1:])), lengths)
        self.finish("-t", rng.choice("123"))
        return lengths[-1]

    def test_runs_that_are_killed_go_on(self):
        lengths = []
        for kill in range(KILLS):
            with self.subTest(seed=SEED, kill=kill):
                lengths.append(self.kill_once(random.Random(f"{SEED} {kill}")))
        if "KAPRIS_TEST_KILLS" in os.environ:
            print("lines in the journals after the last kill:", sorted(lengths), file=sys.stderr)

    def test_a_journal_torn_at_any_byte(self):
        self.finish()
        whole = read("j")
        ends = [i + 1 for i, byte in enumerate(whole) if byte == "\n"]
        self.assertEqual(len(ends), 9)
        rng = random.Random(1)
        for cut in (0, 1, ends[0] - 1, ends[0], ends[0] + 1, ends[4] - 1, ends[4], len(whole) - 1,
                    *(rng.randrange(len(whole)) for _ in range(3))):
            write("j", whole[:cut])
            done = self.finish()
            self.assertEqual(len(read("j").splitlines()), 9)
            nkept = max(sum(end <= cut for end in ends) - 1, 0)
            self.assertEqual(f"note: {nkept} of 8 starts are in the journal" in done.stderr, nkept > 0, (cut, done.stderr))
            torn = cut > 0 and cut not in ends
            self.assertEqual("the last line is torn and left out" in done.stderr, torn, (cut, done.stderr))
        # What a disk can leave where the last line should be.
        for rubbish in ("\0" * 99, "\0" * 99 + "\n", whole[ends[3] + 9:ends[4]]):
            write("j", whole[:ends[4]] + rubbish)
            self.assertIn("j:6: the last line is torn", self.finish().stderr)

    def test_a_finished_journal_gives_the_answer(self):
        self.finish()
        before = read("j")
        self.assertIn("note: 8 of 8 starts are in the journal", self.finish("-t", "2").stderr)
        self.assertEqual(read("j"), before)
        # More starts than before, and others.
        for more in (("--starts", "10"), ("--start-range", "6:10")):
            args = [word for word in self.args if word not in ("--starts", "8", "-o", "out")]
            self.run_kapris(*args, *more, "-o", "unbroken")
            self.run_kapris(*args, *more, "-o", "out", "--journal", "j")
            self.assertEqual(read("out"), read("unbroken"))
        numbers = [json.loads(line)["start"] for line in read("j").splitlines()[1:]]
        self.assertEqual(sorted(numbers), list(range(11)))

    def test_term_keeps_the_journal(self):
        child = subprocess.Popen([KAPRIS, *instead(self.journaled, "--starts", "2000")], stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE, encoding="utf-8")
        while not os.path.exists("j") or len(read("j").splitlines()) < 3:
            self.assertIsNone(child.poll())
            time.sleep(0.01)
        child.send_signal(signal.SIGTERM)
        child.communicate(timeout=60)
        self.assertEqual(child.returncode, 130)
        completed = [start["number"] for start in json.loads(read("json"))["starts"] if start["completed"]]
        self.assertEqual([json.loads(line)["start"] for line in read("j").splitlines()[1:]], completed)
        self.assertGreaterEqual(len(completed), 2)
        self.finish()

    def test_journals_of_other_runs_and_what_is_no_journal(self):
        self.finish()
        whole = read("j")
        write("other.hgr", read("c.hgr").replace("\n1 ", "\n2 ", 1))
        write("fixed", "0\n" + "-1\n" * 599)
        write("groups", "1 2\n")
        belongs = "the journal j belongs to another run: "
        for what, *args in ((belongs + "options.seed is 3 there and 4 here", "--seed", "4"),
                            (belongs + "options.epsilon is 0.03 there and 0.1 here", "-e", "0.1"),
                            (belongs + "options.members is 2 there and 3 here", "--members", "3"),
                            (belongs + "options.parts is 5 there and 4 here", "-k", "4"),
                            (belongs + "fixed is null there", "--fixed", "fixed"),
                            (belongs + "groups is null there", "--groups", "groups")):
            self.fails(2, what, *instead(self.journaled, *args))
        self.fails(2, belongs + "hash is ", "partition", "other.hgr", *self.journaled[2:])
        for text, message in ((read("c.hgr"), "j:1:1: not a journal"), ('{"schema":"kapris-result-1"}\n', "not a journal"),
                              ("{}\n", "not a journal")):
            write("j", text)
            self.fails(3, message, *self.journaled)

        # A line in the middle that is no longer what was written.
        lines = whole.splitlines()
        middle = json.loads(lines[4])
        for key, value in (("part", middle["part"][:-9] + "AAAA" + middle["part"][-5:]), ("hash", "0" * 16), ("seed", 7),
                           ("start", -1), ("start", 3.5), ("seconds", None), ("part", "?")):
            write("j", "\n".join([*lines[:4], json.dumps({**middle, key: value}), *lines[5:]]) + "\n")
            self.fails(3, "j:5:1: this line of the journal is damaged", *self.journaled)

    def test_uses_that_make_no_sense(self):
        self.fails(2, "--journal needs a --seed of 0 or more", *instead(self.journaled, "--seed", "random"))
        self.fails(2, "--journal keeps starts that were completed", *self.journaled, "--time-limit", "9")
        self.fails(2, "--journal has no trials", *self.journaled, "--records")
        self.fails(2, "--journal needs a file", *self.args, "--journal", "-")
        self.fails(2, "is the input itself", *self.args, "--journal", "c.hgr")
        self.fails(2, "two results are both to be out", *self.args, "--journal", "out")
        self.fails(6, "cannot write none/j", *self.args, "--journal", "none/j")
        os.mkfifo("pipe")
        self.run_kapris(*self.args, "--journal", "pipe", status=2)

    def test_one_run_at_a_time(self):
        child = subprocess.Popen([KAPRIS, *instead(self.journaled, "--starts", "100000")], stdout=subprocess.DEVNULL,
                                 stderr=subprocess.DEVNULL)
        self.addCleanup(child.wait)
        self.addCleanup(child.kill)
        self.await_work(child)
        done = self.run_kapris(*self.journaled, status=6)
        self.assertIn("another run is writing the journal j", done.stderr)

    def test_a_journal_that_cannot_grow_costs_no_result(self):
        done = self.run_kapris(*self.args, "--journal", "j", "-q", status=0,
                               preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (3000, 3000)))
        self.assertIn("cannot write j: File too large; the run goes on without a journal", done.stderr)
        self.assertEqual(read("out"), self.part)
        self.assertTrue(read("j").endswith("\n"))
        self.finish()


if __name__ == "__main__":
    unittest.main()
