# SPDX-License-Identifier: Apache-2.0
"""Functions that open and create documents, and write files for them."""

from __future__ import annotations

import os
from typing import Any, Optional, Sequence, Union

import numpy as np
from numpy.typing import ArrayLike

from . import _core
from ._document import Document
from ._errors import Error
from ._steps import Progress, fields_of

Path = Union[str, "os.PathLike[str]"]


def _text(path: Path) -> str:
    text = os.fspath(path)
    if not isinstance(text, str):
        raise TypeError(f"a path must be a string or a path of strings, not {type(text).__name__}")
    return text


def _setup(given: dict) -> dict:
    fields = fields_of(given)
    for name in ("mesh", "scene", "steps"):
        if name in fields:
            raise Error(f"/{name}: not permitted here; the setup has neither a source nor steps")
    return fields


def open(
    path: Path,
    *,
    journal: Optional[Path] = None,
    journal_sync: bool = False,
    progress: Progress = None,
    **setup: Any,
) -> Document:
    """Open a mesh or a scene.

    Parameters
    ----------
    path : path
        An OBJ, PLY, STL, glTF or GLB file, or a scene (``.trovik``).
    journal : path, optional
        A journal to write, from which `recover` restores the work after a crash. The journal is
        ended when the document is closed, and when the document is dropped, or the interpreter
        exits, without unsaved changes. A journal that was not ended is not overwritten.
    journal_sync : bool, optional
        Whether to sync the journal to disk after each step.
    progress : callable, optional
        See `Commands`.
    **setup
        Fields of the setup of scripts: ``levels``, ``units``, ``up``, ``transform``, ``camera``,
        ``mirror``, ``seed``, ``undoBudget``, ``subdivideBudget``, ``preferences`` …

    Returns
    -------
    Document
        The new document, which belongs to the calling thread.

    Raises
    ------
    Error
        With the file, the location in it and the reason.
    Cancelled
        If `progress` returned ``False``.

    See Also
    --------
    new : Create a document from arrays.
    recover : Restore the work from a journal.

    Examples
    --------
    >>> with trovik.open("spot.obj", journal="work.journal", levels=2) as s:
    ...     s.mirror("x")
    ...     s.save("work.trovik")
    """
    source = os.path.abspath(_text(path))
    kind = "scene" if source.lower().endswith(".trovik") else "mesh"
    fields = {kind: source, **_setup(setup)}
    target = "" if journal is None else os.path.abspath(_text(journal))
    return Document(_core.Session.open(fields, target, journal_sync, progress), has_journal=bool(target))


def new(
    positions: ArrayLike,
    faces: Union[ArrayLike, Sequence[Sequence[int]]],
    *,
    name: str = "untitled",
    progress: Progress = None,
    **setup: Any,
) -> Document:
    """Create a document from arrays.

    A mesh of only quads or only triangles becomes level 0 unchanged. Any other mesh is refined once.
    The document has no journal; to get one, save a scene and open it with a journal.

    Parameters
    ----------
    positions : array_like, shape (vertices, 3)
        Mesh-local positions.
    faces : array_like, shape (faces, corners), or a sequence of sequences
        Vertices of each face, counted from 0, counterclockwise seen from outside.
    name : str, optional
        Name of the mesh, used in messages and exported files.
    progress : callable, optional
        See `Commands`.
    **setup
        As for `open`.

    Returns
    -------
    Document
        The new document, which belongs to the calling thread.

    Raises
    ------
    Error
        If the arrays do not describe a surface.

    See Also
    --------
    open : Open a mesh or a scene.

    Examples
    --------
    >>> s = trovik.new([[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0]], [[0, 1, 2, 3]], levels=4)
    """
    points = np.asarray(positions, dtype=np.float32)
    if points.ndim != 2 or points.shape[1] != 3:
        raise Error(f"{name}: positions must have the shape (vertices, 3), not {points.shape}")
    rows = [np.asarray(face) for face in faces]
    if any(row.ndim != 1 or not np.issubdtype(row.dtype, np.integer) for row in rows):
        raise Error(f"{name}: each face must be a sequence of integers")
    sizes = np.array([len(row) for row in rows], dtype=np.uint32)
    corners = np.concatenate(rows) if rows else np.zeros(0, dtype=np.int64)
    if len(corners) and not (corners.min() >= 0 and corners.max() < len(points)):
        raise Error(f"{name}: a face refers to a vertex that does not exist; there are {len(points)}")
    core = _core.Session.new(name, points, sizes, corners.astype(np.uint32), _setup(setup), progress)
    return Document(core)


def recover(journal: Path, scene: Path, *, progress: Progress = None) -> None:
    """Replay a journal and save the result as a scene, like ``trovik recover``.

    Parameters
    ----------
    journal : path
        The journal, which is not changed.
    scene : path
        The scene to write (``.trovik``).
    progress : callable, optional
        See `Commands`.

    Raises
    ------
    Error
        If the journal is damaged, or a file that it needs is missing or has changed.

    See Also
    --------
    open : Open a mesh or a scene with a journal.

    Examples
    --------
    >>> with trovik.open("spot.obj", journal="work.journal") as s:
    ...     s.filter("smooth")
    >>> trovik.recover("work.journal", "recovered.trovik")
    """
    _core.recover(_text(journal), _text(scene), progress)


def save_stamp(path: Path, pixels: ArrayLike) -> str:
    """Write an array as a stamp image with 32-bit floats.

    Parameters
    ----------
    path : path
        A TIFF or EXR file (``.tif``, ``.tiff``, ``.exr``). A name with ``_vdm`` denotes a vector
        displacement map.
    pixels : array_like, shape (height, width) or (height, width, 3)
        Rows from top to bottom. 0 leaves the surface unchanged, 1 gives the tool's full effect, and
        negative values invert the effect.

    Returns
    -------
    str
        The absolute path, for the setting ``stamp``.

    Raises
    ------
    Error
        If the shape is wrong, or the file cannot be written.

    See Also
    --------
    Document.set : Change settings, such as the stamp.

    Examples
    --------
    >>> y, x = np.mgrid[-1:1:128j, -1:1:128j]
    >>> ring = trovik.save_stamp("ring.tif", np.exp(-40 * (np.hypot(x, y) - 0.6) ** 2))
    >>> s.tool("Repeat", stamp={"path": ring, "spacing": 10})
    """
    image = np.asarray(pixels, dtype=np.float32)
    if image.ndim not in (2, 3) or image.size == 0 or (image.ndim == 3 and image.shape[2] not in (1, 3)):
        raise Error(f"a stamp must have the shape (height, width) or (height, width, 3), not {image.shape}")
    target = os.path.abspath(_text(path))
    _core.write_stamp(target, image)
    return target
