// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Decodes printer bytes into commands and into dots, independently of escpos/. It knows
// the commands of the filter only; everything else is "unknown".

#pragma once

#include <string>
#include <vector>

namespace wren_test {

struct PrinterCommand {
  std::string name;     ///< "zeros", "initialize", "columns", "feed", ... or "unknown"
  std::string bytes;    ///< the whole command
  unsigned value = 0;   ///< its parameter: feed, column count, number of zeros, ...
  std::string columns;  ///< of "columns": one byte per dot column
};

/// The commands in order; together they contain every byte. The bytes of a truncated command are
/// "unknown".
std::vector<PrinterCommand> decodePrinterBytes(const std::string& bytes);

/// One command per line in hexadecimal, columns included: "1B 4A 10".
std::vector<std::string> hexLines(const std::string& bytes);

/// Bytes in hexadecimal, separated by spaces.
std::string hexOf(const std::string& bytes);

/// The bytes of a hexadecimal text; spaces and newlines are ignored.
std::string fromHex(const std::string& text);

struct PrintedPage {
  unsigned mode = 0;              ///< 0 single, 1 double density
  std::vector<std::string> rows;  ///< '#' for a dot, '.' for none
};

/// The pages; each starts at 1B 3C. A band has half as many rows as its feed has units.
std::vector<PrintedPage> printedPages(const std::string& bytes);

}  // namespace wren_test
