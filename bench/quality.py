"""Measures what restoration gains: PSNR, SSIM, brightness and seams, by width and accuracy, on photographs.

Every photograph is cut to a gray square, blurred with the library's own model, stored with 8 bits and restored. All
measures leave out a border of 32 pixels; PSNR is in dB against 255. Seams: the photograph is restored again from a
cut that starts 64 pixels further down and right, so that the tiles lie elsewhere; the two results are compared where
both have whole tiles with true surroundings.
"""

import argparse
import os
import subprocess
import tempfile
from concurrent.futures import ThreadPoolExecutor

import numpy
import skimage
from skimage import color, io, util
from skimage.metrics import peak_signal_noise_ratio, structural_similarity

PHOTOS = ["astronaut.png", "camera.png", "chelsea.png", "coffee.png", "motorcycle_left.png", "rocket.jpg"]
SIDE = 384
BORDER = 32
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


def measure(kelvo, sharp, photo, width, accuracies):
    """Rows of (width, accuracy, variant, blurred, restored, seams) of one photograph at one width."""
    name = f"{os.path.splitext(photo)[0]}-{width}"
    blurred = kelvo.run("blur", sharp, name, "--width", str(width))
    before = quality(sharp, blurred)
    rows = []
    for accuracy in accuracies:
        for variant, extra in VARIANTS.items():
            options = ["--width", str(width), "--accuracy", str(accuracy), *extra]
            restored = kelvo.run("restore", blurred, name, *options)
            rows.append((photo, width, accuracy, variant, before, quality(sharp, restored),
                         seam(kelvo, blurred, restored, name, options)))
    return rows


def print_table(rows, widths, accuracies):
    print("| width | accuracy | variant | PSNR blurred | PSNR restored | gain: mean | least | SSIM blurred | SSIM restored "
          "| brightness | seam: mean | largest |")
    print("|" + "---|" * 12)
    for width in widths:
        for accuracy in accuracies:
            for variant in VARIANTS:
                chosen = [r for r in rows if r[1:4] == (width, accuracy, variant)]
                before, after, seams = (numpy.array([r[i] for r in chosen]) for i in (4, 5, 6))
                gain = after[:, 0] - before[:, 0]
                least = chosen[int(gain.argmin())][0].split(".")[0]
                print(f"| {width} | {accuracy} | {variant} | {before[:, 0].mean():.2f} | {after[:, 0].mean():.2f} "
                      f"| {gain.mean():+.2f} | {gain.min():+.2f} ({least}) | {before[:, 1].mean():.4f} | {after[:, 1].mean():.4f} "
                      f"| {after[:, 2].mean():+.2f} | {numpy.nanmean(seams[:, 0]):.2f} | {numpy.nanmax(seams[:, 1]):.0f} |")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default="build/release/host/kelvo")
    parser.add_argument("--photos", default=os.path.join(os.path.dirname(skimage.__file__), "data"), metavar="FOLDER")
    parser.add_argument("--names", nargs="+", default=PHOTOS)
    parser.add_argument("--widths", nargs="+", type=int, default=list(range(1, 8)))
    parser.add_argument("--accuracies", nargs="+", type=int, default=[0, 1, 2])
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory() as folder, ThreadPoolExecutor(os.cpu_count()) as pool:
        kelvo = Kelvo(arguments.program, folder)
        jobs = []
        for photo in arguments.names:
            sharp = gray_square(os.path.join(arguments.photos, photo), SIDE)
            jobs += [pool.submit(measure, kelvo, sharp, photo, width, arguments.accuracies)
                     for width in arguments.widths]
        rows = [row for job in jobs for row in job.result()]
    print(f"Photographs: {', '.join(arguments.names)}; gray, {SIDE} x {SIDE} or less.\n")
    print_table(rows, arguments.widths, arguments.accuracies)


main()
