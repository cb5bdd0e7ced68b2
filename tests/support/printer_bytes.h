// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Reads printer bytes back: into commands, and into the dots on paper. It knows only the
// commands that the filter may send, so that anything else stands out.
#pragma once

#include <string>
#include <vector>

namespace wren_test {

struct PrinterCommand {
  std::string name;     ///< "zeros", "initialize", "columns", "feed", ... or "unknown"
  std::string bytes;    ///< the whole command
  unsigned value = 0;   ///< what its parameter says: feed, column count, number of zeros, ...
  std::string columns;  ///< of "columns": one byte per dot column
};

/// All bytes end up in one command or another; a command that is cut short is "unknown".
std::vector<PrinterCommand> decodePrinterBytes(const std::string& bytes);

/// One command per line in hexadecimal, columns included: "1B 4A 10".
std::vector<std::string> hexLines(const std::string& bytes);

/// Bytes in hexadecimal with blanks between them.
std::string hexOf(const std::string& bytes);

/// The bytes of a text in hexadecimal; blanks do not count.
std::string fromHex(const std::string& text);

struct PrintedPage {
  unsigned mode = 0;              ///< 0 single, 1 double density
  std::vector<std::string> rows;  ///< '#' for a dot, '.' for none
};

/// The pages, each from its 1B 3C on. A band has half as many rows as its feed says.
std::vector<PrintedPage> printedPages(const std::string& bytes);

}  // namespace wren_test
