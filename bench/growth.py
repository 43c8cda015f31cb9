#!/usr/bin/env python3
"""Measures how time grows with the length of recordings and the size of an archive, and draws it.

    bench/growth.py BUILD_FOLDER OUT.svg

Prints the processor times and how often each is the one before it: ten times the work, so about ten.
"""

import math
import sys

from processes import Room, least

AUDIO = (720_000, 7_200_000, 72_000_000)  # bytes: 6 minutes, an hour, ten hours
FILES = (100, 1000, 10_000)
FILE_AUDIO = 72_000
RUNS = 7

WIDTH, HEIGHT, MARGIN = 640, 400, 60
STYLES = (("#1b6ca8", 16), ("#c0392b", 0), ("#2e8b57", 4))  # colour, where the name stands below the end


def seal_curve(folder, room, operation):
    times = []
    for size in AUDIO:
        found = []
        for _ in range(RUNS):
            files = room.copies(size, 1)
            if operation == "verify":
                room.seal_times(f"{folder}/bench/seal_host", "seal", files)
            found += room.seal_times(f"{folder}/bench/seal_host", operation, files)
        times.append(min(t[0] for t in found) / 1e6)
    return times


def archive_curve(folder, room):
    times = []
    for count in FILES:
        tree = room.tree(FILE_AUDIO, count)
        command = [f"{folder}/tools/corvo/corvo", "--home", room.home, "verify", "--quiet", tree]
        times.append(least(RUNS, {"": command}, "processor")[""])
    return times


def text(x, y, words, anchor="middle"):
    return f'<text x="{x:.0f}" y="{y:.0f}" text-anchor="{anchor}">{words}</text>'


def draw(curves):
    """A plot with logarithmic axes, on which linear growth is a straight line of slope one."""
    seconds = [t for _, times in curves for t in times]
    low, high = math.floor(math.log10(min(seconds))), math.ceil(math.log10(max(seconds)))

    def x(step):
        return MARGIN + step * (WIDTH - 3 * MARGIN) / 2

    def y(time):
        return HEIGHT - MARGIN - (math.log10(time) - low) * (HEIGHT - 2 * MARGIN) / (high - low)

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
             'font-family="sans-serif" font-size="13">',
             f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>']
    for power in range(low, high + 1):
        parts.append(f'<path d="M{MARGIN} {y(10 ** power):.0f}H{WIDTH - 2 * MARGIN}" stroke="#ddd"/>')
        parts.append(text(MARGIN - 8, y(10 ** power) + 4, f"{10.0 ** power:g} s", "end"))
    for step, size in enumerate(AUDIO):
        parts.append(text(x(step), HEIGHT - MARGIN + 22, f"{size / 1e6:g} MB"))
        parts.append(text(x(step), HEIGHT - MARGIN + 40, f"{FILES[step]} files"))
    for (name, times), (colour, below) in zip(curves, STYLES):
        path = " ".join(f"{x(step):.1f},{y(time):.1f}" for step, time in enumerate(times))
        parts.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        for step, time in enumerate(times):
            parts.append(f'<circle cx="{x(step):.1f}" cy="{y(time):.1f}" r="4" fill="{colour}"/>')
        parts.append(f'<g fill="{colour}">{text(x(2) + 10, y(times[-1]) + below, name, "start")}</g>')
    parts.append(text(WIDTH / 2 - MARGIN / 2, 30, "Processor time over length and number of recordings"))
    return "\n".join([*parts, "</svg>", ""])


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    folder, out = sys.argv[1:]
    with Room(f"{folder}/tools/corvo/corvo") as room:
        curves = [("seal", seal_curve(folder, room, "seal")),
                  ("verify", seal_curve(folder, room, "verify")),
                  ("archive", archive_curve(folder, room))]
    for name, times in curves:
        steps = ", ".join(f"{b / a:.1f}" for a, b in zip(times, times[1:]))
        print(f"{name}: {', '.join(f'{t:.4f} s' for t in times)}; steps {steps}")
    with open(out, "w", encoding="utf-8") as svg:
        svg.write(draw(curves))


if __name__ == "__main__":
    main()
