#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Covers a sphere with scales of different sizes, on a layer.

The centres of the scales are evenly distributed over the surface. Each scale is one dab with a stamp
that is computed here, and its size depends on its position, as on the skin of a reptile.

usage: reptile_skin.py [--levels N] [--scales N] [--width PIXELS] [--output FOLDER]
"""

import argparse
from pathlib import Path

import numpy as np

import trovik

MESH = Path(__file__).resolve().parents[1] / "meshes" / "cube.obj"


def scale_stamp(path, size=192):
    """Write a keeled hexagonal scale with a furrow around it, and return its path."""
    y, x = np.mgrid[-1 : 1 : size * 1j, -1 : 1 : size * 1j]
    corners = np.deg2rad(np.arange(6) * 60)
    # The distance to a hexagon with rounded corners: 1 at the rim.
    sides = np.stack([np.clip(x * np.cos(a) + y * np.sin(a), 0, None) for a in corners])
    rim = (sides**8).sum(axis=0) ** (1 / 8) / 0.8
    body = np.clip(1 - rim**4, 0, 1) ** 0.5
    keel = 0.25 * np.exp(-((x / 0.1) ** 2)) * np.clip(1 - np.abs(y) / 0.7, 0, 1)
    furrow = 0.6 * np.exp(-(((rim - 1.06) / 0.07) ** 2))
    return trovik.save_stamp(path, 0.75 * body + keel * (body > 0) - furrow)


def even_directions(count):
    """Return unit vectors on a spiral whose turns are equally far apart."""
    index = np.arange(count) + 0.5
    height = 1 - 2 * index / count
    angle = np.pi * (1 + 5**0.5) * index
    radius = np.sqrt(1 - height**2)
    return np.c_[radius * np.cos(angle), height, radius * np.sin(angle)]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--levels", type=int, default=8)
    parser.add_argument("--scales", type=int, default=700)
    parser.add_argument("--width", type=int, default=1000, help="of the render, in pixels")
    parser.add_argument("--output", type=Path, default=Path("."))
    options = parser.parse_args()
    options.output.mkdir(parents=True, exist_ok=True)

    with trovik.open(MESH, levels=options.levels) as s:
        s.camera(from_=[0.5, 0.45, 1], width=options.width, height=options.width)
        radius = np.linalg.norm(s.positions, axis=1).mean()
        # A cube becomes only nearly a sphere when it is subdivided.
        s.set_positions(s.positions * (radius / np.linalg.norm(s.positions, axis=1))[:, None], label="Sphere")

        centres = radius * even_directions(options.scales)
        spacing = radius * np.sqrt(4 * np.pi / options.scales)
        random = np.random.default_rng(7)
        # Large scales on the back (+y), small ones on the belly.
        size = spacing * (0.57 + 0.07 * centres[:, 1] / radius + 0.03 * random.standard_normal(len(centres)))
        stamp = scale_stamp(options.output / "scale.tif")
        with s.layer("scales"):
            s.tool("Sculpt", falloff="constant", strength=20, buildUpRate=1, stamp={"path": stamp, "onSurface": True})
            for place, extent in zip(s.nearest(centres).position, size):
                s.set(radius=extent)
                s.stroke(surface=[place])
        offsets = np.linalg.norm(s.layers[0].offsets, axis=1)
        print(f"{len(centres)} scales, up to {100 * offsets.max() / radius:.1f} % of the radius high")
        s.render(options.output / "reptile_skin.png", samples=8)
        s.export(options.output / "reptile_skin.glb")


if __name__ == "__main__":
    main()
