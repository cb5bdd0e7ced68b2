// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The pages of golden jobs: named generators that give the same bytes on every
// machine, and PGM files. A byte is ink, 0 bare paper and 255 full ink, so a
// picture viewer shows the PGM files in negative.

#ifndef WREN_TESTS_GOLDEN_PAGE_SOURCE_H_
#define WREN_TESTS_GOLDEN_PAGE_SOURCE_H_

#include <cstdint>
#include <string>
#include <vector>

namespace golden {

/// The pixels that `source` names, rows of `rowBytes` bytes. Sources:
///   flat:LEVEL    every byte is LEVEL
///   ramp          0 at the left to 255 at the right
///   noise:SEED    evenly spread bytes
///   sparse:SEED   one byte in sixteen is 255, the others are 0
///   photo:SEED    a slanted ramp with some noise on it
///   rows:A,B,...  full ink in the rows A, B, ... and bare paper elsewhere
///   column:X      full ink in column X only
///   bytes:HEX     these bytes, two digits each
///   pgm:FILE      a plain (P2) PGM file of that size in `folder`
/// Throws std::runtime_error for anything else and for a PGM of another size.
std::vector<uint8_t> pagePixels(const std::string& source, uint32_t rowBytes, uint32_t height,
                                const std::string& folder);

}  // namespace golden

#endif  // WREN_TESTS_GOLDEN_PAGE_SOURCE_H_
