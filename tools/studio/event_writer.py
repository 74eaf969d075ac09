# SPDX-License-Identifier: Apache-2.0
"""Writes event files of trovik-studio (docs/studio-events.md) from curves.

A Recording collects events. Strokes are smooth curves through a few points, given in world space or
in pixels of the viewport, and become evenly spaced pen events. World points are projected
through the current camera, so a point only has to be correct as seen from that camera.
"""

import json
import math

# Time between two samples of the pen, in milliseconds.
SAMPLE_MILLISECONDS = 8
# Distance between two samples, in logical pixels.
SAMPLE_PIXELS = 9.0


def _subtract(a, b):
    return [x - y for x, y in zip(a, b)]


def _cross(a, b):
    return [
        a[1] * b[2] - a[2] * b[1],
        a[2] * b[0] - a[0] * b[2],
        a[0] * b[1] - a[1] * b[0],
    ]


def _dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def _unit(a):
    length = math.sqrt(_dot(a, a))
    return [x / length for x in a]


class Camera:
    """A perspective camera in world space."""

    def __init__(self, eye, target, up=(0, 1, 0), field_of_view=20):
        self.eye, self.target, self.up = list(eye), list(target), list(up)
        self.field_of_view = field_of_view

    def event(self):
        return {
            "type": "camera",
            "eye": self.eye,
            "target": self.target,
            "up": self.up,
            "fieldOfView": self.field_of_view,
        }

    def pixel(self, point, viewport):
        """Projects a world point to logical pixels of a viewport."""
        back = _unit(_subtract(self.eye, self.target))
        right = _unit(_cross(self.up, back))
        up = _cross(back, right)
        offset = _subtract(point, self.eye)
        depth = -_dot(offset, back)
        scale = viewport[1] / 2 / math.tan(math.radians(self.field_of_view) / 2) / depth
        return (
            viewport[0] / 2 + scale * _dot(offset, right),
            viewport[1] / 2 - scale * _dot(offset, up),
        )


def curve(points, count):
    """Samples a centripetal Catmull-Rom spline through points of any dimension, with `count`
    samples per segment at evenly spaced parameters."""
    if len(points) < 3:
        ends = [points[0], points[-1]]
        return [
            tuple(a + (b - a) * i / count for a, b in zip(*ends)) for i in range(count + 1)
        ]
    mirrored = lambda a, b: tuple(2 * x - y for x, y in zip(a, b))
    padded = [mirrored(points[0], points[1]), *points, mirrored(points[-1], points[-2])]
    samples = []
    for p0, p1, p2, p3 in zip(padded, padded[1:], padded[2:], padded[3:]):
        knots = [0.0]
        for a, b in ((p0, p1), (p1, p2), (p2, p3)):
            knots.append(knots[-1] + max(math.sqrt(math.dist(a, b)), 1e-6))
        t0, t1, t2, t3 = knots
        mix = lambda a, b, ta, tb, t: tuple(
            (x * (tb - t) + y * (t - ta)) / (tb - ta) for x, y in zip(a, b)
        )
        for i in range(count):
            t = t1 + (t2 - t1) * i / count
            a1, a2, a3 = mix(p0, p1, t0, t1, t), mix(p1, p2, t1, t2, t), mix(p2, p3, t2, t3, t)
            b1, b2 = mix(a1, a2, t0, t2, t), mix(a2, a3, t1, t3, t)
            samples.append(mix(b1, b2, t1, t2, t))
    return samples + [tuple(points[-1])]


def resample(pixels, distance):
    """Returns evenly spaced points along a polyline, including both ends."""
    lengths = [0.0]
    for a, b in zip(pixels, pixels[1:]):
        lengths.append(lengths[-1] + math.dist(a, b))
    count = max(1, round(lengths[-1] / distance))
    result, segment = [], 0
    for i in range(count + 1):
        wanted = lengths[-1] * i / count
        while segment + 2 < len(lengths) and lengths[segment + 1] < wanted:
            segment += 1
        span = lengths[segment + 1] - lengths[segment]
        t = (wanted - lengths[segment]) / span if span > 0 else 0.0
        result.append(
            tuple(x + (y - x) * t for x, y in zip(pixels[segment], pixels[segment + 1]))
        )
    return result


def steady(t):
    """Returns a constant pressure; t runs from 0 to 1 along the stroke."""
    return 1.0


def tapered(t):
    """Returns a pressure that rises and then falls, for a stroke that begins and ends lightly."""
    return math.sin(math.pi * min(max(t, 0.04), 0.96)) ** 0.7


def softened(t):
    """Returns a nearly constant pressure that is lower at both ends."""
    return min(1.0, 0.35 + 4 * t, 0.35 + 4 * (1 - t))


def rising(t):
    return 0.15 + 0.85 * t


def falling(t):
    return rising(1 - t)


class Recording:
    """Events in the order in which they are played."""

    def __init__(self, viewport, comment):
        self.viewport = list(viewport)
        self.comment = comment
        self.events = []
        self.camera = None
        self.time = 0

    def add(self, event_type, **fields):
        self.events.append({"type": event_type, **fields})

    def action(self, name):
        self.add("action", id=name)

    def tap(self, key):
        self.add("key", kind="tap", key=key)

    def step(self, **step):
        self.add("step", step=step)

    def settings(self, **settings):
        self.step(set=settings)

    def tool(self, name, **settings):
        """Selects a tool and sets its settings."""
        if settings:
            self.step(tool=name, set=settings)
        else:
            self.step(tool=name)

    def look(self, camera):
        self.camera = camera
        self.events.append(camera.event())

    def screenshot(self, file, window=False):
        # The pointer leaves the surface, so that the picture shows no brush.
        corner = {"x": 4, "y": self.viewport[1] - 4}
        self.add("pen", kind="move", **corner)
        self.add("wait")
        if window:
            self.add("screenshot", file=file, window=True)
        else:
            self.add("screenshot", file=file)

    def stroke(self, points, pressure=steady, scale=1.0, hold=None, pixels=False):
        """A pen stroke along a smooth curve.

        points: world points, or (x, y) in logical pixels if `pixels` is set.
        pressure: function of the position along the stroke, 0 to 1; multiplied by `scale`.
        hold: a key that is held during the stroke, such as "Ctrl".
        """
        if not pixels:
            points = [self.camera.pixel(point, self.viewport) for point in points]
        if len(points) > 1:
            points = resample(curve(points, 24), SAMPLE_PIXELS)
        else:
            points = [points[0], points[0]]
        if hold:
            self.add("key", kind="press", key=hold)
        last = len(points) - 1
        for i, (x, y) in enumerate(points):
            kind = "press" if i == 0 else "release" if i == last else "move"
            amount = min(1.0, max(0.0, scale * pressure(i / last)))
            self.events.append(
                {
                    "time": self.time + i * SAMPLE_MILLISECONDS,
                    "type": "pen",
                    "kind": kind,
                    "x": round(x, 1),
                    "y": round(y, 1),
                    "pressure": round(amount, 3),
                }
            )
        if hold:
            self.add("key", kind="release", key=hold)
        # The next stroke begins a second later.
        self.time += last * SAMPLE_MILLISECONDS + 1000

    def text(self):
        """Returns the content of the event file: one event per line."""
        lines = ",\n".join(json.dumps(event) for event in self.events)
        return (
            '{"format": "trovik-events", "version": 1, "comment": %s, "viewport": %s, "events": [\n%s\n]}\n'
            % (json.dumps(self.comment), json.dumps(self.viewport), lines)
        )
