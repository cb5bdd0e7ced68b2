// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Splits a printer's byte stream into commands as early as possible: each zero or
// unknown byte at once, a command with its last byte. A printer needs it to find
// real-time commands when they are received.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "escpos/command.h"

namespace wren::escpos {

/// Buffers at most one command, which is never more than 64 KiB.
class Splitter {
 public:
  /// Called in stream order with a complete command, or with one byte of kind `kNul` or
  /// `kUnknown`. The bytes are valid during the call only. It must not call the splitter.
  using Sink = std::function<void(CommandKind kind, std::span<const std::uint8_t> bytes)>;

  explicit Splitter(Sink sink);

  /// Splits the next bytes of the stream; a command may span any number of calls.
  void feed(std::span<const std::uint8_t> bytes);

  /// Ends the stream: emits an incomplete command as `kTruncated`. A new stream may follow.
  void finish();

  /// Forgets an incomplete command.
  void reset();

  /// Bytes of the incomplete command.
  std::size_t pendingBytes() const { return pending_.size(); }

 private:
  std::size_t takeNeeded(std::span<const std::uint8_t> bytes);
  void classifyPending();
  void dropFirstAndRetry();
  void emitPending(CommandKind kind);

  Sink sink_;
  std::vector<std::uint8_t> pending_;  // incomplete command
  std::size_t needed_ = 1;             // lower bound of its length
};

}  // namespace wren::escpos
