// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/splitter.h"

#include <algorithm>
#include <utility>

namespace wren::escpos {

Splitter::Splitter(Sink sink) : sink_(std::move(sink)) {}

void Splitter::feed(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    bytes = bytes.subspan(takeNeeded(bytes));
    classifyPending();
  }
}

void Splitter::finish() {
  if (!pending_.empty()) emitPending(CommandKind::kTruncated);
}

void Splitter::reset() {
  pending_.clear();
  needed_ = 1;
}

// Appends the bytes that the pending command is known to need, so that the columns of a bit image
// are copied at once and not byte by byte.
std::size_t Splitter::takeNeeded(std::span<const std::uint8_t> bytes) {
  const std::size_t count = std::min(needed_ - pending_.size(), bytes.size());
  pending_.insert(pending_.end(), bytes.begin(), bytes.begin() + count);
  return count;
}

// Measures the pending bytes again and emits the command when it is complete.
void Splitter::classifyPending() {
  const Measure measure = measureCommand(pending_);
  if (!measure.known) {
    dropFirstAndRetry();
    return;
  }
  needed_ = measure.length;
  if (pending_.size() == needed_) emitPending(kindOf(pending_));
}

// No known command starts with the pending bytes. The first is unknown; the rest is split again.
void Splitter::dropFirstAndRetry() {
  const std::vector<std::uint8_t> bytes = std::move(pending_);
  reset();
  sink_(CommandKind::kUnknown, std::span(bytes).first(1));
  feed(std::span(bytes).subspan(1));
}

void Splitter::emitPending(CommandKind kind) {
  sink_(kind, pending_);
  reset();
}

}  // namespace wren::escpos
