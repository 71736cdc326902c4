"""Photographs, what happens to them (blur, noise, JPEG), and how results are measured against them.

Photographs are gray squares cut from those of python3-skimage, with surroundings, so that a blur draws on what lies outside
the square as a lens does. Blurs are applied in linear light and rounded to 8 bits once, at the end.
"""

import io
import json
import os
import subprocess
from typing import NamedTuple

import numpy
import skimage
from PIL import Image
from scipy import ndimage, signal
from skimage import color, util
from skimage import io as image_io
from skimage.metrics import structural_similarity

FOLDER = os.path.join(os.path.dirname(skimage.__file__), "data")
CHOICE = ["astronaut.png", "chelsea.png", "motorcycle_left.png", "brick.png", "coins.png"]  # settings were chosen on
JUDGES = ["camera.png", "coffee.png", "rocket.jpg", "ihc.png", "gravel.png"]  # and are judged on
TONE_EXPONENT = 1.8  # of the library's curve to linear light
SIDE = 256
SURROUNDINGS = 22  # pixels on each side, as far as coins.png allows
BORDER = 16  # pixels of the square that no measure counts
OVERSAMPLING = 16


class Blur(NamedTuple):
    width: int
    direction: int = 0  # degrees; 0: round
    true: float = 0.0  # 0: the library's own weights; else a disc or line without pixels, so many times as wide

    def __str__(self):
        name = f"{self.width}" if self.direction == 0 else f"{self.width} at {self.direction}"
        return name + (f", true x {self.true:g}" if self.true else "")

    def options(self):
        return ["--width", str(self.width)] + (["--direction", str(self.direction)] if self.direction else [])


class Damage(NamedTuple):
    """What comes after the blur."""
    sigma: float = 0.0  # of the noise, grey levels
    jpeg: int = 0  # quality; 0: none

    def __str__(self):
        return f"JPEG {self.jpeg}" if self.jpeg else f"noise {self.sigma:g}" if self.sigma else "clean"


def surrounded_square(name):
    image = image_io.imread(os.path.join(FOLDER, name))
    if image.ndim == 3:
        image = color.rgb2gray(image[..., :3])
    image = util.img_as_ubyte(image)
    side = SIDE + 2 * SURROUNDINGS
    top, left = ((length - side) // 2 for length in image.shape)
    assert top >= 0 and left >= 0, name
    return image[top:top + side, left:left + side]


def square(surrounded):
    return surrounded[SURROUNDINGS:-SURROUNDINGS, SURROUNDINGS:-SURROUNDINGS]


def model_weights(program, blur):
    """The library's own weights, as `kelvo members` tells them, on a square of pixels."""
    text = subprocess.run([program, "members", "--json", *blur.options()], check=True, capture_output=True).stdout
    member = json.loads(text)
    cells = member["blur" if blur.direction == 0 else "bare_line"]["cells"]
    reach = max(max(abs(cell["column"]), abs(cell["up"])) for cell in cells)
    weights = numpy.zeros((2 * reach + 1, 2 * reach + 1))
    for cell in cells:
        weights[reach - cell["up"], reach + cell["column"]] = cell["weight"]
    return turned(weights, member) / weights.sum()


def turned(weights, member):
    """`kelvo members` tells the line as the library sees it; this turns it back."""
    folds = {"not at all": lambda w: w, "reflected at the anti-diagonal": lambda w: w[::-1, ::-1].T,
             "a quarter clockwise": numpy.rot90, "mirrored left to right": lambda w: w[:, ::-1]}
    return folds[member.get("turned", "not at all")](weights)


def true_weights(blur, model):
    """A disc of the model's second moment, or a line of width + 1 by 1 pixels, times blur.true; pixels weigh what it
    covers of them."""
    reach = int(numpy.ceil((model.shape[0] // 2 + 1) * blur.true)) + 1
    fine = (numpy.arange((2 * reach + 1) * OVERSAMPLING) + 0.5) / OVERSAMPLING - reach - 0.5
    right, up = fine[None, :], -fine[:, None]
    if blur.direction == 0:
        places = numpy.arange(model.shape[0]) - model.shape[0] // 2
        moment = (model * (places[:, None]**2 + places[None, :]**2)).sum()
        inside = right**2 + up**2 < 2 * moment * blur.true**2  # a disc of radius r has the moment r^2 / 2
    else:
        angle = numpy.deg2rad(blur.direction)
        along, across = right * numpy.cos(angle) + up * numpy.sin(angle), up * numpy.cos(angle) - right * numpy.sin(angle)
        inside = (abs(along) < blur.true * (blur.width + 1) / 2) & (abs(across) < 0.5)
    weights = inside.reshape(2 * reach + 1, OVERSAMPLING, 2 * reach + 1, OVERSAMPLING).sum(axis=(1, 3))
    return weights / weights.sum()


def weights_of(program, blur):
    model = model_weights(program, blur)
    return true_weights(blur, model) if blur.true else model


def to_linear(levels):
    return (numpy.clip(levels, 0, 255) / 255.0)**TONE_EXPONENT


def to_levels(linear):
    return 255 * numpy.clip(linear, 0, 1)**(1 / TONE_EXPONENT)


def convolved(linear, weights):
    reach = weights.shape[0] // 2
    return signal.oaconvolve(numpy.pad(linear, reach, mode="symmetric"), weights, mode="valid")


def damaged(surrounded, weights, damage):
    """What a camera would have made of the square: blurred, noisy or compressed, 8 bits."""
    levels = to_levels(convolved(to_linear(surrounded), weights))
    levels = levels + numpy.random.default_rng(1).normal(0, damage.sigma or 1e-12, levels.shape)
    image = square(numpy.clip(numpy.rint(levels), 0, 255).astype(numpy.uint8))
    if damage.jpeg:
        file = io.BytesIO()
        Image.fromarray(image).save(file, "JPEG", quality=damage.jpeg)
        image = numpy.asarray(Image.open(file))
    return image


def inner(image, border=BORDER):
    return image[border:-border, border:-border].astype(float)


def psnr(sharp, image):
    return 10 * numpy.log10(255**2 / numpy.mean((inner(sharp) - inner(image))**2))


def ssim(sharp, image):
    return structural_similarity(inner(sharp), inner(image), data_range=255, gaussian_weights=True,
                                 use_sample_covariance=False)


def overshoot(sharp, image):
    """Mean grey levels by which pixels at edges (gradient above 30 levels a pixel) leave the range of the sharp picture
    around them (5 x 5)."""
    picture, sharp = inner(image), inner(sharp)
    edges = ndimage.gaussian_gradient_magnitude(sharp, 1.0) > 30
    beyond = (numpy.maximum(picture - ndimage.maximum_filter(sharp, 5), 0)
              + numpy.maximum(ndimage.minimum_filter(sharp, 5) - picture, 0))
    return beyond[edges].mean() if edges.any() else 0.0


def brightness(sharp, image):
    return numpy.mean(inner(image) - inner(sharp))
