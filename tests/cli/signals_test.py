#!/usr/bin/env python3
# tests/cli/signals_test.py - no signal loses a partition: pairs and triples at any moment, while results are written, after.
# SPDX-License-Identifier: MIT
#
# KAPRIS_TEST_KILLS runs are killed at random moments, drawn from KAPRIS_TEST_SEED: KAPRIS_TEST_KILLS=400 is a long form.
# What a run was doing when a signal came is the machine's choice; the test looks at it and knows what must follow.
"""Tests of the verbs partition and refine under signals."""

import collections
import fcntl
import json
import os
import pty
import random
import resource
import select
import signal
import subprocess
import sys
import time
import unittest

from tool import ENDING, KAPRIS, ToolTest, at_work, fields, read, write

KILLS = int(os.environ.get("KAPRIS_TEST_KILLS", "24"))
SEED = int(os.environ.get("KAPRIS_TEST_SEED", "1"))
FOREVER = ("--members", "0", "--runs", "2000000000")
NPARTS = 3

# The children start as a shell starts them, even if the tests run under nohup.
for number in ENDING:
    if signal.getsignal(number) == signal.SIG_IGN:
        signal.signal(number, signal.SIG_DFL)
resource.setrlimit(resource.RLIMIT_CORE, (0, resource.getrlimit(resource.RLIMIT_CORE)[1]))


def cut_of(path, part):
    """From the definition: the weight of the nets with cells in several parts."""
    lines = read(path).splitlines()
    nnets = int(lines[0].split()[0])
    nets = (list(map(int, line.split())) for line in lines[1:nnets + 1])
    return sum(net[0] for net in nets if len({part[pin - 1] for pin in net[1:]}) > 1)


class Signals(ToolTest):
    """A small circuit, and a larger one on which nothing is done at once."""

    def setUp(self):
        super().setUp()
        for name, cells in (("small.hgr", 400), ("large.hgr", 20000)):
            self.run_kapris("generate", "circuit", "--cells", str(cells), "--net-weights", "1:5", "-o", name)
            write(name + ".given", "".join(f"{cell * NPARTS // cells}\n" for cell in range(cells)))
        self.inputs = sorted(os.listdir("."))

    def begin(self, verb, name, *args, **options):
        """Starts a command at the head of a group of its own."""
        given = [name + ".given"] if verb == "refine" else []
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
        child = subprocess.Popen([KAPRIS, verb, name, *given, "-k", str(NPARTS), "--epsilon", "0.1", *args],
                                 encoding="ascii", start_new_session=True, **options)
        self.addCleanup(lambda: [stream.close() for stream in (child.stdin, child.stdout, child.stderr) if stream])
        self.addCleanup(child.wait)
        self.addCleanup(child.kill)
        return child

    def check_partition(self, name, text, summary, result):
        """A part for every cell, and the cut that the summary and the JSON result tell."""
        lines = text.split("\n")
        self.assertEqual(len(lines) - 1, len(read(name + ".given").splitlines()))
        self.assertTrue(lines.pop() == "" and set(lines) <= {str(p) for p in range(NPARTS)})
        cut = cut_of(name, lines)
        self.assertEqual((result["best"]["cut"], fields(summary)["cut"]), (cut, str(cut)))

    def kill_once(self, rng):
        """One run that two or three signals meet at any moment; returns their number and its status."""
        for path in set(os.listdir(".")) - set(self.inputs):
            os.remove(path)
        verb, name = rng.choice(("partition", "partition", "refine")), rng.choice(("small.hgr", "small.hgr", "large.hgr"))
        runs = ("--runs", str(rng.randrange(1, 40))) if name == "small.hgr" and rng.random() < 0.4 else FOREVER
        out = rng.choice(("out", "out.gz", "-"))
        args = [*runs, "-t", rng.choice("12"), "-o", out, "--json=json"]
        expected = ["json"] + [out] * (out != "-")
        if rng.random() < 0.3:
            args += ["--report", "page"]
            expected.append("page")
        old = [path for path in expected if rng.random() < 0.5]
        for path in old:
            write(path, "old\n")

        # Two of Ctrl-C at most: whether a third one ends the run is a matter of time.
        draw = [signal.SIGTERM] * 6 + [number for number in ENDING if number != signal.SIGINT]
        sent = rng.choices(draw, k=rng.choice((2, 2, 3)))
        for i in rng.choice(((), (), (0,), (0, 1))):
            sent[i] = signal.SIGINT
        early = rng.random() < 0.3
        moment = rng.choice((0, rng.uniform(0, 0.02 if early else 0.2)))
        gaps = [rng.choice((0, 10 ** rng.uniform(-4, -1))) for _ in sent]
        send = [rng.choice((os.kill, os.killpg)) for _ in sent]

        child = self.begin(verb, name, *args)
        while not early and child.poll() is None and not at_work(child.pid):
            time.sleep(0.002)
        time.sleep(moment)
        for i, number in enumerate(sent):
            if i == 0:
                begun = child.poll() is None and at_work(child.pid)
            if child.poll() is None:
                send[i](child.pid, number)
            time.sleep(gaps[i])
        stdout, stderr = child.communicate(timeout=120)

        status = child.returncode
        if status < 0:
            # Nothing was lost: the run had not begun. Both may be under way when the first signal comes, but not later.
            self.assertFalse(begun)
            self.assertIn(-status, sent)
            self.assertEqual((sorted(os.listdir(".")), stdout), (sorted(self.inputs + old), ""))
            self.assertEqual({read(path) for path in old} | {"old\n"}, {"old\n"})
        else:
            self.assertIn(status, (130,) if runs == FOREVER else (0, 130))
            self.assertEqual(sorted(os.listdir(".")), sorted(self.inputs + expected))
            result = json.loads(read("json"))
            self.assertEqual(result["status"], "cancelled" if status == 130 else "ok")
            self.check_partition(name, stdout if out == "-" else read(out), stderr if out == "-" else stdout, result)
            if "page" in expected:
                self.assertTrue(read("page").rstrip().endswith("</html>"))
        return len(sent), status

    def test_pairs_and_triples_of_signals_at_any_moment(self):
        ends = collections.Counter()
        for kill in range(KILLS):
            with self.subTest(seed=SEED, kill=kill):
                ends[self.kill_once(random.Random(f"{SEED} {kill}"))] += 1
        if "KAPRIS_TEST_KILLS" in os.environ:
            print("kills by number of signals and exit status:", dict(sorted(ends.items())), file=sys.stderr)

    def test_signals_before_the_run_end_it_as_they_end_any_program(self):
        write("out", "old\n")
        for number in ENDING:
            child = self.begin("partition", "-", "-o", "out", "--json=json", stdin=subprocess.PIPE)
            child.stdin.write("2 3\n1 2\n")
            child.stdin.flush()
            child.send_signal(number)
            self.assertEqual(child.wait(60), -number)
        self.assertEqual((sorted(os.listdir(".")), read("out")), (sorted(self.inputs + ["out"]), "old\n"))

    def test_signals_while_the_result_waits_for_its_reader(self):
        reader, writer = os.pipe()
        fcntl.fcntl(writer, fcntl.F_SETPIPE_SZ, 4096)
        with open(reader, encoding="ascii") as stream:
            child = self.begin("partition", "large.hgr", *FOREVER, "-o", "-", "--json=json", stdout=writer)
            os.close(writer)
            self.await_work(child)
            child.send_signal(signal.SIGTERM)
            self.assertTrue(select.select([stream], [], [], 60)[0])
            for number in (*ENDING, *ENDING):
                os.killpg(child.pid, number)
            text = stream.read()
        self.assertEqual(child.wait(60), 130)
        self.check_partition("large.hgr", text, child.stderr.read(), json.loads(read("json")))

        # A run that has come to its end stays what it is. Only its summary is still to be printed.
        reader, writer = os.pipe()
        with open(reader, encoding="ascii") as stream:
            fill = os.write(writer, b"\n" * fcntl.fcntl(writer, fcntl.F_GETPIPE_SZ))
            child = self.begin("partition", "small.hgr", "--runs", "1", "-o", "out", "--json=last", stdout=writer)
            os.close(writer)
            while not os.path.exists("last"):
                self.assertIsNone(child.poll())
                time.sleep(0.01)
            for number in (*ENDING, *ENDING):
                os.killpg(child.pid, number)
            text = stream.read()[fill:]
        self.assertEqual((child.wait(60), child.stderr.read()), (0, ""))
        self.check_partition("small.hgr", read("out"), text, json.loads(read("last")))

    def test_only_ctrl_c_again_and_again_ends_a_run_that_does_not_end(self):
        os.mkfifo("nobody-reads")
        child = self.begin("partition", "small.hgr", *FOREVER, "-o", "nobody-reads", "--json=json")
        self.await_work(child)
        begun = time.monotonic()
        while child.poll() is None:
            for number in ENDING:
                child.send_signal(number)
            self.assertLess(time.monotonic() - begun, 60)
            time.sleep(0.05)
        self.assertEqual(child.returncode, -signal.SIGINT)
        self.assertGreaterEqual(time.monotonic() - begun, 2)
        self.assertEqual(sorted(os.listdir(".")), sorted(self.inputs + ["nobody-reads"]))

    def test_ignored_signals_stay_ignored(self):
        ignored = (signal.SIGHUP, signal.SIGINT)
        child = self.begin("partition", "small.hgr", *FOREVER, "--time-limit", "0.5", "-o", "out", "--json=json",
                           preexec_fn=lambda: [signal.signal(number, signal.SIG_IGN) for number in ignored])
        while child.poll() is None:
            for number in ignored:
                child.send_signal(number)
            time.sleep(0.02)
        self.assertEqual(child.returncode, 0)
        self.check_partition("small.hgr", read("out"), child.stdout.read(), json.loads(read("json")))

    def test_a_closed_terminal_leaves_the_partition(self):
        pid, terminal = pty.fork()
        if pid == 0:
            os.execv(KAPRIS, [KAPRIS, "partition", "small.hgr", "-k", str(NPARTS), *FOREVER, "-o", "out", "--json=json"])
        shown = b""
        while b"start 1/1" not in shown:
            shown += os.read(terminal, 4096)
        os.close(terminal)
        # The summary has no place to go to.
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]), 6)
        result = json.loads(read("json"))
        self.check_partition("small.hgr", read("out"), f"cut            {result['best']['cut']}", result)


if __name__ == "__main__":
    unittest.main()
