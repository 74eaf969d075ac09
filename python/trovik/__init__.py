# SPDX-License-Identifier: Apache-2.0
"""Digital sculpting from Python.

A `Document` is a sculpture. Its methods are the commands of stroke scripts, with the same names and
fields, and its arrays are NumPy arrays.

Examples
--------
>>> import numpy as np, trovik
>>> s = trovik.open("spot.obj")
>>> s.subdivide(3)
>>> s.tool("Wax", radius=0.15, strength=40)
>>> s.stroke(surface=[[0.35, 0.2, 0.0], [0.35, 0.2, 0.5]])
>>> s.set_positions(s.positions + 0.01 * s.normals, label="Inflate")
>>> s.export("out.glb")
"""

from ._arrays import Arrays, HistoryEntry, Layer, SurfaceHits
from ._commands import Commands
from ._document import Document, Observer, SurfaceEvent
from ._errors import BusyError, Cancelled, ClosedError, Error, SculptWarning, ThreadError
from ._live import LiveStroke
from ._open import new, open, recover, save_stamp
from ._trace import Trace, read_trace, run_script
from ._version import __version__ as __version__

__all__ = [
    "Arrays",
    "BusyError",
    "Cancelled",
    "ClosedError",
    "Commands",
    "Document",
    "Error",
    "HistoryEntry",
    "Layer",
    "LiveStroke",
    "Observer",
    "SculptWarning",
    "SurfaceEvent",
    "SurfaceHits",
    "ThreadError",
    "Trace",
    "new",
    "open",
    "read_trace",
    "recover",
    "run_script",
    "save_stamp",
]
