# SPDX-License-Identifier: Apache-2.0
"""Documents."""

from __future__ import annotations

import logging
import sys
import warnings
import weakref
from typing import Any, Callable, NamedTuple, Optional

import numpy as np

from . import _core
from ._arrays import Arrays
from ._commands import Commands
from ._errors import BusyError, ClosedError, Error, SculptWarning, ThreadError
from ._live import LiveStroke
from ._steps import Progress, fields_of

_log = logging.getLogger("trovik")


class SurfaceEvent(NamedTuple):
    """Changed patches of a level: faces of `patch_level` with all their descendants.

    `what` contains ``"positions"``, ``"normals"``, ``"mask"``, ``"visibility"``, ``"topology"``.
    `patches`, uint32 (n,), is ``None`` if the whole level has changed.
    """

    level: int
    what: frozenset
    patch_level: int
    patches: Optional[np.ndarray]


class Observer:
    """Functions that are called after changes; see `Document.observe`."""

    def __init__(self, document: "Document", functions: dict):
        self._document = document
        self._functions = functions

    def remove(self) -> None:
        """Stop calling the functions.

        Examples
        --------
        >>> observer = s.observe(levels=print)
        >>> observer.remove()
        """
        if self in self._document._observers:
            self._document._observers.remove(self)
        if not self._document.closed:
            self._document._core.collect_events(bool(self._document._observers))

    def __enter__(self) -> "Observer":
        return self

    def __exit__(self, *_: object) -> None:
        self.remove()


class _LayerScope:
    """The return value of `Document.layer`."""

    def __init__(self, document: "Document", level: int, previous: Optional[str]):
        self._document = document
        self._level = level
        self._previous = previous

    def __enter__(self) -> None:
        return None

    def __exit__(self, kind: object, *_: object) -> None:
        document = self._document
        if document.closed or document.current_level != self._level:
            return
        try:
            document._do({"layer": {"select": self._previous}})
        except Error:
            # The exception of the block is more useful.
            if kind is None:
                raise


class Document(Commands, Arrays):
    """A sculpture: levels, layers, mask, tools, symmetry, camera and undo history.

    Use `open` or `new` to create one. All methods of `Commands` are available. Several documents
    can be used at the same time. A document belongs to the thread that opened it; other threads get
    `ThreadError`. Commands release the GIL, so other Python threads run meanwhile, but only one
    command runs at a time in a process.

    Use it in a ``with`` statement, or call `close`, to end the journal and release the memory at a
    known time. Views of the positions that exist at the end of the block stay valid, and the memory
    is released when the last one is deleted.
    """

    def __init__(self, core: _core.Session, has_journal: bool = False):
        if not isinstance(core, _core.Session):
            raise TypeError("use trovik.open() or trovik.new() to create a document")
        self._core = core
        self._observers: list[Observer] = []
        self._live: Optional[LiveStroke] = None
        if has_journal:
            # Also called when the interpreter exits.
            weakref.finalize(self, _finish, core)
        self._log_messages()

    # --- Life time ---

    def close(self) -> None:
        """End the journal and release the memory. Does nothing if the document is closed.

        Raises
        ------
        BufferError
            If views of the positions exist.

        Examples
        --------
        >>> s.close()
        >>> s.closed
        True
        """
        self._core.close(True)

    @property
    def closed(self) -> bool:
        """bool : Whether the document was closed."""
        return self._core.closed

    def __enter__(self) -> "Document":
        return self

    def __exit__(self, kind: object, *_: object) -> None:
        if not self.closed:
            # After an exception, unsaved work can be recovered from the journal.
            self._core.leave(kind is None or not self.is_modified)

    def move_to_this_thread(self) -> None:
        """Transfer the document to the calling thread.

        Raises
        ------
        BusyError
            If another thread is using the document.

        Examples
        --------
        >>> import threading
        >>> def work():
        ...     s.move_to_this_thread()
        ...     s.filter("smooth")
        >>> thread = threading.Thread(target=work)
        >>> thread.start()
        >>> thread.join()
        >>> s.move_to_this_thread()
        """
        self._core.move_to_this_thread()

    def __reduce_ex__(self, protocol: object) -> Any:
        raise TypeError(
            "a trovik.Document cannot be pickled or copied: save it as a scene, and pass the path of the scene"
        )

    def __repr__(self) -> str:
        if self.closed:
            return "<trovik.Document, closed>"
        try:
            state = self._core.state()
        except (BusyError, ThreadError):
            return "<trovik.Document, in use by another thread or command>"
        vertices, faces = state["levels"][state["current_level"]]
        return (
            f"<trovik.Document {state['source_path']!r}: level {state['current_level']} of "
            f"{len(state['levels'])}, {vertices} vertices, {faces} faces>"
        )

    # --- Commands ---

    def _do(self, step: dict, progress: Progress = None) -> None:
        given = self._run(lambda core: core.do(step, progress))
        for warning in given:
            warnings.warn(warning, SculptWarning, stacklevel=3)

    def _run(self, work: Callable[[_core.Session], Any]) -> Any:
        try:
            result = work(self._core)
        except (BusyError, ClosedError, ThreadError):
            raise
        except BaseException:
            self._after_command()
            raise
        self._after_command()
        return result

    def _after_command(self) -> None:
        self._log_messages()
        if self._observers:
            self._deliver()

    def layer(self, name: Optional[str] = None, /, **fields: Any) -> _LayerScope:
        """Add a layer on the current level, or select it if it exists.

        Subsequent strokes are recorded in the layer. In a ``with`` statement, the layer that was
        active before is selected again at the end of the block.

        Parameters
        ----------
        name : str, optional
            Name of the layer. Without it, the step ``layer`` is run with the given fields only.
        **fields
            ``strength``, ``visible``, ``writable``, ``order`` … of the layer; see "Layers" in
            ``docs/stroke-script.md``.

        Returns
        -------
        context manager
            Selects the previous layer again at the end of a ``with`` block.

        Raises
        ------
        Error
            If there is no layer to change, or if a stroke is open.

        See Also
        --------
        Document.layers : The layers of the current level, with their offsets.

        Examples
        --------
        >>> with s.layer("wrinkles", strength=0.8):
        ...     s.stroke(surface=[[0.35, 0.2, 0.0], [0.35, 0.2, 0.5]])
        >>> scope = s.layer(of="wrinkles", strength=0.5)
        >>> s.layers[0].strength
        0.5
        """
        before = self._core.state()
        previous = next((one["name"] for one in before["layers"] if one["active"]), None)
        step = fields_of(fields)
        if name is not None:
            exists = any(one["name"] == name for one in before["layers"])
            step["select" if exists else "add"] = name
        self._do({"layer": step})
        return _LayerScope(self, before["current_level"], previous)

    def live_stroke(
        self,
        modifier: str = "none",
        *,
        seed: Optional[int] = None,
        filter: bool = True,
        interactive: bool = True,
        progress: Progress = None,
    ) -> LiveStroke:
        """Begin a stroke in the viewport whose samples arrive over time.

        Parameters
        ----------
        modifier : str, optional
            ``"none"``, ``"smooth"`` or ``"invert"``.
        seed : int, optional
            Seed of the random choices.
        filter : bool, optional
            Whether to remove pen and driver faults.
        interactive : bool, optional
            Whether to use the defaults of live strokes; see "Live strokes" in
            ``docs/stroke-script.md``. Without them, the result is bit-identical to that of
            ``stroke(pen=samples)``; with them, to ``path={"interactive": True}`` in addition.
        progress : callable, optional
            Called while dabs are applied, as for `stroke`.

        Returns
        -------
        LiveStroke
            The open stroke.

        Raises
        ------
        Error
            If a stroke is open.

        See Also
        --------
        stroke : Apply a stroke whose samples are known.

        Examples
        --------
        >>> s.camera(from_=[1, 0.2, 0.4], width=800, height=600)
        >>> with s.live_stroke() as stroke:
        ...     for i in range(60):
        ...         stroke.add([380 + 2 * i, 300, 0.5, 8 * i])
        """
        return LiveStroke(self, (modifier, seed, filter, interactive), progress)

    def observe(self, **functions: Callable[[Any], object]) -> Observer:
        """Call functions after each command that changes the document.

        The functions are called on the thread of the command, after it has ended, and may use the
        document. An exception in a function is passed to `sys.unraisablehook`.

        Parameters
        ----------
        surface : callable, optional
            Called with a `SurfaceEvent`.
        levels, layers, history, tool, camera : callable, optional
            Called with the document.
        modified : callable, optional
            Called with whether the document differs from its file.
        problem : callable, optional
            Called with a message about a failure that loses no work.

        Returns
        -------
        Observer
            Its method `remove` stops the calls.

        Raises
        ------
        TypeError
            If no function is given, or an event does not exist.

        See Also
        --------
        SurfaceEvent : The argument of `surface`.

        Examples
        --------
        >>> observer = s.observe(history=lambda document: print(document.history[-1].label))
        >>> s.set_positions(s.positions + 0.01 * s.normals, label="Inflate")
        Inflate
        >>> observer.remove()
        """
        unknown = set(functions) - _EVENTS
        if unknown or not functions:
            raise TypeError(f"observe: expected any of {', '.join(sorted(_EVENTS))}, got {sorted(unknown)}")
        observer = Observer(self, functions)
        self._observers.append(observer)
        self._core.collect_events(True)
        return observer

    def _deliver(self) -> None:
        for name, value in self._core.take_events():
            if name == "surface":
                what = frozenset(word for bit, word in _WHAT.items() if value["what"] & bit)
                value = SurfaceEvent(value["level"], what, value["patch_level"], value["patches"])
            elif value is None:
                value = self
            for observer in list(self._observers):
                function = observer._functions.get(name)
                if function is None or observer not in self._observers:
                    continue
                try:
                    function(value)
                except Exception as error:
                    sys.unraisablehook(_Unraisable(type(error), error, error.__traceback__, None, function))

    def _log_messages(self) -> None:
        for message in self._core.take_messages():
            _log.info("%s", message)


class _Unraisable(NamedTuple):
    exc_type: type
    exc_value: BaseException
    exc_traceback: Any
    err_msg: Optional[str]
    object: Any


_EVENTS = {"surface", "levels", "layers", "history", "tool", "camera", "modified", "problem"}
_WHAT = {1: "positions", 2: "normals", 4: "mask", 8: "visibility", 16: "topology"}


def _finish(core: _core.Session) -> None:
    """End the journal of a document that is no longer used, unless it has unsaved work."""
    try:
        if core.closed:
            return
        try:
            state = core.state()
        except ThreadError:
            # The last reference was dropped on another thread, so no call is running.
            core.move_to_this_thread()
            state = core.state()
        if not state["is_modified"]:
            # Views of the positions may still exist.
            core.leave(True)
    except Exception:
        # For example, a thread still uses the document. The journal can then be recovered.
        pass
