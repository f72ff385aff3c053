"""Orders of matrices that follow from partitions, and pictures of them."""
# SPDX-License-Identifier: MIT
from __future__ import annotations

import ctypes
from typing import Any, NamedTuple

from . import _arrays, _native
from .hypergraph import Hypergraph, as_hypergraph
from .result import Result


class Order(NamedTuple):
    """A bordered block-diagonal form.

    ``matrix[nets][:, cells]`` of a matrix whose rows are nets has a block for each part, then the border: the nets
    in more than one part. Block ``b`` is in the nets ``net_blocks[b]:net_blocks[b + 1]`` and the cells
    ``cell_blocks[b]:cell_blocks[b + 1]``; the border in the nets ``net_blocks[parts]:net_blocks[parts + 1]``.
    """

    nets: Any
    """[nets] numbers of nets in the new order: int32 of NumPy, or an ``array.array``."""
    cells: Any
    """[cells] the same of cells."""
    net_blocks: tuple[int, ...]
    """[parts + 2]"""
    cell_blocks: tuple[int, ...]
    """[parts + 1]"""


def order(h: Any, part: Any, parts: int | None = None) -> Order:
    """Orders nets and cells by a partition to singly bordered block-diagonal form.

    Nets and cells of a block keep their order. The nets of the border are ordered by the first and then the last part
    that they are in; nets without pins are in the last block.

    :param h: a :class:`Hypergraph`, or what :func:`partition` takes for one
    :param part: [ncells] as :attr:`Result.part`, or the result itself
    :param parts: number of parts; by default that of the result, or the largest in ``part`` and one
    :raises ValueError: names the argument, the index and the value

    >>> made = order([[2, 3], [0, 2], [1, 3]], [0, 1, 0, 1])
    >>> made.nets.tolist(), made.cells.tolist(), made.net_blocks, made.cell_blocks
    ([1, 2, 0], [0, 2, 1, 3], (0, 1, 2, 3), (0, 2, 4))
    """
    given = as_hypergraph(h)
    if isinstance(part, Result):
        part, parts = part.part, part.parts if parts is None else parts
    numbers = _arrays.of_length("part", part, "i", given.ncells, "cells")
    if numbers is None:
        raise TypeError("part is None")
    parts = max(1, _arrays.largest(numbers) + 1) if parts is None else _arrays.whole("parts", parts, 1, 2**31 - 1)
    nets, cells = _arrays.empty(given.nnets, "i"), _arrays.empty(given.ncells, "i")
    net_blocks, cell_blocks = (ctypes.c_int * (parts + 2))(), (ctypes.c_int * (parts + 1))()
    message = ctypes.create_string_buffer(1000)
    file = given._record(with_names=False)[0]
    _native.check_file(_native.reports().kapris_order(
        ctypes.byref(file), _arrays.address(numbers), parts, _arrays.address(nets), _arrays.address(cells), net_blocks,
        cell_blocks, message, len(message)), message)
    return Order(nets, cells, tuple(net_blocks), tuple(cell_blocks))


def spy(h: Any, part: Any = None, parts: int | None = None, *, ax: Any = None, markersize: float | None = None) -> Any:
    """Draws the pins as a matrix, nets down and cells to the right, with matplotlib: as they are, or with ``part``
    ordered to bordered block-diagonal form with lines between the blocks.

    :param ax: axes to draw into; by default those of a new figure
    :returns: the axes

    >>> ax = spy([[0, 2], [1, 3], [2, 3]], [0, 1, 0, 1])                                # doctest: +MATPLOTLIB
    >>> ax.figure.savefig("/dev/null", format="png")                                    # doctest: +MATPLOTLIB
    """
    from matplotlib import pyplot

    given = as_hypergraph(h)
    if ax is None:
        _, ax = pyplot.subplots()
    np = _arrays.numpy()  # which matplotlib needs as well
    xs = np.asarray(given.pins)
    ys = np.repeat(np.arange(given.nnets), np.diff(np.asarray(given.offsets)))
    if part is not None:
        made = order(given, part, parts)
        xs, ys = _places(np, made.cells)[xs], _places(np, made.nets)[ys]
        for line in made.net_blocks[1:-1]:
            ax.axhline(line - 0.5, color="0.7", linewidth=0.6)
        for line in made.cell_blocks[1:-1]:
            ax.axvline(line - 0.5, color="0.7", linewidth=0.6)
    if markersize is None:
        markersize = max(0.3, min(5.0, 250.0 / max(given.nnets, given.ncells, 1)))
    ax.plot(xs, ys, linestyle="", marker="s", markersize=markersize, markeredgewidth=0)
    ax.set_xlim(-0.5, max(given.ncells, 1) - 0.5)
    ax.set_ylim(max(given.nnets, 1) - 0.5, -0.5)
    ax.set_aspect("equal")
    return ax


def _places(np: Any, numbers: Any) -> Any:
    """Where each number stands."""
    places = np.empty(len(numbers), np.int64)
    places[numbers] = np.arange(len(numbers))
    return places


__all__ = ["Order", "order", "spy"]
