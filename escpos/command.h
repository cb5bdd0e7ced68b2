// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// One command of a receipt printer's byte stream: where it stands, its bytes
// and what they mean. The commands known are those that the filter writes;
// this file says how long each of them is and puts them into words. It does
// not keep any state of a printer (see virtual_printer.h).

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace escpos {

enum class CommandKind {
  kNul,            // a run of 00 bytes, which a printer ignores
  kInitialise,     // 1B 40
  kHome,           // 1B 3C: opens the raster of each page
  kBitImage,       // 1B 2A m nL nH, then nL + 256 nH column bytes; m is 0 or 1
  kFeed,           // 1B 4A n: print the line, feed n units
  kCut,            // 1D 56 m; m is 0 (full) or 1 (partial)
  kDrawerPulse,    // 1B 70 m t1 t2; m is 0 or 1, times in units of 2 ms
  kDirection,      // 1B 55 n
  kBeep,           // 1B 42 repeat on-time
  kBuzzerSetup,    // 1F 1B 1F "Beep" n
  kStatusRequest,  // 1B 76
  kUnknown,        // a run of bytes up to the next command of the kinds above
  kTruncated,      // a command whose last bytes are missing at the end of the stream
};

/// A command as it stood in the stream.
struct Command {
  CommandKind kind = CommandKind::kUnknown;
  std::uint64_t offset = 0;  ///< of the first byte, from the start of the stream
  std::uint64_t length = 0;  ///< in bytes
  /// The bytes themselves; of a run (kNul, kUnknown) no more than the first kKeptRunBytes.
  std::vector<std::uint8_t> bytes;
};

inline constexpr std::size_t kKeptRunBytes = 16;
inline constexpr std::size_t kBitImageHeaderBytes = 5;

/// What the beginning of a command says about its length.
struct Measure {
  bool known = false;      ///< false: no command starts like this
  std::size_t length = 0;  ///< bytes it has at least; all of it once `start` has that many
};

/// Measures the command that begins with `start`. The bytes are the ones of the ESC/POS command
/// set, for the kinds above except the runs of unknown bytes; a NUL measures 1.
Measure measureCommand(std::span<const std::uint8_t> start);

/// The kind of the complete command `bytes`, which `measureCommand` knows.
CommandKind kindOf(std::span<const std::uint8_t> bytes);

/// The column bytes of a kBitImage command; bit 7 of each is the top dot.
std::span<const std::uint8_t> columnsOf(const Command& bitImage);

/// Dots across one column of a kBitImage command: 2 for m 0, 1 for m 1.
std::uint32_t columnWidthDots(const Command& bitImage);

/// The command in words, for people; without offset and bytes.
std::string describe(const Command& command);

/// One line of a listing, without a newline: the offset in decimal and hexadecimal, the bytes
/// (the columns of a bit image counted, not shown) and the meaning.
std::string listingLine(const Command& command);

}  // namespace escpos
