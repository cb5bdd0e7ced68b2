#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""Writes common/font_12x24.h, the bitmap font of the pictures.

make_font.py FONT.psfu.gz > common/font_12x24.h

FONT is spleen-12x24 of Debian's package fonts-spleen, in
/usr/share/consolefonts. A console font (PSF version 2) has a header of eight
32-bit words, one bitmap for each glyph, and the characters of each glyph in
UTF-8.
"""

import argparse
import gzip
import struct
import sys

MAGIC = 0x864AB572
END_OF_GLYPH = b"\xff"
START_OF_SEQUENCE = b"\xfe"
PRINTABLE_ASCII = range(0x20, 0x7F)
WIDTH, HEIGHT = 12, 24

HEAD = """\
// SPDX-License-Identifier: BSD-2-Clause
// Copyright (c) 2018-2020, Frederic Cambus
//
// The printable ASCII characters of the font Spleen 12x24, written by
// dev/make_font.py. Licence: common/font_12x24.LICENSE.

#pragma once

#include <array>
#include <cstdint>

namespace wren {

inline constexpr unsigned kGlyphColumns = %d;
inline constexpr unsigned kGlyphRows = %d;
inline constexpr char kFirstGlyph = ' ';
inline constexpr char kLastGlyph = '~';

/// One glyph for each character from `kFirstGlyph` to `kLastGlyph`. A value is a row, from top to
/// bottom; bit 11 is the left pixel.
// clang-format off
inline constexpr std::array<std::array<std::uint16_t, kGlyphRows>, %d> kGlyphs = {{
"""

TAIL = """\
}};
// clang-format on

}  // namespace wren
"""


def read_glyphs(path):
    """The rows of each glyph, by character."""
    data = gzip.open(path).read()
    magic, _, header, _, count, size, height, width = struct.unpack_from("<8I", data)
    if (magic, width, height) != (MAGIC, WIDTH, HEIGHT):
        sys.exit(f"make_font: {path} is not a console font of {WIDTH} x {HEIGHT} pixels")
    glyphs = {}
    names = data[header + count * size:].split(END_OF_GLYPH)
    for index, characters in enumerate(names[:count]):
        bitmap = data[header + index * size:header + (index + 1) * size]
        rows = [row >> 4 for row, in struct.iter_unpack(">H", bitmap)]
        for character in characters.split(START_OF_SEQUENCE)[0].decode():
            glyphs[ord(character)] = rows
    return glyphs


def main(path):
    glyphs = read_glyphs(path)
    print(HEAD % (WIDTH, HEIGHT, len(PRINTABLE_ASCII)), end="")
    for code in PRINTABLE_ASCII:
        values = [f"0x{row:03X}" for row in glyphs[code]]
        print(f"    // '{chr(code)}'")
        print("    {" + ", ".join(values[:12]) + ",")
        print("     " + ", ".join(values[12:]) + "},")
    print(TAIL, end="")


if __name__ == "__main__":
    arguments = argparse.ArgumentParser(description="Writes common/font_12x24.h to standard output.")
    arguments.add_argument("font", help="spleen-12x24.psfu.gz of the package fonts-spleen")
    main(arguments.parse_args().font)
