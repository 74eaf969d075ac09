#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes a dataset of random strokes, with the surface before and after each of them.

Stroke n depends only on the mesh, the levels, the seed and n. A run that was interrupted continues
where it ended, and a larger --count adds strokes to a dataset. The dataset is a folder:

surface.npz       the surface, in mesh-local space: `positions`, float32 (vertices, 3), and `faces`,
                  uint32 (faces, 4)
stroke_NNNNN.npz  one stroke, as these arrays:
                  `before`, `after`: float32 (vertices, 3), mesh-local positions
                  `normals`: float32 (vertices, 3), mesh-local unit normals before the stroke, as
                  the brush uses them; they depend on earlier strokes, not only on the positions
                  `samples`: float32 (samples, 4), x, y, z in world space and the pressure, 0 to 1
                  `settings`: a JSON text with the fields `tool`, `radius` (world units), `strength`
                  (percent), `falloff`, `modifier`, `seed`, and `earlier`, the number of other strokes
                  that are part of `before`
index.json        `setup` (how the dataset was made) and `strokes`: for each stroke, its `file`,
                  `settings`, the number of `moved` vertices and the longest `displacement`
                  (mesh-local units)
sheet.png         renders of the first strokes

Without a transform, as here, mesh-local and world space are the same.

usage: stroke_dataset.py [--count N] [--levels N] [--seed N] [--width PIXELS] [--output FOLDER] [MESH]
"""

import argparse
import hashlib
import json
import os
import warnings
from pathlib import Path

import numpy as np

import trovik

MESH = Path(__file__).resolve().parents[1] / "meshes" / "spot.obj"
TOOLS = ["Sculpt", "Wax", "Bulge", "Foamy", "Amplify", "Flatten", "Scrape", "Fill", "Smooth", "Pinch", "Smear"]
FALLOFFS = ["smooth", "linear", "spherical", "sharp", "bell", "plateau"]
SHOWN = 12


def random_settings(random, size):
    """Return random settings of a stroke on a surface of the given size."""
    return {
        "tool": str(random.choice(TOOLS)),
        "radius": round(float(size * 2 ** random.uniform(-6, -3.5)), 4),
        "strength": round(float(random.uniform(20, 90)), 1),
        "falloff": str(random.choice(FALLOFFS)),
        "modifier": str(random.choice(["none", "none", "invert"])),
        "seed": int(random.integers(2**31)),
    }


def random_path(s, random, radius):
    """Return the samples of a random walk along the visible surface, with smooth changes of direction."""
    count = int(random.integers(8, 48))
    place = s.nearest(s.positions[[random.integers(len(s.positions))]])
    heading = random.standard_normal(3)
    curvature = 0.0
    path = []
    for _ in range(count):
        normal = place.normal[0]
        heading -= normal * (heading @ normal)
        heading /= max(np.linalg.norm(heading), 1e-6)
        path.append(place.position[0])
        curvature = 0.8 * curvature + random.normal(0, 0.12)
        heading = np.cos(curvature) * heading + np.sin(curvature) * np.cross(normal, heading)
        place = s.nearest([path[-1] + 0.4 * radius * heading])
    pressure = np.interp(np.arange(count), np.linspace(0, count, 5), random.uniform(0.2, 1, 5))
    return np.c_[np.array(path), pressure].astype(np.float32)


def apply(s, settings, samples):
    """Apply a stroke."""
    names = ("radius", "strength", "falloff")
    s.tool(settings["tool"], **{name: settings[name] for name in names})
    s.stroke(surface=samples, modifier=settings["modifier"], seed=settings["seed"])


def undo_all(s):
    """Undo all steps, which restores the surface bit for bit."""
    applied = sum(step.applied for step in s.history)
    if applied:
        s.undo(applied)


def make_stroke(s, seed, number, size):
    """Return the arrays of one stroke. The surface is not changed."""
    random = np.random.default_rng([seed, number])
    earlier = int(random.integers(0, 4))
    for _ in range(earlier):
        settings = random_settings(random, size)
        apply(s, settings, random_path(s, random, settings["radius"]))
    settings = random_settings(random, size)
    samples = random_path(s, random, settings["radius"])
    before, normals = s.positions.copy(), s.normals
    apply(s, settings, samples)
    after = s.positions.copy()
    undo_all(s)
    text = json.dumps({**settings, "earlier": earlier})
    surfaces = {"before": before, "after": after, "normals": normals}
    return {**surfaces, "samples": samples, "settings": np.array(text)}


def write(path, make):
    """Write a file completely or not at all."""
    part = path.with_name(path.name + ".part")
    with open(part, "wb") as file:
        make(file)
    os.replace(part, path)


def write_json(path, value):
    write(path, lambda file: file.write((json.dumps(value, indent=1) + "\n").encode()))


def entry(path):
    """Return the line of a stroke in the index."""
    with np.load(path) as stroke:
        moved = np.linalg.norm(stroke["after"] - stroke["before"], axis=1)
        settings = json.loads(str(stroke["settings"]))
    displacement = round(float(moved.max()), 6)
    return {"file": path.name, "settings": settings, "moved": int((moved > 0).sum()), "displacement": displacement}


def write_sheet(s, folder, strokes, width):
    """Render the first strokes of the dataset on a contact sheet."""
    centre = (s.positions.min(axis=0) + s.positions.max(axis=0)) / 2
    names = []
    for number, stroke in enumerate(strokes[:SHOWN]):
        with np.load(folder / stroke["file"]) as arrays:
            s.set_positions(arrays["after"])
            s.camera(from_=arrays["samples"][:, :3].mean(axis=0) - centre, width=width, height=width)
        names.append(f"{number} {stroke['settings']['tool']}")
        s.render(keep=names[-1], samples=8, shading="cavity")
    s.contact_sheet(folder / "sheet.png", renders=names, columns=4)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("mesh", type=Path, nargs="?", default=MESH)
    parser.add_argument("--count", type=int, default=100)
    parser.add_argument("--levels", type=int, default=2)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--width", type=int, default=320, help="of each render, in pixels")
    parser.add_argument("--output", type=Path, default=Path("strokes"))
    options = parser.parse_args()
    folder = options.output
    folder.mkdir(parents=True, exist_ok=True)

    digest = hashlib.sha256(options.mesh.read_bytes()).hexdigest()
    setup = {"mesh": options.mesh.name, "sha256": digest, "levels": options.levels, "seed": options.seed}
    index = folder / "index.json"
    if index.exists() and json.loads(index.read_text())["setup"] != setup:
        parser.error(f"{folder} contains a dataset with another setup")
    if not index.exists():
        write_json(index, {"setup": setup, "strokes": []})

    # Some strokes have no effect, such as smoothing a smooth surface.
    warnings.simplefilter("ignore", trovik.SculptWarning)
    with trovik.open(options.mesh, levels=options.levels) as s:
        size = np.linalg.norm(s.positions.max(axis=0) - s.positions.min(axis=0))
        surface = {"positions": s.positions.copy(), "faces": s.faces()}
        write(folder / "surface.npz", lambda file: np.savez_compressed(file, **surface))
        files = [folder / f"stroke_{number:05}.npz" for number in range(options.count)]
        missing = [number for number, path in enumerate(files) if not path.exists()]
        for number in missing:
            arrays = make_stroke(s, options.seed, number, size)
            write(files[number], lambda file: np.savez_compressed(file, **arrays))
        strokes = [entry(path) for path in sorted(folder.glob("stroke_?????.npz"))]
        write_json(index, {"setup": setup, "strokes": strokes})
        write_sheet(s, folder, strokes, options.width)
    print(f"{len(strokes)} strokes, {len(missing)} of them new, in {folder}")


if __name__ == "__main__":
    main()
