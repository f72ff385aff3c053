#!/usr/bin/env python3
# tests/cli/manual_test.py - manual pages and completions say what --help says, and work where they are used.
# SPDX-License-Identifier: MIT
#
#   manual_test.py KAPRIS KAPRIS_MANUAL [unittest arguments]
#
# What there is to complete is read from the help of each command, found from the help of the one above it.
"""Tests of the generated manual pages and completions."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

KAPRIS = os.path.abspath(sys.argv.pop(1))
KAPRIS_MANUAL = os.path.abspath(sys.argv.pop(1))
DATE = "2001-02-03"


def run(*command, cwd=None):
    return subprocess.run(command, check=True, capture_output=True, encoding="utf-8", cwd=cwd)


def read_help(name, commands):
    """Options, choices and verbs of the command and of all below it, by name: "kapris", "kapris partition"."""
    words = name.split()
    text = run(KAPRIS, *words[1:], "--help").stdout
    lines = re.findall(r"^  (-\S+)(.*)", text[text.index("Usage:"):], re.M)
    verbs = re.search(r"^Subcommands:\n((?:  .*\n)+)", text, re.M)
    command = {
        "options": {option for names, _ in lines for option in names.split(",")},
        "choices": {names.split(",")[-1]: rest.split()[0].split("=")[0].split("|")
                    for names, rest in lines if re.match(r" [a-z0-9-]+\|", rest)},
        "verbs": set(re.findall(r"^  (\w\S*)", verbs[1], re.M)) if verbs else set(),
    }
    commands[name] = command
    for verb in command["verbs"]:
        read_help(f"{name} {verb}", commands)


class Generated(unittest.TestCase):
    """The files, written to a directory that all tests share."""

    @classmethod
    def setUpClass(cls):
        directory = tempfile.TemporaryDirectory()
        cls.addClassCleanup(directory.cleanup)
        run(KAPRIS_MANUAL, "kapris", directory.name, DATE)
        cls.pages, cls.bash, cls.zsh, cls.fish = (pathlib.Path(directory.name, path) for path in (
            "man/man1", "bash-completion/completions/kapris", "zsh/site-functions/_kapris",
            "fish/vendor_completions.d/kapris.fish"))
        cls.commands = {}
        read_help("kapris", cls.commands)

    def need(self, program):
        if not shutil.which(program):
            self.skipTest(f"{program} is not installed")

    def complete(self, line, cwd=None):
        """What bash proposes for the last word of a line, an empty one after a blank."""
        script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kapris; '
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        words = line.split(" ")
        return sorted(run("bash", "-c", script, "bash", self.bash, *words, cwd=cwd).stdout.split("\n")[:-1])

    def test_every_command_has_the_same_options_everywhere(self):
        zsh, fish = self.zsh.read_text(), self.fish.read_text()
        self.assertEqual({name.replace(" ", "-") + ".1" for name in self.commands}, set(os.listdir(self.pages)))
        for name, command in self.commands.items():
            page = (self.pages / (name.replace(" ", "-") + ".1")).read_text().replace("\\-", "-")
            terms = "".join(re.findall(r"^\.TP\n(\\fB-.*)", page[page.index(".SH OPTIONS"):], re.M))
            function = re.search(rf"^_{name.replace(' ', '_')}\(\)\n(.*?)^\}}", zsh, re.M | re.S)[1]
            forms = [form.replace("=-", "") for form in re.findall(r"^ +'\([^)]*\)'\{?([^'{}]+)\}?'\[", function, re.M)]
            lines = [line for line in fish.splitlines()
                     if re.findall(r"(?<!not )__fish_seen_subcommand_from (\w+)", line) == name.split()[1:]]
            found = {
                "manual page": re.findall(r"\\fB(--?\w[\w-]*)\\fR", terms),
                "bash": self.complete(f"{name} -"),
                "zsh": [form.rstrip("+=") for group in forms for form in group.split(",")],
                "fish": [{"s": "-", "l": "--"}[dash] + option for line in lines
                         for dash, option in re.findall(r" -([sl]) (\S+)", line.split(" -d '")[0])],
            }
            for where, options in found.items():
                with self.subTest(command=name, where=where):
                    self.assertEqual(sorted(command["options"]), sorted(options))

    def test_bash_proposes_verbs_and_options_of_the_command_so_far(self):
        for name, command in self.commands.items():
            if command["verbs"]:
                self.assertEqual(sorted(command["verbs"]), self.complete(f"{name} "))
        self.assertEqual(["partition"], self.complete("kapris part"))
        self.assertEqual(["--epsilon"], self.complete("kapris partition x.hgr -k 2 --ep"))

    def test_bash_proposes_files_where_files_are_due(self):
        with tempfile.TemporaryDirectory() as directory:
            for name in ("a b.hgr", "c.hgr"):
                os.mkdir(os.path.join(directory, name))
            for line in ("kapris partition ", "kapris eval a.hgr ", "kapris partition --fixed ",
                         "kapris partition c.hgr -o ", "kapris partition --output = ", "kapris partition --output ="):
                self.assertEqual(["a b.hgr", "c.hgr"], self.complete(line, directory), line)
            self.assertEqual(["c.hgr"], self.complete("kapris partition c", directory))
            for line in ("kapris partition -k ", "kapris partition --seed = ", "kapris "):
                self.assertNotIn("c.hgr", self.complete(line, directory), line)

    def test_choices_are_proposed_and_accepted(self):
        enumerated = [(name, option, choices) for name, command in self.commands.items()
                      for option, choices in command["choices"].items()]
        if not enumerated:
            self.skipTest("no option has a fixed set of values")
        zsh, fish = self.zsh.read_text(), self.fish.read_text()
        for name, option, choices in enumerated:
            with self.subTest(command=name, option=option):
                self.assertEqual(sorted(choices), self.complete(f"{name} {option} "))
                self.assertEqual(sorted(choices), self.complete(f"{name} {option} = "))
                self.assertRegex(zsh, rf"{option}=.*\({' '.join(choices)}\)'")
                self.assertRegex(fish, rf"-l {option[2:]} -r -a '{' '.join(choices)}'")

    def test_pages_are_sound_and_show_options_as_they_are_typed(self):
        self.need("groff")
        for page in os.listdir(self.pages):
            done = run("groff", "-man", "-ww", "-Tascii", "-P-cbou", self.pages / page)
            self.assertEqual("", done.stderr, page)
            for part in ("NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXIT STATUS", "SEE ALSO", DATE):
                self.assertIn(part, done.stdout, page)
            if page == "kapris-partition.1":
                for line in ("kapris-partition - partition a hypergraph", "-k N, --parts N", "circuit.hgr -k 4 -e 0.01\n"):
                    self.assertIn(line, done.stdout)


if __name__ == "__main__":
    unittest.main()
