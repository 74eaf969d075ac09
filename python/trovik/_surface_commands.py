# SPDX-License-Identifier: Apache-2.0
"""The commands that change the whole surface, its mask and its visibility."""

from __future__ import annotations

import os
from typing import Any, Optional

import numpy as np
from numpy.typing import ArrayLike

from ._errors import Error
from ._steps import Progress, Steps, base64_of, fields_of


class SurfaceCommands(Steps):
    """Commands that change the whole surface; see `Commands`."""

    def set_positions(self, positions: ArrayLike, *, label: Optional[str] = None, progress: Progress = None) -> None:
        """Move all vertices of the current level, as one undo step.

        The mask reduces the displacements; fully masked and hidden vertices do not move. With an
        active layer, the displacements are recorded in it.

        Parameters
        ----------
        positions : array_like, shape (vertices, 3)
            New positions, mesh-local, converted to float32.
        label : str, optional
            Label of the undo step.
        progress : callable, optional
            See `Commands`.

        Raises
        ------
        Error
            If the shape is wrong, a position is not finite, or the active layer is hidden or locked.

        See Also
        --------
        Document.positions : The current positions.
        freeze : Change the mask.

        Examples
        --------
        >>> s.set_positions(s.positions + 0.01 * s.normals, label="Inflate")
        """
        rows = np.ascontiguousarray(positions, dtype="<f4")
        if rows.ndim != 2 or rows.shape[1] != 3:
            raise Error(f"positions must have the shape (vertices, 3), not {rows.shape}")
        step = {"values": base64_of(rows)}
        if label is not None:
            step["label"] = label
        self._do({"setPositions": step}, progress)

    def freeze(self, what: Any = None, *, progress: Progress = None, **fields: Any) -> None:
        """Change the mask, which protects vertices from being moved: the step ``mask``.

        Parameters
        ----------
        what : str or array_like, shape (vertices,), optional
            ``"clear"``, ``"all"`` or ``"invert"``; or one freeze amount per vertex of the current
            level: 0 (free) to 127 (masked), rounded, or booleans.
        progress : callable, optional
            See `Commands`.
        **fields
            A selection, such as ``center`` and ``radius`` (world space), ``cavity``, ``lasso`` (pixels)
            or ``group``; also ``mode``, ``"replace"`` by default for an array, and ``amount``, 0 to 1.
            See "Masks" in ``docs/stroke-script.md``.

        Raises
        ------
        Error
            If an amount is out of range, or a field is invalid.

        See Also
        --------
        Document.mask : The current amounts.

        Examples
        --------
        >>> s.freeze(np.clip((s.positions[:, 1] - 0.3) * 127, 0, 127))
        >>> s.freeze(center=[0, 0.5, 0.3], radius=0.5, softness=0.5, mode="subtract")
        >>> s.freeze("invert")
        """
        if isinstance(what, str):
            if fields:
                raise TypeError(f"freeze: {what!r} has no fields")
            self._do({"mask": what}, progress)
            return
        if what is not None:
            fields["values"] = base64_of(_amounts(what))
        self._do({"mask": fields_of(fields)}, progress)

    def symmetrize(self, axis: str, *, progress: Progress = None, **fields: Any) -> None:
        """Make the current level symmetric about a plane through the origin of the mesh.

        Parameters
        ----------
        axis : str
            ``"x"``, ``"y"`` or ``"z"``, perpendicular to the plane.
        progress : callable, optional
            See `Commands`.
        **fields
            ``from_``: the side that keeps its positions, ``"positive"`` (default) or ``"negative"``.

        Raises
        ------
        Error
            If the connectivity of the two sides differs.

        See Also
        --------
        mirror : Mirror subsequent strokes.

        Examples
        --------
        >>> s.stroke(surface=[[0.35, 0.2, 0.2]])
        >>> s.symmetrize("x", from_="positive")
        """
        self._do({"symmetrize": {"axis": axis, **fields_of(fields)}}, progress)

    def filter(self, kind: str, *, progress: Progress = None, **fields: Any) -> None:
        """Apply a filter to all unmasked vertices of the current level.

        Parameters
        ----------
        kind : str
            ``"inflate"``, ``"smooth"``, ``"relax"`` or ``"sharpen"``.
        progress : callable, optional
            See `Commands`.
        **fields
            ``amount`` (world units) for ``"inflate"``. For the others, ``strength``, 0 to 1 (``"sharpen"``:
            0 to 10), and ``iterations``.

        Raises
        ------
        Error
            If a field is invalid for this filter.

        See Also
        --------
        set_positions : Move the vertices to computed positions.

        Examples
        --------
        >>> s.filter("inflate", amount=0.01)
        >>> s.filter("smooth", strength=0.5, iterations=3)
        """
        self._do({"filter": {"kind": kind, **fields_of(fields)}}, progress)

    def transform_vertices(self, *, progress: Progress = None, **fields: Any) -> None:
        """Scale, rotate and move the unmasked vertices of the current level.

        Parameters
        ----------
        progress : callable, optional
            See `Commands`.
        **fields
            ``scale`` (one factor or three), ``axis`` (shape (3,)) and ``angle`` (degrees), ``translate``
            (shape (3,), world units), ``pivot`` (shape (3,), ``"center"`` or ``"maskBorder"``) and
            ``maskBlur`` (number of times).

        Raises
        ------
        Error
            If a field is invalid, or if all vertices are masked.

        See Also
        --------
        transform : Change the transform from mesh-local to world space.

        Examples
        --------
        >>> s.freeze(s.positions[:, 1] < 0.3)
        >>> s.transform_vertices(pivot="maskBorder", axis=[0, 1, 0], angle=20, maskBlur=4)
        """
        self._do({"transformVertices": fields_of(fields)}, progress)

    def decimate(self, faces: Optional[int] = None, *, progress: Progress = None, **fields: Any) -> None:
        """Replace the mesh by a coarser triangle mesh; see ``docs/topology.md``.

        Parameters
        ----------
        faces : int, optional
            The number of triangles to keep.
        progress : callable, optional
            See `Commands`.
        **fields
            ``ratio`` instead of `faces`, 0 to 1; ``error``, the largest distance between the surfaces
            (world units); ``keepBorders``.

        Raises
        ------
        Error
            If neither a number, a ratio nor an error is given, or if faces are hidden.
        BufferError
            If views of the positions exist.

        See Also
        --------
        repair : Repair the mesh.
        remesh : Replace the mesh by triangles of equal size.

        Examples
        --------
        >>> s.decimate(10000)
        >>> s.faces().shape
        (10000, 3)
        """
        if faces is not None:
            fields["faces"] = faces
        self._do({"decimate": fields_of(fields)}, progress)

    def remesh(self, edge_length: Optional[float] = None, *, progress: Progress = None, **fields: Any) -> None:
        """Replace the mesh by triangles with edges of equal length; see ``docs/topology.md``.

        Parameters
        ----------
        edge_length : float, optional
            The target length of the edges, in world units.
        progress : callable, optional
            See `Commands`.
        **fields
            ``faces``, the number of triangles, instead of `edge_length`; ``mode`` (``"both"``, ``"refine"``
            or ``"coarsen"``); ``keepBorders``, ``keepGroups`` and ``keepUvs``; ``creaseAngle`` (degrees,
            default 60).

        Raises
        ------
        Error
            If not exactly one of a length and a number is given, if a field is invalid, or if faces
            are hidden.
        BufferError
            If views of the positions exist.

        See Also
        --------
        decimate : Replace the mesh by a coarser one with triangles of different sizes.

        Examples
        --------
        >>> s.remesh(0.05)
        >>> s.remesh(faces=5000, creaseAngle=45)
        """
        if edge_length is not None:
            fields["edgeLength"] = edge_length
        self._do({"remesh": fields_of(fields)}, progress)

    def repair(self, *, progress: Progress = None, **fields: Any) -> None:
        """Repair the mesh; see ``docs/topology.md``.

        Parameters
        ----------
        progress : callable, optional
            See `Commands`.
        **fields
            ``weld`` (world units), ``clean``, ``minPieceFaces``, ``minPieceShare`` (0 to 1), ``orient``,
            ``fillHoles`` (``"none"``, ``"flat"`` or ``"smooth"``), ``maxHoleEdges``.

        Raises
        ------
        Error
            If a field is invalid, or if faces are hidden.
        BufferError
            If views of the positions exist.

        See Also
        --------
        decimate : Replace the mesh by a coarser one.

        Examples
        --------
        >>> s.repair(weld=0.0001, fillHoles="smooth")
        """
        self._do({"repair": fields_of(fields)}, progress)

    def voxel_remesh(self, faces: Optional[int] = None, *, progress: Progress = None, **fields: Any) -> None:
        """Replace the mesh by a closed mesh of even quads; see ``docs/topology.md``.

        Parameters
        ----------
        faces : int, optional
            The number of faces of level 0, reached within 5 per cent.
        progress : callable, optional
            See `Commands`.
        **fields
            ``voxelSize`` instead of `faces` (world units); ``project``, whether level 0 is moved onto the
            old surface; ``levels``, the number of levels to add, which are moved onto the old surface.

        Raises
        ------
        Error
            If not exactly one of `faces` and ``voxelSize`` is given, if the mesh encloses no volume, if
            there is not enough memory, or if faces are hidden.
        BufferError
            If views of the positions exist.

        See Also
        --------
        repair : Repair the mesh, and keep its faces.

        Examples
        --------
        >>> s.voxel_remesh(2000, levels=1)
        >>> s.level_count, s.faces().shape[1]
        (2, 4)
        """
        if faces is not None:
            fields["faces"] = faces
        self._do({"voxelRemesh": fields_of(fields)}, progress)

    def quadrangulate(self, *, progress: Progress = None, **fields: Any) -> None:
        """Pair the triangles of the mesh into quads; see ``docs/topology.md``.

        All vertices are kept. Triangles that cannot be paired cannot stay: each face is then split
        into quads around its centre.

        Parameters
        ----------
        progress : callable, optional
            See `Commands`.
        **fields
            ``split``, ``"ifNeeded"`` (default), ``"always"`` or ``"never"``; ``maxAngle``, between the
            triangles of a pair (degrees, default 40); ``keepGroups`` and ``keepUvs`` (default true).

        Raises
        ------
        Error
            If triangles are left and ``split`` is ``"never"``, or if faces are hidden.
        BufferError
            If views of the positions exist.

        See Also
        --------
        voxel_remesh : Replace the mesh by more regular quads.

        Examples
        --------
        >>> s.remesh(0.1)
        >>> s.quadrangulate()
        >>> s.faces().shape[1]
        4
        """
        self._do({"quadrangulate": fields_of(fields)}, progress)

    def append(self, file: os.PathLike | str, *, progress: Progress = None, **fields: Any) -> None:
        """Add the mesh of a file as a new part; see ``docs/topology.md``.

        The current level becomes level 0. The parts are not connected.

        Parameters
        ----------
        file : path
            A mesh in any format that can be imported.
        progress : callable, optional
            See `Commands`.
        **fields
            ``scale`` (a number or three), ``rotate`` (degrees, about x, then y, then z) and ``translate``,
            or ``matrix`` (16 numbers, row by row); ``world``, whether the result is in world space;
            ``units`` and ``up`` of the file, instead of those that it specifies.

        Raises
        ------
        Error
            If the file cannot be read, or if faces are hidden.
        BufferError
            If views of the positions exist.

        See Also
        --------
        voxel_remesh : Join parts that intersect.

        Examples
        --------
        >>> s.export("part.ply")
        >>> s.append("part.ply", scale=0.5, translate=[2, 0, 0])
        """
        self._do({"append": {"file": file, **fields_of(fields)}}, progress)

    def extract(self, thickness: float, *, progress: Progress = None, **fields: Any) -> None:
        """Make a closed part with a thickness from the masked part; see ``docs/topology.md``.

        Parameters
        ----------
        thickness : float
            The thickness of the new part along the vertex normals (world units).
        progress : callable, optional
            See `Commands`.
        **fields
            ``side``, ``"outside"`` (default), ``"inside"`` or ``"both"``; ``threshold``, the mask weight
            from which on faces are extracted (0 to 1, default 0.5); ``smoothBorder``, iterations;
            ``replace``, whether the new part replaces the surface; ``group``, the name of its group.

        Raises
        ------
        Error
            If no face is masked, or if faces are hidden.
        BufferError
            If views of the positions exist.

        See Also
        --------
        freeze : Change the mask.
        append : Add the mesh of a file as a new part.

        Examples
        --------
        >>> s.freeze(center=[0, 1, 0], radius=0.7)
        >>> s.extract(0.05, smoothBorder=4, group="Cap")
        """
        self._do({"extract": {"thickness": thickness, **fields_of(fields)}}, progress)

    def project(
        self, file: os.PathLike | str, distance: float, *, progress: Progress = None, **fields: Any
    ) -> None:
        """Move the vertices of the current level onto the surface of a mesh file.

        Parameters
        ----------
        file : path
            A mesh in any format that can be imported.
        distance : float
            Vertices within half of this distance of the surface move onto it; from there to the
            distance, the effect decreases to 0 (world units).
        progress : callable, optional
            See `Commands`.
        **fields
            ``direction``, ``"nearest"`` (default) or ``"normal"``; ``colors``, whether to take the vertex
            colours of the file; ``world``, whether the file is in world space.

        Raises
        ------
        Error
            If the file cannot be read, or has no colours although they are asked for.

        See Also
        --------
        voxel_remesh : Replace the mesh by one that is easier to sculpt.

        Examples
        --------
        >>> s.export("sculpture.ply")
        >>> s.filter("smooth", iterations=10)
        >>> s.project("sculpture.ply", 0.1)
        """
        self._do({"project": {"file": file, "distance": distance, **fields_of(fields)}}, progress)

    def displace(self, file: os.PathLike | str, *, progress: Progress = None, **fields: Any) -> None:
        """Displace the vertices of the current level by a map; see ``docs/baking.md``.

        Parameters
        ----------
        file : path
            A displacement map or a vector displacement map (EXR, TIFF, PNG).
        progress : callable, optional
            See `Commands`.
        **fields
            ``strength`` (default 1) and ``repeat``; also ``map``, ``space``, ``mid`` and ``scale`` (world
            units per unit of the map), if the file does not specify them.

        Raises
        ------
        Error
            If the map cannot be read, or if the mesh has no texture coordinates.

        See Also
        --------
        bake : Write such a map.

        Examples
        --------
        >>> s.filter("inflate", amount=0.01)
        >>> s.bake("detail.exr", size=64, repeat=True)
        >>> s.displace("detail.exr", strength=0.5, repeat=True)
        """
        self._do({"displace": {"file": file, **fields_of(fields)}}, progress)

    def hide(self, **fields: Any) -> None:
        """Hide faces.

        Hidden faces are not sculpted, picked or rendered.

        Parameters
        ----------
        **fields
            One selection: ``mask`` (0 to 1), ``group``, ``material``, ``component``, ``faces`` (ranges
            ``[first, count]``), ``lasso`` or ``box`` (pixels) or ``hidden``; also ``grow`` and ``shrink``.

        Raises
        ------
        Error
            If the selection is invalid, or if a stroke is open.

        See Also
        --------
        show : Show faces.
        isolate : Hide all other faces.
        Document.hidden_faces : Whether each face is hidden.

        Examples
        --------
        >>> s.hide(faces=[[0, 100]])
        >>> int(s.hidden_faces.sum())
        100
        """
        self._do({"hide": fields_of(fields)})

    def show(self, **fields: Any) -> None:
        """Show faces.

        Parameters
        ----------
        **fields
            A selection, as for `hide`; without fields, all faces.

        Raises
        ------
        Error
            If the selection is invalid, or if a stroke is open.

        See Also
        --------
        hide : Hide faces.

        Examples
        --------
        >>> s.hide(faces=[[0, 100]])
        >>> s.show(faces=[[0, 50]])
        >>> s.show()
        """
        self._do({"show": fields_of(fields) or "all"})

    def isolate(self, **fields: Any) -> None:
        """Show the selected faces, and hide all others.

        Parameters
        ----------
        **fields
            A selection, as for `hide`.

        Raises
        ------
        Error
            If the selection is invalid, or if a stroke is open.

        See Also
        --------
        hide : Hide faces.

        Examples
        --------
        >>> s.isolate(faces=[[0, 100]])
        >>> int((~s.hidden_faces).sum())
        100
        """
        self._do({"isolate": fields_of(fields)})

    def invert_visibility(self) -> None:
        """Show the hidden faces, and hide the visible ones.

        Raises
        ------
        Error
            If a stroke is open.

        See Also
        --------
        hide : Hide faces.

        Examples
        --------
        >>> s.hide(faces=[[0, 100]])
        >>> s.invert_visibility()
        >>> int((~s.hidden_faces).sum())
        100
        """
        self._do({"invertVisibility": True})


def _amounts(values: ArrayLike) -> np.ndarray:
    amounts = np.asarray(values)
    if amounts.ndim != 1:
        raise Error(f"freeze amounts must have the shape (vertices,), not {amounts.shape}")
    if amounts.dtype == bool:
        return np.where(amounts, np.uint8(127), np.uint8(0))
    rounded = np.rint(amounts.astype(np.float64))
    outside = ~((rounded >= 0) & (rounded <= 127))
    if outside.any():
        vertex = int(np.argmax(outside))
        raise Error(f"the freeze amount of vertex {vertex} is {amounts[vertex]}, not from 0 to 127")
    return rounded.astype(np.uint8)
