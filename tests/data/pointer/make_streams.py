#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the pointer streams in this folder; README.md describes the fault of each."""

import json
import math
import os
import random

INTERVAL = 8  # milliseconds between samples, for a pen that reports 125 samples per second
MOVE, REST = 480, 400


def min_jerk(fraction):
    return fraction**3 * (10 - 15 * fraction + 6 * fraction**2)


def clean():
    """An S over 300 pixels with a pause in the middle; the pressure rises and falls within 0.1 seconds."""
    samples = []
    whole = 2 * MOVE + REST
    for t in range(0, whole + 1, INTERVAL):
        if t <= MOVE:
            u = 0.5 * min_jerk(t / MOVE)
        elif t <= MOVE + REST:
            u = 0.5
        else:
            u = 0.5 + 0.5 * min_jerk((t - MOVE - REST) / MOVE)
        pressure = 0.7 * min(1.0, (t + INTERVAL) / 100, (whole - t + INTERVAL) / 100)
        samples.append(
            [
                round(250 + 300 * u, 1),
                round(300 + 80 * math.sin(2 * math.pi * u), 1),
                round(pressure, 3),
                t,
            ]
        )
    return samples


def blot(samples):
    """The driver reports full pressure until the pen's first measurement."""
    for sample in samples[:2]:
        sample[2] = 1.0


def spike(samples):
    """On release, the tip springs back: full pressure, and the position of the lifted pen."""
    samples[-2][2] = 1.0
    x, y = samples[-1][:2]
    samples[-1] = [round(x - 60, 1), round(y - 35, 1), 1.0, samples[-1][3]]


def jitter(samples, rng):
    """A busy program reads the clock 5 to 50 milliseconds late."""
    for sample in samples:
        sample[3] += rng.randint(5, 50)


def doubled(samples, rng):
    """Every third sample is reported by the pen and by the mouse that it emulates, which has no
    pressure sensor and reports full pressure; some samples are repeated unchanged."""
    result = []
    for sample in samples:
        result.append(sample)
        if rng.random() < 0.33:
            result.append(sample[:2] + [1.0] + sample[3:])
        elif rng.random() < 0.2:
            result.append(list(sample))
    samples[:] = result


def late(samples, rng):
    """Some samples arrive after the two or three samples that follow them."""
    i = 10
    while i < len(samples) - 10:
        step = rng.randint(2, 3)
        samples.insert(i + step, samples.pop(i))
        i += rng.randint(5, 9)


def write(name, description, samples):
    lines = ",\n    ".join(json.dumps(sample) for sample in samples)
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), name + ".json")
    with open(path, "w", encoding="ascii") as file:
        file.write('{\n  "description": "%s",\n  "samples": [\n    %s\n  ]\n}\n' % (description, lines))


def main():
    rng = random.Random(7)
    streams = {}

    def add(name, description, *faults):
        samples = clean()
        for fault in faults:
            fault(samples)
        streams[name] = samples
        write(name, description, samples)

    add("clean", "an S with a pause, without faults")
    add("blot", "full pressure when the pen is pressed", blot)
    add("spike", "full pressure and a jump on release", spike)
    add("jitter", "timestamps 5 to 50 ms late", lambda s: jitter(s, rng))
    add("doubled", "duplicate samples, some with full pressure", lambda s: doubled(s, rng))
    add("late", "samples that arrive after later samples", lambda s: late(s, rng))
    add(
        "everything",
        "blot, spike, duplicate and late samples",
        blot,
        spike,
        lambda s: late(s, rng),
        lambda s: doubled(s, rng),
    )


if __name__ == "__main__":
    main()
