"""What all tests share."""
# SPDX-License-Identifier: MIT
import importlib.util
import sys

import pytest
from hypothesis import settings

# One machine runs many tests at once: a slow example is no fault.
settings.register_profile("kapris", deadline=None, max_examples=60)
settings.load_profile("kapris")


def has(module):
    return importlib.util.find_spec(module) is not None


needs_numpy = pytest.mark.skipif(not has("numpy"), reason="NumPy is not installed")
needs_scipy = pytest.mark.skipif(not has("scipy"), reason="SciPy is not installed")


def figures(nets, weights, part):
    """Cut and connectivity by their definitions."""
    spans = [(w, len({part[c] for c in net})) for net, w in zip(nets, weights)]
    return sum(w for w, k in spans if k > 1), sum(w * max(0, k - 1) for w, k in spans)


sys.modules["common"] = sys.modules[__name__]
