# tests/cli/tool.py - what the tests of the kapris command share.
# SPDX-License-Identifier: MIT
#
#   SOMETHING_test.py KAPRIS [unittest arguments]
#
# Each test runs in an empty directory. A command that is expected to fail must leave the directory as it was.
"""Runs the kapris command for tests."""

import gzip
import os
import random
import re
import signal
import subprocess
import sys
import tempfile
import time
import unittest

# Signals that end a run with its best partition.
ENDING = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGUSR1, signal.SIGUSR2, signal.SIGXCPU)
KAPRIS = os.path.abspath(sys.argv.pop(1))

def open_text(path, mode):
    """Line ends are left as they are."""
    return (gzip.open if path.endswith(".gz") else open)(path, mode + "t", encoding="utf-8", errors="surrogateescape", newline="")


def write(path, text):
    with open_text(path, "w") as file:
        file.write(text)


def read(path):
    with open_text(path, "r") as file:
        return file.read()


def fields(text):
    """The lines "name  value" of a summary; a name ends where its column does."""
    return {line[:15].strip(): line[15:] for line in text.splitlines()}


def snapshot():
    """Every name below the working directory with its contents."""
    return {os.path.join(top, name): read(os.path.join(top, name))
            for top, _, names in os.walk(".") for name in names}


def at_work(pid):
    """Whether the run has begun: a process catches the signals then, but for those that were ignored before."""
    masks = re.findall(r"Sig(?:Cgt|Ign):\t(\w+)", read(f"/proc/{pid}/status"))
    return all(any(int(mask, 16) & 1 << number - 1 for mask in masks) for number in ENDING)


def random_hypergraph(seed, repeats, heaviest=None):
    """Text, nets, net weights and cell weights of a small hypergraph; its nets may repeat pins. Weights are small, or up to
    the heaviest."""
    rng = random.Random(seed)
    ncells = 60
    draw = rng.choices if repeats else rng.sample
    nets = [draw(range(ncells), k=rng.choice((0, 1, 2, 2, 3, 5, 12))) for _ in range(90)]
    netwgts = [rng.randrange(heaviest or 9) for _ in nets]
    cellwgts = [rng.randrange(1, heaviest or 5) for _ in range(ncells)]
    lines = [f"{len(nets)} {ncells} 11"]
    lines += [" ".join(map(str, [weight] + [pin + 1 for pin in net])) for net, weight in zip(nets, netwgts)]
    lines += map(str, cellwgts)
    return "\n".join(lines) + "\n", nets, netwgts, cellwgts


class ToolTest(unittest.TestCase):
    """One empty working directory per test."""

    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(self.directory.name)

    def run_kapris(self, *args, status=0, text="", **options):
        """Runs the command and checks its exit status, a number or a tuple of numbers."""
        options = {"stdout": subprocess.PIPE, **options}
        done = subprocess.run([KAPRIS, *args], input=text, stderr=subprocess.PIPE, encoding="utf-8", check=False,
                              **options)
        allowed = status if isinstance(status, tuple) else (status,)
        self.assertIn(done.returncode, allowed, (args, done.stdout, done.stderr))
        return done

    def await_work(self, child):
        """Returns when the run of a child process has begun."""
        while not at_work(child.pid):
            self.assertIsNone(child.poll())
            time.sleep(0.01)

    def fails(self, status, message, *args, **options):
        """Checks status, message, silence on standard output, and that no file has come, gone or changed."""
        before = snapshot()
        done = self.run_kapris(*args, status=status, **options)
        self.assertIn(message, done.stderr, args)
        self.assertFalse(done.stdout, args)
        self.assertEqual(snapshot(), before, args)
