"""Threads, processes, signals, and memory over many calls."""

from __future__ import annotations

import multiprocessing
import os
import signal
import threading
from concurrent.futures import ProcessPoolExecutor, ThreadPoolExecutor
from typing import Any

import numpy as np
import pytest
import tarvo
from samples import picture_of


def work(seed: int) -> str:
    picture = picture_of(64, 48, seed=seed)
    made = picture.adjust_contrast((3, 3, 40, 40), "#808080", 1.6, 1.4, 1.2).stretch(90, 31)
    return made.convolute(None, [1, 2, 1], [1, 4, 1]).sha256()


def contrast(picture: tarvo.Picture) -> tarvo.Picture:
    return picture.adjust_contrast(None, "#808080", 1.6, 1.4, 1.2)


SEEDS = range(40)


def test_threads() -> None:
    expected = [work(seed) for seed in SEEDS]
    with ThreadPoolExecutor(8) as pool:
        assert list(pool.map(work, SEEDS)) == expected


def test_the_interpreter_is_free() -> None:
    """Another thread goes on while one is in a call that waits for it."""
    picture = picture_of(700, 700)
    answered = threading.Event()
    asked = threading.Event()

    def answer() -> None:
        asked.wait(20)
        answered.set()

    thread = threading.Thread(target=answer)
    thread.start()

    def progress() -> bool:
        asked.set()
        return answered.wait(20)

    assert picture.stretch(900, 900, progress=progress).size == (900, 900)
    thread.join()


def test_threads_share_pictures_and_objects() -> None:
    picture, matrix, rect = picture_of(64, 48), tarvo.ColorMatrix(), tarvo.Rectangle(1, 1, 30, 30)
    expected = picture.adjust_rgb(rect, matrix).sha256()

    def same(_: int) -> bool:
        matrix.copy_from(matrix)
        return picture.adjust_rgb(rect, matrix).sha256() == expected and hash(picture) == hash(picture.sha256())

    with ThreadPoolExecutor(8) as pool:
        assert all(pool.map(same, range(300)))


@pytest.mark.parametrize("method", ["fork", "spawn", "forkserver"])
@pytest.mark.filterwarnings("ignore::DeprecationWarning")
def test_processes(method: str) -> None:
    pictures = [picture_of(64, 48, seed % 2 == 0, seed) for seed in range(6)]
    with ProcessPoolExecutor(2, mp_context=multiprocessing.get_context(method)) as pool:
        assert list(pool.map(contrast, pictures)) == [contrast(p) for p in pictures]


@pytest.mark.filterwarnings("ignore::DeprecationWarning")
def test_fork_while_others_are_in_calls() -> None:
    stop = threading.Event()

    def busy() -> None:
        picture = picture_of(300, 300)
        while not stop.is_set():
            picture.stretch(310, 310)

    threads = [threading.Thread(target=busy) for _ in range(3)]
    for thread in threads:
        thread.start()
    try:
        expected = work(1)
        for _ in range(10):
            child = os.fork()
            if child == 0:
                signal.alarm(30)  # a child that hangs fails
                os._exit(0 if work(1) == expected else 1)
            assert os.waitpid(child, 0)[1] == 0
    finally:
        stop.set()
        for thread in threads:
            thread.join()


class Rung(Exception):
    pass


def test_signals_end_a_long_operation() -> None:
    """As Ctrl-C does: a handler that raises."""

    def ring(*_: Any) -> None:
        raise Rung

    picture = picture_of(3000, 3000)
    before = signal.signal(signal.SIGALRM, ring)
    finished = 0
    try:
        with pytest.raises(Rung):
            signal.setitimer(signal.ITIMER_REAL, 0.05)
            for _ in range(1000):
                picture.free_rotate_by_shear(44)
                finished += 1
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, before)
    assert finished == 0


def resident() -> int:
    with open("/proc/self/statm") as told:
        return int(told.read().split()[1]) * os.sysconf("SC_PAGESIZE")


def round_of_calls(picture: tarvo.Picture, masked: tarvo.Picture) -> None:
    picture.adjust_contrast((1, 1, 9, 9), "#808080", 1.6, 1.4, 1.2)
    picture.adjust_rgb(cm=np.eye(3))
    picture.convolute(None, [1, 2, 1], [1, 2, 1])
    picture.get_average_hsv()
    np.asarray(picture), np.asarray(masked), memoryview(picture), np.from_dlpack(picture)
    tarvo.from_array(np.asarray(picture)[2:5], copy=False)
    tarvo.decode(masked.encode("png")).convert_to_string()
    picture.apply("Stretch(fit(9))")
    wrong: Any = "1"
    for fail in (lambda: picture.stretch(0, 1), lambda: picture.add(None), lambda: picture.stretch(wrong, 1)):
        with pytest.raises((tarvo.Error, TypeError)):
            fail()


def test_memory_stays() -> None:
    picture, masked = picture_of(40, 30), picture_of(40, 30, mask=True)
    for _ in range(100):
        round_of_calls(picture, masked)
    before = resident()
    for _ in range(1000):
        round_of_calls(picture, masked)  # more than ten calls
    # One picture's pixels lost in each round would be 4.8 MB.
    assert resident() - before < 1 << 20
