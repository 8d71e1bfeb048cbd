"""A Masker works in many threads at once, and in forked and spawned processes."""

import multiprocessing
import os
import pickle
import sys
import threading
import time

import korv
import pyarrow as pa
import pytest
from conftest import SECRETS
from korv import _engine

RULES = "CARD = CCN, secret=test\nNUMBER = NID, secret=test\nDATE = AGE, secret=test, range=-9..9, per=CARD"
CARDS = pa.array([str(4556737586890000 + i) for i in range(20_000)])
# So few digits that the provider shares a table between its instances, protected by a lock.
NUMBERS = pa.array([str(i % 10_000) for i in range(20_000)])


@pytest.fixture
def masker():
    with korv.Masker(RULES, SECRETS) as masker:
        yield masker


@pytest.fixture
def expected(masker):
    return masker.mask_column("CARD", CARDS), masker.mask_column("NUMBER", NUMBERS)


def results(masker):
    return masker.mask_column("CARD", CARDS), masker.mask_column("NUMBER", NUMBERS)


def run_threads(count, function):
    faults = []

    def run():
        try:
            function()
        except BaseException as error:
            faults.append(error)

    threads = [threading.Thread(target=run) for _ in range(count)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert faults == []


def test_threads(masker, expected):
    def run():
        for _ in range(5):
            assert results(masker) == expected

    run_threads(8, run)
    # Handles are used again: no more of them than threads.
    assert all(len(handles) <= 8 for handles in masker._idle.values())


def test_other_threads_run_while_values_are_masked(masker, monkeypatch):
    calls, seen = [], []
    call = _engine.native.KorvMaskBatch

    def watched(*arguments):
        calls.append("begins")
        status = call(*arguments)
        calls.append("ends")
        return status

    masker.mask_column("CARD", CARDS)
    monkeypatch.setattr(_engine.native, "KorvMaskBatch", watched)
    # Threads only take turns where one of them waits or gives the interpreter away.
    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    try:
        thread = threading.Thread(target=masker.mask_column, args=("CARD", pa.concat_arrays([CARDS] * 40)))
        thread.start()
        while thread.is_alive():
            seen.append(list(calls))
            time.sleep(0.001)
    finally:
        sys.setswitchinterval(interval)
    assert ["begins"] in seen
    assert calls == ["begins", "ends"]


def test_a_closed_masker_ends_the_calls_of_threads(masker):
    masker.mask_column("CARD", CARDS)
    masker.close()

    def run():
        with pytest.raises(ValueError, match="closed"):
            masker.mask_column("CARD", CARDS)

    run_threads(2, run)


def child_is_right(function, seconds=60):
    """Whether a forked child gets True from the function. It must not hang."""
    pid = os.fork()
    if pid == 0:
        status = 1
        try:
            status = 0 if function() else 1
        finally:
            os._exit(status)
    for _ in range(seconds * 100):
        done, status = os.waitpid(pid, os.WNOHANG)
        if done:
            return status == 0
        time.sleep(0.01)
    os.kill(pid, 9)
    os.waitpid(pid, 0)
    return False


def test_fork(masker, expected):
    assert child_is_right(lambda: results(masker) == expected)
    assert results(masker) == expected


@pytest.mark.filterwarnings("ignore:This process:DeprecationWarning")
def test_fork_while_threads_mask(masker, expected):
    ended = threading.Event()

    def run():
        while not ended.is_set():
            # Handles are opened, too, which takes other locks.
            assert korv.mask(NUMBERS, "NID, secret=test", SECRETS) == expected[1]
            assert masker.mask_column("CARD", CARDS) == expected[0]

    threads = [threading.Thread(target=run) for _ in range(3)]
    for thread in threads:
        thread.start()
    try:
        for _ in range(10):
            assert child_is_right(lambda: results(masker) == expected)
    finally:
        ended.set()
        for thread in threads:
            thread.join()


@pytest.mark.parametrize("method", ["fork", "spawn", "forkserver"])
@pytest.mark.filterwarnings("ignore:This process:DeprecationWarning")
def test_pools_of_processes(secrets_file, expected, method):
    masker = korv.Masker(RULES, secrets_file)
    with multiprocessing.get_context(method).Pool(2) as pool:
        assert pool.map(results, [masker] * 4) == [expected] * 4


def test_errors_cross_processes(secrets_file):
    with multiprocessing.get_context("spawn").Pool(1) as pool:
        with pytest.raises(korv.MaskError, match="1 value failed: row 0, column CARD: CCN error 2") as caught:
            pool.apply(fail, [korv.Masker(RULES, secrets_file)])
    assert caught.value.records[0].code == 2


def fail(masker):
    return masker.mask_column("CARD", ["1"])


def test_pickles_work_in_a_process_that_has_loaded_nothing(secrets_file, expected):
    import subprocess

    data = pickle.dumps(korv.Masker(RULES, secrets_file))
    code = "import pickle, sys; m = pickle.load(sys.stdin.buffer); print(m.mask_column('NUMBER', ['12', '3456']))"
    out = subprocess.run([sys.executable, "-c", code], input=data, capture_output=True, check=True).stdout
    assert out.decode().strip() == str(korv.Masker(RULES, SECRETS).mask_column("NUMBER", ["12", "3456"]))


def test_memory_does_not_grow(masker):
    def used():
        with open("/proc/self/statm") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGESIZE")

    failing = pa.array(["1"] * 1000)

    def work():
        errors = []
        masker.mask_column("CARD", CARDS)
        masker.mask_column("CARD", failing, errors=errors)
        korv.mask(CARDS[:10], "CCN, secret=test", SECRETS)

    for _ in range(20):
        work()
    before = used()
    for _ in range(80):
        work()
    assert used() - before < 8 << 20
