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
         "cnf": b"c c\np cnf 6 5\n1 -2 3 0\n3 4 0 -4 -5\n6 0\n1 6 0\n-2 5 0\n",
         "wcnf": b"c c\np wcnf 6 5 9\n9 1 -2 3 0\n2 3 4 0 9 -4 -5\n6 0\n3 1 6 0\n4 -2 5 0\n",
         "graph": b"% c\n4 4 011\n5 2 7 3 1\n2 1 7 4 2\n2 1 1 4 3\n1 3 3 2 2\n",
         "json": b'{"modules":{"s":{"ports":{"p":{"bits":[2,3]}},"cells":{"i":{"type":"T","connections":{"A":[2,3]}}}},'
                 b'"m":{"cells":{"u":{"type":"s","connections":{"p":["0",7]}},"v":{"type":"T","connections":{"A":[7,8]}},'
                 b'"w":{"type":"U","connections":{"B":[8,7]}}},"netnames":{"n":{"bits":[7]}}}}}'}
# One of these is damaged, the others are beside it.
BOOKSHELF = {"nodes": b"UCLA nodes 1.0\nNumNodes : 4\n a 2 3\n b 1.0 4\n c 1 1\n t 9 9 terminal\n",
             "nets": b"UCLA nets 1.0\nNetDegree : 3 n\n a I : 0.5 -1\n b O\n t B\nNetDegree:2\n b\n c\n",
             "wts": b"UCLA wts 1.0\nn 7\na 4\n", "pl": b"UCLA pl 1.0\na 0 0 : N\nt -10 2.5 : N /FIXED\n"}


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
    for suffix, sound in {**SOUND, **BOOKSHELF}.items():
        seen = collections.Counter()
        for _ in range(FILES):
            name, files = "a." + suffix, {}
            if suffix in BOOKSHELF:
                name = "a.aux"
                files = {"a.aux": b"P : a.nodes a.nets a.wts a.pl\n", **{"a." + one: text for one, text in BOOKSHELF.items()}}
            files["a." + suffix] = damaged(rng, sound)
            for path, data in files.items():
                with open(path, "wb") as file:
                    file.write(data)
            for verb, allowed in ((["check"], (0, 3)), (["partition", "-k", "2", "--runs", "1", "--seed", "1"], (0, 3, 4))):
                done = subprocess.run([KAPRIS, verb[0], name, *verb[1:]], capture_output=True, check=False, timeout=60)
                seen[verb[0], done.returncode] += 1
                left = sorted(os.listdir("."))
                made = [name + ".part.2"] if verb[0] == "partition" and done.returncode != 3 else []
                if done.returncode not in allowed or left != sorted([*files, *made]):
                    with open("a." + suffix, "rb") as file:
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
