#!/bin/bash
# Makes the pictures of cli_test.sh in the current folder: gray, RGB, RGBA, 16 bit, CMYK and Lab, a large one, and a
# JPEG with metadata.
set -e
vips gaussnoise noise.v 150 140 --mean 128 --sigma 120 --seed 7
vips gaussblur noise.v soft.v 1.5
vips cast soft.v gray.png uchar
vips bandjoin "gray.png gray.png gray.png" rgb.v
vips copy rgb.v rgb.png --interpretation srgb
vips bandjoin "rgb.png gray.png" rgba.v
vips copy rgba.v rgba.png --interpretation srgb
vips linear soft.v deep.v 250 0
vips cast deep.v deep16.v ushort
vips copy deep16.v deep.png --interpretation grey16
vips copy deep16.v deep.tif --interpretation grey16
vips jpegsave rgb.png plain.jpg --Q 90 --profile srgb
vips icc_transform rgb.png cmyk.tif cmyk --embedded --input-profile srgb
vips colourspace rgb.png lab.v lab
vips tiffsave lab.v lab.tif
vips replicate rgb.png big.png 14 14
python3 - <<'PYTHON'
# A JPEG with orientation 6, a camera name and an XMP packet.
import struct
plain = open("plain.jpg", "rb").read()
make = b"Obscura\0"
entries = struct.pack("<HHII", 0x010F, 2, len(make), 38) + struct.pack("<HHIHH", 0x0112, 3, 1, 6, 0)
exif = b"Exif\0\0II*\0" + struct.pack("<IH", 8, 2) + entries + struct.pack("<I", 0) + make
xmp = b"http://ns.adobe.com/xap/1.0/\0<x:xmpmeta xmlns:x='adobe:ns:meta/'/>"
segments = b"".join(b"\xff\xe1" + struct.pack(">H", len(s) + 2) + s for s in (exif, xmp))
body = plain[2:]
while body[:2] == b"\xff\xe1" or body[:2] == b"\xff\xe0":
    body = body[2 + struct.unpack(">H", body[2:4])[0]:]
open("photo.jpg", "wb").write(b"\xff\xd8" + segments + body)
PYTHON
