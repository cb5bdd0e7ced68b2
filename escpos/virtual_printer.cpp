// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/virtual_printer.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace wren::escpos {
namespace {

constexpr std::uint64_t kBandUnits = std::uint64_t{kBandRows} * kUnitsPerRow;

// Allocator overhead per stripe. Without it, a stream of one-column images would use several times
// its limit.
constexpr std::uint64_t kAllocationBytes = 32;

std::uint64_t costOf(const Stripe& stripe) {
  return sizeof(Stripe) + kAllocationBytes + stripe.columns.size();
}

// Feed units from the top of a stripe to the bottom of its lowest dot.
std::uint64_t inkHeightUnits(const Stripe& stripe) {
  std::uint8_t used = 0;
  for (const std::uint8_t column : stripe.columns) used |= column;
  if (used == 0) return 0;
  return (kBandRows - static_cast<std::uint64_t>(std::countr_zero(used))) * kUnitsPerRow;
}

// Adds the dots of a stripe to columns that start at the left edge and are one dot wide.
void addColumns(const Stripe& stripe, std::vector<std::uint8_t>& columns) {
  const std::size_t right =
      stripe.leftDots + stripe.columns.size() * std::size_t{stripe.columnWidthDots};
  columns.resize(std::max(columns.size(), right));
  std::size_t x = stripe.leftDots;
  for (const std::uint8_t column : stripe.columns) {
    for (std::uint32_t i = 0; i < stripe.columnWidthDots; ++i) columns[x++] |= column;
  }
}

}  // namespace

VirtualPrinter::VirtualPrinter(PaperLimits limits) : limits_(limits) {}

void VirtualPrinter::execute(const Command& command) {
  if (stopped_) return;
  ++totals_.commands;
  const auto& bytes = command.bytes;
  switch (command.kind) {
    case CommandKind::kInitialise:
      discardLine("an initialisation");
      break;
    case CommandKind::kHome:
      ++totals_.pages;
      addMark(command, MarkKind::kPage);
      break;
    case CommandKind::kBitImage:
      addBitImage(command);
      break;
    case CommandKind::kFeed:
      feed(command);
      break;
    case CommandKind::kCut:
      ++totals_.cuts;
      addMark(command, bytes[2] == 0 ? MarkKind::kFullCut : MarkKind::kPartialCut);
      break;
    case CommandKind::kDrawerPulse:
      ++totals_.drawerPulses;
      addMark(command, MarkKind::kDrawerPulse, bytes[2], 2U * bytes[3]);
      break;
    case CommandKind::kRealTimePulse:
      ++totals_.drawerPulses;
      addMark(command, MarkKind::kDrawerPulse, bytes[3], 100U * bytes[4]);
      break;
    case CommandKind::kRealTimeRecovery:
      if (bytes[2] == 2) discardLine("a recovery that clears the buffer");
      break;
    case CommandKind::kBeep:
      totals_.beeps += bytes[2];
      addMark(command, MarkKind::kBeep, bytes[2], bytes[3]);
      break;
    case CommandKind::kUnknown:
    case CommandKind::kTruncated:
      report(command.offset, describe(command));
      break;
    case CommandKind::kNul:
    case CommandKind::kDirection:
    case CommandKind::kBuzzerSetup:
    case CommandKind::kStatusRequest:
    case CommandKind::kRealTimeStatus:
    case CommandKind::kTransmitStatus:
      break;
  }
}

void VirtualPrinter::finish() {
  if (!stopped_) discardLine("the end of the stream");
}

// Appends the bit image to the line buffer; the next feed prints it.
void VirtualPrinter::addBitImage(const Command& command) {
  const std::span<const std::uint8_t> columns = columnsOf(command);
  const std::uint32_t columnWidth = columnWidthDots(command);
  const std::uint32_t room = lineTooWide_ ? 0 : (limits_.widthDots - lineWidthDots_) / columnWidth;
  const std::size_t kept = std::min<std::size_t>(columns.size(), room);
  if (kept < columns.size() && !lineTooWide_) {
    lineTooWide_ = true;
    report(command.offset,
           "a line is wider than " + std::to_string(limits_.widthDots) + " dots, the rest is lost");
  }
  if (kept == 0) return;
  Stripe stripe{positionUnits_, lineWidthDots_, columnWidth,
                std::vector<std::uint8_t>(columns.begin(), columns.begin() + kept)};
  if (storedBytes_ + costOf(stripe) > limits_.storedBytes) {
    stop(command.offset, "more dots than can be kept, printing stops here");
    return;
  }
  storedBytes_ += costOf(stripe);
  if (line_.empty()) lineOffset_ = command.offset;
  lineWidthDots_ += static_cast<std::uint32_t>(kept) * columnWidth;
  line_.push_back(std::move(stripe));
}

void VirtualPrinter::feed(const Command& command) {
  const std::uint64_t units = command.bytes[2];
  const std::uint64_t lineEnd = positionUnits_ + (line_.empty() ? 0 : kBandUnits);
  if (std::max(positionUnits_ + units, lineEnd) > limits_.lengthUnits) {
    stop(command.offset, "the paper limit is reached, printing stops here");
    return;
  }
  printLine();
  positionUnits_ += units;
  paper_.lengthUnits = std::max(paper_.lengthUnits, positionUnits_);
}

// A feed shorter than the dots of its line does not clip them: the paper ends below the lowest dot.
// The short last band of a page is not such a case, because its lower rows are empty.
void VirtualPrinter::printLine() {
  const auto& printed = paper_.stripes;
  if (printed.empty() || printed.back().topUnits != positionUnits_) firstOfPlace_ = printed.size();
  for (Stripe& stripe : line_) {
    const std::uint64_t bottomUnits = stripe.topUnits + inkHeightUnits(stripe);
    paper_.lengthUnits = std::max(paper_.lengthUnits, bottomUnits);
    paper_.stripes.push_back(std::move(stripe));
  }
  paper_.widthDots = std::max(paper_.widthDots, lineWidthDots_);
  clearLine();
  mergeOverprints();
}

// The merged stripe costs less than the many that it replaces.
void VirtualPrinter::mergeOverprints() {
  if (paper_.stripes.size() - firstOfPlace_ < kMaxStripesAtOnePlace) return;
  const auto first = paper_.stripes.begin() + static_cast<std::ptrdiff_t>(firstOfPlace_);
  Stripe merged{positionUnits_, 0, 1, {}};
  for (auto stripe = first; stripe != paper_.stripes.end(); ++stripe) {
    storedBytes_ -= costOf(*stripe);
    addColumns(*stripe, merged.columns);
  }
  storedBytes_ += costOf(merged);
  paper_.stripes.erase(first, paper_.stripes.end());
  paper_.stripes.push_back(std::move(merged));
}

void VirtualPrinter::clearLine() {
  line_.clear();
  lineWidthDots_ = 0;
  lineTooWide_ = false;
}

void VirtualPrinter::addMark(const Command& command, MarkKind kind, unsigned first,
                             unsigned second) {
  if (paper_.marks.size() >= limits_.marks) {
    stop(command.offset, "more than " + std::to_string(limits_.marks) +
                             " pages, cuts, pulses and beeps, printing stops here");
    return;
  }
  paper_.marks.push_back({kind, positionUnits_, command.offset, first, second});
}

// Initialisation and the end of the stream lose what is in the line buffer.
void VirtualPrinter::discardLine(const std::string& cause) {
  if (line_.empty()) return;
  report(lineOffset_, "dots that were not printed before " + cause);
  for (const Stripe& stripe : line_) storedBytes_ -= costOf(stripe);
  clearLine();
}

void VirtualPrinter::report(std::uint64_t offset, const std::string& text) {
  ++totals_.problems;
  if (problems_.size() < kKeptProblems) problems_.push_back({offset, text});
}

void VirtualPrinter::stop(std::uint64_t offset, const std::string& text) {
  report(offset, text);
  stopped_ = true;
}

}  // namespace wren::escpos
