"""Writes constant tables as C++ source: what the make_*.py generators share."""

import sys


def rows(values, width=118):
    """Lines of comma-separated integers, each at most `width` columns."""
    line = "   "
    for value in values:
        word = f" {value},"
        if len(line) + len(word) > width:
            yield line
            line = "   "
        line += word
    yield line


def table(declaration, curves):
    """One two-dimensional table: a brace of integers per curve."""
    yield f"{declaration} = {{"
    for values in curves:
        yield "  {"
        yield from rows(values)
        yield "  },"
    yield "};"


def emit(lines):
    sys.stdout.write("\n".join(lines) + "\n")
