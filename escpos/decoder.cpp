// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/decoder.h"

#include <utility>

namespace wren::escpos {

Decoder::Decoder(Sink sink)
    : sink_(std::move(sink)),
      splitter_(
          [this](CommandKind kind, std::span<const std::uint8_t> bytes) { add(kind, bytes); }) {}

void Decoder::feed(std::span<const std::uint8_t> bytes) {
  splitter_.feed(bytes);
}

void Decoder::finish() {
  splitter_.finish();
  flushRun();
}

void Decoder::add(CommandKind kind, std::span<const std::uint8_t> bytes) {
  if (kind == CommandKind::kNul || kind == CommandKind::kUnknown) {
    // A NUL after unknown bytes may be a parameter of an unknown command, so it extends that run.
    const bool isAfterUnknown = run_.length > 0 && run_.kind == CommandKind::kUnknown;
    addToRun(isAfterUnknown ? CommandKind::kUnknown : kind, bytes[0]);
    return;
  }
  flushRun();
  command_.kind = kind;
  command_.offset = split_;
  command_.length = bytes.size();
  command_.bytes.assign(bytes.begin(), bytes.end());
  split_ += bytes.size();
  sink_(command_);
}

void Decoder::addToRun(CommandKind kind, std::uint8_t byte) {
  if (run_.length > 0 && run_.kind != kind) flushRun();
  if (run_.length == 0) {
    run_.kind = kind;
    run_.offset = split_;
  }
  ++split_;
  ++run_.length;
  if (run_.bytes.size() < kKeptRunBytes) run_.bytes.push_back(byte);
}

void Decoder::flushRun() {
  if (run_.length == 0) return;
  sink_(run_);
  run_.length = 0;
  run_.bytes.clear();
}

}  // namespace wren::escpos
