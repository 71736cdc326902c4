"""Measures what restoration gains on photographs: the tables of docs/quality.md.

  sets     the library's sets of variants, by width, noise and Accuracy; RemoveNoise is the best of all for each row
  gains    what the program does by itself, by width and damage (noise, JPEG), for every Accuracy
  anchors  the program beside Richardson-Lucy and total variation whose settings were tuned by knowing the answer
  detail   the program beside --classic: SSIM, overshoot at edges, brightness, seams, time

Gains are in dB of PSNR, means over photographs. Seams: the photograph is restored again from a cut that starts 56 pixels
further down and right, so that the tiles lie elsewhere; the two results are compared where both know 40 pixels around.
"""

import argparse
import itertools
import os
import subprocess
import tempfile
import time

import numpy
from skimage import io

import classics
import photographs
from photographs import CHOICE, JUDGES, Blur, Damage, damaged, psnr, square, surrounded_square, weights_of
from sets import SETS, Library

CLEAN = Damage()
ACCURACIES = [-2, -1, 0, 1, 2]
LEVELS = [-1, 0, 1, 2, 3]  # of RemoveNoise


class Program:
    def __init__(self, path, folder):
        self.path, self.folder = path, folder

    def restore(self, image, *options):
        """The result and the CPU time in milliseconds."""
        name = os.path.join(self.folder, f"{time.monotonic_ns()}-{id(image)}")
        io.imsave(f"{name}-in.png", image, check_contrast=False)
        before = time.monotonic()
        subprocess.run([self.path, "restore", f"{name}-in.png", "-o", f"{name}-out.png", "--quiet", "--threads", "1",
                        "--jpeg", "auto", *options], check=True)
        took = time.monotonic() - before
        result = io.imread(f"{name}-out.png")
        for end in ("in", "out"):
            os.remove(f"{name}-{end}.png")
        return result, took * 1000


def cases(names, program, blur, damage):
    """Pairs of sharp and damaged squares."""
    weights = weights_of(program.path, blur)
    for name in names:
        surrounded = surrounded_square(name)
        yield square(surrounded), damaged(surrounded, weights, damage)


def show(*cells):
    print("| " + " | ".join(f"{cell:+.2f}" if isinstance(cell, float) else str(cell) for cell in cells) + " |", flush=True)


def head(*cells):
    show(*cells)
    print("|" + "---|" * len(cells), flush=True)


def print_sets(arguments, program):
    library = Library(arguments.library)
    head("blur", "damage", "Accuracy", *SETS)
    for blur, damage in itertools.product(arguments.blurs, arguments.damages):
        pairs = list(cases(arguments.names, program, blur, damage))
        for accuracy in arguments.accuracies:
            best = []
            for variant in SETS.values():
                gains = [numpy.mean([psnr(sharp, library.restore(image, variant, *blur[:2], accuracy, level))
                                     - psnr(sharp, image) for sharp, image in pairs]) for level in LEVELS]
                best.append(float(max(gains)))
            show(blur, damage, accuracy, *best)


def print_gains(arguments, program):
    head("blur", "damage", "PSNR before", *(f"gain at {accuracy}" for accuracy in arguments.accuracies), "least gain")
    for blur, damage in itertools.product(arguments.blurs, arguments.damages):
        pairs = list(cases(arguments.names, program, blur, damage))
        before = numpy.array([psnr(*pair) for pair in pairs])
        gains = numpy.array([[psnr(sharp, program.restore(image, *blur.options(), "--accuracy", str(accuracy))[0])
                              for sharp, image in pairs] for accuracy in arguments.accuracies]) - before
        least = numpy.unravel_index(gains.argmin(), gains.shape)
        name = os.path.splitext(arguments.names[least[1]])[0]
        show(blur, damage, f"{before.mean():.2f}", *map(float, gains.mean(axis=1)),
             f"{gains.min():+.2f} ({name}, {arguments.accuracies[least[0]]})")


def print_anchors(arguments, program):
    levels = [str(accuracy) for accuracy in arguments.accuracies]
    head("blur", "damage", "Richardson-Lucy", "total variation", *(f"kelvo, Accuracy {level}" for level in levels))
    for blur, damage in itertools.product(arguments.blurs, arguments.damages):
        weights = weights_of(program.path, blur)
        rows = []
        for sharp, image in cases(arguments.names, program, blur, damage):
            results = [classics.richardson_lucy(sharp, image, weights), classics.total_variation(sharp, image, weights)]
            results += [psnr(sharp, program.restore(image, *blur.options(), "--accuracy", level)[0]) for level in levels]
            rows.append(numpy.array(results) - psnr(sharp, image))
        show(blur, damage, *map(float, numpy.mean(rows, axis=0)))


def seam(program, image, restored, options):
    moved = program.restore(image[56:, 56:], *options)[0]
    difference = numpy.abs(restored[56:, 56:].astype(float) - moved)[40:-40, 40:-40]
    return difference.mean(), difference.max()


def print_detail(arguments, program):
    head("blur", "set", "Accuracy", "gain", "SSIM before", "after", "overshoot before", "after", "brightness before",
         "after", "seam: mean", "largest", "ms")
    for blur, accuracy in itertools.product(arguments.blurs, arguments.accuracies):
        for name, extra in (("program", []), ("--classic", ["--classic"])):
            rows = []
            for sharp, image in cases(arguments.names, program, blur, CLEAN):
                options = [*blur.options(), "--accuracy", str(accuracy), *extra]
                result, took = program.restore(image, *options)
                measures = [measure(sharp, picture) for measure in (photographs.ssim, photographs.overshoot,
                                                                   photographs.brightness)
                            for picture in (image, result)]
                rows.append([psnr(sharp, result) - psnr(sharp, image), *measures, *seam(program, image, result, options),
                             took])
            mean = numpy.mean(rows, axis=0)
            show(blur, name, accuracy, float(mean[0]), f"{mean[1]:.3f}", f"{mean[2]:.3f}", f"{mean[3]:.2f}",
                 f"{mean[4]:.2f}", *map(float, mean[5:7]), f"{mean[7]:.2f}", f"{max(row[8] for row in rows):.0f}",
                 f"{mean[9]:.0f}")


ROUND = [Blur(width) for width in range(1, 21)]
MOVING = [Blur(3, 45), Blur(8, 30), Blur(12, 110), Blur(20, 160)]
SOME = [Blur(width) for width in (1, 2, 3, 5, 8, 12, 20)] + MOVING
MOTION = [Blur(width, direction) for width in (3, 5, 8, 12, 16, 20) for direction in (180, 15, 30, 45, 70, 110, 160)]
TRUE = [Blur(width, 0, true) for width in (1, 2, 3, 5, 8, 12, 20) for true in (0.95, 1.0, 1.05)] + [
    Blur(width, direction, 1.0) for width in (3, 8, 16) for direction in (180, 30, 45)]
BLURS = {"round": ROUND, "some": SOME, "moving": MOVING, "motion": MOTION, "true": TRUE, "anchors": [Blur(w) for w in (2, 5, 10, 20)]}
DAMAGES = [CLEAN, Damage(1.0), Damage(3.0), Damage(0.0, 90), Damage(0.0, 60)]
TABLES = {"sets": (print_sets, "some", DAMAGES[:3], [0, 2]), "gains": (print_gains, "round", DAMAGES, ACCURACIES),
          "anchors": (print_anchors, "anchors", DAMAGES[:3], [0, 1, 2]), "detail": (print_detail, "some", [CLEAN], [0, 2])}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("table", choices=TABLES)
    parser.add_argument("--program", default="build/bench/host/kelvo")
    parser.add_argument("--library", default="build/bench/src/libkelvo.so")
    parser.add_argument("--names", nargs="+", default=CHOICE + JUDGES, help="photographs, or one of: choice judges")
    parser.add_argument("--blurs", choices=BLURS)
    parser.add_argument("--widths", nargs="+", type=int, help="only these")
    parser.add_argument("--damages", type=int, help="only the first so many")
    parser.add_argument("--accuracies", nargs="+", type=int)
    arguments = parser.parse_args()
    run, blurs, damages, accuracies = TABLES[arguments.table]
    arguments.names = {"choice": CHOICE, "judges": JUDGES}.get(arguments.names[0], arguments.names)
    arguments.blurs = [blur for blur in BLURS[arguments.blurs or blurs]
                       if not arguments.widths or blur.width in arguments.widths]
    arguments.damages = damages[:arguments.damages]
    arguments.accuracies = arguments.accuracies or accuracies
    print(f"Photographs: {', '.join(arguments.names)}.\n")
    with tempfile.TemporaryDirectory() as folder:
        run(arguments, Program(arguments.program, folder))


main()
