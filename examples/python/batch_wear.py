#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Wears down the edges of all meshes in a folder.

Ridges are selected by their curvature with a mask, broken up by noise, and moved inwards. The results,
and a sheet with a render of each mesh before and after, are written to another folder.

usage: batch_wear.py [--vertices N] [--depth FRACTION] [--width PIXELS] IN OUT
"""

import argparse
from pathlib import Path

import numpy as np

import trovik

FORMATS = {".obj", ".ply", ".stl", ".gltf", ".glb"}


def noise(points, frequency, seed):
    """Return smooth noise from 0 to 1 at points: a sum of waves in random directions."""
    random = np.random.default_rng(seed)
    total = np.zeros(len(points))
    for octave in range(4):
        for _ in range(5):
            direction = random.standard_normal(3)
            direction *= frequency * 2**octave / np.linalg.norm(direction)
            total += np.sin(points @ direction + random.uniform(0, 2 * np.pi)) / 2**octave
    return 1 / (1 + np.exp(-1.5 * total))


def weights(s, **cavity):
    """Return the weights, 0 to 1, of a selection by curvature."""
    s.freeze(cavity=cavity, mode="replace")
    s.freeze(blur=3)
    selected = s.mask / 127
    s.freeze("clear")
    return selected


def wear(s, depth, seed):
    """Wear down the ridges of the current level."""
    points = s.positions.copy()
    size = np.linalg.norm(points.max(axis=0) - points.min(axis=0))
    chips = np.clip(3 * noise(points, 40 / size, seed) - 1, 0, 1)
    amount = weights(s, sign="ridge", size=size / 40, softness=0.5, rings=2) * chips
    s.set_positions(points - depth * size * amount[:, None] * s.normals, label="Wear")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=Path, metavar="IN")
    parser.add_argument("output", type=Path, metavar="OUT")
    parser.add_argument("--vertices", type=int, default=200_000, help="subdivide to at least this number")
    parser.add_argument("--depth", type=float, default=0.006, help="as a fraction of the mesh's diagonal")
    parser.add_argument("--width", type=int, default=640, help="of each render, in pixels")
    options = parser.parse_args()
    options.output.mkdir(parents=True, exist_ok=True)

    failed = 0
    meshes = sorted(path for path in options.folder.iterdir() if path.suffix.lower() in FORMATS)
    for number, path in enumerate(meshes):
        try:
            with trovik.open(path) as s:
                while len(s.positions) < options.vertices:
                    s.subdivide()
                s.camera(from_=[0.5, 0.25, 1], width=options.width, height=options.width)
                s.render(keep="before", samples=8, shading="cavity")
                wear(s, options.depth, seed=number)
                s.render(keep="after", samples=8, shading="cavity")
                s.contact_sheet(options.output / f"{path.stem}.png", renders=["before", "after"], columns=2)
                s.export(options.output / f"{path.stem}.ply")
                print(f"{path.name}: {len(s.positions)} vertices")
        except trovik.Error as error:
            failed += 1
            print(f"{path.name}: {error.reason}")
    raise SystemExit(failed > 0)


if __name__ == "__main__":
    main()
