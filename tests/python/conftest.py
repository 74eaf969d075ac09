# SPDX-License-Identifier: Apache-2.0
"""Fixtures of the tests of the Python package."""

import os
from pathlib import Path

import numpy as np
import pytest

import trovik

SOURCE = Path(__file__).resolve().parents[2]
SPOT = SOURCE / "examples" / "meshes" / "spot.obj"


@pytest.fixture(autouse=True)
def working_folder(tmp_path, monkeypatch):
    """Relative paths in a test refer to a temporary folder."""
    monkeypatch.chdir(tmp_path)
    return tmp_path


@pytest.fixture
def command():
    """The path of the command `trovik`."""
    return os.environ["TROVIK_COMMAND"]


def cube(levels=0, **setup):
    corners = np.array([[x, y, z] for z in (-1, 1) for y in (-1, 1) for x in (-1, 1)], dtype=np.float32)
    faces = [[0, 2, 3, 1], [4, 5, 7, 6], [0, 1, 5, 4], [2, 6, 7, 3], [0, 4, 6, 2], [1, 3, 7, 5]]
    return trovik.new(corners, faces, name="cube", levels=levels, **setup)


@pytest.fixture
def ball():
    """A cube of four levels, which is nearly a sphere: 1538 vertices."""
    with cube(levels=4) as document:
        document.set(radius=0.4)
        yield document


def bits(document):
    """All that a command may change on the current level."""
    return (
        document.positions.tobytes(),
        document.normals.tobytes(),
        document.mask.tobytes(),
        document.hidden_faces.tobytes(),
        document.current_level,
        document.level_count,
    )
