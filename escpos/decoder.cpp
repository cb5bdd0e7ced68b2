// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/decoder.h"

#include <algorithm>
#include <utility>

namespace wren::escpos {

Decoder::Decoder(Sink sink) : sink_(std::move(sink)) {}

void Decoder::feed(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    bytes = bytes.subspan(takeNeeded(bytes));
    classifyPending();
  }
}

void Decoder::finish() {
  flushRun();
  if (pending_.bytes.empty()) return;
  emitPending(CommandKind::kTruncated);
}

// Appends the bytes that the pending command is known to need, so that the columns of a bit image
// are copied at once and not byte by byte.
std::size_t Decoder::takeNeeded(std::span<const std::uint8_t> bytes) {
  const std::size_t count = std::min(needed_ - pending_.bytes.size(), bytes.size());
  pending_.bytes.insert(pending_.bytes.end(), bytes.begin(), bytes.begin() + count);
  taken_ += count;
  return count;
}

// Measures the pending bytes again and emits the command when it is complete.
void Decoder::classifyPending() {
  const Measure measure = measureCommand(pending_.bytes);
  if (!measure.known) {
    dropFirstAndRetry();
    return;
  }
  needed_ = measure.length;
  if (pending_.bytes.size() < needed_) return;
  if (kindOf(pending_.bytes) == CommandKind::kNul) {
    // A NUL after unknown bytes may be a parameter of an unknown command, so it extends that run.
    const bool unknown = run_.length > 0 && run_.kind == CommandKind::kUnknown;
    addToRun(unknown ? CommandKind::kUnknown : CommandKind::kNul, pendingOffset(), 0);
    pending_.bytes.clear();
    needed_ = 1;
    return;
  }
  flushRun();
  emitPending(kindOf(pending_.bytes));
}

// No known command starts with the pending bytes. The first is unknown; the rest is decoded again.
void Decoder::dropFirstAndRetry() {
  addToRun(CommandKind::kUnknown, pendingOffset(), pending_.bytes.front());
  const std::vector<std::uint8_t> rest(pending_.bytes.begin() + 1, pending_.bytes.end());
  pending_.bytes.clear();
  needed_ = 1;
  taken_ -= rest.size();
  feed(rest);
}

void Decoder::addToRun(CommandKind kind, std::uint64_t offset, std::uint8_t byte) {
  if (run_.length > 0 && run_.kind != kind) flushRun();
  if (run_.length == 0) {
    run_.kind = kind;
    run_.offset = offset;
  }
  ++run_.length;
  if (run_.bytes.size() < kKeptRunBytes) run_.bytes.push_back(byte);
}

void Decoder::flushRun() {
  if (run_.length == 0) return;
  sink_(run_);
  run_.length = 0;
  run_.bytes.clear();
}

void Decoder::emitPending(CommandKind kind) {
  pending_.kind = kind;
  pending_.offset = pendingOffset();
  pending_.length = pending_.bytes.size();
  sink_(pending_);
  pending_.bytes.clear();
  needed_ = 1;
}

}  // namespace wren::escpos
