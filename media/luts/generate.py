#!/usr/bin/env python3
"""Writes the bundled 3D lookup tables as .cube files.

    media/luts/generate.py [--out FOLDER]

identity.cube       17 steps, every colour to itself
swap_red_blue.cube  17 steps, red and blue exchanged: a wrong byte or axis
                    order shows at once
warm.cube           33 steps, a warm film grade: lifted blacks, a soft
                    S-curve, amber highlights and a little less saturation
Python 3 standard library only.
"""
import argparse
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))


def identity(r, g, b):
    return r, g, b


def swap_red_blue(r, g, b):
    return b, g, r


def warm(r, g, b):
    def curve(x):
        s = x * x * (3.0 - 2.0 * x)
        return 0.04 + 0.94 * (x + 0.35 * (s - x))
    r, g, b = curve(r), curve(g), curve(b)
    luma = 0.299 * r + 0.587 * g + 0.114 * b
    r, g, b = (luma + 0.85 * (c - luma) for c in (r, g, b))
    highlight = luma * luma
    r = r * 1.06 + 0.03 * highlight
    g = g * 1.01 + 0.01 * highlight
    b = b * 0.88
    return tuple(min(max(c, 0.0), 1.0) for c in (r, g, b))


TABLES = [
    ("identity.cube", "Identity", 17, identity),
    ("swap_red_blue.cube", "Red and blue exchanged", 17, swap_red_blue),
    ("warm.cube", "Warm film", 33, warm),
]


def cube(title, size, f):
    lines = ['TITLE "%s"' % title,
             "# Made by media/luts/generate.py; red changes fastest, then green, then blue.",
             "LUT_3D_SIZE %d" % size,
             "DOMAIN_MIN 0.0 0.0 0.0",
             "DOMAIN_MAX 1.0 1.0 1.0",
             ""]
    step = 1.0 / (size - 1)
    for bi in range(size):
        for gi in range(size):
            for ri in range(size):
                lines.append("%.6f %.6f %.6f" % f(ri * step, gi * step, bi * step))
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--out", default=HERE, help="folder to write into (default: this one)")
    args = parser.parse_args()
    os.makedirs(args.out, exist_ok=True)
    for name, title, size, f in TABLES:
        with open(os.path.join(args.out, name), "w", encoding="utf-8", newline="\n") as out:
            out.write(cube(title, size, f))
        print(name)
    return 0


if __name__ == "__main__":
    sys.exit(main())
