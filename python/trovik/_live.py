# SPDX-License-Identifier: Apache-2.0
"""Strokes whose samples arrive over time."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import ArrayLike

from ._commands import Progress
from ._errors import Error

if TYPE_CHECKING:
    from ._document import Document

__all__ = ["LiveStroke"]


class LiveStroke:
    """A stroke to which samples are added until it ends; see `Document.live_stroke`.

    Use it in a ``with`` statement: the stroke ends normally at the end of the block, and is
    reverted if the block raises an exception.
    """

    def __init__(self, document: Document, options: tuple, progress: Progress):
        self._document = document
        self._progress = progress
        self._is_over = False
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
        """
        rows = _rows(samples)
        self._require_open()
        self._document._run(lambda core: core.add_samples(rows, self._progress))

    def tick(self, milliseconds: float) -> None:
        """Repeat the last sample at a later time, which keeps an airbrush running.

        Parameters
        ----------
        milliseconds : float
            Time of the tick, on the same clock as the samples.
        """
        self._require_open()
        self._document._run(lambda core: core.tick(float(milliseconds)))

    def release(self) -> None:
        """Apply the remaining dabs and end the stroke as one undo step. Does nothing if it is over."""
        self._end(False)

    def abandon(self) -> None:
        """End the stroke and restore the surface bit-exactly. Does nothing if it is over."""
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
