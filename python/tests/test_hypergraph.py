"""What hypergraphs are made of, and what each wrong array is told."""
# SPDX-License-Identifier: MIT
import array
import pickle
import re

import pytest
from common import needs_numpy, needs_scipy

import kapris
from kapris import Hypergraph


def nets_of(h):
    return [h.net(j) for j in range(h.nnets)]


def test_all_ways_give_the_same():
    nets = [[0, 1], [], [2, 1, 2], [3]]
    by_name = {f"n{j}": [f"c{c}" for c in net] for j, net in enumerate(nets)}
    pins = array.array("i", [0, 1, 2, 1, 2, 3])
    for h in (Hypergraph.from_nets(nets), Hypergraph.from_nets(by_name), Hypergraph((0, 2, 2, 5, 6), pins),
              Hypergraph.from_pins(array.array("q", [0, 2, 2, 5, 6]), [0.0, 1.0, 2, 1, 2, 3], ncells=4)):
        assert (h.ncells, h.nnets, h.npins, nets_of(h)) == (4, 4, 6, nets)
        again = pickle.loads(pickle.dumps(h))
        assert nets_of(again) == nets and again.cell_names == h.cell_names
    assert Hypergraph([0, 6], pins[:6]).pins is not pins
    h = Hypergraph([0, 6], pins)
    assert h.pins is pins, "an array of the library's type is taken as it is"
    with pytest.raises(AttributeError, match="a hypergraph is constant: ncells"):
        h.ncells = 3
    assert Hypergraph([0], []).ncells == 0


WRONG = [
    (dict(offsets=[], pins=[]), ValueError, "offsets has no elements"),
    (dict(offsets=[1, 2], pins=[0, 0]), ValueError, r"offsets\[0\] is 1, but it should be 0"),
    (dict(offsets=[0, 3], pins=[0, 0]), ValueError, r"offsets\[1\] is 3, but there are 2 pins"),
    (dict(offsets=[0, 2], pins=[0, float("nan")]), ValueError, r"pins\[1\] is nan, not a whole number"),
    (dict(offsets=[0, 2], pins=[0, "a"]), TypeError, r"pins\[1\] is 'a', not a whole number"),
    (dict(offsets=[0, 2], pins=[0, 2**31]), ValueError, r"pins\[1\] is 2147483648, which does not fit 32 bits"),
    (dict(offsets=[0, 2], pins="ab"), TypeError, "pins is 'ab', not a sequence"),
    (dict(offsets=[0, 2], pins=[0, 1], ncells=-1), ValueError, "ncells is -1, but it should be between 0 and"),
    (dict(offsets=[0, 2], pins=[0, 1], ncells=2.0), TypeError, "ncells is 2.0, not a whole number"),
    (dict(offsets=[0, 2], pins=[0, 1], cell_weights=[1]), ValueError,
     "cell_weights has 1 elements, but there are 2 cells"),
    (dict(offsets=[0, 2], pins=[0, 1], net_weights=[1, 1]), ValueError,
     "net_weights has 2 elements, but there are 1 nets"),
    (dict(offsets=[0, 2], pins=[0, 1], net_weights=[2**63]), ValueError,
     r"net_weights\[0\] is 9223372036854775808, .* 64"),
    (dict(offsets=[0, 2], pins=[0, 1], cell_names=["a"]), ValueError, "cell_names has 1 elements"),
    (dict(offsets=[0, 2], pins=[0, 1], cell_names=["a", 2]), TypeError, r"cell_names\[1\] is 2, not a text"),
]


@pytest.mark.parametrize("arguments, kind, message", WRONG)
def test_wrong_arrays_are_refused(arguments, kind, message):
    with pytest.raises(kind, match=message):
        Hypergraph(**arguments)


# What only the library sees.
WRONG_INSIDE = [
    (dict(offsets=[0, 3, 1, 4], pins=[0, 1, 2, 3]), r"offsets\[2\] is 1, but it should be at least offsets\[1\]"),
    (dict(offsets=[0, 100000000, 2], pins=[0, 1]), r"offsets\[2\] is 2, but it should be at least"),
    (dict(offsets=[0, 2], pins=[0, -1]), r"pins\[1\] is -1, but a pin should be"),
    (dict(offsets=[0, 2], pins=[0, 5], ncells=3), r"pins\[1\] is 5, but a pin should be at least 0 and below ncells"),
    (dict(offsets=[0, 2], pins=[0, 1], cell_weights=[1, -4]), r"cell_weights\[1\] is -4"),
    (dict(offsets=[0, 2], pins=[0, 1], cell_weights=[2**61, 1]), r"cell_weights\[1\] is 1: the total cell weight"),
    (dict(offsets=[0, 2], pins=[0, 1], net_weights=[-1]), r"net_weights\[0\] is -1"),
]


@pytest.mark.parametrize("arguments, message", WRONG_INSIDE)
def test_what_the_library_refuses(arguments, message):
    h = Hypergraph(**arguments)
    for call in (lambda: kapris.partition(h, 2), lambda: kapris.evaluate(h, [0] * h.ncells, 2),
                 lambda: h.write("/dev/null", format="hgr")):
        with pytest.raises(ValueError, match=re.split("[,:]", message)[0]):
            call()
    with pytest.raises(ValueError, match=message):
        kapris.partition(h, 2)


def test_names():
    h = Hypergraph.from_nets({"n": ["a", "b"], "m": ["b", "c"]}, net_weights={"m": 9})
    assert list(h.net_weights) == [1, 9] and h.cell_weights is None
    with pytest.raises(ValueError, match="net_weights names 'x', which is no net"):
        Hypergraph.from_nets({"n": ["a"]}, net_weights={"x": 1})
    with pytest.raises(TypeError, match="net 'n' is the text 'ab'"):
        Hypergraph.from_nets({"n": "ab"})
    result = kapris.partition(h, 2, fixed={"a": 1, "b": 1}, epsilon=1)
    assert list(result.part)[:2] == [1, 1]
    with pytest.raises(ValueError, match="fixed names the cell 'z', which is not there"):
        kapris.partition(h, 2, fixed={"z": 1})


@needs_numpy
def test_arrays_of_numpy():
    import numpy as np
    offsets, pins = np.array([0, 2, 4], np.int32), np.array([0, 1, 1, 2], np.int32)
    h = Hypergraph(offsets, pins, net_weights=np.array([1.0, 2.0]))
    assert np.shares_memory(h.pins, pins) and np.shares_memory(h.offsets, offsets), "no copy of int32"
    assert h.net_weights.dtype == np.int64
    for dtype in (np.int64, np.uint8, np.uint64, np.float32):
        assert nets_of(Hypergraph(offsets.astype(dtype), pins.astype(dtype))) == [[0, 1], [1, 2]]
    backwards = np.array([2, 1, 1, 0], np.int32)[::-1]
    backwards.flags.writeable = False
    assert nets_of(Hypergraph(offsets, backwards)) == [[0, 1], [1, 2]]
    assert kapris.partition((offsets, pins), 2, seed=1).part.dtype == np.int32
    for wrong, kind, message in [
            (np.array([[0, 1]]), ValueError, "pins has 2 dimensions, not 1"),
            (np.array([0, np.nan]), ValueError, r"pins\[1\] is nan, not a whole number"),
            (np.array([0, np.inf]), ValueError, r"pins\[1\] is inf"),
            (np.array([0, 2**40]), ValueError, r"pins\[1\] is 1099511627776, which does not fit 32 bits"),
            (np.array([True, False]), TypeError, "pins has the type bool, not whole numbers"),
            (np.array([0, 1j]), TypeError, "pins has the type complex128"),
            (np.array(["a", "b"]), TypeError, "pins has the type <U1")]:
        with pytest.raises(kind, match=message):
            Hypergraph([0, 2], wrong)


@needs_scipy
def test_matrices():
    import numpy as np
    import scipy.sparse as sparse
    dense = np.array([[1, 0, 2, 0], [0, 0, 0, 0], [3, 4, 0, 5]])
    rows, columns = [[0, 2], [], [0, 1, 3]], [[0, 2], [2], [0], [2]]
    for form in (sparse.csr_matrix, sparse.csc_matrix, sparse.coo_matrix, sparse.csr_array):
        h = Hypergraph.from_scipy(form(dense))
        assert (h.ncells, [sorted(net) for net in nets_of(h)]) == (4, rows)
        h = Hypergraph.from_scipy(form(dense), "column-net", cell_weights="entries")
        assert (h.ncells, [sorted(net) for net in nets_of(h)], list(h.cell_weights)) == (3, columns, [2, 0, 3])
    matrix = sparse.csr_matrix(dense)
    assert np.shares_memory(Hypergraph.from_scipy(matrix).pins, matrix.indices), "no copy of CSR with int32"
    wide = sparse.csr_matrix(dense)
    wide.indices, wide.indptr = wide.indices.astype(np.int64), wide.indptr.astype(np.int64)
    assert nets_of(Hypergraph.from_scipy(wide)) == nets_of(Hypergraph.from_scipy(matrix))
    with pytest.raises(ValueError, match="model is 'rows', not"):
        Hypergraph.from_scipy(matrix, "rows")
    with pytest.raises(TypeError, match="ndarray is no sparse matrix"):
        Hypergraph.from_scipy(dense)
    with pytest.raises(TypeError, match="ndarray is no hypergraph"):
        kapris.partition(dense, 2)


def test_graphs():
    networkx = pytest.importorskip("networkx")
    graph = networkx.cycle_graph(6)
    graph.add_edge(2, 2)
    graph.edges[0, 1]["weight"] = 5
    h = Hypergraph.from_networkx(graph)
    assert (h.ncells, h.nnets, max(h.net_weights), h.cell_weights) == (6, 6, 5, None)
    assert kapris.partition(graph, 2, epsilon=0).cut == 2


def test_order_without_and_with_empty_nets():
    nets = [[0, 3], [], [1], [2, 0], [1, 3]]
    made = kapris.order(nets, [0, 1, 2, 1], 3)
    assert list(made.cells) == [0, 1, 3, 2] and list(made.nets) == [2, 4, 1, 0, 3]
    assert made.net_blocks == (0, 0, 2, 3, 5) and made.cell_blocks == (0, 1, 3, 4)
    with pytest.raises(ValueError, match=r"part\[2\] is 2, but it should be between 0 and 1"):
        kapris.order(nets, [0, 1, 2, 1], 2)
