"""Measures what restoration gains: PSNR, SSIM, brightness and seams, by width and accuracy, on photographs.

Every photograph is cut to a gray square, blurred with the library's own model, given noise if asked for, stored with 8
bits and restored. All measures leave out a border of 32 pixels; PSNR is in dB against 255; brightness is the mean
difference to the sharp photograph in grey levels. Seams: the photograph is restored again from a cut that starts 64
pixels further down and right, so that the tiles lie elsewhere; the two results are compared where both have whole tiles
with true surroundings.

Three tables: "detail" compares the program's own variant 3 with 0 (--classic) on clean photographs; "gains" gives the
mean gain in PSNR of variant 3 by noise of the photograph (sigma) and --noise (RemoveNoise), for every accuracy; "motion"
gives the gains in PSNR for motion blur by width and direction, once with the library's own model of the line and once,
at one accuracy, with a true line: a strip of width + 1 by 1 pixels, whose pixels weigh what it covers of them, applied in
linear light. Directions given to the other two tables make theirs of motion blur as well.
"""

import argparse
import itertools
import os
import subprocess
import tempfile
from concurrent.futures import ThreadPoolExecutor
from typing import NamedTuple

import numpy
import skimage
from scipy import ndimage
from skimage import color, io, util
from skimage.metrics import peak_signal_noise_ratio, structural_similarity

PHOTOS = ["astronaut.png", "camera.png", "chelsea.png", "coffee.png", "motorcycle_left.png", "rocket.jpg"]
BORDER = 32
SIGMAS = [0, 2]
NOISE_LEVELS = [0, 1]
VARIANTS = {"3": [], "0": ["--classic"]}
TONE_EXPONENT = 1.8  # of the library's curve to linear light
TRUE_LINE_ACCURACY = 1
OVERSAMPLING = 16


class Blur(NamedTuple):
    width: int
    direction: int  # degrees; 0: round

    def __str__(self):
        return f"{self.width}" if self.direction == 0 else f"{self.width} at {self.direction}"

    def options(self):
        return ["--width", str(self.width)] + (["--direction", str(self.direction)] if self.direction else [])


def gray_square(path, side):
    image = io.imread(path)
    if image.ndim == 3:
        image = color.rgb2gray(image[..., :3])
    image = util.img_as_ubyte(image)
    side = min(side, *image.shape)
    top, left = ((length - side) // 2 for length in image.shape)
    return image[top:top + side, left:left + side]


class Kelvo:
    def __init__(self, program, folder):
        self.program, self.folder = program, folder

    def run(self, command, image, name, *options):
        source, target = (os.path.join(self.folder, f"{name}-{kind}.png") for kind in ("in", "out"))
        io.imsave(source, image, check_contrast=False)
        subprocess.run([self.program, command, source, "-o", target, "--force", "--quiet", "--threads", "1", *options],
                       check=True)
        return io.imread(target)


def inner(image, border=BORDER):
    return image[border:-border, border:-border]


def quality(sharp, image):
    return (peak_signal_noise_ratio(inner(sharp), inner(image)),
            structural_similarity(inner(sharp), inner(image), gaussian_weights=True, use_sample_covariance=False),
            float(numpy.mean(inner(image).astype(float) - inner(sharp))))


def seam(kelvo, blurred, restored, name, options):
    """Mean and largest difference of the two grids; not a number for photographs too small to compare."""
    moved = kelvo.run("restore", blurred[64:, 64:], name + "-moved", *options)
    difference = inner(numpy.abs(restored[64:, 64:].astype(float) - moved), 128)
    return (difference.mean(), difference.max()) if difference.size else (numpy.nan, numpy.nan)


def with_noise(image, sigma):
    noise = numpy.random.default_rng(1).normal(0, sigma, image.shape)
    return numpy.clip(numpy.rint(image + noise), 0, 255).astype(numpy.uint8)


def true_line(blur):
    """What every pixel of a square weighs."""
    reach = blur.width // 2 + 2
    fine = (numpy.arange((2 * reach + 1) * OVERSAMPLING) + 0.5) / OVERSAMPLING - reach - 0.5
    right, up = fine[None, :], -fine[:, None]
    angle = numpy.deg2rad(blur.direction)
    along, across = right * numpy.cos(angle) + up * numpy.sin(angle), up * numpy.cos(angle) - right * numpy.sin(angle)
    inside = (abs(along) < (blur.width + 1) / 2) & (abs(across) < 0.5)
    weights = inside.reshape(2 * reach + 1, OVERSAMPLING, 2 * reach + 1, OVERSAMPLING).sum(axis=(1, 3))
    return weights / weights.sum()


def blur_truly(sharp, blur):
    linear = (sharp / 255.0) ** TONE_EXPONENT
    blurred = ndimage.convolve(linear, true_line(blur), mode="reflect")
    return numpy.rint(255 * numpy.clip(blurred, 0, 1) ** (1 / TONE_EXPONENT)).astype(numpy.uint8)


def measure_detail(kelvo, sharp, name, blur, accuracies):
    """Rows of (name, blur, accuracy, variant, measures blurred, measures restored, seams) of one photograph."""
    blurred = kelvo.run("blur", sharp, name, *blur.options())
    before = quality(sharp, blurred)
    rows = []
    for accuracy in accuracies:
        for variant, extra in VARIANTS.items():
            options = [*blur.options(), "--accuracy", str(accuracy), *extra]
            restored = kelvo.run("restore", blurred, name, *options)
            rows.append((name, blur, accuracy, variant, before, quality(sharp, restored),
                         seam(kelvo, blurred, restored, name, options)))
    return rows


def photo_of(row):
    return row[0].split("-")[0]


def print_detail(rows, blurs, accuracies):
    print("| width | accuracy | variant | PSNR blurred | restored | gain: mean | least | SSIM blurred | restored "
          "| brightness blurred | restored | seam: mean | largest |")
    print("|" + "---|" * 13)
    for blur, accuracy, variant in itertools.product(blurs, accuracies, VARIANTS):
        chosen = [r for r in rows if r[1:4] == (blur, accuracy, variant)]
        before, after, seams = (numpy.array([r[i] for r in chosen]) for i in (4, 5, 6))
        gain = after[:, 0] - before[:, 0]
        least = photo_of(chosen[int(gain.argmin())])
        print(f"| {blur} | {accuracy} | {variant} | {before[:, 0].mean():.2f} | {after[:, 0].mean():.2f} "
              f"| {gain.mean():+.2f} | {gain.min():+.2f} ({least}) | {before[:, 1].mean():.4f} | {after[:, 1].mean():.4f} "
              f"| {before[:, 2].mean():+.2f} | {after[:, 2].mean():+.2f} "
              f"| {numpy.nanmean(seams[:, 0]):.2f} | {numpy.nanmax(seams[:, 1]):.0f} |")


def measure_gains(kelvo, sharp, name, blur, accuracies):
    """Rows of (name, blur, sigma, remove_noise, accuracy, PSNR blurred, PSNR restored) of one photograph."""
    blurred = kelvo.run("blur", sharp, name, *blur.options())
    rows = []
    for sigma in SIGMAS:
        observed = with_noise(blurred, sigma) if sigma else blurred
        before = quality(sharp, observed)[0]
        for remove_noise, accuracy in itertools.product(NOISE_LEVELS, accuracies):
            restored = kelvo.run("restore", observed, name, *blur.options(), "--accuracy", str(accuracy),
                                 "--noise", str(remove_noise))
            rows.append((name, blur, sigma, remove_noise, accuracy, before, quality(sharp, restored)[0]))
    return rows


def print_gains(rows, blurs, accuracies):
    columns = " | ".join(f"gain at {accuracy}" for accuracy in accuracies)
    print(f"| width | sigma | --noise | PSNR before | {columns} | least gain |")
    print("|" + "---|" * (5 + len(accuracies)))
    for blur, sigma, level in itertools.product(blurs, SIGMAS, NOISE_LEVELS):
        chosen = [r for r in rows if r[1:4] == (blur, sigma, level)]
        gains = [numpy.mean([r[6] - r[5] for r in chosen if r[4] == accuracy]) for accuracy in accuracies]
        worst = min(chosen, key=lambda r: r[6] - r[5])
        print(f"| {blur} | {sigma} | {level} | {numpy.mean([r[5] for r in chosen]):.2f} | "
              + " | ".join(f"{gain:+.2f}" for gain in gains)
              + f" | {worst[6] - worst[5]:+.2f} ({photo_of(worst)}, {worst[4]}) |")


def measure_motion(kelvo, sharp, name, blur, accuracies):
    """Rows of (name, blur, how it was blurred, accuracy, PSNR blurred, PSNR restored) of one photograph."""
    rows = []
    for kind, blurred, efforts in (("model", kelvo.run("blur", sharp, name, *blur.options()), accuracies),
                                   ("true", blur_truly(sharp, blur), [TRUE_LINE_ACCURACY])):
        before = quality(sharp, blurred)[0]
        for accuracy in efforts:
            restored = kelvo.run("restore", blurred, name, *blur.options(), "--accuracy", str(accuracy))
            rows.append((name, blur, kind, accuracy, before, quality(sharp, restored)[0]))
    return rows


def print_motion(rows, blurs, accuracies):
    columns = " | ".join(f"gain at {accuracy}" for accuracy in accuracies)
    print(f"| width | direction | PSNR blurred | {columns} | least gain "
          f"| true line: PSNR blurred | gain at {TRUE_LINE_ACCURACY} | least gain |")
    print("|" + "---|" * (7 + len(accuracies)))
    gain = lambda row: row[5] - row[4]
    for blur in blurs:
        model, true = ([r for r in rows if r[1:3] == (blur, kind)] for kind in ("model", "true"))
        gains = [numpy.mean([gain(r) for r in model if r[3] == accuracy]) for accuracy in accuracies]
        worst, worst_true = min(model, key=gain), min(true, key=gain)
        print(f"| {blur.width} | {blur.direction} | {numpy.mean([r[4] for r in model]):.2f} | "
              + " | ".join(f"{g:+.2f}" for g in gains)
              + f" | {gain(worst):+.2f} ({photo_of(worst)}, {worst[3]}) | {numpy.mean([r[4] for r in true]):.2f} "
              f"| {numpy.mean([gain(r) for r in true]):+.2f} | {gain(worst_true):+.2f} ({photo_of(worst_true)}) |")


class Table(NamedTuple):
    measure: object
    show: object
    accuracies: list
    widths: list
    directions: list


ALL_WIDTHS = list(range(1, 21))
TABLES = {"detail": Table(measure_detail, print_detail, [0, 1, 2], ALL_WIDTHS, [0]),
          "gains": Table(measure_gains, print_gains, [-2, -1, 0, 1, 2], ALL_WIDTHS, [0]),
          "motion": Table(measure_motion, print_motion, [0, 1, 2], [3, 5, 8, 12, 16, 20],
                          [180, 15, 30, 45, 70, 110, 160])}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("table", nargs="?", choices=TABLES, default="detail")
    parser.add_argument("--program", default="build/bench/host/kelvo")
    parser.add_argument("--photos", default=os.path.join(os.path.dirname(skimage.__file__), "data"), metavar="FOLDER")
    parser.add_argument("--names", nargs="+", default=PHOTOS)
    parser.add_argument("--side", type=int, default=384, help="pixels of the square that is cut out")
    parser.add_argument("--widths", nargs="+", type=int)
    parser.add_argument("--directions", nargs="+", type=int, help="of motion blur, degrees; 0 is round blur")
    parser.add_argument("--accuracies", nargs="+", type=int)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments = parser.parse_args()
    table = TABLES[arguments.table]
    accuracies = arguments.accuracies or table.accuracies
    blurs = [Blur(*pair) for pair in itertools.product(arguments.widths or table.widths,
                                                       arguments.directions or table.directions)]

    with tempfile.TemporaryDirectory() as folder, ThreadPoolExecutor(arguments.jobs) as pool:
        kelvo = Kelvo(arguments.program, folder)
        jobs = []
        for photo in arguments.names:
            sharp = gray_square(os.path.join(arguments.photos, photo), arguments.side)
            for blur in blurs:
                name = f"{os.path.splitext(photo)[0]}-{blur.width}-{blur.direction}"
                jobs.append(pool.submit(table.measure, kelvo, sharp, name, blur, accuracies))
        rows = [row for job in jobs for row in job.result()]
    print(f"Photographs: {', '.join(arguments.names)}; gray, {arguments.side} x {arguments.side} or less.\n")
    table.show(rows, blurs, accuracies)


main()
