"""Chunks that are kept between shards: the values of their files, and no more of them than there is room for."""

import numpy as np
import pytest

from ensemblefiles import inputs, run_by_threads, units_by_threads
from tidora.ensemble.kept import KeptChunks
from tidora.ensemble.reading import _KEPT
from tidora.ensemble.store import Store, encoded
from tidora.errors import FileError

SHAPE = (2, 3)


def store_of(folder, count=3):
    """A folder with chunks 0, 1, ... of which every value is its number."""
    folder.mkdir()
    for number in range(count):
        write(folder, number, number)
    return Store(folder)


def write(folder, number, value):
    (folder / f"response.{number}").write_bytes(encoded(np.full(SHAPE, value, np.float32)))


def read(kept, store, number):
    return kept.chunk(store, f"response.{number}", "<f4", SHAPE)


@pytest.fixture
def reads(monkeypatch):
    """Keys of what is read from files."""
    keys, chunk = [], Store.chunk

    def noted(self, key, dtype, shape):
        keys.append(key)
        return chunk(self, key, dtype, shape)

    monkeypatch.setattr(Store, "chunk", noted)
    return keys


def test_a_chunk_is_read_once_and_cannot_be_written_to(tmp_path, reads):
    kept, store = KeptChunks(1000), store_of(tmp_path / "s")
    first = read(kept, store, 1)
    assert read(kept, store, 1) is first and (first == 1.0).all()
    assert reads == ["response.1"]
    with pytest.raises(ValueError, match="read-only"):
        first[0, 0] = 5.0


def test_a_chunk_that_is_replaced_damaged_or_removed_is_not_the_kept_one(tmp_path):
    kept, store = KeptChunks(1000), store_of(tmp_path / "s")
    read(kept, store, 0)
    write(tmp_path / "s", 0, 7)
    assert (read(kept, store, 0) == 7.0).all()
    (tmp_path / "s" / "response.0").write_bytes(b"of another size")
    with pytest.raises(FileError, match="is damaged"):
        read(kept, store, 0)
    (tmp_path / "s" / "response.0").unlink()
    with pytest.raises(FileError, match="is not there"):
        read(kept, store, 0)


def test_when_there_is_no_room_the_first_chunks_stay(tmp_path, reads):
    kept, store = KeptChunks(2 * 24), store_of(tmp_path / "s")
    for _ in range(2):
        assert [float(read(kept, store, number)[0, 0]) for number in range(3)] == [0.0, 1.0, 2.0]
    assert reads == [f"response.{number}" for number in (0, 1, 2, 2)]
    assert kept.size == 2 * 24


def test_chunks_of_another_store_take_the_place_of_the_kept_ones(tmp_path, reads):
    kept, one, other = KeptChunks(1000), store_of(tmp_path / "one"), store_of(tmp_path / "other")
    write(tmp_path / "other", 0, 9)
    assert (read(kept, one, 0) == 0.0).all() and (read(kept, other, 0) == 9.0).all()
    assert kept.size == 24
    assert (read(kept, one, 0) == 0.0).all() and len(reads) == 3


def test_three_shards_of_a_run_do_not_read_their_units_three_times(tmp_path, reads):
    folder = inputs(tmp_path)
    units_by_threads(folder)
    run_by_threads(folder)
    responses = [key for key in reads if key.startswith("response/")]
    assert responses and len(responses) <= 2 * len(set(responses))  # two threads may begin with the same
    assert 0 < _KEPT.size <= 1 << 27
