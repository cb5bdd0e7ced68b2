// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Cuts a printer's byte stream into commands while it arrives, in memory that
// does not grow with the stream. It finds its way back after anything unknown:
// the bytes up to the next known command become one command of kind kUnknown.

#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "escpos/command.h"

namespace escpos {

/// Streaming decoder. Holds at most one command, so never more than 64 KiB.
class Decoder {
 public:
  /// Is given every command, in the order of the stream; the reference holds during the call only.
  using Sink = std::function<void(const Command&)>;

  explicit Decoder(Sink sink);

  /// Takes the next bytes of the stream, in pieces of any size.
  void feed(std::span<const std::uint8_t> bytes);

  /// Ends the stream: hands out an open run and, as kTruncated, a command without its end.
  void finish();

  /// Bytes taken so far.
  std::uint64_t bytesTaken() const { return taken_; }

 private:
  std::size_t takeRest(std::span<const std::uint8_t> bytes);
  void settle();
  void dropFirstAndRetry();
  void addToRun(CommandKind kind, std::uint64_t offset, std::uint8_t byte);
  void flushRun();
  void emitPending(CommandKind kind);
  std::uint64_t pendingOffset() const { return taken_ - pending_.bytes.size(); }

  Sink sink_;
  Command pending_;         // the command that is being read; its kind is known at its end
  std::size_t needed_ = 1;  // bytes that pending_ has at least
  Command run_;             // the run of NUL or unknown bytes that is open; length 0 if none
  std::uint64_t taken_ = 0;
};

}  // namespace escpos
