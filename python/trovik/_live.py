# SPDX-License-Identifier: Apache-2.0
"""Strokes whose samples arrive over time."""

from __future__ import annotations

import math
from typing import TYPE_CHECKING, Any, Optional

import numpy as np
from numpy.typing import ArrayLike

from ._errors import Error
from ._steps import Progress

if TYPE_CHECKING:
    from ._document import Document

__all__ = ["LiveStroke"]

# Milliseconds. A wrong clock would otherwise make an airbrush apply dabs for hours.
_MAX_TICK = 10000.0


class LiveStroke:
    """A stroke to which samples are added until it ends; see `Document.live_stroke`.

    Use it in a ``with`` statement: the stroke ends normally at the end of the block, and is
    reverted if the block raises an exception.

    Examples
    --------
    >>> with s.live_stroke() as stroke:
    ...     for i in range(20):
    ...         stroke.add([400 + 2 * i, 300, 0.5, 8 * i])
    """

    def __init__(self, document: Document, options: tuple, progress: Progress):
        self._document = document
        self._progress = progress
        self._is_over = False
        # Milliseconds of the last sample or tick.
        self._last: Optional[float] = None
        document._run(lambda core: core.begin_stroke(*options, progress))
        document._live = self

    def add(self, samples: ArrayLike) -> None:
        """Add samples, and apply the dabs that later samples cannot affect.

        Parameters
        ----------
        samples : array_like, shape (n, 4) or (n, 6)
            Rows ``x, y, pressure, milliseconds``, optionally followed by the tilt ``x, y``. The
            position is in pixels of the viewport, with the origin at the top left corner. The
            pressure is from 0 to 1. Times may start at any value.

        Raises
        ------
        Error
            If a number is out of range, or if the stroke is over.
        ValueError
            If the shape is wrong.
        Cancelled
            If the function `progress` of the stroke returned ``False``.

        See Also
        --------
        tick : Keep an airbrush running while the pen rests.

        Examples
        --------
        >>> stroke = s.live_stroke()
        >>> stroke.add([[400, 300, 0.5, 0], [420, 300, 0.6, 16]])
        >>> stroke.release()
        """
        rows = _rows(samples)
        self._require_open()
        self._document._run(lambda core: core.add_samples(rows, self._progress))
        if len(rows):
            self._last = float(rows[-1][3])

    def tick(self, milliseconds: float) -> None:
        """Repeat the last sample at a later time, which keeps an airbrush running.

        Parameters
        ----------
        milliseconds : float
            Time of the tick, on the same clock as the samples. A tick advances the stroke by at
            most 10 seconds; a later time is replaced by that limit. Before the first sample, and at
            a time before the last one, a tick does nothing.

        Raises
        ------
        Error
            If the time is negative or not finite, or if the stroke is over.

        See Also
        --------
        add : Add samples.

        Examples
        --------
        >>> s.set(airbrush=50)
        >>> stroke = s.live_stroke()
        >>> stroke.add([400, 300, 0.5, 0])
        >>> stroke.tick(500)
        >>> stroke.release()
        """
        self._require_open()
        time = float(milliseconds)
        if not (math.isfinite(time) and time >= 0):
            raise Error(f"the time of a tick must be finite and not negative, not {time}")
        if self._last is None or time <= self._last:
            return
        self._last = min(time, self._last + _MAX_TICK)
        self._document._run(lambda core: core.tick(self._last))

    def release(self) -> None:
        """Apply the remaining dabs and end the stroke as one undo step.

        Does nothing if the stroke is over.

        See Also
        --------
        abandon : Revert the stroke.

        Examples
        --------
        >>> stroke = s.live_stroke()
        >>> stroke.add([400, 300, 0.5, 0])
        >>> stroke.release()
        >>> stroke.is_over
        True
        """
        self._end(False)

    def abandon(self) -> None:
        """End the stroke and restore the surface bit-exactly, without an undo step.

        Does nothing if the stroke is over.

        See Also
        --------
        release : End the stroke normally.

        Examples
        --------
        >>> stroke = s.live_stroke()
        >>> stroke.add([400, 300, 0.5, 0])
        >>> stroke.abandon()
        >>> len(s.history)
        0
        """
        self._end(True)

    @property
    def is_over(self) -> bool:
        """bool : Whether the stroke was released, abandoned or ended by an error."""
        document = self._document
        return self._is_over or document.closed or document._live is not self or document._core.is_stroke_over

    def _require_open(self) -> None:
        if self.is_over:
            raise Error("the stroke is over")

    def _end(self, abandon: bool) -> None:
        if self.is_over:
            self._is_over = True
            return
        self._is_over = True
        self._document._run(lambda core: core.end_stroke(abandon, self._progress))

    def __enter__(self) -> LiveStroke:
        return self

    def __exit__(self, kind: object, *_: object) -> bool:
        if kind is None:
            self.release()
        else:
            self.abandon()
        return False


def _rows(samples: ArrayLike) -> Any:
    rows = np.atleast_2d(np.asarray(samples, dtype=np.float64))
    if rows.size == 0:
        return []
    if rows.ndim != 2 or rows.shape[1] not in (4, 6):
        raise ValueError(f"samples must have the shape (n, 4) or (n, 6), not {rows.shape}")
    return rows
