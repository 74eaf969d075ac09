# SPDX-License-Identifier: Apache-2.0
"""The arrays and values of a document."""

from __future__ import annotations

import dataclasses
import datetime
import operator
from typing import Any, NamedTuple, Optional

import numpy as np
from numpy.typing import ArrayLike, NDArray

from . import _core


class HistoryEntry(NamedTuple):
    """One undo step. `applied` is false for a step that can be redone."""

    label: str
    tool: str
    time: datetime.datetime
    bytes: int
    joins_previous: bool
    applied: bool


class SurfaceHits(NamedTuple):
    """Results of `Arrays.pick` and `Arrays.nearest`, one row per ray or point.

    `face` is the face of the current level, int64 (n,), -1 if the ray misses the surface.
    `position` and `normal`, float32 (n, 3), are in world space; `normal` has unit length. For a ray
    that misses the surface, they are NaN. `t`, float32 (n,), is the parameter of the point on the
    ray, origin + t direction, or the distance to the point.
    """

    face: np.ndarray
    position: np.ndarray
    normal: np.ndarray
    t: np.ndarray


@dataclasses.dataclass(frozen=True)
class Layer:
    """A layer of the current level, as it was when `Document.layers` was read."""

    name: str
    strength: float
    visible: bool
    writable: bool
    active: bool
    index: int
    _core: _core.Session = dataclasses.field(repr=False, compare=False)

    @property
    def offsets(self) -> NDArray[np.float32]:
        """float32 (vertices, 3) : A copy of the offsets, mesh-local, without the strength.

        Raises `Error` if the layer was removed, renamed or moved in the meantime.
        """
        return self._core.layer_offsets(self.index, self.name)


class Arrays:
    """Arrays of the current level, and other values of a document.

    Positions, normals and offsets are mesh-local; `local_to_world` converts them. All arrays except
    `positions` are copies.
    """

    _core: _core.Session

    @property
    def positions(self) -> NDArray[np.float32]:
        """float32 (vertices, 3) : A read-only view of the positions, mesh-local, with strides (20, 4).

        The view shows all later changes. While it or an array derived from it exists, commands that
        would invalidate it raise `BufferError`: changes of the levels, undo and redo of such
        changes, `reset` and `close`. Use ``positions.copy()`` to keep values across them, and
        `set_positions` to move vertices.

        Examples
        --------
        >>> low, high = s.positions.min(axis=0), s.positions.max(axis=0)
        """
        return self._core.positions()

    @property
    def normals(self) -> NDArray[np.float32]:
        """float32 (vertices, 3) : Unit normals, mesh-local. A copy, because normals are stored as
        16-bit integers."""
        return self._core.normals()

    def faces(self, level: Optional[int] = None) -> NDArray[np.uint32]:
        """Return the vertices of the faces of a level.

        Parameters
        ----------
        level : int, optional
            By default, the current level.

        Returns
        -------
        numpy.ndarray
            uint32 (faces, 4), or (faces, 3) for level 0 of a triangle mesh. Face f of a level has
            the children 4f to 4f + 3 on the next level.

        Raises
        ------
        IndexError
            If there is no such level.

        See Also
        --------
        positions : The positions of the vertices.

        Examples
        --------
        >>> corners = s.positions[s.faces()]
        >>> corners.shape == (len(s.faces()), 4, 3)
        True
        """
        number = None if level is None else operator.index(level)
        if number is not None and not 0 <= number < 2**32:
            raise IndexError(f"there is no level {number}")
        return self._core.faces(number)

    @property
    def uvs(self) -> Optional[NDArray[np.float32]]:
        """float32 (faces, corners, 2) or None : Texture coordinates per corner, v pointing up; NaN
        for faces without them. None if the mesh has none."""
        return self._core.uvs()

    @property
    def colors(self) -> Optional[NDArray[np.float32]]:
        """float32 (vertices, 4) or None : Red, green, blue and alpha from 0 to 1, as imported."""
        return self._core.colors()

    @property
    def mask(self) -> NDArray[np.uint8]:
        """uint8 (vertices,) : Freeze amounts from 0 (free) to 127 (masked); see `freeze`."""
        return self._core.mask()

    @property
    def hidden_faces(self) -> NDArray[np.bool_]:
        """bool (faces,) : Whether each face is hidden."""
        return self._core.hidden_faces()

    @property
    def local_to_world(self) -> NDArray[np.float32]:
        """float32 (4, 4) : The transform, row-vector convention: world = (x, y, z, 1) @ matrix."""
        return self._core.local_to_world()

    @property
    def layers(self) -> tuple[Layer, ...]:
        """tuple of Layer : The layers of the current level, lowest first."""
        listed = self._core.state()["layers"]
        return tuple(Layer(**layer, index=index, _core=self._core) for index, layer in enumerate(listed))

    @property
    def history(self) -> tuple[HistoryEntry, ...]:
        """tuple of HistoryEntry : All undo steps, oldest first, including those that can be redone."""
        state = self._core.state()
        return tuple(
            HistoryEntry(
                entry["label"],
                entry["tool"],
                datetime.datetime.fromtimestamp(entry["time"]),
                entry["bytes"],
                entry["joins_previous"],
                index < state["history_position"],
            )
            for index, entry in enumerate(state["history"])
        )

    @property
    def tools(self) -> tuple[str, ...]:
        """tuple of str : Names of all tools."""
        return tuple(self._core.state()["tools"])

    @property
    def active_tool(self) -> dict[str, Any]:
        """dict : Name and settings of the active tool, with the units of `Commands.set`."""
        return self._core.state()["tool"]

    @property
    def current_level(self) -> int:
        """int : Number of the current level."""
        return self._core.state()["current_level"]

    @property
    def level_count(self) -> int:
        """int : Number of levels."""
        return len(self._core.state()["levels"])

    @property
    def is_modified(self) -> bool:
        """bool : Whether the sculpture differs from the file that was last opened or saved."""
        return self._core.state()["is_modified"]

    @property
    def written_files(self) -> tuple[str, ...]:
        """tuple of str : Paths of the files that the document has written, in order."""
        return tuple(self._core.written)

    def pick(self, rays: ArrayLike) -> SurfaceHits:
        """Intersect rays with the visible surface of the current level.

        Parameters
        ----------
        rays : array_like, shape (n, 6)
            Origins and directions in world space. Directions need not have unit length.

        Returns
        -------
        SurfaceHits
            The first hits, one row per ray. `t` is the ray parameter.

        Raises
        ------
        Error
            If the shape is wrong, or a number is not finite.

        See Also
        --------
        nearest : Find the nearest points.

        Examples
        --------
        >>> hits = s.pick([[0, 0.5, 10, 0, 0, -1], [0, 9, 10, 0, 0, -1]])
        >>> (hits.face >= 0).tolist()
        [True, False]
        """
        return SurfaceHits(**self._core.pick(rays))

    def nearest(self, points: ArrayLike) -> SurfaceHits:
        """Find the nearest points on the visible surface of the current level.

        Parameters
        ----------
        points : array_like, shape (n, 3)
            World space. Under a non-uniform transform, distances are compared in mesh-local space,
            as for the field ``surface`` of strokes.

        Returns
        -------
        SurfaceHits
            One row per point. `t` is the distance in world space.

        Raises
        ------
        Error
            If the shape is wrong, or a number is not finite.

        See Also
        --------
        pick : Intersect rays with the surface.

        Examples
        --------
        >>> hits = s.nearest(s.positions[:5])
        >>> bool((hits.t < 1e-6).all())
        True
        """
        return SurfaceHits(**self._core.nearest(points))
