#!/usr/bin/env python3
"""Runs the example of a document in Octave and compares what it prints.

usage: example.py FILE [--update]

The example is the blocks that begin with ```octave-console: lines with the prompt ">> ", each followed by its output.
--update writes what Octave printed into the document.
"""
# SPDX-License-Identifier: MIT
import difflib
import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
BLOCK = re.compile(r"^```octave-console\n(.*?)^```$", re.M | re.S)
PROMPT = ">> "


def quoted(text):
    return "'" + text.replace("'", "''") + "'"


def transcript(blocks):
    """What the commands of every block print, each after its prompt. Output of the package manager is its own."""
    script = [f"source ({quoted(str(HERE / 'start.m'))});"]
    for block in blocks:
        for line in block.splitlines():
            if line.startswith(PROMPT):
                command = line[len(PROMPT):]
                script += [f"disp ({quoted(line)});", command]
        script.append("disp ('---- end of block');")
    file = pathlib.Path("example.m")
    file.write_text("\n".join(script) + "\n")
    result = subprocess.run(["octave-cli", "--norc", "--no-history", "--quiet", file], text=True,
                            stdin=subprocess.DEVNULL, capture_output=True)
    if result.returncode:
        sys.exit(f"FAILED: exit status {result.returncode}\n{result.stdout}{result.stderr}")
    return result.stdout.split("---- end of block\n")[:-1]


def main():
    document = pathlib.Path(sys.argv[1])
    text = document.read_text()
    blocks = BLOCK.findall(text)
    printed = transcript(blocks)
    if "--update" in sys.argv:
        fresh = iter(printed)
        document.write_text(BLOCK.sub(lambda _: f"```octave-console\n{next(fresh)}```", text))
        return
    if len(blocks) == 0 or blocks != printed:
        sys.exit("FAILED: the example prints something else\n" + "".join(difflib.unified_diff(
            "".join(blocks).splitlines(True), "".join(printed).splitlines(True), str(document), "Octave")))
    commands = sum(block.count(PROMPT) for block in blocks)
    print(f"example: ok, {commands} commands print what {document.name} says")


main()
