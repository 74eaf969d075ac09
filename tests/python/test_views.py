# SPDX-License-Identifier: Apache-2.0
"""Views of the positions: they are read-only, show all changes, and never become invalid."""

import gc

import numpy as np
import pytest
from conftest import bits, cube
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

import trovik


def test_positions_are_a_view(ball):
    p = ball.positions
    assert p.dtype == np.float32 and p.strides == (20, 4) and p.shape == (1538, 3)
    assert not p.flags.owndata and not p.flags.writeable
    with pytest.raises(ValueError):
        p[0, 0] = 1
    with pytest.raises(ValueError):
        p.flags.writeable = True
    other = ball.positions
    assert other.__array_interface__["data"] == p.__array_interface__["data"]
    before = p.copy()
    ball.stroke(surface=[[0, 0, 1]])
    assert (p != before).any()
    ball.undo()
    assert (p == before).all()


@pytest.mark.parametrize(
    "command",
    [
        lambda s: s.subdivide(),
        lambda s: s.unsubdivide(),
        lambda s: s.level(0),
        lambda s: s.do({"level": 1}),
        lambda s: s.delete_levels("lower"),
        lambda s: s.reset(),
        lambda s: s.undo(3),
        lambda s: s.do({"undo": 9}),
        lambda s: s.redo(),
        lambda s: s.close(),
    ],
)
def test_views_prevent_changes_of_the_levels(command):
    s = cube(levels=2)
    s.subdivide()
    s.level(1)
    s.level(2)
    s.freeze("all")
    s.undo()
    s.subdivide() if s.level_count < 4 else s.level(3)
    s.undo()
    # Step 1 and 3 change the levels, and so does the step that can be redone.
    before = bits(s)
    view = s.positions[:, 1]
    with pytest.raises(BufferError, match="1 view of the positions"):
        command(s)
    assert (view == s.positions[:, 1]).all() and bits(s) == before
    del view
    gc.collect()
    s.undo()


def test_other_commands_run_while_views_exist(ball):
    p = ball.positions
    ball.level(4)
    ball.apply_to_base()
    ball.freeze("all")
    ball.undo()
    ball.set_positions(p + 0.1)
    ball.symmetrize("x")
    with ball.layer("a"):
        ball.filter("inflate", amount=0.1)
    ball.hide(faces=[[0, 5]])
    ball.undo(4)
    ball.save("a.trovik")
    assert (p == ball.positions).all()


def test_views_keep_the_memory_of_a_dropped_document():
    s = cube(levels=3)
    p = s.positions
    expected = p.copy()
    part = p[::2]
    del s, p
    gc.collect()
    junk = [cube(levels=3) for _ in range(3)]
    assert (part == expected[::2]).all() and junk


def test_views_stay_valid_after_a_with_statement():
    with cube(levels=3) as s:
        p = s.positions
        expected = p.copy()
    assert s.closed and (p == expected).all()
    with pytest.raises(trovik.ClosedError):
        s.positions
    part = p[1:]
    del p, s
    gc.collect()
    assert (part == expected[1:]).all()
    del part


COMMANDS = st.sampled_from(
    "subdivide level undo redo stroke mask set_positions reset hide layer delete view drop".split()
)


@settings(max_examples=40, deadline=None, suppress_health_check=list(HealthCheck))
@given(st.lists(st.tuples(COMMANDS, st.integers(0, 4)), max_size=25))
def test_views_stay_valid_in_random_work(steps):
    s = cube(levels=1)
    s.set(radius=0.7)
    views = []
    for name, number in steps:
        before = bits(s)
        try:
            if name == "subdivide" and s.level_count < 4:
                s.subdivide()
            elif name == "level":
                s.level(number)
            elif name in ("undo", "redo"):
                getattr(s, name)(number + 1)
            elif name == "stroke":
                s.stroke(surface=[[0, number / 4, 1]])
            elif name == "mask":
                s.freeze(s.positions[:, 0] > number / 4)
            elif name == "set_positions":
                s.set_positions(s.positions * np.float32(1 + number / 8))
            elif name == "reset":
                s.reset()
            elif name == "hide":
                s.hide(faces=[[number, 1]])
            elif name == "layer":
                s.layer(str(number))
            elif name == "delete":
                s.delete_levels("higher" if number else "lower")
            elif name == "view":
                views.append(s.positions[number:])
            else:
                views.clear()
        except BufferError:
            assert views and bits(s) == before
        except trovik.Error:
            pass
        assert all((view == s.positions[len(s.positions) - len(view) :]).all() for view in views)


@settings(max_examples=60, deadline=None, suppress_health_check=list(HealthCheck))
@given(
    st.recursive(
        st.none() | st.booleans() | st.integers() | st.floats() | st.text(max_size=5),
        lambda inner: st.lists(inner, max_size=3) | st.dictionaries(st.text(max_size=6), inner, max_size=3),
        max_leaves=8,
    ),
    st.sampled_from("set stroke mask layer mirror camera transform setPositions undo hide".split()),
)
def test_any_value_is_run_or_refused(value, step):
    s = cube(levels=1)
    try:
        s.do({step: value})
    except (trovik.Error, ValueError, TypeError):
        pass
    assert np.isfinite(s.positions).all()
