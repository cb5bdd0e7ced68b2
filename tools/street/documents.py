# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""Documents with a number: receipts, photos and labels in every format that a till sends.

The number stands in two QR codes, one at the top and one at the bottom, so that a piece
of paper that was cut off is known from a whole one.
"""

import ctypes
import functools
import io
import random
import struct
import subprocess

from PIL import Image, ImageDraw

KINDS = ("receipt", "photo", "label")
PDF, PNG, JPEG, TEXT = "application/pdf", "image/png", "image/jpeg", "text/plain"
PWG, URF = "image/pwg-raster", "image/urf"

_WIDTH_PX = 576
_DPI = 203
_MODULE_PX = 6
_QUIET_MODULES = 4


def codes_of(number):
    """The texts of the two QR codes, top and bottom."""
    return f"wren-{number}-top", f"wren-{number}-end"


def document(number, kind, format, seed):
    """The bytes of a document. The same arguments give the same bytes."""
    rng = random.Random(f"{seed}/{number}")
    if format == TEXT:
        return _text(number, rng)
    if format == PDF and kind != "photo":
        return _pdf(number, kind, rng)
    picture = _picture(number, kind, rng)
    if format in (PWG, URF):
        return _raster(picture, _WRITE_PWG if format == PWG else _WRITE_APPLE)
    out = io.BytesIO()
    name = {PNG: "PNG", JPEG: "JPEG", PDF: "PDF"}[format]
    picture.save(out, name, **({"resolution": _DPI} if format == PDF else {"dpi": (_DPI, _DPI)}))
    return out.getvalue()


@functools.lru_cache(maxsize=4096)
def _modules(text):
    """The modules of a QR code with its quiet zone, as rows of booleans."""
    lines = subprocess.run(
        ["qrencode", "-t", "ASCIIi", "-m", "0", "-l", "M", "-o", "-", text],
        check=True, capture_output=True, text=True).stdout.splitlines()
    return [[line[i] == " " for i in range(0, len(line), 2)] for line in lines if line]


def _lines(kind, rng):
    count = {"receipt": rng.randint(8, 40), "photo": 2, "label": 1}[kind]
    goods = ("Coffee", "Bread", "Milk", "Apples", "Cheese", "Tea", "Soap", "Stamps")
    return [f"{rng.choice(goods):<18}{rng.randint(1, 9)} x {rng.randint(10, 999) / 100:6.2f}"
            for _ in range(count)]


def _paste_code(picture, text, top):
    modules = _modules(text)
    side = (len(modules) + 2 * _QUIET_MODULES) * _MODULE_PX
    left = (_WIDTH_PX - side) // 2
    draw = ImageDraw.Draw(picture)
    for y, row in enumerate(modules):
        for x, dark in enumerate(row):
            if dark:
                at = (left + (x + _QUIET_MODULES) * _MODULE_PX, top + (y + _QUIET_MODULES) * _MODULE_PX)
                draw.rectangle((*at, at[0] + _MODULE_PX - 1, at[1] + _MODULE_PX - 1), fill=0)
    return side


def _picture(number, kind, rng):
    lines = _lines(kind, rng)
    top, end = codes_of(number)
    code_px = (len(_modules(end)) + 2 * _QUIET_MODULES) * _MODULE_PX
    middle_px = 30 * len(lines) + (rng.randint(150, 500) if kind == "photo" else 0)
    picture = Image.new("L", (_WIDTH_PX, 2 * code_px + middle_px), 255)
    y = _paste_code(picture, top, 0)
    draw = ImageDraw.Draw(picture)
    for line in lines:
        draw.text((40, y + 8), line, fill=0)
        y += 30
    if kind == "photo":
        shades = Image.linear_gradient("L").resize((400, middle_px - 30 * len(lines) - 20))
        picture.paste(shades, (88, y + 10))
    _paste_code(picture, end, 2 * code_px + middle_px - code_px)
    return picture


def _pdf(number, kind, rng):
    """Real text and rectangles: what a till program makes. Lengths in points."""
    lines, module, line_height = _lines(kind, rng), 2.2, 12.0
    top, end = codes_of(number)
    side = (len(_modules(top)) + 2 * _QUIET_MODULES) * module
    width, height = 226.77, 2 * side + line_height * (len(lines) + 1)
    content = []

    def draw_code(text, upper):
        for y, row in enumerate(_modules(text)):
            for x, dark in enumerate(row):
                if dark:
                    left = (width - side) / 2 + (x + _QUIET_MODULES) * module
                    bottom = upper - (y + _QUIET_MODULES + 1) * module
                    content.append(f"{left:.3f} {bottom:.3f} {module:.3f} {module:.3f} re f")

    draw_code(top, height)
    y = height - side
    for line in lines:
        y -= line_height
        content.append(f"BT /F1 9 Tf 20 {y:.2f} Td ({line}) Tj ET")
    draw_code(end, side)
    stream = "\n".join(content).encode()
    objects = [
        b"<</Type/Catalog/Pages 2 0 R>>",
        b"<</Type/Pages/Kids[3 0 R]/Count 1>>",
        b"<</Type/Page/Parent 2 0 R/MediaBox[0 0 %.2f %.2f]/Contents 4 0 R"
        b"/Resources<</Font<</F1 5 0 R>>>>>>" % (width, height),
        b"<</Length %d>>stream\n%s\nendstream" % (len(stream), stream),
        b"<</Type/Font/Subtype/Type1/BaseFont/Courier>>",
    ]
    out, offsets = io.BytesIO(), []
    out.write(b"%PDF-1.4\n")
    for index, body in enumerate(objects, 1):
        offsets.append(out.tell())
        out.write(b"%d 0 obj%s endobj\n" % (index, body))
    xref = out.tell()
    out.write(b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1))
    out.write(b"".join(b"%010d 00000 n \n" % offset for offset in offsets))
    out.write(b"trailer<</Size %d/Root 1 0 R>>startxref\n%d\n%%%%EOF\n" % (len(objects) + 1, xref))
    return out.getvalue()


def _text(number, rng):
    """Text has no QR code: its number is read from the bytes that it has to print."""
    return ("\n".join([f"Receipt {number}", *_lines("receipt", rng), f"End {number}"]) + "\n").encode()


# Offsets in bytes of fields of cups_page_header2_t, which <cups/raster.h> declares.
_HEADER_BYTES = 1796
_RESOLUTION, _PAGE_SIZE, _WIDTH, _HEIGHT = 276, 352, 372, 376
_BITS_PER_COLOUR, _BITS_PER_PIXEL, _BYTES_PER_LINE, _COLOUR_SPACE, _COLOURS = 384, 388, 392, 400, 420
_GREY = 18
_WRITE_PWG, _WRITE_APPLE = 3, 4


def _raster(picture, mode):
    """The picture as a page of PWG (5102.4) or Apple raster, written by libcups."""
    cups = ctypes.CDLL("libcups.so.2")
    writer = ctypes.CFUNCTYPE(ctypes.c_ssize_t, ctypes.c_void_p, ctypes.POINTER(ctypes.c_ubyte), ctypes.c_size_t)
    out = bytearray()

    def take(_, data, size):
        out.extend(ctypes.string_at(data, size))
        return size

    header = bytearray(_HEADER_BYTES)
    header[:10] = b"PwgRaster\0"
    fields = {_RESOLUTION: _DPI, _RESOLUTION + 4: _DPI, _WIDTH: picture.width, _HEIGHT: picture.height,
              _PAGE_SIZE: picture.width * 72 // _DPI, _PAGE_SIZE + 4: picture.height * 72 // _DPI,
              _BITS_PER_COLOUR: 8, _BITS_PER_PIXEL: 8, _BYTES_PER_LINE: picture.width,
              _COLOUR_SPACE: _GREY, _COLOURS: 1}
    for offset, value in fields.items():
        struct.pack_into("=I", header, offset, value)
    callback = writer(take)
    cups.cupsRasterOpenIO.restype = ctypes.c_void_p
    raster = ctypes.c_void_p(cups.cupsRasterOpenIO(callback, None, mode))
    pixels = picture.tobytes()
    if (not raster or not cups.cupsRasterWriteHeader2(raster, bytes(header))
            or cups.cupsRasterWritePixels(raster, pixels, len(pixels)) != len(pixels)):
        raise RuntimeError("libcups does not write the raster page")
    cups.cupsRasterClose(raster)
    return bytes(out)
