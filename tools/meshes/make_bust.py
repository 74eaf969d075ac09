#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Creates examples/meshes/bust.obj from human.obj.

The script cuts out the head, neck and chest, and adds eyeballs and a plinth.

    tools/meshes/make_bust.py examples/meshes/human.obj examples/meshes/bust.obj
"""

import math
import sys


def read(path):
    points, faces = [], []
    with open(path, encoding="ascii") as file:
        for line in file:
            words = line.split()
            if words[:1] == ["v"]:
                points.append([float(word) for word in words[1:4]])
            elif words[:1] == ["f"]:
                faces.append([int(word.split("/")[0]) - 1 for word in words[1:]])
    return points, faces


def is_bust(point):
    """Returns whether the point is above the cut, which is a bowl below the neck and the upper chest."""
    x, y, z = point
    return y > 4.75 + 0.62 * (x / 1.25) ** 2


def cut(points, faces):
    """Returns the faces that lie entirely in the bust and are connected to the top of the head."""
    kept = [face for face in faces if all(is_bust(points[corner]) for corner in face)]
    of_point = {}
    for number, face in enumerate(kept):
        for corner in face:
            of_point.setdefault(corner, []).append(number)
    top = max(of_point, key=lambda corner: points[corner][1])
    seen, stack = set(of_point[top]), list(of_point[top])
    while stack:
        for corner in kept[stack.pop()]:
            for other in of_point[corner]:
                if other not in seen:
                    seen.add(other)
                    stack.append(other)
    kept = [kept[number] for number in sorted(seen)]
    # A face with two or more open edges would stick out of the border like a tooth.
    while True:
        edges = {(f[i], f[(i + 1) % 4]) for f in kept for i in range(4)}
        teeth = [
            face
            for face in kept
            if sum((face[(i + 1) % 4], face[i]) not in edges for i in range(4)) >= 2
        ]
        if not teeth:
            return kept
        kept = [face for face in kept if face not in teeth]


def border_of(faces):
    """Returns the open border as a single loop, in the direction of the face edges."""
    edges = {(f[i], f[(i + 1) % 4]) for f in faces for i in range(4)}
    after = {a: b for a, b in edges if (b, a) not in edges}
    first = min(after)
    loop = [first]
    while after[loop[-1]] != first:
        loop.append(after[loop[-1]])
    assert len(loop) == len(after), "the cut has more than one border"
    return loop


def even(points, loop, rounds):
    """Smooths the border: moves each point halfway to the midpoint of its two neighbours."""
    for _ in range(rounds):
        middles = []
        for i in range(len(loop)):
            before, after = points[loop[i - 1]], points[loop[(i + 1) % len(loop)]]
            middles.append([(a + b) / 2 for a, b in zip(before, after)])
        for corner, middle in zip(loop, middles):
            points[corner] = [(p + m) / 2 for p, m in zip(points[corner], middle)]


def add_plinth(points, faces, loop):
    """Adds rings of quads from the border down to a round base, and a disc below it."""
    middle_z = sum(points[corner][2] for corner in loop) / len(loop)
    # Height, radius, and blend factor between the shape of the border and the circle.
    rings = [
        (4.62, 0.80, 0.45),
        (4.42, 0.62, 0.85),
        (4.22, 0.50, 1.0),
        (4.00, 0.46, 1.0),
        (3.80, 0.50, 1.0),
        (3.70, 0.62, 1.0),
        (3.64, 0.80, 1.0),
        (3.58, 0.86, 1.0),
        (3.40, 0.86, 1.0),
        (3.34, 0.82, 1.0),
        (3.34, 0.55, 1.0),
        (3.34, 0.25, 1.0),
    ]
    angles = [math.atan2(points[c][2] - middle_z, points[c][0]) for c in loop]
    turn = 1 if (angles[1] - angles[0]) % (2 * math.pi) < math.pi else -1
    last, previous = loop, [points[c] for c in loop]
    for height, radius, share in rings:
        ring = []
        for i, corner in enumerate(loop):
            around = angles[0] + turn * 2 * math.pi * i / len(loop)
            # The angles on the circle change gradually from those of the border to even spacing.
            difference = (around - angles[i] + math.pi) % (2 * math.pi) - math.pi
            angle = angles[i] + difference * share
            circle = (radius * math.cos(angle), height, middle_z + radius * math.sin(angle))
            old = previous[i]
            points.append([o + (c - o) * share for o, c in zip(old, circle)])
            ring.append(len(points) - 1)
        for i in range(len(loop)):
            j = (i + 1) % len(loop)
            faces.append([last[j], last[i], ring[i], ring[j]])
        last, previous = ring, [points[c] for c in ring]
    points.append([0.0, 3.34, middle_z])
    middle = len(points) - 1
    assert len(loop) % 2 == 0, "the disc needs a border with an even number of points"
    for i in range(0, len(loop), 2):
        faces.append([last[(i + 2) % len(loop)], last[i + 1], last[i], middle])


def add_eye(points, faces, centre, radius, cells=6):
    """Adds a ball of quads: a cube with a grid on each side, projected onto the sphere."""
    numbers = {}

    def corner(place):
        if place not in numbers:
            length = math.sqrt(sum(c * c for c in place))
            points.append([m + radius * c / length for m, c in zip(centre, place)])
            numbers[place] = len(points) - 1
        return numbers[place]

    steps = [math.tan(math.pi / 4 * (2 * i / cells - 1)) for i in range(cells + 1)]
    steps = [round(step, 6) for step in steps]
    for axis in range(3):
        for side in (-1.0, 1.0):
            for i in range(cells):
                for j in range(cells):
                    face = []
                    for u, v in ((i, j), (i + 1, j), (i + 1, j + 1), (i, j + 1)):
                        place = [0.0, 0.0, 0.0]
                        place[axis] = side
                        place[(axis + 1) % 3] = steps[u]
                        place[(axis + 2) % 3] = steps[v]
                        face.append(corner(tuple(place)))
                    faces.append(face if side > 0 else face[::-1])


def main(source, target):
    points, faces = read(source)
    faces = cut(points, faces)
    loop = border_of(faces)
    even(points, loop, 12)
    add_plinth(points, faces, loop)
    for side in (-1.0, 1.0):
        add_eye(points, faces, (side * EYE[0], EYE[1], EYE[2]), EYE[3])
    used = sorted({corner for face in faces for corner in face})
    number = {corner: i + 1 for i, corner in enumerate(used)}
    with open(target, "w", encoding="ascii") as file:
        file.write("# Cut from human.obj by tools/meshes/make_bust.py; CC0 1.0\n")
        for corner in used:
            file.write("v %.4f %.4f %.4f\n" % tuple(points[corner]))
        for face in faces:
            file.write("f " + " ".join(str(number[corner]) for corner in face) + "\n")


# Centre and radius of the left eyeball, which is slightly larger than the sphere of the eye socket.
EYE = (0.3087, 7.283, 1.242, 0.159)

if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2])
