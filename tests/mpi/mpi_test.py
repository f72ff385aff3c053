#!/usr/bin/env python3
# tests/mpi/mpi_test.py - kapris-mpi: the bytes of one process with any ranks, signals, ranks that are killed, journals.
# SPDX-License-Identifier: MIT
#
#   mpi_test.py KAPRIS KAPRIS_MPI [unittest arguments]
#
# KAPRIS_TEST_KILLS is the number of runs in which a rank, or all of them, are killed at random moments, drawn from
# KAPRIS_TEST_SEED; KAPRIS_TEST_KILLS=10 is a long form, which also takes more ranks.
"""Tests of kapris-mpi under mpirun."""

import json
import os
import pathlib
import random
import re
import signal
import subprocess
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "cli"))
MPI = os.path.abspath(sys.argv.pop(2))

from tool import KAPRIS, ToolTest, at_work, fields, read  # noqa: E402

KILLS = int(os.environ.get("KAPRIS_TEST_KILLS", "1"))
LONG = "KAPRIS_TEST_KILLS" in os.environ
SEED = int(os.environ.get("KAPRIS_TEST_SEED", "1"))
# Ranks share the processors; nobody asks who we are.
MPIRUN = ["mpirun", "--allow-run-as-root", "--oversubscribe"]
RECOVERY = ["--enable-recovery", "-x", "KAPRIS_MPI_PATIENCE=2"]


def figures(path):
    """The starts of a JSON result and the best of them, without times."""
    result = json.loads(read(path))
    return [{**start, "seconds": 0} for start in result["starts"]], result["best"], result["options"]


class Mpi(ToolTest):
    """A circuit and what one process makes of it."""

    def setUp(self):
        super().setUp()
        self.run_kapris("generate", "circuit", "--cells", "1500", "-o", "c.hgr")
        self.starts = ("partition", "c.hgr", "-k", "6", "--seed", "3", "--starts", "16", "--members", "2", "--runs", "1")
        self.run_kapris(*self.starts, "-o", "one", "--json=one.json")

    def begin(self, nranks, *args, options=()):
        child = subprocess.Popen([*MPIRUN, *options, "-n", str(nranks), MPI, *args], stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE, encoding="utf-8", start_new_session=True)
        self.addCleanup(child.communicate)
        self.addCleanup(lambda: child.poll() is None and os.killpg(child.pid, signal.SIGKILL))
        return child

    def run_mpi(self, nranks, *args, status=0, options=()):
        child = self.begin(nranks, *args, options=options)
        stdout, stderr = child.communicate(timeout=120)
        self.assertEqual(child.returncode, status, (stdout, stderr))
        return stdout, stderr

    def ranks(self, child):
        """The processes of the ranks, by their ranks."""
        found = {}
        for pid in subprocess.run(["pgrep", "-P", str(child.pid)], stdout=subprocess.PIPE, encoding="ascii",
                                  check=False).stdout.split():
            try:
                variables = pathlib.Path(f"/proc/{pid}/environ").read_bytes().decode(errors="replace")
            except OSError:
                continue
            rank = re.search(r"OMPI_COMM_WORLD_RANK=(\d+)", variables)
            if rank:
                found[int(rank[1])] = int(pid)
        return found

    def await_ranks(self, child, nranks):
        """Until all ranks search; returns their processes."""
        while len(found := self.ranks(child)) < nranks or not all(at_work(pid) for pid in found.values()):
            self.assertIsNone(child.poll())
            time.sleep(0.01)
        return found

    def await_start(self, path="j"):
        """Until a start has been completed."""
        for _ in range(6000):
            if os.path.exists(path) and len(read(path).splitlines()) > 1:
                return
            time.sleep(0.01)
        self.fail("no start was completed")

    def check_partition(self, path, cut):
        done = self.run_kapris("eval", "c.hgr", path, "-k", "6")
        self.assertEqual(fields(done.stdout)["cut"], str(cut))

    def test_any_number_of_ranks_and_threads_gives_the_bytes_of_one_process(self):
        for nranks, nthreads in [(1, 2), (2, 1), (3, 3), (4, 1), (7, 2)] if LONG else [(3, 2), (4, 1)]:
            self.run_mpi(nranks, *self.starts, "-t", str(nthreads), "-o", "out", "--json=json")
            self.assertEqual(read("out"), read("one"), (nranks, nthreads))
            self.assertEqual(figures("json"), figures("one.json"))
        self.assertEqual(json.loads(read("json"))["limits"]["ranks"], nranks)
        # Options that other ranks have to know: fixed cells, weights, what is not the default. Trials come home, too.
        with open("fixed", "w", encoding="ascii") as file:
            file.writelines(f"{i // 20 % 6 if i % 20 == 0 else -1}\n" for i in range(1500))
        more = ("partition", "c.hgr", "-k", "6", "--fixed", "fixed", "--target-weights", "1,2,3,1,1,1", "-e", "0.1",
                "--objective", "soed", "--scheme", "kway", "--start-range", "3:6", "--members", "2", "--records")
        self.run_kapris(*more, "-o", "one", "--json=one.json")
        self.run_mpi(3, *more, "-o", "out", "--json=json")
        self.assertEqual(read("out"), read("one"))
        self.assertEqual(figures("json"), figures("one.json"))
        records = [json.loads(read(path))["records"]["trials"] for path in ("json", "one.json")]
        self.assertEqual(*records)

    def test_a_time_limit_is_one_search_of_all_ranks(self):
        begun = time.monotonic()
        stdout, _ = self.run_mpi(4, "partition", "c.hgr", "-k", "6", "--time-limit", "2", "-o", "out", "--json=json")
        self.assertGreaterEqual(time.monotonic() - begun, 2)
        result = json.loads(read("json"))
        self.assertEqual((result["status"], len(result["starts"])), ("time limit", 4))
        self.assertEqual(result["best"]["cut"], min(start["cut"] for start in result["starts"]))
        self.check_partition("out", fields(stdout)["cut"])

    def test_errors_are_told_once(self):
        with open("bad.hgr", "w", encoding="ascii") as file:
            file.write("1 2\n1 9\n")
        for status, message, *args in ((3, "bad.hgr:2:3: ", "bad.hgr", "-k", "2"),
                                       (6, "cannot open none", "none", "-k", "2"),
                                       (2, "there is no option '--sead'", "c.hgr", "-k", "2", "--sead", "1"),
                                       (2, "each rank is a start", "c.hgr", "-k", "2", "--starts", "9", "--time-limit", "9"),
                                       (5, "--memory-limit of 400000 bytes is too low", "c.hgr", "-k", "2",
                                        "--memory-limit", "400000")):
            _, stderr = self.run_mpi(3, "partition", *args, status=status)
            self.assertEqual(stderr.count(message), 1, stderr)
        self.assertFalse(os.path.exists("c.hgr.part.2"))

    def test_signals_to_mpirun_leave_the_best_so_far(self):
        for number, mode in ((signal.SIGTERM, ("--time-limit", "60")), (signal.SIGUSR1, ("--starts", "2000"))):
            child = self.begin(3, "partition", "c.hgr", "-k", "6", *mode, "-o", "out", "--json=json")
            self.await_ranks(child, 3)
            child.send_signal(number)
            child.communicate(timeout=60)
            result = json.loads(read("json"))
            self.assertEqual(result["status"], "cancelled")
            self.check_partition("out", result["best"]["cut"])
            os.remove("out")

    def kill_once(self, rng):
        """All ranks are killed, or one with or without --enable-recovery; the same command with the journal ends well."""
        for path in ("j", "out", "json"):
            if os.path.exists(path):
                os.remove(path)
        command = (*self.starts, "-o", "out", "--json=json", "--journal", "j")
        for journal, options in (("k", RECOVERY), ("j", [])):
            child = self.begin(4, *instead_of(command, "j", journal), options=options)
            self.await_start(journal)
            time.sleep(rng.uniform(0, 0.4))
            ranks = self.ranks(child)
            if len(ranks) == 4:
                os.kill(ranks[rng.randrange(1, 4)], signal.SIGKILL)
            _, stderr = child.communicate(timeout=60)
            if options:
                self.assertEqual((read("out"), child.returncode), (read("one"), 0), stderr)
            else:
                self.check_partition("out", json.loads(read("json"))["best"]["cut"])
            os.remove("out")
        os.remove("k")
        child = self.begin(3, *instead_of(command, "j", "k"))
        self.await_start("k")
        time.sleep(rng.uniform(0, 0.4))
        for pid in [*self.ranks(child).values(), child.pid]:
            os.kill(pid, signal.SIGKILL)
        child.communicate(timeout=60)
        for journal in ("j", "k"):
            self.run_mpi(rng.choice((1, 2, 3)), *instead_of(command, "j", journal))
            self.assertEqual(read("out"), read("one"))
            self.assertEqual(figures("json"), figures("one.json"))
        os.remove("k")

    def test_ranks_that_are_killed(self):
        for kill in range(KILLS):
            with self.subTest(seed=SEED, kill=kill):
                self.kill_once(random.Random(f"{SEED} {kill}"))

    def test_a_rank_that_is_lost_under_a_time_limit(self):
        child = self.begin(3, "partition", "c.hgr", "-k", "6", "--time-limit", "5", "-o", "out", "--json=json",
                           options=RECOVERY)
        os.kill(self.await_ranks(child, 3)[1], signal.SIGKILL)
        _, stderr = child.communicate(timeout=60)
        result = json.loads(read("json"))
        self.assertEqual((result["status"], len(result["starts"])), ("time limit", 3))
        self.assertIn("rank 1 has been silent", stderr)
        self.check_partition("out", result["best"]["cut"])


def instead_of(words, old, new):
    return tuple(new if word == old else word for word in words)


if __name__ == "__main__":
    unittest.main()
