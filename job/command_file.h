// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Reads the text of a command file (application/vnd.cups-command), the print system's way to ask a
// queue for something that is no document. It knows no printer and no process.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "job/printer_commands.h"

namespace wren::job {

/// What a command file starts with; the print system finds the format by it.
inline constexpr std::string_view kCommandFileHead = "#CUPS-COMMAND";

/// Limits of a command file: its bytes, the bytes of a line, its commands.
inline constexpr std::size_t kMaxCommandFile = 65536;
inline constexpr std::size_t kMaxCommandLine = 1023;
inline constexpr std::size_t kMaxCommands = 100;

struct CommandFile {
  std::vector<PrinterCommand> commands;
  /// One line of printable ASCII for each line of the file that cannot be done.
  std::vector<std::string> errors;
};

/// Reads a command file: one command per line, words separated by blanks, in any case, `#` begins
/// a comment. Lines end with LF, CR or both. Commands: those of `kCommandNames`; Cut takes "full"
/// or "partial" or nothing, Feed a whole number of millimetres. A line that is not understood is an
/// error, and the others are read. A text without the head or beyond `kMaxCommandFile` is one
/// error; so is everything after `kMaxCommands`.
CommandFile parseCommandFile(std::string_view text);

}  // namespace wren::job
