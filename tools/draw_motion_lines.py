#!/usr/bin/env python3
"""Draws docs/images/motion-lines.png: the lines of motion members as the program tells them.

  python3 tools/draw_motion_lines.py [--program KELVO] [--output PICTURE]

Rows are widths, columns are angles. Of each member the upper drawing is the bare line, the lower one the model of the
restoration. A pixel of the line is a square of 4 x 4; the darker, the more weight, black for the drawing's largest.
Needs Pillow (python3-pil).
"""

import argparse
import json
import subprocess

from PIL import Image, ImageDraw

WIDTHS = [1, 2, 3, 5, 8, 12, 16, 20]
ANGLES = range(0, 50, 5)
PIXEL = 4
GAP = 2  # pixels of the line between drawings
LABEL = 60  # width of the column of labels
HEAD = 24  # height of the row of angles


def lines_of(program, width, angle):
    command = [program, "members", "--width", str(width), "--direction", str(angle or 180), "--json"]
    member = json.loads(subprocess.run(command, check=True, capture_output=True).stdout)
    return [member[name]["cells"] for name in ("bare_line", "model_line")]


def reach(cells, axis):
    return max(abs(cell[axis]) for cell in cells)


def draw_line(canvas, cells, x, y):
    """The line with its middle at x, y."""
    most = max(cell["weight"] for cell in cells)
    for cell in cells:
        left, top = x + (cell["column"] - 0.5) * PIXEL, y - (cell["up"] + 0.5) * PIXEL
        gray = 235 - 235 * cell["weight"] // most
        canvas.rectangle([left, top, left + PIXEL - 1, top + PIXEL - 1], fill=gray)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default="build/release/host/kelvo")
    parser.add_argument("--output", default="docs/images/motion-lines.png")
    arguments = parser.parse_args()

    rows = [[lines_of(arguments.program, width, angle) for angle in ANGLES] for width in WIDTHS]
    flat = [cells for row in rows for pair in row for cells in pair]
    column_size = (2 * max(reach(cells, "column") for cells in flat) + 1 + 2 * GAP) * PIXEL
    heights = [[(2 * max(reach(pair[kind], "up") for pair in row) + 1 + GAP) * PIXEL for kind in (0, 1)]
               for row in rows]
    size = (LABEL + column_size * len(ANGLES), HEAD + sum(map(sum, heights)) + 3 * GAP * PIXEL * len(rows))
    picture = Image.new("L", size, 255)
    canvas = ImageDraw.Draw(picture)
    for i, angle in enumerate(ANGLES):
        canvas.text((LABEL + column_size * i + column_size // 2 - 12, 6), f"{angle} deg", fill=0)
    top = HEAD
    for width, row, (bare, model) in zip(WIDTHS, rows, heights):
        canvas.line([0, top, size[0], top], fill=200)
        top += GAP * PIXEL
        canvas.text((6, top + (bare + model) // 2 - 6), f"width {width}", fill=0)
        for i, pair in enumerate(row):
            x = LABEL + column_size * i + column_size // 2
            draw_line(canvas, pair[0], x, top + bare // 2)
            draw_line(canvas, pair[1], x, top + bare + model // 2 + GAP * PIXEL)
        top += bare + model + 2 * GAP * PIXEL
    picture.save(arguments.output, optimize=True)


main()
