# SPDX-License-Identifier: Apache-2.0
"""The commands for history and levels."""

from __future__ import annotations

from ._steps import Progress, Steps


class LevelCommands(Steps):
    """Commands for history and levels; see `Commands`."""

    def undo(self, count: int = 1) -> None:
        """Undo steps.

        Parameters
        ----------
        count : int, optional
            Number of steps.

        Raises
        ------
        Error
            If there are fewer steps; all of them have then been undone.
        BufferError
            If views of the positions exist.
            Only for steps that change the levels.

        See Also
        --------
        redo : Redo steps that were undone.
        Document.history : The steps.

        Examples
        --------
        >>> s.filter("smooth")
        >>> s.undo()
        """
        self._do({"undo": count})

    def redo(self, count: int = 1) -> None:
        """Redo steps that were undone.

        Parameters
        ----------
        count : int, optional
            Number of steps.

        Raises
        ------
        Error
            If there are fewer steps; all of them have then been redone.
        BufferError
            If views of the positions exist.
            Only for steps that change the levels.

        See Also
        --------
        undo : Undo steps.

        Examples
        --------
        >>> s.filter("smooth")
        >>> s.undo()
        >>> s.redo()
        """
        self._do({"redo": count})

    def subdivide(self, count: int = 1, *, progress: Progress = None) -> None:
        """Add levels on top, and make the highest one current.

        Each level has four faces for each face of the level below.

        Parameters
        ----------
        count : int, optional
            Number of levels.
        progress : callable, optional
            See `Commands`.

        Raises
        ------
        Error
            If the levels need more memory than is available.
        BufferError
            If views of the positions exist.

        See Also
        --------
        level : Make another level current.
        unsubdivide : Add levels below.

        Examples
        --------
        >>> faces = len(s.faces())
        >>> s.subdivide()
        >>> len(s.faces()) // faces
        4
        """
        self._do({"subdivide": count}, progress)

    def unsubdivide(self, count: int = 1, *, progress: Progress = None) -> None:
        """Add coarser levels below level 0.

        Faces and vertices are renumbered. The level with the current surface remains current.

        Parameters
        ----------
        count : int, optional
            Number of levels.
        progress : callable, optional
            See `Commands`.

        Raises
        ------
        Error
            If level 0 does not have the connectivity of a refined mesh.
        BufferError
            If views of the positions exist.

        See Also
        --------
        subdivide : Add levels on top.

        Examples
        --------
        >>> s.delete_levels("lower")
        >>> s.unsubdivide()
        >>> s.level_count
        2
        """
        self._do({"unsubdivide": count}, progress)

    def delete_levels(self, which: str, *, progress: Progress = None) -> None:
        """Delete the levels above or below the current one.

        Parameters
        ----------
        which : str
            ``"higher"`` or ``"lower"``. After ``"lower"``, the current level is level 0.
        progress : callable, optional
            See `Commands`.

        Raises
        ------
        BufferError
            If views of the positions exist.

        Warns
        -----
        SculptWarning
            If there are no such levels.

        See Also
        --------
        level : Make another level current.

        Examples
        --------
        >>> s.level(1)
        >>> s.delete_levels("higher")
        >>> s.level_count
        2
        """
        self._do({"deleteLevels": which}, progress)

    def level(self, number: int, *, progress: Progress = None) -> None:
        """Make another level current.

        The changes of the current level are propagated to the new one.

        Parameters
        ----------
        number : int
            0 for the coarsest level.
        progress : callable, optional
            See `Commands`.

        Raises
        ------
        Error
            If there is no such level.
        BufferError
            If views of the positions exist.

        See Also
        --------
        Document.current_level, Document.level_count

        Examples
        --------
        >>> s.level(0)
        >>> s.current_level
        0
        """
        self._do({"level": number}, progress)

    def apply_to_base(self, *, progress: Progress = None) -> None:
        """Move the vertices of the lower levels to their positions on the current level.

        Parameters
        ----------
        progress : callable, optional
            See `Commands`.

        Raises
        ------
        Cancelled
            If `progress` returned ``False``.

        See Also
        --------
        level : Make another level current.

        Examples
        --------
        >>> s.apply_to_base()
        """
        self._do({"applyToBase": True}, progress)

    def reset(self, *, progress: Progress = None) -> None:
        """Restore the imported mesh, with the same number of levels and without history.

        Parameters
        ----------
        progress : callable, optional
            See `Commands`.

        Raises
        ------
        BufferError
            If views of the positions exist.

        See Also
        --------
        undo : Undo steps.

        Examples
        --------
        >>> s.filter("smooth")
        >>> s.reset()
        >>> len(s.history)
        0
        """
        self._do({"reset": True}, progress)
