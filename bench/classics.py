"""Two classic methods on the same pictures, with their settings tuned by knowing the answer: the marks to beat.

Both know the true weights of the blur and work in linear light on the whole picture, by Fourier transforms.
"""

import numpy
from scipy import fft

from photographs import psnr, to_levels, to_linear

MARGIN = 24  # pixels mirrored around the picture, whose misfits do not count


class Convolution:
    """Convolution on a padded picture, periodic beyond the margin."""

    def __init__(self, weights, shape):
        reach = weights.shape[0] // 2
        placed = numpy.zeros(shape)
        placed[:weights.shape[0], :weights.shape[1]] = weights
        self.transfer = fft.rfft2(numpy.roll(placed, (-reach, -reach), (0, 1)))
        self.shape = shape

    def __call__(self, image):
        return fft.irfft2(fft.rfft2(image) * self.transfer, self.shape)


def padded(image):
    return numpy.pad(to_linear(image), MARGIN, mode="symmetric")


def levels(linear):
    inner = linear[MARGIN:-MARGIN, MARGIN:-MARGIN]
    return numpy.clip(numpy.rint(to_levels(inner)), 0, 255).astype(numpy.uint8)


def richardson_lucy(sharp, image, weights):
    """The best PSNR of 5, 10 .. 200 iterations."""
    observed = numpy.maximum(padded(image), 1e-6)
    blur = Convolution(weights, observed.shape)
    inside = numpy.zeros(observed.shape)
    inside[MARGIN:-MARGIN, MARGIN:-MARGIN] = 1
    coverage = numpy.maximum(blur(inside), 1e-3)
    estimate, best = observed.copy(), 0.0
    for iteration in range(1, 201):
        ratio = inside * observed / numpy.maximum(blur(estimate), 1e-9)
        estimate = numpy.clip(estimate * blur(ratio) / coverage, 1e-9, 1)
        if iteration % 5 == 0:
            best = max(best, psnr(sharp, levels(estimate)))
    return best


def total_variation(sharp, image, weights):
    """The best PSNR of a least-squares fit with total variation, by the strength of the latter; 150 steps of a primal-dual
    method (Condat 2013) with over-relaxation."""
    return max(_total_variation(sharp, image, weights, strength) for strength in (1e-5, 3e-5, 1e-4, 3e-4, 1e-3, 3e-3))


def _total_variation(sharp, image, weights, strength):
    observed = padded(image)
    blur = Convolution(weights, observed.shape)
    inside = numpy.zeros(observed.shape)
    inside[MARGIN:-MARGIN, MARGIN:-MARGIN] = 1
    estimate, dual = observed.copy(), numpy.zeros((2, *observed.shape))
    tau, sigma, relaxation = 0.95, 0.06, 1.6
    for _ in range(150):
        gradient = blur(inside * (blur(estimate) - observed)) + sum(
            numpy.roll(dual[axis], 1, axis) - dual[axis] for axis in (0, 1))
        moved = numpy.clip(estimate - tau * gradient, 0, 1)
        ahead = 2 * moved - estimate
        moved_dual = dual + sigma * numpy.stack([numpy.roll(ahead, -1, axis) - ahead for axis in (0, 1)])
        moved_dual /= numpy.maximum(1, numpy.sqrt((moved_dual**2).sum(0)) / strength)
        estimate = estimate + relaxation * (moved - estimate)
        dual = dual + relaxation * (moved_dual - dual)
    return psnr(sharp, levels(estimate))
