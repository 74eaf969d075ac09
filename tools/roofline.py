#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Draws the roofline plot of the dabs from the results of `make bench`.

    roofline.py build/release/bench-results/bench.json docs/pictures/roofline.svg

The horizontal axis is floating-point operations per byte of memory traffic; the vertical axis is
operations per second. The bytes and operations per vertex of a dab are counted by hand.
"""
import json
import math
import pathlib
import sys

# Bytes that a later dab reads and writes: vertex, record, normal, face indices.
BYTES = 20 + 40 + 8 + 16 + 20 + 40 + 8
NORMALS = 6 + 9 + 3 + 5 + 2 + 6
DISTANCE = 8 + 2
# Operations per vertex inside the radius, without normals.
INSIDE = {"pushing": DISTANCE + 5 + 1 + 6, "planing": DISTANCE + 2 + 3 + 5 + 3 + 6,
          "pulling": DISTANCE + 1 + 3 + 3 + 6, "averaging": DISTANCE + 1 + 12 + 3 + 3 + 6}
COLOURS = {"pushing": "#c0392b", "planing": "#2471a3", "pulling": "#1e8449", "averaging": "#b7950b"}
# Four instructions per cycle, each an addition or multiplication of eight numbers.
PEAK_PER_CYCLE = 32
WIDTH, HEIGHT, LEFT, BOTTOM, TOP, RIGHT = 760, 460, 78, 56, 30, 24
X_RANGE, Y_RANGE = (0.1, 10.0), (1.0, 200.0)


def place(x, y):
    across = (math.log10(x) - math.log10(X_RANGE[0])) / (math.log10(X_RANGE[1]) - math.log10(X_RANGE[0]))
    up = (math.log10(y) - math.log10(Y_RANGE[0])) / (math.log10(Y_RANGE[1]) - math.log10(Y_RANGE[0]))
    return LEFT + across * (WIDTH - LEFT - RIGHT), HEIGHT - BOTTOM - up * (HEIGHT - BOTTOM - TOP)


def text(x, y, words, anchor="start", size=12, turn=0, colour="#333"):
    turned = f' transform="rotate({turn:.1f} {x:.1f} {y:.1f})"' if turn else ""
    return (f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" fill="{colour}" '
            f'text-anchor="{anchor}"{turned}>{words}</text>')


def roof(rate, peak, label, away):
    """Draws a slanted roof of `rate` bytes per second up to `peak` operations per second (both in 10^9)."""
    low = max(X_RANGE[0], Y_RANGE[0] / rate)
    high = min(X_RANGE[1], peak / rate)
    (x0, y0), (x1, y1) = place(low, low * rate), place(high, high * rate)
    turn = math.degrees(math.atan2(y1 - y0, x1 - x0))
    at = math.sqrt(low * high)
    x, y = place(at, at * rate)
    return [f'<line x1="{x0:.1f}" y1="{y0:.1f}" x2="{x1:.1f}" y2="{y1:.1f}" stroke="#555" stroke-width="1.6"/>',
            text(x, y + away, f"{label}, {rate:.0f} GB/s", "middle", 11, turn)]


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    figures = json.loads(pathlib.Path(sys.argv[1]).read_text())
    found = figures["benchmarks"]
    rates = {size: found[f"stream/{size}"]["bytes"] / found[f"stream/{size}"]["ns"]
             for size in (1 << 23, 1 << 29)}
    clock = 3.2
    peak = PEAK_PER_CYCLE * clock
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" '
           'font-family="sans-serif"><rect width="100%" height="100%" fill="white"/>']
    for decade in (0.1, 0.2, 0.5, 1, 2, 5, 10):
        x, y = place(decade, Y_RANGE[0])
        out.append(f'<line x1="{x:.1f}" y1="{y:.1f}" x2="{x:.1f}" y2="{TOP}" stroke="#e5e5e5"/>')
        out.append(text(x, y + 18, f"{decade:g}", "middle"))
    for decade in (1, 2, 5, 10, 20, 50, 100, 200):
        x, y = place(X_RANGE[0], decade)
        out.append(f'<line x1="{x:.1f}" y1="{y:.1f}" x2="{WIDTH - RIGHT}" y2="{y:.1f}" stroke="#e5e5e5"/>')
        out.append(text(x - 8, y + 4, f"{decade:g}", "end"))
    out.append(text((LEFT + WIDTH) / 2, HEIGHT - 14, "operations per byte of memory traffic", "middle", 13))
    out.append(text(20, HEIGHT / 2, "10^9 operations per second", "middle", 13, -90))
    out += roof(rates[1 << 23], peak, "third-level cache", -6)
    out += roof(rates[1 << 29], peak, "memory", 15)
    x0, y0 = place(peak / rates[1 << 23], peak)
    x1, _ = place(X_RANGE[1], peak)
    out.append(f'<line x1="{x0:.1f}" y1="{y0:.1f}" x2="{x1:.1f}" y2="{y0:.1f}" stroke="#555" stroke-width="1.6"/>')
    out.append(text(x1, y0 - 6, f"AVX2 at {clock} GHz, {peak:.0f}", "end", 11))
    for row, (family, inside) in enumerate(INSIDE.items()):
        for size in (10000, 100000, 1000000):
            dab = found[f"dab/{family}/plain/{size}"]
            touched = dab["records"]
            operations = touched * (NORMALS + DISTANCE) + dab["vertices"] * (inside - DISTANCE)
            x, y = place(operations / (touched * BYTES), operations / dab["ns"])
            radius = {10000: 4, 100000: 6, 1000000: 8}[size]
            out.append(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="{radius}" fill="{COLOURS[family]}" fill-opacity="0.75"/>')
        y = TOP + 150 + 20 * row
        out.append(f'<circle cx="{WIDTH - 216}" cy="{y + 90}" r="6" fill="{COLOURS[family]}"/>')
        out.append(text(WIDTH - 204, y + 94, family))
    out.append(text(WIDTH - 222, TOP + 324, "small to large: dabs of 10 thousand,", size=11))
    out.append(text(WIDTH - 222, TOP + 338, "100 thousand, a million vertices", size=11))
    out.append("</svg>")
    pathlib.Path(sys.argv[2]).write_text("\n".join(out) + "\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
