#!/usr/bin/env python3
"""Prints src/stages/tone_tables.cpp: the forward and inverse tone curves.

Curve k has the exponent p/q below. Every entry is the exact floor of the real value, found with integers only:
floor(scale * (n/d)^(p/q)) is the largest y with y^q * d^p <= scale^q * n^p. The last entry stands twice, so that every
entry has a next one.
"""

from table_writer import emit, table

EXPONENTS = [(1, 1), (8, 5), (9, 5), (2, 1)]
LINEAR_WHITE = 255 * 65536  # linear value of level 255
DISPLAY_WHITE = 255 * 128   # display value of level 255


def floor_power(scale, n, d, p, q):
    low, high = 0, 2 * scale
    limit = scale**q * n**p
    while low < high:
        middle = (low + high + 1) // 2
        if middle**q * d**p <= limit:
            low = middle
        else:
            high = middle - 1
    return low


def forward(p, q):
    return [floor_power(LINEAR_WHITE, min(level, 255), 255, p, q) for level in range(257)]


def inverse(p, q):
    # The index is a linear value >> 12, so index 4080 is white.
    return [floor_power(DISPLAY_WHITE, min(index, 4095), 4080, q, p) for index in range(4097)]


emit([
    "// Made by tools/make_tone_tables.py; do not edit.",
    '#include "stages/tone_tables.h"',
    "",
    "namespace kelvo {",
    "",
    "// clang-format off",
    *table("const int32_t kForwardTone[4][257]", [forward(p, q) for p, q in EXPONENTS]),
    "",
    *table("const int16_t kInverseTone[4][4097]", [inverse(p, q) for p, q in EXPONENTS]),
    "// clang-format on",
    "",
    "}  // namespace kelvo",
])
