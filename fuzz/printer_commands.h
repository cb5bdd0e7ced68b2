// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Printer bytes that are made of commands: each byte of an input chooses a command or a parameter,
// so that most of what a fuzzer tries is a stream that a printer understands.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "escpos/command.h"
#include "fuzz/input.h"

namespace fuzz {

struct PrinterCommands {
  struct Place {
    wren::escpos::CommandKind kind;
    std::uint64_t offset;
    std::uint64_t length;
  };

  std::vector<std::uint8_t> bytes;
  /// The commands before the first that was spoilt, without runs of zero and unknown bytes.
  std::vector<Place> commands;
  /// Whether a command has other parameters or another length than it should. What comes after it
  /// may be part of it.
  bool isSpoilt = false;
};

/// At most `most` choices of the input, and none beyond its end. All known commands occur.
PrinterCommands printerCommandsFrom(Input& input, std::size_t most);

}  // namespace fuzz
