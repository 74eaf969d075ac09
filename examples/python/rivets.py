#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Places rivets at equal distances along a curve on a surface.

The curve is projected onto the surface with `Document.nearest`. A seam is cut along it, and on both
sides of the seam, one rivet per pitch is stamped with an image that is computed here.

usage: rivets.py [--levels N] [--pitch LENGTH] [--width PIXELS] [--output FOLDER] [MESH]
"""

import argparse
from pathlib import Path

import numpy as np

import trovik

MESH = Path(__file__).resolve().parents[1] / "meshes" / "slab.obj"


def rivet_stamp(path, size=128):
    """Write a domed head with a groove around it, and return its path."""
    y, x = np.mgrid[-1 : 1 : size * 1j, -1 : 1 : size * 1j]
    r = np.hypot(x, y)
    dome = np.sqrt(np.clip(1 - (r / 0.6) ** 2, 0, 1))
    groove = np.exp(-(((r - 0.72) / 0.07) ** 2))
    return trovik.save_stamp(path, 0.3 * np.sign(dome) + 0.7 * dome - 0.3 * groove)


def resampled(points, pitch):
    """Return points at equal distances along a polyline."""
    length = np.r_[0, np.cumsum(np.linalg.norm(np.diff(points, axis=0), axis=1))]
    count = max(int(round(length[-1] / pitch)), 1)
    at = (np.arange(count) + 0.5) * length[-1] / count
    return np.stack([np.interp(at, length, points[:, axis]) for axis in range(3)], axis=1)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("mesh", nargs="?", default=MESH)
    parser.add_argument("--levels", type=int, default=6)
    parser.add_argument("--pitch", type=float, default=0.22)
    parser.add_argument("--width", type=int, default=1200, help="of the render, in pixels")
    parser.add_argument("--output", type=Path, default=Path("."))
    options = parser.parse_args()
    options.output.mkdir(parents=True, exist_ok=True)

    with trovik.open(options.mesh, levels=options.levels) as s:
        low, high = s.positions.min(axis=0), s.positions.max(axis=0)
        centre, extent = (low + high) / 2, (high - low) / 2
        eye = centre + extent[0] * np.array([-0.6, -1.7, 2.2])
        s.camera(eye=eye, target=centre, width=options.width, height=options.width * 2 // 3)

        # An S-shaped curve above the surface, projected onto it.
        t = np.linspace(-1, 1, 400)
        curve = centre + extent * np.c_[0.86 * t, 0.55 * np.sin(2.6 * t), 0 * t + 1]
        seam = s.nearest(curve)
        s.tool("Sculpt", radius=0.045, strength=60, falloff="sharp")
        s.stroke(surface=seam.position, modifier="invert")

        along = np.gradient(seam.position, axis=0)
        sideways = np.cross(seam.normal, along)
        sideways /= np.linalg.norm(sideways, axis=1, keepdims=True)
        s.tool(
            "Sculpt",
            radius=0.1,
            strength=28,
            falloff="constant",
            buildUpRate=1,
            stamp={"path": rivet_stamp(options.output / "rivet.tif"), "onSurface": True},
        )
        for side in (-0.16, 0.16):
            for place in s.nearest(resampled(seam.position + side * sideways, options.pitch)).position:
                s.stroke(surface=[place])

        print(f"{len(s.history)} undo steps, {len(s.positions)} vertices")
        s.render(options.output / "rivets.png", samples=24, shading="matcap", matcap="grey")
        s.save(options.output / "rivets.trovik")


if __name__ == "__main__":
    main()
