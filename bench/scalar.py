"""Sets the plain level of some runs of kelvo-bench against all levels of others, the fastest of each:
scalar.py SCALAR.json... -- LEVELS.json..."""

import json
import sys


def fastest(paths):
    """The cases of runs of the same cases, with the least milliseconds of each level."""
    runs = []
    for path in paths:
        with open(path) as file:
            runs.append(json.load(file))
    for rows in zip(*runs):
        times = [row["milliseconds"] for row in rows]
        yield {**rows[0], "milliseconds": {level: min(time[level] for time in times) for level in times[0]}}


def main():
    end = sys.argv.index("--")
    scalar_rows, level_rows = list(fastest(sys.argv[1:end])), list(fastest(sys.argv[end + 1 :]))
    print(f"\n{level_rows[0]['what']}, by width and direction\n")
    print("| width | direction | without vectors, ms |", " | ".join(level_rows[0]["milliseconds"]), "|")
    print("|---|---|---|" + "---|" * len(level_rows[0]["milliseconds"]))
    for scalar, levels in zip(scalar_rows, level_rows):
        assert all(scalar[key] == levels[key] for key in ("what", "width", "direction"))
        base = scalar["milliseconds"]["plain"]
        ratios = " | ".join(f"{base / time:.2f}" for time in levels["milliseconds"].values())
        print(f"| {levels['width']} | {levels['direction'] or ''} | {base:.3f} | {ratios} |")


main()
