"""Measures what restoration gains: PSNR, SSIM, brightness and seams, by width and accuracy, on photographs.

Every photograph is cut to a gray square, blurred with the library's own model, given noise if asked for, stored with 8
bits and restored. All measures leave out a border of 32 pixels; PSNR is in dB against 255; brightness is the mean
difference to the sharp photograph in grey levels. Seams: the photograph is restored again from a cut that starts 64
pixels further down and right, so that the tiles lie elsewhere; the two results are compared where both have whole tiles
with true surroundings.

Two tables: "detail" compares the program's own variant 3 with 0 (--classic) on clean photographs; "gains" gives the mean
gain in PSNR of variant 3 by noise of the photograph (sigma) and --noise (RemoveNoise), for every accuracy.
"""

import argparse
import itertools
import os
import subprocess
import tempfile
from concurrent.futures import ThreadPoolExecutor

import numpy
import skimage
from skimage import color, io, util
from skimage.metrics import peak_signal_noise_ratio, structural_similarity

PHOTOS = ["astronaut.png", "camera.png", "chelsea.png", "coffee.png", "motorcycle_left.png", "rocket.jpg"]
BORDER = 32
SIGMAS = [0, 2]
NOISE_LEVELS = [0, 1]
VARIANTS = {"3": [], "0": ["--classic"]}


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


def measure_detail(kelvo, sharp, name, width, accuracies):
    """Rows of (width, accuracy, variant, measures blurred, measures restored, seams) of one photograph."""
    blurred = kelvo.run("blur", sharp, name, "--width", str(width))
    before = quality(sharp, blurred)
    rows = []
    for accuracy in accuracies:
        for variant, extra in VARIANTS.items():
            options = ["--width", str(width), "--accuracy", str(accuracy), *extra]
            restored = kelvo.run("restore", blurred, name, *options)
            rows.append((name, width, accuracy, variant, before, quality(sharp, restored),
                         seam(kelvo, blurred, restored, name, options)))
    return rows


def print_detail(rows, widths, accuracies):
    print("| width | accuracy | variant | PSNR blurred | restored | gain: mean | least | SSIM blurred | restored "
          "| brightness blurred | restored | seam: mean | largest |")
    print("|" + "---|" * 13)
    for width, accuracy, variant in itertools.product(widths, accuracies, VARIANTS):
        chosen = [r for r in rows if r[1:4] == (width, accuracy, variant)]
        before, after, seams = (numpy.array([r[i] for r in chosen]) for i in (4, 5, 6))
        gain = after[:, 0] - before[:, 0]
        least = chosen[int(gain.argmin())][0].split("-")[0]
        print(f"| {width} | {accuracy} | {variant} | {before[:, 0].mean():.2f} | {after[:, 0].mean():.2f} "
              f"| {gain.mean():+.2f} | {gain.min():+.2f} ({least}) | {before[:, 1].mean():.4f} | {after[:, 1].mean():.4f} "
              f"| {before[:, 2].mean():+.2f} | {after[:, 2].mean():+.2f} "
              f"| {numpy.nanmean(seams[:, 0]):.2f} | {numpy.nanmax(seams[:, 1]):.0f} |")


def measure_gains(kelvo, sharp, name, width, accuracies):
    """Rows of (name, width, sigma, remove_noise, accuracy, PSNR blurred, PSNR restored) of one photograph."""
    blurred = kelvo.run("blur", sharp, name, "--width", str(width))
    rows = []
    for sigma in SIGMAS:
        observed = with_noise(blurred, sigma) if sigma else blurred
        before = quality(sharp, observed)[0]
        for remove_noise, accuracy in itertools.product(NOISE_LEVELS, accuracies):
            restored = kelvo.run("restore", observed, name, "--width", str(width), "--accuracy", str(accuracy),
                                 "--noise", str(remove_noise))
            rows.append((name, width, sigma, remove_noise, accuracy, before, quality(sharp, restored)[0]))
    return rows


def print_gains(rows, widths, accuracies):
    columns = " | ".join(f"gain at {accuracy}" for accuracy in accuracies)
    print(f"| width | sigma | --noise | PSNR before | {columns} | least gain |")
    print("|" + "---|" * (5 + len(accuracies)))
    for width, sigma, level in itertools.product(widths, SIGMAS, NOISE_LEVELS):
        chosen = [r for r in rows if r[1:4] == (width, sigma, level)]
        gains = [numpy.mean([r[6] - r[5] for r in chosen if r[4] == accuracy]) for accuracy in accuracies]
        worst = min(chosen, key=lambda r: r[6] - r[5])
        print(f"| {width} | {sigma} | {level} | {numpy.mean([r[5] for r in chosen]):.2f} | "
              + " | ".join(f"{gain:+.2f}" for gain in gains)
              + f" | {worst[6] - worst[5]:+.2f} ({worst[0].split('-')[0]}, {worst[4]}) |")


TABLES = {"detail": (measure_detail, print_detail, [0, 1, 2]), "gains": (measure_gains, print_gains, [-2, -1, 0, 1, 2])}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("table", nargs="?", choices=TABLES, default="detail")
    parser.add_argument("--program", default="build/bench/host/kelvo")
    parser.add_argument("--photos", default=os.path.join(os.path.dirname(skimage.__file__), "data"), metavar="FOLDER")
    parser.add_argument("--names", nargs="+", default=PHOTOS)
    parser.add_argument("--side", type=int, default=384, help="pixels of the square that is cut out")
    parser.add_argument("--widths", nargs="+", type=int, default=list(range(1, 21)))
    parser.add_argument("--accuracies", nargs="+", type=int)
    arguments = parser.parse_args()
    measure, print_table, accuracies = TABLES[arguments.table]
    accuracies = arguments.accuracies or accuracies

    with tempfile.TemporaryDirectory() as folder, ThreadPoolExecutor(os.cpu_count()) as pool:
        kelvo = Kelvo(arguments.program, folder)
        jobs = []
        for photo in arguments.names:
            sharp = gray_square(os.path.join(arguments.photos, photo), arguments.side)
            for width in arguments.widths:
                name = f"{os.path.splitext(photo)[0]}-{width}"
                jobs.append(pool.submit(measure, kelvo, sharp, name, width, accuracies))
        rows = [row for job in jobs for row in job.result()]
    print(f"Photographs: {', '.join(arguments.names)}; gray, {arguments.side} x {arguments.side} or less.\n")
    print_table(rows, arguments.widths, accuracies)


main()
