#!/usr/bin/env python3
"""Prints src/stages/weight_source.cpp: the source curve of the weight tables.

Entry n of a curve of exponent g is 2^28 times the slope of the inverse tone curve over one 1/255 step of the linear
scale: floor(2^28 * 255^(1 - 1/g) * (n^(1/g) - (n-1)^(1/g))). Entry 0, where the slope has no bound, is 2^32 - 1. Sixty
digits are used because one entry lies 3.9e-5 from an integer, closer than double arithmetic errs.
"""

from decimal import Decimal, getcontext

from table_writer import emit, table

getcontext().prec = 60
EXPONENTS = [Decimal("1.6"), Decimal("1.8"), Decimal("2.0")]


def root(n, g):
    return Decimal(n) ** (1 / g) if n else Decimal(0)


def curve(g):
    scale = Decimal(2) ** 28 * Decimal(255) ** (1 - 1 / g)
    return [2**32 - 1] + [int(scale * (root(n, g) - root(n - 1, g))) for n in range(1, 512)]


emit([
    "// Made by tools/make_weight_source.py; do not edit.",
    '#include "stages/weights.h"',
    "",
    "namespace kelvo {",
    "",
    "// clang-format off",
    *table("const uint32_t kWeightSource[4][512]", [[2**28] * 512] + [curve(g) for g in EXPONENTS]),
    "// clang-format on",
    "",
    "}  // namespace kelvo",
])
