// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "fuzz/printer_commands.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace fuzz {
namespace {

using Bytes = std::vector<std::uint8_t>;
using wren::escpos::CommandKind;
using enum wren::escpos::CommandKind;

// More bytes only take time.
constexpr std::size_t kMostBytes = std::size_t{1} << 14;

constexpr CommandKind kKinds[] = {
    kInitialise,    kHome,          kBitImage,       kFeed,
    kCut,           kDrawerPulse,   kDirection,      kBeep,
    kBuzzerSetup,   kStatusRequest, kRealTimeStatus, kRealTimeRecovery,
    kRealTimePulse, kTransmitStatus};

// What GS r asks for: the paper or the drawer, as a number or a digit.
constexpr std::uint8_t kTransmitted[] = {1, 2, '1', '2'};

std::uint8_t below(Input& input, std::uint32_t limit) {
  return static_cast<std::uint8_t>(input.below(limit));
}

Bytes bitImage(Input& input) {
  constexpr std::uint32_t kColumns[] = {0, 1, 8, 72, 299, 300, 576};
  const std::uint8_t density = below(input, 2);
  const std::uint32_t choice = input.below(8);
  const std::uint32_t columns =
      choice < std::size(kColumns) ? kColumns[choice] : input.byte() + 256 * input.below(16);
  Bytes command = {0x1B, '*', density, static_cast<std::uint8_t>(columns & 255),
                   static_cast<std::uint8_t>(columns >> 8)};
  const Bytes dots = input.filling(columns);
  command.insert(command.end(), dots.begin(), dots.end());
  return command;
}

// A command whose parameters are all valid.
Bytes commandOf(CommandKind kind, Input& input) {
  switch (kind) {
    case kInitialise:
      return {0x1B, '@'};
    case kHome:
      return {0x1B, '<'};
    case kBitImage:
      return bitImage(input);
    case kFeed:
      return {0x1B, 'J', input.byte()};
    case kCut:
      return {0x1D, 'V', below(input, 2)};
    case kDrawerPulse:
      return {0x1B, 'p', below(input, 2), input.byte(), input.byte()};
    case kDirection:
      return {0x1B, 'U', input.byte()};
    case kBeep:
      return {0x1B, 'B', input.byte(), input.byte()};
    case kBuzzerSetup:
      return {0x1F, 0x1B, 0x1F, 'B', 'e', 'e', 'p', input.byte()};
    case kStatusRequest:
      return {0x1B, 'v'};
    case kRealTimeStatus:
      return {0x10, 0x04, static_cast<std::uint8_t>(1 + input.below(4))};
    case kRealTimeRecovery:
      return {0x10, 0x05, static_cast<std::uint8_t>(1 + input.below(2))};
    case kRealTimePulse:
      return {0x10, 0x14, 1, below(input, 2), static_cast<std::uint8_t>(1 + input.below(8))};
    case kTransmitStatus:
      return {0x1D, 'r', kTransmitted[input.below(std::size(kTransmitted))]};
    default:
      return {};
  }
}

// A byte changed, the end missing, or bytes too many.
void spoil(Bytes& command, Input& input) {
  const std::size_t at = input.byte() % command.size();
  const std::uint32_t fault = input.below(3);
  if (fault == 0) {
    command[at] = input.byte();
  } else if (fault == 1) {
    command.resize(at);
  } else {
    const Bytes more = input.filling(1 + input.below(16));
    command.insert(command.begin() + static_cast<std::ptrdiff_t>(at), more.begin(), more.end());
  }
}

Bytes printableText(Input& input) {
  Bytes text = input.filling(1 + input.below(40));
  for (std::uint8_t& byte : text) byte = static_cast<std::uint8_t>(' ' + byte % 95);
  return text;
}

class Builder {
 public:
  explicit Builder(Input& input) : input_(input) {}

  bool isFull() const { return made_.bytes.size() >= kMostBytes; }

  void addNext() {
    constexpr std::uint32_t kNumber = std::size(kKinds);
    const std::uint32_t choice = input_.below(kNumber + 4);
    if (choice < kNumber) {
      lastKind_ = kKinds[choice];
      last_ = commandOf(lastKind_, input_);
      add();
    } else if (choice == kNumber) {
      addRun(Bytes(1U + input_.byte()));
    } else if (choice == kNumber + 1) {
      addRun(printableText(input_));
    } else if (choice == kNumber + 2) {
      const unsigned times = 1U + input_.byte();
      for (unsigned i = 0; i < times && !last_.empty() && !isFull(); ++i) add();
    } else {
      Bytes command = commandOf(kKinds[input_.below(kNumber)], input_);
      spoil(command, input_);
      made_.isSpoilt = true;
      addRun(command);
    }
  }

  PrinterCommands take() { return std::move(made_); }

 private:
  void add() {
    if (!made_.isSpoilt) made_.commands.push_back({lastKind_, made_.bytes.size(), last_.size()});
    addRun(last_);
  }
  void addRun(const Bytes& bytes) {
    made_.bytes.insert(made_.bytes.end(), bytes.begin(), bytes.end());
  }

  Input& input_;
  CommandKind lastKind_ = kInitialise;
  Bytes last_;  // empty before the first command
  PrinterCommands made_;
};

}  // namespace

PrinterCommands printerCommandsFrom(Input& input, std::size_t most) {
  Builder builder(input);
  for (std::size_t i = 0; i < most && input.left() > 0 && !builder.isFull(); ++i) builder.addNext();
  return builder.take();
}

}  // namespace fuzz
