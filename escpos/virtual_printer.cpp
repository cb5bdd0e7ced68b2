// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/virtual_printer.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace escpos {
namespace {

constexpr std::uint64_t kBandUnits = std::uint64_t{kBandRows} * kUnitsPerRow;

// What the allocator adds to each stripe; without it a stream of one-column images would take
// several times the memory that it is allowed.
constexpr std::uint64_t kAllocationBytes = 32;

std::uint64_t costOf(const Stripe& stripe) {
  return sizeof(Stripe) + kAllocationBytes + stripe.columns.size();
}

// Feed units from the top of a stripe to the foot of its lowest dot.
std::uint64_t inkedUnits(const Stripe& stripe) {
  std::uint8_t used = 0;
  for (const std::uint8_t column : stripe.columns) used |= column;
  if (used == 0) return 0;
  return (kBandRows - static_cast<std::uint64_t>(std::countr_zero(used))) * kUnitsPerRow;
}

}  // namespace

VirtualPrinter::VirtualPrinter(PaperLimits limits) : limits_(limits) {}

void VirtualPrinter::execute(const Command& command) {
  if (stopped_) return;
  ++totals_.commands;
  const auto& bytes = command.bytes;
  switch (command.kind) {
    case CommandKind::kInitialise:
      dropLine("an initialisation");
      break;
    case CommandKind::kHome:
      ++totals_.pages;
      mark(command, MarkKind::kPage);
      break;
    case CommandKind::kBitImage:
      bitImage(command);
      break;
    case CommandKind::kFeed:
      feed(command);
      break;
    case CommandKind::kCut:
      ++totals_.cuts;
      mark(command, bytes[2] == 0 ? MarkKind::kFullCut : MarkKind::kPartialCut);
      break;
    case CommandKind::kDrawerPulse:
      ++totals_.drawerPulses;
      mark(command, MarkKind::kDrawerPulse, bytes[2], 2U * bytes[3]);
      break;
    case CommandKind::kBeep:
      totals_.beeps += bytes[2];
      mark(command, MarkKind::kBeep, bytes[2], bytes[3]);
      break;
    case CommandKind::kUnknown:
    case CommandKind::kTruncated:
      refuse(command.offset, describe(command));
      break;
    case CommandKind::kNul:
    case CommandKind::kDirection:
    case CommandKind::kBuzzerSetup:
    case CommandKind::kStatusRequest:
      break;
  }
}

void VirtualPrinter::finish() {
  if (!stopped_) dropLine("the end of the stream");
}

// A bit image joins the line; nothing is on the paper before the feed that prints the line.
void VirtualPrinter::bitImage(const Command& command) {
  const std::span<const std::uint8_t> columns = columnsOf(command);
  const std::uint32_t columnWidth = columnWidthDots(command);
  const std::uint32_t room = lineTooWide_ ? 0 : (limits_.widthDots - lineWidthDots_) / columnWidth;
  const std::size_t kept = std::min<std::size_t>(columns.size(), room);
  if (kept < columns.size() && !lineTooWide_) {
    lineTooWide_ = true;
    refuse(command.offset,
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

// The feed decides how long the paper gets. A line that is fed less than it has dots (never the
// short last band of a page, whose lower rows are empty) still shows all of them.
void VirtualPrinter::printLine() {
  for (Stripe& stripe : line_) {
    const std::uint64_t foot = stripe.topUnits + inkedUnits(stripe);
    paper_.lengthUnits = std::max(paper_.lengthUnits, foot);
    paper_.stripes.push_back(std::move(stripe));
  }
  paper_.widthDots = std::max(paper_.widthDots, lineWidthDots_);
  line_.clear();
  lineWidthDots_ = 0;
  lineTooWide_ = false;
}

void VirtualPrinter::mark(const Command& command, MarkKind kind, unsigned first, unsigned second) {
  if (paper_.marks.size() >= limits_.marks) {
    stop(command.offset, "more than " + std::to_string(limits_.marks) +
                             " pages, cuts, pulses and beeps, printing stops here");
    return;
  }
  paper_.marks.push_back({kind, positionUnits_, command.offset, first, second});
}

// Columns that were sent but not printed are lost when the printer starts anew.
void VirtualPrinter::dropLine(const std::string& why) {
  if (line_.empty()) return;
  refuse(lineOffset_, "dots that were not printed before " + why);
  for (const Stripe& stripe : line_) storedBytes_ -= costOf(stripe);
  line_.clear();
  lineWidthDots_ = 0;
  lineTooWide_ = false;
}

void VirtualPrinter::refuse(std::uint64_t offset, const std::string& text) {
  ++totals_.problems;
  if (problems_.size() < kKeptProblems) problems_.push_back({offset, text});
}

void VirtualPrinter::stop(std::uint64_t offset, const std::string& text) {
  refuse(offset, text);
  stopped_ = true;
}

}  // namespace escpos
