# SPDX-License-Identifier: Apache-2.0
"""Strokes whose samples arrive over time."""

__all__ = ["LiveStroke"]


class LiveStroke:
    """A stroke to which samples are added until it ends; see `Document.live_stroke`.

    Use it in a ``with`` statement: the stroke ends normally at the end of the block, and is
    reverted if the block raises an exception.
    """

    def __init__(self, document, options, progress):
        self._document = document
        self._progress = progress
        self._is_over = False
        document._run(lambda core: core.begin_stroke(*options, progress))

    def add(self, samples):
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

    def tick(self, milliseconds):
        """Repeat the last sample at a later time, which keeps an airbrush running.

        Parameters
        ----------
        milliseconds : float
            Time of the tick, on the same clock as the samples.
        """
        self._require_open()
        self._document._run(lambda core: core.tick(float(milliseconds)))

    def release(self):
        """Apply the remaining dabs and end the stroke as one undo step. Does nothing if it is over."""
        self._end(False)

    def abandon(self):
        """End the stroke and restore the surface bit-exactly. Does nothing if it is over."""
        self._end(True)

    @property
    def is_over(self):
        """bool : Whether the stroke was released, abandoned or ended by an error."""
        return self._is_over or self._document.closed or self._document._core.is_stroke_over

    def _require_open(self):
        if self.is_over:
            from ._errors import Error

            raise Error("the stroke is over")

    def _end(self, abandon):
        if self.is_over:
            self._is_over = True
            return
        self._is_over = True
        self._document._run(lambda core: core.end_stroke(abandon, self._progress))

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        if kind is None:
            self.release()
        else:
            self.abandon()
        return False


def _rows(samples):
    import numpy as np

    rows = np.atleast_2d(np.asarray(samples, dtype=np.float64))
    if rows.size == 0:
        return []
    if rows.ndim != 2 or rows.shape[1] not in (4, 6):
        raise ValueError(f"samples must have the shape (n, 4) or (n, 6), not {rows.shape}")
    return rows
