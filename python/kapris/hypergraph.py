"""Hypergraphs: made from arrays, lists, matrices, graphs and files."""
# SPDX-License-Identifier: MIT
from __future__ import annotations

import array
import ctypes
import os
from typing import Any, Hashable, Iterable, Mapping, Sequence, Union

from . import _arrays, _native
from ._arrays import Buffer, Numbers

Path = Union[str, "os.PathLike[str]"]


class Hypergraph:
    """Cells and the nets that connect them; constant.

    Cells and nets count from 0. The pins of net ``j`` are ``pins[offsets[j]:offsets[j + 1]]``. Arrays that have the
    type of the library, int32 for ``offsets`` and ``pins`` and int64 for weights, are not copied: whoever changes
    them changes the hypergraph.

    >>> h = Hypergraph.from_nets([[0, 1], [1, 2, 3]])
    >>> h
    <kapris.Hypergraph: 4 cells, 2 nets, 5 pins>
    >>> h.net(1)
    [1, 2, 3]
    """

    __slots__ = ("ncells", "nnets", "offsets", "pins", "cell_weights", "net_weights", "cell_names", "net_names",
                 "path", "__weakref__")

    ncells: int
    """Number of cells."""
    nnets: int
    """Number of nets."""
    offsets: Buffer
    """[nnets + 1] int32, the first is 0."""
    pins: Buffer
    """int32, numbers of cells."""
    cell_weights: Buffer | None
    """[ncells] int64 >= 0, or None: all 1."""
    net_weights: Buffer | None
    """[nnets] int64 >= 0, or None: all 1."""
    cell_names: tuple[str, ...] | None
    """[ncells], or None."""
    net_names: tuple[str, ...] | None
    """[nnets], or None."""
    path: str | None
    """Of the file that it was read from, or None."""

    def __init__(self, offsets: Numbers, pins: Numbers, *, ncells: int | None = None,
                 cell_weights: Numbers | None = None, net_weights: Numbers | None = None,
                 cell_names: Iterable[str] | None = None, net_names: Iterable[str] | None = None) -> None:
        """See :meth:`from_pins`."""
        starts = _arrays.buffer("offsets", offsets, "i")
        cells = _arrays.buffer("pins", pins, "i")
        if len(starts) == 0:
            raise ValueError("offsets has no elements, but it should have one more than there are nets")
        if starts[0] != 0:
            raise ValueError(f"offsets[0] is {starts[0]}, but it should be 0")
        if starts[-1] != len(cells):
            raise ValueError(f"offsets[{len(starts) - 1}] is {starts[-1]}, but there are {len(cells)} pins")
        if ncells is None:
            ncells = _arrays.largest(cells) + 1
        set_ = object.__setattr__
        set_(self, "ncells", _arrays.whole("ncells", ncells, 0, 2**31 - 1))
        set_(self, "nnets", len(starts) - 1)
        set_(self, "offsets", starts)
        set_(self, "pins", cells)
        set_(self, "cell_weights", _arrays.of_length("cell_weights", cell_weights, "q", self.ncells, "cells"))
        set_(self, "net_weights", _arrays.of_length("net_weights", net_weights, "q", self.nnets, "nets"))
        set_(self, "cell_names", _names("cell_names", cell_names, self.ncells, "cells"))
        set_(self, "net_names", _names("net_names", net_names, self.nnets, "nets"))
        set_(self, "path", None)

    def __setattr__(self, name: str, value: Any) -> None:
        raise AttributeError(f"a hypergraph is constant: {name} cannot be set")

    def __delattr__(self, name: str) -> None:
        raise AttributeError(f"a hypergraph is constant: {name} cannot be deleted")

    def __reduce__(self) -> tuple[Any, ...]:
        return _restore, (self.offsets, self.pins, self.ncells, self.cell_weights, self.net_weights, self.cell_names,
                          self.net_names, self.path)

    def __repr__(self) -> str:
        return f"<kapris.Hypergraph: {self.ncells} cells, {self.nnets} nets, {self.npins} pins>"

    @property
    def npins(self) -> int:
        """Number of pins, as often as nets name them."""
        return len(self.pins)

    def net(self, j: int) -> list[int]:
        """The cells of net ``j``, as the net names them.

        >>> Hypergraph.from_nets([[0, 1], [2, 1]]).net(1)
        [2, 1]
        """
        if not 0 <= j < self.nnets:
            raise IndexError(f"there is no net {j}: there are {self.nnets}")
        return list(map(int, self.pins[self.offsets[j]:self.offsets[j + 1]]))

    @classmethod
    def from_pins(cls, offsets: Numbers, pins: Numbers, *, ncells: int | None = None,
                  cell_weights: Numbers | None = None, net_weights: Numbers | None = None,
                  cell_names: Iterable[str] | None = None, net_names: Iterable[str] | None = None) -> Hypergraph:
        """From the compressed form: the pins of net ``j`` are ``pins[offsets[j]:offsets[j + 1]]``.

        :param offsets: [nets + 1] whole numbers from 0 that never fall, the last is the number of pins
        :param pins: numbers of cells; a net may have one pin or none, and may name a cell twice
        :param ncells: number of cells; by default the largest in ``pins`` and one
        :param cell_weights: [ncells] >= 0, by default all 1
        :param net_weights: [nets] >= 0, by default all 1
        :raises ValueError: names the array, the index and the value. Numbers of cells and the order of the offsets
            are checked when the library gets them

        >>> Hypergraph.from_pins([0, 2, 5], [0, 1, 1, 2, 3], net_weights=[1, 4])
        <kapris.Hypergraph: 4 cells, 2 nets, 5 pins>
        """
        return cls(offsets, pins, ncells=ncells, cell_weights=cell_weights, net_weights=net_weights,
                   cell_names=cell_names, net_names=net_names)

    @classmethod
    def from_nets(cls, nets: Iterable[Iterable[int]] | Mapping[str, Iterable[Hashable]], *,
                  ncells: int | None = None, cell_weights: Numbers | Mapping[Hashable, int] | None = None,
                  net_weights: Numbers | Mapping[str, int] | None = None) -> Hypergraph:
        """From lists of cells, or from a dictionary of names: of each net, the names of its cells.

        With names, the cells are numbered in the order in which the nets name them first; weights can then be
        dictionaries too, in which what is not there weighs 1.

        >>> h = Hypergraph.from_nets({"clk": ["a", "b"], "q": ["b", "c", "d"]}, cell_weights={"b": 3})
        >>> h.cell_names, h.net_names, list(h.cell_weights)
        (('a', 'b', 'c', 'd'), ('clk', 'q'), [1, 3, 1, 1])
        """
        if not isinstance(nets, Mapping):
            if isinstance(cell_weights, Mapping) or isinstance(net_weights, Mapping):
                raise TypeError("weights can be a dictionary only where nets is one")
            offsets: list[int] = [0]
            pins: list[int] = []
            for net in nets:
                pins.extend(net)
                offsets.append(len(pins))
            return cls(offsets, pins, ncells=ncells, cell_weights=cell_weights, net_weights=net_weights)
        if ncells is not None:
            raise TypeError("ncells is for nets of numbers: with names, all cells are named")
        index: dict[Hashable, int] = {}
        offsets, pins = [0], []
        for name, cells in nets.items():
            if isinstance(cells, str):
                raise TypeError(f"net {name!r} is the text {cells!r}, not a list of names")
            pins.extend(index.setdefault(cell, len(index)) for cell in cells)
            offsets.append(len(pins))
        return cls(offsets, pins, ncells=len(index),
                   cell_weights=_by_name("cell_weights", cell_weights, index),
                   net_weights=_by_name("net_weights", net_weights, nets),
                   cell_names=[str(cell) for cell in index], net_names=[str(net) for net in nets])

    @classmethod
    def from_scipy(cls, matrix: Any, model: str = "row-net", *, cell_weights: Numbers | str | None = None,
                   net_weights: Numbers | None = None) -> Hypergraph:
        """From a sparse matrix or array of SciPy; of its entries only the places count, also of stored zeros.

        :param model: ``"row-net"``: columns become cells and rows nets; ``"column-net"``: rows become cells
        :param cell_weights: [cells], ``"entries"``: as many as a cell has entries, or None: all 1

        CSR (``row-net``) and CSC (``column-net``) with int32 indices are taken without a copy.

        >>> import scipy.sparse                                                         # doctest: +SCIPY
        >>> Hypergraph.from_scipy(scipy.sparse.eye(4, 3, format="csr"))                 # doctest: +SCIPY
        <kapris.Hypergraph: 3 cells, 4 nets, 3 pins>
        """
        if model not in ("row-net", "column-net"):
            raise ValueError(f"model is {model!r}, not 'row-net' or 'column-net'")
        if not _is_sparse(matrix):
            raise TypeError(f"{type(matrix).__name__} is no sparse matrix of SciPy")
        compressed = matrix.tocsr() if model == "row-net" else matrix.tocsc()
        ncells = int(compressed.shape[1 if model == "row-net" else 0])
        entries = int(compressed.indptr[-1])
        pins = compressed.indices[:entries]
        if isinstance(cell_weights, str):
            if cell_weights != "entries":
                raise ValueError(f"cell_weights is {cell_weights!r}, not weights or 'entries'")
            cell_weights = _arrays.numpy().bincount(pins, minlength=ncells)
        return cls(compressed.indptr, pins, ncells=ncells, cell_weights=cell_weights, net_weights=net_weights)

    @classmethod
    def from_networkx(cls, graph: Any, *, weight: str | None = "weight") -> Hypergraph:
        """From a graph of networkx: a cell for each node, a net of two cells for each edge; loops are left out.

        :param weight: the attribute of nodes and edges that holds their weight, 1 where there is none; None: all 1

        >>> import networkx                                                             # doctest: +NETWORKX
        >>> Hypergraph.from_networkx(networkx.path_graph(5))                            # doctest: +NETWORKX
        <kapris.Hypergraph: 5 cells, 4 nets, 8 pins>
        """
        index = {node: i for i, node in enumerate(graph.nodes)}
        edges = [(u, v, data) for u, v, data in graph.edges(data=True) if u != v]
        pins = [index[node] for u, v, _ in edges for node in (u, v)]
        cell_weights = net_weights = None
        if weight is not None:
            cells, nets = [graph.nodes[node].get(weight, 1) for node in index], [d.get(weight, 1) for _, _, d in edges]
            cell_weights = cells if any(w != 1 for w in cells) else None
            net_weights = nets if any(w != 1 for w in nets) else None
        return cls(range(0, len(pins) + 1, 2), pins, ncells=len(index), cell_weights=cell_weights,
                   net_weights=net_weights, cell_names=[str(node) for node in index])

    @classmethod
    def read(cls, path: Path, *, format: str | None = None, model: str | None = None, unit_weights: bool = False,
             module: str | None = None, depth: int | None = None) -> Hypergraph:
        """From a file in any format of the tool, compressed or not; ``docs/formats.md`` describes them.

        :param format: ``hgr``, ``mtx``, ``patoh``, ``cnf``, ``wcnf``, ``graph``, ``yosys`` or ``bookshelf``; by
            default the end of the name decides
        :param model: of mtx ``row-net`` or ``column-net``, of formulas ``primal``, ``dual`` or ``literal``
        :param unit_weights: of mtx and wcnf: everything weighs 1
        :param module: of yosys: the top module
        :param depth: of yosys: the levels of modules that are dissolved
        :raises ValueError: with file, line and column of what is wrong
        :raises OSError: if the file cannot be read

        >>> import pathlib, tempfile
        >>> with tempfile.TemporaryDirectory() as folder:
        ...     path = pathlib.Path(folder) / "lines.txt"
        ...     size = path.write_text("2 3\\n1 2\\n2 3\\n")
        ...     Hypergraph.read(path, format="hgr")
        <kapris.Hypergraph: 3 cells, 2 nets, 4 pins>
        """
        name = os.fspath(path)
        os.stat(name)  # raises the error of its kind
        words = [None if word is None else word.encode() for word in (format, model, module)]
        reading = _native.Reading(words[0], words[1], int(unit_weights), words[2],
                                  0 if depth is None else _arrays.whole("depth", depth, 0, 2**31 - 1),
                                  depth is not None)
        formats, message = _native.formats(), ctypes.create_string_buffer(1000)
        file = ctypes.POINTER(_native.FileRecord)()
        _native.check_file(formats.kapris_read_file(file_name(name), ctypes.byref(reading), ctypes.byref(file),
                                                    message, len(message)), message)
        try:
            return _from_record(cls, file.contents, os.fsdecode(name))
        finally:
            formats.kapris_free_file(file)

    def write(self, path: Path, *, format: str | None = None, drop_weights: bool = False, drop_repeats: bool = False,
              drop_names: bool = False) -> None:
        """Writes ``.hgr``, ``.patoh``, ``.mtx``, ``.graph`` or ``.aux``, compressed with a further ``.gz``, ``.xz`` or
        ``.bz2``: all of it or nothing.

        :param format: ``hgr``, ``patoh``, ``mtx``, ``graph`` or ``bookshelf``; by default the end of the name decides
        :param drop_weights: weights may be lost; otherwise a format that cannot hold them is refused
        :param drop_repeats: pins that a net names again may be lost
        :param drop_names: names may be lost
        :raises ValueError: says what the format cannot hold, or what is wrong with the hypergraph
        :raises OSError: if the file cannot be written

        >>> import pathlib, tempfile
        >>> with tempfile.TemporaryDirectory() as folder:
        ...     path = pathlib.Path(folder) / "h.hgr"
        ...     Hypergraph.from_nets([[0, 1], [1, 2]]).write(path)
        ...     path.read_text().split()
        ['2', '3', '1', '2', '2', '3']
        """
        message = ctypes.create_string_buffer(1000)
        file, kept = self._record()
        drop = (_native.DROP_WEIGHTS * drop_weights + _native.DROP_REPEATS * drop_repeats +
                _native.DROP_NAMES * drop_names)
        status = _native.formats().kapris_write_file(
            file_name(path), None if format is None else format.encode(), ctypes.byref(file), drop,
            message, len(message))
        del kept
        _native.check_file(status, message)

    def hash(self) -> str:
        """16 digits that depend on the numbers of the hypergraph alone; the tool prints the same.

        >>> Hypergraph.from_nets([[0, 1]]).hash()
        'a70d834182384b35'
        """
        digits, message = ctypes.create_string_buffer(17), ctypes.create_string_buffer(1000)
        file, _ = self._record(with_names=False)
        status = _native.formats().kapris_hash_file(ctypes.byref(file), digits, message, len(message))
        _native.check_file(status, message)
        return digits.value.decode()

    def _record(self, with_names: bool = True) -> tuple[_native.FileRecord, list[Any]]:
        """The record for the formats library, and what must live as long as it is used."""
        kept: list[Any] = []
        tables = []
        for names in (self.cell_names, self.net_names):
            table = _native.NameTable()
            if names is not None and with_names:
                encoded = [name.encode("utf-8", "surrogateescape") for name in names]
                text = ctypes.create_string_buffer(b"".join(encoded))
                starts = (ctypes.c_size_t * (len(encoded) + 1))()
                for i, piece in enumerate(encoded):
                    starts[i + 1] = starts[i] + len(piece)
                kept += [text, starts]
                table = _native.NameTable(ctypes.addressof(text), ctypes.addressof(starts))
            tables.append(table)
        file = _native.FileRecord(self.ncells, self.nnets, _arrays.address(self.offsets), _arrays.address(self.pins),
                                  _arrays.address(self.cell_weights), _arrays.address(self.net_weights), *tables)
        return file, kept


def _restore(offsets: Any, pins: Any, ncells: int, cell_weights: Any, net_weights: Any, cell_names: Any,
             net_names: Any, path: str | None) -> Hypergraph:
    h = Hypergraph(offsets, pins, ncells=ncells, cell_weights=cell_weights, net_weights=net_weights,
                   cell_names=cell_names, net_names=net_names)
    object.__setattr__(h, "path", path)
    return h


def file_name(path: Path) -> bytes:
    encoded = os.fsencode(path)
    if b"\0" in encoded:
        raise ValueError("the name of the file contains a zero byte")
    return b"./-" if encoded == b"-" else encoded  # which would be standard input or output


def _is_sparse(matrix: Any) -> bool:
    return hasattr(matrix, "tocsr") and hasattr(matrix, "tocsc") and hasattr(matrix, "shape")


def _names(name: str, names: Iterable[str] | None, length: int, what: str) -> tuple[str, ...] | None:
    if names is None:
        return None
    if isinstance(names, str):
        raise TypeError(f"{name} is a text, not a list of names")
    made = tuple(names)
    if len(made) != length:
        raise ValueError(f"{name} has {len(made)} elements, but there are {length} {what}")
    for i, one in enumerate(made):
        if not isinstance(one, str):
            raise TypeError(f"{name}[{i}] is {one!r}, not a text")
    return made


def _by_name(name: str, weights: Any, keys: Mapping[Any, Any]) -> Any:
    if not isinstance(weights, Mapping):
        return weights
    for key in weights:
        if key not in keys:
            raise ValueError(f"{name} names {key!r}, which is in no net" if name == "cell_weights" else
                             f"{name} names {key!r}, which is no net")
    return [weights.get(key, 1) for key in keys]


def _decode(table: _native.NameTable, count: int) -> list[str] | None:
    if not table.starts:
        return None
    starts = (ctypes.c_size_t * (count + 1)).from_address(table.starts)
    text = ctypes.string_at(table.bytes, starts[count]) if starts[count] else b""
    return [text[starts[i]:starts[i + 1]].decode("utf-8", "surrogateescape") for i in range(count)]


def _from_record(cls: type[Hypergraph], file: _native.FileRecord, name: str) -> Hypergraph:
    copy = _arrays.copy_out
    offsets = copy(file.net_starts, file.nnets + 1, "i")
    h = cls(offsets, copy(file.pins, int(offsets[-1]), "i"), ncells=file.ncells,
            cell_weights=copy(file.cell_weights, file.ncells, "q") if file.cell_weights else None,
            net_weights=copy(file.net_weights, file.nnets, "q") if file.net_weights else None,
            cell_names=_decode(file.cell_names, file.ncells), net_names=_decode(file.net_names, file.nnets))
    object.__setattr__(h, "path", name)
    return h


def as_hypergraph(given: Any) -> Hypergraph:
    """What a call takes for a hypergraph: one, a matrix by its rows as nets, a pair of arrays, a graph, lists."""
    if isinstance(given, Hypergraph):
        return given
    if _is_sparse(given):
        return Hypergraph.from_scipy(given)
    if isinstance(given, tuple) and len(given) == 2:
        return Hypergraph(*given)
    if hasattr(given, "nodes") and hasattr(given, "edges"):
        return Hypergraph.from_networkx(given)
    if isinstance(given, (list, tuple, Mapping)):
        return Hypergraph.from_nets(given)
    raise TypeError(f"{type(given).__name__} is no hypergraph: give a kapris.Hypergraph, a sparse matrix of SciPy, a "
                    "pair (offsets, pins), a graph of networkx, or lists of cells")


__all__ = ["Hypergraph"]
