# SPDX-License-Identifier: Apache-2.0
"""The commands of a document: one method for each step of stroke scripts."""

from __future__ import annotations

import base64
import os
from typing import Any, Callable, Optional

import numpy as np
from numpy.typing import ArrayLike

from ._errors import Error

Progress = Optional[Callable[[int, int], object]]


def fields_of(given: dict) -> dict:
    """Return the fields of a step: names that Python reserves are written with an underscore."""
    return {name.rstrip("_"): value for name, value in given.items()}


class Commands:
    """Methods that run one step each.

    Each method takes the fields of its step as keyword arguments, with the names, units and
    defaults in ``docs/stroke-script.md``. ``from`` and ``continue``, which Python reserves, are
    written ``from_`` and ``continue_``. Arrays may be NumPy arrays or lists. Lengths and positions
    are in world space unless stated otherwise.

    Every method that changes the sculpture makes one undo step, and accepts `progress`, a function
    that is called with ``(done, total)`` while the command runs; ``total`` is 0 if it is unknown.
    If the function returns ``False`` (also as a NumPy scalar), the command is cancelled.

    Raises
    ------
    Error
        If a field is invalid, or if the command cannot be run.
    Cancelled
        If `progress` returned ``False``. The surface is then as before the command.
    KeyboardInterrupt
        If Ctrl-C was pressed; likewise.
    BufferError
        If the command would invalidate a view of the positions; nothing has then changed.
    """

    def _do(self, step: dict, progress: Progress = None) -> None:
        raise NotImplementedError

    def do(self, step: dict, *, progress: Progress = None) -> None:
        """Run one step of a stroke script.

        Parameters
        ----------
        step : dict
            The step, in the form that it has in a script. Arrays may be NumPy arrays.
        progress : callable, optional
            See `Commands`.

        Examples
        --------
        >>> s.do({"tool": "Wax", "set": {"radius": 0.3, "strength": 40}})
        """
        self._do(step, progress)

    # --- Tools and strokes ---

    def tool(self, name: str, /, **settings: Any) -> None:
        """Make a tool active, and change its settings.

        Parameters
        ----------
        name : str
            One of `Document.tools`, or ``"Freeze"``, which paints the mask.
        **settings
            As for `set`.

        Examples
        --------
        >>> s.tool("Wax", radius=0.3, strength=40, falloff="smooth")
        """
        self._do({"tool": name, "set": fields_of(settings)} if settings else {"tool": name})

    def set(self, **settings: Any) -> None:
        """Change settings of the active tool.

        Parameters
        ----------
        **settings
            Such as ``radius`` (world units), ``strength`` (percent), ``spacing`` (percent of the
            radius), ``falloff`` and ``stamp``; see "Settings" in ``docs/stroke-script.md``.
        """
        self._do({"set": fields_of(settings)})

    def stroke(self, *, progress: Progress = None, **fields: Any) -> None:
        """Apply a stroke with the active tool.

        Parameters
        ----------
        progress : callable, optional
            Called with the number of dabs and 0.
        **fields
            One of ``surface`` (n, 3) or (n, 4), world space with optional pressure; ``pointer``
            (n, 2) or (n, 3), viewport pixels; ``pen`` (n, 4) or (n, 6); ``dabs``; ``wholeMesh``.
            Also ``modifier``, ``seed``, ``path``, ``open`` and ``continue_``. After ``open=True``,
            cancelling a stroke with ``continue_=True`` reverts the whole open stroke.

        Examples
        --------
        >>> t = np.linspace(0, 1, 200)
        >>> s.stroke(surface=np.c_[np.cos(t), np.sin(t), 0 * t, 0.3 + 0.7 * t])
        """
        self._do({"stroke": fields_of(fields)}, progress)

    # --- History and levels ---

    def undo(self, count: int = 1) -> None:
        """Undo steps. If there are fewer, all of them are undone, and `Error` is raised."""
        self._do({"undo": count})

    def redo(self, count: int = 1) -> None:
        """Redo steps that were undone."""
        self._do({"redo": count})

    def subdivide(self, count: int = 1, *, progress: Progress = None) -> None:
        """Add levels on top, and make the highest one current."""
        self._do({"subdivide": count}, progress)

    def unsubdivide(self, count: int = 1, *, progress: Progress = None) -> None:
        """Add coarser levels below level 0. Faces and vertices are renumbered."""
        self._do({"unsubdivide": count}, progress)

    def delete_levels(self, which: str, *, progress: Progress = None) -> None:
        """Delete the levels above (``"higher"``) or below (``"lower"``) the current one."""
        self._do({"deleteLevels": which}, progress)

    def level(self, number: int, *, progress: Progress = None) -> None:
        """Make another level current."""
        self._do({"level": number}, progress)

    def apply_to_base(self, *, progress: Progress = None) -> None:
        """Move the lower levels to the positions of the current level."""
        self._do({"applyToBase": True}, progress)

    def reset(self, *, progress: Progress = None) -> None:
        """Restore the imported mesh, with the same number of levels and without history."""
        self._do({"reset": True}, progress)

    # --- The whole surface ---

    def set_positions(self, positions: ArrayLike, *, label: Optional[str] = None, progress: Progress = None) -> None:
        """Move all vertices of the current level, as one undo step.

        The mask reduces the displacements, and masked and hidden vertices do not move. With an
        active layer, the displacements are recorded in it.

        Parameters
        ----------
        positions : array_like, shape (vertices, 3)
            New positions, mesh-local, converted to float32.
        label : str, optional
            Label of the undo step.

        Raises
        ------
        Error
            If the shape is wrong, a position is not finite, or the active layer is hidden or locked.

        Examples
        --------
        >>> s.set_positions(s.positions + 0.01 * s.normals, label="Inflate")
        """
        rows = np.ascontiguousarray(positions, dtype="<f4")
        if rows.ndim != 2 or rows.shape[1] != 3:
            raise Error(f"positions must have the shape (vertices, 3), not {rows.shape}")
        step = {"values": _base64(rows)}
        if label is not None:
            step["label"] = label
        self._do({"setPositions": step}, progress)

    def freeze(self, what: Any = None, *, progress: Progress = None, **fields: Any) -> None:
        """Change the mask: the step ``mask``.

        Parameters
        ----------
        what : str or array_like, optional
            ``"clear"``, ``"all"`` or ``"invert"``; or one freeze amount per vertex of the current
            level, shape (vertices,): 0 (free) to 127 (masked), rounded, or booleans.
        **fields
            A selection, such as ``center`` and ``radius``, ``cavity`` or ``group``; also ``mode``,
            ``"replace"`` by default for an array, and ``amount``.

        Examples
        --------
        >>> s.freeze(np.clip((s.positions[:, 1] - 5) * 127, 0, 127))
        >>> s.freeze(center=[0, 5, 1], radius=0.5, softness=0.5, mode="subtract")
        """
        if isinstance(what, str):
            if fields:
                raise TypeError(f"freeze: {what!r} has no fields")
            self._do({"mask": what}, progress)
            return
        if what is not None:
            fields["values"] = _base64(_amounts(what))
        self._do({"mask": fields_of(fields)}, progress)

    def symmetrize(self, axis: str, *, progress: Progress = None, **fields: Any) -> None:
        """Make the current level symmetric; ``from_`` is ``"positive"`` or ``"negative"``."""
        self._do({"symmetrize": {"axis": axis, **fields_of(fields)}}, progress)

    def filter(self, kind: str, *, progress: Progress = None, **fields: Any) -> None:
        """Apply a filter: ``"inflate"``, ``"smooth"``, ``"relax"`` or ``"sharpen"``.

        Parameters
        ----------
        kind : str
        **fields
            ``amount`` (world units) for ``"inflate"``; ``strength`` and ``iterations`` for others.
        """
        self._do({"filter": {"kind": kind, **fields_of(fields)}}, progress)

    def transform_vertices(self, *, progress: Progress = None, **fields: Any) -> None:
        """Scale, rotate and move the unmasked vertices.

        Parameters
        ----------
        **fields
            ``scale``, ``axis`` and ``angle`` (degrees), ``translate``, ``pivot``, ``maskBlur``.
        """
        self._do({"transformVertices": fields_of(fields)}, progress)

    def decimate(
        self, faces: Optional[int] = None, *, progress: Progress = None, **fields: Any
    ) -> None:
        """Replace the mesh by a coarser triangle mesh; see ``docs/topology.md``.

        Parameters
        ----------
        faces : int, optional
            The number of triangles to keep.
        **fields
            ``ratio`` instead of `faces`, ``error`` (world units), ``keepBorders``.
        """
        if faces is not None:
            fields["faces"] = faces
        self._do({"decimate": fields_of(fields)}, progress)

    def repair(self, *, progress: Progress = None, **fields: Any) -> None:
        """Repair the mesh; see ``docs/topology.md``.

        Parameters
        ----------
        **fields
            ``weld`` (world units), ``clean``, ``minPieceFaces``, ``minPieceShare``, ``orient``,
            ``fillHoles`` (``"flat"`` or ``"smooth"``), ``maxHoleEdges``.
        """
        self._do({"repair": fields_of(fields)}, progress)

    def displace(self, file: os.PathLike | str, *, progress: Progress = None, **fields: Any) -> None:
        """Displace the vertices by a map; see ``docs/baking.md``."""
        self._do({"displace": {"file": file, **fields_of(fields)}}, progress)

    def hide(self, **fields: Any) -> None:
        """Hide faces, selected by ``mask``, ``group``, ``material``, ``component``, ``faces`` …"""
        self._do({"hide": fields_of(fields)})

    def show(self, **fields: Any) -> None:
        """Show faces, selected as for `hide`; without fields, all faces."""
        self._do({"show": fields_of(fields) or "all"})

    def isolate(self, **fields: Any) -> None:
        """Show the selected faces, and hide all others."""
        self._do({"isolate": fields_of(fields)})

    def invert_visibility(self) -> None:
        """Show the hidden faces, and hide the visible ones."""
        self._do({"invertVisibility": True})

    # --- Transform, symmetry and camera ---

    def transform(self, **fields: Any) -> None:
        """Set the transform from mesh-local to world space: ``scale``, ``rotate`` (degrees),
        ``translate``; or ``matrix``."""
        self._do({"transform": fields_of(fields)})

    def mirror(self, *planes: str, **fields: Any) -> None:
        """Set the symmetry of subsequent strokes.

        Parameters
        ----------
        *planes : str
            Any of ``"x"``, ``"y"``, ``"z"``; or ``"topological"``. Without arguments, symmetry is
            turned off.
        **fields
            ``radial`` (number of copies) and ``axis``.

        Examples
        --------
        >>> s.mirror("x")
        >>> s.mirror("x", radial=6, axis="y")
        """
        if fields:
            self._do({"mirror": {"planes": list(planes), **fields_of(fields)}})
        else:
            self._do({"mirror": "topological" if planes == ("topological",) else list(planes)})

    def camera(self, **fields: Any) -> None:
        """Set the camera: ``eye``, ``target``, ``up``; or ``from_``, a direction from the mesh to
        the eye; ``fieldOfView`` (degrees), ``width`` and ``height`` (pixels)."""
        self._do({"camera": fields_of(fields)})

    # --- Files ---

    def render(self, file: os.PathLike | str | None = None, *, progress: Progress = None, **fields: Any) -> None:
        """Render the mesh to an image.

        Parameters
        ----------
        file : path, optional
            PNG, JPEG or TIFF. Not needed with ``keep``.
        **fields
            ``width``, ``height``, ``samples``, ``shading``, ``wireframe``, ``camera`` …
        """
        self._do({"render": {**({} if file is None else {"file": file}), **fields_of(fields)}}, progress)

    def contact_sheet(self, file: os.PathLike | str, **fields: Any) -> None:
        """Combine kept renders: ``renders`` (names given by ``keep``) and ``columns``."""
        self._do({"contactSheet": {"file": file, **fields_of(fields)}})

    def export(self, file: os.PathLike | str, *, progress: Progress = None, **fields: Any) -> None:
        """Write the current level to an OBJ, PLY, STL, glTF, GLB or USDA file."""
        self._do({"export": {"file": file, **fields_of(fields)}}, progress)

    def bake(self, file: os.PathLike | str, *, progress: Progress = None, **fields: Any) -> None:
        """Bake the difference between two levels into a map; see ``docs/baking.md``."""
        self._do({"bake": {"file": file, **fields_of(fields)}}, progress)

    def save(self, file: os.PathLike | str, *, progress: Progress = None) -> None:
        """Save everything except the undo history to a scene file (``.trovik``)."""
        self._do({"save": file}, progress)

    def application_data(self, name: str, text: Optional[str] = None) -> None:
        """Store an entry of the scene for an application; without `text`, remove it."""
        self._do({"applicationData": {"name": name} if text is None else {"name": name, "text": text}})


def _base64(array: np.ndarray) -> str:
    return base64.b64encode(array.tobytes()).decode("ascii")


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
