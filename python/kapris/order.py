"""Orders of matrices that follow from partitions, and pictures of them."""
# SPDX-License-Identifier: MIT
from __future__ import annotations

from typing import Any, NamedTuple

from . import _arrays
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

    >>> made = order([[2, 3], [0, 2], [1, 3]], [0, 1, 0, 1])
    >>> made.nets.tolist(), made.cells.tolist(), made.net_blocks, made.cell_blocks
    ([1, 2, 0], [0, 2, 1, 3], (0, 1, 2, 3), (0, 2, 4))
    """
    given = as_hypergraph(h)
    numbers, parts = _parts_of(given, part, parts)
    nets = _net_places(given, numbers, parts)
    net_order = sorted(range(given.nnets), key=nets.__getitem__)
    cell_order = sorted(range(given.ncells), key=numbers.__getitem__)
    return Order(_as_array(net_order), _as_array(cell_order), _blocks((place[0] for place in nets), parts + 1),
                 _blocks(numbers, parts))


def _parts_of(h: Hypergraph, part: Any, parts: int | None) -> tuple[list[int], int]:
    if isinstance(part, Result):
        part, parts = part.part, part.parts if parts is None else parts
    array = _arrays.of_length("part", part, "i", h.ncells, "cells")
    numbers: list[int] = array.tolist()
    if parts is None:
        parts = max(numbers, default=0) + 1
    for i, p in enumerate(numbers):
        if not 0 <= p < parts:
            raise ValueError(f"part[{i}] is {p}, but it should be between 0 and {parts - 1}")
    return numbers, parts


def _net_places(h: Hypergraph, numbers: list[int], parts: int) -> list[tuple[int, int, int]]:
    """Of each net: its block, and the first and the last part that it is in."""
    places = []
    offsets, touched = h.offsets.tolist(), [numbers[c] for c in h.pins.tolist()]
    for j in range(h.nnets):
        of_net = touched[offsets[j]:offsets[j + 1]]
        first, last = (min(of_net), max(of_net)) if of_net else (parts - 1, parts - 1)
        places.append((first if first == last else parts, first, last))
    return places


def _blocks(numbers: Any, count: int) -> tuple[int, ...]:
    sizes = [0] * (count + 1)
    for number in numbers:
        sizes[number + 1] += 1
    for b in range(count):
        sizes[b + 1] += sizes[b]
    return tuple(sizes)


def _as_array(numbers: list[int]) -> Any:
    np = _arrays.numpy()
    return np.array(numbers, np.int32) if np is not None else _arrays.buffer("order", numbers, "i")


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
    xs, ys = given.pins.tolist(), []
    for j in range(given.nnets):
        ys += [j] * (int(given.offsets[j + 1]) - int(given.offsets[j]))
    if part is not None:
        made = order(given, part, parts)
        new_cell, new_net = _places(made.cells), _places(made.nets)
        xs, ys = [new_cell[x] for x in xs], [new_net[y] for y in ys]
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


def _places(numbers: Any) -> list[int]:
    places = [0] * len(numbers)
    for place, number in enumerate(numbers):
        places[number] = place
    return places


__all__ = ["Order", "order", "spy"]
