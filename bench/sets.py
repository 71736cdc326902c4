"""The library's sets of variants, called tile by tile as a host would, without fading."""

import ctypes

import numpy

TILE, CORE, CONTEXT = 256, 128, 64
BLUR_SPEC, REMOVE_NOISE, ACCURACY, IMAGE_SIZE, POSITION = 1, 4, 7, 73, 75  # 4-byte words of the block
SEARCH, FRACTION, FIT, ALONE = 3, 4, 8, 16
SETS = {"classic": 0, "search": SEARCH, "search, fraction": SEARCH | FRACTION, "search, then fit": SEARCH | FIT,
        "search, fraction, then fit": SEARCH | FRACTION | FIT, "fit alone": FIT | ALONE,
        "fit alone, fraction": FRACTION | FIT | ALONE}


class Library:
    def __init__(self, path):
        self.library = ctypes.CDLL(path)

    def restore(self, image, variant, width, direction, accuracy, noise):
        staged = numpy.pad(image.astype(numpy.int32) * 128, CONTEXT + CORE, mode="symmetric")
        result = numpy.zeros(image.shape, numpy.uint8)
        for top in range(0, image.shape[0], CORE):
            for left in range(0, image.shape[1], CORE):
                block = numpy.zeros(251, numpy.int32)
                block[0], block[BLUR_SPEC], block[REMOVE_NOISE], block[ACCURACY] = 1004, width | direction << 8, noise, accuracy
                block[IMAGE_SIZE:IMAGE_SIZE + 2] = image.shape[1], image.shape[0]
                block[POSITION:POSITION + 2] = top, left
                heap = numpy.zeros(1 << 20, numpy.int32)
                heap[:TILE * TILE] = staged[CORE + top:, CORE + left:][:TILE, :TILE].ravel()
                code = self.library.kelvo_focus_tile_with(block.ctypes, heap.ctypes, variant)
                assert code == 0, block.view(numpy.uint8)[36:85].tobytes()
                core = heap[:TILE * TILE].reshape(TILE, TILE)[CONTEXT:-CONTEXT, CONTEXT:-CONTEXT]
                place = result[top:top + CORE, left:left + CORE]
                place[:] = numpy.clip((core + 64) >> 7, 0, 255)[:place.shape[0], :place.shape[1]]
        return result
