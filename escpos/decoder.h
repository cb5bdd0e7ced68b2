// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Splits a printer's byte stream into commands while it arrives, in constant
// memory. It resynchronizes after unknown bytes: everything up to the next known
// command becomes one command of kind `kUnknown`.

#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "escpos/command.h"

namespace wren::escpos {

/// Streaming decoder. Buffers at most one command, which is never more than 64 KiB.
class Decoder {
 public:
  /// Called with every command in stream order. The reference is valid during the call only.
  using Sink = std::function<void(const Command&)>;

  explicit Decoder(Sink sink);

  /// Decodes the next bytes of the stream; a command may span any number of calls.
  void feed(std::span<const std::uint8_t> bytes);

  /// Ends the stream: emits the open run and an incomplete command as `kTruncated`.
  void finish();

  /// Bytes of the stream so far.
  std::uint64_t bytesTaken() const { return taken_; }

 private:
  std::size_t takeNeeded(std::span<const std::uint8_t> bytes);
  void classifyPending();
  void dropFirstAndRetry();
  void addToRun(CommandKind kind, std::uint64_t offset, std::uint8_t byte);
  void flushRun();
  void emitPending(CommandKind kind);
  std::uint64_t pendingOffset() const { return taken_ - pending_.bytes.size(); }

  Sink sink_;
  Command pending_;         // incomplete command; its kind is set when it is complete
  std::size_t needed_ = 1;  // lower bound of its length
  Command run_;             // open run of NUL or unknown bytes; length 0 if there is none
  std::uint64_t taken_ = 0;
};

}  // namespace wren::escpos
