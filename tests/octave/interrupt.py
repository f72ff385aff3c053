#!/usr/bin/env python3
"""Ctrl-C in a session of Octave on a terminal, during a long kapris_partition.

usage: interrupt.py

The library's threads must end, the prompt must come back, and the workspace must be as it was; then calls go on
working.
"""
# SPDX-License-Identifier: MIT
import os
import pathlib
import pty
import re
import select
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
PATIENCE = 60  # seconds for anything to happen


class Session:
    """Octave behind a pseudo-terminal; the markers that it prints tell when a line is done."""

    def __init__(self):
        self.pid, self.terminal = pty.fork()
        if self.pid == 0:
            os.environ["TERM"] = "dumb"
            os.execvp("octave-cli", ["octave-cli", "--norc", "--no-history", "--quiet", "--interactive"])
        self.text = ""

    def wait_for(self, pattern):
        """What comes before the pattern and the match."""
        end = time.monotonic() + PATIENCE
        while True:
            found = re.search(pattern, self.text)
            if found:
                before, self.text = self.text[:found.start()], self.text[found.end():]
                return before, found
            if time.monotonic() > end or not select.select([self.terminal], [], [], 1)[0]:
                if time.monotonic() > end:
                    sys.exit(f"FAILED: waited {PATIENCE} s for {pattern!r}; there is {self.text!r}")
                continue
            try:
                self.text += os.read(self.terminal, 4096).decode(errors="replace")
            except OSError:
                sys.exit(f"FAILED: Octave ended; there is {self.text!r}")

    def send(self, text):
        os.write(self.terminal, text.encode())

    def value(self, expression):
        # The marker is put together by Octave, so that the echo of the line does not look like it.
        self.send(f'printf ("<%s>", "va", "lue:"), disp ({expression}), printf ("<%s>\\n", "end")\n')
        self.wait_for(r"<va><lue:>\s*")
        return self.wait_for(r"\s*<end>")[0]

    def threads(self):
        return int(re.search(r"Threads:\s*(\d+)", pathlib.Path(f"/proc/{self.pid}/status").read_text())[1])

    def wait_for_threads(self, is_right, what):
        end = time.monotonic() + PATIENCE
        while not is_right(self.threads()):
            if time.monotonic() > end:
                sys.exit(f"FAILED: {what}")
            time.sleep(0.05)


def expect(name, seen, expected):
    if seen != expected:
        sys.exit(f"FAILED: {name} is {seen!r}, not {expected!r}")


def main():
    session = Session()
    session.send(f'source ("{HERE}/start.m"); A = gallery ("poisson", 150); kept = 4711; x = "old";\n')
    session.send('kapris_partition (A(1:9, 1:9), 2, struct ("threads", 2));\n')
    expect("kept", session.value("kept"), "4711")
    idle = session.threads()

    for round in range(3):
        # Would take hours. A thread more than before tells that the library is at work.
        session.send('x = kapris_partition (A, 8, struct ("runs", 1e6, "threads", 2));\n')
        session.wait_for_threads(lambda n: n > idle, "the library started no thread")
        session.send("\x03")
        expect("kept", session.value("kept"), "4711")
        expect("x", session.value("x"), "old")
        session.wait_for_threads(lambda n: n == idle, "the library's thread did not end")

    expect("a later call", session.value('numel (unique (kapris_partition (A, 8, struct ("runs", 1))))'), "8")
    # unwind_protect sees the interrupt, and may call the library itself.
    session.send('unwind_protect, kapris_partition (A, 8, struct ("runs", 1e6, "threads", 2)); unwind_protect_cleanup, '
                 'y = kapris_partition (A, 2, struct ("runs", 1)); end_unwind_protect\n')
    session.wait_for_threads(lambda n: n > idle, "the library started no thread")
    session.send("\x03")
    expect("y", session.value("numel (y)"), "22500")
    session.send("exit\n")
    os.waitpid(session.pid, 0)
    print("interrupt: ok, 4 calls were interrupted, the workspace stayed and later calls worked")


main()
