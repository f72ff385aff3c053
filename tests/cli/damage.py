#!/usr/bin/env python3
# tests/cli/damage.py - check and partition on damaged files: a defined exit status, and no file but a complete result.
# SPDX-License-Identifier: MIT
#
#   damage.py KAPRIS [FILES [SEED]]     FILES of each format, default 25
"""Runs kapris on randomly damaged files of every format."""

import collections
import os
import random
import subprocess
import sys
import tempfile

KAPRIS = os.path.abspath(sys.argv[1])
FILES = int(sys.argv[2]) if len(sys.argv) > 2 else 25
SEED = int(sys.argv[3]) if len(sys.argv) > 3 else 1

SOUND = {"hgr": b"% c\n5 6 11\n1 1 2 3\n2 3 4\n1 4 5 6\n9 1 6\n1 2 5\n2\n1\n1\n1\n3\n1\n",
         "patoh": b"1 6 5 12 3\n1 1 2 3\n2 3 4\n1 4 5 6\n9 1 6\n1 2 5\n2 1 1\n1 3 1\n",
         "mtx": b"%%MatrixMarket matrix coordinate real symmetric\n% c\n5 5 6\n1 1 1\n2 1 -2.5\n3 2 1e9\n4 3 1\n5 4 1\n5 1 2\n",
         "cnf": b"c c\np cnf 6 5\n1 -2 3 0\n3 4 0 -4 -5\n6 0\n1 6 0\n-2 5 0\n"}


def damaged(rng, data):
    """One to three bytes replaced, inserted or removed, or the end cut off."""
    data = bytearray(data)
    for _ in range(rng.randint(1, 3)):
        at = rng.randrange(len(data))
        byte = rng.choice(b"0123456789 \n\t%-.c\x00\xff")
        data[at:at + rng.choice((0, 1))] = rng.choice((b"", bytes([byte])))
    return data[:rng.randrange(len(data))] if rng.random() < 0.1 else data


def main():
    rng = random.Random(SEED)
    for suffix, sound in SOUND.items():
        seen = collections.Counter()
        for _ in range(FILES):
            name = "a." + suffix
            with open(name, "wb") as file:
                file.write(damaged(rng, sound))
            for verb, allowed in ((["check"], (0, 3)), (["partition", "-k", "2", "--runs", "1", "--seed", "1"], (0, 3, 4))):
                done = subprocess.run([KAPRIS, verb[0], name, *verb[1:]], capture_output=True, check=False, timeout=60)
                seen[verb[0], done.returncode] += 1
                left = sorted(os.listdir("."))
                written = [name, name + ".part.2"] if verb[0] == "partition" and done.returncode != 3 else [name]
                if done.returncode not in allowed or left != written:
                    with open(name, "rb") as file:
                        sys.exit(f"{verb[0]}: status {done.returncode}, files {left}, {done.stderr}, of {file.read()}")
            for path in os.listdir("."):
                os.remove(path)
        print(suffix, dict(seen))
        if FILES >= 25 and not seen["check", 0] * seen["check", 3] * seen["partition", 3]:
            sys.exit("the damage was too slight or too heavy to try both outcomes")


with tempfile.TemporaryDirectory() as directory:
    os.chdir(directory)
    main()
    os.chdir("/")
