# SPDX-License-Identifier: Apache-2.0
"""The commands for transform, symmetry and camera, and those that write files."""

from __future__ import annotations

import os
from typing import Any, Optional

from ._steps import Progress, Steps, fields_of


class ViewCommands(Steps):
    """Commands for transform, symmetry, camera and files; see `Commands`."""

    # --- Transform, symmetry and camera ---

    def transform(self, **fields: Any) -> None:
        """Set the transform from mesh-local to world space.

        Parameters
        ----------
        **fields
            ``scale`` (one factor or three, not 0), ``rotate`` (degrees about x, then y, then z),
            ``translate`` (shape (3,)); or ``matrix``, 16 numbers in row-major order, row-vector convention.

        Raises
        ------
        Error
            If the transform cannot be inverted, or if a stroke is open.

        See Also
        --------
        Document.local_to_world : The current transform.
        transform_vertices : Move the vertices instead.

        Examples
        --------
        >>> s.transform(scale=2, translate=[0, 1, 0])
        >>> s.local_to_world[3, :3].tolist()
        [0.0, 1.0, 0.0]
        """
        self._do({"transform": fields_of(fields)})

    def mirror(self, *planes: str, **fields: Any) -> None:
        """Set the symmetry of subsequent strokes.

        Parameters
        ----------
        *planes : str
            Any of ``"x"``, ``"y"``, ``"z"``; or ``"topological"``. Without arguments, symmetry is
            turned off.
        **fields
            ``radial`` (number of copies) and ``axis`` (``"x"``, ``"y"`` or ``"z"``).

        Raises
        ------
        Error
            If there are more than 65 dabs in all, or if the mesh has no topological mirror.

        See Also
        --------
        symmetrize : Make the surface symmetric.

        Examples
        --------
        >>> s.mirror("x")
        >>> s.mirror("x", radial=6, axis="y")
        >>> s.mirror()
        """
        if fields:
            self._do({"mirror": {"planes": list(planes), **fields_of(fields)}})
        else:
            self._do({"mirror": "topological" if planes == ("topological",) else list(planes)})

    def camera(self, **fields: Any) -> None:
        """Set the camera, which also defines the viewport of ``pointer`` and ``pen`` strokes.

        Parameters
        ----------
        **fields
            ``eye``, ``target`` and ``up`` (shape (3,), world space); or ``from_``, a direction from the
            mesh to the eye: the camera then frames the whole mesh. Also ``fieldOfView`` (vertical,
            degrees), ``orthographic``, ``width`` and ``height`` (pixels).

        Raises
        ------
        Error
            If the camera looks along its up direction, or a field is invalid.

        See Also
        --------
        render : Render an image.

        Examples
        --------
        >>> s.camera(from_=[1, 0.2, 0.4], width=800, height=600)
        >>> s.camera(eye=[3, 1, 2], target=[0, 0.2, 0], fieldOfView=30)
        """
        self._do({"camera": fields_of(fields)})

    # --- Files ---

    def render(self, file: os.PathLike | str | None = None, *, progress: Progress = None, **fields: Any) -> None:
        """Render the mesh to an image.

        Parameters
        ----------
        file : path, optional
            A PNG, JPEG or TIFF file. Not needed with ``keep``, the name of the image for `contact_sheet`.
        progress : callable, optional
            See `Commands`.
        **fields
            ``width`` and ``height`` (pixels), ``samples`` (rays per pixel), ``shading``, ``matcap``,
            ``wireframe``, ``transparent``, ``camera``, ``frames`` … See "Renders" in
            ``docs/stroke-script.md``.

        Raises
        ------
        Error
            If the file cannot be written, or a field is invalid.

        See Also
        --------
        camera : Set the camera.
        contact_sheet : Combine renders.

        Examples
        --------
        >>> s.render("out.png", width=64, height=48, samples=4, shading="cavity")
        """
        self._do({"render": {**({} if file is None else {"file": file}), **fields_of(fields)}}, progress)

    def contact_sheet(self, file: os.PathLike | str, **fields: Any) -> None:
        """Combine kept renders into one image with captions.

        Parameters
        ----------
        file : path
            A PNG, JPEG or TIFF file.
        **fields
            ``renders``, the names that were given to `render` as ``keep``; ``columns`` (default 5).

        Raises
        ------
        Error
            If no render was kept under a name, or the sizes of the renders differ.

        See Also
        --------
        render : Render an image.

        Examples
        --------
        >>> s.render(keep="before", width=64, height=48, samples=1)
        >>> s.filter("smooth", iterations=9)
        >>> s.render(keep="after", width=64, height=48, samples=1)
        >>> s.contact_sheet("sheet.png", renders=["before", "after"])
        """
        self._do({"contactSheet": {"file": file, **fields_of(fields)}})

    def export(self, file: os.PathLike | str, *, progress: Progress = None, **fields: Any) -> None:
        """Write the current level to a mesh file.

        Parameters
        ----------
        file : path
            An OBJ, PLY, STL, glTF, GLB or USDA file; see ``docs/mesh-files.md``.
        progress : callable, optional
            See `Commands`.
        **fields
            ``world`` (apply the transform), ``hidden`` (``False``: omit hidden faces), ``units``, ``up``;
            ``decimate``, a dictionary of the fields of `decimate`, which applies to the file only;
            ``lods``, the number of further files with fewer triangles (``NAME.lod1.EXT``, …), and
            ``lodRatio``, their triangles as a fraction of the previous file (default 0.5).

        Raises
        ------
        Error
            If the format is not supported, or the file cannot be written.

        See Also
        --------
        save : Save the whole document.
        decimate : Replace the mesh itself by a coarser one.

        Examples
        --------
        >>> s.export("out.ply")
        >>> s.written_files[-1].endswith("out.ply")
        True
        >>> s.export("low.glb", decimate={"ratio": 0.2}, lods=2)
        """
        self._do({"export": {"file": file, **fields_of(fields)}}, progress)

    def bake(self, file: os.PathLike | str, *, progress: Progress = None, **fields: Any) -> None:
        """Bake the difference between two levels into a map; see ``docs/baking.md``.

        Parameters
        ----------
        file : path
            An EXR, TIFF or PNG file.
        progress : callable, optional
            See `Commands`.
        **fields
            ``map`` (``"displacement"``, ``"vector"`` or ``"normal"``), ``from_`` and ``to`` (levels),
            ``size`` (pixels), ``space``, ``bits``, ``range``, ``samples``, ``padding``, ``repeat``.

        Raises
        ------
        Error
            If the mesh has no texture coordinates, or the file cannot be written.

        See Also
        --------
        displace : Apply a map.

        Examples
        --------
        >>> s.bake("normals.png", map="normal", size=64, repeat=True)
        """
        self._do({"bake": {"file": file, **fields_of(fields)}}, progress)

    def save(self, file: os.PathLike | str, *, progress: Progress = None) -> None:
        """Save everything except the undo history to a scene file.

        Parameters
        ----------
        file : path
            The scene (``.trovik``).
        progress : callable, optional
            See `Commands`.

        Raises
        ------
        Error
            If the file cannot be written; an existing file is then unchanged.

        See Also
        --------
        trovik.open : Open a scene.
        export : Write a mesh file.

        Examples
        --------
        >>> s.save("work.trovik")
        >>> s.is_modified
        False
        """
        self._do({"save": file}, progress)

    def application_data(self, name: str, text: Optional[str] = None) -> None:
        """Store or remove an entry of the scene for an application.

        Parameters
        ----------
        name : str
            The name of the entry, which begins with that of the application: ``"application/key"``.
        text : str, optional
            The content. Without it, the entry is removed.

        Raises
        ------
        Error
            If the name is invalid.

        See Also
        --------
        save : Save the scene.

        Examples
        --------
        >>> s.application_data("pipeline/shot", "A-010")
        >>> s.application_data("pipeline/shot")
        """
        self._do({"applicationData": {"name": name} if text is None else {"name": name, "text": text}})
