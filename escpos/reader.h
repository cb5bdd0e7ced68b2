// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The whole way from bytes to paper: a decoder whose commands go to a printer
// made of software and, if wanted, to an onlooker such as a listing.

#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "escpos/command.h"
#include "escpos/decoder.h"
#include "escpos/virtual_printer.h"

namespace escpos {

/// Reads a stream piece by piece, in memory bounded by the limits.
class Reader {
 public:
  /// `onlooker` is shown every command before it is carried out; it may be empty.
  explicit Reader(PaperLimits limits = {}, Decoder::Sink onlooker = {});
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  /// Takes the next bytes. Returns false once printing has stopped; the rest need not be fed.
  bool feed(std::span<const std::uint8_t> bytes);

  /// Ends the stream.
  void finish();

  std::uint64_t bytesTaken() const { return decoder_.bytesTaken(); }
  const VirtualPrinter& printer() const { return printer_; }

 private:
  Decoder::Sink onlooker_;
  VirtualPrinter printer_;
  Decoder decoder_;
};

/// A stream that was read as a whole.
struct Reading {
  std::vector<Command> commands;
  Paper paper;
  Totals totals;
  std::vector<Problem> problems;
};

/// Reads a whole stream that is in memory. The commands take about as much memory as the stream.
Reading readAll(std::span<const std::uint8_t> bytes, PaperLimits limits = {});

}  // namespace escpos
