"""Sets the plain level of one run of kelvo-bench against all levels of another: scalar.py SCALAR.json LEVELS.json"""

import json
import sys


def read(path):
    with open(path) as file:
        return json.load(file)


def main():
    scalar_rows, level_rows = map(read, sys.argv[1:])
    print(f"\n{level_rows[0]['what']}, by width and direction\n")
    print("| width | direction | without vectors, ms |", " | ".join(level_rows[0]["milliseconds"]), "|")
    print("|---|---|---|" + "---|" * len(level_rows[0]["milliseconds"]))
    for scalar, levels in zip(scalar_rows, level_rows):
        assert all(scalar[key] == levels[key] for key in ("what", "width", "direction"))
        base = scalar["milliseconds"]["plain"]
        ratios = " | ".join(f"{base / time:.2f}" for time in levels["milliseconds"].values())
        print(f"| {levels['width']} | {levels['direction'] or ''} | {base:.3f} | {ratios} |")


main()
