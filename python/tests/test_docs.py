"""What the docstrings, the document and the gallery show."""
# SPDX-License-Identifier: MIT
import doctest
import inspect
import os
import pathlib
import subprocess
import sys

import examples
import pytest
from common import has, needs_scipy

import kapris

ALL = [test for module in examples.modules() for test in examples.examples(module)]


@pytest.mark.parametrize("test", ALL, ids=lambda test: test.name)
def test_docstrings(test):
    assert examples.run(test) == 0


def test_every_function_has_an_example():
    needs = {"spy": "matplotlib", "from_scipy": "scipy", "from_networkx": "networkx"}
    things = [getattr(kapris, name) for name in kapris.__all__]
    methods = [method for thing in things if isinstance(thing, type) for name, method in inspect.getmembers(thing)
               if not name.startswith("_") and (inspect.isfunction(method) or inspect.ismethod(method))]
    functions = [thing for thing in things if inspect.isfunction(thing)] + methods
    shown = {test.name for test in ALL}
    for function in functions:
        if has(needs.get(function.__name__, "kapris")):
            assert f"{function.__module__}.{function.__qualname__}" in shown
    assert len(functions) > 14


@needs_scipy
@pytest.mark.skipif("KAPRIS_DOC" not in os.environ, reason="KAPRIS_DOC does not name the document")
def test_the_document(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    failed, tried = doctest.testfile(os.environ["KAPRIS_DOC"], module_relative=False, optionflags=examples.OPTIONS |
                                     doctest.ELLIPSIS, encoding="utf-8")
    assert tried > 20 and failed == 0


@needs_scipy
@pytest.mark.skipif("KAPRIS_GALLERY" not in os.environ, reason="KAPRIS_GALLERY does not name the folder")
@pytest.mark.parametrize("script", ["circuit.py", "elimination.py", "tensors.py"])
def test_the_gallery(script, tmp_path):
    path = pathlib.Path(os.environ["KAPRIS_GALLERY"]) / script
    run = subprocess.run([sys.executable, path], cwd=tmp_path, capture_output=True, text=True)
    assert run.returncode == 0, run.stderr
    picture = tmp_path / f"{path.stem}.png"
    assert picture.read_bytes().startswith(b"\x89PNG") and run.stdout
