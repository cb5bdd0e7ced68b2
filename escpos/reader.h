// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// From bytes to paper: a decoder connected to a virtual printer and, optionally,
// to an observer such as a listing.

#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "escpos/command.h"
#include "escpos/decoder.h"
#include "escpos/virtual_printer.h"

namespace wren::escpos {

/// Reads a stream piece by piece. Its memory is bounded by the limits.
class Reader {
 public:
  /// @param observer is called with every command before it is executed; may be empty.
  explicit Reader(PaperLimits limits = {}, Decoder::Sink observer = {});
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  /// Reads the next bytes.
  /// @return false once printing has stopped: further bytes have no effect.
  bool feed(std::span<const std::uint8_t> bytes);

  /// Ends the stream.
  void finish();

  std::uint64_t bytesTaken() const { return decoder_.bytesTaken(); }
  const VirtualPrinter& printer() const { return printer_; }

 private:
  Decoder::Sink observer_;
  VirtualPrinter printer_;
  Decoder decoder_;
};

/// The result of reading a whole stream.
struct Reading {
  std::vector<Command> commands;
  Paper paper;
  Totals totals;
  std::vector<Problem> problems;
};

/// Reads a stream that is in memory. The commands need about as much memory as the stream.
Reading readAll(std::span<const std::uint8_t> bytes, PaperLimits limits = {});

}  // namespace wren::escpos
