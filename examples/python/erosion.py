#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Raises a mountain on a slab and wears it down with rivers and landslides.

On each level, noise of matching size is added, and erosion is simulated on the vertices: rivers cut
valleys in proportion to the rain that they collect, and slopes that are too steep slide down. Each
effect is recorded in a layer of that level, so that its strength can be changed later. A mask protects
the sides and the rim of the slab. The same arguments give the same bits.

usage: erosion.py [--levels N] [--cycles N] [--seed N] [--width PIXELS] [--output FOLDER]
"""

import argparse
from pathlib import Path

import numpy as np

import trovik

MESH = Path(__file__).resolve().parents[1] / "meshes" / "slab.obj"
FIRST_LEVEL = 3
RIM = 0.04  # width of the protected rim, as a fraction of the extent
UPLIFT = 0.006  # world units per cycle
CUT = 0.1  # depth per cycle of a river that drains an area of 1 and falls by 1 over a length of 1
TALUS = 0.85  # the steepest stable slope, rise over run


class Ground:
    """The vertices on which rain falls, as a graph. z is up, and lengths are in world units."""

    def __init__(self, faces, positions, free):
        # Diagonals make the directions of rivers depend less on those of the edges.
        sides = ((0, 1), (1, 2), (2, 3), (3, 0), (0, 2), (1, 3))
        pairs = np.concatenate([faces[:, side].astype(np.int64) for side in sides])
        pairs = np.r_[pairs, pairs[:, ::-1]]
        pairs = np.unique(pairs[free[pairs[:, 0]]] @ [len(positions), 1])
        self.start, self.end = np.divmod(pairs, len(positions))
        self.vertices, self.first = np.unique(self.start, return_index=True)
        self.row = np.repeat(np.arange(len(self.vertices)), np.diff(np.r_[self.first, len(self.start)]))
        self.length = np.linalg.norm((positions[self.end] - positions[self.start])[:, :2], axis=1)
        self.area = np.minimum.reduceat(self.length, self.first) ** 2

    def fill(self, z):
        """Fill hollows with sediment up to their outlets.

        See Planchon, Darboux: "A fast, simple and versatile algorithm to fill the depressions of
        digital elevation models" (2002).
        """
        ground = z[self.vertices]
        z[self.vertices] = z.max() + 1
        while True:
            outlet = np.minimum.reduceat(z[self.end] + 1e-4 * self.length, self.first)
            level = np.maximum(ground, np.minimum(outlet, z[self.vertices]))
            if (level == z[self.vertices]).all():
                return
            z[self.vertices] = level

    def cut(self, z):
        """Let rivers cut into the ground: the deeper, the more water they carry and the steeper they are."""
        fall = (z[self.start] - z[self.end]) / self.length
        steepest = np.flatnonzero(fall == np.maximum.reduceat(fall, self.first)[self.row])
        down = np.empty(len(self.vertices), dtype=np.int64)
        down[self.row[steepest]] = steepest
        fall = np.maximum(fall[down], 0)
        # Rivers end at `sink`. Each pass adds up the water along paths of twice the length.
        sink = len(z)
        following = np.full(sink + 1, sink)
        following[self.vertices] = np.where(fall > 0, self.end[down], sink)
        water = np.zeros(sink + 1)
        water[self.vertices] = self.area
        while (following != sink).any():
            water += np.bincount(following, weights=water, minlength=sink + 1)
            water[sink] = 0
            following = following[following]
        # A river does not cut below its next vertex.
        depth = CUT * np.sqrt(water[self.vertices]) * fall
        z[self.vertices] -= np.minimum(depth, 0.6 * fall * self.length[down])

    def slide(self, z):
        """Move material down where a slope is too steep."""
        excess = np.maximum(z[self.start] - z[self.end] - TALUS * self.length, 0)
        excess *= 0.5 / np.maximum(np.bincount(self.start, excess > 0, len(z)), 1)[self.start]
        z += np.bincount(self.end, excess, len(z)) - np.bincount(self.start, excess, len(z))


def noise(points, frequency, random):
    """Return smooth noise with a mean of 0 at points: waves in random directions."""
    total = np.zeros(len(points))
    for _ in range(12):
        angle = random.uniform(0, 2 * np.pi)
        wave = frequency * random.uniform(0.7, 1.4) * np.array([np.cos(angle), np.sin(angle)])
        total += np.sin(points @ wave + random.uniform(0, 2 * np.pi))
    return total / 12**0.5


def move(s, z, layer):
    """Set the heights of all vertices, and record the change in a layer."""
    positions = s.positions.copy()
    positions[:, 2] = z
    with s.layer(layer):
        s.set_positions(positions, label=layer.capitalize())


def weather(s, ground, uplift, cycles):
    """Raise the current level by `uplift` in each cycle, and wear it down."""
    start = s.positions[:, 2].astype(np.float64)
    z, cut = start.copy(), np.zeros(len(start))
    for cycle in range(cycles):
        z += uplift
        before = z.copy()
        if cycle % 5 == 0:
            ground.fill(z)
        ground.cut(z)
        cut += z - before
        ground.slide(z)
    raised = start + cycles * uplift
    move(s, raised, "uplift")
    move(s, raised + cut, "rivers")
    move(s, z, "landslides")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--levels", type=int, default=6)
    parser.add_argument("--cycles", type=int, default=160, help="on the first level; half as many on each next level")
    parser.add_argument("--seed", type=int, default=3)
    parser.add_argument("--width", type=int, default=1200, help="of the render, in pixels")
    parser.add_argument("--output", type=Path, default=Path("."))
    options = parser.parse_args()
    options.output.mkdir(parents=True, exist_ok=True)
    random = np.random.default_rng(options.seed)

    with trovik.open(MESH, levels=FIRST_LEVEL) as s:
        base = s.positions.max(axis=0)
        for level in range(FIRST_LEVEL, max(options.levels, FIRST_LEVEL) + 1):
            if level > FIRST_LEVEL:
                s.subdivide()
            points = s.positions.copy()
            inside = (1 - np.abs(points[:, :2]) / base[:2]).min(axis=1)
            free = (inside > RIM) & (points[:, 2] > base[2] - 0.01)
            s.freeze(~free)
            plane = points[:, :2]
            fade = np.where(free, np.clip((inside - RIM) / 0.3, 0, 1), 0)
            uplift = UPLIFT * fade * (1 + 0.5 * noise(plane, 2.5, random))
            roughness = 0.3 * 0.5**level * fade * noise(plane, 3 * 2**level, random)
            move(s, points[:, 2] + roughness, "ground")
            weather(s, Ground(s.faces(), points, free), uplift, options.cycles >> (level - FIRST_LEVEL))
        s.freeze("clear")
        height = s.positions[:, 2].max() - base[2]
        print(f"{len(s.positions)} vertices, {height:.2f} high, {len(s.history)} undo steps")
        view = {"eye": [-2.8, -4.7, 3], "target": [-0.1, -0.35, 0.1], "up": [0, 0, 1]}
        s.camera(**view, width=options.width, height=options.width * 2 // 3)
        s.render(options.output / "erosion.png", samples=16, shading="cavity")
        s.save(options.output / "erosion.trovik")


if __name__ == "__main__":
    main()
