"""Colour photographs blurred with width 5 and restored, side by side: others.py PROGRAM REPEATS

Prints processor seconds (the least of the repeats, all methods taking turns) and gains in dB. Programs read and write uncompressed TIFF,
and their time is that of the whole process; of scikit-image only the iterations are timed, without start and files. Richardson-Lucy runs 10
iterations: in scikit-image with the true weights on each channel or on the brightness alone, elsewhere with the nearest Gaussian.
"""

import os
import resource
import subprocess
import sys
import tempfile
import time

import numpy
from skimage import color, restoration
from skimage import io as image_io

from photographs import FOLDER, Blur, inner, model_weights, psnr

PHOTOGRAPHS = ["coffee.png", "astronaut.png", "hubble_deep_field.jpg", "retina.jpg"]
BLUR = Blur(5)
ITERATIONS = 10
GAUSSIAN = 1.4  # pixels: along an axis a disc deviates by half of its radius, 2.8 pixels

SHARPENING = f"""[Version]
AppVersion=5.9
Version=349

[Sharpening]
Enabled=true
Contrast=0
Method=rld
DeconvRadius={GAUSSIAN}
DeconvAmount=100
DeconvDamping=0
DeconvIterations={ITERATIONS}
"""


def processor_seconds(command, **environment):
    """Of the whole process and its threads."""
    def used():
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        return usage.ru_utime + usage.ru_stime

    before = used()
    subprocess.run(command, check=True, capture_output=True, env={**os.environ, **environment})
    return used() - before


def richardson_lucy(image, weights):
    start = time.process_time()
    if image.ndim == 2:
        result = restoration.richardson_lucy(image, weights, ITERATIONS)
    else:
        channels = [restoration.richardson_lucy(image[..., c], weights, ITERATIONS) for c in range(image.shape[2])]
        result = numpy.stack(channels, axis=-1)
    return time.process_time() - start, result


class Side:
    """One photograph, blurred, in a folder of its own."""

    def __init__(self, program, name, folder):
        self.program, self.folder = program, folder
        self.sharp = image_io.imread(os.path.join(FOLDER, name))[..., :3]
        image_io.imsave(self.path("sharp.tif"), self.sharp, check_contrast=False)
        self.run("blur", "sharp.tif", "blurred.tif", "--width", str(BLUR.width))
        self.blurred = image_io.imread(self.path("blurred.tif"))
        self.weights = model_weights(program, BLUR)
        with open(self.path("sharpening.pp3"), "w") as file:
            file.write(SHARPENING)

    def path(self, name):
        return os.path.join(self.folder, name)

    def run(self, command, source, result, *options, **environment):
        return processor_seconds(
            [self.program, command, self.path(source), "-o", self.path(result), "--force", "--quiet", *options],
            **environment)

    def gain(self, result):
        return psnr(inner(self.sharp), inner(result)) - psnr(inner(self.sharp), inner(self.blurred))

    def kelvo(self, *options, **environment):
        seconds = self.run("restore", "blurred.tif", "restored.tif", "--width", str(BLUR.width), *options, **environment)
        return seconds, self.gain(image_io.imread(self.path("restored.tif")))

    def scikit(self, brightness):
        image = self.blurred / 255
        lab = color.rgb2lab(image) if brightness else None
        seconds, result = richardson_lucy(lab[..., 0] / 100 if brightness else image, self.weights)
        if brightness:
            lab[..., 0] = result * 100
            result = color.lab2rgb(lab)
        return seconds, self.gain(numpy.clip(numpy.rint(result * 255), 0, 255).astype(numpy.uint8))

    def gmic(self):
        seconds = processor_seconds(["gmic", self.path("blurred.tif"), "deblur_richardsonlucy",
                                     f"{GAUSSIAN},{ITERATIONS}", "cut", "0,255", "round", "1", "output",
                                     self.path("gmic.tif") + ",uint8"])
        return seconds, self.gain(image_io.imread(self.path("gmic.tif")))

    def rawtherapee(self):
        seconds = processor_seconds(["rawtherapee-cli", "-q", "-o", self.path("raw.tif"), "-p", self.path("sharpening.pp3"),
                                     "-t", "-b8", "-Y", "-c", self.path("blurred.tif")])
        return seconds, self.gain(image_io.imread(self.path("raw.tif")))


def measure(side, repeats):
    luma = ("--accuracy", "0", "--colour", "luma")
    methods = {
        "scikit-image, three channels": lambda: side.scikit(False),
        "scikit-image, brightness": lambda: side.scikit(True),
        "gmic, three channels": side.gmic,
        "rawtherapee, brightness": side.rawtherapee,
        "kelvo, luma, AVX2": lambda: side.kelvo(*luma, KELVO_CPU="avx2"),
        "kelvo, luma, best level": lambda: side.kelvo(*luma),
        "kelvo, three channels, best level": lambda: side.kelvo("--accuracy", "0", "--colour", "channels"),
        "kelvo, start alone": lambda: (processor_seconds([side.program, "--version"]), 0.0),
    }
    best = {}
    for _ in range(repeats):
        for name, run in methods.items():
            seconds, gain = run()
            best[name] = min(seconds, best.get(name, (seconds,))[0]), gain
    return best


def main():
    program, repeats = os.path.abspath(sys.argv[1]), int(sys.argv[2])
    columns = []
    for name in PHOTOGRAPHS:
        with tempfile.TemporaryDirectory() as folder:
            side = Side(program, name, folder)
            height, width = side.sharp.shape[:2]
            columns.append((f"{name.split('.')[0]}, {width} x {height}", measure(side, repeats)))
    print("| |", " | ".join(name for name, _ in columns), "|")
    print("|---|" + "---|" * len(columns))
    for method in columns[0][1]:
        cells = ("{:.3f} s{}".format(best[method][0], f", {best[method][1]:+.1f} dB" if best[method][1] else "")
                 for _, best in columns)
        print("|", method, "|", " | ".join(cells), "|")


main()
