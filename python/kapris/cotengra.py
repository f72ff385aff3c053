"""kapris as a driver of cotengra, which finds orders of contraction by partitioning tensor networks.

``import kapris.cotengra`` registers the method ``"kapris"``::

    import cotengra, kapris.cotengra
    cotengra.HyperOptimizer(methods=["kapris"]).search(inputs, output, size_dict)

:func:`membership` is what the method calls, and works without cotengra. It was written for the interface that drivers
of cotengra have, and was tested with a stand-in for it, not with the package itself.
"""
# SPDX-License-Identifier: MIT
from __future__ import annotations

import math
import warnings
from typing import Any, Collection, Hashable, Mapping, Sequence

from .hypergraph import Hypergraph
from .result import Infeasible
from .solve import partition

# Weights of the library are whole numbers: a bond of dimension 2 weighs this.
_LOG_UNIT = 1000


def hypergraph(inputs: Sequence[Collection[Hashable]], size_dict: Mapping[Hashable, int], *,
               weight_nodes: str = "const", weight_edges: str = "log") -> Hypergraph:
    """The hypergraph of a tensor network: a cell for each tensor, a net for each index.

    :param inputs: the indices of each tensor
    :param size_dict: the dimension of each index
    :param weight_nodes: what a tensor weighs: ``"const"`` 1, ``"log"`` the logarithm of its size
    :param weight_edges: what an index weighs: ``"const"`` 1, ``"log"`` the logarithm of its dimension

    >>> h = hypergraph([["a", "b"], ["b", "c"], ["c", "a"]], {"a": 2, "b": 4, "c": 2})
    >>> h, list(h.net_weights)
    (<kapris.Hypergraph: 3 cells, 3 nets, 6 pins>, [1000, 2000, 1000])
    """
    nets: dict[Hashable, list[int]] = {}
    for tensor, indices in enumerate(inputs):
        for index in indices:
            nets.setdefault(index, []).append(tensor)
    for name, value in (("weight_nodes", weight_nodes), ("weight_edges", weight_edges)):
        if value not in ("const", "log"):
            raise ValueError(f"{name} is {value!r}, not 'const' or 'log'")

    def log(size: float) -> int:
        return max(1, round(_LOG_UNIT * math.log2(size))) if size > 1 else 1

    return Hypergraph.from_nets(
        list(nets.values()), ncells=len(inputs),
        net_weights=[log(size_dict[index]) for index in nets] if weight_edges == "log" else None,
        cell_weights=[log(math.prod(size_dict[index] for index in indices)) for indices in inputs]
        if weight_nodes == "log" else None)


def membership(inputs: Sequence[Collection[Hashable]], output: Collection[Hashable], size_dict: Mapping[Hashable, int],
               *, parts: int = 2, imbalance: float = 0.1, objective: str = "cut", weight_nodes: str = "const",
               weight_edges: str = "log", fix_output_nodes: str | bool = False, preset: str = "fast",
               seed: Any = None) -> list[int]:
    """The part of each tensor.

    :param output: the indices that stay open
    :param imbalance: the epsilon of :func:`kapris.partition`
    :param objective: ``"cut"``, or ``"connectivity"``, also ``"km1"``
    :param fix_output_nodes: a true value: all tensors with open indices go to part 0
    :param seed: a whole number, None, or a random.Random

    >>> membership([["a"], ["a", "b"], ["b", "c"], ["c"]], [], dict(a=8, b=2, c=8)) in ([0, 0, 1, 1], [1, 1, 0, 0])
    True
    """
    if parts >= len(inputs):
        return list(range(len(inputs)))
    h = hypergraph(inputs, size_dict, weight_nodes=weight_nodes, weight_edges=weight_edges)
    fixed = None
    if fix_output_nodes:
        is_open = [any(index in output for index in indices) for indices in inputs]
        # With all of them in one part there would be nothing to cut.
        if not all(is_open):
            fixed = [0 if one else -1 for one in is_open]
    if hasattr(seed, "randrange"):
        seed = seed.randrange(2**31)
    elif seed is not None:
        seed = seed % 2**31
    try:
        result = partition(h, parts, epsilon=imbalance, objective=objective, fixed=fixed, preset=preset, seed=seed)
    except Infeasible as error:
        # Balance is a wish here: what counts is the cost of the contraction.
        result = error.result
    return [int(part) for part in result.part]


def register() -> None:
    """Registers the method ``"kapris"``; done by the import of this module where cotengra is there.

    :raises ImportError: cotengra is not installed, or has not got what drivers use
    """
    from cotengra import register_hyper_function
    from cotengra.core import PartitionTreeBuilder

    register_hyper_function(
        name="kapris", ssa_func=PartitionTreeBuilder(membership).build_divide,
        space={"random_strength": {"type": "FLOAT_EXP", "min": 0.01, "max": 10.0},
               "weight_edges": {"type": "STRING", "options": ["const", "log"]},
               "cutoff": {"type": "INT", "min": 10, "max": 40},
               "imbalance": {"type": "FLOAT", "min": 0.01, "max": 1.0},
               "imbalance_decay": {"type": "FLOAT", "min": -5.0, "max": 5.0},
               "parts": {"type": "INT", "min": 2, "max": 16},
               "parts_decay": {"type": "FLOAT", "min": 0.0, "max": 1.0},
               "objective": {"type": "STRING", "options": ["cut", "connectivity"]},
               "fix_output_nodes": {"type": "STRING", "options": ["auto", ""]}})


try:
    register()
except ImportError as error:
    if not (isinstance(error, ModuleNotFoundError) and error.name == "cotengra"):
        warnings.warn(f"cotengra does not get the method 'kapris': {error}", RuntimeWarning, stacklevel=2)

__all__ = ["hypergraph", "membership", "register"]
