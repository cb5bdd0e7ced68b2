// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/reader.h"

#include <utility>

namespace wren::escpos {

Reader::Reader(PaperLimits limits, Decoder::Sink observer)
    : observer_(std::move(observer)), printer_(limits), decoder_([this](const Command& command) {
        if (printer_.stopped()) return;
        if (observer_) observer_(command);
        printer_.execute(command);
      }) {}

bool Reader::feed(std::span<const std::uint8_t> bytes) {
  if (!printer_.stopped()) decoder_.feed(bytes);
  return !printer_.stopped();
}

void Reader::finish() {
  decoder_.finish();
  printer_.finish();
}

Reading readAll(std::span<const std::uint8_t> bytes, PaperLimits limits) {
  Reading reading;
  Reader reader(limits, [&](const Command& command) { reading.commands.push_back(command); });
  reader.feed(bytes);
  reader.finish();
  reading.paper = reader.printer().paper();
  reading.totals = reader.printer().totals();
  reading.problems = reader.printer().problems();
  return reading;
}

}  // namespace wren::escpos
