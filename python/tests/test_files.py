"""Files of all formats, results as JSON and as pages."""
# SPDX-License-Identifier: MIT
import json
import pickle
from html.parser import HTMLParser

import pytest

import kapris
from kapris import Hypergraph

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


@pytest.mark.parametrize("name, text, options, nets", [
    ("m.mtx", "%%MatrixMarket matrix coordinate pattern general\n2 3 3\n1 1\n1 3\n2 2\n", {}, [[0, 2], [1]]),
    ("m.mtx", "%%MatrixMarket matrix coordinate pattern general\n2 3 3\n1 1\n1 3\n2 2\n", {"model": "column-net"},
     [[0], [1], [0]]),
    ("f.cnf", "p cnf 3 2\n1 -2 0\n2 3 0\n", {}, [[0, 1], [1, 2]]),
    ("f.graph", "3 2\n2\n1 3\n2\n", {}, [[0, 1], [1, 2]]),
    ("f.txt", "2 3\n1 2\n2 3\n", {"format": "hgr"}, [[0, 1], [1, 2]])])
def test_formats(name, text, options, nets, tmp_path):
    (tmp_path / name).write_text(text)
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


def test_spy(tmp_path):
    pyplot = pytest.importorskip("matplotlib.pyplot")
    pyplot.switch_backend("agg")
    ax = kapris.spy([[0, 2], [1, 3], [2, 3]], [0, 1, 0, 1])
    (line,) = [line for line in ax.lines if len(line.get_xdata()) == 6]
    assert sorted(zip(line.get_xdata(), line.get_ydata())) == [(0, 0), (1, 0), (1, 2), (2, 1), (3, 1), (3, 2)]
    ax.figure.savefig(tmp_path / "spy.png")


def test_tensor_networks():
    from kapris.cotengra import hypergraph, membership
    inputs = [["a", "x"], ["a", "b"], ["b", "c"], ["c", "d"], ["d"]]
    size_dict = dict(a=4, b=2, c=4, d=4, x=2)
    part = membership(inputs, ["x"], size_dict, imbalance=0.25, seed=1)
    assert part in ([0, 0, 1, 1, 1], [1, 1, 0, 0, 0]), "the thinnest bond is cut"
    assert membership(inputs, ["x"], size_dict, imbalance=0.25, fix_output_nodes="auto", seed=1)[0] == 0
    assert membership(inputs, [], size_dict, parts=9) == [0, 1, 2, 3, 4]
    assert list(hypergraph(inputs, size_dict, weight_nodes="log", weight_edges="const").cell_weights)[0] == 3000


def test_the_driver_of_cotengra():
    cotengra = pytest.importorskip("cotengra")
    import kapris.cotengra  # noqa: F401, registers the method
    inputs, output, _, size_dict = cotengra.utils.lattice_equation([4, 4])
    tree = cotengra.HyperOptimizer(methods=["kapris"], max_repeats=4, parallel=False).search(inputs, output, size_dict)
    assert tree.contraction_cost() > 0
