#!/usr/bin/env python3
"""Runs the examples in the docstrings of the installed package, without pytest. Exit status 1: some differ."""
# SPDX-License-Identifier: MIT
import doctest
import importlib
import importlib.util
import pkgutil
import sys

# Examples that need a module carry its name as an option, as in # doctest: +SCIPY.
FLAGS = {doctest.register_optionflag(name.upper()): name for name in ("numpy", "scipy", "networkx", "matplotlib")}
OPTIONS = doctest.NORMALIZE_WHITESPACE | doctest.IGNORE_EXCEPTION_DETAIL


def modules():
    import kapris
    return [kapris] + [importlib.import_module(f"kapris.{info.name}") for info in pkgutil.iter_modules(kapris.__path__)]


def examples(module):
    """The examples of a module that can run here."""
    missing = {flag for flag, name in FLAGS.items() if importlib.util.find_spec(name) is None}
    for test in doctest.DocTestFinder().find(module):
        test.examples = [example for example in test.examples if not missing & set(example.options)]
        if test.examples:
            yield test


def run(test):
    return doctest.DocTestRunner(optionflags=OPTIONS).run(test).failed


if __name__ == "__main__":
    sys.exit(any([run(test) for module in modules() for test in examples(module)]))
