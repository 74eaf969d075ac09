#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes examples/studio/*.events.json, the sessions that docs/studio.md describes.

    make_examples.py FOLDER          writes the files
    make_examples.py FOLDER --check  fails if a file differs from what would be written
"""

import pathlib
import sys

from event_writer import Camera, Recording, falling, resample, rising, softened, tapered

VIEWPORT = (1040, 740)
FRONT = Camera((0, -0.4, 11), (0, -0.4, 0))
BACK = Camera((0, -0.4, -11), (0, -0.4, 0))
SIDE = Camera((11, -0.4, 0), (0, -0.4, 0))
BELOW = Camera((0, -11, 0.0), (0, 0, 0.0), up=(0, 0, 1))
FACE = Camera((0, -0.4, 11), (0, -0.4, 0), field_of_view=9)
TOP = Camera((0, 11, 0.0), (0, 0, 0.0), up=(0, 0, -1))
THREE_QUARTER = Camera((5.2, 0.4, 9.5), (0, -0.4, 0), field_of_view=17)
PORTRAIT = Camera((4.2, 0.2, 10.0), (0.05, -0.28, 0), field_of_view=15)


def block():
    """Sculpts the large forms on the sphere: the sides of the head, face, jaw and neck."""
    r = Recording(VIEWPORT, "The large forms of a head: sides, face, jaw and neck.")
    r.add("wait")
    r.screenshot("start.jpg", window=True)
    r.action("symmetry.x")
    r.tool("Sculpt", falloff="smooth", smoothing=False, buildUpRate=1)
    r.settings(pressureControlsStrength=False, direction="surfaceNormal")
    # The sides of the head are flatter than a sphere, and closer together towards the jaw.
    r.look(SIDE)
    r.settings(radius=1.25, strength=19)
    r.stroke([(0, 0.15, 0.1), (0, -0.55, 0.1)], hold="Ctrl")
    r.settings(radius=0.55, strength=48, direction="y")
    r.stroke([(0, -0.5, 0.5), (0, -0.4, 0.12)], hold="Ctrl")
    r.screenshot("sides.jpg")
    # Fill out the temples.
    r.settings(direction="surfaceNormal", radius=0.7, strength=9)
    r.stroke([(0, 0.6, 0.1), (0, 0.55, -0.3)])
    # Carve under the back of the skull, down to the neck.
    r.look(BACK)
    r.settings(radius=0.8, strength=30)
    r.stroke([(0, -0.8, 0), (0.3, -0.8, 0)], hold="Ctrl")
    # Pull the face forward, and down to the chin.
    r.look(FRONT)
    r.settings(radius=0.75, strength=13)
    r.stroke([(0, -0.62, 0), (0.12, -0.62, 0)])
    r.settings(radius=0.6, strength=56, direction="y")
    r.stroke([(0, -0.8, 0), (0.1, -0.8, 0)], hold="Ctrl")
    r.settings(radius=0.4, strength=10, direction="z")
    r.stroke([(0, -1.0, 0), (0.1, -1.0, 0)])
    # Pull the underside down to form the neck.
    r.look(BELOW)
    r.settings(direction="y", falloff="plateau", radius=0.55, strength=90)
    r.stroke([(0, 0, -0.3)], hold="Ctrl")
    r.settings(radius=0.5, strength=90)
    r.stroke([(0, 0, -0.3)], hold="Ctrl")
    r.tool("Flatten", radius=0.9, strength=100, smoothing=False)
    r.stroke([(0, 0, -0.24), (0, 0, -0.2)])
    # Smooth the surface of the neck, which has been stretched.
    r.tool("Smooth", radius=0.4, strength=60, smoothing=False)
    for camera in (SIDE, FRONT, BACK):
        r.look(camera)
        r.stroke([(-0.2, -1.15, -0.3), (0.2, -1.15, -0.2)])
        r.stroke([(-0.2, -1.45, -0.3), (0.2, -1.45, -0.2)])
    r.look(THREE_QUARTER)
    r.action("panel.symmetry")
    r.screenshot("block.jpg", window=True)
    return r


def features():
    """Sculpts eye sockets, brow, nose, cheeks, mouth, chin and ears on a finer level."""
    r = Recording(VIEWPORT, "The features of the face.")
    r.action("level.subdivide.once")
    r.look(FRONT)
    r.tool("Sculpt", falloff="smooth", direction="surfaceNormal")
    r.settings(radius=0.28, strength=34, pressureControlsStrength=True, strengthBias=0)
    r.stroke([(0.27, -0.12, 0), (0.38, -0.12, 0)], hold="Ctrl")
    r.settings(radius=0.16, strength=22)
    r.stroke([(0.1, 0.04, 0), (0.3, 0.09, 0), (0.54, 0.0, 0)], tapered)
    # Nose.
    r.settings(radius=0.22, strength=62, direction="z")
    r.stroke([(0, 0.02, 0), (0, -0.46, 0)], rising)
    r.settings(radius=0.16, strength=62)
    r.stroke([(0, -0.46, 0), (0.02, -0.46, 0)])
    r.settings(radius=0.11, strength=75)
    r.stroke([(0.12, -0.51, 0), (0.13, -0.49, 0)])
    # Cheekbones, mouth, chin.
    r.settings(radius=0.3, strength=18, direction="surfaceNormal")
    r.stroke([(0.42, -0.36, 0), (0.62, -0.25, 0)], tapered)
    r.settings(radius=0.3, strength=16)
    r.stroke([(0, -0.74, 0), (0.08, -0.74, 0)])
    r.settings(radius=0.22, strength=30)
    r.stroke([(0, -1.1, 0), (0.07, -1.1, 0)])
    r.settings(radius=0.1, strength=26)
    r.stroke([(0, -0.7, 0), (0.08, -0.69, 0), (0.29, -0.735, 0)], falling)
    r.settings(radius=0.11, strength=30)
    r.stroke([(0, -0.86, 0), (0.1, -0.86, 0), (0.26, -0.785, 0)], falling)
    r.settings(radius=0.05, strength=55)
    r.stroke([(0, -0.775, 0), (0.12, -0.77, 0), (0.31, -0.75, 0)], falling, hold="Ctrl")
    r.settings(radius=0.15, strength=22)
    r.stroke([(0, -0.98, 0), (0.12, -0.97, 0)], falling, hold="Ctrl")
    # The fold from the wing of the nose to the corner of the mouth.
    r.settings(radius=0.1, strength=18)
    r.stroke([(0.17, -0.5, 0), (0.27, -0.6, 0), (0.33, -0.74, 0)], tapered, hold="Ctrl")
    # Ears.
    r.look(SIDE)
    r.tool(
        "Imprint",
        radius=0.33,
        strength=72,
        buildUpRate=1,
        falloff="plateau",
        stamp={"path": "ear_vdm.exr"},
    )
    r.stroke([(0, -0.27, -0.02)])
    r.look(THREE_QUARTER)
    r.action("panel.levels")
    r.screenshot("features.jpg", window=True)
    return r


def eyes():
    """Sculpts eyeballs and lids on a finer level."""
    r = Recording(VIEWPORT, "Eyes, eyelids, nostrils and lips.")
    r.action("level.subdivide.once")
    r.look(FACE)
    # Eyeballs.
    r.tool("Sculpt", falloff="spherical", direction="z", radius=0.15, strength=36)
    r.settings(pressureControlsStrength=True)
    r.stroke([(0.3, -0.14, 0)])
    # Lids around them.
    r.settings(radius=0.034, strength=62, falloff="smooth", direction="surfaceNormal")
    r.stroke(
        [(0.165, -0.165, 0), (0.22, -0.085, 0), (0.3, -0.058, 0), (0.39, -0.09, 0), (0.45, -0.155, 0)],
        softened,
    )
    r.stroke(
        [(0.165, -0.17, 0), (0.22, -0.205, 0), (0.3, -0.225, 0), (0.39, -0.205, 0), (0.45, -0.16, 0)],
        softened,
    )
    # The crease above the upper lid, and the bag below the lower one.
    r.settings(radius=0.035, strength=40)
    r.stroke(
        [(0.17, -0.11, 0), (0.22, -0.04, 0), (0.3, -0.012, 0), (0.39, -0.04, 0), (0.47, -0.12, 0)],
        tapered,
        hold="Ctrl",
    )
    r.settings(radius=0.05, strength=22)
    r.stroke([(0.18, -0.24, 0), (0.3, -0.285, 0), (0.42, -0.255, 0)], tapered, hold="Ctrl")
    r.screenshot("eyes.jpg")
    return r


def details():
    """Sculpts irises, eyebrows, nostrils, lips and hair on the finest level."""
    r = Recording(VIEWPORT, "Iris, eyebrows, nostrils, lips and hair.")
    r.action("level.subdivide.once")
    r.look(FACE)
    r.tool("Sculpt", falloff="plateau", direction="surfaceNormal", radius=0.052, strength=16)
    r.settings(pressureControlsStrength=True)
    r.stroke([(0.3, -0.14, 0)], hold="Ctrl")
    r.settings(radius=0.022, strength=60)
    r.stroke([(0.3, -0.14, 0)], hold="Ctrl")
    # Nostrils, and the line between the lips.
    r.settings(falloff="smooth", radius=0.05, strength=60)
    r.stroke([(0.07, -0.56, 0), (0.1, -0.555, 0)], tapered, hold="Ctrl")
    r.tool("Pinch", radius=0.06, strength=50, smoothing=False)
    r.stroke([(0, -0.775, 0), (0.12, -0.77, 0), (0.31, -0.75, 0)])
    # Eyebrows: short strokes that lean outwards.
    r.tool("Sculpt", falloff="smooth", radius=0.02, strength=30, spacing=10)
    for i in range(13):
        t = i / 12
        x = 0.12 + 0.4 * t
        y = 0.055 + 0.11 * t * (1 - t) * 2 - 0.05 * t
        r.stroke(
            [(x, y - 0.02, 0), (x + 0.03, y + 0.025, 0), (x + 0.075, y + 0.03 - 0.02 * t, 0)],
            falling,
        )
    r.screenshot("details.jpg")
    hair(r)
    r.look(SIDE)
    r.screenshot("hair.jpg")
    return r


# The hairline from the forehead to the ear, and behind the ear to the nape: (y, z) from the side.
HAIRLINE = [(0.8, 0.6), (0.62, 0.72), (0.38, 0.6), (0.24, 0.36), (0.17, 0.14)]
NAPE = [(-0.1, -0.42), (-0.28, -0.46), (-0.45, -0.5)]


def hair(r):
    """Sculpts strands that run from the hairline to the back of the head."""
    r.tool("Sculpt", falloff="smooth", pressureControlsStrength=True)
    # Locks: raised strands, then fine grooves between them.
    for camera, locks in ((SIDE, side_locks()), (TOP, top_locks()), (BACK, back_locks())):
        r.look(camera)
        r.settings(radius=0.075, strength=42, spacing=20)
        for lock in locks:
            r.stroke(lock, softened)
        r.settings(radius=0.024, strength=45, spacing=20)
        for lock, following in zip(locks, locks[1:]):
            between = [tuple((a + b) / 2 for a, b in zip(p, q)) for p, q in zip(lock, following)]
            r.stroke(between, tapered, hold="Ctrl")


def side_locks():
    starts = resample(HAIRLINE, 0.085) + resample(NAPE, 0.09)
    locks = []
    for i, (y, z) in enumerate(starts):
        t = i / (len(starts) - 1)
        end_y, end_z = 0.62 - 1.12 * t, -0.72
        middle_y = (y + end_y) / 2 + 0.12 * (1 - t) ** 2
        locks.append([(0, y, z), (0, middle_y, (z + end_z) / 2), (0, end_y, end_z)])
    return locks


def top_locks():
    return [
        [(x, 0, 0.66 - 0.5 * x), (x * 1.15, 0, 0.1), (x * 0.9, 0, -0.55)]
        for x in (0.04, 0.12, 0.2, 0.28, 0.36)
    ]


def back_locks():
    return [
        [(x, 0.6, 0), (x * 1.1, 0.1, 0), (x * 0.8 + 0.03, -0.5, 0)]
        for x in (0.04, 0.13, 0.22, 0.31, 0.4, 0.49)
    ]


def wrinkles():
    """Sculpts wrinkles on a layer, reduces its strength, and shows the finished head."""
    r = Recording(VIEWPORT, "Wrinkles on a layer, and the finished head.")
    r.action("panel.layers")
    r.action("layer.add")
    r.look(FACE)
    r.tool("Sculpt", falloff="smooth", radius=0.03, strength=42, spacing=10)
    for height in (0.2, 0.27, 0.35):
        r.stroke(
            [(0.02, height, 0), (0.2, height + 0.02, 0), (0.42, height - 0.01, 0)],
            falling,
            hold="Ctrl",
        )
    for end in (-0.09, -0.15, -0.21):
        r.stroke([(0.5, -0.15, 0), (0.58, end, 0)], falling, hold="Ctrl")
    r.stroke([(0.05, -0.02, 0), (0.06, 0.1, 0)], tapered, hold="Ctrl")
    r.look(THREE_QUARTER)
    r.screenshot("wrinkles.jpg", window=True)
    r.step(layer={"strength": 0.5})
    r.look(PORTRAIT)
    r.action("panel.info")
    r.screenshot("finished.jpg", window=True)
    return r


STAGES = {
    "1-block": block,
    "2-features": features,
    "3-eyes": eyes,
    "4-details": details,
    "5-wrinkles": wrinkles,
}


def main():
    folder = pathlib.Path(sys.argv[1])
    stale = []
    for name, stage in STAGES.items():
        path = folder / (name + ".events.json")
        text = stage().text()
        if "--check" in sys.argv:
            if not path.exists() or path.read_text(encoding="utf-8") != text:
                stale.append(str(path))
        else:
            path.write_text(text, encoding="utf-8")
    if stale:
        sys.exit("make_examples: run make studio-pictures; out of date: " + ", ".join(stale))


if __name__ == "__main__":
    main()
