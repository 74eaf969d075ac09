# SPDX-License-Identifier: Apache-2.0
"""The commands of a document: one method for each step of stroke scripts."""

from __future__ import annotations

from typing import Any

from ._level_commands import LevelCommands
from ._steps import Progress, fields_of
from ._surface_commands import SurfaceCommands
from ._view_commands import ViewCommands


class Commands(LevelCommands, SurfaceCommands, ViewCommands):
    """Methods that run one step each.

    Each method takes the fields of its step as keyword arguments, with the names, units and
    defaults in ``docs/stroke-script.md``. ``from`` and ``continue``, which Python reserves, are
    written ``from_`` and ``continue_``. Arrays may be NumPy arrays or lists. Lengths and positions
    are in world space unless stated otherwise.

    Every method that changes the sculpture makes one undo step. Long commands accept `progress`, a
    function that is called with ``(done, total)`` while the command runs; ``total`` is 0 if it is
    unknown. If the function returns ``False`` (also as a NumPy scalar), the command is cancelled.
    The examples use a `Document` ``s``, which was opened from ``examples/meshes/spot.obj`` with two
    levels, and ``np`` for NumPy.

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

    def do(self, step: dict, *, progress: Progress = None) -> None:
        """Run one step of a stroke script.

        Parameters
        ----------
        step : dict
            The step, in the form that it has in a script. Arrays may be NumPy arrays.
        progress : callable, optional
            See `Commands`.

        Raises
        ------
        Error
            If the step is not one of ``docs/stroke-script.md``, or if it cannot be run.

        See Also
        --------
        run_script : Run a script file.

        Examples
        --------
        >>> s.do({"tool": "Wax", "set": {"radius": 0.3, "strength": 40}})
        >>> s.do({"stroke": {"surface": [[0.35, 0.2, 0.0], [0.35, 0.2, 0.5]]}})
        """
        self._do(step, progress)

    # --- Tools and strokes ---

    def tool(self, name: str, /, **settings: Any) -> None:
        """Make a tool active, and change its settings.

        Each tool keeps its settings, except the common ones such as ``radius``.

        Parameters
        ----------
        name : str
            One of `Document.tools`; ``"Freeze"`` paints the mask.
        **settings
            As for `set`.

        Raises
        ------
        Error
            If there is no such tool, if a setting is invalid, or if a stroke is open.

        See Also
        --------
        set : Change settings of the active tool.
        Document.active_tool : The current values.

        Examples
        --------
        >>> s.tool("Wax", radius=0.3, strength=40, falloff="smooth")
        >>> s.active_tool["name"]
        'Wax'
        """
        self._do({"tool": name, "set": fields_of(settings)} if settings else {"tool": name})

    def set(self, **settings: Any) -> None:
        """Change settings of the active tool.

        Parameters
        ----------
        **settings
            Such as ``radius`` (world units), ``strength`` (percent), ``spacing`` (percent of the
            radius), ``falloff`` and ``stamp``; see "Settings" in ``docs/stroke-script.md``.

        Raises
        ------
        Error
            If the tool has no such setting, or the value is out of range.

        See Also
        --------
        tool : Make a tool active.
        save_stamp : Write an array as a stamp image.

        Examples
        --------
        >>> s.set(radius=0.1, strength=25, pressureControlsSize=True)
        """
        self._do({"set": fields_of(settings)})

    def stroke(self, *, progress: Progress = None, **fields: Any) -> None:
        """Apply a stroke with the active tool.

        The stroke is one undo step. Exactly one of `surface`, `points`, `pointer`, `pen`, `dabs` and
        `wholeMesh` is given, except that a stroke without dabs can be opened or ended.

        Parameters
        ----------
        surface : array_like, shape (n, 3) or (n, 4)
            Positions in world space, optionally with the pressure, 0 to 1. The path runs through the
            nearest points on the surface.
        points : array_like, shape (n, 3) or (n, 4)
            The same for the tools that leave the surface: Grab, ElasticGrab and SnakeHook.
        pointer : array_like, shape (n, 2) or (n, 3)
            Positions x, y in pixels of the viewport, from the top left corner, optionally with the
            pressure.
        pen : array_like, shape (n, 4) or (n, 6), or path
            Samples of a pen: x, y (pixels), pressure, milliseconds, and optionally the tilt x, y
            (components of a unit vector); or a file with such samples.
        dabs : sequence of dict
            Single dabs, with the ``face`` and optionally ``point``, ``radius``, ``pressure`` …
        wholeMesh : dict
            Apply the tool to all vertices at once, with ``strength`` and ``byFacing``.
        modifier : str, optional
            ``"none"``, ``"smooth"`` or ``"invert"``.
        seed : int, optional
            Seed of the random choices. By default, each stroke has its own.
        path : dict, optional
            Changes of the path: ``curve``, ``line``, ``smoothing``, ``stabiliser``, ``snap`` …
        open : bool, optional
            Leave the stroke open at the end.
        continue_ : bool, optional
            Continue the open stroke.
        progress : callable, optional
            Called with the number of dabs and 0. Cancelling a stroke with ``continue_=True`` reverts the
            whole open stroke; any other cancelled stroke is undone as one step, which can be redone.

        Raises
        ------
        Error
            If a field is invalid, if the path is too long, or if a stroke is open that the call does not
            continue.
        Cancelled
            If `progress` returned ``False``.

        Warns
        -----
        SculptWarning
            If the stroke has no dabs, or points are far from the surface.

        See Also
        --------
        live_stroke : Add samples as they arrive.
        tool : Make a tool active.
        nearest : Project points onto the surface.

        Examples
        --------
        >>> t = np.linspace(0, 1, 200)
        >>> s.tool("Sculpt", radius=0.1, strength=40)
        >>> s.stroke(surface=np.c_[0 * t + 0.35, 0.2 + 0.1 * np.sin(9 * t), 0.5 * t, 0.3 + 0.7 * t])
        >>> s.stroke(pointer=[[300, 200], [340, 260]], modifier="invert", path={"curve": True})
        """
        self._do({"stroke": fields_of(fields)}, progress)
