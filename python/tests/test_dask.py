"""kapris.dask on a cluster of processes."""
# SPDX-License-Identifier: MIT
import os
import signal
import threading
import time

import pytest

import kapris

distributed = pytest.importorskip("distributed")
pytest.importorskip("numpy")
dask = pytest.importorskip("kapris.dask")


@pytest.fixture(scope="module")
def client():
    with distributed.LocalCluster(n_workers=3, threads_per_worker=1, processes=True, dashboard_address=None,
                                  silence_logs=50) as cluster, distributed.Client(cluster) as made:
        yield made


def ring(cells):
    """Two rings with chords between them."""
    nets = [[i, (i + 1) % cells, (i * i + 7) % cells] for i in range(cells)]
    return kapris.Hypergraph.from_nets(nets, cell_weights=[1 + i % 3 for i in range(cells)])


def same(one, other):
    assert list(one.part) == list(other.part)
    assert [s._replace(seconds=0) for s in one.starts] == [s._replace(seconds=0) for s in other.starts]
    assert (one.cut, one.best_start, one.seed, one.status) == (other.cut, other.best_start, other.seed, other.status)


def test_a_cluster_gives_the_answer_of_one_machine(client):
    h = ring(400)
    for options in ({}, {"objective": "km1", "scheme": "kway", "members": 2, "fixed": {3: 1, 5: 0}},
                    {"members": 0, "target_weights": [1, 2, 1], "epsilon": 0.1, "threads": 2, "seed": None}):
        made = dask.partition(client, h, 3, starts=7, **options)
        same(made, kapris.partition(h, 3, starts=7, **{**options, "seed": made.seed}))


def test_a_worker_that_is_killed(client):
    """In the middle, while each of the others waits for its next start; no start is lost."""
    h = ring(3000)
    begun = time.monotonic()
    whole = kapris.partition(h, 8, starts=6)
    seconds = time.monotonic() - begun
    before = set(client.scheduler_info()["workers"])

    def kill():
        pids = client.run(os.getpid)
        time.sleep(seconds / 4)
        os.kill(next(iter(pids.values())), signal.SIGKILL)

    killer = threading.Thread(target=kill)
    killer.start()
    made = dask.partition(client, h, 8, starts=6)
    killer.join()
    same(made, whole)
    # A worker is gone; another one may have come for it.
    for _ in range(600):
        if before - set(client.scheduler_info()["workers"]):
            return
        time.sleep(0.1)
    pytest.fail("all workers are still there")


def test_what_is_wrong_is_said_before_anything_is_sent(client):
    for message, options in (("time_limit is not for starts", {"time_limit": 1}), ("records is not", {"records": True}),
                             ("epsilon is -1", {"epsilon": -1}), ("scheme is 'no'", {"scheme": "no"})):
        with pytest.raises(ValueError, match=message):
            dask.partition(client, [[0, 1], [1, 2]], 2, starts=2, **options)
    with pytest.raises(TypeError):
        dask.partition(client, [[0, 1], [1, 2]], 2, nonsense=1)
    with pytest.raises(ValueError, match=r"pins\[1\] is -1"):
        dask.partition(client, ([0, 2], [0, -1]), 2)
    with pytest.raises(kapris.Infeasible) as caught:
        dask.partition(client, kapris.Hypergraph.from_nets([[0, 1], [1, 2]], cell_weights=[9, 1, 1]), 2, epsilon=0)
    assert sorted(caught.value.result.part_weights) == [2, 9]
