# SPDX-License-Identifier: Apache-2.0
"""Threads, progress, cancellation, observers and live strokes."""

import gc
import os
import signal
import sys
import threading
import time

import numpy as np
import pytest
from conftest import SPOT, bits, cube

import trovik


def in_thread(work):
    """Run a function in another thread, and return its result or exception."""
    result = []

    def run():
        try:
            result.append(work())
        except BaseException as error:
            result.append(error)

    thread = threading.Thread(target=run)
    thread.start()
    thread.join(60)
    assert not thread.is_alive()
    return result[0]


def test_calls_from_other_threads_are_refused(ball):
    before = bits(ball)
    calls = (ball.subdivide, lambda: ball.positions, ball.close, lambda: ball.pick(np.zeros((1, 6))), ball.live_stroke)
    for call in calls:
        error = in_thread(call)
        assert isinstance(error, trovik.ThreadError) and "move_to_this_thread" in str(error)
    assert bits(ball) == before
    assert in_thread(lambda: repr(ball)) == "<trovik.Document, in use by another thread or command>"


def test_documents_can_be_moved_to_another_thread(ball):
    def work():
        ball.move_to_this_thread()
        ball.subdivide()
        return ball.level_count

    assert in_thread(work) == 6
    with pytest.raises(trovik.ThreadError):
        ball.positions
    ball.move_to_this_thread()
    assert ball.level_count == 6


def test_documents_in_several_threads_give_the_same_bits():
    def work():
        s = cube(levels=4)
        s.set(radius=0.4)
        for i in range(6):
            s.stroke(surface=[[0, i / 9, 0.8], [0.5, 0, 0.7]])
        result = bits(s)
        s.close()
        return result

    expected = work()
    results = []
    threads = [threading.Thread(target=lambda: results.append(work())) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(60)
    assert results == [expected] * 4


def test_the_gil_is_released_in_commands():
    s = cube(levels=6)
    s.set(radius=1.5, spacing=2)
    counted = []
    stop = threading.Event()

    def count():
        while not stop.is_set():
            counted.append(time.monotonic())
            time.sleep(0.001)

    thread = threading.Thread(target=count)
    thread.start()
    during = []
    # Longer and longer strokes, until the other thread has run several times during one of them.
    for passes in (2 ** i for i in range(10)):
        begin = time.monotonic()
        s.stroke(surface=[[-1, 0, 1], [1, 0, 1]] * passes)
        end = time.monotonic()
        during = [moment for moment in counted if begin < moment < end]
        if len(during) > 3:
            break
    stop.set()
    thread.join()
    assert len(during) > 3


def test_progress_is_reported_and_cancels(ball):
    reports = []
    ball.subdivide(2, progress=lambda done, total: reports.append((done, total)))
    assert reports and all(0 <= done <= total or total == 0 for done, total in reports)
    before = bits(ball)
    count = len(ball.history)
    with pytest.raises(trovik.Cancelled):
        ball.subdivide(progress=lambda done, total: False)
    assert bits(ball) == before and len(ball.history) == count
    with pytest.raises(trovik.Cancelled):
        trovik.open(SPOT, progress=lambda done, total: False)
    with pytest.raises(trovik.Cancelled):
        ball.save("a.trovik", progress=lambda done, total: False)
    assert os.listdir(".") == []


def test_an_exception_in_progress_cancels(ball):
    before = bits(ball)

    def fail(done, total):
        raise KeyError("mine")

    with pytest.raises(KeyError, match="mine"):
        ball.subdivide(progress=fail)
    assert bits(ball) == before
    with pytest.raises(TypeError):
        ball.subdivide(progress=3)
    ball.subdivide()


def test_documents_cannot_be_used_in_progress(ball):
    errors = []
    other = cube()

    def use(done, total):
        for call in (lambda: ball.positions, other.subdivide, cube, ball.close, lambda: trovik.open(SPOT)):
            with pytest.raises(trovik.BusyError) as caught:
                call()
            errors.append(caught.value)

    ball.subdivide(progress=use)
    assert errors


def test_documents_may_be_dropped_in_progress(ball):
    others = [cube(levels=2) for _ in range(3)]

    def drop(done, total):
        if others:
            others.pop()
            gc.collect()

    ball.subdivide(2, progress=drop)
    assert not others


def test_a_cancelled_stroke_is_undone(ball):
    ball.subdivide(2)
    ball.set(radius=0.5, spacing=1)
    before = bits(ball)
    begin = time.monotonic()
    with pytest.raises(trovik.Cancelled):
        ball.stroke(
            surface=np.c_[np.cos(np.linspace(0, 60, 4000)), np.sin(np.linspace(0, 60, 4000)), np.ones(4000)],
            progress=lambda dabs, total: dabs < 5,
        )
    assert time.monotonic() - begin < 10
    assert bits(ball) == before
    ball.stroke(surface=[[0, 0, 1]])


def test_a_cancelled_stroke_is_undone_if_the_history_is_full():
    s = cube(levels=5, undoBudget=20000)
    s.set(radius=0.5, spacing=1)
    for i in range(3):
        s.stroke(surface=[[0.3 * i, 0, 1], [0.3 * i, 0.1, 1]])
    assert len(s.history) < 3
    before = bits(s)
    angles = np.linspace(0, 60, 4000)
    with pytest.raises(trovik.Cancelled):
        s.stroke(
            surface=np.c_[np.cos(angles), np.sin(angles), np.ones(4000)],
            progress=lambda dabs, total: dabs < 5,
        )
    assert bits(s) == before


@pytest.mark.parametrize("work", ["stroke", "subdivide", "live"])
def test_ctrl_c_cancels(work):
    s = cube(levels=6)
    s.set(radius=1.0, spacing=0.5)
    s.camera(from_=[0, 0, 1], width=400, height=400)
    before = bits(s)
    angles = np.linspace(0, 60, 4000)

    def run():
        if work == "stroke":
            s.stroke(surface=np.c_[np.cos(angles), np.sin(angles), np.ones(4000)])
        elif work == "subdivide":
            # Ctrl-C arrives in the first report.
            s.subdivide(2, progress=lambda done, total: signal.raise_signal(signal.SIGINT) or True)
        else:
            with s.live_stroke() as stroke:
                circle = 200 + 90 * np.c_[np.cos(angles), np.sin(angles)]
                stroke.add(np.c_[circle, np.ones(4000), 8 * np.arange(4000)])

    timer = threading.Timer(0.1, lambda: os.kill(os.getpid(), signal.SIGINT))
    if work != "subdivide":
        timer.start()
    with pytest.raises(KeyboardInterrupt):
        run()
    timer.cancel()
    assert bits(s) == before
    s.stroke(surface=[[0, 0, 1]])


def test_live_strokes_give_the_bits_of_pen_strokes():
    i = np.arange(40)
    samples = np.c_[150 + 2.5 * i, 200 + 20 * np.sin(i), 0.2 + 0.02 * i, 8.0 * i]
    results = []
    for live in (True, False):
        with cube(levels=4, camera={"from": [0, 0, 1], "width": 400, "height": 400}) as s:
            s.set(radius=0.2)
            if live:
                with s.live_stroke() as stroke:
                    for sample in samples:
                        stroke.add(sample)
                assert stroke.is_over
            else:
                s.stroke(pen=samples, path={"interactive": True})
            assert len(s.history) == 1
            results.append(bits(s))
    assert results[0] == results[1]


def test_live_strokes_are_abandoned_by_exceptions(ball):
    ball.camera(from_=[0, 0, 1], width=400, height=400)
    before, count = bits(ball), len(ball.history)
    sample = [[200, 200, 1, 0], [220, 200, 1, 100], [240, 210, 1, 200]]
    with pytest.raises(ZeroDivisionError):
        with ball.live_stroke() as stroke:
            stroke.add(sample)
            stroke.tick(300)
            with pytest.raises(trovik.Error, match="stroke is open"):
                ball.subdivide()
            with pytest.raises(trovik.Error):
                ball.live_stroke()
            with pytest.raises(ValueError, match="shape"):
                stroke.add([[1, 2]])
            with pytest.raises(trovik.Error, match="pressure"):
                stroke.add([[1, 2, 3, 400]])
            1 / 0
    assert bits(ball) == before and len(ball.history) == count and stroke.is_over
    with pytest.raises(trovik.Error, match="over"):
        stroke.add(sample)
    with pytest.raises(ValueError, match="modifier"):
        ball.live_stroke("soft")
    ended = ball.live_stroke()
    ball.stroke(continue_=True)
    with ball.live_stroke() as other:
        assert ended.is_over and not other.is_over
    ball.live_stroke("smooth").release()


def test_observers_are_called_after_commands(ball):
    events = []
    ball.save("a.trovik")
    observer = ball.observe(
        surface=lambda event: events.append(("surface", event)),
        history=lambda document: events.append(("history", len(document.history))),
        levels=lambda document: events.append(("levels", document.level_count)),
        layers=lambda document: events.append(("layers", [layer.name for layer in document.layers])),
        tool=lambda document: events.append(("tool", document.active_tool["name"])),
        modified=lambda on: events.append(("modified", on)),
        camera=lambda document: events.append(("camera", None)),
    )
    ball.stroke(surface=[[0, 0, 1]])
    names = [name for name, _ in events]
    assert names.count("history") == 1 and ("modified", True) in events and ("history", 1) in events
    surface = [event for name, event in events if name == "surface"]
    assert any("positions" in event.what and event.patches is not None and len(event.patches) for event in surface)
    events.clear()
    ball.subdivide()
    assert ("levels", 6) in events
    assert any("topology" in event.what for name, event in events if name == "surface")
    events.clear()
    ball.layer("a")
    ball.tool("Wax")
    ball.camera(from_=[1, 0, 0])
    assert ("layers", ["a"]) in events and ("tool", "Wax") in events and ("camera", None) in events
    events.clear()
    observer.remove()
    observer.remove()
    ball.undo()
    assert events == []
    with pytest.raises(TypeError, match="surfaces"):
        ball.observe(surfaces=print)


def test_observers_may_use_the_document_and_fail(ball, monkeypatch):
    problems = []
    monkeypatch.setattr(sys, "unraisablehook", lambda problem: problems.append(problem.exc_value))

    def change(document):
        if len(document.history) < 3:
            document.freeze("invert")

    def fail(document):
        raise ValueError("mine")

    with ball.observe(history=change), ball.observe(history=fail):
        ball.freeze("all")
    assert len(ball.history) == 3
    assert problems and all(isinstance(problem, ValueError) for problem in problems)


def test_memory_is_constant_over_documents():
    def resident():
        with open("/proc/self/statm") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")

    def work(count):
        for i in range(count):
            s = cube(levels=2)
            s.set(radius=0.4)
            if i % 10 == 0:
                s.stroke(surface=[[0, 0, 1]])
                with s.observe(surface=lambda event: None), s.layer("a"):
                    s.freeze(s.positions[:, 0] > 0)
                with pytest.raises(trovik.Error):
                    s.set(raduis=1)
                with pytest.raises(trovik.Cancelled):
                    s.subdivide(progress=lambda done, total: False)
        gc.collect()

    work(200)
    before = resident()
    work(1000)
    assert resident() - before < 8e6


def test_documents_closed_while_a_step_is_converted():
    s = cube()

    class Closing:
        def __fspath__(self):
            s.close()
            return "x.obj"

    with pytest.raises(trovik.ClosedError):
        s.export(Closing())
    assert os.listdir(".") == []


def test_documents_in_use_cannot_be_moved():
    s = cube(levels=5)
    s.set(radius=1.0, spacing=1)
    started, tried = threading.Event(), threading.Event()

    def move():
        started.wait(60)
        try:
            s.move_to_this_thread()
        except trovik.ThreadError as error:
            return error
        finally:
            tried.set()

    def progress(dabs, total):
        started.set()
        tried.wait(10)

    results = []
    thread = threading.Thread(target=lambda: results.append(move()))
    thread.start()
    s.subdivide(progress=progress)
    thread.join(60)
    assert isinstance(results[0], trovik.ThreadError)
    assert s.level_count == 7


def test_numpy_false_cancels(ball):
    with pytest.raises(trovik.Cancelled):
        ball.subdivide(progress=lambda done, total: np.False_)
    for value in (None, 0, np.True_):
        ball.level(0)
        ball.level(4, progress=lambda done, total: value)


def test_ticks_are_checked_and_limited(ball):
    ball.camera(from_=[0, 0, 1], width=400, height=400)
    with ball.live_stroke() as stroke:
        stroke.add([[200, 200, 1, 0]])
        for time_of_tick in (float("nan"), float("inf"), -1):
            with pytest.raises(trovik.Error, match="tick"):
                stroke.tick(time_of_tick)
        stroke.tick(1e300)
        assert stroke._last == 10000
        stroke.tick(5)
        assert stroke._last == 10000
