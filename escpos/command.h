// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// One command of a receipt printer's byte stream: its offset, its bytes and its
// meaning. The known commands are those that the filter writes, and those that ask
// a printer how it is. This unit measures and describes them; printer state is in
// virtual_printer.h.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace wren::escpos {

/// Names in capitals are those of the published ESC/POS command references. The values of `n`,
/// `m` and `t` that are not listed make the bytes unknown.
enum class CommandKind {
  kNul,            ///< a run of 00 bytes, which a printer ignores
  kInitialise,     ///< 1B 40
  kHome,           ///< 1B 3C: starts each page
  kBitImage,       ///< 1B 2A m nL nH, then nL + 256 nH column bytes; m is 0 or 1
  kFeed,           ///< 1B 4A n: print the line buffer, feed n units
  kCut,            ///< 1D 56 m; m is 0 (full) or 1 (partial)
  kDrawerPulse,    ///< 1B 70 m t1 t2; m is 0 or 1, times in units of 2 ms
  kDirection,      ///< 1B 55 n
  kBeep,           ///< 1B 42 repeat on-time
  kBuzzerSetup,    ///< 1F 1B 1F "Beep" n
  kStatusRequest,  ///< 1B 76
  /// DLE EOT n, 10 04 n; n is 1 to 4. Answered with one byte when it is received.
  kRealTimeStatus,
  /// DLE ENQ n, 10 05 n: recovery from an error; n is 1 (go on) or 2 (clear the buffer, go on).
  kRealTimeRecovery,
  /// DLE DC4 1 m t, 10 14 01 m t: drawer pulse of t x 100 ms; m is 0 or 1, t is 1 to 8.
  kRealTimePulse,
  /// GS r n, 1D 72 n: status in its turn; n is 1 or 49 (paper), 2 or 50 (drawer).
  kTransmitStatus,
  kUnknown,    ///< a run of bytes up to the next command of the kinds above
  kTruncated,  ///< a command that the end of the stream cuts short
};

/// A command as found in the stream.
struct Command {
  CommandKind kind = CommandKind::kUnknown;
  std::uint64_t offset = 0;  ///< of the first byte, from the start of the stream
  std::uint64_t length = 0;  ///< in bytes
  /// All bytes of the command; of a run (`kNul`, `kUnknown`) at most the first `kKeptRunBytes`.
  std::vector<std::uint8_t> bytes;
};

inline constexpr std::size_t kKeptRunBytes = 16;
inline constexpr std::size_t kBitImageHeaderBytes = 5;

/// What the first bytes of a command tell about its length.
struct Measure {
  bool known = false;      ///< false: no known command starts with these bytes
  std::size_t length = 0;  ///< lower bound in bytes; exact once `start` is at least this long
};

/// Measures the command that begins with `start`, by the ESC/POS command set. A single 00 byte
/// measures 1.
Measure measureCommand(std::span<const std::uint8_t> start);

/// The kind of a complete command.
/// @param bytes a command for which `measureCommand` reports `known` and this length.
CommandKind kindOf(std::span<const std::uint8_t> bytes);

/// Whether a printer executes the command when it is received and not in its turn in the buffer.
bool isRealTime(CommandKind kind);

/// The column bytes of a `kBitImage` command, from left to right; bit 7 is the top dot. Valid as
/// long as `bitImage`.
std::span<const std::uint8_t> columnsOf(const Command& bitImage);

/// The width of one column of a `kBitImage` command in dots: 2 for m 0, 1 for m 1.
std::uint32_t columnWidthDots(const Command& bitImage);

/// The command in words, without offset and bytes.
std::string describe(const Command& command);

/// One line of a listing, without a newline: the offset in decimal and hexadecimal, the bytes
/// (of a bit image only the header) and the meaning.
std::string listingLine(const Command& command);

}  // namespace wren::escpos
