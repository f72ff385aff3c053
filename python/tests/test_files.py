"""Files of all formats, results as JSON and as pages."""
# SPDX-License-Identifier: MIT
import importlib
import json
import pickle
import random
import sys
import types
from html.parser import HTMLParser

import pytest

import kapris
import kapris.cotengra
from kapris import Hypergraph
from kapris.cotengra import hypergraph, membership

NETS = [[0, 1], [1, 2, 3], [0, 3]]


def nets_of(h):
    return [h.net(j) for j in range(h.nnets)]


@pytest.mark.parametrize("name", ["h.hgr", "h.patoh", "h.hgr.gz", "h.hgr.xz", "h.patoh.bz2", "-"])
def test_what_is_written_is_read(name, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    h = Hypergraph.from_nets(NETS, cell_weights=[1, 2, 3, 2**60], net_weights=[4, 0, 6])
    h.write(name, format="hgr" if name == "-" else None)
    again = Hypergraph.read(tmp_path / name)
    assert nets_of(again) == NETS
    assert list(again.cell_weights) == [1, 2, 3, 2**60] and list(again.net_weights) == [4, 0, 6]
    assert again.path == str(tmp_path / name) and again.hash() == h.hash()


def test_names_go_through_bookshelf(tmp_path):
    h = Hypergraph.from_nets({"n1": ["a", "b"], "m": ["b", "\u00e9"]})
    h.write(tmp_path / "p.aux")
    again = Hypergraph.read(tmp_path / "p.aux")
    assert (again.cell_names, again.net_names) == (h.cell_names, h.net_names) and nets_of(again) == nets_of(h)


@pytest.mark.parametrize("name, options, nets", [
    ("m.mtx", {}, [[0, 2], [1]]), ("m.mtx", {"model": "column-net"}, [[0], [1], [0]]),
    ("m.txt", {"format": "mtx"}, [[0, 2], [1]])])
def test_formats_and_models(name, options, nets, tmp_path):
    (tmp_path / name).write_text("%%MatrixMarket matrix coordinate pattern general\n2 3 3\n1 1\n1 3\n2 2\n")
    assert nets_of(Hypergraph.read(tmp_path / name, **options)) == nets


def test_faults_of_files(tmp_path):
    bad, good = tmp_path / "bad.hgr", tmp_path / "good.hgr"
    bad.write_text("2 3\n1 2\n2 9\n")
    good.write_text("1 2\n1 2\n")
    with pytest.raises(ValueError, match=r"bad\.hgr:3:3: .*9"):
        Hypergraph.read(bad)
    with pytest.raises(FileNotFoundError):
        Hypergraph.read(tmp_path / "none.hgr")
    with pytest.raises(OSError, match="cannot read"):
        Hypergraph.read(tmp_path)
    with pytest.raises(ValueError, match="format is 'hg', not one of hgr, mtx"):
        Hypergraph.read(good, format="hg")
    with pytest.raises(ValueError, match="^model does not fit the format of"):
        Hypergraph.read(good, model="row-net")
    with pytest.raises(ValueError, match="zero byte"):
        Hypergraph.from_nets(NETS).write("a\0b.hgr")


def test_nothing_is_lost_unasked(tmp_path):
    named, weighted = Hypergraph.from_nets({"n": ["a", "b"]}), Hypergraph.from_nets([[0, 1]], net_weights=[5])
    old = tmp_path / "x.mtx"
    old.write_text("old")
    for h, name, message in [(named, "x.hgr", "names would be lost: drop_names leaves"),
                             (weighted, "x.mtx", "net weights would be lost in a matrix: drop_weights leaves"),
                             (Hypergraph.from_nets([[0, 0]]), "x.mtx", "drop_repeats leaves them out"),
                             (Hypergraph.from_nets(NETS), "x.graph", "net 2 has 3 cells"),
                             (weighted, "x.cnf", "cnf is only read"),
                             (weighted, "x.txt", "does not end with a format")]:
        with pytest.raises(ValueError, match=message):
            h.write(tmp_path / name)
    with pytest.raises(OSError, match="cannot write"):
        weighted.write(tmp_path / "no" / "x.hgr")
    assert old.read_text() == "old" and [p.name for p in tmp_path.iterdir()] == ["x.mtx"]
    weighted.write(old, drop_weights=True)
    named.write(tmp_path / "x.hgr", drop_names=True)
    assert nets_of(Hypergraph.read(tmp_path / "x.hgr")) == [[0, 1]]


class Tags(HTMLParser):
    def __init__(self):
        super().__init__()
        self.seen = []

    def handle_starttag(self, tag, attrs):
        self.seen.append(tag)


def test_json_report_and_picture(tmp_path):
    h = Hypergraph.from_nets([[i, (i + 1) % 40, (i * 3) % 40] for i in range(40)])
    result = kapris.partition(h, 3, starts=2, records=True, fixed=[0] + [-1] * 39, target_weights=[1, 1, 2])
    told = json.loads(result.to_json())
    assert told["schema"] == "kapris-result-1" and told["best"]["cut"] == result.cut and told["hash"] == h.hash()
    assert told["options"]["target_weights"] == [0.25, 0.25, 0.5] and len(told["records"]["trials"]) > 2
    assert told["records"]["fixed_weights"] == [1, 0, 0]
    page = tmp_path / "page.html"
    result.report(page)
    text = page.read_text()
    assert text.startswith("<!DOCTYPE html>") and "<svg" in text and str(result.cut) in text
    kapris.refine(h, result.part).report(page)
    with pytest.raises(OSError, match="cannot write"):
        result.report(tmp_path / "no" / "page.html")
    with pytest.raises(ValueError, match="tells of no run"):
        kapris.evaluate(h, result.part).to_json()
    picture = Tags()
    picture.feed(result._repr_html_())
    assert picture.seen.count("svg") == 2 and picture.seen.count("rect") > 20
    assert kapris.partition([], 1)._repr_html_()
    assert pickle.loads(pickle.dumps(result)).cut == result.cut


def test_spy():
    pyplot = pytest.importorskip("matplotlib.pyplot")
    pyplot.switch_backend("agg")
    ax = kapris.spy([[0, 2], [1, 3], [2, 3]], [0, 1, 0, 1])
    (line,) = [line for line in ax.lines if len(line.get_xdata()) == 6]
    assert sorted(zip(line.get_xdata(), line.get_ydata())) == [(0, 0), (1, 0), (1, 2), (2, 1), (3, 1), (3, 2)]


def test_tensor_networks():
    inputs = [["a", "x"], ["a", "b"], ["b", "c"], ["c", "d"], ["d"]]
    size_dict = dict(a=4, b=2, c=4, d=4, x=2)
    part = membership(inputs, ["x"], size_dict, imbalance=0.25, seed=1)
    assert part in ([0, 0, 1, 1, 1], [1, 1, 0, 0, 0]), "the thinnest bond is cut"
    assert membership(inputs, ["x"], size_dict, imbalance=0.25, fix_output_nodes="auto", seed=1)[0] == 0
    assert membership(inputs, [], size_dict, parts=9) == [0, 1, 2, 3, 4]
    assert list(hypergraph(inputs, size_dict, weight_nodes="log", weight_edges="const").cell_weights)[0] == 3000


class Builder:
    """Calls a partitioner as cotengra's builder of trees does: below the root with fewer parts, another imbalance and
    sizes that are not whole, until what is left is below the cutoff."""

    def __init__(self, partition_fn):
        self.partition_fn = partition_fn

    def build_divide(self, inputs, output, size_dict, random_strength=0.01, cutoff=10, parts=2, parts_decay=0.5,
                     seed=None, **options):
        rng = random.Random(seed)
        sizes = {index: size * (1 + random_strength * rng.random()) for index, size in size_dict.items()}
        imbalance, decay = options.pop("imbalance"), options.pop("imbalance_decay")
        is_auto = options["fix_output_nodes"] == "auto"
        leaves, todo = [], [list(range(len(inputs)))]
        while todo:
            tensors = todo.pop()
            if len(tensors) <= cutoff:
                leaves.append(tensors)
                continue
            share = len(tensors) / len(inputs)
            options["imbalance"] = (share**decay * imbalance if decay >= 0 else
                                    1 - share**-decay * (1 - imbalance))
            if is_auto:
                options["fix_output_nodes"] = len(tensors) == len(inputs)
            used = [inputs[t] for t in tensors]
            beside = {index for t in range(len(inputs)) if t not in tensors for index in inputs[t]}
            found = self.partition_fn(used, {i for one in used for i in one if i in output or i in beside}, sizes,
                                      parts=max(2, int(share**parts_decay * parts)), seed=rng, **options)
            groups = [[t for t, p in zip(tensors, found) if p == q] for q in sorted(set(found))]
            assert len(found) == len(tensors) and len(groups) > 1
            todo += groups
        return leaves


def test_the_driver_of_cotengra(monkeypatch):
    methods = {}
    package, core = types.ModuleType("cotengra"), types.ModuleType("cotengra.core")
    package.core, core.PartitionTreeBuilder = core, Builder
    package.register_hyper_function = lambda name, ssa_func, space, constants=None: methods.update(
        {name: (ssa_func, space)})
    monkeypatch.setitem(sys.modules, "cotengra", package)
    monkeypatch.setitem(sys.modules, "cotengra.core", core)
    importlib.reload(kapris.cotengra)
    build, space = methods["kapris"]
    side, rng = 8, random.Random(1)
    edges = [(t, u) for t in range(side * side) for u in (t + 1, t + side)
             if u < side * side and (u != t + 1 or u % side)]
    inputs = [[edge for edge in edges if t in edge] + (["open"] if t == 5 else []) for t in range(side * side)]
    size_dict = {"open": 2, **{edge: rng.choice([2, 3, 8]) for edge in edges}}
    choose = {"FLOAT_EXP": lambda v: rng.uniform(v["min"], v["max"]), "FLOAT": lambda v: rng.uniform(v["min"], v["max"]),
              "INT": lambda v: rng.randint(v["min"], v["max"]), "STRING": lambda v: rng.choice(v["options"])}
    for seed in range(40):
        options = {name: choose[value["type"]](value) for name, value in space.items()}
        leaves = build(inputs, {"open"}, size_dict, seed=seed, **options)
        assert sorted(t for leaf in leaves for t in leaf) == list(range(side * side)), options
    del core.PartitionTreeBuilder
    with pytest.warns(RuntimeWarning, match="cotengra does not get the method 'kapris'"):
        importlib.reload(kapris.cotengra)
