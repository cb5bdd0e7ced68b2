#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""Makes the documents in examples/ anew.

make_examples.py FOLDER; needs ghostscript and qrencode. The pictures are
the same on every run; the PDFs differ only in their dates.
"""

import argparse
import math
import pathlib
import struct
import subprocess
import zlib

DOT = 72 / 203  # points; codes are drawn in whole dots, so that all modules have the same width
MM = 72 / 25.4
RECEIPT_NUMBER = "WREN-000042"
RECEIPT_LINK = "https://example.org/r/000042"

ITEMS = [
    ("2 x Coffee", "5.60"),
    ("1 x Cheese roll", "3.90"),
    ("1 x Apple cake", "4.20"),
    ("1 x Water 0.5 l", "2.10"),
]

# Widths of bars and gaps of the Code 128 symbols 0 to 106 (ISO/IEC 15417).
CODE128 = (
    "212222 222122 222221 121223 121322 131222 122213 122312 132212 221213 221312 231212 112232"
    " 122132 122231 113222 123122 123221 223211 221132 221231 213212 223112 312131 311222 321122"
    " 321221 312212 322112 322211 212123 212321 232121 111323 131123 131321 112313 132113 132311"
    " 211313 231113 231311 112133 112331 132131 113123 113321 133121 313121 211331 231131 213113"
    " 213311 213131 311123 311321 331121 312113 312311 332111 314111 221411 431111 111224 111422"
    " 121124 121421 141122 141221 112214 112412 122114 122411 142112 142211 241211 221114 413111"
    " 241112 134111 111242 121142 121241 114212 124112 124211 411212 421112 421211 212141 214121"
    " 412121 111143 111341 131141 114113 114311 411113 411311 113141 114131 311141 411131 211412"
    " 211214 211232 2331112"
).split()


def code128_modules(text):
    """One character per module, '1' for a bar: code set B, without quiet zones."""
    start, stop = 104, 106
    values = [ord(c) - 32 for c in text]
    check = (start + sum(i * v for i, v in enumerate(values, 1))) % 103
    modules = ""
    for symbol in [start, *values, check, stop]:
        for i, width in enumerate(CODE128[symbol]):
            modules += "10"[i % 2] * int(width)
    return modules


def qr_rows(text):
    """Rows of '0' and '1' without the quiet zone."""
    art = subprocess.run(
        ["qrencode", "-t", "ASCII", "-m", "0", "-l", "M", text],
        check=True, capture_output=True, text=True).stdout
    return ["".join("1" if c == "#" else "0" for c in line[::2]) for line in art.splitlines()]


def mask(rows, x, y, module_dots, row_dots):
    """PostScript that paints rows of modules with the lower left corner at (x, y) points.

    A mask and not rectangles: renderers that paint every touched pixel would
    make some rectangles one dot wider than others of the same size.
    """
    width = len(rows[0])
    data = ""
    for row in rows:
        bits = row + "0" * (-len(row) % 8)
        data += "".join(f"{int(bits[i:i + 8], 2):02X}" for i in range(0, len(bits), 8))
    w, h = width * module_dots * DOT, len(rows) * row_dots * DOT
    return (f"gsave {x:.4f} {y:.4f} translate {w:.4f} {h:.4f} scale\n"
            f"{width} {len(rows)} true [{width} 0 0 {-len(rows)} 0 {len(rows)}] {{<{data}>}} imagemask grestore\n")


# A wren in a unit square: round body, cocked tail, small beak.
LOGO = """
/wrenlogo { gsave translate dup scale
  newpath 0.10 0.42 moveto 0.10 0.75 0.45 0.80 0.62 0.52 curveto
  0.70 0.58 0.78 0.80 0.84 0.98 curveto 0.96 0.92 lineto 0.90 0.70 0.86 0.48 0.74 0.30 curveto
  0.60 0.06 0.22 0.06 0.10 0.42 curveto closepath fill
  newpath 0.11 0.52 moveto -0.04 0.50 lineto 0.12 0.43 lineto closepath fill
  1 setgray newpath 0.21 0.53 0.03 0 360 arc fill
  0.02 setlinewidth newpath 0.36 0.30 moveto 0.46 0.18 0.60 0.22 0.68 0.36 curveto stroke
  newpath 0.40 0.38 moveto 0.48 0.28 0.58 0.30 0.64 0.42 curveto stroke
  0 setgray 0.025 setlinewidth
  newpath 0.38 0.16 moveto 0.36 0.02 lineto 0.28 0.0 lineto stroke
  newpath 0.50 0.16 moveto 0.48 0.02 lineto 0.40 0.0 lineto stroke
  grestore } def
"""


class Receipt:
    """A receipt under construction, from the top down, in points."""

    def __init__(self, paper_mm, print_mm, length_mm):
        self.width, self.height = paper_mm * MM, length_mm * MM
        self.left = (paper_mm - print_mm) / 2 * MM + 2
        self.right = self.width - self.left
        self.y = self.height
        self.body = LOGO

    def text(self, words, size, bold=False, where="left"):
        font = "Helvetica-Bold" if bold else "Helvetica"
        place = {
            "left": f"{self.left:.2f} {self.y:.2f} moveto",
            "centre": f"dup stringwidth pop 2 div {self.width / 2:.2f} exch sub {self.y:.2f} moveto",
            "right": f"dup stringwidth pop {self.right:.2f} exch sub {self.y:.2f} moveto",
        }[where]
        self.body += f"/{font} {size} selectfont ({words}) {place} show\n"

    def down(self, points):
        self.y -= points

    def rule(self, thickness):
        self.body += (f"{thickness} setlinewidth {self.left:.2f} {self.y:.2f} moveto "
                      f"{self.right:.2f} {self.y:.2f} lineto stroke\n")

    def logo(self, size):
        self.down(size)
        self.body += f"{size} {(self.width - size) / 2:.2f} {self.y:.2f} wrenlogo\n"

    def code(self, rows, module_dots, row_dots):
        self.down(len(rows) * row_dots * DOT)
        x = (self.width - len(rows[0]) * module_dots * DOT) / 2
        self.body += mask(rows, x, self.y, module_dots, row_dots)

    def write(self, path):
        page = f"<</PageSize [{self.width:.4f} {self.height:.4f}]>> setpagedevice\n"
        subprocess.run(
            ["gs", "-q", "-dBATCH", "-dNOPAUSE", "-sDEVICE=pdfwrite", "-dAutoRotatePages=/None",
             "-dCompatibilityLevel=1.4", f"-sOutputFile={path}", "-"],
            check=True, input=page + self.body + "showpage\n", text=True)


def receipt(path, paper_mm, print_mm, size):
    paper = Receipt(paper_mm, print_mm, 150)
    paper.down(8)
    paper.logo(5 * size)
    paper.down(2 * size)
    paper.text("Corner Cafe", 1.6 * size, bold=True, where="centre")
    paper.down(1.3 * size)
    paper.text("1 Example Street", size, where="centre")
    paper.down(1.3 * size)
    paper.text(f"Receipt {RECEIPT_NUMBER}", size, where="centre")
    paper.down(0.7 * size)
    paper.rule(0.7)
    for name, price in ITEMS:
        paper.down(1.3 * size)
        paper.text(name, size)
        paper.text(price, size, where="right")
    paper.down(0.7 * size)
    paper.rule(0.7)
    paper.down(1.6 * size)
    paper.text("Total EUR", 1.4 * size, bold=True)
    paper.text("15.80", 1.4 * size, bold=True, where="right")
    paper.down(1.3 * size)
    paper.text("incl. 19 % VAT", 0.9 * size)
    paper.text("2.52", 0.9 * size, where="right")
    paper.down(1.5 * size)
    paper.code([code128_modules(RECEIPT_NUMBER)], 2, 80)
    paper.down(1.2 * size)
    paper.text(RECEIPT_NUMBER, 0.9 * size, where="centre")
    paper.down(1.8 * size)
    paper.code(qr_rows(RECEIPT_LINK), 6, 6)
    paper.down(2.6 * size)
    paper.text("Thank you, see you soon!", size, bold=True, where="centre")
    paper.write(path)


def write_png(path, width, height, grey, dpi=203):
    """grey: a function (x, y) -> 0 (black) to 255 (white)."""
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    rows = b"".join(
        b"\0" + bytes(max(0, min(255, round(grey(x, y)))) for x in range(width))
        for y in range(height))
    per_metre = round(dpi / 0.0254)
    pathlib.Path(path).write_bytes(
        b"\x89PNG\r\n\x1a\n"
        + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0))
        + chunk(b"pHYs", struct.pack(">IIB", per_metre, per_metre, 1))
        + chunk(b"IDAT", zlib.compress(rows, 9))
        + chunk(b"IEND", b""))


def lattice(ix, iy, seed):
    n = (ix * 374761393 + iy * 668265263 + seed * 144269504) & 0xFFFFFFFF
    n = ((n ^ (n >> 13)) * 1274126177) & 0xFFFFFFFF
    return ((n ^ (n >> 16)) & 0xFFFF) / 65535


def noise(x, y, seed):
    """Smooth value noise, 0 to 1."""
    ix, iy = math.floor(x), math.floor(y)
    fx, fy = x - ix, y - iy
    fx, fy = fx * fx * (3 - 2 * fx), fy * fy * (3 - 2 * fy)
    top = lattice(ix, iy, seed) * (1 - fx) + lattice(ix + 1, iy, seed) * fx
    bottom = lattice(ix, iy + 1, seed) * (1 - fx) + lattice(ix + 1, iy + 1, seed) * fx
    return top * (1 - fy) + bottom * fy


def clouds(x, y, seed, octaves=4):
    total = sum(noise(x * 2**o, y * 2**o, seed + o) / 2**o for o in range(octaves))
    return total / sum(1 / 2**o for o in range(octaves))


def landscape(width, height):
    """An evening at a lake: sun, hills behind hills, water with a path of light."""
    shore = 0.62 * height
    sun_x, sun_y = 0.68 * width, 0.30 * height

    def ridge(x, layer):
        return shore - (3 - layer) * 0.10 * height * (0.35 + clouds(x / (150 - 30 * layer), layer, 40 + layer))

    def sky(x, y):
        level = 95 + 120 * y / shore
        level += 30 * (clouds(x / 130, y / 34, 7) - 0.5) * 2
        distance = math.hypot(x - sun_x, y - sun_y)
        return 252 if distance < 26 else level + 110 * math.exp(-distance / 60)

    def land(x, y):
        level = sky(x, y)
        for layer in range(3):
            if y > ridge(x, layer):
                level = 150 - 52 * layer + 34 * (clouds(x / 9, y / 5, 60 + layer) - 0.5)
        return level

    def water(x, y):
        depth = (y - shore) / (height - shore)
        ripple = (2 + 16 * depth) * (noise(x / 26, y / (1.5 + 5 * depth), 90) - 0.5)
        level = 0.62 * land(x + ripple, max(0, 2 * shore - y * 1.0 + ripple)) + 12
        glitter = noise(x / 5, y / (1 + 3 * depth), 95) ** 3
        return level + 240 * glitter * math.exp(-((x - sun_x) / (18 + 60 * depth)) ** 2)

    def grey(x, y):
        edge = ((x / width - 0.5) ** 2 + (y / height - 0.5) ** 2) * 70
        return (land(x, y) if y < shore else water(x, y)) - edge + 6 * (lattice(x, y, 3) - 0.5)

    return grey


# A feather and two flowers, drawn with Bezier curves.
DRAWING = """
<</PageSize [204.3 204.3]>> setpagedevice 0.3547 dup scale 1 setlinecap 1 setlinejoin
/feather { 2.2 setlinewidth newpath 90 60 moveto 200 210 300 350 470 520 curveto stroke
  1 1 34 { /i exch def /t i 36 div def
    /px 90 t 380 mul add def /py 60 t 460 mul add t t 1 sub mul 40 mul sub def
    /r t 180 mul sin 92 mul 10 add def
    1.1 t 0.8 mul add setlinewidth
    newpath px py moveto px r 0.2 mul sub py r 0.5 mul add px r 0.55 mul sub py r 0.8 mul add
      px r 0.75 mul sub py r add curveto stroke
    newpath px py moveto px r 0.5 mul add py r 0.1 mul add px r 0.9 mul add py r 0.3 mul add
      px r 1.1 mul add py r 0.6 mul add curveto stroke
  } for } def
/flower { gsave translate 0 1 11 { pop 30 rotate 1.6 setlinewidth
    newpath 0 14 moveto 22 40 18 66 0 78 curveto -18 66 -22 40 0 14 curveto stroke
    0.8 setlinewidth newpath 0 18 moveto 0 60 lineto stroke } for
  2.4 setlinewidth newpath 0 0 13 0 360 arc stroke grestore } def
feather 440 150 flower 130 440 flower
3 setlinewidth newpath 12 12 moveto 564 12 lineto 564 564 lineto 12 564 lineto closepath stroke
showpage
"""


def pencil_drawing():
    """The drawing as a scanner sees it: uneven background, strokes of uneven strength."""
    pgm = subprocess.run(
        ["gs", "-q", "-dBATCH", "-dNOPAUSE", "-sDEVICE=pgmraw", "-r203", "-dGraphicsAlphaBits=4",
         "-sOutputFile=%stdout", "-"], check=True, input=DRAWING.encode(), capture_output=True).stdout
    lines = pgm.split(b"\n", 3)
    width, height = map(int, lines[2].split()) if lines[1].startswith(b"#") else map(int, lines[1].split())
    pixels = pgm[-width * height:]

    def grey(x, y):
        paper = 246 - 40 * (x / width) * (y / height) - 10 * clouds(x / 90, y / 90, 11)
        stroke = (255 - pixels[y * width + x]) / 255 * (0.55 + 0.45 * clouds(x / 40, y / 40, 23))
        return paper * (1 - 0.85 * stroke) + 5 * (lattice(x, y, 5) - 0.5)

    return width, height, grey


def order_text():
    lines = ["Corner Cafe", "Kitchen order 42", "-" * 24]
    lines += [name for name, _ in ITEMS]
    lines += ["-" * 24, "Table 7, without onions", ""]
    return "\n".join(lines)


def main():
    arguments = argparse.ArgumentParser(description="Makes the documents in examples/ anew.")
    arguments.add_argument("folder", type=pathlib.Path, help="where they are written, such as examples")
    folder = arguments.parse_args().folder
    receipt(folder / "receipt.pdf", 80, 72, 10)
    receipt(folder / "receipt-58mm.pdf", 58, 48, 8)
    write_png(folder / "photo.png", 576, 432, landscape(576, 432))
    write_png(folder / "drawing.png", *pencil_drawing())
    (folder / "order.txt").write_text(order_text())


if __name__ == "__main__":
    main()
