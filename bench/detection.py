"""Measures what detection finds in photographs whose blur and compression are known.

width: every photograph is blurred by `kelvo blur` with widths 0..15 (0: as it is) and measured; rows are the true width,
columns the width found. robust: how often the width is found when the blurred photograph is then saved as JPEG or given
noise. jpeg: every photograph is saved as JPEG, decoded and cut at all 64 phases of the 8 x 8 grid; how often the phase is
found, and the strength. speed: `kelvo detect` beside `kelvo restore` with width 5 and accuracy 0 on the same photograph.
"""

import argparse
import collections
import json
import os
import subprocess
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor

import numpy
import skimage
from PIL import Image

PHOTOS = ["astronaut.png", "camera.png", "chelsea.png", "coffee.png", "coins.png", "grass.png", "gravel.png",
          "hubble_deep_field.jpg", "motorcycle_left.png", "rocket.jpg"]
NEVER_JPEG = ["astronaut.png", "camera.png", "chelsea.png", "coffee.png", "motorcycle_left.png"]
WIDTHS = range(0, 16)
QUALITIES = [10, 20, 30, 40, 50, 60, 70, 75, 80, 85, 90, 95]
SPEED_PHOTOS = [("astronaut.png", "RGB"), ("astronaut.png", "L"), ("grass.png", "L")]


class Kelvo:
    def __init__(self, program, photos):
        self.program, self.photos = program, photos

    def photo(self, name, side):
        image = Image.open(os.path.join(self.photos, name))
        image = image.convert("L" if image.mode == "L" else "RGB")
        return image.crop((0, 0, min(side, image.width), min(side, image.height)))

    def run(self, *arguments):
        return subprocess.run([self.program, *arguments], check=True, stdout=subprocess.PIPE).stdout

    def detect(self, paths):
        return json.loads(self.run("detect", "--json", "--threads", "1", *paths))

    def blurred(self, image, width, folder):
        """The photograph blurred by every channel, 8 bits."""
        source, target = os.path.join(folder, f"{width}-in.ppm"), os.path.join(folder, f"{width}.ppm")
        image.save(source)
        self.run("blur", source, "-o", target, "--width", str(width), "--quiet", "--force",
                 "--threads", "1")
        return Image.open(target)


def saved_as_jpeg(image, quality, folder):
    path = os.path.join(folder, f"q{quality}.jpg")
    image.save(path, quality=quality)
    return Image.open(path).convert(image.mode)


def with_noise(image, sigma):
    cells = numpy.asarray(image)
    noise = numpy.random.default_rng(1).normal(0, sigma, cells.shape)
    return Image.fromarray(numpy.clip(numpy.rint(cells + noise), 0, 255).astype(numpy.uint8))


TREATMENTS = {
    "nothing": lambda image, folder: image,
    "JPEG, quality 90": lambda image, folder: saved_as_jpeg(image, 90, folder),
    "JPEG, quality 75": lambda image, folder: saved_as_jpeg(image, 75, folder),
    "JPEG, quality 50": lambda image, folder: saved_as_jpeg(image, 50, folder),
    "noise, sigma 2": lambda image, folder: with_noise(image, 2),
    "noise, sigma 5": lambda image, folder: with_noise(image, 5),
}


def widths_found(kelvo, name, side, treatments):
    """(treatment, true width, width found) of one photograph."""
    image = kelvo.photo(name, side)
    cases, paths = [], []
    with tempfile.TemporaryDirectory() as folder:
        for width in WIDTHS:
            blurred = kelvo.blurred(image, width, folder)
            for treatment in treatments:
                paths.append(os.path.join(folder, f"{len(paths)}-out.ppm"))
                TREATMENTS[treatment](blurred, folder).save(paths[-1])
                cases.append((treatment, width))
        found = [entry["width"] for entry in kelvo.detect(paths)]
    return [(*case, width) for case, width in zip(cases, found)]


def print_width(kelvo, pool, arguments):
    rows = [pool.submit(widths_found, kelvo, name, arguments.side, ["nothing"]) for name in PHOTOS]
    counts = collections.Counter(case for row in rows for case in row.result())
    last = max(found for _, _, found in counts)
    print(f"Photographs: {', '.join(PHOTOS)}; {arguments.side} x {arguments.side} or less.\n")
    print("| true width | " + " | ".join(map(str, range(last + 1))) + " |")
    print("|" + "---|" * (last + 2))
    for width in WIDTHS:
        cells = [str(counts["nothing", width, found] or "") for found in range(last + 1)]
        print(f"| {width} | " + " | ".join(cells) + " |")


def print_robust(kelvo, pool, arguments):
    rows = [pool.submit(widths_found, kelvo, name, arguments.side, list(TREATMENTS)) for name in PHOTOS]
    cases = [case for row in rows for case in row.result()]
    print("| after the blur | sharp called blurred | exact | within 1 | within 2 | further off |")
    print("|" + "---|" * 6)
    for treatment in TREATMENTS:
        sharp = [found for t, width, found in cases if t == treatment and width == 0]
        off = numpy.array([abs(found - width) for t, width, found in cases if t == treatment and width > 0])
        shares = [f"{100 * numpy.mean(off <= limit):.0f} %" for limit in (0, 1, 2)]
        print(f"| {treatment} | {sum(found > 0 for found in sharp)} of {len(sharp)} | " + " | ".join(shares)
              + f" | {(off > 2).sum()} of {len(off)} |")


def grids_found(kelvo, name, side, quality):
    """(whether the phase was found, strength) for all cuts of one photograph."""
    image = kelvo.photo(name, side)
    with tempfile.TemporaryDirectory() as folder:
        if quality:
            image = saved_as_jpeg(image, quality, folder)
        phases = [(row, column) for row in range(8) for column in range(8)]
        paths = [os.path.join(folder, f"{row}{column}.ppm") for row, column in phases]
        for (row, column), path in zip(phases, paths):
            image.crop(((8 - column) % 8, (8 - row) % 8, image.width, image.height)).save(path)
        found = [entry["jpeg"] for entry in kelvo.detect(paths)]
    return [((jpeg["row_phase"], jpeg["column_phase"]) == phase, jpeg["strength"])
            for phase, jpeg in zip(phases, found)]


def print_jpeg(kelvo, pool, arguments):
    jobs = {quality: [pool.submit(grids_found, kelvo, name, arguments.side, quality) for name in NEVER_JPEG]
            for quality in [*QUALITIES, None]}
    print(f"Photographs: {', '.join(NEVER_JPEG)}; {arguments.side} x {arguments.side} or less, 64 cuts each.\n")
    print("| quality | phase found | strength: least | median | most |")
    print("|---|---|---|---|---|")
    for quality, rows in jobs.items():
        cuts = [cut for row in rows for cut in row.result()]
        right, strengths = sum(hit for hit, _ in cuts), sorted(strength for _, strength in cuts)
        found = f"{right} of {len(cuts)}" if quality else ""
        print(f"| {quality or 'never saved as JPEG'} | {found} | {strengths[0]} "
              f"| {strengths[len(strengths) // 2]} | {strengths[-1]} |")


def seconds(kelvo, repeats, *arguments):
    best = float("inf")
    for _ in range(repeats):
        start = time.perf_counter()
        kelvo.run(*arguments)
        best = min(best, time.perf_counter() - start)
    return best


def print_speed(kelvo, pool, arguments):
    """Photographs are repeated 3 x 2 times, so that starting the program counts little."""
    print("| photograph | blur | threads | detect, megapixels a second | restore | time of detecting / restoring |")
    print("|" + "---|" * 6)
    with tempfile.TemporaryDirectory() as folder:
        source, target = os.path.join(folder, "in.ppm"), os.path.join(folder, "out.ppm")
        for name, mode in SPEED_PHOTOS:
            tile = kelvo.photo(name, 512).convert(mode)
            for width in (0, 5):
                part = kelvo.blurred(tile, width, folder).convert(mode)
                Image.fromarray(numpy.tile(numpy.asarray(part), (2, 3) + (1,) * (len(mode) > 1))).save(source)
                pixels = 6 * part.width * part.height / 1e6
                for threads in ("1", "2"):
                    detect = seconds(kelvo, arguments.repeats, "detect", source, "--threads", threads)
                    restore = seconds(kelvo, 1, "restore", source, "-o", target, "--force", "--quiet", "--width", "5",
                                      "--jpeg", "0", "--threads", threads)
                    kind = "gray" if mode == "L" else "colour"
                    print(f"| {name.split('.')[0]}, {kind} | {width or 'none'} | {threads} | {pixels / detect:.1f} "
                          f"| {pixels / restore:.2f} | {detect / restore:.3f} |", flush=True)


TABLES = {"width": print_width, "robust": print_robust, "jpeg": print_jpeg, "speed": print_speed}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tables", nargs="*", metavar="TABLE", help=f"{', '.join(TABLES)} (default: all)")
    parser.add_argument("--program", default="build/bench/host/kelvo")
    parser.add_argument("--photos", default=os.path.join(os.path.dirname(skimage.__file__), "data"), metavar="FOLDER")
    parser.add_argument("--side", type=int, default=384, help="pixels of the square that is cut out")
    parser.add_argument("--repeats", type=int, default=3)
    arguments = parser.parse_args()
    for name in arguments.tables or TABLES:
        if name not in TABLES:
            parser.error(f"no table \"{name}\"; there are {', '.join(TABLES)}")
        print(f"\n## {name}\n")
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            TABLES[name](Kelvo(arguments.program, arguments.photos), pool, arguments)


main()
