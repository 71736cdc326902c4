"""Measures what the enlargement keeps: PSNR and SSIM against the true picture, beside other ways of enlarging twofold.

Photographs, scans and drawings are made gray and even in size, halved by averaging 2 x 2 pixels, stored with 8 bits and
enlarged again by `kelvo enlarge` and by plain doubling (nearest), bilinear and Lanczos (three lobes) interpolation, all
about the same centre. Pixel drawings are drawn twice instead, in black and white without averaging, at one and at
two pixels per unit: the first is enlarged, the second is the truth.

PSNR is in dB against 255. Overshoot is the mean amount, in grey levels, by which pixels leave the range of the 3 x 3
source pixels around them: halos. Shift is the mean brightness of the result less that of the truth, in grey levels. A
border of 8 pixels is left out.
"""

import argparse
import os
import subprocess
import tempfile

import numpy
import skimage
from PIL import Image, ImageDraw, ImageFont
from skimage import color, io, util
from skimage.metrics import peak_signal_noise_ratio, structural_similarity

PHOTOS = ["astronaut.png", "camera.png", "chelsea.png", "coffee.png", "motorcycle_left.png", "rocket.jpg"]
SCANS = ["page.png", "text.png", "bw_text.png", "horse.png"]
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
BORDER = 8
SIDE = 400  # of drawings, in pixels at scale 2


def gray(path):
    image = io.imread(path)
    if image.ndim == 3:
        image = color.rgb2gray(image[..., :3])
    image = util.img_as_ubyte(image)
    return image[:image.shape[0] // 2 * 2, :image.shape[1] // 2 * 2]


def halved(image):
    quads = image.reshape(image.shape[0] // 2, 2, image.shape[1] // 2, 2).astype(float)
    return numpy.rint(quads.mean(axis=(1, 3))).astype(numpy.uint8)


def canvas(scale, mode="L"):
    image = Image.new(mode, (SIDE // 2 * scale, SIDE // 2 * scale), 255)
    return image, ImageDraw.Draw(image)


def drawn_lines(scale, mode="L"):
    """A fan of thin lines, and rings."""
    image, draw = canvas(scale, mode)
    for step in range(12):
        angle = numpy.pi * step / 24
        end = [scale * (6 + 120 * f(angle)) for f in (numpy.cos, numpy.sin)]
        draw.line([scale * 6, scale * 6, *end], fill=0, width=scale)
    for radius in range(8, 60, 8):
        box = [scale * (134 - radius), scale * (134 - radius), scale * (134 + radius), scale * (134 + radius)]
        draw.ellipse(box, outline=0, width=scale)
    return numpy.array(image.convert("L"))


def drawn_text(scale, mode="L"):
    image, draw = canvas(scale, mode)
    top = 4
    for size in (9, 11, 14, 18, 24):
        font = ImageFont.truetype(FONT, size * scale)
        for text in ("The quick brown fox jumps over", "0123456789 (a + b) / c & 3 x 7"):
            draw.text((scale * 4, scale * top), text, fill=0, font=font)
            top += size + 5
    return numpy.array(image.convert("L"))


def subjects(folder):
    """(group, name, small picture, true picture)"""
    for group, names in (("photographs", PHOTOS), ("scans", SCANS)):
        for name in names:
            truth = gray(os.path.join(folder, name))
            yield group, name, halved(truth), truth
    for name, draw in (("lines", drawn_lines), ("text", drawn_text)):
        yield "drawings", name, halved(draw(2)), draw(2)
        yield "pixel drawings", name, draw(1, "1"), draw(2, "1")


def interpolated(kernel):
    def enlarge(image):
        return numpy.array(Image.fromarray(image).resize((2 * image.shape[1], 2 * image.shape[0]), kernel))
    return enlarge


class Kelvo:
    def __init__(self, program, folder):
        self.program, self.folder = program, folder

    def __call__(self, image):
        source, target = (os.path.join(self.folder, f"{kind}.png") for kind in ("in", "out"))
        io.imsave(source, image, check_contrast=False)
        subprocess.run([self.program, "enlarge", source, "-o", target, "--force", "--quiet"], check=True)
        return io.imread(target)


def overshoot(small, large):
    padded = numpy.pad(small.astype(int), 1, mode="edge")
    around = [padded[y:y + small.shape[0], x:x + small.shape[1]] for y in range(3) for x in range(3)]
    low, high = (numpy.kron(f.reduce(around), numpy.ones((2, 2), int)) for f in (numpy.minimum, numpy.maximum))
    return float(numpy.mean(numpy.maximum(large - high, 0) + numpy.maximum(low - large, 0)))


def measures(small, large, truth):
    inner = (slice(BORDER, -BORDER),) * 2
    return (peak_signal_noise_ratio(truth[inner], large[inner]),
            structural_similarity(truth[inner], large[inner], gaussian_weights=True, use_sample_covariance=False),
            overshoot(small, large.astype(int)),
            float(numpy.mean(large[inner].astype(float) - truth[inner])))


def print_table(rows, methods):
    print("| picture | " + " | ".join(f"{measure}: {' | '.join(methods)}" for measure in ("PSNR", "SSIM"))
          + " | overshoot: kelvo | Lanczos | shift: kelvo | Lanczos |")
    print("|" + "---|" * (5 + 2 * len(methods)))
    for group in dict.fromkeys(row[0] for row in rows):
        chosen = [row for row in rows if row[0] == group]
        mean = (group, f"**{group}, mean**", {m: numpy.mean([row[2][m] for row in chosen], axis=0) for m in methods})
        for _, name, values in [*chosen, mean]:
            cells = [f"{values[m][0]:.2f}" for m in methods] + [f"{values[m][1]:.4f}" for m in methods]
            cells += [f"{values[m][2]:.2f}" for m in ("kelvo", "Lanczos")]
            cells += [f"{values[m][3]:+.2f}" for m in ("kelvo", "Lanczos")]
            print(f"| {name if name.startswith('*') else group + ': ' + name} | " + " | ".join(cells) + " |")


def save_picture(path, panes, methods):
    """Details of the small pictures as every method enlarges them, magnified."""
    zoom = 2
    columns = []
    for method, enlarge in methods.items():
        column = []
        for small, top, left in panes:
            large = enlarge(small)[2 * top:2 * top + 120, 2 * left:2 * left + 120]
            column.append(numpy.pad(numpy.kron(large, numpy.ones((zoom, zoom), numpy.uint8)), 3, constant_values=255))
        title = Image.new("L", (column[0].shape[1], 26), 255)
        ImageDraw.Draw(title).text((6, 4), method, fill=0, font=ImageFont.truetype(FONT, 16))
        columns.append(numpy.vstack([numpy.array(title), *column]))
    io.imsave(path, numpy.hstack(columns), check_contrast=False)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default="build/bench/host/kelvo")
    parser.add_argument("--photos", default=os.path.join(os.path.dirname(skimage.__file__), "data"), metavar="FOLDER")
    parser.add_argument("--picture", metavar="FILE", help="write details side by side, too")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        methods = {"kelvo": Kelvo(arguments.program, folder), "nearest": interpolated(Image.NEAREST),
                   "bilinear": interpolated(Image.BILINEAR), "Lanczos": interpolated(Image.LANCZOS)}
        pictures = list(subjects(arguments.photos))
        rows = [(group, name, {method: measures(small, enlarge(small), truth) for method, enlarge in methods.items()})
                for group, name, small, truth in pictures]
        print_table(rows, methods)
        if arguments.picture:
            small = {(group, name): picture for group, name, picture, _ in pictures}
            panes = [(small["photographs", "astronaut.png"], 45, 90), (small["scans", "page.png"], 20, 60),
                     (small["pixel drawings", "lines"], 0, 0), (small["pixel drawings", "text"], 62, 2)]
            save_picture(arguments.picture, panes, methods)


main()
