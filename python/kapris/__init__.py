"""kapris: partitions hypergraphs.

>>> import kapris
>>> h = kapris.Hypergraph.from_nets([[0, 1, 2], [2, 3], [3, 4, 5]])
>>> kapris.partition(h, parts=2).cut
1
"""
# SPDX-License-Identifier: MIT
from ._native import version as _version
from .hypergraph import Hypergraph
from .order import Order, order, spy
from .progress import ProgressEvent
from .result import Infeasible, Result, Start
from .solve import evaluate, partition, refine

__version__ = _version()
__all__ = ["Hypergraph", "Infeasible", "Order", "ProgressEvent", "Result", "Start", "evaluate", "order", "partition",
           "refine", "spy"]
