#!/usr/bin/env python3
# tests/cli/rescue_test.py - a partition whose file cannot be written when the run ends is found in another place.
# SPDX-License-Identifier: MIT
"""Tests of outputs that were fine when the run began."""

import contextlib
import json
import os
import resource
import signal
import subprocess
import tempfile
import unittest
import unittest.mock

from tool import KAPRIS, ToolTest, read, write

FOREVER = ("--members", "0", "--runs", "2000000000")


@contextlib.contextmanager
def small_disk(folder):
    """A file system of 64 KiB; None where the system gives none."""
    os.mkdir(folder)
    mounted = os.geteuid() == 0 and subprocess.run(
        ["mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", folder], capture_output=True, check=False).returncode == 0
    try:
        yield folder if mounted else None
    finally:
        if mounted:
            subprocess.run(["umount", folder], check=True)


def fill(folder):
    with open(os.path.join(folder, "filler"), "wb", buffering=0) as file, contextlib.suppress(OSError):
        while True:
            file.write(b"x" * 512)


class Rescue(ToolTest):
    """What is rescued is the partition that the run would have written."""

    def setUp(self):
        super().setUp()
        self.run_kapris("generate", "circuit", "--cells", "300", "-o", "c.hgr")
        self.usual = ("partition", "c.hgr", "-k", "3", "--runs", "1", "--members", "0")

    def interrupted(self, spoil, *args, cwd="."):
        """A run that spoil meets at work, and that TERM ends then: status and messages."""
        child = subprocess.Popen([KAPRIS, "partition", os.path.abspath("c.hgr"), "-k", "3", *FOREVER, *args], cwd=cwd,
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8")
        self.addCleanup(child.kill)
        self.await_work(child)
        spoil()
        child.send_signal(signal.SIGTERM)
        _, stderr = child.communicate(timeout=60)
        self.assertEqual(child.returncode, 6, stderr)
        return stderr

    def check_part(self, path):
        lines = read(path).split("\n")
        self.assertEqual((len(lines), lines.pop(), set(lines)), (301, "", {"0", "1", "2"}))

    @unittest.skipUnless(os.path.exists("/dev/full"), "there is no /dev/full")
    def test_a_full_device_and_names_that_are_taken(self):
        self.run_kapris(*self.usual, "-o", "right")
        for name in ("full.rescued", "full.rescued.2"):
            done = self.run_kapris(*self.usual, "-o", "/dev/full", "--json=json", status=6)
            self.assertIn("cannot write /dev/full: No space left on device\nthe partition is in " + name, done.stderr)
            self.assertEqual(read(name), read("right"))
            self.assertEqual(json.loads(read("json"))["output"]["path"], name)
            write(name, "old\n")
        self.assertEqual(read("full.rescued"), "old\n")
        with open("/dev/full", "w", encoding="ascii") as full:
            done = self.run_kapris(*self.usual, "-o", "-", "-q", status=6, stdout=full)
        self.assertIn("cannot write standard output: No space left on device", done.stderr)
        self.assertIn("the partition is in kapris.part.rescued\n", done.stderr)
        self.assertEqual(read("kapris.part.rescued"), read("right"))

    def test_a_reader_that_has_seen_enough(self):
        reader, writer = os.pipe()
        os.close(reader)
        for out, name in (("-", "standard output"), ("/dev/stdout", "/dev/stdout")):
            # Where the signal is not ignored it ends the tool at once.
            done = self.run_kapris(*self.usual, "-o", out, "--json=json", status=6, stdout=writer,
                                   preexec_fn=lambda: signal.signal(signal.SIGPIPE, signal.SIG_IGN))
            self.assertIn(f"cannot write {name}: Broken pipe\n", done.stderr)
            self.assertNotIn("the partition is", done.stderr)
            self.assertEqual(json.loads(read("json"))["output"]["path"], out)
            os.remove("json")
        os.close(writer)
        self.assertEqual(os.listdir("."), ["c.hgr"])

    def test_a_folder_that_has_gone(self):
        os.mkdir("d")
        stderr = self.interrupted(lambda: os.rmdir("d"), "-o", "d/out.gz")
        self.assertIn("cannot write d/out.gz: No such file or directory\nthe partition is in out.rescued\n", stderr)
        self.check_part("out.rescued")

    def test_a_working_directory_that_has_gone(self):
        os.mkdir("d")
        with tempfile.TemporaryDirectory() as other, unittest.mock.patch.dict(os.environ, {"TMPDIR": other}):
            stderr = self.interrupted(lambda: os.rmdir("d"), "-o", "out", cwd="d")
            self.assertIn(f"the partition is in {other}/out.rescued\n", stderr)
            self.check_part(other + "/out.rescued")

    def test_no_place_at_all(self):
        done = self.run_kapris(*self.usual, "-o", "out", status=6,
                               preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (64, 64)))
        self.assertIn("cannot write out: File too large\nthe partition is lost", done.stderr)
        self.assertEqual(os.listdir("."), ["c.hgr"])

    def test_a_disk_that_fills_up(self):
        with small_disk("disk") as disk:
            if disk is None:
                self.skipTest("mounting a small file system needs root")
            write("disk/out", "old\n")
            stderr = self.interrupted(lambda: fill(disk), "-o", "disk/out")
            self.assertIn("cannot write disk/out: No space left on device\nthe partition is in out.rescued\n", stderr)
            self.check_part("out.rescued")
            self.assertEqual((sorted(os.listdir(disk)), read("disk/out")), (["filler", "out"], "old\n"))
            # Seen before the run.
            self.fails(6, "cannot write disk/new: No space left on device", "partition", "c.hgr", "-k", "3", *FOREVER,
                       "-o", "disk/new")


if __name__ == "__main__":
    unittest.main()
