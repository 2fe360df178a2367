# SPDX-License-Identifier: MIT
"""2,000 notebooks on a cluster that loses a worker, beside the same in one process."""
import os
import random
import signal
import sys
import threading
import time

import dask
import dask.dataframe as dd
import notebooks as make
import pandas as pd
import pytest

qps_dask = pytest.importorskip("qps_dask")
distributed = pytest.importorskip("distributed")

COUNT, BATCH = 2000, 50


def hostile(chance, book):
    """A notebook as someone who means harm, or an old disk, would hand it over."""
    kind = chance.randrange(5)
    if kind == 0:
        return b""
    if kind == 1:
        return book[:chance.randrange(1, len(book))]
    if kind == 2:
        return bytes(chance.randrange(256) for _ in range(200))
    if kind == 3:
        changed = bytearray(book)
        for _ in range(8):
            changed[chance.randrange(len(changed))] = chance.randrange(256)
        return bytes(changed)
    return make.notebook(make.sheet(make.record(261, b"\0\0\xff\xff\x64\0"),
                                    make.integer(255, 65535, 1), name=b"corner"))


@pytest.fixture(name="paths", scope="module")
def write_notebooks(tmp_path_factory):
    chance, folder, paths = random.Random(7), tmp_path_factory.mktemp("books"), []
    for number in range(COUNT):
        cells = [make.label(0, row, b"row %d of %d" % (row, number)) for row in range(20)]
        cells += [make.integer(1 + row % 5, row, chance.randrange(1000)) for row in range(60)]
        book = make.notebook(make.sheet(*cells, name=b"A"), make.sheet(name=b"empty", number=1))
        paths.append(str(folder / f"{number:04}.wb2"))
        with open(paths[-1], "wb") as file:
            file.write(hostile(chance, book) if number % 10 == 3 else book)
    paths[100] += ".missing"
    return paths


def test_a_lost_worker_loses_nothing(paths, tmp_path):
    alone, cluster = str(tmp_path / "alone"), str(tmp_path / "cluster")
    with dask.config.set(scheduler="synchronous"):
        expected = qps_dask.write(paths, alone, "csv", BATCH, salvage=True)
    assert expected["notebooks"].sum() == COUNT and expected["failures"].sum() > 50

    def kill_one(client):
        pids = client.run(os.getpid)
        while not os.path.isdir(cluster) or len(os.listdir(cluster)) < 3:
            time.sleep(0.005)
        os.kill(next(iter(pids.values())), signal.SIGKILL)
        killed_at.append(sum(name.endswith(".csv") for name in os.listdir(cluster)))

    killed_at = []
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                  dashboard_address=None) as local:
        with distributed.Client(local) as client:
            killer = threading.Thread(target=kill_one, args=(client,))
            killer.start()
            told = qps_dask.write(paths, cluster, "csv", BATCH, salvage=True)
            killer.join()
    assert 0 < killed_at[0] < COUNT // BATCH
    assert told.drop(columns="part").equals(expected.drop(columns="part"))
    for part in sorted(os.listdir(alone)):
        with open(os.path.join(alone, part), "rb") as one, \
                open(os.path.join(cluster, part), "rb") as other:
            assert one.read() == other.read(), part

    rows = pd.concat(pd.read_csv(os.path.join(cluster, part)) for part in sorted(os.listdir(alone)))
    assert set(rows["source"]) == set(paths)  # none lost
    healthy = rows[rows["source"].isin(path for at, path in enumerate(paths)
                                       if at % 10 != 3 and at != 100)]
    assert (healthy.groupby("source").size() == 80).all()  # none twice
    assert rows[rows["source"] == paths[100]]["error"].str.startswith("unreadable: ").all()


def test_parquet_without_pyarrow_ends_at_once(monkeypatch, tmp_path):
    monkeypatch.setitem(sys.modules, "pyarrow", None)
    with dask.config.set(scheduler="synchronous"):
        with pytest.raises(ImportError, match="Parquet takes pyarrow"):
            qps_dask.write([make.EXAMPLE], tmp_path / "cells", "parquet")
    assert not (tmp_path / "cells").exists()


def test_a_dataframe_of_cells(paths):
    paths = [f"file://{paths[0]}", *paths[1:10]]
    with dask.config.set(scheduler="threads"):
        frame = qps_dask.notebooks(paths, batch=3)
        cells = frame.compute()
        assert frame.npartitions == 4 and dict(cells.dtypes) == dict(frame.dtypes)
        assert frame[frame["kind"] == "number"]["number"].sum().compute() == \
            pytest.approx(cells["number"].sum())
    assert isinstance(frame, dd.DataFrame)
    assert list(cells["source"].unique()) == paths
    failed = cells[cells["kind"] == "failed"]
    assert list(failed["source"]) == [paths[3]]
