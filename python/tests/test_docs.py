"""What the docstrings, the document and the gallery show."""
# SPDX-License-Identifier: MIT
import doctest
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
    shown = {test.name for test in ALL}
    for name in kapris.__all__:
        thing = getattr(kapris, name)
        if callable(thing) and not isinstance(thing, type) and (name != "spy" or has("matplotlib")):
            assert f"{thing.__module__}.{name}" in shown, name


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
