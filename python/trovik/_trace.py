# SPDX-License-Identifier: Apache-2.0
"""Scripts with traces, and traces as arrays."""

from __future__ import annotations

import json
import os
from pathlib import Path
from typing import Any, Union

import numpy as np

from . import _core
from ._steps import Progress

__all__ = ["run_script", "read_trace", "Trace"]


def run_script(
    script: Union[str, os.PathLike],
    output: Union[str, os.PathLike] = ".",
    *,
    trace: Union[str, os.PathLike, None] = None,
    trace_every: int = 0,
    allow_outside: bool = False,
    progress: Progress = None,
) -> dict[str, Any]:
    """Run a stroke script file, as ``trovik sculpt`` does.

    Parameters
    ----------
    script : path
        The script. ``docs/stroke-script.md`` describes all fields.
    output : path, optional
        Folder for the files that the script writes.
    trace : path, optional
        Folder for a trace of all calls into the brush; see `read_trace`.
    trace_every : int, optional
        Record the state of the meshes after every n-th dab; 0 records only the first and last one.
    allow_outside : bool, optional
        Permit files outside of `output`.
    progress : callable, optional
        See `Commands`.

    Returns
    -------
    dict
        ``files`` (paths written), ``dabs``, ``vertices_moved``, ``vertices``, ``faces``, ``levels``
        and ``warnings``.

    Raises
    ------
    Error
        With the script as `Error.file`, or the JSON pointer as `Error.location`.

    See Also
    --------
    Document.do : Run one step.
    read_trace : Read the trace.

    Examples
    --------
    >>> import json
    >>> steps = [{"stroke": {"surface": [[0.35, 0.2, 0.0], [0.35, 0.2, 0.5]]}}]
    >>> with open("first.json", "w") as file:
    ...     json.dump({"mesh": "spot.obj", "levels": 2, "steps": steps}, file)
    >>> result = trovik.run_script("first.json", "out", trace="out/trace")
    >>> result["dabs"] > 10, result["levels"]
    (True, 3)
    """
    return _core.run_script(
        os.fspath(script), os.fspath(output), os.fspath(trace or ""), trace_every, allow_outside, progress
    )


class Trace:
    """A trace on disk; see `read_trace`.

    Attributes
    ----------
    folder : pathlib.Path
    calls : list of dict
        The lines of the trace, with the fields ``call``, ``in`` and ``out``.
    """

    def __init__(self, folder: Union[str, os.PathLike]):
        self.folder = Path(folder)
        with open(self.folder / "trace.jsonl", encoding="utf-8") as lines:
            self.calls = [json.loads(line) for line in lines]

    @property
    def states(self) -> list[str]:
        """list of str : Names of the recorded states, such as ``"before"`` and ``"dab-000001"``."""
        return sorted(path.name for path in self.folder.iterdir() if path.is_dir() and path.name != "arrays")

    def state(self, name: str, mesh: str = "m0") -> dict[str, Any]:
        """Return the arrays of one mesh in one state.

        Parameters
        ----------
        name : str
            One of `states`.
        mesh : str, optional
            Name of the mesh in the trace.

        Returns
        -------
        dict of str to numpy.ndarray
            Read-only arrays, mapped from the files, by name without extension, such as
            ``"level-2/positions"``, float32 (vertices, 3), mesh-local. ``docs/trace.md`` lists
            them. The key ``"meta"`` contains the fields of ``meta.json``.

        Raises
        ------
        KeyError
            If there is no such state or mesh.

        Examples
        --------
        >>> trace.state("after")["level-2/positions"].shape[1]
        3
        """
        folder = self.folder / name / mesh
        if not folder.is_dir():
            raise KeyError(f"{self.folder}: there is no state {name!r} of the mesh {mesh!r}")
        arrays = {
            path.relative_to(folder).with_suffix("").as_posix(): np.load(path, mmap_mode="r")
            for path in sorted(folder.rglob("*.npy"))
        }
        arrays["meta"] = json.loads((folder / "meta.json").read_text(encoding="utf-8"))
        return arrays

    def array(self, name: str) -> np.ndarray:
        """Return an array that a line refers to, such as a falloff table or a stamp image.

        Parameters
        ----------
        name : str
            The name in the line.

        Returns
        -------
        numpy.ndarray
            A read-only array, mapped from the file.

        Raises
        ------
        FileNotFoundError
            If the trace has no such array.

        Examples
        --------
        >>> stroke = next(line for line in trace.calls if line["call"] == "BeginStroke")
        >>> trace.array(stroke["in"]["falloff"]).ndim
        1
        """
        path = self.folder / name
        if not path.exists():
            path = self.folder / "arrays" / (name if name.endswith(".npy") else name + ".npy")
        return np.load(path, mmap_mode="r")


def read_trace(folder: Union[str, os.PathLike]) -> Trace:
    """Open a trace that `run_script` or ``trovik sculpt --trace`` has written.

    Parameters
    ----------
    folder : path
        The folder of the trace.

    Returns
    -------
    Trace
        The calls and the states, which are read on demand.

    Raises
    ------
    FileNotFoundError
        If the folder does not contain a trace.

    See Also
    --------
    run_script : Run a script and write a trace.

    Examples
    --------
    >>> trace = trovik.read_trace("trace")
    >>> before, after = (trace.state(name)["level-2/positions"] for name in ("before", "after"))
    >>> moved = np.flatnonzero((before != after).any(axis=1))
    """
    return Trace(folder)
