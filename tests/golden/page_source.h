// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The pages of golden jobs: named generators that give the same bytes on every
// machine, and PGM files. A byte is an ink level: 0 is paper, 255 full ink. An
// image viewer therefore shows the PGM files as negatives.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace golden {

/// The pixels of `source` in rows of `rowBytes` bytes. Sources:
///   flat:LEVEL    every byte is LEVEL
///   ramp          0 at the left to 255 at the right
///   noise:SEED    uniformly distributed bytes
///   sparse:SEED   one byte in sixteen is 255, the others are 0
///   photo:SEED    a diagonal ramp with noise
///   rows:A,B,...  full ink in the rows A, B, ... and paper elsewhere
///   column:X      full ink in column X only
///   bytes:HEX     these bytes, two hexadecimal digits each
///   pgm:FILE      a plain (P2) PGM file of this size in `folder`
/// Throws std::runtime_error for any other source and for bytes or a PGM of another size.
std::vector<std::uint8_t> pagePixels(const std::string& source, std::uint32_t rowBytes,
                                     std::uint32_t height, const std::string& folder);

}  // namespace golden
