"""The picture of a result in a notebook."""
# SPDX-License-Identifier: MIT
from __future__ import annotations

from typing import TYPE_CHECKING

if TYPE_CHECKING:
    from .result import Result

_SIDE = 60  # fields of the matrix in each direction
_FIELD = 4  # pixels
_MOST_PINS = 50000  # that are looked at
_MOST_BARS = 64


def summary(result: Result) -> str:
    """Figures, part weights against their limits, and the pins ordered by part."""
    figures = [("cells", len(result.part)), ("parts", result.parts), ("cut", result.cut),
               ("connectivity", result.connectivity), ("SOED", result.soed),
               ("imbalance", f"{result.imbalance:.4f}"), ("status", result.status)]
    rows = "".join(f"<tr><th style='text-align:left'>{name}</th><td>{value}</td></tr>" for name, value in figures)
    return (f"<div style='display:flex;gap:2em;align-items:flex-start'><table>{rows}</table>"
            f"{_bars(result)}{_matrix(result)}</div>")


def _bars(result: Result) -> str:
    weights, limits = result.part_weights[:_MOST_BARS], result.limits[:_MOST_BARS]
    most = max(*weights, *limits, 1)
    pieces = []
    for p, (weight, limit) in enumerate(zip(weights, limits)):
        y = 14 * p
        colour = "#4878a8" if weight <= limit else "#c03028"
        pieces.append(f"<rect x='0' y='{y}' width='{200 * weight / most:.1f}' height='11' fill='{colour}'>"
                      f"<title>part {p}: {weight} of at most {limit}</title></rect>"
                      f"<path d='M{200 * limit / most:.1f} {y - 1}v13' stroke='#202020'/>")
    return (f"<svg width='210' height='{14 * len(weights)}' role='img'><title>Part weights and their limits</title>"
            f"{''.join(pieces)}</svg>")


def _matrix(result: Result) -> str:
    """How densely pins lie, nets by the part of their first pin and border last, cells by part."""
    h = result.hypergraph
    if h.npins == 0:
        return ""
    part, parts = result.part.tolist(), result.parts
    place = [0] * h.ncells
    for at, cell in enumerate(sorted(range(h.ncells), key=part.__getitem__)):
        place[cell] = at
    step = max(1, h.npins // _MOST_PINS)
    nets = []
    for j in range(0, h.nnets, step):
        pins = h.net(j)
        if pins:
            touched = {part[c] for c in pins}
            nets.append((min(touched) if len(touched) == 1 else parts, min(touched), j, pins))
    nets.sort()
    counts: dict[tuple[int, int], int] = {}
    for row, (_, _, _, pins) in enumerate(nets):
        for cell in pins:
            field = (place[cell] * _SIDE // h.ncells, row * _SIDE // len(nets))
            counts[field] = counts.get(field, 0) + 1
    most = max(counts.values())
    fields = "".join(f"<rect x='{_FIELD * x}' y='{_FIELD * y}' width='{_FIELD}' height='{_FIELD}' "
                     f"fill-opacity='{max(0.15, (count / most) ** 0.5):.2f}'/>" for (x, y), count in counts.items())
    side = _FIELD * _SIDE
    return (f"<svg width='{side}' height='{side}' role='img' style='border:1px solid #c0c0c0' fill='#204060'>"
            f"<title>Pins, nets down and cells to the right, ordered by part; cut nets last</title>{fields}</svg>")
