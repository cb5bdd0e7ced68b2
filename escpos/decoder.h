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
#include "escpos/splitter.h"

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
  std::uint64_t bytesTaken() const { return split_ + splitter_.pendingBytes(); }

 private:
  void add(CommandKind kind, std::span<const std::uint8_t> bytes);
  void addToRun(CommandKind kind, std::uint8_t byte);
  void flushRun();

  Sink sink_;
  Splitter splitter_;
  Command command_;          // reused for every command
  Command run_;              // open run of NUL or unknown bytes; length 0 if there is none
  std::uint64_t split_ = 0;  // bytes of the stream that are in commands or in the run
};

}  // namespace wren::escpos
